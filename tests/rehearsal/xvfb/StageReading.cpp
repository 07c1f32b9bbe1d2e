#include "StageReading.h"

#include "GlowCanvas.h"

namespace {

/// No halo of the example show reaches further, in a window of the usual size; px.
constexpr int haloReach = 50;

// Whether each channel is at least that of the other colour.
bool isAtLeast(QRgb colour, QRgb other)
{
    return qRed(colour) >= qRed(other) && qGreen(colour) >= qGreen(other)
           && qBlue(colour) >= qBlue(other);
}

} // namespace

StageReading::StageReading(const WindowTwin &twin, const RenderedTable &table)
    : m_lights(table.lights())
{
    for (const quint32 uid : m_lights)
        m_places.append(twin.lightAt(uid));
}

bool StageReading::isAlone(qsizetype light, const QList<double> &row) const
{
    for (qsizetype i = 0; i < m_places.size(); ++i) {
        const QPoint away = m_places.at(i) - m_places.at(light);
        if (i != light && row.at(i) > 0 && QPoint::dotProduct(away, away) < haloReach * haloReach)
            return false;
    }
    return true;
}

bool StageReading::shows(const QImage &window, const QList<double> &row, QString *fault,
                         int *exact) const
{
    constexpr double rounded = RenderedTable::precision / 2;
    if (exact)
        *exact = 0;
    for (qsizetype i = 0; i < m_lights.size(); ++i) {
        const QRgb shown = window.pixel(m_places.at(i));
        const bool isAlone = this->isAlone(i, row);
        const bool fits =
            isAtLeast(shown, rehearsal::GlowCanvas::coreColour(row.at(i) - rounded))
            && (!isAlone
                || isAtLeast(rehearsal::GlowCanvas::coreColour(row.at(i) + rounded), shown));
        if (!fits) {
            if (fault)
                *fault = QStringLiteral("light %1, of brightness %2, is #%3")
                             .arg(m_lights.at(i))
                             .arg(row.at(i))
                             .arg(shown & 0xffffff, 6, 16, QLatin1Char('0'));
            return false;
        }
        if (exact && isAlone && row.at(i) > 0)
            ++*exact;
    }
    return true;
}
