#pragma once

#include "GlowSprite.h"

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QRegion>

#include <span>
#include <vector>

namespace rehearsal {

/// What a canvas shows; all in device pixels.
struct GlowScene
{
    QSize size;
    /// Where the stage picture lies; may reach beyond the canvas.
    QRect picture;
    /// Centres; those beyond the canvas show what of their light reaches it.
    std::vector<QPoint> lights;
    double coreRadius = 0;
    double haloRadius = 0;
};

/// Paints the light of many lights over a night-dark stage, and of that only what changes.
///
/// The light of every pixel is kept as a sum of whole numbers, so that taking a light's old part
/// away and adding its new one gives exactly what painting all anew would. Lights of full
/// brightness may share a pixel by 65,536.
class GlowCanvas
{
public:
    /// Paints the scene with every light dark. All of the image is new then.
    void setScene(GlowScene scene);
    const GlowScene &scene() const { return m_scene; }

    /// Shows these brightnesses, one a light of the scene; outside 0 ... 1 they are clamped, not a
    /// number and missing ones are 0. Returns what of the image changed, in whole tiles.
    QRegion show(std::span<const double> brightness);

    /// Opaque, Format_RGB32; null before the first scene and for an empty one.
    const QImage &image() const { return m_image; }

    /// The colour of the disc in the middle of a light that no halo of another reaches. Brightness
    /// is linear light: red is its sRGB encoding, green and blue are red times a tint, and to all
    /// of them is added what the light leaves of the unlit lamp's colour. No channel falls while
    /// brightness rises, and of two brightnesses that are two steps of the 8-bit encoding apart the
    /// greater one has the brighter colour.
    static QRgb coreColour(double brightness);

private:
    void paintBackground();
    void paintLamp(QPoint centre);
    void changeLight(QPoint centre, quint16 before, quint16 now);
    void touch(const QRect &area);
    QRect tile(int column, int row) const;
    void paintTile(const QRect &area);
    QRegion paintTouched();

    GlowScene m_scene;
    GlowSprite m_sprite;
    QImage m_background;
    QImage m_image;
    std::vector<quint32> m_light;    // of every pixel, row by row
    std::vector<quint16> m_amounts;  // what each light gives
    std::vector<quint8> m_isTouched; // of every tile, row by row
    int m_tileColumns = 0;
    int m_tileRows = 0;
};

} // namespace rehearsal
