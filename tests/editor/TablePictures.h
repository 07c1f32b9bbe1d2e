#pragma once

#include "EditorStage.h"
#include "EffectColumns.h"

#include <QImage>

// The pictures of the effect table, row by row: '#' black, '.' grey, 'o' white, ' ' nothing.
inline const QStringList openCircle = {
    "...##...", ".##..##.", ".#....#.", "#......#", "#......#", ".#....#.", ".##..##.", "...##...",
};
inline const QStringList closedCircle = {
    "...##...", ".######.", ".######.", "########", "########", ".######.", ".######.", "...##...",
};
inline const QStringList linkArrow = {
    "  ooo  ", " oo#o  ", "oo#oooo", "o#####o", "oo#oooo", " oo#o  ", "  ooo  ",
};
inline const QStringList cycleArrow = {
    "     ooo  ", "    oo#o  ", " oooo#ooo ", "oo#o####oo", "o#ooo#oo#o",
    "o#o oo#o#o", "o#o  ooo#o", "o#oooooo#o", "oo######oo", " oooooooo ",
};

inline QStringList rowsOf(const QPixmap &picture)
{
    const QImage image = picture.toImage().convertToFormat(QImage::Format_ARGB32);
    QStringList rows;
    for (int y = 0; y < image.height(); ++y) {
        QString row;
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            row += qAlpha(pixel) == 0     ? u' '
                   : pixel == 0xff000000u ? u'#'
                   : pixel == 0xffc0c0c0u ? u'.'
                   : pixel == 0xffffffffu ? u'o'
                                          : u'?';
        }
        rows.append(row);
    }
    return rows;
}

inline QString pictureIn(const EditorStage &stage, int row, int column)
{
    const QStringList rows = rowsOf(stage.table().pixmap(row, column));
    return rows.isEmpty()         ? QStringLiteral("none")
           : rows == openCircle   ? QStringLiteral("open")
           : rows == closedCircle ? QStringLiteral("closed")
           : rows == linkArrow    ? QStringLiteral("link")
           : rows == cycleArrow   ? QStringLiteral("cycle")
                                  : QStringLiteral("another");
}

/// The pictures in the Name cells, from the first row to the last.
inline QString playStates(const EditorStage &stage)
{
    QStringList states;
    for (int row = 0; row < stage.table().rowCount(); ++row)
        states.append(pictureIn(stage, row, meta::NameColumn));
    return states.join(u' ');
}
