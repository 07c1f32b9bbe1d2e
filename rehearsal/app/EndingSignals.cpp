#include "EndingSignals.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace rehearsal {

namespace {

constexpr std::array endings{SIGHUP, SIGINT, SIGTERM};

volatile std::sig_atomic_t writeEnd = -1;

extern "C" void tellOfSignal(int signal)
{
    const int error = errno;
    [[maybe_unused]] const ssize_t count = ::write(writeEnd, &signal, sizeof signal);
    errno = error;
}

void handle(int signal, void (*handler)(int))
{
    struct sigaction present = {};
    ::sigaction(signal, nullptr, &present);
    if (present.sa_handler == SIG_IGN)
        return;
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    ::sigaction(signal, &action, nullptr);
}

} // namespace

EndingSignals::EndingSignals(QObject *parent) : QObject(parent)
{
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        return;
    for (const int end : ends) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
        ::fcntl(end, F_SETFL, O_NONBLOCK);
    }
    m_readEnd = ends[0];
    writeEnd = ends[1];
    m_notifier = std::make_unique<QSocketNotifier>(m_readEnd, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &EndingSignals::read);
    for (const int signal : endings)
        handle(signal, tellOfSignal);
}

EndingSignals::~EndingSignals()
{
    if (m_readEnd < 0)
        return;
    for (const int signal : endings)
        handle(signal, SIG_DFL);
    m_notifier.reset();
    ::close(writeEnd);
    ::close(m_readEnd);
}

void EndingSignals::read()
{
    int signal = 0;
    if (::read(m_readEnd, &signal, sizeof signal) == sizeof signal)
        emit caught(signal);
}

void EndingSignals::endBy(int signal)
{
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    std::_Exit(128 + signal); // it was blocked
}

} // namespace rehearsal
