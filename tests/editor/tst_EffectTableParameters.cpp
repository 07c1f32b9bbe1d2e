#include "BlankPanel.h"
#include "EffectColumns.h"
#include "LogCapture.h"
#include "OpenStage.h"
#include "TextRow.h"

#include <QClipboard>
#include <QLayout>
#include <QPointer>
#include <QRegularExpression>
#include <QVBoxLayout>

#include <functional>
#include <optional>
#include <utility>

using enum meta::EffectColumn;

namespace {

/// Calls back at each event of a type that a widget gets.
class EventWatch : public QObject
{
public:
    EventWatch(QWidget &widget, QEvent::Type type, std::function<void()> seen)
        : m_type(type), m_seen(std::move(seen))
    {
        widget.installEventFilter(this);
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == m_type)
            m_seen();
        return false;
    }

private:
    QEvent::Type m_type;
    std::function<void()> m_seen;
};

} // namespace

class tst_EffectTableParameters : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    // Showing the selection
    void oneSelectedChildIsShown();
    void parametersAreTitledAfterTheChild_data();
    void parametersAreTitledAfterTheChild();
    void childIsShownStepByStep();
    void widgetsAreBlankedStepByStep();
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

    void sharedPropertyChangesDoNothing();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_EffectTableParameters::init()
{
    // What the offscreen platform says of windows with a minimum size and of menus.
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    m_debugLines.emplace(QtDebugMsg);
    QGuiApplication::clipboard()->clear();
}

// --- Showing the selection ---

void tst_EffectTableParameters::oneSelectedChildIsShown()
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

void tst_EffectTableParameters::parametersAreTitledAfterTheChild_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("title");
    textRow("named Chase", "Chase", "Chase Parameters");
    textRow("several words", "Red, then blue", "Red, then blue Parameters");
    textRow("no name", "", " Parameters");
}

void tst_EffectTableParameters::parametersAreTitledAfterTheChild()
{
    QFETCH(QString, name);
    OpenStage stage;
    stage.children[2]->with("name", name);
    stage.selectEid(2);
    QTEST(stage.title(), "title");
}

void tst_EffectTableParameters::childIsShownStepByStep()
{
    OpenStage stage;
    WidgetStub &child = *stage.children[2];
    child.with("startfixedtime", 3000).with("endfixedtime", 7000);
    stage.selectEid(3);
    const MetaWidget &form = stage.form();
    const int requests = child.widgetRequests;
    QStringList steps;
    const auto note = [&](const QString &step) {
        const bool isAsked = child.widgetRequests > requests;
        const bool isShown = isAsked && stage.shownParameters().contains(child.parameterWidget());
        steps.append(step
                     + (isShown   ? " shown"
                        : isAsked ? " asked"
                                  : "")
                     + ", " + stage.title()
                     + (form.m_startButtonGroup->isEnabled() ? ", start" : "")
                     + (form.m_endButtonGroup->isEnabled() ? ", end" : ""));
    };
    form.m_startButtonGroup->setEnabled(false);
    form.m_endButtonGroup->setEnabled(false);
    const EventWatch hidden(*stage.children[3]->parameterWidget(), QEvent::Hide,
                            [&] { note("former hidden"); });
    connect(form.m_startFixedLineEdit, &QLineEdit::textChanged, this,
            [&] { note("start filled"); });
    connect(form.m_endFixedLineEdit, &QLineEdit::textChanged, this, [&] { note("end filled"); });

    // One change of the selection; a click would empty it first.
    meta::TableWidget &table = stage.table();
    table.selectionModel()->select(table.model()->index(stage.rowOf(2), 0),
                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);

    QCOMPARE(steps, QStringList({"former hidden, Child 3 Parameters",
                                 "start filled shown, Child 2 Parameters",
                                 "end filled shown, Child 2 Parameters, start"}));
}

void tst_EffectTableParameters::widgetsAreBlankedStepByStep()
{
    OpenStage stage;
    stage.selectEid(2);
    const MetaWidget &form = stage.form();
    QStringList steps;
    const auto note = [&](const QString &step) {
        steps.append(step);
        QCOMPARE(stage.title(), QStringLiteral("Child 2 Parameters"));
    };
    const EventWatch hidden(*stage.children[2]->parameterWidget(), QEvent::Hide,
                            [&] { note("parameters"); });
    const EventWatch start(*form.m_startButtonGroup, QEvent::EnabledChange, [&] { note("start"); });
    const EventWatch end(*form.m_endButtonGroup, QEvent::EnabledChange, [&] { note("end"); });
    for (QLineEdit *field : {form.m_startFixedLineEdit, form.m_startLinkOffsetLineEdit,
                             form.m_endFixedLineEdit, form.m_endLinkOffsetLineEdit})
        connect(field, &QLineEdit::textChanged, this, [=] { note(field->objectName()); });
    for (QComboBox *chooser : {form.m_startLinkEffectComboBox, form.m_endLinkEffectComboBox})
        connect(chooser, &QComboBox::currentIndexChanged, this,
                [=] { note(chooser->objectName()); });
    connect(form.m_endCyclesSpinBox, &QSpinBox::valueChanged, this, [=] { note("cycles"); });

    stage.table().clearSelection();

    QCOMPARE(steps, QStringList({"parameters", "start", "m_startFixedLineEdit",
                                 "m_startLinkEffectComboBox", "m_startLinkOffsetLineEdit", "end",
                                 "m_endFixedLineEdit", "m_endLinkEffectComboBox",
                                 "m_endLinkOffsetLineEdit", "cycles"}));
    QCOMPARE(stage.title(), QStringLiteral("Effect Parameters"));
}

void tst_EffectTableParameters::twoRowsEmptyTheSelectionAndDisableThePanels()
{
    OpenStage stage;
    stage.selectEid(2);

    stage.click(0, NameColumn, Qt::ControlModifier);

    QCOMPARE(stage.highlighted(), QStringLiteral("3 2"));
    QCOMPARE(stage.selected(), QString());
    checkPanelIsBlank(stage.form());
    QCOMPARE(stage.shownParameters(), QList<QWidget *>());
}

void tst_EffectTableParameters::noRowDisablesThePanels()
{
    OpenStage stage;
    stage.selectEid(2);

    stage.table().clearSelection();

    QCOMPARE(stage.selected(), QString());
    checkPanelIsBlank(stage.form());
    QCOMPARE(stage.shownParameters(), QList<QWidget *>());
}

void tst_EffectTableParameters::blankingWritesNothingIntoTheChildren_data()
{
    QTest::addColumn<QList<quint32>>("others");
    QTest::newRow("no row") << QList<quint32>();
    QTest::newRow("two rows") << QList<quint32>({3});
    QTest::newRow("all rows") << QList<quint32>({3, 1});
}

void tst_EffectTableParameters::blankingWritesNothingIntoTheChildren()
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

void tst_EffectTableParameters::clickThroughTheRowsWritesNothingIntoTheChildren()
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

void tst_EffectTableParameters::parametersOfTheSelectedChildStandAloneInTheFrame()
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

void tst_EffectTableParameters::formerParametersAreHiddenAndKept()
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

void tst_EffectTableParameters::parametersAreHiddenWithoutASelectedChild_data()
{
    QTest::addColumn<bool>("withAnotherRow");
    QTest::newRow("no row") << false;
    QTest::newRow("two rows") << true;
}

void tst_EffectTableParameters::parametersAreHiddenWithoutASelectedChild()
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

void tst_EffectTableParameters::layoutIsMadeAnewForEveryChild()
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

void tst_EffectTableParameters::sameChildIsShownAgain()
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

void tst_EffectTableParameters::childWithoutAWidgetShowsNoParameters()
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

void tst_EffectTableParameters::childMayDeleteItsWidget()
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

void tst_EffectTableParameters::deletedChildTakesItsWidgetAlong()
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

void tst_EffectTableParameters::nestedMetaEffectShowsItsOwnEditor()
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

void tst_EffectTableParameters::sharedPropertyChangesDoNothing()
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

QTEST_MAIN(tst_EffectTableParameters)
#include "tst_EffectTableParameters.moc"
