#include "ParameterArea.h"

#include "Effect.h"

#include <QVBoxLayout>

namespace meta {

void ParameterArea::show(Effect &child)
{
    delete m_frame.layout();
    auto *layout = new QVBoxLayout(&m_frame);
    layout->setContentsMargins(0, 0, 0, 0);
    hide();
    m_widget = child.internalGetEffectWidget();
    if (!m_widget)
        return;
    m_widget->setParent(&m_frame);
    m_widget->move(0, 0);
    layout->addWidget(m_widget);
    m_widget->show();
    placeInTabOrder();
}

// The Tab key reaches the widget's fields where the widget stands, not behind everything else.
void ParameterArea::placeInTabOrder()
{
    const auto isTabStop = [](const QWidget *widget) {
        return (widget->focusPolicy() & Qt::TabFocus) && !widget->focusProxy();
    };
    QList<QWidget *> fields;
    for (QWidget *next = m_widget->nextInFocusChain(); next != m_widget;
         next = next->nextInFocusChain()) {
        if (isTabStop(next) && m_widget->isAncestorOf(next))
            fields.append(next);
    }
    QWidget *previous = m_frame.previousInFocusChain();
    while (previous != &m_frame && !isTabStop(previous))
        previous = previous->previousInFocusChain();
    for (QWidget *field : std::as_const(fields)) {
        QWidget::setTabOrder(previous, field);
        previous = field;
    }
}

void ParameterArea::hide()
{
    if (m_widget)
        m_widget->hide();
}

} // namespace meta
