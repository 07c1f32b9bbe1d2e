#include "PreparedPanel.h"

#include <QClipboard>
#include <QRegularExpression>

class tst_TimePanelNumbers : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        // The platform of the tests has no means of its own to raise a popup.
        QTest::failOnWarning(
            QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    }

    // Text to numbers
    void fixedTimeIsStoredTruncatedAndSaturated_data();
    void fixedTimeIsStoredTruncatedAndSaturated();
    void offsetIsStoredInSixDigits_data();
    void offsetIsStoredInSixDigits();

    // Typing
    void everyKeyStoresPassesAndShowsInTheTable_data();
    void everyKeyStoresPassesAndShowsInTheTable();
    void typing15InTheStartFieldStores1500AndTheStartCellShowsIt();
    void typing1005InTheStartFieldStores1004();
    void typingMinus2StoresZeroAsStartAndMinus2000AsOffset();
    void abcIsStoredAsZeroInTheEndAndAsEmptyTextByTheFixedStartRule();
    void emptiedFieldStoresZero();
    void tabThroughThePanelWritesNothing_data();
    void tabThroughThePanelWritesNothing();

    // Number of cycles
    void typedCyclesCountOnlyOnceEntered_data();
    void typedCyclesCountOnlyOnceEntered();
    void typedZeroCyclesBecomeOne();
    void keysBeyondTheMostCyclesAreRefused();
    void pastedTextBeyondTheMostCyclesIsRefused();
    void stepsOfTheCyclesCountAtOnceAndStopAtTheEnds();
    void typedCyclesGoToTheChildThatWasSelected_data();
    void typedCyclesGoToTheChildThatWasSelected();
};

// --- Text to numbers ---

void tst_TimePanelNumbers::fixedTimeIsStoredTruncatedAndSaturated_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stored"); // null for text that is no number

    const QString none;
    QTest::newRow("half") << "1.5"
                          << "1500";
    QTest::newRow("truncated") << "1.005"
                               << "1004";
    QTest::newRow("just below a ms") << "0.0009999"
                                     << "0";
    QTest::newRow("negative") << "-2"
                              << "0";
    QTest::newRow("minus zero") << "-0"
                                << "0";
    QTest::newRow("largest") << "4294967.295"
                             << "4294967295";
    QTest::newRow("one less") << "4294967.2945"
                              << "4294967294";
    QTest::newRow("too large") << "4294967.296"
                               << "4294967295";
    QTest::newRow("much too large") << "1e300"
                                    << "4294967295";
    QTest::newRow("inf") << "inf"
                         << "4294967295";
    QTest::newRow("-inf") << "-inf"
                          << "0";
    QTest::newRow("nan") << "nan"
                         << "0";
    QTest::newRow("leading blank") << " 1.5"
                                   << "1500";
    QTest::newRow("trailing blank") << "1.5 "
                                    << "1500";
    QTest::newRow("sign") << "+5"
                          << "5000";
    QTest::newRow("no leading digit") << ".5"
                                      << "500";
    QTest::newRow("no trailing digit") << "5."
                                       << "5000";
    QTest::newRow("exponent") << "1E3"
                              << "1000000";
    QTest::newRow("not finite any more") << "1e400" << none;
    QTest::newRow("comma") << "1,5" << none;
    QTest::newRow("thousands") << "1,000" << none;
    QTest::newRow("hexadecimal") << "0x10" << none;
    QTest::newRow("unit") << "1s" << none;
    QTest::newRow("infinity") << "infinity" << none;
    QTest::newRow("word") << "abc" << none;
    QTest::newRow("minus") << "-" << none;
    QTest::newRow("empty") << "" << none;
}

void tst_TimePanelNumbers::fixedTimeIsStoredTruncatedAndSaturated()
{
    QFETCH(QString, text);
    QFETCH(QString, stored);
    const QString changed = stored.isNull() ? "0" : stored;
    PanelScene scene;
    prepare(scene);
    const MetaWidget &form = scene.form();

    scene.effect.startFixedTimeChanged(text);
    QCOMPARE(scene.at(1).text("startfixedtime"), changed);
    scene.effect.endFixedTimeChanged(text);
    QCOMPARE(scene.at(1).text("endfixedtime"), changed);

    prepare(scene);
    silently(form.m_startFixedLineEdit, [&text](QLineEdit *field) { field->setText(text); });
    scene.effect.startFixedToggled(true);
    QCOMPARE(scene.at(1).text("startfixedtime"), stored);
    silently(form.m_endFixedLineEdit, [&text](QLineEdit *field) { field->setText(text); });
    scene.effect.endFixedToggled(true);
    QCOMPARE(scene.at(1).text("endfixedtime"), changed);
}

void tst_TimePanelNumbers::offsetIsStoredInSixDigits_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stored"); // null for text that is no number

    const QString none;
    QTest::newRow("half") << "1.5"
                          << "1500";
    QTest::newRow("negative") << "-2"
                              << "-2000";
    QTest::newRow("not truncated") << "1.005"
                                   << "1005";
    QTest::newRow("parts of a ms") << "0.0005"
                                   << "0.5";
    QTest::newRow("six digits") << "123.456"
                                << "123456";
    QTest::newRow("seven digits") << "1234.567"
                                  << "1.23457e+06";
    QTest::newRow("eight digits") << "1234.5678"
                                  << "1.23457e+06";
    QTest::newRow("beyond every time") << "1e300"
                                       << "1e+303";
    QTest::newRow("inf") << "inf"
                         << "inf";
    QTest::newRow("-inf") << "-inf"
                          << "-inf";
    QTest::newRow("nan") << "nan"
                         << "nan";
    QTest::newRow("leading blank") << " 1.5"
                                   << "1500";
    QTest::newRow("trailing blank") << "1.5 "
                                    << "1500";
    QTest::newRow("not finite any more") << "1e400" << none;
    QTest::newRow("comma") << "1,5" << none;
    QTest::newRow("word") << "abc" << none;
    QTest::newRow("minus") << "-" << none;
    QTest::newRow("empty") << "" << none;
}

void tst_TimePanelNumbers::offsetIsStoredInSixDigits()
{
    QFETCH(QString, text);
    QFETCH(QString, stored);
    const QString changed = stored.isNull() ? "0" : stored;
    PanelScene scene;
    prepare(scene);
    const MetaWidget &form = scene.form();

    scene.effect.startLinkOffsetChanged(text);
    QCOMPARE(scene.at(1).text("startlinkoffset"), changed);
    scene.effect.endLinkOffsetChanged(text);
    QCOMPARE(scene.at(1).text("endlinkoffset"), changed);

    prepare(scene);
    silently(form.m_startLinkOffsetLineEdit, [&text](QLineEdit *field) { field->setText(text); });
    scene.effect.startLinkedToggled(true);
    QCOMPARE(scene.at(1).text("startlinkoffset"), stored);
    silently(form.m_endLinkOffsetLineEdit, [&text](QLineEdit *field) { field->setText(text); });
    scene.effect.endLinkedToggled(true);
    QCOMPARE(scene.at(1).text("endlinkoffset"), stored);
}

// --- Typing ---

void tst_TimePanelNumbers::everyKeyStoresPassesAndShowsInTheTable_data()
{
    QTest::addColumn<QString>("rules");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("stored"); // after each key
    QTest::addColumn<QStringList>("cells");  // "start-end" after each key

    // Child 1 is 2 s long, child 2 ends at 3 s.
    const QString fixed = "startfixedtime=9000 endfixedtime=2000";
    const QString linked = "starttype=1 startlinkeid=2 startlinkoffset=7000 endfixedtime=2000";
    const QString endLinked =
        "startfixedtime=1000 endtype=1 endlinkeid=2 endlinkoffset=7000 endlinkstart=0";
    QTest::newRow("start 1.5") << fixed << "m_startFixedLineEdit"
                               << "startfixedtime"
                               << "1.5" << QStringList({"1000", "1000", "1500"})
                               << QStringList({"1-3", "1-3", "1.5-3.5"});
    QTest::newRow("start 1e3") << fixed << "m_startFixedLineEdit"
                               << "startfixedtime"
                               << "1e3" << QStringList({"1000", "0", "1000000"})
                               << QStringList({"1-3", "0-2", "1000-1002"});
    QTest::newRow("start -2") << fixed << "m_startFixedLineEdit"
                              << "startfixedtime"
                              << "-2" << QStringList({"0", "0"}) << QStringList({"0-2", "0-2"});
    QTest::newRow("start offset -2")
        << linked << "m_startLinkOffsetLineEdit"
        << "startlinkoffset"
        << "-2" << QStringList({"0", "-2000"}) << QStringList({"3-5", "1-3"});
    QTest::newRow("end 0.25") << fixed << "m_endFixedLineEdit"
                              << "endfixedtime"
                              << "0.25" << QStringList({"0", "0", "200", "250"})
                              << QStringList({"9-9", "9-9", "9-9.2", "9-9.25"});
    QTest::newRow("end abc") << fixed << "m_endFixedLineEdit"
                             << "endfixedtime"
                             << "abc" << QStringList({"0", "0", "0"})
                             << QStringList({"9-9", "9-9", "9-9"});
    QTest::newRow("end offset 0.5")
        << endLinked << "m_endLinkOffsetLineEdit"
        << "endlinkoffset"
        << "0.5" << QStringList({"0", "0", "500"}) << QStringList({"1-3", "1-3", "1-3.5"});
}

void tst_TimePanelNumbers::everyKeyStoresPassesAndShowsInTheTable()
{
    QFETCH(QString, rules);
    QFETCH(QString, field);
    QFETCH(QString, key);
    QFETCH(QString, typed);
    QFETCH(QStringList, stored);
    QFETCH(QStringList, cells);
    PanelScene scene;
    scene.store(2, "endfixedtime=3000");
    scene.store(1, rules);
    scene.select(1);
    auto *line = child<QLineEdit>(scene.form(), qPrintable(field));
    QTest::mouseClick(line, Qt::LeftButton);
    QVERIFY(line->hasFocus());
    line->selectAll();
    scene.take();

    for (int i = 0; i < typed.size(); ++i) {
        const QString before = scene.at(1).text(qPrintable(key));
        QTest::keyClick(line, typed.at(i).toLatin1());

        QStringList expected{"pass"};
        if (stored.at(i) != before)
            expected.prepend("1 " + key + "=" + stored.at(i));
        QCOMPARE(scene.take(), expected);
        QCOMPARE(scene.at(1).text(qPrintable(key)), stored.at(i));
        QCOMPARE(scene.startCell(1) + "-" + scene.endCell(1), cells.at(i));
    }
    QCOMPARE(line->text(), typed);
    QVERIFY(line->hasFocus());
}

void tst_TimePanelNumbers::typing15InTheStartFieldStores1500AndTheStartCellShowsIt()
{
    PanelScene scene;
    scene.select(1);

    EditorStage::typeInto(*scene.form().m_startFixedLineEdit, "1.5");

    QCOMPARE(scene.at(1).text("startfixedtime"), "1500");
    QCOMPARE(scene.startCell(1), "1.5");
    CHECK_SANITY(scene);
}

void tst_TimePanelNumbers::typing1005InTheStartFieldStores1004()
{
    PanelScene scene;
    scene.select(1);

    EditorStage::typeInto(*scene.form().m_startFixedLineEdit, "1.005");

    QCOMPARE(scene.at(1).text("startfixedtime"), "1004");
    QCOMPARE(scene.startCell(1), "1.004");
}

void tst_TimePanelNumbers::typingMinus2StoresZeroAsStartAndMinus2000AsOffset()
{
    PanelScene scene;
    scene.store(1, "startfixedtime=5000");
    scene.select(1);

    EditorStage::typeInto(*scene.form().m_startFixedLineEdit, "-2");
    QCOMPARE(scene.at(1).text("startfixedtime"), "0");

    PanelScene::clickButton(scene.form().m_startLinkedRadioButton);
    EditorStage::typeInto(*scene.form().m_startLinkOffsetLineEdit, "-2");
    QCOMPARE(scene.at(1).text("startlinkoffset"), "-2000");
    CHECK_SANITY(scene);
}

void tst_TimePanelNumbers::abcIsStoredAsZeroInTheEndAndAsEmptyTextByTheFixedStartRule()
{
    PanelScene scene;
    scene.store(1, "startfixedtime=5000 endfixedtime=5000");
    scene.select(1);
    const MetaWidget &form = scene.form();

    EditorStage::typeInto(*form.m_endFixedLineEdit, "abc");
    QCOMPARE(scene.at(1).text("endfixedtime"), "0");
    PanelScene::clickButton(form.m_endCyclesRadioButton);
    PanelScene::clickButton(form.m_endFixedRadioButton);
    QCOMPARE(form.m_endFixedLineEdit->text(), "abc");
    QCOMPARE(scene.at(1).text("endfixedtime"), "0");

    EditorStage::typeInto(*form.m_startFixedLineEdit, "abc");
    QCOMPARE(scene.at(1).text("startfixedtime"), "0");
    PanelScene::clickButton(form.m_startLinkedRadioButton);
    PanelScene::clickButton(form.m_startFixedRadioButton);
    QCOMPARE(form.m_startFixedLineEdit->text(), "abc");
    QCOMPARE(scene.at(1).text("startfixedtime"), "");
    QCOMPARE(scene.startCell(1), "0");
}

void tst_TimePanelNumbers::emptiedFieldStoresZero()
{
    PanelScene scene;
    scene.store(1, "startfixedtime=5000");
    scene.select(1);

    EditorStage::typeInto(*scene.form().m_startFixedLineEdit, "");

    QCOMPARE(scene.form().m_startFixedLineEdit->text(), "");
    QCOMPARE(scene.at(1).text("startfixedtime"), "0");
}

void tst_TimePanelNumbers::tabThroughThePanelWritesNothing_data()
{
    QTest::addColumn<QString>("rules");
    QTest::addColumn<QStringList>("stops");

    QTest::newRow("fixed") << "startfixedtime=1500 endfixedtime=2000"
                           << QStringList({"m_startFixedRadioButton", "m_startFixedLineEdit",
                                           "m_endFixedRadioButton", "m_endFixedLineEdit"});
    QTest::newRow("linked") << "starttype=1 startlinkeid=3 startlinkstart=1 endtype=1 endlinkeid=2 "
                               "endlinkstart=1"
                            << QStringList(
                                   {"m_startLinkedRadioButton", "m_startLinkStartRadioButton",
                                    "m_startLinkEffectComboBox", "m_startLinkOffsetLineEdit"});
    QTest::newRow("cycles") << "endtype=2 endcyclecount=5"
                            << QStringList({"m_endCyclesRadioButton", "m_endCyclesSpinBox"});
}

void tst_TimePanelNumbers::tabThroughThePanelWritesNothing()
{
    QFETCH(QString, rules);
    QFETCH(QStringList, stops);
    PanelScene scene;
    scene.store(1, rules);
    scene.select(1);
    widget(scene.form(), stops.first())->setFocus();

    for (qsizetype i = 1; i < stops.size(); ++i)
        QTest::keyClick(scene.form().focusWidget(), Qt::Key_Tab);
    QTest::keyClick(scene.form().focusWidget(), Qt::Key_Tab);

    const QStringList journal = scene.take();
    QCOMPARE(withoutFocus(journal), QStringList());
    QStringList expected;
    for (const QString &stop : stops)
        expected.append("focus " + stop);
    QCOMPARE(journal.first(stops.size()), expected);
    CHECK_SANITY(scene);
}

// --- Number of cycles ---

namespace {

// Child 1 lasts five of its cycles of 0.5 s; its number field has the focus.
QSpinBox *prepareCycles(PanelScene &scene)
{
    scene.at(1).cycleTime = 500;
    scene.store(1, "endtype=2 endcyclecount=5");
    scene.select(1);
    QSpinBox *box = scene.form().m_endCyclesSpinBox;
    box->setFocus();
    box->selectAll();
    scene.take();
    return box;
}

} // namespace

void tst_TimePanelNumbers::typedCyclesCountOnlyOnceEntered_data()
{
    QTest::addColumn<int>("key");

    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Tab") << int(Qt::Key_Tab);
    QTest::newRow("another field") << 0;
}

void tst_TimePanelNumbers::typedCyclesCountOnlyOnceEntered()
{
    QFETCH(int, key);
    PanelScene scene;
    QSpinBox *box = prepareCycles(scene);

    QTest::keyClicks(box, "12");
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.at(1).text("endcyclecount"), "5");

    if (key)
        QTest::keyClick(box, Qt::Key(key));
    else
        QTest::mouseClick(scene.form().m_startFixedLineEdit, Qt::LeftButton);
    QCOMPARE(withoutFocus(scene.take()), QStringList({"1 endcyclecount=12", "pass"}));
    QCOMPARE(scene.endCell(1), "6");
    CHECK_SANITY(scene);
}

void tst_TimePanelNumbers::typedZeroCyclesBecomeOne()
{
    PanelScene scene;
    QSpinBox *box = prepareCycles(scene);

    QTest::keyClicks(box, "0");
    QTest::keyClick(box, Qt::Key_Return);

    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=1", "pass"}));
    QCOMPARE(box->text(), "1");
}

void tst_TimePanelNumbers::keysBeyondTheMostCyclesAreRefused()
{
    PanelScene scene;
    QSpinBox *box = prepareCycles(scene);

    QTest::keyClicks(box, "2000");
    QCOMPARE(box->text(), "200");
    QTest::keyClick(box, Qt::Key_Return);

    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=200", "pass"}));
}

void tst_TimePanelNumbers::pastedTextBeyondTheMostCyclesIsRefused()
{
    PanelScene scene;
    QSpinBox *box = prepareCycles(scene);

    QApplication::clipboard()->setText("2000");
    QTest::keySequence(box, QKeySequence::Paste);
    QTest::keyClick(box, Qt::Key_Return);
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(box->text(), "5");

    QApplication::clipboard()->setText("1000");
    box->selectAll();
    QTest::keySequence(box, QKeySequence::Paste);
    QTest::keyClick(box, Qt::Key_Return);
    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=1000", "pass"}));
}

void tst_TimePanelNumbers::stepsOfTheCyclesCountAtOnceAndStopAtTheEnds()
{
    PanelScene scene;
    QSpinBox *box = prepareCycles(scene);

    QTest::keyClick(box, Qt::Key_Up);
    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=6", "pass"}));
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=5", "pass"}));
    box->setValue(1);
    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=1", "pass"}));
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(scene.take(), QStringList());
    box->setValue(1000);
    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=1000", "pass"}));
    QTest::keyClick(box, Qt::Key_Up);
    QCOMPARE(scene.take(), QStringList());
}

void tst_TimePanelNumbers::typedCyclesGoToTheChildThatWasSelected_data()
{
    QTest::addColumn<QString>("selected"); // eids, afterwards

    QTest::newRow("click on another row") << "2";
    QTest::newRow("a new child, which is selected at once") << "4";
    QTest::newRow("no row any more, while the focus stays") << "";
}

void tst_TimePanelNumbers::typedCyclesGoToTheChildThatWasSelected()
{
    QFETCH(QString, selected);
    PanelScene scene;
    QSpinBox *box = prepareCycles(scene);
    scene.store(2, "endtype=2 endcyclecount=7");

    QTest::keyClicks(box, "12");
    if (selected == u"2")
        scene.selectEid(2);
    else if (selected == u"4")
        scene.addWatched(4);
    else
        scene.table().clearSelection();

    QCOMPARE(scene.at(1).text("endcyclecount"), "12");
    QCOMPARE(scene.at(2).text("endcyclecount"), "7");
    QCOMPARE(scene.selectedEids().join(u' '), selected);
    CHECK_SANITY(scene);
}

QTEST_MAIN(tst_TimePanelNumbers)
#include "tst_TimePanelNumbers.moc"
