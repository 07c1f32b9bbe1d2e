#include "TableScene.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using meta::TableWidget;

class tst_TableWidgetInput : public QObject
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

    // The context menu
    void contextMenuTellsCellAndScreenPosition_data();
    void contextMenuTellsCellAndScreenPosition();
    void contextMenuOfAScrolledTable();
    void contextMenuByKeyIsThatOfTheCurrentCell();
    void contextMenuByKeyWithoutCurrentCell();
};

// Any warning fails, but for what the platform of the tests says of itself.
void tst_TableWidgetInput::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

// The editor connects them so.
void tst_TableWidgetInput::signalsConnectByTheirText()
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

void tst_TableWidgetInput::clickOnAnotherRowSelectsJustThat()
{
    TableScene scene;
    scene.click(0, Group);
    QCOMPARE(scene.take(), QStringList({"current 0,2", "selection 0", "clicked 0,2,1"}));

    scene.press(scene.at(3, Group));
    QCOMPARE(scene.take(), QStringList({"current 3,2", "selection 0 3", "selection 3"}));
    scene.release(scene.at(3, Group));
    QCOMPARE(scene.take(), QStringList({"clicked 3,2,1"}));
}

void tst_TableWidgetInput::clickOnAnotherColumnKeepsColumnAndRow()
{
    TableScene scene;
    scene.click(1, Name);
    scene.take();

    scene.click(1, Group);

    QCOMPARE(scene.take(), QStringList({"current 1,2", "selection 1", "clicked 1,2,1"}));
    QCOMPARE(scene.current(), QStringLiteral("1,2"));
}

void tst_TableWidgetInput::clickOnTheCurrentCellOnlyTellsOfTheClick()
{
    TableScene scene;
    scene.click(1, Group);
    scene.take();

    scene.click(1, Group);

    QCOMPARE(scene.take(), QStringList({"clicked 1,2,1"}));
}

void tst_TableWidgetInput::clickOnOneOfSeveralSelectedRowsSelectsJustThat_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("edited on typing") << int(Name);
    QTest::newRow("chooser") << int(Type);
    QTest::newRow("never edited") << int(Group);
    QTest::newRow("edited when current") << int(Priority);
}

void tst_TableWidgetInput::clickOnOneOfSeveralSelectedRowsSelectsJustThat()
{
    QFETCH(int, column);
    TableScene scene;
    scene.click(0, Group);
    scene.click(3, Group, Qt::ControlModifier);
    QCOMPARE(scene.selected(), QStringLiteral("0 3"));

    scene.click(0, column);

    QCOMPARE(scene.selected(), QStringLiteral("0"));
}

void tst_TableWidgetInput::ctrlClickAddsARow()
{
    TableScene scene;
    scene.click(1, Group);
    scene.take();

    scene.click(3, Group, Qt::ControlModifier);

    QCOMPARE(scene.take(), QStringList({"current 3,2", "selection 1 3", "clicked 3,2,1"}));
}

void tst_TableWidgetInput::ctrlClickOnASelectedRowKeepsIt()
{
    TableScene scene;
    scene.click(1, Group);
    scene.click(3, Group, Qt::ControlModifier);
    scene.take();

    scene.click(1, Group, Qt::ControlModifier);
    QCOMPARE(scene.take(), QStringList({"current 1,2", "selection 1 3", "clicked 1,2,1"}));
    scene.click(1, Group, Qt::ControlModifier);
    QCOMPARE(scene.take(), QStringList({"clicked 1,2,1"}));
    QCOMPARE(scene.selected(), QStringLiteral("1 3"));
}

void tst_TableWidgetInput::shiftClickAddsTheRowsFromTheLastClick()
{
    TableScene scene;
    scene.click(0, Group);
    scene.click(2, Group, Qt::ControlModifier);
    scene.click(4, Group, Qt::ShiftModifier);

    QCOMPARE(scene.selected(), QStringLiteral("0 2 3 4"));
    QCOMPARE(scene.current(), QStringLiteral("4,2"));
}

void tst_TableWidgetInput::dragSelectsTheRowsItPasses()
{
    TableScene scene;
    scene.click(0, Group);
    scene.take();

    scene.drag(1, 3, Qt::NoModifier);

    QCOMPARE(scene.selected(), QStringLiteral("1 2 3"));
    QCOMPARE(scene.current(), QStringLiteral("3,2"));
    QCOMPARE(scene.journal.filter(QStringLiteral("clicked")), QStringList());
}

void tst_TableWidgetInput::ctrlDragAddsTheRowsItPasses()
{
    TableScene scene;
    scene.click(0, Group);
    scene.click(2, Group, Qt::ControlModifier);

    scene.drag(2, 4, Qt::ControlModifier);

    QCOMPARE(scene.selected(), QStringLiteral("0 2 3 4"));
    scene.drag(4, 2, Qt::ControlModifier);
    QCOMPARE(scene.selected(), QStringLiteral("0 2 3 4"));
}

void tst_TableWidgetInput::rightPressSelectsJustThatRow_data()
{
    QTest::addColumn<QList<int>>("before");
    QTest::addColumn<QStringList>("told");
    QTest::newRow("another row") << QList<int>{0}
                                 << QStringList{"current 2,2", "selection 0 2", "selection 2"};
    QTest::newRow("the selected row") << QList<int>{2} << QStringList{};
    QTest::newRow("one of several") << QList<int>{0, 1, 2} << QStringList{"selection 2"};
}

void tst_TableWidgetInput::rightPressSelectsJustThatRow()
{
    QFETCH(QList<int>, before);
    QFETCH(QStringList, told);
    TableScene scene;
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

void tst_TableWidgetInput::pressBesideTheCellsClearsTheSelection_data()
{
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<bool>("isBelow");
    QTest::newRow("left, below the rows") << Qt::LeftButton << true;
    QTest::newRow("right, below the rows") << Qt::RightButton << true;
    QTest::newRow("left, beside the columns") << Qt::LeftButton << false;
    QTest::newRow("right, beside the columns") << Qt::RightButton << false;
}

void tst_TableWidgetInput::pressBesideTheCellsClearsTheSelection()
{
    QFETCH(Qt::MouseButton, button);
    QFETCH(bool, isBelow);
    TableScene scene;
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

void tst_TableWidgetInput::ctrlPressBesideTheCellsKeepsTheSelection()
{
    TableScene scene;
    scene.click(0, Group);
    scene.take();

    for (const auto modifier : {Qt::ControlModifier, Qt::ShiftModifier}) {
        scene.press(scene.below(), Qt::LeftButton, modifier);
        scene.release(scene.below(), Qt::LeftButton, modifier);
    }

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.selected(), QStringLiteral("0"));
}

void tst_TableWidgetInput::clickOnARowNumberSelectsTheRow()
{
    TableScene scene;
    scene.click(0, Group);
    QHeaderView *header = scene.table.verticalHeader();

    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, {5, scene.at(2, Name).y()});

    QCOMPARE(scene.selected(), QStringLiteral("2"));
    QCOMPARE(scene.current(), QStringLiteral("2,0"));
}

void tst_TableWidgetInput::ctrlClickOnASelectedRowNumberKeepsTheRow()
{
    TableScene scene;
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

void tst_TableWidgetInput::clickTellsItsButton_data()
{
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<QString>("told");
    QTest::newRow("left") << Qt::LeftButton << QStringLiteral("clicked 1,2,1");
    QTest::newRow("right") << Qt::RightButton << QStringLiteral("clicked 1,2,2");
    QTest::newRow("middle") << Qt::MiddleButton << QStringLiteral("clicked 1,2,4");
}

void tst_TableWidgetInput::clickTellsItsButton()
{
    QFETCH(Qt::MouseButton, button);
    QFETCH(QString, told);
    TableScene scene;

    scene.click(1, Group, {}, button);

    QCOMPARE(scene.journal.filter(QStringLiteral("clicked")), QStringList(told));
    QCOMPARE(scene.journal.last(), told);
}

void tst_TableWidgetInput::clickTellsWhereInTheContent()
{
    TableScene scene;
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

void tst_TableWidgetInput::releaseOnAnotherCellIsNoClick()
{
    TableScene scene;
    scene.press(scene.at(1, Group));
    scene.release(scene.at(2, Group));

    QCOMPARE(scene.take(), QStringList({"current 1,2", "selection 1"}));
}

void tst_TableWidgetInput::slotOfAClickMayDeleteTheTable()
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

void tst_TableWidgetInput::arrowKeysMoveTheOnlySelectedRow()
{
    TableScene scene;
    scene.click(1, Group);
    scene.take();

    scene.key(Qt::Key_Down);
    QCOMPARE(scene.take(), QStringList({"selection 2", "current 2,2", "selection 2"}));
    scene.key(Qt::Key_Up);
    QCOMPARE(scene.take(), QStringList({"selection 1", "current 1,2", "selection 1"}));
    scene.key(Qt::Key_Left);
    QCOMPARE(scene.take(), QStringList({"current 1,1", "selection 1"}));
}

void tst_TableWidgetInput::arrowKeysStopAtTheEnds()
{
    TableScene scene;
    scene.click(0, Group);
    scene.take();

    scene.key(Qt::Key_Up);

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.selected(), QStringLiteral("0"));
}

void tst_TableWidgetInput::ctrlSpaceKeepsASelectedRow()
{
    TableScene scene;
    scene.click(1, Group);

    scene.key(Qt::Key_Space, Qt::ControlModifier);

    QCOMPARE(scene.selected(), QStringLiteral("1"));
}

void tst_TableWidgetInput::focusMakesNothingCurrent()
{
    TableScene scene;
    QVERIFY(scene.isActive);
    scene.table.clearFocus();

    scene.table.setFocus();

    QVERIFY(scene.table.hasFocus());
    QCOMPARE(scene.current(), QStringLiteral("-1,-1"));
    QCOMPARE(scene.take(), QStringList());
}

void tst_TableWidgetInput::focusKeepsCurrentCellAndSelection()
{
    TableScene scene;
    scene.click(1, Group);
    scene.click(3, Group, Qt::ControlModifier);
    scene.take();
    scene.table.clearFocus();

    scene.table.setFocus();

    QCOMPARE(scene.current(), QStringLiteral("3,2"));
    QCOMPARE(scene.selected(), QStringLiteral("1 3"));
    QCOMPARE(scene.take(), QStringList());
}

// --- The context menu ---

void tst_TableWidgetInput::contextMenuTellsCellAndScreenPosition_data()
{
    QTest::addColumn<QPoint>("where");
    QTest::addColumn<QString>("told");
    QTest::newRow("a cell") << QPoint(250, 30) << QStringLiteral("menu 1,2");
    QTest::newRow("below the rows") << QPoint(20, 200) << QStringLiteral("menu -1,0");
    QTest::newRow("beside the columns") << QPoint(450, 10) << QStringLiteral("menu 0,-1");
    QTest::newRow("beyond both") << QPoint(450, 200) << QStringLiteral("menu -1,-1");
}

void tst_TableWidgetInput::contextMenuTellsCellAndScreenPosition()
{
    QFETCH(QPoint, where);
    QFETCH(QString, told);
    TableScene scene;
    QContextMenuEvent event(QContextMenuEvent::Mouse, where,
                            scene.table.viewport()->mapToGlobal(where));

    QApplication::sendEvent(scene.table.viewport(), &event);

    QCOMPARE(scene.take(), QStringList(told));
    QCOMPARE(scene.position, scene.table.viewport()->mapToGlobal(where));
}

void tst_TableWidgetInput::contextMenuOfAScrolledTable()
{
    TableScene scene;
    while (scene.table.rowCount() < 40)
        scene.append(QStringLiteral("more"));
    scene.table.scrollToBottom();
    const QPoint where = scene.at(38, Type);
    QContextMenuEvent event(QContextMenuEvent::Mouse, where,
                            scene.table.viewport()->mapToGlobal(where));

    QApplication::sendEvent(scene.table.viewport(), &event);

    QCOMPARE(scene.take(), QStringList({"menu 38,1"}));
}

void tst_TableWidgetInput::contextMenuByKeyIsThatOfTheCurrentCell()
{
    TableScene scene;
    scene.click(3, Group);
    scene.take();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {200, 200}, {700, 700});

    QApplication::sendEvent(scene.table.viewport(), &event);

    QCOMPARE(scene.take(), QStringList({"menu 3,2"}));
    QCOMPARE(scene.position, scene.table.viewport()->mapToGlobal(scene.at(3, Group)));
}

void tst_TableWidgetInput::contextMenuByKeyWithoutCurrentCell()
{
    TableScene scene;
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {20, 20}, {700, 700});

    QApplication::sendEvent(scene.table.viewport(), &event);

    QCOMPARE(scene.take(), QStringList({"menu -1,-1"}));
    QCOMPARE(scene.position, QPoint(700, 700));
}

QTEST_MAIN(tst_TableWidgetInput)
#include "tst_TableWidgetInput.moc"
