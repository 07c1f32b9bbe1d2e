#include "ChildKeys.h"
#include "EditorStage.h"
#include "EffectColumns.h"
#include "EffectPictures.h"
#include "PickerUser.h"
#include "QuestionUser.h"

#include <QAbstractItemView>
#include <QLoggingCategory>
#include <QRegularExpression>

#include <memory>

using namespace meta;

namespace {

const QString chase = QStringLiteral("Chase");
const QString stub = QStringLiteral("Stub");

/// An open editor with the offered types "Broken", which the factory cannot make, "Chase", "Stub"
/// and "Wave", and children named "Child 1" and so on. Nothing is selected.
class TypeScene : public EditorStage
{
public:
    explicit TypeScene(int count = 2)
    {
        factory.addType(QStringLiteral("Broken"), [](MapModel *) -> Effect * { return nullptr; });
        factory.addType(QStringLiteral("Wave"), [](MapModel *made) {
            return new WidgetStub(made, QStringLiteral("Wave"));
        });
        for (int eid = 1; eid <= count; ++eid)
            add(static_cast<quint32>(eid))->with("endtype", 2).with("endcyclecount", 1);
        effect.updateEffectTimes();
        open();
        effect.setOwnDirty(false);
    }

    WidgetStub *at(quint32 eid) const { return qobject_cast<WidgetStub *>(effect.getEffect(eid)); }
    QString typeOf(quint32 eid) const { return keys::type.readText(*effect.getEffect(eid)); }
    QString typeCell(quint32 eid) { return table().text(rowOf(eid), TypeColumn); }

    /// The open chooser of a row, or null.
    QComboBox *chooser(int row) const
    {
        return qobject_cast<QComboBox *>(
            table().indexWidget(table().model()->index(row, TypeColumn)));
    }
    /// Clicks on the cell, which opens its chooser.
    QComboBox &openChooser(quint32 eid)
    {
        const int row = rowOf(eid);
        click(row, TypeColumn);
        if (!chooser(row))
            qFatal("the chooser does not open");
        return *chooser(row);
    }
    bool isShown(const QWidget *parameters) const
    {
        return parameters && parameters->isVisible()
               && form().m_effectParameterFrame->isAncestorOf(parameters);
    }
    QString parameterTitle() const { return form().m_effectGroupBox->title(); }
};

/// Opens the list by a click and clicks on an entry of it.
void chooseByMouse(QComboBox &chooser, const QString &type)
{
    QTest::mouseClick(&chooser, Qt::LeftButton);
    QAbstractItemView *list = chooser.view();
    QVERIFY(QTest::qWaitForWindowExposed(list->window()));
    // The list takes a release right after it has opened for that of the click which opened it.
    QTest::qWait(QApplication::doubleClickInterval() + 20);
    const QModelIndex index = chooser.model()->index(chooser.findText(type), 0);
    QVERIFY(index.isValid());
    const QPoint place = list->visualRect(index).center();
    QTest::mouseMove(list->viewport(), place);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
}

/// Opens the list and walks to the entry by keys.
void chooseInListByKeys(QComboBox &chooser, const QString &type)
{
    QTest::keyClick(&chooser, Qt::Key_Down, Qt::AltModifier);
    QAbstractItemView *list = chooser.view();
    QVERIFY(QTest::qWaitForWindowExposed(list->window()));
    const int wanted = chooser.findText(type);
    while (list->currentIndex().row() != wanted)
        QTest::keyClick(list, list->currentIndex().row() < wanted ? Qt::Key_Down : Qt::Key_Up);
    QTest::keyClick(list, Qt::Key_Return);
}

/// Types the first letter, the list being closed.
void chooseByLetter(QComboBox &chooser, const QString &type)
{
    QTest::keyClick(&chooser, type.at(0).toLower().toLatin1());
}

using Chooser = void (*)(QComboBox &chooser, const QString &type);

void addWaysOfChoosing(bool sameEntryToo = false)
{
    QTest::addColumn<Chooser>("choose");
    QTest::newRow("click in the list") << Chooser(chooseByMouse);
    QTest::newRow("keys in the list") << Chooser(chooseInListByKeys);
    if (!sameEntryToo) // a letter does not choose the entry that is shown
        QTest::newRow("letter, the list closed") << Chooser(chooseByLetter);
}

void runQueued()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

class tst_TypeChangeEvents : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    // Choosing
    void choiceChangesTheType_data() { addWaysOfChoosing(); }
    void choiceChangesTheType();
    void chooserStaysOpenThroughTheQuestion_data() { addWaysOfChoosing(); }
    void chooserStaysOpenThroughTheQuestion();
    void everyStepOfAKeyIsAChoice();
    void choosingTheSameEntryAsksAgain_data() { addWaysOfChoosing(true); }
    void choosingTheSameEntryAsksAgain();
    void yesToTheTypeThatTheChildHasChangesNothing();
    void walkingThroughTheListWithoutChoosingAsksNothing();
    void withoutAskingTheChoiceChangesAtOnce_data() { addWaysOfChoosing(); }
    void withoutAskingTheChoiceChangesAtOnce();
    void neverAgainIsTheLastQuestion();

    // No
    void noPutsTheFormerTypeBack_data();
    void noPutsTheFormerTypeBack();
    void noPutsItBackInTheRowOfTheChildAfterSorting();
    void childOfATypeThatIsNotOfferedMayBeChanged();
    void noPutsNothingBackForATypeThatIsNotOffered();

    // The row and the parameters
    void onlySelectedChildStaysSelectedAndShowsItsNewParameters();
    void rowKeepsItsCells();
    void sortedTableFindsTheRow();
    void choiceWithSeveralRowsSelectedSelectsNone();
    void otherSelectedChildKeepsItsPanel();
    void typedTimeGoesOver();
    void rowAndPanelNowEditTheNewChild();
    void newChildMayBeChangedAgainAndDeleted();

    // The lost child
    void lostChildLeavesARowThatDoesNothing();
    void lostChildsRowMayBeRemovedAndTheShowGoesOn();
    void panelOfALostChildWritesNowhere();

    // While playing
    void playingRowShowsTheNewChildPlaying();
    void rowOfAPlayingChildKeepsItsPictureUntilTheNewOneHasPlayed();

    // Meanwhile
    void hostMayDeleteWhileTheChoiceIsAskedAbout_data();
    void hostMayDeleteWhileTheChoiceIsAskedAbout();
};

void tst_TypeChangeEvents::initTestCase()
{
    QApplication::setDoubleClickInterval(60);
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
}

// Any warning fails, but for what the platform of the tests says of itself.
void tst_TypeChangeEvents::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

// --- Choosing ---

void tst_TypeChangeEvents::choiceChangesTheType()
{
    QFETCH(Chooser, choose);
    const AskSettingInMemory setting;
    TypeScene scene;
    bool isDeleted = false;
    scene.at(1)->deleted = &isDeleted;
    const QuestionUser user;

    choose(scene.openChooser(1), chase);

    QCOMPARE(user.questions(), 1);
    QVERIFY(isDeleted);
    QCOMPARE(scene.typeOf(1), chase);
    QCOMPARE(scene.typeCell(1), chase);
    QCOMPARE(scene.typeOf(2), stub);
    QVERIFY(scene.effect.ownDirty());
    QVERIFY(scene.effect.getState());
    runQueued();
    CHECK_SANITY(scene);
}

void tst_TypeChangeEvents::chooserStaysOpenThroughTheQuestion()
{
    QFETCH(Chooser, choose);
    const AskSettingInMemory setting;
    TypeScene scene;
    bool isOpenMeanwhile = false;
    QString typeMeanwhile;
    QString cellMeanwhile;
    const QuestionUser user([&](QMessageBox &box) {
        QCoreApplication::processEvents();
        isOpenMeanwhile = scene.chooser(scene.rowOf(1));
        typeMeanwhile = scene.typeOf(1);
        cellMeanwhile = scene.typeCell(1);
        QuestionUser::pressing(QuestionUser::Yes)(box);
    });
    const QPointer<QComboBox> chooser(&scene.openChooser(1));

    choose(*chooser, chase);
    runQueued();

    QVERIFY(isOpenMeanwhile);
    QCOMPARE(typeMeanwhile, stub);
    QCOMPARE(cellMeanwhile, chase); // the cell holds the choice already
    QVERIFY(chooser);
    QCOMPARE(scene.chooser(scene.rowOf(1)), chooser);
    QCOMPARE(chooser->currentText(), chase);
    QVERIFY(!chooser->view()->isVisible());
    QCOMPARE(user.questions(), 1);
}

void tst_TypeChangeEvents::everyStepOfAKeyIsAChoice()
{
    const AskSettingInMemory setting;
    TypeScene scene;
    const QuestionUser user;
    QComboBox &chooser = scene.openChooser(1);

    QTest::keyClick(&chooser, Qt::Key_Up);
    QCOMPARE(user.questions(), 1);
    QCOMPARE(scene.typeOf(1), chase);
    QTest::keyClick(&chooser, Qt::Key_Down);
    QCOMPARE(user.questions(), 2);
    QCOMPARE(scene.typeOf(1), stub);
    QTest::keyClick(&chooser, Qt::Key_Down);

    QCOMPARE(user.questions(), 3);
    QCOMPARE(scene.typeOf(1), QStringLiteral("Wave"));
    QCOMPARE(scene.typeCell(1), QStringLiteral("Wave"));
}

void tst_TypeChangeEvents::choosingTheSameEntryAsksAgain()
{
    QFETCH(Chooser, choose);
    const AskSettingInMemory setting;
    TypeScene scene;
    const QuestionUser user;
    QComboBox &chooser = scene.openChooser(1);
    choose(chooser, chase);
    QCOMPARE(user.questions(), 1);
    const QPointer<Effect> successor(scene.effect.getEffect(1));

    choose(chooser, chase);

    QCOMPARE(user.questions(), 2);
    QVERIFY(successor);
}

void tst_TypeChangeEvents::yesToTheTypeThatTheChildHasChangesNothing()
{
    const AskSettingInMemory setting;
    TypeScene scene;
    const QPointer<Effect> child(scene.at(1));
    QComboBox &chooser = scene.openChooser(1);
    const QString before = savedText(scene.effect);
    const QuestionUser user;

    chooseByMouse(chooser, stub);

    QCOMPARE(user.questions(), 1);
    QVERIFY(child);
    QCOMPARE(savedText(scene.effect), before);
    QVERIFY(!scene.effect.ownDirty());
    QCOMPARE(scene.selectedEids(), QStringList({"1"}));
    CHECK_SANITY(scene);
}

void tst_TypeChangeEvents::walkingThroughTheListWithoutChoosingAsksNothing()
{
    const AskSettingInMemory setting;
    TypeScene scene;
    const QPointer<Effect> child(scene.at(1));
    const QuestionUser user;
    QComboBox &chooser = scene.openChooser(1);

    QTest::keyClick(&chooser, Qt::Key_Down, Qt::AltModifier);
    QAbstractItemView *list = chooser.view();
    QVERIFY(QTest::qWaitForWindowExposed(list->window()));
    QTest::keyClick(list, Qt::Key_Up);
    QTest::keyClick(list, Qt::Key_Escape);
    scene.selectEid(2);

    QCOMPARE(user.questions(), 0);
    QVERIFY(child);
    QCOMPARE(scene.typeCell(1), stub);
}

void tst_TypeChangeEvents::withoutAskingTheChoiceChangesAtOnce()
{
    QFETCH(Chooser, choose);
    const AskSettingInMemory setting(false);
    TypeScene scene;
    const QuestionUser user;

    choose(scene.openChooser(1), chase);

    QCOMPARE(scene.typeOf(1), chase);
    QCOMPARE(scene.typeCell(1), chase);
    QCOMPARE(user.questions(), 0);
    CHECK_SANITY(scene);
}

void tst_TypeChangeEvents::neverAgainIsTheLastQuestion()
{
    const AskSettingInMemory setting;
    TypeScene scene;
    const QuestionUser user(QuestionUser::pressing(QuestionUser::YesAndNeverAgain));

    chooseByMouse(scene.openChooser(1), chase);
    chooseByMouse(scene.openChooser(2), chase);

    QCOMPARE(user.questions(), 1);
    QCOMPARE(scene.typeOf(1), chase);
    QCOMPARE(scene.typeOf(2), chase);
    CHECK_SANITY(scene);
}

// --- No ---

void tst_TypeChangeEvents::noPutsTheFormerTypeBack_data()
{
    QTest::addColumn<Chooser>("choose");
    QTest::addColumn<QuestionUser::Answer>("answer");

    const std::pair<const char *, Chooser> choosers[] = {
        {"mouse", chooseByMouse}, {"keys", chooseInListByKeys}, {"letter", chooseByLetter}};
    for (const auto &[name, choose] : choosers) {
        QTest::addRow("%s, no", name) << choose << QuestionUser::pressing(QuestionUser::No);
        QTest::addRow("%s, Escape", name) << choose << QuestionUser::typing(Qt::Key_Escape);
        QTest::addRow("%s, closing", name)
            << choose << QuestionUser::Answer([](QMessageBox &box) { box.close(); });
    }
}

void tst_TypeChangeEvents::noPutsTheFormerTypeBack()
{
    QFETCH(Chooser, choose);
    QFETCH(QuestionUser::Answer, answer);
    const AskSettingInMemory setting;
    TypeScene scene;
    const QPointer<Effect> child(scene.at(1));
    QComboBox &chooser = scene.openChooser(1);
    const QString before = savedText(scene.effect);
    const QuestionUser user(answer);

    choose(chooser, chase);

    QCOMPARE(user.questions(), 1); // putting back asks nothing
    QVERIFY(child);
    QCOMPARE(savedText(scene.effect), before);
    QVERIFY(!scene.effect.ownDirty());
    QCOMPARE(scene.typeCell(1), stub);
    QCOMPARE(scene.chooser(scene.rowOf(1)), &chooser);
    QCOMPARE(chooser.currentText(), stub);
    scene.selectEid(2);
    QCOMPARE(scene.typeCell(1), stub);
    CHECK_SANITY(scene);
}

void tst_TypeChangeEvents::noPutsItBackInTheRowOfTheChildAfterSorting()
{
    const AskSettingInMemory setting;
    TypeScene scene(3);
    scene.clickHeader(NameColumn);
    QCOMPARE(scene.column(EidColumn), QStringList({"1", "2", "3"}));
    const QuestionUser user([&](QMessageBox &box) {
        scene.table().sortColumn(NameColumn, false);
        QuestionUser::pressing(QuestionUser::No)(box);
    });

    chooseByMouse(scene.openChooser(1), chase);

    QCOMPARE(user.questions(), 1);
    QCOMPARE(scene.column(EidColumn), QStringList({"3", "2", "1"}));
    QCOMPARE(scene.column(TypeColumn), QStringList({"Stub", "Stub", "Stub"}));
}

void tst_TypeChangeEvents::childOfATypeThatIsNotOfferedMayBeChanged()
{
    const AskSettingInMemory setting;
    TypeScene scene(0);
    scene.effect.addChild(new WidgetStub(&scene.map, QStringLiteral("Text"), 1));
    const QuestionUser user;

    chooseByMouse(scene.openChooser(1), stub);

    QCOMPARE(user.questions(), 1);
    QCOMPARE(scene.typeOf(1), stub);
    QCOMPARE(scene.typeCell(1), stub);
    CHECK_SANITY(scene);
}

// Such a child shows the first type; there is no entry to go back to, so the choice stays.
void tst_TypeChangeEvents::noPutsNothingBackForATypeThatIsNotOffered()
{
    const AskSettingInMemory setting;
    TypeScene scene(0);
    scene.effect.addChild(new WidgetStub(&scene.map, QStringLiteral("Text"), 1));
    QCOMPARE(scene.typeCell(1), QStringLiteral("Broken"));
    const QuestionUser user(QuestionUser::pressing(QuestionUser::No));
    QComboBox &chooser = scene.openChooser(1);

    chooseByMouse(chooser, chase);

    QCOMPARE(user.questions(), 1);
    QCOMPARE(scene.typeOf(1), QStringLiteral("Text"));
    QCOMPARE(scene.typeCell(1), chase);
    QCOMPARE(chooser.currentText(), chase);
}

// --- The row and the parameters ---

void tst_TypeChangeEvents::onlySelectedChildStaysSelectedAndShowsItsNewParameters()
{
    const AskSettingInMemory setting;
    TypeScene scene;
    scene.selectEid(1);
    const QPointer<QWidget> former(scene.at(1)->parameterWidget());
    QVERIFY(scene.isShown(former));
    const QuestionUser user;

    chooseByMouse(scene.openChooser(1), chase);

    QCOMPARE(user.questions(), 1);
    QCOMPARE(scene.selectedEids(), QStringList({"1"}));
    QCOMPARE(scene.table().selectedRows(), QList<int>({scene.rowOf(1)}));
    QVERIFY(!former);
    QVERIFY(scene.isShown(scene.at(1)->parameterWidget()));
    QCOMPARE(scene.at(1)->widgetRequests, 1);
    QCOMPARE(scene.parameterTitle(), QStringLiteral("Child 1 Parameters"));
    CHECK_SANITY(scene);
}

void tst_TypeChangeEvents::rowKeepsItsCells()
{
    const AskSettingInMemory setting;
    TypeScene scene;
    const int row = scene.rowOf(1);
    QStringList texts = scene.row(row);
    std::vector<const TableItem *> cells;
    for (int column = 0; column < scene.table().columnCount(); ++column)
        cells.push_back(scene.table().item(row, column));
    const QuestionUser user;

    chooseByMouse(scene.openChooser(1), chase);

    QCOMPARE(user.questions(), 1);
    QCOMPARE(scene.rowOf(1), row);
    QCOMPARE(scene.table().rowCount(), 2);
    for (int column = 0; column < scene.table().columnCount(); ++column)
        QCOMPARE(scene.table().item(row, column), cells.at(static_cast<std::size_t>(column)));
    texts[TypeColumn] = chase;
    QCOMPARE(scene.row(row), texts);
}

void tst_TypeChangeEvents::sortedTableFindsTheRow()
{
    const AskSettingInMemory setting(false);
    TypeScene scene(3);
    scene.clickHeader(NameColumn);

    chooseByMouse(scene.openChooser(1), chase);
    scene.clickHeader(NameColumn);

    QCOMPARE(scene.column(EidColumn), QStringList({"3", "2", "1"}));
    QCOMPARE(scene.column(TypeColumn), QStringList({"Stub", "Stub", "Chase"}));
    QCOMPARE(scene.typeOf(1), chase);
    CHECK_SANITY(scene);
}

void tst_TypeChangeEvents::choiceWithSeveralRowsSelectedSelectsNone()
{
    const AskSettingInMemory setting(false);
    TypeScene scene(3);
    QComboBox &chooser = scene.openChooser(1);
    scene.table().selectRow(scene.rowOf(3));
    QVERIFY(scene.selectedEids().isEmpty());

    chooseByLetter(chooser, chase);

    QCOMPARE(scene.typeOf(1), chase);
    QVERIFY(scene.selectedEids().isEmpty());
    QCOMPARE(scene.parameterTitle(), QStringLiteral("Effect Parameters"));
    QCOMPARE(scene.at(1)->widgetRequests, 0);
    CHECK_SANITY(scene);
}

// The chooser of one row stays open while another row is the selected one.
void tst_TypeChangeEvents::otherSelectedChildKeepsItsPanel()
{
    const AskSettingInMemory setting(false);
    TypeScene scene;
    QComboBox &chooser = scene.openChooser(1);
    scene.table().clearSelection();
    scene.table().selectRow(scene.rowOf(2));
    QCOMPARE(scene.selectedEids(), QStringList({"2"}));

    chooseByLetter(chooser, chase);

    QCOMPARE(scene.typeOf(1), chase);
    QCOMPARE(scene.selectedEids(), QStringList({"2"}));
    QVERIFY(scene.isShown(scene.at(2)->parameterWidget()));
    QCOMPARE(scene.parameterTitle(), QStringLiteral("Child 2 Parameters"));
    QCOMPARE(scene.at(1)->widgetRequests, 0);
    CHECK_SANITY(scene);
}

void tst_TypeChangeEvents::typedTimeGoesOver()
{
    const AskSettingInMemory setting;
    TypeScene scene;
    scene.selectEid(1);
    EditorStage::typeInto(*scene.form().m_startFixedLineEdit, QStringLiteral("2.5"));
    const QuestionUser user;

    chooseByMouse(scene.openChooser(1), chase);

    QCOMPARE(user.questions(), 1);
    QCOMPARE(scene.at(1)->text("startfixedtime"), QStringLiteral("2500"));
    QCOMPARE(scene.at(1)->text("begin"), QStringLiteral("2500"));
    QCOMPARE(scene.form().m_startFixedLineEdit->text(), QStringLiteral("2.5"));
    CHECK_SANITY(scene);
}

void tst_TypeChangeEvents::rowAndPanelNowEditTheNewChild()
{
    const AskSettingInMemory setting(false);
    TypeScene scene;
    chooseByMouse(scene.openChooser(1), chase);
    const int row = scene.rowOf(1);

    scene.typeIntoCell(row, NameColumn, QStringLiteral("Sky"));
    scene.typeIntoCell(row, FadeInColumn, QStringLiteral("0.5"));
    scene.typeIntoCell(row, StartColumn, QStringLiteral("3"));
    auto *cycles = scene.form().m_endCyclesSpinBox->findChild<QLineEdit *>();
    EditorStage::typeInto(*cycles, QStringLiteral("4"));
    QTest::keyClick(cycles, Qt::Key_Return);

    QCOMPARE(scene.at(1)->text("name"), QStringLiteral("Sky"));
    QCOMPARE(scene.at(1)->text("fadein"), QStringLiteral("500"));
    QCOMPARE(scene.at(1)->text("startfixedtime"), QStringLiteral("3000"));
    QCOMPARE(scene.at(1)->text("endcyclecount"), QStringLiteral("4"));
    QCOMPARE(scene.at(1)->text("end"), QStringLiteral("7000"));
    CHECK_SANITY(scene);
}

void tst_TypeChangeEvents::newChildMayBeChangedAgainAndDeleted()
{
    const AskSettingInMemory setting(false);
    TypeScene scene;
    for (const QString &type : {chase, QStringLiteral("Wave"), stub, chase})
        chooseByLetter(scene.openChooser(1), type);
    QCOMPARE(scene.typeOf(1), chase);

    QTest::mouseClick(scene.form().m_deleteEffectButton, Qt::LeftButton);
    runQueued();

    QCOMPARE(scene.eids(), QStringList({"2"}));
    CHECK_SANITY(scene);
}

// --- The lost child ---

void tst_TypeChangeEvents::lostChildLeavesARowThatDoesNothing()
{
    const AskSettingInMemory setting;
    TypeScene scene;
    QComboBox &chooser = scene.openChooser(1);
    const QuestionUser user;
    chooseByMouse(chooser, QStringLiteral("Broken"));
    QCOMPARE(user.questions(), 1); // nothing is reported
    QCOMPARE(scene.eids(), QStringList({"2"}));
    QVERIFY(!scene.effect.getState());
    const QString before = savedText(scene.effect);
    const int row = scene.rowOf(1);
    QVERIFY(row >= 0);
    QCOMPARE(scene.row(row).at(TypeColumn), QStringLiteral("Broken"));
    const PickerUser picker;

    for (int column = NameColumn; column <= FadeOutColumn; ++column)
        scene.click(row, column);
    for (const int column : {int(NameColumn), int(PriorityColumn), int(StartColumn), int(EndColumn),
                             int(FadeInColumn), int(FadeOutColumn)})
        scene.typeIntoCell(row, column, QStringLiteral("7"));
    chooseByMouse(scene.openChooser(1), stub);
    scene.clickHeader(NameColumn);

    QCOMPARE(user.questions(), 1); // there is no child to ask about
    QCOMPARE(picker.pickers(), 0);
    QVERIFY(scene.selectedEids().isEmpty());
    scene.frameAt(100);
    QCOMPARE(savedText(scene.effect), before);
    scene.selectEid(2);
    QCOMPARE(scene.selectedEids(), QStringList({"2"}));
}

void tst_TypeChangeEvents::lostChildsRowMayBeRemovedAndTheShowGoesOn()
{
    const AskSettingInMemory setting(false);
    TypeScene scene;
    chooseByMouse(scene.openChooser(1), QStringLiteral("Broken"));

    QTest::mouseClick(scene.form().m_deleteEffectButton, Qt::LeftButton);
    QCOMPARE(scene.eids(), QStringList({"2"}));
    QCOMPARE(scene.table().rowCount(), 2); // nothing is selected, so nothing is deleted
    scene.effect.removeFromTable(1);
    scene.effect.setState(true);
    scene.frameAt(100);
    scene.selectEid(2);
    chooseByMouse(scene.openChooser(2), chase);

    QCOMPARE(scene.typeOf(2), chase);
    CHECK_SANITY(scene);
}

void tst_TypeChangeEvents::panelOfALostChildWritesNowhere()
{
    const AskSettingInMemory setting(false);
    TypeScene scene;
    scene.at(2)->with("starttype", 1).with("startlinkeid", 1);
    scene.openChooser(1);
    const QPointer<QWidget> parameters(scene.at(1)->parameterWidget());
    chooseByMouse(*scene.chooser(scene.rowOf(1)), QStringLiteral("Broken"));
    QVERIFY(!parameters);
    scene.effect.updateEffectTimes(); // mends the link that lost its target
    const QString before = savedText(scene.effect);
    const MetaWidget &form = scene.form();

    EditorStage::typeInto(*form.m_startFixedLineEdit, QStringLiteral("2.5"));
    auto *cycles = form.m_endCyclesSpinBox->findChild<QLineEdit *>();
    EditorStage::typeInto(*cycles, QStringLiteral("9"));
    QTest::keyClick(cycles, Qt::Key_Return);
    for (QRadioButton *button : {form.m_startLinkedRadioButton, form.m_endFixedRadioButton,
                                 form.m_endLinkedRadioButton, form.m_endCyclesRadioButton})
        QTest::mouseClick(button, Qt::LeftButton, {}, {8, button->height() / 2});
    for (QComboBox *targets : {form.m_startLinkEffectComboBox, form.m_endLinkEffectComboBox}) {
        QTest::keyClick(targets, Qt::Key_Down);
        QTest::keyClick(targets, Qt::Key_Up);
    }

    QCOMPARE(savedText(scene.effect), before);
}

// --- While playing ---

void tst_TypeChangeEvents::playingRowShowsTheNewChildPlaying()
{
    const AskSettingInMemory setting;
    TypeScene scene;
    scene.frameAt(100);
    const auto picture = [&] { return scene.table().pixmap(scene.rowOf(1), NameColumn).toImage(); };
    QCOMPARE(picture(), pictures::closedCircle().toImage());
    QImage meanwhile;
    const QuestionUser user([&](QMessageBox &box) {
        scene.frameAt(200);
        meanwhile = picture();
        QuestionUser::pressing(QuestionUser::Yes)(box);
    });

    chooseByMouse(scene.openChooser(1), chase);
    scene.frameAt(300);

    QCOMPARE(user.questions(), 1);
    QCOMPARE(meanwhile, pictures::closedCircle().toImage());
    QVERIFY(scene.at(1)->getState());
    QCOMPARE(scene.at(1)->draws, 1);
    QCOMPARE(picture(), pictures::closedCircle().toImage());
}

// The show starts anew, so the new child waits for its begin; the row looks as if it played.
void tst_TypeChangeEvents::rowOfAPlayingChildKeepsItsPictureUntilTheNewOneHasPlayed()
{
    const AskSettingInMemory setting(false);
    TypeScene scene;
    scene.at(1)->with("starttype", 0).with("startfixedtime", 5000);
    scene.effect.updateEffectTimes();
    const auto picture = [&](int ms) {
        scene.frameAt(ms);
        return scene.table().pixmap(scene.rowOf(1), NameColumn).toImage();
    };
    QCOMPARE(picture(100), pictures::openCircle().toImage());
    QCOMPARE(picture(5100), pictures::closedCircle().toImage());

    scene.map.clock().step(scene.noon.addMSecs(5100));
    chooseByMouse(scene.openChooser(1), chase);

    QCOMPARE(picture(5200), pictures::closedCircle().toImage());
    QVERIFY(!scene.at(1)->getState());
    QCOMPARE(picture(5100 + 5500), pictures::closedCircle().toImage());
    QVERIFY(scene.at(1)->getState());
    scene.effect.setProperty(QStringLiteral("loop"), QStringLiteral("0"));
    QCOMPARE(picture(5100 + 6500), pictures::openCircle().toImage());
}

// --- Meanwhile ---

void tst_TypeChangeEvents::hostMayDeleteWhileTheChoiceIsAskedAbout_data()
{
    QTest::addColumn<Chooser>("choose");
    QTest::addColumn<QString>("deletion");
    QTest::addColumn<int>("button");

    const std::pair<const char *, Chooser> choosers[] = {
        {"mouse", chooseByMouse}, {"keys", chooseInListByKeys}, {"letter", chooseByLetter}};
    for (const auto &[name, choose] : choosers) {
        for (const char *deletion : {"child", "row", "form", "meta effect", "form later"}) {
            for (int button = QuestionUser::Yes; button <= QuestionUser::No; ++button)
                QTest::addRow("%s, %s, button %d", name, deletion, button)
                    << choose << QString::fromLatin1(deletion) << button;
        }
    }
}

void tst_TypeChangeEvents::hostMayDeleteWhileTheChoiceIsAskedAbout()
{
    QFETCH(Chooser, choose);
    QFETCH(QString, deletion);
    QFETCH(int, button);
    const AskSettingInMemory setting;
    TypeScene outer(0);
    auto *effect = new OpenMetaEffect(&outer.map, 0);
    for (const quint32 eid : {1, 2})
        effect->addChild(new WidgetStub(&outer.map, stub, eid));
    QPointer<MetaWidget> form = qobject_cast<MetaWidget *>(effect->internalGetEffectWidget());
    form->show();
    QVERIFY(QTest::qWaitForWindowActive(form));
    const QPointer<OpenMetaEffect> guard(effect);
    const QuestionUser user([&](QMessageBox &box) {
        const QPointer<QMessageBox> open(&box);
        if (deletion == u"child") {
            effect->removeFromTable(1);
            effect->deleteEffect(effect->getEffect(1));
        } else if (deletion == u"row") {
            effect->removeFromTable(1);
        } else if (deletion == u"form") {
            delete form;
        } else if (deletion == u"meta effect") {
            delete effect;
        } else {
            form->deleteLater();
        }
        if (open)
            QuestionUser::pressing(button)(*open);
    });
    TableWidget &table = *form->m_effectTable;
    const QModelIndex cell = table.model()->index(effect->getRow(1), TypeColumn);
    QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, table.visualRect(cell).center());
    auto *chooser = qobject_cast<QComboBox *>(table.indexWidget(cell));
    QVERIFY(chooser);

    choose(*chooser, chase);
    runQueued();

    QCOMPARE(user.questions(), 1);
    QCOMPARE(guard.isNull(), deletion == u"meta effect");
    if (guard) {
        const Effect *child = effect->getEffect(1);
        QCOMPARE(child == nullptr, deletion == u"child");
        if (deletion == u"form")
            QCOMPARE(keys::type.readText(*child), stub); // a question that goes with it says no
        else if (child)
            QCOMPARE(keys::type.readText(*child), button == QuestionUser::No ? stub : chase);
        QCOMPARE(effect->editorWidget() == nullptr, deletion.startsWith(u"form"));
        outer.frameAt(10);
        delete guard;
    }
}

QTEST_MAIN(tst_TypeChangeEvents)
#include "tst_TypeChangeEvents.moc"
