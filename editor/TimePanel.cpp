#include "TimePanel.h"

#include "ChildKeys.h"
#include "ChildRoster.h"
#include "LinkLegality.h"
#include "MetaWidget.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSpinBox>

#include <algorithm>
#include <initializer_list>
#include <limits>

namespace meta {

namespace {

QString storedTime(const QString &seconds, const QString &otherwise)
{
    const auto time = Millis::fromSecondsText(seconds);
    return time ? time->decimalText() : otherwise;
}

QString storedOffset(const QString &seconds, const QString &otherwise)
{
    const auto offset = Offset::fromSecondsText(seconds);
    return offset ? offset->storedText() : otherwise;
}

// The Tab key stops at the button that is on. Qt sees to that by itself only once a button of the
// group has had the focus.
void stopTabAtChecked(std::initializer_list<QRadioButton *> group)
{
    for (QRadioButton *button : group)
        button->setFocusPolicy(button->isChecked() ? Qt::StrongFocus : Qt::ClickFocus);
}

const QString zero = QStringLiteral("0");

} // namespace

TimePanel::TimePanel(MetaWidget &form, const EditorContext &context)
    : m_context(context),
      m_start{keys::startRule,
              context.roster.startLinkCandidates(),
              *form.m_startButtonGroup,
              *form.m_startFixedRadioButton,
              *form.m_startFixedLineEdit,
              *form.m_startLinkedRadioButton,
              *form.m_startLinkStartRadioButton,
              *form.m_startLinkEndRadioButton,
              *form.m_startLinkEffectComboBox,
              *form.m_startLinkOffsetLineEdit},
      m_end{keys::endRule,
            context.roster.endLinkCandidates(),
            *form.m_endButtonGroup,
            *form.m_endFixedRadioButton,
            *form.m_endFixedLineEdit,
            *form.m_endLinkedRadioButton,
            *form.m_endLinkStartRadioButton,
            *form.m_endLinkEndRadioButton,
            *form.m_endLinkEffectComboBox,
            *form.m_endLinkOffsetLineEdit},
      m_cyclesButton(*form.m_endCyclesRadioButton),
      m_cycles(*form.m_endCyclesSpinBox)
{
}

// --- Filling ---

void TimePanel::show(Effect &child)
{
    refreshStartTimeEditor(&child);
    m_start.group.setEnabled(true);
    refreshEndTimeEditor(&child);
    m_end.group.setEnabled(true);
    follow(child); // a pass during the fill may have replaced a broken link
}

void TimePanel::refreshStartTimeEditor(Effect *child)
{
    if (!child)
        return;
    fillLink(m_start, *child);
    fillRule(m_start, *child, &TimePanel::refreshStartFixed, &TimePanel::refreshStartLinked);
}

void TimePanel::refreshEndTimeEditor(Effect *child)
{
    if (!child)
        return;
    fillLink(m_end, *child);
    constexpr quint32 mostCycles = std::numeric_limits<int>::max();
    m_cycles.setValue(static_cast<int>(std::min(keys::endCycleCount.read(*child), mostCycles)));
    if (keys::endRule.type.read(*child) == rule::cycles) {
        m_cyclesButton.setChecked(true);
        refreshEndCycles();
    } else {
        fillRule(m_end, *child, &TimePanel::refreshEndFixed, &TimePanel::refreshEndLinked);
    }
}

void TimePanel::fillLink(const Side &side, Effect &child)
{
    side.fixedTime.setText(side.keys.fixedTime.read(child).secondsText());
    (side.keys.linkStart.read(child) ? side.linkStartButton : side.linkEndButton).setChecked(true);

    side.chooser.clear();
    side.candidates = m_context.legality.legalTargets(&child);
    side.linkedButton.setEnabled(!side.candidates.isEmpty());
    if (side.candidates.isEmpty()) {
        side.chooser.addItem(QStringLiteral("None Available"));
    } else {
        QStringList names;
        names.reserve(side.candidates.count());
        int current = 0; // stays where no candidate is the target
        const quint32 target = side.keys.linkEid.read(child);
        for (const Effect *candidate : side.candidates) {
            if (keys::eid.read(*candidate) == target)
                current = static_cast<int>(names.size());
            names.append(keys::name.readText(*candidate));
        }
        side.chooser.addItems(names);
        side.chooser.setCurrentIndex(current);
    }
    side.linkOffset.setText(side.keys.linkOffset.read(child).secondsText());
}

// A linked rule without any legal target becomes a fixed one. A rule code that is neither fixed nor
// linked switches no button on.
void TimePanel::fillRule(const Side &side, Effect &child, void (TimePanel::*enableFixed)(),
                         void (TimePanel::*enableLinked)())
{
    const quint32 type = side.keys.type.read(child);
    if (type == rule::linked && !side.candidates.isEmpty()) {
        side.linkedButton.setChecked(true);
        (this->*enableLinked)();
    } else if (type == rule::fixed || type == rule::linked) {
        side.fixedButton.setChecked(true);
        (this->*enableFixed)();
        if (type == rule::linked)
            side.keys.type.write(child, rule::fixed);
    }
}

void TimePanel::clear()
{
    clear(m_start);
    clear(m_end);
    m_cycles.setValue(1);
}

void TimePanel::clear(const Side &side)
{
    side.group.setEnabled(false);
    side.fixedTime.clear();
    side.chooser.clear();
    side.linkOffset.clear();
}

void TimePanel::follow(const Effect &child)
{
    follow(m_start, child);
    follow(m_end, child);
    const quint32 startType = keys::startRule.type.read(child);
    if (startType == rule::fixed)
        refreshStartFixed();
    else if (startType == rule::linked)
        refreshStartLinked();
    const quint32 endType = keys::endRule.type.read(child);
    if (endType == rule::fixed)
        refreshEndFixed();
    else if (endType == rule::linked)
        refreshEndLinked();
    else if (endType == rule::cycles)
        refreshEndCycles();
    stopTabAtChecked({&m_start.fixedButton, &m_start.linkedButton});
    stopTabAtChecked({&m_end.fixedButton, &m_end.linkedButton, &m_cyclesButton});
    stopTabAtChecked({&m_start.linkStartButton, &m_start.linkEndButton});
    stopTabAtChecked({&m_end.linkStartButton, &m_end.linkEndButton});
}

void TimePanel::follow(const Side &side, const Effect &child)
{
    const Millis time = side.keys.fixedTime.read(child);
    if (Millis::fromSecondsText(side.fixedTime.text()).value_or(Millis()) != time) {
        const QSignalBlocker silent(side.fixedTime);
        side.fixedTime.setText(time.secondsText());
    }
    QRadioButton *button = nullptr;
    switch (side.keys.type.read(child)) {
    case rule::fixed: button = &side.fixedButton; break;
    case rule::linked: button = &side.linkedButton; break;
    case rule::cycles: button = &side == &m_end ? &m_cyclesButton : nullptr; break;
    default: break;
    }
    if (button) {
        const QSignalBlocker silent(button);
        button->setChecked(true);
    }
}

void TimePanel::finishTyping()
{
    m_cycles.interpretText();
}

// --- Enabling ---

void TimePanel::enableLink(const Side &side, bool on)
{
    side.linkStartButton.setEnabled(on);
    side.linkEndButton.setEnabled(on);
    side.chooser.setEnabled(on);
    side.linkOffset.setEnabled(on);
}

void TimePanel::refreshStartFixed()
{
    m_start.fixedTime.setEnabled(true);
    enableLink(m_start, false);
}

void TimePanel::refreshStartLinked()
{
    enableLink(m_start, true);
    m_start.fixedTime.setEnabled(false);
}

void TimePanel::refreshEndFixed()
{
    m_end.fixedTime.setEnabled(true);
    enableLink(m_end, false);
    m_cycles.setEnabled(false);
}

void TimePanel::refreshEndLinked()
{
    enableLink(m_end, true);
    m_cycles.setEnabled(false);
    m_end.fixedTime.setEnabled(false);
}

void TimePanel::refreshEndCycles()
{
    m_cycles.setEnabled(true);
    enableLink(m_end, false);
    m_end.fixedTime.setEnabled(false);
}

// --- What the user does ---
//
// Text that is no number is stored as empty text by three of the toggles, and as "0" by everything
// else; both read as 0.

void TimePanel::startFixedToggled(bool on)
{
    if (!on)
        return;
    refreshStartFixed();
    const EffectList children = m_context.roster.selection();
    for (Effect *child : children) {
        m_start.keys.type.write(*child, rule::fixed);
        m_start.keys.fixedTime.writeText(*child, storedTime(m_start.fixedTime.text(), {}));
    }
    // The one handler that moves the focus after the pass.
    m_context.port.updateEffectTimes();
    m_start.fixedTime.setFocus();
}

void TimePanel::endFixedToggled(bool on)
{
    if (!on)
        return;
    refreshEndFixed();
    const EffectList children = m_context.roster.selection();
    for (Effect *child : children) {
        m_end.keys.type.write(*child, rule::fixed);
        m_end.keys.fixedTime.writeText(*child, storedTime(m_end.fixedTime.text(), zero));
    }
    m_end.fixedTime.setFocus();
    m_context.port.updateEffectTimes();
}

void TimePanel::startLinkedToggled(bool on)
{
    if (!on)
        return;
    refreshStartLinked();
    writeLinkedRule(m_start);
}

void TimePanel::endLinkedToggled(bool on)
{
    if (!on)
        return;
    refreshEndLinked();
    writeLinkedRule(m_end);
}

void TimePanel::writeLinkedRule(const Side &side)
{
    const Effect *target = side.candidates.at(side.chooser.currentIndex());
    const EffectList children = m_context.roster.selection();
    for (Effect *child : children) {
        side.keys.type.write(*child, rule::linked);
        side.keys.linkStart.write(*child, side.linkStartButton.isChecked());
        if (target) {
            side.keys.linkEid.write(*child, keys::eid.read(*target));
            side.keys.linkOffset.writeText(*child, storedOffset(side.linkOffset.text(), {}));
        }
    }
    side.linkOffset.setFocus();
    m_context.port.updateEffectTimes();
}

void TimePanel::endCyclesToggled(bool on)
{
    if (!on)
        return;
    refreshEndCycles();
    finishTyping();
    const EffectList children = m_context.roster.selection();
    for (Effect *child : children) {
        keys::endRule.type.write(*child, rule::cycles);
        keys::endCycleCount.write(*child, static_cast<quint32>(m_cycles.value()));
    }
    m_cycles.setFocus();
    m_context.port.updateEffectTimes();
}

void TimePanel::endCyclesChanged(int value)
{
    const EffectList children = m_context.roster.selection();
    for (Effect *child : children)
        keys::endCycleCount.write(*child, static_cast<quint32>(value));
    m_context.port.updateEffectTimes();
}

void TimePanel::startFixedTimeChanged(const QString &text)
{
    writeFixedTime(m_start, text);
}

void TimePanel::endFixedTimeChanged(const QString &text)
{
    writeFixedTime(m_end, text);
}

void TimePanel::writeFixedTime(const Side &side, const QString &text)
{
    const EffectList children = m_context.roster.selection();
    for (Effect *child : children)
        side.keys.fixedTime.writeText(*child, storedTime(text, zero));
    m_context.port.updateEffectTimes();
}

void TimePanel::startLinkOffsetChanged(const QString &text)
{
    writeLinkOffset(m_start, text);
}

void TimePanel::endLinkOffsetChanged(const QString &text)
{
    writeLinkOffset(m_end, text);
}

void TimePanel::writeLinkOffset(const Side &side, const QString &text)
{
    const EffectList children = m_context.roster.selection();
    for (Effect *child : children)
        side.keys.linkOffset.writeText(*child, storedOffset(text, zero));
    m_context.port.updateEffectTimes();
}

void TimePanel::startLinkStartToggled(bool on)
{
    if (on)
        writeLinkSide(m_start, true, m_start.linkOffset);
}

void TimePanel::startLinkEndToggled(bool on)
{
    if (on)
        writeLinkSide(m_start, false, m_start.linkOffset);
}

void TimePanel::endLinkStartToggled(bool on)
{
    if (on)
        writeLinkSide(m_end, true, m_end.linkOffset);
}

// Gives the focus to the offset of the start, not of the end.
void TimePanel::endLinkEndToggled(bool on)
{
    if (on)
        writeLinkSide(m_end, false, m_start.linkOffset);
}

void TimePanel::writeLinkSide(const Side &side, bool toStart, QWidget &focus)
{
    const EffectList children = m_context.roster.selection();
    for (Effect *child : children)
        side.keys.linkStart.write(*child, toStart);
    focus.setFocus();
    m_context.port.updateEffectTimes();
}

void TimePanel::startLinkEffectActivated(int index)
{
    writeLinkTarget(m_start, m_start.candidates.at(index));
}

// Looks among what the start's chooser offers; both offer the same children.
void TimePanel::endLinkEffectActivated(int index)
{
    writeLinkTarget(m_end, m_start.candidates.at(index));
}

void TimePanel::writeLinkTarget(const Side &side, const Effect *target)
{
    if (!target)
        return;
    const EffectList children = m_context.roster.selection();
    for (Effect *child : children)
        side.keys.linkEid.write(*child, keys::eid.read(*target));
    side.linkOffset.setFocus();
    m_context.port.updateEffectTimes();
}

} // namespace meta
