#include "LightSpacing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace rehearsal {

namespace {

constexpr double loneSpacing = 0.1;
// Places looked at in one cell: a crowd at one spot must not take the square of its number.
constexpr size_t mostOfACell = 32;
constexpr size_t mostAsked = 1000;
constexpr double same = 1e-6; // closer places are one

/// Places sorted into cells, some four to a cell when they are spread evenly.
class PlaceGrid
{
public:
    explicit PlaceGrid(const std::vector<QPointF> &places)
    {
        const auto [left, right] = std::minmax_element(
            places.begin(), places.end(), [](auto &a, auto &b) { return a.x() < b.x(); });
        const auto [top, bottom] = std::minmax_element(
            places.begin(), places.end(), [](auto &a, auto &b) { return a.y() < b.y(); });
        m_origin = {left->x(), top->y()};
        const double width = right->x() - left->x();
        const double height = bottom->y() - top->y();
        const auto count = static_cast<double>(places.size());
        // Twice the spacing of a grid or a row: the next one is in a cell around.
        m_cell =
            std::max({2 * std::sqrt(width * height / count), 2 * (width + height) / count, same});
        m_columns = index(width) + 1;
        m_rows = index(height) + 1;
        m_cells.resize(static_cast<size_t>(m_columns) * static_cast<size_t>(m_rows));
        for (const QPointF place : places)
            cell(column(place), row(place)).push_back(place);
    }

    /// To the next other place; none when there is none in the cells around.
    std::optional<double> distanceToNext(QPointF place) const
    {
        double nearest = std::numeric_limits<double>::infinity();
        for (int y = std::max(0, row(place) - 1); y <= std::min(m_rows - 1, row(place) + 1); ++y)
            for (int x = std::max(0, column(place) - 1);
                 x <= std::min(m_columns - 1, column(place) + 1); ++x)
                nearest = std::min(nearest, nearestIn(cell(x, y), place));
        return std::isinf(nearest) ? std::nullopt : std::optional(nearest);
    }

private:
    static double nearestIn(const std::vector<QPointF> &places, QPointF place)
    {
        double nearest = std::numeric_limits<double>::infinity();
        for (size_t i = 0; i < std::min(places.size(), mostOfACell); ++i) {
            const double distance =
                std::hypot(places[i].x() - place.x(), places[i].y() - place.y());
            if (distance > same)
                nearest = std::min(nearest, distance);
        }
        return nearest;
    }

    int index(double distance) const { return static_cast<int>(distance / m_cell); }
    int column(QPointF place) const { return index(place.x() - m_origin.x()); }
    int row(QPointF place) const { return index(place.y() - m_origin.y()); }
    size_t cellIndex(int column, int row) const
    {
        return static_cast<size_t>(row) * static_cast<size_t>(m_columns)
               + static_cast<size_t>(column);
    }
    const std::vector<QPointF> &cell(int column, int row) const
    {
        return m_cells[cellIndex(column, row)];
    }
    std::vector<QPointF> &cell(int column, int row) { return m_cells[cellIndex(column, row)]; }

    QPointF m_origin;
    double m_cell;
    int m_columns;
    int m_rows;
    std::vector<std::vector<QPointF>> m_cells;
};

} // namespace

double usualSpacing(std::vector<QPointF> places)
{
    const auto key = [](QPointF place) { return std::pair(place.x(), place.y()); };
    std::sort(places.begin(), places.end(),
              [key](QPointF a, QPointF b) { return key(a) < key(b); });
    places.erase(std::unique(places.begin(), places.end(),
                             [key](QPointF a, QPointF b) { return key(a) == key(b); }),
                 places.end());
    if (places.size() < 2)
        return loneSpacing;
    const PlaceGrid grid(places);
    std::vector<double> distances;
    const size_t step = places.size() / mostAsked + 1;
    for (size_t i = 0; i < places.size(); i += step) {
        if (const std::optional<double> distance = grid.distanceToNext(places[i]))
            distances.push_back(*distance);
    }
    if (distances.empty())
        return loneSpacing;
    const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
    std::nth_element(distances.begin(), middle, distances.end());
    return *middle;
}

} // namespace rehearsal
