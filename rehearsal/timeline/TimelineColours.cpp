#include "TimelineColours.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace rehearsal {

namespace {

// Told apart with any common kind of colour-blindness.
constexpr std::array<QRgb, 8> hues{0xE69F00, 0x56B4E9, 0x009E73, 0xF0E442,
                                   0x0072B2, 0xD55E00, 0xCC79A7, 0x8A93A6};

// The types that every show may use have a hue each; any other takes the one that its name gives.
QColor hueOf(const QString &type)
{
    constexpr std::array<std::pair<QStringView, std::size_t>, 8> known{{{u"Solid", 0},
                                                                        {u"Ramp", 1},
                                                                        {u"Chase", 2},
                                                                        {u"White Fade", 3},
                                                                        {u"Pulse", 4},
                                                                        {u"Strobe", 5},
                                                                        {u"Twinkle", 6},
                                                                        {u"Meta Effect", 7}}};
    for (const auto &[name, hue] : known) {
        if (type == name)
            return QColor::fromRgb(hues[hue]);
    }
    quint32 sum = 0;
    for (const QChar letter : type)
        sum = sum * 31 + letter.unicode();
    return QColor::fromRgb(hues[sum % hues.size()]);
}

double luminance(const QColor &colour)
{
    const auto linear = [](float part) { return std::pow(double(part), 2.2); };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF())
           + 0.0722 * linear(colour.blueF());
}

// From 1, the same, to 21, black and white.
double contrast(const QColor &left, const QColor &right)
{
    const double a = luminance(left);
    const double b = luminance(right);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

} // namespace

TimelineColours::TimelineColours(const QPalette &palette)
    : m_base(palette.color(QPalette::Base)),
      m_text(palette.color(QPalette::Text)),
      m_ruler(palette.color(QPalette::Window)),
      m_accent(palette.color(QPalette::Highlight)),
      m_isDark(m_base.lightness() < m_text.lightness())
{
    m_warning = m_isDark ? QColor(0xFF, 0x6B, 0x6B) : QColor(0xC6, 0x16, 0x2B);
}

QColor TimelineColours::bar(const QString &type, bool running) const
{
    const QColor hue = hueOf(type);
    const double readable = running ? 4 : 6;
    double part = running ? 0.2 : 0.52;
    while (part < 1 && contrast(mixed(hue, m_base, part), m_text) < readable)
        part += 0.03;
    return mixed(hue, m_base, std::min(part, 1.0));
}

QColor TimelineColours::fadedBar(const QString &type) const
{
    return mixed(hueOf(type), m_base, m_isDark ? 0.88 : 0.82);
}

QColor TimelineColours::outline(const QString &type) const
{
    return m_isDark ? mixed(hueOf(type), m_base, 0.2) : mixed(hueOf(type), m_text, 0.25);
}

QColor TimelineColours::lane(int depth, bool odd) const
{
    const double part = 0.965 - 0.03 * qMin(depth, 4);
    const QColor ground = depth > 0 ? mixed(m_text, m_base, part) : m_base;
    return odd ? mixed(m_text, ground, 0.97) : ground;
}

QColor TimelineColours::mixed(const QColor &colour, const QColor &other, double part)
{
    const auto mix = [part](int own, int others) {
        return qRound(own + part * double(others - own));
    };
    return {mix(colour.red(), other.red()), mix(colour.green(), other.green()),
            mix(colour.blue(), other.blue())};
}

} // namespace rehearsal
