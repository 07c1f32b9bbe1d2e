#include "EditsAlone.h"
#include "PreparedPanel.h"
#include "TimePanel.h"

#include <QRegularExpression>

namespace {

/// The time panel without a meta effect around it, and what it notes in the journal of EditsAlone;
/// "focus m_x" besides, for a widget that gets the focus. Children 1 to 4 are there, of which 3 and
/// 1 are selected, in this order. Both choosers offer child 2 and child 4.
class PanelAlone
{
public:
    PanelAlone()
    {
        for (const quint32 eid : {1u, 2u, 3u, 4u}) {
            StubEffect &child = edits.add(eid);
            for (const char *key : ruleKeys)
                child.with(key, QStringLiteral("x"));
        }
        for (const quint32 eid : {3u, 1u})
            edits.roster.selection().append(edits.roster.find(eid));
        MetaWidget &form = edits.form;
        for (const quint32 eid : {2u, 4u}) {
            edits.roster.startLinkCandidates().append(edits.roster.find(eid));
            edits.roster.endLinkCandidates().append(edits.roster.find(eid));
            form.m_startLinkEffectComboBox->addItem(QString::number(eid));
            form.m_endLinkEffectComboBox->addItem(QString::number(eid));
        }
        form.m_startFixedLineEdit->setText(QStringLiteral("1.5"));
        form.m_startLinkEndRadioButton->setChecked(true);
        form.m_startLinkEffectComboBox->setCurrentIndex(1);
        form.m_startLinkOffsetLineEdit->setText(QStringLiteral("-2.5"));
        form.m_endFixedLineEdit->setText(QStringLiteral("0.25"));
        form.m_endLinkStartRadioButton->setChecked(true);
        form.m_endLinkEffectComboBox->setCurrentIndex(0);
        form.m_endLinkOffsetLineEdit->setText(QStringLiteral("12"));
        form.m_endCyclesSpinBox->setValue(4);
        form.m_startButtonGroup->setEnabled(true);
        form.m_endButtonGroup->setEnabled(true);
        setAllEnabled(form, true);
        form.show();
        if (!QTest::qWaitForWindowActive(&form))
            qFatal("the form's window did not become active");
        form.m_effectTable->setFocus();
        edits.journal.clear();
        QObject::connect(qApp, &QApplication::focusChanged, &m_context,
                         [this](const QWidget *, const QWidget *now) {
                             if (now)
                                 edits.journal.append(QStringLiteral("focus ") + now->objectName());
                         });
    }

    EditsAlone edits;
    meta::TimePanel panel{edits.form, edits.context};

private:
    QObject m_context;
};

using Handler = std::function<void(meta::TimePanel &)>;

} // namespace

Q_DECLARE_METATYPE(Handler)

class tst_TimePanelSelection : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }

    void everySelectedChildIsChangedInOrderBeforeTheOnePass_data();
    void everySelectedChildIsChangedInOrderBeforeTheOnePass();
};

void tst_TimePanelSelection::everySelectedChildIsChangedInOrderBeforeTheOnePass_data()
{
    QTest::addColumn<Handler>("handler");
    QTest::addColumn<QStringList>("written"); // to each selected child
    QTest::addColumn<QStringList>("behind");
    const auto add = [](const char *name, const Handler &handler, const QStringList &written,
                        const QStringList &behind) {
        QTest::newRow(name) << handler << written << behind;
    };
    using meta::TimePanel;
    const QString pass = QStringLiteral("updateEffectTimes");
    const QString startOffset = QStringLiteral("focus m_startLinkOffsetLineEdit");
    const QString endOffset = QStringLiteral("focus m_endLinkOffsetLineEdit");

    add("start fixed", [](TimePanel &panel) { panel.startFixedToggled(true); },
        {"starttype=0", "startfixedtime=1500"}, {pass, "focus m_startFixedLineEdit"});
    add("start linked", [](TimePanel &panel) { panel.startLinkedToggled(true); },
        {"starttype=1", "startlinkstart=0", "startlinkeid=4", "startlinkoffset=-2500"},
        {startOffset, pass});
    add("start time", [](TimePanel &panel) { panel.startFixedTimeChanged("2.25"); },
        {"startfixedtime=2250"}, {pass});
    add("start link to start", [](TimePanel &panel) { panel.startLinkStartToggled(true); },
        {"startlinkstart=1"}, {startOffset, pass});
    add("start link to end", [](TimePanel &panel) { panel.startLinkEndToggled(true); },
        {"startlinkstart=0"}, {startOffset, pass});
    add("start target", [](TimePanel &panel) { panel.startLinkEffectActivated(0); },
        {"startlinkeid=2"}, {startOffset, pass});
    add("start offset", [](TimePanel &panel) { panel.startLinkOffsetChanged("-0.5"); },
        {"startlinkoffset=-500"}, {pass});
    add("end fixed", [](TimePanel &panel) { panel.endFixedToggled(true); },
        {"endtype=0", "endfixedtime=250"}, {"focus m_endFixedLineEdit", pass});
    add("end linked", [](TimePanel &panel) { panel.endLinkedToggled(true); },
        {"endtype=1", "endlinkstart=1", "endlinkeid=2", "endlinkoffset=12000"}, {endOffset, pass});
    add("end cycles", [](TimePanel &panel) { panel.endCyclesToggled(true); },
        {"endtype=2", "endcyclecount=4"}, {"focus m_endCyclesSpinBox", pass});
    add("end time", [](TimePanel &panel) { panel.endFixedTimeChanged("3"); }, {"endfixedtime=3000"},
        {pass});
    add("end link to start", [](TimePanel &panel) { panel.endLinkStartToggled(true); },
        {"endlinkstart=1"}, {endOffset, pass});
    add("end link to end", [](TimePanel &panel) { panel.endLinkEndToggled(true); },
        {"endlinkstart=0"}, {startOffset, pass});
    add("end target", [](TimePanel &panel) { panel.endLinkEffectActivated(1); }, {"endlinkeid=4"},
        {endOffset, pass});
    add("end offset", [](TimePanel &panel) { panel.endLinkOffsetChanged("0.125"); },
        {"endlinkoffset=125"}, {pass});
    add("end cycle count", [](TimePanel &panel) { panel.endCyclesChanged(7); }, {"endcyclecount=7"},
        {pass});
}

void tst_TimePanelSelection::everySelectedChildIsChangedInOrderBeforeTheOnePass()
{
    QFETCH(Handler, handler);
    QFETCH(QStringList, written);
    QFETCH(QStringList, behind);
    PanelAlone alone;

    handler(alone.panel);

    QStringList expected;
    for (const char *eid : {"3 ", "1 "}) {
        for (const QString &property : written)
            expected.append(QLatin1String(eid) + property);
    }
    QCOMPARE(alone.edits.journal, expected + behind);
}

QTEST_MAIN(tst_TimePanelSelection)
#include "tst_TimePanelSelection.moc"
