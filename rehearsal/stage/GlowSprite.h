#pragma once

#include <QtGlobal>

#include <vector>

namespace rehearsal {

/// How the light of one light spreads around it: a disc of even light, and a halo that fades to
/// nothing.
class GlowSprite
{
public:
    /// Radii of the disc and of the halo's end, in pixels; the halo is the wider one.
    GlowSprite(double coreRadius, double haloRadius);
    GlowSprite() : GlowSprite(0, 0) {}

    /// Rows and columns run from -reach() to reach().
    int reach() const { return m_reach; }
    /// The last column of a row that has light; the first is the same to the left.
    int columns(int row) const { return m_columns[static_cast<size_t>(row + m_reach)]; }
    /// Light of a row's pixels in 1/65535 of the disc's, from column 0; columns left of it come
    /// first.
    const quint16 *row(int row) const
    {
        return m_light.data() + (row + m_reach) * (2 * m_reach + 1) + m_reach;
    }

private:
    int m_reach;
    std::vector<int> m_columns;
    std::vector<quint16> m_light;
};

} // namespace rehearsal
