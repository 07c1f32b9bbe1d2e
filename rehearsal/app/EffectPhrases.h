#pragma once

#include "EffectText.h"

namespace rehearsal {

/// The text of a property; nothing if the effect does not have it.
std::optional<QString> propertyOf(const EffectText &effect, QStringView key);

/// What decides when a nested effect starts, in words: "starts 0.5 s after the end of 3".
QString startPhrase(const EffectText &effect);
/// The same for its end: "lasts 2 cycles".
QString endPhrase(const EffectText &effect);

/// Whole milliseconds, given in decimal, in seconds: "1.500 s"; other text as it is, absent
/// text as "-".
QString secondsColumn(const std::optional<QString> &ms);

} // namespace rehearsal
