#include "EditTraces.h"
#include "EditorStage.h"
#include "EditsAlone.h"
#include "EffectColumns.h"
#include "LogCapture.h"

#include <QRegularExpression>

#include <optional>

using namespace meta;

class tst_TableEditsColumns : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    void textIsStoredAsTyped_data();
    void textIsStoredAsTyped();
    void secondsAreStoredAsMilliseconds_data();
    void secondsAreStoredAsMilliseconds();
    void endIsStoredAsTheDurationFromTheBegin_data();
    void endIsStoredAsTheDurationFromTheBegin();
    void editDoesTheseStepsInThisOrder_data();
    void editDoesTheseStepsInThisOrder();
    void cellBehindTheFadesChangesNothing_data();
    void cellBehindTheFadesChangesNothing();
    void groupCellStoresTheUidOfItsText_data();
    void groupCellStoresTheUidOfItsText();
    void startMakesALinkedStartFixed();
    void endMakesAnyRuleAFixedDuration_data();
    void endMakesAnyRuleAFixedDuration();
    void typing2point5InStartOfALinkedChildMakesItFixedAt2500Ms();
    void typing1InEndOfAChildThatBeginsAt3000MsSetsADurationOf0();
    void typingAbcInFadeInSets0();
    void typingMinus4InStartStartsAt0();

private:
    int passes() const { return passesIn(*m_debugLines); }

    std::optional<LogCapture> m_debugLines;
};

void tst_TableEditsColumns::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    m_debugLines.emplace(QtDebugMsg);
}

void tst_TableEditsColumns::textIsStoredAsTyped_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");

    const QString name = QStringLiteral("name");
    for (const char *text : {"Sky", "", " two  blanks ", "7", "<b>&amp;\"", "None", "Child 2"})
        QTest::addRow("name \"%s\"", text) << int(NameColumn) << name << QString(text);
    const QString priority = QStringLiteral("priority");
    for (const char *text : {"12", "0", "-3", "1.5", "high", "", " 5 ", "007", "4294967296"})
        QTest::addRow("priority \"%s\"", text) << int(PriorityColumn) << priority << QString(text);
}

void tst_TableEditsColumns::textIsStoredAsTyped()
{
    QFETCH(int, column);
    QFETCH(QString, key);
    QFETCH(QString, text);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.add(2);
    child->with("priority", 7777);
    stage.open();
    const QString other = savedText(*stage.effect.getEffect(2));

    stage.typeIntoCell(stage.rowOf(1), column, text);

    QCOMPARE(child->getPropertyString(key), text);
    QCOMPARE(savedText(*stage.effect.getEffect(2)), other);
    CHECK_SANITY(stage);
}

void tst_TableEditsColumns::secondsAreStoredAsMilliseconds_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stored");

    const struct
    {
        int column;
        const char *name;
        const char *key;
    } columns[] = {{StartColumn, "start", "startfixedtime"},
                   {EndColumn, "end", "endfixedtime"},
                   {FadeInColumn, "fade in", "fadein"},
                   {FadeOutColumn, "fade out", "fadeout"}};
    const struct
    {
        const char *text;
        const char *stored;
    } texts[] = {
        {"2.5", "2500"},
        {"0", "0"},
        {"1", "1000"},
        {"0.001", "1"},
        {"0.0009", "0"},
        {"2.0005", "2000"},
        {"1.005", "1004"}, // the product is 1004.9999999999999
        {"1.9999", "1999"},
        {".5", "500"},
        {"5.", "5000"},
        {"+5", "5000"},
        {"007", "7000"},
        {"1e3", "1000000"},
        {"1E-1", "100"},
        {" 3", "3000"},
        {"1.5 ", "1500"},
        {"-4", "0"},
        {"-0.0", "0"},
        {"-1e300", "0"},
        {"4294967.2949", "4294967294"},
        {"4294967.295", "4294967295"},
        {"4294967.296", "4294967295"},
        {"5e6", "4294967295"},
        {"1e300", "4294967295"},
        {"inf", "4294967295"},
        {"-inf", "0"},
        {"nan", "0"},
        {"", "0"},
        {"abc", "0"},
        {"1,5", "0"},
        {"1e400", "0"},
        {"1e", "0"},
        {"0x10", "0"},
        {"2 sec", "0"},
        {"1 2", "0"},
        {".", "0"},
        {"infinity", "0"},
    };
    for (const auto &column : columns) {
        for (const auto &text : texts)
            QTest::addRow("%s \"%s\"", column.name, text.text)
                << column.column << QString(column.key) << QString(text.text)
                << QString(text.stored);
    }
}

void tst_TableEditsColumns::secondsAreStoredAsMilliseconds()
{
    QFETCH(int, column);
    QFETCH(QString, key);
    QFETCH(QString, text);
    QFETCH(QString, stored);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->setProperty(key, QStringLiteral("7777"));
    stage.effect.updateEffectTimes();
    stage.open();
    QCOMPARE(stage.table().text(0, column), QStringLiteral("7.777"));

    stage.typeIntoCell(0, column, text);

    QCOMPARE(child->getPropertyString(key), stored);
    CHECK_SANITY(stage);
}

void tst_TableEditsColumns::endIsStoredAsTheDurationFromTheBegin_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stored");

    const struct
    {
        const char *text;
        const char *stored;
    } rows[] = {
        {"5", "2000"},
        {"3.001", "1"},
        {"3.0009", "0"},
        {"3", "0"},
        {"2.9999", "0"},
        {"1", "0"},
        {"0", "0"},
        {"-4", "0"},
        {"-inf", "0"},
        {"nan", "0"},
        {"abc", "0"},
        {"", "0"},
        {"1e400", "0"},
        {"4294967.295", "4294964295"},
        // A later end than there can be is the last one: the child ends there, and not by
        // wrapping around before it begins.
        {"4294970", "4294964295"},
        {"1e300", "4294964295"},
        {"inf", "4294964295"},
    };
    for (const auto &row : rows)
        QTest::addRow("\"%s\"", row.text) << QString(row.text) << QString(row.stored);
}

void tst_TableEditsColumns::endIsStoredAsTheDurationFromTheBegin()
{
    QFETCH(QString, text);
    QFETCH(QString, stored);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("startfixedtime", 3000).with("endtype", 2).with("endcyclecount", 4);
    stage.effect.updateEffectTimes();
    stage.open();

    stage.typeIntoCell(0, EndColumn, text);

    QCOMPARE(child->text("endtype"), QStringLiteral("0"));
    QCOMPARE(child->text("endfixedtime"), stored);
    QCOMPARE(child->text("begin"), QStringLiteral("3000"));
    QCOMPARE(child->text("end"), QString::number(3000 + stored.toUInt()));
    CHECK_SANITY(stage);
}

void tst_TableEditsColumns::editDoesTheseStepsInThisOrder_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("steps");

    QTest::addRow("name") << int(NameColumn) << "Sky" << QStringList{"1 name=Sky"};
    QTest::addRow("type") << int(TypeColumn) << "Chase"
                          << QStringList{"changeEffectType 1 to Chase"};
    QTest::addRow("type, the same")
        << int(TypeColumn) << "Stub" << QStringList{"changeEffectType 1 to Stub"};
    QTest::addRow("group") << int(GroupColumn) << "Windows" << QStringList{"1 gid=11"};
    QTest::addRow("group, unknown") << int(GroupColumn) << "Nowhere" << QStringList{"1 gid=0"};
    QTest::addRow("priority") << int(PriorityColumn) << "9" << QStringList{"1 priority=9"};
    const QStringList passes = {"updateEffectTimes", "updateEndTime"};
    QTest::addRow("start") << int(StartColumn) << "2.5"
                           << QStringList{"1 starttype=0", "1 startfixedtime=2500"} + passes;
    QTest::addRow("start, no number")
        << int(StartColumn) << "abc" << QStringList{"1 starttype=0", "1 startfixedtime=0"} + passes;
    QTest::addRow("end") << int(EndColumn) << "2.5"
                         << QStringList{"1 endtype=0", "1 endfixedtime=1500"} + passes;
    QTest::addRow("end, no number")
        << int(EndColumn) << "abc" << QStringList{"1 endtype=0", "1 endfixedtime=0"} + passes;
    QTest::addRow("fade in") << int(FadeInColumn) << "2.5" << QStringList{"1 fadein=2500"};
    QTest::addRow("fade in, no number") << int(FadeInColumn) << "x" << QStringList{"1 fadein=0"};
    QTest::addRow("fade out") << int(FadeOutColumn) << "2.5" << QStringList{"1 fadeout=2500"};
    QTest::addRow("fade out, no number") << int(FadeOutColumn) << "x" << QStringList{"1 fadeout=0"};
    QTest::addRow("left of all") << -1 << "2.5" << QStringList();
    QTest::addRow("right of all") << 9 << "2.5" << QStringList();
}

void tst_TableEditsColumns::editDoesTheseStepsInThisOrder()
{
    QFETCH(int, column);
    QFETCH(QString, text);
    QFETCH(QStringList, steps);
    EditsAlone alone;
    StubEffect &child = alone.add(1);
    child.with("starttype", 1).with("startfixedtime", 7).with("endtype", 2).with("endfixedtime", 7);
    child.with("begin", 1000).with("fadein", 7).with("fadeout", 7).with("gid", 7);
    alone.table().setText(0, column, text);
    alone.journal.clear();

    alone.edits.handleValueChanged(0, column);

    QCOMPARE(alone.journal, steps);
}

void tst_TableEditsColumns::cellBehindTheFadesChangesNothing_data()
{
    QTest::addColumn<int>("column");

    for (const int column : {8, 9, 100, -1})
        QTest::addRow("column %d", column) << column;
}

void tst_TableEditsColumns::cellBehindTheFadesChangesNothing()
{
    QFETCH(int, column);
    EditorStage stage;
    stage.add(1);
    stage.open();
    const QStringList before = savedChildren(stage.effect);
    const QStringList row = stage.row(0);
    const int passesBefore = passes();

    stage.effect.handleValueChanged(0, column);

    QCOMPARE(savedChildren(stage.effect), before);
    QCOMPARE(stage.row(0), row);
    QCOMPARE(passes(), passesBefore);
    CHECK_SANITY(stage);
}

void tst_TableEditsColumns::groupCellStoresTheUidOfItsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stored");

    QTest::addRow("a group") << "Windows"
                             << "11";
    QTest::addRow("a group that is never offered") << "Lamp"
                                                   << "13";
    QTest::addRow("none") << "None"
                          << "0";
    QTest::addRow("no group of that name") << "windows"
                                           << "0";
    QTest::addRow("empty") << ""
                           << "0";
    QTest::addRow("a name that two groups have") << "Twin"
                                                 << "20";
}

void tst_TableEditsColumns::groupCellStoresTheUidOfItsText()
{
    QFETCH(QString, text);
    QFETCH(QString, stored);
    EditorStage stage;
    stage.map.addGroup(5, QStringLiteral("None"), ChasingGroup, {});
    stage.map.addGroup(21, QStringLiteral("Twin"), ChasingGroup, {});
    stage.map.addGroup(20, QStringLiteral("Twin"), ChasingGroup, {});
    WidgetStub *child = stage.add(1);
    child->with("gid", 10);
    stage.open();
    const int passesBefore = passes();

    stage.table().setText(0, GroupColumn, text);
    stage.effect.handleValueChanged(0, GroupColumn);

    QCOMPARE(child->text("gid"), stored);
    QCOMPARE(stage.table().text(0, GroupColumn), text);
    QCOMPARE(passes(), passesBefore);
}

void tst_TableEditsColumns::startMakesALinkedStartFixed()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.add(2)->with("endfixedtime", 4000);
    child->with("starttype", 1).with("startlinkeid", 2).with("startlinkoffset", 500);
    stage.effect.updateEffectTimes();
    stage.open();
    QCOMPARE(stage.table().text(stage.rowOf(1), StartColumn), QStringLiteral("4.5"));

    stage.typeIntoCell(stage.rowOf(1), StartColumn, QStringLiteral("abc"));

    QCOMPARE(child->text("starttype"), QStringLiteral("0"));
    QCOMPARE(child->text("startfixedtime"), QStringLiteral("0"));
    QCOMPARE(child->text("startlinkeid"), QStringLiteral("2"));
    QCOMPARE(child->text("begin"), QStringLiteral("0"));
    QVERIFY(stage.table().pixmap(stage.rowOf(1), StartColumn).isNull());
    CHECK_SANITY(stage);
}

void tst_TableEditsColumns::endMakesAnyRuleAFixedDuration_data()
{
    QTest::addColumn<int>("rule");

    QTest::addRow("fixed") << 0;
    QTest::addRow("linked") << 1;
    QTest::addRow("cycles") << 2;
    QTest::addRow("unknown") << 7;
}

void tst_TableEditsColumns::endMakesAnyRuleAFixedDuration()
{
    QFETCH(int, rule);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.add(2)->with("endfixedtime", 4000);
    child->with("startfixedtime", 1000).with("endtype", rule).with("endlinkeid", 2);
    child->with("endcyclecount", 3);
    stage.effect.updateEffectTimes();
    stage.open();

    stage.typeIntoCell(stage.rowOf(1), EndColumn, QStringLiteral("6"));

    QCOMPARE(child->text("endtype"), QStringLiteral("0"));
    QCOMPARE(child->text("endfixedtime"), QStringLiteral("5000"));
    QCOMPARE(child->text("startfixedtime"), QStringLiteral("1000"));
    QCOMPARE(child->text("end"), QStringLiteral("6000"));
    QVERIFY(stage.table().pixmap(stage.rowOf(1), EndColumn).isNull());
    CHECK_SANITY(stage);
}

void tst_TableEditsColumns::typing2point5InStartOfALinkedChildMakesItFixedAt2500Ms()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.add(2);
    child->with("starttype", 1).with("startlinkeid", 2);
    stage.open();

    stage.typeIntoCell(stage.rowOf(1), StartColumn, QStringLiteral("2.5"));

    QCOMPARE(child->text("starttype"), QStringLiteral("0"));
    QCOMPARE(child->text("startfixedtime"), QStringLiteral("2500"));
    CHECK_SANITY(stage);
}

void tst_TableEditsColumns::typing1InEndOfAChildThatBeginsAt3000MsSetsADurationOf0()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("startfixedtime", 3000).with("endfixedtime", 500);
    stage.effect.updateEffectTimes();
    stage.open();

    stage.typeIntoCell(0, EndColumn, QStringLiteral("1"));

    QCOMPARE(child->text("endtype"), QStringLiteral("0"));
    QCOMPARE(child->text("endfixedtime"), QStringLiteral("0"));
    CHECK_SANITY(stage);
}

void tst_TableEditsColumns::typingAbcInFadeInSets0()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("fadein", 500);
    stage.open();

    stage.typeIntoCell(0, FadeInColumn, QStringLiteral("abc"));

    QCOMPARE(child->text("fadein"), QStringLiteral("0"));
}

void tst_TableEditsColumns::typingMinus4InStartStartsAt0()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("startfixedtime", 500);
    stage.open();

    stage.typeIntoCell(0, StartColumn, QStringLiteral("-4"));

    QCOMPARE(child->text("starttype"), QStringLiteral("0"));
    QCOMPARE(child->text("startfixedtime"), QStringLiteral("0"));
    CHECK_SANITY(stage);
}

QTEST_MAIN(tst_TableEditsColumns)
#include "tst_TableEditsColumns.moc"
