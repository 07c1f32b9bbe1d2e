#include "EditorStage.h"
#include "EffectColumns.h"
#include "LogCapture.h"
#include "QTableNumber.h"
#include "TablePictures.h"
#include "TextRow.h"

#include <QRegularExpression>

#include <optional>
#include <typeinfo>

using meta::ComboTableItem;
using meta::TableItem;
using meta::TableWidget;
using enum meta::EffectColumn;

class tst_EffectTableCells : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

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

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_EffectTableCells::init()
{
    // The offscreen platform says this of every window with a minimum size.
    QTest::failOnWarning(
        QRegularExpression(QStringLiteral("^(?!This plugin does not support propagateSizeHints)")));
    m_debugLines.emplace(QtDebugMsg);
}

void tst_EffectTableCells::rowShowsTheChild()
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

void tst_EffectTableCells::cellsAreOfTheirClassesAndEditTypes_data()
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

void tst_EffectTableCells::cellsAreOfTheirClassesAndEditTypes()
{
    QFETCH(int, column);
    EditorStage stage;
    stage.add(1)->with("starttype", 1);
    stage.effect.internalGetEffectWidget();

    const TableItem &cell = *stage.table().item(0, column);

    QTEST(QByteArray(typeid(cell).name()), "cellClass");
    QTEST(int(cell.editType()), "editType");
}

void tst_EffectTableCells::groupIsShownByNameOrElseAsNone_data()
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

void tst_EffectTableCells::groupIsShownByNameOrElseAsNone()
{
    QFETCH(QString, gid);
    EditorStage stage;
    stage.add(1)->with("gid", gid);
    stage.effect.internalGetEffectWidget();
    QTEST(stage.table().text(0, GroupColumn), "shown");
}

void tst_EffectTableCells::vanishedGroupIsShownAsNone()
{
    EditorStage stage;
    stage.add(1)->with("gid", 10);
    stage.effect.internalGetEffectWidget();
    QCOMPARE(stage.table().text(0, GroupColumn), QStringLiteral("Roof"));

    stage.map.removeGroup(10);
    stage.effect.refreshMetaWidget();

    QCOMPARE(stage.table().text(0, GroupColumn), QStringLiteral("None"));
}

void tst_EffectTableCells::timesAreShownInSeconds_data()
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

void tst_EffectTableCells::timesAreShownInSeconds()
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

void tst_EffectTableCells::priorityAndEidAreShownInDecimal_data()
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

void tst_EffectTableCells::priorityAndEidAreShownInDecimal()
{
    QFETCH(QString, stored);
    EditorStage stage;
    stage.add(1)->with("priority", stored).with("eid", stored);
    stage.effect.internalGetEffectWidget();
    QTEST(stage.table().text(0, PriorityColumn), "shown");
    QTEST(stage.table().text(0, EidColumn), "shown");
}

void tst_EffectTableCells::rulesAreShownAsPictures_data()
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

void tst_EffectTableCells::rulesAreShownAsPictures()
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

void tst_EffectTableCells::picturesAreOfTheirPixels_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("isRunning");
    QTest::addColumn<QStringList>("pixels");
    QTest::newRow("open circle") << int(NameColumn) << false << openCircle;
    QTest::newRow("closed circle") << int(NameColumn) << true << closedCircle;
    QTest::newRow("link") << int(StartColumn) << false << linkArrow;
    QTest::newRow("cycle") << int(EndColumn) << false << cycleArrow;
}

void tst_EffectTableCells::picturesAreOfTheirPixels()
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

void tst_EffectTableCells::everyRowOffersTheTypesOfItsOwn()
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

void tst_EffectTableCells::typeThatIsNotOfferedShowsTheFirstOne_data()
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

void tst_EffectTableCells::typeThatIsNotOfferedShowsTheFirstOne()
{
    QFETCH(QString, type);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("type", type);
    stage.effect.internalGetEffectWidget();
    QCOMPARE(stage.table().text(0, TypeColumn), QStringLiteral("Chase"));
    QCOMPARE(child->text("type"), type);
}

void tst_EffectTableCells::withoutTypesTheTypeCellIsEmpty_data()
{
    QTest::addColumn<QStringList>("types");
    QTest::newRow("no type at all") << QStringList();
    QTest::newRow("none to offer")
        << QStringList({"Meta Effect", "Selection", "Text", "White Fade"});
}

void tst_EffectTableCells::withoutTypesTheTypeCellIsEmpty()
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
    QCOMPARE(EditorStage::items(form.m_effectComboBox), QStringList());
    effect.refreshMetaWidget();
    QCOMPARE(EditorStage::items(form.m_effectComboBox), types.mid(2));
}

void tst_EffectTableCells::withoutAMapEveryGroupIsNone()
{
    OpenMetaEffect effect(nullptr, 0);
    auto *child = new StubEffect(nullptr, 1);
    child->with("gid", 10);
    effect.addChild(child);

    const auto &form = dynamic_cast<MetaWidget &>(*effect.internalGetEffectWidget());

    QCOMPARE(form.m_effectTable->text(0, GroupColumn), QStringLiteral("None"));
    QCOMPARE(form.m_effectTable->text(0, TypeColumn), QString());
}

void tst_EffectTableCells::fillingARowAgainReplacesAllItsCellsButTheName()
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

void tst_EffectTableCells::fillingClearsPicturesOfFormerRules()
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

void tst_EffectTableCells::fillingIgnoresNullAndRowsOutsideTheTable()
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

QTEST_MAIN(tst_EffectTableCells)
#include "tst_EffectTableCells.moc"
