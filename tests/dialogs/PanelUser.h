#pragma once

#include <QStringList>

#include <functional>

/// Uses the modal panels of AppKit with the mouse and the keyboard of the display, step by step,
/// while the test waits for their answer. One at a time.
///
/// A step is tried until the panel can take it. When that does not come, or the panel stays after
/// the last step, the panel is ended and fault() tells of it.
class PanelUser
{
public:
    PanelUser();
    ~PanelUser();
    Q_DISABLE_COPY_MOVE(PanelUser)

    PanelUser &click(const QString &button);
    /// In the last column of a file panel.
    PanelUser &clickFile(const QString &name);
    PanelUser &type(const QString &text);
    /// Keys have the names that xdotool gives them.
    PanelUser &press(const QString &key);
    PanelUser &hold(const QString &key);
    PanelUser &release(const QString &key);
    PanelUser &look(const std::function<void()> &look);

    /// Of the panel that is up.
    static QString title();
    /// Of the panel that is up, in no particular order.
    static QStringList texts();
    static QStringList buttons();
    /// The files and folders in the last column of the panel that is up, from top to bottom.
    static QStringList files();

    struct OpenPanelState
    {
        bool canChooseFiles;
        bool canChooseDirectories;
        bool allowsMultipleSelection;
        QStringList presetFileTypes; ///< those that were set before the panel was run
        QStringList allowedFileTypes;
    };
    static OpenPanelState openPanel();
    /// What the file panel that is up shows: the types that can be chosen, and the folder.
    static QStringList allowedFileTypes();
    static QString folder();

    /// The folder that the panels show when they come up.
    static void setFolder(const QString &path);

    /// Whether every step has been done.
    bool isDone() const;
    /// Empty if the last panel went as told.
    QString fault() const;

private:
    PanelUser &add(const QString &step, const std::function<bool()> &tryOnce);
    PanelUser &releaseMouse(const std::function<bool()> &pressAgain);

    struct Data;
    Data *m_data;
};
