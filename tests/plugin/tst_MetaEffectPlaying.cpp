#include "LogCapture.h"
#include "MetaStage.h"
#include "Player.h"

#include <QRegularExpression>
#include <QTest>

#include <optional>

namespace {

/// A meta effect that holds a meta effect that holds a meta effect that holds a stub.
///
///     effect   0 ........................... 3000
///     outer        1000 ............. 2500
///     inner             200 .... 1200              behind outer's begin
///     leaf                 100 . 600               behind inner's begin
class NestedPlaying
{
public:
    NestedPlaying()
        : outer(stage.addNestedTo(stage.effect, 1)),
          inner(stage.addNestedTo(*outer, 1)),
          leaf(stage.addTo(*inner, 1)),
          last(stage.add(2))
    {
        leaf->with("begin", 100).with("end", 600);
        inner->with("begin", 200).with("end", 1200);
        outer->with("begin", 1000).with("end", 2500);
        last->with("begin", 2900).with("end", 3000);
        player.start();
    }

    void frameAt(int ms) { player.frame(start.addMSecs(ms), 77); }

    MetaStage stage;
    OpenMetaEffect *outer;
    OpenMetaEffect *inner;
    StubEffect *leaf;
    StubEffect *last;
    QTime start{23, 59, 58};
    rehearsal::Player player{stage.map, {&stage.effect}};
};

} // namespace

class tst_MetaEffectPlaying : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    void nestedChildPlaysOnItsParentsClock_data();
    void nestedChildPlaysOnItsParentsClock();
    void lateFrameStartsEveryDepthAtItsBegin();
    void stoppedNestedEffectDrawsNothing();
    void transparencyGoesDownToEveryDepth();
    void priorityAddsUpDownToEveryDepth();
    void frameArgumentReachesEveryDepth();

    void loopStartsEveryDepthAnewAcrossMidnight();
    void withoutLoopEverythingStopsAfterTheEnd();
    void stoppedEffectHandsOnNoFrame();

    void lightsTakePriorityAndBrightness();
    void framesLeaveTheSavedTextAlone();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_MetaEffectPlaying::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
    m_debugLines.emplace(QtDebugMsg);
}

// --- Nesting ---

void tst_MetaEffectPlaying::nestedChildPlaysOnItsParentsClock_data()
{
    QTest::addColumn<int>("ms");
    QTest::addColumn<QString>("running");

    QTest::newRow("start") << 0 << "";
    QTest::newRow("before the outer begin") << 999 << "";
    QTest::newRow("outer begin") << 1000 << "outer";
    QTest::newRow("before the inner begin") << 1199 << "outer";
    QTest::newRow("inner begin") << 1200 << "outer inner";
    QTest::newRow("before the leaf's begin") << 1299 << "outer inner";
    QTest::newRow("leaf's begin") << 1300 << "outer inner leaf";
    QTest::newRow("before the leaf's end") << 1799 << "outer inner leaf";
    QTest::newRow("leaf's end") << 1800 << "outer inner";
    QTest::newRow("before the inner end") << 2199 << "outer inner";
    QTest::newRow("inner end") << 2200 << "outer";
    QTest::newRow("before the outer end") << 2499 << "outer";
    QTest::newRow("outer end") << 2500 << "";
    QTest::newRow("last one") << 2950 << "last";
}

void tst_MetaEffectPlaying::nestedChildPlaysOnItsParentsClock()
{
    QFETCH(int, ms);
    QFETCH(QString, running);
    NestedPlaying playing;

    for (int frame = 0; frame < ms; frame += 50)
        playing.frameAt(frame);
    playing.leaf->draws = 0;
    playing.frameAt(ms);

    QStringList states;
    if (playing.outer->getState())
        states.append(QStringLiteral("outer"));
    if (playing.inner->getState())
        states.append(QStringLiteral("inner"));
    if (playing.leaf->getState())
        states.append(QStringLiteral("leaf"));
    if (playing.last->getState())
        states.append(QStringLiteral("last"));
    QCOMPARE(states.join(u' '), running);
    QCOMPARE(playing.leaf->draws, running.contains(u"leaf") ? 1 : 0);
}

void tst_MetaEffectPlaying::lateFrameStartsEveryDepthAtItsBegin()
{
    NestedPlaying playing;
    playing.frameAt(0);

    playing.frameAt(1500);

    QCOMPARE(playing.outer->getTotalElapsedTime(), 500ul);
    QCOMPARE(playing.inner->getTotalElapsedTime(), 300ul);
    QCOMPARE(playing.leaf->getTotalElapsedTime(), 200ul);
    QCOMPARE(playing.leaf->draws, 1);
}

void tst_MetaEffectPlaying::stoppedNestedEffectDrawsNothing()
{
    NestedPlaying playing;
    playing.leaf->with("end", 9000);
    playing.inner->with("end", 9000);
    playing.frameAt(0);
    playing.frameAt(2400);
    QCOMPARE(playing.leaf->draws, 1);

    playing.frameAt(2600);

    QVERIFY(!playing.outer->getState());
    QCOMPARE(playing.leaf->draws, 1);
}

void tst_MetaEffectPlaying::transparencyGoesDownToEveryDepth()
{
    NestedPlaying playing;
    playing.stage.effect.with("transparency", QStringLiteral("0.2"));
    playing.outer->with("fadein", 1000);
    playing.leaf->with("fadeout", 200);
    playing.frameAt(0);

    playing.frameAt(1500);
    QCOMPARE(playing.outer->text("transparency"), QStringLiteral("0.6"));
    QCOMPARE(playing.inner->text("transparency"), QStringLiteral("0.6"));
    QCOMPARE(playing.leaf->text("transparency"), QStringLiteral("0.6"));

    // 100 ms before the leaf's end: outer at 1 - 0.8 x 0.7 = 0.44, leaf at 1 - 0.56 / 2.
    playing.frameAt(1700);
    QCOMPARE(playing.outer->text("transparency"), QStringLiteral("0.44"));
    QCOMPARE(playing.leaf->text("transparency"), QStringLiteral("0.72"));
}

void tst_MetaEffectPlaying::priorityAddsUpDownToEveryDepth()
{
    NestedPlaying playing;
    playing.stage.effect.with("priority", 1000);
    playing.outer->with("priority", 200);
    playing.inner->with("priority", 30);
    playing.leaf->with("priority", 4);
    playing.frameAt(0);

    playing.frameAt(1500);

    QCOMPARE(playing.leaf->drawnPriorities, QStringList({"1234"}));
    QCOMPARE(playing.outer->text("priority"), QStringLiteral("200"));
    QCOMPARE(playing.inner->text("priority"), QStringLiteral("30"));
    QCOMPARE(playing.leaf->text("priority"), QStringLiteral("4"));
}

void tst_MetaEffectPlaying::frameArgumentReachesEveryDepth()
{
    NestedPlaying playing;
    playing.frameAt(0);

    playing.frameAt(1500);

    QCOMPARE(playing.leaf->frameArg(), 77ul);
    QCOMPARE(playing.leaf->frameTime(), playing.start.addMSecs(1500));
}

// --- Loops ---

void tst_MetaEffectPlaying::loopStartsEveryDepthAnewAcrossMidnight()
{
    NestedPlaying playing;
    for (int ms = 0; ms < 3000; ms += 50)
        playing.frameAt(ms);
    const int drawsOfOneRun = playing.leaf->draws;
    QCOMPARE(drawsOfOneRun, 10);

    for (int ms = 3000; ms < 6000; ms += 50) {
        playing.frameAt(ms);
        QCOMPARE(playing.stage.effect.getTotalElapsedTime(), static_cast<unsigned long>(ms - 3000));
        if (playing.leaf->getState() && playing.outer->getState())
            QCOMPARE(playing.leaf->getTotalElapsedTime(), static_cast<unsigned long>(ms - 4300));
    }

    QCOMPARE(playing.leaf->draws, 20);
}

void tst_MetaEffectPlaying::withoutLoopEverythingStopsAfterTheEnd()
{
    NestedPlaying playing;
    playing.stage.effect.with("loop", QStringLiteral("0"));
    for (int ms = 0; ms < 9000; ms += 50)
        playing.frameAt(ms);

    QCOMPARE(playing.stage.effect.getTotalElapsedTime(), 8950ul);
    QCOMPARE(playing.leaf->draws, 10);
    QCOMPARE(playing.last->draws, 2);
    QVERIFY(!playing.last->getState());
    QVERIFY(playing.stage.effect.getState());
}

void tst_MetaEffectPlaying::stoppedEffectHandsOnNoFrame()
{
    NestedPlaying playing;
    playing.frameAt(0);
    playing.player.stop();

    playing.frameAt(1500);

    QVERIFY(!playing.outer->getState());
    QCOMPARE(playing.leaf->draws, 0);
}

// --- Lights, and what a frame leaves behind ---

void tst_MetaEffectPlaying::lightsTakePriorityAndBrightness()
{
    MetaStage stage;
    const rehearsal::StageLight *light = stage.map.addLight(1, QString(), {});
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
    nested->init();
    nested->with("end", 1000).with("brightness", 0.25).with("priority", 3);
    stage.effect.with("transparency", 0.5).with("priority", 7);
    rehearsal::Player player(stage.map, {&stage.effect});
    player.start();

    player.frame(stage.noon, 0);
    QCOMPARE(light->factor(), 0.25);
    QCOMPARE(light->priority(), 7);

    stage.effect.with("brightness", 0.75);
    player.frame(stage.noon.addMSecs(10), 0);
    QCOMPARE(light->factor(), 0.75);

    stage.effect.with("transparency", 0.0).with("brightness", 1.0);
    player.frame(stage.noon.addMSecs(20), 0);
    QCOMPARE(light->factor(), 0.25);
    QCOMPARE(light->priority(), 0);
}

void tst_MetaEffectPlaying::framesLeaveTheSavedTextAlone()
{
    NestedPlaying playing;
    playing.stage.effect.with("priority", 5);
    playing.outer->setOwnDirty(false);
    playing.inner->setOwnDirty(false);
    playing.leaf->setDirty(false);
    playing.last->setDirty(false);
    playing.stage.effect.setOwnDirty(false);
    const QString before = savedText(playing.stage.effect);

    for (int ms = 0; ms < 7000; ms += 50)
        playing.frameAt(ms);

    QVERIFY(playing.leaf->draws > 0);
    QCOMPARE(savedText(playing.stage.effect), before);
    QVERIFY(!playing.stage.effect.isDirty());
}

QTEST_GUILESS_MAIN(tst_MetaEffectPlaying)
#include "tst_MetaEffectPlaying.moc"
