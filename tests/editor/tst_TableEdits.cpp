#include "EditorStage.h"
#include "EditsAlone.h"
#include "EffectPictures.h"
#include "LogCapture.h"
#include "PickerUser.h"

#include <QCheckBox>
#include <QRegularExpression>
#include <QSignalSpy>

#include <memory>
#include <optional>

using namespace meta;

namespace {

/// The saved text of every child, in list order, with its eid before it.
QStringList savedChildren(const MetaEffect &effect)
{
    QStringList texts;
    const EffectList children = effect.getEffects();
    for (Effect *child : children)
        texts.append(keys::eid.readText(*child) + u' ' + savedText(*child));
    return texts;
}

/// Opens the editor of the current cell and types over its text, without ending the edit.
QLineEdit *startTyping(const EditorStage &stage, const QString &text)
{
    TableWidget &table = stage.table();
    if (!table.indexWidget(table.currentIndex()))
        QTest::keyClick(&table, Qt::Key_F2);
    auto *line = qobject_cast<QLineEdit *>(table.indexWidget(table.currentIndex()));
    if (!line)
        qFatal("the current cell has no line editor");
    line->selectAll();
    QTest::keyClicks(line, text);
    return line;
}

void pressReturn(QLineEdit *line)
{
    QTest::keyClick(line, Qt::Key_Return);
    QCoreApplication::processEvents(); // the view accepts the text from its queue
}

} // namespace

class tst_TableEdits : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    // Columns.
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

    // What an edit does besides.
    void onlyStartAndEndRunAPass_data();
    void onlyStartAndEndRunAPass();
    void startAndEndMoveTheOwnEndOnce();
    void dirtyFlagIsNotTouched_data();
    void dirtyFlagIsNotTouched();
    void priorityMovesTheChildInTheListAndNoRow();
    void priorityThatIsNoNumberStaysAndRanksAs0();
    void cellsStayAsTyped_data();
    void cellsStayAsTyped();
    void startAndEndCellsShowWhatThePassMadeOfThem();
    void nameIsTheTitleOfTheParameters();
    void nameIsTheTitleEvenOfAChildThatIsNotShown();
    void nameIsTheTitleEvenWhenSeveralRowsAreSelected();
    void followingChildrenMoveWithTheStart();

    // Which child.
    void rowMeansTheChildOfItsEidInAnyOrder();
    void rowWithoutAChildWritesNothing_data();
    void rowWithoutAChildWritesNothing();
    void repeatedEidMeansTheLastChildInListOrder_data();
    void repeatedEidMeansTheLastChildInListOrder();
    void withoutAnEditorNothingHappens();

    // Typing.
    void typedNameSurvivesTheStartOfItsChild();
    void typedStartSurvivesAPass();
    void untouchedEditorWritesNothingBack();
    void unchangedTextStoresNothing();
    void escapeStoresNothing();
    void leavingTheCellStoresTheText_data();
    void leavingTheCellStoresTheText();
    void typedTextFollowsItsRowThroughASort();

    // The group picker.
    void leftClickOnAGroupOpensThePicker();
    void rightClickOnAGroupDoesNothing();
    void middleClickOnAGroupDoesNothing();
    void leftClickOnThePriorityDoesNothing();
    void leftClickElsewhereOpensNoPicker_data();
    void leftClickElsewhereOpensNoPicker();
    void groupOfARowWithoutAChildOpensNoPicker_data();
    void groupOfARowWithoutAChildOpensNoPicker();
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
    int passes() const
    {
        return static_cast<int>(
            m_debugLines->lines().count(QStringLiteral("MetaEffect::updateEffectTimes()")));
    }

    std::optional<LogCapture> m_debugLines;
};

void tst_TableEdits::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    m_debugLines.emplace(QtDebugMsg);
}

// --- Columns ---

void tst_TableEdits::textIsStoredAsTyped_data()
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

void tst_TableEdits::textIsStoredAsTyped()
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

void tst_TableEdits::secondsAreStoredAsMilliseconds_data()
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

void tst_TableEdits::secondsAreStoredAsMilliseconds()
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

void tst_TableEdits::endIsStoredAsTheDurationFromTheBegin_data()
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

void tst_TableEdits::endIsStoredAsTheDurationFromTheBegin()
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

void tst_TableEdits::editDoesTheseStepsInThisOrder_data()
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

void tst_TableEdits::editDoesTheseStepsInThisOrder()
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

void tst_TableEdits::cellBehindTheFadesChangesNothing_data()
{
    QTest::addColumn<int>("column");

    for (const int column : {8, 9, 100, -1})
        QTest::addRow("column %d", column) << column;
}

void tst_TableEdits::cellBehindTheFadesChangesNothing()
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

void tst_TableEdits::groupCellStoresTheUidOfItsText_data()
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

void tst_TableEdits::groupCellStoresTheUidOfItsText()
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

void tst_TableEdits::startMakesALinkedStartFixed()
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

void tst_TableEdits::endMakesAnyRuleAFixedDuration_data()
{
    QTest::addColumn<int>("rule");

    QTest::addRow("fixed") << 0;
    QTest::addRow("linked") << 1;
    QTest::addRow("cycles") << 2;
    QTest::addRow("unknown") << 7;
}

void tst_TableEdits::endMakesAnyRuleAFixedDuration()
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

void tst_TableEdits::typing2point5InStartOfALinkedChildMakesItFixedAt2500Ms()
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

void tst_TableEdits::typing1InEndOfAChildThatBeginsAt3000MsSetsADurationOf0()
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

void tst_TableEdits::typingAbcInFadeInSets0()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("fadein", 500);
    stage.open();

    stage.typeIntoCell(0, FadeInColumn, QStringLiteral("abc"));

    QCOMPARE(child->text("fadein"), QStringLiteral("0"));
}

void tst_TableEdits::typingMinus4InStartStartsAt0()
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

// --- What an edit does besides ---

void tst_TableEdits::onlyStartAndEndRunAPass_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("expected");

    QTest::addRow("name") << int(NameColumn) << 0;
    QTest::addRow("priority") << int(PriorityColumn) << 0;
    QTest::addRow("start") << int(StartColumn) << 1;
    QTest::addRow("end") << int(EndColumn) << 1;
    QTest::addRow("fade in") << int(FadeInColumn) << 0;
    QTest::addRow("fade out") << int(FadeOutColumn) << 0;
}

void tst_TableEdits::onlyStartAndEndRunAPass()
{
    QFETCH(int, column);
    QFETCH(int, expected);
    EditorStage stage;
    stage.add(1);
    stage.open();
    stage.click(0, column);
    QLineEdit *line = startTyping(stage, QStringLiteral("3"));
    const int before = passes();

    pressReturn(line);

    QCOMPARE(passes() - before, expected);
}

void tst_TableEdits::startAndEndMoveTheOwnEndOnce()
{
    EditorStage stage;
    stage.add(1)->with("endfixedtime", 1000);
    stage.effect.updateEffectTimes();
    stage.open();
    stage.click(0, StartColumn);
    QSignalSpy ends(&stage.effect, &MetaEffect::endTimeChanged);
    QSignalSpy cycles(&stage.effect, &Effect::cycleTimeChanged);

    stage.typeIntoCell(0, StartColumn, QStringLiteral("2"));
    QCOMPARE(ends.count(), 1);
    QCOMPARE(ends.takeFirst().first().toULongLong(), 3000u);
    QCOMPARE(cycles.count(), 1);
    QCOMPARE(cycles.takeFirst().first().toULongLong(), 3000u);

    stage.typeIntoCell(0, EndColumn, QStringLiteral("9"));
    QCOMPARE(ends.count(), 1);
    QCOMPARE(ends.takeFirst().first().toULongLong(), 9000u);
    QCOMPARE(cycles.count(), 1);
}

void tst_TableEdits::dirtyFlagIsNotTouched_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("dirty");

    for (const int column :
         {NameColumn, PriorityColumn, StartColumn, EndColumn, FadeInColumn, FadeOutColumn}) {
        QTest::addRow("column %d, clean", column) << column << false;
        QTest::addRow("column %d, dirty", column) << column << true;
    }
}

// The children are marked instead: isDirty() asks them.
void tst_TableEdits::dirtyFlagIsNotTouched()
{
    QFETCH(int, column);
    QFETCH(bool, dirty);
    EditorStage stage;
    stage.add(1);
    stage.effect.updateEffectTimes();
    stage.open();
    stage.click(0, column);
    stage.effect.setOwnDirty(dirty);

    // Text that leaves the own end as it is, which is a property of its own.
    stage.typeIntoCell(0, column, QStringLiteral("0.0"));

    QCOMPARE(stage.effect.ownDirty(), dirty);
}

void tst_TableEdits::priorityMovesTheChildInTheListAndNoRow()
{
    EditorStage stage;
    for (quint32 eid = 1; eid <= 3; ++eid)
        stage.add(eid);
    stage.open();
    QCOMPARE(stage.eids(), QStringList({"1", "2", "3"}));

    stage.typeIntoCell(stage.rowOf(1), PriorityColumn, QStringLiteral("5"));

    QCOMPARE(stage.eids(), QStringList({"2", "3", "1"}));
    QCOMPARE(stage.column(EidColumn), QStringList({"3", "2", "1"}));
    CHECK_SANITY(stage);
}

void tst_TableEdits::priorityThatIsNoNumberStaysAndRanksAs0()
{
    EditorStage stage;
    stage.add(1)->with("priority", 3);
    stage.add(2)->with("priority", 5);
    stage.effect.init();
    stage.open();

    stage.typeIntoCell(stage.rowOf(2), PriorityColumn, QStringLiteral("high"));

    QCOMPARE(stage.effect.getEffect(2)->getPropertyString("priority"), QStringLiteral("high"));
    QCOMPARE(stage.table().text(stage.rowOf(2), PriorityColumn), QStringLiteral("high"));
    QCOMPARE(stage.eids(), QStringList({"2", "1"}));
}

void tst_TableEdits::cellsStayAsTyped_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("text");

    QTest::addRow("name") << int(NameColumn) << " Sky ";
    QTest::addRow("priority") << int(PriorityColumn) << "007";
    QTest::addRow("priority, no number") << int(PriorityColumn) << "high";
    QTest::addRow("fade in") << int(FadeInColumn) << "2.00055";
    QTest::addRow("fade in, no number") << int(FadeInColumn) << "abc";
    QTest::addRow("fade out, negative") << int(FadeOutColumn) << "-4";
    QTest::addRow("fade out, empty") << int(FadeOutColumn) << "";
}

void tst_TableEdits::cellsStayAsTyped()
{
    QFETCH(int, column);
    QFETCH(QString, text);
    EditorStage stage;
    stage.add(1);
    stage.open();
    QStringList expected = stage.row(0);
    expected[column] = text;

    stage.typeIntoCell(0, column, text);
    stage.effect.updateEffectTimes();

    QCOMPARE(stage.row(0), expected);
}

void tst_TableEdits::startAndEndCellsShowWhatThePassMadeOfThem()
{
    EditorStage stage;
    stage.add(1)->with("endfixedtime", 500);
    stage.effect.updateEffectTimes();
    stage.open();

    stage.typeIntoCell(0, StartColumn, QStringLiteral("+02.0005"));
    QCOMPARE(stage.table().text(0, StartColumn), QStringLiteral("2"));
    QCOMPARE(stage.table().text(0, EndColumn), QStringLiteral("2.5"));

    stage.typeIntoCell(0, EndColumn, QStringLiteral("1"));
    QCOMPARE(stage.table().text(0, EndColumn), QStringLiteral("2"));

    stage.typeIntoCell(0, StartColumn, QStringLiteral("abc"));
    QCOMPARE(stage.table().text(0, StartColumn), QStringLiteral("0"));
    CHECK_SANITY(stage);
}

void tst_TableEdits::nameIsTheTitleOfTheParameters()
{
    EditorStage stage;
    stage.add(1);
    stage.open();

    stage.typeIntoCell(0, NameColumn, QStringLiteral("Sky"));
    QCOMPARE(stage.form().m_effectGroupBox->title(), QStringLiteral("Sky Parameters"));

    stage.typeIntoCell(0, NameColumn, QString());
    QCOMPARE(stage.form().m_effectGroupBox->title(), QStringLiteral(" Parameters"));
}

void tst_TableEdits::nameIsTheTitleEvenOfAChildThatIsNotShown()
{
    EditorStage stage;
    stage.add(1);
    stage.add(2);
    stage.open();
    stage.selectEid(1);

    stage.table().setText(stage.rowOf(2), NameColumn, QStringLiteral("Sky"));
    stage.effect.handleValueChanged(stage.rowOf(2), NameColumn);

    QCOMPARE(stage.form().m_effectGroupBox->title(), QStringLiteral("Sky Parameters"));
    QCOMPARE(stage.effect.getEffect(2)->getPropertyString("name"), QStringLiteral("Sky"));
    QCOMPARE(stage.effect.getEffect(1)->getPropertyString("name"), QStringLiteral("Child 1"));
    CHECK_SANITY(stage);
}

void tst_TableEdits::nameIsTheTitleEvenWhenSeveralRowsAreSelected()
{
    EditorStage stage;
    stage.add(1);
    stage.add(2);
    stage.open();
    stage.click(0, NameColumn);
    stage.click(1, NameColumn, Qt::ControlModifier);
    QCOMPARE(stage.form().m_effectGroupBox->title(), QStringLiteral("Effect Parameters"));

    pressReturn(startTyping(stage, QStringLiteral("Sky")));

    QCOMPARE(stage.form().m_effectGroupBox->title(), QStringLiteral("Sky Parameters"));
    QCOMPARE(stage.effect.getEffect(1)->getPropertyString("name"), QStringLiteral("Sky"));
    QCOMPARE(stage.effect.getEffect(2)->getPropertyString("name"), QStringLiteral("Child 2"));
    CHECK_SANITY(stage);
}

void tst_TableEdits::followingChildrenMoveWithTheStart()
{
    EditorStage stage;
    stage.add(1)->with("endfixedtime", 1000);
    stage.add(2)->with("starttype", 1).with("startlinkeid", 1).with("endfixedtime", 500);
    stage.effect.updateEffectTimes();
    stage.open();

    stage.typeIntoCell(stage.rowOf(1), StartColumn, QStringLiteral("4"));

    QCOMPARE(stage.row(stage.rowOf(2)).mid(StartColumn, 2), QStringList({"5", "5.5"}));
    QCOMPARE(stage.effect.text("end"), QStringLiteral("5500"));
    CHECK_SANITY(stage);
}

// --- Which child ---

void tst_TableEdits::rowMeansTheChildOfItsEidInAnyOrder()
{
    EditorStage stage;
    for (quint32 eid : {4, 0, 9, 2})
        stage.add(eid)->with("fadein", eid * 1000);
    stage.open();
    for (const int header : {FadeInColumn, FadeInColumn, NameColumn}) {
        stage.clickHeader(header);
        for (int row = 0; row < stage.table().rowCount(); ++row) {
            const QString name = QStringLiteral("row %1 by %2").arg(row).arg(header);
            const ulong eid = stage.table().text(row, EidColumn).toULong();
            QStringList others = savedChildren(stage.effect);
            const QString prefix = QString::number(eid) + u' ';
            others.removeIf([&prefix](const QString &text) { return text.startsWith(prefix); });

            stage.typeIntoCell(row, NameColumn, name);

            QCOMPARE(stage.effect.getEffect(eid)->getPropertyString("name"), name);
            QStringList othersNow = savedChildren(stage.effect);
            othersNow.removeIf([&prefix](const QString &text) { return text.startsWith(prefix); });
            QCOMPARE(othersNow, others);
        }
    }
}

void tst_TableEdits::rowWithoutAChildWritesNothing_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("eid");

    QTest::addRow("unknown eid") << 0 << "99";
    QTest::addRow("no eid") << 0 << "";
    QTest::addRow("broken eid") << 0 << "abc";
    QTest::addRow("negative eid") << 0 << "-1";
    QTest::addRow("fractional eid") << 0 << "0.0";
    QTest::addRow("eid of 33 bits") << 0 << "4294967296";
    QTest::addRow("row before the first") << -1 << "99";
    QTest::addRow("row behind the last") << 2 << "99";
}

// One of the children has eid 0, which is what broken text would read as.
void tst_TableEdits::rowWithoutAChildWritesNothing()
{
    QFETCH(int, row);
    QFETCH(QString, eid);
    EditorStage stage;
    stage.add(0);
    stage.add(1);
    stage.open();
    stage.table().setText(0, EidColumn, eid);
    const QStringList before = savedChildren(stage.effect);
    const QString title = stage.form().m_effectGroupBox->title();
    const int passesBefore = passes();

    for (int column = -1; column <= 9; ++column) {
        stage.table().setText(row, column, column == EidColumn ? eid : QStringLiteral("3"));
        stage.effect.handleValueChanged(row, column);
    }

    QCOMPARE(savedChildren(stage.effect), before);
    QCOMPARE(stage.eids(), QStringList({"0", "1"}));
    QCOMPARE(stage.form().m_effectGroupBox->title(), title);
    QCOMPARE(passes(), passesBefore);
}

void tst_TableEdits::repeatedEidMeansTheLastChildInListOrder_data()
{
    QTest::addColumn<int>("firstPriority");
    QTest::addColumn<int>("secondPriority");
    QTest::addColumn<int>("meant");

    QTest::addRow("in order of arrival") << 0 << 0 << 1;
    QTest::addRow("the first to arrive ranks last") << 9 << 1 << 0;
}

void tst_TableEdits::repeatedEidMeansTheLastChildInListOrder()
{
    QFETCH(int, firstPriority);
    QFETCH(int, secondPriority);
    QFETCH(int, meant);
    EditorStage stage;
    WidgetStub *twins[] = {stage.add(5), stage.add(5)};
    twins[0]->with("priority", firstPriority);
    twins[1]->with("priority", secondPriority);
    stage.add(6);
    stage.effect.init();
    stage.open();
    const QString other = savedText(*twins[1 - meant]);

    for (int row = 0; row < 3; ++row) {
        if (stage.table().text(row, EidColumn) != u"5")
            continue;
        const QString name = QStringLiteral("row %1").arg(row);
        stage.table().setText(row, NameColumn, name);
        stage.effect.handleValueChanged(row, NameColumn);
        QCOMPARE(twins[meant]->text("name"), name);
        QCOMPARE(savedText(*twins[1 - meant]), other);
    }
}

void tst_TableEdits::withoutAnEditorNothingHappens()
{
    EditorStage stage;
    stage.add(0);
    const QStringList before = savedChildren(stage.effect);
    PickerUser user;

    for (int column = 0; column <= 8; ++column) {
        stage.effect.handleValueChanged(0, column);
        stage.effect.handleClicked(0, column, Qt::LeftButton, {});
    }

    QCOMPARE(savedChildren(stage.effect), before);
    QCOMPARE(user.pickers(), 0);
    QCOMPARE(passes(), 0);
}

// --- Typing ---

void tst_TableEdits::typedNameSurvivesTheStartOfItsChild()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("startfixedtime", 500).with("endfixedtime", 1000);
    stage.effect.updateEffectTimes();
    stage.open();
    stage.frameAt(0);
    stage.click(0, NameColumn);
    QPointer<QLineEdit> line = startTyping(stage, QStringLiteral("Sk"));
    const qint64 stopped = stage.table().pixmap(0, NameColumn).cacheKey();

    stage.frameAt(600);
    QVERIFY(stage.table().pixmap(0, NameColumn).cacheKey() != stopped);
    QVERIFY(line);
    QCOMPARE(line->text(), QStringLiteral("Sk"));
    QCOMPARE(child->text("name"), QStringLiteral("Child 1"));

    QTest::keyClicks(line, QStringLiteral("y"));
    pressReturn(line);
    QCOMPARE(child->text("name"), QStringLiteral("Sky"));
    QCOMPARE(stage.table().pixmap(0, NameColumn).cacheKey(), pictures::closedCircle().cacheKey());
}

void tst_TableEdits::typedStartSurvivesAPass()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.add(2)->with("endtype", 2).with("endcyclecount", 1);
    child->with("starttype", 1).with("startlinkeid", 2);
    stage.effect.updateEffectTimes();
    stage.open();
    stage.click(stage.rowOf(1), StartColumn);
    QPointer<QLineEdit> line = startTyping(stage, QStringLiteral("2"));

    static_cast<WidgetStub *>(stage.effect.getEffect(2))->setCycleTime(8000);
    QCOMPARE(stage.table().text(stage.rowOf(1), StartColumn), QStringLiteral("8"));
    QVERIFY(line);
    QCOMPARE(line->text(), QStringLiteral("2"));

    QTest::keyClicks(line, QStringLiteral("5"));
    pressReturn(line);
    QCOMPARE(child->text("startfixedtime"), QStringLiteral("25000"));
    QCOMPARE(child->text("starttype"), QStringLiteral("0"));
    CHECK_SANITY(stage);
}

void tst_TableEdits::untouchedEditorWritesNothingBack()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.add(2);
    child->with("endtype", 2).with("endcyclecount", 1);
    stage.effect.updateEffectTimes();
    stage.open();
    stage.click(stage.rowOf(1), EndColumn);
    QPointer<QWidget> line = stage.table().indexWidget(stage.table().currentIndex());
    QVERIFY(line);

    child->setCycleTime(8000);
    stage.click(stage.rowOf(2), EndColumn);

    QVERIFY(!line || !line->isVisible());
    QCOMPARE(child->text("endtype"), QStringLiteral("2"));
    QCOMPARE(child->text("end"), QStringLiteral("8000"));
    QCOMPARE(stage.table().text(stage.rowOf(1), EndColumn), QStringLiteral("8"));
    CHECK_SANITY(stage);
}

void tst_TableEdits::unchangedTextStoresNothing()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("endtype", 2).with("endcyclecount", 1);
    stage.effect.updateEffectTimes();
    stage.open();
    stage.click(0, EndColumn);
    const QStringList before = savedChildren(stage.effect);
    const int passesBefore = passes();

    stage.typeIntoCell(0, EndColumn, QStringLiteral("1"));

    QCOMPARE(savedChildren(stage.effect), before);
    QCOMPARE(passes(), passesBefore);
}

void tst_TableEdits::escapeStoresNothing()
{
    EditorStage stage;
    stage.add(1);
    stage.open();
    stage.click(0, StartColumn);
    const QStringList before = savedChildren(stage.effect);
    const QStringList row = stage.row(0);

    QTest::keyClick(startTyping(stage, QStringLiteral("25")), Qt::Key_Escape);
    QCoreApplication::processEvents();

    QCOMPARE(savedChildren(stage.effect), before);
    QCOMPARE(stage.row(0), row);
}

void tst_TableEdits::leavingTheCellStoresTheText_data()
{
    QTest::addColumn<int>("how");

    QTest::addRow("tab") << 0;
    QTest::addRow("click on another row") << 1;
    QTest::addRow("click on another cell of the row") << 2;
    QTest::addRow("click on a field of the panel") << 3;
}

void tst_TableEdits::leavingTheCellStoresTheText()
{
    QFETCH(int, how);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.add(2);
    stage.open();
    stage.click(stage.rowOf(1), FadeInColumn);
    const QString other = savedText(*stage.effect.getEffect(2));
    QLineEdit *line = startTyping(stage, QStringLiteral("2.5"));

    switch (how) {
    case 0: QTest::keyClick(line, Qt::Key_Tab); break;
    case 1: stage.click(stage.rowOf(2), FadeInColumn); break;
    case 2: stage.click(stage.rowOf(1), FadeOutColumn); break;
    default: QTest::mouseClick(stage.form().m_startFixedLineEdit, Qt::LeftButton); break;
    }
    QCoreApplication::processEvents();

    QCOMPARE(child->text("fadein"), QStringLiteral("2500"));
    QCOMPARE(child->text("fadeout"), QStringLiteral("0"));
    if (how != 1) // being shown in the panel gives it the texts shown there
        QCOMPARE(savedText(*stage.effect.getEffect(2)), other);
    CHECK_SANITY(stage);
}

void tst_TableEdits::typedTextFollowsItsRowThroughASort()
{
    EditorStage stage;
    stage.add(1);
    stage.add(2);
    stage.open();
    const int row = stage.rowOf(2);
    stage.click(row, FadeInColumn);
    QPointer<QLineEdit> line = startTyping(stage, QStringLiteral("2.5"));

    stage.clickHeader(NameColumn);
    QVERIFY(stage.rowOf(2) != row);
    if (line)
        pressReturn(line);

    QCOMPARE(stage.effect.getEffect(2)->getPropertyString("fadein"), QStringLiteral("2500"));
    QCOMPARE(stage.effect.getEffect(1)->getPropertyString("fadein"), QStringLiteral("0"));
    QCOMPARE(stage.table().text(stage.rowOf(2), FadeInColumn), QStringLiteral("2.5"));
    QCOMPARE(stage.table().text(stage.rowOf(1), FadeInColumn), QStringLiteral("0"));
    CHECK_SANITY(stage);
}

// --- The group picker ---

void tst_TableEdits::leftClickOnAGroupOpensThePicker()
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

void tst_TableEdits::rightClickOnAGroupDoesNothing()
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

void tst_TableEdits::middleClickOnAGroupDoesNothing()
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

void tst_TableEdits::leftClickOnThePriorityDoesNothing()
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

void tst_TableEdits::leftClickElsewhereOpensNoPicker_data()
{
    QTest::addColumn<int>("column");

    for (int column = -1; column <= 9; ++column) {
        if (column != GroupColumn)
            QTest::addRow("column %d", column) << column;
    }
}

void tst_TableEdits::leftClickElsewhereOpensNoPicker()
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

void tst_TableEdits::groupOfARowWithoutAChildOpensNoPicker_data()
{
    rowWithoutAChildWritesNothing_data();
}

void tst_TableEdits::groupOfARowWithoutAChildOpensNoPicker()
{
    QFETCH(int, row);
    QFETCH(QString, eid);
    EditorStage stage;
    stage.add(0);
    stage.add(1);
    stage.open();
    stage.table().setText(0, EidColumn, eid);
    const QStringList before = savedChildren(stage.effect);
    const PickerUser user(PickerUser::picking(QStringLiteral("Windows")));

    stage.effect.handleClicked(row, GroupColumn, Qt::LeftButton, {});

    QCOMPARE(user.pickers(), 0);
    QCOMPARE(savedChildren(stage.effect), before);
}

void tst_TableEdits::acceptedGroupIsStoredAndShown_data()
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

void tst_TableEdits::acceptedGroupIsStoredAndShown()
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

void tst_TableEdits::cancelRestoresTheGroupAfterOthersWereClicked_data()
{
    QTest::addColumn<int>("how");

    QTest::addRow("Escape") << 0;
    QTest::addRow("Cancel button") << 1;
    QTest::addRow("closing the window") << 2;
}

void tst_TableEdits::cancelRestoresTheGroupAfterOthersWereClicked()
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

void tst_TableEdits::cancelWritesTheFormerGroupInDecimal_data()
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

void tst_TableEdits::cancelWritesTheFormerGroupInDecimal()
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

void tst_TableEdits::groupThatVanishesInThePickerLeavesTheCell()
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

void tst_TableEdits::pickingRunsNoPassAndLeavesTheDirtyFlag_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<bool>("dirty");

    for (const bool dirty : {false, true}) {
        const char *state = dirty ? "dirty" : "clean";
        QTest::addRow("accepted, %s", state) << "Windows" << dirty;
        QTest::addRow("cancelled, %s", state) << "" << dirty;
    }
}

void tst_TableEdits::pickingRunsNoPassAndLeavesTheDirtyFlag()
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

void tst_TableEdits::pickedGroupIsShownInTheRowWhereverItMoved()
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

void tst_TableEdits::pickedGroupIsShownInNoRowWhenItsOwnIsGone()
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

void tst_TableEdits::pickedGroupIsShownInTheRowThatWasMadeAnew()
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

void tst_TableEdits::groupOfARepeatedEidIsShownInTheClickedRow()
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

void tst_TableEdits::pickerIsGoneAfterwards()
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

QTEST_MAIN(tst_TableEdits)
#include "tst_TableEdits.moc"
