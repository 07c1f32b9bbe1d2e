#include "EffectTable.h"

#include "ChildKeys.h"
#include "ChildRoster.h"
#include "EffectColumns.h"
#include "EffectPictures.h"
#include "Group.h"
#include "MapModel.h"
#include "OfferedTypes.h"
#include "QTableNumber.h"

#include <QScopedValueRollback>

namespace meta {

namespace {

QString groupName(const MapModel *map, quint32 gid)
{
    const Group *group = map ? map->getGroup(gid) : nullptr;
    return group ? group->name() : QStringLiteral("None");
}

bool isSamePicture(const QPixmap &a, const QPixmap &b)
{
    return a.isNull() ? b.isNull() : !b.isNull() && a.cacheKey() == b.cacheKey();
}

// Null for a fixed time. Nothing for a rule code that has no picture.
std::optional<QPixmap> rulePicture(quint32 ruleType, int column)
{
    if (ruleType == rule::fixed)
        return QPixmap();
    if (ruleType == rule::linked)
        return pictures::link();
    if (ruleType == rule::cycles && column == EndColumn)
        return pictures::cycle();
    return {};
}

} // namespace

EffectTable::EffectTable(TableWidget &table, const EditorContext &context)
    : m_table(table), m_context(context)
{
    const QAbstractItemModel *model = table.model();
    const auto forgetRows = [this] { m_areRowsKnown = false; };
    QObject::connect(model, &QAbstractItemModel::rowsInserted, &m_listener, forgetRows);
    QObject::connect(model, &QAbstractItemModel::rowsRemoved, &m_listener, forgetRows);
    QObject::connect(model, &QAbstractItemModel::layoutChanged, &m_listener, forgetRows);
    QObject::connect(model, &QAbstractItemModel::modelReset, &m_listener, forgetRows);
    QObject::connect(model, &QAbstractItemModel::dataChanged, &m_listener,
                     [this](const QModelIndex &first, const QModelIndex &last) {
                         noteForeignChange(first.row(), last.row(), first.column(), last.column());
                     });
}

// --- Rows ---

void EffectTable::appendChildren()
{
    const EffectList children = m_context.roster.children();
    int row = m_table.rowCount();
    m_table.setNumRows(row + children.count());
    const QStringList types = offeredTypes(hostTypes(m_context.effectLib));
    const TableWidget::Gathering gathering(m_table);
    for (int index = children.count() - 1; index >= 0; --index)
        fillRow(*children.at(index), row++, types);
}

void EffectTable::clear()
{
    m_table.setNumRows(0);
}

void EffectTable::append(Effect &child)
{
    const int row = m_table.rowCount();
    m_table.setNumRows(row + 1);
    addToWidget(&child, row);
}

// A child with an eid that another has is found in its own row: it is the newest, hence the last.
void EffectTable::selectOnly(const Effect &child)
{
    const quint32 eid = keys::eid.read(child);
    int row = m_table.rowCount() - 1;
    while (row >= 0 && eidOfRow(m_table, row) != eid)
        --row;
    if (row >= 0)
        m_table.selectOnly(row);
}

void EffectTable::addToWidget(Effect *child, int row)
{
    if (child)
        fillRow(*child, row, offeredTypes(hostTypes(m_context.effectLib)));
}

void EffectTable::fillRow(Effect &child, int row, const QStringList &types)
{
    const auto addNumber = [this, row](int column, const QString &text) {
        m_table.setItem(row, column, new QTableNumber(&m_table, TableItem::WhenCurrent, text));
    };
    const auto addTime = [&](int column, const RuleKeys &rule) {
        addNumber(column, rule.resolved.read(child).secondsText());
        const auto picture = rulePicture(rule.type.read(child), column);
        if (picture && !picture->isNull())
            m_table.setPixmap(row, column, *picture);
    };
    m_table.setText(row, NameColumn, keys::name.readText(child));
    m_table.setPixmap(row, NameColumn, pictures::openCircle());
    auto *type = new ComboTableItem(&m_table, types);
    type->setCurrentItem(keys::type.readText(child));
    m_table.setItem(row, TypeColumn, type);
    m_table.setItem(
        row, GroupColumn,
        new TableItem(&m_table, TableItem::Never, groupName(m_context.map, keys::gid.read(child))));
    addNumber(PriorityColumn, QString::number(keys::priority.read(child)));
    addTime(StartColumn, keys::startRule);
    addTime(EndColumn, keys::endRule);
    addNumber(FadeInColumn, keys::fadeIn.read(child).secondsText());
    addNumber(FadeOutColumn, keys::fadeOut.read(child).secondsText());
    addNumber(EidColumn, QString::number(keys::eid.read(child)));
}

int EffectTable::getRow(quint32 eid)
{
    learnRows();
    return m_rowByEid.value(eid, -1);
}

void EffectTable::removeFromTable(quint32 eid)
{
    m_table.removeRow(getRow(eid));
}

void EffectTable::learnRows()
{
    if (m_areRowsKnown)
        return;
    m_areRowsKnown = true;
    const int count = m_table.rowCount();
    m_rows.assign(static_cast<std::size_t>(count), {});
    m_rowByEid.clear();
    m_rowByEid.reserve(count);
    for (int row = 0; row < count; ++row) {
        const std::optional<quint32> eid = eidOfRow(m_table, row);
        m_rows[static_cast<std::size_t>(row)].eid = eid;
        if (eid && !m_rowByEid.contains(*eid))
            m_rowByEid.insert(*eid, row);
    }
}

void EffectTable::noteForeignChange(int firstRow, int lastRow, int firstColumn, int lastColumn)
{
    if (m_isRefreshing || !m_areRowsKnown)
        return;
    if (lastColumn >= EidColumn)
        m_areRowsKnown = false;
    if (firstColumn > EndColumn || lastColumn < StartColumn)
        return;
    for (int row = firstRow; row <= lastRow; ++row) {
        m_rows[static_cast<std::size_t>(row)].start.isKnown = false;
        m_rows[static_cast<std::size_t>(row)].end.isKnown = false;
    }
}

// --- Columns ---

void EffectTable::setInitialWidths()
{
    m_table.setColumnWidth(NameColumn, 80);
    m_table.setColumnWidth(TypeColumn, 120);
    m_table.setColumnWidth(GroupColumn, 100);
    for (int column = PriorityColumn; column <= FadeOutColumn; ++column)
        m_table.adjustColumn(column);
}

void EffectTable::resizeTable()
{
    for (int column = NameColumn; column <= FadeOutColumn; ++column)
        m_table.adjustColumn(column);
}

void EffectTable::handleHeaderClicked(int column)
{
    m_table.sortColumn(column, m_context.roster.turnSortOrder());
}

EffectList EffectTable::selectedChildren() const
{
    EffectList selected;
    const QList<int> rows = m_table.selectedRows();
    if (rows.isEmpty())
        return selected;
    const EidIndex children(m_context.roster.children());
    for (const int row : rows) {
        const std::optional<quint32> eid = eidOfRow(m_table, row);
        if (Effect *child = eid ? children.find(*eid) : nullptr)
            selected.append(child);
    }
    return selected;
}

// --- Playing and passes ---

void EffectTable::showPlayState(quint32 eid, bool running)
{
    const int row = getRow(eid);
    if (row >= 0)
        m_table.setPixmap(row, NameColumn,
                          running ? pictures::closedCircle() : pictures::openCircle());
}

void EffectTable::refreshTimes()
{
    learnRows();
    const EidIndex children(m_context.roster.children());
    const QScopedValueRollback refreshing(m_isRefreshing, true);
    const TableWidget::Gathering gathering(m_table);
    for (int row = 0; row < m_table.rowCount(); ++row) {
        Row &shown = m_rows[static_cast<std::size_t>(row)];
        const Effect *child = shown.eid ? children.find(*shown.eid) : nullptr;
        if (!child)
            continue;
        refreshTime(row, StartColumn, keys::startRule, *child, shown.start);
        refreshTime(row, EndColumn, keys::endRule, *child, shown.end);
    }
}

// A rule code without a picture leaves the cell as it is.
void EffectTable::refreshTime(int row, int column, const RuleKeys &rule, const Effect &child,
                              ShownTime &shown)
{
    const quint32 type = rule.type.read(child);
    const Millis time = rule.resolved.read(child);
    if (shown.isKnown && shown.ruleType == type && shown.timeMs == time.value())
        return;
    const auto picture = rulePicture(type, column);
    if (!picture)
        return;
    const QString text = time.secondsText();
    if (m_table.text(row, column) != text)
        m_table.setText(row, column, text);
    const bool isPictureKnown = shown.isKnown && shown.ruleType == type;
    if (!isPictureKnown && !isSamePicture(m_table.pixmap(row, column), *picture))
        m_table.setPixmap(row, column, *picture);
    shown = {true, type, time.value()};
}

} // namespace meta
