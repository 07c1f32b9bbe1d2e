#pragma once

#include "MetaEffect.h"

/// Notes the two signals that tell of a new end, in the order in which they come.
class EndSignals
{
public:
    explicit EndSignals(MetaEffect &effect)
    {
        QObject::connect(
            &effect, &MetaEffect::endTimeChanged, &m_context,
            [this](unsigned long end) { noted.append(QStringLiteral("end %1").arg(end)); });
        QObject::connect(
            &effect, &Effect::cycleTimeChanged, &m_context,
            [this](unsigned long time) { noted.append(QStringLiteral("cycle %1").arg(time)); });
    }

    QStringList noted;

private:
    QObject m_context;
};
