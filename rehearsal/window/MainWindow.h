#pragma once

#include "Autosave.h"
#include "DocumentCommands.h"
#include "EditorMemory.h"
#include "Playback.h"
#include "RecentFiles.h"
#include "ShowDocument.h"
#include "WindowActions.h"

#include <QMainWindow>

class QComboBox;
class QLabel;

namespace rehearsal {

class EditorDock;
class KeyRouting;
class StageView;
class TimelineView;
class TransportBar;

/// The window: stage, timeline, the editor that the show's effect brings along, and the transport.
class MainWindow final : public QMainWindow
{
    Q_OBJECT

public:
    /// Remembers its layout in the program's settings.
    explicit MainWindow(const Show::TypeSetup &types);
    ~MainWindow() override;

    /// Makes the window smaller where the screen has no room for it.
    void fitToScreen();

    /// Opens what the program was started with; without a file, what a crash left or a new show.
    /// False and a fault when the file cannot be opened and nothing of it can be recovered.
    bool start(const QString &file, FileFault *fault);

    /// The program ends without a question: what is not saved is left to be recovered.
    void leaveToRecover();

    ShowDocument &document() { return m_document; }
    Playback &playback() { return m_playback; }

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    QMenu *createPopupMenu() override;

private:
    void layOut();
    QWidget *makeTimelinePanel();
    void connectDocument();
    void connectPlayback();
    void connectFileActions();
    void connectPlayActions();
    void connectViewActions();
    void readSettings();
    void writeSettings() const;
    void resetLayout();
    void shareRoom();

    void letGoOfShow();
    void takeShow(ShowDocument::Replacement replacement);
    void chooseEffect(int index);
    void followEdit();
    void finishTyping();
    void showFrame();
    void warnOfAutosave(const QString &why);
    void refreshTitle();
    void refreshHistory();
    void tellUnknownTypes();
    void tellUntitled();
    void step(double seconds);
    void showFullScreenStage(bool on);
    void showAbout();

    WindowActions m_actions;
    ShowDocument m_document;
    Autosave m_autosave;
    Playback m_playback;
    RecentFiles m_recentFiles;
    DocumentCommands m_commands;
    KeyRouting *m_keys;

    StageView *m_stage;
    TimelineView *m_timeline;
    QDockWidget *m_timelineDock;
    QComboBox *m_effectBox; ///< the show's top-level effects; hidden where there is one
    EditorDock *m_editorDock;
    TransportBar *m_transport;
    QLabel *m_untitledNote;    ///< in the status bar: a crash left a show without a file
    QLabel *m_autosaveWarning; ///< in the status bar: there is no autosave
    QLabel *m_hint;            ///< in the status bar: what is under the cursor

    EditorMemory m_editorMemory; ///< while the show is built anew
    QByteArray m_layoutBeforeFullScreen;
    bool m_wasMaximized = false;
    bool m_hasLayout = false; ///< a remembered one, or one that was shared out
};

} // namespace rehearsal
