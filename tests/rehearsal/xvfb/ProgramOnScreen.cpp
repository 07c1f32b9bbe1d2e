#include "ProgramOnScreen.h"

#include <QDir>
#include <QSettings>
#include <QTest>

#include <csignal>

namespace {

constexpr int patienceMs = 60000;

const QString mainWords = QStringLiteral(" – Rehearsal");

void set(const QString &home, const QString &key, const QVariant &value)
{
    QSettings(home + QStringLiteral("/config/rehearsal/rehearsal.conf"), QSettings::IniFormat)
        .setValue(key, value);
}

} // namespace

ProgramOnScreen::ProgramOnScreen(const QString &home, const QStringList &arguments)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/data"));
    m_process.setProcessEnvironment(environment);
    m_process.setWorkingDirectory(home);
    ScreenUser::moveAway();
    m_process.start(QStringLiteral(REHEARSAL_PROGRAM), arguments);
    m_process.waitForStarted(patienceMs);
}

ProgramOnScreen::~ProgramOnScreen()
{
    if (QTest::currentTestFailed())
        picture().save(QStringLiteral("%1.png").arg(QLatin1String(QTest::currentTestFunction())));
    kill();
}

void ProgramOnScreen::setAutosaveSeconds(const QString &home, int seconds)
{
    set(home, QStringLiteral("autosaveSeconds"), seconds);
}

void ProgramOnScreen::setAppearance(const QString &home, const QString &name)
{
    set(home, QStringLiteral("appearance"), name);
}

ScreenUser::Window ProgramOnScreen::find(const QString &words) const
{
    if (!isRunning())
        return 0;
    const QList<ScreenUser::Window> windows = ScreenUser::windowsOf(m_process.processId());
    for (const ScreenUser::Window window : windows) {
        if (ScreenUser::title(window).contains(words))
            return window;
    }
    return 0;
}

bool ProgramOnScreen::goTo(const QString &words)
{
    return QTest::qWaitFor(
        [this, &words] {
            const ScreenUser::Window window = find(words);
            return window != 0 && ScreenUser::focus(window);
        },
        patienceMs);
}

bool ProgramOnScreen::goToMain()
{
    if (!goTo(mainWords))
        return false;
    m_area = ScreenUser::area(find(mainWords));
    return true;
}

bool ProgramOnScreen::waitUntilGone(const QString &words)
{
    return QTest::qWaitFor([this, &words] { return !has(words); }, patienceMs);
}

QString ProgramOnScreen::title() const
{
    const ScreenUser::Window window = find(mainWords);
    return window == 0 ? QString() : ScreenUser::title(window);
}

bool ProgramOnScreen::waitForChange(const QRect &part, const QImage &before) const
{
    const QImage partBefore = before.copy(part);
    return QTest::qWaitFor([&] { return picture().copy(part) != partBefore; }, patienceMs);
}

void ProgramOnScreen::click(QPoint place) const
{
    ScreenUser::click(m_area.topLeft() + place);
}

void ProgramOnScreen::kill()
{
    m_process.kill();
    m_process.waitForFinished(patienceMs);
}

int ProgramOnScreen::endBy(int signal)
{
    ::kill(static_cast<pid_t>(m_process.processId()), signal);
    const bool isEnded = m_process.waitForFinished(patienceMs);
    return isEnded && m_process.exitStatus() == QProcess::CrashExit ? m_process.exitCode() : 0;
}

int ProgramOnScreen::waitForEnd()
{
    const bool isEnded =
        m_process.state() == QProcess::NotRunning || m_process.waitForFinished(patienceMs);
    return isEnded && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}
