#pragma once

#include <QObject>
#include <QPointer>

class QAction;
class QKeyEvent;
class QWidget;

namespace rehearsal {

/// Decides who gets a key that both a field and the window know.
///
/// Single keys, such as the space bar, go to what has the focus; only where that has no use for
/// them do they work the window's actions. Undo and redo are the window's also in the fields of an
/// editor, where they take back whole edits; only a cell that is being edited keeps its own.
class KeyRouting final : public QObject
{
    Q_OBJECT

public:
    /// Watches all keys of the application. The window is not owned and outlives this.
    /// @param singleKeyed actions that work on a single key
    /// @param always actions that go before every field
    KeyRouting(QWidget &window, QList<QAction *> singleKeyed, QList<QAction *> always);

    /// Works the action of a single key that nobody wanted; false if there is none.
    bool work(const QKeyEvent &event) const;

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override;

private:
    bool isInWindow(const QWidget &widget) const;

    QWidget &m_window;
    QList<QAction *> m_singleKeyed;
    QList<QAction *> m_always;
};

} // namespace rehearsal
