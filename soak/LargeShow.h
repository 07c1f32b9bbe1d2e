#pragma once

#include <QByteArray>

namespace soak {

/// How large a made-up show is. Its lights form a grid and its groups are neighbouring lights.
struct LargeShow
{
    int lights = 100;
    int groups = 10;
    int lightsOfGroup = 10;
    int children = 100;     ///< of the meta effect at the top, of all types and kinds of rules
    int nested = 0;         ///< meta effects beside them
    int nestedChildren = 0; ///< in each of those
    int depth = 1;      ///< meta effects in each other, the one at the top counted, 2 children each
    int childMs = 2000; ///< about how long a child lasts; all play within some two minutes

    /// The show's text, in which the times are not yet resolved.
    QByteArray text() const;
};

} // namespace soak
