#include "EditorStage.h"
#include "LogCapture.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QLayout>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

#include <functional>
#include <optional>

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

/// An open editor with children 1, 2 and 3 in the rows 2, 1 and 0, whose times are as their rules
/// say.
class OpenStage : public EditorStage
{
public:
    OpenStage()
    {
        for (const quint32 eid : {1u, 2u, 3u}) {
            children[eid] = add(eid);
            children[eid]->with("startfixedtime", 1500).with("startlinkoffset", 250);
            children[eid]->with("endtype", 2).with("endcyclecount", 4);
            children[eid]->with("endfixedtime", 2500).with("endlinkoffset", -500);
        }
        effect.updateEffectTimes();
        open();
    }

    /// The eids of the highlighted rows, from the first row to the last.
    QString highlighted() const
    {
        QStringList eids;
        for (const int row : table().selectedRows())
            eids.append(table().text(row, EidColumn));
        return eids.join(u' ');
    }
    QString selected() { return selectedEids().join(u' '); }
    QString title() const { return form().m_effectGroupBox->title(); }
    QList<QWidget *> shownParameters() const
    {
        QList<QWidget *> shown;
        const auto widgets = form().m_effectParameterFrame->findChildren<QWidget *>(
            QString(), Qt::FindDirectChildrenOnly);
        for (QWidget *widget : widgets) {
            if (!widget->isHidden())
                shown.append(widget);
        }
        return shown;
    }
    /// Clicks at a place of the table's viewport.
    void clickAt(const QPoint &place, Qt::KeyboardModifiers modifiers = {},
                 Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(table().viewport(), button, modifiers, place);
    }
    QPoint at(int row, int column) const
    {
        return table().visualRect(table().model()->index(row, column)).center();
    }
    QPoint below() const { return {20, table().viewport()->height() - 5}; }

    WidgetStub *children[4] = {};
};

/// The menu as it was while it was open.
struct Menu
{
    QStringList texts;
    QPoint position;
};

/// Opens the menu by the action; its entry of that number, if it has one, is clicked then.
Menu openMenu(const std::function<void()> &open, int entry = -1)
{
    Menu menu;
    QTimer timer;
    timer.setInterval(0);
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        auto *popup = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!popup)
            return;
        timer.stop();
        const QList<QAction *> actions = popup->actions();
        for (const QAction *action : actions)
            menu.texts.append(action->isSeparator() ? QStringLiteral("-") : action->text());
        menu.position = popup->pos();
        if (entry >= 0)
            QTest::mouseClick(popup, Qt::LeftButton, {},
                              popup->actionGeometry(actions.at(entry)).center());
        else
            QTest::keyClick(popup, Qt::Key_Escape);
    });
    timer.start();
    open();
    // From the event queue it opens later.
    if (!QTest::qWaitFor([&] { return !timer.isActive() && !QApplication::activePopupWidget(); }))
        return {};
    return menu;
}

const QStringList menuTexts = {"Cut Selected Effects", "Copy Selected Effects",
                               "Paste Selected Effects", "-", "Delete Selected Effects"};

/// A row of a data table that holds only texts.
template<typename... Texts>
void textRow(const char *name, Texts... texts)
{
    (QTest::newRow(name) << ... << texts);
}

} // namespace

class tst_EffectTableSelection : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    // Selecting
    void showingTheFormSelectsNothing();
    void clickSelectsTheRowWhateverTheColumn_data();
    void clickSelectsTheRowWhateverTheColumn();
    void clickOnAnotherRowSelectsJustThat();
    void ctrlClickAddsARowAndEmptiesTheSelection();
    void ctrlClickOnTheSelectedRowKeepsIt();
    void shiftClickSelectsTheRowsBetween();
    void arrowKeysMoveTheSelection();
    void rightClickSelectsJustThatRow_data();
    void rightClickSelectsJustThatRow();
    void clickBelowTheRowsClearsTheSelection();
    void currentCellSelectsItsRow();
    void selectionIsFoundByTheEidsAfterSorting();
    void rowsWithoutAChildDoNotCount_data();
    void rowsWithoutAChildDoNotCount();
    void repeatedEidMeansTheFirstChildInListOrder();
    void twoRowsOfOneEidAreSeveral();

    // Showing the selection
    void oneSelectedChildIsShown();
    void parametersAreTitledAfterTheChild_data();
    void parametersAreTitledAfterTheChild();
    void twoRowsEmptyTheSelectionAndDisableThePanels();
    void noRowDisablesThePanels();
    void blankingWritesNothingIntoTheChildren_data();
    void blankingWritesNothingIntoTheChildren();
    void clickThroughTheRowsWritesNothingIntoTheChildren();

    // Parameter widgets
    void parametersOfTheSelectedChildStandAloneInTheFrame();
    void formerParametersAreHiddenAndKept();
    void parametersAreHiddenWithoutASelectedChild_data();
    void parametersAreHiddenWithoutASelectedChild();
    void layoutIsMadeAnewForEveryChild();
    void sameChildIsShownAgain();
    void childWithoutAWidgetShowsNoParameters();
    void childMayDeleteItsWidget();
    void deletedChildTakesItsWidgetAlong();
    void nestedMetaEffectShowsItsOwnEditor();

    // New children and removed rows
    void newChildIsTheOnlySelectedOne();
    void newChildIsShownOnceAndTheFormerOneNoMore();
    void newChildNeverBlanksThePanel();
    void lastOfSeveralNewChildrenIsSelected();
    void removedRowLeavesNothingSelected_data();
    void removedRowLeavesNothingSelected();
    void secondDeletionWithoutASelectionDeletesNothing();

    // Context menu
    void menuHasFiveEntriesAtThePlaceOfTheClick();
    void menuOpensBesideTheRowsToo();
    void menuOpensByKeyAtTheCurrentCell();
    void menuEntryDoesItsWork_data();
    void menuEntryDoesItsWork();
    void menuOpensAtTheGivenPlaceWhateverTheCell_data();
    void menuOpensAtTheGivenPlaceWhateverTheCell();

    void sharedPropertyChangesDoNothing();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_EffectTableSelection::init()
{
    // What the offscreen platform says of windows with a minimum size and of menus.
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    m_debugLines.emplace(QtDebugMsg);
    QGuiApplication::clipboard()->clear();
}

// --- Selecting ---

void tst_EffectTableSelection::showingTheFormSelectsNothing()
{
    OpenStage stage;
    stage.table().setFocus();
    QCoreApplication::processEvents();

    QCOMPARE(stage.highlighted(), QString());
    QCOMPARE(stage.selected(), QString());
    QVERIFY(!stage.table().currentIndex().isValid());
    QCOMPARE(stage.title(), QStringLiteral("Effect Parameters"));
    for (const quint32 eid : {1u, 2u, 3u})
        QCOMPARE(stage.children[eid]->widgetRequests, 0);
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::clickSelectsTheRowWhateverTheColumn_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("name") << int(NameColumn);
    QTest::newRow("type") << int(TypeColumn);
    QTest::newRow("priority") << int(PriorityColumn);
    QTest::newRow("start") << int(StartColumn);
    QTest::newRow("end") << int(EndColumn);
    QTest::newRow("fade in") << int(FadeInColumn);
    QTest::newRow("fade out") << int(FadeOutColumn);
}

void tst_EffectTableSelection::clickSelectsTheRowWhateverTheColumn()
{
    QFETCH(int, column);
    OpenStage stage;

    stage.click(1, column);

    QCOMPARE(stage.highlighted(), QStringLiteral("2"));
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    QCOMPARE(stage.table().currentColumn(), column);
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::clickOnAnotherRowSelectsJustThat()
{
    OpenStage stage;
    for (const quint32 eid : {1u, 3u, 2u, 1u}) {
        stage.selectEid(eid);
        QCOMPARE(stage.highlighted(), QString::number(eid));
        QCOMPARE(stage.selected(), QString::number(eid));
        CHECK_SANITY(stage);
    }
}

void tst_EffectTableSelection::ctrlClickAddsARowAndEmptiesTheSelection()
{
    OpenStage stage;
    stage.click(0, NameColumn);

    stage.click(2, NameColumn, Qt::ControlModifier);

    QCOMPARE(stage.highlighted(), QStringLiteral("3 1"));
    QCOMPARE(stage.selected(), QString());
    CHECK_SANITY(stage);

    stage.click(1, NameColumn);
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::ctrlClickOnTheSelectedRowKeepsIt()
{
    OpenStage stage;
    stage.click(1, NameColumn, Qt::ControlModifier);
    QCOMPARE(stage.selected(), QStringLiteral("2"));

    stage.click(1, PriorityColumn, Qt::ControlModifier);
    stage.click(1, PriorityColumn, Qt::ControlModifier);

    QCOMPARE(stage.highlighted(), QStringLiteral("2"));
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::shiftClickSelectsTheRowsBetween()
{
    OpenStage stage;
    stage.click(0, NameColumn);

    stage.click(2, NameColumn, Qt::ShiftModifier);

    QCOMPARE(stage.highlighted(), QStringLiteral("3 2 1"));
    QCOMPARE(stage.selected(), QString());
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::arrowKeysMoveTheSelection()
{
    OpenStage stage;
    stage.click(0, NameColumn);

    QTest::keyClick(&stage.table(), Qt::Key_Down);
    QCOMPARE(stage.highlighted(), QStringLiteral("2"));
    QCOMPARE(stage.selected(), QStringLiteral("2"));

    QTest::keyClick(&stage.table(), Qt::Key_Down);
    QCOMPARE(stage.selected(), QStringLiteral("1"));
    QTest::keyClick(&stage.table(), Qt::Key_Down);
    QCOMPARE(stage.selected(), QStringLiteral("1"));
    QTest::keyClick(&stage.table(), Qt::Key_Up);
    QCOMPARE(stage.highlighted(), QStringLiteral("2"));
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::rightClickSelectsJustThatRow_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("eid");
    QTest::newRow("another row") << 2 << "1";
    QTest::newRow("the selected row") << 0 << "3";
}

void tst_EffectTableSelection::rightClickSelectsJustThatRow()
{
    QFETCH(int, row);
    QFETCH(QString, eid);
    OpenStage stage;
    stage.click(0, NameColumn);

    stage.click(row, NameColumn, {}, Qt::RightButton);

    QCOMPARE(stage.highlighted(), eid);
    QCOMPARE(stage.selected(), eid);
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::clickBelowTheRowsClearsTheSelection()
{
    OpenStage stage;
    stage.click(1, NameColumn);

    stage.clickAt(stage.below());

    QCOMPARE(stage.highlighted(), QString());
    QCOMPARE(stage.selected(), QString());
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::currentCellSelectsItsRow()
{
    OpenStage stage;
    stage.table().setCurrentCell(1, StartColumn, QItemSelectionModel::NoUpdate);
    QCOMPARE(stage.highlighted(), QStringLiteral("2"));
    QCOMPARE(stage.selected(), QStringLiteral("2"));

    // Adds, as the one who moves the current cell may not clear.
    stage.effect.handleCurrentChanged(0, StartColumn);
    QCOMPARE(stage.highlighted(), QStringLiteral("3 2"));
    QCOMPARE(stage.selected(), QString());
    QCOMPARE(stage.table().currentRow(), 1);
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::selectionIsFoundByTheEidsAfterSorting()
{
    OpenStage stage;
    stage.clickHeader(NameColumn);
    QCOMPARE(stage.column(EidColumn), QStringList({"1", "2", "3"}));

    stage.click(0, NameColumn);

    QCOMPARE(stage.selected(), QStringLiteral("1"));
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::rowsWithoutAChildDoNotCount_data()
{
    QTest::addColumn<QString>("eid");
    QTest::newRow("unknown eid") << "99";
    QTest::newRow("no number") << "abc";
    QTest::newRow("negative") << "-1";
    QTest::newRow("empty") << "";
    QTest::newRow("too large") << "4294967296";
}

void tst_EffectTableSelection::rowsWithoutAChildDoNotCount()
{
    QFETCH(QString, eid);
    OpenStage stage;
    stage.add(0); // must not be taken for what is no number
    stage.table().clearSelection();
    stage.table().setText(0, EidColumn, eid);

    stage.click(0, NameColumn);
    QCOMPARE(stage.selected(), QString());
    QCOMPARE(stage.title(), QStringLiteral("Effect Parameters"));
    QVERIFY(!stage.form().m_startButtonGroup->isEnabled());

    stage.click(1, NameColumn, Qt::ControlModifier);
    QCOMPARE(stage.table().selectedRows().size(), 2);
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    QCOMPARE(stage.title(), QStringLiteral("Child 2 Parameters"));
    QVERIFY(stage.form().m_startButtonGroup->isEnabled());
}

void tst_EffectTableSelection::repeatedEidMeansTheFirstChildInListOrder()
{
    OpenStage stage;
    stage.children[3]->with("eid", 1);
    stage.effect.refreshMetaWidget();
    QCOMPARE(stage.column(EidColumn), QStringList({"1", "2", "1"}));

    stage.click(0, NameColumn);

    QCOMPARE(stage.title(), QStringLiteral("Child 1 Parameters"));
    QCOMPARE(stage.shownParameters(), QList({stage.children[1]->parameterWidget()}));
}

void tst_EffectTableSelection::twoRowsOfOneEidAreSeveral()
{
    OpenStage stage;
    stage.children[3]->with("eid", 2);
    stage.effect.refreshMetaWidget();

    stage.click(0, NameColumn);
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    stage.click(1, NameColumn, Qt::ControlModifier);

    QCOMPARE(stage.selected(), QString());
    QCOMPARE(stage.title(), QStringLiteral("Effect Parameters"));
}

// --- Showing the selection ---

void tst_EffectTableSelection::oneSelectedChildIsShown()
{
    OpenStage stage;

    stage.selectEid(2);

    const MetaWidget &form = stage.form();
    QCOMPARE(form.m_effectGroupBox->title(), QStringLiteral("Child 2 Parameters"));
    QVERIFY(form.m_startButtonGroup->isEnabled());
    QVERIFY(form.m_endButtonGroup->isEnabled());
    QCOMPARE(form.m_startFixedLineEdit->text(), QStringLiteral("1.5"));
    QCOMPARE(form.m_startLinkOffsetLineEdit->text(), QStringLiteral("0.25"));
    QCOMPARE(form.m_startLinkEffectComboBox->count(), 2);
    QCOMPARE(form.m_endFixedLineEdit->text(), QStringLiteral("2.5"));
    QCOMPARE(form.m_endLinkOffsetLineEdit->text(), QStringLiteral("-0.5"));
    QCOMPARE(form.m_endLinkEffectComboBox->count(), 2);
    QCOMPARE(form.m_endCyclesSpinBox->value(), 4);
    QCOMPARE(stage.shownParameters(), QList({stage.children[2]->parameterWidget()}));
}

void tst_EffectTableSelection::parametersAreTitledAfterTheChild_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("title");
    textRow("named Chase", "Chase", "Chase Parameters");
    textRow("several words", "Red, then blue", "Red, then blue Parameters");
    textRow("no name", "", " Parameters");
}

void tst_EffectTableSelection::parametersAreTitledAfterTheChild()
{
    QFETCH(QString, name);
    OpenStage stage;
    stage.children[2]->with("name", name);
    stage.selectEid(2);
    QTEST(stage.title(), "title");
}

void tst_EffectTableSelection::twoRowsEmptyTheSelectionAndDisableThePanels()
{
    OpenStage stage;
    stage.selectEid(2);
    const MetaWidget &form = stage.form();

    stage.click(0, NameColumn, Qt::ControlModifier);

    QCOMPARE(stage.highlighted(), QStringLiteral("3 2"));
    QCOMPARE(stage.selected(), QString());
    QCOMPARE(form.m_effectGroupBox->title(), QStringLiteral("Effect Parameters"));
    QVERIFY(!form.m_startButtonGroup->isEnabled());
    QVERIFY(!form.m_endButtonGroup->isEnabled());
    QCOMPARE(form.m_startFixedLineEdit->text(), QString());
    QCOMPARE(form.m_startLinkEffectComboBox->count(), 0);
    QCOMPARE(form.m_startLinkOffsetLineEdit->text(), QString());
    QCOMPARE(form.m_endFixedLineEdit->text(), QString());
    QCOMPARE(form.m_endLinkEffectComboBox->count(), 0);
    QCOMPARE(form.m_endLinkOffsetLineEdit->text(), QString());
    QCOMPARE(form.m_endCyclesSpinBox->value(), 1);
    QCOMPARE(stage.shownParameters(), QList<QWidget *>());
}

void tst_EffectTableSelection::noRowDisablesThePanels()
{
    OpenStage stage;
    stage.selectEid(2);
    const MetaWidget &form = stage.form();

    stage.table().clearSelection();

    QCOMPARE(stage.selected(), QString());
    QCOMPARE(form.m_effectGroupBox->title(), QStringLiteral("Effect Parameters"));
    QVERIFY(!form.m_startButtonGroup->isEnabled());
    QVERIFY(!form.m_endButtonGroup->isEnabled());
    QCOMPARE(form.m_startFixedLineEdit->text(), QString());
    QCOMPARE(form.m_startLinkEffectComboBox->count(), 0);
    QCOMPARE(form.m_startLinkOffsetLineEdit->text(), QString());
    QCOMPARE(form.m_endFixedLineEdit->text(), QString());
    QCOMPARE(form.m_endLinkEffectComboBox->count(), 0);
    QCOMPARE(form.m_endLinkOffsetLineEdit->text(), QString());
    QCOMPARE(form.m_endCyclesSpinBox->value(), 1);
    QCOMPARE(stage.shownParameters(), QList<QWidget *>());
}

void tst_EffectTableSelection::blankingWritesNothingIntoTheChildren_data()
{
    QTest::addColumn<QList<quint32>>("others");
    QTest::newRow("no row") << QList<quint32>();
    QTest::newRow("two rows") << QList<quint32>({3});
    QTest::newRow("all rows") << QList<quint32>({3, 1});
}

void tst_EffectTableSelection::blankingWritesNothingIntoTheChildren()
{
    QFETCH(QList<quint32>, others);
    OpenStage stage;
    stage.selectEid(2);
    for (const quint32 eid : {1u, 2u, 3u})
        stage.children[eid]->changes.clear();

    if (others.isEmpty())
        stage.clickAt(stage.below());
    for (const quint32 eid : others)
        stage.click(stage.rowOf(eid), NameColumn, Qt::ControlModifier);

    QCOMPARE(stage.selected(), QString());
    QCOMPARE(stage.form().m_startFixedLineEdit->text(), QString());
    for (const quint32 eid : {1u, 2u, 3u})
        QCOMPARE(stage.children[eid]->changes, QStringList());
}

void tst_EffectTableSelection::clickThroughTheRowsWritesNothingIntoTheChildren()
{
    OpenStage stage;
    for (const quint32 eid : {1u, 2u, 3u}) {
        stage.selectEid(eid); // links what was never linked, once
        stage.children[eid]->changes.clear();
    }

    for (const quint32 eid : {2u, 1u, 3u, 2u})
        stage.selectEid(eid);
    QTest::keyClick(&stage.table(), Qt::Key_Up);

    for (const quint32 eid : {1u, 2u, 3u})
        QCOMPARE(stage.children[eid]->changes, QStringList());
}

// --- Parameter widgets ---

void tst_EffectTableSelection::parametersOfTheSelectedChildStandAloneInTheFrame()
{
    OpenStage stage;
    QFrame *frame = stage.form().m_effectParameterFrame;
    QVERIFY(!frame->layout());

    stage.selectEid(2);

    QWidget *parameters = stage.children[2]->parameterWidget();
    QVERIFY(parameters);
    QCOMPARE(parameters->parentWidget(), frame);
    QVERIFY(parameters->isVisible());
    QVERIFY(!parameters->isWindow());
    const auto *layout = qobject_cast<QVBoxLayout *>(frame->layout());
    QVERIFY(layout);
    QCOMPARE(layout->count(), 1);
    QCOMPARE(layout->itemAt(0)->widget(), parameters);
    QCOMPARE(layout->contentsMargins(), QMargins());
    QWidget plain;
    QCOMPARE(layout->spacing(), QVBoxLayout(&plain).spacing());
}

void tst_EffectTableSelection::formerParametersAreHiddenAndKept()
{
    OpenStage stage;
    stage.selectEid(2);
    const QPointer<QWidget> former = stage.children[2]->parameterWidget();

    stage.selectEid(1);

    QVERIFY(former);
    QVERIFY(former->isHidden());
    QCOMPARE(former->parentWidget(), stage.form().m_effectParameterFrame);
    QCOMPARE(stage.shownParameters(), QList({stage.children[1]->parameterWidget()}));

    stage.selectEid(2);
    QCOMPARE(stage.children[2]->parameterWidget(), former);
    QCOMPARE(stage.shownParameters(), QList({former.data()}));
}

void tst_EffectTableSelection::parametersAreHiddenWithoutASelectedChild_data()
{
    QTest::addColumn<bool>("withAnotherRow");
    QTest::newRow("no row") << false;
    QTest::newRow("two rows") << true;
}

void tst_EffectTableSelection::parametersAreHiddenWithoutASelectedChild()
{
    QFETCH(bool, withAnotherRow);
    OpenStage stage;
    stage.selectEid(2);
    const QPointer<QWidget> parameters = stage.children[2]->parameterWidget();

    if (withAnotherRow)
        stage.click(0, NameColumn, Qt::ControlModifier);
    else
        stage.clickAt(stage.below());

    QVERIFY(parameters);
    QVERIFY(parameters->isHidden());
    QCOMPARE(stage.children[3]->widgetRequests, 0);
}

void tst_EffectTableSelection::layoutIsMadeAnewForEveryChild()
{
    OpenStage stage;
    stage.selectEid(2);
    const QPointer<QLayout> former = stage.form().m_effectParameterFrame->layout();
    QVERIFY(former);

    stage.selectEid(1);

    QVERIFY(!former);
    const QLayout *layout = stage.form().m_effectParameterFrame->layout();
    QVERIFY(layout);
    QCOMPARE(layout->count(), 1);
    QCOMPARE(layout->itemAt(0)->widget(), stage.children[1]->parameterWidget());
}

void tst_EffectTableSelection::sameChildIsShownAgain()
{
    OpenStage stage;
    stage.selectEid(2);
    QWidget *parameters = stage.children[2]->parameterWidget();
    const int requests = stage.children[2]->widgetRequests;

    stage.effect.refreshWidgets();

    QCOMPARE(stage.children[2]->widgetRequests, requests + 1);
    QCOMPARE(stage.children[2]->parameterWidget(), parameters);
    QVERIFY(parameters->isVisible());
    QCOMPARE(stage.form().m_effectParameterFrame->layout()->count(), 1);

    stage.clickAt(stage.below());
    stage.selectEid(2);
    QVERIFY(parameters->isVisible());
    QCOMPARE(stage.shownParameters(), QList({parameters}));
}

void tst_EffectTableSelection::childWithoutAWidgetShowsNoParameters()
{
    OpenStage stage;
    auto *plain = new StubEffect(&stage.map, 9);
    plain->with("name", QStringLiteral("Plain"));
    stage.effect.addChild(plain);
    stage.selectEid(2);

    stage.selectEid(9);

    QCOMPARE(stage.shownParameters(), QList<QWidget *>());
    QCOMPARE(stage.form().m_effectParameterFrame->layout()->count(), 0);
    QCOMPARE(stage.title(), QStringLiteral("Plain Parameters"));
    CHECK_SANITY(stage);

    stage.selectEid(2);
    QCOMPARE(stage.shownParameters(), QList({stage.children[2]->parameterWidget()}));
}

void tst_EffectTableSelection::childMayDeleteItsWidget()
{
    OpenStage stage;
    stage.selectEid(2);
    stage.children[2]->deleteParameterWidget();
    stage.clickAt(stage.below());
    QCOMPARE(stage.shownParameters(), QList<QWidget *>());

    stage.selectEid(2);
    stage.children[2]->deleteParameterWidget();
    stage.selectEid(1);
    QCOMPARE(stage.shownParameters(), QList({stage.children[1]->parameterWidget()}));

    stage.selectEid(2);
    QCOMPARE(stage.shownParameters(), QList({stage.children[2]->parameterWidget()}));
    stage.children[2]->deleteParameterWidget();
    stage.effect.refreshWidgets();
    QCOMPARE(stage.shownParameters(), QList({stage.children[2]->parameterWidget()}));
}

void tst_EffectTableSelection::deletedChildTakesItsWidgetAlong()
{
    OpenStage stage;
    stage.selectEid(2);
    const QPointer<QWidget> parameters = stage.children[2]->parameterWidget();

    QTest::mouseClick(stage.form().m_deleteEffectButton, Qt::LeftButton);

    QVERIFY(!parameters);
    QCOMPARE(stage.shownParameters(), QList<QWidget *>());
    stage.selectEid(1);
    QCOMPARE(stage.shownParameters(), QList({stage.children[1]->parameterWidget()}));
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::nestedMetaEffectShowsItsOwnEditor()
{
    OpenStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 9);
    nested->addChild(new WidgetStub(&stage.map, QStringLiteral("Stub"), 1));
    stage.selectEid(1);

    stage.selectEid(9);

    const QPointer<QWidget> inner = nested->editorWidget();
    QVERIFY(qobject_cast<MetaWidget *>(inner));
    QCOMPARE(stage.shownParameters(), QList({inner.data()}));
    QVERIFY(inner->isVisible());
    auto &innerTable = *qobject_cast<MetaWidget *>(inner)->m_effectTable;
    QCOMPARE(innerTable.rowCount(), 1);

    // The inner editor has a selection of its own.
    innerTable.selectRow(0);
    QCOMPARE(qobject_cast<MetaWidget *>(inner)->m_effectGroupBox->title(),
             QStringLiteral(" Parameters"));
    QCOMPARE(stage.selected(), QStringLiteral("9"));

    stage.selectEid(2);
    QVERIFY(inner);
    QVERIFY(inner->isHidden());

    delete &stage.form();
    QVERIFY(!inner);
    QVERIFY(!nested->editorWidget());
}

// --- New children and removed rows ---

void tst_EffectTableSelection::newChildIsTheOnlySelectedOne()
{
    OpenStage stage;
    stage.selectEid(2);

    stage.add(9);

    QCOMPARE(stage.highlighted(), QStringLiteral("9"));
    QCOMPARE(stage.selected(), QStringLiteral("9"));
    QCOMPARE(stage.table().selectedRows(), QList<int>({3}));
    QCOMPARE(stage.title(), QStringLiteral("Child 9 Parameters"));
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::newChildIsShownOnceAndTheFormerOneNoMore()
{
    OpenStage stage;
    stage.selectEid(2);
    const int requests = stage.children[2]->widgetRequests;

    const WidgetStub *added = stage.add(9);

    QCOMPARE(added->widgetRequests, 1);
    QCOMPARE(stage.children[2]->widgetRequests, requests);
    QVERIFY(stage.children[2]->parameterWidget()->isHidden());
    QCOMPARE(stage.shownParameters(), QList({added->parameterWidget()}));
}

void tst_EffectTableSelection::newChildNeverBlanksThePanel()
{
    OpenStage stage;
    stage.selectEid(2);
    const QSignalSpy texts(stage.form().m_startFixedLineEdit, &QLineEdit::textChanged);
    const QSignalSpy selections(&stage.table(), SIGNAL(selectionChanged()));
    auto *added = new WidgetStub(&stage.map, QStringLiteral("Stub"), 9);
    added->with("startfixedtime", 1500);

    stage.effect.addChild(added);

    QCOMPARE(texts.count(), 0);
    QCOMPARE(selections.count(), 0);
    QCOMPARE(stage.form().m_startFixedLineEdit->text(), QStringLiteral("1.5"));
}

void tst_EffectTableSelection::lastOfSeveralNewChildrenIsSelected()
{
    OpenStage stage;
    stage.click(0, NameColumn);
    stage.click(1, NameColumn, Qt::ControlModifier);

    stage.add(9);
    stage.add(8);

    QCOMPARE(stage.highlighted(), QStringLiteral("8"));
    QCOMPARE(stage.selected(), QStringLiteral("8"));
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::removedRowLeavesNothingSelected_data()
{
    QTest::addColumn<quint32>("eid");
    QTest::newRow("the selected row") << 2u;
    QTest::newRow("the row above it") << 3u;
    QTest::newRow("the row below it") << 1u;
}

void tst_EffectTableSelection::removedRowLeavesNothingSelected()
{
    QFETCH(quint32, eid);
    OpenStage stage;
    stage.selectEid(2);

    stage.effect.removeFromTable(eid);

    QCOMPARE(stage.table().rowCount(), 2);
    QCOMPARE(stage.highlighted(), QString());
    QCOMPARE(stage.selected(), QString());
    QVERIFY(!stage.table().currentIndex().isValid());
    QCOMPARE(stage.title(), QStringLiteral("Effect Parameters"));
    QVERIFY(!stage.form().m_startButtonGroup->isEnabled());
    QCOMPARE(stage.shownParameters(), QList<QWidget *>());
}

void tst_EffectTableSelection::secondDeletionWithoutASelectionDeletesNothing()
{
    OpenStage stage;
    stage.selectEid(2);
    QTest::mouseClick(stage.form().m_deleteEffectButton, Qt::LeftButton);
    QCOMPARE(stage.eids(), QStringList({"1", "3"}));

    QTest::mouseClick(stage.form().m_deleteEffectButton, Qt::LeftButton);

    QCOMPARE(stage.eids(), QStringList({"1", "3"}));
    CHECK_SANITY(stage);
}

// --- Context menu ---

void tst_EffectTableSelection::menuHasFiveEntriesAtThePlaceOfTheClick()
{
    OpenStage stage;
    QWidget *viewport = stage.table().viewport();
    const QPoint place = stage.at(1, NameColumn);

    const Menu menu = openMenu([&] {
        QTest::mouseClick(stage.form().windowHandle(), Qt::RightButton, {},
                          viewport->mapTo(&stage.form(), place));
    });

    QCOMPARE(menu.texts, menuTexts);
    QCOMPARE(menu.position, viewport->mapToGlobal(place));
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    const QList<QAction *> actions = stage.form().m_popupMenu.actions();
    for (const QAction *action : actions)
        QVERIFY(action->shortcut().isEmpty());
}

void tst_EffectTableSelection::menuOpensBesideTheRowsToo()
{
    OpenStage stage;
    QWidget *viewport = stage.table().viewport();

    const Menu menu = openMenu([&] {
        QTest::mouseClick(stage.form().windowHandle(), Qt::RightButton, {},
                          viewport->mapTo(&stage.form(), QPoint(50, 90)));
    });

    QCOMPARE(menu.texts, menuTexts);
    QCOMPARE(menu.position, viewport->mapToGlobal(QPoint(50, 90)));
}

void tst_EffectTableSelection::menuOpensByKeyAtTheCurrentCell()
{
    OpenStage stage;
    stage.click(1, NameColumn);
    stage.table().setFocus();
    QCOMPARE(QApplication::focusWidget(), &stage.table());

    const Menu menu = openMenu([&] {
        // What a platform makes of the menu key.
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {1, 2}, {3, 4});
        QApplication::sendEvent(QApplication::focusWidget(), &event);
    });

    QCOMPARE(menu.texts, menuTexts);
    QCOMPARE(menu.position, stage.table().viewport()->mapToGlobal(stage.at(1, NameColumn)));
}

void tst_EffectTableSelection::menuEntryDoesItsWork_data()
{
    QTest::addColumn<int>("entry");
    QTest::addColumn<QStringList>("eids");
    QTest::addColumn<QString>("clipboard");
    QTest::newRow("cut") << 0 << QStringList({"1", "3"}) << "2";
    QTest::newRow("copy") << 1 << QStringList({"1", "2", "3"}) << "2";
    QTest::newRow("paste") << 2 << QStringList({"1", "2", "3", "4"}) << "3";
    QTest::newRow("delete") << 4 << QStringList({"1", "3"}) << "3";
}

void tst_EffectTableSelection::menuEntryDoesItsWork()
{
    QFETCH(int, entry);
    OpenStage stage;
    stage.selectEid(3);
    stage.effect.handleCopyEffect();
    stage.selectEid(2);

    openMenu([&] { stage.effect.handleContextMenuRequested(1, NameColumn, {100, 100}); }, entry);

    QTEST(stage.eids(), "eids");
    static const QRegularExpression eid(QStringLiteral("<property key=\"eid\">([^<]*)<"));
    QTEST(eid.match(QGuiApplication::clipboard()->text()).captured(1), "clipboard");
    CHECK_SANITY(stage);
}

void tst_EffectTableSelection::menuOpensAtTheGivenPlaceWhateverTheCell_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");
    QTest::newRow("cell") << 1 << int(TypeColumn);
    QTest::newRow("beside the cells") << -1 << -1;
    QTest::newRow("behind the last row") << 99 << 99;
}

void tst_EffectTableSelection::menuOpensAtTheGivenPlaceWhateverTheCell()
{
    QFETCH(int, row);
    QFETCH(int, column);
    OpenStage stage;
    bool isOpenStill = false;

    const Menu menu = openMenu([&] {
        stage.effect.handleContextMenuRequested(row, column, {123, 45});
        isOpenStill = stage.form().m_popupMenu.isVisible();
    });

    QCOMPARE(menu.texts, menuTexts);
    QCOMPARE(menu.position, QPoint(123, 45));
    QVERIFY(!isOpenStill); // the call returns when the menu is closed
}

void tst_EffectTableSelection::sharedPropertyChangesDoNothing()
{
    OpenStage stage;
    stage.selectEid(2);
    for (const quint32 eid : {1u, 2u, 3u})
        stage.children[eid]->changes.clear();
    const QStringList row = stage.row(1);
    const int requests = stage.children[2]->widgetRequests;
    stage.effect.setOwnDirty(false);
    m_debugLines.reset();
    m_debugLines.emplace(QtDebugMsg);

    for (int column = NameColumn; column <= EidColumn; ++column)
        stage.effect.handleSharedPropertyChanged(1, column);

    QCOMPARE(stage.row(1), row);
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    QCOMPARE(stage.children[2]->widgetRequests, requests);
    for (const quint32 eid : {1u, 2u, 3u})
        QCOMPARE(stage.children[eid]->changes, QStringList());
    QVERIFY(!stage.effect.ownDirty());
    QCOMPARE(m_debugLines->lines(), QStringList());
}

QTEST_MAIN(tst_EffectTableSelection)
#include "tst_EffectTableSelection.moc"
