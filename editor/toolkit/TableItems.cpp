#include "TableItems.h"

namespace meta {

TableItem::TableItem(QTableWidget *, EditType editType, const QString &text)
    : QTableWidgetItem(text), m_editType(editType)
{
    if (editType == Never)
        setFlags(flags() & ~Qt::ItemIsEditable);
}

QString TableItem::key() const
{
    return text();
}

bool TableItem::operator<(const QTableWidgetItem &other) const
{
    return m_heldKey < static_cast<const TableItem &>(other).m_heldKey;
}

QTableWidgetItem *TableItem::clone() const
{
    return new TableItem(*this);
}

ComboTableItem::ComboTableItem(QTableWidget *table, const QStringList &texts)
    : TableItem(table, WhenCurrent, texts.value(0)), m_texts(texts)
{
}

void ComboTableItem::setCurrentItem(const QString &text)
{
    if (m_texts.contains(text))
        setText(text);
}

QTableWidgetItem *ComboTableItem::clone() const
{
    return new ComboTableItem(*this);
}

} // namespace meta
