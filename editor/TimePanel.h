#pragma once

#include "EditorContext.h"

class EffectList;
class MetaWidget;
class QComboBox;
class QGroupBox;
class QLineEdit;
class QRadioButton;
class QSpinBox;
class QString;
class QWidget;

namespace meta {

struct RuleKeys;

/// The two groups of widgets that edit the start and the end rule of the selected child.
///
/// Every handler writes into each selected child and runs a pass. Filling is not silent: it goes
/// through the widgets' ordinary setters, so the handlers run inside the fill and write back what
/// is shown. The order of the steps matters, and no step may rely on what a widget held before
/// another.
class TimePanel
{
public:
    /// @param form lent; outlives this object
    TimePanel(MetaWidget &form, const EditorContext &context);
    Q_DISABLE_COPY_MOVE(TimePanel)

    /// Fills one group from the child. Null is ignored.
    void refreshStartTimeEditor(Effect *child);
    void refreshEndTimeEditor(Effect *child);
    /// Fills and enables both groups.
    void show(Effect &child);
    /// Disables and blanks both groups. The selection must be empty already, or the blanks would be
    /// written into it.
    void clear();
    /// Shows the rules that the child has by now, where they were changed elsewhere than in this
    /// panel. This is silent: nothing is written back, which would cut times to the digits shown.
    void follow(const Effect &child);
    /// Takes a number that is still being typed as entered.
    void finishTyping();

    /// Enables the widgets that belong to one rule, and disables those of the others.
    void refreshStartFixed();
    void refreshStartLinked();
    void refreshEndFixed();
    void refreshEndLinked();
    void refreshEndCycles();

    // Switching a button off does nothing.
    void startFixedToggled(bool on);
    void startLinkedToggled(bool on);
    void startFixedTimeChanged(const QString &text);
    void startLinkStartToggled(bool on);
    void startLinkEndToggled(bool on);
    void startLinkEffectActivated(int index);
    void startLinkOffsetChanged(const QString &text);
    void endFixedToggled(bool on);
    void endLinkedToggled(bool on);
    void endCyclesToggled(bool on);
    void endFixedTimeChanged(const QString &text);
    void endLinkStartToggled(bool on);
    void endLinkEndToggled(bool on);
    void endLinkEffectActivated(int index);
    void endLinkOffsetChanged(const QString &text);
    void endCyclesChanged(int value);

private:
    // One of the two rules and the widgets that edit it.
    struct Side
    {
        const RuleKeys &keys;
        EffectList &candidates;
        QGroupBox &group;
        QRadioButton &fixedButton;
        QLineEdit &fixedTime; ///< seconds
        QRadioButton &linkedButton;
        QRadioButton &linkStartButton;
        QRadioButton &linkEndButton;
        QComboBox &chooser;
        QLineEdit &linkOffset; ///< seconds
    };

    void fillLink(const Side &side, Effect &child);
    void fillRule(const Side &side, Effect &child, void (TimePanel::*enableFixed)(),
                  void (TimePanel::*enableLinked)());
    void clear(const Side &side);
    void follow(const Side &side, const Effect &child);
    static void enableLink(const Side &side, bool on);
    void writeLinkedRule(const Side &side);
    void writeFixedTime(const Side &side, const QString &text);
    void writeLinkOffset(const Side &side, const QString &text);
    void writeLinkSide(const Side &side, bool toStart, QWidget &focus);
    void writeLinkTarget(const Side &side, const Effect *target);

    const EditorContext &m_context;
    const Side m_start;
    const Side m_end;
    QRadioButton &m_cyclesButton;
    QSpinBox &m_cycles;
};

} // namespace meta
