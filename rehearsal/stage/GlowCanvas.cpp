#include "GlowCanvas.h"

#include "GlowColours.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <utility>

namespace rehearsal {

namespace {

constexpr int tileWidth = 64;
constexpr int tileHeight = 32;

// The night, in steps of an 8-bit channel: far from the picture, and what its middle adds.
constexpr std::array<float, 3> farNight{5.0F, 6.0F, 10.0F};
constexpr std::array<float, 3> nearNight{7.0F, 8.5F, 14.0F};

constexpr int grainSide = 64;

// Without grain the few dark shades of the night would lie in bands. In 0 ... 1; always the same.
const std::vector<float> &grain()
{
    static const std::vector<float> values = [] {
        std::minstd_rand random(1); // the same numbers everywhere
        std::vector<float> made(grainSide * grainSide);
        for (float &value : made)
            value = static_cast<float>(random() % 4096) / 4096.0F;
        return made;
    }();
    return values;
}

// 1 in the middle of the span, falling to nothing one length beyond it.
std::vector<float> nearness(int count, int from, int length)
{
    std::vector<float> values(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        const double away = std::abs(i - from - length / 2.0) / std::max(1, length);
        const double part = std::clamp(1 - away, 0.0, 1.0);
        values[static_cast<size_t>(i)] = static_cast<float>(part * part * (3 - 2 * part));
    }
    return values;
}

QRgb night(float near, float grain)
{
    std::array<int, 3> channels{};
    for (size_t i = 0; i < channels.size(); ++i)
        channels[i] = static_cast<int>(farNight[i] + nearNight[i] * near + grain);
    return qRgb(channels[0], channels[1], channels[2]);
}

// The unlit lamp over what is there; lamps that touch become one.
QRgb lamp(QRgb behind, double cover)
{
    const auto channel = [cover](int from, int to) {
        return std::max(from, static_cast<int>(std::lround(std::lerp(from, to, cover))));
    };
    return qRgb(channel(qRed(behind), qRed(GlowColours::unlit)),
                channel(qGreen(behind), qGreen(GlowColours::unlit)),
                channel(qBlue(behind), qBlue(GlowColours::unlit)));
}

quint16 scaled(quint16 light, quint16 amount)
{
    return static_cast<quint16>(static_cast<quint32>(light) * amount >> 16);
}

// The differences fit 16 bits, and are made there: twice as many at a time.
void brightenRow(quint32 *light, const quint16 *sprite, int count, quint16 before, quint16 now)
{
    for (int i = 0; i < count; ++i)
        light[i] += static_cast<quint16>(scaled(sprite[i], now) - scaled(sprite[i], before));
}

void dimRow(quint32 *light, const quint16 *sprite, int count, quint16 before, quint16 now)
{
    for (int i = 0; i < count; ++i)
        light[i] -= static_cast<quint16>(scaled(sprite[i], before) - scaled(sprite[i], now));
}

void addBytes(quint8 *__restrict to, const quint8 *glow, const quint8 *dimming,
              const quint8 *behind, int count)
{
    for (int i = 0; i < count; ++i) {
        const quint8 most = behind[i] > dimming[i] ? behind[i] : dimming[i];
        to[i] = static_cast<quint8>(glow[i] + static_cast<quint8>(most - dimming[i]));
    }
}

quint8 *bytes(QRgb *pixels)
{
    return reinterpret_cast<quint8 *>(pixels);
}

const quint8 *bytes(const QRgb *pixels)
{
    return reinterpret_cast<const quint8 *>(pixels);
}

// At most a tile's width. Three simple passes, of which vectors do the last two.
void paintRow(QRgb *pixels, const QRgb *behind, const quint32 *light, int count)
{
    const GlowColours &colours = GlowColours::instance();
    std::array<QRgb, tileWidth> glow;
    for (int i = 0; i < count; ++i)
        glow[static_cast<size_t>(i)] = colours.glow(light[i]);
    std::array<QRgb, tileWidth> dimming;
    for (int i = 0; i < count; ++i)
        dimming[static_cast<size_t>(i)] = GlowColours::dimming(glow[static_cast<size_t>(i)]);
    addBytes(bytes(pixels), bytes(glow.data()), bytes(dimming.data()), bytes(behind), 4 * count);
}

} // namespace

QRgb GlowCanvas::coreColour(double brightness)
{
    const quint32 light = scaled(GlowColours::full, GlowColours::amount(brightness));
    QRgb colour = 0;
    paintRow(&colour, &GlowColours::unlit, &light, 1);
    return colour;
}

void GlowCanvas::setScene(GlowScene scene)
{
    m_scene = std::move(scene);
    m_sprite = GlowSprite(m_scene.coreRadius, m_scene.haloRadius);
    const QSize size = m_scene.size.expandedTo({0, 0});
    m_scene.size = size;
    m_light.assign(static_cast<size_t>(size.width()) * static_cast<size_t>(size.height()), 0);
    m_amounts.assign(m_scene.lights.size(), 0);
    m_tileColumns = (size.width() + tileWidth - 1) / tileWidth;
    m_tileRows = (size.height() + tileHeight - 1) / tileHeight;
    m_isTouched.assign(static_cast<size_t>(m_tileColumns) * static_cast<size_t>(m_tileRows), 0);
    if (m_background.size() != size)
        m_background = QImage(size, QImage::Format_RGB32);
    paintBackground();
    m_image = m_background.copy();
}

void GlowCanvas::paintBackground()
{
    const QSize size = m_scene.size;
    const QRect &picture = m_scene.picture;
    const std::vector<float> across = nearness(size.width(), picture.left(), picture.width());
    const std::vector<float> down = nearness(size.height(), picture.top(), picture.height());
    for (int y = 0; y < size.height(); ++y) {
        auto *pixels = reinterpret_cast<QRgb *>(m_background.scanLine(y));
        const float *grains = grain().data() + y % grainSide * grainSide;
        const float row = down[static_cast<size_t>(y)];
        for (int x = 0; x < size.width(); ++x)
            pixels[x] = night(across[static_cast<size_t>(x)] * row, grains[x % grainSide]);
    }
    for (const QPoint centre : m_scene.lights)
        paintLamp(centre);
}

void GlowCanvas::paintLamp(QPoint centre)
{
    const int reach = static_cast<int>(std::ceil(m_scene.coreRadius)) + 1;
    const QRect area = QRect(centre.x() - reach, centre.y() - reach, 2 * reach + 1, 2 * reach + 1)
                           .intersected(QRect({0, 0}, m_scene.size));
    for (int y = area.top(); y <= area.bottom(); ++y) {
        auto *pixels = reinterpret_cast<QRgb *>(m_background.scanLine(y));
        for (int x = area.left(); x <= area.right(); ++x) {
            const double outside = std::hypot(x - centre.x(), y - centre.y()) - m_scene.coreRadius;
            pixels[x] = lamp(pixels[x], std::clamp(1 - outside, 0.0, 1.0));
        }
    }
}

QRegion GlowCanvas::show(std::span<const double> brightness)
{
    for (size_t i = 0; i < m_amounts.size(); ++i) {
        const quint16 now = i < brightness.size() ? GlowColours::amount(brightness[i]) : quint16(0);
        if (now == m_amounts[i])
            continue;
        changeLight(m_scene.lights[i], m_amounts[i], now);
        m_amounts[i] = now;
    }
    return paintTouched();
}

void GlowCanvas::changeLight(QPoint centre, quint16 before, quint16 now)
{
    const int reach = m_sprite.reach();
    const int width = m_scene.size.width();
    const auto changeRow = now > before ? brightenRow : dimRow;
    const QRect area = QRect(centre.x() - reach, centre.y() - reach, 2 * reach + 1, 2 * reach + 1)
                           .intersected(QRect({0, 0}, m_scene.size));
    if (area.isEmpty())
        return;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        const int columns = m_sprite.columns(y - centre.y());
        const int from = std::max(area.left(), centre.x() - columns);
        const int count = std::min(area.right(), centre.x() + columns) - from + 1;
        quint32 *light = m_light.data() + static_cast<qsizetype>(y) * width + from;
        const quint16 *sprite = m_sprite.row(y - centre.y()) + (from - centre.x());
        changeRow(light, sprite, count, before, now);
    }
    touch(area);
}

void GlowCanvas::touch(const QRect &area)
{
    const int left = area.left() / tileWidth;
    const int right = area.right() / tileWidth;
    for (int row = area.top() / tileHeight; row <= area.bottom() / tileHeight; ++row) {
        quint8 *tiles = m_isTouched.data() + static_cast<qsizetype>(row) * m_tileColumns;
        std::fill(tiles + left, tiles + right + 1, quint8(1));
    }
}

QRect GlowCanvas::tile(int column, int row) const
{
    return QRect(column * tileWidth, row * tileHeight, tileWidth, tileHeight)
        .intersected(QRect({0, 0}, m_scene.size));
}

void GlowCanvas::paintTile(const QRect &area)
{
    for (int y = area.top(); y <= area.bottom(); ++y) {
        auto *pixels = reinterpret_cast<QRgb *>(m_image.scanLine(y));
        const auto *behind = reinterpret_cast<const QRgb *>(m_background.constScanLine(y));
        const quint32 *light = m_light.data() + static_cast<qsizetype>(y) * m_scene.size.width();
        paintRow(pixels + area.left(), behind + area.left(), light + area.left(), area.width());
    }
}

QRegion GlowCanvas::paintTouched()
{
    std::vector<QRect> painted;
    for (int row = 0; row < m_tileRows; ++row) {
        bool joins = false;
        for (int column = 0; column < m_tileColumns; ++column) {
            quint8 &isTouched = m_isTouched[static_cast<size_t>(row * m_tileColumns + column)];
            const bool isPainted = std::exchange(isTouched, quint8(0)) != 0;
            if (isPainted) {
                const QRect area = tile(column, row);
                paintTile(area);
                if (joins)
                    painted.back().setRight(area.right());
                else
                    painted.push_back(area);
            }
            joins = isPainted;
        }
    }
    QRegion region;
    region.setRects(painted.data(), static_cast<int>(painted.size()));
    return region;
}

} // namespace rehearsal
