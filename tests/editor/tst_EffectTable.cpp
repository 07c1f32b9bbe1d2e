#include "EditorStage.h"
#include "EffectColumns.h"
#include "EndSignals.h"
#include "LogCapture.h"
#include "OfferedTypes.h"
#include "TablePictures.h"

#include <QRegularExpression>

#include <optional>

using meta::TableWidget;
using enum meta::EffectColumn;

class tst_EffectTable : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    // Building
    void editorIsBuiltOnceAsAWindowOfItsOwn();
    void withoutChildrenTheTableIsEmptyAndTheTypesAreOffered();
    void childrenAreShownInReverseListOrder();
    void onlyTheEidColumnIsHidden();
    void typesAreOfferedSorted();
    void typesOfferedAnewKeepTheirOrder();
    void buildingResetsTheBeginAndClearsTheDirtyFlag();
    void buildingAnnouncesTheOwnEndAsItsWorkGoesOn_data();
    void buildingAnnouncesTheOwnEndAsItsWorkGoesOn();
    void buildingWritesNothingIntoTheChildren();
    void firstThreeColumnsHaveFixedWidthsWhateverTheyHold_data();
    void firstThreeColumnsHaveFixedWidthsWhateverTheyHold();
    void otherColumnsAreBuiltToFit();
    void resizingFitsAllColumnsButTheEids();
    void nothingHappensWithoutAnEditor();

    // Rebuilding
    void rebuildingBringsTheRowsBackIntoReverseListOrder();
    void rebuildingEmptiesTheSelection();
    void rebuildingResetsTheBeginAndClearsTheDirtyFlag();
    void rebuildingAnnouncesTheOwnEndAsItsWorkGoesOn();
    void rebuildingTwiceOffersMostTypesThreeTimesAndTwoOfThemTwice();
    void rebuildingKeepsTheColumnWidths();
    void rebuildingAndNewChildrenShowTheOpenCircle();
    void newChildIsAppendedBelowASortedTable();
    void newChildRaisesTheOwnEnd();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_EffectTable::init()
{
    // The offscreen platform says this of every window with a minimum size.
    QTest::failOnWarning(
        QRegularExpression(QStringLiteral("^(?!This plugin does not support propagateSizeHints)")));
    m_debugLines.emplace(QtDebugMsg);
}

// --- Building ---

void tst_EffectTable::editorIsBuiltOnceAsAWindowOfItsOwn()
{
    EditorStage stage;
    QVERIFY(!stage.effect.editorWidget());

    auto *form = qobject_cast<MetaWidget *>(stage.effect.internalGetEffectWidget());

    QVERIFY(form);
    QVERIFY(!form->parentWidget());
    QVERIFY(form->isHidden());
    QCOMPARE(form->objectName(), QStringLiteral("MetaWidget"));
    QCOMPARE(form->windowFlags(), MetaWidget().windowFlags());
    QCOMPARE(stage.effect.editorWidget(), form);

    stage.add(1);
    QCOMPARE(stage.effect.internalGetEffectWidget(), form);
    QCOMPARE(stage.table().rowCount(), 1);
    QCOMPARE(EditorStage::items(form->m_effectComboBox), QStringList({"Chase", "Stub"}));
    QCOMPARE(form->m_popupMenu.actions().size(), 5);
}

void tst_EffectTable::withoutChildrenTheTableIsEmptyAndTheTypesAreOffered()
{
    EditorStage stage;
    stage.effect.internalGetEffectWidget();

    QCOMPARE(stage.table().rowCount(), 0);
    QVERIFY(stage.table().isColumnHidden(EidColumn));
    QCOMPARE(EditorStage::items(stage.form().m_effectComboBox), QStringList({"Chase", "Stub"}));
}

void tst_EffectTable::childrenAreShownInReverseListOrder()
{
    EditorStage stage;
    stage.add(5)->with("name", QStringLiteral("A"));
    stage.add(9)->with("name", QStringLiteral("B"));
    stage.add(7)->with("name", QStringLiteral("C"));
    QCOMPARE(stage.eids(), QStringList({"5", "9", "7"}));

    stage.effect.internalGetEffectWidget();

    QCOMPARE(stage.column(NameColumn), QStringList({"C", "B", "A"}));
    QCOMPARE(stage.column(EidColumn), QStringList({"7", "9", "5"}));
}

void tst_EffectTable::onlyTheEidColumnIsHidden()
{
    EditorStage stage;
    stage.add(1);
    stage.effect.internalGetEffectWidget();

    QStringList hidden;
    for (int column = 0; column < stage.table().columnCount(); ++column) {
        if (stage.table().isColumnHidden(column))
            hidden.append(stage.table().horizontalHeaderItem(column)->text());
    }
    QCOMPARE(hidden, QStringList({"EID"}));
}

void tst_EffectTable::buildingResetsTheBeginAndClearsTheDirtyFlag()
{
    EditorStage stage;
    stage.add(1)->setDirty(true);
    stage.effect.with("begin", 700);
    stage.effect.setOwnDirty(true);

    stage.effect.internalGetEffectWidget();

    QCOMPARE(stage.effect.text("begin"), QStringLiteral("0"));
    QVERIFY(!stage.effect.ownDirty());
    QVERIFY(stage.effect.isDirty()); // the child is its own affair
}

void tst_EffectTable::buildingAnnouncesTheOwnEndAsItsWorkGoesOn_data()
{
    QTest::addColumn<QStringList>("ends");
    QTest::addColumn<QStringList>("announced");
    QTest::newRow("rows first: with the old begin")
        << QStringList({"1300", "900"}) << QStringList({"end 1300", "cycle 600"});
    QTest::newRow("no rows: with the new begin")
        << QStringList() << QStringList({"end 0", "cycle 0"});
    QTest::newRow("the end stays") << QStringList({"50"}) << QStringList();
}

void tst_EffectTable::buildingAnnouncesTheOwnEndAsItsWorkGoesOn()
{
    QFETCH(QStringList, ends);
    EditorStage stage;
    for (const QString &end : ends)
        stage.add(quint32(ends.indexOf(end)))->with("end", end);
    stage.effect.with("begin", 700).with("end", 50);
    const EndSignals announced(stage.effect);

    stage.effect.internalGetEffectWidget();

    QTEST(announced.noted, "announced");
    QCOMPARE(stage.effect.text("end"), ends.value(0, QStringLiteral("0")));
}

void tst_EffectTable::buildingWritesNothingIntoTheChildren()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("starttype", 1).with("startlinkeid", 99).with("type", QStringLiteral("Text"));
    child->changes.clear();

    stage.open();
    stage.effect.refreshMetaWidget();
    QCoreApplication::processEvents();

    QCOMPARE(child->changes, QStringList());
    QCOMPARE(child->widgetRequests, 0);
}

void tst_EffectTable::firstThreeColumnsHaveFixedWidthsWhateverTheyHold_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("short name") << QStringLiteral("a");
    QTest::newRow("long name") << QString(300, u'm');
}

void tst_EffectTable::firstThreeColumnsHaveFixedWidthsWhateverTheyHold()
{
    QFETCH(QString, name);
    EditorStage stage;
    stage.map.addGroup(20, name, ChasingGroup, {});
    stage.add(1)->with("name", name).with("gid", 20);

    stage.effect.internalGetEffectWidget();

    QCOMPARE(stage.table().columnWidth(NameColumn), 80);
    QCOMPARE(stage.table().columnWidth(TypeColumn), 120);
    QCOMPARE(stage.table().columnWidth(GroupColumn), 100);
}

void tst_EffectTable::otherColumnsAreBuiltToFit()
{
    EditorStage stage;
    stage.add(1)->with("priority", QStringLiteral("4294967295"));
    stage.effect.internalGetEffectWidget();
    TableWidget &table = stage.table();
    QList<int> built;
    for (int column = PriorityColumn; column <= FadeOutColumn; ++column) {
        built.append(table.columnWidth(column));
        table.setColumnWidth(column, 300);
    }

    stage.effect.resizeTable();

    for (int column = PriorityColumn; column <= FadeOutColumn; ++column)
        QCOMPARE(built.at(column - PriorityColumn), table.columnWidth(column));
}

void tst_EffectTable::resizingFitsAllColumnsButTheEids()
{
    EditorStage stage;
    const QString longName(60, u'm');
    stage.map.addGroup(20, longName, ChasingGroup, {});
    stage.add(1)->with("name", longName).with("gid", 20).with("priority", QString("4294967295"));
    stage.effect.internalGetEffectWidget();
    TableWidget &table = stage.table();
    table.showColumn(EidColumn);
    for (int column = NameColumn; column <= EidColumn; ++column)
        table.setColumnWidth(column, 30);

    stage.effect.resizeTable();

    for (int column = NameColumn; column <= FadeOutColumn; ++column) {
        const int width = table.columnWidth(column);
        QVERIFY(width > table.fontMetrics().horizontalAdvance(table.text(0, column)));
        QVERIFY(width >= table.horizontalHeader()->sectionSizeHint(column));
    }
    QVERIFY(table.columnWidth(NameColumn) > 400);
    QCOMPARE(table.columnWidth(EidColumn), 30);

    for (int column = NameColumn; column <= EidColumn; ++column)
        table.setColumnWidth(column, 2000);
    stage.effect.resizeTable();
    for (int column = NameColumn; column <= FadeOutColumn; ++column)
        QVERIFY(table.columnWidth(column) < 1500);
    QCOMPARE(table.columnWidth(EidColumn), 2000);
}

void tst_EffectTable::nothingHappensWithoutAnEditor()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->changes.clear();
    stage.effect.with("begin", 700).with("end", 50).setOwnDirty(true);

    stage.effect.addToWidget(child, 0);
    QCOMPARE(stage.effect.getRow(1), -1);
    stage.effect.removeFromTable(1);
    stage.effect.resizeTable();
    stage.effect.refreshMetaWidget();
    stage.effect.refreshWidgets();
    stage.effect.handleHeaderClicked(NameColumn);
    stage.effect.handleCurrentChanged(0, 0);
    stage.effect.handleSelectionChanged();
    stage.effect.handleContextMenuRequested(0, 0, {});
    stage.effect.handleSharedPropertyChanged(0, 0);

    QCOMPARE(child->changes, QStringList());
    QCOMPARE(child->widgetRequests, 0);
    QCOMPARE(stage.effect.text("begin"), QStringLiteral("700"));
    QCOMPARE(stage.effect.text("end"), QStringLiteral("50"));
    QVERIFY(stage.effect.ownDirty());
    QVERIFY(!stage.effect.editorWidget());
}

// Neither the host's order nor a type that it tells twice changes that.
void tst_EffectTable::typesAreOfferedSorted()
{
    QCOMPARE(meta::offeredTypes({"Wave", "Text", "Stub", "Meta Effect", "White Fade", "Selection",
                                 "Chase", "Text", "Meta Effect"}),
             QStringList({"Chase", "Stub", "Wave"}));
}

void tst_EffectTable::typesOfferedAnewKeepTheirOrder()
{
    QCOMPARE(meta::typesOfferedAnew({"Wave", "Text", "Meta Effect", "Stub", "White Fade",
                                     "Selection", "Chase", "Selection"}),
             QStringList({"Wave", "Text", "Stub", "White Fade", "Chase"}));
}

// --- Rebuilding ---

void tst_EffectTable::rebuildingBringsTheRowsBackIntoReverseListOrder()
{
    EditorStage stage;
    for (const quint32 eid : {5u, 9u, 7u})
        stage.add(eid);
    stage.open();
    stage.clickHeader(NameColumn);
    QCOMPARE(stage.column(EidColumn), QStringList({"5", "7", "9"}));
    stage.table().removeRow(0);
    stage.effect.getEffect(9)->setProperty(QStringLiteral("name"), QStringLiteral("New"));

    stage.effect.refreshMetaWidget();

    QCOMPARE(stage.column(EidColumn), QStringList({"7", "9", "5"}));
    QCOMPARE(stage.column(NameColumn), QStringList({"Child 7", "New", "Child 5"}));
    QVERIFY(stage.table().isColumnHidden(EidColumn));
}

void tst_EffectTable::rebuildingEmptiesTheSelection()
{
    EditorStage stage;
    stage.add(1);
    stage.open();
    stage.selectEid(1);
    QCOMPARE(stage.selectedEids(), QStringList({"1"}));

    stage.effect.refreshMetaWidget();

    QCOMPARE(stage.selectedEids(), QStringList());
    QCOMPARE(stage.form().m_effectGroupBox->title(), QStringLiteral("Effect Parameters"));
    CHECK_SANITY(stage);
}

void tst_EffectTable::rebuildingResetsTheBeginAndClearsTheDirtyFlag()
{
    EditorStage stage;
    stage.add(1);
    stage.effect.internalGetEffectWidget();
    stage.effect.with("begin", 700);
    stage.effect.setOwnDirty(true);

    stage.effect.refreshMetaWidget();

    QCOMPARE(stage.effect.text("begin"), QStringLiteral("0"));
    QVERIFY(!stage.effect.ownDirty());
}

void tst_EffectTable::rebuildingAnnouncesTheOwnEndAsItsWorkGoesOn()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.effect.internalGetEffectWidget();
    child->with("end", 1300);
    stage.effect.with("begin", 700);
    const EndSignals announced(stage.effect);

    stage.effect.refreshMetaWidget();

    QCOMPARE(announced.noted, QStringList({"end 1300", "cycle 600"}));
}

void tst_EffectTable::rebuildingTwiceOffersMostTypesThreeTimesAndTwoOfThemTwice()
{
    EditorStage stage;
    stage.effect.internalGetEffectWidget();

    stage.effect.refreshMetaWidget();
    stage.effect.refreshMetaWidget();

    QCOMPARE(EditorStage::items(stage.form().m_effectComboBox),
             QStringList({"Chase", "Stub", "Chase", "Stub", "Text", "White Fade", "Chase", "Stub",
                          "Text", "White Fade"}));
}

void tst_EffectTable::rebuildingKeepsTheColumnWidths()
{
    EditorStage stage;
    stage.add(1);
    stage.effect.internalGetEffectWidget();
    for (int column = NameColumn; column <= FadeOutColumn; ++column)
        stage.table().setColumnWidth(column, 200 + column);

    stage.effect.refreshMetaWidget();

    for (int column = NameColumn; column <= FadeOutColumn; ++column)
        QCOMPARE(stage.table().columnWidth(column), 200 + column);
}

void tst_EffectTable::rebuildingAndNewChildrenShowTheOpenCircle()
{
    EditorStage stage;
    stage.add(1)->with("end", 1000);
    stage.effect.internalGetEffectWidget();
    stage.frameAt(10);
    QCOMPARE(playStates(stage), QStringLiteral("closed"));

    stage.effect.refreshMetaWidget();
    QCOMPARE(playStates(stage), QStringLiteral("open"));

    auto *running = new WidgetStub(&stage.map, QStringLiteral("Stub"), 2);
    running->setState(true);
    stage.effect.addChild(running);
    QCOMPARE(playStates(stage), QStringLiteral("open open"));
}

void tst_EffectTable::newChildIsAppendedBelowASortedTable()
{
    EditorStage stage;
    stage.add(5);
    stage.add(9);
    stage.open();
    stage.clickHeader(NameColumn);
    auto *child = new WidgetStub(&stage.map, QStringLiteral("Chase"), 2);
    child->with("name", QStringLiteral("Added")).with("gid", 10).with("end", 2500);
    child->with("starttype", 1).with("endtype", 2);

    stage.effect.addChild(child);

    QCOMPARE(stage.column(EidColumn), QStringList({"5", "9", "2"}));
    QCOMPARE(stage.row(2).mid(0, 3), QStringList({"Added", "Chase", "Roof"}));
    QCOMPARE(pictureIn(stage, 2, NameColumn), QStringLiteral("open"));
}

void tst_EffectTable::newChildRaisesTheOwnEnd()
{
    EditorStage stage;
    stage.effect.internalGetEffectWidget();
    auto *child = new WidgetStub(&stage.map, QStringLiteral("Stub"), 2);
    child->with("starttype", 5).with("endtype", 5).with("end", 2500);
    const EndSignals announced(stage.effect);

    stage.effect.addChild(child);

    QCOMPARE(stage.effect.text("end"), QStringLiteral("2500"));
    QCOMPARE(announced.noted, QStringList({"end 2500", "cycle 2500"}));
}

QTEST_MAIN(tst_EffectTable)
#include "tst_EffectTable.moc"
