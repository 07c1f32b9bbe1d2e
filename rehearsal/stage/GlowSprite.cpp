#include "GlowSprite.h"

#include <algorithm>
#include <cmath>

namespace rehearsal {

namespace {

constexpr double haloLight = 0.25; // at the edge of the disc

double squared(double value)
{
    return value * value;
}

double smoothStep(double value)
{
    return value * value * (3 - 2 * value);
}

double lightAt(double distance, double coreRadius, double haloRadius)
{
    if (distance <= coreRadius)
        return 1;
    if (distance >= haloRadius)
        return 0;
    const double outside = (distance - coreRadius) / (haloRadius - coreRadius);
    const double halo = haloLight * squared(squared(1 - outside));
    const double edge = 1 + coreRadius * 0.6;
    const double rim = std::min((distance - coreRadius) / edge, 1.0);
    return std::lerp(1.0, halo, smoothStep(rim));
}

} // namespace

GlowSprite::GlowSprite(double coreRadius, double haloRadius)
    : m_reach(static_cast<int>(std::ceil(haloRadius)))
{
    const int side = 2 * m_reach + 1;
    m_light.reserve(static_cast<size_t>(side) * static_cast<size_t>(side));
    m_columns.reserve(static_cast<size_t>(side));
    for (int y = -m_reach; y <= m_reach; ++y) {
        int last = -1;
        for (int x = -m_reach; x <= m_reach; ++x) {
            const double light = lightAt(std::hypot(x, y), coreRadius, haloRadius);
            m_light.push_back(static_cast<quint16>(std::lround(light * 65535)));
            if (m_light.back() > 0)
                last = std::abs(x);
        }
        m_columns.push_back(last);
    }
}

} // namespace rehearsal
