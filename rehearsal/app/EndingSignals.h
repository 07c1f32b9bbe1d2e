#pragma once

#include <QObject>

#include <memory>

class QSocketNotifier;

namespace rehearsal {

/// Tells from the event loop of the signals that ask the program to end: those of a terminal that
/// is closed, of Ctrl+C in it, and of "kill". The same one again ends the program at once, and one
/// that the program was started to ignore stays ignored.
class EndingSignals final : public QObject
{
    Q_OBJECT

public:
    /// One at a time.
    explicit EndingSignals(QObject *parent = nullptr);
    ~EndingSignals() override;

    /// Ends the program as the signal would have done.
    [[noreturn]] static void endBy(int signal);

signals:
    void caught(int signal);

private:
    void read();

    int m_readEnd = -1; ///< of the pipe that the handler writes to; -1 if there is none
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace rehearsal
