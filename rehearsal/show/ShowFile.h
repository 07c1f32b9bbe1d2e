#pragma once

#include "Show.h"

class QString;

namespace rehearsal {

/// Reads a show; null and a fault when the file cannot be read or is not a whole, sound show.
std::unique_ptr<Show> readShow(const QString &file, const Show::TypeSetup &addTypes,
                               FileFault *fault);

/// Reads a show from text; `name` stands for the file in a fault.
std::unique_ptr<Show> parseShow(const QByteArray &text, const QString &name,
                                const Show::TypeSetup &addTypes, FileFault *fault);

/// Saves through a temporary file and an atomic replace: the file is the old one or the new one,
/// whole, also after a power failure. False and a fault when it could not be written.
bool saveShow(const Show &show, const QString &file, FileFault *fault);

/// The same with the text of a show.
bool saveText(const QByteArray &text, const QString &file, FileFault *fault);

/// The show's text form.
QString showText(const Show &show);

/// The text form of what the show is, without traces of its being played: "transparency" and
/// "priority" are as they were set outside frames. UTF-8.
QByteArray definitionText(const Show &show);

} // namespace rehearsal
