#pragma once

#include "RosterBuilder.h"

#include <random>

/// Random numbers that are the same on every machine.
class Dice
{
public:
    explicit Dice(quint32 seed) : m_generator(seed) {}

    /// 0 ... below - 1
    quint32 roll(quint32 below) { return static_cast<quint32>(m_generator() % below); }
    bool oneIn(quint32 chances) { return roll(chances) == 0; }
    template<typename List>
    const auto &pick(const List &list)
    {
        return list[static_cast<qsizetype>(roll(static_cast<quint32>(list.size())))];
    }

private:
    std::mt19937 m_generator;
};

/// What random children are like; the same seed gives the same.
struct RandomRules
{
    enum class Links { Any, LoopFree };

    struct Child
    {
        quint32 eid;
        quint32 cycleTime;
        QList<std::pair<QString, QString>> properties;
    };

    /// One to `mostChildren` children in list order: all rule codes and side conditions, broken
    /// links, several children of one eid, texts that are no numbers.
    RandomRules(quint32 seed, Links links, quint32 mostChildren = 8);

    void addTo(RosterBuilder &builder) const;

    QList<Child> children;
};
