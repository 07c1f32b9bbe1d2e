#pragma once

#include <QRgb>

#include <vector>

namespace rehearsal {

/// How an amount of light looks: deep amber when faint, warm white at full, white where the light
/// of several lights meets. Amounts are linear; colours are sRGB-encoded.
class GlowColours
{
public:
    /// The amount of light that a light gives at brightness 1.
    static constexpr quint32 full = 65535;
    /// The colour of a light that gives nothing.
    static constexpr QRgb unlit = 0xff22201f;

    /// Made on the first call.
    static const GlowColours &instance();

    /// Brightness as an amount: clamped to 0 ... 1, not a number is 0.
    static quint16 amount(double brightness);

    /// The colour of light before black; alpha is 0.
    QRgb glow(quint32 amount) const
    {
        const quint32 step = amount / amountsPerStep;
        return m_glow[step < steps ? step : steps - 1];
    }

    /// The most that a channel of the picture behind light may have.
    static constexpr int brightestBehind = 63;

    /// What light takes from every channel behind it. The rest is added to the glow: it never
    /// exceeds a channel, and never falls while the glow rises.
    static constexpr QRgb dimming(QRgb glow) { return (glow >> 2) & 0x3f3f3f; }

private:
    // Finer than the steps of an 8-bit sRGB channel are near black.
    static constexpr quint32 amountsPerStep = 16;
    // Up to four times the light of one.
    static constexpr quint32 steps = 4 * (full + 1) / amountsPerStep;

    GlowColours();

    std::vector<QRgb> m_glow;
};

} // namespace rehearsal
