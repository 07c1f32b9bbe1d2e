#pragma once

#include "SingleLine.h"

class QTextStream;

namespace rehearsal {

enum ExitStatus {
    Done = 0,
    Fault = 1,     ///< a file or its content is at fault
    WrongUsage = 2 ///< the call makes no sense
};

/// What a command says: its result on the one stream, faults and warnings on the other.
class Console
{
public:
    /// The streams are not owned.
    /// @param showsProgress whether `errors` is watched by somebody while a command runs
    Console(QTextStream &out, QTextStream &errors, bool showsProgress = false);

    QTextStream &out() { return m_out; }
    bool showsProgress() const { return m_showsProgress; }

    /// One line on the error stream.
    void warn(const QString &message);
    /// The same, for a command's last word.
    ExitStatus fail(const QString &message);

    /// Replaces the last line of the error stream, which has no end yet; empty text takes it away.
    void showPassing(const QString &text);

private:
    QTextStream &m_out;
    QTextStream &m_errors;
    bool m_showsProgress;
};

} // namespace rehearsal
