#pragma once

#include "EditorStage.h"
#include "EffectColumns.h"

/// An open editor with children 1, 2 and 3 in the rows 2, 1 and 0, whose times are as their rules
/// say.
class OpenStage : public EditorStage
{
public:
    OpenStage()
    {
        for (const quint32 eid : {1u, 2u, 3u}) {
            children[eid] = add(eid);
            children[eid]->with("startfixedtime", 1500).with("startlinkoffset", 250);
            children[eid]->with("endtype", 2).with("endcyclecount", 4);
            children[eid]->with("endfixedtime", 2500).with("endlinkoffset", -500);
        }
        effect.updateEffectTimes();
        open();
    }

    /// The eids of the highlighted rows, from the first row to the last.
    QString highlighted() const
    {
        QStringList eids;
        for (const int row : table().selectedRows())
            eids.append(table().text(row, meta::EidColumn));
        return eids.join(u' ');
    }
    QString selected() { return selectedEids().join(u' '); }
    QString title() const { return form().m_effectGroupBox->title(); }
    QList<QWidget *> shownParameters() const
    {
        QList<QWidget *> shown;
        const auto widgets = form().m_effectParameterFrame->findChildren<QWidget *>(
            QString(), Qt::FindDirectChildrenOnly);
        for (QWidget *widget : widgets) {
            if (!widget->isHidden())
                shown.append(widget);
        }
        return shown;
    }
    /// Clicks at a place of the table's viewport.
    void clickAt(const QPoint &place, Qt::KeyboardModifiers modifiers = {},
                 Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(table().viewport(), button, modifiers, place);
    }
    QPoint at(int row, int column) const
    {
        return table().visualRect(table().model()->index(row, column)).center();
    }
    QPoint below() const { return {20, table().viewport()->height() - 5}; }

    WidgetStub *children[4] = {};
};
