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

// In an attribute that cannot tell that it is base64, a mark stands for what XML cannot carry.
void appendName(QString &out, QString name)
{
    if (!isXmlText(name)) {
        for (QChar &c : name) {
            if (!isXmlText(QStringView(&c, 1)))
                c = QChar::ReplacementCharacter;
        }
    }
    appendEscaped(out, name, true);
}

QString toBase64(const QString &text)
{
    return QString::fromLatin1(toWideUtf8(text).toBase64());
}

std::optional<QString> fromBase64(const QString &text)
{
    const auto decoded = QByteArray::fromBase64Encoding(text.trimmed().toLatin1(),
                                                        QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return {};
    return fromWideUtf8(*decoded);
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
    const auto isBase64 = [&attributes](const char *mark) {
        return attributes.size() > 1 && attributes.value(QLatin1String(mark)) == u"base64";
    };
    EffectText::Property property;
    property.key = sharedKey(attributes.value(QLatin1String("key")));
    property.startTagEnd = reader.characterOffset();
    property.text = readText(reader);
    property.end = reader.characterOffset();
    const auto decode = [&](const char *mark, QString &text) {
        if (!isBase64(mark) || reader.hasError())
            return;
        if (const std::optional<QString> decoded = fromBase64(text))
            text = *decoded;
        else
            reader.raiseError(
                QStringLiteral("the property \"%1\" is not base64").arg(property.key));
    };
    decode("encoding", property.text);
    decode("keyencoding", property.key);
    if (property.text.size() > maximumTextLength)
        reader.raiseError(QStringLiteral("the property \"%1\" is longer than %2")
                              .arg(property.key)
                              .arg(maximumTextLength));
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
    constexpr int deepest = 32;
    return 2 * (qBound(0, level, deepest) + 1);
}

QStringView EffectText::verbatim(QStringView source) const
{
    // Inside a tag no other '<' may stand.
    const qsizetype start = source.lastIndexOf(u'<', startTagEnd - 1);
    return source.mid(start, end - start);
}

EffectText readEffect(QXmlStreamReader &reader, EffectBudget &budget, int depth)
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
    if (--budget.effects < 0) {
        reader.raiseError(QStringLiteral("there are more than %1 effects").arg(maximumEffects));
        return effect;
    }
    while (reader.readNextStartElement()) {
        if (reader.name() == u"property"
            && reader.attributes().hasAttribute(QLatin1String("key"))) {
            if (--budget.properties < 0)
                reader.raiseError(QStringLiteral("the effects have more than %1 properties")
                                      .arg(maximumProperties));
            else
                effect.properties.push_back(readProperty(reader));
        } else if (reader.name() == u"effect")
            effect.nested.push_back(readEffect(reader, budget, depth + 1));
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
    EffectBudget budget;
    EffectText effect = readEffect(reader, budget);
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
    if (isXmlText(key)) {
        appendEscaped(out, key, true);
    } else {
        out += toBase64(key);
        out += u"\" keyencoding=\"base64";
    }
    if (isXmlText(text)) {
        out += u"\">";
        appendEscaped(out, text, false);
    } else {
        out += u"\" encoding=\"base64\">";
        out += toBase64(text);
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
    appendName(out, identity.type);
    out += u"\" version=\"";
    appendName(out, identity.version);
    out += u"\" build=\"";
    appendName(out, identity.build);
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
