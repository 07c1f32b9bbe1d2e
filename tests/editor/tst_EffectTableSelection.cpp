#include "EffectColumns.h"
#include "LogCapture.h"
#include "OpenStage.h"

#include <QClipboard>
#include <QRegularExpression>
#include <QSignalSpy>

#include <optional>

using enum meta::EffectColumn;

class tst_EffectTableSelection : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    // Selecting
    void showingTheFormSelectsNothing();
    void clickSelectsTheRowWhateverTheColumn_data();
    void clickSelectsTheRowWhateverTheColumn();
    void clickOnAnotherRowSelectsJustThat();
    void ctrlClickAddsARowAndEmptiesTheSelection();
    void ctrlClickOnTheSelectedRowKeepsIt();
    void shiftClickSelectsTheRowsBetween();
    void arrowKeysMoveTheSelection();
    void rightClickSelectsJustThatRow_data();
    void rightClickSelectsJustThatRow();
    void clickBelowTheRowsClearsTheSelection();
    void currentCellSelectsItsRow();
    void selectionIsFoundByTheEidsAfterSorting();
    void rowsWithoutAChildDoNotCount_data();
    void rowsWithoutAChildDoNotCount();
    void repeatedEidMeansTheFirstChildInListOrder();
    void twoRowsOfOneEidAreSeveral();

    // New children and removed rows
    void newChildIsTheOnlySelectedOne();
    void newChildIsShownOnceAndTheFormerOneNoMore();
    void newChildNeverBlanksThePanel();
    void lastOfSeveralNewChildrenIsSelected();
    void removedRowLeavesNothingSelected_data();
    void removedRowLeavesNothingSelected();
    void secondDeletionWithoutASelectionDeletesNothing();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_EffectTableSelection::init()
{
    // What the offscreen platform says of windows with a minimum size and of menus.
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    m_debugLines.emplace(QtDebugMsg);
    QGuiApplication::clipboard()->clear();
}

// --- Selecting ---

void tst_EffectTableSelection::showingTheFormSelectsNothing()
{
    OpenStage stage;
    stage.table().setFocus();
    QCoreApplication::processEvents();

    QCOMPARE(stage.highlighted(), QString());
    QCOMPARE(stage.selected(), QString());
    QVERIFY(!stage.table().currentIndex().isValid());
    QCOMPARE(stage.title(), QStringLiteral("Effect Parameters"));
    for (const quint32 eid : {1u, 2u, 3u})
        QCOMPARE(stage.children[eid]->widgetRequests, 0);
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::clickSelectsTheRowWhateverTheColumn_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("name") << int(NameColumn);
    QTest::newRow("type") << int(TypeColumn);
    QTest::newRow("priority") << int(PriorityColumn);
    QTest::newRow("start") << int(StartColumn);
    QTest::newRow("end") << int(EndColumn);
    QTest::newRow("fade in") << int(FadeInColumn);
    QTest::newRow("fade out") << int(FadeOutColumn);
}

void tst_EffectTableSelection::clickSelectsTheRowWhateverTheColumn()
{
    QFETCH(int, column);
    OpenStage stage;

    stage.click(1, column);

    QCOMPARE(stage.highlighted(), QStringLiteral("2"));
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    QCOMPARE(stage.table().currentColumn(), column);
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::clickOnAnotherRowSelectsJustThat()
{
    OpenStage stage;
    for (const quint32 eid : {1u, 3u, 2u, 1u}) {
        stage.selectEid(eid);
        QCOMPARE(stage.highlighted(), QString::number(eid));
        QCOMPARE(stage.selected(), QString::number(eid));
        CHECK_SANITY(stage);
    }
}

void tst_EffectTableSelection::ctrlClickAddsARowAndEmptiesTheSelection()
{
    OpenStage stage;
    stage.click(0, NameColumn);

    stage.click(2, NameColumn, Qt::ControlModifier);

    QCOMPARE(stage.highlighted(), QStringLiteral("3 1"));
    QCOMPARE(stage.selected(), QString());
    CHECK_SANITY(stage);

    stage.click(1, NameColumn);
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::ctrlClickOnTheSelectedRowKeepsIt()
{
    OpenStage stage;
    stage.click(1, NameColumn, Qt::ControlModifier);
    QCOMPARE(stage.selected(), QStringLiteral("2"));

    stage.click(1, PriorityColumn, Qt::ControlModifier);
    stage.click(1, PriorityColumn, Qt::ControlModifier);

    QCOMPARE(stage.highlighted(), QStringLiteral("2"));
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::shiftClickSelectsTheRowsBetween()
{
    OpenStage stage;
    stage.click(0, NameColumn);

    stage.click(2, NameColumn, Qt::ShiftModifier);

    QCOMPARE(stage.highlighted(), QStringLiteral("3 2 1"));
    QCOMPARE(stage.selected(), QString());
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::arrowKeysMoveTheSelection()
{
    OpenStage stage;
    stage.click(0, NameColumn);

    QTest::keyClick(&stage.table(), Qt::Key_Down);
    QCOMPARE(stage.highlighted(), QStringLiteral("2"));
    QCOMPARE(stage.selected(), QStringLiteral("2"));

    QTest::keyClick(&stage.table(), Qt::Key_Down);
    QCOMPARE(stage.selected(), QStringLiteral("1"));
    QTest::keyClick(&stage.table(), Qt::Key_Down);
    QCOMPARE(stage.selected(), QStringLiteral("1"));
    QTest::keyClick(&stage.table(), Qt::Key_Up);
    QCOMPARE(stage.highlighted(), QStringLiteral("2"));
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::rightClickSelectsJustThatRow_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("eid");
    QTest::newRow("another row") << 2 << "1";
    QTest::newRow("the selected row") << 0 << "3";
}

void tst_EffectTableSelection::rightClickSelectsJustThatRow()
{
    QFETCH(int, row);
    QFETCH(QString, eid);
    OpenStage stage;
    stage.click(0, NameColumn);

    stage.click(row, NameColumn, {}, Qt::RightButton);

    QCOMPARE(stage.highlighted(), eid);
    QCOMPARE(stage.selected(), eid);
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::clickBelowTheRowsClearsTheSelection()
{
    OpenStage stage;
    stage.click(1, NameColumn);

    stage.clickAt(stage.below());

    QCOMPARE(stage.highlighted(), QString());
    QCOMPARE(stage.selected(), QString());
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::currentCellSelectsItsRow()
{
    OpenStage stage;
    stage.table().setCurrentCell(1, StartColumn, QItemSelectionModel::NoUpdate);
    QCOMPARE(stage.highlighted(), QStringLiteral("2"));
    QCOMPARE(stage.selected(), QStringLiteral("2"));

    // Adds, as the one who moves the current cell may not clear.
    stage.effect.handleCurrentChanged(0, StartColumn);
    QCOMPARE(stage.highlighted(), QStringLiteral("3 2"));
    QCOMPARE(stage.selected(), QString());
    QCOMPARE(stage.table().currentRow(), 1);
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::selectionIsFoundByTheEidsAfterSorting()
{
    OpenStage stage;
    stage.clickHeader(NameColumn);
    QCOMPARE(stage.column(EidColumn), QStringList({"1", "2", "3"}));

    stage.click(0, NameColumn);

    QCOMPARE(stage.selected(), QStringLiteral("1"));
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::rowsWithoutAChildDoNotCount_data()
{
    QTest::addColumn<QString>("eid");
    QTest::newRow("unknown eid") << "99";
    QTest::newRow("no number") << "abc";
    QTest::newRow("negative") << "-1";
    QTest::newRow("empty") << "";
    QTest::newRow("too large") << "4294967296";
}

void tst_EffectTableSelection::rowsWithoutAChildDoNotCount()
{
    QFETCH(QString, eid);
    OpenStage stage;
    stage.add(0); // must not be taken for what is no number
    stage.table().clearSelection();
    stage.table().setText(0, EidColumn, eid);

    stage.click(0, NameColumn);
    QCOMPARE(stage.selected(), QString());
    QCOMPARE(stage.title(), QStringLiteral("Effect Parameters"));
    QVERIFY(!stage.form().m_startButtonGroup->isEnabled());

    stage.click(1, NameColumn, Qt::ControlModifier);
    QCOMPARE(stage.table().selectedRows().size(), 2);
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    QCOMPARE(stage.title(), QStringLiteral("Child 2 Parameters"));
    QVERIFY(stage.form().m_startButtonGroup->isEnabled());
}

void tst_EffectTableSelection::repeatedEidMeansTheFirstChildInListOrder()
{
    OpenStage stage;
    stage.children[3]->with("eid", 1);
    stage.effect.refreshMetaWidget();
    QCOMPARE(stage.column(EidColumn), QStringList({"1", "2", "1"}));

    stage.click(0, NameColumn);

    QCOMPARE(stage.title(), QStringLiteral("Child 1 Parameters"));
    QCOMPARE(stage.shownParameters(), QList({stage.children[1]->parameterWidget()}));
}

void tst_EffectTableSelection::twoRowsOfOneEidAreSeveral()
{
    OpenStage stage;
    stage.children[3]->with("eid", 2);
    stage.effect.refreshMetaWidget();

    stage.click(0, NameColumn);
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    stage.click(1, NameColumn, Qt::ControlModifier);

    QCOMPARE(stage.selected(), QString());
    QCOMPARE(stage.title(), QStringLiteral("Effect Parameters"));
}

// --- New children and removed rows ---

void tst_EffectTableSelection::newChildIsTheOnlySelectedOne()
{
    OpenStage stage;
    stage.selectEid(2);

    stage.add(9);

    QCOMPARE(stage.highlighted(), QStringLiteral("9"));
    QCOMPARE(stage.selected(), QStringLiteral("9"));
    QCOMPARE(stage.table().selectedRows(), QList<int>({3}));
    QCOMPARE(stage.title(), QStringLiteral("Child 9 Parameters"));
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::newChildIsShownOnceAndTheFormerOneNoMore()
{
    OpenStage stage;
    stage.selectEid(2);
    const int requests = stage.children[2]->widgetRequests;

    const WidgetStub *added = stage.add(9);

    QCOMPARE(added->widgetRequests, 1);
    QCOMPARE(stage.children[2]->widgetRequests, requests);
    QVERIFY(stage.children[2]->parameterWidget()->isHidden());
    QCOMPARE(stage.shownParameters(), QList({added->parameterWidget()}));
}

void tst_EffectTableSelection::newChildNeverBlanksThePanel()
{
    OpenStage stage;
    stage.selectEid(2);
    const QSignalSpy texts(stage.form().m_startFixedLineEdit, &QLineEdit::textChanged);
    const QSignalSpy selections(&stage.table(), SIGNAL(selectionChanged()));
    auto *added = new WidgetStub(&stage.map, QStringLiteral("Stub"), 9);
    added->with("startfixedtime", 1500);

    stage.effect.addChild(added);

    QCOMPARE(texts.count(), 0);
    QCOMPARE(selections.count(), 0);
    QCOMPARE(stage.form().m_startFixedLineEdit->text(), QStringLiteral("1.5"));
}

void tst_EffectTableSelection::lastOfSeveralNewChildrenIsSelected()
{
    OpenStage stage;
    stage.click(0, NameColumn);
    stage.click(1, NameColumn, Qt::ControlModifier);

    stage.add(9);
    stage.add(8);

    QCOMPARE(stage.highlighted(), QStringLiteral("8"));
    QCOMPARE(stage.selected(), QStringLiteral("8"));
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::removedRowLeavesNothingSelected_data()
{
    QTest::addColumn<quint32>("eid");
    QTest::newRow("the selected row") << 2u;
    QTest::newRow("the row above it") << 3u;
    QTest::newRow("the row below it") << 1u;
}

void tst_EffectTableSelection::removedRowLeavesNothingSelected()
{
    QFETCH(quint32, eid);
    OpenStage stage;
    stage.selectEid(2);

    stage.effect.removeFromTable(eid);

    QCOMPARE(stage.table().rowCount(), 2);
    QCOMPARE(stage.highlighted(), QString());
    QCOMPARE(stage.selected(), QString());
    QVERIFY(!stage.table().currentIndex().isValid());
    QCOMPARE(stage.title(), QStringLiteral("Effect Parameters"));
    QVERIFY(!stage.form().m_startButtonGroup->isEnabled());
    QCOMPARE(stage.shownParameters(), QList<QWidget *>());
}

void tst_EffectTableSelection::secondDeletionWithoutASelectionDeletesNothing()
{
    OpenStage stage;
    stage.selectEid(2);
    QTest::mouseClick(stage.form().m_deleteEffectButton, Qt::LeftButton);
    QCOMPARE(stage.eids(), QStringList({"1", "3"}));

    QTest::mouseClick(stage.form().m_deleteEffectButton, Qt::LeftButton);

    QCOMPARE(stage.eids(), QStringList({"1", "3"}));
    CHECK_SANITY(stage);
}

QTEST_MAIN(tst_EffectTableSelection)
#include "tst_EffectTableSelection.moc"
