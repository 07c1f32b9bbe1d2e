#pragma once

#include "Effect.h"

#include <QList>
#include <QStringList>

#include <functional>

/// An effect that counts what is asked of it and does what it is told.
class StubEffect : public Effect
{
    Q_OBJECT

public:
    explicit StubEffect(MapModel *map = nullptr, quint32 eid = 0);
    ~StubEffect() override;

    unsigned long getCycleTime() override { return cycleTime; }
    bool isDirty() override;
    void init() override;
    void internalUpdateLights() override;
    void internalSetProperty(const QString &key, const QString &value) override;
    void setLevel(int newLevel) override;

    void setCycleTime(quint32 ms);
    void setDirty(bool dirty) { m_dirty = dirty; }
    using Effect::getPropertyString;
    QString text(const char *key) const { return getPropertyString(QString::fromLatin1(key)); }
    /// Sets a property; returns the effect for more.
    StubEffect &with(const char *key, const QString &value);
    StubEffect &with(const char *key, double value);

    int level() const { return m_level; }
    unsigned long frameArg() const { return m_frameArg; }
    QTime frameTime() const { return m_frameTime; }

    quint32 cycleTime = 1000;
    int inits = 0;
    int draws = 0;
    int dirtyQuestions = 0;
    /// "priority" as it was at each drawing.
    QStringList drawnPriorities;
    /// "key=value" of every change.
    QStringList changes;
    /// Set to true when the effect is deleted, if given; not owned.
    bool *deleted = nullptr;
    /// Counts deletions, if given; not owned.
    int *deletions = nullptr;
    /// Called during a drawing, and first thing in the destructor, if given.
    std::function<void(StubEffect &)> whileDrawing;
    std::function<void(StubEffect &)> whileDying;
    /// Takes "init" and the eid at each init(), if given; not owned.
    QStringList *journal = nullptr;
};
