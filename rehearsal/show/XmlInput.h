#pragma once

#include "FileFault.h"
#include "TextLimits.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

class QXmlStreamReader;

namespace rehearsal {

/// A whole file, or nothing and a fault.
std::optional<QByteArray> readWholeFile(const QString &file, FileFault *fault);

/// The text of a whole, well-formed XML document in UTF-8 without a document type, or nothing and a
/// fault; `name` stands for the file in it. What is too large or too deep to be read is refused
/// too.
std::optional<QString> readXmlText(const QByteArray &bytes, const QString &name, FileFault *fault);

/// Reads XML and keeps the first fault, with its line. After a fault the reader is at its end.
class XmlInput
{
public:
    /// @param text what readXmlText() gave; outlives this
    XmlInput(const QString &text, QString name);
    ~XmlInput();
    Q_DISABLE_COPY_MOVE(XmlInput)

    QXmlStreamReader &reader() { return *m_reader; }

    /// Goes to the outermost element; a fault unless that is its name.
    /// @param document what the file should be, for the fault: "a show"
    bool enter(const QString &element, const QString &document);

    /// The present start tag's attribute; empty if it is not there.
    QString attribute(const QString &name) const;

    void fail(qint64 line, const QString &what);
    /// The same, at the present line.
    void fail(const QString &what);

    /// The first fault, be it of this or raised on the reader.
    std::optional<FileFault> fault() const;

private:
    QString m_name;
    std::unique_ptr<QXmlStreamReader> m_reader;
    std::optional<FileFault> m_fault;
};

/// Reads an unsigned 32-bit number that is written in decimal digits alone.
std::optional<quint32> wholeNumber(QStringView text);

} // namespace rehearsal
