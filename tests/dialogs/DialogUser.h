#pragma once

#include <QApplication>
#include <QDialog>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <functional>

/// Uses the next modal dialog of a type, once, while the test waits for its answer. A dialog that
/// is still there afterwards is cancelled.
template<typename Dialog>
class DialogUser
{
public:
    explicit DialogUser(const std::function<void(Dialog &)> &use) : m_use(use)
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { tick(); });
        m_timer.start(5);
    }

    bool isDone() const { return m_isDone; }

private:
    void tick()
    {
        const QPointer<Dialog> dialog(qobject_cast<Dialog *>(QApplication::activeModalWidget()));
        if (!dialog || !dialog->isVisible())
            return;
        m_timer.stop();
        m_use(*dialog);
        if (dialog && dialog->isVisible())
            dialog->reject();
        else
            m_isDone = true;
    }

    std::function<void(Dialog &)> m_use;
    QTimer m_timer;
    bool m_isDone = false;
};

/// Presses a key in a dialog, as soon as the dialog has the keyboard.
inline void press(QDialog &dialog, Qt::Key key)
{
    dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTest::keyClick(dialog.windowHandle(), key);
}
