#include "TableDelegate.h"

#include "TableItems.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPointer>
#include <QTableWidget>
#include <QTextDocument>
#include <QToolTip>

namespace meta {

namespace {

// Null for a cell that is not a chooser.
const ComboTableItem *comboItem(const QObject *view, const QModelIndex &index)
{
    const auto *table = qobject_cast<const QTableWidget *>(view);
    return table ? dynamic_cast<ComboTableItem *>(table->item(index.row(), index.column()))
                 : nullptr;
}

QStyleOptionComboBox comboOption(const QStyleOptionViewItem &cell, const QString &text)
{
    QStyleOptionComboBox box;
    box.rect = cell.rect;
    box.state = cell.state & ~(QStyle::State_Selected | QStyle::State_HasFocus);
    box.palette = cell.palette;
    box.fontMetrics = cell.fontMetrics;
    box.direction = cell.direction;
    box.currentText = text;
    return box;
}

const QStyle *styleOf(const QStyleOptionViewItem &option)
{
    return option.widget ? option.widget->style() : QApplication::style();
}

} // namespace

TableDelegate::~TableDelegate()
{
    for (QWidget *editor : std::as_const(m_toldOf))
        editor->setParent(nullptr);
}

QWidget *TableDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                     const QModelIndex &index) const
{
    const ComboTableItem *item = comboItem(this->parent(), index);
    if (!item)
        return QStyledItemDelegate::createEditor(parent, option, index);
    auto *combo = new QComboBox(parent);
    combo->addItems(item->texts());
    combo->setCurrentText(item->text());
    const QPersistentModelIndex cell(index);
    connect(combo, &QComboBox::activated, this, [this, cell, combo] {
        if (!cell.isValid())
            return;
        auto *model = const_cast<QAbstractItemModel *>(cell.model());
        model->setData(cell, combo->currentText(), Qt::EditRole);
        tell(combo, cell.row(), cell.column());
    });
    return combo;
}

void TableDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    const QString text = index.data(Qt::EditRole).toString();
    if (auto *combo = qobject_cast<QComboBox *>(editor)) {
        const int shown = combo->findText(text);
        if (shown >= 0)
            combo->setCurrentIndex(shown);
    } else if (auto *line = qobject_cast<QLineEdit *>(editor)) {
        if (!line->isModified() && line->text() != text) {
            line->setText(text);
            line->selectAll();
        }
    }
}

void TableDelegate::setModelData(QWidget *editor, QAbstractItemModel *model,
                                 const QModelIndex &index) const
{
    auto *line = qobject_cast<QLineEdit *>(editor);
    if (!line || !line->isModified())
        return;
    line->setModified(false);
    if (index.data(Qt::EditRole).toString() == line->text())
        return;
    const int row = index.row();
    const int column = index.column();
    model->setData(index, line->text(), Qt::EditRole);
    tell(editor, row, column);
}

// Whoever called goes on to use the editor. One that the slots end lives on, unseen and without a
// parent, until the events run again.
void TableDelegate::tell(QWidget *editor, int row, int column) const
{
    const QPointer<const TableDelegate> self(this);
    m_toldOf.append(editor);
    emit edited(row, column);
    if (!self || !m_toldOf.removeOne(editor))
        editor->deleteLater();
}

void TableDelegate::destroyEditor(QWidget *editor, const QModelIndex &index) const
{
    if (m_toldOf.removeOne(editor))
        editor->setParent(nullptr);
    else
        QStyledItemDelegate::destroyEditor(editor, index);
}

void TableDelegate::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                                         const QModelIndex &index) const
{
    if (qobject_cast<QComboBox *>(editor))
        editor->setGeometry(option.rect);
    else
        QStyledItemDelegate::updateEditorGeometry(editor, option, index);
}

void TableDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const
{
    const ComboTableItem *item = comboItem(parent(), index);
    if (!item) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    const QStyle *style = styleOf(option);
    QStyleOptionViewItem background(option);
    initStyleOption(&background, index);
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &background, painter, option.widget);
    const QStyleOptionComboBox box = comboOption(option, item->text());
    style->drawComplexControl(QStyle::CC_ComboBox, &box, painter, option.widget);
    style->drawControl(QStyle::CE_ComboBoxLabel, &box, painter, option.widget);
}

QSize TableDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const ComboTableItem *item = comboItem(parent(), index);
    if (!item)
        return QStyledItemDelegate::sizeHint(option, index);
    const QStyleOptionComboBox box = comboOption(option, item->text());
    return styleOf(option)->sizeFromContents(
        QStyle::CT_ComboBox, &box, option.fontMetrics.size(Qt::TextSingleLine, item->text()),
        option.widget);
}

bool TableDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                              const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip || sizeHint(option, index).width() <= option.rect.width())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    // never taken for markup
    QToolTip::showText(event->globalPos(), Qt::convertFromPlainText(index.data().toString()), view);
    return true;
}

// A chooser outlives the loss of the focus: the slots that its choice calls may open a dialog while
// the chooser is still at work. There is nothing that Return could accept or Escape reject. And the
// wheel scrolls the table instead of choosing.
bool TableDelegate::eventFilter(QObject *object, QEvent *event)
{
    if (!qobject_cast<QComboBox *>(object))
        return QStyledItemDelegate::eventFilter(object, event);
    switch (event->type()) {
    case QEvent::FocusOut: return false;
    case QEvent::Wheel: event->ignore(); return true;
    case QEvent::KeyPress: {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape)
            return true;
        break;
    }
    default: break;
    }
    return QStyledItemDelegate::eventFilter(object, event);
}

void TableDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    bool isNumber = false;
    option->text.toDouble(&isNumber);
    option->displayAlignment = (isNumber ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
}

} // namespace meta
