#include "TransparencyText.h"

#include <array>
#include <cmath>

namespace meta {

namespace {

// Texts of the multiples of 1 / Scale from 0.1 x 1000 / Scale up, where three significant digits
// are whole multiples.
template<int Scale>
const QString &sharedText(int multiple)
{
    static const auto texts = [] {
        std::array<QString, 901> made;
        for (int i = 0; i <= 900; ++i)
            made[static_cast<std::size_t>(i)] =
                QString::number(static_cast<double>(100 + i) / Scale, 'g', 3);
        return made;
    }();
    return texts[static_cast<std::size_t>(multiple - 100)];
}

} // namespace

QString transparencyText(double transparency)
{
    if (!(transparency >= 0.01 && transparency <= 1.0))
        return QString::number(transparency, 'g', 3);
    const bool isSmall = transparency < 0.1;
    const double scaled = transparency * (isSmall ? 10000.0 : 1000.0);
    const double whole = std::floor(scaled);
    const double rest = scaled - whole;
    // So close to a half only the exact digits tell which way it goes.
    if (std::abs(rest - 0.5) < 1e-9)
        return QString::number(transparency, 'g', 3);
    const int multiple = static_cast<int>(whole) + (rest > 0.5 ? 1 : 0);
    return isSmall ? sharedText<10000>(multiple) : sharedText<1000>(multiple);
}

} // namespace meta
