#include "EffectHost.h"
#include "LogCapture.h"
#include "MetaStage.h"

#include <QRegularExpression>
#include <QTest>

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
    void loopPropertySwitchesTheLoop();
    void brightnessPropertyScalesTheLights();

    void cycleTimeIsEndMinusBegin_data();
    void cycleTimeIsEndMinusBegin();

    void initTakesTheLatestEnd_data();
    void initTakesTheLatestEnd();
    void initSortsTheChildren();
    void initRestartsTheClock();
    void initClearsOnlyTheOwnDirtyFlag();
    void initReadsTheLights();
    void initWithoutMapLeavesNoLights();
    void initLeavesTheChildrenAlone();

    void addedChildStandsInTheHostsOrder();
    void addedChildRaisesTheNextEid_data();
    void addedChildRaisesTheNextEid();
    void addingNullChangesNothing();
    void addingAChildLeavesEndAndDirtyFlagAlone();

    void levelGoesDownToEveryDepth();
    void addedSubtreeTakesItsLevels();

    void getEffectFindsTheFirstWithThatEid_data();
    void getEffectFindsTheFirstWithThatEid();
    void getEffectsIsACopyThatOwnsNothing();
    void getGIDFindsTheFirstGroupOfThatName_data();
    void getGIDFindsTheFirstGroupOfThatName();
    void getGIDWithoutMapIsNoGroup();

    void dirtyChildMakesTheEffectDirty();
    void dirtyQuestionStopsAtTheFirstYes();
    void dirtyGrandchildMakesTheEffectDirty();

    void resetStartTimeRestartsInTheNextFrame();
    void initChildrenGoesInListOrder();
    void stopChildrenStopsEveryOne();
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

    QTest::newRow("from 0") << "0" << "1500" << 1500u;
    QTest::newRow("from later") << "500" << "1500" << 1000u;
    QTest::newRow("nothing") << "700" << "700" << 0u;
    QTest::newRow("end before begin wraps at 2^32") << "3000" << "1000" << 4294965296u;
    QTest::newRow("largest") << "0" << "4294967295" << 4294967295u;
    QTest::newRow("1 ms below 0") << "4294967295" << "0" << 1u;
    QTest::newRow("not numbers") << "abc" << "-3" << 0u;
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

void tst_MetaEffect::initWithoutMapLeavesNoLights()
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

// --- Adding children ---

void tst_MetaEffect::addedChildStandsInTheHostsOrder()
{
    MetaStage stage;
    quint32 eid = 0;
    for (const int priority : {5, 1, 5, 3}) {
        auto *child = new StubEffect(&stage.map, eid++);
        child->with("priority", priority);
        stage.effect.addChild(child);
    }

    QCOMPARE(stage.eids(), QStringList({"1", "3", "0", "2"}));
}

void tst_MetaEffect::addedChildRaisesTheNextEid_data()
{
    QTest::addColumn<QStringList>("eids");
    QTest::addColumn<QStringList>("next");

    QTest::newRow("none") << QStringList() << QStringList({"0", "1"});
    QTest::newRow("0") << QStringList({"0"}) << QStringList({"1", "2"});
    QTest::newRow("equal to the next") << QStringList({"2", "3"}) << QStringList({"4", "5"});
    QTest::newRow("above the next") << QStringList({"2", "7"}) << QStringList({"8", "9"});
    QTest::newRow("below the next") << QStringList({"2", "1"}) << QStringList({"3", "4"});
    QTest::newRow("the same twice") << QStringList({"2", "2"}) << QStringList({"3", "4"});
    QTest::newRow("not a number") << QStringList({"two"}) << QStringList({"1", "2"});
    QTest::newRow("largest but one")
        << QStringList({"4294967294"}) << QStringList({"4294967295", "0"});
    QTest::newRow("largest wraps to 0") << QStringList({"4294967295"}) << QStringList({"0", "1"});
}

void tst_MetaEffect::addedChildRaisesTheNextEid()
{
    QFETCH(QStringList, eids);
    QFETCH(QStringList, next);
    MetaStage stage;
    for (const QString &eid : eids) {
        auto *child = new StubEffect(&stage.map);
        child->with("eid", eid);
        stage.effect.addChild(child);
    }
    StubEffect copied(&stage.map);

    QStringList given;
    for (int i = 0; i < 2; ++i) {
        QString text = savedText(copied);
        stage.effect.pasteEffect(text);
        const EffectList children = stage.effect.getEffects();
        given.append(children.at(children.count() - 1)->getPropertyString(QStringLiteral("eid")));
    }

    QCOMPARE(given, next);
}

void tst_MetaEffect::addingNullChangesNothing()
{
    MetaStage stage;
    stage.add(3);
    const QString before = savedText(stage.effect);

    stage.effect.addChild(nullptr);

    QCOMPARE(stage.effect.getEffects().count(), 1);
    QCOMPARE(savedText(stage.effect), before);
    QVERIFY(!stage.effect.isDirty());
}

void tst_MetaEffect::addingAChildLeavesEndAndDirtyFlagAlone()
{
    MetaStage stage;
    stage.effect.init();
    auto *child = new StubEffect(&stage.map, 1);
    child->with("end", 5000);
    child->setDirty(false);

    stage.effect.addChild(child);

    QCOMPARE(stage.effect.text("end"), QStringLiteral("0"));
    QVERIFY(!stage.effect.isDirty());
    QCOMPARE(child->inits, 0);
}

// --- Levels ---

void tst_MetaEffect::levelGoesDownToEveryDepth()
{
    MetaStage stage;
    StubEffect *child = stage.add(1);
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 2);
    StubEffect *grandchild = stage.addTo(*nested, 1);
    QCOMPARE(child->level(), 1);
    QCOMPARE(nested->level(), 1);
    QCOMPARE(grandchild->level(), 2);

    stage.effect.setLevel(4);
    QCOMPARE(stage.effect.level(), 4);
    QCOMPARE(child->level(), 5);
    QCOMPARE(nested->level(), 5);
    QCOMPARE(grandchild->level(), 6);

    stage.effect.setLevel(-1);
    QCOMPARE(child->level(), 0);
    QCOMPARE(grandchild->level(), 1);
}

void tst_MetaEffect::addedSubtreeTakesItsLevels()
{
    MetaStage stage;
    stage.effect.setLevel(2);
    auto *nested = new OpenMetaEffect(&stage.map, 0);
    StubEffect *grandchild = stage.addTo(*nested, 1);
    QCOMPARE(grandchild->level(), 1);

    stage.effect.addChild(nested);

    QCOMPARE(nested->level(), 3);
    QCOMPARE(grandchild->level(), 4);
}

// --- Looking up ---

void tst_MetaEffect::getEffectFindsTheFirstWithThatEid_data()
{
    QTest::addColumn<quint32>("eid");
    QTest::addColumn<int>("index");

    // The eids are 4, 0, 4294967295, 4, unreadable.
    QTest::newRow("one of two") << 4u << 0;
    QTest::newRow("0 is an eid like any other") << 0u << 1;
    QTest::newRow("largest") << 4294967295u << 2;
    QTest::newRow("missing") << 5u << -1;
}

void tst_MetaEffect::getEffectFindsTheFirstWithThatEid()
{
    QFETCH(quint32, eid);
    QFETCH(int, index);
    MetaStage stage;
    for (const char *text : {"4", "0", "4294967295", "4", "four"}) {
        auto *child = new StubEffect(&stage.map);
        child->with("eid", QString::fromLatin1(text));
        stage.effect.addChild(child);
    }

    QCOMPARE(stage.effect.getEffect(eid), stage.effect.getEffects().at(index));
}

void tst_MetaEffect::getEffectsIsACopyThatOwnsNothing()
{
    MetaStage stage;
    int deletions = 0;
    stage.add(1)->deletions = &deletions;
    stage.add(2)->deletions = &deletions;
    {
        EffectList copy = stage.effect.getEffects();
        QVERIFY(!copy.autoDelete());
        QCOMPARE(copy.count(), 2);
        copy.clear();
        QCOMPARE(stage.effect.getEffects().count(), 2);
        const EffectList other = stage.effect.getEffects();
        QCOMPARE(other.count(), 2);
    }
    QCOMPARE(deletions, 0);
}

void tst_MetaEffect::getGIDFindsTheFirstGroupOfThatName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<quint32>("gid");

    QTest::newRow("lowest uid of two") << "Roof" << 3u;
    QTest::newRow("only one") << "Tree" << 4000000000u;
    QTest::newRow("None, although a group is called so") << "None" << 0u;
    QTest::newRow("none in small letters is a name") << "none" << 11u;
    QTest::newRow("no name") << "" << 12u;
    QTest::newRow("other letters") << "roof" << 0u;
    QTest::newRow("blank behind") << "Roof " << 0u;
    QTest::newRow("missing") << "Garden" << 0u;
}

void tst_MetaEffect::getGIDFindsTheFirstGroupOfThatName()
{
    QFETCH(QString, name);
    QFETCH(quint32, gid);
    MetaStage stage;
    const std::pair<quint32, const char *> groups[] = {{20, "Roof"},          {3, "Roof"},
                                                       {4000000000u, "Tree"}, {1, "None"},
                                                       {11, "none"},          {12, ""}};
    for (const auto &[uid, groupName] : groups)
        QVERIFY(stage.map.addGroup(uid, QString::fromLatin1(groupName), ChasingGroup, {}));

    QCOMPARE(stage.effect.getGID(name), static_cast<unsigned long>(gid));
}

void tst_MetaEffect::getGIDWithoutMapIsNoGroup()
{
    const OpenMetaEffect effect(nullptr, 0);

    QCOMPARE(effect.getGID(QStringLiteral("Roof")), 0ul);
    QCOMPARE(effect.getGID(QStringLiteral("None")), 0ul);
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
