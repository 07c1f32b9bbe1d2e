#include "PanelScene.h"

#include <QRegularExpression>

namespace {

const QStringList noneAvailable = {"None Available"};

/// The widgets of one group by what they are for.
struct RuleGroup
{
    QGroupBox *box;
    QRadioButton *fixedButton;
    QLineEdit *fixedTime;
    QRadioButton *linkedButton;
    QRadioButton *linkStart;
    QRadioButton *linkEnd;
    QComboBox *chooser;
    QLineEdit *offset;
};

/// @param side "start" or "end"
RuleGroup group(const MetaWidget &form, const QString &side)
{
    if (side == u"start")
        return {form.m_startButtonGroup,          form.m_startFixedRadioButton,
                form.m_startFixedLineEdit,        form.m_startLinkedRadioButton,
                form.m_startLinkStartRadioButton, form.m_startLinkEndRadioButton,
                form.m_startLinkEffectComboBox,   form.m_startLinkOffsetLineEdit};
    return {form.m_endButtonGroup,          form.m_endFixedRadioButton,
            form.m_endFixedLineEdit,        form.m_endLinkedRadioButton,
            form.m_endLinkStartRadioButton, form.m_endLinkEndRadioButton,
            form.m_endLinkEffectComboBox,   form.m_endLinkOffsetLineEdit};
}

void addSides()
{
    QTest::addColumn<QString>("side");
    QTest::newRow("start") << "start";
    QTest::newRow("end") << "end";
}

// The names of the fields that are enabled within their groups: "time", "link" for the four of the
// link, "cycles".
QString enabledFields(const MetaWidget &form, const QString &side)
{
    const RuleGroup widgets = group(form, side);
    QStringList enabled;
    if (widgets.fixedTime->isEnabledTo(widgets.box))
        enabled.append("time");
    int links = 0;
    for (const QWidget *field : std::initializer_list<QWidget *>{widgets.linkStart, widgets.linkEnd,
                                                                 widgets.chooser, widgets.offset})
        links += field->isEnabledTo(widgets.box);
    if (links == 4)
        enabled.append("link");
    else if (links > 0)
        enabled.append("part of the link");
    if (side == u"end" && form.m_endCyclesSpinBox->isEnabledTo(widgets.box))
        enabled.append("cycles");
    return enabled.join(u' ');
}

QString ruleOn(const MetaWidget &form, const QString &side)
{
    const RuleGroup widgets = group(form, side);
    QStringList on;
    if (widgets.fixedButton->isChecked())
        on.append("fixed");
    if (widgets.linkedButton->isChecked())
        on.append("linked");
    if (side == u"end" && form.m_endCyclesRadioButton->isChecked())
        on.append("cycles");
    return on.join(u' ');
}

} // namespace

class tst_TimePanelFill : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }

    // What is shown
    void timesAreShownAsSecondsInSixDigits_data();
    void timesAreShownAsSecondsInSixDigits();
    void offsetsAreShownAsSecondsInSixDigits_data();
    void offsetsAreShownAsSecondsInSixDigits();
    void linkSideIsShown_data();
    void linkSideIsShown();
    void cyclesAreShownWithinTheirRange_data();
    void cyclesAreShownWithinTheirRange();
    void cyclesSpinBoxShows1ForAStoredCountOf0();
    void ruleIsShownAndItsFieldsAreEnabled_data();
    void ruleIsShownAndItsFieldsAreEnabled();
    void fieldsOfARuleThatWasOnAlreadyAreEnabledToo_data();
    void fieldsOfARuleThatWasOnAlreadyAreEnabledToo();
    void unknownRuleCodeSwitchesNothingOn_data();
    void unknownRuleCodeSwitchesNothingOn();
    void groupsAreEnabledForOneSelectedChildOnly();
    void newChildIsShownAtOnce();

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

    // Step by step
    void fillWritesBackWhatIsShownStepByStep();
    void fillOfCyclesWritesTheNumberBeforeTheRule();
    void fillWithoutChangeIsSilent();
    void chooserIsFilledAfterTheLinkSideAndBeforeTheOffset_data();
    void chooserIsFilledAfterTheLinkSideAndBeforeTheOffset();
    void everyHandlerFinishesItsPassBeforeTheFillGoesOn();
    void timeIsCutToTheDigitsShownOnlyWhenItsTextChanges_data();
    void timeIsCutToTheDigitsShownOnlyWhenItsTextChanges();
    void linkSideLeavesTheFocusWhileItsFieldIsDisabled_data();
    void linkSideLeavesTheFocusWhileItsFieldIsDisabled();
    void linkSideMovesTheFocusOnceTheGroupsAreEnabled_data();
    void linkSideMovesTheFocusOnceTheGroupsAreEnabled();
    void fillWritesIntoTheSelectedChildWhicheverIsShown();
    void fillOfNoChildDoesNothing();
    void fillWithoutEditorDoesNothing();

    // Blanking
    void blankingWritesNothing_data();
    void blankingWritesNothing();

    // Following what changed elsewhere
    void editedStartCellIsFollowed_data();
    void editedStartCellIsFollowed();
    void editedEndCellIsFollowed_data();
    void editedEndCellIsFollowed();
    void everyRuleIsFollowed_data();
    void everyRuleIsFollowed();
    void followingKeepsTextThatMeansTheSameTime();
    void followingWritesNothing();
    void brokenLinksAreShownAsTheFixedRulesThatTheyBecame();
    void startRepairedByTheFillOfTheEndIsFollowed();
};

// --- What is shown ---

void tst_TimePanelFill::timesAreShownAsSecondsInSixDigits_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");

    QTest::newRow("0") << "0"
                       << "0";
    QTest::newRow("one ms") << "1"
                            << "0.001";
    QTest::newRow("1.5 s") << "1500"
                           << "1.5";
    QTest::newRow("a minute") << "60000"
                              << "60";
    QTest::newRow("six digits") << "123456"
                                << "123.456";
    QTest::newRow("seven digits") << "1234567"
                                  << "1234.57";
    QTest::newRow("eleven days") << "1000000000"
                                 << "1e+06";
    QTest::newRow("top bit") << "2147483648"
                             << "2.14748e+06";
    QTest::newRow("largest") << "4294967295"
                             << "4.29497e+06";
    QTest::newRow("empty") << ""
                           << "0";
    QTest::newRow("no number") << "abc"
                               << "0";
    QTest::newRow("negative") << "-5"
                              << "0";
}

void tst_TimePanelFill::timesAreShownAsSecondsInSixDigits()
{
    QFETCH(QString, stored);
    QFETCH(QString, shown);
    PanelScene scene;
    scene.store(1, "startfixedtime=" + stored + " endfixedtime=" + stored);

    scene.select(1);

    QCOMPARE(scene.form().m_startFixedLineEdit->text(), shown);
    QCOMPARE(scene.form().m_endFixedLineEdit->text(), shown);
    CHECK_SANITY(scene);
}

void tst_TimePanelFill::offsetsAreShownAsSecondsInSixDigits_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");

    QTest::newRow("0") << "0"
                       << "0";
    QTest::newRow("half a ms") << "0.5"
                               << "0.0005";
    QTest::newRow("1.5 s") << "1500"
                           << "1.5";
    QTest::newRow("negative") << "-2500"
                              << "-2.5";
    QTest::newRow("exponent") << "1.23457e+06"
                              << "1234.57";
    QTest::newRow("seven digits") << "1234567"
                                  << "1234.57";
    QTest::newRow("inf") << "inf"
                         << "inf";
    QTest::newRow("nan") << "nan"
                         << "nan";
    QTest::newRow("empty") << ""
                           << "0";
    QTest::newRow("no number") << "abc"
                               << "0";
}

void tst_TimePanelFill::offsetsAreShownAsSecondsInSixDigits()
{
    QFETCH(QString, stored);
    QFETCH(QString, shown);
    PanelScene scene;
    scene.store(1, "startlinkoffset=" + stored + " endlinkoffset=" + stored);

    scene.select(1);

    QCOMPARE(scene.form().m_startLinkOffsetLineEdit->text(), shown);
    QCOMPARE(scene.form().m_endLinkOffsetLineEdit->text(), shown);
    CHECK_SANITY(scene);
}

void tst_TimePanelFill::linkSideIsShown_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<bool>("isStart");

    QTest::newRow("1") << "1" << true;
    QTest::newRow("true") << "true" << true;
    QTest::newRow("0") << "0" << false;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("no flag") << "abc" << false;
}

void tst_TimePanelFill::linkSideIsShown()
{
    QFETCH(QString, stored);
    QFETCH(bool, isStart);
    for (const bool isStartBefore : {true, false}) {
        PanelScene scene;
        scene.store(1, "startlinkstart=" + stored + " endlinkstart=" + stored);
        const QString before = isStartBefore ? "1" : "0";
        scene.store(2, "startlinkstart=" + before + " endlinkstart=" + before);
        scene.select(2);

        scene.select(1);

        for (const char *const side : {"start", "end"}) {
            const RuleGroup widgets = group(scene.form(), side);
            QCOMPARE(widgets.linkStart->isChecked(), isStart);
            QCOMPARE(widgets.linkEnd->isChecked(), !isStart);
        }
    }
}

void tst_TimePanelFill::cyclesAreShownWithinTheirRange_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<int>("shown");
    QTest::addColumn<QString>("storedAgain");

    QTest::newRow("1") << "1" << 1 << "1";
    QTest::newRow("5") << "5" << 5 << "5";
    QTest::newRow("1000") << "1000" << 1000 << "1000";
    QTest::newRow("1001") << "1001" << 1000 << "1000";
    QTest::newRow("largest") << "4294967295" << 1000 << "1000";
    QTest::newRow("0") << "0" << 1 << "0"; // 1 was shown already
    QTest::newRow("no number") << "abc" << 1 << "abc";
}

void tst_TimePanelFill::cyclesAreShownWithinTheirRange()
{
    QFETCH(QString, stored);
    QFETCH(int, shown);
    QFETCH(QString, storedAgain);
    PanelScene scene;
    scene.store(1, "endcyclecount=" + stored);

    scene.select(1);

    QCOMPARE(scene.form().m_endCyclesSpinBox->value(), shown);
    QCOMPARE(scene.at(1).text("endcyclecount"), storedAgain);
}

void tst_TimePanelFill::cyclesSpinBoxShows1ForAStoredCountOf0()
{
    PanelScene scene;
    scene.store(1, "endtype=2 endcyclecount=5");
    scene.select(1);
    scene.store(1, "endcyclecount=0");

    scene.effect.refreshWidgets();

    QCOMPARE(scene.form().m_endCyclesSpinBox->value(), 1);
    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=1", "pass"})); // 5 was shown before
}

void tst_TimePanelFill::ruleIsShownAndItsFieldsAreEnabled_data()
{
    QTest::addColumn<QString>("startType");
    QTest::addColumn<QString>("endType");
    QTest::addColumn<QString>("startRule");
    QTest::addColumn<QString>("endRule");
    QTest::addColumn<QString>("startFields");
    QTest::addColumn<QString>("endFields");

    QTest::newRow("fixed, fixed") << "0"
                                  << "0"
                                  << "fixed"
                                  << "fixed"
                                  << "time"
                                  << "time";
    QTest::newRow("fixed, linked") << "0"
                                   << "1"
                                   << "fixed"
                                   << "linked"
                                   << "time"
                                   << "link";
    QTest::newRow("fixed, cycles") << "0"
                                   << "2"
                                   << "fixed"
                                   << "cycles"
                                   << "time"
                                   << "cycles";
    QTest::newRow("linked, fixed") << "1"
                                   << "0"
                                   << "linked"
                                   << "fixed"
                                   << "link"
                                   << "time";
    QTest::newRow("linked, linked") << "1"
                                    << "1"
                                    << "linked"
                                    << "linked"
                                    << "link"
                                    << "link";
    QTest::newRow("linked, cycles") << "1"
                                    << "2"
                                    << "linked"
                                    << "cycles"
                                    << "link"
                                    << "cycles";
    QTest::newRow("no number") << "x"
                               << "x"
                               << "fixed"
                               << "fixed"
                               << "time"
                               << "time";
    QTest::newRow("empty") << ""
                           << ""
                           << "fixed"
                           << "fixed"
                           << "time"
                           << "time";
}

void tst_TimePanelFill::ruleIsShownAndItsFieldsAreEnabled()
{
    QFETCH(QString, startType);
    QFETCH(QString, endType);
    QFETCH(QString, startRule);
    QFETCH(QString, endRule);
    QFETCH(QString, startFields);
    QFETCH(QString, endFields);
    for (const char *const before :
         {"starttype=0 endtype=0", "starttype=1 startlinkeid=3 endtype=1 endlinkeid=3",
          "starttype=0 endtype=2"}) {
        PanelScene scene;
        scene.store(1,
                    "startlinkeid=3 endlinkeid=3 starttype=" + startType + " endtype=" + endType);
        scene.store(2, before);
        scene.select(2);

        scene.select(1);

        QCOMPARE(ruleOn(scene.form(), "start"), startRule);
        QCOMPARE(ruleOn(scene.form(), "end"), endRule);
        QCOMPARE(enabledFields(scene.form(), "start"), startFields);
        QCOMPARE(enabledFields(scene.form(), "end"), endFields);
        CHECK_SANITY(scene);
    }
}

void tst_TimePanelFill::fieldsOfARuleThatWasOnAlreadyAreEnabledToo_data()
{
    QTest::addColumn<QString>("side");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("fields");

    QTest::newRow("start fixed") << "start"
                                 << "0"
                                 << "time";
    QTest::newRow("start linked") << "start"
                                  << "1"
                                  << "link";
    QTest::newRow("end fixed") << "end"
                               << "0"
                               << "time";
    QTest::newRow("end linked") << "end"
                                << "1"
                                << "link";
    QTest::newRow("end cycles") << "end"
                                << "2"
                                << "cycles";
}

void tst_TimePanelFill::fieldsOfARuleThatWasOnAlreadyAreEnabledToo()
{
    QFETCH(QString, side);
    QFETCH(QString, type);
    QFETCH(QString, fields);
    PanelScene scene;
    scene.store(1, side + "type=" + type + " " + side + "linkeid=2");
    scene.select(1);
    const RuleGroup widgets = group(scene.form(), side);
    for (const bool before : {true, false}) {
        for (QWidget *field : std::initializer_list<QWidget *>{
                 widgets.fixedTime, widgets.linkStart, widgets.linkEnd, widgets.chooser,
                 widgets.offset, scene.form().m_endCyclesSpinBox})
            field->setEnabled(before);

        if (side == u"start")
            scene.effect.refreshStartTimeEditor(&scene.at(1));
        else
            scene.effect.refreshEndTimeEditor(&scene.at(1));

        QCOMPARE(enabledFields(scene.form(), side), fields);
    }
    QCOMPARE(withoutFocus(scene.take()), QStringList());
}

void tst_TimePanelFill::unknownRuleCodeSwitchesNothingOn_data()
{
    QTest::addColumn<QString>("side");
    QTest::addColumn<QString>("code");

    QTest::newRow("start 2") << "start"
                             << "2";
    QTest::newRow("start 3") << "start"
                             << "3";
    QTest::newRow("start, largest") << "start"
                                    << "4294967295";
    QTest::newRow("end 3") << "end"
                           << "3";
    QTest::newRow("end, largest") << "end"
                                  << "4294967295";
}

void tst_TimePanelFill::unknownRuleCodeSwitchesNothingOn()
{
    QFETCH(QString, side);
    QFETCH(QString, code);
    for (const char *const before : {"0", "1"}) {
        PanelScene scene;
        scene.store(1, side + "type=" + before + " " + side + "linkeid=2");
        scene.select(1);
        const MetaWidget &form = scene.form();
        const QString rule = ruleOn(form, side);
        const QString fields = enabledFields(form, side);
        scene.store(1, side + "type=" + code);

        scene.effect.refreshWidgets();

        QCOMPARE(scene.take(), QStringList());
        QCOMPARE(scene.at(1).text(qPrintable(side + "type")), code);
        QCOMPARE(ruleOn(form, side), rule);
        QCOMPARE(enabledFields(form, side), fields);
        QVERIFY(group(form, side).box->isEnabled());
    }
}

void tst_TimePanelFill::groupsAreEnabledForOneSelectedChildOnly()
{
    PanelScene scene;
    const MetaWidget &form = scene.form();
    QVERIFY(!form.m_startButtonGroup->isEnabled());
    QVERIFY(!form.m_endButtonGroup->isEnabled());

    scene.select(1);
    QVERIFY(form.m_startButtonGroup->isEnabled());
    QVERIFY(form.m_endButtonGroup->isEnabled());

    scene.click(scene.rowOf(2), 0, Qt::ControlModifier);
    QVERIFY(!form.m_startButtonGroup->isEnabled());
    QVERIFY(!form.m_endButtonGroup->isEnabled());

    scene.select(3);
    QVERIFY(form.m_startButtonGroup->isEnabled());
    QVERIFY(form.m_endButtonGroup->isEnabled());
}

void tst_TimePanelFill::newChildIsShownAtOnce()
{
    PanelScene scene;
    scene.store(1, "startfixedtime=1500 endtype=2 endcyclecount=5");
    scene.select(1);

    scene.addWatched(4);

    QCOMPARE(scene.form().m_startFixedLineEdit->text(), "0");
    QCOMPARE(scene.form().m_effectGroupBox->title(), "Child 4 Parameters");
    QCOMPARE(PanelScene::items(scene.form().m_startLinkEffectComboBox),
             QStringList({"Child 1", "Child 2", "Child 3"}));
    QCOMPARE(scene.take().filter(QRegularExpression("^[123] ")), QStringList());
    CHECK_SANITY(scene);
}

// --- Choosers ---

void tst_TimePanelFill::choosersOfferWhatIsLegal_data()
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

void tst_TimePanelFill::choosersOfferWhatIsLegal()
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

void tst_TimePanelFill::choosersKeepTheOrderOfTheList()
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

void tst_TimePanelFill::currentItemIsTheTarget_data()
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

void tst_TimePanelFill::currentItemIsTheTarget()
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

void tst_TimePanelFill::ofRepeatedEidsTheLastCandidateIsCurrent()
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

void tst_TimePanelFill::targetNotOfferedIsReplacedWhenTheRuleIsSwitchedOn_data()
{
    addSides();
}

void tst_TimePanelFill::targetNotOfferedIsReplacedWhenTheRuleIsSwitchedOn()
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
void tst_TimePanelFill::targetNotOfferedStaysWhileTheRuleWasOnAlready()
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

void tst_TimePanelFill::deletedCandidateIsOfferedNoLonger_data()
{
    addSides();
}

void tst_TimePanelFill::deletedCandidateIsOfferedNoLonger()
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

void tst_TimePanelFill::deletedCandidateOfABlankPanelIsForgotten()
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

void tst_TimePanelFill::singleChildIsShownAndStoredAsFixed()
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

void tst_TimePanelFill::linkedWithoutCandidatesIsStoredAsFixedWithoutAPass_data()
{
    addSides();
}

void tst_TimePanelFill::linkedWithoutCandidatesIsStoredAsFixedWithoutAPass()
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

void tst_TimePanelFill::noneAvailableMapsToNothing()
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

void tst_TimePanelFill::lastCandidateGoneMakesTheLinkedRuleFixed()
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

// --- Step by step ---

// Each stored text differs from the one that the handlers write back for the same value.
void tst_TimePanelFill::fillWritesBackWhatIsShownStepByStep()
{
    PanelScene scene;
    scene.select(1);
    scene.store(1, "starttype=01 startfixedtime=1234567 startlinkeid=03 startlinkstart=true "
                   "startlinkoffset=1234567.8 endtype=01 endfixedtime=7654321 endlinkeid=02 "
                   "endlinkstart=true endlinkoffset=-1234567.8 endcyclecount=05");

    scene.effect.refreshWidgets();

    QCOMPARE(scene.take(), QStringList({"1 startfixedtime=1234570",
                                        "pass", // time
                                        "1 startlinkstart=1",
                                        "pass", // side
                                        "1 startlinkoffset=1.23457e+06",
                                        "pass", // offset
                                        "1 starttype=1",
                                        "1 startlinkeid=3", // rule
                                        "focus m_startLinkOffsetLineEdit",
                                        "pass", //
                                        "1 endfixedtime=7654320",
                                        "pass", // time
                                        "1 endlinkstart=1",
                                        "pass", // side
                                        "1 endlinkoffset=-1.23457e+06",
                                        "pass", // offset
                                        "1 endcyclecount=5",
                                        "pass", // cycles
                                        "1 endtype=1",
                                        "1 endlinkeid=2", // rule
                                        "focus m_endLinkOffsetLineEdit",
                                        "pass"}));
    CHECK_SANITY(scene);
}

void tst_TimePanelFill::fillOfCyclesWritesTheNumberBeforeTheRule()
{
    PanelScene scene;
    scene.select(1);
    scene.store(1, "endtype=02 endcyclecount=05");

    scene.effect.refreshWidgets();

    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=5", "pass", "1 endtype=2",
                                        "focus m_endCyclesSpinBox", "pass"}));
    CHECK_SANITY(scene);
}

void tst_TimePanelFill::fillWithoutChangeIsSilent()
{
    PanelScene scene;
    scene.store(1, "starttype=1 startfixedtime=1500 startlinkeid=3 startlinkstart=1 "
                   "startlinkoffset=500 endtype=2 endfixedtime=2500 endcyclecount=5");
    scene.select(1);

    scene.effect.refreshWidgets();

    QCOMPARE(scene.take(), QStringList());
}

void tst_TimePanelFill::chooserIsFilledAfterTheLinkSideAndBeforeTheOffset_data()
{
    addSides();
}

void tst_TimePanelFill::chooserIsFilledAfterTheLinkSideAndBeforeTheOffset()
{
    QFETCH(QString, side);
    PanelScene scene;
    scene.select(1);
    scene.store(1, side + "linkstart=1 " + side + "linkeid=3 " + side + "linkoffset=500");
    scene.store(2, "name=Renamed");
    const RuleGroup widgets = group(scene.form(), side);
    widgets.linkedButton->setEnabled(false);
    QStringList atSide;
    QStringList atOffset;
    const auto shown = [&widgets] {
        return PanelScene::items(widgets.chooser)
               << widgets.chooser->currentText()
               << (widgets.linkedButton->isEnabled() ? "enabled" : "disabled");
    };
    connect(widgets.linkStart, &QRadioButton::toggled, this, [&] { atSide = shown(); });
    connect(widgets.offset, &QLineEdit::textChanged, this, [&] { atOffset = shown(); });

    scene.effect.refreshWidgets();

    QCOMPARE(atSide, QStringList({"Child 2", "Child 3", "Child 2", "disabled"}));
    QCOMPARE(atOffset, QStringList({"Renamed", "Child 3", "Child 3", "enabled"}));
}

void tst_TimePanelFill::everyHandlerFinishesItsPassBeforeTheFillGoesOn()
{
    PanelScene scene;
    scene.select(1);
    scene.store(1, "startfixedtime=4000 startlinkstart=1 endfixedtime=2000");
    QStringList cells;
    connect(scene.form().m_startLinkStartRadioButton, &QRadioButton::toggled, this,
            [&] { cells.append("at the side " + scene.startCell(1)); });
    connect(scene.form().m_endFixedLineEdit, &QLineEdit::textChanged, this,
            [&] { cells.append("at the end " + scene.endCell(1)); });

    scene.effect.refreshWidgets();

    QCOMPARE(cells, QStringList({"at the side 4", "at the end 6"}));
}

void tst_TimePanelFill::timeIsCutToTheDigitsShownOnlyWhenItsTextChanges_data()
{
    addSides();
}

void tst_TimePanelFill::timeIsCutToTheDigitsShownOnlyWhenItsTextChanges()
{
    QFETCH(QString, side);
    const QString key = side + "fixedtime";
    PanelScene scene;
    scene.store(1, key + "=1234567");

    scene.select(1);
    QCOMPARE(group(scene.form(), side).fixedTime->text(), "1234.57");
    QCOMPARE(scene.at(1).text(qPrintable(key)), "1234570");

    scene.store(1, key + "=1234567");
    scene.effect.refreshWidgets();
    QCOMPARE(scene.at(1).text(qPrintable(key)), "1234567");
    QCOMPARE(scene.take(), QStringList());
}

// Each group is enabled only when it is filled. The end's End button is the exception that moves the
// focus at once, because it moves it into the group of the start.
void tst_TimePanelFill::linkSideLeavesTheFocusWhileItsFieldIsDisabled_data()
{
    QTest::addColumn<QString>("rules");
    QTest::addColumn<QString>("focus");

    QTest::newRow("start to end") << "starttype=1 startlinkeid=2 startlinkstart=0 endlinkstart=1"
                                  << "m_effectTable";
    QTest::newRow("end to end, start fixed")
        << "startlinkstart=1 endtype=1 endlinkeid=2 endlinkstart=0"
        << "m_effectTable";
    QTest::newRow("end to end, start linked")
        << "starttype=1 startlinkeid=2 startlinkstart=1 endtype=1 endlinkeid=2 endlinkstart=0"
        << "m_startLinkOffsetLineEdit";
}

void tst_TimePanelFill::linkSideLeavesTheFocusWhileItsFieldIsDisabled()
{
    QFETCH(QString, rules);
    QFETCH(QString, focus);
    PanelScene scene;
    scene.store(1, rules);
    scene.store(2, "startlinkstart=1 endlinkstart=1");
    scene.select(2);
    QVERIFY(scene.form().m_startLinkStartRadioButton->isChecked());
    QVERIFY(scene.form().m_endLinkStartRadioButton->isChecked());

    scene.selectEid(1); // for a moment both rows are selected, which disables the groups

    QCOMPARE(scene.form().focusWidget()->objectName(), focus);
    CHECK_SANITY(scene);
}

void tst_TimePanelFill::linkSideMovesTheFocusOnceTheGroupsAreEnabled_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("focus");

    QTest::newRow("start to start") << "startlinkstart=1"
                                    << "m_startLinkOffsetLineEdit";
    QTest::newRow("start to end") << "startlinkstart=0"
                                  << "m_startLinkOffsetLineEdit";
    QTest::newRow("end to start") << "endlinkstart=1"
                                  << "m_endLinkOffsetLineEdit";
    QTest::newRow("end to end") << "endlinkstart=0"
                                << "m_startLinkOffsetLineEdit";
}

void tst_TimePanelFill::linkSideMovesTheFocusOnceTheGroupsAreEnabled()
{
    QFETCH(QString, stored);
    QFETCH(QString, focus);
    PanelScene scene;
    const QString before = stored.endsWith(u'1') ? "0" : "1";
    scene.store(1, "starttype=1 startlinkeid=2 endtype=1 endlinkeid=3 startlinkstart=" + before
                       + " endlinkstart=" + before);
    scene.select(1);
    scene.table().setFocus();
    scene.store(1, stored);

    scene.effect.refreshWidgets();

    QCOMPARE(scene.take(), QStringList({"focus " + focus, "pass"}));
    QCOMPARE(scene.form().focusWidget()->objectName(), focus);
}

void tst_TimePanelFill::fillWritesIntoTheSelectedChildWhicheverIsShown()
{
    PanelScene scene;
    scene.store(2, "startfixedtime=7000 endfixedtime=8000");
    scene.select(1);

    scene.effect.refreshStartTimeEditor(&scene.at(2));
    scene.effect.refreshEndTimeEditor(&scene.at(2));

    QCOMPARE(scene.take(),
             QStringList({"1 startfixedtime=7000", "pass", "1 endfixedtime=8000", "pass"}));
    QCOMPARE(PanelScene::items(scene.form().m_startLinkEffectComboBox),
             QStringList({"Child 1", "Child 3"}));
}

void tst_TimePanelFill::fillOfNoChildDoesNothing()
{
    PanelScene scene;
    scene.store(1, "startfixedtime=1500 endfixedtime=2500");
    scene.select(1);

    scene.effect.refreshStartTimeEditor(nullptr);
    scene.effect.refreshEndTimeEditor(nullptr);

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.form().m_startFixedLineEdit->text(), "1.5");
    QCOMPARE(scene.form().m_endFixedLineEdit->text(), "2.5");
    QCOMPARE(scene.form().m_startLinkEffectComboBox->count(), 2);
    QCOMPARE(scene.form().m_endLinkEffectComboBox->count(), 2);
}

void tst_TimePanelFill::fillWithoutEditorDoesNothing()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("starttype", "1").with("endtype", "1");
    child->changes.clear();
    const LogCapture debugLines(QtDebugMsg);

    stage.effect.refreshStartTimeEditor(child);
    stage.effect.refreshEndTimeEditor(child);
    stage.effect.refreshWidgets();

    QCOMPARE(child->changes, QStringList());
    QCOMPARE(debugLines.lines(), QStringList());
}

// --- Blanking ---

void tst_TimePanelFill::blankingWritesNothing_data()
{
    QTest::addColumn<QString>("by");

    QTest::newRow("a press beside the rows") << "empty area";
    QTest::newRow("a second selected row") << "second row";
    QTest::newRow("a new table") << "new table";
}

void tst_TimePanelFill::blankingWritesNothing()
{
    QFETCH(QString, by);
    PanelScene scene;
    const QString rules = "startfixedtime=1500 starttype=1 startlinkeid=3 startlinkstart=1 "
                          "startlinkoffset=500 endtype=2 endfixedtime=2500 endlinkeid=3 "
                          "endlinkstart=1 endlinkoffset=-500 endcyclecount=5";
    scene.store(1, rules);
    scene.store(2, rules);
    scene.select(1);

    if (by == "empty area")
        QTest::mouseClick(scene.table().viewport(), Qt::LeftButton, {},
                          {20, scene.table().viewport()->height() - 5});
    else if (by == "second row")
        scene.click(scene.rowOf(2), 0, Qt::ControlModifier);
    else
        scene.effect.refreshMetaWidget();

    QCOMPARE(writes(scene.take()), QStringList());
    QCOMPARE(scene.selectedEids(), QStringList());
    const MetaWidget &form = scene.form();
    for (const char *const side : {"start", "end"}) {
        const RuleGroup widgets = group(form, side);
        QVERIFY(!widgets.box->isEnabled());
        QCOMPARE(widgets.fixedTime->text(), "");
        QCOMPARE(widgets.chooser->count(), 0);
        QCOMPARE(widgets.offset->text(), "");
    }
    QCOMPARE(form.m_endCyclesSpinBox->value(), 1);
    QCOMPARE(form.m_effectGroupBox->title(), "Effect Parameters");
    QCOMPARE(ruleOn(form, "start"), "linked");
    QCOMPARE(ruleOn(form, "end"), "cycles");
    CHECK_SANITY(scene);
}

// --- Following what changed elsewhere ---

void tst_TimePanelFill::editedStartCellIsFollowed_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");

    QTest::newRow("2.5") << "2.5"
                         << "2500"
                         << "2.5";
    QTest::newRow("more digits than are shown") << "1234.5678"
                                                << "1234567"
                                                << "1234.57";
    QTest::newRow("no number") << "abc"
                               << "0"
                               << "0";
}

void tst_TimePanelFill::editedStartCellIsFollowed()
{
    QFETCH(QString, typed);
    QFETCH(QString, stored);
    QFETCH(QString, shown);
    PanelScene scene;
    scene.store(1, "starttype=1 startfixedtime=9000 startlinkeid=3 endfixedtime=1000");
    scene.select(1);

    scene.typeIntoCell(scene.rowOf(1), 4, typed);

    QCOMPARE(writes(scene.take()), QStringList({"1 starttype=0", "1 startfixedtime=" + stored}));
    QCOMPARE(ruleOn(scene.form(), "start"), "fixed");
    QCOMPARE(enabledFields(scene.form(), "start"), "time");
    QCOMPARE(scene.form().m_startFixedLineEdit->text(), shown);
    QCOMPARE(scene.at(1).text("startfixedtime"), stored);
    CHECK_SANITY(scene);
}

void tst_TimePanelFill::editedEndCellIsFollowed_data()
{
    QTest::addColumn<QString>("type");

    QTest::newRow("linked") << "1";
    QTest::newRow("cycles") << "2";
}

void tst_TimePanelFill::editedEndCellIsFollowed()
{
    QFETCH(QString, type);
    PanelScene scene;
    scene.store(1, "startfixedtime=1000 endfixedtime=9000 endlinkeid=3 endcyclecount=5 endtype="
                       + type);
    scene.select(1);

    scene.typeIntoCell(scene.rowOf(1), 5, "4.5");

    QCOMPARE(writes(scene.take()), QStringList({"1 endtype=0", "1 endfixedtime=3500"}));
    QCOMPARE(ruleOn(scene.form(), "end"), "fixed");
    QCOMPARE(enabledFields(scene.form(), "end"), "time");
    QCOMPARE(scene.form().m_endFixedLineEdit->text(), "3.5");
    CHECK_SANITY(scene);
}

void tst_TimePanelFill::everyRuleIsFollowed_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("side");
    QTest::addColumn<QString>("rule");
    QTest::addColumn<QString>("fields");

    QTest::newRow("start fixed") << "1"
                                 << "0"
                                 << "start"
                                 << "fixed"
                                 << "time";
    QTest::newRow("start linked") << "0"
                                  << "1"
                                  << "start"
                                  << "linked"
                                  << "link";
    QTest::newRow("start, other code") << "1"
                                       << "2"
                                       << "start"
                                       << "linked"
                                       << "link";
    QTest::newRow("end fixed") << "2"
                               << "0"
                               << "end"
                               << "fixed"
                               << "time";
    QTest::newRow("end linked") << "2"
                                << "1"
                                << "end"
                                << "linked"
                                << "link";
    QTest::newRow("end cycles") << "0"
                                << "2"
                                << "end"
                                << "cycles"
                                << "cycles";
    QTest::newRow("end, other code") << "2"
                                     << "3"
                                     << "end"
                                     << "cycles"
                                     << "cycles";
}

// The panel follows both sides when a cell of either is edited.
void tst_TimePanelFill::everyRuleIsFollowed()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(QString, side);
    QFETCH(QString, rule);
    QFETCH(QString, fields);
    const QString type = side + "type=";
    PanelScene scene;
    scene.store(1, type + before + " " + side + "linkeid=3");
    scene.select(1);
    scene.store(1, type + after);

    scene.effect.handleValueChanged(scene.rowOf(1), side == u"start" ? 5 : 4);

    QCOMPARE(ruleOn(scene.form(), side), rule);
    QCOMPARE(enabledFields(scene.form(), side), fields);
    QCOMPARE(writes(scene.take()).filter(" " + side), QStringList());
}

void tst_TimePanelFill::followingKeepsTextThatMeansTheSameTime()
{
    PanelScene scene;
    scene.select(1);
    EditorStage::typeInto(*scene.form().m_startFixedLineEdit, "1.50");

    scene.table().setText(scene.rowOf(1), 5, "4.5"); // without a click, which would fill anew
    scene.effect.handleValueChanged(scene.rowOf(1), 5);

    QCOMPARE(scene.form().m_startFixedLineEdit->text(), "1.50");
    QCOMPARE(scene.form().m_endFixedLineEdit->text(), "3");
}

void tst_TimePanelFill::followingWritesNothing()
{
    PanelScene scene;
    scene.store(1, "starttype=1 startlinkeid=3 endfixedtime=1000");
    scene.select(1);
    scene.store(1, "starttype=0 startfixedtime=1234567");

    scene.effect.handleValueChanged(scene.rowOf(1), 5);

    QCOMPARE(scene.form().m_startFixedLineEdit->text(), "1234.57");
    QCOMPARE(ruleOn(scene.form(), "start"), "fixed");
    QCOMPARE(scene.at(1).text("startfixedtime"), "1234567");
    QCOMPARE(writes(scene.take()).filter("start"), QStringList());
}

void tst_TimePanelFill::brokenLinksAreShownAsTheFixedRulesThatTheyBecame()
{
    PanelScene scene;
    scene.store(1, "starttype=1 startlinkeid=98 startfixedtime=5000 endtype=1 endlinkeid=99 "
                   "endfixedtime=6000 startlinkstart=0 startlinkoffset=0 endlinkstart=0 "
                   "endlinkoffset=0 endcyclecount=5");

    scene.selectEid(1);

    QCOMPARE(writes(scene.take()), QStringList({"1 starttype=0", "1 startfixedtime=0",
                                                "1 endtype=0", "1 endfixedtime=0"}));
    for (const char *const side : {"start", "end"}) {
        QCOMPARE(ruleOn(scene.form(), side), "fixed");
        QCOMPARE(enabledFields(scene.form(), side), "time");
        QCOMPARE(group(scene.form(), side).fixedTime->text(), "0");
    }
    CHECK_SANITY(scene);
}

void tst_TimePanelFill::startRepairedByTheFillOfTheEndIsFollowed()
{
    PanelScene scene;
    scene.store(1, "starttype=1 startlinkeid=3 startfixedtime=5000");
    scene.select(1);
    scene.store(1, "startlinkeid=99 endfixedtime=6000");

    scene.effect.refreshWidgets();

    QCOMPARE(withoutFocus(scene.take()),
             QStringList({"pass", "1 starttype=0", "1 startfixedtime=0"}));
    QCOMPARE(ruleOn(scene.form(), "start"), "fixed");
    QCOMPARE(enabledFields(scene.form(), "start"), "time");
    QCOMPARE(scene.form().m_startFixedLineEdit->text(), "0");
    CHECK_SANITY(scene);
}

QTEST_MAIN(tst_TimePanelFill)
#include "tst_TimePanelFill.moc"
