#pragma once

#include "MetaWidget.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QTest>

/// The widgets of one group by what they are for.
struct RuleGroup
{
    QGroupBox *box;
    QRadioButton *fixedButton;
    QLineEdit *fixedTime;
    QRadioButton *linkedButton;
    QRadioButton *linkStart;
    QRadioButton *linkEnd;
    QComboBox *chooser;
    QLineEdit *offset;
};

/// @param side "start" or "end"
inline RuleGroup group(const MetaWidget &form, const QString &side)
{
    if (side == u"start")
        return {form.m_startButtonGroup,          form.m_startFixedRadioButton,
                form.m_startFixedLineEdit,        form.m_startLinkedRadioButton,
                form.m_startLinkStartRadioButton, form.m_startLinkEndRadioButton,
                form.m_startLinkEffectComboBox,   form.m_startLinkOffsetLineEdit};
    return {form.m_endButtonGroup,          form.m_endFixedRadioButton,
            form.m_endFixedLineEdit,        form.m_endLinkedRadioButton,
            form.m_endLinkStartRadioButton, form.m_endLinkEndRadioButton,
            form.m_endLinkEffectComboBox,   form.m_endLinkOffsetLineEdit};
}

inline void addSides()
{
    QTest::addColumn<QString>("side");
    QTest::newRow("start") << "start";
    QTest::newRow("end") << "end";
}

/// The names of the fields that are enabled within their groups: "time", "link" for the four of the
/// link, "cycles".
inline QString enabledFields(const MetaWidget &form, const QString &side)
{
    const RuleGroup widgets = group(form, side);
    QStringList enabled;
    if (widgets.fixedTime->isEnabledTo(widgets.box))
        enabled.append("time");
    int links = 0;
    for (const QWidget *field : std::initializer_list<QWidget *>{widgets.linkStart, widgets.linkEnd,
                                                                 widgets.chooser, widgets.offset})
        links += field->isEnabledTo(widgets.box);
    if (links == 4)
        enabled.append("link");
    else if (links > 0)
        enabled.append("part of the link");
    if (side == u"end" && form.m_endCyclesSpinBox->isEnabledTo(widgets.box))
        enabled.append("cycles");
    return enabled.join(u' ');
}

inline QString ruleOn(const MetaWidget &form, const QString &side)
{
    const RuleGroup widgets = group(form, side);
    QStringList on;
    if (widgets.fixedButton->isChecked())
        on.append("fixed");
    if (widgets.linkedButton->isChecked())
        on.append("linked");
    if (side == u"end" && form.m_endCyclesRadioButton->isChecked())
        on.append("cycles");
    return on.join(u' ');
}
