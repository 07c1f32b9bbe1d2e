#include "EditorStage.h"
#include "LogCapture.h"
#include "QTableNumber.h"

#include <QImage>
#include <QRegularExpression>
#include <QSignalSpy>

#include <memory>
#include <optional>
#include <typeinfo>

using meta::ComboTableItem;
using meta::TableItem;
using meta::TableWidget;

namespace {

enum Column {
    NameColumn,
    TypeColumn,
    GroupColumn,
    PriorityColumn,
    StartColumn,
    EndColumn,
    FadeInColumn,
    FadeOutColumn,
    EidColumn
};

// '#' black, '.' grey, 'o' white, ' ' nothing.
const QStringList openCircle = {
    "...##...", ".##..##.", ".#....#.", "#......#", "#......#", ".#....#.", ".##..##.", "...##...",
};
const QStringList closedCircle = {
    "...##...", ".######.", ".######.", "########", "########", ".######.", ".######.", "...##...",
};
const QStringList linkArrow = {
    "  ooo  ", " oo#o  ", "oo#oooo", "o#####o", "oo#oooo", " oo#o  ", "  ooo  ",
};
const QStringList cycleArrow = {
    "     ooo  ", "    oo#o  ", " oooo#ooo ", "oo#o####oo", "o#ooo#oo#o",
    "o#o oo#o#o", "o#o  ooo#o", "o#oooooo#o", "oo######oo", " oooooooo ",
};

QStringList rowsOf(const QPixmap &picture)
{
    const QImage image = picture.toImage().convertToFormat(QImage::Format_ARGB32);
    QStringList rows;
    for (int y = 0; y < image.height(); ++y) {
        QString row;
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            row += qAlpha(pixel) == 0     ? u' '
                   : pixel == 0xff000000u ? u'#'
                   : pixel == 0xffc0c0c0u ? u'.'
                   : pixel == 0xffffffffu ? u'o'
                                          : u'?';
        }
        rows.append(row);
    }
    return rows;
}

QString pictureIn(const EditorStage &stage, int row, int column)
{
    const QStringList rows = rowsOf(stage.table().pixmap(row, column));
    return rows.isEmpty()         ? QStringLiteral("none")
           : rows == openCircle   ? QStringLiteral("open")
           : rows == closedCircle ? QStringLiteral("closed")
           : rows == linkArrow    ? QStringLiteral("link")
           : rows == cycleArrow   ? QStringLiteral("cycle")
                                  : QStringLiteral("another");
}

/// The pictures in the Name cells, from the first row to the last.
QString playStates(const EditorStage &stage)
{
    QStringList states;
    for (int row = 0; row < stage.table().rowCount(); ++row)
        states.append(pictureIn(stage, row, NameColumn));
    return states.join(u' ');
}

/// Gives the children these texts, in list order, which stays.
void setAll(EditorStage &stage, const char *key, const QStringList &texts)
{
    const EffectList children = stage.effect.getEffects();
    for (int i = 0; i < children.count(); ++i)
        children.at(i)->setProperty(QString::fromLatin1(key), texts.at(i));
}

QStringList entries(const QComboBox &chooser)
{
    QStringList texts;
    for (int index = 0; index < chooser.count(); ++index)
        texts.append(chooser.itemText(index));
    return texts;
}

/// Notes the two signals that tell of a new end, in the order in which they come.
class EndSignals
{
public:
    explicit EndSignals(MetaEffect &effect)
    {
        QObject::connect(
            &effect, &MetaEffect::endTimeChanged, &m_context,
            [this](unsigned long end) { noted.append(QStringLiteral("end %1").arg(end)); });
        QObject::connect(
            &effect, &Effect::cycleTimeChanged, &m_context,
            [this](unsigned long time) { noted.append(QStringLiteral("cycle %1").arg(time)); });
    }

    QStringList noted;

private:
    QObject m_context;
};

/// A row of a data table that holds only texts.
template<typename... Texts>
void textRow(const char *name, Texts... texts)
{
    (QTest::newRow(name) << ... << texts);
}

} // namespace

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
    void buildingResetsTheBeginAndClearsTheDirtyFlag();
    void buildingAnnouncesTheOwnEndAsItsWorkGoesOn_data();
    void buildingAnnouncesTheOwnEndAsItsWorkGoesOn();
    void buildingWritesNothingIntoTheChildren();
    void firstThreeColumnsHaveFixedWidthsWhateverTheyHold_data();
    void firstThreeColumnsHaveFixedWidthsWhateverTheyHold();
    void otherColumnsAreBuiltToFit();
    void resizingFitsAllColumnsButTheEids();
    void nothingHappensWithoutAnEditor();

    // Filling
    void rowShowsTheChild();
    void cellsAreOfTheirClassesAndEditTypes_data();
    void cellsAreOfTheirClassesAndEditTypes();
    void groupIsShownByNameOrElseAsNone_data();
    void groupIsShownByNameOrElseAsNone();
    void vanishedGroupIsShownAsNone();
    void timesAreShownInSeconds_data();
    void timesAreShownInSeconds();
    void priorityAndEidAreShownInDecimal_data();
    void priorityAndEidAreShownInDecimal();
    void rulesAreShownAsPictures_data();
    void rulesAreShownAsPictures();
    void picturesAreOfTheirPixels_data();
    void picturesAreOfTheirPixels();
    void everyRowOffersTheTypesOfItsOwn();
    void typeThatIsNotOfferedShowsTheFirstOne_data();
    void typeThatIsNotOfferedShowsTheFirstOne();
    void withoutTypesTheTypeCellIsEmpty_data();
    void withoutTypesTheTypeCellIsEmpty();
    void withoutAMapEveryGroupIsNone();
    void fillingARowAgainReplacesAllItsCellsButTheName();
    void fillingClearsPicturesOfFormerRules();
    void fillingIgnoresNullAndRowsOutsideTheTable();

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

    // Finding and removing rows
    void rowOfAnUnknownEidIsMinusOne();
    void rowIsFoundByItsEidAfterSorting();
    void firstRowOfARepeatedEidIsFound();
    void rowsAreFoundByTheNumberInTheirCell_data();
    void rowsAreFoundByTheNumberInTheirCell();
    void removingTakesTheRowOfThatEidAlone();
    void removingTakesTheFirstRowOfARepeatedEid();
    void removingAnUnknownEidRemovesNothing();

    // Sorting
    void firstClickSortsAscendingByNumberAndTheNextOneDescendingByAnyColumn();
    void everyClickTurnsTheDirection();
    void columnsSortByTheirKind_data();
    void columnsSortByTheirKind();
    void wholeRowsMoveWithTheirPictures();
    void equalCellsKeepTheirOrderInBothDirections();
    void headerShowsColumnAndDirection();
    void clickBeforeTheEditorOpensDoesNotTurnTheDirection();
    void sortingTellsNobodyAndKeepsTheSelection();

    // Playing
    void playStateFollowsTheFrames();
    void playStateIsTouchedOnlyWhenItChanges();
    void playStateFindsItsRowAfterSorting();
    void playStateOfAChildWithoutARowIsIgnored();
    void nameBeingTypedSurvivesTheNewPlayState();

    // Passes
    void passShowsNewTimesAndRules_data();
    void passShowsNewTimesAndRules();
    void passLeavesCellsOfUnknownRulesUntouched_data();
    void passLeavesCellsOfUnknownRulesUntouched();
    void passTouchesOnlyCellsThatChange();
    void passTouchesNothingThatIsShownAlready();
    void passOverwritesForeignTextsAndPictures();
    void passFindsItsRowsAfterSorting();
    void passShowsTheFirstChildOfARepeatedEidInAllItsRows();
    void passLeavesRowsWithoutAChildUntouched_data();
    void passLeavesRowsWithoutAChildUntouched();
    void passRecomputesTheOwnEnd();

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
    QCOMPARE(entries(*form->m_effectComboBox), QStringList({"Chase", "Stub"}));
    QCOMPARE(form->m_popupMenu.actions().size(), 5);
}

void tst_EffectTable::withoutChildrenTheTableIsEmptyAndTheTypesAreOffered()
{
    EditorStage stage;
    stage.effect.internalGetEffectWidget();

    QCOMPARE(stage.table().rowCount(), 0);
    QVERIFY(stage.table().isColumnHidden(EidColumn));
    QCOMPARE(entries(*stage.form().m_effectComboBox), QStringList({"Chase", "Stub"}));
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

// --- Filling ---

void tst_EffectTable::rowShowsTheChild()
{
    EditorStage stage;
    WidgetStub *child = stage.add(42);
    child->with("name", QStringLiteral("Sweep"))
        .with("gid", 11)
        .with("priority", 3)
        .with("begin", 1500)
        .with("end", 60000)
        .with("fadein", 250)
        .with("fadeout", 1234567);

    stage.effect.internalGetEffectWidget();

    QCOMPARE(stage.row(0),
             QStringList({"Sweep", "Stub", "Windows", "3", "1.5", "60", "0.25", "1234.57", "42"}));
}

void tst_EffectTable::cellsAreOfTheirClassesAndEditTypes_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QByteArray>("cellClass");
    QTest::addColumn<int>("editType");

    const QByteArray plain = typeid(TableItem).name();
    const QByteArray number = typeid(QTableNumber).name();
    QTest::newRow("name") << int(NameColumn) << plain << int(TableItem::OnTyping);
    QTest::newRow("type") << int(TypeColumn) << QByteArray(typeid(ComboTableItem).name())
                          << int(TableItem::WhenCurrent);
    QTest::newRow("group") << int(GroupColumn) << plain << int(TableItem::Never);
    QTest::newRow("priority") << int(PriorityColumn) << number << int(TableItem::WhenCurrent);
    QTest::newRow("start") << int(StartColumn) << number << int(TableItem::WhenCurrent);
    QTest::newRow("end") << int(EndColumn) << number << int(TableItem::WhenCurrent);
    QTest::newRow("fade in") << int(FadeInColumn) << number << int(TableItem::WhenCurrent);
    QTest::newRow("fade out") << int(FadeOutColumn) << number << int(TableItem::WhenCurrent);
    QTest::newRow("eid") << int(EidColumn) << number << int(TableItem::WhenCurrent);
}

void tst_EffectTable::cellsAreOfTheirClassesAndEditTypes()
{
    QFETCH(int, column);
    EditorStage stage;
    stage.add(1)->with("starttype", 1);
    stage.effect.internalGetEffectWidget();

    const TableItem &cell = *stage.table().item(0, column);

    QTEST(QByteArray(typeid(cell).name()), "cellClass");
    QTEST(int(cell.editType()), "editType");
}

void tst_EffectTable::groupIsShownByNameOrElseAsNone_data()
{
    QTest::addColumn<QString>("gid");
    QTest::addColumn<QString>("shown");
    textRow("group", "10", "Roof");
    textRow("another group", "12", "Door");
    textRow("no group", "0", "None");
    textRow("unknown group", "99", "None");
    textRow("missing", "", "None");
    textRow("text that is no uid", "Roof", "None");
}

void tst_EffectTable::groupIsShownByNameOrElseAsNone()
{
    QFETCH(QString, gid);
    EditorStage stage;
    stage.add(1)->with("gid", gid);
    stage.effect.internalGetEffectWidget();
    QTEST(stage.table().text(0, GroupColumn), "shown");
}

void tst_EffectTable::vanishedGroupIsShownAsNone()
{
    EditorStage stage;
    stage.add(1)->with("gid", 10);
    stage.effect.internalGetEffectWidget();
    QCOMPARE(stage.table().text(0, GroupColumn), QStringLiteral("Roof"));

    stage.map.removeGroup(10);
    stage.effect.refreshMetaWidget();

    QCOMPARE(stage.table().text(0, GroupColumn), QStringLiteral("None"));
}

void tst_EffectTable::timesAreShownInSeconds_data()
{
    QTest::addColumn<QString>("ms");
    QTest::addColumn<QString>("shown");
    textRow("nought", "0", "0");
    textRow("one", "1", "0.001");
    textRow("one second and a half", "1500", "1.5");
    textRow("a minute", "60000", "60");
    textRow("six digits", "999999", "999.999");
    textRow("cut to six digits", "1234567", "1234.57");
    textRow("seven digits of seconds", "1234567800", "1.23457e+06");
    textRow("top bit", "2147483648", "2.14748e+06");
    textRow("largest", "4294967295", "4.29497e+06");
    textRow("too large", "4294967296", "0");
    textRow("negative", "-1500", "0");
    textRow("not whole", "1500.5", "0");
    textRow("missing", "", "0");
    textRow("word", "soon", "0");
}

void tst_EffectTable::timesAreShownInSeconds()
{
    QFETCH(QString, ms);
    QFETCH(QString, shown);
    const std::pair<int, const char *> times[] = {{StartColumn, "begin"},
                                                  {EndColumn, "end"},
                                                  {FadeInColumn, "fadein"},
                                                  {FadeOutColumn, "fadeout"}};
    for (const auto &[column, key] : times) {
        EditorStage stage;
        stage.add(1)->with(key, ms);
        stage.effect.internalGetEffectWidget();
        for (const auto &other : times)
            QCOMPARE(stage.table().text(0, other.first),
                     other.first == column ? shown : QStringLiteral("0"));
    }
}

void tst_EffectTable::priorityAndEidAreShownInDecimal_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");
    textRow("nought", "0", "0");
    textRow("number", "17", "17");
    textRow("leading noughts", "0017", "17");
    textRow("top bit", "2147483648", "2147483648");
    textRow("largest", "4294967295", "4294967295");
    textRow("negative", "-1", "0");
    textRow("missing", "", "0");
    textRow("word", "high", "0");
}

void tst_EffectTable::priorityAndEidAreShownInDecimal()
{
    QFETCH(QString, stored);
    EditorStage stage;
    stage.add(1)->with("priority", stored).with("eid", stored);
    stage.effect.internalGetEffectWidget();
    QTEST(stage.table().text(0, PriorityColumn), "shown");
    QTEST(stage.table().text(0, EidColumn), "shown");
}

void tst_EffectTable::rulesAreShownAsPictures_data()
{
    QTest::addColumn<QString>("startType");
    QTest::addColumn<QString>("endType");
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("end");
    textRow("missing", "", "", "none", "none");
    textRow("fixed", "0", "0", "none", "none");
    textRow("linked start", "1", "0", "link", "none");
    textRow("linked end", "0", "1", "none", "link");
    textRow("both linked", "1", "1", "link", "link");
    textRow("end in cycles", "0", "2", "none", "cycle");
    textRow("a start has no cycles", "2", "2", "none", "cycle");
    textRow("unknown", "5", "3", "none", "none");
    textRow("unknown, largest", "4294967295", "4294967295", "none", "none");
}

void tst_EffectTable::rulesAreShownAsPictures()
{
    QFETCH(QString, startType);
    QFETCH(QString, endType);
    EditorStage stage;
    stage.add(1)->with("starttype", startType).with("endtype", endType);

    stage.effect.internalGetEffectWidget();

    QTEST(pictureIn(stage, 0, StartColumn), "start");
    QTEST(pictureIn(stage, 0, EndColumn), "end");
    QCOMPARE(pictureIn(stage, 0, NameColumn), QStringLiteral("open"));
    for (const int column :
         {TypeColumn, GroupColumn, PriorityColumn, FadeInColumn, FadeOutColumn, EidColumn})
        QCOMPARE(pictureIn(stage, 0, column), QStringLiteral("none"));
}

void tst_EffectTable::picturesAreOfTheirPixels_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("isRunning");
    QTest::addColumn<QStringList>("pixels");
    QTest::newRow("open circle") << int(NameColumn) << false << openCircle;
    QTest::newRow("closed circle") << int(NameColumn) << true << closedCircle;
    QTest::newRow("link") << int(StartColumn) << false << linkArrow;
    QTest::newRow("cycle") << int(EndColumn) << false << cycleArrow;
}

void tst_EffectTable::picturesAreOfTheirPixels()
{
    QFETCH(int, column);
    QFETCH(bool, isRunning);
    EditorStage stage;
    stage.add(1)->with("starttype", 1).with("endtype", 2).with("end", 1000);
    stage.effect.internalGetEffectWidget();
    if (isRunning)
        stage.frameAt(10);
    QTEST(rowsOf(stage.table().pixmap(0, column)), "pixels");
}

void tst_EffectTable::everyRowOffersTheTypesOfItsOwn()
{
    EditorStage stage;
    stage.add(1)->with("type", QStringLiteral("Chase"));
    stage.add(2);
    stage.effect.internalGetEffectWidget();

    const auto &first = dynamic_cast<ComboTableItem &>(*stage.table().item(0, TypeColumn));
    const auto &second = dynamic_cast<ComboTableItem &>(*stage.table().item(1, TypeColumn));

    QVERIFY(&first != &second);
    for (const ComboTableItem *cell : {&first, &second})
        QCOMPARE(cell->texts(), QStringList({"Chase", "Stub"}));
    QCOMPARE(stage.column(TypeColumn), QStringList({"Stub", "Chase"}));
}

void tst_EffectTable::typeThatIsNotOfferedShowsTheFirstOne_data()
{
    QTest::addColumn<QString>("type");
    QTest::newRow("meta effect") << "Meta Effect";
    QTest::newRow("selection") << "Selection";
    QTest::newRow("white fade") << "White Fade";
    QTest::newRow("text") << "Text";
    QTest::newRow("unknown") << "Sparkle";
    QTest::newRow("other case") << "stub";
    QTest::newRow("missing") << "";
}

void tst_EffectTable::typeThatIsNotOfferedShowsTheFirstOne()
{
    QFETCH(QString, type);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("type", type);
    stage.effect.internalGetEffectWidget();
    QCOMPARE(stage.table().text(0, TypeColumn), QStringLiteral("Chase"));
    QCOMPARE(child->text("type"), type);
}

void tst_EffectTable::withoutTypesTheTypeCellIsEmpty_data()
{
    QTest::addColumn<QStringList>("types");
    QTest::newRow("no type at all") << QStringList();
    QTest::newRow("none to offer")
        << QStringList({"Meta Effect", "Selection", "Text", "White Fade"});
}

void tst_EffectTable::withoutTypesTheTypeCellIsEmpty()
{
    QFETCH(QStringList, types);
    rehearsal::StageMap map;
    rehearsal::EffectFactory factory(map);
    for (const QString &type : types)
        factory.addType(type, [](MapModel *made) { return new StubEffect(made); });
    OpenMetaEffect effect(&map, 0);
    effect.addChild(new StubEffect(&map, 1));

    const auto &form = dynamic_cast<MetaWidget &>(*effect.internalGetEffectWidget());

    QCOMPARE(form.m_effectTable->text(0, TypeColumn), QString());
    QCOMPARE(entries(*form.m_effectComboBox), QStringList());
    effect.refreshMetaWidget();
    QCOMPARE(entries(*form.m_effectComboBox), types.mid(2));
}

void tst_EffectTable::withoutAMapEveryGroupIsNone()
{
    OpenMetaEffect effect(nullptr, 0);
    auto *child = new StubEffect(nullptr, 1);
    child->with("gid", 10);
    effect.addChild(child);

    const auto &form = dynamic_cast<MetaWidget &>(*effect.internalGetEffectWidget());

    QCOMPARE(form.m_effectTable->text(0, GroupColumn), QStringLiteral("None"));
    QCOMPARE(form.m_effectTable->text(0, TypeColumn), QString());
}

void tst_EffectTable::fillingARowAgainReplacesAllItsCellsButTheName()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.effect.internalGetEffectWidget();
    TableWidget &table = stage.table();
    for (int column = NameColumn; column <= EidColumn; ++column)
        table.item(0, column)->setToolTip(QStringLiteral("former"));
    child->with("name", QStringLiteral("New")).with("type", QStringLiteral("Chase"));
    child->with("gid", 12).with("priority", 8).with("begin", 1).with("end", 2);
    child->with("fadein", 3).with("fadeout", 4).with("eid", 6);
    child->with("starttype", 1).with("endtype", 2);

    stage.effect.addToWidget(child, 0);

    QCOMPARE(stage.row(0),
             QStringList({"New", "Chase", "Door", "8", "0.001", "0.002", "0.003", "0.004", "6"}));
    QCOMPARE(pictureIn(stage, 0, StartColumn), QStringLiteral("link"));
    QCOMPARE(pictureIn(stage, 0, EndColumn), QStringLiteral("cycle"));
    QCOMPARE(table.item(0, NameColumn)->toolTip(), QStringLiteral("former"));
    for (int column = TypeColumn; column <= EidColumn; ++column)
        QCOMPARE(table.item(0, column)->toolTip(), QString());
    QCOMPARE(stage.rowOf(1), -1);
    QCOMPARE(stage.rowOf(6), 0);
}

void tst_EffectTable::fillingClearsPicturesOfFormerRules()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("starttype", 1).with("endtype", 2).with("end", 1000);
    stage.effect.internalGetEffectWidget();
    stage.frameAt(10);
    child->with("starttype", 0).with("endtype", 5);

    stage.effect.addToWidget(child, 0);

    QCOMPARE(pictureIn(stage, 0, StartColumn), QStringLiteral("none"));
    QCOMPARE(pictureIn(stage, 0, EndColumn), QStringLiteral("none"));
    QCOMPARE(pictureIn(stage, 0, NameColumn), QStringLiteral("open"));
}

void tst_EffectTable::fillingIgnoresNullAndRowsOutsideTheTable()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.effect.internalGetEffectWidget();
    const QStringList row = stage.row(0);
    child->with("name", QStringLiteral("New"));

    stage.effect.addToWidget(nullptr, 0);
    stage.effect.addToWidget(child, 1);
    stage.effect.addToWidget(child, -1);

    QCOMPARE(stage.table().rowCount(), 1);
    QCOMPARE(stage.row(0), row);
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

    QCOMPARE(entries(*stage.form().m_effectComboBox),
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

// --- Finding and removing rows ---

void tst_EffectTable::rowOfAnUnknownEidIsMinusOne()
{
    EditorStage stage;
    stage.effect.internalGetEffectWidget();
    QCOMPARE(stage.rowOf(0), -1);

    stage.add(3);
    QCOMPARE(stage.rowOf(3), 0);
    QCOMPARE(stage.rowOf(0), -1);
    QCOMPARE(stage.rowOf(4), -1);
    QCOMPARE(stage.rowOf(4294967295u), -1);
}

void tst_EffectTable::rowIsFoundByItsEidAfterSorting()
{
    EditorStage stage;
    for (const quint32 eid : {1u, 2u, 3u})
        stage.add(eid);
    setAll(stage, "priority", {"30", "10", "20"});
    stage.open();
    QCOMPARE(stage.rowOf(1), 2);

    stage.clickHeader(PriorityColumn);
    QCOMPARE(stage.column(EidColumn), QStringList({"2", "3", "1"}));
    QCOMPARE(stage.rowOf(1), 2);
    QCOMPARE(stage.rowOf(2), 0);
    QCOMPARE(stage.rowOf(3), 1);
    QCOMPARE(stage.rowOf(4), -1);

    stage.clickHeader(PriorityColumn);
    QCOMPARE(stage.rowOf(1), 0);
    QCOMPARE(stage.rowOf(2), 2);
}

void tst_EffectTable::firstRowOfARepeatedEidIsFound()
{
    EditorStage stage;
    stage.add(7)->with("name", QStringLiteral("a"));
    stage.add(1)->with("name", QStringLiteral("b"));
    stage.add(7)->with("name", QStringLiteral("c"));
    stage.open();
    QCOMPARE(stage.column(EidColumn), QStringList({"7", "1", "7"}));
    QCOMPARE(stage.rowOf(7), 0);

    stage.table().removeRow(0);
    QCOMPARE(stage.rowOf(7), 1);
}

void tst_EffectTable::rowsAreFoundByTheNumberInTheirCell_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint32>("eid");
    QTest::addColumn<int>("row");
    QTest::newRow("number") << "7" << 7u << 0;
    QTest::newRow("leading noughts") << "007" << 7u << 0;
    QTest::newRow("plus sign") << "+7" << 7u << 0;
    QTest::newRow("blanks around") << " 7 " << 7u << 0;
    QTest::newRow("largest") << "4294967295" << 4294967295u << 0;
    QTest::newRow("nought") << "0" << 0u << 0;
    // What is no number must not pass for the child whose eid is 0, in the row below.
    QTest::newRow("empty") << "" << 0u << 1;
    QTest::newRow("word") << "abc" << 0u << 1;
    QTest::newRow("number and word") << "7a" << 0u << 1;
    QTest::newRow("negative") << "-7" << 0u << 1;
    QTest::newRow("not whole") << "7.0" << 0u << 1;
    QTest::newRow("exponent") << "7e0" << 0u << 1;
    QTest::newRow("hexadecimal") << "0x7" << 0u << 1;
    QTest::newRow("too large") << "4294967296" << 0u << 1;
}

void tst_EffectTable::rowsAreFoundByTheNumberInTheirCell()
{
    QFETCH(QString, text);
    QFETCH(quint32, eid);
    EditorStage stage;
    stage.add(0);
    stage.add(3);
    stage.effect.internalGetEffectWidget();
    QCOMPARE(stage.rowOf(3), 0);

    stage.table().setText(0, EidColumn, text);

    QTEST(stage.rowOf(eid), "row");
    QCOMPARE(stage.rowOf(3), -1);
}

void tst_EffectTable::removingTakesTheRowOfThatEidAlone()
{
    EditorStage stage;
    for (const quint32 eid : {1u, 2u, 3u})
        stage.add(eid);
    stage.open();
    stage.clickHeader(NameColumn);

    stage.effect.removeFromTable(2);

    QCOMPARE(stage.column(EidColumn), QStringList({"1", "3"}));
    QCOMPARE(stage.rowOf(3), 1);
    QCOMPARE(stage.eids(), QStringList({"1", "2", "3"}));
}

void tst_EffectTable::removingTakesTheFirstRowOfARepeatedEid()
{
    EditorStage stage;
    stage.add(7)->with("name", QStringLiteral("a"));
    stage.add(7)->with("name", QStringLiteral("b"));
    stage.effect.internalGetEffectWidget();

    stage.effect.removeFromTable(7);

    QCOMPARE(stage.column(NameColumn), QStringList({"a"}));
}

void tst_EffectTable::removingAnUnknownEidRemovesNothing()
{
    EditorStage stage;
    stage.add(1);
    stage.open();
    stage.selectEid(1);
    stage.table().setNumRows(2);
    stage.table().setText(1, EidColumn, QStringLiteral("abc"));

    stage.effect.removeFromTable(2);
    stage.effect.removeFromTable(0);
    stage.effect.removeFromTable(4294967295u);

    QCOMPARE(stage.column(EidColumn), QStringList({"1", "abc"}));
    QCOMPARE(stage.selectedEids(), QStringList({"1"}));
}

// --- Sorting ---

void tst_EffectTable::firstClickSortsAscendingByNumberAndTheNextOneDescendingByAnyColumn()
{
    EditorStage stage;
    for (const quint32 eid : {1u, 2u, 3u})
        stage.add(eid);
    setAll(stage, "name", {"b", "a", "c"});
    setAll(stage, "priority", {"10", "100", "2"});
    stage.open();

    stage.clickHeader(PriorityColumn);
    QCOMPARE(stage.column(PriorityColumn), QStringList({"2", "10", "100"}));

    stage.clickHeader(NameColumn);
    QCOMPARE(stage.column(NameColumn), QStringList({"c", "b", "a"}));
}

void tst_EffectTable::everyClickTurnsTheDirection()
{
    EditorStage stage;
    stage.add(1)->with("priority", 10);
    stage.add(2)->with("priority", 100);
    stage.open();
    const QStringList up = {"10", "100"};
    const QStringList down = {"100", "10"};

    stage.clickHeader(PriorityColumn);
    QCOMPARE(stage.column(PriorityColumn), up);
    stage.clickHeader(PriorityColumn);
    QCOMPARE(stage.column(PriorityColumn), down);
    stage.clickHeader(PriorityColumn);
    QCOMPARE(stage.column(PriorityColumn), up);

    stage.effect.refreshMetaWidget();
    stage.clickHeader(PriorityColumn);
    QCOMPARE(stage.column(PriorityColumn), down);
}

void tst_EffectTable::columnsSortByTheirKind_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QStringList>("sorted");

    const QStringList times = {"10000", "9500", "100000"};
    const QStringList seconds = {"9.5", "10", "100"};
    QTest::newRow("names by text")
        << int(NameColumn) << QByteArray("name") << QStringList({"a", "B", "10", "9", "Z", "é", ""})
        << QStringList({"", "10", "9", "B", "Z", "a", "é"});
    QTest::newRow("types by text")
        << int(TypeColumn) << QByteArray("type") << QStringList({"Stub", "Chase", "Stub"})
        << QStringList({"Chase", "Stub", "Stub"});
    QTest::newRow("groups by name")
        << int(GroupColumn) << QByteArray("gid") << QStringList({"11", "10", "0", "12"})
        << QStringList({"Door", "None", "Roof", "Windows"});
    QTest::newRow("priorities by number")
        << int(PriorityColumn) << QByteArray("priority") << QStringList({"10", "4294967295", "9"})
        << QStringList({"9", "10", "4294967295"});
    QTest::newRow("starts by number")
        << int(StartColumn) << QByteArray("begin") << times << seconds;
    QTest::newRow("ends by number") << int(EndColumn) << QByteArray("end") << times << seconds;
    QTest::newRow("fades in by number")
        << int(FadeInColumn) << QByteArray("fadein") << times << seconds;
    QTest::newRow("fades out by number")
        << int(FadeOutColumn) << QByteArray("fadeout") << times << seconds;
    QTest::newRow("eids by number")
        << int(EidColumn) << QByteArray("eid") << QStringList({"10", "4294967295", "9"})
        << QStringList({"9", "10", "4294967295"});
}

void tst_EffectTable::columnsSortByTheirKind()
{
    QFETCH(int, column);
    QFETCH(QByteArray, key);
    QFETCH(QStringList, values);
    QFETCH(QStringList, sorted);
    EditorStage stage;
    for (qsizetype i = 0; i < values.size(); ++i)
        stage.add(1);
    setAll(stage, key, values);
    stage.effect.internalGetEffectWidget();

    stage.effect.handleHeaderClicked(column);
    QCOMPARE(stage.column(column), sorted);

    stage.effect.handleHeaderClicked(column);
    QCOMPARE(stage.column(column), QStringList(sorted.rbegin(), sorted.rend()));
}

void tst_EffectTable::wholeRowsMoveWithTheirPictures()
{
    EditorStage stage;
    stage.add(1)->with("starttype", 1).with("end", 1000);
    stage.add(2)->with("endtype", 2).with("begin", 500).with("end", 1000);
    setAll(stage, "priority", {"1", "2"});
    stage.open();
    stage.frameAt(10);
    const QStringList first = stage.row(1);
    const QStringList second = stage.row(0);

    stage.clickHeader(PriorityColumn);

    QCOMPARE(stage.row(0), first);
    QCOMPARE(stage.row(1), second);
    QCOMPARE(playStates(stage), QStringLiteral("closed open"));
    QCOMPARE(pictureIn(stage, 0, StartColumn), QStringLiteral("link"));
    QCOMPARE(pictureIn(stage, 1, StartColumn), QStringLiteral("none"));
    QCOMPARE(pictureIn(stage, 0, EndColumn), QStringLiteral("none"));
    QCOMPARE(pictureIn(stage, 1, EndColumn), QStringLiteral("cycle"));
}

void tst_EffectTable::equalCellsKeepTheirOrderInBothDirections()
{
    EditorStage stage;
    for (const quint32 eid : {1u, 2u, 3u, 4u})
        stage.add(eid);
    setAll(stage, "priority", {"6", "5", "6", "6"});
    stage.open();
    QCOMPARE(stage.column(EidColumn), QStringList({"4", "3", "2", "1"}));

    stage.clickHeader(PriorityColumn);
    QCOMPARE(stage.column(EidColumn), QStringList({"2", "4", "3", "1"}));
    stage.clickHeader(PriorityColumn);
    QCOMPARE(stage.column(EidColumn), QStringList({"4", "3", "1", "2"}));
}

void tst_EffectTable::headerShowsColumnAndDirection()
{
    EditorStage stage;
    stage.add(1);
    stage.open();
    const QHeaderView &header = *stage.table().horizontalHeader();

    stage.clickHeader(EndColumn);
    QVERIFY(header.isSortIndicatorShown());
    QCOMPARE(header.sortIndicatorSection(), int(EndColumn));
    QCOMPARE(header.sortIndicatorOrder(), Qt::AscendingOrder);

    stage.clickHeader(GroupColumn);
    QCOMPARE(header.sortIndicatorSection(), int(GroupColumn));
    QCOMPARE(header.sortIndicatorOrder(), Qt::DescendingOrder);

    stage.clickHeader(GroupColumn);
    QCOMPARE(header.sortIndicatorOrder(), Qt::AscendingOrder);
}

void tst_EffectTable::clickBeforeTheEditorOpensDoesNotTurnTheDirection()
{
    EditorStage stage;
    stage.add(1);
    stage.add(2);
    stage.effect.handleHeaderClicked(NameColumn);
    stage.open();
    stage.clickHeader(NameColumn);
    QCOMPARE(stage.column(EidColumn), QStringList({"1", "2"}));
}

void tst_EffectTable::sortingTellsNobodyAndKeepsTheSelection()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.add(2);
    stage.open();
    stage.selectEid(1);
    QCOMPARE(stage.table().selectedRows(), QList<int>({1}));
    child->changes.clear();
    const int requests = child->widgetRequests;
    const QSignalSpy values(&stage.table(), SIGNAL(valueChanged(int, int)));
    const QSignalSpy selections(&stage.table(), SIGNAL(selectionChanged()));

    stage.clickHeader(NameColumn);

    QCOMPARE(stage.table().selectedRows(), QList<int>({0}));
    QCOMPARE(stage.selectedEids(), QStringList({"1"}));
    QCOMPARE(child->changes, QStringList());
    QCOMPARE(child->widgetRequests, requests);
    QCOMPARE(values.count(), 0);
    QCOMPARE(selections.count(), 0);
}

// --- Playing ---

void tst_EffectTable::playStateFollowsTheFrames()
{
    EditorStage stage;
    stage.add(1)->with("begin", 1000).with("end", 2000);
    stage.add(2)->with("begin", 0).with("end", 3000);
    stage.open();
    QCOMPARE(playStates(stage), QStringLiteral("open open"));

    stage.frameAt(0);
    QCOMPARE(playStates(stage), QStringLiteral("closed open"));
    stage.frameAt(999);
    QCOMPARE(playStates(stage), QStringLiteral("closed open"));
    stage.frameAt(1000);
    QCOMPARE(playStates(stage), QStringLiteral("closed closed"));
    stage.frameAt(1999);
    QCOMPARE(playStates(stage), QStringLiteral("closed closed"));
    stage.frameAt(2000);
    QCOMPARE(playStates(stage), QStringLiteral("closed open"));
}

void tst_EffectTable::playStateIsTouchedOnlyWhenItChanges()
{
    EditorStage stage;
    stage.add(1)->with("begin", 100).with("end", 200);
    stage.effect.with("loop", QStringLiteral("0"));
    stage.open();
    const QSignalSpy changes(stage.table().model(), &QAbstractItemModel::dataChanged);

    stage.frameAt(0);
    stage.frameAt(50);
    QCOMPARE(changes.count(), 0);
    stage.frameAt(100);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(changes.last().first().toModelIndex(), stage.table().model()->index(0, NameColumn));
    stage.frameAt(110);
    stage.frameAt(150);
    QCOMPARE(changes.count(), 1);
    stage.frameAt(200);
    QCOMPARE(changes.count(), 2);
    stage.frameAt(300);
    QCOMPARE(changes.count(), 2);
}

void tst_EffectTable::playStateFindsItsRowAfterSorting()
{
    EditorStage stage;
    stage.add(1)->with("begin", 100).with("end", 200);
    stage.add(2)->with("begin", 500).with("end", 600);
    stage.open();
    stage.frameAt(0);

    stage.clickHeader(NameColumn);
    stage.frameAt(100);
    QCOMPARE(playStates(stage), QStringLiteral("closed open"));

    stage.clickHeader(NameColumn);
    QCOMPARE(playStates(stage), QStringLiteral("open closed"));
    stage.frameAt(200);
    QCOMPARE(playStates(stage), QStringLiteral("open open"));
}

void tst_EffectTable::playStateOfAChildWithoutARowIsIgnored()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("begin", 100).with("end", 200);
    stage.add(2)->with("begin", 300).with("end", 400);
    stage.open();
    stage.effect.removeFromTable(1);

    stage.frameAt(100);

    QVERIFY(child->getState());
    QCOMPARE(playStates(stage), QStringLiteral("open"));
}

void tst_EffectTable::nameBeingTypedSurvivesTheNewPlayState()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("startfixedtime", 100).with("endtype", 0).with("endfixedtime", 500);
    stage.effect.updateEffectTimes();
    stage.open();
    stage.click(0, NameColumn);
    QTest::keyClick(&stage.table(), Qt::Key_F);
    auto *line = qobject_cast<QLineEdit *>(
        stage.table().indexWidget(stage.table().model()->index(0, NameColumn)));
    QVERIFY(line);
    line->clear();
    QTest::keyClicks(line, QStringLiteral("Fla"));

    stage.frameAt(100);
    QCOMPARE(playStates(stage), QStringLiteral("closed"));
    QCOMPARE(line->text(), QStringLiteral("Fla"));
    QCOMPARE(child->text("name"), QStringLiteral("Child 1"));

    QTest::keyClicks(line, QStringLiteral("sh"));
    stage.frameAt(600);
    QCOMPARE(playStates(stage), QStringLiteral("open"));
    QTest::keyClick(line, Qt::Key_Return);
    QCoreApplication::processEvents();

    QCOMPARE(child->text("name"), QStringLiteral("Flash"));
    QCOMPARE(stage.table().text(0, NameColumn), QStringLiteral("Flash"));
    QCOMPARE(playStates(stage), QStringLiteral("open"));
}

// --- Passes ---

void tst_EffectTable::passShowsNewTimesAndRules_data()
{
    QTest::addColumn<int>("startType");
    QTest::addColumn<int>("endType");
    QTest::addColumn<QString>("shown");

    QTest::newRow("fixed") << 0 << 0 << "1.5 none, 3.5 none";
    QTest::newRow("linked start") << 1 << 0 << "60 link, 62 none";
    QTest::newRow("linked end") << 0 << 1 << "1.5 none, 61.234 link";
    QTest::newRow("both linked") << 1 << 1 << "60 link, 61.234 link";
    QTest::newRow("end in cycles") << 0 << 2 << "1.5 none, 4.5 cycle";
    QTest::newRow("linked start, end in cycles") << 1 << 2 << "60 link, 63 cycle";
}

void tst_EffectTable::passShowsNewTimesAndRules()
{
    QFETCH(int, startType);
    QFETCH(int, endType);
    EditorStage stage;
    stage.add(1)->with("endtype", 0).with("endfixedtime", 60000);
    WidgetStub *child = stage.add(2);
    child->with("startfixedtime", 1500).with("startlinkeid", 1).with("endfixedtime", 2000);
    child->with("endlinkeid", 1).with("endlinkoffset", 1234.567).with("endcyclecount", 3);

    // Whatever the cells showed before.
    for (int formerStart = 0; formerStart <= 1; ++formerStart) {
        for (int formerEnd = 0; formerEnd <= 2; ++formerEnd) {
            child->with("starttype", formerStart).with("endtype", formerEnd);
            stage.effect.internalGetEffectWidget();
            stage.effect.updateEffectTimes();
            child->with("starttype", startType).with("endtype", endType);

            stage.effect.updateEffectTimes();

            const int row = stage.rowOf(2);
            QTEST(QStringLiteral("%1 %2, %3 %4")
                      .arg(stage.table().text(row, StartColumn), pictureIn(stage, row, StartColumn),
                           stage.table().text(row, EndColumn), pictureIn(stage, row, EndColumn)),
                  "shown");
        }
    }
}

void tst_EffectTable::passLeavesCellsOfUnknownRulesUntouched_data()
{
    QTest::addColumn<QString>("startType");
    QTest::addColumn<QString>("endType");
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("end");

    textRow("unknown start", "5", "0", "kept cycle", "2 none");
    textRow("a start in cycles", "2", "0", "kept cycle", "2 none");
    textRow("unknown end", "0", "3", "1.5 none", "kept cycle");
    textRow("both unknown", "4294967295", "77", "kept cycle", "kept cycle");
    textRow("both known", "0", "0", "1.5 none", "3.5 none");
}

void tst_EffectTable::passLeavesCellsOfUnknownRulesUntouched()
{
    QFETCH(QString, startType);
    QFETCH(QString, endType);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("startfixedtime", 1500).with("endfixedtime", 2000).with("endtype", 2);
    stage.effect.internalGetEffectWidget();
    stage.effect.updateEffectTimes();
    const QPixmap cycle = stage.table().pixmap(0, EndColumn);
    for (const int column : {StartColumn, EndColumn}) {
        stage.table().setText(0, column, QStringLiteral("kept"));
        stage.table().setPixmap(0, column, cycle);
    }
    child->with("starttype", startType).with("endtype", endType).with("begin", 0).with("end", 0);

    stage.effect.updateEffectTimes();

    QTEST(stage.table().text(0, StartColumn) + u' ' + pictureIn(stage, 0, StartColumn), "start");
    QTEST(stage.table().text(0, EndColumn) + u' ' + pictureIn(stage, 0, EndColumn), "end");
}

void tst_EffectTable::passTouchesOnlyCellsThatChange()
{
    EditorStage stage;
    WidgetStub *first = stage.add(1);
    WidgetStub *second = stage.add(2);
    for (WidgetStub *child : {first, second})
        child->with("starttype", 0).with("endtype", 2).with("endcyclecount", 2);
    stage.open();
    stage.effect.updateEffectTimes();
    const QSignalSpy changes(stage.table().model(), &QAbstractItemModel::dataChanged);
    const auto lastChange = [&] {
        const auto cell = [&](int end) {
            const QModelIndex index = changes.last().at(end).toModelIndex();
            return QStringLiteral("%1,%2").arg(index.row()).arg(index.column());
        };
        return cell(0) + u' ' + cell(1);
    };

    stage.effect.updateEffectTimes();
    QCOMPARE(changes.count(), 0);

    second->setCycleTime(700);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(lastChange(), QStringLiteral("0,5 0,5"));
    QCOMPARE(stage.table().text(0, EndColumn), QStringLiteral("1.4"));

    // A broken link that is mended to the rule of before.
    first->with("starttype", 1).with("startlinkeid", 99);
    stage.effect.updateEffectTimes();
    QCOMPARE(changes.count(), 1);

    first->with("startfixedtime", 1);
    stage.effect.updateEffectTimes();
    QCOMPARE(changes.count(), 2);
    QCOMPARE(lastChange(), QStringLiteral("1,4 1,5"));

    second->with("endtype", 0).with("endfixedtime", 1400);
    stage.effect.updateEffectTimes();
    QCOMPARE(changes.count(), 3);
    QCOMPARE(lastChange(), QStringLiteral("0,5 0,5"));
    QCOMPARE(pictureIn(stage, 0, EndColumn), QStringLiteral("none"));
}

void tst_EffectTable::passTouchesNothingThatIsShownAlready()
{
    EditorStage stage;
    stage.add(1)->with("startfixedtime", 1500).with("endtype", 2).with("endcyclecount", 1);
    stage.add(2)->with("starttype", 1).with("startlinkeid", 1).with("endtype", 1);
    stage.effect.getEffect(2)->setProperty(QStringLiteral("endlinkeid"), QStringLiteral("1"));
    stage.effect.updateEffectTimes();
    stage.open();
    const QSignalSpy changes(stage.table().model(), &QAbstractItemModel::dataChanged);

    stage.effect.updateEffectTimes();
    QCOMPARE(changes.count(), 0);

    stage.clickHeader(NameColumn);
    stage.effect.updateEffectTimes();
    stage.effect.updateEffectTimes();
    QCOMPARE(changes.count(), 0);
}

void tst_EffectTable::passOverwritesForeignTextsAndPictures()
{
    EditorStage stage;
    stage.add(1)->with("endtype", 0).with("startfixedtime", 1500).with("endfixedtime", 500);
    stage.effect.internalGetEffectWidget();
    stage.effect.updateEffectTimes();
    TableWidget &table = stage.table();

    for (const int column : {StartColumn, EndColumn}) {
        table.setText(0, column, QStringLiteral("foreign"));
        table.setPixmap(0, column, table.pixmap(0, NameColumn));
    }
    stage.effect.updateEffectTimes();

    QCOMPARE(stage.row(0).mid(StartColumn, 2), QStringList({"1.5", "2"}));
    QCOMPARE(pictureIn(stage, 0, StartColumn), QStringLiteral("none"));
    QCOMPARE(pictureIn(stage, 0, EndColumn), QStringLiteral("none"));
}

void tst_EffectTable::passFindsItsRowsAfterSorting()
{
    EditorStage stage;
    WidgetStub *first = stage.add(1);
    WidgetStub *second = stage.add(2);
    stage.open();
    stage.effect.updateEffectTimes();
    stage.clickHeader(NameColumn);
    first->with("startfixedtime", 1000);
    second->with("startfixedtime", 2000);

    stage.effect.updateEffectTimes();
    QCOMPARE(stage.column(StartColumn), QStringList({"1", "2"}));

    stage.clickHeader(NameColumn);
    first->with("startfixedtime", 3000);
    stage.effect.updateEffectTimes();
    QCOMPARE(stage.column(StartColumn), QStringList({"2", "3"}));

    stage.effect.removeFromTable(2);
    first->with("startfixedtime", 4000);
    stage.effect.updateEffectTimes();
    QCOMPARE(stage.column(StartColumn), QStringList({"4"}));
}

void tst_EffectTable::passShowsTheFirstChildOfARepeatedEidInAllItsRows()
{
    EditorStage stage;
    stage.add(7)->with("startfixedtime", 1000);
    stage.add(7)->with("startfixedtime", 2000);
    stage.effect.internalGetEffectWidget();

    stage.effect.updateEffectTimes();

    QCOMPARE(stage.column(StartColumn), QStringList({"1", "1"}));
}

void tst_EffectTable::passLeavesRowsWithoutAChildUntouched_data()
{
    QTest::addColumn<QString>("eid");
    QTest::newRow("unknown eid") << "99";
    QTest::newRow("no number") << "abc";
    QTest::newRow("empty") << "";
}

void tst_EffectTable::passLeavesRowsWithoutAChildUntouched()
{
    QFETCH(QString, eid);
    EditorStage stage;
    stage.add(0)->with("startfixedtime", 1000);
    stage.add(1)->with("startfixedtime", 2000);
    stage.effect.internalGetEffectWidget();
    stage.table().setText(0, EidColumn, eid);
    stage.table().setText(0, StartColumn, QStringLiteral("kept"));

    stage.effect.updateEffectTimes();

    QCOMPARE(stage.column(StartColumn), QStringList({"kept", "1"}));
}

void tst_EffectTable::passRecomputesTheOwnEnd()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("endtype", 0).with("endfixedtime", 500);
    stage.effect.internalGetEffectWidget();
    const EndSignals announced(stage.effect);
    QString shownAtTheSignal;
    connect(&stage.effect, &MetaEffect::endTimeChanged, this,
            [&] { shownAtTheSignal = stage.table().text(0, EndColumn); });

    stage.effect.updateEffectTimes();

    QCOMPARE(announced.noted, QStringList({"end 500", "cycle 500"}));
    QCOMPARE(shownAtTheSignal, QStringLiteral("0"));
    QCOMPARE(stage.table().text(0, EndColumn), QStringLiteral("0.5"));
}

QTEST_MAIN(tst_EffectTable)
#include "tst_EffectTable.moc"
