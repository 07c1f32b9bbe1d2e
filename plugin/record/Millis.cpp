#include "Millis.h"

namespace meta {

std::optional<Millis> Millis::fromSecondsText(const QString &seconds)
{
    bool ok = false;
    const double value = seconds.toDouble(&ok);
    if (!ok)
        return {};
    return fromDoubleSaturating(value * 1000.0);
}

QString Millis::decimalText() const
{
    return QString::number(m_ms);
}

QString Millis::secondsText() const
{
    return QString::number(toDouble() / 1000.0, 'g', 6);
}

} // namespace meta
