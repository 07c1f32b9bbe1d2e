#include "TableWidget.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLineEdit>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>

using meta::ComboTableItem;
using meta::TableItem;
using meta::TableWidget;

namespace {

enum Column { Name, Type, Group, Priority };

QString numbers(const QList<int> &list)
{
    QStringList texts;
    for (const int number : list)
        texts.append(QString::number(number));
    return texts.join(u' ');
}

/// A shown table with a row for each name, and what it tells, in order: "current row,column",
/// "selection rows", "clicked row,column,button", "value row,column" and "menu row,column".
class Scene
{
public:
    explicit Scene(const QStringList &names = {"a", "b", "c", "d", "e"}, bool selectsCurrent = true)
    {
        table.setColumnCount(4);
        table.setHorizontalHeaderLabels({"Name", "Type", "Group", "Priority"});
        for (const QString &name : names)
            append(name);
        QObject::connect(&table, qOverload<int, int>(&TableWidget::currentChanged), &table,
                         [=, this](int row, int column) {
                             note("current %1,%2", row, column);
                             if (selectsCurrent)
                                 table.selectRow(row);
                         });
        QObject::connect(&table, qOverload<>(&TableWidget::selectionChanged), &table, [this] {
            journal.append(QStringLiteral("selection ") + numbers(table.selectedRows()));
            rowsAtSelection.append(table.rowCount());
        });
        QObject::connect(&table, qOverload<int, int, int, const QPoint &>(&TableWidget::clicked),
                         &table, [this](int row, int column, int button, const QPoint &at) {
                             note("clicked %1,%2", row, column);
                             journal.last() += u',' + QString::number(button);
                             position = at;
                         });
        QObject::connect(&table, &TableWidget::valueChanged, &table,
                         [this](int row, int column) { note("value %1,%2", row, column); });
        QObject::connect(&table, &TableWidget::contextMenuRequested, &table,
                         [this](int row, int column, const QPoint &at) {
                             note("menu %1,%2", row, column);
                             position = at;
                         });
        table.resize(520, 300);
        table.show();
        QApplication::setActiveWindow(&table);
        isActive = QTest::qWaitForWindowActive(&table);
    }

    void append(const QString &name)
    {
        const int row = table.rowCount();
        table.setNumRows(row + 1);
        table.setText(row, Name, name);
        table.setItem(row, Type, new ComboTableItem(&table, {"Cycle", "Wave"}));
        table.setItem(row, Group,
                      new TableItem(&table, TableItem::Never, name + QStringLiteral(" group")));
        table.setItem(row, Priority, new TableItem(&table, TableItem::WhenCurrent, "0"));
    }

    QPoint at(int row, int column) const
    {
        return table.visualRect(table.model()->index(row, column)).center();
    }
    QPoint below() const { return {20, table.viewport()->height() - 5}; }
    QPoint beside() const { return {table.viewport()->width() - 5, 10}; }

    void press(const QPoint &where, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mousePress(table.viewport(), button, modifiers, where);
    }
    void release(const QPoint &where, Qt::MouseButton button = Qt::LeftButton,
                 Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseRelease(table.viewport(), button, modifiers, where);
    }
    void click(int row, int column, Qt::KeyboardModifiers modifiers = {},
               Qt::MouseButton button = Qt::LeftButton)
    {
        press(at(row, column), button, modifiers);
        release(at(row, column), button, modifiers);
    }
    void drag(int fromRow, int toRow, Qt::KeyboardModifiers modifiers)
    {
        press(at(fromRow, Group), Qt::LeftButton, modifiers);
        const int step = toRow < fromRow ? -1 : 1;
        for (int row = fromRow; row != toRow + step; row += step) {
            const QPoint where = at(row, Group) + QPoint(3, 3);
            QMouseEvent move(QEvent::MouseMove, where, table.viewport()->mapToGlobal(where),
                             Qt::NoButton, Qt::LeftButton, modifiers);
            QApplication::sendEvent(table.viewport(), &move);
        }
        release(at(toRow, Group), Qt::LeftButton, modifiers);
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&table, key, modifiers);
    }

    QString current() const
    {
        return QStringLiteral("%1,%2").arg(table.currentRow()).arg(table.currentColumn());
    }
    QString selected() const { return numbers(table.selectedRows()); }
    QString column(int column) const
    {
        QStringList texts;
        for (int row = 0; row < table.rowCount(); ++row)
            texts.append(table.text(row, column));
        return texts.join(u' ');
    }
    QStringList take() { return std::exchange(journal, {}); }

    QStringList journal;
    QList<int> rowsAtSelection; ///< the row count at each "selection"
    QPoint position;            ///< of the last "clicked" or "menu"
    bool isActive = false;
    TableWidget table; ///< goes first

private:
    void note(const char *form, int row, int column)
    {
        journal.append(QString::fromLatin1(form).arg(row).arg(column));
    }
};

/// A cell that counts how many of its kind live.
class CountedItem final : public TableItem
{
public:
    explicit CountedItem(int &living) : TableItem(nullptr, OnTyping, "counted"), m_living(living)
    {
        ++m_living;
    }
    ~CountedItem() override { --m_living; }

private:
    int &m_living;
};

/// A cell that sorts by the length of its text.
class LengthItem final : public TableItem
{
public:
    explicit LengthItem(const QString &text) : TableItem(nullptr, Never, text) {}
    QString key() const override { return QString::number(text().size()); }
};

QPixmap picture(int width, int height = 8)
{
    QPixmap pixmap(width, height);
    pixmap.fill(Qt::red);
    return pixmap;
}

} // namespace

class tst_TableWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void signalsConnectByTheirText();

    // Pressing and clicking
    void clickOnAnotherRowSelectsJustThat();
    void clickOnAnotherColumnKeepsColumnAndRow();
    void clickOnTheCurrentCellOnlyTellsOfTheClick();
    void clickOnOneOfSeveralSelectedRowsSelectsJustThat_data();
    void clickOnOneOfSeveralSelectedRowsSelectsJustThat();
    void ctrlClickAddsARow();
    void ctrlClickOnASelectedRowKeepsIt();
    void shiftClickAddsTheRowsFromTheLastClick();
    void dragSelectsTheRowsItPasses();
    void ctrlDragAddsTheRowsItPasses();
    void rightPressSelectsJustThatRow_data();
    void rightPressSelectsJustThatRow();
    void pressBesideTheCellsClearsTheSelection_data();
    void pressBesideTheCellsClearsTheSelection();
    void ctrlPressBesideTheCellsKeepsTheSelection();
    void clickOnARowNumberSelectsTheRow();
    void ctrlClickOnASelectedRowNumberKeepsTheRow();
    void clickTellsItsButton_data();
    void clickTellsItsButton();
    void clickTellsWhereInTheContent();
    void releaseOnAnotherCellIsNoClick();
    void slotOfAClickMayDeleteTheTable();

    // Keys and the focus
    void arrowKeysMoveTheOnlySelectedRow();
    void arrowKeysStopAtTheEnds();
    void ctrlSpaceKeepsASelectedRow();
    void focusMakesNothingCurrent();
    void focusKeepsCurrentCellAndSelection();

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

    // The context menu
    void contextMenuTellsCellAndScreenPosition_data();
    void contextMenuTellsCellAndScreenPosition();
    void contextMenuOfAScrolledTable();
    void contextMenuByKeyIsThatOfTheCurrentCell();
    void contextMenuByKeyWithoutCurrentCell();

    // Cells
    void missingCellReadsAsEmpty();
    void settingAMissingCellMakesAPlainOne();
    void settingACellKeepsItsItem();
    void settingOutsideTheTableDoesNothing_data();
    void settingOutsideTheTableDoesNothing();
    void setItemDeletesTheOneBefore();
    void tableDeletesItsItems();
    void pictureIsKeptAsItIs();
    void settersAndSortingEmitNothing();
    void gatheringAnnouncesTheTouchedCellsOnce();
    void emptyGatheringAnnouncesNothing();

    // Columns
    void sizesBeforeAnyChange();
    void hiddenColumnOnlyStoresItsWidth();
    void textCutShortIsToldByAToolTip();
    void adjustColumnFitsTheWidestCell_data();
    void adjustColumnFitsTheWidestCell();
    void adjustColumnFitsTheTitleWithItsIndicator();
    void adjustColumnCountsThePicture();
    void adjustColumnCountsTheArrowOfAChooser();
    void adjustColumnIsNeverBelowTwenty();
    void laterWidthWinsOverAdjustColumn();
};

// Any warning fails, but for what the platform of the tests says of itself.
void tst_TableWidget::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

// The editor connects them so.
void tst_TableWidget::signalsConnectByTheirText()
{
    TableWidget table;
    QSignalSpy value(&table, SIGNAL(valueChanged(int, int)));
    QSignalSpy current(&table, SIGNAL(currentChanged(int, int)));
    QSignalSpy selection(&table, SIGNAL(selectionChanged()));
    QSignalSpy clicked(&table, SIGNAL(clicked(int, int, int, const QPoint &)));
    QSignalSpy menu(&table, SIGNAL(contextMenuRequested(int, int, const QPoint &)));

    for (const QSignalSpy *spy : {&value, &current, &selection, &clicked, &menu})
        QVERIFY(spy->isValid());
}

// --- Pressing and clicking ---

void tst_TableWidget::clickOnAnotherRowSelectsJustThat()
{
    Scene scene;
    scene.click(0, Group);
    QCOMPARE(scene.take(), QStringList({"current 0,2", "selection 0", "clicked 0,2,1"}));

    scene.press(scene.at(3, Group));
    QCOMPARE(scene.take(), QStringList({"current 3,2", "selection 0 3", "selection 3"}));
    scene.release(scene.at(3, Group));
    QCOMPARE(scene.take(), QStringList({"clicked 3,2,1"}));
}

void tst_TableWidget::clickOnAnotherColumnKeepsColumnAndRow()
{
    Scene scene;
    scene.click(1, Name);
    scene.take();

    scene.click(1, Group);

    QCOMPARE(scene.take(), QStringList({"current 1,2", "selection 1", "clicked 1,2,1"}));
    QCOMPARE(scene.current(), QStringLiteral("1,2"));
}

void tst_TableWidget::clickOnTheCurrentCellOnlyTellsOfTheClick()
{
    Scene scene;
    scene.click(1, Group);
    scene.take();

    scene.click(1, Group);

    QCOMPARE(scene.take(), QStringList({"clicked 1,2,1"}));
}

void tst_TableWidget::clickOnOneOfSeveralSelectedRowsSelectsJustThat_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("edited on typing") << int(Name);
    QTest::newRow("chooser") << int(Type);
    QTest::newRow("never edited") << int(Group);
    QTest::newRow("edited when current") << int(Priority);
}

void tst_TableWidget::clickOnOneOfSeveralSelectedRowsSelectsJustThat()
{
    QFETCH(int, column);
    Scene scene;
    scene.click(0, Group);
    scene.click(3, Group, Qt::ControlModifier);
    QCOMPARE(scene.selected(), QStringLiteral("0 3"));

    scene.click(0, column);

    QCOMPARE(scene.selected(), QStringLiteral("0"));
}

void tst_TableWidget::ctrlClickAddsARow()
{
    Scene scene;
    scene.click(1, Group);
    scene.take();

    scene.click(3, Group, Qt::ControlModifier);

    QCOMPARE(scene.take(), QStringList({"current 3,2", "selection 1 3", "clicked 3,2,1"}));
}

void tst_TableWidget::ctrlClickOnASelectedRowKeepsIt()
{
    Scene scene;
    scene.click(1, Group);
    scene.click(3, Group, Qt::ControlModifier);
    scene.take();

    scene.click(1, Group, Qt::ControlModifier);
    QCOMPARE(scene.take(), QStringList({"current 1,2", "selection 1 3", "clicked 1,2,1"}));
    scene.click(1, Group, Qt::ControlModifier);
    QCOMPARE(scene.take(), QStringList({"clicked 1,2,1"}));
    QCOMPARE(scene.selected(), QStringLiteral("1 3"));
}

void tst_TableWidget::shiftClickAddsTheRowsFromTheLastClick()
{
    Scene scene;
    scene.click(0, Group);
    scene.click(2, Group, Qt::ControlModifier);
    scene.click(4, Group, Qt::ShiftModifier);

    QCOMPARE(scene.selected(), QStringLiteral("0 2 3 4"));
    QCOMPARE(scene.current(), QStringLiteral("4,2"));
}

void tst_TableWidget::dragSelectsTheRowsItPasses()
{
    Scene scene;
    scene.click(0, Group);
    scene.take();

    scene.drag(1, 3, Qt::NoModifier);

    QCOMPARE(scene.selected(), QStringLiteral("1 2 3"));
    QCOMPARE(scene.current(), QStringLiteral("3,2"));
    QCOMPARE(scene.journal.filter(QStringLiteral("clicked")), QStringList());
}

void tst_TableWidget::ctrlDragAddsTheRowsItPasses()
{
    Scene scene;
    scene.click(0, Group);
    scene.click(2, Group, Qt::ControlModifier);

    scene.drag(2, 4, Qt::ControlModifier);

    QCOMPARE(scene.selected(), QStringLiteral("0 2 3 4"));
    scene.drag(4, 2, Qt::ControlModifier);
    QCOMPARE(scene.selected(), QStringLiteral("0 2 3 4"));
}

void tst_TableWidget::rightPressSelectsJustThatRow_data()
{
    QTest::addColumn<QList<int>>("before");
    QTest::addColumn<QStringList>("told");
    QTest::newRow("another row") << QList<int>{0}
                                 << QStringList{"current 2,2", "selection 0 2", "selection 2"};
    QTest::newRow("the selected row") << QList<int>{2} << QStringList{};
    QTest::newRow("one of several") << QList<int>{0, 1, 2} << QStringList{"selection 2"};
}

void tst_TableWidget::rightPressSelectsJustThatRow()
{
    QFETCH(QList<int>, before);
    QFETCH(QStringList, told);
    Scene scene;
    for (const int row : before)
        scene.click(row, Group, Qt::ControlModifier);
    scene.take();

    scene.press(scene.at(2, Group), Qt::RightButton);

    QCOMPARE(scene.take(), told);
    QCOMPARE(scene.selected(), QStringLiteral("2"));
    scene.release(scene.at(2, Group), Qt::RightButton);
    QCOMPARE(scene.take(), QStringList({"clicked 2,2,2"}));
    QCOMPARE(scene.selected(), QStringLiteral("2"));
}

void tst_TableWidget::pressBesideTheCellsClearsTheSelection_data()
{
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<bool>("isBelow");
    QTest::newRow("left, below the rows") << Qt::LeftButton << true;
    QTest::newRow("right, below the rows") << Qt::RightButton << true;
    QTest::newRow("left, beside the columns") << Qt::LeftButton << false;
    QTest::newRow("right, beside the columns") << Qt::RightButton << false;
}

void tst_TableWidget::pressBesideTheCellsClearsTheSelection()
{
    QFETCH(Qt::MouseButton, button);
    QFETCH(bool, isBelow);
    Scene scene;
    scene.click(0, Group);
    scene.click(2, Group, Qt::ControlModifier);
    scene.take();
    const QPoint where = isBelow ? scene.below() : scene.beside();
    QVERIFY(!scene.table.indexAt(where).isValid());

    scene.press(where, button);
    QCOMPARE(scene.take(), QStringList({"selection "}));
    scene.release(where, button);
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.current(), QStringLiteral("2,2"));
}

void tst_TableWidget::ctrlPressBesideTheCellsKeepsTheSelection()
{
    Scene scene;
    scene.click(0, Group);
    scene.take();

    for (const auto modifier : {Qt::ControlModifier, Qt::ShiftModifier}) {
        scene.press(scene.below(), Qt::LeftButton, modifier);
        scene.release(scene.below(), Qt::LeftButton, modifier);
    }

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.selected(), QStringLiteral("0"));
}

void tst_TableWidget::clickOnARowNumberSelectsTheRow()
{
    Scene scene;
    scene.click(0, Group);
    QHeaderView *header = scene.table.verticalHeader();

    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, {5, scene.at(2, Name).y()});

    QCOMPARE(scene.selected(), QStringLiteral("2"));
    QCOMPARE(scene.current(), QStringLiteral("2,0"));
}

void tst_TableWidget::ctrlClickOnASelectedRowNumberKeepsTheRow()
{
    Scene scene;
    scene.click(0, Group);
    QHeaderView *header = scene.table.verticalHeader();
    const QPoint number(5, scene.at(2, Name).y());

    // The header asks which keys are held, as a real key press makes known.
    QTest::keyPress(&scene.table, Qt::Key_Control, Qt::ControlModifier);
    for (int click = 0; click < 2; ++click) {
        QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::ControlModifier, number);
        QCOMPARE(scene.selected(), QStringLiteral("0 2"));
    }
    QTest::keyRelease(&scene.table, Qt::Key_Control);
}

void tst_TableWidget::clickTellsItsButton_data()
{
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<QString>("told");
    QTest::newRow("left") << Qt::LeftButton << QStringLiteral("clicked 1,2,1");
    QTest::newRow("right") << Qt::RightButton << QStringLiteral("clicked 1,2,2");
    QTest::newRow("middle") << Qt::MiddleButton << QStringLiteral("clicked 1,2,4");
}

void tst_TableWidget::clickTellsItsButton()
{
    QFETCH(Qt::MouseButton, button);
    QFETCH(QString, told);
    Scene scene;

    scene.click(1, Group, {}, button);

    QCOMPARE(scene.journal.filter(QStringLiteral("clicked")), QStringList(told));
    QCOMPARE(scene.journal.last(), told);
}

void tst_TableWidget::clickTellsWhereInTheContent()
{
    Scene scene;
    while (scene.table.rowCount() < 40)
        scene.append(QStringLiteral("more"));
    scene.table.resize(250, 200);
    QCoreApplication::processEvents();
    scene.table.setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    scene.table.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    scene.table.verticalScrollBar()->setValue(305);
    scene.table.horizontalScrollBar()->setValue(40);

    QTest::mouseClick(scene.table.viewport(), Qt::LeftButton, {}, {170, 21});

    QCOMPARE(scene.journal.last(), QStringLiteral("clicked 16,2,1"));
    QCOMPARE(scene.position, QPoint(210, 326));
}

void tst_TableWidget::releaseOnAnotherCellIsNoClick()
{
    Scene scene;
    scene.press(scene.at(1, Group));
    scene.release(scene.at(2, Group));

    QCOMPARE(scene.take(), QStringList({"current 1,2", "selection 1"}));
}

void tst_TableWidget::slotOfAClickMayDeleteTheTable()
{
    auto *table = new TableWidget;
    const QPointer<TableWidget> guard(table);
    table->setColumnCount(1);
    table->setNumRows(2);
    table->show();
    connect(table, qOverload<int, int, int, const QPoint &>(&TableWidget::clicked), table,
            [table] { delete table; });

    QTest::mousePress(table->viewport(), Qt::LeftButton, {}, {10, 10});
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(10, 10), QPointF(10, 10),
                        Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(table->viewport(), &release);

    QVERIFY(!guard);
}

// --- Keys and the focus ---

void tst_TableWidget::arrowKeysMoveTheOnlySelectedRow()
{
    Scene scene;
    scene.click(1, Group);
    scene.take();

    scene.key(Qt::Key_Down);
    QCOMPARE(scene.take(), QStringList({"selection 2", "current 2,2", "selection 2"}));
    scene.key(Qt::Key_Up);
    QCOMPARE(scene.take(), QStringList({"selection 1", "current 1,2", "selection 1"}));
    scene.key(Qt::Key_Left);
    QCOMPARE(scene.take(), QStringList({"current 1,1", "selection 1"}));
}

void tst_TableWidget::arrowKeysStopAtTheEnds()
{
    Scene scene;
    scene.click(0, Group);
    scene.take();

    scene.key(Qt::Key_Up);

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.selected(), QStringLiteral("0"));
}

void tst_TableWidget::ctrlSpaceKeepsASelectedRow()
{
    Scene scene;
    scene.click(1, Group);

    scene.key(Qt::Key_Space, Qt::ControlModifier);

    QCOMPARE(scene.selected(), QStringLiteral("1"));
}

void tst_TableWidget::focusMakesNothingCurrent()
{
    Scene scene;
    QVERIFY(scene.isActive);
    scene.table.clearFocus();

    scene.table.setFocus();

    QVERIFY(scene.table.hasFocus());
    QCOMPARE(scene.current(), QStringLiteral("-1,-1"));
    QCOMPARE(scene.take(), QStringList());
}

void tst_TableWidget::focusKeepsCurrentCellAndSelection()
{
    Scene scene;
    scene.click(1, Group);
    scene.click(3, Group, Qt::ControlModifier);
    scene.take();
    scene.table.clearFocus();

    scene.table.setFocus();

    QCOMPARE(scene.current(), QStringLiteral("3,2"));
    QCOMPARE(scene.selected(), QStringLiteral("1 3"));
    QCOMPARE(scene.take(), QStringList());
}

// --- Selecting ---

void tst_TableWidget::currentCellIsToldOnceEach()
{
    Scene scene({"a", "b", "c"}, false);
    const auto currents = [&] { return scene.take().filter(QStringLiteral("current")); };

    scene.table.setCurrentCell(1, Group);
    QCOMPARE(currents(), QStringList({"current 1,2"}));
    scene.table.setCurrentCell(1, Group);
    QCOMPARE(currents(), QStringList());
    scene.table.setCurrentCell(-1, -1);
    QCOMPARE(currents(), QStringList());
}

void tst_TableWidget::selectRowAddsWithoutMovingTheCurrentCell()
{
    Scene scene;
    scene.click(1, Group);
    scene.take();

    scene.table.selectRow(3);

    QCOMPARE(scene.take(), QStringList({"selection 1 3"}));
    QCOMPARE(scene.current(), QStringLiteral("1,2"));
}

void tst_TableWidget::selectRowTellsEvenOfASelectedRow()
{
    Scene scene;
    scene.table.selectRow(3);
    scene.table.selectRow(3);

    QCOMPARE(scene.take(), QStringList({"selection 3", "selection 3"}));
}

void tst_TableWidget::selectRowBeyondTheEnds_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QStringList>("told");
    QTest::newRow("last") << 4 << QStringList{"selection 4"};
    QTest::newRow("behind the last") << 5 << QStringList{"selection 4"};
    QTest::newRow("far behind") << 1000000 << QStringList{"selection 4"};
    QTest::newRow("first") << 0 << QStringList{"selection 0"};
    QTest::newRow("before the first") << -1 << QStringList{};
}

void tst_TableWidget::selectRowBeyondTheEnds()
{
    QFETCH(int, row);
    QFETCH(QStringList, told);
    Scene scene;

    scene.table.selectRow(row);

    QCOMPARE(scene.take(), told);
}

void tst_TableWidget::selectRowInAnEmptyTableDoesNothing()
{
    Scene scene{QStringList()};

    scene.table.selectRow(0);

    QCOMPARE(scene.take(), QStringList());
}

void tst_TableWidget::selectOnlyIsSilent()
{
    Scene scene;
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

void tst_TableWidget::partlySelectedRowIsSelected()
{
    Scene scene;
    const QAbstractItemModel *model = scene.table.model();

    scene.table.selectionModel()->select(model->index(2, Type), QItemSelectionModel::Select);

    QVERIFY(scene.table.isRowSelected(2));
    QVERIFY(!scene.table.isRowSelected(1));
    QCOMPARE(scene.selected(), QStringLiteral("2"));
}

void tst_TableWidget::rowWithoutItemsIsSelectedAlike()
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

void tst_TableWidget::appendedRowsChangeNoSelection()
{
    Scene scene;
    scene.click(4, Group);
    scene.take();

    scene.table.setNumRows(7);

    QCOMPARE(scene.table.rowCount(), 7);
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.selected(), QStringLiteral("4"));
    QCOMPARE(scene.current(), QStringLiteral("4,2"));
}

void tst_TableWidget::removeRowLeavesNothingSelectedOrCurrent_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("left");
    QTest::newRow("the first") << 0 << QStringLiteral("b c d e");
    QTest::newRow("the current one") << 2 << QStringLiteral("a b d e");
    QTest::newRow("a selected one") << 1 << QStringLiteral("a c d e");
    QTest::newRow("the last") << 4 << QStringLiteral("a b c d");
}

void tst_TableWidget::removeRowLeavesNothingSelectedOrCurrent()
{
    QFETCH(int, row);
    QFETCH(QString, left);
    Scene scene;
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

void tst_TableWidget::removeRowWithoutSelectionIsSilent()
{
    Scene scene({"a", "b", "c"}, false);
    scene.table.setCurrentCell(1, Group, QItemSelectionModel::NoUpdate);
    scene.take();

    scene.table.removeRow(1);

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.column(Name), QStringLiteral("a c"));
    QCOMPARE(scene.current(), QStringLiteral("-1,-1"));
}

void tst_TableWidget::removeRowOutsideDoesNothing_data()
{
    QTest::addColumn<int>("row");
    QTest::newRow("before the first") << -1;
    QTest::newRow("behind the last") << 5;
}

void tst_TableWidget::removeRowOutsideDoesNothing()
{
    QFETCH(int, row);
    Scene scene;
    scene.click(1, Group);
    scene.take();

    scene.table.removeRow(row);

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.column(Name), QStringLiteral("a b c d e"));
    QCOMPARE(scene.selected(), QStringLiteral("1"));
    QCOMPARE(scene.current(), QStringLiteral("1,2"));
}

void tst_TableWidget::fewerRowsLeaveNothingSelectedOrCurrent()
{
    Scene scene;
    scene.click(1, Group);
    scene.take();
    scene.rowsAtSelection.clear();

    scene.table.setNumRows(3);

    QCOMPARE(scene.take(), QStringList({"selection "}));
    QCOMPARE(scene.rowsAtSelection, QList<int>{5});
    QCOMPARE(scene.column(Name), QStringLiteral("a b c"));
    QCOMPARE(scene.current(), QStringLiteral("-1,-1"));
}

void tst_TableWidget::emptiedTableStartsAnew()
{
    Scene scene;
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

void tst_TableWidget::negativeRowCountDoesNothing()
{
    Scene scene;
    scene.click(1, Group);
    scene.take();

    scene.table.setNumRows(-1);

    QCOMPARE(scene.table.rowCount(), 5);
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.selected(), QStringLiteral("1"));
}

// --- Sorting ---

void tst_TableWidget::sortsByKeyAndKeepsTheOrderOfEquals_data()
{
    QTest::addColumn<bool>("ascending");
    QTest::addColumn<QString>("sorted");
    QTest::newRow("ascending") << true << QStringLiteral("c d aa bb zz aaa");
    QTest::newRow("descending") << false << QStringLiteral("aaa aa bb zz c d");
}

void tst_TableWidget::sortsByKeyAndKeepsTheOrderOfEquals()
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

void tst_TableWidget::sortsByCodePoint()
{
    Scene scene({"b", "B", "ä", "a", "10", "2"});

    scene.table.sortColumn(Name, true);

    QCOMPARE(scene.column(Name), QStringLiteral("10 2 B a b ä"));
}

void tst_TableWidget::rowsWithoutItemSortLast_data()
{
    QTest::addColumn<bool>("ascending");
    QTest::addColumn<QString>("sorted");
    QTest::newRow("ascending") << true << QStringLiteral("b d e a c");
    QTest::newRow("descending") << false << QStringLiteral("e d b a c");
}

void tst_TableWidget::rowsWithoutItemSortLast()
{
    QFETCH(bool, ascending);
    QFETCH(QString, sorted);
    Scene scene;
    scene.table.setItem(0, Group, nullptr);
    scene.table.setItem(2, Group, nullptr);

    scene.table.sortColumn(Group, ascending);

    QCOMPARE(scene.column(Name), sorted);
}

void tst_TableWidget::sortingIsSilentAndEverythingGoesWithItsRow()
{
    Scene scene({"b", "c", "a"});
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

void tst_TableWidget::sortingMovesPictures()
{
    Scene scene({"b", "a"});
    scene.table.setPixmap(0, Name, picture(5));
    scene.table.setPixmap(1, Name, picture(7));

    scene.table.sortColumn(Name, true);

    QCOMPARE(scene.table.pixmap(0, Name).width(), 7);
    QCOMPARE(scene.table.pixmap(1, Name).width(), 5);
}

void tst_TableWidget::changedTextDoesNotSort()
{
    Scene scene({"a", "b", "c"});
    scene.table.sortColumn(Name, true);

    scene.table.setText(0, Name, QStringLiteral("z"));

    QCOMPARE(scene.column(Name), QStringLiteral("z b c"));
}

void tst_TableWidget::indicatorIsUnseenUntilTheFirstSort()
{
    Scene scene;
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

void tst_TableWidget::headerClickIsToldOnceAndSelectsNothing_data()
{
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<int>("releaseColumn");
    QTest::addColumn<int>("count");
    QTest::newRow("left") << Qt::LeftButton << int(Group) << 1;
    QTest::newRow("left, released elsewhere") << Qt::LeftButton << int(Name) << 0;
    QTest::newRow("right") << Qt::RightButton << int(Group) << 0;
    QTest::newRow("middle") << Qt::MiddleButton << int(Group) << 0;
}

void tst_TableWidget::headerClickIsToldOnceAndSelectsNothing()
{
    QFETCH(Qt::MouseButton, button);
    QFETCH(int, releaseColumn);
    QFETCH(int, count);
    Scene scene;
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
void tst_TableWidget::headerClickLeavesTheIndicatorToTheSort()
{
    Scene scene;
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

// --- The context menu ---

void tst_TableWidget::contextMenuTellsCellAndScreenPosition_data()
{
    QTest::addColumn<QPoint>("where");
    QTest::addColumn<QString>("told");
    QTest::newRow("a cell") << QPoint(250, 30) << QStringLiteral("menu 1,2");
    QTest::newRow("below the rows") << QPoint(20, 200) << QStringLiteral("menu -1,0");
    QTest::newRow("beside the columns") << QPoint(450, 10) << QStringLiteral("menu 0,-1");
    QTest::newRow("beyond both") << QPoint(450, 200) << QStringLiteral("menu -1,-1");
}

void tst_TableWidget::contextMenuTellsCellAndScreenPosition()
{
    QFETCH(QPoint, where);
    QFETCH(QString, told);
    Scene scene;
    QContextMenuEvent event(QContextMenuEvent::Mouse, where,
                            scene.table.viewport()->mapToGlobal(where));

    QApplication::sendEvent(scene.table.viewport(), &event);

    QCOMPARE(scene.take(), QStringList(told));
    QCOMPARE(scene.position, scene.table.viewport()->mapToGlobal(where));
}

void tst_TableWidget::contextMenuOfAScrolledTable()
{
    Scene scene;
    while (scene.table.rowCount() < 40)
        scene.append(QStringLiteral("more"));
    scene.table.scrollToBottom();
    const QPoint where = scene.at(38, Type);
    QContextMenuEvent event(QContextMenuEvent::Mouse, where,
                            scene.table.viewport()->mapToGlobal(where));

    QApplication::sendEvent(scene.table.viewport(), &event);

    QCOMPARE(scene.take(), QStringList({"menu 38,1"}));
}

void tst_TableWidget::contextMenuByKeyIsThatOfTheCurrentCell()
{
    Scene scene;
    scene.click(3, Group);
    scene.take();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {200, 200}, {700, 700});

    QApplication::sendEvent(scene.table.viewport(), &event);

    QCOMPARE(scene.take(), QStringList({"menu 3,2"}));
    QCOMPARE(scene.position, scene.table.viewport()->mapToGlobal(scene.at(3, Group)));
}

void tst_TableWidget::contextMenuByKeyWithoutCurrentCell()
{
    Scene scene;
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {20, 20}, {700, 700});

    QApplication::sendEvent(scene.table.viewport(), &event);

    QCOMPARE(scene.take(), QStringList({"menu -1,-1"}));
    QCOMPARE(scene.position, QPoint(700, 700));
}

// --- Cells ---

void tst_TableWidget::missingCellReadsAsEmpty()
{
    TableWidget table;
    table.setColumnCount(2);
    table.setNumRows(1);

    for (const int row : {-1, 0, 1}) {
        QVERIFY(!table.item(row, 1));
        QCOMPARE(table.text(row, 1), QString());
        QVERIFY(table.pixmap(row, 1).isNull());
    }
}

void tst_TableWidget::settingAMissingCellMakesAPlainOne()
{
    TableWidget table;
    table.setColumnCount(2);
    table.setNumRows(1);

    table.setText(0, 0, QStringLiteral("text"));
    table.setPixmap(0, 1, picture(8));

    QCOMPARE(table.text(0, 0), QStringLiteral("text"));
    QCOMPARE(table.text(0, 1), QString());
    for (const int column : {0, 1}) {
        QVERIFY(table.item(0, column));
        QCOMPARE(table.item(0, column)->editType(), TableItem::OnTyping);
    }
}

void tst_TableWidget::settingACellKeepsItsItem()
{
    TableWidget table;
    table.setColumnCount(1);
    table.setNumRows(1);
    auto *item = new TableItem(&table, TableItem::WhenCurrent, QStringLiteral("1"));
    table.setItem(0, 0, item);

    table.setText(0, 0, QStringLiteral("2"));
    table.setPixmap(0, 0, picture(8));

    QCOMPARE(table.item(0, 0), item);
    QCOMPARE(item->text(), QStringLiteral("2"));
    QCOMPARE(item->editType(), TableItem::WhenCurrent);
}

void tst_TableWidget::settingOutsideTheTableDoesNothing_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");
    QTest::newRow("above") << -1 << 0;
    QTest::newRow("below") << 2 << 0;
    QTest::newRow("left") << 1 << -1;
    QTest::newRow("right") << 0 << 2;
}

void tst_TableWidget::settingOutsideTheTableDoesNothing()
{
    QFETCH(int, row);
    QFETCH(int, column);
    TableWidget table;
    table.setColumnCount(2);
    table.setNumRows(2);
    int living = 0;

    table.setText(row, column, QStringLiteral("text"));
    table.setPixmap(row, column, picture(8));
    table.setItem(row, column, new CountedItem(living));

    QCOMPARE(living, 0);
    for (const int cell : {0, 1, 2, 3})
        QVERIFY(!table.item(cell / 2, cell % 2));
}

void tst_TableWidget::setItemDeletesTheOneBefore()
{
    TableWidget table;
    table.setColumnCount(1);
    table.setNumRows(1);
    int living = 0;

    table.setItem(0, 0, new CountedItem(living));
    QCOMPARE(living, 1);
    table.setItem(0, 0, new CountedItem(living));
    QCOMPARE(living, 1);
    table.setItem(0, 0, new TableItem(&table, TableItem::Never, QStringLiteral("other")));
    QCOMPARE(living, 0);
    QCOMPARE(table.text(0, 0), QStringLiteral("other"));
}

void tst_TableWidget::tableDeletesItsItems()
{
    int living = 0;
    {
        TableWidget table;
        table.setColumnCount(1);
        table.setNumRows(3);
        for (int row = 0; row < 3; ++row)
            table.setItem(row, 0, new CountedItem(living));
        table.removeRow(0);
        QCOMPARE(living, 2);
        table.setNumRows(1);
        QCOMPARE(living, 1);
    }
    QCOMPARE(living, 0);
}

void tst_TableWidget::pictureIsKeptAsItIs()
{
    Scene scene;
    const QPixmap pixmap = picture(8);

    scene.table.setPixmap(1, Name, pixmap);
    QCOMPARE(scene.table.pixmap(1, Name).cacheKey(), pixmap.cacheKey());
    QCOMPARE(scene.table.text(1, Name), QStringLiteral("b"));

    scene.table.setPixmap(1, Name, {});
    QVERIFY(scene.table.pixmap(1, Name).isNull());
    QVERIFY(!scene.table.item(1, Name)->data(Qt::DecorationRole).isValid());
}

void tst_TableWidget::settersAndSortingEmitNothing()
{
    Scene scene;
    scene.click(1, Type);
    scene.take();

    for (int row = 0; row < scene.table.rowCount(); ++row) {
        scene.table.setText(row, Name, QStringLiteral("new"));
        scene.table.setText(row, Type, QStringLiteral("Wave"));
        scene.table.setPixmap(row, Name, picture(8));
        scene.table.setPixmap(row, Name, picture(8));
        scene.table.setItem(row, Priority, new TableItem(nullptr, TableItem::WhenCurrent, "5"));
        static_cast<ComboTableItem *>(scene.table.item(row, Type))->setCurrentItem("Cycle");
    }
    scene.table.sortColumn(Type, false);
    scene.table.setNumRows(8);

    QCOMPARE(scene.take(), QStringList());
}

void tst_TableWidget::gatheringAnnouncesTheTouchedCellsOnce()
{
    Scene scene;
    QSignalSpy changes(scene.table.model(), &QAbstractItemModel::dataChanged);
    {
        const TableWidget::Gathering gathering(scene.table);
        scene.table.setText(3, Type, QStringLiteral("Wave"));
        scene.table.setPixmap(1, Group, picture(8));
        scene.table.setItem(2, Priority, new TableItem(nullptr, TableItem::Never, "9"));
        QCOMPARE(changes.count(), 0);
        QCOMPARE(scene.table.text(3, Type), QStringLiteral("Wave"));
    }
    QCOMPARE(changes.count(), 1);
    const QModelIndex first = changes.at(0).at(0).toModelIndex();
    const QModelIndex last = changes.at(0).at(1).toModelIndex();
    QCOMPARE(QPoint(first.column(), first.row()), QPoint(Type, 1));
    QCOMPARE(QPoint(last.column(), last.row()), QPoint(Priority, 3));

    scene.table.setText(0, Name, QStringLiteral("alone"));
    QCOMPARE(changes.count(), 2);
}

void tst_TableWidget::emptyGatheringAnnouncesNothing()
{
    Scene scene;
    const QSignalSpy changes(scene.table.model(), &QAbstractItemModel::dataChanged);

    for (int round = 0; round < 2; ++round)
        const TableWidget::Gathering gathering(scene.table);

    QCOMPARE(changes.count(), 0);
}

// --- Columns ---

void tst_TableWidget::sizesBeforeAnyChange()
{
    Scene scene;
    for (int column = 0; column < 4; ++column)
        QCOMPARE(scene.table.columnWidth(column), 100);
    for (int row = 0; row < 5; ++row)
        QCOMPARE(scene.table.rowHeight(row), 20);
    QCOMPARE(scene.table.verticalHeader()->width(), 30);
}

void tst_TableWidget::hiddenColumnOnlyStoresItsWidth()
{
    Scene scene;
    scene.table.hideColumn(Priority);
    QCOMPARE(scene.table.columnWidth(Priority), 0);

    scene.table.setColumnWidth(Priority, 70);
    QCOMPARE(scene.table.columnWidth(Priority), 0);
    scene.table.showColumn(Priority);
    QCOMPARE(scene.table.columnWidth(Priority), 70);
}

void tst_TableWidget::textCutShortIsToldByAToolTip()
{
    const QString name = QStringLiteral("a name that is far too long for its column");
    Scene scene({"b", name});
    scene.table.setColumnWidth(Name, 80);
    const auto hover = [&scene](int row) {
        const QPoint at = scene.table.visualRect(scene.table.model()->index(row, Name)).center();
        QWidget *viewport = scene.table.viewport();
        QHelpEvent help(QEvent::ToolTip, at, viewport->mapToGlobal(at));
        QCoreApplication::sendEvent(viewport, &help);
    };
    hover(0);
    QCOMPARE(QToolTip::text(), QString());
    hover(1);
    QCOMPARE(QToolTip::text(), name);
    QToolTip::hideText();
}

void tst_TableWidget::adjustColumnFitsTheWidestCell_data()
{
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<int>("widest");
    QTest::newRow("one") << QStringList{"the only text of the column"} << 0;
    QTest::newRow("wide before long") << QStringList{"WWWWWWWWWWWWWWW", "iiiiiiiiiiiiiiiiii"} << 0;
    QTest::newRow("last of many") << QStringList{"1", "1.5", "", "1234.57 and more"} << 3;
    QTest::newRow("Cyrillic") << QStringList{"wide Latin text", "широкая ЖЖЖЖЖЖЖЖЖЖЖ"} << 1;
    QTest::newRow("Han") << QStringList{"灯光效果灯光效果灯光", "narrow text"} << 0;
    QTest::newRow("beyond 16 bits") << QStringList{"narrow text", "😀😀😀😀😀😀😀😀😀😀😀😀"} << 1;
    QTest::newRow("combining marks")
        << QStringList{"e\u0301\u0301\u0301\u0301\u0301\u0301\u0301", "wide WWWWWWW text"} << 1;
}

void tst_TableWidget::adjustColumnFitsTheWidestCell()
{
    QFETCH(QStringList, texts);
    QFETCH(int, widest);
    Scene scene(texts);

    scene.table.adjustColumn(Name);

    QList<int> hints;
    for (int row = 0; row < texts.size(); ++row) {
        const QModelIndex index = scene.table.model()->index(row, Name);
        QStyleOptionViewItem option;
        option.initFrom(&scene.table);
        option.font = scene.table.font();
        option.widget = &scene.table;
        hints.append(scene.table.itemDelegate()->sizeHint(option, index).width());
    }
    QCOMPARE(hints.indexOf(*std::max_element(hints.cbegin(), hints.cend())), widest);
    QCOMPARE(scene.table.columnWidth(Name), hints.at(widest) + 1); // the line beside it
}

void tst_TableWidget::adjustColumnFitsTheTitleWithItsIndicator()
{
    Scene scene;
    scene.table.setHorizontalHeaderItem(Name, new QTableWidgetItem("A very long title, this one"));

    scene.table.adjustColumn(Name);

    const QHeaderView *header = scene.table.horizontalHeader();
    QVERIFY(!header->isSortIndicatorShown());
    QVERIFY(scene.table.columnWidth(Name) > header->sectionSizeHint(Name));
    scene.table.sortColumn(Name, true);
    QCOMPARE(scene.table.columnWidth(Name), header->sectionSizeHint(Name));
}

void tst_TableWidget::adjustColumnCountsThePicture()
{
    Scene scene({"a text of some length", "a text of some lengt"});
    scene.table.adjustColumn(Name);
    const int without = scene.table.columnWidth(Name);

    scene.table.setPixmap(1, Name, picture(60));
    scene.table.adjustColumn(Name);
    const int with = scene.table.columnWidth(Name);
    QVERIFY2(with > without + 50, qPrintable(QString::number(with - without)));

    scene.table.setPixmap(0, Name, picture(60));
    scene.table.adjustColumn(Name);
    QVERIFY(scene.table.columnWidth(Name) > with);
}

void tst_TableWidget::adjustColumnCountsTheArrowOfAChooser()
{
    Scene scene({"a"});
    const QString text = QStringLiteral("an effect of a long name");
    scene.table.setItem(0, Type, new ComboTableItem(&scene.table, {text}));
    scene.table.adjustColumn(Type);
    scene.click(0, Type);

    const QWidget *editor = scene.table.indexWidget(scene.table.model()->index(0, Type));

    QVERIFY(editor);
    QVERIFY(editor->width() >= editor->sizeHint().width());
}

void tst_TableWidget::adjustColumnIsNeverBelowTwenty()
{
    Scene scene({"i"});
    scene.table.setHorizontalHeaderLabels({"", "", "", ""});
    scene.table.horizontalHeader()->setMinimumSectionSize(1);
    scene.table.hideColumn(Name); // then its title takes no room

    scene.table.adjustColumn(Name);
    scene.table.showColumn(Name);

    QCOMPARE(scene.table.columnWidth(Name), 20);
}

void tst_TableWidget::laterWidthWinsOverAdjustColumn()
{
    Scene scene({"a text that is longer than its column will be"});

    scene.table.adjustColumn(Name);
    QVERIFY(scene.table.columnWidth(Name) > 80);
    scene.table.setColumnWidth(Name, 80);

    QCOMPARE(scene.table.columnWidth(Name), 80);
}

QTEST_MAIN(tst_TableWidget)
#include "tst_TableWidget.moc"
