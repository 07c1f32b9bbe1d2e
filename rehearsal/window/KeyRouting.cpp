#include "KeyRouting.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QKeyEvent>

#include <algorithm>

namespace rehearsal {

namespace {

QAction *actionFor(const QList<QAction *> &actions, const QKeyEvent &event)
{
    const QKeySequence key(event.keyCombination());
    const auto found = std::find_if(actions.begin(), actions.end(), [&key](const QAction *action) {
        return action->isEnabled() && action->shortcuts().contains(key);
    });
    return found == actions.end() ? nullptr : *found;
}

bool isCellBeingEdited(const QWidget &widget)
{
    const auto *view = widget.parentWidget()
                           ? qobject_cast<QAbstractItemView *>(widget.parentWidget()->parent())
                           : nullptr;
    return view && view->viewport() == widget.parentWidget();
}

} // namespace

KeyRouting::KeyRouting(QWidget &window, QList<QAction *> singleKeyed, QList<QAction *> always)
    : QObject(&window),
      m_window(window),
      m_singleKeyed(std::move(singleKeyed)),
      m_always(std::move(always))
{
    qApp->installEventFilter(this);
}

bool KeyRouting::work(const QKeyEvent &event) const
{
    QAction *action = actionFor(m_singleKeyed, event);
    if (action && (action->autoRepeat() || !event.isAutoRepeat()))
        action->trigger();
    return action != nullptr;
}

bool KeyRouting::eventFilter(QObject *receiver, QEvent *event)
{
    const bool isKeyPress = event->type() == QEvent::KeyPress;
    if (!isKeyPress && event->type() != QEvent::ShortcutOverride)
        return false;
    const auto *widget = qobject_cast<QWidget *>(receiver);
    if (!widget || !isInWindow(*widget))
        return false;
    auto *key = static_cast<QKeyEvent *>(event);
    // What nobody in a floating dock wants ends there, and does not come to the window.
    if (isKeyPress)
        return widget != &m_window && widget->isWindow() && work(*key);
    if (actionFor(m_always, *key) && !isCellBeingEdited(*widget)) {
        key->ignore();
        return true; // no field sees it; it goes on to the action
    }
    const bool isPlain = !(key->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
    if (isPlain && actionFor(m_singleKeyed, *key)) {
        key->accept(); // an ordinary key, for what has the focus
        return true;
    }
    return false;
}

// A dock that floats is a window of its own, below this one.
bool KeyRouting::isInWindow(const QWidget &widget) const
{
    const QWidget *top = widget.window();
    return top == &m_window || (top->inherits("QDockWidget") && top->parentWidget() == &m_window);
}

} // namespace rehearsal
