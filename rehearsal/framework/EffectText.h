#pragma once

#include "PropertyStore.h"
#include "TextLimits.h"

#include <QString>

#include <optional>
#include <vector>

class QTextStream;
class QXmlStreamReader;

namespace rehearsal {

/// What stands in the start tag of an effect.
struct EffectIdentity
{
    QString type;
    QString version;
    QString build; ///< decimal
};

/// The text form of an effect, read but not yet built.
///
/// It is one XML element: `<effect type="..." version="..." build="...">` with one `<property
/// key="...">text</property>` a property, then the nested effects. A value with characters that XML
/// cannot carry stands as base64 of its UTF-8 and is marked `encoding="base64"`; such a key is
/// marked `keyencoding="base64"`.
struct EffectText
{
    struct Property
    {
        QString key;
        QString text;
        qint64 startTagEnd = 0; ///< see below
        qint64 end = 0;
    };

    EffectIdentity identity;
    std::vector<Property> properties;
    std::vector<EffectText> nested;
    qint64 line = 0; ///< of the start tag, counted from 1

    // Where the element stood in the text that was read, UTF-16 units.
    qint64 startTagEnd = 0; ///< behind the start tag
    qint64 end = 0;         ///< behind the end tag

    /// The element as it stands in the text that was read.
    QStringView verbatim(QStringView source) const;
};

/// What a text may still hold.
struct EffectBudget
{
    qint64 effects = maximumEffects;
    qint64 properties = maximumProperties;
};

/// Reads one effect; the reader stands on its start tag and is left on its end tag. Unknown
/// attributes and elements are skipped. A fault is raised on the reader, also where the budget does
/// not suffice.
EffectText readEffect(QXmlStreamReader &reader, EffectBudget &budget, int depth = 1);

/// Reads text that is exactly one effect, white space around it allowed; else nothing.
std::optional<EffectText> parseEffect(const QString &text);

/// How many blanks stand before an effect's tags. The deepest effects are not indented any further:
/// their text would be blanks for the most part.
int effectIndentation(int level);

/// Writes one property as an element and a line end.
void appendProperty(QString &out, int level, const QString &key, const QString &text);

/// Writes everything before the effect's nested effects. The indentation follows `level`.
void writeEffectStart(QTextStream &stream, int level, const EffectIdentity &identity,
                      const std::vector<PropertyStore::Property> &properties);
void writeEffectEnd(QTextStream &stream, int level);

/// Text for an XML attribute value between double quotes.
QString escapedAttribute(const QString &text);

} // namespace rehearsal
