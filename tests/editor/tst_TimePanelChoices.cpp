#include "PanelScene.h"

#include <QAbstractItemView>
#include <QRegularExpression>

class tst_TimePanelChoices : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        // The platform of the tests has no means of its own to raise a popup.
        QTest::failOnWarning(
            QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    }

    // Buttons
    void clickOnARuleStoresIt_data();
    void clickOnARuleStoresIt();
    void clickOnTheRuleThatIsOnDoesNothing();
    void arrowKeyOnARuleStoresTheNextOne();
    void clickOnALinkSideStoresItAndKeepsTheRule_data();
    void clickOnALinkSideStoresItAndKeepsTheRule();
    void clickOnTheEndLinksEndButtonMovesTheFocusToTheStartOffset();
    void clickOnTheEndLinksEndButtonKeepsTheFocusWhileTheStartIsFixed();

    // Choosers
    void choosingByArrowKeyStoresTheTarget_data();
    void choosingByArrowKeyStoresTheTarget();
    void choosingInThePopupByKeysStoresTheTarget_data();
    void choosingInThePopupByKeysStoresTheTarget();
    void choosingInThePopupByMouseStoresTheTarget_data();
    void choosingInThePopupByMouseStoresTheTarget();
    void choosingTheSameItemAgainStoresAndPasses();
    void choosingItem2OfTheEndChooserStoresTheEidOfEntry2();
    void targetWaitsUntilTheLinkedRuleIsChosen();
    void linkedRuleTakesTheTargetShown();
};

// --- Buttons ---

void tst_TimePanelChoices::clickOnARuleStoresIt_data()
{
    QTest::addColumn<QString>("rules");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("journal");
    QTest::addColumn<QString>("cells");

    // Child 1 starts at 1 s or 0.5 s behind the end of child 2, which is at 3 s, and lasts 2 s, or
    // 1.5 s, or until 4 s.
    const QStringList startLinked = {"focus m_startLinkedRadioButton", "1 starttype=1",
                                     "focus m_startLinkOffsetLineEdit", "pass"};
    const QStringList startFixed = {"focus m_startFixedRadioButton", "1 starttype=0", "pass",
                                    "focus m_startFixedLineEdit"};
    const QStringList endFixed = {"focus m_endFixedRadioButton", "1 endtype=0",
                                  "focus m_endFixedLineEdit", "pass"};
    const QStringList endLinked = {"focus m_endLinkedRadioButton", "1 endtype=1",
                                   "focus m_endLinkOffsetLineEdit", "pass"};
    const QStringList endCycles = {"focus m_endCyclesRadioButton", "1 endtype=2",
                                   "focus m_endCyclesSpinBox", "pass"};
    QTest::newRow("start fixed to linked")
        << "starttype=0 endtype=0"
        << "m_startLinkedRadioButton" << startLinked << "3.5-5.5";
    QTest::newRow("start linked to fixed") << "starttype=1 endtype=0"
                                           << "m_startFixedRadioButton" << startFixed << "1-3";
    QTest::newRow("end fixed to linked") << "starttype=0 endtype=0"
                                         << "m_endLinkedRadioButton" << endLinked << "1-4";
    QTest::newRow("end fixed to cycles") << "starttype=0 endtype=0"
                                         << "m_endCyclesRadioButton" << endCycles << "1-2.5";
    QTest::newRow("end linked to fixed") << "starttype=0 endtype=1"
                                         << "m_endFixedRadioButton" << endFixed << "1-3";
    QTest::newRow("end linked to cycles") << "starttype=0 endtype=1"
                                          << "m_endCyclesRadioButton" << endCycles << "1-2.5";
    QTest::newRow("end cycles to fixed") << "starttype=0 endtype=2"
                                         << "m_endFixedRadioButton" << endFixed << "1-3";
    QTest::newRow("end cycles to linked") << "starttype=0 endtype=2"
                                          << "m_endLinkedRadioButton" << endLinked << "1-4";
}

void tst_TimePanelChoices::clickOnARuleStoresIt()
{
    QFETCH(QString, rules);
    QFETCH(QString, button);
    QFETCH(QStringList, journal);
    QFETCH(QString, cells);
    PanelScene scene;
    scene.store(2, "endfixedtime=3000");
    scene.store(1, rules
                       + " startfixedtime=1000 startlinkeid=2 startlinkstart=0 "
                         "startlinkoffset=500 endfixedtime=2000 endlinkeid=2 endlinkstart=0 "
                         "endlinkoffset=1000 endcyclecount=3");
    scene.at(1).cycleTime = 500;
    scene.select(1);

    PanelScene::clickButton(child<QRadioButton>(scene.form(), qPrintable(button)));

    QCOMPARE(scene.take(), journal);
    QCOMPARE(scene.startCell(1) + "-" + scene.endCell(1), cells);
    CHECK_SANITY(scene);
}

void tst_TimePanelChoices::clickOnTheRuleThatIsOnDoesNothing()
{
    PanelScene scene;
    scene.store(1, "endtype=2 endcyclecount=5");
    scene.select(1);

    PanelScene::clickButton(scene.form().m_startFixedRadioButton);
    PanelScene::clickButton(scene.form().m_endCyclesRadioButton);

    QCOMPARE(withoutFocus(scene.take()), QStringList());
}

void tst_TimePanelChoices::arrowKeyOnARuleStoresTheNextOne()
{
    PanelScene scene;
    scene.store(1, "startlinkeid=3");
    scene.select(1);
    scene.form().m_startFixedRadioButton->setFocus();
    scene.take();

    QTest::keyClick(scene.form().m_startFixedRadioButton, Qt::Key_Down);

    QCOMPARE(withoutFocus(scene.take()), QStringList({"1 starttype=1", "pass"}));
    QVERIFY(scene.form().m_startLinkedRadioButton->isChecked());
    CHECK_SANITY(scene);
}

void tst_TimePanelChoices::clickOnALinkSideStoresItAndKeepsTheRule_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("write");
    QTest::addColumn<QString>("focus");

    QTest::newRow("start to start") << "m_startLinkStartRadioButton"
                                    << "1 startlinkstart=1"
                                    << "m_startLinkOffsetLineEdit";
    QTest::newRow("start to end") << "m_startLinkEndRadioButton"
                                  << "1 startlinkstart=0"
                                  << "m_startLinkOffsetLineEdit";
    QTest::newRow("end to start") << "m_endLinkStartRadioButton"
                                  << "1 endlinkstart=1"
                                  << "m_endLinkOffsetLineEdit";
    QTest::newRow("end to end") << "m_endLinkEndRadioButton"
                                << "1 endlinkstart=0"
                                << "m_startLinkOffsetLineEdit";
}

void tst_TimePanelChoices::clickOnALinkSideStoresItAndKeepsTheRule()
{
    QFETCH(QString, button);
    QFETCH(QString, write);
    QFETCH(QString, focus);
    PanelScene scene;
    const QString otherSide = write.endsWith(u'1') ? "0" : "1";
    scene.store(1, "starttype=1 startlinkeid=2 endtype=1 endlinkeid=3 startlinkstart=" + otherSide
                       + " endlinkstart=" + otherSide);
    scene.select(1);

    PanelScene::clickButton(child<QRadioButton>(scene.form(), qPrintable(button)));

    QCOMPARE(scene.take(), QStringList({"focus " + button, write, "focus " + focus, "pass"}));
    CHECK_SANITY(scene);
}

void tst_TimePanelChoices::clickOnTheEndLinksEndButtonMovesTheFocusToTheStartOffset()
{
    PanelScene scene;
    scene.store(1, "starttype=1 startlinkeid=2 endtype=1 endlinkeid=3 endlinkstart=1");
    scene.select(1);

    PanelScene::clickButton(scene.form().m_endLinkEndRadioButton);

    QCOMPARE(scene.form().focusWidget(), scene.form().m_startLinkOffsetLineEdit);
}

void tst_TimePanelChoices::clickOnTheEndLinksEndButtonKeepsTheFocusWhileTheStartIsFixed()
{
    PanelScene scene;
    scene.store(1, "starttype=0 endtype=1 endlinkeid=3 endlinkstart=1");
    scene.select(1);

    PanelScene::clickButton(scene.form().m_endLinkEndRadioButton);

    QCOMPARE(scene.form().focusWidget(), scene.form().m_endLinkEndRadioButton);
}

// --- Choosers ---

namespace {

void addChooserRows()
{
    QTest::addColumn<QString>("chooser");
    QTest::addColumn<QStringList>("journal");

    QTest::newRow("start") << "m_startLinkEffectComboBox"
                           << QStringList(
                                  {"1 startlinkeid=4", "focus m_startLinkOffsetLineEdit", "pass"});
    QTest::newRow("end") << "m_endLinkEffectComboBox"
                         << QStringList(
                                {"1 endlinkeid=4", "focus m_endLinkOffsetLineEdit", "pass"});
}

// Child 1 is linked to child 3 at both ends, the second of the three that are offered.
void prepareChoosers(PanelScene &scene)
{
    scene.store(1, "starttype=1 startlinkeid=3 endtype=1 endlinkeid=3");
    scene.store(4, "startfixedtime=7000 endfixedtime=1000");
    scene.select(1);
}

// Notes of what happened since the popup closed, as far as the panel is concerned.
QStringList withoutPopup(const QStringList &journal)
{
    const qsizetype write = journal.indexOf(QRegularExpression(".*=.*"));
    return write < 0 ? journal : journal.sliced(write);
}

} // namespace

void tst_TimePanelChoices::choosingByArrowKeyStoresTheTarget_data()
{
    addChooserRows();
}

void tst_TimePanelChoices::choosingByArrowKeyStoresTheTarget()
{
    QFETCH(QString, chooser);
    QFETCH(QStringList, journal);
    PanelScene scene(4);
    prepareChoosers(scene);
    auto *box = child<QComboBox>(scene.form(), qPrintable(chooser));
    box->setFocus();
    scene.take();

    QTest::keyClick(box, Qt::Key_Down);

    QCOMPARE(scene.take(), journal);
    QCOMPARE(box->currentText(), "Child 4");
    CHECK_SANITY(scene);
}

void tst_TimePanelChoices::choosingInThePopupByKeysStoresTheTarget_data()
{
    addChooserRows();
}

void tst_TimePanelChoices::choosingInThePopupByKeysStoresTheTarget()
{
    QFETCH(QString, chooser);
    QFETCH(QStringList, journal);
    PanelScene scene(4);
    prepareChoosers(scene);
    auto *box = child<QComboBox>(scene.form(), qPrintable(chooser));
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Space);
    QTRY_VERIFY(box->view()->isVisible());
    scene.take();

    QTest::keyClick(box->view(), Qt::Key_Down);
    QCOMPARE(withoutFocus(scene.take()), QStringList());
    QTest::keyClick(box->view(), Qt::Key_Return);

    QCOMPARE(withoutPopup(scene.take()), journal);
    QCOMPARE(scene.startCell(1), chooser == "m_startLinkEffectComboBox" ? "8" : "0");
    CHECK_SANITY(scene);
}

void tst_TimePanelChoices::choosingInThePopupByMouseStoresTheTarget_data()
{
    addChooserRows();
}

void tst_TimePanelChoices::choosingInThePopupByMouseStoresTheTarget()
{
    QFETCH(QString, chooser);
    QFETCH(QStringList, journal);
    PanelScene scene(4);
    prepareChoosers(scene);
    auto *box = child<QComboBox>(scene.form(), qPrintable(chooser));
    QTest::mouseClick(box, Qt::LeftButton);
    QTRY_VERIFY(box->view()->isVisible());
    QTest::qWait(QApplication::doubleClickInterval() + 50); // or it were a double click
    scene.take();

    const QPoint item = box->view()->visualRect(box->model()->index(2, 0)).center();
    QTest::mouseMove(box->view()->viewport(), item);
    QTest::mouseClick(box->view()->viewport(), Qt::LeftButton, {}, item);

    QCOMPARE(withoutPopup(scene.take()), journal);
    QCOMPARE(box->currentText(), "Child 4");
    CHECK_SANITY(scene);
}

void tst_TimePanelChoices::choosingTheSameItemAgainStoresAndPasses()
{
    PanelScene scene(4);
    prepareChoosers(scene);
    QComboBox *box = scene.form().m_startLinkEffectComboBox;
    box->setFocus();
    scene.store(1, "startlinkeid=4"); // other than the item shown
    QTest::keyClick(box, Qt::Key_Space);
    QTRY_VERIFY(box->view()->isVisible());
    QTest::keyClick(box->view(), Qt::Key_Return);

    QCOMPARE(withoutPopup(scene.take()),
             QStringList({"1 startlinkeid=3", "focus m_startLinkOffsetLineEdit", "pass"}));
}

void tst_TimePanelChoices::choosingItem2OfTheEndChooserStoresTheEidOfEntry2()
{
    PanelScene scene(4);
    scene.store(1, "endtype=1 endlinkeid=2");
    scene.select(1);
    QComboBox *box = scene.form().m_endLinkEffectComboBox;
    box->setFocus();

    QTest::keyClick(box, Qt::Key_End);

    QCOMPARE(box->currentIndex(), 2);
    QCOMPARE(scene.form().m_startLinkEffectComboBox->itemText(2), "Child 4");
    QCOMPARE(scene.at(1).text("endlinkeid"), "4");
}

void tst_TimePanelChoices::targetWaitsUntilTheLinkedRuleIsChosen()
{
    PanelScene scene;
    scene.store(1, "starttype=0 startfixedtime=5000 startlinkeid=2 startlinkstart=1");
    scene.store(3, "startfixedtime=7000");
    scene.select(1);

    scene.effect.startLinkEffectActivated(1);
    scene.effect.startLinkEndToggled(true);

    QCOMPARE(writes(scene.take()), QStringList({"1 startlinkeid=3", "1 startlinkstart=0"}));
    QCOMPARE(scene.at(1).text("starttype"), "0");
    QCOMPARE(scene.startCell(1), "5");
}

void tst_TimePanelChoices::linkedRuleTakesTheTargetShown()
{
    PanelScene scene;
    scene.store(1, "startlinkeid=3");
    scene.select(1);
    QCOMPARE(scene.form().m_startLinkEffectComboBox->currentText(), "Child 3");
    scene.store(1, "startlinkeid=2");

    PanelScene::clickButton(scene.form().m_startLinkedRadioButton);

    QCOMPARE(scene.at(1).text("startlinkeid"), "3");
    CHECK_SANITY(scene);
}

QTEST_MAIN(tst_TimePanelChoices)
#include "tst_TimePanelChoices.moc"
