#include "EditingScene.h"

#include <QApplication>
#include <QComboBox>
#include <QMessageBox>
#include <QPointer>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>
#include <QtTest/qtestspontaneevent.h>

using meta::ComboTableItem;
using meta::TableWidget;

namespace {

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

} // namespace

class tst_TableWidgetChoosers : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setDoubleClickInterval(60); }
    void init();

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
};

// Any warning fails, but for what the platform of the tests says of itself.
void tst_TableWidgetChoosers::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

void tst_TableWidgetChoosers::chooserStartsAtTheFirstText()
{
    TableWidget table;
    const ComboTableItem full(&table, {"Wave", "Cycle"});
    const ComboTableItem empty(&table, {});

    QCOMPARE(full.text(), QStringLiteral("Wave"));
    QCOMPARE(full.key(), QStringLiteral("Wave"));
    QCOMPARE(empty.text(), QString());
}

void tst_TableWidgetChoosers::textNotInTheListChangesNothing()
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

void tst_TableWidgetChoosers::openChooserFollowsItsCell()
{
    EditingScene scene;
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

void tst_TableWidgetChoosers::chooserListsItsTexts()
{
    EditingScene scene;
    const QComboBox *chooser = scene.openChooser(1);
    QVERIFY(chooser);
    QVERIFY(!chooser->isEditable());
    QCOMPARE(chooser->count(), 3);
    QCOMPARE(chooser->itemText(0), QStringLiteral("Cycle"));
    QCOMPARE(chooser->itemText(2), QStringLiteral("Wave"));
}

void tst_TableWidgetChoosers::choiceByMouseIsToldAtOnce()
{
    EditingScene scene;
    QComboBox *chooser = scene.openChooser(1);

    choose(chooser, 2);

    QCOMPARE(scene.take(), QStringList({"1,1 Wave"}));
    QCOMPARE(scene.chooser(1), chooser);
}

void tst_TableWidgetChoosers::choiceOfTheSameEntryIsToldToo()
{
    EditingScene scene;
    QComboBox *chooser = scene.openChooser(1);

    choose(chooser, 0);
    choose(chooser, 0);

    QCOMPARE(scene.take(), QStringList({"1,1 Cycle", "1,1 Cycle"}));
}

void tst_TableWidgetChoosers::choiceByKeyIsToldAtOnce()
{
    EditingScene scene;
    QComboBox *chooser = scene.openChooser(1);
    QVERIFY(scene.isActive);
    QVERIFY(chooser->hasFocus());

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    QCOMPARE(scene.take(), QStringList({"1,1 Fade"}));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_W);
    QCOMPARE(scene.take(), QStringList({"1,1 Wave"}));
}

void tst_TableWidgetChoosers::choiceInTheListByKeyIsTold()
{
    EditingScene scene;
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

void tst_TableWidgetChoosers::leavingAChooserTellsNothing()
{
    EditingScene scene;
    chooseNext(scene.openChooser(1));
    QCOMPARE(scene.take(), QStringList({"1,1 Fade"}));

    scene.click(2, Group);
    runQueued();

    QVERIFY(!scene.editor(1, Type));
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.table->text(1, Type), QStringLiteral("Fade"));
}

void tst_TableWidgetChoosers::chooserStaysOpen_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("when the focus goes") << Qt::Key_unknown;
    QTest::newRow("at Escape") << Qt::Key_Escape;
    QTest::newRow("at Return") << Qt::Key_Return;
    QTest::newRow("at Enter") << Qt::Key_Enter;
}

void tst_TableWidgetChoosers::chooserStaysOpen()
{
    QFETCH(Qt::Key, key);
    EditingScene scene;
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

void tst_TableWidgetChoosers::slotOfAChoiceMayOpenAModalBox()
{
    EditingScene scene;
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

void tst_TableWidgetChoosers::slotOfAChoiceMayUndoIt()
{
    EditingScene scene;
    scene.onValue = [&] {
        static_cast<ComboTableItem *>(scene.table->item(1, Type))->setCurrentItem("Cycle");
    };
    QComboBox *chooser = scene.openChooser(1);

    choose(chooser, 2);

    QCOMPARE(scene.take(), QStringList({"1,1 Wave"}));
    QCOMPARE(scene.table->text(1, Type), QStringLiteral("Cycle"));
    QCOMPARE(chooser->currentText(), QStringLiteral("Cycle"));
}

void tst_TableWidgetChoosers::slotOfAChoiceMayRemoveTheRow()
{
    EditingScene scene;
    scene.onValue = [&] { scene.table->removeRow(1); };
    const QPointer<QComboBox> chooser = scene.openChooser(1);

    choose(chooser, 2);
    QCOMPARE(scene.table->rowCount(), 2);
    runQueued();

    QVERIFY(!chooser);
    QCOMPARE(scene.take(), QStringList({"1,1 Wave"}));
}

void tst_TableWidgetChoosers::slotOfAChoiceMayRemoveTheRowInsideAModalBox()
{
    EditingScene scene;
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

void tst_TableWidgetChoosers::slotOfAChoiceMayDeleteTheTable_data()
{
    QTest::addColumn<bool>("byMouse");
    QTest::newRow("by mouse") << true;
    QTest::newRow("by key") << false;
}

void tst_TableWidgetChoosers::slotOfAChoiceMayDeleteTheTable()
{
    QFETCH(bool, byMouse);
    EditingScene scene;
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

void tst_TableWidgetChoosers::slotOfAChoiceMayDeleteTheTableInsideAModalBox()
{
    EditingScene scene;
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

void tst_TableWidgetChoosers::wheelScrollsTheTable()
{
    EditingScene scene(60);
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

void tst_TableWidgetChoosers::emptyChooserOpensAndTellsNothing()
{
    EditingScene scene;
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

void tst_TableWidgetChoosers::chooserCoversItsCell()
{
    EditingScene scene;
    scene.table->setPixmap(1, Type, picture());
    const QComboBox *chooser = scene.openChooser(1);

    QCOMPARE(chooser->geometry(), scene.table->visualRect(scene.table->model()->index(1, Type)));
}

QTEST_MAIN(tst_TableWidgetChoosers)
#include "tst_TableWidgetChoosers.moc"
