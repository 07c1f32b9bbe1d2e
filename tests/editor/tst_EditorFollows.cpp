#include "BlankPanel.h"
#include "ChildKeys.h"
#include "EditorStage.h"
#include "EffectColumns.h"
#include "EffectPictures.h"
#include "EndSignals.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QSignalSpy>

using namespace meta;

namespace {

/// Child 1 lasts 4 s, child 2 follows it for one cycle of 1 s, child 3 lasts from 1 s to 2 s.
void addThree(EditorStage &stage)
{
    stage.add(1)->with("endfixedtime", 4000);
    stage.add(2)->with("starttype", 1).with("startlinkeid", 1).with("endtype", 2);
    stage.effect.getEffect(2)->setProperty("endcyclecount", "1");
    stage.add(3)->with("startfixedtime", 1000).with("endfixedtime", 1000);
    stage.effect.updateEffectTimes();
    stage.effect.init();
}

QString stale(EditorStage &stage)
{
    bool isLoop = false;
    const QString found = stage.staleTimes(&isLoop);
    return isLoop ? QStringLiteral("the links form a loop") : found;
}

/// Everything agrees: rows, selection, panel, times and the own end.
void checkAll(EditorStage &stage)
{
    CHECK_SANITY(stage);
    QCOMPARE(stale(stage), QString());
    quint32 latest = 0;
    const EffectList children = stage.effect.getEffects();
    for (const Effect *child : children)
        latest = std::max(latest, child->endTime());
    QCOMPARE(stage.effect.text("end"), QString::number(latest));
    for (int row = 0; row < stage.table().rowCount(); ++row) {
        const auto *child = stage.effect.getEffect(stage.table().text(row, EidColumn).toULong());
        QCOMPARE(stage.table().text(row, StartColumn), Millis(child->beginTime()).secondsText());
        QCOMPARE(stage.table().text(row, EndColumn), Millis(child->endTime()).secondsText());
    }
}

void checkNothingIsSelected(EditorStage &stage)
{
    QCOMPARE(stage.selectedEids(), QStringList());
    QCOMPARE(stage.table().selectedRows(), QList<int>());
    QVERIFY(!stage.table().currentIndex().isValid());
    checkPanelIsBlank(stage.form());
    CHECK_SANITY(stage);
}

/// Chooses an entry of the form's menu.
void chooseInMenu(const EditorStage &stage, const QString &text)
{
    const QList<QAction *> actions = stage.form().m_popupMenu.actions();
    for (QAction *action : actions) {
        if (action->text() == text) {
            action->trigger();
            return;
        }
    }
    qFatal("the menu has no such entry");
}

QString clipboardText()
{
    return QGuiApplication::clipboard()->text();
}

QString entryOf(Effect &effect)
{
    return QStringLiteral("<EFFECT-ENTRY>\n") + savedText(effect);
}

} // namespace

class tst_EditorFollows : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    // Children that come.
    void addedChildIsTheLastRowAndTheOnlySelectedOne();
    void addedChildMovesTheOwnEnd();
    void addedChildLeavesTypedTextToItsChild();
    void pastedChildrenAreRowsAndTheLastIsSelected();
    void pastedChildrenAreTimedAndAnnounced();
    void pastedChildIsTimedThoughThePanelStaysAsItIs();
    void pastingTheCopyOfTheSelectedChildLinksItToTheSame();
    void pastingRubbishChangesNoRow();

    // Children that go.
    void removalLeavesNoRowSelected_data();
    void removalLeavesNoRowSelected();
    void removalPressedAgainDeletesNothing_data();
    void removalPressedAgainDeletesNothing();
    void cutChildIsOnTheClipboardAndGone();
    void cuttingTheOnlyChildEndsAt0();
    void dependantsMoveAtTheNextPass_data();
    void dependantsMoveAtTheNextPass();
    void withTwoRowsSelectedNothingIsRemoved_data();
    void withTwoRowsSelectedNothingIsRemoved();
    void deletingASelectedChildLeavesItsRowToTheHost();
    void deletingAnotherChildKeepsTheSelection();
    void deletingAnotherChildKeepsTheNumberBeingTyped();
    void removalMarksTheMetaEffectDirty_data();
    void removalMarksTheMetaEffectDirty();
    void removalDropsTypedText();

    // Times that change.
    void newCycleTimeMovesRowsAndTheOwnEnd();
    void newCycleTimeKeepsTheSelection();
    void newCycleTimeOfADeletedChildsDependantIsHeard();
    void startingAndStoppingSwapsOnlyThePicture();
    void playingLeavesSelectionAndPanel();
    void initKeepsRowsAndSelection();
    void updateEndTimeFollowsTheChildren();
    void endOfANestedEffectMovesTheOuterRow();
};

void tst_EditorFollows::initTestCase()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
}

void tst_EditorFollows::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

// --- Children that come ---

void tst_EditorFollows::addedChildIsTheLastRowAndTheOnlySelectedOne()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(2);
    const QStringList before = stage.column(EidColumn);

    WidgetStub *child = stage.add(9);

    QCOMPARE(stage.column(EidColumn), before + QStringList{"9"});
    QCOMPARE(stage.table().selectedRows(), QList<int>({3}));
    QCOMPARE(stage.selectedEids(), QStringList({"9"}));
    QVERIFY(child->parameterWidget() && child->parameterWidget()->isVisible());
    QCOMPARE(stage.form().m_effectGroupBox->title(), QStringLiteral("Child 9 Parameters"));
    checkAll(stage);

    QTest::mouseClick(stage.form().m_deleteEffectButton, Qt::LeftButton);
    QCOMPARE(stage.column(EidColumn), before);
    checkAll(stage);
}

void tst_EditorFollows::addedChildMovesTheOwnEnd()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(3);
    const QSignalSpy ends(&stage.effect, &MetaEffect::endTimeChanged);
    const QSignalSpy cycles(&stage.effect, &Effect::cycleTimeChanged);
    auto *child = new WidgetStub(&stage.map, QStringLiteral("Stub"), 9);
    // Its panel looks like that of child 3, and no rule moves its times.
    child->with("startfixedtime", 1000).with("endfixedtime", 1000);
    child->with("starttype", 7).with("endtype", 7).with("begin", 2000).with("end", 7000);

    stage.effect.addChild(child);

    QCOMPARE(stage.effect.text("end"), QStringLiteral("7000"));
    QCOMPARE(ends.count(), 1);
    QCOMPARE(cycles.count(), 1);
    checkAll(stage);
}

// Showing the new child takes the focus, and so the text is entered.
void tst_EditorFollows::addedChildLeavesTypedTextToItsChild()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.click(stage.rowOf(2), FadeInColumn);
    const QPointer<QWidget> line = stage.table().indexWidget(stage.table().currentIndex());
    QTest::keyClicks(line, QStringLiteral("2.5"));

    stage.add(9);
    if (line)
        QTest::keyClick(line, Qt::Key_Return);
    QCoreApplication::processEvents();

    QCOMPARE(stage.effect.getEffect(2)->getPropertyString("fadein"), QStringLiteral("2500"));
    for (const quint32 eid : {1, 3, 9})
        QCOMPARE(stage.effect.getEffect(eid)->getPropertyString("fadein"), QStringLiteral("0"));
    CHECK_SANITY(stage);
}

void tst_EditorFollows::pastedChildrenAreRowsAndTheLastIsSelected()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(2);
    QGuiApplication::clipboard()->setText(entryOf(*stage.effect.getEffect(3))
                                          + entryOf(*stage.effect.getEffect(1)));

    chooseInMenu(stage, QStringLiteral("Paste Selected Effects"));

    QCOMPARE(stage.column(EidColumn), QStringList({"3", "2", "1", "4", "5"}));
    QCOMPARE(stage.column(NameColumn).mid(3), QStringList({"Copy of Child 3", "Copy of Child 1"}));
    QCOMPARE(stage.table().selectedRows(), QList<int>({4}));
    QCOMPARE(stage.selectedEids(), QStringList({"5"}));
    QCOMPARE(stage.form().m_effectGroupBox->title(), QStringLiteral("Copy of Child 1 Parameters"));
    QVERIFY(!stage.effect.ownDirty());
    checkAll(stage);
}

void tst_EditorFollows::pastedChildrenAreTimedAndAnnounced()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    StubEffect other(&stage.map, 8);
    other.with("name", QStringLiteral("Long")).with("startfixedtime", 2000);
    other.with("endfixedtime", 7000);
    QString text = entryOf(other);
    const EndSignals signalled(stage.effect);

    stage.effect.pasteEffect(text);

    QCOMPARE(stage.row(3).mid(StartColumn, 2), QStringList({"2", "9"}));
    QCOMPARE(stage.effect.text("end"), QStringLiteral("9000"));
    QCOMPARE(signalled.noted, QStringList({"end 9000", "cycle 9000"}));
    checkAll(stage);
}

// Showing it fills the panel with what stands there already, which starts no pass.
void tst_EditorFollows::pastedChildIsTimedThoughThePanelStaysAsItIs()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(3);
    StubEffect other(&stage.map, 8);
    other.with("startfixedtime", 1000).with("endfixedtime", 1000).with("end", 99000);
    QString text = entryOf(other);
    const EndSignals signalled(stage.effect);

    stage.effect.pasteEffect(text);

    QCOMPARE(stage.row(3).mid(StartColumn, 2), QStringList({"1", "2"}));
    QCOMPARE(signalled.noted, QStringList({"end 99000", "cycle 99000", "end 5000", "cycle 5000"}));
    checkAll(stage);
}

void tst_EditorFollows::pastingTheCopyOfTheSelectedChildLinksItToTheSame()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(2);

    chooseInMenu(stage, QStringLiteral("Copy Selected Effects"));
    QCOMPARE(stage.eids(), QStringList({"1", "2", "3"}));
    chooseInMenu(stage, QStringLiteral("Paste Selected Effects"));

    QCOMPARE(stage.eids(), QStringList({"1", "2", "3", "4"}));
    QCOMPARE(stage.effect.getEffect(4)->getPropertyString("startlinkeid"), QStringLiteral("1"));
    QCOMPARE(stage.row(3).mid(StartColumn, 2), QStringList({"4", "5"}));
    QCOMPARE(stage.form().m_startLinkEffectComboBox->currentText(), QStringLiteral("Child 1"));
    checkAll(stage);
}

void tst_EditorFollows::pastingRubbishChangesNoRow()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(2);
    QGuiApplication::clipboard()->setText(QStringLiteral("<EFFECT-ENTRY>\nrubbish"));

    stage.effect.handlePasteEffect();

    QCOMPARE(stage.eids(), QStringList({"1", "2", "3"}));
    QCOMPARE(stage.selectedEids(), QStringList({"2"}));
    checkAll(stage);
}

// --- Children that go ---

namespace {

enum Removal { Button, MenuDelete, MenuCut, SlotDelete, SlotCut };

void addRemovals()
{
    QTest::addColumn<int>("removal");

    QTest::addRow("button") << int(Button);
    QTest::addRow("menu, delete") << int(MenuDelete);
    QTest::addRow("menu, cut") << int(MenuCut);
    QTest::addRow("slot, delete") << int(SlotDelete);
    QTest::addRow("slot, cut") << int(SlotCut);
}

void remove(EditorStage &stage, int removal)
{
    switch (removal) {
    case Button: QTest::mouseClick(stage.form().m_deleteEffectButton, Qt::LeftButton); break;
    case MenuDelete: chooseInMenu(stage, QStringLiteral("Delete Selected Effects")); break;
    case MenuCut: chooseInMenu(stage, QStringLiteral("Cut Selected Effects")); break;
    case SlotDelete: stage.effect.handleDeleteEffect(); break;
    default: stage.effect.handleCutEffect(); break;
    }
}

} // namespace

void tst_EditorFollows::removalLeavesNoRowSelected_data()
{
    QTest::addColumn<int>("removal");
    QTest::addColumn<quint32>("eid");

    for (const quint32 eid : {1, 2, 3}) { // the last row, one between, the first row
        for (const int removal : {Button, MenuDelete, MenuCut, SlotDelete, SlotCut})
            QTest::addRow("eid %u, way %d", eid, removal) << removal << eid;
    }
}

void tst_EditorFollows::removalLeavesNoRowSelected()
{
    QFETCH(int, removal);
    QFETCH(quint32, eid);
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(eid);
    QStringList rest = stage.column(EidColumn);
    rest.removeAll(QString::number(eid));
    bool isDeleted = false;
    static_cast<StubEffect *>(stage.effect.getEffect(eid))->deleted = &isDeleted;

    remove(stage, removal);

    QVERIFY(isDeleted);
    QCOMPARE(stage.column(EidColumn), rest);
    checkNothingIsSelected(stage);
}

void tst_EditorFollows::removalPressedAgainDeletesNothing_data()
{
    addRemovals();
}

void tst_EditorFollows::removalPressedAgainDeletesNothing()
{
    QFETCH(int, removal);
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(2);
    remove(stage, removal);
    const QString before = savedText(stage.effect);

    remove(stage, removal);
    remove(stage, Button);

    QCOMPARE(savedText(stage.effect), before);
    QCOMPARE(stage.column(EidColumn), QStringList({"3", "1"}));
    checkNothingIsSelected(stage);
}

void tst_EditorFollows::cutChildIsOnTheClipboardAndGone()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(3);
    const QString text = entryOf(*stage.effect.getEffect(3));

    chooseInMenu(stage, QStringLiteral("Cut Selected Effects"));

    QCOMPARE(clipboardText(), text);
    QCOMPARE(stage.eids(), QStringList({"1", "2"}));
    checkAll(stage);

    chooseInMenu(stage, QStringLiteral("Paste Selected Effects"));
    QCOMPARE(stage.column(NameColumn), QStringList({"Child 2", "Child 1", "Copy of Child 3"}));
    QCOMPARE(stage.row(2).mid(StartColumn), QStringList({"1", "2", "0", "0", "4"}));
    checkAll(stage);
}

void tst_EditorFollows::cuttingTheOnlyChildEndsAt0()
{
    EditorStage stage;
    stage.add(1)->with("endfixedtime", 4000);
    stage.effect.updateEffectTimes();
    stage.open();
    QCOMPARE(stage.effect.text("end"), QStringLiteral("4000"));
    stage.selectEid(1);

    chooseInMenu(stage, QStringLiteral("Cut Selected Effects"));

    QCOMPARE(stage.effect.text("end"), QStringLiteral("0"));
    QCOMPARE(stage.table().rowCount(), 0);
    checkNothingIsSelected(stage);
    checkAll(stage);
}

void tst_EditorFollows::dependantsMoveAtTheNextPass_data()
{
    addRemovals();
}

void tst_EditorFollows::dependantsMoveAtTheNextPass()
{
    QFETCH(int, removal);
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(1);

    remove(stage, removal);
    stage.effect.updateEffectTimes();

    const Effect *dependant = stage.effect.getEffect(2);
    QCOMPARE(dependant->getPropertyString("starttype"), QStringLiteral("0"));
    QCOMPARE(dependant->getPropertyString("startfixedtime"), QStringLiteral("0"));
    QCOMPARE(stage.row(stage.rowOf(2)).mid(StartColumn, 2), QStringList({"0", "1"}));
    QVERIFY(stage.table().pixmap(stage.rowOf(2), StartColumn).isNull());
    QCOMPARE(stage.effect.text("end"), QStringLiteral("2000"));
    checkAll(stage);
}

void tst_EditorFollows::withTwoRowsSelectedNothingIsRemoved_data()
{
    addRemovals();
}

void tst_EditorFollows::withTwoRowsSelectedNothingIsRemoved()
{
    QFETCH(int, removal);
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.click(0, NameColumn);
    stage.click(1, NameColumn, Qt::ControlModifier);
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    stage.effect.setOwnDirty(false);

    remove(stage, removal);

    QCOMPARE(stage.eids(), QStringList({"1", "2", "3"}));
    QCOMPARE(stage.table().rowCount(), 3);
    const bool isCut = removal == MenuCut || removal == SlotCut;
    QCOMPARE(clipboardText(), isCut ? QString() : QStringLiteral("before"));
    QCOMPARE(stage.effect.ownDirty(), !isCut);
    checkAll(stage);
}

void tst_EditorFollows::deletingASelectedChildLeavesItsRowToTheHost()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(3);

    stage.effect.deleteEffect(stage.effect.getEffect(3));

    QCOMPARE(stage.selectedEids(), QStringList());
    QCOMPARE(stage.column(EidColumn), QStringList({"3", "2", "1"}));
    QVERIFY(!stage.form().m_startButtonGroup->isEnabled());
    QCOMPARE(stage.form().m_effectGroupBox->title(), QStringLiteral("Effect Parameters"));
    QVERIFY(stage.effect.ownDirty());
    stage.effect.updateEffectTimes(); // passes over the row
    stage.effect.removeFromTable(3);
    checkNothingIsSelected(stage);
    checkAll(stage);
}

void tst_EditorFollows::deletingAnotherChildKeepsTheSelection()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(2);

    stage.effect.deleteEffect(stage.effect.getEffect(3));

    QCOMPARE(stage.selectedEids(), QStringList({"2"}));
    QCOMPARE(stage.form().m_effectGroupBox->title(), QStringLiteral("Child 2 Parameters"));
    stage.effect.removeFromTable(3);
    CHECK_SANITY(stage);
    QVERIFY(stage.effect.ownDirty());
}

void tst_EditorFollows::deletingAnotherChildKeepsTheNumberBeingTyped()
{
    EditorStage stage;
    Effect *other = stage.add(1);
    const WidgetStub *child = stage.add(2);
    MetaWidget &form = stage.open();
    stage.selectEid(2);
    form.m_endCyclesRadioButton->click();
    form.m_endCyclesSpinBox->selectAll();
    QTest::keyClicks(form.m_endCyclesSpinBox, "7");
    QCOMPARE(child->text("endcyclecount"), QString("1"));
    stage.effect.removeFromTable(1);
    stage.selectEid(2);
    form.m_endCyclesSpinBox->selectAll();
    QTest::keyClicks(form.m_endCyclesSpinBox, "8");
    stage.effect.deleteEffect(other);
    QCOMPARE(child->text("endcyclecount"), QString("8"));
    QCOMPARE(form.m_endCyclesSpinBox->value(), 8);
}

void tst_EditorFollows::removalMarksTheMetaEffectDirty_data()
{
    addRemovals();
}

void tst_EditorFollows::removalMarksTheMetaEffectDirty()
{
    QFETCH(int, removal);
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(3);
    stage.effect.setOwnDirty(false);

    remove(stage, removal);

    QVERIFY(stage.effect.ownDirty());
}

void tst_EditorFollows::removalDropsTypedText()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.click(stage.rowOf(2), FadeInColumn);
    const QPointer<QWidget> line = stage.table().indexWidget(stage.table().currentIndex());
    QTest::keyClicks(line, QStringLiteral("2.5"));

    stage.effect.handleDeleteEffect(); // the row in which the text stands
    QCoreApplication::processEvents();

    QVERIFY(!line || !line->isVisible());
    for (const quint32 eid : {1, 3})
        QCOMPARE(stage.effect.getEffect(eid)->getPropertyString("fadein"), QStringLiteral("0"));
    checkNothingIsSelected(stage);
}

// --- Times that change ---

void tst_EditorFollows::newCycleTimeMovesRowsAndTheOwnEnd()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    const QSignalSpy ends(&stage.effect, &MetaEffect::endTimeChanged);
    const QSignalSpy cycles(&stage.effect, &Effect::cycleTimeChanged);

    static_cast<StubEffect *>(stage.effect.getEffect(2))->setCycleTime(2500);

    QCOMPARE(stage.row(stage.rowOf(2)).mid(StartColumn, 2), QStringList({"4", "6.5"}));
    QCOMPARE(stage.effect.text("end"), QStringLiteral("6500"));
    QCOMPARE(ends.count(), 1);
    QCOMPARE(ends.first().first().toULongLong(), 6500u);
    QCOMPARE(cycles.count(), 1);
    checkAll(stage);
}

void tst_EditorFollows::newCycleTimeKeepsTheSelection()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(2);

    static_cast<StubEffect *>(stage.effect.getEffect(2))->setCycleTime(2500);

    QCOMPARE(stage.selectedEids(), QStringList({"2"}));
    checkAll(stage);
}

void tst_EditorFollows::newCycleTimeOfADeletedChildsDependantIsHeard()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(1);
    remove(stage, Button);

    static_cast<StubEffect *>(stage.effect.getEffect(2))->setCycleTime(9000);

    QCOMPARE(stage.row(stage.rowOf(2)).mid(StartColumn, 2), QStringList({"0", "9"}));
    checkAll(stage);
}

void tst_EditorFollows::startingAndStoppingSwapsOnlyThePicture()
{
    EditorStage stage;
    addThree(stage);
    stage.effect.with("loop", "0");
    stage.open();
    stage.clickHeader(NameColumn);
    QStringList rows;
    for (int row = 0; row < 3; ++row)
        rows += stage.row(row);
    const struct
    {
        int ms;
        QString playing;
    } frames[] = {{500, "1"}, {1500, "1 3"}, {2500, "1"}, {4500, "2"}, {5500, ""}};
    for (const auto &frame : frames) {
        stage.frameAt(frame.ms);
        QStringList playing;
        QStringList rowsNow;
        for (int row = 0; row < 3; ++row) {
            const qint64 picture = stage.table().pixmap(row, NameColumn).cacheKey();
            if (picture == pictures::closedCircle().cacheKey())
                playing.append(stage.table().text(row, EidColumn));
            else
                QCOMPARE(picture, pictures::openCircle().cacheKey());
            rowsNow += stage.row(row);
        }
        QCOMPARE(playing.join(u' '), frame.playing);
        QCOMPARE(rowsNow, rows);
        checkAll(stage);
    }
}

void tst_EditorFollows::playingLeavesSelectionAndPanel()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(3);
    for (int ms = 0; ms < 12000; ms += 700) {
        stage.frameAt(ms);
        QCOMPARE(stage.selectedEids(), QStringList({"3"}));
        checkAll(stage);
    }
}

void tst_EditorFollows::initKeepsRowsAndSelection()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    stage.selectEid(1);
    stage.effect.getEffect(1)->setProperty("priority", "7");
    stage.effect.setOwnDirty(true);

    stage.effect.init();

    QCOMPARE(stage.eids(), QStringList({"2", "3", "1"}));
    QCOMPARE(stage.column(EidColumn), QStringList({"3", "2", "1"}));
    QCOMPARE(stage.selectedEids(), QStringList({"1"}));
    QVERIFY(!stage.effect.ownDirty());
    checkAll(stage);
}

void tst_EditorFollows::updateEndTimeFollowsTheChildren()
{
    EditorStage stage;
    addThree(stage);
    stage.open();
    QSignalSpy ends(&stage.effect, &MetaEffect::endTimeChanged);
    stage.effect.getEffect(3)->setProperty("end", "60000");

    stage.effect.updateEndTime();
    QCOMPARE(stage.effect.text("end"), QStringLiteral("60000"));
    QCOMPARE(ends.count(), 1);
    stage.effect.updateEndTime();
    QCOMPARE(ends.count(), 1);

    stage.effect.updateEffectTimes();
    QCOMPARE(stage.effect.text("end"), QStringLiteral("5000"));
    QCOMPARE(ends.count(), 2);
    checkAll(stage);
}

void tst_EditorFollows::endOfANestedEffectMovesTheOuterRow()
{
    EditorStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
    nested->with("endtype", 2).with("endcyclecount", 1);
    StubEffect *inner = stage.addTo(*nested, 7);
    inner->with("endtype", 2).with("endcyclecount", 1);
    nested->updateEffectTimes();
    nested->init();
    stage.open();
    stage.effect.updateEffectTimes();
    QCOMPARE(stage.table().text(0, EndColumn), QStringLiteral("1"));
    nested->internalGetEffectWidget(); // without its editor it announces no end

    inner->setCycleTime(8000);

    QCOMPARE(nested->text("end"), QStringLiteral("8000"));
    QCOMPARE(stage.table().text(0, EndColumn), QStringLiteral("8"));
    QCOMPARE(stage.effect.text("end"), QStringLiteral("8000"));
    CHECK_SANITY(stage);
}

QTEST_MAIN(tst_EditorFollows)
#include "tst_EditorFollows.moc"
