#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

class QTableView;
class QWidget;

namespace rehearsal {

/// What a user sees in an effect's editor, kept while the editor is built anew: order, selection
/// and place of its tables, outer ones before those of nested editors, and which field has the
/// focus.
///
/// Nothing is known of the editor but that it is made of the toolkit's widgets. A table's row is
/// known again by the text of its first hidden column, or by its number where no column is hidden.
class EditorMemory
{
public:
    /// Nothing to remember of a null editor.
    static EditorMemory of(const QWidget *editor);

    /// Brings it back, as far as it is still there.
    void restore(QWidget &editor) const;

private:
    struct Table
    {
        std::vector<QString> selected;                  ///< rows, by what they are known
        std::optional<std::pair<QString, int>> current; ///< row and column
        std::optional<std::pair<int, Qt::SortOrder>> order;
        std::vector<int> columnWidths;
        int scrolledRight = 0;
        int scrolledDown = 0;
    };

    static Table read(const QTableView &view);
    static void show(const Table &table, QTableView &view);

    std::vector<Table> m_tables;
    std::vector<QByteArray> m_splitters;
    std::vector<QString> m_focus; ///< names from the editor down to the field
};

} // namespace rehearsal
