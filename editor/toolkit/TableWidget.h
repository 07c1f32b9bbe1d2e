#pragma once

#include "TableItems.h"

#include <QPixmap>
#include <QTableWidget>

namespace meta {

/// A table of cells in which whole rows are selected, with signals for what the user does.
///
/// valueChanged() follows edits only: no setter, no sorting and no change of rows emits it. Columns
/// sort when sortColumn() is called and at no other time. A cell without an item reads as empty; so
/// does one outside the table, and setting that changes nothing.
class TableWidget final : public QTableWidget
{
    Q_OBJECT

public:
    explicit TableWidget(QWidget *parent = nullptr);
    /// Drops an open editor without its text.
    ~TableWidget() override;

    // --- Cells ---

    TableItem *item(int row, int column) const;
    /// Takes the item over and deletes the one that stood there.
    void setItem(int row, int column, TableItem *item);
    QString text(int row, int column) const;
    /// Makes a plain cell, edited on typing, where there is none.
    void setText(int row, int column, const QString &text);
    QPixmap pixmap(int row, int column) const;
    /// A null pixmap clears the picture.
    void setPixmap(int row, int column, const QPixmap &pixmap);

    /// While it lives, changes of cells are gathered; at its end they are announced to the views as
    /// one. Rows must not come or go meanwhile.
    class Gathering
    {
    public:
        explicit Gathering(TableWidget &table);
        ~Gathering();
        Q_DISABLE_COPY_MOVE(Gathering)

    private:
        TableWidget &m_table;
    };

    // --- Rows ---

    /// Appends empty rows, which changes no selection, or removes the last ones as removeRow()
    /// does.
    void setNumRows(int count);
    /// Removes one row. An open editor is dropped without its text, and then no row is selected and
    /// no cell is current, so that no second row falls victim to the next key.
    void removeRow(int row);
    /// Sorts by the keys of a column, stable in both directions; rows without an item there come
    /// last. Selection, current cell and an open editor go with their rows.
    void sortColumn(int column, bool ascending);
    /// Makes a column as wide as its title with a sort indicator and its widest cell, at least 20
    /// pixels.
    void adjustColumn(int column);

    // --- Selection ---

    /// Adds the row to the selection and emits selectionChanged() even if it was selected. The
    /// current cell stays. A row behind the last one means the last, a negative one nothing.
    void selectRow(int row);
    /// Selects this row and no other, without a signal.
    void selectOnly(int row);
    /// Whether any cell of the row is selected.
    bool isRowSelected(int row) const;
    /// The rows of which any cell is selected, ascending.
    QList<int> selectedRows() const;

signals:
    /// The user gave a cell another text, or chose in a chooser, even the same entry again.
    void valueChanged(int row, int column);
    /// Another cell is the current one.
    void currentChanged(int row, int column);
    void selectionChanged();
    /// A mouse button was pressed and released over the same cell, and it is the current one.
    /// @param position in the coordinates of the table's content
    void clicked(int row, int column, int button, const QPoint &position);
    /// @param row, column -1 outside the cells; of the current cell when a key asks for the menu
    /// @param position in global coordinates
    void contextMenuRequested(int row, int column, const QPoint &position);

protected:
    void closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint) override;
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void selectionChanged(const QItemSelection &selected,
                          const QItemSelection &deselected) override;
    bool edit(const QModelIndex &index, EditTrigger trigger, QEvent *event) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index,
                                                         const QEvent *event) const override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    TableItem *madeItem(int row, int column);
    void prepareRemoval();
    void noteChange(int row, int column);

    bool m_isGathering = false;
    QRect m_gathered;                ///< x columns, y rows
    bool m_isSilent = false;         ///< currentChanged() and selectionChanged() are withheld
    QPersistentModelIndex m_pressed; ///< invalid outside the cells
};

} // namespace meta
