#include "TableWidget.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>
#include <QtTest/qtestspontaneevent.h>

#include <functional>
#include <memory>

using meta::ComboTableItem;
using meta::TableItem;
using meta::TableWidget;

namespace {

enum Column { Name, Type, Group, Priority };

QPixmap picture()
{
    QPixmap pixmap(8, 8);
    pixmap.fill(Qt::red);
    return pixmap;
}

/// A form of a table and a line beside it, shown. The journal notes "row,column text" for each
/// edited value and "selection" for each change of the selection.
class Scene
{
public:
    explicit Scene(int rows = 3) : form(std::make_unique<QWidget>())
    {
        table = new TableWidget(form.get());
        table->setGeometry(0, 0, 560, 260);
        beside = new QLineEdit(form.get());
        beside->setGeometry(0, 270, 560, 25);
        table->setColumnCount(4);
        table->setNumRows(rows);
        for (int row = 0; row < rows; ++row) {
            table->setText(row, Name, QStringLiteral("name"));
            table->setItem(row, Type, new ComboTableItem(table, {"Cycle", "Fade", "Wave"}));
            table->setItem(row, Group, new TableItem(table, TableItem::Never, "group"));
            table->setItem(row, Priority, new TableItem(table, TableItem::WhenCurrent, "0"));
        }
        QObject::connect(table, &TableWidget::valueChanged, table, [this](int row, int column) {
            journal.append(
                QStringLiteral("%1,%2 %3").arg(row).arg(column).arg(table->text(row, column)));
            if (onValue)
                onValue();
        });
        QObject::connect(table, qOverload<int, int>(&TableWidget::currentChanged), table,
                         [this](int row, int) { table->selectRow(row); });
        QObject::connect(table, qOverload<>(&TableWidget::selectionChanged), table, [this] {
            if (notesSelection)
                journal.append(QStringLiteral("selection"));
        });
        form->resize(560, 300);
        form->show();
        QApplication::setActiveWindow(form.get());
        isActive = QTest::qWaitForWindowActive(form.get());
        table->setFocus();
    }

    QPoint at(int row, int column) const
    {
        return table->visualRect(table->model()->index(row, column)).center();
    }
    void click(int row, int column)
    {
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, at(row, column));
    }
    void doubleClick(int row, int column)
    {
        click(row, column);
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, at(row, column));
    }
    void key(Qt::Key key) { QTest::keyClick(table, key); }

    QWidget *editor(int row, int column) const
    {
        return table->indexWidget(table->model()->index(row, column));
    }
    /// The open line editor of a cell, or null.
    QLineEdit *line(int row, int column) const
    {
        return qobject_cast<QLineEdit *>(editor(row, column));
    }
    /// The open chooser of a row, or null.
    QComboBox *chooser(int row) const { return qobject_cast<QComboBox *>(editor(row, Type)); }
    QLineEdit *openName(int row)
    {
        table->setCurrentCell(row, Name);
        key(Qt::Key_F2);
        return line(row, Name);
    }
    QComboBox *openChooser(int row)
    {
        click(row, Type);
        return chooser(row);
    }

    QStringList take() { return std::exchange(journal, {}); }

    TableWidget *table;
    QLineEdit *beside;
    QStringList journal;
    std::function<void()> onValue;
    bool notesSelection = false;
    bool isActive = false;
    std::unique_ptr<QWidget> form; ///< goes first: an open line writes its text then
};

/// Opens the list by a click and clicks on an entry of it.
void choose(QComboBox *chooser, int entry)
{
    QTest::mouseClick(chooser, Qt::LeftButton);
    QAbstractItemView *list = chooser->view();
    QVERIFY(QTest::qWaitForWindowExposed(list->window()));
    // The list takes a release right after it has opened for that of the click which opened it.
    QTest::qWait(QApplication::doubleClickInterval() + 20);
    const QModelIndex index = chooser->model()->index(entry, 0);
    QTest::mouseMove(list->viewport(), list->visualRect(index).center());
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(index).center());
}

/// Chooses the entry after the shown one by a key, the list being closed.
void chooseNext(QComboBox *chooser)
{
    QTest::keyClick(chooser, Qt::Key_Down);
}

void runQueued()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

class tst_TableEditing : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setDoubleClickInterval(60); }
    void init();

    // What opens an editor
    void becomingCurrentOpens_data();
    void becomingCurrentOpens();
    void f2Opens_data();
    void f2Opens();
    void doubleClickOpens_data();
    void doubleClickOpens();
    void typingOpens_data();
    void typingOpens();
    void typingReplacesTheText();
    void f2KeepsTheText();
    void cellWithoutItemIsEditedOnTyping();
    void nothingOpensInAnUnseenTable();
    void clickOpensTheCurrentCellAnew();
    void clickOnTheCurrentCellOpensNothingLater();

    // What ends it
    void returnAcceptsWhenTheEventsHaveRun();
    void leavingTheCellAcceptsAtOnce();
    void tabAcceptsAndMovesOn();
    void losingTheFocusAccepts();
    void escapeRejects();
    void unchangedTextIsSilent_data();
    void unchangedTextIsSilent();
    void slotSeesTheNewText();
    void slotOfALineMayRemoveTheRow();
    void slotOfALineMayRemoveTheRowInsideAModalBox();

    // Changes from outside
    void typedTextSurvivesAPictureAndANewText();
    void untouchedEditorFollowsItsCell();
    void untouchedEditorWritesNothingBack();
    void textTypedLikeTheNewOneIsSilent();
    void gatheredChangesReachTheOpenEditor();
    void removingRowsDropsTheOpenEdit_data();
    void removingRowsDropsTheOpenEdit();
    void appendingRowsKeepsTheOpenEdit();

    // Choosers
    void chooserStartsAtTheFirstText();
    void textNotInTheListChangesNothing();
    void openChooserFollowsItsCell();
    void chooserListsItsTexts();
    void choiceByMouseIsToldAtOnce();
    void choiceOfTheSameEntryIsToldToo();
    void choiceByKeyIsToldAtOnce();
    void choiceInTheListByKeyIsTold();
    void leavingAChooserTellsNothing();
    void chooserStaysOpen_data();
    void chooserStaysOpen();
    void slotOfAChoiceMayOpenAModalBox();
    void slotOfAChoiceMayUndoIt();
    void slotOfAChoiceMayRemoveTheRow();
    void slotOfAChoiceMayRemoveTheRowInsideAModalBox();
    void slotOfAChoiceMayDeleteTheTable_data();
    void slotOfAChoiceMayDeleteTheTable();
    void slotOfAChoiceMayDeleteTheTableInsideAModalBox();
    void wheelScrollsTheTable();
    void emptyChooserOpensAndTellsNothing();
    void chooserCoversItsCell();

    // The end of the table
    void destroyingASilencedFormTellsNothing_data();
    void destroyingASilencedFormTellsNothing();
    void destroyingTheTableTellsNothing();
};

// Any warning fails, but for what the platform of the tests says of itself.
void tst_TableEditing::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

// --- What opens an editor ---

void tst_TableEditing::becomingCurrentOpens_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QByteArray>("editor");
    QTest::newRow("on typing") << int(Name) << QByteArray();
    QTest::newRow("chooser") << int(Type) << QByteArrayLiteral("QComboBox");
    QTest::newRow("never") << int(Group) << QByteArray();
    QTest::newRow("when current") << int(Priority) << QByteArrayLiteral("QExpandingLineEdit");
}

void tst_TableEditing::becomingCurrentOpens()
{
    QFETCH(int, column);
    QFETCH(QByteArray, editor);
    Scene scene;
    const auto opened = [&](int row) {
        const QWidget *widget = scene.editor(row, column);
        return widget ? QByteArray(widget->metaObject()->className()) : QByteArray();
    };

    scene.click(1, column);
    QCOMPARE(opened(1), editor);
    scene.table->setCurrentCell(2, column);
    QCOMPARE(opened(2), editor);
    QCOMPARE(opened(1), QByteArray());
    scene.table->setCurrentCell(0, Group);
    QTest::keyClick(scene.table, column < Group ? Qt::Key_Left : Qt::Key_Right);
    if (column == Type || column == Priority)
        QCOMPARE(opened(0), editor);
    QCOMPARE(scene.take(), QStringList());
}

void tst_TableEditing::f2Opens_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("opens");
    QTest::newRow("on typing") << int(Name) << true;
    QTest::newRow("never") << int(Group) << false;
}

void tst_TableEditing::f2Opens()
{
    QFETCH(int, column);
    QFETCH(bool, opens);
    Scene scene;
    scene.table->setCurrentCell(1, column);

    scene.key(Qt::Key_F2);

    QCOMPARE(scene.editor(1, column) != nullptr, opens);
}

void tst_TableEditing::doubleClickOpens_data()
{
    f2Opens_data();
}

void tst_TableEditing::doubleClickOpens()
{
    QFETCH(int, column);
    QFETCH(bool, opens);
    Scene scene;

    scene.doubleClick(1, column);

    QCOMPARE(scene.editor(1, column) != nullptr, opens);
    if (opens)
        QCOMPARE(scene.line(1, column)->text(), QStringLiteral("name"));
}

void tst_TableEditing::typingOpens_data()
{
    f2Opens_data();
}

void tst_TableEditing::typingOpens()
{
    QFETCH(int, column);
    QFETCH(bool, opens);
    Scene scene;
    scene.table->setCurrentCell(1, column);

    scene.key(Qt::Key_X);

    QCOMPARE(scene.editor(1, column) != nullptr, opens);
    QCOMPARE(scene.table->text(1, column),
             opens ? QStringLiteral("name") : QStringLiteral("group"));
}

void tst_TableEditing::typingReplacesTheText()
{
    Scene scene;
    scene.click(1, Name);

    scene.key(Qt::Key_A);
    QVERIFY(scene.line(1, Name));
    QTest::keyClicks(scene.line(1, Name), QStringLiteral("bc"));
    scene.click(0, Group);

    QCOMPARE(scene.take(), QStringList({"1,0 abc"}));
}

void tst_TableEditing::f2KeepsTheText()
{
    Scene scene;
    QLineEdit *line = scene.openName(1);
    QCOMPARE(line->text(), QStringLiteral("name"));

    QTest::keyClick(line, Qt::Key_End);
    QTest::keyClicks(line, QStringLiteral("s"));
    scene.click(0, Group);

    QCOMPARE(scene.take(), QStringList({"1,0 names"}));
}

void tst_TableEditing::cellWithoutItemIsEditedOnTyping()
{
    Scene scene;
    scene.table->setItem(1, Name, nullptr);

    scene.click(1, Name);
    QVERIFY(!scene.editor(1, Name));
    scene.key(Qt::Key_A);
    QVERIFY(scene.line(1, Name));
    scene.click(0, Group);

    QCOMPARE(scene.take(), QStringList({"1,0 a"}));
    QCOMPARE(scene.table->item(1, Name)->editType(), TableItem::OnTyping);
}

void tst_TableEditing::nothingOpensInAnUnseenTable()
{
    Scene scene;
    scene.form->hide();

    scene.table->setCurrentCell(1, Priority);

    QVERIFY(!scene.editor(1, Priority));
}

void tst_TableEditing::clickOpensTheCurrentCellAnew()
{
    Scene scene;
    scene.click(1, Priority);
    QTest::keyClick(scene.line(1, Priority), Qt::Key_Escape);
    QVERIFY(!scene.editor(1, Priority));

    scene.click(1, Priority);

    QVERIFY(scene.line(1, Priority));
}

// Neither the cell clicked on nor the one that is current by then.
void tst_TableEditing::clickOnTheCurrentCellOpensNothingLater()
{
    Scene scene;
    scene.click(1, Name);
    scene.click(1, Name);
    QTest::qWait(QApplication::doubleClickInterval() + 20);
    QVERIFY(!scene.editor(1, Name));

    scene.click(1, Priority);
    scene.click(1, Priority);
    scene.table->setCurrentCell(2, Name);
    QTest::qWait(QApplication::doubleClickInterval() + 20);
    QVERIFY(!scene.editor(2, Name));
}

// --- What ends it ---

void tst_TableEditing::returnAcceptsWhenTheEventsHaveRun()
{
    for (const Column column : {Name, Priority}) {
        Scene scene;
        scene.table->setCurrentCell(1, column);
        scene.key(Qt::Key_F2);
        QTest::keyClicks(scene.line(1, column), QStringLiteral("7"));

        QTest::keyClick(scene.line(1, column), Qt::Key_Return);
        QCoreApplication::processEvents();

        QCOMPARE(scene.take(), QStringList(QStringLiteral("1,%1 7").arg(int(column))));
        QVERIFY(!scene.editor(1, column));
    }
}

void tst_TableEditing::leavingTheCellAcceptsAtOnce()
{
    Scene scene;
    scene.click(1, Priority);
    QTest::keyClicks(scene.line(1, Priority), QStringLiteral("5"));

    scene.click(2, Group);

    QCOMPARE(scene.take(), QStringList({"1,3 5"}));
    QVERIFY(!scene.editor(1, Priority));
}

void tst_TableEditing::tabAcceptsAndMovesOn()
{
    Scene scene;
    QTest::keyClicks(scene.openName(1), QStringLiteral("new"));

    QTest::keyClick(scene.line(1, Name), Qt::Key_Tab);

    QCOMPARE(scene.take(), QStringList({"1,0 new"}));
    QVERIFY(!scene.editor(1, Name));
    QCOMPARE(scene.table->currentColumn(), int(Type));
}

void tst_TableEditing::losingTheFocusAccepts()
{
    Scene scene;
    QVERIFY(scene.isActive);
    QTest::keyClicks(scene.openName(1), QStringLiteral("new"));

    scene.beside->setFocus();

    QCOMPARE(scene.take(), QStringList({"1,0 new"}));
    QVERIFY(!scene.editor(1, Name));
}

void tst_TableEditing::escapeRejects()
{
    for (const Column column : {Name, Priority}) {
        Scene scene;
        scene.table->setCurrentCell(1, column);
        scene.key(Qt::Key_F2);
        const QString before = scene.table->text(1, column);
        QTest::keyClicks(scene.line(1, column), QStringLiteral("7"));

        QTest::keyClick(scene.line(1, column), Qt::Key_Escape);
        runQueued();

        QVERIFY(!scene.editor(1, column));
        QCOMPARE(scene.table->text(1, column), before);
        QCOMPARE(scene.take(), QStringList());
    }
}

void tst_TableEditing::unchangedTextIsSilent_data()
{
    QTest::addColumn<QString>("typed");
    QTest::newRow("nothing typed") << QString();
    QTest::newRow("typed again") << QStringLiteral("name");
}

void tst_TableEditing::unchangedTextIsSilent()
{
    QFETCH(QString, typed);
    Scene scene;
    QTest::keyClicks(scene.openName(1), typed);

    QTest::keyClick(scene.line(1, Name), Qt::Key_Return);
    QCoreApplication::processEvents();

    QVERIFY(!scene.editor(1, Name));
    QCOMPARE(scene.take(), QStringList());
}

void tst_TableEditing::slotSeesTheNewText()
{
    Scene scene;
    QString seen;
    scene.onValue = [&] { seen = scene.table->text(1, Priority); };
    scene.click(1, Priority);
    QTest::keyClicks(scene.line(1, Priority), QStringLiteral("42"));

    scene.click(0, Group);

    QCOMPARE(seen, QStringLiteral("42"));
}

void tst_TableEditing::slotOfALineMayRemoveTheRow()
{
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Tab}) {
        Scene scene;
        scene.onValue = [&] { scene.table->removeRow(1); };
        QTest::keyClicks(scene.openName(1), QStringLiteral("new"));

        QTest::keyClick(scene.line(1, Name), key);
        runQueued();

        QCOMPARE(scene.take(), QStringList({"1,0 new"}));
        QCOMPARE(scene.table->rowCount(), 2);
        QCOMPARE(scene.table->findChildren<QLineEdit *>().size(), 0);
    }
}

void tst_TableEditing::slotOfALineMayRemoveTheRowInsideAModalBox()
{
    Scene scene;
    scene.onValue = [&] {
        QTimer::singleShot(0, scene.table, [&] {
            scene.table->removeRow(1);
            QTimer::singleShot(0, QApplication::activeModalWidget(), &QWidget::close);
        });
        QMessageBox(QMessageBox::Warning, {}, "Sure?", QMessageBox::Ok, scene.form.get()).exec();
    };
    QTest::keyClicks(scene.openName(1), QStringLiteral("new"));
    QTest::keyClick(scene.line(1, Name), Qt::Key_Return);

    runQueued();
    runQueued();

    QCOMPARE(scene.take(), QStringList({"1,0 new"}));
    QCOMPARE(scene.table->rowCount(), 2);
    QCOMPARE(scene.table->findChildren<QLineEdit *>().size(), 0);
}

// --- Changes from outside ---

void tst_TableEditing::typedTextSurvivesAPictureAndANewText()
{
    Scene scene;
    QLineEdit *line = scene.openName(1);
    QTest::keyClicks(line, QStringLiteral("typ"));

    scene.table->setPixmap(1, Name, picture());
    scene.table->setText(1, Name, QStringLiteral("from outside"));
    QCoreApplication::processEvents();
    QTest::keyClicks(line, QStringLiteral("ed"));

    QCOMPARE(scene.line(1, Name), line);
    QCOMPARE(line->text(), QStringLiteral("typed"));
    QCOMPARE(scene.table->text(1, Name), QStringLiteral("from outside"));
    scene.click(0, Group);
    QCOMPARE(scene.take(), QStringList({"1,0 typed"}));
}

void tst_TableEditing::untouchedEditorFollowsItsCell()
{
    Scene scene;
    scene.click(1, Priority);

    scene.table->setText(1, Priority, QStringLiteral("12"));
    QCOMPARE(scene.line(1, Priority)->text(), QStringLiteral("12"));
    scene.table->setPixmap(1, Priority, picture());
    QTest::keyClicks(scene.line(1, Priority), QStringLiteral("3"));
    scene.click(0, Group);

    QCOMPARE(scene.take(), QStringList({"1,3 3"})); // the typed text replaces the followed one
}

void tst_TableEditing::untouchedEditorWritesNothingBack()
{
    Scene scene;
    scene.click(1, Priority);
    // Behind the editor's back: no view is told.
    scene.table->model()->blockSignals(true);
    scene.table->setText(1, Priority, QStringLiteral("12"));
    scene.table->model()->blockSignals(false);
    QCOMPARE(scene.line(1, Priority)->text(), QStringLiteral("0"));

    scene.click(0, Group);

    QCOMPARE(scene.table->text(1, Priority), QStringLiteral("12"));
    QCOMPARE(scene.take(), QStringList());
}

void tst_TableEditing::textTypedLikeTheNewOneIsSilent()
{
    Scene scene;
    QTest::keyClicks(scene.openName(1), QStringLiteral("new"));
    scene.table->setText(1, Name, QStringLiteral("new"));

    scene.click(0, Group);

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.table->text(1, Name), QStringLiteral("new"));
}

void tst_TableEditing::gatheredChangesReachTheOpenEditor()
{
    Scene scene;
    scene.click(1, Priority);
    {
        const TableWidget::Gathering gathering(*scene.table);
        scene.table->setText(0, Name, QStringLiteral("first"));
        scene.table->setText(1, Priority, QStringLiteral("12"));
        scene.table->setText(2, Priority, QStringLiteral("13"));
    }
    QCOMPARE(scene.line(1, Priority)->text(), QStringLiteral("12"));
}

void tst_TableEditing::removingRowsDropsTheOpenEdit_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("removed");
    QTest::newRow("name, its row") << int(Name) << 1;
    QTest::newRow("name, another row") << int(Name) << 0;
    QTest::newRow("name, all rows") << int(Name) << -1;
    QTest::newRow("priority, its row") << int(Priority) << 1;
    QTest::newRow("priority, another row") << int(Priority) << 2;
    QTest::newRow("priority, all rows") << int(Priority) << -1;
}

void tst_TableEditing::removingRowsDropsTheOpenEdit()
{
    QFETCH(int, column);
    QFETCH(int, removed);
    Scene scene;
    scene.table->setCurrentCell(1, column);
    scene.key(Qt::Key_F2);
    QTest::keyClicks(scene.line(1, column), QStringLiteral("7"));
    scene.notesSelection = true;

    if (removed < 0)
        scene.table->setNumRows(0);
    else
        scene.table->removeRow(removed);
    runQueued();

    QCOMPARE(scene.take(), QStringList({"selection"}));
    QCOMPARE(scene.table->findChildren<QLineEdit *>().size(), 0);
    for (int row = 0; row < scene.table->rowCount(); ++row)
        QVERIFY(scene.table->text(row, column) != QStringLiteral("7"));
}

void tst_TableEditing::appendingRowsKeepsTheOpenEdit()
{
    Scene scene;
    QLineEdit *line = scene.openName(1);
    QTest::keyClicks(line, QStringLiteral("typed"));

    scene.table->setNumRows(6);
    runQueued();

    QCOMPARE(scene.line(1, Name), line);
    QCOMPARE(line->text(), QStringLiteral("typed"));
    QCOMPARE(scene.take(), QStringList());
}

// --- Choosers ---

void tst_TableEditing::chooserStartsAtTheFirstText()
{
    TableWidget table;
    const ComboTableItem full(&table, {"Wave", "Cycle"});
    const ComboTableItem empty(&table, {});

    QCOMPARE(full.text(), QStringLiteral("Wave"));
    QCOMPARE(full.key(), QStringLiteral("Wave"));
    QCOMPARE(empty.text(), QString());
}

void tst_TableEditing::textNotInTheListChangesNothing()
{
    TableWidget table;
    ComboTableItem item(&table, {"Wave", "Cycle"});

    item.setCurrentItem(QStringLiteral("Text"));
    QCOMPARE(item.text(), QStringLiteral("Wave"));
    item.setCurrentItem(QStringLiteral("Cycle"));
    QCOMPARE(item.text(), QStringLiteral("Cycle"));
    item.setCurrentItem(QStringLiteral("cycle"));
    item.setCurrentItem(QString());
    QCOMPARE(item.text(), QStringLiteral("Cycle"));
}

void tst_TableEditing::openChooserFollowsItsCell()
{
    Scene scene;
    auto *item = static_cast<ComboTableItem *>(scene.table->item(1, Type));
    item->setCurrentItem(QStringLiteral("Fade"));
    QComboBox *chooser = scene.openChooser(1);
    QCOMPARE(chooser->currentText(), QStringLiteral("Fade"));

    item->setCurrentItem(QStringLiteral("Wave"));
    QCOMPARE(chooser->currentText(), QStringLiteral("Wave"));
    item->setCurrentItem(QStringLiteral("Text"));
    QCOMPARE(chooser->currentText(), QStringLiteral("Wave"));
    scene.table->setText(1, Type, QStringLiteral("Text"));
    QCOMPARE(chooser->currentText(), QStringLiteral("Wave"));
    QCOMPARE(scene.take(), QStringList());
}

void tst_TableEditing::chooserListsItsTexts()
{
    Scene scene;
    const QComboBox *chooser = scene.openChooser(1);
    QVERIFY(chooser);
    QVERIFY(!chooser->isEditable());
    QCOMPARE(chooser->count(), 3);
    QCOMPARE(chooser->itemText(0), QStringLiteral("Cycle"));
    QCOMPARE(chooser->itemText(2), QStringLiteral("Wave"));
}

void tst_TableEditing::choiceByMouseIsToldAtOnce()
{
    Scene scene;
    QComboBox *chooser = scene.openChooser(1);

    choose(chooser, 2);

    QCOMPARE(scene.take(), QStringList({"1,1 Wave"}));
    QCOMPARE(scene.chooser(1), chooser);
}

void tst_TableEditing::choiceOfTheSameEntryIsToldToo()
{
    Scene scene;
    QComboBox *chooser = scene.openChooser(1);

    choose(chooser, 0);
    choose(chooser, 0);

    QCOMPARE(scene.take(), QStringList({"1,1 Cycle", "1,1 Cycle"}));
}

void tst_TableEditing::choiceByKeyIsToldAtOnce()
{
    Scene scene;
    QComboBox *chooser = scene.openChooser(1);
    QVERIFY(scene.isActive);
    QVERIFY(chooser->hasFocus());

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    QCOMPARE(scene.take(), QStringList({"1,1 Fade"}));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_W);
    QCOMPARE(scene.take(), QStringList({"1,1 Wave"}));
}

void tst_TableEditing::choiceInTheListByKeyIsTold()
{
    Scene scene;
    QComboBox *chooser = scene.openChooser(1);

    for (const auto &expected : {"1,1 Fade", "1,1 Fade"}) {
        chooser->showPopup();
        QVERIFY(QTest::qWaitForWindowExposed(chooser->view()->window()));
        if (chooser->currentIndex() == 0)
            QTest::keyClick(chooser->view(), Qt::Key_Down);
        QTest::keyClick(chooser->view(), Qt::Key_Return);
        QCOMPARE(scene.take(), QStringList(expected));
    }
    chooser->showPopup();
    QTest::keyClick(chooser->view(), Qt::Key_Down);
    QTest::keyClick(chooser->view(), Qt::Key_Escape);
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.table->text(1, Type), QStringLiteral("Fade"));
}

void tst_TableEditing::leavingAChooserTellsNothing()
{
    Scene scene;
    chooseNext(scene.openChooser(1));
    QCOMPARE(scene.take(), QStringList({"1,1 Fade"}));

    scene.click(2, Group);
    runQueued();

    QVERIFY(!scene.editor(1, Type));
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.table->text(1, Type), QStringLiteral("Fade"));
}

void tst_TableEditing::chooserStaysOpen_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("when the focus goes") << Qt::Key_unknown;
    QTest::newRow("at Escape") << Qt::Key_Escape;
    QTest::newRow("at Return") << Qt::Key_Return;
    QTest::newRow("at Enter") << Qt::Key_Enter;
}

void tst_TableEditing::chooserStaysOpen()
{
    QFETCH(Qt::Key, key);
    Scene scene;
    const QPointer<QComboBox> chooser = scene.openChooser(1);

    if (key == Qt::Key_unknown) {
        QVERIFY(scene.isActive);
        scene.beside->setFocus();
        QVERIFY(!chooser->hasFocus());
    } else {
        QTest::keyClick(chooser, key);
    }
    runQueued();

    QVERIFY(chooser);
    QVERIFY(chooser->isVisible());
    QCOMPARE(scene.chooser(1), chooser.data());
    QCOMPARE(scene.take(), QStringList());
}

void tst_TableEditing::slotOfAChoiceMayOpenAModalBox()
{
    Scene scene;
    scene.onValue = [&] {
        QTimer::singleShot(0, scene.table, [] { QApplication::activeModalWidget()->close(); });
        QMessageBox(QMessageBox::Warning, {}, "Sure?", QMessageBox::Ok, scene.form.get()).exec();
    };
    const QPointer<QComboBox> chooser = scene.openChooser(1);

    choose(chooser, 2);
    runQueued();

    QCOMPARE(scene.take(), QStringList({"1,1 Wave"}));
    QVERIFY(chooser);
    QCOMPARE(scene.chooser(1), chooser.data());
    chooseNext(chooser); // there is none behind the last
    QCOMPARE(scene.take(), QStringList());
}

void tst_TableEditing::slotOfAChoiceMayUndoIt()
{
    Scene scene;
    scene.onValue = [&] {
        static_cast<ComboTableItem *>(scene.table->item(1, Type))->setCurrentItem("Cycle");
    };
    QComboBox *chooser = scene.openChooser(1);

    choose(chooser, 2);

    QCOMPARE(scene.take(), QStringList({"1,1 Wave"}));
    QCOMPARE(scene.table->text(1, Type), QStringLiteral("Cycle"));
    QCOMPARE(chooser->currentText(), QStringLiteral("Cycle"));
}

void tst_TableEditing::slotOfAChoiceMayRemoveTheRow()
{
    Scene scene;
    scene.onValue = [&] { scene.table->removeRow(1); };
    const QPointer<QComboBox> chooser = scene.openChooser(1);

    choose(chooser, 2);
    QCOMPARE(scene.table->rowCount(), 2);
    runQueued();

    QVERIFY(!chooser);
    QCOMPARE(scene.take(), QStringList({"1,1 Wave"}));
}

void tst_TableEditing::slotOfAChoiceMayRemoveTheRowInsideAModalBox()
{
    Scene scene;
    QPointer<QComboBox> chooser = scene.openChooser(1);
    bool livedOn = false;
    scene.onValue = [&] {
        QTimer::singleShot(0, scene.table, [&] {
            scene.table->removeRow(1);
            QTimer::singleShot(0, scene.table, [] { QApplication::activeModalWidget()->close(); });
        });
        QMessageBox(QMessageBox::Warning, {}, "Sure?", QMessageBox::Ok, scene.form.get()).exec();
        livedOn = chooser && !chooser->isVisible();
    };

    chooseNext(chooser);
    QVERIFY(livedOn);
    runQueued();

    QVERIFY(!chooser);
    QCOMPARE(scene.take(), QStringList({"1,1 Fade"}));
    QCOMPARE(scene.table->rowCount(), 2);
}

void tst_TableEditing::slotOfAChoiceMayDeleteTheTable_data()
{
    QTest::addColumn<bool>("byMouse");
    QTest::newRow("by mouse") << true;
    QTest::newRow("by key") << false;
}

void tst_TableEditing::slotOfAChoiceMayDeleteTheTable()
{
    QFETCH(bool, byMouse);
    Scene scene;
    const QPointer<QComboBox> chooser = scene.openChooser(1);
    scene.onValue = [&] { delete scene.table; };

    if (byMouse)
        choose(chooser, 2);
    else
        chooseNext(chooser);
    QCOMPARE(scene.form->findChildren<TableWidget *>().size(), 0);
    runQueued();

    QVERIFY(!chooser);
    QCOMPARE(scene.take(), QStringList(byMouse ? "1,1 Wave" : "1,1 Fade"));
}

void tst_TableEditing::slotOfAChoiceMayDeleteTheTableInsideAModalBox()
{
    Scene scene;
    const QPointer<QComboBox> chooser = scene.openChooser(1);
    scene.onValue = [&] {
        QTimer::singleShot(0, qApp, [&] {
            delete scene.table;
            QTimer::singleShot(0, qApp, [] { QApplication::activeModalWidget()->close(); });
        });
        QMessageBox(QMessageBox::Warning, {}, "Sure?", QMessageBox::Ok, scene.form.get()).exec();
    };

    chooseNext(chooser);
    runQueued();

    QVERIFY(!chooser);
    QCOMPARE(scene.take(), QStringList({"1,1 Fade"}));
}

void tst_TableEditing::wheelScrollsTheTable()
{
    Scene scene(60);
    QComboBox *chooser = scene.openChooser(1);
    const QPointF where = chooser->rect().center();
    QCOMPARE(scene.table->verticalScrollBar()->value(), 0);
    QWheelEvent down(where, chooser->mapToGlobal(where), {}, {0, -120}, Qt::NoButton,
                     Qt::NoModifier, Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&down);

    qApp->notify(chooser, &down);

    QVERIFY(scene.table->verticalScrollBar()->value() > 0);
    QCOMPARE(chooser->currentIndex(), 0);
    QCOMPARE(scene.take(), QStringList());
}

void tst_TableEditing::emptyChooserOpensAndTellsNothing()
{
    Scene scene;
    scene.table->setItem(1, Type, new ComboTableItem(scene.table, {}));
    QComboBox *chooser = scene.openChooser(1);
    QVERIFY(chooser);

    chooseNext(chooser);
    QTest::mouseClick(chooser, Qt::LeftButton);
    QTest::keyClick(chooser, Qt::Key_X);
    scene.click(2, Group);

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.table->text(1, Type), QString());
}

void tst_TableEditing::chooserCoversItsCell()
{
    Scene scene;
    scene.table->setPixmap(1, Type, picture());
    const QComboBox *chooser = scene.openChooser(1);

    QCOMPARE(chooser->geometry(), scene.table->visualRect(scene.table->model()->index(1, Type)));
}

// --- The end of the table ---

void tst_TableEditing::destroyingASilencedFormTellsNothing_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("name") << int(Name);
    QTest::newRow("priority") << int(Priority);
    QTest::newRow("type") << int(Type);
}

void tst_TableEditing::destroyingASilencedFormTellsNothing()
{
    QFETCH(int, column);
    Scene scene;
    scene.table->setCurrentCell(1, column);
    scene.key(Qt::Key_F2);
    QVERIFY(scene.editor(1, column));
    if (column != Type)
        QTest::keyClicks(scene.line(1, column), QStringLiteral("7"));
    scene.take();

    scene.table->blockSignals(true);
    scene.form.reset();
    runQueued();

    QCOMPARE(scene.take(), QStringList());
}

void tst_TableEditing::destroyingTheTableTellsNothing()
{
    Scene scene;
    QTest::keyClicks(scene.openName(1), QStringLiteral("typed"));
    QStringList told;
    connect(scene.table, &TableWidget::valueChanged, this,
            [&](int row, int) { told.append(QString::number(row)); });

    delete scene.table;
    runQueued();

    QCOMPARE(told, QStringList());
}

QTEST_MAIN(tst_TableEditing)
#include "tst_TableEditing.moc"
