#pragma once

#include "ScreenUser.h"

#include <QProcess>

/// The program, started as a user starts it, and its windows. Killed with this.
class ProgramOnScreen
{
public:
    /// @param home holds what the program keeps of its user: settings, and shows without a file
    explicit ProgramOnScreen(const QString &home, const QStringList &arguments = {});
    ~ProgramOnScreen();
    Q_DISABLE_COPY_MOVE(ProgramOnScreen)

    /// The programs of that home write what was edited to disk so often.
    static void setAutosaveSeconds(const QString &home, int seconds);
    /// "light" or "dark".
    static void setAppearance(const QString &home, const QString &name);

    /// Waits for a window whose title has these words in it, and sends the keyboard there. False if
    /// it does not come.
    bool goTo(const QString &words);
    /// Waits for the main window, and sends the keyboard there.
    bool goToMain();
    /// Whether a window has these words in its title.
    bool has(const QString &words) const { return find(words) != 0; }
    /// Waits until none has.
    bool waitUntilGone(const QString &words);
    /// Of the main window; empty while there is none.
    QString title() const;

    /// The main window on the screen.
    QRect area() const { return m_area; }
    /// What is to be seen of the main window.
    QImage picture() const { return ScreenUser::picture(m_area); }
    /// Waits until a part of it is not as it was in a picture.
    bool waitForChange(const QRect &part, const QImage &before) const;
    /// A place in the main window.
    void click(QPoint place) const;

    bool isRunning() const { return m_process.state() == QProcess::Running; }
    /// Ends it without a chance to do anything about it.
    void kill();
    /// Sends it a signal, and tells which one it ended by; 0 if by none.
    int endBy(int signal);
    /// Its exit status; -1 if it does not end, or not in order.
    int waitForEnd();
    QByteArray errors() { return m_process.readAllStandardError(); }

private:
    ScreenUser::Window find(const QString &words) const;

    QProcess m_process;
    QRect m_area;
};
