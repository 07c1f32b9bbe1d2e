#pragma once

#include "EditorContext.h"
#include "EffectList.h"

#include <QHash>
#include <QObject>
#include <QStringList>

#include <optional>
#include <vector>

namespace meta {

class TableWidget;
struct RuleKeys;

/// The rows of the effect table: one for each child, found by the eid in its hidden column.
class EffectTable
{
public:
    /// @param table lent; outlives this object
    EffectTable(TableWidget &table, const EditorContext &context);
    Q_DISABLE_COPY_MOVE(EffectTable)

    /// Appends a row for every child, the last one first.
    void appendChildren();
    void clear();
    /// Appends a row and fills it.
    void append(Effect &child);
    /// Makes the child's last row the only selected one, without telling anybody.
    void selectOnly(const Effect &child);
    /// Fills an existing row. Null is ignored.
    void addToWidget(Effect *child, int row);

    /// The first row that holds the eid, or -1.
    int getRow(quint32 eid);
    /// Removes the first row that holds the eid, if there is one.
    void removeFromTable(quint32 eid);

    /// Gives the first three columns widths of their own and fits the others to their contents.
    void setInitialWidths();
    /// Fits the columns to their contents, the hidden one apart.
    void resizeTable();
    /// Sorts by the column: ascending the first time that the meta effect's table is sorted, then
    /// in turns, whatever the column and whichever editor shows the table.
    void handleHeaderClicked(int column);
    /// The children of the selected rows, in row order.
    EffectList selectedChildren() const;

    void showPlayState(quint32 eid, bool running);
    /// Brings the Start and End cells up to date; touches only those that change.
    void refreshTimes();

private:
    // What a Start or an End cell shows, to find out quickly that it shows it already.
    struct ShownTime
    {
        bool isKnown = false;
        quint32 ruleType = 0;
        quint32 timeMs = 0;
    };
    struct Row
    {
        std::optional<quint32> eid;
        ShownTime start = {};
        ShownTime end = {};
    };

    void fillRow(Effect &child, int row, const QStringList &types);
    void learnRows();
    void noteForeignChange(int firstRow, int lastRow, int firstColumn, int lastColumn);
    void refreshTime(int row, int column, const RuleKeys &rule, const Effect &child,
                     ShownTime &shown);

    TableWidget &m_table;
    const EditorContext &m_context;
    bool m_areRowsKnown = false; ///< else m_rows and m_rowByEid are out of date
    bool m_isRefreshing = false;
    std::vector<Row> m_rows;
    QHash<quint32, int> m_rowByEid;
    QObject m_listener; ///< its connections end with this object
};

} // namespace meta
