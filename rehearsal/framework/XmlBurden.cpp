#include "XmlBurden.h"

#include "TextLimits.h"

#include <algorithm>

namespace rehearsal {

namespace {

/// Walks over a text from tag to tag.
class TagWalk
{
public:
    explicit TagWalk(QStringView text) : m_text(text) {}

    std::optional<XmlBurden> firstBurden();

private:
    /// Whether this stands here and is skipped to the end that it has.
    bool skips(QStringView start, QStringView end);
    void skipPast(QStringView end);
    std::optional<XmlBurden> burdenOfTag();
    /// Skips a tag.
    void skipTag();
    XmlBurden burden(const QString &what) const;

    QStringView m_text;
    qsizetype m_place = 0;
    qint64 m_depth = 0;

    // Of the last tag, what stands in quotes.
    int m_values = 0;
    qsizetype m_longestValue = 0;
};

std::optional<XmlBurden> TagWalk::firstBurden()
{
    for (;;) {
        m_place = m_text.indexOf(u'<', m_place);
        if (m_place < 0)
            return {};
        if (skips(u"<!--", u"-->") || skips(u"<![CDATA[", u"]]>") || skips(u"<?", u"?>"))
            continue;
        if (std::optional<XmlBurden> found = burdenOfTag())
            return found;
    }
}

std::optional<XmlBurden> TagWalk::burdenOfTag()
{
    const qsizetype start = m_place;
    skipTag();
    const QStringView tag = m_text.sliced(start, m_place - start);
    if (m_values > maximumAttributes)
        return burden(
            QStringLiteral("an element has more than %1 attributes").arg(maximumAttributes));
    if (m_longestValue > maximumTextLength)
        return burden(QStringLiteral("an attribute is longer than %1").arg(maximumTextLength));
    if (tag.startsWith(u"</"))
        --m_depth;
    else if (!tag.endsWith(u"/>"))
        ++m_depth;
    if (m_depth > maximumElementDepth)
        return burden(
            QStringLiteral("elements are nested deeper than %1").arg(maximumElementDepth));
    return {};
}

bool TagWalk::skips(QStringView start, QStringView end)
{
    if (!m_text.sliced(m_place).startsWith(start))
        return false;
    m_place += start.size();
    skipPast(end);
    return true;
}

void TagWalk::skipPast(QStringView end)
{
    const qsizetype found = m_text.indexOf(end, m_place);
    m_place = found < 0 ? m_text.size() : found + end.size();
}

void TagWalk::skipTag()
{
    m_values = 0;
    m_longestValue = 0;
    for (++m_place; m_place < m_text.size(); ++m_place) {
        const QChar c = m_text[m_place];
        if (c == u'>') {
            ++m_place;
            break;
        }
        if (c != u'"' && c != u'\'')
            continue;
        ++m_values;
        const qsizetype end = m_text.indexOf(c, m_place + 1);
        const qsizetype place = end < 0 ? m_text.size() - 1 : end;
        m_longestValue = std::max(m_longestValue, place - m_place - 1);
        m_place = place;
    }
}

XmlBurden TagWalk::burden(const QString &what) const
{
    const QStringView before = m_text.first(m_place);
    return {1 + std::count(before.begin(), before.end(), u'\n'), what};
}

} // namespace

std::optional<XmlBurden> findBurden(QStringView text)
{
    return TagWalk(text).firstBurden();
}

} // namespace rehearsal
