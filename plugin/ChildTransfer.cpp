#include "ChildTransfer.h"

#include "Effect.h"
#include "EffectList.h"

#include <QTextStream>

namespace meta::transfer {

namespace {

QString marker()
{
    return QStringLiteral("<EFFECT-ENTRY>");
}

} // namespace

void writeChild(QTextStream &stream, Effect &child)
{
    stream << marker() << Qt::endl;
    child.save(stream);
}

void writeChildren(QTextStream &stream, const EffectList &children)
{
    for (Effect *child : children)
        writeChild(stream, *child);
}

QStringList pieces(const QString &text)
{
    return text.split(marker(), Qt::SkipEmptyParts);
}

} // namespace meta::transfer
