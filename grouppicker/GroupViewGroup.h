#pragma once

#include "Group.h"

#include <QTreeWidgetItem>

#include <optional>

class QPixmap;

/// A row of the group picker: a light group with the picture of its type.
///
/// Names sort in natural order (Group 9 before Group 10), other columns by their text; rows that
/// are equal in the sorted column are ordered by the other columns from the left.
class GroupViewGroup : public QTreeWidgetItem
{
public:
    /// What type() returns.
    static constexpr int Rtti = 2004;

    GroupViewGroup(QTreeWidget *list, quint32 uid, GroupTypeEnum type);
    GroupViewGroup(QTreeWidget *list, QTreeWidgetItem *after, quint32 uid, GroupTypeEnum type);
    GroupViewGroup(QTreeWidgetItem *parent, quint32 uid, GroupTypeEnum type);
    GroupViewGroup(QTreeWidgetItem *parent, QTreeWidgetItem *after, quint32 uid,
                   GroupTypeEnum type);

    quint32 getUID() const { return m_uid; }

    GroupTypeEnum getType() const { return m_type; }
    /// Also sets the picture of column 0; an unknown type leaves the picture as it is.
    void setType(GroupTypeEnum type);

    bool getEmpty() const { return m_empty; }
    /// Also sets the picture of column 0: that of an empty group, whatever its type, or the type's.
    void setEmpty(bool empty);

    /// What setName() stored; text set in column 0 by other means is not the name.
    const QString &getName() const { return m_name; }
    /// Also sets the text of column 0.
    void setName(const QString &name);

    /// The text by which a column is sorted, in either direction: of column 0 the text with white
    /// space simplified and its numbers written with ten digits, of the others the text as it is.
    QString key(int column, bool ascending) const;

    bool operator<(const QTreeWidgetItem &other) const override;
    void setData(int column, int role, const QVariant &value) override;

private:
    void init();
    void updatePixmap();

    // Pointers, because no pixmap can be made before the application.
    static bool m_createdPixmaps;
    static const QPixmap *m_syncPixmap;
    static const QPixmap *m_chasePixmap;
    static const QPixmap *m_leafPixmap;
    static const QPixmap *m_emptyPixmap;

    quint32 m_uid;
    GroupTypeEnum m_type;
    bool m_empty = false;
    QString m_name;
    mutable std::optional<QString> m_nameKey; ///< key of column 0, once it was asked for
};
