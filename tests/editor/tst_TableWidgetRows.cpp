#include "TableScene.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using meta::TableItem;
using meta::TableWidget;

namespace {

/// A cell that sorts by the length of its text.
class LengthItem final : public TableItem
{
public:
    explicit LengthItem(const QString &text) : TableItem(nullptr, Never, text) {}
    QString key() const override { return QString::number(text().size()); }
};

} // namespace

class tst_TableWidgetRows : public QObject
{
    Q_OBJECT

private slots:
    void init();

    // Selecting
    void currentCellIsToldOnceEach();
    void selectRowAddsWithoutMovingTheCurrentCell();
    void selectRowTellsEvenOfASelectedRow();
    void selectRowBeyondTheEnds_data();
    void selectRowBeyondTheEnds();
    void selectRowInAnEmptyTableDoesNothing();
    void selectOnlyIsSilent();
    void partlySelectedRowIsSelected();
    void rowWithoutItemsIsSelectedAlike();

    // Rows
    void appendedRowsChangeNoSelection();
    void removeRowLeavesNothingSelectedOrCurrent_data();
    void removeRowLeavesNothingSelectedOrCurrent();
    void removeRowWithoutSelectionIsSilent();
    void removeRowOutsideDoesNothing_data();
    void removeRowOutsideDoesNothing();
    void fewerRowsLeaveNothingSelectedOrCurrent();
    void emptiedTableStartsAnew();
    void negativeRowCountDoesNothing();

    // Sorting
    void sortsByKeyAndKeepsTheOrderOfEquals_data();
    void sortsByKeyAndKeepsTheOrderOfEquals();
    void sortsByCodePoint();
    void rowsWithoutItemSortLast_data();
    void rowsWithoutItemSortLast();
    void sortingIsSilentAndEverythingGoesWithItsRow();
    void sortingMovesPictures();
    void changedTextDoesNotSort();
    void indicatorIsUnseenUntilTheFirstSort();
    void headerClickIsToldOnceAndSelectsNothing_data();
    void headerClickIsToldOnceAndSelectsNothing();
    void headerClickLeavesTheIndicatorToTheSort();
};

// Any warning fails, but for what the platform of the tests says of itself.
void tst_TableWidgetRows::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

// --- Selecting ---

void tst_TableWidgetRows::currentCellIsToldOnceEach()
{
    TableScene scene({"a", "b", "c"}, false);
    const auto currents = [&] { return scene.take().filter(QStringLiteral("current")); };

    scene.table.setCurrentCell(1, Group);
    QCOMPARE(currents(), QStringList({"current 1,2"}));
    scene.table.setCurrentCell(1, Group);
    QCOMPARE(currents(), QStringList());
    scene.table.setCurrentCell(-1, -1);
    QCOMPARE(currents(), QStringList());
}

void tst_TableWidgetRows::selectRowAddsWithoutMovingTheCurrentCell()
{
    TableScene scene;
    scene.click(1, Group);
    scene.take();

    scene.table.selectRow(3);

    QCOMPARE(scene.take(), QStringList({"selection 1 3"}));
    QCOMPARE(scene.current(), QStringLiteral("1,2"));
}

void tst_TableWidgetRows::selectRowTellsEvenOfASelectedRow()
{
    TableScene scene;
    scene.table.selectRow(3);
    scene.table.selectRow(3);

    QCOMPARE(scene.take(), QStringList({"selection 3", "selection 3"}));
}

void tst_TableWidgetRows::selectRowBeyondTheEnds_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QStringList>("told");
    QTest::newRow("last") << 4 << QStringList{"selection 4"};
    QTest::newRow("behind the last") << 5 << QStringList{"selection 4"};
    QTest::newRow("far behind") << 1000000 << QStringList{"selection 4"};
    QTest::newRow("first") << 0 << QStringList{"selection 0"};
    QTest::newRow("before the first") << -1 << QStringList{};
}

void tst_TableWidgetRows::selectRowBeyondTheEnds()
{
    QFETCH(int, row);
    QFETCH(QStringList, told);
    TableScene scene;

    scene.table.selectRow(row);

    QCOMPARE(scene.take(), told);
}

void tst_TableWidgetRows::selectRowInAnEmptyTableDoesNothing()
{
    TableScene scene{QStringList()};

    scene.table.selectRow(0);

    QCOMPARE(scene.take(), QStringList());
}

void tst_TableWidgetRows::selectOnlyIsSilent()
{
    TableScene scene;
    scene.click(1, Group);
    scene.take();

    scene.table.selectOnly(3);

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.selected(), QStringLiteral("3"));
    QCOMPARE(scene.current(), QStringLiteral("1,2"));
    scene.click(2, Group);
    QCOMPARE(scene.take(),
             QStringList({"current 2,2", "selection 2 3", "selection 2", "clicked 2,2,1"}));
}

void tst_TableWidgetRows::partlySelectedRowIsSelected()
{
    TableScene scene;
    const QAbstractItemModel *model = scene.table.model();

    scene.table.selectionModel()->select(model->index(2, Type), QItemSelectionModel::Select);

    QVERIFY(scene.table.isRowSelected(2));
    QVERIFY(!scene.table.isRowSelected(1));
    QCOMPARE(scene.selected(), QStringLiteral("2"));
}

void tst_TableWidgetRows::rowWithoutItemsIsSelectedAlike()
{
    TableWidget table;
    table.setColumnCount(3);
    table.hideColumn(0);
    table.setNumRows(3);

    table.selectRow(1);

    QVERIFY(table.isRowSelected(1));
    QVERIFY(!table.isRowSelected(0));
    QVERIFY(!table.isRowSelected(-1));
    QVERIFY(!table.isRowSelected(3));
    QCOMPARE(table.selectedRows(), QList<int>{1});
}

// --- Rows ---

void tst_TableWidgetRows::appendedRowsChangeNoSelection()
{
    TableScene scene;
    scene.click(4, Group);
    scene.take();

    scene.table.setNumRows(7);

    QCOMPARE(scene.table.rowCount(), 7);
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.selected(), QStringLiteral("4"));
    QCOMPARE(scene.current(), QStringLiteral("4,2"));
}

void tst_TableWidgetRows::removeRowLeavesNothingSelectedOrCurrent_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("left");
    QTest::newRow("the first") << 0 << QStringLiteral("b c d e");
    QTest::newRow("the current one") << 2 << QStringLiteral("a b d e");
    QTest::newRow("a selected one") << 1 << QStringLiteral("a c d e");
    QTest::newRow("the last") << 4 << QStringLiteral("a b c d");
}

void tst_TableWidgetRows::removeRowLeavesNothingSelectedOrCurrent()
{
    QFETCH(int, row);
    QFETCH(QString, left);
    TableScene scene;
    scene.click(1, Group);
    scene.click(2, Group, Qt::ControlModifier);
    scene.take();
    scene.rowsAtSelection.clear();

    scene.table.removeRow(row);

    QCOMPARE(scene.take(), QStringList({"selection "}));
    QCOMPARE(scene.rowsAtSelection, QList<int>{5}); // told before the row goes
    QCOMPARE(scene.column(Name), left);
    QCOMPARE(scene.selected(), QString());
    QCOMPARE(scene.current(), QStringLiteral("-1,-1"));
}

void tst_TableWidgetRows::removeRowWithoutSelectionIsSilent()
{
    TableScene scene({"a", "b", "c"}, false);
    scene.table.setCurrentCell(1, Group, QItemSelectionModel::NoUpdate);
    scene.take();

    scene.table.removeRow(1);

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.column(Name), QStringLiteral("a c"));
    QCOMPARE(scene.current(), QStringLiteral("-1,-1"));
}

void tst_TableWidgetRows::removeRowOutsideDoesNothing_data()
{
    QTest::addColumn<int>("row");
    QTest::newRow("before the first") << -1;
    QTest::newRow("behind the last") << 5;
}

void tst_TableWidgetRows::removeRowOutsideDoesNothing()
{
    QFETCH(int, row);
    TableScene scene;
    scene.click(1, Group);
    scene.take();

    scene.table.removeRow(row);

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.column(Name), QStringLiteral("a b c d e"));
    QCOMPARE(scene.selected(), QStringLiteral("1"));
    QCOMPARE(scene.current(), QStringLiteral("1,2"));
}

void tst_TableWidgetRows::fewerRowsLeaveNothingSelectedOrCurrent()
{
    TableScene scene;
    scene.click(1, Group);
    scene.take();
    scene.rowsAtSelection.clear();

    scene.table.setNumRows(3);

    QCOMPARE(scene.take(), QStringList({"selection "}));
    QCOMPARE(scene.rowsAtSelection, QList<int>{5});
    QCOMPARE(scene.column(Name), QStringLiteral("a b c"));
    QCOMPARE(scene.current(), QStringLiteral("-1,-1"));
}

void tst_TableWidgetRows::emptiedTableStartsAnew()
{
    TableScene scene;
    scene.click(1, Group);
    scene.table.setNumRows(0);
    scene.take();

    scene.append(QStringLiteral("f"));

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.selected(), QString());
    QCOMPARE(scene.current(), QStringLiteral("-1,-1"));
    scene.click(0, Group);
    QCOMPARE(scene.take(), QStringList({"current 0,2", "selection 0", "clicked 0,2,1"}));
}

void tst_TableWidgetRows::negativeRowCountDoesNothing()
{
    TableScene scene;
    scene.click(1, Group);
    scene.take();

    scene.table.setNumRows(-1);

    QCOMPARE(scene.table.rowCount(), 5);
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.selected(), QStringLiteral("1"));
}

// --- Sorting ---

void tst_TableWidgetRows::sortsByKeyAndKeepsTheOrderOfEquals_data()
{
    QTest::addColumn<bool>("ascending");
    QTest::addColumn<QString>("sorted");
    QTest::newRow("ascending") << true << QStringLiteral("c d aa bb zz aaa");
    QTest::newRow("descending") << false << QStringLiteral("aaa aa bb zz c d");
}

void tst_TableWidgetRows::sortsByKeyAndKeepsTheOrderOfEquals()
{
    QFETCH(bool, ascending);
    QFETCH(QString, sorted);
    TableWidget table;
    table.setColumnCount(1);
    for (const char *text : {"aa", "c", "bb", "aaa", "d", "zz"}) {
        table.setNumRows(table.rowCount() + 1);
        table.setItem(table.rowCount() - 1, 0, new LengthItem(QString::fromLatin1(text)));
    }

    table.sortColumn(0, ascending);

    QStringList texts;
    for (int row = 0; row < table.rowCount(); ++row)
        texts.append(table.text(row, 0));
    QCOMPARE(texts.join(u' '), sorted);
}

void tst_TableWidgetRows::sortsByCodePoint()
{
    TableScene scene({"b", "B", "ä", "a", "10", "2"});

    scene.table.sortColumn(Name, true);

    QCOMPARE(scene.column(Name), QStringLiteral("10 2 B a b ä"));
}

void tst_TableWidgetRows::rowsWithoutItemSortLast_data()
{
    QTest::addColumn<bool>("ascending");
    QTest::addColumn<QString>("sorted");
    QTest::newRow("ascending") << true << QStringLiteral("b d e a c");
    QTest::newRow("descending") << false << QStringLiteral("e d b a c");
}

void tst_TableWidgetRows::rowsWithoutItemSortLast()
{
    QFETCH(bool, ascending);
    QFETCH(QString, sorted);
    TableScene scene;
    scene.table.setItem(0, Group, nullptr);
    scene.table.setItem(2, Group, nullptr);

    scene.table.sortColumn(Group, ascending);

    QCOMPARE(scene.column(Name), sorted);
}

void tst_TableWidgetRows::sortingIsSilentAndEverythingGoesWithItsRow()
{
    TableScene scene({"b", "c", "a"});
    scene.click(0, Group);
    scene.click(1, Name, Qt::ControlModifier);
    scene.key(Qt::Key_F2);
    auto *editor =
        qobject_cast<QLineEdit *>(scene.table.indexWidget(scene.table.model()->index(1, Name)));
    QVERIFY(editor);
    QTest::keyClick(editor, Qt::Key_X);
    scene.take();

    scene.table.sortColumn(Name, true);
    QCoreApplication::processEvents();

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.column(Name), QStringLiteral("a b c"));
    QCOMPARE(scene.selected(), QStringLiteral("1 2"));
    QCOMPARE(scene.current(), QStringLiteral("2,0"));
    QCOMPARE(scene.table.indexWidget(scene.table.model()->index(2, Name)), editor);
    QVERIFY(editor->geometry().contains(scene.at(2, Name)));
    scene.table.sortColumn(Name, false);
    QCOMPARE(scene.selected(), QStringLiteral("0 1"));
    QCOMPARE(scene.current(), QStringLiteral("0,0"));
    QCOMPARE(editor->text(), QStringLiteral("x"));
    QCOMPARE(scene.take(), QStringList());
}

void tst_TableWidgetRows::sortingMovesPictures()
{
    TableScene scene({"b", "a"});
    scene.table.setPixmap(0, Name, picture(5));
    scene.table.setPixmap(1, Name, picture(7));

    scene.table.sortColumn(Name, true);

    QCOMPARE(scene.table.pixmap(0, Name).width(), 7);
    QCOMPARE(scene.table.pixmap(1, Name).width(), 5);
}

void tst_TableWidgetRows::changedTextDoesNotSort()
{
    TableScene scene({"a", "b", "c"});
    scene.table.sortColumn(Name, true);

    scene.table.setText(0, Name, QStringLiteral("z"));

    QCOMPARE(scene.column(Name), QStringLiteral("z b c"));
}

void tst_TableWidgetRows::indicatorIsUnseenUntilTheFirstSort()
{
    TableScene scene;
    const QHeaderView *header = scene.table.horizontalHeader();
    QVERIFY(!header->isSortIndicatorShown());

    scene.table.sortColumn(Group, true);
    QVERIFY(header->isSortIndicatorShown());
    QCOMPARE(header->sortIndicatorSection(), int(Group));
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);

    scene.table.sortColumn(Name, false);
    QCOMPARE(header->sortIndicatorSection(), int(Name));
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
}

void tst_TableWidgetRows::headerClickIsToldOnceAndSelectsNothing_data()
{
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<int>("releaseColumn");
    QTest::addColumn<int>("count");
    QTest::newRow("left") << Qt::LeftButton << int(Group) << 1;
    QTest::newRow("left, released elsewhere") << Qt::LeftButton << int(Name) << 0;
    QTest::newRow("right") << Qt::RightButton << int(Group) << 0;
    QTest::newRow("middle") << Qt::MiddleButton << int(Group) << 0;
}

void tst_TableWidgetRows::headerClickIsToldOnceAndSelectsNothing()
{
    QFETCH(Qt::MouseButton, button);
    QFETCH(int, releaseColumn);
    QFETCH(int, count);
    TableScene scene;
    scene.click(1, Group);
    scene.take();
    QHeaderView *header = scene.table.horizontalHeader();
    const QSignalSpy clicks(header, &QHeaderView::sectionClicked);

    QTest::mousePress(header->viewport(), button, {}, {scene.at(0, Group).x(), 8});
    QTest::mouseRelease(header->viewport(), button, {}, {scene.at(0, releaseColumn).x(), 8});

    QCOMPARE(clicks.count(), count);
    if (count == 1)
        QCOMPARE(clicks.at(0).at(0).toInt(), int(Group));
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.selected(), QStringLiteral("1"));
    QCOMPARE(scene.current(), QStringLiteral("1,2"));
}

// A shown indicator turns at every click by itself; the sort that follows has the last word.
void tst_TableWidgetRows::headerClickLeavesTheIndicatorToTheSort()
{
    TableScene scene;
    QHeaderView *header = scene.table.horizontalHeader();
    bool ascending = false;
    connect(header, &QHeaderView::sectionClicked, &scene.table, [&](int column) {
        ascending = !ascending;
        scene.table.sortColumn(column, ascending);
    });
    for (const Column column : {Name, Name, Group, Name}) {
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, {scene.at(0, column).x(), 8});
        QCOMPARE(header->sortIndicatorSection(), int(column));
        QCOMPARE(header->sortIndicatorOrder(),
                 ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
        QCOMPARE(scene.column(Name),
                 ascending ? QStringLiteral("a b c d e") : QStringLiteral("e d c b a"));
    }
}

QTEST_MAIN(tst_TableWidgetRows)
#include "tst_TableWidgetRows.moc"
