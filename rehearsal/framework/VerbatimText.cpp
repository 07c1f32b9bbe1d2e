#include "VerbatimText.h"

#include <algorithm>

namespace rehearsal {

namespace {

QString element(int level, const PropertyStore::Property &property)
{
    QString text;
    appendProperty(text, level, property.key, property.text);
    return text.trimmed();
}

} // namespace

VerbatimText::VerbatimText(const EffectText &effect, QStringView source)
    : m_text(effect.verbatim(source).toString())
{
    const qsizetype start = effect.end - m_text.size();
    m_startTagEnd = effect.startTagEnd - start;
    for (const EffectText::Property &property : effect.properties) {
        const qsizetype tag = source.lastIndexOf(u'<', property.startTagEnd - 1);
        m_properties.push_back({property.key, tag - start, property.end - start});
    }
}

QString VerbatimText::with(const std::vector<PropertyStore::Property> &changed, int level) const
{
    QString text;
    qsizetype done = m_startTagEnd;
    QString added;
    for (const PropertyStore::Property &property : changed) {
        const bool isThere =
            std::any_of(m_properties.begin(), m_properties.end(),
                        [&property](const Piece &piece) { return piece.key == property.key; });
        if (!isThere)
            added += u'\n' + QString(effectIndentation(level + 1), u' ') + element(level, property);
    }
    // An element without content has to be opened for what is added.
    const QStringView startTag = QStringView(m_text).left(m_startTagEnd);
    const bool isClosed = startTag.endsWith(u"/>");
    if (isClosed && !added.isEmpty()) {
        return startTag.chopped(2).toString() + u'>' + added + u'\n'
               + QString(effectIndentation(level), u' ') + QStringLiteral("</effect>");
    }
    text = startTag.toString() + added;
    for (const Piece &piece : m_properties) {
        const auto found = std::find_if(changed.begin(), changed.end(),
                                        [&piece](const PropertyStore::Property &property) {
                                            return property.key == piece.key;
                                        });
        if (found == changed.end())
            continue;
        text += QStringView(m_text).mid(done, piece.start - done);
        text += element(level, *found);
        done = piece.end;
    }
    text += QStringView(m_text).mid(done);
    return text;
}

std::vector<PropertyStore::Property>
changedSince(const std::vector<PropertyStore::Property> &before,
             const std::vector<PropertyStore::Property> &now)
{
    QHash<QString, QString> texts;
    for (const PropertyStore::Property &property : before)
        texts.insert(property.key, property.text);
    std::vector<PropertyStore::Property> changed;
    for (const PropertyStore::Property &property : now) {
        const auto old = texts.constFind(property.key);
        if (old == texts.constEnd() || *old != property.text)
            changed.push_back(property);
    }
    return changed;
}

} // namespace rehearsal
