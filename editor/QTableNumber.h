#pragma once

#include "TableItems.h"

/// A cell with a number, by which its row sorts.
class QTableNumber final : public meta::TableItem
{
public:
    QTableNumber(QTableWidget *table, EditType editType, const QString &text);
    ~QTableNumber() override;

    /// The number with six decimals, filled with zeros to twenty characters, so that the order of
    /// the texts is that of numbers from 0 on. Negative ones come first, -1 before -2. The text
    /// itself where it is no number.
    QString key() const override;
    QTableWidgetItem *clone() const override;
};
