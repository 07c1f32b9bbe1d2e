#include "BrightnessTable.h"

#include <QIODevice>

#include <charconv>
#include <cmath>
#include <limits>

namespace rehearsal {

namespace {

// Four decimals, rounded as the exact value says.
void appendBrightness(QByteArray &row, double brightness)
{
    const double scaled = brightness * 10000;
    const double whole = std::floor(scaled);
    // Most values can be rounded here; those near the middle of two need the exact value.
    if (scaled >= 0 && scaled < 100000 && std::abs(scaled - whole - 0.5) > 1e-6) {
        const int digits = static_cast<int>(whole) + (scaled - whole > 0.5 ? 1 : 0);
        const auto digit = [digits](int divisor) {
            return static_cast<char>('0' + digits / divisor % 10);
        };
        if (digits < 100000) {
            const char text[] = {digit(10000), '.', digit(1000), digit(100), digit(10), digit(1)};
            row.append(text, sizeof text);
            return;
        }
    }
    char text[std::numeric_limits<double>::max_exponent10 + 8];
    const auto end =
        std::to_chars(text, text + sizeof text, brightness, std::chars_format::fixed, 4).ptr;
    row.append(text, end - text);
}

} // namespace

BrightnessTable::BrightnessTable(QIODevice &device, const std::vector<quint32> &uids)
    : m_device(device)
{
    m_row = "time_ms";
    for (const quint32 uid : uids)
        m_row += ',' + QByteArray::number(uid);
    m_row += '\n';
    m_device.write(m_row);
}

void BrightnessTable::addFrame(qint64 timeMs, const std::vector<double> &brightness)
{
    m_row = QByteArray::number(timeMs);
    for (const double value : brightness) {
        m_row += ',';
        appendBrightness(m_row, value);
    }
    m_row += '\n';
    m_device.write(m_row);
}

} // namespace rehearsal
