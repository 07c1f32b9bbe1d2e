#pragma once

#include <QDialog>

class QCheckBox;
class QPushButton;

namespace meta {
class GroupListView;
}

/// The form of the group picker: a list of groups, a check box, OK and Cancel.
class GroupPickerBase : public QDialog
{
    Q_OBJECT

public:
    /// @param name the object name; empty text stands for "GroupPickerBase"
    explicit GroupPickerBase(QWidget *parent = nullptr, const QString &name = {},
                             bool modal = false, Qt::WindowFlags flags = {});

    // All owned by the form.
    meta::GroupListView *m_groupListView = nullptr; ///< columns: name, type, uid of the group
    QCheckBox *m_syncBox = nullptr;
    QPushButton *buttonOk = nullptr;
    QPushButton *buttonCancel = nullptr;

public slots:
    /// Sets every text anew, as the translators of the moment have it.
    virtual void languageChange();

protected:
    void changeEvent(QEvent *event) override;
};
