#pragma once

#include <QStringList>

class Effect;
class EffectList;
class QTextStream;

namespace meta {

/// Children as text on the clipboard: before each child's saved text the marker "<EFFECT-ENTRY>"
/// and a line end; nothing else frames them.
namespace transfer {

void writeChild(QTextStream &stream, Effect &child);
void writeChildren(QTextStream &stream, const EffectList &children);

/// The texts between the markers, in order; text without a marker is one piece. Empty pieces, which
/// no host reads, are left out.
QStringList pieces(const QString &text);

} // namespace transfer
} // namespace meta
