#pragma once

#include "RenderedTable.h"
#include "WindowTwin.h"

#include <QImage>

/// Compares the lights in a picture of the window with numbers.
class StageReading
{
public:
    /// The twin is not owned and outlives this.
    StageReading(const WindowTwin &twin, const RenderedTable &table);

    /// Whether the picture shows these brightnesses. Lights that the halo of another may reach may
    /// be brighter than their own.
    /// @param fault tells of the first light that differs
    /// @param exact how many lights that are on were compared exactly
    bool shows(const QImage &window, const QList<double> &row, QString *fault = nullptr,
               int *exact = nullptr) const;

private:
    bool isAlone(qsizetype light, const QList<double> &row) const;

    QList<quint32> m_lights;
    QList<QPoint> m_places;
};
