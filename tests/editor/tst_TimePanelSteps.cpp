#include "PanelScene.h"
#include "RuleGroup.h"

#include <QRegularExpression>

class tst_TimePanelSteps : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }

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
};

// Each stored text differs from the one that the handlers write back for the same value.
void tst_TimePanelSteps::fillWritesBackWhatIsShownStepByStep()
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

void tst_TimePanelSteps::fillOfCyclesWritesTheNumberBeforeTheRule()
{
    PanelScene scene;
    scene.select(1);
    scene.store(1, "endtype=02 endcyclecount=05");

    scene.effect.refreshWidgets();

    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=5", "pass", "1 endtype=2",
                                        "focus m_endCyclesSpinBox", "pass"}));
    CHECK_SANITY(scene);
}

void tst_TimePanelSteps::fillWithoutChangeIsSilent()
{
    PanelScene scene;
    scene.store(1, "starttype=1 startfixedtime=1500 startlinkeid=3 startlinkstart=1 "
                   "startlinkoffset=500 endtype=2 endfixedtime=2500 endcyclecount=5");
    scene.select(1);

    scene.effect.refreshWidgets();

    QCOMPARE(scene.take(), QStringList());
}

void tst_TimePanelSteps::chooserIsFilledAfterTheLinkSideAndBeforeTheOffset_data()
{
    addSides();
}

void tst_TimePanelSteps::chooserIsFilledAfterTheLinkSideAndBeforeTheOffset()
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

void tst_TimePanelSteps::everyHandlerFinishesItsPassBeforeTheFillGoesOn()
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

void tst_TimePanelSteps::timeIsCutToTheDigitsShownOnlyWhenItsTextChanges_data()
{
    addSides();
}

void tst_TimePanelSteps::timeIsCutToTheDigitsShownOnlyWhenItsTextChanges()
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

// Each group is enabled only when it is filled. The end's End button is the exception that moves
// the focus at once, because it moves it into the group of the start.
void tst_TimePanelSteps::linkSideLeavesTheFocusWhileItsFieldIsDisabled_data()
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

void tst_TimePanelSteps::linkSideLeavesTheFocusWhileItsFieldIsDisabled()
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

void tst_TimePanelSteps::linkSideMovesTheFocusOnceTheGroupsAreEnabled_data()
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

void tst_TimePanelSteps::linkSideMovesTheFocusOnceTheGroupsAreEnabled()
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

void tst_TimePanelSteps::fillWritesIntoTheSelectedChildWhicheverIsShown()
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

void tst_TimePanelSteps::fillOfNoChildDoesNothing()
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

void tst_TimePanelSteps::fillWithoutEditorDoesNothing()
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

QTEST_MAIN(tst_TimePanelSteps)
#include "tst_TimePanelSteps.moc"
