#include "EditTraces.h"
#include "EditorStage.h"
#include "EffectColumns.h"
#include "EffectPictures.h"
#include "LogCapture.h"
#include "PickerUser.h"

#include <QRegularExpression>
#include <QSignalSpy>

#include <optional>

using namespace meta;

namespace {

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

    // What an edit does besides
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

    // Which child
    void rowMeansTheChildOfItsEidInAnyOrder();
    void rowWithoutAChildWritesNothing_data();
    void rowWithoutAChildWritesNothing();
    void groupOfARowWithoutAChildOpensNoPicker_data();
    void groupOfARowWithoutAChildOpensNoPicker();
    void repeatedEidMeansTheLastChildInListOrder_data();
    void repeatedEidMeansTheLastChildInListOrder();
    void withoutAnEditorNothingHappens();

    // Typing
    void typedNameSurvivesTheStartOfItsChild();
    void typedStartSurvivesAPass();
    void untouchedEditorWritesNothingBack();
    void unchangedTextStoresNothing();
    void escapeStoresNothing();
    void leavingTheCellStoresTheText_data();
    void leavingTheCellStoresTheText();
    void typedTextFollowsItsRowThroughASort();

private:
    int passes() const { return passesIn(*m_debugLines); }

    std::optional<LogCapture> m_debugLines;
};

void tst_TableEdits::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    m_debugLines.emplace(QtDebugMsg);
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

QTEST_MAIN(tst_TableEdits)
#include "tst_TableEdits.moc"
