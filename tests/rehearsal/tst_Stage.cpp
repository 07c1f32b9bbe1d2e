#include "HostClock.h"
#include "Player.h"
#include "Probe.h"
#include "StageMap.h"

#include <QTest>

#include <vector>

using rehearsal::HostClock;
using rehearsal::Player;
using rehearsal::StageLight;
using rehearsal::StageMap;

namespace {

const QTime noon(12, 0);

} // namespace

class tst_Stage : public QObject
{
    Q_OBJECT

private slots:
    void elapsedIsCountedModuloADay_data();
    void elapsedIsCountedModuloADay();
    void presentMomentIsTheFramesTime();
    void unsteppedClockFollowsWallTime();
    void restartInAFrameReadsZeroElapsed();
    void elapsedIsNeverNegative();

    void lightBlends_data();
    void lightBlends();
    void lightFactorIsTheLastWriters();
    void lightPriorityKeepsLowerDrawingOut();
    void mapRefusesTakenUids();

    void playerStartsClocksAtTheFirstFrame();
    void playerDrawsInOrderOnResetLights();
    void playerStopsDrawing();
    void playerLengthIsTheLongestEffects();
};

// --- Clock ---

void tst_Stage::elapsedIsCountedModuloADay_data()
{
    QTest::addColumn<QTime>("from");
    QTest::addColumn<QTime>("to");
    QTest::addColumn<quint32>("elapsed");
    QTest::newRow("none") << noon << noon << 0u;
    QTest::newRow("a moment") << noon << noon.addMSecs(1) << 1u;
    QTest::newRow("across midnight") << QTime(23, 59, 59, 500) << QTime(0, 0, 0, 250) << 750u;
    QTest::newRow("to midnight") << QTime(23, 59, 59, 999) << QTime(0, 0) << 1u;
    QTest::newRow("from midnight") << QTime(0, 0) << QTime(23, 59, 59, 999) << 86399999u;
    QTest::newRow("all but a moment of a day") << noon << noon.addMSecs(-1) << 86399999u;
}

void tst_Stage::elapsedIsCountedModuloADay()
{
    QFETCH(QTime, from);
    QFETCH(QTime, to);
    QFETCH(quint32, elapsed);
    QCOMPARE(rehearsal::elapsedBetween(from, to), elapsed);

    Probe effect;
    effect.setStartTime(from);
    effect.updateLights(to, 0);
    QCOMPARE(effect.getTotalElapsedTime(), static_cast<unsigned long>(elapsed));
}

void tst_Stage::presentMomentIsTheFramesTime()
{
    HostClock clock;
    clock.step(noon);
    QCOMPARE(clock.now(), noon);
    clock.beginFrame(noon.addSecs(5));
    QCOMPARE(clock.now(), noon.addSecs(5));
    clock.step(noon.addSecs(6));
    QCOMPARE(clock.now(), noon.addSecs(5));
    clock.endFrame();
    QCOMPARE(clock.now(), noon.addSecs(6));
}

void tst_Stage::unsteppedClockFollowsWallTime()
{
    HostClock clock;
    const QTime first = clock.now();
    QVERIFY(rehearsal::elapsedBetween(first, QTime::currentTime()) < 60000);
    QTest::qWait(20);
    const quint32 elapsed = rehearsal::elapsedBetween(first, clock.now());
    QVERIFY2(elapsed >= 19 && elapsed < 60000, qPrintable(QString::number(elapsed)));
    clock.beginFrame(noon);
    clock.endFrame();
    QVERIFY(rehearsal::elapsedBetween(first, clock.now()) < 60000);
}

void tst_Stage::restartInAFrameReadsZeroElapsed()
{
    StageMap map;
    Probe effect(&map);
    map.clock().step(noon);
    effect.setStartTime();
    map.clock().beginFrame(noon.addMSecs(1234));
    effect.updateLights(noon.addMSecs(1234), 0);
    QCOMPARE(effect.getTotalElapsedTime(), 1234ul);
    effect.setStartTime();
    QCOMPARE(effect.getTotalElapsedTime(), 0ul);
    map.clock().endFrame();
}

void tst_Stage::elapsedIsNeverNegative()
{
    Probe effect;
    effect.setStartTime(noon);
    effect.updateLights(noon.addMSecs(-250), 0);
    QCOMPARE(effect.getTotalElapsedTime(), 86399750ul);
}

// --- Lights ---

void tst_Stage::lightBlends_data()
{
    QTest::addColumn<QList<double>>("draws"); // level, transparency, priority, level, ...
    QTest::addColumn<double>("level");
    QTest::addColumn<int>("priority");
    using Draws = QList<double>;
    QTest::newRow("untouched") << Draws{} << 0.0 << 0;
    QTest::newRow("opaque") << Draws{0.7, 0, 0} << 0.7 << 0;
    QTest::newRow("over the dark") << Draws{0.8, 0.25, 1} << 0.6 << 1;
    QTest::newRow("invisible takes the priority") << Draws{0.8, 1, 3} << 0.0 << 3;
    QTest::newRow("blended") << Draws{1, 0, 0, 0.5, 0.5, 0} << 0.75 << 0;
    QTest::newRow("higher covers") << Draws{1, 0, 1, 0.25, 0, 2} << 0.25 << 2;
    QTest::newRow("equal covers") << Draws{1, 0, 2, 0.25, 0, 2} << 0.25 << 2;
    QTest::newRow("lower is ignored") << Draws{1, 0, 2, 0.25, 0, 1} << 1.0 << 2;
    QTest::newRow("negative is ignored") << Draws{1, 0, -1} << 0.0 << 0;
    QTest::newRow("blended twice") << Draws{1, 0, 0, 0, 0.5, 0, 1, 0.5, 0} << 0.75 << 0;
}

void tst_Stage::lightBlends()
{
    QFETCH(QList<double>, draws);
    StageLight light(1, QString(), {});
    for (qsizetype i = 0; i < draws.size(); i += 3)
        light.draw(draws[i], draws[i + 1], static_cast<int>(draws[i + 2]));
    QTEST(light.level(), "level");
    QTEST(light.priority(), "priority");
    QCOMPARE(light.shown(), light.level());
    light.reset();
    QCOMPARE(light.level(), 0.0);
    QCOMPARE(light.priority(), 0);
}

void tst_Stage::lightFactorIsTheLastWriters()
{
    StageLight light(1, QString(), {});
    light.draw(0.8, 0, 0);
    light.setBrightness(0.5);
    QCOMPARE(light.shown(), 0.4);
    light.setBrightness(0.25);
    QCOMPARE(light.shown(), 0.2);
    light.draw(1.0, 0, 0);
    QCOMPARE(light.shown(), 0.25);
    QCOMPARE(light.level(), 1.0);
    light.reset();
    QCOMPARE(light.factor(), 1.0);
}

void tst_Stage::lightPriorityKeepsLowerDrawingOut()
{
    StageLight light(1, QString(), {});
    light.setPriority(4);
    light.draw(1.0, 0, 3);
    QCOMPARE(light.shown(), 0.0);
    light.draw(1.0, 0, 4);
    QCOMPARE(light.shown(), 1.0);
    light.setPriority(-2);
    light.draw(0.5, 0, -1);
    QCOMPARE(light.shown(), 0.5);
    QCOMPARE(light.priority(), -1);
}

void tst_Stage::mapRefusesTakenUids()
{
    StageMap map;
    StageLight *second = map.addLight(20, QStringLiteral("Second"), {0.5, 0.25});
    StageLight *first = map.addLight(10, QStringLiteral("First"), {});
    QVERIFY(first && second);
    QVERIFY(!map.addLight(20, QStringLiteral("Again"), {}));
    QCOMPARE(map.light(20)->name(), QStringLiteral("Second"));
    QCOMPARE(map.lights(), (std::vector<StageLight *>{first, second}));

    auto *group = map.addGroup(7, QStringLiteral("Both"), SynchronizedGroup, {second, first});
    QVERIFY(group);
    QVERIFY(!map.addGroup(7, QStringLiteral("Again"), LeafGroup, {first}));
    QVERIFY(!map.addGroup(0, QStringLiteral("None"), LeafGroup, {first}));
    QCOMPARE(group->lights(), (QList<StageLight *>{second, first}));

    const MapModel &model = map;
    QCOMPARE(model.getGroup(7), group);
    QCOMPARE(model.getGroup(7)->name(), QStringLiteral("Both"));
    QCOMPARE(model.getGroup(7)->uid(), 7ul);
    QCOMPARE(model.getGroup(7)->groupType(), SynchronizedGroup);
    QVERIFY(!model.getGroup(8));
    if constexpr (sizeof(unsigned long) > sizeof(quint32))
        QVERIFY(!model.getGroup(4294967303)); // 7 and 2^32
    QCOMPARE(model.getLights().keys(), (QList<unsigned long>{10, 20}));
    QCOMPARE(model.getGroups().keys(), QList<unsigned long>{7});
    map.removeGroup(7);
    QVERIFY(!model.getGroup(7));
    QVERIFY(model.getGroups().isEmpty());
}

// --- Player ---

void tst_Stage::playerStartsClocksAtTheFirstFrame()
{
    StageMap map;
    map.clock().step(noon);
    QStringList log;
    Probe effect(&map, QStringLiteral("a"), &log);
    Player player(map, {&effect});
    QVERIFY(!effect.getState());
    player.start();
    QVERIFY(effect.getState());
    QCOMPARE(log, QStringList{"a init"});
    log.clear();
    player.frame(noon.addSecs(10), 7);
    player.frame(noon.addSecs(11), 8);
    QCOMPARE(log, (QStringList{"a draw at 0 with 7", "a draw at 1000 with 8"}));
    player.start();
    log.clear();
    player.frame(noon.addSecs(30), 9);
    QCOMPARE(log, QStringList{"a draw at 0 with 9"});
    QCOMPARE(map.clock().now(), noon);
}

void tst_Stage::playerDrawsInOrderOnResetLights()
{
    StageMap map;
    StageLight *light = map.addLight(1, QString(), {});
    QStringList log;
    Probe first(&map, QStringLiteral("first"), &log);
    Probe second(&map, QStringLiteral("second"), &log);
    first.with("priority", "9");
    first.drawOn = light;
    Player player(map, {&first, &second});
    player.start();
    log.clear();
    player.frame(noon, 0);
    QCOMPARE(log, (QStringList{"first draw at 0 with 0", "second draw at 0 with 0"}));
    QCOMPARE(light->shown(), 1.0);
    QCOMPARE(light->priority(), 9);

    first.drawOn = nullptr;
    light->setBrightness(0.5);
    player.frame(noon.addMSecs(25), 0);
    QCOMPARE(light->level(), 0.0);
    QCOMPARE(light->factor(), 1.0);
    QCOMPARE(light->priority(), 0);
}

void tst_Stage::playerStopsDrawing()
{
    StageMap map;
    QStringList log;
    Probe effect(&map, QStringLiteral("a"), &log);
    Player player(map, {&effect});
    player.start();
    player.stop();
    log.clear();
    player.frame(noon, 0);
    QVERIFY(log.isEmpty());
    QVERIFY(!effect.getState());
}

void tst_Stage::playerLengthIsTheLongestEffects()
{
    StageMap map;
    Probe byEnd(&map);
    byEnd.with("end", "5000").with("cycletime", "100");
    Probe byCycle(&map);
    byCycle.with("cycletime", "7000");
    QCOMPARE(Player(map, {}).length(), 0u);
    QCOMPARE(Player(map, {&byEnd}).length(), 5000u);
    QCOMPARE(Player(map, {&byEnd, &byCycle}).length(), 7000u);
}

QTEST_GUILESS_MAIN(tst_Stage)
#include "tst_Stage.moc"
