#include "EffectHost.h"
#include "LogCapture.h"
#include "MetaStage.h"

#include <QRegularExpression>
#include <QTest>

#include <limits>
#include <optional>

class tst_MetaEffect : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    void newEffectHasItsTypeAndItsTwoParameters();
    void newEffectIsCleanAndEmpty();
    void newEffectTellsItsVersion();
    void secondArgumentIsTheBases();
    void loopPropertySwitchesTheLoop();
    void brightnessPropertyScalesTheLights();

    void cycleTimeIsEndMinusBegin_data();
    void cycleTimeIsEndMinusBegin();

    void initTakesTheLatestEnd_data();
    void initTakesTheLatestEnd();
    void initSortsTheChildren();
    void initRestartsTheClock();
    void initWritesTheTimesBeforeItSortsAndStartsTheClock();
    void initClearsOnlyTheOwnDirtyFlag();
    void initReadsTheLights();
    void initFindsTheOwnGroup_data();
    void initFindsTheOwnGroup();
    void initFindsTheOwnGroupAnew();
    void initWithoutMapLeavesNoLightsAndNoGroup();
    void initLeavesTheChildrenAlone();

    void dirtyChildMakesTheEffectDirty();
    void dirtyQuestionStopsAtTheFirstYes();
    void dirtyGrandchildMakesTheEffectDirty();

    void resetStartTimeRestartsInTheNextFrame();
    void initChildrenGoesInListOrder();
    void stopChildrenStopsEveryOne();
    void childrenOfChildrenAreNeitherMadeReadyNorStopped();
    void setPropertyNeedsNoReaction();

private:
    std::optional<LogCapture> m_debugLines; ///< keeps those of passes out of the test's output
};

void tst_MetaEffect::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
    m_debugLines.emplace(QtDebugMsg);
}

// --- A new effect ---

void tst_MetaEffect::newEffectHasItsTypeAndItsTwoParameters()
{
    MetaStage stage;

    QCOMPARE(stage.effect.text("type"), QStringLiteral("Meta Effect"));
    QCOMPARE(stage.effect.text("loop"), QStringLiteral("1"));
    QCOMPARE(stage.effect.text("brightness"), QStringLiteral("1"));
    QStringList keys;
    QStringList declared;
    for (const auto &property : EffectHost::properties(stage.effect)) {
        keys.append(property.key);
        if (property.declared)
            declared.append(property.key);
    }
    QCOMPARE(keys.mid(0, 3), QStringList({"type", "loop", "brightness"}));
    QCOMPARE(declared, QStringList({"loop", "brightness"}));
}

void tst_MetaEffect::newEffectIsCleanAndEmpty()
{
    MetaStage stage;

    QVERIFY(!stage.effect.isDirty());
    QVERIFY(stage.effect.getEffects().isEmpty());
    QCOMPARE(stage.effect.getCycleTime(), 0ul);
    QCOMPARE(stage.effect.level(), 0);
    QVERIFY(EffectHost::holdsEffects(stage.effect));
    QVERIFY(!stage.effect.editorWidget());
}

void tst_MetaEffect::newEffectTellsItsVersion()
{
    MetaStage stage;

    QCOMPARE(stage.effect.getVersion(), QStringLiteral("1.9.1"));
    QCOMPARE(stage.effect.getBuildNumber(), 1);
}

// The base of this host keeps it where a frame's argument stands, until there is a frame.
void tst_MetaEffect::secondArgumentIsTheBases()
{
    constexpr unsigned long argument = std::numeric_limits<unsigned long>::max() - 1;
    MetaStage stage;
    OpenMetaEffect effect(&stage.map, argument);
    const StubEffect *child = stage.addTo(effect, 1);

    effect.internalUpdateLights();

    QCOMPARE(child->frameArg(), argument);
}

void tst_MetaEffect::loopPropertySwitchesTheLoop()
{
    MetaStage stage;
    stage.effect.with("end", 1000).with("loop", QStringLiteral("0"));
    stage.frameAt(1500);
    QCOMPARE(stage.effect.getTotalElapsedTime(), 1500ul);

    stage.effect.with("loop", QStringLiteral("1"));
    stage.frameAt(1600);
    QCOMPARE(stage.effect.getTotalElapsedTime(), 0ul);
}

void tst_MetaEffect::brightnessPropertyScalesTheLights()
{
    MetaStage stage;
    const rehearsal::StageLight *light = stage.map.addLight(1, QString(), {});
    stage.effect.init();
    stage.frameAt(0);
    QCOMPARE(light->factor(), 1.0);

    stage.effect.with("brightness", QStringLiteral("0.25"));
    stage.frameAt(10);
    QCOMPARE(light->factor(), 0.25);
}

void tst_MetaEffect::cycleTimeIsEndMinusBegin_data()
{
    QTest::addColumn<QString>("begin");
    QTest::addColumn<QString>("end");
    QTest::addColumn<quint32>("cycleTime");

    QTest::newRow("from 0") << "0"
                            << "1500" << 1500u;
    QTest::newRow("from later") << "500"
                                << "1500" << 1000u;
    QTest::newRow("nothing") << "700"
                             << "700" << 0u;
    QTest::newRow("end before begin wraps at 2^32") << "3000"
                                                    << "1000" << 4294965296u;
    QTest::newRow("largest") << "0"
                             << "4294967295" << 4294967295u;
    QTest::newRow("1 ms below 0") << "4294967295"
                                  << "0" << 1u;
    QTest::newRow("not numbers") << "abc"
                                 << "-3" << 0u;
}

void tst_MetaEffect::cycleTimeIsEndMinusBegin()
{
    QFETCH(QString, begin);
    QFETCH(QString, end);
    QFETCH(quint32, cycleTime);
    MetaStage stage;
    stage.effect.with("begin", begin).with("end", end);

    QCOMPARE(stage.effect.getCycleTime(), static_cast<unsigned long>(cycleTime));
}

// --- init() ---

void tst_MetaEffect::initTakesTheLatestEnd_data()
{
    QTest::addColumn<QStringList>("ends");
    QTest::addColumn<QString>("expected");

    QTest::newRow("no children") << QStringList() << "0";
    QTest::newRow("one") << QStringList({"1500"}) << "1500";
    QTest::newRow("latest in the middle") << QStringList({"10", "9000", "200"}) << "9000";
    QTest::newRow("numbers, not texts") << QStringList({"9", "10"}) << "10";
    QTest::newRow("beyond 2^31") << QStringList({"2147483647", "4294967295"}) << "4294967295";
    QTest::newRow("texts that are no times") << QStringList({"abc", "-5", "", "7.5", "3"}) << "3";
    QTest::newRow("only texts that are no times") << QStringList({"abc", "4294967296"}) << "0";
    QTest::newRow("canonical") << QStringList({"0042"}) << "42";
}

void tst_MetaEffect::initTakesTheLatestEnd()
{
    QFETCH(QStringList, ends);
    QFETCH(QString, expected);
    MetaStage stage;
    for (const QString &end : ends)
        stage.add(0)->with("end", end);
    stage.effect.with("begin", 700).with("end", 12345);

    stage.effect.init();

    QCOMPARE(stage.effect.text("begin"), QStringLiteral("0"));
    QCOMPARE(stage.effect.text("end"), expected);
    QCOMPARE(QString::number(stage.effect.getCycleTime()), expected);
}

void tst_MetaEffect::initSortsTheChildren()
{
    MetaStage stage;
    const int priorities[] = {3, 1, 2, 1, 3, 2};
    QList<StubEffect *> children;
    for (quint32 eid = 0; eid < 6; ++eid)
        children.append(stage.add(eid));
    for (int i = 0; i < 6; ++i)
        children[i]->with("priority", priorities[i]);
    QCOMPARE(stage.eids(), QStringList({"0", "1", "2", "3", "4", "5"}));

    stage.effect.init();
    QCOMPARE(stage.eids(), QStringList({"1", "3", "2", "5", "0", "4"}));

    stage.effect.init();
    QCOMPARE(stage.eids(), QStringList({"1", "3", "2", "5", "0", "4"}));
}

void tst_MetaEffect::initRestartsTheClock()
{
    MetaStage stage;
    stage.effect.with("loop", QStringLiteral("0"));
    stage.frameAt(5000);
    QCOMPARE(stage.effect.getTotalElapsedTime(), 5000ul);
    stage.map.clock().step(stage.noon.addMSecs(6000));

    stage.effect.init();
    stage.frameAt(6400);

    QCOMPARE(stage.effect.getTotalElapsedTime(), 400ul);
}

void tst_MetaEffect::initWritesTheTimesBeforeItSortsAndStartsTheClock()
{
    MetaStage stage;
    stage.effect.with("loop", QStringLiteral("0"));
    StubEffect *child = stage.add(1);
    stage.add(2);
    child->with("priority", 5).with("end", 900);
    stage.frameAt(5000);
    stage.effect.with("begin", 70).with("end", 80);
    QStringList journal;
    EffectHost::setObserver(stage.effect, [&](const QString &key, const QString &text) {
        journal.append(QStringLiteral("%1=%2, %3, at %4, dirty %5")
                           .arg(key, text, stage.eids().join(u' '))
                           .arg(stage.effect.getTotalElapsedTime())
                           .arg(stage.effect.ownDirty()));
    });
    stage.effect.setOwnDirty(true);

    stage.effect.init();

    QCOMPARE(journal,
             QStringList({"begin=0, 1 2, at 5000, dirty 1", "end=900, 1 2, at 5000, dirty 1"}));
    QCOMPARE(stage.eids(), QStringList({"2", "1"}));
    QCOMPARE(stage.effect.getTotalElapsedTime(), 0ul);
    QVERIFY(!stage.effect.ownDirty());
}

void tst_MetaEffect::initClearsOnlyTheOwnDirtyFlag()
{
    MetaStage stage;
    StubEffect *child = stage.add(1);
    child->setDirty(true);
    stage.effect.setOwnDirty(true);

    stage.effect.init();

    QVERIFY(!stage.effect.ownDirty());
    QVERIFY(stage.effect.isDirty());
    child->setDirty(false);
    QVERIFY(!stage.effect.isDirty());
}

void tst_MetaEffect::initReadsTheLights()
{
    MetaStage stage;
    stage.effect.with("brightness", 0.5);
    const rehearsal::StageLight *first = stage.map.addLight(1, QString(), {});
    stage.frameAt(0);
    QCOMPARE(first->factor(), 1.0);

    stage.effect.init();
    const rehearsal::StageLight *second = stage.map.addLight(2, QString(), {});
    stage.frameAt(10);
    QCOMPARE(first->factor(), 0.5);
    QCOMPARE(second->factor(), 1.0);

    stage.effect.init();
    stage.frameAt(20);
    QCOMPARE(first->factor(), 0.5);
    QCOMPARE(second->factor(), 0.5);
}

void tst_MetaEffect::initFindsTheOwnGroup_data()
{
    QTest::addColumn<QString>("gid");
    QTest::addColumn<quint32>("uid");

    // The groups are 10 and 4294967295; 0 stands for none.
    QTest::newRow("one") << "10" << 10u;
    QTest::newRow("the largest uid") << "4294967295" << 4294967295u;
    QTest::newRow("none") << "0" << 0u;
    QTest::newRow("missing") << "11" << 0u;
    QTest::newRow("empty") << "" << 0u;
    QTest::newRow("not a number") << "Roof" << 0u;
    QTest::newRow("negative") << "-1" << 0u;
    QTest::newRow("beyond 32 bits") << "4294967306" << 0u;
}

void tst_MetaEffect::initFindsTheOwnGroup()
{
    QFETCH(QString, gid);
    QFETCH(quint32, uid);
    MetaStage stage;
    stage.map.addGroup(10, QStringLiteral("Roof"), ChasingGroup, {});
    stage.map.addGroup(4294967295, QStringLiteral("Tree"), ChasingGroup, {});
    stage.effect.with("gid", gid);
    QVERIFY(!stage.effect.group());

    stage.effect.init();

    QCOMPARE(stage.effect.group(), stage.map.group(uid));
    QCOMPARE(stage.effect.group() != nullptr, uid > 0);
}

void tst_MetaEffect::initFindsTheOwnGroupAnew()
{
    MetaStage stage;
    const Group *group = stage.map.addGroup(10, QStringLiteral("Roof"), ChasingGroup, {});
    stage.effect.with("gid", 10);
    stage.effect.init();
    QCOMPARE(stage.effect.group(), group);

    stage.effect.with("gid", 0);
    QCOMPARE(stage.effect.group(), group);
    stage.effect.init();
    QVERIFY(!stage.effect.group());

    stage.effect.with("gid", 10);
    stage.effect.init();
    stage.map.removeGroup(10);
    stage.effect.init();
    QVERIFY(!stage.effect.group());
}

void tst_MetaEffect::initWithoutMapLeavesNoLightsAndNoGroup()
{
    OpenMetaEffect effect(nullptr, 0);
    auto *child = new StubEffect(nullptr, 1);
    child->with("end", 1000);
    effect.addChild(child);
    effect.with("gid", 5).with("brightness", 0.5);

    effect.init();
    effect.setState(true);
    effect.setStartTime(QTime(12, 0));
    effect.updateLights(QTime(12, 0, 0, 500), 0);

    QCOMPARE(effect.text("end"), QStringLiteral("1000"));
    QCOMPARE(child->draws, 1);
    QVERIFY(!effect.group());
}

void tst_MetaEffect::initLeavesTheChildrenAlone()
{
    MetaStage stage;
    StubEffect *child = stage.add(1);
    child->with("begin", 100).with("end", 200).with("startfixedtime", 700);
    child->setState(true);
    child->changes.clear();

    stage.effect.init();

    QCOMPARE(child->inits, 0);
    QCOMPARE(child->changes, QStringList());
    QVERIFY(child->getState());
}

// --- Unsaved changes ---

void tst_MetaEffect::dirtyChildMakesTheEffectDirty()
{
    MetaStage stage;
    stage.add(1);
    StubEffect *last = stage.add(2);
    QVERIFY(!stage.effect.isDirty());

    last->setDirty(true);
    QVERIFY(stage.effect.isDirty());
    QVERIFY(!stage.effect.ownDirty());
}

void tst_MetaEffect::dirtyQuestionStopsAtTheFirstYes()
{
    MetaStage stage;
    StubEffect *first = stage.add(1);
    StubEffect *second = stage.add(2);
    StubEffect *third = stage.add(3);
    second->setDirty(true);

    QVERIFY(stage.effect.isDirty());
    QCOMPARE(first->dirtyQuestions, 1);
    QCOMPARE(second->dirtyQuestions, 1);
    QCOMPARE(third->dirtyQuestions, 0);

    stage.effect.setOwnDirty(true);
    QVERIFY(stage.effect.isDirty());
    QCOMPARE(first->dirtyQuestions, 1);
}

void tst_MetaEffect::dirtyGrandchildMakesTheEffectDirty()
{
    MetaStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
    OpenMetaEffect *nestedDeeper = stage.addNestedTo(*nested, 1);
    StubEffect *deepest = stage.addTo(*nestedDeeper, 1);
    nested->setOwnDirty(false);
    nestedDeeper->setOwnDirty(false);
    QVERIFY(!stage.effect.isDirty());

    deepest->setDirty(true);

    QVERIFY(stage.effect.isDirty());
}

// --- What the host asks for ---

void tst_MetaEffect::resetStartTimeRestartsInTheNextFrame()
{
    MetaStage stage;
    stage.effect.with("loop", QStringLiteral("0"));
    StubEffect *child = stage.add(1);
    child->with("begin", 0).with("end", 5000);
    stage.frameAt(1000);

    stage.effect.resetStartTime();
    QCOMPARE(stage.effect.getTotalElapsedTime(), 1000ul);
    QCOMPARE(child->getTotalElapsedTime(), 1000ul);

    stage.frameAt(1500);
    QCOMPARE(stage.effect.getTotalElapsedTime(), 0ul);
    QCOMPARE(child->getTotalElapsedTime(), 0ul);
    stage.frameAt(1600);
    QCOMPARE(stage.effect.getTotalElapsedTime(), 100ul);
}

void tst_MetaEffect::initChildrenGoesInListOrder()
{
    MetaStage stage;
    QStringList journal;
    for (const quint32 eid : {5u, 2u, 9u})
        stage.add(eid)->journal = &journal;

    stage.effect.initChildren();

    QCOMPARE(journal, QStringList({"init 5", "init 2", "init 9"}));
}

void tst_MetaEffect::stopChildrenStopsEveryOne()
{
    MetaStage stage;
    StubEffect *first = stage.add(1);
    StubEffect *second = stage.add(2);
    first->setState(true);
    second->setState(true);

    stage.effect.stopChildren();

    QVERIFY(!first->getState());
    QVERIFY(!second->getState());
    QVERIFY(stage.effect.getState());
}

void tst_MetaEffect::childrenOfChildrenAreNeitherMadeReadyNorStopped()
{
    MetaStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
    nested->with("begin", 300);
    nested->setState(true);
    StubEffect *grandchild = stage.addTo(*nested, 1);
    grandchild->setState(true);

    stage.effect.initChildren();
    QCOMPARE(nested->text("begin"), QStringLiteral("0"));
    QCOMPARE(grandchild->inits, 0);

    stage.effect.stopChildren();
    QVERIFY(!nested->getState());
    QVERIFY(grandchild->getState());
}

void tst_MetaEffect::setPropertyNeedsNoReaction()
{
    MetaStage stage;
    StubEffect *child = stage.add(1);
    child->changes.clear();
    const QString before = savedText(stage.effect);

    stage.effect.internalSetProperty(QStringLiteral("end"), QStringLiteral("5"));

    QCOMPARE(savedText(stage.effect), before);
    QCOMPARE(child->changes, QStringList());
}

QTEST_GUILESS_MAIN(tst_MetaEffect)
#include "tst_MetaEffect.moc"
