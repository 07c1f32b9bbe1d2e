#include "EffectText.h"

#include <QSet>
#include <QStringDecoder>
#include <QTextStream>
#include <QXmlStreamReader>

namespace rehearsal {

namespace {

bool isXmlText(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate()) {
            if (i + 1 == text.size() || !text[i + 1].isLowSurrogate())
                return false;
            ++i;
        } else if (c.isLowSurrogate() || c.unicode() >= 0xFFFE
                   || (c.unicode() < 0x20 && c != u'\t' && c != u'\n' && c != u'\r')) {
            return false;
        }
    }
    return true;
}

// UTF-8, with a lone surrogate written as if it were a character, so that no text is lost.
QByteArray toWideUtf8(QStringView text)
{
    QByteArray bytes;
    qsizetype done = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            ++i;
        } else if (c.isSurrogate()) {
            bytes += text.mid(done, i - done).toUtf8();
            const auto unit = c.unicode();
            bytes += static_cast<char>(0xE0 | (unit >> 12));
            bytes += static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
            bytes += static_cast<char>(0x80 | (unit & 0x3F));
            done = i + 1;
        }
    }
    return bytes + text.mid(done).toUtf8();
}

QString fromWideUtf8(const QByteArray &bytes)
{
    // A byte order mark is a character of the value like any other.
    QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    QString text;
    qsizetype done = 0;
    for (qsizetype i = 0; i + 2 < bytes.size(); ++i) {
        const auto first = static_cast<uchar>(bytes[i]);
        const auto second = static_cast<uchar>(bytes[i + 1]);
        const auto third = static_cast<uchar>(bytes[i + 2]);
        if (first != 0xED || second < 0xA0 || second > 0xBF || (third & 0xC0) != 0x80)
            continue;
        text += decode(bytes.mid(done, i - done));
        text += QChar(static_cast<char16_t>(0xD000 | ((second & 0x3F) << 6) | (third & 0x3F)));
        i += 2;
        done = i + 1;
    }
    text += decode(bytes.mid(done));
    return text;
}

void appendEscaped(QString &out, QStringView text, bool isAttribute)
{
    for (const QChar c : text) {
        switch (c.unicode()) {
        case u'&': out += u"&amp;"; break;
        case u'<': out += u"&lt;"; break;
        case u'>': out += u"&gt;"; break;
        case u'\r': out += u"&#13;"; break;
        case u'"': out += isAttribute ? QStringView(u"&quot;") : QStringView(u"\""); break;
        case u'\n': out += isAttribute ? QStringView(u"&#10;") : QStringView(u"\n"); break;
        case u'\t': out += isAttribute ? QStringView(u"&#9;") : QStringView(u"\t"); break;
        default: out += c;
        }
    }
}

void appendIndentation(QString &out, int level)
{
    out.resize(out.size() + effectIndentation(level), u' ');
}

// Every effect has the same few keys; they share their texts.
QString sharedKey(QStringView key)
{
    static QSet<QString> keys;
    constexpr qsizetype keptAtMost = 256;
    QString text = key.toString();
    const auto kept = keys.constFind(text);
    if (kept != keys.constEnd())
        return *kept;
    if (keys.size() < keptAtMost)
        keys.insert(text);
    return text;
}

// The text of an element, without that of elements in it.
QString readText(QXmlStreamReader &reader)
{
    QString text;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isEndElement())
            break;
        if (reader.isStartElement())
            reader.skipCurrentElement();
        else if (reader.isCharacters() || reader.isEntityReference())
            text += reader.text();
    }
    return text;
}

EffectText::Property readProperty(QXmlStreamReader &reader)
{
    const QXmlStreamAttributes attributes = reader.attributes();
    EffectText::Property property;
    property.key = sharedKey(attributes.value(QLatin1String("key")));
    property.startTagEnd = reader.characterOffset();
    const bool isBase64 =
        attributes.size() > 1 && attributes.value(QLatin1String("encoding")) == u"base64";
    property.text = readText(reader);
    property.end = reader.characterOffset();
    if (!isBase64 || reader.hasError())
        return property;
    const auto decoded = QByteArray::fromBase64Encoding(property.text.trimmed().toLatin1(),
                                                        QByteArray::AbortOnBase64DecodingErrors);
    if (decoded)
        property.text = fromWideUtf8(*decoded);
    else
        reader.raiseError(QStringLiteral("the property \"%1\" is not base64").arg(property.key));
    return property;
}

// The reader skips a document type silently, even inside an element.
bool hasDocumentType(const QString &text)
{
    if (!text.contains(u"<!DOCTYPE"))
        return false;
    QXmlStreamReader reader(text);
    reader.setNamespaceProcessing(false);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::DTD)
            return true;
    }
    return false;
}

} // namespace

int effectIndentation(int level)
{
    return 2 * (qBound(0, level, maximumEffectDepth) + 1);
}

QStringView EffectText::verbatim(QStringView source) const
{
    // Inside a tag no other '<' may stand.
    const qsizetype start = source.lastIndexOf(u'<', startTagEnd - 1);
    return source.mid(start, end - start);
}

EffectText readEffect(QXmlStreamReader &reader, int depth)
{
    EffectText effect;
    effect.line = reader.lineNumber();
    effect.startTagEnd = reader.characterOffset();
    const QXmlStreamAttributes attributes = reader.attributes();
    effect.identity = {attributes.value(QLatin1String("type")).toString(),
                       attributes.value(QLatin1String("version")).toString(),
                       attributes.value(QLatin1String("build")).toString()};
    if (depth > maximumEffectDepth) {
        reader.raiseError(
            QStringLiteral("effects are nested deeper than %1").arg(maximumEffectDepth));
        return effect;
    }
    while (reader.readNextStartElement()) {
        if (reader.name() == u"property" && reader.attributes().hasAttribute(QLatin1String("key")))
            effect.properties.push_back(readProperty(reader));
        else if (reader.name() == u"effect")
            effect.nested.push_back(readEffect(reader, depth + 1));
        else
            reader.skipCurrentElement();
    }
    effect.end = reader.characterOffset();
    return effect;
}

std::optional<EffectText> parseEffect(const QString &text)
{
    if (hasDocumentType(text))
        return {};
    QXmlStreamReader reader(text);
    reader.setNamespaceProcessing(false);
    if (!QStringView(text).trimmed().startsWith(u"<effect") || !reader.readNextStartElement()
        || reader.name() != u"effect")
        return {};
    EffectText effect = readEffect(reader);
    while (!reader.atEnd())
        reader.readNext();
    if (reader.hasError() || !QStringView(text).mid(effect.end).trimmed().isEmpty())
        return {};
    return effect;
}

void appendProperty(QString &out, int level, const QString &key, const QString &text)
{
    appendIndentation(out, level + 1);
    out += u"<property key=\"";
    appendEscaped(out, key, true);
    if (isXmlText(text)) {
        out += u"\">";
        appendEscaped(out, text, false);
    } else {
        out += u"\" encoding=\"base64\">";
        out += QString::fromLatin1(toWideUtf8(text).toBase64());
    }
    out += u"</property>\n";
}

void writeEffectStart(QTextStream &stream, int level, const EffectIdentity &identity,
                      const std::vector<PropertyStore::Property> &properties)
{
    QString out;
    out.reserve(static_cast<qsizetype>(64 + 64 * properties.size()));
    appendIndentation(out, level);
    out += u"<effect type=\"";
    appendEscaped(out, identity.type, true);
    out += u"\" version=\"";
    appendEscaped(out, identity.version, true);
    out += u"\" build=\"";
    appendEscaped(out, identity.build, true);
    out += u"\">\n";
    for (const PropertyStore::Property &property : properties)
        appendProperty(out, level, property.key, property.text);
    stream << out;
}

void writeEffectEnd(QTextStream &stream, int level)
{
    QString out;
    appendIndentation(out, level);
    out += u"</effect>\n";
    stream << out;
}

QString escapedAttribute(const QString &text)
{
    QString out;
    appendEscaped(out, text, true);
    return out;
}

} // namespace rehearsal
