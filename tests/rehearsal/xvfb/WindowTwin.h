#pragma once

#include "MainWindow.h"

#include <QAbstractItemView>
#include <QTemporaryDir>

/// The same window as the program's, on the same display and of the same size, but not to be seen:
/// it tells where on the screen the program has what. Places are in the window's coordinates.
class WindowTwin
{
public:
    /// Opens a copy of a show, which is the twin's own.
    explicit WindowTwin(const QByteArray &show, const QSize &size);

    /// Never null: ends the test program where there is no such widget.
    template<typename Widget>
    Widget &find(const char *name) const
    {
        auto *found = m_window.findChild<Widget *>(QLatin1String(name));
        if (!found)
            qFatal("the window has no %s", name);
        return *found;
    }

    QRect areaOf(const QWidget &widget) const;
    QPoint middleOf(const char *name) const;
    /// The middle pixel of a light on the stage.
    QPoint lightAt(quint32 uid) const;
    /// Of a child of the show's first effect.
    QRect bar(const QList<quint32> &path) const;
    /// The name of a child in the editor's table.
    QPoint rowAt(const QString &name) const;

    /// As by a click on it in the table.
    void select(const QString &name) const;
    void seek(quint32 ms);
    /// What is to be seen of a widget.
    QImage picture(const char *name);

private:
    QModelIndex rowOf(const QString &name) const;

    QTemporaryDir m_folder;
    rehearsal::MainWindow m_window;
};
