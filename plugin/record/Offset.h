#pragma once

#include <QString>

#include <optional>

namespace meta {

/// A signed span of milliseconds, not always whole: how far behind its target a linked time lies.
class Offset
{
public:
    constexpr Offset() = default;
    constexpr explicit Offset(double ms) : m_ms(ms) {}

    /// Reads seconds as a user types them, "-2.5" as -2500 ms. Nothing for text that is not a
    /// number.
    static std::optional<Offset> fromSecondsText(const QString &seconds);

    /// In ms.
    constexpr double toDouble() const { return m_ms; }

    /// The offset as it is stored: six significant digits, "-2500" or "1.23457e+06".
    QString storedText() const;
    /// The offset as it is shown: seconds in at most six significant digits, "-2.5".
    QString secondsText() const;

private:
    double m_ms = 0.0;
};

} // namespace meta
