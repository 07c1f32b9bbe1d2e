#pragma once

#include "EffectText.h"

namespace rehearsal {

/// The text of an effect as it was read, to be saved as it was but for properties changed since.
class VerbatimText
{
public:
    VerbatimText() = default;
    /// @param source the text that the effect is a part of
    VerbatimText(const EffectText &effect, QStringView source);

    bool isEmpty() const { return m_text.isEmpty(); }

    /// The text with these properties written anew: in their place, or behind the start tag.
    QString with(const std::vector<PropertyStore::Property> &changed, int level) const;

private:
    struct Piece
    {
        QString key;
        qsizetype start;
        qsizetype end;
    };

    QString m_text;
    qsizetype m_startTagEnd = 0;
    std::vector<Piece> m_properties;
};

/// The properties of `now` that are not in `before` with the same text.
std::vector<PropertyStore::Property>
changedSince(const std::vector<PropertyStore::Property> &before,
             const std::vector<PropertyStore::Property> &now);

} // namespace rehearsal
