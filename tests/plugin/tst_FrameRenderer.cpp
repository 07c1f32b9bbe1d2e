#include "FramePlaying.h"

#include <QRegularExpression>
#include <QTest>

class tst_FrameRenderer : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void childRunsFromItsBeginUpToButNotAtItsEnd_data();
    void childRunsFromItsBeginUpToButNotAtItsEnd();
    void childOutsideItsSpanIsStopped();

    void lateFrameStartsTheChildAtItsBegin_data();
    void lateFrameStartsTheChildAtItsBegin();
    void runningChildKeepsItsStart();
    void childEnteringItsSpanAgainStartsAnew();

    void firstFrameDoesNotRestart();
    void requestedRestartComesWithTheNextFrameOnly_data();
    void requestedRestartComesWithTheNextFrameOnly();
    void loopRestartsOnceTheEndIsReached_data();
    void loopRestartsOnceTheEndIsReached();
    void requestAndReachedEndAreOneRestart();
    void endOfZeroRestartsInEveryFrame_data();
    void endOfZeroRestartsInEveryFrame();
    void restartGivesEveryChildTheFrameTimeAsStart();
    void loopGoesOnAcrossMidnight();

    void editorIsToldOfTransitionsOnly();
    void editorIsNotToldOfALoopThatStopsNobody();
    void editorIsToldUnderTheEidThatIsReadThen();

    void childrenMayComeAndGoBetweenFrames();
    void orderMayChangeBetweenFrames();
    void childAddedWhileDrawingPlaysFromTheNextFrame();
    void noChildrenIsNoTrouble();
};

void tst_FrameRenderer::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
}

// --- Spans ---

void tst_FrameRenderer::childRunsFromItsBeginUpToButNotAtItsEnd_data()
{
    QTest::addColumn<quint32>("begin");
    QTest::addColumn<quint32>("end");
    QTest::addColumn<quint32>("now");
    QTest::addColumn<bool>("runs");

    QTest::newRow("1 ms before the begin") << 1000u << 2000u << 999u << false;
    QTest::newRow("at the begin") << 1000u << 2000u << 1000u << true;
    QTest::newRow("within") << 1000u << 2000u << 1500u << true;
    QTest::newRow("1 ms before the end") << 1000u << 2000u << 1999u << true;
    QTest::newRow("at the end") << 1000u << 2000u << 2000u << false;
    QTest::newRow("behind the end") << 1000u << 2000u << 2001u << false;
    QTest::newRow("span of 1 ms") << 1000u << 1001u << 1000u << true;
    QTest::newRow("empty span") << 1000u << 1000u << 1000u << false;
    QTest::newRow("empty span at 0") << 0u << 0u << 0u << false;
    QTest::newRow("end before begin, between") << 2000u << 1000u << 1500u << false;
    QTest::newRow("end before begin, behind") << 2000u << 1000u << 2500u << false;
    QTest::newRow("longest span") << 0u << 4294967295u << 86399999u << true;
    QTest::newRow("begin never reached") << 4294967295u << 4294967295u << 86399999u << false;
}

void tst_FrameRenderer::childRunsFromItsBeginUpToButNotAtItsEnd()
{
    QFETCH(quint32, begin);
    QFETCH(quint32, end);
    QFETCH(quint32, now);
    QFETCH(bool, runs);
    FramePlaying playing;
    StubEffect *child = playing.add(1, begin, end);

    playing.frameAt(now);

    QCOMPARE(playing.now(), now);
    QCOMPARE(child->getState(), runs);
    QCOMPARE(child->draws, runs ? 1 : 0);
}

void tst_FrameRenderer::childOutsideItsSpanIsStopped()
{
    FramePlaying playing;
    StubEffect *early = playing.add(1, 0, 500);
    StubEffect *late = playing.add(2, 2000, 3000);
    early->setState(true);
    late->setState(true);

    playing.frameAt(1000);

    QVERIFY(!early->getState());
    QVERIFY(!late->getState());
    QCOMPARE(early->draws + late->draws, 0);
}

// --- The child's own clock ---

void tst_FrameRenderer::lateFrameStartsTheChildAtItsBegin_data()
{
    QTest::addColumn<QTime>("start");
    QTest::addColumn<quint32>("now");
    QTest::addColumn<quint32>("elapsed");

    QTest::newRow("in time") << QTime(12, 0) << 1000u << 0u;
    QTest::newRow("250 ms late") << QTime(12, 0) << 1250u << 250u;
    QTest::newRow("just before the end") << QTime(12, 0) << 1999u << 999u;
    QTest::newRow("begin before midnight, frame behind") << QTime(23, 59, 58, 850) << 1250u << 250u;
    QTest::newRow("parent started before midnight, begin behind")
        << QTime(23, 59, 59, 500) << 1250u << 250u;
    QTest::newRow("frame at midnight") << QTime(23, 59, 58, 750) << 1250u << 250u;
}

void tst_FrameRenderer::lateFrameStartsTheChildAtItsBegin()
{
    QFETCH(QTime, start);
    QFETCH(quint32, now);
    QFETCH(quint32, elapsed);
    FramePlaying playing(start);
    StubEffect *child = playing.add(1, 1000, 2000);
    quint32 seen = 0;
    child->whileDrawing = [&seen](StubEffect &drawn) {
        seen = static_cast<quint32>(drawn.getTotalElapsedTime());
    };

    playing.frameAt(now);

    QCOMPARE(child->draws, 1);
    QCOMPARE(seen, elapsed);
}

void tst_FrameRenderer::runningChildKeepsItsStart()
{
    FramePlaying playing;
    StubEffect *child = playing.add(1, 1000, 2000);
    playing.frameAt(1250);
    child->with("begin", 500);

    playing.frameAt(1300);

    QCOMPARE(child->getTotalElapsedTime(), 300ul);
}

void tst_FrameRenderer::childEnteringItsSpanAgainStartsAnew()
{
    FramePlaying playing;
    StubEffect *child = playing.add(1, 1000, 2000);
    playing.frameAt(1500);
    playing.frameAt(2500);
    QVERIFY(!child->getState());
    child->with("begin", 3000).with("end", 4000);

    playing.frameAt(3100);

    QVERIFY(child->getState());
    QCOMPARE(child->getTotalElapsedTime(), 100ul);
}

// --- Restarts ---

void tst_FrameRenderer::firstFrameDoesNotRestart()
{
    FramePlaying playing;
    playing.settings.loop = true;
    playing.parent.with("end", 1000);

    playing.frameAt(300);

    QCOMPARE(playing.now(), 300u);
}

void tst_FrameRenderer::requestedRestartComesWithTheNextFrameOnly_data()
{
    QTest::addColumn<bool>("loop");
    QTest::newRow("looping") << true;
    QTest::newRow("once") << false;
}

void tst_FrameRenderer::requestedRestartComesWithTheNextFrameOnly()
{
    QFETCH(bool, loop);
    FramePlaying playing;
    playing.settings.loop = loop;
    playing.parent.with("end", 1000);
    playing.frameAt(700);

    playing.renderer.requestRestart();
    playing.renderer.requestRestart();
    QCOMPARE(playing.now(), 700u);

    playing.frameAt(800);
    QCOMPARE(playing.now(), 0u);
    playing.frameAt(900);
    QCOMPARE(playing.now(), 100u);
}

void tst_FrameRenderer::loopRestartsOnceTheEndIsReached_data()
{
    QTest::addColumn<bool>("loop");
    QTest::addColumn<quint32>("elapsed");
    QTest::addColumn<quint32>("now");

    QTest::newRow("looping, 1 ms before") << true << 999u << 999u;
    QTest::newRow("looping, at the end") << true << 1000u << 0u;
    QTest::newRow("looping, late") << true << 1400u << 0u;
    QTest::newRow("once, 1 ms before") << false << 999u << 999u;
    QTest::newRow("once, at the end") << false << 1000u << 1000u;
    QTest::newRow("once, late") << false << 1400u << 1400u;
}

void tst_FrameRenderer::loopRestartsOnceTheEndIsReached()
{
    QFETCH(bool, loop);
    QFETCH(quint32, elapsed);
    QFETCH(quint32, now);
    FramePlaying playing;
    playing.settings.loop = loop;
    playing.parent.with("end", 1000);
    StubEffect *child = playing.add(1, 0, 1000);

    playing.frameAt(elapsed);

    QCOMPARE(playing.now(), now);
    QCOMPARE(child->getState(), now < 1000);
}

void tst_FrameRenderer::requestAndReachedEndAreOneRestart()
{
    FramePlaying playing;
    playing.settings.loop = true;
    playing.parent.with("end", 1000);
    playing.renderer.requestRestart();

    playing.frameAt(1500);
    QCOMPARE(playing.now(), 0u);
    playing.frameAt(1600);
    QCOMPARE(playing.now(), 100u);
}

void tst_FrameRenderer::endOfZeroRestartsInEveryFrame_data()
{
    QTest::addColumn<QString>("end");
    QTest::newRow("zero") << "0";
    QTest::newRow("not a number") << "soon";
    QTest::newRow("negative") << "-1";
}

void tst_FrameRenderer::endOfZeroRestartsInEveryFrame()
{
    QFETCH(QString, end);
    FramePlaying playing;
    playing.settings.loop = true;
    playing.parent.with("end", end);
    StubEffect *child = playing.add(1, 0, 1000);

    for (quint32 ms = 100; ms <= 400; ms += 100) {
        playing.frameAt(ms);
        QCOMPARE(playing.now(), 0u);
        QCOMPARE(child->getTotalElapsedTime(), 0ul);
    }
    QCOMPARE(child->draws, 4);
}

void tst_FrameRenderer::restartGivesEveryChildTheFrameTimeAsStart()
{
    FramePlaying playing;
    StubEffect *running = playing.add(1, 0, 1000);
    StubEffect *over = playing.add(2, 0, 100);
    StubEffect *coming = playing.add(3, 400, 1000);
    playing.frameAt(300);
    playing.renderer.requestRestart();

    playing.frameAt(350);

    QCOMPARE(running->getTotalElapsedTime(), 0ul);
    QVERIFY(over->getState());
    QCOMPARE(over->getTotalElapsedTime(), 0ul);
    QVERIFY(!coming->getState());
    QCOMPARE(coming->getTotalElapsedTime(), 0ul);
}

void tst_FrameRenderer::loopGoesOnAcrossMidnight()
{
    FramePlaying playing(QTime(23, 59, 59, 300));
    playing.settings.loop = true;
    playing.parent.with("end", 1000);
    StubEffect *child = playing.add(1, 500, 900);

    playing.frameAt(600);
    QVERIFY(child->getState());
    playing.frameAt(800); // 00:00:00.100
    QCOMPARE(playing.now(), 800u);
    QVERIFY(child->getState());
    QCOMPARE(child->getTotalElapsedTime(), 300ul);
    playing.frameAt(1000);
    QCOMPARE(playing.now(), 0u);
    QVERIFY(!child->getState());
    playing.frameAt(1550);
    QCOMPARE(playing.now(), 550u);
    QCOMPARE(child->getTotalElapsedTime(), 50ul);
}

// --- The editor ---

void tst_FrameRenderer::editorIsToldOfTransitionsOnly()
{
    FramePlaying playing;
    FakeEditor editor;
    playing.editor = &editor;
    playing.add(7, 1000, 2000);
    playing.add(4294967295u, 1500, 3000);

    playing.frameAt(500);
    QCOMPARE(editor.shown, Shown());
    playing.frameAt(1000);
    QCOMPARE(std::exchange(editor.shown, {}), Shown({{7, true}}));
    playing.frameAt(1200);
    QCOMPARE(editor.shown, Shown());
    playing.frameAt(2000);
    QCOMPARE(std::exchange(editor.shown, {}), Shown({{7, false}, {4294967295u, true}}));
    playing.frameAt(2500);
    QCOMPARE(editor.shown, Shown());
    playing.frameAt(3000);
    QCOMPARE(std::exchange(editor.shown, {}), Shown({{4294967295u, false}}));
    playing.frameAt(3500);
    QCOMPARE(editor.shown, Shown());
}

void tst_FrameRenderer::editorIsNotToldOfALoopThatStopsNobody()
{
    FramePlaying playing;
    FakeEditor editor;
    playing.editor = &editor;
    playing.settings.loop = true;
    playing.parent.with("end", 1000);
    playing.add(1, 0, 1000);
    StubEffect *second = playing.add(2, 500, 1000);
    playing.frameAt(600);
    editor.shown.clear();

    playing.frameAt(1100);

    QVERIFY(!second->getState());
    QCOMPARE(editor.shown, Shown({{2, false}}));
}

void tst_FrameRenderer::editorIsToldUnderTheEidThatIsReadThen()
{
    FramePlaying playing;
    FakeEditor editor;
    playing.editor = &editor;
    StubEffect *child = playing.add(7, 0, 1000);
    playing.frameAt(0);
    child->with("eid", QStringLiteral("seven"));

    playing.frameAt(1000);

    QCOMPARE(editor.shown, Shown({{7, true}, {0, false}}));
}

// --- Changes of the list ---

void tst_FrameRenderer::childrenMayComeAndGoBetweenFrames()
{
    FramePlaying playing;
    playing.settings.priority = 10;
    StubEffect *first = playing.add(1, 0, 1000);
    StubEffect *second = playing.add(2, 0, 1000);
    StubEffect *third = playing.add(3, 0, 1000);
    first->with("priority", 1);
    second->with("priority", 2);
    third->with("priority", 3);
    playing.frameAt(100);

    playing.roster.remove(first);
    delete first;
    playing.frameAt(200);
    QCOMPARE(second->drawnPriorities, QStringList({"12", "12"}));
    QCOMPARE(third->drawnPriorities, QStringList({"13", "13"}));

    StubEffect *fourth = playing.add(4, 0, 1000);
    fourth->with("priority", 4);
    playing.frameAt(300);
    QCOMPARE(fourth->drawnPriorities, QStringList({"14"}));
    QCOMPARE(third->drawnPriorities, QStringList({"13", "13", "13"}));

    playing.roster.remove(second);
    playing.roster.remove(third);
    delete second;
    delete third;
    playing.frameAt(400);
    QCOMPARE(fourth->drawnPriorities, QStringList({"14", "14"}));
    QCOMPARE(fourth->text("priority"), QStringLiteral("4"));
}

void tst_FrameRenderer::orderMayChangeBetweenFrames()
{
    FramePlaying playing;
    playing.settings.priority = 10;
    StubEffect *first = playing.add(1, 0, 1000);
    StubEffect *second = playing.add(2, 0, 1000);
    first->with("priority", 1);
    second->with("priority", 2);
    playing.frameAt(100);
    first->with("priority", 3);
    playing.roster.sort();
    QCOMPARE(playing.roster.children().at(0), static_cast<Effect *>(second));

    playing.frameAt(200);

    QCOMPARE(first->drawnPriorities, QStringList({"11", "13"}));
    QCOMPARE(second->drawnPriorities, QStringList({"12", "12"}));
    QCOMPARE(first->text("priority"), QStringLiteral("3"));
    QCOMPARE(second->text("priority"), QStringLiteral("2"));
}

void tst_FrameRenderer::childAddedWhileDrawingPlaysFromTheNextFrame()
{
    FramePlaying playing;
    playing.settings.priority = 10;
    StubEffect *first = playing.add(1, 0, 1000);
    StubEffect *last = playing.add(2, 0, 1000);
    StubEffect *added = nullptr;
    first->whileDrawing = [&playing, &added](StubEffect &) {
        if (!added)
            added = playing.add(3, 0, 1000);
    };

    playing.frameAt(100);
    QVERIFY(added);
    QCOMPARE(added->draws, 0);
    QCOMPARE(last->draws, 1);
    QCOMPARE(first->text("priority"), QStringLiteral("0"));

    playing.frameAt(200);
    QCOMPARE(added->draws, 1);
    QCOMPARE(last->draws, 2);
}

void tst_FrameRenderer::noChildrenIsNoTrouble()
{
    FramePlaying playing;
    rehearsal::StageLight *light = playing.map.addLight(1, QString(), {});
    playing.lights = {light};
    playing.settings.brightness = 0.25;

    playing.frameAt(100);

    QCOMPARE(light->factor(), 0.25);
}

QTEST_GUILESS_MAIN(tst_FrameRenderer)
#include "tst_FrameRenderer.moc"
