#include "ChildTransfer.h"

#include "ChildKeys.h"
#include "EffectList.h"

#include <QTextStream>

#include <initializer_list>
#include <vector>

namespace meta::transfer {

namespace {

QString marker()
{
    return QStringLiteral("<EFFECT-ENTRY>");
}

// All that a rule is made of.
std::vector<const TextKey *> ruleKeys()
{
    std::vector<const TextKey *> found;
    for (const RuleKeys *rule : {&keys::startRule, &keys::endRule}) {
        for (const TextKey *key :
             std::initializer_list<const TextKey *>{&rule->type, &rule->fixedTime, &rule->linkEid,
                                                    &rule->linkStart, &rule->linkOffset})
            found.push_back(key);
    }
    found.push_back(&keys::endCycleCount);
    return found;
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

KeptRules::KeptRules(Effect &child) : m_child(&child)
{
    for (const TextKey *key : ruleKeys())
        m_texts.append(key->readText(child));
}

void KeptRules::restore() const
{
    if (!m_child)
        return;
    qsizetype index = 0;
    for (const TextKey *key : ruleKeys()) {
        const QString &text = m_texts.at(index++);
        if (key->readText(*m_child) != text)
            key->writeText(*m_child, text.isEmpty() ? QStringLiteral("0") : text);
    }
}

} // namespace meta::transfer
