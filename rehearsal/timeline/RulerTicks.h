#pragma once

#include <QtGlobal>

#include <functional>

namespace rehearsal {

/// The marks of a time ruler.
struct RulerTicks
{
    qint64 major = 1000; ///< ms from one labelled mark to the next
    qint64 minor = 1000; ///< ms from one mark to the next; divides `major`
    int decimals = 0;    ///< of the seconds in a label

    /// How much room a label with this many decimals takes, pixels.
    using LabelWidth = std::function<double(int decimals)>;

    /// The closest marks whose labels stand clear of each other.
    static RulerTicks fitting(double pixelsPerMs, const LabelWidth &labelWidth);
};

} // namespace rehearsal
