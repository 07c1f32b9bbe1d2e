#pragma once

#include "FormUser.h"
#include "RandomRules.h"

/// Somebody who does anything at all in the form of a meta effect; the dice decide.
class RandomHand
{
public:
    struct Habits
    {
        QStringList groups;           ///< to pick from; an empty name cancels the picker
        int mostChildren = 10;        ///< of one effect, after which none is added
        qsizetype longestPaste = 1e6; ///< characters
    };

    /// @param dice outlives this
    RandomHand(Dice &dice, Habits habits) : m_dice(dice), m_habits(std::move(habits)) {}

    /// Does something and tells what.
    QString act(const FormUser &user);

    /// Whether children may have other times than their rules say after the last act, until the
    /// next pass: what was linked to a deleted child keeps its times, and a nested effect that
    /// loses a child begins at 0.
    bool leavesTimes() const { return m_leavesTimes; }

private:
    int anyRow(const FormUser &user);
    bool sparesTheFew(const FormUser &user);
    const QString &anyGroup() { return m_dice.pick(m_habits.groups); }

    QString select(const FormUser &user, Qt::KeyboardModifiers modifiers);
    QString walk(const FormUser &user);
    QString clickNowhere(const FormUser &user);
    QString editCell(const FormUser &user);
    QString typeInPanel(const FormUser &user);
    QString switchRadio(const FormUser &user);
    QString chooseTarget(const FormUser &user);
    QString countCycles(const FormUser &user);
    QString sort(const FormUser &user);
    QString create(const FormUser &user);
    QString pickGroup(const FormUser &user);
    QString remove(const FormUser &user);
    QString copy(const FormUser &user);
    QString cut(const FormUser &user);
    QString paste(const FormUser &user);
    QString changeType(const FormUser &user);

    Dice &m_dice;
    Habits m_habits;
    bool m_leavesTimes = false;
};
