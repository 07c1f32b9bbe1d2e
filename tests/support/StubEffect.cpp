#include "StubEffect.h"

StubEffect::StubEffect(MapModel *map, quint32 eid) : Effect(map, 0)
{
    setProperty(QStringLiteral("type"), QStringLiteral("Stub"));
    setProperty(QStringLiteral("eid"), QString::number(eid));
    m_dirty = false;
    changes.clear();
}

StubEffect::~StubEffect()
{
    if (whileDying)
        whileDying(*this);
    if (deleted)
        *deleted = true;
    if (deletions)
        ++*deletions;
}

bool StubEffect::isDirty()
{
    ++dirtyQuestions;
    return m_dirty;
}

void StubEffect::init()
{
    ++inits;
    if (journal)
        journal->append(QStringLiteral("init ") + text("eid"));
    Effect::init();
}

void StubEffect::internalUpdateLights()
{
    ++draws;
    drawnPriorities.append(text("priority"));
    if (whileDrawing)
        whileDrawing(*this);
}

void StubEffect::internalSetProperty(const QString &key, const QString &value)
{
    changes.append(key + u'=' + value);
}

void StubEffect::setLevel(int newLevel)
{
    m_level = newLevel;
}

void StubEffect::setCycleTime(quint32 ms)
{
    cycleTime = ms;
    emit cycleTimeChanged(ms);
}

StubEffect &StubEffect::with(const char *key, const QString &value)
{
    setProperty(QString::fromLatin1(key), value);
    return *this;
}

StubEffect &StubEffect::with(const char *key, double value)
{
    return with(key, QString::number(value, 'g', 12));
}
