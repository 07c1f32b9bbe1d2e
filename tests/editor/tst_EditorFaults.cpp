#include "ChildKeys.h"
#include "EditorStage.h"
#include "EffectColumns.h"
#include "PickerUser.h"

#include <QAbstractItemView>
#include <QContextMenuEvent>
#include <QLoggingCategory>
#include <QRegularExpression>

#include <memory>

using namespace meta;

namespace {

/// What the user is in the middle of.
enum Situation {
    Idle,
    TypingInACell,
    TypeChooserOpen,
    LinkChooserOpen,
    PickerUp,
    PickerUpForANewChild,
    MenuUp,
    CountingCycles,
};

const struct
{
    Situation situation;
    const char *name;
} situations[] = {
    {Idle, "idle"},
    {TypingInACell, "typing in a cell"},
    {TypeChooserOpen, "the chooser of a type open"},
    {LinkChooserOpen, "the chooser of link targets open"},
    {PickerUp, "the group picker up"},
    {PickerUpForANewChild, "the group picker up for a new child"},
    {MenuUp, "the menu up"},
    {CountingCycles, "typing a number of cycles"},
};

/// A stage that may be deleted at any moment, with three children of which the second is linked to
/// the first and is the one that the user works at.
std::unique_ptr<EditorStage> makeStage()
{
    auto stage = std::make_unique<EditorStage>();
    stage->add(1)->with("endfixedtime", 1000);
    stage->add(2)->with("starttype", 1).with("startlinkeid", 1).with("endtype", 2);
    stage->effect.getEffect(2)->setProperty("endcyclecount", "3");
    stage->effect.getEffect(2)->setProperty("gid", "10");
    stage->add(3)->with("endfixedtime", 500);
    stage->effect.updateEffectTimes();
    stage->open();
    // Being shown after one of another rule gives a child the settings that it lacks; from then on
    // it is saved as it is.
    for (const quint32 eid : {2, 3, 2, 1, 2})
        stage->selectEid(eid);
    return stage;
}

/// The saved text of every child but those with the given eids, in list order.
QStringList savedChildren(const MetaEffect &effect, const QList<quint32> &without = {})
{
    QStringList texts;
    const EffectList children = effect.getEffects();
    for (Effect *child : children) {
        if (!without.contains(keys::eid.read(*child)))
            texts.append(savedText(*child));
    }
    return texts;
}

void inNextLoop(const std::function<void()> &action)
{
    QTimer::singleShot(0, qApp, action);
}

/// Brings the user into the situation at child 2, lets the fault happen there, and lets the user
/// finish what he was at if that is still there. The stage may be gone afterwards.
void happening(Situation situation, EditorStage &stage, const std::function<void()> &fault)
{
    TableWidget &table = stage.table();
    const int row = stage.rowOf(2);
    switch (situation) {
    case Idle: fault(); break;
    case TypingInACell: {
        stage.click(row, FadeInColumn);
        const QPointer<QWidget> line = table.indexWidget(table.currentIndex());
        QVERIFY(line);
        QTest::keyClicks(line, QStringLiteral("2.5"));
        fault();
        if (line)
            QTest::keyClick(line, Qt::Key_Return);
        break;
    }
    case TypeChooserOpen: {
        stage.click(row, TypeColumn);
        const QPointer<QComboBox> chooser =
            qobject_cast<QComboBox *>(table.indexWidget(table.currentIndex()));
        QVERIFY(chooser);
        chooser->showPopup();
        fault();
        if (chooser)
            chooser->hidePopup();
        break;
    }
    case LinkChooserOpen: {
        const QPointer<QComboBox> chooser = stage.form().m_startLinkEffectComboBox;
        QVERIFY(chooser->isEnabled());
        chooser->showPopup();
        fault();
        if (chooser && chooser->isEnabled()) {
            QTest::keyClick(chooser->view(), Qt::Key_Down);
            QTest::keyClick(chooser->view(), Qt::Key_Return);
        } else if (chooser) {
            chooser->hidePopup();
        }
        break;
    }
    case PickerUp:
    case PickerUpForANewChild: {
        const PickerUser user([&fault](GroupPickerDialog &dialog) {
            const QPointer<GroupPickerDialog> guarded(&dialog);
            PickerUser::click(dialog, QStringLiteral("Windows"));
            fault();
            if (guarded)
                PickerUser::accept(*guarded);
        });
        if (situation == PickerUp)
            stage.click(row, GroupColumn);
        else
            QTest::mouseClick(stage.form().m_newEffectButton, Qt::LeftButton);
        QCOMPARE(user.pickers(), 1);
        break;
    }
    case MenuUp: {
        bool isDone = false;
        inNextLoop([&] {
            const QPointer<QWidget> menu = QApplication::activePopupWidget();
            QVERIFY(menu);
            fault();
            if (menu)
                menu->close();
            isDone = true;
        });
        const QPoint place = table.visualRect(table.model()->index(row, NameColumn)).center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, place,
                                table.viewport()->mapToGlobal(place));
        QApplication::sendEvent(table.viewport(), &event);
        QVERIFY(isDone);
        break;
    }
    case CountingCycles: {
        const QPointer<QSpinBox> box = stage.form().m_endCyclesSpinBox;
        QVERIFY(box->isEnabled());
        box->setFocus();
        box->selectAll();
        QTest::keyClicks(box, QStringLiteral("12"));
        fault();
        if (box)
            QTest::keyClick(box, Qt::Key_Return);
        break;
    }
    }
    QCoreApplication::processEvents();
}

/// Plays, is saved and read again, and opens an editor that is right.
void checkThatAllWorks(EditorStage &stage)
{
    const EffectList children = stage.effect.getEffects();
    stage.effect.updateEffectTimes();
    stage.effect.resetStartTime();
    stage.frameAt(5000);
    for (Effect *child : children)
        QCOMPARE(child->getState(), child->beginTime() == 0 && child->endTime() > 0);

    const QString text = savedText(stage.effect);
    const std::unique_ptr<Effect> copy(stage.factory.createEffect(text));
    QVERIFY(copy);
    QCOMPARE(savedText(*copy), text);

    stage.effect.internalGetEffectWidget()->activateWindow();
    stage.open();
    CHECK_SANITY(stage);
    QCOMPARE(stage.table().rowCount(), children.count());
    for (int row = 0; row < stage.table().rowCount(); ++row) {
        stage.click(row, NameColumn);
        QCOMPARE(stage.selectedEids().size(), 1);
        CHECK_SANITY(stage);
    }
}

void addSituations()
{
    QTest::addColumn<int>("situation");

    for (const auto &entry : situations)
        QTest::addRow("%s", entry.name) << int(entry.situation);
}

} // namespace

class tst_EditorFaults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    // Things go away.
    void hostDeletesTheForm_data() { addSituations(); }
    void hostDeletesTheForm();
    void hostDeletesTheMetaEffect_data() { addSituations(); }
    void hostDeletesTheMetaEffect();
    void hostDeletesTheChildThatIsWorkedAt_data() { addSituations(); }
    void hostDeletesTheChildThatIsWorkedAt();
    void hostDeletesAnotherChild_data() { addSituations(); }
    void hostDeletesAnotherChild();
    void hostDeletesTheFormAndAsksForAnotherAtOnce_data() { addSituations(); }
    void hostDeletesTheFormAndAsksForAnotherAtOnce();
    void hostDeletesTheFormLater_data() { addSituations(); }
    void hostDeletesTheFormLater();
    void freshEditorSelectsNothingAndDeletesNothing();
    void hostDeletesTheFormWhenTheEndMoves();
    void acceptedGroupStaysWhenTheFormGoesAtOnce();
    void rejectedGroupIsTakenBackWhenTheFormGoesAtOnce();
    void childDeletesItsParameterWidget();
    void groupVanishesWhileTheEditorIsOpen();

    // Nothing to offer; the same eid twice.
    void withoutTypesTheEditorWorks();
    void repeatedEidsGiveARowEach();
    void repeatedEidsAreSelectedAndEdited();
    void repeatedEidsAreDeletedOneByOne();
    void newChildBesideRepeatedEidsGetsItsOwn();

    // A meta effect within a meta effect.
    void ourFormGoesWithTheNestedOneInside();
    void nestedEffectGoesWithItsFormInside();
    void nestedFormGoesAlone();
    void allGoesWithTheNestedFormInside();
    void editsInTheNestedFormReachTheOuterTable();

    // The focus.
    void anotherWindowTakesTheFocusFromTypedText();
    void anotherWindowTakesTheFocusFromAChooser();
    void anotherWindowTakesTheFocusFromTypedCycles();
    void hostRefreshesAtEveryChangeOfTheFocus();
};

void tst_EditorFaults::initTestCase()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
}

void tst_EditorFaults::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

// --- Things go away ---

// What was not entered is not stored, and no other child is written to.
void tst_EditorFaults::hostDeletesTheForm()
{
    QFETCH(int, situation);
    const auto stage = makeStage();
    const QStringList before = savedChildren(stage->effect);
    const QPointer<MetaWidget> form(&stage->form());

    happening(Situation(situation), *stage, [&] { delete form; });

    QVERIFY(!form);
    QVERIFY(!stage->effect.editorWidget());
    QCOMPARE(savedChildren(stage->effect, {4}), before);
    QCOMPARE(stage->eids().contains("4"), situation == PickerUpForANewChild);
    if (situation == PickerUpForANewChild)
        QCOMPARE(stage->effect.getEffect(4)->getPropertyString("gid"), QStringLiteral("0"));
    checkThatAllWorks(*stage);
}

void tst_EditorFaults::hostDeletesTheMetaEffect()
{
    QFETCH(int, situation);
    auto stage = makeStage();
    const QPointer<MetaWidget> form(&stage->form());
    int deletions = 0;
    for (const quint32 eid : {1, 2, 3})
        static_cast<StubEffect *>(stage->effect.getEffect(eid))->deletions = &deletions;

    happening(Situation(situation), *stage, [&] { stage.reset(); });

    QVERIFY(!form);
    QCOMPARE(deletions, 3);
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(!QApplication::activePopupWidget());
}

// The host takes the row as well, for deleting a child leaves it.
void tst_EditorFaults::hostDeletesTheChildThatIsWorkedAt()
{
    QFETCH(int, situation);
    const quint32 victim = situation == PickerUpForANewChild ? 4 : 2;
    const auto stage = makeStage();
    const QStringList before = savedChildren(stage->effect, {victim});

    happening(Situation(situation), *stage,
              [&] { stage->effect.deleteEffect(stage->effect.getEffect(victim)); });

    QCOMPARE(savedChildren(stage->effect), before);
    QCOMPARE(stage->selectedEids(), QStringList());
    QVERIFY(!stage->form().m_startButtonGroup->isEnabled());
    QCOMPARE(stage->rowOf(victim) >= 0, true);
    stage->effect.removeFromTable(victim);
    CHECK_SANITY(*stage);
    QTest::mouseClick(stage->form().m_deleteEffectButton, Qt::LeftButton);
    QCOMPARE(savedChildren(stage->effect), before);
    checkThatAllWorks(*stage);
}

void tst_EditorFaults::hostDeletesAnotherChild()
{
    QFETCH(int, situation);
    const auto stage = makeStage();
    const QString first = savedText(*stage->effect.getEffect(1));

    happening(Situation(situation), *stage, [&] {
        stage->effect.deleteEffect(stage->effect.getEffect(3));
        stage->effect.removeFromTable(3);
    });

    QCOMPARE(savedText(*stage->effect.getEffect(1)), first);
    QVERIFY(stage->effect.getEffect(2));
    QCOMPARE(stage->effect.getEffect(2)->getPropertyString("gid"),
             situation == PickerUp ? QStringLiteral("11") : QStringLiteral("10"));
    CHECK_SANITY(*stage);
    checkThatAllWorks(*stage);
}

void tst_EditorFaults::hostDeletesTheFormAndAsksForAnotherAtOnce()
{
    QFETCH(int, situation);
    const auto stage = makeStage();
    const QStringList before = savedChildren(stage->effect);

    happening(Situation(situation), *stage, [&] {
        delete &stage->form();
        stage->effect.internalGetEffectWidget();
    });

    QCOMPARE(savedChildren(stage->effect, {4}), before);
    CHECK_SANITY(*stage);
    QCOMPARE(stage->selectedEids(), QStringList());
    checkThatAllWorks(*stage);
}

void tst_EditorFaults::hostDeletesTheFormLater()
{
    QFETCH(int, situation);
    const auto stage = makeStage();
    const QPointer<MetaWidget> form(&stage->form());
    const QStringList first = {savedText(*stage->effect.getEffect(1)),
                               savedText(*stage->effect.getEffect(3))};

    happening(Situation(situation), *stage, [&] { form->deleteLater(); });
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    QVERIFY(!form);
    QCOMPARE(QStringList(
                 {savedText(*stage->effect.getEffect(1)), savedText(*stage->effect.getEffect(3))}),
             first);
    checkThatAllWorks(*stage);
}

void tst_EditorFaults::freshEditorSelectsNothingAndDeletesNothing()
{
    const auto stage = makeStage();
    QCOMPARE(stage->selectedEids(), QStringList({"2"}));
    delete &stage->form();
    stage->open();

    QCOMPARE(stage->selectedEids(), QStringList());
    QCOMPARE(stage->table().selectedRows(), QList<int>());
    QTest::mouseClick(stage->form().m_deleteEffectButton, Qt::LeftButton);
    QCOMPARE(stage->eids(), QStringList({"1", "2", "3"}));
}

void tst_EditorFaults::hostDeletesTheFormWhenTheEndMoves()
{
    const auto stage = makeStage();
    connect(&stage->effect, &MetaEffect::endTimeChanged, &stage->form(),
            [&stage] { delete &stage->form(); });

    static_cast<StubEffect *>(stage->effect.getEffect(2))->setCycleTime(9000);

    QVERIFY(!stage->effect.editorWidget());
    QCOMPARE(stage->effect.text("end"), QStringLiteral("28000"));
    checkThatAllWorks(*stage);
}

void tst_EditorFaults::acceptedGroupStaysWhenTheFormGoesAtOnce()
{
    const auto stage = makeStage();
    const PickerUser user([&stage](GroupPickerDialog &dialog) {
        PickerUser::click(dialog, QStringLiteral("Windows"));
        dialog.accept();
        delete &stage->form();
    });

    stage->click(stage->rowOf(2), GroupColumn);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(stage->effect.getEffect(2)->getPropertyString("gid"), QStringLiteral("11"));
    checkThatAllWorks(*stage);
}

void tst_EditorFaults::rejectedGroupIsTakenBackWhenTheFormGoesAtOnce()
{
    const auto stage = makeStage();
    const QStringList before = savedChildren(stage->effect);
    const PickerUser user([&stage](GroupPickerDialog &dialog) {
        PickerUser::click(dialog, QStringLiteral("Windows"));
        dialog.reject();
        delete &stage->form();
    });

    stage->click(stage->rowOf(2), GroupColumn);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(savedChildren(stage->effect), before);
    checkThatAllWorks(*stage);
}

void tst_EditorFaults::childDeletesItsParameterWidget()
{
    const auto stage = makeStage();
    auto *child = static_cast<WidgetStub *>(stage->effect.getEffect(2));
    const QStringList before = savedChildren(stage->effect);
    QVERIFY(child->parameterWidget()->isVisible());

    child->deleteParameterWidget();
    stage->effect.refreshWidgets();
    QVERIFY(child->parameterWidget()->isVisible());

    child->deleteParameterWidget();
    stage->selectEid(1);
    stage->selectEid(2);
    QVERIFY(child->parameterWidget()->isVisible());
    QCOMPARE(child->parameterWidget()->parentWidget(), stage->form().m_effectParameterFrame);
    QCOMPARE(savedChildren(stage->effect), before);

    child->deleteParameterWidget();
    QTest::mouseClick(stage->form().m_deleteEffectButton, Qt::LeftButton);
    QCOMPARE(stage->eids(), QStringList({"1", "3"}));
    checkThatAllWorks(*stage);
}

void tst_EditorFaults::groupVanishesWhileTheEditorIsOpen()
{
    const auto stage = makeStage();
    const QStringList before = savedChildren(stage->effect);
    stage->map.removeGroup(10);

    stage->effect.refreshWidgets();
    stage->effect.updateEffectTimes();
    QCOMPARE(stage->table().text(stage->rowOf(2), GroupColumn), QStringLiteral("Roof"));
    stage->effect.refreshMetaWidget();
    QCOMPARE(stage->table().text(stage->rowOf(2), GroupColumn), QStringLiteral("None"));
    QCOMPARE(savedChildren(stage->effect), before);

    const PickerUser user(PickerUser::picking(QStringLiteral("Windows")));
    stage->click(stage->rowOf(2), GroupColumn);
    QCOMPARE(user.pickers(), 1);
    QCOMPARE(stage->table().text(stage->rowOf(2), GroupColumn), QStringLiteral("Windows"));
    checkThatAllWorks(*stage);
}

// --- Nothing to offer; the same eid twice ---

void tst_EditorFaults::withoutTypesTheEditorWorks()
{
    rehearsal::StageMap map;
    rehearsal::EffectFactory factory(map);
    OpenMetaEffect effect(&map, 0);
    effect.addChild(new StubEffect(&map, 1));
    auto *form = qobject_cast<MetaWidget *>(effect.internalGetEffectWidget());
    QVERIFY(form);
    form->show();
    QVERIFY(QTest::qWaitForWindowActive(form));
    TableWidget &table = *form->m_effectTable;
    const QModelIndex type = table.model()->index(0, TypeColumn);
    QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, table.visualRect(type).center());
    const QString before = savedText(*effect.getEffect(1));
    auto *chooser = qobject_cast<QComboBox *>(table.indexWidget(type));
    QVERIFY(chooser);
    QCOMPARE(chooser->count(), 0);
    QCOMPARE(table.text(0, TypeColumn), QString());
    QTest::keyClick(chooser, Qt::Key_Down);
    QTest::keyClick(chooser, Qt::Key_Tab);
    effect.refreshMetaWidget();
    QCOMPARE(table.rowCount(), 1);
    QTest::ignoreMessage(
        QtWarningMsg, QRegularExpression(QStringLiteral("^In file MetaEffect, line \\d+: Out of")));

    QTest::mouseClick(form->m_newEffectButton, Qt::LeftButton);

    QCOMPARE(effect.getEffects().count(), 1);
    QCOMPARE(savedText(*effect.getEffect(1)), before);
}

void tst_EditorFaults::repeatedEidsGiveARowEach()
{
    EditorStage stage;
    stage.add(5);
    stage.add(6);
    stage.add(5)->with("name", QStringLiteral("Twin"));
    stage.open();

    QCOMPARE(stage.column(EidColumn), QStringList({"5", "6", "5"}));
    QCOMPARE(stage.column(NameColumn), QStringList({"Twin", "Child 6", "Child 5"}));
    QCOMPARE(stage.rowOf(5), 0);
    CHECK_SANITY(stage);
}

// Shown is the first child in list order, edited the last.
void tst_EditorFaults::repeatedEidsAreSelectedAndEdited()
{
    EditorStage stage;
    WidgetStub *first = stage.add(5);
    WidgetStub *last = stage.add(5);
    WidgetStub *other = stage.add(6);
    last->with("name", QStringLiteral("Twin"));
    stage.open();
    const QString otherText = savedText(*other);
    for (const int row : {1, 2}) {
        stage.click(row, NameColumn);
        QCOMPARE(stage.form().m_effectGroupBox->title(), QStringLiteral("Child 5 Parameters"));
        QVERIFY(first->parameterWidget()->isVisible());
        QVERIFY(!last->parameterWidget());
        const QString firstText = savedText(*first);

        stage.typeIntoCell(row, FadeInColumn, QString::number(row));

        QCOMPARE(last->text("fadein"), QString::number(row * 1000));
        QCOMPARE(savedText(*first), firstText);
        QCOMPARE(savedText(*other), otherText);
    }
}

void tst_EditorFaults::repeatedEidsAreDeletedOneByOne()
{
    EditorStage stage;
    int deletions = 0;
    stage.add(5)->deletions = &deletions;
    stage.add(5)->deletions = &deletions;
    WidgetStub *other = stage.add(6);
    const QString otherText = savedText(*other);
    stage.open();

    for (int deleted = 1; deleted <= 2; ++deleted) {
        stage.selectEid(5);
        QTest::mouseClick(stage.form().m_deleteEffectButton, Qt::LeftButton);
        QCOMPARE(deletions, deleted);
        QCOMPARE(stage.table().rowCount(), 3 - deleted);
        CHECK_SANITY(stage);
    }
    QCOMPARE(stage.eids(), QStringList({"6"}));
    QCOMPARE(savedText(*other), otherText);
}

void tst_EditorFaults::newChildBesideRepeatedEidsGetsItsOwn()
{
    EditorStage stage;
    stage.add(5);
    stage.add(5);
    stage.open();
    const PickerUser user(PickerUser::picking(QStringLiteral("Windows")));

    QTest::mouseClick(stage.form().m_newEffectButton, Qt::LeftButton);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(stage.column(EidColumn), QStringList({"5", "5", "6"}));
    QCOMPARE(stage.column(GroupColumn), QStringList({"None", "None", "Windows"}));
    CHECK_SANITY(stage);
}

// --- A meta effect within a meta effect ---

namespace {

/// Child 1 is a meta effect with children 7 and 8, selected and with its form inside ours; child 2
/// is a stub.
struct Nest
{
    Nest()
    {
        stage->add(2);
        nested = stage->addNestedTo(stage->effect, 1);
        nested->with("endtype", 2).with("endcyclecount", 1); // as long as its children
        for (const quint32 eid : {7, 8}) {
            auto *child = new WidgetStub(&stage->map, QStringLiteral("Stub"), eid);
            child->with("endfixedtime", eid * 1000);
            nested->addChild(child);
        }
        nested->updateEffectTimes();
        nested->init();
        stage->open();
        stage->selectEid(1);
        form = qobject_cast<MetaWidget *>(nested->editorWidget());
    }

    std::unique_ptr<EditorStage> stage = std::make_unique<EditorStage>();
    OpenMetaEffect *nested = nullptr;
    QPointer<MetaWidget> form;
};

} // namespace

void tst_EditorFaults::ourFormGoesWithTheNestedOneInside()
{
    Nest nest;
    QVERIFY(nest.form && nest.form->isVisible());
    const QString before = savedText(*nest.nested);

    delete &nest.stage->form();

    QVERIFY(!nest.form);
    QVERIFY(!nest.nested->editorWidget());
    QCOMPARE(savedText(*nest.nested), before);
    nest.nested->updateEffectTimes();
    nest.stage->open();
    CHECK_SANITY(*nest.stage);
    nest.stage->selectEid(1);
    auto *fresh = qobject_cast<MetaWidget *>(nest.nested->editorWidget());
    QVERIFY(fresh && fresh->isVisible());
    QCOMPARE(fresh->parentWidget(), nest.stage->form().m_effectParameterFrame);
    QCOMPARE(fresh->m_effectTable->rowCount(), 2);
}

void tst_EditorFaults::nestedEffectGoesWithItsFormInside()
{
    Nest nest;
    const QString other = savedText(*nest.stage->effect.getEffect(2));

    QTest::mouseClick(nest.stage->form().m_deleteEffectButton, Qt::LeftButton);

    QVERIFY(!nest.form);
    QCOMPARE(nest.stage->eids(), QStringList({"2"}));
    QCOMPARE(savedText(*nest.stage->effect.getEffect(2)), other);
    CHECK_SANITY(*nest.stage);
    nest.stage->selectEid(2);
    CHECK_SANITY(*nest.stage);
}

void tst_EditorFaults::nestedFormGoesAlone()
{
    Nest nest;

    delete nest.form;

    QVERIFY(!nest.nested->editorWidget());
    nest.stage->selectEid(2);
    CHECK_SANITY(*nest.stage);
    nest.stage->selectEid(1);
    auto *fresh = qobject_cast<MetaWidget *>(nest.nested->editorWidget());
    QVERIFY(fresh && fresh->isVisible());
    nest.stage->selectEid(2);
    QVERIFY(!fresh->isVisible());
    CHECK_SANITY(*nest.stage);
}

void tst_EditorFaults::allGoesWithTheNestedFormInside()
{
    Nest nest;
    QVERIFY(nest.form);

    nest.stage.reset();

    QVERIFY(!nest.form);
}

void tst_EditorFaults::editsInTheNestedFormReachTheOuterTable()
{
    Nest nest;
    QCOMPARE(nest.stage->table().text(nest.stage->rowOf(1), EndColumn), QStringLiteral("8"));
    TableWidget &inner = *nest.form->m_effectTable;
    inner.setText(0, EndColumn, QStringLiteral("3"));

    nest.nested->handleValueChanged(0, EndColumn); // the row of child 8

    QCOMPARE(nest.nested->getEffect(8)->getPropertyString("end"), QStringLiteral("3000"));
    QCOMPARE(nest.nested->text("end"), QStringLiteral("7000"));
    QCOMPARE(nest.stage->table().text(nest.stage->rowOf(1), EndColumn), QStringLiteral("7"));
    QCOMPARE(nest.stage->effect.text("end"), QStringLiteral("7000"));
}

// --- The focus ---

void tst_EditorFaults::anotherWindowTakesTheFocusFromTypedText()
{
    const auto stage = makeStage();
    const QStringList others = savedChildren(stage->effect, {2});
    stage->click(stage->rowOf(2), FadeInColumn);
    QTest::keyClicks(stage->table().indexWidget(stage->table().currentIndex()),
                     QStringLiteral("2.5"));
    QLineEdit other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    other.setFocus();
    QCoreApplication::processEvents();

    QCOMPARE(stage->effect.getEffect(2)->getPropertyString("fadein"), QStringLiteral("2500"));
    QCOMPARE(stage->table().text(stage->rowOf(2), FadeInColumn), QStringLiteral("2.5"));
    QCOMPARE(savedChildren(stage->effect, {2}), others);
    CHECK_SANITY(*stage);
}

void tst_EditorFaults::anotherWindowTakesTheFocusFromAChooser()
{
    const auto stage = makeStage();
    const QStringList before = savedChildren(stage->effect);
    stage->click(stage->rowOf(2), TypeColumn);
    const QPointer<QWidget> chooser = stage->table().indexWidget(stage->table().currentIndex());
    QVERIFY(chooser);
    QLineEdit other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QCoreApplication::processEvents();

    QVERIFY(chooser && chooser->isVisible());
    QCOMPARE(savedChildren(stage->effect), before);
    CHECK_SANITY(*stage);
}

void tst_EditorFaults::anotherWindowTakesTheFocusFromTypedCycles()
{
    const auto stage = makeStage();
    const QStringList others = savedChildren(stage->effect, {2});
    QSpinBox *box = stage->form().m_endCyclesSpinBox;
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, QStringLiteral("12"));
    QCOMPARE(stage->effect.getEffect(2)->getPropertyString("endcyclecount"), QStringLiteral("3"));
    QLineEdit other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QCoreApplication::processEvents();

    QCOMPARE(stage->effect.getEffect(2)->getPropertyString("endcyclecount"), QStringLiteral("12"));
    QCOMPARE(savedChildren(stage->effect, {2}), others);
    CHECK_SANITY(*stage);
}

void tst_EditorFaults::hostRefreshesAtEveryChangeOfTheFocus()
{
    const auto stage = makeStage();
    const QStringList others = savedChildren(stage->effect, {2});
    connect(qApp, &QApplication::focusChanged, &stage->form(), [&stage] {
        stage->effect.updateEffectTimes();
        stage->effect.refreshWidgets();
        stage->effect.resizeTable();
    });

    stage->typeIntoCell(stage->rowOf(2), FadeInColumn, QStringLiteral("2.5"));
    QTest::mouseClick(stage->form().m_deleteEffectButton, Qt::RightButton);
    stage->click(stage->rowOf(2), FadeOutColumn);
    QTest::keyClicks(stage->table().indexWidget(stage->table().currentIndex()),
                     QStringLiteral("1.5"));
    stage->form().m_newEffectButton->setFocus();
    QCoreApplication::processEvents();

    QCOMPARE(stage->effect.getEffect(2)->getPropertyString("fadein"), QStringLiteral("2500"));
    QCOMPARE(stage->effect.getEffect(2)->getPropertyString("fadeout"), QStringLiteral("1500"));
    QCOMPARE(savedChildren(stage->effect, {2}), others);
    CHECK_SANITY(*stage);
}

QTEST_MAIN(tst_EditorFaults)
#include "tst_EditorFaults.moc"
