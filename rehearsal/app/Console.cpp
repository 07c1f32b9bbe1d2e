#include "Console.h"

#include <QTextStream>

namespace rehearsal {

Console::Console(QTextStream &out, QTextStream &errors, bool showsProgress)
    : m_out(out), m_errors(errors), m_showsProgress(showsProgress)
{
}

void Console::warn(const QString &message)
{
    m_errors << singleLine(message) << '\n';
    m_errors.flush();
}

ExitStatus Console::fail(const QString &message)
{
    warn(message);
    return Fault;
}

void Console::showPassing(const QString &text)
{
    m_errors << "\r\x1b[K" << text;
    m_errors.flush();
}

} // namespace rehearsal
