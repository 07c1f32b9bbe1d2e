#pragma once

#include "GroupListView.h"
#include "GroupPickerBase.h"

// Places of a form's list in the coordinates of its window.

inline QPoint onRow(const GroupPickerBase &form, int row, int column = 0)
{
    const QTreeWidget &list = *form.m_groupListView;
    const QPoint place = list.visualRect(list.model()->index(row, column)).center();
    return list.viewport()->mapTo(&form, place);
}

inline QPoint belowTheRows(const GroupPickerBase &form)
{
    const QWidget &viewport = *form.m_groupListView->viewport();
    return viewport.mapTo(&form, viewport.rect().bottomLeft() + QPoint(20, -20));
}
