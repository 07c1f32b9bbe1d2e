#include "GroupPickerDialog.h"

#include "ChildKeys.h"
#include "GroupListView.h"
#include "GroupViewGroup.h"
#include "MapModel.h"

#include <QCheckBox>
#include <QHeaderView>
#include <QPushButton>

namespace {

enum Column { NameColumn, TypeColumn, GidColumn };

} // namespace

GroupPickerDialog::GroupPickerDialog(MapModel *mapModel, Effect *effect, QWidget *parent,
                                     const QString &name, bool modal, Qt::WindowFlags flags)
    : GroupPickerBase(parent, name, modal, flags), m_mapModel(mapModel), m_effect(effect)
{
    connect(buttonOk, &QPushButton::clicked, this, &GroupPickerDialog::handleOkButtonClicked);
    connect(m_groupListView, &meta::GroupListView::clicked, this,
            &GroupPickerDialog::handleClicked);
    connect(m_groupListView, &meta::GroupListView::doubleClicked, this,
            &GroupPickerDialog::handleDoubleClicked);
    connect(m_syncBox, &QCheckBox::clicked, this, &GroupPickerDialog::handleSyncClicked);

    // The uid stays in the list, for it is what is written, but is not shown.
    QHeaderView *header = m_groupListView->header();
    header->setMinimumSectionSize(0);
    header->setSectionResizeMode(GidColumn, QHeaderView::Interactive);
    header->resizeSection(GidColumn, 0);

    populateList();
}

void GroupPickerDialog::populateList()
{
    m_groupListView->setSortingEnabled(false); // sorts once, at the end
    m_groupListView->clear();
    if (m_mapModel) {
        const QMap<unsigned long, Group *> groups = m_mapModel->getGroups();
        for (const Group *group : groups) {
            const GroupTypeEnum type = group->groupType();
            if (type == LeafGroup || (type == SynchronizedGroup && !m_syncBox->isChecked()))
                continue;
            const auto uid = static_cast<quint32>(group->uid());
            auto *item = new GroupViewGroup(m_groupListView, uid, type);
            item->setText(NameColumn, group->name());
            item->setText(GidColumn, QString::number(uid));
            item->setText(TypeColumn, typeText(type));
        }
    }
    m_groupListView->setSortingEnabled(true);
    m_groupListView->setCurrentItem(m_groupListView->topLevelItem(0));
}

void GroupPickerDialog::handleClicked(QTreeWidgetItem *item)
{
    if (item && m_effect)
        meta::keys::gid.writeText(*m_effect, item->text(GidColumn));
}

void GroupPickerDialog::handleDoubleClicked(QTreeWidgetItem *item)
{
    handleClicked(item);
    accept();
}

void GroupPickerDialog::handleOkButtonClicked()
{
    handleClicked(m_groupListView->selectedItems().value(0));
}

void GroupPickerDialog::handleSyncClicked()
{
    populateList();
}

void GroupPickerDialog::languageChange()
{
    GroupPickerBase::languageChange();
    m_groupListView->setSortingEnabled(false); // the rows must not move while they are walked
    for (int row = 0; row < m_groupListView->topLevelItemCount(); ++row) {
        QTreeWidgetItem *item = m_groupListView->topLevelItem(row);
        item->setText(TypeColumn, typeText(static_cast<GroupViewGroup *>(item)->getType()));
    }
    m_groupListView->setSortingEnabled(true);
}

QString GroupPickerDialog::typeText(GroupTypeEnum type)
{
    switch (type) {
    case ChasingGroup: return tr("Chasing");
    case SynchronizedGroup: return tr("Synchronized");
    default: return tr("Unknown");
    }
}
