#pragma once

#include "EffectFactory.h"
#include "MetaEffect.h"
#include "StageMap.h"
#include "StubEffect.h"

#include <QIODevice>
#include <QTextStream>

/// A meta effect that lets its base's members be seen.
class OpenMetaEffect : public MetaEffect
{
public:
    using MetaEffect::group;
    using MetaEffect::MetaEffect;
    using MetaEffect::selection;

    bool ownDirty() const { return m_dirty; }
    void setOwnDirty(bool dirty) { m_dirty = dirty; }
    int level() const { return m_level; }
    QWidget *editorWidget() const { return m_editorWidget; }

    QString text(const char *key) const { return getPropertyString(QString::fromLatin1(key)); }
    OpenMetaEffect &with(const char *key, const QString &value)
    {
        setProperty(QString::fromLatin1(key), value);
        return *this;
    }
    OpenMetaEffect &with(const char *key, double value)
    {
        return with(key, QString::number(value, 'g', 12));
    }
};

inline QString savedText(Effect &effect)
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    effect.save(stream);
    return text;
}

/// A host with the types "Stub" and "Meta Effect", and one running meta effect in it. The clock
/// stands at noon.
class MetaStage
{
public:
    MetaStage()
    {
        factory.addType(QStringLiteral("Stub"),
                        [](MapModel *made) { return new StubEffect(made); });
        factory.addType(QStringLiteral("Meta Effect"),
                        [](MapModel *made) { return new OpenMetaEffect(made, 0); });
        map.clock().step(noon);
        effect.setState(true);
        effect.setStartTime();
    }

    /// Adds a stub to the effect.
    StubEffect *add(quint32 eid) { return addTo(effect, eid); }
    StubEffect *addTo(MetaEffect &parent, quint32 eid)
    {
        auto *child = new StubEffect(&map, eid);
        parent.addChild(child);
        return child;
    }
    /// Adds a nested meta effect, empty and not made ready.
    OpenMetaEffect *addNestedTo(MetaEffect &parent, quint32 eid)
    {
        auto *child = new OpenMetaEffect(&map, 0);
        child->with("eid", eid);
        parent.addChild(child);
        return child;
    }

    /// The eids of the effect's children, in list order.
    QStringList eids() const
    {
        QStringList eids;
        const EffectList children = effect.getEffects();
        for (const Effect *child : children)
            eids.append(child->getPropertyString(QStringLiteral("eid")));
        return eids;
    }

    /// Hands the effect the frame `ms` behind noon.
    void frameAt(int ms)
    {
        const QTime time = noon.addMSecs(ms);
        map.clock().beginFrame(time);
        effect.updateLights(time, 77);
        map.clock().endFrame();
    }

    const QTime noon{12, 0};
    rehearsal::StageMap map;
    rehearsal::EffectFactory factory{map};
    OpenMetaEffect effect{&map, 0};
};
