#include "EffectList.h"

#include "Effect.h"

#include <algorithm>

EffectList::EffectList() = default;

EffectList::EffectList(const EffectList &other) : m_effects(other.m_effects) {}

EffectList &EffectList::operator=(const EffectList &other)
{
    if (this != &other) {
        clear();
        m_effects = other.m_effects;
    }
    return *this;
}

EffectList::~EffectList()
{
    clear();
}

// This host sorts by priority, lowest first.
void EffectList::inSort(Effect *effect)
{
    const auto place = std::upper_bound(
        m_effects.cbegin(), m_effects.cend(), effect,
        [](const Effect *a, const Effect *b) { return a->m_priority < b->m_priority; });
    m_effects.insert(place, effect);
}

void EffectList::sort()
{
    std::stable_sort(m_effects.begin(), m_effects.end(), [](const Effect *a, const Effect *b) {
        return a->m_priority < b->m_priority;
    });
}

bool EffectList::remove(const Effect *effect)
{
    const auto place = std::find(m_effects.cbegin(), m_effects.cend(), effect);
    if (place == m_effects.cend())
        return false;
    m_effects.erase(place);
    return true;
}

void EffectList::clear()
{
    const QList<Effect *> effects = std::exchange(m_effects, {});
    if (m_autoDelete)
        qDeleteAll(effects);
}

bool EffectList::contains(const Effect *effect) const
{
    return std::find(m_effects.cbegin(), m_effects.cend(), effect) != m_effects.cend();
}
