#include "PreparedPanel.h"

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

class tst_TimePanelHandlers : public QObject
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
};

// --- The handlers ---

void tst_TimePanelHandlers::handlerWritesThenFocusesThenPasses()
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

void tst_TimePanelHandlers::handlerWithoutSelectionOnlyPasses()
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

void tst_TimePanelHandlers::handlerWithTwoRowsSelectedWritesNothing()
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

void tst_TimePanelHandlers::handlerWithoutEditorDoesNothing()
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

void tst_TimePanelHandlers::handlerAfterTheFormIsDeletedDoesNothing()
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

void tst_TimePanelHandlers::handlerLeavesTheFocusWhereTheFieldIsDisabled()
{
    PanelScene scene;
    prepare(scene);
    scene.form().m_startLinkOffsetLineEdit->setEnabled(false);

    scene.effect.startLinkStartToggled(true);

    QCOMPARE(scene.take(), QStringList({"1 startlinkstart=1", "pass"}));
    QVERIFY(scene.table().hasFocus());
}

void tst_TimePanelHandlers::linkedToggleWithoutCurrentTargetSkipsTargetAndOffset_data()
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

void tst_TimePanelHandlers::linkedToggleWithoutCurrentTargetSkipsTargetAndOffset()
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

void tst_TimePanelHandlers::ruleToggleEnablesBeforeItWrites_data()
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

void tst_TimePanelHandlers::ruleToggleEnablesBeforeItWrites()
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

void tst_TimePanelHandlers::cyclesToggleTakesTheNumberStillBeingTyped()
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

void tst_TimePanelHandlers::textThatIsNoNumberIsStoredEmptyByThreeTogglesAndAsZeroByTheRest_data()
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

void tst_TimePanelHandlers::textThatIsNoNumberIsStoredEmptyByThreeTogglesAndAsZeroByTheRest()
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

void tst_TimePanelHandlers::linkToEndOfTheEndFocusesTheOffsetOfTheStart()
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
void tst_TimePanelHandlers::endChooserLooksItsIndexUpAmongTheStartCandidates()
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

void tst_TimePanelHandlers::ruleEnablesAndDisablesJustItsFields_data()
{
    ruleToggleEnablesBeforeItWrites_data();
}

void tst_TimePanelHandlers::ruleEnablesAndDisablesJustItsFields()
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

void tst_TimePanelHandlers::enablingWithoutEditorDoesNothing()
{
    MetaStage stage;
    stage.effect.refreshStartFixed();
    stage.effect.refreshStartLinked();
    stage.effect.refreshEndFixed();
    stage.effect.refreshEndLinked();
    stage.effect.refreshEndCycles();
    QVERIFY(!stage.effect.editorWidget());
}

QTEST_MAIN(tst_TimePanelHandlers)
#include "tst_TimePanelHandlers.moc"
