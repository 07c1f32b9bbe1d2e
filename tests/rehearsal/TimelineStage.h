#pragma once

#include "Effect.h"
#include "Show.h"
#include "TestTypes.h"
#include "TimelineModel.h"

/// A meta effect with children, made step by step, for what shows it over time.
class TimelineStage
{
public:
    struct Child
    {
        quint32 eid = 0;
        quint32 begin = 0;
        quint32 end = 0;
    };

    TimelineStage() : show(allTypes()), top(show.factory().make(QStringLiteral("Meta Effect")))
    {
        show.addEffect(top);
    }

    /// Adds a child; `holder` null stands for the effect at the top.
    Effect *add(Child child, Effect *holder = nullptr,
                const QString &type = QStringLiteral("Solid"))
    {
        Effect *effect = show.factory().make(type);
        set(effect, "eid", child.eid);
        set(effect, "begin", child.begin);
        set(effect, "end", child.end);
        effect->setProperty(QStringLiteral("name"), QStringLiteral("Child %1").arg(child.eid));
        (holder ? holder : top)->addChild(effect);
        return effect;
    }
    Effect *addMeta(Child child, Effect *holder = nullptr)
    {
        return add(child, holder, QStringLiteral("Meta Effect"));
    }

    static void set(Effect *effect, const char *key, double value)
    {
        effect->setProperty(QString::fromLatin1(key), QString::number(value, 'f', 0));
    }
    static void linkStart(Effect *effect, quint32 eid, rehearsal::Edge edge)
    {
        link(effect, QStringLiteral("start"), eid, edge);
    }
    static void linkEnd(Effect *effect, quint32 eid, rehearsal::Edge edge)
    {
        link(effect, QStringLiteral("end"), eid, edge);
    }
    static void endByDuration(Effect *effect) { set(effect, "endtype", 0); }

    rehearsal::Show show;
    Effect *top;

private:
    static void link(Effect *effect, const QString &rule, quint32 eid, rehearsal::Edge edge)
    {
        effect->setProperty(rule + QStringLiteral("type"), QStringLiteral("1"));
        effect->setProperty(rule + QStringLiteral("linkeid"), QString::number(eid));
        effect->setProperty(rule + QStringLiteral("linkstart"), edge == rehearsal::Edge::Begin
                                                                    ? QStringLiteral("1")
                                                                    : QStringLiteral("0"));
    }
};
