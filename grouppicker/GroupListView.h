#pragma once

#include <QPersistentModelIndex>
#include <QTreeWidget>

namespace meta {

/// A flat list that tells of clicks with any mouse button, also of those that hit no item.
///
/// A double click is told as clicked() and then, with the left button, doubleClicked(); its second
/// release is silent.
class GroupListView : public QTreeWidget
{
    Q_OBJECT

public:
    explicit GroupListView(QWidget *parent = nullptr);

signals:
    /// A button went down and up over `item`; null is the empty area.
    void clicked(QTreeWidgetItem *item);
    /// The left button went down on `item` for the second time; never null.
    void doubleClicked(QTreeWidgetItem *item);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    QTreeWidgetItem *itemUnder(const QMouseEvent &event) const;

    bool m_awaitsRelease = false;    ///< of a press that may become a click
    QPersistentModelIndex m_pressed; ///< invalid for the empty area
};

} // namespace meta
