#include "EditorStage.h"
#include "EditsAlone.h"
#include "EffectPictures.h"
#include "PickerUser.h"

#include <QLoggingCategory>
#include <QRegularExpression>
#include <QSignalSpy>

using namespace meta;

namespace {

const QRegularExpression
    outOfMemory(QStringLiteral("^In file MetaEffect, line [1-9][0-9]*: Out of memory$"));

void pressNew(const EditorStage &stage)
{
    QTest::mouseClick(stage.form().m_newEffectButton, Qt::LeftButton);
}

/// The child that came last.
WidgetStub &newest(EditorStage &stage)
{
    const QString eid = stage.column(EidColumn).last();
    return *qobject_cast<WidgetStub *>(stage.effect.getEffect(eid.toULong()));
}

QStringList names(const MetaEffect &effect)
{
    QStringList names;
    const EffectList children = effect.getEffects();
    for (const Effect *child : children)
        names.append(keys::name.readText(*child));
    return names;
}

} // namespace

class tst_NewEffects : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    // Steps.
    void newChildIsMadeInTheseSteps();
    void cancelledPickerIsFollowedByTheseSteps();
    void twoPressesMakeEffect1AndEffect2();
    void typeIsTheOneShownInTheChooser();
    void childIsHeardWhenItsCycleChanges();
    void childIsOneLevelDeeper();

    // Numbers.
    void eidFollowsTheLargestSeen();
    void eidOfADeletedChildIsNotUsedAgain();
    void namesGoOnFromTheNumberOfChildrenAfterInit();
    void namesGoOnFromTheNumberOfChildrenAfterADeletion();
    void cancelledPickerUsesUpTheNumberOfTheName();

    // No effect.
    void withoutATypeThereIsAWarningAndNothingElse_data();
    void withoutATypeThereIsAWarningAndNothingElse();
    void withoutAFactoryThereIsAWarningAndNothingElse();
    void failureUsesUpNoNumber();
    void withoutAnEditorNothingHappens();

    // The group picker.
    void pickerIsModalAndTheForms();
    void childIsCompleteWhileThePickerIsUp();
    void acceptedGroupIsStoredAndShown();
    void acceptedGroupIsShownInTheRowWhereverItMoved();
    void cancelledPickerKeepsTheChildInItsFormerGroup_data();
    void cancelledPickerKeepsTheChildInItsFormerGroup();
    void groupThatVanishesInThePickerLeavesTheCell();
    void effectIsDirtyWhateverTheAnswer_data();
    void effectIsDirtyWhateverTheAnswer();

    // In the editor.
    void rowIsTheLastAndTheOnlySelectedOne_data();
    void rowIsTheLastAndTheOnlySelectedOne();
    void rowShowsTheChild();
    void parametersOfTheChildAreShown();
    void endAndCycleTimeAreAnnouncedOnce();
    void shorterChildAnnouncesNothing();
    void childPlaysOneCycleFromTheStart();
    void otherChildrenKeepTheirSettings();
    void newChildMayBeEditedAndDeletedAtOnce();
};

void tst_NewEffects::initTestCase()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
}

void tst_NewEffects::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

// --- Steps ---

void tst_NewEffects::newChildIsMadeInTheseSteps()
{
    EditsAlone alone;
    alone.add(4);
    alone.roster.raiseNextEid(*alone.roster.find(4));
    alone.journal.clear();
    const PickerUser user([&alone](GroupPickerDialog &dialog) {
        alone.journal.append(QStringLiteral("picker"));
        connect(&dialog, &QObject::destroyed, &dialog,
                [&alone] { alone.journal.append(QStringLiteral("picker gone")); });
        PickerUser::picking(QStringLiteral("Windows"))(dialog);
    });

    alone.edits.handleNewEffectClicked();

    QCOMPARE(alone.journal, QStringList({"init 77", "5 eid=5", "5 starttype=0",
                                         "5 startfixedtime=0", "5 endtype=2", "5 endcyclecount=1",
                                         "5 name=Effect 1", "addChild 5", "updateEffectTimes",
                                         "picker", "5 gid=11", "setDirty true", "picker gone"}));
    QCOMPARE(alone.table().text(1, GroupColumn), QStringLiteral("Windows"));
    QCOMPARE(alone.table().text(0, GroupColumn), QString());
    QCOMPARE(alone.roster.nextEid(), 6u);
}

void tst_NewEffects::cancelledPickerIsFollowedByTheseSteps()
{
    EditsAlone alone;
    const PickerUser user([&alone](GroupPickerDialog &dialog) {
        alone.journal.clear();
        connect(&dialog, &QObject::destroyed, &dialog,
                [&alone] { alone.journal.append(QStringLiteral("picker gone")); });
        PickerUser::click(dialog, QStringLiteral("Windows"));
        PickerUser::cancel(dialog);
    });

    alone.edits.handleNewEffectClicked();

    QCOMPARE(alone.journal, QStringList({"0 gid=11", "0 gid=7", "setDirty true", "picker gone"}));
    QCOMPARE(alone.table().text(0, GroupColumn), QString());
    QCOMPARE(alone.roster.children().count(), 1);
}

void tst_NewEffects::twoPressesMakeEffect1AndEffect2()
{
    EditorStage stage;
    stage.open();
    const PickerUser user;

    pressNew(stage);
    pressNew(stage);

    QCOMPARE(user.pickers(), 2);
    QCOMPARE(stage.eids(), QStringList({"0", "1"}));
    QCOMPARE(names(stage.effect), QStringList({"Effect 1", "Effect 2"}));
    const EffectList children = stage.effect.getEffects();
    for (const Effect *child : children) {
        QCOMPARE(child->getPropertyString("starttype"), QStringLiteral("0"));
        QCOMPARE(child->getPropertyString("startfixedtime"), QStringLiteral("0"));
        QCOMPARE(child->getPropertyString("endtype"), QStringLiteral("2"));
        QCOMPARE(child->getPropertyString("endcyclecount"), QStringLiteral("1"));
    }
    CHECK_SANITY(stage);
}

void tst_NewEffects::typeIsTheOneShownInTheChooser()
{
    EditorStage stage;
    stage.open();
    QComboBox *chooser = stage.form().m_effectComboBox;
    const PickerUser user;
    for (const char *type : {"Chase", "Stub", "Chase"}) {
        while (chooser->currentText() != QLatin1String(type))
            QTest::keyClick(chooser, chooser->currentIndex() > 0 ? Qt::Key_Up : Qt::Key_Down);
        pressNew(stage);
        QCOMPARE(newest(stage).text("type"), QString(type));
        QCOMPARE(newest(stage).inits, 1);
        QCOMPARE(stage.row(stage.table().rowCount() - 1).at(TypeColumn), QString(type));
    }
    QCOMPARE(user.pickers(), 3);
}

void tst_NewEffects::childIsHeardWhenItsCycleChanges()
{
    EditorStage stage;
    stage.open();
    const PickerUser user;
    pressNew(stage);

    newest(stage).setCycleTime(4000);

    QCOMPARE(newest(stage).text("end"), QStringLiteral("4000"));
    QCOMPARE(stage.table().text(0, EndColumn), QStringLiteral("4"));
    QCOMPARE(stage.effect.text("end"), QStringLiteral("4000"));
}

void tst_NewEffects::childIsOneLevelDeeper()
{
    EditorStage stage;
    stage.effect.setLevel(3);
    stage.open();
    const PickerUser user;

    pressNew(stage);

    QCOMPARE(newest(stage).level(), 4);
}

// --- Numbers ---

void tst_NewEffects::eidFollowsTheLargestSeen()
{
    EditorStage stage;
    stage.add(3);
    stage.add(7);
    stage.add(5);
    stage.effect.init();
    stage.open();
    const PickerUser user;

    pressNew(stage);
    pressNew(stage);

    QCOMPARE(stage.eids(), QStringList({"3", "7", "5", "8", "9"}));
    QCOMPARE(names(stage.effect).mid(3), QStringList({"Effect 4", "Effect 5"}));
}

void tst_NewEffects::eidOfADeletedChildIsNotUsedAgain()
{
    EditorStage stage;
    stage.open();
    const PickerUser user;
    pressNew(stage);
    pressNew(stage);

    QTest::mouseClick(stage.form().m_deleteEffectButton, Qt::LeftButton);
    QCOMPARE(stage.eids(), QStringList({"0"}));
    pressNew(stage);

    QCOMPARE(stage.eids(), QStringList({"0", "2"}));
    CHECK_SANITY(stage);
}

void tst_NewEffects::namesGoOnFromTheNumberOfChildrenAfterInit()
{
    EditorStage stage;
    stage.open();
    const PickerUser user;
    pressNew(stage);
    stage.add(20);
    stage.add(21);
    pressNew(stage);
    QCOMPARE(newest(stage).text("name"), QStringLiteral("Effect 2"));

    stage.effect.init();
    pressNew(stage);

    QCOMPARE(newest(stage).text("name"), QStringLiteral("Effect 5"));
}

// A deletion makes the meta effect ready anew, so a name may come a second time.
void tst_NewEffects::namesGoOnFromTheNumberOfChildrenAfterADeletion()
{
    EditorStage stage;
    stage.open();
    const PickerUser user;
    for (int i = 0; i < 3; ++i)
        pressNew(stage);
    stage.selectEid(0);
    QTest::mouseClick(stage.form().m_deleteEffectButton, Qt::LeftButton);

    pressNew(stage);

    QCOMPARE(names(stage.effect), QStringList({"Effect 2", "Effect 3", "Effect 3"}));
    QCOMPARE(stage.eids(), QStringList({"1", "2", "3"}));
}

void tst_NewEffects::cancelledPickerUsesUpTheNumberOfTheName()
{
    EditorStage stage;
    stage.open();
    {
        const PickerUser user;
        pressNew(stage);
    }
    const PickerUser user(PickerUser::picking(QStringLiteral("Roof")));
    pressNew(stage);

    QCOMPARE(names(stage.effect), QStringList({"Effect 1", "Effect 2"}));
}

// --- No effect ---

void tst_NewEffects::withoutATypeThereIsAWarningAndNothingElse_data()
{
    QTest::addColumn<int>("how");

    QTest::addRow("empty chooser") << 0;
    QTest::addRow("unknown type") << 1;
    QTest::addRow("the factory fails") << 2;
}

void tst_NewEffects::withoutATypeThereIsAWarningAndNothingElse()
{
    QFETCH(int, how);
    EditorStage stage;
    stage.add(1);
    stage.open();
    stage.selectEid(1);
    const QString before = savedText(stage.effect);
    const QStringList row = stage.row(0);
    QComboBox *chooser = stage.form().m_effectComboBox;
    switch (how) {
    case 0: chooser->clear(); break;
    case 1: chooser->setItemText(chooser->currentIndex(), QStringLiteral("Nothing")); break;
    default:
        stage.factory.addType(chooser->currentText(), [](MapModel *) { return nullptr; });
        break;
    }
    const QSignalSpy ends(&stage.effect, &MetaEffect::endTimeChanged);
    const PickerUser user;
    QTest::ignoreMessage(QtWarningMsg, outOfMemory);

    pressNew(stage);

    QCOMPARE(user.pickers(), 0);
    QCOMPARE(savedText(stage.effect), before);
    QCOMPARE(stage.table().rowCount(), 1);
    QCOMPARE(stage.row(0), row);
    QCOMPARE(stage.selectedEids(), QStringList({"1"}));
    QVERIFY(!stage.effect.ownDirty());
    QCOMPARE(ends.count(), 0);
    CHECK_SANITY(stage);
}

void tst_NewEffects::withoutAFactoryThereIsAWarningAndNothingElse()
{
    rehearsal::StageMap map;
    OpenMetaEffect effect(&map, 0);
    auto *form = qobject_cast<MetaWidget *>(effect.internalGetEffectWidget());
    QVERIFY(form);
    QCOMPARE(form->m_effectComboBox->count(), 0);
    const PickerUser user;
    QTest::ignoreMessage(QtWarningMsg, outOfMemory);

    QTest::mouseClick(form->m_newEffectButton, Qt::LeftButton);

    QCOMPARE(user.pickers(), 0);
    QVERIFY(effect.getEffects().isEmpty());
    QCOMPARE(form->m_effectTable->rowCount(), 0);
    QVERIFY(!effect.ownDirty());
}

void tst_NewEffects::failureUsesUpNoNumber()
{
    EditorStage stage;
    stage.open();
    const PickerUser user;
    const int index = stage.form().m_effectComboBox->currentIndex();
    stage.form().m_effectComboBox->setCurrentIndex(-1);
    QTest::ignoreMessage(QtWarningMsg, outOfMemory);
    pressNew(stage);
    stage.form().m_effectComboBox->setCurrentIndex(index);

    pressNew(stage);

    QCOMPARE(names(stage.effect), QStringList({"Effect 1"}));
    QCOMPARE(stage.eids(), QStringList({"0"}));
}

void tst_NewEffects::withoutAnEditorNothingHappens()
{
    EditorStage stage;
    const PickerUser user;

    stage.effect.handleNewEffectClicked();

    QCOMPARE(user.pickers(), 0);
    QVERIFY(stage.effect.getEffects().isEmpty());
    QVERIFY(!stage.effect.ownDirty());
}

// --- The group picker ---

void tst_NewEffects::pickerIsModalAndTheForms()
{
    EditorStage stage;
    MetaWidget &form = stage.open();
    QPointer<GroupPickerDialog> seen;
    const PickerUser user([&](GroupPickerDialog &dialog) {
        seen = &dialog;
        QCOMPARE(dialog.objectName(), QStringLiteral("Group Picker"));
        QCOMPARE(dialog.parentWidget(), &form);
        QVERIFY(dialog.isModal());
        QCOMPARE(dialog.windowFlags(), QDialog(&form).windowFlags());
    });

    pressNew(stage);

    QCOMPARE(user.pickers(), 1);
    QVERIFY(!seen);
}

void tst_NewEffects::childIsCompleteWhileThePickerIsUp()
{
    EditorStage stage;
    stage.add(1);
    stage.open();
    const PickerUser user([&stage](GroupPickerDialog &) {
        QCOMPARE(stage.eids(), QStringList({"1", "2"}));
        QCOMPARE(stage.column(EidColumn), QStringList({"1", "2"}));
        QCOMPARE(stage.table().text(1, GroupColumn), QStringLiteral("None"));
        QCOMPARE(newest(stage).text("end"), QStringLiteral("1000"));
        QCOMPARE(stage.effect.text("end"), QStringLiteral("1000"));
        QVERIFY(!stage.effect.ownDirty());
        CHECK_SANITY(stage);
    });

    pressNew(stage);

    QCOMPARE(user.pickers(), 1);
}

void tst_NewEffects::acceptedGroupIsStoredAndShown()
{
    EditorStage stage;
    stage.add(1)->with("gid", 10);
    stage.open();
    const PickerUser user(PickerUser::picking(QStringLiteral("Windows")));

    pressNew(stage);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(newest(stage).text("gid"), QStringLiteral("11"));
    QCOMPARE(stage.column(GroupColumn), QStringList({"Roof", "Windows"}));
    QCOMPARE(stage.effect.getEffect(1)->getPropertyString("gid"), QStringLiteral("10"));
}

void tst_NewEffects::acceptedGroupIsShownInTheRowWhereverItMoved()
{
    EditorStage stage;
    for (quint32 eid = 1; eid <= 3; ++eid)
        stage.add(eid);
    stage.open();
    stage.clickHeader(NameColumn);
    const PickerUser user([&stage](GroupPickerDialog &dialog) {
        stage.effect.handleHeaderClicked(NameColumn);
        QCOMPARE(stage.column(NameColumn),
                 QStringList({"Effect 1", "Child 3", "Child 2", "Child 1"}));
        PickerUser::picking(QStringLiteral("Windows"))(dialog);
    });

    pressNew(stage);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(stage.column(GroupColumn), QStringList({"Windows", "None", "None", "None"}));
    CHECK_SANITY(stage);
}

void tst_NewEffects::cancelledPickerKeepsTheChildInItsFormerGroup_data()
{
    QTest::addColumn<QString>("former");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");

    QTest::addRow("none") << ""
                          << "0"
                          << "None";
    QTest::addRow("one that the host gives") << "12"
                                             << "12"
                                             << "Door";
    QTest::addRow("one that the map does not have") << "99"
                                                    << "99"
                                                    << "None";
}

void tst_NewEffects::cancelledPickerKeepsTheChildInItsFormerGroup()
{
    QFETCH(QString, former);
    QFETCH(QString, stored);
    QFETCH(QString, shown);
    EditorStage stage;
    stage.factory.addType(QStringLiteral("Chase"), [former](MapModel *map) {
        auto *made = new WidgetStub(map, QStringLiteral("Chase"));
        if (!former.isEmpty())
            made->with("gid", former);
        return made;
    });
    stage.open();
    const PickerUser user([&stage](GroupPickerDialog &dialog) {
        PickerUser::click(dialog, QStringLiteral("Windows"));
        QCOMPARE(newest(stage).text("gid"), QStringLiteral("11"));
        PickerUser::click(dialog, QStringLiteral("Roof"));
        PickerUser::cancel(dialog);
    });

    pressNew(stage);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(stage.eids(), QStringList({"0"}));
    QCOMPARE(newest(stage).text("gid"), stored);
    QCOMPARE(stage.column(GroupColumn), QStringList({shown}));
    CHECK_SANITY(stage);
}

void tst_NewEffects::groupThatVanishesInThePickerLeavesTheCell()
{
    EditorStage stage;
    stage.open();
    const PickerUser user([&stage](GroupPickerDialog &dialog) {
        PickerUser::click(dialog, QStringLiteral("Windows"));
        stage.map.removeGroup(11);
        PickerUser::accept(dialog);
    });

    pressNew(stage);

    QCOMPARE(user.pickers(), 1);
    QCOMPARE(newest(stage).text("gid"), QStringLiteral("11"));
    QCOMPARE(stage.column(GroupColumn), QStringList({"None"}));
    QVERIFY(stage.effect.ownDirty());
}

void tst_NewEffects::effectIsDirtyWhateverTheAnswer_data()
{
    QTest::addColumn<int>("how");

    QTest::addRow("accepted") << 0;
    QTest::addRow("cancelled") << 1;
    QTest::addRow("double click") << 2;
    QTest::addRow("closed") << 3;
    QTest::addRow("child deleted meanwhile") << 4;
    QTest::addRow("form deleted meanwhile") << 5;
}

void tst_NewEffects::effectIsDirtyWhateverTheAnswer()
{
    QFETCH(int, how);
    EditorStage stage;
    stage.open();
    QVERIFY(!stage.effect.ownDirty());
    const PickerUser user([&stage, how](GroupPickerDialog &dialog) {
        const QString windows = QStringLiteral("Windows");
        switch (how) {
        case 0: PickerUser::picking(windows)(dialog); break;
        case 1: PickerUser::cancel(dialog); break;
        case 2:
            PickerUser::click(dialog, windows);
            PickerUser::doubleClick(dialog, windows);
            break;
        case 3: dialog.close(); break;
        case 4:
            stage.effect.deleteEffect(&newest(stage));
            stage.effect.setOwnDirty(false);
            PickerUser::picking(windows)(dialog);
            break;
        default: delete &stage.form(); break;
        }
    });

    pressNew(stage);

    QCOMPARE(user.pickers(), 1);
    QVERIFY(stage.effect.ownDirty());
}

// --- In the editor ---

void tst_NewEffects::rowIsTheLastAndTheOnlySelectedOne_data()
{
    QTest::addColumn<QString>("selected");

    QTest::addRow("nothing selected before") << "";
    QTest::addRow("one selected before") << "2";
    QTest::addRow("two selected before") << "2 3";
}

void tst_NewEffects::rowIsTheLastAndTheOnlySelectedOne()
{
    QFETCH(QString, selected);
    EditorStage stage;
    for (quint32 eid = 1; eid <= 3; ++eid)
        stage.add(eid);
    stage.open();
    for (const QString &eid : selected.split(u' ', Qt::SkipEmptyParts))
        stage.click(stage.rowOf(eid.toUInt()), NameColumn, Qt::ControlModifier);
    const PickerUser user;

    pressNew(stage);

    QCOMPARE(stage.column(EidColumn), QStringList({"3", "2", "1", "4"}));
    QCOMPARE(stage.table().selectedRows(), QList<int>({3}));
    QCOMPARE(stage.selectedEids(), QStringList({"4"}));
    CHECK_SANITY(stage);
}

void tst_NewEffects::rowShowsTheChild()
{
    EditorStage stage;
    stage.open();
    const PickerUser user(PickerUser::picking(QStringLiteral("Roof")));

    pressNew(stage);

    QCOMPARE(stage.row(0),
             QStringList({"Effect 1", "Chase", "Roof", "0", "0", "1", "0", "0", "0"}));
    QCOMPARE(stage.table().pixmap(0, NameColumn).cacheKey(), pictures::openCircle().cacheKey());
    QVERIFY(stage.table().pixmap(0, StartColumn).isNull());
    QCOMPARE(stage.table().pixmap(0, EndColumn).cacheKey(), pictures::cycle().cacheKey());
    QVERIFY(stage.form().m_endCyclesRadioButton->isChecked());
    QCOMPARE(stage.form().m_endCyclesSpinBox->value(), 1);
}

void tst_NewEffects::parametersOfTheChildAreShown()
{
    EditorStage stage;
    WidgetStub *other = stage.add(1);
    stage.open();
    stage.selectEid(1);
    const PickerUser user;

    pressNew(stage);

    QWidget *parameters = newest(stage).parameterWidget();
    QVERIFY(parameters);
    QVERIFY(parameters->isVisible());
    QCOMPARE(parameters->parentWidget(), stage.form().m_effectParameterFrame);
    QVERIFY(!other->parameterWidget()->isVisible());
    QCOMPARE(stage.form().m_effectGroupBox->title(), QStringLiteral("Effect 1 Parameters"));
}

void tst_NewEffects::endAndCycleTimeAreAnnouncedOnce()
{
    EditorStage stage;
    stage.open();
    const QSignalSpy ends(&stage.effect, &MetaEffect::endTimeChanged);
    const QSignalSpy cycles(&stage.effect, &Effect::cycleTimeChanged);
    const PickerUser user;

    pressNew(stage);

    QCOMPARE(ends.count(), 1);
    QCOMPARE(ends.first().first().toULongLong(), 1000u);
    QCOMPARE(cycles.count(), 1);
    QCOMPARE(cycles.first().first().toULongLong(), 1000u);
}

void tst_NewEffects::shorterChildAnnouncesNothing()
{
    EditorStage stage;
    stage.add(1)->with("endfixedtime", 5000);
    stage.effect.updateEffectTimes();
    stage.open();
    const QSignalSpy ends(&stage.effect, &MetaEffect::endTimeChanged);
    const PickerUser user;

    pressNew(stage);

    QCOMPARE(ends.count(), 0);
    QCOMPARE(stage.effect.text("end"), QStringLiteral("5000"));
}

void tst_NewEffects::childPlaysOneCycleFromTheStart()
{
    EditorStage stage;
    stage.factory.addType(QStringLiteral("Chase"), [](MapModel *map) {
        auto *made = new WidgetStub(map, QStringLiteral("Chase"));
        made->cycleTime = 1500;
        return made;
    });
    stage.effect.with("loop", "0");
    stage.open();
    const PickerUser user;
    pressNew(stage);
    WidgetStub &child = newest(stage);
    QCOMPARE(child.text("begin"), QStringLiteral("0"));
    QCOMPARE(child.text("end"), QStringLiteral("1500"));

    stage.frameAt(10);
    QVERIFY(child.getState());
    stage.frameAt(1490);
    QVERIFY(child.getState());
    QCOMPARE(child.draws, 2);
    stage.frameAt(1510);
    QVERIFY(!child.getState());
    QCOMPARE(child.draws, 2);
}

void tst_NewEffects::otherChildrenKeepTheirSettings()
{
    EditorStage stage;
    WidgetStub *fixed = stage.add(1);
    fixed->with("startfixedtime", 1234567).with("endtype", 2).with("endcyclecount", 3);
    WidgetStub *linked = stage.add(2);
    linked->with("starttype", 1).with("startlinkeid", 1).with("startlinkoffset", 1234567);
    stage.effect.updateEffectTimes();
    stage.open();
    stage.selectEid(1);
    stage.selectEid(2);
    const QString before = savedText(*fixed) + savedText(*linked);
    const PickerUser user(PickerUser::picking(QStringLiteral("Roof")));

    pressNew(stage);

    QCOMPARE(savedText(*fixed) + savedText(*linked), before);
    CHECK_SANITY(stage);
}

void tst_NewEffects::newChildMayBeEditedAndDeletedAtOnce()
{
    EditorStage stage;
    stage.add(1);
    stage.open();
    const PickerUser user;
    pressNew(stage);
    WidgetStub &child = newest(stage);

    EditorStage::typeInto(*stage.form().m_startFixedLineEdit, QStringLiteral("2.5"));
    QCOMPARE(child.text("startfixedtime"), QStringLiteral("2500"));
    CHECK_SANITY(stage);

    bool isDeleted = false;
    child.deleted = &isDeleted;
    QTest::mouseClick(stage.form().m_deleteEffectButton, Qt::LeftButton);
    QVERIFY(isDeleted);
    QCOMPARE(stage.eids(), QStringList({"1"}));
    CHECK_SANITY(stage);
}

QTEST_MAIN(tst_NewEffects)
#include "tst_NewEffects.moc"
