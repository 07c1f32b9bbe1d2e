#pragma once

#include "Effect.h"
#include "StageMap.h"

#include <QStringList>

/// An effect that shows its members and tells what it is asked.
class Probe final : public Effect
{
public:
    explicit Probe(MapModel *map = nullptr, const QString &name = {}, QStringList *log = nullptr)
        : Effect(map, 0), m_name(name), m_log(log)
    {
    }
    ~Probe() override { tell(QStringLiteral("deleted")); }

    void init() override
    {
        tell(QStringLiteral("init"));
        Effect::init();
    }
    void internalUpdateLights() override
    {
        tell(QStringLiteral("draw at %1 with %2").arg(getTotalElapsedTime()).arg(m_frameArg));
        if (drawOn)
            drawOn->draw(1.0, 0.0, priority());
    }
    void internalSetProperty(const QString &key, const QString &value) override
    {
        changes.append(key + u'=' + value);
    }

    Probe &with(const char *key, const QString &text)
    {
        setProperty(QString::fromLatin1(key), text);
        return *this;
    }
    QString text(const char *key) const { return getPropertyString(QString::fromLatin1(key)); }

    quint32 &begin() { return m_beginTime; }
    quint32 &end() { return m_endTime; }
    quint32 &fadeIn() { return m_fadeInTime; }
    quint32 &fadeOut() { return m_fadeOutTime; }
    int &ownPriority() { return m_priority; }
    double &transparency() { return m_transparency; }

    QStringList changes;
    rehearsal::StageLight *drawOn = nullptr;

private:
    void tell(const QString &what)
    {
        if (m_log)
            m_log->append(m_name + u' ' + what);
    }

    QString m_name;
    QStringList *m_log;
};
