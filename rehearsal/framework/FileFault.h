#pragma once

#include <QString>

namespace rehearsal {

/// What is wrong with a file, in one line.
struct FileFault
{
    QString file;
    qint64 line = 0; ///< counted from 1; 0 where the fault has no line
    QString what;

    /// "file:line: what", or "file: what" where there is no line.
    QString message() const
    {
        return line > 0 ? QStringLiteral("%1:%2: %3").arg(file).arg(line).arg(what)
                        : QStringLiteral("%1: %2").arg(file, what);
    }
};

} // namespace rehearsal
