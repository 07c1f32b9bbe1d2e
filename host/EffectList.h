#pragma once

#include <QList>

class Effect;

/// The host's ordered list of effects.
///
/// The list only points: it owns its effects only while auto-deletion is on, and a copy never owns.
/// The order that inSort() and sort() keep is the host's; both leave effects of equal rank in the
/// order in which they arrived.
class EffectList
{
public:
    using const_iterator = QList<Effect *>::const_iterator;

    EffectList();
    /// Copies the pointers; auto-deletion is off in the copy.
    EffectList(const EffectList &other);
    /// Replaces the pointers (auto-deletion deletes the old effects first) and keeps this list's
    /// own auto-deletion setting.
    EffectList &operator=(const EffectList &other);
    /// Deletes the effects if auto-deletion is on.
    ~EffectList();

    bool autoDelete() const { return m_autoDelete; }
    void setAutoDelete(bool on) { m_autoDelete = on; }

    /// Inserts at the place that the list's order gives; behind effects of equal rank.
    void inSort(Effect *effect);
    /// Restores the list's order; effects of equal rank keep their order.
    void sort();

    void append(Effect *effect) { m_effects.append(effect); }
    /// Takes the first occurrence of this very effect off the list without deleting it, even with
    /// auto-deletion on; false if it is not there.
    bool remove(const Effect *effect);
    /// Empties the list; deletes the effects if auto-deletion is on.
    void clear();

    int count() const { return static_cast<int>(m_effects.size()); }
    bool isEmpty() const { return m_effects.isEmpty(); }
    bool contains(const Effect *effect) const;
    /// The effect at an index counted from 0, or null where there is none.
    Effect *at(int index) const { return m_effects.value(index); }

    const_iterator begin() const { return m_effects.cbegin(); }
    const_iterator end() const { return m_effects.cend(); }

private:
    QList<Effect *> m_effects;
    bool m_autoDelete = false;
};
