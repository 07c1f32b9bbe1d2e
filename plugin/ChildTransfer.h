#pragma once

#include "Effect.h"

#include <QPointer>
#include <QStringList>

class EffectList;
class QTextStream;

namespace meta {

/// Children as text on the clipboard: before each child's saved text the marker "<EFFECT-ENTRY>" and
/// a line end; nothing else frames them.
namespace transfer {

void writeChild(QTextStream &stream, Effect &child);
void writeChildren(QTextStream &stream, const EffectList &children);

/// The texts between the markers, in order; text without a marker is one piece. Empty pieces, which
/// no host reads, are left out.
QStringList pieces(const QString &text);

/// The rules of a child as they came, for a time in which an open editor writes back what it shows:
/// it may not show a link to a child that follows in the same text, or to none.
class KeptRules
{
public:
    /// The child may go before this object.
    explicit KeptRules(Effect &child);

    /// Writes them again. What was not there reads as 0 again.
    void restore() const;

private:
    QPointer<Effect> m_child;
    QStringList m_texts;
};

} // namespace transfer
} // namespace meta
