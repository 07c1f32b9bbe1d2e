#pragma once

#include "Group.h"
#include "GroupPickerBase.h"

#include <QPointer>

class Effect;
class MapModel;
class QTreeWidgetItem;

/// Picks a light group of the map for an effect.
///
/// A group that is clicked is written to the effect's "gid" at once, and Cancel does not take that
/// back; with an effect that is gone nothing is written.
class GroupPickerDialog : public GroupPickerBase
{
    Q_OBJECT

public:
    /// @param mapModel not owned; null shows no groups
    /// @param effect not owned; may be null or go away at any time
    GroupPickerDialog(MapModel *mapModel, Effect *effect, QWidget *parent = nullptr,
                      const QString &name = {}, bool modal = false, Qt::WindowFlags flags = {});

    /// Fills the list from the map and selects its first row. Leaf groups are left out,
    /// synchronized groups as long as the check box is clear.
    void populateList();

public slots:
    /// Takes the item's group for the effect; null is ignored.
    void handleClicked(QTreeWidgetItem *item);
    /// As handleClicked(), and accepts the dialog.
    void handleDoubleClicked(QTreeWidgetItem *item);
    /// Takes the selected group, if there is one; by then OK has hidden the dialog.
    void handleOkButtonClicked();
    /// Fills the list again.
    void handleSyncClicked();
    void languageChange() override;

private:
    static QString typeText(GroupTypeEnum type);

    MapModel *m_mapModel;
    QPointer<Effect> m_effect;
};
