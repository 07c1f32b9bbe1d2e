#include "LogCapture.h"
#include "MetaStage.h"

#include <QRegularExpression>
#include <QTest>

#include <optional>

namespace {

/// Notes where it stands when its level is set, starts a pass and takes another eid at that moment.
class OrderProbe : public StubEffect
{
public:
    OrderProbe(MetaStage &stage, quint32 eid) : StubEffect(&stage.map, eid), m_stage(stage) {}

    void setLevel(int newLevel) override
    {
        StubEffect::setLevel(newLevel);
        isListedBeforeLevel = m_stage.effect.getEffects().contains(this);
        with("startfixedtime", 700.0);
        emit cycleTimeChanged(0);
        isConnectedBeforeLevel = text("begin") == u"700";
        with("eid", 40.0);
    }

    bool isListedBeforeLevel = false;
    bool isConnectedBeforeLevel = false;

private:
    MetaStage &m_stage;
};

} // namespace

class tst_MetaEffectChildren : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    void addedChildStandsInTheHostsOrder();
    void addedChildRaisesTheNextEid_data();
    void addedChildRaisesTheNextEid();
    void addingListsConnectsSetsTheLevelAndThenReadsTheEid();
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

private:
    std::optional<LogCapture> m_debugLines; ///< keeps those of passes out of the test's output
};

void tst_MetaEffectChildren::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
    m_debugLines.emplace(QtDebugMsg);
}

// --- Adding children ---

void tst_MetaEffectChildren::addedChildStandsInTheHostsOrder()
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

void tst_MetaEffectChildren::addedChildRaisesTheNextEid_data()
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

void tst_MetaEffectChildren::addedChildRaisesTheNextEid()
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

void tst_MetaEffectChildren::addingListsConnectsSetsTheLevelAndThenReadsTheEid()
{
    MetaStage stage;
    auto *child = new OrderProbe(stage, 3);
    stage.effect.addChild(child);

    QVERIFY(child->isListedBeforeLevel);
    QVERIFY(child->isConnectedBeforeLevel);
    StubEffect copied(&stage.map);
    QString text = savedText(copied);
    stage.effect.pasteEffect(text);
    QCOMPARE(stage.eids(), QStringList({"40", "41"}));
}

void tst_MetaEffectChildren::addingNullChangesNothing()
{
    MetaStage stage;
    stage.add(3);
    const QString before = savedText(stage.effect);

    stage.effect.addChild(nullptr);

    QCOMPARE(stage.effect.getEffects().count(), 1);
    QCOMPARE(savedText(stage.effect), before);
    QVERIFY(!stage.effect.isDirty());
}

void tst_MetaEffectChildren::addingAChildLeavesEndAndDirtyFlagAlone()
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

void tst_MetaEffectChildren::levelGoesDownToEveryDepth()
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

void tst_MetaEffectChildren::addedSubtreeTakesItsLevels()
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

void tst_MetaEffectChildren::getEffectFindsTheFirstWithThatEid_data()
{
    QTest::addColumn<qulonglong>("eid");
    QTest::addColumn<int>("index");

    // The eids are 4, 0, 4294967295, 4, unreadable.
    QTest::newRow("one of two") << 4ull << 0;
    QTest::newRow("0 is an eid like any other") << 0ull << 1;
    QTest::newRow("largest") << 4294967295ull << 2;
    QTest::newRow("missing") << 5ull << -1;
    if constexpr (sizeof(unsigned long) > sizeof(quint32)) {
        QTest::newRow("0 beyond 32 bits") << 4294967296ull << -1;
        QTest::newRow("4 beyond 32 bits") << 4294967300ull << -1;
        QTest::newRow("all bits") << 18446744073709551615ull << -1;
    }
}

void tst_MetaEffectChildren::getEffectFindsTheFirstWithThatEid()
{
    QFETCH(qulonglong, eid);
    QFETCH(int, index);
    MetaStage stage;
    for (const char *text : {"4", "0", "4294967295", "4", "four"}) {
        auto *child = new StubEffect(&stage.map);
        child->with("eid", QString::fromLatin1(text));
        stage.effect.addChild(child);
    }

    QCOMPARE(stage.effect.getEffect(eid), stage.effect.getEffects().at(index));
}

void tst_MetaEffectChildren::getEffectsIsACopyThatOwnsNothing()
{
    int deletions = 0; // counts until the stage is gone
    MetaStage stage;
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

void tst_MetaEffectChildren::getGIDFindsTheFirstGroupOfThatName_data()
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

void tst_MetaEffectChildren::getGIDFindsTheFirstGroupOfThatName()
{
    QFETCH(QString, name);
    QFETCH(quint32, gid);
    MetaStage stage;
    const std::pair<quint32, const char *> groups[] = {
        {20, "Roof"}, {3, "Roof"}, {4000000000u, "Tree"}, {1, "None"}, {11, "none"}, {12, ""}};
    for (const auto &[uid, groupName] : groups)
        QVERIFY(stage.map.addGroup(uid, QString::fromLatin1(groupName), ChasingGroup, {}));

    QCOMPARE(stage.effect.getGID(name), static_cast<unsigned long>(gid));
}

void tst_MetaEffectChildren::getGIDWithoutMapIsNoGroup()
{
    const OpenMetaEffect effect(nullptr, 0);

    QCOMPARE(effect.getGID(QStringLiteral("Roof")), 0ul);
    QCOMPARE(effect.getGID(QStringLiteral("None")), 0ul);
}

QTEST_GUILESS_MAIN(tst_MetaEffectChildren)
#include "tst_MetaEffectChildren.moc"
