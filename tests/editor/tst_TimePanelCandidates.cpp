#include "PanelScene.h"
#include "RuleGroup.h"

#include <QRegularExpression>

namespace {

const QStringList noneAvailable = {"None Available"};

} // namespace

class tst_TimePanelCandidates : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }

    // Choosers
    void choosersOfferWhatIsLegal_data();
    void choosersOfferWhatIsLegal();
    void choosersKeepTheOrderOfTheList();
    void currentItemIsTheTarget_data();
    void currentItemIsTheTarget();
    void ofRepeatedEidsTheLastCandidateIsCurrent();
    void targetNotOfferedIsReplacedWhenTheRuleIsSwitchedOn_data();
    void targetNotOfferedIsReplacedWhenTheRuleIsSwitchedOn();
    void targetNotOfferedStaysWhileTheRuleWasOnAlready();
    void deletedCandidateIsOfferedNoLonger_data();
    void deletedCandidateIsOfferedNoLonger();
    void deletedCandidateOfABlankPanelIsForgotten();

    // None available
    void singleChildIsShownAndStoredAsFixed();
    void linkedWithoutCandidatesIsStoredAsFixedWithoutAPass_data();
    void linkedWithoutCandidatesIsStoredAsFixedWithoutAPass();
    void noneAvailableMapsToNothing();
    void lastCandidateGoneMakesTheLinkedRuleFixed();
};

// --- Choosers ---

void tst_TimePanelCandidates::choosersOfferWhatIsLegal_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QStringList>("rules"); // "eid properties"
    QTest::addColumn<quint32>("edited");
    QTest::addColumn<QString>("offered"); // eids

    const QStringList none;
    QTest::newRow("none linked, first") << 3 << none << 1u << "2 3";
    QTest::newRow("none linked, second") << 3 << none << 2u << "1 3";
    QTest::newRow("none linked, third") << 3 << none << 3u << "1 2";
    QTest::newRow("alone") << 1 << none << 1u << "";
    QTest::newRow("start leads back")
        << 3 << QStringList("2 starttype=1 startlinkeid=1") << 1u << "3";
    QTest::newRow("end leads back") << 3 << QStringList("2 endtype=1 endlinkeid=1") << 1u << "3";
    QTest::newRow("leads back behind the first legal one")
        << 3 << QStringList("3 starttype=1 startlinkeid=1") << 1u << "2 3";
    QTest::newRow("leads back before the first legal one")
        << 3 << QStringList("1 starttype=1 startlinkeid=3") << 3u << "2";
    QTest::newRow("only one, leads back")
        << 2 << QStringList("2 starttype=1 startlinkeid=1") << 1u << "";
    QTest::newRow("all lead back")
        << 4
        << QStringList({"2 starttype=1 startlinkeid=1", "3 endtype=1 endlinkeid=2",
                        "4 starttype=1 startlinkeid=3"})
        << 1u << "";
    QTest::newRow("leads back over another")
        << 4 << QStringList({"2 starttype=1 startlinkeid=3", "3 starttype=1 startlinkeid=1"}) << 1u
        << "4";
    QTest::newRow("start is legal, the end is not followed")
        << 4
        << QStringList({"2 starttype=1 startlinkeid=3 endtype=1 endlinkeid=4",
                        "4 starttype=1 startlinkeid=1"})
        << 1u << "2 3 4";
    QTest::newRow("start is legal, the end leads back at once")
        << 4 << QStringList("2 starttype=1 startlinkeid=3 endtype=1 endlinkeid=1") << 1u << "3 4";
    QTest::newRow("deleted target")
        << 2 << QStringList("2 starttype=1 startlinkeid=99") << 1u << "2";
    QTest::newRow("fixed rules do not lead back")
        << 2 << QStringList("2 starttype=0 startlinkeid=1 endtype=2 endlinkeid=1") << 1u << "2";
    QTest::newRow("own links do not count")
        << 3 << QStringList("1 starttype=1 startlinkeid=2 endtype=1 endlinkeid=3") << 1u << "2 3";
}

void tst_TimePanelCandidates::choosersOfferWhatIsLegal()
{
    QFETCH(int, count);
    QFETCH(QStringList, rules);
    QFETCH(quint32, edited);
    QFETCH(QString, offered);
    PanelScene scene(count);
    for (const QString &rule : rules)
        scene.store(rule.section(u' ', 0, 0).toUInt(), rule.section(u' ', 1));

    scene.select(edited);

    QStringList expected;
    for (const QString &eid : offered.split(u' ', Qt::SkipEmptyParts))
        expected.append("Child " + eid);
    const bool isAny = !expected.isEmpty();
    for (const char *const side : {"start", "end"}) {
        const RuleGroup widgets = group(scene.form(), side);
        QCOMPARE(PanelScene::items(widgets.chooser), isAny ? expected : noneAvailable);
        QCOMPARE(widgets.linkedButton->isEnabledTo(widgets.box), isAny);
    }
}

void tst_TimePanelCandidates::choosersKeepTheOrderOfTheList()
{
    PanelScene scene(4);
    scene.store(1, "priority=5");
    scene.store(2, "priority=9");
    scene.store(3, "priority=1");
    scene.store(4, "priority=7");
    scene.effect.init();
    QVERIFY(scene.eids() != QStringList({"1", "2", "3", "4"}));

    scene.select(1);

    QStringList expected;
    for (const QString &eid : scene.eids()) {
        if (eid != u"1")
            expected.append("Child " + eid);
    }
    QCOMPARE(PanelScene::items(scene.form().m_startLinkEffectComboBox), expected);
    QCOMPARE(PanelScene::items(scene.form().m_endLinkEffectComboBox), expected);
    scene.effect.startLinkEffectActivated(0);
    QCOMPARE("Child " + scene.at(1).text("startlinkeid"), expected.first());
    scene.effect.endLinkEffectActivated(2);
    QCOMPARE("Child " + scene.at(1).text("endlinkeid"), expected.last());
}

void tst_TimePanelCandidates::currentItemIsTheTarget_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");

    QTest::newRow("first") << "2"
                           << "Child 2";
    QTest::newRow("last") << "4"
                          << "Child 4";
    QTest::newRow("itself") << "1"
                            << "Child 2";
    QTest::newRow("no child") << "99"
                              << "Child 2";
    QTest::newRow("empty") << ""
                           << "Child 2";
    QTest::newRow("no number") << "x"
                               << "Child 2";
}

void tst_TimePanelCandidates::currentItemIsTheTarget()
{
    QFETCH(QString, stored);
    QFETCH(QString, shown);
    PanelScene scene(4);
    scene.store(2, "startlinkeid=3 endlinkeid=3");
    scene.select(2);
    scene.store(1, "startlinkeid=" + stored + " endlinkeid=" + stored);

    scene.select(1);

    QCOMPARE(scene.form().m_startLinkEffectComboBox->currentText(), shown);
    QCOMPARE(scene.form().m_endLinkEffectComboBox->currentText(), shown);
    QCOMPARE(scene.at(1).text("startlinkeid"), stored);
    QCOMPARE(scene.at(1).text("endlinkeid"), stored);
}

void tst_TimePanelCandidates::ofRepeatedEidsTheLastCandidateIsCurrent()
{
    PanelScene scene;
    scene.add(3)->with("name", "Twin");
    scene.add(4);
    scene.store(1, "startlinkeid=3 endlinkeid=3");

    scene.select(1);

    for (const char *const side : {"start", "end"}) {
        const QComboBox *chooser = group(scene.form(), side).chooser;
        QCOMPARE(PanelScene::items(chooser),
                 QStringList({"Child 2", "Child 3", "Twin", "Child 4"}));
        QCOMPARE(chooser->currentText(), "Twin");
    }
}

void tst_TimePanelCandidates::targetNotOfferedIsReplacedWhenTheRuleIsSwitchedOn_data()
{
    addSides();
}

void tst_TimePanelCandidates::targetNotOfferedIsReplacedWhenTheRuleIsSwitchedOn()
{
    QFETCH(QString, side);
    PanelScene scene;
    scene.store(1, side + "linkeid=3 " + side + "linkstart=0 " + side + "linkoffset=0");
    scene.select(1);
    scene.store(1, side + "type=1 " + side + "linkeid=99");

    scene.effect.refreshWidgets();

    QCOMPARE(group(scene.form(), side).chooser->currentText(), "Child 2");
    QCOMPARE(scene.take(), QStringList({"1 " + side + "linkeid=2",
                                        "focus m_" + side + "LinkOffsetLineEdit", "pass"}));
    CHECK_SANITY(scene);
}

// No button changes, so no handler stores the item that stays current.
void tst_TimePanelCandidates::targetNotOfferedStaysWhileTheRuleWasOnAlready()
{
    PanelScene scene;
    scene.store(1, "starttype=1 startlinkeid=3");
    scene.select(1);
    scene.store(1, "startlinkeid=99");

    scene.effect.refreshWidgets();

    QCOMPARE(scene.form().m_startLinkEffectComboBox->currentText(), "Child 2");
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.at(1).text("startlinkeid"), "99");
}

void tst_TimePanelCandidates::deletedCandidateIsOfferedNoLonger_data()
{
    addSides();
}

void tst_TimePanelCandidates::deletedCandidateIsOfferedNoLonger()
{
    QFETCH(QString, side);
    PanelScene scene;
    scene.store(1, side + "type=1 " + side + "linkeid=2");
    scene.select(1);
    const QComboBox *chooser = group(scene.form(), side).chooser;

    scene.effect.removeFromTable(3);
    scene.selectEid(1);
    scene.effect.deleteEffect(scene.effect.getEffect(3));
    QCOMPARE(PanelScene::items(chooser), QStringList("Child 2"));
    scene.take();

    scene.effect.startLinkEffectActivated(1);
    scene.effect.endLinkEffectActivated(1);
    QCOMPARE(scene.take(), QStringList());
    scene.effect.startLinkEffectActivated(0);
    QCOMPARE(scene.at(1).text("startlinkeid"), "2");
    CHECK_SANITY(scene);
}

void tst_TimePanelCandidates::deletedCandidateOfABlankPanelIsForgotten()
{
    PanelScene scene;
    scene.select(1);
    scene.click(scene.rowOf(2), 0, Qt::ControlModifier);

    scene.effect.removeFromTable(3);
    scene.effect.deleteEffect(scene.effect.getEffect(3));
    scene.take();

    for (const int index : {0, 1}) {
        scene.effect.startLinkEffectActivated(index);
        scene.effect.endLinkEffectActivated(index);
    }
    QCOMPARE(scene.take(), QStringList());
    scene.selectEid(1);
    QCOMPARE(PanelScene::items(scene.form().m_startLinkEffectComboBox), QStringList("Child 2"));
    CHECK_SANITY(scene);
}

// --- None available ---

void tst_TimePanelCandidates::singleChildIsShownAndStoredAsFixed()
{
    PanelScene scene(1);
    scene.store(1, "starttype=1 startlinkeid=2 startfixedtime=1500 endtype=1 endlinkeid=2 "
                   "endfixedtime=2500");

    scene.select(1);

    const MetaWidget &form = scene.form();
    for (const char *const side : {"start", "end"}) {
        const RuleGroup widgets = group(form, side);
        QCOMPARE(PanelScene::items(widgets.chooser), noneAvailable);
        QVERIFY(!widgets.linkedButton->isEnabled());
        QCOMPARE(ruleOn(form, side), "fixed");
        QCOMPARE(enabledFields(form, side), "time");
    }
    QCOMPARE(scene.at(1).text("starttype"), "0");
    QCOMPARE(scene.at(1).text("endtype"), "0");
    CHECK_SANITY(scene);
}

void tst_TimePanelCandidates::linkedWithoutCandidatesIsStoredAsFixedWithoutAPass_data()
{
    addSides();
}

void tst_TimePanelCandidates::linkedWithoutCandidatesIsStoredAsFixedWithoutAPass()
{
    QFETCH(QString, side);
    PanelScene scene(1);
    scene.store(1, side + "fixedtime=1500");
    scene.select(1);
    scene.store(1, side + "type=1 " + side + "linkeid=1");

    scene.effect.refreshWidgets();

    QCOMPARE(scene.take(), QStringList("1 " + side + "type=0"));
    QCOMPARE(ruleOn(scene.form(), side), "fixed");
    QCOMPARE(enabledFields(scene.form(), side), "time");
    scene.effect.updateEffectTimes();
    QCOMPARE(side == "start" ? scene.startCell(1) : scene.endCell(1), "1.5");
}

void tst_TimePanelCandidates::noneAvailableMapsToNothing()
{
    PanelScene scene(1);
    scene.store(1, "startlinkeid=7 startlinkoffset=100 startfixedtime=0 endlinkeid=8 "
                   "endlinkoffset=200 endfixedtime=0");
    scene.select(1);
    QCOMPARE(scene.form().m_startLinkEffectComboBox->currentIndex(), 0);

    scene.effect.startLinkEffectActivated(0);
    scene.effect.endLinkEffectActivated(0);
    QCOMPARE(scene.take(), QStringList());

    scene.effect.startLinkedToggled(true);
    scene.effect.endLinkedToggled(true);
    QCOMPARE(writes(scene.take()).filter(QRegularExpression("linkeid|linkoffset")), QStringList());
}

void tst_TimePanelCandidates::lastCandidateGoneMakesTheLinkedRuleFixed()
{
    PanelScene scene(2);
    scene.store(1, "starttype=1 startlinkeid=2 endtype=1 endlinkeid=2");
    scene.select(1);

    scene.effect.removeFromTable(2);
    scene.effect.deleteEffect(scene.effect.getEffect(2));
    scene.selectEid(1);

    QCOMPARE(scene.at(1).text("starttype"), "0");
    QCOMPARE(scene.at(1).text("endtype"), "0");
    QCOMPARE(PanelScene::items(scene.form().m_startLinkEffectComboBox), noneAvailable);
    QCOMPARE(ruleOn(scene.form(), "start"), "fixed");
    QCOMPARE(ruleOn(scene.form(), "end"), "fixed");
    CHECK_SANITY(scene);
}

QTEST_MAIN(tst_TimePanelCandidates)
#include "tst_TimePanelCandidates.moc"
