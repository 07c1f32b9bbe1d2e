#include "PanelScene.h"

#include <QAbstractItemView>
#include <QClipboard>
#include <QRegularExpression>

namespace {

/// What every handler is called with, and what it does in the scene of prepare().
struct HandlerRow
{
    const char *name;
    const char *slot;
    QVariant argument;
    QStringList journal;
};

const QList<HandlerRow> handlerRows = {
    {"start fixed on",
     "startFixedToggled",
     true,
     {"1 starttype=0", "1 startfixedtime=1500", "pass", "focus m_startFixedLineEdit"}},
    {"start fixed off", "startFixedToggled", false, {}},
    {"start linked on",
     "startLinkedToggled",
     true,
     {"1 starttype=1", "1 startlinkstart=0", "1 startlinkeid=3", "1 startlinkoffset=-2500",
      "focus m_startLinkOffsetLineEdit", "pass"}},
    {"start linked off", "startLinkedToggled", false, {}},
    {"start time", "startFixedTimeChanged", "2.25", {"1 startfixedtime=2250", "pass"}},
    {"start link to start on",
     "startLinkStartToggled",
     true,
     {"1 startlinkstart=1", "focus m_startLinkOffsetLineEdit", "pass"}},
    {"start link to start off", "startLinkStartToggled", false, {}},
    {"start link to end on",
     "startLinkEndToggled",
     true,
     {"1 startlinkstart=0", "focus m_startLinkOffsetLineEdit", "pass"}},
    {"start link to end off", "startLinkEndToggled", false, {}},
    {"start target",
     "startLinkEffectActivated",
     0,
     {"1 startlinkeid=2", "focus m_startLinkOffsetLineEdit", "pass"}},
    {"start target, last",
     "startLinkEffectActivated",
     1,
     {"1 startlinkeid=3", "focus m_startLinkOffsetLineEdit", "pass"}},
    {"start target -1", "startLinkEffectActivated", -1, {}},
    {"start target behind the last", "startLinkEffectActivated", 2, {}},
    {"start offset", "startLinkOffsetChanged", "-0.5", {"1 startlinkoffset=-500", "pass"}},
    {"end fixed on",
     "endFixedToggled",
     true,
     {"1 endtype=0", "1 endfixedtime=250", "focus m_endFixedLineEdit", "pass"}},
    {"end fixed off", "endFixedToggled", false, {}},
    {"end linked on",
     "endLinkedToggled",
     true,
     {"1 endtype=1", "1 endlinkstart=1", "1 endlinkeid=2", "1 endlinkoffset=12000",
      "focus m_endLinkOffsetLineEdit", "pass"}},
    {"end linked off", "endLinkedToggled", false, {}},
    {"end cycles on",
     "endCyclesToggled",
     true,
     {"1 endtype=2", "1 endcyclecount=4", "focus m_endCyclesSpinBox", "pass"}},
    {"end cycles off", "endCyclesToggled", false, {}},
    {"end time", "endFixedTimeChanged", "3", {"1 endfixedtime=3000", "pass"}},
    {"end link to start on",
     "endLinkStartToggled",
     true,
     {"1 endlinkstart=1", "focus m_endLinkOffsetLineEdit", "pass"}},
    {"end link to start off", "endLinkStartToggled", false, {}},
    {"end link to end on",
     "endLinkEndToggled",
     true,
     {"1 endlinkstart=0", "focus m_startLinkOffsetLineEdit", "pass"}},
    {"end link to end off", "endLinkEndToggled", false, {}},
    {"end target",
     "endLinkEffectActivated",
     0,
     {"1 endlinkeid=2", "focus m_endLinkOffsetLineEdit", "pass"}},
    {"end target, last",
     "endLinkEffectActivated",
     1,
     {"1 endlinkeid=3", "focus m_endLinkOffsetLineEdit", "pass"}},
    {"end target -1", "endLinkEffectActivated", -1, {}},
    {"end target behind the last", "endLinkEffectActivated", 2, {}},
    {"end offset", "endLinkOffsetChanged", "0.125", {"1 endlinkoffset=125", "pass"}},
    {"end cycle count", "endCyclesChanged", 7, {"1 endcyclecount=7", "pass"}},
};

const char *const ruleKeys[] = {"starttype",      "startfixedtime",  "startlinkeid",
                                "startlinkstart", "startlinkoffset", "endtype",
                                "endfixedtime",   "endlinkeid",      "endlinkstart",
                                "endlinkoffset",  "endcyclecount"};

void addHandlerRows()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QVariant>("argument");
    QTest::addColumn<QStringList>("journal");
    for (const HandlerRow &row : handlerRows)
        QTest::newRow(row.name) << QByteArray(row.slot) << row.argument << row.journal;
}

bool call(MetaEffect &effect, const QByteArray &slot, const QVariant &argument)
{
    switch (argument.typeId()) {
    case QMetaType::Bool:
        return QMetaObject::invokeMethod(&effect, slot, Q_ARG(bool, argument.toBool()));
    case QMetaType::Int:
        return QMetaObject::invokeMethod(&effect, slot, Q_ARG(int, argument.toInt()));
    default: return QMetaObject::invokeMethod(&effect, slot, Q_ARG(QString, argument.toString()));
    }
}

// All widgets of a group that a rule or a handler may touch.
const QStringList startWidgets = {"m_startFixedRadioButton",   "m_startFixedLineEdit",
                                  "m_startLinkedRadioButton",  "m_startLinkStartRadioButton",
                                  "m_startLinkEndRadioButton", "m_startLinkEffectComboBox",
                                  "m_startLinkOffsetLineEdit"};
const QStringList endWidgets = {
    "m_endFixedRadioButton",     "m_endFixedLineEdit",      "m_endLinkedRadioButton",
    "m_endLinkStartRadioButton", "m_endLinkEndRadioButton", "m_endLinkEffectComboBox",
    "m_endLinkOffsetLineEdit",   "m_endCyclesRadioButton",  "m_endCyclesSpinBox"};

QWidget *widget(const MetaWidget &form, const QString &name)
{
    return child<QWidget>(form, qPrintable(name));
}

void setAllEnabled(const MetaWidget &form, bool enabled)
{
    for (const QString &name : startWidgets + endWidgets)
        widget(form, name)->setEnabled(enabled);
}

// The widgets that are enabled within their group.
QStringList enabledWidgets(const MetaWidget &form)
{
    QStringList enabled;
    for (const QString &name : startWidgets) {
        if (widget(form, name)->isEnabledTo(form.m_startButtonGroup))
            enabled.append(name);
    }
    for (const QString &name : endWidgets) {
        if (widget(form, name)->isEnabledTo(form.m_endButtonGroup))
            enabled.append(name);
    }
    return enabled;
}

QStringList sorted(QStringList texts)
{
    texts.sort();
    return texts;
}

template<typename Widget, typename Action>
void silently(Widget *widget, Action action)
{
    const QSignalBlocker blocker(widget);
    action(widget);
}

// Child 1 is selected and the fields hold a state of their own, told to nobody; the stored texts are
// all "x", so that each one that is written is seen. Both choosers offer child 2 and child 3.
void prepare(PanelScene &scene)
{
    scene.select(1);
    const MetaWidget &form = scene.form();
    silently(form.m_startFixedLineEdit, [](QLineEdit *field) { field->setText("1.5"); });
    silently(form.m_startLinkEndRadioButton, [](QRadioButton *on) { on->setChecked(true); });
    silently(form.m_startLinkEffectComboBox, [](QComboBox *box) { box->setCurrentIndex(1); });
    silently(form.m_startLinkOffsetLineEdit, [](QLineEdit *field) { field->setText("-2.5"); });
    silently(form.m_endFixedLineEdit, [](QLineEdit *field) { field->setText("0.25"); });
    silently(form.m_endLinkStartRadioButton, [](QRadioButton *on) { on->setChecked(true); });
    silently(form.m_endLinkEffectComboBox, [](QComboBox *box) { box->setCurrentIndex(0); });
    silently(form.m_endLinkOffsetLineEdit, [](QLineEdit *field) { field->setText("12"); });
    silently(form.m_endCyclesSpinBox, [](QSpinBox *box) { box->setValue(4); });
    setAllEnabled(form, true);
    for (const char *key : ruleKeys)
        scene.at(1).with(key, "x");
    scene.take();
}

/// Notes in the journal when a widget is enabled or disabled: "on m_x" or "off m_x".
class EnablingWatch : public QObject
{
public:
    explicit EnablingWatch(const MetaWidget &form)
    {
        for (const QString &name : startWidgets + endWidgets)
            widget(form, name)->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::EnabledChange)
            qDebug("%s %s", static_cast<QWidget *>(object)->isEnabled() ? "on" : "off",
                   qPrintable(object->objectName()));
        return false;
    }
};

} // namespace

class tst_TimePanel : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        // The platform of the tests has no means of its own to raise a popup.
        QTest::failOnWarning(
            QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    }

    // The handlers
    void handlerWritesThenFocusesThenPasses_data() { addHandlerRows(); }
    void handlerWritesThenFocusesThenPasses();
    void handlerWithoutSelectionOnlyPasses_data() { addHandlerRows(); }
    void handlerWithoutSelectionOnlyPasses();
    void handlerWithTwoRowsSelectedWritesNothing_data() { addHandlerRows(); }
    void handlerWithTwoRowsSelectedWritesNothing();
    void handlerWithoutEditorDoesNothing_data() { addHandlerRows(); }
    void handlerWithoutEditorDoesNothing();
    void handlerAfterTheFormIsDeletedDoesNothing_data() { addHandlerRows(); }
    void handlerAfterTheFormIsDeletedDoesNothing();
    void handlerLeavesTheFocusWhereTheFieldIsDisabled();
    void linkedToggleWithoutCurrentTargetSkipsTargetAndOffset_data();
    void linkedToggleWithoutCurrentTargetSkipsTargetAndOffset();
    void ruleToggleEnablesBeforeItWrites_data();
    void ruleToggleEnablesBeforeItWrites();
    void cyclesToggleTakesTheNumberStillBeingTyped();

    // What is not to be made uniform
    void textThatIsNoNumberIsStoredEmptyByThreeTogglesAndAsZeroByTheRest_data();
    void textThatIsNoNumberIsStoredEmptyByThreeTogglesAndAsZeroByTheRest();
    void linkToEndOfTheEndFocusesTheOffsetOfTheStart();
    void endChooserLooksItsIndexUpAmongTheStartCandidates();

    // Enabling
    void ruleEnablesAndDisablesJustItsFields_data();
    void ruleEnablesAndDisablesJustItsFields();
    void enablingWithoutEditorDoesNothing();

    // Text to numbers
    void fixedTimeIsStoredTruncatedAndSaturated_data();
    void fixedTimeIsStoredTruncatedAndSaturated();
    void offsetIsStoredInSixDigits_data();
    void offsetIsStoredInSixDigits();

    // Typing
    void everyKeyStoresPassesAndShowsInTheTable_data();
    void everyKeyStoresPassesAndShowsInTheTable();
    void typing15InTheStartFieldStores1500AndTheStartCellShowsIt();
    void typing1005InTheStartFieldStores1004();
    void typingMinus2StoresZeroAsStartAndMinus2000AsOffset();
    void abcIsStoredAsZeroInTheEndAndAsEmptyTextByTheFixedStartRule();
    void emptiedFieldStoresZero();
    void tabThroughThePanelWritesNothing_data();
    void tabThroughThePanelWritesNothing();

    // Buttons
    void clickOnARuleStoresIt_data();
    void clickOnARuleStoresIt();
    void clickOnTheRuleThatIsOnDoesNothing();
    void arrowKeyOnARuleStoresTheNextOne();
    void clickOnALinkSideStoresItAndKeepsTheRule_data();
    void clickOnALinkSideStoresItAndKeepsTheRule();
    void clickOnTheEndLinksEndButtonMovesTheFocusToTheStartOffset();
    void clickOnTheEndLinksEndButtonKeepsTheFocusWhileTheStartIsFixed();

    // Choosers
    void choosingByArrowKeyStoresTheTarget_data();
    void choosingByArrowKeyStoresTheTarget();
    void choosingInThePopupByKeysStoresTheTarget_data();
    void choosingInThePopupByKeysStoresTheTarget();
    void choosingInThePopupByMouseStoresTheTarget_data();
    void choosingInThePopupByMouseStoresTheTarget();
    void choosingTheSameItemAgainStoresAndPasses();
    void choosingItem2OfTheEndChooserStoresTheEidOfEntry2();
    void targetWaitsUntilTheLinkedRuleIsChosen();
    void linkedRuleTakesTheTargetShown();

    // Number of cycles
    void typedCyclesCountOnlyOnceEntered_data();
    void typedCyclesCountOnlyOnceEntered();
    void typedZeroCyclesBecomeOne();
    void keysBeyondTheMostCyclesAreRefused();
    void pastedTextBeyondTheMostCyclesIsRefused();
    void stepsOfTheCyclesCountAtOnceAndStopAtTheEnds();
    void typedCyclesGoToTheChildThatWasSelected_data();
    void typedCyclesGoToTheChildThatWasSelected();
};

// --- The handlers ---

void tst_TimePanel::handlerWritesThenFocusesThenPasses()
{
    QFETCH(QByteArray, slot);
    QFETCH(QVariant, argument);
    QFETCH(QStringList, journal);
    PanelScene scene;
    prepare(scene);
    QVERIFY(scene.table().hasFocus());

    QVERIFY(call(scene.effect, slot, argument));

    QCOMPARE(scene.take(), journal);
    const QStringList focus = journal.filter("focus ");
    QCOMPARE(scene.form().focusWidget()->objectName(),
             focus.isEmpty() ? "m_effectTable" : focus.first().section(u' ', 1));
}

void tst_TimePanel::handlerWithoutSelectionOnlyPasses()
{
    QFETCH(QByteArray, slot);
    QFETCH(QVariant, argument);
    QFETCH(QStringList, journal);
    PanelScene scene;
    scene.take();

    QVERIFY(call(scene.effect, slot, argument));

    // Nothing was filled yet, so no chooser has a candidate.
    const bool passes = journal.contains("pass") && !slot.contains("Activated");
    QCOMPARE(scene.take(), passes ? QStringList("pass") : QStringList());
}

void tst_TimePanel::handlerWithTwoRowsSelectedWritesNothing()
{
    QFETCH(QByteArray, slot);
    QFETCH(QVariant, argument);
    QFETCH(QStringList, journal);
    PanelScene scene;
    prepare(scene);
    scene.click(scene.rowOf(2), 0, Qt::ControlModifier);
    QCOMPARE(scene.table().selectedRows().size(), 2);
    scene.take();

    QVERIFY(call(scene.effect, slot, argument));

    QCOMPARE(scene.take(), journal.contains("pass") ? QStringList("pass") : QStringList());
    CHECK_SANITY(scene);
}

void tst_TimePanel::handlerWithoutEditorDoesNothing()
{
    QFETCH(QByteArray, slot);
    QFETCH(QVariant, argument);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.add(2);
    child->changes.clear();
    const LogCapture debugLines(QtDebugMsg);

    QVERIFY(call(stage.effect, slot, argument));

    QCOMPARE(child->changes, QStringList());
    QCOMPARE(debugLines.lines(), QStringList());
    QVERIFY(!stage.effect.editorWidget());
}

void tst_TimePanel::handlerAfterTheFormIsDeletedDoesNothing()
{
    QFETCH(QByteArray, slot);
    QFETCH(QVariant, argument);
    PanelScene scene;
    prepare(scene);
    delete scene.effect.editorWidget();
    scene.take();

    QVERIFY(call(scene.effect, slot, argument));

    QCOMPARE(scene.take(), QStringList());
}

void tst_TimePanel::handlerLeavesTheFocusWhereTheFieldIsDisabled()
{
    PanelScene scene;
    prepare(scene);
    scene.form().m_startLinkOffsetLineEdit->setEnabled(false);

    scene.effect.startLinkStartToggled(true);

    QCOMPARE(scene.take(), QStringList({"1 startlinkstart=1", "pass"}));
    QVERIFY(scene.table().hasFocus());
}

void tst_TimePanel::linkedToggleWithoutCurrentTargetSkipsTargetAndOffset_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QString>("chooser");
    QTest::addColumn<int>("index");
    QTest::addColumn<QStringList>("journal");

    // The pass finds no target, so that the rule becomes fixed at 0 at once.
    const QStringList start = {
        "1 starttype=1", "1 startlinkstart=0", "focus m_startLinkOffsetLineEdit",
        "pass",          "1 starttype=0",      "1 startfixedtime=0"};
    const QStringList end = {"1 endtype=1", "1 endlinkstart=1", "focus m_endLinkOffsetLineEdit",
                             "pass",        "1 endtype=0",      "1 endfixedtime=0"};
    QTest::newRow("start, none") << QByteArray("startLinkedToggled") << "m_startLinkEffectComboBox"
                                 << -1 << start;
    QTest::newRow("start, behind the last")
        << QByteArray("startLinkedToggled") << "m_startLinkEffectComboBox" << 2 << start;
    QTest::newRow("end, none") << QByteArray("endLinkedToggled") << "m_endLinkEffectComboBox" << -1
                               << end;
    QTest::newRow("end, behind the last")
        << QByteArray("endLinkedToggled") << "m_endLinkEffectComboBox" << 2 << end;
}

void tst_TimePanel::linkedToggleWithoutCurrentTargetSkipsTargetAndOffset()
{
    QFETCH(QByteArray, slot);
    QFETCH(QString, chooser);
    QFETCH(int, index);
    QFETCH(QStringList, journal);
    PanelScene scene;
    prepare(scene);
    silently(child<QComboBox>(scene.form(), qPrintable(chooser)), [index](QComboBox *box) {
        box->addItem("an item without candidate");
        box->setCurrentIndex(index);
    });

    QVERIFY(call(scene.effect, slot, true));

    QCOMPARE(scene.take(), journal);
}

void tst_TimePanel::ruleToggleEnablesBeforeItWrites_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QStringList>("enabled");
    QTest::addColumn<QStringList>("disabled");

    const QStringList startLink = {"m_startLinkStartRadioButton", "m_startLinkEndRadioButton",
                                   "m_startLinkEffectComboBox", "m_startLinkOffsetLineEdit"};
    const QStringList endLink = {"m_endLinkStartRadioButton", "m_endLinkEndRadioButton",
                                 "m_endLinkEffectComboBox", "m_endLinkOffsetLineEdit"};
    const QStringList startTime = {"m_startFixedLineEdit"};
    const QStringList endTime = {"m_endFixedLineEdit"};
    const QStringList cycles = {"m_endCyclesSpinBox"};
    QTest::newRow("refreshStartFixed") << QByteArray("startFixedToggled") << startTime << startLink;
    QTest::newRow("refreshStartLinked")
        << QByteArray("startLinkedToggled") << startLink << startTime;
    QTest::newRow("refreshEndFixed")
        << QByteArray("endFixedToggled") << endTime << endLink + cycles;
    QTest::newRow("refreshEndLinked")
        << QByteArray("endLinkedToggled") << endLink << cycles + endTime;
    QTest::newRow("refreshEndCycles")
        << QByteArray("endCyclesToggled") << cycles << endLink + endTime;
}

void tst_TimePanel::ruleToggleEnablesBeforeItWrites()
{
    QFETCH(QByteArray, slot);
    QFETCH(QStringList, enabled);
    QFETCH(QStringList, disabled);
    PanelScene scene;
    prepare(scene);
    for (const QString &name : enabled)
        widget(scene.form(), name)->setEnabled(false);
    const EnablingWatch watch(scene.form());

    QVERIFY(call(scene.effect, slot, true));

    QStringList expected;
    for (const QString &name : enabled)
        expected.append("on " + name);
    for (const QString &name : disabled)
        expected.append("off " + name);
    const QStringList journal = scene.take();
    QVERIFY(journal.size() > expected.size());
    QCOMPARE(sorted(journal.first(expected.size())), sorted(expected));
    QVERIFY(journal.at(expected.size()).contains("type="));
    QCOMPARE(journal.filter(QRegularExpression("^(on|off) ")).size(), expected.size());
}

void tst_TimePanel::cyclesToggleTakesTheNumberStillBeingTyped()
{
    PanelScene scene;
    prepare(scene);
    QLineEdit *number = scene.form().m_endCyclesSpinBox->findChild<QLineEdit *>();
    number->setText("12");

    scene.effect.endCyclesToggled(true);

    QCOMPARE(scene.at(1).text("endcyclecount"), "12");
    QCOMPARE(scene.at(1).text("endtype"), "2");
}

// --- What is not to be made uniform ---

void tst_TimePanel::textThatIsNoNumberIsStoredEmptyByThreeTogglesAndAsZeroByTheRest_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QVariant>("argument");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QString>("stored");

    QTest::newRow("start fixed rule")
        << QByteArray("startFixedToggled") << QVariant(true) << QByteArray("startfixedtime") << "";
    QTest::newRow("start linked rule") << QByteArray("startLinkedToggled") << QVariant(true)
                                       << QByteArray("startlinkoffset") << "";
    QTest::newRow("end linked rule")
        << QByteArray("endLinkedToggled") << QVariant(true) << QByteArray("endlinkoffset") << "";
    QTest::newRow("end fixed rule")
        << QByteArray("endFixedToggled") << QVariant(true) << QByteArray("endfixedtime") << "0";
    QTest::newRow("start time") << QByteArray("startFixedTimeChanged") << QVariant("abc")
                                << QByteArray("startfixedtime") << "0";
    QTest::newRow("start offset") << QByteArray("startLinkOffsetChanged") << QVariant("abc")
                                  << QByteArray("startlinkoffset") << "0";
    QTest::newRow("end time") << QByteArray("endFixedTimeChanged") << QVariant("abc")
                              << QByteArray("endfixedtime") << "0";
    QTest::newRow("end offset") << QByteArray("endLinkOffsetChanged") << QVariant("abc")
                                << QByteArray("endlinkoffset") << "0";
}

void tst_TimePanel::textThatIsNoNumberIsStoredEmptyByThreeTogglesAndAsZeroByTheRest()
{
    QFETCH(QByteArray, slot);
    QFETCH(QVariant, argument);
    QFETCH(QByteArray, key);
    QFETCH(QString, stored);
    for (const char *const text : {"abc", "", "1,5", "1e400"}) {
        PanelScene scene;
        prepare(scene);
        const MetaWidget &form = scene.form();
        for (QLineEdit *field : {form.m_startFixedLineEdit, form.m_startLinkOffsetLineEdit,
                                 form.m_endFixedLineEdit, form.m_endLinkOffsetLineEdit})
            silently(field, [text](QLineEdit *silent) { silent->setText(text); });
        if (argument.typeId() != QMetaType::Bool)
            argument = QString::fromLatin1(text);

        QVERIFY(call(scene.effect, slot, argument));

        QCOMPARE(scene.at(1).text(key), stored);
        QCOMPARE(scene.at(1).getPropertyDouble(key), 0.0);
    }
}

void tst_TimePanel::linkToEndOfTheEndFocusesTheOffsetOfTheStart()
{
    PanelScene scene;
    prepare(scene);

    scene.effect.endLinkStartToggled(true);
    QCOMPARE(scene.form().focusWidget(), scene.form().m_endLinkOffsetLineEdit);
    scene.effect.endLinkEndToggled(true);
    QCOMPARE(scene.form().focusWidget(), scene.form().m_startLinkOffsetLineEdit);
    scene.effect.startLinkStartToggled(true);
    QCOMPARE(scene.form().focusWidget(), scene.form().m_startLinkOffsetLineEdit);
}

// The lists differ only where the two groups were filled from different children.
void tst_TimePanel::endChooserLooksItsIndexUpAmongTheStartCandidates()
{
    PanelScene scene;
    prepare(scene);
    scene.effect.refreshStartTimeEditor(&scene.at(2));
    QCOMPARE(PanelScene::items(scene.form().m_startLinkEffectComboBox),
             QStringList({"Child 1", "Child 3"}));
    QCOMPARE(PanelScene::items(scene.form().m_endLinkEffectComboBox),
             QStringList({"Child 2", "Child 3"}));

    scene.effect.endLinkEffectActivated(0);
    QCOMPARE(scene.at(1).text("endlinkeid"), "1");

    scene.effect.endLinkedToggled(true);
    QCOMPARE(scene.at(1).text("endlinkeid"), "2");
}

// --- Enabling ---

void tst_TimePanel::ruleEnablesAndDisablesJustItsFields_data()
{
    ruleToggleEnablesBeforeItWrites_data();
}

void tst_TimePanel::ruleEnablesAndDisablesJustItsFields()
{
    using Operation = void (MetaEffect::*)();
    static const QMap<QByteArray, Operation> operations = {
        {"refreshStartFixed", &MetaEffect::refreshStartFixed},
        {"refreshStartLinked", &MetaEffect::refreshStartLinked},
        {"refreshEndFixed", &MetaEffect::refreshEndFixed},
        {"refreshEndLinked", &MetaEffect::refreshEndLinked},
        {"refreshEndCycles", &MetaEffect::refreshEndCycles}};
    QFETCH(QStringList, enabled);
    QFETCH(QStringList, disabled);
    const Operation operation = operations.value(QTest::currentDataTag());
    QVERIFY(operation);
    PanelScene scene;
    const MetaWidget &form = scene.form();

    setAllEnabled(form, false);
    (scene.effect.*operation)();
    QCOMPARE(sorted(enabledWidgets(form)), sorted(enabled));

    setAllEnabled(form, true);
    (scene.effect.*operation)();
    QStringList left = startWidgets + endWidgets;
    for (const QString &name : disabled)
        left.removeOne(name);
    QCOMPARE(enabledWidgets(form), left);
    QCOMPARE(scene.take(), QStringList());
}

void tst_TimePanel::enablingWithoutEditorDoesNothing()
{
    MetaStage stage;
    stage.effect.refreshStartFixed();
    stage.effect.refreshStartLinked();
    stage.effect.refreshEndFixed();
    stage.effect.refreshEndLinked();
    stage.effect.refreshEndCycles();
    QVERIFY(!stage.effect.editorWidget());
}

// --- Text to numbers ---

void tst_TimePanel::fixedTimeIsStoredTruncatedAndSaturated_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stored"); // null for text that is no number

    const QString none;
    QTest::newRow("half") << "1.5"
                          << "1500";
    QTest::newRow("truncated") << "1.005"
                               << "1004";
    QTest::newRow("just below a ms") << "0.0009999"
                                     << "0";
    QTest::newRow("negative") << "-2"
                              << "0";
    QTest::newRow("minus zero") << "-0"
                                << "0";
    QTest::newRow("largest") << "4294967.295"
                             << "4294967295";
    QTest::newRow("one less") << "4294967.2945"
                              << "4294967294";
    QTest::newRow("too large") << "4294967.296"
                               << "4294967295";
    QTest::newRow("much too large") << "1e300"
                                    << "4294967295";
    QTest::newRow("inf") << "inf"
                         << "4294967295";
    QTest::newRow("-inf") << "-inf"
                          << "0";
    QTest::newRow("nan") << "nan"
                         << "0";
    QTest::newRow("leading blank") << " 1.5"
                                   << "1500";
    QTest::newRow("trailing blank") << "1.5 "
                                    << "1500";
    QTest::newRow("sign") << "+5"
                          << "5000";
    QTest::newRow("no leading digit") << ".5"
                                      << "500";
    QTest::newRow("no trailing digit") << "5."
                                       << "5000";
    QTest::newRow("exponent") << "1E3"
                              << "1000000";
    QTest::newRow("not finite any more") << "1e400" << none;
    QTest::newRow("comma") << "1,5" << none;
    QTest::newRow("thousands") << "1,000" << none;
    QTest::newRow("hexadecimal") << "0x10" << none;
    QTest::newRow("unit") << "1s" << none;
    QTest::newRow("infinity") << "infinity" << none;
    QTest::newRow("word") << "abc" << none;
    QTest::newRow("minus") << "-" << none;
    QTest::newRow("empty") << "" << none;
}

void tst_TimePanel::fixedTimeIsStoredTruncatedAndSaturated()
{
    QFETCH(QString, text);
    QFETCH(QString, stored);
    const QString changed = stored.isNull() ? "0" : stored;
    PanelScene scene;
    prepare(scene);
    const MetaWidget &form = scene.form();

    scene.effect.startFixedTimeChanged(text);
    QCOMPARE(scene.at(1).text("startfixedtime"), changed);
    scene.effect.endFixedTimeChanged(text);
    QCOMPARE(scene.at(1).text("endfixedtime"), changed);

    prepare(scene);
    silently(form.m_startFixedLineEdit, [&text](QLineEdit *field) { field->setText(text); });
    scene.effect.startFixedToggled(true);
    QCOMPARE(scene.at(1).text("startfixedtime"), stored);
    silently(form.m_endFixedLineEdit, [&text](QLineEdit *field) { field->setText(text); });
    scene.effect.endFixedToggled(true);
    QCOMPARE(scene.at(1).text("endfixedtime"), changed);
}

void tst_TimePanel::offsetIsStoredInSixDigits_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stored"); // null for text that is no number

    const QString none;
    QTest::newRow("half") << "1.5"
                          << "1500";
    QTest::newRow("negative") << "-2"
                              << "-2000";
    QTest::newRow("not truncated") << "1.005"
                                   << "1005";
    QTest::newRow("parts of a ms") << "0.0005"
                                   << "0.5";
    QTest::newRow("six digits") << "123.456"
                                << "123456";
    QTest::newRow("seven digits") << "1234.567"
                                  << "1.23457e+06";
    QTest::newRow("eight digits") << "1234.5678"
                                  << "1.23457e+06";
    QTest::newRow("beyond every time") << "1e300"
                                       << "1e+303";
    QTest::newRow("inf") << "inf"
                         << "inf";
    QTest::newRow("-inf") << "-inf"
                          << "-inf";
    QTest::newRow("nan") << "nan"
                         << "nan";
    QTest::newRow("leading blank") << " 1.5"
                                   << "1500";
    QTest::newRow("trailing blank") << "1.5 "
                                    << "1500";
    QTest::newRow("not finite any more") << "1e400" << none;
    QTest::newRow("comma") << "1,5" << none;
    QTest::newRow("word") << "abc" << none;
    QTest::newRow("minus") << "-" << none;
    QTest::newRow("empty") << "" << none;
}

void tst_TimePanel::offsetIsStoredInSixDigits()
{
    QFETCH(QString, text);
    QFETCH(QString, stored);
    const QString changed = stored.isNull() ? "0" : stored;
    PanelScene scene;
    prepare(scene);
    const MetaWidget &form = scene.form();

    scene.effect.startLinkOffsetChanged(text);
    QCOMPARE(scene.at(1).text("startlinkoffset"), changed);
    scene.effect.endLinkOffsetChanged(text);
    QCOMPARE(scene.at(1).text("endlinkoffset"), changed);

    prepare(scene);
    silently(form.m_startLinkOffsetLineEdit, [&text](QLineEdit *field) { field->setText(text); });
    scene.effect.startLinkedToggled(true);
    QCOMPARE(scene.at(1).text("startlinkoffset"), stored);
    silently(form.m_endLinkOffsetLineEdit, [&text](QLineEdit *field) { field->setText(text); });
    scene.effect.endLinkedToggled(true);
    QCOMPARE(scene.at(1).text("endlinkoffset"), stored);
}

// --- Typing ---

void tst_TimePanel::everyKeyStoresPassesAndShowsInTheTable_data()
{
    QTest::addColumn<QString>("rules");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("stored"); // after each key
    QTest::addColumn<QStringList>("cells");  // "start-end" after each key

    // Child 1 is 2 s long, child 2 ends at 3 s.
    const QString fixed = "startfixedtime=9000 endfixedtime=2000";
    const QString linked = "starttype=1 startlinkeid=2 startlinkoffset=7000 endfixedtime=2000";
    const QString endLinked =
        "startfixedtime=1000 endtype=1 endlinkeid=2 endlinkoffset=7000 endlinkstart=0";
    QTest::newRow("start 1.5") << fixed << "m_startFixedLineEdit"
                               << "startfixedtime"
                               << "1.5" << QStringList({"1000", "1000", "1500"})
                               << QStringList({"1-3", "1-3", "1.5-3.5"});
    QTest::newRow("start 1e3") << fixed << "m_startFixedLineEdit"
                               << "startfixedtime"
                               << "1e3" << QStringList({"1000", "0", "1000000"})
                               << QStringList({"1-3", "0-2", "1000-1002"});
    QTest::newRow("start -2") << fixed << "m_startFixedLineEdit"
                              << "startfixedtime"
                              << "-2" << QStringList({"0", "0"}) << QStringList({"0-2", "0-2"});
    QTest::newRow("start offset -2")
        << linked << "m_startLinkOffsetLineEdit"
        << "startlinkoffset"
        << "-2" << QStringList({"0", "-2000"}) << QStringList({"3-5", "1-3"});
    QTest::newRow("end 0.25") << fixed << "m_endFixedLineEdit"
                              << "endfixedtime"
                              << "0.25" << QStringList({"0", "0", "200", "250"})
                              << QStringList({"9-9", "9-9", "9-9.2", "9-9.25"});
    QTest::newRow("end abc") << fixed << "m_endFixedLineEdit"
                             << "endfixedtime"
                             << "abc" << QStringList({"0", "0", "0"})
                             << QStringList({"9-9", "9-9", "9-9"});
    QTest::newRow("end offset 0.5")
        << endLinked << "m_endLinkOffsetLineEdit"
        << "endlinkoffset"
        << "0.5" << QStringList({"0", "0", "500"}) << QStringList({"1-3", "1-3", "1-3.5"});
}

void tst_TimePanel::everyKeyStoresPassesAndShowsInTheTable()
{
    QFETCH(QString, rules);
    QFETCH(QString, field);
    QFETCH(QString, key);
    QFETCH(QString, typed);
    QFETCH(QStringList, stored);
    QFETCH(QStringList, cells);
    PanelScene scene;
    scene.store(2, "endfixedtime=3000");
    scene.store(1, rules);
    scene.select(1);
    auto *line = child<QLineEdit>(scene.form(), qPrintable(field));
    QTest::mouseClick(line, Qt::LeftButton);
    QVERIFY(line->hasFocus());
    line->selectAll();
    scene.take();

    for (int i = 0; i < typed.size(); ++i) {
        const QString before = scene.at(1).text(qPrintable(key));
        QTest::keyClick(line, typed.at(i).toLatin1());

        QStringList expected{"pass"};
        if (stored.at(i) != before)
            expected.prepend("1 " + key + "=" + stored.at(i));
        QCOMPARE(scene.take(), expected);
        QCOMPARE(scene.at(1).text(qPrintable(key)), stored.at(i));
        QCOMPARE(scene.startCell(1) + "-" + scene.endCell(1), cells.at(i));
    }
    QCOMPARE(line->text(), typed);
    QVERIFY(line->hasFocus());
}

void tst_TimePanel::typing15InTheStartFieldStores1500AndTheStartCellShowsIt()
{
    PanelScene scene;
    scene.select(1);

    EditorStage::typeInto(*scene.form().m_startFixedLineEdit, "1.5");

    QCOMPARE(scene.at(1).text("startfixedtime"), "1500");
    QCOMPARE(scene.startCell(1), "1.5");
    CHECK_SANITY(scene);
}

void tst_TimePanel::typing1005InTheStartFieldStores1004()
{
    PanelScene scene;
    scene.select(1);

    EditorStage::typeInto(*scene.form().m_startFixedLineEdit, "1.005");

    QCOMPARE(scene.at(1).text("startfixedtime"), "1004");
    QCOMPARE(scene.startCell(1), "1.004");
}

void tst_TimePanel::typingMinus2StoresZeroAsStartAndMinus2000AsOffset()
{
    PanelScene scene;
    scene.store(1, "startfixedtime=5000");
    scene.select(1);

    EditorStage::typeInto(*scene.form().m_startFixedLineEdit, "-2");
    QCOMPARE(scene.at(1).text("startfixedtime"), "0");

    PanelScene::clickButton(scene.form().m_startLinkedRadioButton);
    EditorStage::typeInto(*scene.form().m_startLinkOffsetLineEdit, "-2");
    QCOMPARE(scene.at(1).text("startlinkoffset"), "-2000");
    CHECK_SANITY(scene);
}

void tst_TimePanel::abcIsStoredAsZeroInTheEndAndAsEmptyTextByTheFixedStartRule()
{
    PanelScene scene;
    scene.store(1, "startfixedtime=5000 endfixedtime=5000");
    scene.select(1);
    const MetaWidget &form = scene.form();

    EditorStage::typeInto(*form.m_endFixedLineEdit, "abc");
    QCOMPARE(scene.at(1).text("endfixedtime"), "0");
    PanelScene::clickButton(form.m_endCyclesRadioButton);
    PanelScene::clickButton(form.m_endFixedRadioButton);
    QCOMPARE(form.m_endFixedLineEdit->text(), "abc");
    QCOMPARE(scene.at(1).text("endfixedtime"), "0");

    EditorStage::typeInto(*form.m_startFixedLineEdit, "abc");
    QCOMPARE(scene.at(1).text("startfixedtime"), "0");
    PanelScene::clickButton(form.m_startLinkedRadioButton);
    PanelScene::clickButton(form.m_startFixedRadioButton);
    QCOMPARE(form.m_startFixedLineEdit->text(), "abc");
    QCOMPARE(scene.at(1).text("startfixedtime"), "");
    QCOMPARE(scene.startCell(1), "0");
}

void tst_TimePanel::emptiedFieldStoresZero()
{
    PanelScene scene;
    scene.store(1, "startfixedtime=5000");
    scene.select(1);

    EditorStage::typeInto(*scene.form().m_startFixedLineEdit, "");

    QCOMPARE(scene.form().m_startFixedLineEdit->text(), "");
    QCOMPARE(scene.at(1).text("startfixedtime"), "0");
}

void tst_TimePanel::tabThroughThePanelWritesNothing_data()
{
    QTest::addColumn<QString>("rules");
    QTest::addColumn<QStringList>("stops");

    QTest::newRow("fixed") << "startfixedtime=1500 endfixedtime=2000"
                           << QStringList({"m_startFixedRadioButton", "m_startFixedLineEdit",
                                           "m_endFixedRadioButton", "m_endFixedLineEdit"});
    QTest::newRow("linked") << "starttype=1 startlinkeid=3 startlinkstart=1 endtype=1 endlinkeid=2 "
                               "endlinkstart=1"
                            << QStringList(
                                   {"m_startLinkedRadioButton", "m_startLinkStartRadioButton",
                                    "m_startLinkEffectComboBox", "m_startLinkOffsetLineEdit"});
    QTest::newRow("cycles") << "endtype=2 endcyclecount=5"
                            << QStringList({"m_endCyclesRadioButton", "m_endCyclesSpinBox"});
}

void tst_TimePanel::tabThroughThePanelWritesNothing()
{
    QFETCH(QString, rules);
    QFETCH(QStringList, stops);
    PanelScene scene;
    scene.store(1, rules);
    scene.select(1);
    widget(scene.form(), stops.first())->setFocus();

    for (qsizetype i = 1; i < stops.size(); ++i)
        QTest::keyClick(scene.form().focusWidget(), Qt::Key_Tab);
    QTest::keyClick(scene.form().focusWidget(), Qt::Key_Tab);

    const QStringList journal = scene.take();
    QCOMPARE(withoutFocus(journal), QStringList());
    QStringList expected;
    for (const QString &stop : stops)
        expected.append("focus " + stop);
    QCOMPARE(journal.first(stops.size()), expected);
    CHECK_SANITY(scene);
}

// --- Buttons ---

void tst_TimePanel::clickOnARuleStoresIt_data()
{
    QTest::addColumn<QString>("rules");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("journal");
    QTest::addColumn<QString>("cells");

    // Child 1 starts at 1 s or 0.5 s behind the end of child 2, which is at 3 s, and lasts 2 s, or
    // 1.5 s, or until 4 s.
    const QStringList startLinked = {"focus m_startLinkedRadioButton", "1 starttype=1",
                                     "focus m_startLinkOffsetLineEdit", "pass"};
    const QStringList startFixed = {"focus m_startFixedRadioButton", "1 starttype=0", "pass",
                                    "focus m_startFixedLineEdit"};
    const QStringList endFixed = {"focus m_endFixedRadioButton", "1 endtype=0",
                                  "focus m_endFixedLineEdit", "pass"};
    const QStringList endLinked = {"focus m_endLinkedRadioButton", "1 endtype=1",
                                   "focus m_endLinkOffsetLineEdit", "pass"};
    const QStringList endCycles = {"focus m_endCyclesRadioButton", "1 endtype=2",
                                   "focus m_endCyclesSpinBox", "pass"};
    QTest::newRow("start fixed to linked")
        << "starttype=0 endtype=0"
        << "m_startLinkedRadioButton" << startLinked << "3.5-5.5";
    QTest::newRow("start linked to fixed") << "starttype=1 endtype=0"
                                           << "m_startFixedRadioButton" << startFixed << "1-3";
    QTest::newRow("end fixed to linked") << "starttype=0 endtype=0"
                                         << "m_endLinkedRadioButton" << endLinked << "1-4";
    QTest::newRow("end fixed to cycles") << "starttype=0 endtype=0"
                                         << "m_endCyclesRadioButton" << endCycles << "1-2.5";
    QTest::newRow("end linked to fixed") << "starttype=0 endtype=1"
                                         << "m_endFixedRadioButton" << endFixed << "1-3";
    QTest::newRow("end linked to cycles") << "starttype=0 endtype=1"
                                          << "m_endCyclesRadioButton" << endCycles << "1-2.5";
    QTest::newRow("end cycles to fixed") << "starttype=0 endtype=2"
                                         << "m_endFixedRadioButton" << endFixed << "1-3";
    QTest::newRow("end cycles to linked") << "starttype=0 endtype=2"
                                          << "m_endLinkedRadioButton" << endLinked << "1-4";
}

void tst_TimePanel::clickOnARuleStoresIt()
{
    QFETCH(QString, rules);
    QFETCH(QString, button);
    QFETCH(QStringList, journal);
    QFETCH(QString, cells);
    PanelScene scene;
    scene.store(2, "endfixedtime=3000");
    scene.store(1, rules
                       + " startfixedtime=1000 startlinkeid=2 startlinkstart=0 "
                         "startlinkoffset=500 endfixedtime=2000 endlinkeid=2 endlinkstart=0 "
                         "endlinkoffset=1000 endcyclecount=3");
    scene.at(1).cycleTime = 500;
    scene.select(1);

    PanelScene::clickButton(child<QRadioButton>(scene.form(), qPrintable(button)));

    QCOMPARE(scene.take(), journal);
    QCOMPARE(scene.startCell(1) + "-" + scene.endCell(1), cells);
    CHECK_SANITY(scene);
}

void tst_TimePanel::clickOnTheRuleThatIsOnDoesNothing()
{
    PanelScene scene;
    scene.store(1, "endtype=2 endcyclecount=5");
    scene.select(1);

    PanelScene::clickButton(scene.form().m_startFixedRadioButton);
    PanelScene::clickButton(scene.form().m_endCyclesRadioButton);

    QCOMPARE(withoutFocus(scene.take()), QStringList());
}

void tst_TimePanel::arrowKeyOnARuleStoresTheNextOne()
{
    PanelScene scene;
    scene.store(1, "startlinkeid=3");
    scene.select(1);
    scene.form().m_startFixedRadioButton->setFocus();
    scene.take();

    QTest::keyClick(scene.form().m_startFixedRadioButton, Qt::Key_Down);

    QCOMPARE(withoutFocus(scene.take()), QStringList({"1 starttype=1", "pass"}));
    QVERIFY(scene.form().m_startLinkedRadioButton->isChecked());
    CHECK_SANITY(scene);
}

void tst_TimePanel::clickOnALinkSideStoresItAndKeepsTheRule_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("write");
    QTest::addColumn<QString>("focus");

    QTest::newRow("start to start") << "m_startLinkStartRadioButton"
                                    << "1 startlinkstart=1"
                                    << "m_startLinkOffsetLineEdit";
    QTest::newRow("start to end") << "m_startLinkEndRadioButton"
                                  << "1 startlinkstart=0"
                                  << "m_startLinkOffsetLineEdit";
    QTest::newRow("end to start") << "m_endLinkStartRadioButton"
                                  << "1 endlinkstart=1"
                                  << "m_endLinkOffsetLineEdit";
    QTest::newRow("end to end") << "m_endLinkEndRadioButton"
                                << "1 endlinkstart=0"
                                << "m_startLinkOffsetLineEdit";
}

void tst_TimePanel::clickOnALinkSideStoresItAndKeepsTheRule()
{
    QFETCH(QString, button);
    QFETCH(QString, write);
    QFETCH(QString, focus);
    PanelScene scene;
    const QString otherSide = write.endsWith(u'1') ? "0" : "1";
    scene.store(1, "starttype=1 startlinkeid=2 endtype=1 endlinkeid=3 startlinkstart=" + otherSide
                       + " endlinkstart=" + otherSide);
    scene.select(1);

    PanelScene::clickButton(child<QRadioButton>(scene.form(), qPrintable(button)));

    QCOMPARE(scene.take(), QStringList({"focus " + button, write, "focus " + focus, "pass"}));
    CHECK_SANITY(scene);
}

void tst_TimePanel::clickOnTheEndLinksEndButtonMovesTheFocusToTheStartOffset()
{
    PanelScene scene;
    scene.store(1, "starttype=1 startlinkeid=2 endtype=1 endlinkeid=3 endlinkstart=1");
    scene.select(1);

    PanelScene::clickButton(scene.form().m_endLinkEndRadioButton);

    QCOMPARE(scene.form().focusWidget(), scene.form().m_startLinkOffsetLineEdit);
}

void tst_TimePanel::clickOnTheEndLinksEndButtonKeepsTheFocusWhileTheStartIsFixed()
{
    PanelScene scene;
    scene.store(1, "starttype=0 endtype=1 endlinkeid=3 endlinkstart=1");
    scene.select(1);

    PanelScene::clickButton(scene.form().m_endLinkEndRadioButton);

    QCOMPARE(scene.form().focusWidget(), scene.form().m_endLinkEndRadioButton);
}

// --- Choosers ---

namespace {

void addChooserRows()
{
    QTest::addColumn<QString>("chooser");
    QTest::addColumn<QStringList>("journal");

    QTest::newRow("start") << "m_startLinkEffectComboBox"
                           << QStringList(
                                  {"1 startlinkeid=4", "focus m_startLinkOffsetLineEdit", "pass"});
    QTest::newRow("end") << "m_endLinkEffectComboBox"
                         << QStringList(
                                {"1 endlinkeid=4", "focus m_endLinkOffsetLineEdit", "pass"});
}

// Child 1 is linked to child 3 at both ends, the second of the three that are offered.
void prepareChoosers(PanelScene &scene)
{
    scene.store(1, "starttype=1 startlinkeid=3 endtype=1 endlinkeid=3");
    scene.store(4, "startfixedtime=7000 endfixedtime=1000");
    scene.select(1);
}

// Notes of what happened since the popup closed, as far as the panel is concerned.
QStringList withoutPopup(const QStringList &journal)
{
    const qsizetype write = journal.indexOf(QRegularExpression(".*=.*"));
    return write < 0 ? journal : journal.sliced(write);
}

} // namespace

void tst_TimePanel::choosingByArrowKeyStoresTheTarget_data()
{
    addChooserRows();
}

void tst_TimePanel::choosingByArrowKeyStoresTheTarget()
{
    QFETCH(QString, chooser);
    QFETCH(QStringList, journal);
    PanelScene scene(4);
    prepareChoosers(scene);
    auto *box = child<QComboBox>(scene.form(), qPrintable(chooser));
    box->setFocus();
    scene.take();

    QTest::keyClick(box, Qt::Key_Down);

    QCOMPARE(scene.take(), journal);
    QCOMPARE(box->currentText(), "Child 4");
    CHECK_SANITY(scene);
}

void tst_TimePanel::choosingInThePopupByKeysStoresTheTarget_data()
{
    addChooserRows();
}

void tst_TimePanel::choosingInThePopupByKeysStoresTheTarget()
{
    QFETCH(QString, chooser);
    QFETCH(QStringList, journal);
    PanelScene scene(4);
    prepareChoosers(scene);
    auto *box = child<QComboBox>(scene.form(), qPrintable(chooser));
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Space);
    QTRY_VERIFY(box->view()->isVisible());
    scene.take();

    QTest::keyClick(box->view(), Qt::Key_Down);
    QCOMPARE(withoutFocus(scene.take()), QStringList());
    QTest::keyClick(box->view(), Qt::Key_Return);

    QCOMPARE(withoutPopup(scene.take()), journal);
    QCOMPARE(scene.startCell(1), chooser == "m_startLinkEffectComboBox" ? "8" : "0");
    CHECK_SANITY(scene);
}

void tst_TimePanel::choosingInThePopupByMouseStoresTheTarget_data()
{
    addChooserRows();
}

void tst_TimePanel::choosingInThePopupByMouseStoresTheTarget()
{
    QFETCH(QString, chooser);
    QFETCH(QStringList, journal);
    PanelScene scene(4);
    prepareChoosers(scene);
    auto *box = child<QComboBox>(scene.form(), qPrintable(chooser));
    QTest::mouseClick(box, Qt::LeftButton);
    QTRY_VERIFY(box->view()->isVisible());
    QTest::qWait(QApplication::doubleClickInterval() + 50); // or it were a double click
    scene.take();

    const QPoint item = box->view()->visualRect(box->model()->index(2, 0)).center();
    QTest::mouseMove(box->view()->viewport(), item);
    QTest::mouseClick(box->view()->viewport(), Qt::LeftButton, {}, item);

    QCOMPARE(withoutPopup(scene.take()), journal);
    QCOMPARE(box->currentText(), "Child 4");
    CHECK_SANITY(scene);
}

void tst_TimePanel::choosingTheSameItemAgainStoresAndPasses()
{
    PanelScene scene(4);
    prepareChoosers(scene);
    QComboBox *box = scene.form().m_startLinkEffectComboBox;
    box->setFocus();
    scene.store(1, "startlinkeid=4"); // other than the item shown
    QTest::keyClick(box, Qt::Key_Space);
    QTRY_VERIFY(box->view()->isVisible());
    QTest::keyClick(box->view(), Qt::Key_Return);

    QCOMPARE(withoutPopup(scene.take()),
             QStringList({"1 startlinkeid=3", "focus m_startLinkOffsetLineEdit", "pass"}));
}

void tst_TimePanel::choosingItem2OfTheEndChooserStoresTheEidOfEntry2()
{
    PanelScene scene(4);
    scene.store(1, "endtype=1 endlinkeid=2");
    scene.select(1);
    QComboBox *box = scene.form().m_endLinkEffectComboBox;
    box->setFocus();

    QTest::keyClick(box, Qt::Key_End);

    QCOMPARE(box->currentIndex(), 2);
    QCOMPARE(scene.form().m_startLinkEffectComboBox->itemText(2), "Child 4");
    QCOMPARE(scene.at(1).text("endlinkeid"), "4");
}

void tst_TimePanel::targetWaitsUntilTheLinkedRuleIsChosen()
{
    PanelScene scene;
    scene.store(1, "starttype=0 startfixedtime=5000 startlinkeid=2 startlinkstart=1");
    scene.store(3, "startfixedtime=7000");
    scene.select(1);

    scene.effect.startLinkEffectActivated(1);
    scene.effect.startLinkEndToggled(true);

    QCOMPARE(writes(scene.take()), QStringList({"1 startlinkeid=3", "1 startlinkstart=0"}));
    QCOMPARE(scene.at(1).text("starttype"), "0");
    QCOMPARE(scene.startCell(1), "5");
}

void tst_TimePanel::linkedRuleTakesTheTargetShown()
{
    PanelScene scene;
    scene.store(1, "startlinkeid=3");
    scene.select(1);
    QCOMPARE(scene.form().m_startLinkEffectComboBox->currentText(), "Child 3");
    scene.store(1, "startlinkeid=2");

    PanelScene::clickButton(scene.form().m_startLinkedRadioButton);

    QCOMPARE(scene.at(1).text("startlinkeid"), "3");
    CHECK_SANITY(scene);
}

// --- Number of cycles ---

namespace {

// Child 1 lasts five of its cycles of 0.5 s; its number field has the focus.
QSpinBox *prepareCycles(PanelScene &scene)
{
    scene.at(1).cycleTime = 500;
    scene.store(1, "endtype=2 endcyclecount=5");
    scene.select(1);
    QSpinBox *box = scene.form().m_endCyclesSpinBox;
    box->setFocus();
    box->selectAll();
    scene.take();
    return box;
}

} // namespace

void tst_TimePanel::typedCyclesCountOnlyOnceEntered_data()
{
    QTest::addColumn<int>("key");

    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Tab") << int(Qt::Key_Tab);
    QTest::newRow("another field") << 0;
}

void tst_TimePanel::typedCyclesCountOnlyOnceEntered()
{
    QFETCH(int, key);
    PanelScene scene;
    QSpinBox *box = prepareCycles(scene);

    QTest::keyClicks(box, "12");
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(scene.at(1).text("endcyclecount"), "5");

    if (key)
        QTest::keyClick(box, Qt::Key(key));
    else
        QTest::mouseClick(scene.form().m_startFixedLineEdit, Qt::LeftButton);
    QCOMPARE(withoutFocus(scene.take()), QStringList({"1 endcyclecount=12", "pass"}));
    QCOMPARE(scene.endCell(1), "6");
    CHECK_SANITY(scene);
}

void tst_TimePanel::typedZeroCyclesBecomeOne()
{
    PanelScene scene;
    QSpinBox *box = prepareCycles(scene);

    QTest::keyClicks(box, "0");
    QTest::keyClick(box, Qt::Key_Return);

    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=1", "pass"}));
    QCOMPARE(box->text(), "1");
}

void tst_TimePanel::keysBeyondTheMostCyclesAreRefused()
{
    PanelScene scene;
    QSpinBox *box = prepareCycles(scene);

    QTest::keyClicks(box, "2000");
    QCOMPARE(box->text(), "200");
    QTest::keyClick(box, Qt::Key_Return);

    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=200", "pass"}));
}

void tst_TimePanel::pastedTextBeyondTheMostCyclesIsRefused()
{
    PanelScene scene;
    QSpinBox *box = prepareCycles(scene);

    QApplication::clipboard()->setText("2000");
    QTest::keySequence(box, QKeySequence::Paste);
    QTest::keyClick(box, Qt::Key_Return);
    QCOMPARE(scene.take(), QStringList());
    QCOMPARE(box->text(), "5");

    QApplication::clipboard()->setText("1000");
    box->selectAll();
    QTest::keySequence(box, QKeySequence::Paste);
    QTest::keyClick(box, Qt::Key_Return);
    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=1000", "pass"}));
}

void tst_TimePanel::stepsOfTheCyclesCountAtOnceAndStopAtTheEnds()
{
    PanelScene scene;
    QSpinBox *box = prepareCycles(scene);

    QTest::keyClick(box, Qt::Key_Up);
    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=6", "pass"}));
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=5", "pass"}));
    box->setValue(1);
    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=1", "pass"}));
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(scene.take(), QStringList());
    box->setValue(1000);
    QCOMPARE(scene.take(), QStringList({"1 endcyclecount=1000", "pass"}));
    QTest::keyClick(box, Qt::Key_Up);
    QCOMPARE(scene.take(), QStringList());
}

void tst_TimePanel::typedCyclesGoToTheChildThatWasSelected_data()
{
    QTest::addColumn<QString>("selected"); // eids, afterwards

    QTest::newRow("click on another row") << "2";
    QTest::newRow("a new child, which is selected at once") << "4";
    QTest::newRow("no row any more, while the focus stays") << "";
}

void tst_TimePanel::typedCyclesGoToTheChildThatWasSelected()
{
    QFETCH(QString, selected);
    PanelScene scene;
    QSpinBox *box = prepareCycles(scene);
    scene.store(2, "endtype=2 endcyclecount=7");

    QTest::keyClicks(box, "12");
    if (selected == u"2")
        scene.selectEid(2);
    else if (selected == u"4")
        scene.addWatched(4);
    else
        scene.table().clearSelection();

    QCOMPARE(scene.at(1).text("endcyclecount"), "12");
    QCOMPARE(scene.at(2).text("endcyclecount"), "7");
    QCOMPARE(scene.selectedEids().join(u' '), selected);
    CHECK_SANITY(scene);
}

QTEST_MAIN(tst_TimePanel)
#include "tst_TimePanel.moc"
