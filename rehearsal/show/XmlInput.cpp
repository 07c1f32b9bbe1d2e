#include "XmlInput.h"

#include "XmlBurden.h"

#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>

#include <algorithm>

namespace rehearsal {

namespace {

qint64 firstLineOutsideUtf8(const QByteArray &bytes)
{
    qint64 line = 1;
    for (qsizetype start = 0; start < bytes.size(); ++line) {
        qsizetype end = bytes.indexOf('\n', start);
        if (end < 0)
            end = bytes.size();
        if (!QByteArrayView(bytes).sliced(start, end - start).isValidUtf8())
            return line;
        start = end + 1;
    }
    return line;
}

// A fault is told in one line, whatever the file's texts hold that it quotes.
FileFault faultAt(const QString &name, qint64 line, const QString &what)
{
    constexpr qsizetype longest = 300;
    QString shown = what.left(longest + 1).simplified();
    if (shown.size() > longest)
        shown = shown.left(longest) + QStringLiteral("...");
    return {name, line, shown};
}

QString tooLarge()
{
    return QStringLiteral("the file is larger than %1 MiB").arg(maximumFileSize / (1024 * 1024));
}

QString faultOf(const QXmlStreamReader &reader)
{
    switch (reader.error()) {
    case QXmlStreamReader::PrematureEndOfDocumentError:
        return QStringLiteral("the file is cut short");
    case QXmlStreamReader::CustomError: return reader.errorString();
    default: return QStringLiteral("this is not XML: %1").arg(reader.errorString());
    }
}

} // namespace

std::optional<QByteArray> readWholeFile(const QString &file, FileFault *fault)
{
    const auto fail = [&](const QString &what) {
        *fault = {file, 0, what};
        return std::nullopt;
    };
    if (QFileInfo(file).isDir())
        return fail(QStringLiteral("this is a directory"));
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("the file cannot be read: %1").arg(input.errorString()));
    if (input.size() > maximumFileSize)
        return fail(tooLarge());
    // In pieces, because the size of what is not a regular file is not known beforehand.
    QByteArray bytes;
    while (bytes.size() <= maximumFileSize) {
        const QByteArray piece = input.read(1024 * 1024);
        if (piece.isEmpty())
            break;
        bytes += piece;
    }
    if (input.error() != QFileDevice::NoError)
        return fail(QStringLiteral("the file cannot be read: %1").arg(input.errorString()));
    if (bytes.size() > maximumFileSize)
        return fail(tooLarge());
    return bytes;
}

std::optional<QString> readXmlText(const QByteArray &bytes, const QString &name, FileFault *fault)
{
    const auto fail = [&](qint64 line, const QString &what) {
        *fault = faultAt(name, line, what);
        return std::nullopt;
    };
    if (bytes.isEmpty())
        return fail(0, QStringLiteral("the file is empty"));
    if (bytes.size() > maximumFileSize)
        return fail(0, tooLarge());
    if (!bytes.isValidUtf8())
        return fail(firstLineOutsideUtf8(bytes), QStringLiteral("this is not text in UTF-8"));
    QString text = QString::fromUtf8(bytes);
    if (text.startsWith(QChar::ByteOrderMark))
        text.remove(0, 1);
    if (const std::optional<XmlBurden> burden = findBurden(text))
        return fail(burden->line, burden->what);

    // The whole document is looked through before any of it is used: the reader would skip a
    // document type inside an element, and nothing is to be built from a file that is cut short.
    QXmlStreamReader reader(text);
    reader.setNamespaceProcessing(false);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::DTD)
            reader.raiseError(QStringLiteral("a document type is not allowed here"));
    }
    if (reader.hasError())
        return fail(reader.lineNumber(), faultOf(reader));
    return text;
}

XmlInput::XmlInput(const QString &text, QString name)
    : m_name(std::move(name)), m_reader(std::make_unique<QXmlStreamReader>(text))
{
    m_reader->setNamespaceProcessing(false);
}

XmlInput::~XmlInput() = default;

bool XmlInput::enter(const QString &element, const QString &document)
{
    m_reader->readNextStartElement();
    if (m_reader->name() == element)
        return true;
    fail(QStringLiteral("this is not %1: its outermost element is \"%2\"")
             .arg(document, m_reader->name()));
    return false;
}

QString XmlInput::attribute(const QString &name) const
{
    return m_reader->attributes().value(name).toString();
}

void XmlInput::fail(qint64 line, const QString &what)
{
    if (fault())
        return;
    m_fault = faultAt(m_name, line, what);
    m_reader->raiseError(what);
}

void XmlInput::fail(const QString &what)
{
    fail(m_reader->lineNumber(), what);
}

std::optional<FileFault> XmlInput::fault() const
{
    if (m_fault || !m_reader->hasError())
        return m_fault;
    return faultAt(m_name, m_reader->lineNumber(), faultOf(*m_reader));
}

std::optional<quint32> wholeNumber(QStringView text)
{
    const bool isDigits =
        std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
    bool ok = false;
    const quint32 number = text.toUInt(&ok);
    if (!ok || !isDigits)
        return {};
    return number;
}

} // namespace rehearsal
