#pragma once

#include <QPixmap>

/// What the columns of a table hold that stands alone.
enum Column { Name, Type, Group, Priority };

inline QPixmap picture(int width = 8, int height = 8)
{
    QPixmap pixmap(width, height);
    pixmap.fill(Qt::red);
    return pixmap;
}
