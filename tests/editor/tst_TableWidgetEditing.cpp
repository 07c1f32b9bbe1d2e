#include "EditingScene.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>

using meta::TableItem;
using meta::TableWidget;

class tst_TableWidgetEditing : public QObject
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

    // The end of the table
    void destroyingASilencedFormTellsNothing_data();
    void destroyingASilencedFormTellsNothing();
    void destroyingTheTableTellsNothing();
};

// Any warning fails, but for what the platform of the tests says of itself.
void tst_TableWidgetEditing::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

// --- What opens an editor ---

void tst_TableWidgetEditing::becomingCurrentOpens_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QByteArray>("editor");
    QTest::newRow("on typing") << int(Name) << QByteArray();
    QTest::newRow("chooser") << int(Type) << QByteArrayLiteral("QComboBox");
    QTest::newRow("never") << int(Group) << QByteArray();
    QTest::newRow("when current") << int(Priority) << QByteArrayLiteral("QExpandingLineEdit");
}

void tst_TableWidgetEditing::becomingCurrentOpens()
{
    QFETCH(int, column);
    QFETCH(QByteArray, editor);
    EditingScene scene;
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

void tst_TableWidgetEditing::f2Opens_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("opens");
    QTest::newRow("on typing") << int(Name) << true;
    QTest::newRow("never") << int(Group) << false;
}

void tst_TableWidgetEditing::f2Opens()
{
    QFETCH(int, column);
    QFETCH(bool, opens);
    EditingScene scene;
    scene.table->setCurrentCell(1, column);

    scene.key(Qt::Key_F2);

    QCOMPARE(scene.editor(1, column) != nullptr, opens);
}

void tst_TableWidgetEditing::doubleClickOpens_data()
{
    f2Opens_data();
}

void tst_TableWidgetEditing::doubleClickOpens()
{
    QFETCH(int, column);
    QFETCH(bool, opens);
    EditingScene scene;

    scene.doubleClick(1, column);

    QCOMPARE(scene.editor(1, column) != nullptr, opens);
    if (opens)
        QCOMPARE(scene.line(1, column)->text(), QStringLiteral("name"));
}

void tst_TableWidgetEditing::typingOpens_data()
{
    f2Opens_data();
}

void tst_TableWidgetEditing::typingOpens()
{
    QFETCH(int, column);
    QFETCH(bool, opens);
    EditingScene scene;
    scene.table->setCurrentCell(1, column);

    scene.key(Qt::Key_X);

    QCOMPARE(scene.editor(1, column) != nullptr, opens);
    QCOMPARE(scene.table->text(1, column),
             opens ? QStringLiteral("name") : QStringLiteral("group"));
}

void tst_TableWidgetEditing::typingReplacesTheText()
{
    EditingScene scene;
    scene.click(1, Name);

    scene.key(Qt::Key_A);
    QVERIFY(scene.line(1, Name));
    QTest::keyClicks(scene.line(1, Name), QStringLiteral("bc"));
    scene.click(0, Group);

    QCOMPARE(scene.take(), QStringList({"1,0 abc"}));
}

void tst_TableWidgetEditing::f2KeepsTheText()
{
    EditingScene scene;
    QLineEdit *line = scene.openName(1);
    QCOMPARE(line->text(), QStringLiteral("name"));

    QTest::keyClick(line, Qt::Key_End);
    QTest::keyClicks(line, QStringLiteral("s"));
    scene.click(0, Group);

    QCOMPARE(scene.take(), QStringList({"1,0 names"}));
}

void tst_TableWidgetEditing::cellWithoutItemIsEditedOnTyping()
{
    EditingScene scene;
    scene.table->setItem(1, Name, nullptr);

    scene.click(1, Name);
    QVERIFY(!scene.editor(1, Name));
    scene.key(Qt::Key_A);
    QVERIFY(scene.line(1, Name));
    scene.click(0, Group);

    QCOMPARE(scene.take(), QStringList({"1,0 a"}));
    QCOMPARE(scene.table->item(1, Name)->editType(), TableItem::OnTyping);
}

void tst_TableWidgetEditing::nothingOpensInAnUnseenTable()
{
    EditingScene scene;
    scene.form->hide();

    scene.table->setCurrentCell(1, Priority);

    QVERIFY(!scene.editor(1, Priority));
}

void tst_TableWidgetEditing::clickOpensTheCurrentCellAnew()
{
    EditingScene scene;
    scene.click(1, Priority);
    QTest::keyClick(scene.line(1, Priority), Qt::Key_Escape);
    QVERIFY(!scene.editor(1, Priority));

    scene.click(1, Priority);

    QVERIFY(scene.line(1, Priority));
}

// Neither the cell clicked on nor the one that is current by then.
void tst_TableWidgetEditing::clickOnTheCurrentCellOpensNothingLater()
{
    EditingScene scene;
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

void tst_TableWidgetEditing::returnAcceptsWhenTheEventsHaveRun()
{
    for (const Column column : {Name, Priority}) {
        EditingScene scene;
        scene.table->setCurrentCell(1, column);
        scene.key(Qt::Key_F2);
        QTest::keyClicks(scene.line(1, column), QStringLiteral("7"));

        QTest::keyClick(scene.line(1, column), Qt::Key_Return);
        QCoreApplication::processEvents();

        QCOMPARE(scene.take(), QStringList(QStringLiteral("1,%1 7").arg(int(column))));
        QVERIFY(!scene.editor(1, column));
    }
}

void tst_TableWidgetEditing::leavingTheCellAcceptsAtOnce()
{
    EditingScene scene;
    scene.click(1, Priority);
    QTest::keyClicks(scene.line(1, Priority), QStringLiteral("5"));

    scene.click(2, Group);

    QCOMPARE(scene.take(), QStringList({"1,3 5"}));
    QVERIFY(!scene.editor(1, Priority));
}

void tst_TableWidgetEditing::tabAcceptsAndMovesOn()
{
    EditingScene scene;
    QTest::keyClicks(scene.openName(1), QStringLiteral("new"));

    QTest::keyClick(scene.line(1, Name), Qt::Key_Tab);

    QCOMPARE(scene.take(), QStringList({"1,0 new"}));
    QVERIFY(!scene.editor(1, Name));
    QCOMPARE(scene.table->currentColumn(), int(Type));
}

void tst_TableWidgetEditing::losingTheFocusAccepts()
{
    EditingScene scene;
    QVERIFY(scene.isActive);
    QTest::keyClicks(scene.openName(1), QStringLiteral("new"));

    scene.beside->setFocus();

    QCOMPARE(scene.take(), QStringList({"1,0 new"}));
    QVERIFY(!scene.editor(1, Name));
}

void tst_TableWidgetEditing::escapeRejects()
{
    for (const Column column : {Name, Priority}) {
        EditingScene scene;
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

void tst_TableWidgetEditing::unchangedTextIsSilent_data()
{
    QTest::addColumn<QString>("typed");
    QTest::newRow("nothing typed") << QString();
    QTest::newRow("typed again") << QStringLiteral("name");
}

void tst_TableWidgetEditing::unchangedTextIsSilent()
{
    QFETCH(QString, typed);
    EditingScene scene;
    QTest::keyClicks(scene.openName(1), typed);

    QTest::keyClick(scene.line(1, Name), Qt::Key_Return);
    QCoreApplication::processEvents();

    QVERIFY(!scene.editor(1, Name));
    QCOMPARE(scene.take(), QStringList());
}

void tst_TableWidgetEditing::slotSeesTheNewText()
{
    EditingScene scene;
    QString seen;
    scene.onValue = [&] { seen = scene.table->text(1, Priority); };
    scene.click(1, Priority);
    QTest::keyClicks(scene.line(1, Priority), QStringLiteral("42"));

    scene.click(0, Group);

    QCOMPARE(seen, QStringLiteral("42"));
}

void tst_TableWidgetEditing::slotOfALineMayRemoveTheRow()
{
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Tab}) {
        EditingScene scene;
        scene.onValue = [&] { scene.table->removeRow(1); };
        QTest::keyClicks(scene.openName(1), QStringLiteral("new"));

        QTest::keyClick(scene.line(1, Name), key);
        runQueued();

        QCOMPARE(scene.take(), QStringList({"1,0 new"}));
        QCOMPARE(scene.table->rowCount(), 2);
        QCOMPARE(scene.table->findChildren<QLineEdit *>().size(), 0);
    }
}

void tst_TableWidgetEditing::slotOfALineMayRemoveTheRowInsideAModalBox()
{
    EditingScene scene;
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

void tst_TableWidgetEditing::typedTextSurvivesAPictureAndANewText()
{
    EditingScene scene;
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

void tst_TableWidgetEditing::untouchedEditorFollowsItsCell()
{
    EditingScene scene;
    scene.click(1, Priority);

    scene.table->setText(1, Priority, QStringLiteral("12"));
    QCOMPARE(scene.line(1, Priority)->text(), QStringLiteral("12"));
    scene.table->setPixmap(1, Priority, picture());
    QTest::keyClicks(scene.line(1, Priority), QStringLiteral("3"));
    scene.click(0, Group);

    QCOMPARE(scene.take(), QStringList({"1,3 3"})); // the typed text replaces the followed one
}

void tst_TableWidgetEditing::untouchedEditorWritesNothingBack()
{
    EditingScene scene;
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

void tst_TableWidgetEditing::textTypedLikeTheNewOneIsSilent()
{
    EditingScene scene;
    QTest::keyClicks(scene.openName(1), QStringLiteral("new"));
    scene.table->setText(1, Name, QStringLiteral("new"));

    scene.click(0, Group);

    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.table->text(1, Name), QStringLiteral("new"));
}

void tst_TableWidgetEditing::gatheredChangesReachTheOpenEditor()
{
    EditingScene scene;
    scene.click(1, Priority);
    {
        const TableWidget::Gathering gathering(*scene.table);
        scene.table->setText(0, Name, QStringLiteral("first"));
        scene.table->setText(1, Priority, QStringLiteral("12"));
        scene.table->setText(2, Priority, QStringLiteral("13"));
    }
    QCOMPARE(scene.line(1, Priority)->text(), QStringLiteral("12"));
}

void tst_TableWidgetEditing::removingRowsDropsTheOpenEdit_data()
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

void tst_TableWidgetEditing::removingRowsDropsTheOpenEdit()
{
    QFETCH(int, column);
    QFETCH(int, removed);
    EditingScene scene;
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

void tst_TableWidgetEditing::appendingRowsKeepsTheOpenEdit()
{
    EditingScene scene;
    QLineEdit *line = scene.openName(1);
    QTest::keyClicks(line, QStringLiteral("typed"));

    scene.table->setNumRows(6);
    runQueued();

    QCOMPARE(scene.line(1, Name), line);
    QCOMPARE(line->text(), QStringLiteral("typed"));
    QCOMPARE(scene.take(), QStringList());
}

// --- The end of the table ---

void tst_TableWidgetEditing::destroyingASilencedFormTellsNothing_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("name") << int(Name);
    QTest::newRow("priority") << int(Priority);
    QTest::newRow("type") << int(Type);
}

void tst_TableWidgetEditing::destroyingASilencedFormTellsNothing()
{
    QFETCH(int, column);
    EditingScene scene;
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

void tst_TableWidgetEditing::destroyingTheTableTellsNothing()
{
    EditingScene scene;
    QTest::keyClicks(scene.openName(1), QStringLiteral("typed"));
    QStringList told;
    connect(scene.table, &TableWidget::valueChanged, this,
            [&](int row, int) { told.append(QString::number(row)); });

    delete scene.table;
    runQueued();

    QCOMPARE(told, QStringList());
}

QTEST_MAIN(tst_TableWidgetEditing)
#include "tst_TableWidgetEditing.moc"
