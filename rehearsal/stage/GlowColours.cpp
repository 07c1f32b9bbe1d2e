#include "GlowColours.h"

#include <algorithm>
#include <cmath>

namespace rehearsal {

namespace {

struct Tint
{
    double green;
    double blue;
};

// Parts of red, all sRGB-encoded.
constexpr Tint faintTint{0.58, 0.09};
constexpr Tint fullTint{0.93, 0.78};
constexpr Tint overTint{0.99, 0.95};

double encoded(double linear)
{
    return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

Tint mixed(const Tint &from, const Tint &to, double part)
{
    return {std::lerp(from.green, to.green, part), std::lerp(from.blue, to.blue, part)};
}

QRgb colour(double linear)
{
    const double red = std::min(encoded(linear), 1.0);
    const Tint tint = linear <= 1 ? mixed(faintTint, fullTint, red * red)
                                  : mixed(fullTint, overTint, 1 - 1 / (linear * linear));
    const auto byte = [](double value) { return static_cast<int>(std::lround(255 * value)); };
    return qRgba(byte(red), byte(red * tint.green), byte(red * tint.blue), 0);
}

} // namespace

const GlowColours &GlowColours::instance()
{
    static const GlowColours colours;
    return colours;
}

GlowColours::GlowColours()
{
    m_glow.reserve(steps);
    for (quint32 step = 0; step < steps; ++step) // the middle of each: it rounds to the right code
        m_glow.push_back(colour((step + 0.5) * amountsPerStep / (full + 1)));
}

quint16 GlowColours::amount(double brightness)
{
    return brightness > 0 ? static_cast<quint16>(std::lround(std::min(brightness, 1.0) * full)) : 0;
}

} // namespace rehearsal
