#include "EditorMemory.h"

#include <QHash>
#include <QHeaderView>
#include <QScrollBar>
#include <QSplitter>
#include <QTableView>

#include <algorithm>

namespace rehearsal {

namespace {

int depthOf(const QWidget *widget)
{
    int depth = 0;
    for (; widget; widget = widget->parentWidget())
        ++depth;
    return depth;
}

/// The outer ones first: what an inner one shows hangs on what is selected in an outer one.
template<typename Widget>
QList<Widget *> outerFirst(const QWidget &editor)
{
    QList<Widget *> widgets = editor.findChildren<Widget *>();
    std::stable_sort(widgets.begin(), widgets.end(),
                     [](const Widget *a, const Widget *b) { return depthOf(a) < depthOf(b); });
    return widgets;
}

int firstHiddenColumn(const QTableView &view)
{
    for (int column = 0; column < view.model()->columnCount(); ++column) {
        if (view.isColumnHidden(column))
            return column;
    }
    return -1;
}

/// What a row is known by again.
/// @param column the view's first hidden one; less than 0 if it has none
QString identityOf(const QTableView &view, int row, int column)
{
    return column < 0 ? QString::number(row) : view.model()->index(row, column).data().toString();
}

/// Of several rows of one identity, the first.
QHash<QString, int> rowsOf(const QTableView &view)
{
    const int column = firstHiddenColumn(view);
    QHash<QString, int> rows;
    for (int row = view.model()->rowCount() - 1; row >= 0; --row)
        rows.insert(identityOf(view, row, column), row);
    return rows;
}

/// The object names from the editor down to the widget.
std::vector<QString> pathTo(const QWidget *widget, const QWidget &editor)
{
    std::vector<QString> path;
    for (; widget && widget != &editor; widget = widget->parentWidget()) {
        if (!widget->objectName().isEmpty())
            path.insert(path.begin(), widget->objectName());
    }
    return path;
}

} // namespace

EditorMemory EditorMemory::of(const QWidget *editor)
{
    EditorMemory memory;
    if (!editor)
        return memory;
    for (const QTableView *view : outerFirst<QTableView>(*editor))
        memory.m_tables.push_back(read(*view));
    for (const QSplitter *splitter : outerFirst<QSplitter>(*editor))
        memory.m_splitters.push_back(splitter->saveState());
    const QWidget *focus = editor->window()->focusWidget();
    if (focus && editor->isAncestorOf(focus))
        memory.m_focus = pathTo(focus, *editor);
    return memory;
}

void EditorMemory::restore(QWidget &editor) const
{
    for (std::size_t i = 0; i < m_tables.size(); ++i) {
        const QList<QTableView *> views = outerFirst<QTableView>(editor);
        if (static_cast<qsizetype>(i) >= views.size())
            break;
        show(m_tables[i], *views[static_cast<qsizetype>(i)]);
    }
    const QList<QSplitter *> splitters = outerFirst<QSplitter>(editor);
    for (std::size_t i = 0; i < m_splitters.size(); ++i) {
        if (static_cast<qsizetype>(i) < splitters.size())
            splitters[static_cast<qsizetype>(i)]->restoreState(m_splitters[i]);
    }
    if (m_focus.empty())
        return;
    for (QWidget *widget : editor.findChildren<QWidget *>(m_focus.back())) {
        if (pathTo(widget, editor) == m_focus)
            widget->setFocus(Qt::OtherFocusReason);
    }
}

EditorMemory::Table EditorMemory::read(const QTableView &view)
{
    Table table;
    const int hidden = firstHiddenColumn(view);
    const QList<QModelIndex> rows = view.selectionModel()->selectedRows();
    for (const QModelIndex &index : rows)
        table.selected.push_back(identityOf(view, index.row(), hidden));
    if (const QModelIndex current = view.currentIndex(); current.isValid())
        table.current = {identityOf(view, current.row(), hidden), current.column()};
    const QHeaderView *header = view.horizontalHeader();
    if (header->isSortIndicatorShown())
        table.order = {header->sortIndicatorSection(), header->sortIndicatorOrder()};
    for (int column = 0; column < header->count(); ++column)
        table.columnWidths.push_back(header->sectionSize(column));
    table.scrolledRight = view.horizontalScrollBar()->value();
    table.scrolledDown = view.verticalScrollBar()->value();
    return table;
}

void EditorMemory::show(const Table &table, QTableView &view)
{
    QHeaderView *header = view.horizontalHeader();
    if (table.order && table.order->first < header->count()) {
        // A click sorts, and a second one the other way round.
        for (int click = 0; click < 2; ++click) {
            if (header->isSortIndicatorShown()
                && header->sortIndicatorSection() == table.order->first
                && header->sortIndicatorOrder() == table.order->second)
                break;
            emit header->sectionClicked(table.order->first);
        }
    }
    for (int column = 0; column < header->count(); ++column) {
        if (static_cast<std::size_t>(column) < table.columnWidths.size()
            && !header->isSectionHidden(column))
            header->resizeSection(column, table.columnWidths[static_cast<std::size_t>(column)]);
    }
    const QHash<QString, int> rows = rowsOf(view);
    QItemSelection selection;
    for (const QString &identity : table.selected) {
        const int row = rows.value(identity, -1);
        if (row >= 0)
            selection.append(
                QItemSelectionRange(view.model()->index(row, 0),
                                    view.model()->index(row, view.model()->columnCount() - 1)));
    }
    if (table.current) {
        const int row = rows.value(table.current->first, -1);
        if (row >= 0)
            view.selectionModel()->setCurrentIndex(view.model()->index(row, table.current->second),
                                                   QItemSelectionModel::NoUpdate);
    }
    view.selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    view.horizontalScrollBar()->setValue(table.scrolledRight);
    view.verticalScrollBar()->setValue(table.scrolledDown);
}

} // namespace rehearsal
