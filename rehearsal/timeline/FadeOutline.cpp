#include "FadeOutline.h"

#include <algorithm>

namespace rehearsal {

std::vector<QPointF> fadeOutline(qint64 duration, quint32 fadeIn, quint32 fadeOut)
{
    std::vector<QPointF> points;
    const auto length = double(duration);
    const double rise = fadeIn;
    const double fall = fadeOut;
    const double fallBegin = std::max(0.0, length - fall);
    if (fallBegin > 0) {
        if (rise > 0)
            points.emplace_back(0, 0);
        const double full = std::min(rise, fallBegin);
        points.emplace_back(full, rise > 0 ? full / rise : 1);
        if (full < fallBegin)
            points.emplace_back(fallBegin, 1);
    }
    if (fall > 0) {
        points.emplace_back(fallBegin, std::min(1.0, length / fall));
        points.emplace_back(length, 0);
    } else if (points.empty()) {
        points.emplace_back(0, 1);
        points.emplace_back(length, 1);
    }
    return points;
}

std::vector<QPointF> cutOutline(const std::vector<QPointF> &points, double from, double to)
{
    std::vector<QPointF> part;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const QPointF begin = points[i - 1];
        const QPointF end = points[i];
        if (end.x() < from || begin.x() > to)
            continue;
        const auto at = [&](double x) {
            const double length = end.x() - begin.x();
            const double share = length > 0 ? (x - begin.x()) / length : 0;
            return QPointF(x, begin.y() + share * (end.y() - begin.y()));
        };
        part.push_back(begin.x() < from ? at(from) : begin);
        part.push_back(end.x() > to ? at(to) : end);
    }
    return part;
}

} // namespace rehearsal
