#include "Millis.h"

#include <array>

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

// Below 1000 s all digits are shown and nothing is rounded. The general way is many times as slow,
// and a table shows thousands of times.
QString Millis::secondsText() const
{
    if (m_ms >= 1000000)
        return QString::number(toDouble() / 1000.0, 'g', 6);
    quint32 whole = m_ms / 1000;
    quint32 fraction = m_ms % 1000;
    int decimals = fraction > 0 ? 3 : 0;
    for (; decimals > 0 && fraction % 10 == 0; fraction /= 10)
        --decimals;
    std::array<QChar, 7> text; // "999.999", filled from its end
    auto first = text.end();
    const auto prependDigit = [&first](quint32 &number) {
        *--first = QChar(static_cast<char16_t>(u'0' + number % 10));
        number /= 10;
    };
    for (int i = 0; i < decimals; ++i)
        prependDigit(fraction);
    if (decimals > 0)
        *--first = u'.';
    do
        prependDigit(whole);
    while (whole > 0);
    return QString(first, text.end() - first);
}

} // namespace meta
