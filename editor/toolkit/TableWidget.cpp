#include "TableWidget.h"

#include "TableDelegate.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMouseEvent>
#include <QScopedValueRollback>

#include <algorithm>
#include <array>
#include <limits>

namespace meta {

TableWidget::TableWidget(QWidget *parent) : QTableWidget(parent)
{
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setSortingEnabled(false);
    setCornerButtonEnabled(false);
    setWordWrap(false); // rows have one line
    setEditTriggers(CurrentChanged | DoubleClicked | EditKeyPressed | AnyKeyPressed);
    setItemPrototype(new TableItem(this, TableItem::OnTyping, {}));
    horizontalHeader()->setDefaultSectionSize(100);
    verticalHeader()->setDefaultSectionSize(20);
    verticalHeader()->setMinimumWidth(30);
    auto *delegate = new TableDelegate(this);
    setItemDelegate(delegate);
    connect(delegate, &TableDelegate::edited, this, &TableWidget::valueChanged);
}

// An open editor that loses the focus while the table goes would still write its text.
TableWidget::~TableWidget()
{
    delete itemDelegate();
}

// --- Cells ---

TableItem *TableWidget::item(int row, int column) const
{
    return static_cast<TableItem *>(QTableWidget::item(row, column));
}

void TableWidget::setItem(int row, int column, TableItem *item)
{
    if (!model()->hasIndex(row, column)) {
        delete item;
        return;
    }
    QTableWidget::setItem(row, column, item);
    noteChange(row, column);
}

// Null outside the table.
TableItem *TableWidget::madeItem(int row, int column)
{
    if (!item(row, column))
        setItem(row, column, new TableItem(this, TableItem::OnTyping, {}));
    return item(row, column);
}

QString TableWidget::text(int row, int column) const
{
    const TableItem *cell = item(row, column);
    return cell ? cell->text() : QString();
}

void TableWidget::setText(int row, int column, const QString &text)
{
    if (TableItem *cell = madeItem(row, column)) {
        cell->setText(text);
        noteChange(row, column);
    }
}

QPixmap TableWidget::pixmap(int row, int column) const
{
    const TableItem *cell = item(row, column);
    return cell ? cell->data(Qt::DecorationRole).value<QPixmap>() : QPixmap();
}

void TableWidget::setPixmap(int row, int column, const QPixmap &pixmap)
{
    if (TableItem *cell = madeItem(row, column)) {
        cell->setData(Qt::DecorationRole, pixmap.isNull() ? QVariant() : pixmap);
        noteChange(row, column);
    }
}

void TableWidget::noteChange(int row, int column)
{
    if (m_isGathering)
        m_gathered |= QRect(column, row, 1, 1);
}

TableWidget::Gathering::Gathering(TableWidget &table) : m_table(table)
{
    m_table.m_isGathering = true;
    m_table.m_gathered = {};
    m_table.model()->blockSignals(true);
}

TableWidget::Gathering::~Gathering()
{
    QAbstractItemModel *model = m_table.model();
    model->blockSignals(false);
    m_table.m_isGathering = false;
    const QRect &changed = m_table.m_gathered;
    if (!changed.isEmpty()) {
        emit model->dataChanged(model->index(changed.top(), changed.left()),
                                model->index(changed.bottom(), changed.right()));
    }
}

// --- Rows ---

void TableWidget::setNumRows(int count)
{
    if (count < 0)
        return;
    if (count < rowCount())
        prepareRemoval();
    setRowCount(count);
}

void TableWidget::removeRow(int row)
{
    if (row < 0 || row >= rowCount())
        return;
    prepareRemoval();
    QTableWidget::removeRow(row);
}

// Afterwards there is neither an editor nor a selected row nor a current cell. Only the selection,
// where there was one, is told of.
void TableWidget::prepareRemoval()
{
    if (QWidget *editor = indexWidget(currentIndex()))
        closeEditor(editor, QAbstractItemDelegate::RevertModelCache);
    const bool hadSelection = selectionModel()->hasSelection();
    {
        const QScopedValueRollback<bool> silent(m_isSilent, true);
        selectionModel()->clear();
    }
    if (hadSelection)
        emit selectionChanged();
}

void TableWidget::sortColumn(int column, bool ascending)
{
    for (int row = 0; row < rowCount(); ++row)
        if (TableItem *cell = item(row, column))
            cell->holdKey();
    sortItems(column, ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
    for (int row = 0; row < rowCount(); ++row)
        if (TableItem *cell = item(row, column))
            cell->dropKey();
    // The header turns its indicator at every click by itself, once it is shown.
    horizontalHeader()->setSortIndicatorShown(true);
    horizontalHeader()->setSortIndicator(column,
                                         ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
}

// Asking the delegate about every cell would cost more than filling the table. The sum of its
// letters' widths says how wide a cell can be; only where that is more than the widest found so far
// is the text laid out, and only about the widest cell is the delegate asked.
void TableWidget::adjustColumn(int column)
{
    ensurePolished();
    const QFontMetricsF metrics(font());
    std::array<qreal, 128> widths; // of the letters met so far; -1 of the others
    widths.fill(-1);
    const auto widthOf = [&](QChar letter) {
        qreal &width = widths[letter.unicode()];
        if (width < 0)
            width = metrics.horizontalAdvance(letter);
        return width;
    };
    const int margin = 2 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1);
    int widest = -1;
    qreal widestWidth = -1;
    for (int row = 0; row < rowCount(); ++row) {
        const TableItem *cell = item(row, column);
        if (!cell)
            continue;
        const QString text = cell->text();
        const QVariant picture = cell->data(Qt::DecorationRole);
        const qreal pictureWidth =
            picture.isNull() ? 0
                             : picture.value<QPixmap>().deviceIndependentSize().width() + margin;
        qreal atMost = pictureWidth;
        for (const QChar letter : text) {
            if (letter.unicode() >= widths.size()) {
                atMost = std::numeric_limits<qreal>::max(); // letters that may join or combine
                break;
            }
            atMost += widthOf(letter);
        }
        if (atMost <= widestWidth)
            continue;
        const qreal width = pictureWidth + metrics.horizontalAdvance(text);
        if (width > widestWidth) {
            widestWidth = width;
            widest = row;
        }
    }
    QHeaderView *header = horizontalHeader();
    const bool isIndicatorShown = header->isSortIndicatorShown();
    header->setSortIndicatorShown(true); // a later sort cuts no title
    int width = std::max(20, header->sectionSizeHint(column));
    header->setSortIndicatorShown(isIndicatorShown);
    if (widest >= 0)
        width = std::max(width, sizeHintForIndex(model()->index(widest, column)).width() + 1);
    setColumnWidth(column, width);
}

// --- Selection ---

void TableWidget::selectRow(int row)
{
    if (row < 0 || rowCount() == 0)
        return;
    row = std::min(row, rowCount() - 1);
    const bool wasSelected = isRowSelected(row);
    selectionModel()->select(model()->index(row, 0),
                             QItemSelectionModel::Select | QItemSelectionModel::Rows);
    if (wasSelected)
        emit selectionChanged();
}

void TableWidget::selectOnly(int row)
{
    const QScopedValueRollback<bool> silent(m_isSilent, true);
    selectionModel()->select(model()->index(row, 0),
                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

bool TableWidget::isRowSelected(int row) const
{
    return selectionModel()->rowIntersectsSelection(row, QModelIndex());
}

QList<int> TableWidget::selectedRows() const
{
    QList<int> rows;
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange &range : selection)
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.append(row);
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

void TableWidget::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QTableWidget::currentChanged(current, previous);
    if (current.isValid() && !m_isSilent)
        emit currentChanged(current.row(), current.column());
}

void TableWidget::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTableWidget::selectionChanged(selected, deselected);
    if (!m_isSilent)
        emit selectionChanged();
}

// --- What the user does ---

bool TableWidget::edit(const QModelIndex &index, EditTrigger trigger, QEvent *event)
{
    const TableItem *cell = item(index.row(), index.column());
    if (trigger == CurrentChanged && (!cell || cell->editType() != TableItem::WhenCurrent))
        return false;
    return QTableWidget::edit(index, trigger, event);
}

// One that a slot of its edit has ended already belongs to nobody.
void TableWidget::closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint)
{
    if (!editor || editor->parentWidget() == viewport())
        QTableWidget::closeEditor(editor, hint);
}

// A press says all: it selects its row, the release adds nothing. With Ctrl rows are added, never
// taken away.
QItemSelectionModel::SelectionFlags TableWidget::selectionCommand(const QModelIndex &index,
                                                                  const QEvent *event) const
{
    if (event && event->type() == QEvent::MouseButtonRelease)
        return QItemSelectionModel::NoUpdate;
    if (event && event->type() == QEvent::MouseButtonPress && index.isValid()) {
        const auto *press = static_cast<const QMouseEvent *>(event);
        if (!(press->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier)))
            return QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
    }
    QItemSelectionModel::SelectionFlags command = QTableWidget::selectionCommand(index, event);
    if (command & QItemSelectionModel::Toggle) {
        command &= ~QItemSelectionModel::Toggle;
        command |= QItemSelectionModel::Select;
    }
    return command;
}

// A press beside the cells clears the selection. One on the current cell opens its editor anew.
void TableWidget::mousePressEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    m_pressed = indexAt(position);
    QTableWidget::mousePressEvent(event);
    if (m_pressed.isValid()) {
        if (m_pressed == currentIndex())
            edit(m_pressed, CurrentChanged, nullptr);
    } else if (!(event->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier))) {
        clearSelection();
    }
}

void TableWidget::mouseReleaseEvent(QMouseEvent *event)
{
    const QModelIndex released = indexAt(event->position().toPoint());
    const int button = static_cast<int>(event->button());
    const QPoint position =
        event->position().toPoint() + QPoint(horizontalOffset(), verticalOffset());
    QTableWidget::mouseReleaseEvent(event);
    // The slots may delete the table.
    if (released.isValid() && released == m_pressed && released == currentIndex())
        emit clicked(released.row(), released.column(), button, position);
}

void TableWidget::contextMenuEvent(QContextMenuEvent *event)
{
    const QModelIndex current = currentIndex();
    if (event->reason() == QContextMenuEvent::Keyboard) {
        emit contextMenuRequested(current.row(), current.column(),
                                  current.isValid()
                                      ? viewport()->mapToGlobal(visualRect(current).center())
                                      : event->globalPos());
    } else {
        emit contextMenuRequested(rowAt(event->pos().y()), columnAt(event->pos().x()),
                                  event->globalPos());
    }
}

// Gaining the focus makes no cell current.
void TableWidget::focusInEvent(QFocusEvent *event)
{
    if (currentIndex().isValid()) {
        QTableWidget::focusInEvent(event);
    } else {
        // QAbstractItemView, whose turn it would be, would make the first cell current.
        QAbstractScrollArea::focusInEvent(event); // NOLINT(bugprone-parent-virtual-call)
        viewport()->update();
    }
}

} // namespace meta
