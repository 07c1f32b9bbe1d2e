#include "EditTraces.h"
#include "EditorStage.h"
#include "EffectColumns.h"
#include "LogCapture.h"
#include "PickerUser.h"

#include <QCheckBox>
#include <QRegularExpression>

#include <optional>

using namespace meta;

class tst_TableEditsGroups : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    void leftClickOnAGroupOpensThePicker();
    void rightClickOnAGroupDoesNothing();
    void middleClickOnAGroupDoesNothing();
    void leftClickOnThePriorityDoesNothing();
    void leftClickElsewhereOpensNoPicker_data();
    void leftClickElsewhereOpensNoPicker();
    void acceptedGroupIsStoredAndShown_data();
    void acceptedGroupIsStoredAndShown();
    void cancelRestoresTheGroupAfterOthersWereClicked_data();
    void cancelRestoresTheGroupAfterOthersWereClicked();
    void cancelWritesTheFormerGroupInDecimal_data();
    void cancelWritesTheFormerGroupInDecimal();
    void groupThatVanishesInThePickerLeavesTheCell();
    void pickingRunsNoPassAndLeavesTheDirtyFlag_data();
    void pickingRunsNoPassAndLeavesTheDirtyFlag();
    void pickedGroupIsShownInTheRowWhereverItMoved();
    void pickedGroupIsShownInNoRowWhenItsOwnIsGone();
    void pickedGroupIsShownInTheRowThatWasMadeAnew();
    void groupOfARepeatedEidIsShownInTheClickedRow();
    void pickerIsGoneAfterwards();

private:
    int passes() const { return passesIn(*m_debugLines); }

    std::optional<LogCapture> m_debugLines;
};

void tst_TableEditsGroups::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    m_debugLines.emplace(QtDebugMsg);
}

void tst_TableEditsGroups::leftClickOnAGroupOpensThePicker()
{
    EditorStage stage;
    stage.add(1);
    MetaWidget &form = stage.open();
    const PickerUser user([&form](GroupPickerDialog &dialog) {
        QCOMPARE(dialog.objectName(), QStringLiteral("Group Picker"));
        QCOMPARE(dialog.parentWidget(), &form);
        QVERIFY(dialog.isModal());
        QCOMPARE(dialog.windowFlags(), QDialog(&form).windowFlags());
        QVERIFY(dialog.m_groupListView->topLevelItemCount() > 0);
    });

    stage.click(0, GroupColumn);

    QCOMPARE(user.pickers(), 1);
}

void tst_TableEditsGroups::rightClickOnAGroupDoesNothing()
{
    EditorStage stage;
    stage.add(1);
    stage.open();
    const PickerUser user(PickerUser::picking(QStringLiteral("Windows")));

    stage.click(0, GroupColumn, {}, Qt::RightButton);
    stage.click(0, GroupColumn, {}, Qt::RightButton);

    QCOMPARE(user.pickers(), 0);
    QCOMPARE(stage.effect.getEffect(1)->getPropertyString("gid"), QString());
}

void tst_TableEditsGroups::middleClickOnAGroupDoesNothing()
{
    EditorStage stage;
    stage.add(1);
    stage.open();
    const PickerUser user(PickerUser::picking(QStringLiteral("Windows")));

    stage.click(0, GroupColumn, {}, Qt::MiddleButton);
    stage.effect.handleClicked(0, GroupColumn, Qt::MiddleButton, {});
    stage.effect.handleClicked(0, GroupColumn, Qt::NoButton, {});
    stage.effect.handleClicked(0, GroupColumn, Qt::LeftButton | Qt::RightButton, {});

    QCOMPARE(user.pickers(), 0);
    QCOMPARE(stage.effect.getEffect(1)->getPropertyString("gid"), QString());
}

void tst_TableEditsGroups::leftClickOnThePriorityDoesNothing()
{
    EditorStage stage;
    stage.add(1);
    stage.open();
    stage.selectEid(1);
    const QStringList before = savedChildren(stage.effect);
    const PickerUser user(PickerUser::picking(QStringLiteral("Windows")));

    stage.click(0, PriorityColumn);
    stage.click(0, PriorityColumn);

    QCOMPARE(user.pickers(), 0);
    QCOMPARE(savedChildren(stage.effect), before);
}

void tst_TableEditsGroups::leftClickElsewhereOpensNoPicker_data()
{
    QTest::addColumn<int>("column");

    for (int column = -1; column <= 9; ++column) {
        if (column != GroupColumn)
            QTest::addRow("column %d", column) << column;
    }
}

void tst_TableEditsGroups::leftClickElsewhereOpensNoPicker()
{
    QFETCH(int, column);
    EditorStage stage;
    stage.add(1);
    stage.open();
    const PickerUser user(PickerUser::picking(QStringLiteral("Windows")));

    if (column >= NameColumn && column <= FadeOutColumn)
        stage.click(0, column);
    stage.effect.handleClicked(0, column, Qt::LeftButton, {});

    QCOMPARE(user.pickers(), 0);
    QCOMPARE(stage.effect.getEffect(1)->getPropertyString("gid"), QString());
}

void tst_TableEditsGroups::acceptedGroupIsStoredAndShown_data()
{
    QTest::addColumn<int>("how");
    QTest::addColumn<QString>("gid");
    QTest::addColumn<QString>("shown");

    QTest::addRow("click and Return") << 0 << "11"
                                      << "Windows";
    QTest::addRow("double click") << 1 << "11"
                                  << "Windows";
    QTest::addRow("the first group, by Return alone") << 2 << "10"
                                                      << "Roof";
    QTest::addRow("a synchronized group") << 3 << "12"
                                          << "Door";
}

void tst_TableEditsGroups::acceptedGroupIsStoredAndShown()
{
    QFETCH(int, how);
    QFETCH(QString, gid);
    QFETCH(QString, shown);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.add(2)->with("gid", 10);
    stage.open();
    const int row = stage.rowOf(1);
    QStringList expected = stage.row(row);
    expected[GroupColumn] = shown;
    const QStringList other = stage.row(stage.rowOf(2));
    const PickerUser user([how](GroupPickerDialog &dialog) {
        if (how == 0 || how == 1)
            PickerUser::click(dialog, QStringLiteral("Windows"));
        if (how == 3) {
            QTest::mouseClick(dialog.m_syncBox, Qt::LeftButton, {},
                              {8, dialog.m_syncBox->height() / 2});
            PickerUser::click(dialog, QStringLiteral("Door"));
        }
        if (how == 1)
            PickerUser::doubleClick(dialog, QStringLiteral("Windows"));
        else
            PickerUser::accept(dialog);
    });

    stage.click(row, GroupColumn);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(child->text("gid"), gid);
    QCOMPARE(stage.row(row), expected);
    QCOMPARE(stage.row(stage.rowOf(2)), other);
    QCOMPARE(stage.effect.getEffect(2)->getPropertyString("gid"), QStringLiteral("10"));
    CHECK_SANITY(stage);
}

void tst_TableEditsGroups::cancelRestoresTheGroupAfterOthersWereClicked_data()
{
    QTest::addColumn<int>("how");

    QTest::addRow("Escape") << 0;
    QTest::addRow("Cancel button") << 1;
    QTest::addRow("closing the window") << 2;
}

void tst_TableEditsGroups::cancelRestoresTheGroupAfterOthersWereClicked()
{
    QFETCH(int, how);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("gid", 12);
    stage.open();
    const QStringList row = stage.row(0);
    QCOMPARE(row.at(GroupColumn), QStringLiteral("Door"));
    child->changes.clear();
    const PickerUser user([how](GroupPickerDialog &dialog) {
        PickerUser::click(dialog, QStringLiteral("Windows"));
        PickerUser::click(dialog, QStringLiteral("Roof"));
        switch (how) {
        case 0: PickerUser::cancel(dialog); break;
        case 1: QTest::mouseClick(dialog.buttonCancel, Qt::LeftButton); break;
        default: dialog.close(); break;
        }
    });

    stage.effect.handleClicked(0, GroupColumn, Qt::LeftButton, {});

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(child->changes, QStringList({"gid=11", "gid=10", "gid=12"}));
    QCOMPARE(stage.row(0), row);
}

void tst_TableEditsGroups::cancelWritesTheFormerGroupInDecimal_data()
{
    QTest::addColumn<QString>("former");
    QTest::addColumn<QString>("written");

    QTest::addRow("a group") << "12"
                             << "12";
    QTest::addRow("a uid of 32 bits") << "4294967295"
                                      << "4294967295";
    QTest::addRow("leading zeros") << "0012"
                                   << "12";
    QTest::addRow("no number") << "abc"
                               << "0";
    QTest::addRow("empty") << ""
                           << "0";
}

void tst_TableEditsGroups::cancelWritesTheFormerGroupInDecimal()
{
    QFETCH(QString, former);
    QFETCH(QString, written);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("gid", former);
    stage.open();
    const PickerUser user;

    stage.click(0, GroupColumn);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(child->text("gid"), written);
}

void tst_TableEditsGroups::groupThatVanishesInThePickerLeavesTheCell()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("gid", 10);
    stage.open();
    const QStringList row = stage.row(0);
    const PickerUser user([&stage](GroupPickerDialog &dialog) {
        PickerUser::click(dialog, QStringLiteral("Windows"));
        stage.map.removeGroup(11);
        PickerUser::accept(dialog);
    });

    stage.click(0, GroupColumn);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(child->text("gid"), QStringLiteral("11"));
    QCOMPARE(stage.row(0), row);
}

void tst_TableEditsGroups::pickingRunsNoPassAndLeavesTheDirtyFlag_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<bool>("dirty");

    for (const bool dirty : {false, true}) {
        const char *state = dirty ? "dirty" : "clean";
        QTest::addRow("accepted, %s", state) << "Windows" << dirty;
        QTest::addRow("cancelled, %s", state) << "" << dirty;
    }
}

void tst_TableEditsGroups::pickingRunsNoPassAndLeavesTheDirtyFlag()
{
    QFETCH(QString, group);
    QFETCH(bool, dirty);
    EditorStage stage;
    stage.add(1);
    stage.open();
    stage.effect.setOwnDirty(dirty);
    const int before = passes();
    const PickerUser user(group.isEmpty() ? PickerUser::Answer() : PickerUser::picking(group));

    stage.effect.handleClicked(0, GroupColumn, Qt::LeftButton, {});

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(passes(), before);
    QCOMPARE(stage.effect.ownDirty(), dirty);
}

void tst_TableEditsGroups::pickedGroupIsShownInTheRowWhereverItMoved()
{
    EditorStage stage;
    for (quint32 eid = 1; eid <= 3; ++eid)
        stage.add(eid);
    stage.open();
    const int row = stage.rowOf(3);
    const PickerUser user([&stage](GroupPickerDialog &dialog) {
        stage.effect.handleHeaderClicked(NameColumn);
        stage.effect.removeFromTable(1);
        PickerUser::picking(QStringLiteral("Windows"))(dialog);
    });

    stage.click(row, GroupColumn);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(stage.column(EidColumn), QStringList({"2", "3"}));
    QCOMPARE(stage.column(GroupColumn), QStringList({"None", "Windows"}));
}

void tst_TableEditsGroups::pickedGroupIsShownInNoRowWhenItsOwnIsGone()
{
    EditorStage stage;
    for (quint32 eid = 1; eid <= 3; ++eid)
        stage.add(eid);
    stage.open();
    const PickerUser user([&stage](GroupPickerDialog &dialog) {
        stage.effect.removeFromTable(2);
        PickerUser::picking(QStringLiteral("Windows"))(dialog);
    });

    stage.click(stage.rowOf(2), GroupColumn);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(stage.effect.getEffect(2)->getPropertyString("gid"), QStringLiteral("11"));
    QCOMPARE(stage.column(GroupColumn), QStringList({"None", "None"}));
}

void tst_TableEditsGroups::pickedGroupIsShownInTheRowThatWasMadeAnew()
{
    EditorStage stage;
    stage.add(1);
    stage.add(2);
    stage.open();
    const PickerUser user([&stage](GroupPickerDialog &dialog) {
        stage.effect.refreshMetaWidget();
        PickerUser::picking(QStringLiteral("Windows"))(dialog);
    });

    stage.click(stage.rowOf(2), GroupColumn);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(stage.table().text(stage.rowOf(2), GroupColumn), QStringLiteral("Windows"));
    QCOMPARE(stage.table().text(stage.rowOf(1), GroupColumn), QStringLiteral("None"));
    CHECK_SANITY(stage);
}

void tst_TableEditsGroups::groupOfARepeatedEidIsShownInTheClickedRow()
{
    EditorStage stage;
    WidgetStub *first = stage.add(5);
    WidgetStub *last = stage.add(5);
    stage.open();
    const PickerUser user(PickerUser::picking(QStringLiteral("Windows")));

    stage.click(1, GroupColumn);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(first->text("gid"), QString());
    QCOMPARE(last->text("gid"), QStringLiteral("11"));
    QCOMPARE(stage.column(GroupColumn), QStringList({"None", "Windows"}));
}

void tst_TableEditsGroups::pickerIsGoneAfterwards()
{
    EditorStage stage;
    stage.add(1);
    stage.open();
    for (const QString &group : {QStringLiteral("Windows"), QString()}) {
        QPointer<GroupPickerDialog> seen;
        const PickerUser user([&](GroupPickerDialog &dialog) {
            seen = &dialog;
            if (!group.isEmpty())
                PickerUser::picking(group)(dialog);
        });
        stage.effect.handleClicked(0, GroupColumn, Qt::LeftButton, {});
        QCOMPARE(user.pickers(), 1);
        QVERIFY(!seen);
    }
}

QTEST_MAIN(tst_TableEditsGroups)
#include "tst_TableEditsGroups.moc"
