#include "Offset.h"

namespace meta {

std::optional<Offset> Offset::fromSecondsText(const QString &seconds)
{
    bool ok = false;
    const double value = seconds.toDouble(&ok);
    if (!ok)
        return {};
    return Offset(value * 1000.0);
}

QString Offset::storedText() const
{
    return QString::number(m_ms, 'g', 6);
}

QString Offset::secondsText() const
{
    return QString::number(m_ms / 1000.0, 'g', 6);
}

} // namespace meta
