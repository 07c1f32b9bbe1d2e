#include "GroupPickerBase.h"

#include "GroupListView.h"

#include <QCheckBox>
#include <QEvent>
#include <QHeaderView>
#include <QPushButton>
#include <QVBoxLayout>

GroupPickerBase::GroupPickerBase(QWidget *parent, const QString &name, bool modal,
                                 Qt::WindowFlags flags)
    : QDialog(parent, flags)
{
    setObjectName(name.isEmpty() ? QStringLiteral("GroupPickerBase") : name);
    setModal(modal);

    auto *column = new QVBoxLayout(this);
    column->setObjectName(QStringLiteral("GroupPickerBaseLayout"));
    column->setContentsMargins(11, 11, 11, 11);
    column->setSpacing(6);

    m_groupListView = new meta::GroupListView(this);
    m_groupListView->setObjectName(QStringLiteral("m_groupListView"));
    m_groupListView->setColumnCount(3);
    m_groupListView->header()->setStretchLastSection(false);
    m_groupListView->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_groupListView->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    m_groupListView->sortByColumn(0, Qt::AscendingOrder);
    m_groupListView->setSortingEnabled(true);
    column->addWidget(m_groupListView);

    m_syncBox = new QCheckBox(this);
    m_syncBox->setObjectName(QStringLiteral("m_syncBox"));
    column->addWidget(m_syncBox);

    auto *row = new QHBoxLayout;
    row->setObjectName(QStringLiteral("layout10"));
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    row->addItem(new QSpacerItem(201, 21, QSizePolicy::Expanding, QSizePolicy::Minimum));

    buttonOk = new QPushButton(this);
    buttonOk->setObjectName(QStringLiteral("buttonOk"));
    buttonOk->setAutoDefault(true);
    buttonOk->setDefault(true);
    row->addWidget(buttonOk);

    buttonCancel = new QPushButton(this);
    buttonCancel->setObjectName(QStringLiteral("buttonCancel"));
    row->addWidget(buttonCancel);
    column->addLayout(row);

    GroupPickerBase::languageChange();
    resize(QSize(317, 434).expandedTo(minimumSizeHint()));

    connect(buttonOk, &QPushButton::clicked, this, &QDialog::accept);
    connect(buttonCancel, &QPushButton::clicked, this, &QDialog::reject);
}

void GroupPickerBase::languageChange()
{
    setWindowTitle(tr("Group Picker"));
    m_groupListView->setHeaderLabels({tr("Name"), tr("Type"), tr("GID")});
    m_syncBox->setText(tr("Display Synchronized Groups"));
    // A new text brings a shortcut of its own: OK shall have none, and Cancel always Alt+C.
    buttonOk->setText(tr("&OK"));
    buttonOk->setShortcut(QKeySequence());
    buttonCancel->setText(tr("&Cancel"));
    buttonCancel->setShortcut(QKeySequence(Qt::ALT | Qt::Key_C));
}

void GroupPickerBase::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        languageChange();
}
