#include "EndingSignals.h"

#include <QTest>

#include <csignal>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

using rehearsal::EndingSignals;

namespace {

/// What waitpid() tells of a process that does this and ends with 0.
int statusOf(const std::function<void()> &work)
{
    const pid_t process = fork();
    if (process == 0) {
        alarm(60);
        work();
        _exit(0);
    }
    int status = 0;
    return waitpid(process, &status, 0) == process ? status : -1;
}

bool isEndedBy(int status, int signal)
{
    return WIFSIGNALED(status) && WTERMSIG(status) == signal;
}

bool isDone(int status)
{
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

class tst_EndingSignals : public QObject
{
    Q_OBJECT

private slots:
    void signalIsToldFromTheEventLoop_data() { addSignals(); }
    void signalIsToldFromTheEventLoop();
    void secondSignalEndsTheProgram_data() { addSignals(); }
    void secondSignalEndsTheProgram();
    void ignoredSignalStaysIgnored_data() { addSignals(); }
    void ignoredSignalStaysIgnored();
    void endsAsTheSignalWould_data() { addSignals(); }
    void endsAsTheSignalWould();

private:
    static void addSignals();
};

void tst_EndingSignals::addSignals()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("hangup") << SIGHUP;
    QTest::newRow("interrupt") << SIGINT;
    QTest::newRow("termination") << SIGTERM;
}

void tst_EndingSignals::signalIsToldFromTheEventLoop()
{
    QFETCH(int, signal);
    std::signal(signal, SIG_DFL);
    const EndingSignals endings;
    QList<int> caught;
    connect(&endings, &EndingSignals::caught, this, [&](int which) { caught.append(which); });
    std::raise(signal);
    QCOMPARE(caught, QList<int>());
    QTRY_COMPARE(caught, QList<int>({signal}));
}

void tst_EndingSignals::secondSignalEndsTheProgram()
{
    QFETCH(int, signal);
    const auto raise = [signal](int times) {
        return statusOf([=] {
            std::signal(signal, SIG_DFL);
            const EndingSignals endings;
            for (int i = 0; i < times; ++i)
                std::raise(signal);
        });
    };
    QVERIFY(isDone(raise(1)));
    QVERIFY(isEndedBy(raise(2), signal));
}

void tst_EndingSignals::ignoredSignalStaysIgnored()
{
    QFETCH(int, signal);
    QVERIFY(isDone(statusOf([signal] {
        std::signal(signal, SIG_IGN);
        const EndingSignals endings;
        std::raise(signal);
        std::raise(signal);
    })));
}

void tst_EndingSignals::endsAsTheSignalWould()
{
    QFETCH(int, signal);
    QVERIFY(isEndedBy(statusOf([signal] { EndingSignals::endBy(signal); }), signal));
}

QTEST_GUILESS_MAIN(tst_EndingSignals)
#include "tst_EndingSignals.moc"
