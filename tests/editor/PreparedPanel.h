#pragma once

#include "PanelScene.h"

inline const char *const ruleKeys[] = {"starttype",      "startfixedtime",  "startlinkeid",
                                       "startlinkstart", "startlinkoffset", "endtype",
                                       "endfixedtime",   "endlinkeid",      "endlinkstart",
                                       "endlinkoffset",  "endcyclecount"};

/// All widgets of a group that a rule or a handler may touch.
inline const QStringList startWidgets = {"m_startFixedRadioButton",   "m_startFixedLineEdit",
                                         "m_startLinkedRadioButton",  "m_startLinkStartRadioButton",
                                         "m_startLinkEndRadioButton", "m_startLinkEffectComboBox",
                                         "m_startLinkOffsetLineEdit"};
inline const QStringList endWidgets = {
    "m_endFixedRadioButton",     "m_endFixedLineEdit",      "m_endLinkedRadioButton",
    "m_endLinkStartRadioButton", "m_endLinkEndRadioButton", "m_endLinkEffectComboBox",
    "m_endLinkOffsetLineEdit",   "m_endCyclesRadioButton",  "m_endCyclesSpinBox"};

inline QWidget *widget(const MetaWidget &form, const QString &name)
{
    return child<QWidget>(form, qPrintable(name));
}

inline void setAllEnabled(const MetaWidget &form, bool enabled)
{
    for (const QString &name : startWidgets + endWidgets)
        widget(form, name)->setEnabled(enabled);
}

template<typename Widget, typename Action>
void silently(Widget *widget, Action action)
{
    const QSignalBlocker blocker(widget);
    action(widget);
}

/// Child 1 is selected and the fields hold a state of their own, told to nobody; the stored texts
/// are all "x", so that each one that is written is seen. Both choosers offer child 2 and child 3.
inline void prepare(PanelScene &scene)
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
