#include "EditorStage.h"
#include "EffectColumns.h"
#include "LogCapture.h"
#include "TablePictures.h"

#include <QRegularExpression>
#include <QSignalSpy>

#include <optional>

using enum meta::EffectColumn;

namespace {

/// Gives the children these texts, in list order, which stays.
void setAll(EditorStage &stage, const char *key, const QStringList &texts)
{
    const EffectList children = stage.effect.getEffects();
    for (int i = 0; i < children.count(); ++i)
        children.at(i)->setProperty(QString::fromLatin1(key), texts.at(i));
}

} // namespace

class tst_EffectTableRows : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

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
    void directionOutlivesTheEditor();
    void columnsSortByTheirKind_data();
    void columnsSortByTheirKind();
    void wholeRowsMoveWithTheirPictures();
    void equalCellsKeepTheirOrderInBothDirections();
    void headerShowsColumnAndDirection();
    void clickBeforeTheEditorOpensDoesNotTurnTheDirection();
    void sortingTellsNobodyAndKeepsTheSelection();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_EffectTableRows::init()
{
    // The offscreen platform says this of every window with a minimum size.
    QTest::failOnWarning(
        QRegularExpression(QStringLiteral("^(?!This plugin does not support propagateSizeHints)")));
    m_debugLines.emplace(QtDebugMsg);
}

// --- Finding and removing rows ---

void tst_EffectTableRows::rowOfAnUnknownEidIsMinusOne()
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

void tst_EffectTableRows::rowIsFoundByItsEidAfterSorting()
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

void tst_EffectTableRows::firstRowOfARepeatedEidIsFound()
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

void tst_EffectTableRows::rowsAreFoundByTheNumberInTheirCell_data()
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

void tst_EffectTableRows::rowsAreFoundByTheNumberInTheirCell()
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

void tst_EffectTableRows::removingTakesTheRowOfThatEidAlone()
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

void tst_EffectTableRows::removingTakesTheFirstRowOfARepeatedEid()
{
    EditorStage stage;
    stage.add(7)->with("name", QStringLiteral("a"));
    stage.add(7)->with("name", QStringLiteral("b"));
    stage.effect.internalGetEffectWidget();

    stage.effect.removeFromTable(7);

    QCOMPARE(stage.column(NameColumn), QStringList({"a"}));
}

void tst_EffectTableRows::removingAnUnknownEidRemovesNothing()
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

void tst_EffectTableRows::firstClickSortsAscendingByNumberAndTheNextOneDescendingByAnyColumn()
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

void tst_EffectTableRows::everyClickTurnsTheDirection()
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

// The direction belongs to the meta effect, not to one of its editors.
void tst_EffectTableRows::directionOutlivesTheEditor()
{
    EditorStage stage;
    stage.add(1)->with("priority", 10);
    stage.add(2)->with("priority", 100);
    stage.open();
    stage.clickHeader(PriorityColumn);
    QCOMPARE(stage.column(PriorityColumn), QStringList({"10", "100"}));

    delete &stage.form();
    stage.open();
    stage.clickHeader(PriorityColumn);
    QCOMPARE(stage.column(PriorityColumn), QStringList({"100", "10"}));
}

void tst_EffectTableRows::columnsSortByTheirKind_data()
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

void tst_EffectTableRows::columnsSortByTheirKind()
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

void tst_EffectTableRows::wholeRowsMoveWithTheirPictures()
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

void tst_EffectTableRows::equalCellsKeepTheirOrderInBothDirections()
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

void tst_EffectTableRows::headerShowsColumnAndDirection()
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

void tst_EffectTableRows::clickBeforeTheEditorOpensDoesNotTurnTheDirection()
{
    EditorStage stage;
    stage.add(1);
    stage.add(2);
    stage.effect.handleHeaderClicked(NameColumn);
    stage.open();
    stage.clickHeader(NameColumn);
    QCOMPARE(stage.column(EidColumn), QStringList({"1", "2"}));
}

void tst_EffectTableRows::sortingTellsNobodyAndKeepsTheSelection()
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

QTEST_MAIN(tst_EffectTableRows)
#include "tst_EffectTableRows.moc"
