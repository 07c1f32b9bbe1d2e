#pragma once

#include <QtGlobal>

/// What a show, a sequence or an effect from the clipboard may hold. Beyond, it is refused as a
/// whole, so that no text, however it was made, takes unbounded memory or time.
namespace rehearsal {

/// Of a file, bytes; of a text from the clipboard, UTF-16 units.
constexpr qint64 maximumFileSize = 256 * 1024 * 1024;

/// Nested effects deeper than this are refused, in a show as on the clipboard.
constexpr int maximumEffectDepth = 256;
/// Effects of one text, nested ones counted; on a map, effects that a text may still add to.
constexpr qint64 maximumEffects = 250'000;
/// Properties of all effects of one text; for a sequence, values of all its settings.
constexpr qint64 maximumProperties = 6'000'000;

/// Of one property or attribute, UTF-16 units.
constexpr qint64 maximumTextLength = 32 * 1024 * 1024;

constexpr qint64 maximumLights = 100'000;
constexpr qint64 maximumGroups = 100'000;
/// Lights of all groups, one counted for each group that names it.
constexpr qint64 maximumGroupLights = 10'000'000;

/// Attributes of one element: the time to read them grows with their square.
constexpr int maximumAttributes = 1000;
/// Elements in one another, of whatever name.
constexpr int maximumElementDepth = 250'000;

} // namespace rehearsal
