#pragma once

#include <QString>

#include <compare>
#include <concepts>
#include <optional>

namespace meta {

/// A time or duration in whole milliseconds, 0 ... 4294967295.
///
/// The type exists because `unsigned long` may be wider than 32 bits while every sum of times wraps
/// at 2^32.
class Millis
{
public:
    constexpr Millis() = default;
    template<std::same_as<quint32> Number>
    constexpr explicit Millis(Number ms) : m_ms(ms)
    {
    }

    /// Truncates toward zero; negative values and NaN give 0, too large ones 4294967295.
    static constexpr Millis fromDoubleSaturating(double ms)
    {
        if (!(ms > 0.0))
            return {};
        if (ms >= 4294967295.0)
            return Millis(quint32{4294967295u});
        return Millis(static_cast<quint32>(ms));
    }

    /// Reads seconds as a user types them, "1.5" as 1500 ms. Never rounds to the nearest value:
    /// "1.005" is 1004 ms, because the product is 1004.9999999999999. Nothing for text that is not
    /// a number.
    static std::optional<Millis> fromSecondsText(const QString &seconds);

    constexpr quint32 value() const { return m_ms; }
    /// Exact.
    constexpr double toDouble() const { return m_ms; }

    constexpr Millis plusWrapping(Millis other) const { return Millis(m_ms + other.m_ms); }
    constexpr Millis minusWrapping(Millis other) const { return Millis(m_ms - other.m_ms); }

    /// The time as it is stored: "1500".
    QString decimalText() const;
    /// The time as it is shown: seconds in at most six significant digits, "1.5".
    QString secondsText() const;

    friend constexpr bool operator==(Millis, Millis) = default;
    friend constexpr auto operator<=>(Millis a, Millis b) { return a.m_ms <=> b.m_ms; }

private:
    quint32 m_ms = 0;
};

} // namespace meta
