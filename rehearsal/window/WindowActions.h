#pragma once

#include <QList>

class QAction;
class QActionGroup;
class QMainWindow;
class QMenu;
class QMenuBar;

namespace rehearsal {

/// Everything that the window can be told to do, with texts, icons and shortcuts, and the menus
/// that hold all of it. The actions belong to the window.
struct WindowActions
{
    /// Makes the actions and fills the window's menu bar.
    explicit WindowActions(QMainWindow &window);

    QAction *startNew;
    QAction *open;
    QAction *import;
    QAction *save;
    QAction *saveAs;
    QAction *render;
    QAction *quit;

    QAction *undo;
    QAction *redo;

    QAction *playPause; ///< reads "Play" or "Pause"
    QAction *stop;
    QAction *restart;
    QAction *loop; ///< checkable
    QAction *goToStart;
    QAction *goToEnd;
    QAction *back;
    QAction *forward;
    QAction *farBack;
    QAction *farForward;
    QAction *slower;
    QAction *faster;
    QAction *normalSpeed;

    QAction *stageZoomIn;
    QAction *stageZoomOut;
    QAction *stageFit;
    QAction *fullScreen; ///< checkable
    QAction *timelineZoomIn;
    QAction *timelineZoomOut;
    QAction *timelineFit;
    QAction *packed;          ///< checkable
    QAction *showTimeline;    ///< checkable
    QAction *showEditor;      ///< checkable
    QActionGroup *appearance; ///< of checkable actions; the data is the appearance's name
    QAction *resetLayout;

    QAction *about;

    QMenu *recentMenu;

    /// Shows whether the show is playing.
    void showPlaying(bool isPlaying) const;
    /// The ones on the transport bar.
    QList<QAction *> transport() const;
    /// All that have a shortcut made of a key without Ctrl or Alt: what has the focus comes first.
    QList<QAction *> singleKeyed() const;
};

} // namespace rehearsal
