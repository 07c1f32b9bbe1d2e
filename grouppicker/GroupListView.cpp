#include "GroupListView.h"

#include <QMouseEvent>

#include <utility>

namespace meta {

GroupListView::GroupListView(QWidget *parent) : QTreeWidget(parent)
{
    setRootIsDecorated(false);
    setAllColumnsShowFocus(true);
    setUniformRowHeights(true);
    setTextElideMode(Qt::ElideMiddle); // names often differ in their last digits alone
}

// A receiver may delete the list: every signal is the last act of its handler.

void GroupListView::mousePressEvent(QMouseEvent *event)
{
    m_pressed = indexFromItem(itemUnder(*event));
    m_awaitsRelease = true;
    QTreeWidget::mousePressEvent(event);
}

void GroupListView::mouseReleaseEvent(QMouseEvent *event)
{
    QTreeWidgetItem *item = itemUnder(*event);
    const bool isClick = std::exchange(m_awaitsRelease, false) && indexFromItem(item) == m_pressed
                         && viewport()->rect().contains(event->position().toPoint());
    QTreeWidget::mouseReleaseEvent(event);
    if (isClick)
        emit clicked(item);
}

void GroupListView::mouseDoubleClickEvent(QMouseEvent *event)
{
    QTreeWidgetItem *item = itemUnder(*event);
    if (item && indexFromItem(item) != m_pressed) { // the first press was elsewhere
        mousePressEvent(event);
        return;
    }
    if (event->button() != Qt::LeftButton)
        return;
    QTreeWidget::mouseDoubleClickEvent(event);
    m_awaitsRelease = false;
    if (item)
        emit doubleClicked(item);
}

QTreeWidgetItem *GroupListView::itemUnder(const QMouseEvent &event) const
{
    return itemAt(event.position().toPoint());
}

} // namespace meta
