#include "Brackets.h"
#include "GroupListView.h"
#include "GroupPickerDialog.h"
#include "GroupViewGroup.h"
#include "ListPlaces.h"
#include "StageMap.h"
#include "StubEffect.h"

#include <QCheckBox>
#include <QHeaderView>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

using rehearsal::StageMap;

namespace {

/// No type that a group picker knows.
constexpr auto unknownGroup = static_cast<GroupTypeEnum>(0);

/// Calls back at every change.
class WatchedEffect : public StubEffect
{
public:
    void internalSetProperty(const QString &key, const QString &value) override
    {
        StubEffect::internalSetProperty(key, value);
        if (whenChanged)
            whenChanged();
    }

    std::function<void()> whenChanged;
};

/// A map of groups of every type and an effect whose group is to be picked.
class Stage
{
public:
    Stage()
    {
        add(31, "Group 10", ChasingGroup);
        add(12, "Group 9", ChasingGroup);
        add(7, "Oddity", unknownGroup);
        add(8, "Arch", SynchronizedGroup);
        add(5, "Bulb", LeafGroup);
        effect.with("gid", 99);
        effect.changes.clear();
    }

    void add(quint32 uid, const char *name, GroupTypeEnum type)
    {
        map.addGroup(uid, QString::fromUtf8(name), type, {});
    }

    StageMap map;
    WatchedEffect effect;
};

/// A dialog that is shown; rows and places are those of its list.
class Picker : public GroupPickerDialog
{
public:
    explicit Picker(Stage &stage) : GroupPickerDialog(&stage.map, &stage.effect)
    {
        show();
        if (!QTest::qWaitForWindowActive(this))
            qFatal("the dialog does not become active");
    }

    void clickRow(int row, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(windowHandle(), button, {}, onRow(*this, row));
    }
    void doubleClickRow(int row)
    {
        QTest::mouseDClick(windowHandle(), Qt::LeftButton, {}, onRow(*this, row));
    }
    void clickBelowTheRows()
    {
        QTest::mouseClick(windowHandle(), Qt::LeftButton, {}, belowTheRows(*this));
    }
    void doubleClickBelowTheRows()
    {
        QTest::mouseDClick(windowHandle(), Qt::LeftButton, {}, belowTheRows(*this));
    }
    void clickSyncBox()
    {
        QTest::mouseClick(m_syncBox, Qt::LeftButton, {}, QPoint(8, m_syncBox->height() / 2));
    }
    void clickHeader(int column)
    {
        const QHeaderView *header = m_groupListView->header();
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                          QPoint(header->sectionPosition(column) + 15, header->height() / 2));
    }
};

QStringList column(const GroupPickerDialog &dialog, int column)
{
    QStringList texts;
    for (int row = 0; row < dialog.m_groupListView->topLevelItemCount(); ++row)
        texts.append(dialog.m_groupListView->topLevelItem(row)->text(column));
    return texts;
}

QStringList names(const GroupPickerDialog &dialog)
{
    return column(dialog, 0);
}

/// The selected rows' names; a current row that is not the selected one stands behind a slash.
QString selection(const GroupPickerDialog &dialog)
{
    const QTreeWidget &list = *dialog.m_groupListView;
    QStringList selected;
    for (const QTreeWidgetItem *item : list.selectedItems())
        selected.append(item->text(0));
    const QString text = selected.join(u',');
    const QString current = list.currentItem() ? list.currentItem()->text(0) : QString();
    return current == text ? text : text + u'/' + current;
}

} // namespace

class tst_GroupPickerDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void argumentsReachTheForm();
    void gidColumnIsThereButNotShown();
    void gidColumnStaysHiddenAfterAnotherFilling();

    void groupsAreListedByTypeAndInNaturalOrder();
    void rowsAreGroupItems();
    void nameOfARowIsItsTextAlone();
    void namesakesAreListedByTypeThenUid();
    void firstRowIsSelectedNotThePresentGroup();
    void emptyMapIsHarmless();
    void missingMapIsHarmless();
    void fillingWritesNothing();
    void populateListShowsTheMapAsItIsNow();

    void syncBoxShowsAndHidesSynchronizedGroups();
    void syncBoxWorksByKey();
    void checkingTheBoxByProgramDoesNotFill();
    void headerClickSortsAnewAndIsKept();

    void clickWritesAtOnceAndLeavesTheDialogOpen();
    void everyMouseButtonWrites_data();
    void everyMouseButtonWrites();
    void cancelDoesNotUndoTheClick();
    void clickOnNothingWritesNothing();
    void arrowKeysWriteNothing();
    void clickWritesTheTextOfTheGidColumnAsItStands();
    void doubleClickWritesAndAccepts();
    void doubleClickedWritesWhatNoClickWrote();
    void doubleClickedWritesBeforeTheDialogIsAccepted();
    void doubleClickOnNothingKeepsTheDialogOpen();
    void doubleClickedWithoutAnItemAcceptsAndWritesNothing();

    void okWritesTheSelectedGroup_data();
    void okWritesTheSelectedGroup();
    void okWithoutASelectionWritesNothing();
    void okWritesWhenTheDialogIsHiddenAndBeforeExecReturns();
    void cancelWritesNothing();

    void lostEffectIsNotWritten();
    void missingEffectIsNotWritten();
    void dialogMayBeDeletedWhileItRuns();
    void dialogMayBeDeletedWhenItIsAccepted();
    void removedGroupCanStillBePicked();

    void translationReachesTheTypes();
    void newTranslatorKeepsRowsAndSelection();
    void slotsCanBeConnectedByName();
    void tenThousandGroupsAreListedInOrder();
};

void tst_GroupPickerDialog::init()
{
    // The offscreen platform has a warning of its own.
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

// --- The dialog ---

void tst_GroupPickerDialog::argumentsReachTheForm()
{
    Stage stage;
    QWidget parent;
    const GroupPickerDialog dialog(&stage.map, &stage.effect, &parent,
                                   QStringLiteral("Group Picker"), true, Qt::WindowStaysOnTopHint);
    QCOMPARE(dialog.parentWidget(), &parent);
    QCOMPARE(dialog.objectName(), QStringLiteral("Group Picker"));
    QVERIFY(dialog.isModal());
    QVERIFY(dialog.windowFlags() & Qt::WindowStaysOnTopHint);
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Group Picker"));

    const GroupPickerDialog plain(&stage.map, &stage.effect);
    QCOMPARE(plain.objectName(), QStringLiteral("GroupPickerBase"));
    QVERIFY(!plain.isModal());
}

void tst_GroupPickerDialog::gidColumnIsThereButNotShown()
{
    Stage stage;
    const Picker picker(stage);
    const QHeaderView *header = picker.m_groupListView->header();
    QCOMPARE(header->count(), 3);
    QCOMPARE(header->sectionResizeMode(2), QHeaderView::Interactive);
    QCOMPARE(header->sectionSize(2), 0);
    QCOMPARE(picker.m_groupListView->columnWidth(2), 0);
    QVERIFY(header->sectionSize(0) > 0);
    QVERIFY(header->sectionSize(1) > 0);
    QCOMPARE(column(picker, 2), QStringList({"12", "31", "7"}));
}

void tst_GroupPickerDialog::gidColumnStaysHiddenAfterAnotherFilling()
{
    Stage stage;
    Picker picker(stage);
    picker.clickSyncBox();
    picker.clickHeader(1);
    picker.resize(600, 500);
    QCoreApplication::processEvents();
    QCOMPARE(picker.m_groupListView->columnWidth(2), 0);
}

// --- The list ---

void tst_GroupPickerDialog::groupsAreListedByTypeAndInNaturalOrder()
{
    Stage stage;
    GroupPickerDialog dialog(&stage.map, &stage.effect);
    QCOMPARE(names(dialog), QStringList({"Group 9", "Group 10", "Oddity"}));
    QCOMPARE(column(dialog, 1), QStringList({"Chasing", "Chasing", "Unknown"}));
    QCOMPARE(column(dialog, 2), QStringList({"12", "31", "7"}));

    dialog.m_syncBox->setChecked(true);
    dialog.populateList();
    QCOMPARE(names(dialog), QStringList({"Arch", "Group 9", "Group 10", "Oddity"}));
    QCOMPARE(column(dialog, 1), QStringList({"Synchronized", "Chasing", "Chasing", "Unknown"}));
    QCOMPARE(column(dialog, 2), QStringList({"8", "12", "31", "7"}));
}

void tst_GroupPickerDialog::rowsAreGroupItems()
{
    Stage stage;
    const GroupPickerDialog dialog(&stage.map, &stage.effect);
    QTreeWidgetItem *item = dialog.m_groupListView->topLevelItem(1);
    QCOMPARE(item->type(), 2004);
    const auto *group = dynamic_cast<GroupViewGroup *>(item);
    QVERIFY(group);
    QCOMPARE(group->getUID(), 31U);
    QCOMPARE(group->getType(), ChasingGroup);
    QVERIFY(!group->getEmpty());
}

void tst_GroupPickerDialog::nameOfARowIsItsTextAlone()
{
    Stage stage;
    const GroupPickerDialog dialog(&stage.map, &stage.effect);
    const auto *group = dynamic_cast<GroupViewGroup *>(dialog.m_groupListView->topLevelItem(0));
    QVERIFY(group);
    QCOMPARE(group->text(0), QStringLiteral("Group 9"));
    QCOMPARE(group->getName(), QString());
}

void tst_GroupPickerDialog::namesakesAreListedByTypeThenUid()
{
    StageMap map;
    map.addGroup(1, QStringLiteral("Same"), unknownGroup, {});
    map.addGroup(9, QStringLiteral("Same"), ChasingGroup, {});
    map.addGroup(10, QStringLiteral("Same"), ChasingGroup, {});
    const GroupPickerDialog dialog(&map, nullptr);
    QCOMPARE(column(dialog, 2), QStringList({"10", "9", "1"}));
}

void tst_GroupPickerDialog::firstRowIsSelectedNotThePresentGroup()
{
    Stage stage;
    stage.effect.with("gid", 31);
    Picker picker(stage);
    QCOMPARE(selection(picker), QStringLiteral("Group 9"));
    picker.clickRow(2);
    QCOMPARE(selection(picker), QStringLiteral("Oddity"));
    picker.clickSyncBox();
    QCOMPARE(selection(picker), QStringLiteral("Arch"));
}

void tst_GroupPickerDialog::emptyMapIsHarmless()
{
    StageMap map;
    StubEffect effect;
    GroupPickerDialog dialog(&map, &effect);
    QCOMPARE(dialog.m_groupListView->topLevelItemCount(), 0);
    QCOMPARE(dialog.m_groupListView->currentItem(), nullptr);
    dialog.handleSyncClicked();
    dialog.handleOkButtonClicked();
    dialog.handleClicked(nullptr);
    QCOMPARE(effect.changes, QStringList());
}

void tst_GroupPickerDialog::missingMapIsHarmless()
{
    StubEffect effect;
    GroupPickerDialog dialog(nullptr, &effect);
    dialog.handleSyncClicked();
    dialog.handleOkButtonClicked();
    QCOMPARE(dialog.m_groupListView->topLevelItemCount(), 0);
    QCOMPARE(effect.changes, QStringList());
}

void tst_GroupPickerDialog::fillingWritesNothing()
{
    Stage stage;
    Picker picker(stage);
    picker.clickSyncBox();
    picker.clickHeader(1);
    QCOMPARE(stage.effect.changes, QStringList());
}

void tst_GroupPickerDialog::populateListShowsTheMapAsItIsNow()
{
    Stage stage;
    GroupPickerDialog dialog(&stage.map, &stage.effect);
    stage.map.removeGroup(12);
    stage.add(40, "Group 2", ChasingGroup);
    QCOMPARE(names(dialog), QStringList({"Group 9", "Group 10", "Oddity"}));
    dialog.populateList();
    QCOMPARE(names(dialog), QStringList({"Group 2", "Group 10", "Oddity"}));
}

void tst_GroupPickerDialog::syncBoxShowsAndHidesSynchronizedGroups()
{
    Stage stage;
    Picker picker(stage);
    QCOMPARE(names(picker), QStringList({"Group 9", "Group 10", "Oddity"}));
    picker.clickSyncBox();
    QVERIFY(picker.m_syncBox->isChecked());
    QCOMPARE(names(picker), QStringList({"Arch", "Group 9", "Group 10", "Oddity"}));
    picker.clickSyncBox();
    QVERIFY(!picker.m_syncBox->isChecked());
    QCOMPARE(names(picker), QStringList({"Group 9", "Group 10", "Oddity"}));
}

void tst_GroupPickerDialog::syncBoxWorksByKey()
{
    Stage stage;
    Picker picker(stage);
    picker.m_syncBox->setFocus();
    QTest::keyClick(picker.windowHandle(), Qt::Key_Space);
    QCOMPARE(names(picker), QStringList({"Arch", "Group 9", "Group 10", "Oddity"}));
}

void tst_GroupPickerDialog::checkingTheBoxByProgramDoesNotFill()
{
    Stage stage;
    const GroupPickerDialog dialog(&stage.map, &stage.effect);
    dialog.m_syncBox->setChecked(true);
    QCOMPARE(names(dialog), QStringList({"Group 9", "Group 10", "Oddity"}));
}

void tst_GroupPickerDialog::headerClickSortsAnewAndIsKept()
{
    Stage stage;
    stage.add(50, "Group 1", unknownGroup);
    Picker picker(stage);
    QCOMPARE(names(picker), QStringList({"Group 1", "Group 9", "Group 10", "Oddity"}));
    picker.clickHeader(0);
    QCOMPARE(names(picker), QStringList({"Oddity", "Group 10", "Group 9", "Group 1"}));
    picker.clickHeader(1);
    QCOMPARE(names(picker), QStringList({"Group 9", "Group 10", "Group 1", "Oddity"}));
    picker.clickSyncBox();
    QCOMPARE(names(picker), QStringList({"Group 9", "Group 10", "Arch", "Group 1", "Oddity"}));
    QCOMPARE(selection(picker), QStringLiteral("Group 9"));
}

// --- Picking ---

void tst_GroupPickerDialog::clickWritesAtOnceAndLeavesTheDialogOpen()
{
    Stage stage;
    Picker picker(stage);
    picker.clickRow(1);
    QCOMPARE(stage.effect.text("gid"), QStringLiteral("31"));
    QVERIFY(picker.isVisible());
    picker.clickRow(2);
    QCOMPARE(stage.effect.text("gid"), QStringLiteral("7"));
    QVERIFY(picker.isVisible());
    QCOMPARE(stage.effect.changes, QStringList({"gid=31", "gid=7"}));
}

void tst_GroupPickerDialog::everyMouseButtonWrites_data()
{
    QTest::addColumn<int>("button");
    QTest::newRow("left") << int(Qt::LeftButton);
    QTest::newRow("right") << int(Qt::RightButton);
    QTest::newRow("middle") << int(Qt::MiddleButton);
}

void tst_GroupPickerDialog::everyMouseButtonWrites()
{
    QFETCH(int, button);
    Stage stage;
    Picker picker(stage);
    picker.clickRow(2, static_cast<Qt::MouseButton>(button));
    QCOMPARE(stage.effect.changes, QStringList({"gid=7"}));
    QVERIFY(picker.isVisible());
}

void tst_GroupPickerDialog::cancelDoesNotUndoTheClick()
{
    Stage stage;
    Picker picker(stage);
    picker.clickRow(1);
    QTest::mouseClick(picker.buttonCancel, Qt::LeftButton);
    QVERIFY(!picker.isVisible());
    QCOMPARE(picker.result(), int(QDialog::Rejected));
    QCOMPARE(stage.effect.changes, QStringList({"gid=31"}));
}

void tst_GroupPickerDialog::clickOnNothingWritesNothing()
{
    Stage stage;
    Picker picker(stage);
    picker.clickBelowTheRows();
    QCOMPARE(stage.effect.changes, QStringList());
    QVERIFY(picker.isVisible());
}

void tst_GroupPickerDialog::arrowKeysWriteNothing()
{
    Stage stage;
    Picker picker(stage);
    picker.m_groupListView->setFocus();
    QTest::keyClick(picker.windowHandle(), Qt::Key_Down);
    QCOMPARE(selection(picker), QStringLiteral("Group 10"));
    QCOMPARE(stage.effect.changes, QStringList());
}

void tst_GroupPickerDialog::clickWritesTheTextOfTheGidColumnAsItStands()
{
    Stage stage;
    Picker picker(stage);
    picker.m_groupListView->topLevelItem(1)->setText(2, QStringLiteral(" x 1 "));
    picker.clickRow(1);
    QCOMPARE(stage.effect.changes, QStringList({"gid= x 1 "}));
}

void tst_GroupPickerDialog::doubleClickWritesAndAccepts()
{
    Stage stage;
    Picker picker(stage);
    const QSignalSpy accepted(&picker, &QDialog::accepted);
    picker.doubleClickRow(1);
    QCOMPARE(stage.effect.changes, QStringList({"gid=31"}));
    QVERIFY(!picker.isVisible());
    QCOMPARE(picker.result(), int(QDialog::Accepted));
    QCOMPARE(accepted.count(), 1);
}

void tst_GroupPickerDialog::doubleClickedWritesWhatNoClickWrote()
{
    Stage stage;
    GroupPickerDialog dialog(&stage.map, &stage.effect);
    dialog.handleDoubleClicked(dialog.m_groupListView->topLevelItem(1));
    QCOMPARE(stage.effect.changes, QStringList({"gid=31"}));
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

void tst_GroupPickerDialog::doubleClickedWritesBeforeTheDialogIsAccepted()
{
    Stage stage;
    Picker picker(stage);
    QStringList steps;
    stage.effect.whenChanged = [&] {
        steps.append(picker.isVisible() ? QStringLiteral("written while shown")
                                        : QStringLiteral("written while hidden"));
    };
    connect(&picker, &QDialog::accepted, this, [&] { steps.append(QStringLiteral("accepted")); });
    picker.handleDoubleClicked(picker.m_groupListView->topLevelItem(1));
    QCOMPARE(steps, QStringList({"written while shown", "accepted"}));
}

void tst_GroupPickerDialog::doubleClickOnNothingKeepsTheDialogOpen()
{
    Stage stage;
    Picker picker(stage);
    picker.doubleClickBelowTheRows();
    QVERIFY(picker.isVisible());
    QCOMPARE(stage.effect.changes, QStringList());
}

void tst_GroupPickerDialog::doubleClickedWithoutAnItemAcceptsAndWritesNothing()
{
    Stage stage;
    Picker picker(stage);
    picker.handleDoubleClicked(nullptr);
    QVERIFY(!picker.isVisible());
    QCOMPARE(picker.result(), int(QDialog::Accepted));
    QCOMPARE(stage.effect.changes, QStringList());
}

void tst_GroupPickerDialog::okWritesTheSelectedGroup_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("by mouse") << 0;
    QTest::newRow("by Return") << int(Qt::Key_Return);
}

void tst_GroupPickerDialog::okWritesTheSelectedGroup()
{
    QFETCH(int, key);
    Stage stage;
    Picker picker(stage);
    picker.m_groupListView->setFocus();
    QTest::keyClick(picker.windowHandle(), Qt::Key_Down);
    if (key)
        QTest::keyClick(picker.windowHandle(), static_cast<Qt::Key>(key));
    else
        QTest::mouseClick(picker.buttonOk, Qt::LeftButton);
    QVERIFY(!picker.isVisible());
    QCOMPARE(picker.result(), int(QDialog::Accepted));
    QCOMPARE(stage.effect.changes, QStringList({"gid=31"}));
}

void tst_GroupPickerDialog::okWithoutASelectionWritesNothing()
{
    Stage stage;
    Picker picker(stage);
    picker.m_groupListView->clearSelection();
    QTest::mouseClick(picker.buttonOk, Qt::LeftButton);
    QCOMPARE(picker.result(), int(QDialog::Accepted));
    QCOMPARE(stage.effect.changes, QStringList());
}

void tst_GroupPickerDialog::okWritesWhenTheDialogIsHiddenAndBeforeExecReturns()
{
    Stage stage;
    GroupPickerDialog dialog(&stage.map, &stage.effect);
    QStringList steps;
    stage.effect.whenChanged = [&] {
        steps.append(dialog.isVisible() ? QStringLiteral("written while shown")
                                        : QStringLiteral("written while hidden"));
    };
    connect(&dialog, &QDialog::accepted, this, [&] { steps.append(QStringLiteral("accepted")); });
    QTimer::singleShot(0, &dialog, [&] { QTest::mouseClick(dialog.buttonOk, Qt::LeftButton); });

    const int result = dialog.exec();
    steps.append(QStringLiteral("exec returned"));

    QCOMPARE(result, int(QDialog::Accepted));
    QCOMPARE(steps, QStringList({"accepted", "written while hidden", "exec returned"}));
    QCOMPARE(stage.effect.text("gid"), QStringLiteral("12"));
}

void tst_GroupPickerDialog::cancelWritesNothing()
{
    Stage stage;
    Picker picker(stage);
    QTest::keyClick(picker.windowHandle(), Qt::Key_Down);
    QTest::keyClick(picker.windowHandle(), Qt::Key_Escape);
    QVERIFY(!picker.isVisible());
    QCOMPARE(picker.result(), int(QDialog::Rejected));
    QCOMPARE(stage.effect.changes, QStringList());
}

// --- What may go away ---

void tst_GroupPickerDialog::lostEffectIsNotWritten()
{
    Stage stage;
    auto effect = std::make_unique<StubEffect>();
    GroupPickerDialog dialog(&stage.map, effect.get());
    effect.reset();
    dialog.handleClicked(dialog.m_groupListView->topLevelItem(1));
    dialog.handleOkButtonClicked();
    dialog.handleDoubleClicked(dialog.m_groupListView->topLevelItem(1));
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

void tst_GroupPickerDialog::missingEffectIsNotWritten()
{
    Stage stage;
    GroupPickerDialog dialog(&stage.map, nullptr);
    QCOMPARE(names(dialog), QStringList({"Group 9", "Group 10", "Oddity"}));
    dialog.handleDoubleClicked(dialog.m_groupListView->topLevelItem(0));
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

void tst_GroupPickerDialog::dialogMayBeDeletedWhileItRuns()
{
    Stage stage;
    auto parent = std::make_unique<QWidget>();
    const QPointer<GroupPickerDialog> dialog = new GroupPickerDialog(
        &stage.map, &stage.effect, parent.get(), QStringLiteral("Group Picker"), true);
    QTimer::singleShot(0, this, [&] { parent.reset(); });
    QCOMPARE(dialog->exec(), int(QDialog::Rejected));
    QVERIFY(!dialog);
    QCOMPARE(stage.effect.changes, QStringList());
}

void tst_GroupPickerDialog::dialogMayBeDeletedWhenItIsAccepted()
{
    Stage stage;
    const QPointer<Picker> byDoubleClick = new Picker(stage);
    connect(byDoubleClick, &QDialog::finished, this, [&] { delete byDoubleClick; });
    byDoubleClick->doubleClickRow(1);
    QVERIFY(!byDoubleClick);
    QCOMPARE(stage.effect.changes, QStringList({"gid=31"}));
}

void tst_GroupPickerDialog::removedGroupCanStillBePicked()
{
    Stage stage;
    Picker picker(stage);
    stage.map.removeGroup(31);
    picker.clickRow(1);
    QCOMPARE(stage.effect.changes, QStringList({"gid=31"}));
}

// --- Languages, names, numbers ---

void tst_GroupPickerDialog::translationReachesTheTypes()
{
    Stage stage;
    Brackets brackets;
    QVERIFY(QCoreApplication::installTranslator(&brackets));
    GroupPickerDialog dialog(&stage.map, &stage.effect);
    dialog.m_syncBox->setChecked(true);
    dialog.populateList();
    QCoreApplication::removeTranslator(&brackets);
    QCOMPARE(column(dialog, 1),
             QStringList({"[Synchronized]", "[Chasing]", "[Chasing]", "[Unknown]"}));
    QCOMPARE(names(dialog), QStringList({"Arch", "Group 9", "Group 10", "Oddity"}));
}

void tst_GroupPickerDialog::newTranslatorKeepsRowsAndSelection()
{
    Stage stage;
    Picker picker(stage);
    picker.clickHeader(1);
    picker.clickHeader(1);
    picker.clickRow(2);
    QCOMPARE(names(picker), QStringList({"Oddity", "Group 10", "Group 9"}));
    stage.effect.changes.clear();

    Brackets brackets;
    QVERIFY(QCoreApplication::installTranslator(&brackets));
    QTRY_COMPARE(picker.windowTitle(), QStringLiteral("[Group Picker]"));
    QCOMPARE(column(picker, 1), QStringList({"[Unknown]", "[Chasing]", "[Chasing]"}));
    QCOMPARE(names(picker), QStringList({"Oddity", "Group 10", "Group 9"}));
    QCOMPARE(selection(picker), QStringLiteral("Group 9"));
    QCOMPARE(picker.m_groupListView->columnWidth(2), 0);
    QCoreApplication::removeTranslator(&brackets);
    QTRY_COMPARE(column(picker, 1), QStringList({"Unknown", "Chasing", "Chasing"}));
    QCOMPARE(stage.effect.changes, QStringList());
}

void tst_GroupPickerDialog::slotsCanBeConnectedByName()
{
    const QMetaObject &meta = GroupPickerDialog::staticMetaObject;
    QCOMPARE(meta.className(), "GroupPickerDialog");
    QCOMPARE(meta.superClass()->className(), "GroupPickerBase");
    for (const char *slot :
         {"handleClicked(QTreeWidgetItem*)", "handleDoubleClicked(QTreeWidgetItem*)",
          "handleOkButtonClicked()", "handleSyncClicked()", "languageChange()"})
        QVERIFY2(meta.indexOfSlot(slot) >= 0, slot);
}

void tst_GroupPickerDialog::tenThousandGroupsAreListedInOrder()
{
    constexpr int count = 10000;
    StageMap map;
    for (int i = 1; i <= count; ++i) {
        // 7919 and 10000 have no common divisor: every number comes once, out of order.
        map.addGroup(static_cast<quint32>(i), QStringLiteral("Group %1").arg(i * 7919 % count),
                     ChasingGroup, {});
    }
    const GroupPickerDialog dialog(&map, nullptr);
    QCOMPARE(dialog.m_groupListView->topLevelItemCount(), count);
    for (int row = 0; row < count; ++row)
        QCOMPARE(dialog.m_groupListView->topLevelItem(row)->text(0),
                 QStringLiteral("Group %1").arg(row));
}

QTEST_MAIN(tst_GroupPickerDialog)

#include "tst_GroupPickerDialog.moc"
