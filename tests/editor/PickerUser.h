#pragma once

#include "GroupListView.h"
#include "GroupPickerDialog.h"

#include <QApplication>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <functional>

/// Somebody who answers every group picker that opens while this object lives, and cancels those
/// that he leaves open.
class PickerUser
{
public:
    using Answer = std::function<void(GroupPickerDialog &dialog)>;

    explicit PickerUser(Answer answer = {}) : m_answer(std::move(answer))
    {
        QObject::connect(&m_timer, &QTimer::timeout, qApp, [this] { look(); });
        m_timer.start(0);
    }

    /// How many pickers opened, once the events have run.
    int pickers() const
    {
        QTest::qWait(5);
        return m_pickers;
    }

    static void click(GroupPickerDialog &dialog, const QString &group)
    {
        QTest::mouseClick(dialog.m_groupListView->viewport(), Qt::LeftButton, {},
                          place(dialog, group));
    }
    static void doubleClick(GroupPickerDialog &dialog, const QString &group)
    {
        QTest::mouseDClick(dialog.m_groupListView->viewport(), Qt::LeftButton, {},
                           place(dialog, group));
    }
    static void accept(GroupPickerDialog &dialog) { QTest::keyClick(&dialog, Qt::Key_Return); }
    static void cancel(GroupPickerDialog &dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); }
    /// Clicks the group and accepts.
    static Answer picking(const QString &group)
    {
        return [group](GroupPickerDialog &dialog) {
            click(dialog, group);
            accept(dialog);
        };
    }

private:
    static QPoint place(const GroupPickerDialog &dialog, const QString &group)
    {
        const QList<QTreeWidgetItem *> items =
            dialog.m_groupListView->findItems(group, Qt::MatchExactly);
        if (items.isEmpty())
            qFatal("the group is not offered");
        return dialog.m_groupListView->visualItemRect(items.first()).center();
    }

    void look()
    {
        const QPointer<GroupPickerDialog> dialog(
            qobject_cast<GroupPickerDialog *>(QApplication::activeModalWidget()));
        if (!dialog)
            return;
        ++m_pickers;
        if (m_answer)
            m_answer(*dialog);
        if (dialog && dialog->isVisible())
            cancel(*dialog);
    }

    Answer m_answer;
    int m_pickers = 0;
    QTimer m_timer;
};
