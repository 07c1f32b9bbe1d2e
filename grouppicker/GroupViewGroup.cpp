#include "GroupViewGroup.h"

#include <QPixmap>
#include <QTreeWidget>

#include <vector>

namespace {

// The letters of the lamps name their column: left, middle, right.
// clang-format off
constexpr const char *nineLamps[] = {
    "................",
    "..##...##...##..",
    ".#ll#.#mm#.#rr#.",
    ".#ll#.#mm#.#rr#.",
    "..##...##...##..",
    "................",
    "..##...##...##..",
    ".#ll#.#mm#.#rr#.",
    ".#ll#.#mm#.#rr#.",
    "..##...##...##..",
    "................",
    "..##...##...##..",
    ".#ll#.#mm#.#rr#.",
    ".#ll#.#mm#.#rr#.",
    "..##...##...##..",
    "................",
};

constexpr const char *oneLamp[] = {
    "................",
    "................",
    "................",
    "................",
    "................",
    "................",
    ".......##.......",
    "......#mm#......",
    "......#mm#......",
    ".......##.......",
    "................",
    "................",
    "................",
    "................",
    "................",
    "................",
};
// clang-format on

/// The XPM image of 16 x 16 pixels that has these colours ("<letter> c <colour>").
const QPixmap *createPixmap(const std::vector<const char *> &colours, const char *const (&rows)[16])
{
    const QByteArray head = "16 16 " + QByteArray::number(colours.size()) + " 1";
    std::vector<const char *> xpm{head.constData()};
    xpm.insert(xpm.end(), colours.begin(), colours.end());
    xpm.insert(xpm.end(), std::begin(rows), std::end(rows));
    return new QPixmap(xpm.data());
}

/// Rewrites every number with ten digits. The search goes on ten characters behind the start of
/// each run of digits, whatever it became: a run that is no unsigned 32-bit number stays as it is,
/// and when it is longer than ten digits, its eleventh begins the next.
QString naturalKey(const QString &text)
{
    constexpr qsizetype digits = 10;
    QString key = text.simplified();
    qsizetype start = 0;
    while (start < key.size()) {
        if (!key.at(start).isDigit()) {
            ++start;
            continue;
        }
        qsizetype end = start + 1;
        while (end < key.size() && key.at(end).isDigit())
            ++end;
        bool isNumber = false;
        const quint32 number = QStringView(key).sliced(start, end - start).toUInt(&isNumber);
        if (isNumber)
            key.replace(start, end - start, QString::asprintf("%010u", number));
        start += digits;
    }
    return key;
}

} // namespace

bool GroupViewGroup::m_createdPixmaps = false;
const QPixmap *GroupViewGroup::m_syncPixmap = nullptr;
const QPixmap *GroupViewGroup::m_chasePixmap = nullptr;
const QPixmap *GroupViewGroup::m_leafPixmap = nullptr;
const QPixmap *GroupViewGroup::m_emptyPixmap = nullptr;

GroupViewGroup::GroupViewGroup(QTreeWidget *list, quint32 uid, GroupTypeEnum type)
    : QTreeWidgetItem(list, Rtti), m_uid(uid), m_type(type)
{
    init();
}

GroupViewGroup::GroupViewGroup(QTreeWidget *list, QTreeWidgetItem *after, quint32 uid,
                               GroupTypeEnum type)
    : QTreeWidgetItem(list, after, Rtti), m_uid(uid), m_type(type)
{
    init();
}

GroupViewGroup::GroupViewGroup(QTreeWidgetItem *parent, quint32 uid, GroupTypeEnum type)
    : QTreeWidgetItem(parent, Rtti), m_uid(uid), m_type(type)
{
    init();
}

GroupViewGroup::GroupViewGroup(QTreeWidgetItem *parent, QTreeWidgetItem *after, quint32 uid,
                               GroupTypeEnum type)
    : QTreeWidgetItem(parent, after, Rtti), m_uid(uid), m_type(type)
{
    init();
}

void GroupViewGroup::init()
{
    if (!m_createdPixmaps) {
        m_syncPixmap = createPixmap(
            {". c white", "# c black", "l c #00e080", "m c #00e080", "r c #00e080"}, nineLamps);
        m_chasePixmap = createPixmap(
            {". c white", "# c black", "l c red", "m c #e08040", "r c yellow"}, nineLamps);
        m_leafPixmap = createPixmap({". c white", "# c black", "m c red"}, oneLamp);
        m_emptyPixmap = createPixmap(
            {". c #FFFFFF", "# c #898989", "l c #E8E8E8", "m c #E8E8E8", "r c #E8E8E8", "t c None"},
            nineLamps);
        m_createdPixmaps = true;
    }
    setExpanded(false);
    setFlags(flags() | Qt::ItemIsDragEnabled);
    updatePixmap();
}

void GroupViewGroup::setType(GroupTypeEnum type)
{
    m_type = type;
    updatePixmap();
}

void GroupViewGroup::setEmpty(bool empty)
{
    m_empty = empty;
    updatePixmap();
}

void GroupViewGroup::setName(const QString &name)
{
    m_name = name;
    setText(0, name);
}

void GroupViewGroup::updatePixmap()
{
    const QPixmap *pixmap = nullptr;
    if (m_empty) {
        pixmap = m_emptyPixmap;
    } else {
        switch (m_type) {
        case ChasingGroup: pixmap = m_chasePixmap; break;
        case SynchronizedGroup: pixmap = m_syncPixmap; break;
        case LeafGroup: pixmap = m_leafPixmap; break;
        }
    }
    if (pixmap)
        GroupViewGroup::setData(0, Qt::DecorationRole, *pixmap); // also while it is constructed
}

QString GroupViewGroup::key(int column, bool /*ascending*/) const
{
    if (column != 0)
        return text(column);
    if (!m_nameKey)
        m_nameKey = naturalKey(text(0));
    return *m_nameKey;
}

bool GroupViewGroup::operator<(const QTreeWidgetItem &other) const
{
    if (other.type() != Rtti)
        return QTreeWidgetItem::operator<(other);
    const auto &group = static_cast<const GroupViewGroup &>(other);
    const int sorted = treeWidget() ? qMax(treeWidget()->sortColumn(), 0) : 0;
    int order = key(sorted, true).compare(group.key(sorted, true));
    for (int column = 0; order == 0 && column < columnCount(); ++column)
        order = key(column, true).compare(group.key(column, true));
    return order < 0;
}

void GroupViewGroup::setData(int column, int role, const QVariant &value)
{
    if (column == 0 && (role == Qt::DisplayRole || role == Qt::EditRole))
        m_nameKey.reset();
    QTreeWidgetItem::setData(column, role, value);
}
