#pragma once

#include <QString>

#include <optional>

namespace rehearsal {

/// What makes a text too costly for an XML reader.
struct XmlBurden
{
    qint64 line = 0; ///< counted from 1
    QString what;
};

/// The first burden of a text, to be asked for before an XML reader gets the text; nothing if it
/// can be read in reasonable time and memory. Whether it is XML at all is left to the reader.
std::optional<XmlBurden> findBurden(QStringView text);

} // namespace rehearsal
