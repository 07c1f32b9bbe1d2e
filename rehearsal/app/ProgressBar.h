#pragma once

#include <QElapsedTimer>

namespace rehearsal {

class Console;

/// Tells how far a long command is, if somebody watches; gone when the command ends.
class ProgressBar
{
public:
    /// The console is not owned.
    ProgressBar(Console &console, qint64 total);
    ~ProgressBar();
    Q_DISABLE_COPY_MOVE(ProgressBar)

    void update(qint64 done);

private:
    Console &m_console;
    qint64 m_total;
    QElapsedTimer m_sinceShown;
    bool m_isShown = false;
};

} // namespace rehearsal
