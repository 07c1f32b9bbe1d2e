#include "BlankPanel.h"
#include "PanelScene.h"
#include "RuleGroup.h"

#include <QRegularExpression>

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

    // Blanking
    void blankingWritesNothing_data();
    void blankingWritesNothing();
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
    checkPanelIsBlank(form);
    QCOMPARE(ruleOn(form, "start"), "linked");
    QCOMPARE(ruleOn(form, "end"), "cycles");
    CHECK_SANITY(scene);
}

QTEST_MAIN(tst_TimePanelFill)
#include "tst_TimePanelFill.moc"
