#include "QTableNumber.h"

QTableNumber::QTableNumber(QTableWidget *table, EditType editType, const QString &text)
    : TableItem(table, editType, text)
{
}

QTableNumber::~QTableNumber() = default;

QString QTableNumber::key() const
{
    bool ok = false;
    const double number = text().toDouble(&ok);
    return ok ? QString::asprintf("%020.6lf", number) : text();
}

QTableWidgetItem *QTableNumber::clone() const
{
    return new QTableNumber(*this);
}
