#pragma once

#include <QStringList>
#include <QTableWidgetItem>

class QTableWidget;

namespace meta {

/// A cell of a TableWidget. It says when it is edited, and by which key its row sorts.
class TableItem : public QTableWidgetItem
{
public:
    /// What opens a cell's editor.
    enum EditType {
        Never,
        OnTyping,   ///< a printable key, F2 or a double click
        WhenCurrent ///< the cell becomes the current one, by whatever means
    };

    /// @param table the table that the item is made for; setItem() gives it the ownership
    TableItem(QTableWidget *table, EditType editType, const QString &text);

    EditType editType() const { return m_editType; }

    /// What rows sort by: the text.
    virtual QString key() const;

    /// Compares the keys that holdKey() noted.
    bool operator<(const QTableWidgetItem &other) const override;
    QTableWidgetItem *clone() const override;

    /// Notes the key for a sort, and forgets it afterwards.
    void holdKey() { m_heldKey = key(); }
    void dropKey() { m_heldKey.clear(); }

private:
    EditType m_editType;
    QString m_heldKey;
};

/// A cell that shows one text of a list and is edited with a chooser. It starts at the first text.
class ComboTableItem final : public TableItem
{
public:
    ComboTableItem(QTableWidget *table, const QStringList &texts);

    const QStringList &texts() const { return m_texts; }

    /// Shows that text of the list. A text that is not in the list changes nothing.
    void setCurrentItem(const QString &text);

    QTableWidgetItem *clone() const override;

private:
    QStringList m_texts;
};

} // namespace meta
