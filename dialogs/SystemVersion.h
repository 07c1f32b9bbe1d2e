#pragma once

#include <QVersionNumber>

#include <functional>
#include <optional>

namespace meta {

/// Answers a selector of four characters, the first in the highest byte; nothing when it fails.
using SystemQuery = std::function<std::optional<qint32>(quint32 selector)>;

/// Major, minor and bug-fix number of the system. What cannot be learnt is 10.0.
QVersionNumber systemVersion(const SystemQuery &query);

/// Whether a system of this version has the alert and the file panels that we use.
bool hasNativeDialogs(const QVersionNumber &version);

} // namespace meta
