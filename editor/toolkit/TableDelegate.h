#pragma once

#include <QList>
#include <QStyledItemDelegate>

namespace meta {

/// Paints and edits the cells of a TableWidget.
///
/// An open line editor in which the user typed is not touched when its cell changes underneath; one
/// in which nothing was typed follows the cell and never writes back. A chooser writes the moment
/// an entry is chosen, the one shown already included, and stays open.
///
/// A slot of edited() may end the editor, which is deleted when the slots are through. A slot that
/// a choice calls may even delete the table.
class TableDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;
    ~TableDelegate() override;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;
    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    /// A cell that cuts its text short tells the whole of it.
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

signals:
    /// The user gave the cell this text; the cell holds it already.
    void edited(int row, int column) const;

protected:
    bool eventFilter(QObject *object, QEvent *event) override;
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    void tell(QWidget *editor, int row, int column) const;

    mutable QList<QWidget *> m_toldOf; ///< editors whose edit the slots hear of
};

} // namespace meta
