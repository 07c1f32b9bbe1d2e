#include "EditorView.h"
#include "FrameRenderer.h"
#include "StageMap.h"
#include "StubEffect.h"

#include <QRegularExpression>
#include <QTest>

#include <cmath>
#include <limits>
#include <utility>

namespace {

class FakeEditor final : public meta::EditorView
{
public:
    void showPlayState(quint32 eid, bool running) override { shown.append({eid, running}); }

    QList<std::pair<quint32, bool>> shown;
};

using Shown = QList<std::pair<quint32, bool>>;

/// A parent whose clock was started at `start`, and what plays its children.
class Playing
{
public:
    explicit Playing(QTime start = QTime(12, 0)) : m_start(start) { parent.setStartTime(start); }

    StubEffect *add(quint32 eid, quint32 begin, quint32 end)
    {
        auto *child = new StubEffect(&map, eid);
        child->with("begin", begin).with("end", end);
        roster.add(child);
        return child;
    }

    /// The frame `ms` after the first start of the parent's clock.
    void frameAt(quint32 ms)
    {
        settings.time = m_start.addMSecs(static_cast<int>(ms));
        map.clock().beginFrame(settings.time);
        parent.updateLights(settings.time, settings.arg);
        renderer.render(parent, settings, lights, editor);
        map.clock().endFrame();
    }

    quint32 now() const { return static_cast<quint32>(parent.getTotalElapsedTime()); }

    rehearsal::StageMap map;
    StubEffect parent{&map};
    meta::ChildRoster roster;
    meta::FrameRenderer renderer{roster};
    meta::FrameRenderer::Frame settings{{}, 77, 0.0, 0, false, 1.0};
    std::vector<Light *> lights;
    FakeEditor *editor = nullptr;

private:
    QTime m_start;
};

} // namespace

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

    void transparencyFollowsTheFades_data();
    void transparencyFollowsTheFades();
    void transparencyFollowsTheParents();
    void stoppedChildKeepsItsTransparency();

    void priorityIsLentForTheFrame_data();
    void priorityIsLentForTheFrame();
    void priorityLentFollowsTheParents();
    void childThatChangesItsPriorityWhileDrawingGetsItsOwnBack_data();
    void childThatChangesItsPriorityWhileDrawingGetsItsOwnBack();
    void stoppedChildIsHandedTheFrameToo();
    void childrenDrawInListOrder();

    void lightsTakeThePriorityOfATransparentParent_data();
    void lightsTakeThePriorityOfATransparentParent();
    void lightsTakeTheBrightnessBelowOne_data();
    void lightsTakeTheBrightnessBelowOne();
    void lightsAreSetAfterTheChildrenDrew();
    void missingLightsAreSkipped();

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
    Playing playing;
    StubEffect *child = playing.add(1, begin, end);

    playing.frameAt(now);

    QCOMPARE(playing.now(), now);
    QCOMPARE(child->getState(), runs);
    QCOMPARE(child->draws, runs ? 1 : 0);
}

void tst_FrameRenderer::childOutsideItsSpanIsStopped()
{
    Playing playing;
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
    Playing playing(start);
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
    Playing playing;
    StubEffect *child = playing.add(1, 1000, 2000);
    playing.frameAt(1250);
    child->with("begin", 500);

    playing.frameAt(1300);

    QCOMPARE(child->getTotalElapsedTime(), 300ul);
}

void tst_FrameRenderer::childEnteringItsSpanAgainStartsAnew()
{
    Playing playing;
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
    Playing playing;
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
    Playing playing;
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
    Playing playing;
    playing.settings.loop = loop;
    playing.parent.with("end", 1000);
    StubEffect *child = playing.add(1, 0, 1000);

    playing.frameAt(elapsed);

    QCOMPARE(playing.now(), now);
    QCOMPARE(child->getState(), now < 1000);
}

void tst_FrameRenderer::requestAndReachedEndAreOneRestart()
{
    Playing playing;
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
    Playing playing;
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
    Playing playing;
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
    Playing playing(QTime(23, 59, 59, 300));
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

// --- Transparency ---

void tst_FrameRenderer::transparencyFollowsTheFades_data()
{
    QTest::addColumn<double>("parents");
    QTest::addColumn<quint32>("end");
    QTest::addColumn<quint32>("fadeIn");
    QTest::addColumn<quint32>("fadeOut");
    QTest::addColumn<quint32>("sinceBegin");
    QTest::addColumn<QString>("text");
    constexpr quint32 largest = 4294967295u;

    // Children begin at 1000.
    QTest::newRow("no fades, at the begin") << 0.2 << 9000u << 0u << 0u << 0u << "0.2";
    QTest::newRow("no fades, last ms") << 0.2 << 9000u << 0u << 0u << 7999u << "0.2";
    QTest::newRow("three digits") << 1.0 / 3.0 << 9000u << 0u << 0u << 0u << "0.333";
    QTest::newRow("small") << 0.000012345 << 9000u << 0u << 0u << 0u << "1.23e-05";
    QTest::newRow("opaque") << 0.0 << 9000u << 0u << 0u << 0u << "0";
    QTest::newRow("invisible") << 1.0 << 9000u << 0u << 0u << 0u << "1";

    QTest::newRow("fading in, at the begin") << 0.2 << 9000u << 1000u << 0u << 0u << "1";
    QTest::newRow("fading in, half") << 0.2 << 9000u << 1000u << 0u << 500u << "0.6";
    QTest::newRow("fading in, last ms") << 0.2 << 9000u << 1000u << 0u << 999u << "0.201";
    QTest::newRow("faded in") << 0.2 << 9000u << 1000u << 0u << 1000u << "0.2";
    QTest::newRow("fading in, a third") << 0.0 << 9000u << 3000u << 0u << 1000u << "0.667";
    QTest::newRow("fading in, invisible parent") << 1.0 << 9000u << 1000u << 0u << 500u << "1";
    QTest::newRow("fade of 1 ms, at the begin") << 0.2 << 9000u << 1u << 0u << 0u << "1";
    QTest::newRow("fade of 1 ms, behind it") << 0.2 << 9000u << 1u << 0u << 1u << "0.2";
    QTest::newRow("longest fade in") << 0.0 << largest << largest << 0u << 42949673u << "0.99";

    QTest::newRow("not yet fading out") << 0.2 << 9000u << 0u << 1000u << 7000u << "0.2";
    QTest::newRow("fading out, first ms") << 0.2 << 9000u << 0u << 1000u << 7001u << "0.201";
    QTest::newRow("fading out, half") << 0.2 << 9000u << 0u << 1000u << 7500u << "0.6";
    QTest::newRow("fading out, last ms") << 0.2 << 9000u << 0u << 1000u << 7999u << "0.999";
    QTest::newRow("longest fade out") << 0.2 << largest << 0u << largest << 43199000u << "0.208";

    QTest::newRow("overlap, before it") << 0.2 << 2500u << 1000u << 1000u << 500u << "0.6";
    QTest::newRow("overlap, fade out wins") << 0.2 << 2500u << 1000u << 1000u << 501u << "0.201";
    QTest::newRow("overlap, in over") << 0.2 << 2500u << 1000u << 1000u << 1000u << "0.6";
    QTest::newRow("fades longer than the span") << 0.0 << 2000u << 4000u << 4000u << 200u << "0.8";
}

void tst_FrameRenderer::transparencyFollowsTheFades()
{
    QFETCH(double, parents);
    QFETCH(quint32, end);
    QFETCH(quint32, fadeIn);
    QFETCH(quint32, fadeOut);
    QFETCH(quint32, sinceBegin);
    QFETCH(QString, text);
    Playing playing;
    playing.settings.transparency = parents;
    StubEffect *child = playing.add(1, 1000, end);
    child->with("fadein", fadeIn).with("fadeout", fadeOut).with("transparency", QStringLiteral("?"));
    QString seen;
    child->whileDrawing = [&seen](StubEffect &drawn) { seen = drawn.text("transparency"); };

    playing.frameAt(1000 + sinceBegin);

    QCOMPARE(seen, text);
    QCOMPARE(child->text("transparency"), text);
}

void tst_FrameRenderer::transparencyFollowsTheParents()
{
    Playing playing;
    StubEffect *child = playing.add(1, 0, 10000);
    const double steps[] = {0.0, 0.5, 0.5, 0.125, 0.0};
    const QStringList expected{"0", "0.5", "0.5", "0.125", "0"};
    QStringList texts;
    quint32 now = 0;
    for (const double step : steps) {
        playing.settings.transparency = step;
        playing.frameAt(now += 10);
        texts.append(child->text("transparency"));
    }
    QCOMPARE(texts, expected);
}

void tst_FrameRenderer::stoppedChildKeepsItsTransparency()
{
    Playing playing;
    playing.settings.transparency = 0.5;
    StubEffect *child = playing.add(1, 1000, 2000);
    child->with("transparency", QStringLiteral("0.25"));

    playing.frameAt(500);

    QCOMPARE(child->text("transparency"), QStringLiteral("0.25"));
}

// --- Priority ---

void tst_FrameRenderer::priorityIsLentForTheFrame_data()
{
    QTest::addColumn<QString>("own");
    QTest::addColumn<int>("parents");
    QTest::addColumn<QString>("raised");
    QTest::addColumn<QString>("givenBack");
    constexpr int lowest = std::numeric_limits<int>::min();

    QTest::newRow("raised") << "5" << 10 << "15" << "5";
    QTest::newRow("parent without priority") << "5" << 0 << "5" << "5";
    QTest::newRow("both zero") << "0" << 0 << "0" << "0";
    QTest::newRow("own zero") << "0" << 10 << "10" << "0";
    QTest::newRow("not a number") << "abc" << 10 << "10" << "0";
    QTest::newRow("not a number, nothing lent") << "abc" << 0 << "0" << "0";
    QTest::newRow("empty") << "" << 3 << "3" << "0";
    QTest::newRow("fraction") << "1.5" << 3 << "3" << "0";
    QTest::newRow("leading zeros") << "007" << 1 << "8" << "7";
    QTest::newRow("leading zeros, nothing lent") << "007" << 0 << "7" << "7";
    QTest::newRow("sign and blanks") << " +7 " << 0 << "7" << "7";
    QTest::newRow("negative text") << "-5" << 3 << "3" << "0";
    QTest::newRow("negative text, nothing lent") << "-5" << 0 << "0" << "0";
    QTest::newRow("largest int") << "2147483647" << 1 << "2147483648" << "2147483647";
    QTest::newRow("beyond int") << "2147483648" << 1 << "2147483649" << "2147483648";
    QTest::newRow("largest") << "4294967295" << 0 << "4294967295" << "4294967295";
    QTest::newRow("wraps upward") << "4294967295" << 3 << "2" << "4294967295";
    QTest::newRow("too large") << "4294967296" << 3 << "3" << "0";
    QTest::newRow("negative parent") << "5" << -2 << "3" << "5";
    QTest::newRow("wraps downward") << "5" << -7 << "4294967294" << "5";
    QTest::newRow("lowest parent") << "5" << lowest << "2147483653" << "5";
}

void tst_FrameRenderer::priorityIsLentForTheFrame()
{
    QFETCH(QString, own);
    QFETCH(int, parents);
    QFETCH(QString, raised);
    QFETCH(QString, givenBack);
    Playing playing;
    playing.settings.priority = parents;
    StubEffect *child = playing.add(1, 0, 1000);
    child->with("priority", own);

    playing.frameAt(100);
    QCOMPARE(child->drawnPriorities, QStringList{raised});
    QCOMPARE(child->text("priority"), givenBack);

    playing.frameAt(200);
    QCOMPARE(child->drawnPriorities, QStringList({raised, raised}));
    QCOMPARE(child->text("priority"), givenBack);
}

void tst_FrameRenderer::priorityLentFollowsTheParents()
{
    Playing playing;
    StubEffect *child = playing.add(1, 0, 1000);
    child->with("priority", 5);
    quint32 now = 0;
    for (const int parents : {0, 10, 10, 20, 0, -5, 10}) {
        playing.settings.priority = parents;
        playing.frameAt(now += 10);
        QCOMPARE(child->text("priority"), QStringLiteral("5"));
    }
    child->with("priority", 6);
    playing.frameAt(now += 10);
    QCOMPARE(child->text("priority"), QStringLiteral("6"));

    QCOMPARE(child->drawnPriorities, QStringList({"5", "15", "15", "25", "5", "0", "15", "16"}));
}

void tst_FrameRenderer::childThatChangesItsPriorityWhileDrawingGetsItsOwnBack_data()
{
    QTest::addColumn<int>("parents");
    QTest::addColumn<QString>("changed");

    QTest::newRow("nothing lent, another number") << 0 << "99";
    QTest::newRow("nothing lent, not a number") << 0 << "abc";
    QTest::newRow("nothing lent, negative") << 0 << "-7";
    QTest::newRow("lent, another number") << 10 << "99";
    QTest::newRow("lent, its own number") << 10 << "7";
    QTest::newRow("lent, not a number") << 10 << "abc";
}

void tst_FrameRenderer::childThatChangesItsPriorityWhileDrawingGetsItsOwnBack()
{
    QFETCH(int, parents);
    QFETCH(QString, changed);
    Playing playing;
    playing.settings.priority = parents;
    StubEffect *child = playing.add(1, 0, 1000);
    child->with("priority", 7);
    child->whileDrawing = [&changed](StubEffect &drawn) { drawn.with("priority", changed); };

    playing.frameAt(100);

    QCOMPARE(child->draws, 1);
    QCOMPARE(child->text("priority"), QStringLiteral("7"));
}

void tst_FrameRenderer::stoppedChildIsHandedTheFrameToo()
{
    Playing playing;
    playing.settings.priority = 10;
    StubEffect *child = playing.add(1, 1000, 2000);
    child->with("priority", 5);
    child->changes.clear();

    playing.frameAt(300);

    QCOMPARE(child->draws, 0);
    QCOMPARE(child->frameTime(), QTime(12, 0, 0, 300));
    QCOMPARE(child->frameArg(), 77u);
    QCOMPARE(child->changes, QStringList({"priority=15", "priority=5"}));
}

void tst_FrameRenderer::childrenDrawInListOrder()
{
    Playing playing;
    QStringList drawn;
    for (quint32 eid : {3u, 1u, 2u}) {
        StubEffect *child = playing.add(eid, 0, 1000);
        child->whileDrawing = [&drawn](StubEffect &effect) {
            drawn.append(effect.text("eid") + u'@' + effect.frameTime().toString(u"ss.zzz") + u'/'
                         + QString::number(effect.frameArg()));
        };
    }
    playing.settings.arg = 4000000000ul;

    playing.frameAt(25);

    QCOMPARE(drawn, QStringList({"3@00.025/4000000000", "1@00.025/4000000000",
                                 "2@00.025/4000000000"}));
}

// --- Lights ---

void tst_FrameRenderer::lightsTakeThePriorityOfATransparentParent_data()
{
    QTest::addColumn<double>("transparency");
    QTest::addColumn<int>("expected");

    // The lights have 42 before, the parent has -3.
    QTest::newRow("opaque") << 0.0 << 42;
    QTest::newRow("hardly transparent") << 1e-300 << -3;
    QTest::newRow("half") << 0.5 << -3;
    QTest::newRow("invisible") << 1.0 << -3;
    QTest::newRow("negative") << -0.5 << 42;
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << 42;
}

void tst_FrameRenderer::lightsTakeThePriorityOfATransparentParent()
{
    QFETCH(double, transparency);
    QFETCH(int, expected);
    Playing playing;
    for (quint32 uid : {1u, 2u, 3u}) {
        playing.lights.push_back(playing.map.addLight(uid, QString(), {}));
        playing.lights.back()->setPriority(42);
    }
    playing.settings.priority = -3;
    playing.settings.transparency = transparency;

    playing.frameAt(0);

    for (const rehearsal::StageLight *light : playing.map.lights()) {
        QCOMPARE(light->priority(), expected);
        QCOMPARE(light->factor(), 1.0);
    }
}

void tst_FrameRenderer::lightsTakeTheBrightnessBelowOne_data()
{
    QTest::addColumn<double>("brightness");
    QTest::addColumn<double>("expected");

    // The lights have the factor 0.75 before.
    QTest::newRow("full") << 1.0 << 0.75;
    QTest::newRow("more than full") << 1.5 << 0.75;
    QTest::newRow("hardly less than full") << std::nextafter(1.0, 0.0) << std::nextafter(1.0, 0.0);
    QTest::newRow("half") << 0.5 << 0.5;
    QTest::newRow("dark") << 0.0 << 0.0;
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << 0.75;
}

void tst_FrameRenderer::lightsTakeTheBrightnessBelowOne()
{
    QFETCH(double, brightness);
    QFETCH(double, expected);
    Playing playing;
    for (quint32 uid : {1u, 2u, 3u}) {
        playing.lights.push_back(playing.map.addLight(uid, QString(), {}));
        playing.lights.back()->setBrightness(0.75);
        playing.lights.back()->setPriority(42);
    }
    playing.settings.priority = -3;
    playing.settings.brightness = brightness;

    playing.frameAt(0);

    for (const rehearsal::StageLight *light : playing.map.lights()) {
        QVERIFY2(light->factor() == expected, qPrintable(QString::number(light->factor())));
        QCOMPARE(light->priority(), 42);
    }
}

void tst_FrameRenderer::lightsAreSetAfterTheChildrenDrew()
{
    Playing playing;
    rehearsal::StageLight *light = playing.map.addLight(1, QString(), {});
    playing.lights = {light};
    playing.settings.transparency = 0.5;
    playing.settings.priority = 9;
    playing.settings.brightness = 0.5;
    StubEffect *child = playing.add(1, 0, 1000);
    child->whileDrawing = [light](StubEffect &) {
        QCOMPARE(light->priority(), 0);
        QCOMPARE(light->factor(), 1.0);
        static_cast<Light *>(light)->setPriority(100);
        static_cast<Light *>(light)->setBrightness(0.1);
    };

    playing.frameAt(0);

    QCOMPARE(child->draws, 1);
    QCOMPARE(light->priority(), 9);
    QCOMPARE(light->factor(), 0.5);
}

void tst_FrameRenderer::missingLightsAreSkipped()
{
    Playing playing;
    rehearsal::StageLight *light = playing.map.addLight(1, QString(), {});
    playing.lights = {nullptr, light, nullptr};
    playing.settings.transparency = 0.5;
    playing.settings.priority = 9;
    playing.settings.brightness = 0.5;

    playing.frameAt(0);

    QCOMPARE(light->priority(), 9);
    QCOMPARE(light->factor(), 0.5);
}

// --- The editor ---

void tst_FrameRenderer::editorIsToldOfTransitionsOnly()
{
    Playing playing;
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
    Playing playing;
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
    Playing playing;
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
    Playing playing;
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
    Playing playing;
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
    Playing playing;
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
    Playing playing;
    rehearsal::StageLight *light = playing.map.addLight(1, QString(), {});
    playing.lights = {light};
    playing.settings.brightness = 0.25;

    playing.frameAt(100);

    QCOMPARE(light->factor(), 0.25);
}

QTEST_GUILESS_MAIN(tst_FrameRenderer)
#include "tst_FrameRenderer.moc"
