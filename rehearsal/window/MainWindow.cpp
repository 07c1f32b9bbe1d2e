#include "MainWindow.h"

#include "Appearance.h"
#include "EditorDock.h"
#include "Effect.h"
#include "FrameMeter.h"
#include "KeyRouting.h"
#include "ParameterEditor.h"
#include "StageView.h"
#include "TimelineView.h"
#include "TransportBar.h"
#include "TypingSteps.h"

#include <QAbstractItemView>
#include <QActionGroup>
#include <QApplication>
#include <QBoxLayout>
#include <QCloseEvent>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QScreen>
#include <QSettings>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QStyle>
#include <QTextDocument>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace rehearsal {

namespace {

constexpr QSize usualSize{1600, 960};
constexpr int layoutVersion = 1;
constexpr int saidForMs = 5000;

std::chrono::milliseconds autosaveInterval()
{
    const int seconds = QSettings().value(QStringLiteral("autosaveSeconds"), 30).toInt();
    return std::chrono::seconds(std::clamp(seconds, 1, 30));
}

/// The file that is dropped, if it is one that the window can take.
QString droppedFile(const QMimeData &data)
{
    const QList<QUrl> urls = data.urls();
    return urls.size() == 1 && urls.first().isLocalFile() ? urls.first().toLocalFile() : QString();
}

QToolButton *makeButton(QAction *action, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setDefaultAction(action);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

} // namespace

MainWindow::MainWindow(const Show::TypeSetup &types)
    : m_actions(*this),
      m_document(types),
      m_autosave(m_document, autosaveInterval()),
      m_recentFiles(*m_actions.recentMenu),
      m_commands(m_document, m_autosave, m_recentFiles, types, *this),
      m_keys(new KeyRouting(*this, m_actions.singleKeyed(), {m_actions.undo, m_actions.redo})),
      m_stage(new StageView(this)),
      m_timeline(new TimelineView(this)),
      m_timelineDock(new QDockWidget(tr("Timeline"), this)),
      m_effectBox(new QComboBox(this)),
      m_editorDock(new EditorDock(this)),
      m_transport(new TransportBar(m_playback, m_actions.transport(), this)),
      m_untitledNote(new QLabel(tr("A crash left an unsaved show: File > New offers it"), this)),
      m_autosaveWarning(new QLabel(tr("No autosave"), this)),
      m_hint(new QLabel(this))
{
    ParameterEditor::registerAsEditor();
    new TypingSteps(m_document, this);
    setAcceptDrops(true);
    layOut();
    connectDocument();
    connectPlayback();
    connectFileActions();
    connectPlayActions();
    connectViewActions();
    readSettings();
    refreshHistory();
}

MainWindow::~MainWindow()
{
    letGoOfShow();
    m_playback.setShow(nullptr);
}

bool MainWindow::start(const QString &file, FileFault *fault)
{
    if (file.isEmpty())
        return m_commands.recoverUntitled() || m_document.startNew(fault);
    return m_commands.openAsking(file, fault);
}

// --- What is where ---

void MainWindow::layOut()
{
    setObjectName(QStringLiteral("mainWindow"));
    m_stage->setObjectName(QStringLiteral("stage"));
    m_timeline->setObjectName(QStringLiteral("timeline"));
    setCentralWidget(m_stage);
    addToolBar(Qt::TopToolBarArea, m_transport);

    m_timelineDock->setObjectName(QStringLiteral("timelineDock"));
    m_timelineDock->setWidget(makeTimelinePanel());
    setDockOptions(dockOptions() | GroupedDragging);
    resetLayout();

    m_hint->setObjectName(QStringLiteral("hint"));
    statusBar()->addWidget(m_hint, 1);
    m_hint->setTextFormat(Qt::PlainText);
    m_untitledNote->setObjectName(QStringLiteral("untitledNote"));
    m_untitledNote->setTextFormat(Qt::PlainText);
    m_untitledNote->setToolTip(tr("The program did not end in order, and left edits of a show that "
                                  "was never saved. File > New offers them."));
    m_untitledNote->hide();
    statusBar()->addPermanentWidget(m_untitledNote);
    m_autosaveWarning->setObjectName(QStringLiteral("autosaveWarning"));
    m_autosaveWarning->hide();
    statusBar()->addPermanentWidget(m_autosaveWarning);
    statusBar()->addPermanentWidget(new FrameMeter(m_playback, this));
    resize(usualSize);
}

void MainWindow::fitToScreen()
{
    // What the system puts around the window is not known before it is seen.
    const QSize frame(0, style()->pixelMetric(QStyle::PM_TitleBarHeight));
    resize(size().boundedTo(screen()->availableSize() - frame));
}

void MainWindow::resetLayout()
{
    for (QDockWidget *dock : {m_timelineDock, static_cast<QDockWidget *>(m_editorDock)}) {
        dock->setFloating(false);
        dock->show();
    }
    // The editor is tall; the timeline lies below the stage.
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    addDockWidget(Qt::RightDockWidgetArea, m_editorDock);
    addDockWidget(Qt::BottomDockWidgetArea, m_timelineDock);
    m_transport->show();
    shareRoom();
}

void MainWindow::shareRoom()
{
    resizeDocks({m_editorDock}, {width() * 53 / 100}, Qt::Horizontal);
    resizeDocks({m_timelineDock}, {height() * 2 / 5}, Qt::Vertical);
}

// Docks take a size only in a window that is seen.
void MainWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (!std::exchange(m_hasLayout, true))
        QMetaObject::invokeMethod(this, &MainWindow::shareRoom, Qt::QueuedConnection);
}

QWidget *MainWindow::makeTimelinePanel()
{
    auto *panel = new QWidget(m_timelineDock);
    auto *column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto *row = new QHBoxLayout;
    row->setContentsMargins(4, 0, 4, 0);
    m_effectBox->setObjectName(QStringLiteral("effectBox"));
    m_effectBox->setAccessibleName(tr("Effect shown in timeline and editor"));
    m_effectBox->hide();
    row->addWidget(m_effectBox);
    row->addStretch();
    row->addWidget(makeButton(m_actions.packed, panel));
    row->addWidget(makeButton(m_actions.timelineZoomOut, panel));
    row->addWidget(makeButton(m_actions.timelineZoomIn, panel));
    row->addWidget(makeButton(m_actions.timelineFit, panel));
    column->addLayout(row);
    column->addWidget(m_timeline);
    return panel;
}

// --- The document ---

void MainWindow::connectDocument()
{
    using Replacement = ShowDocument::Replacement;
    connect(&m_document, &ShowDocument::showAboutToBeReplaced, this,
            [this](Replacement) { letGoOfShow(); });
    connect(&m_document, &ShowDocument::showReplaced, this, &MainWindow::takeShow);
    connect(&m_document, &ShowDocument::edited, this, &MainWindow::followEdit);
    connect(&m_document, &ShowDocument::modifiedChanged, this, &MainWindow::refreshTitle);
    connect(&m_document, &ShowDocument::fileChanged, this, &MainWindow::refreshTitle);
    connect(&m_document, &ShowDocument::historyChanged, this, &MainWindow::refreshHistory);
    connect(m_effectBox, &QComboBox::activated, this, &MainWindow::chooseEffect);
    connect(&m_commands, &DocumentCommands::typingWanted, this, &MainWindow::finishTyping);
    connect(&m_commands, &DocumentCommands::said, this,
            [this](const QString &words) { statusBar()->showMessage(words, saidForMs); });
    connect(&m_autosave, &Autosave::failed, this, [this](const FileFault &fault) {
        warnOfAutosave(tr("The autosave failed: %1").arg(fault.message()));
    });
    connect(&m_autosave, &Autosave::unavailable, this, &MainWindow::warnOfAutosave);
    connect(&m_autosave, &Autosave::working, m_autosaveWarning, &QLabel::hide);
}

void MainWindow::letGoOfShow()
{
    m_editorMemory = m_editorDock->release();
    // The timeline does without the effects until it gets others, and so keeps what is seen of it.
    m_stage->setMap(nullptr);
}

void MainWindow::takeShow(ShowDocument::Replacement replacement)
{
    Show *show = m_document.show();
    const bool isRebuilt = replacement == ShowDocument::Replacement::SameShowRebuilt;
    m_stage->setMap(&show->map());

    const int chosen = isRebuilt ? m_effectBox->currentIndex() : 0;
    m_effectBox->clear();
    for (const Effect *effect : show->effects()) {
        const QString name = effect->getPropertyString(QStringLiteral("name"));
        m_effectBox->addItem(name.isEmpty() ? effect->getPropertyString(QStringLiteral("type"))
                                            : name);
    }
    m_effectBox->setVisible(m_effectBox->count() > 1);
    m_effectBox->setCurrentIndex(std::min(chosen, m_effectBox->count() - 1));
    m_timeline->setEffect(show->effects().value(m_effectBox->currentIndex()), isRebuilt);
    m_editorDock->setEffect(show->effects().value(m_effectBox->currentIndex()));
    if (isRebuilt && m_editorDock->editor())
        m_editorMemory.restore(*m_editorDock->editor());
    // An open editor sees which effects start.
    if (isRebuilt)
        m_playback.setRebuiltShow(show);
    else
        m_playback.setShow(show);
    m_timeline->refresh(); // building an editor may have written to the effects
    if (!isRebuilt) {
        tellUnknownTypes();
        tellUntitled();
    }
}

void MainWindow::chooseEffect(int index)
{
    Effect *effect = m_document.show()->effects().value(index);
    m_timeline->setEffect(effect, false);
    m_editorDock->setEffect(effect);
    showFrame();
}

void MainWindow::followEdit()
{
    m_playback.refresh();
    m_timeline->refresh();
    showFrame();
}

// A field that takes its text over when it loses the focus takes it now, so that it is an edit of
// its own, which undo takes back and redo brings again.
void MainWindow::finishTyping()
{
    QWidget *field = QApplication::focusWidget();
    if (!field || !m_editorDock->isAncestorOf(field))
        return;
    // A cell gives its text only when the focus really goes.
    QWidget *around = field->parentWidget();
    auto *view = around ? qobject_cast<QAbstractItemView *>(around->parentWidget()) : nullptr;
    if (view && view->viewport() == around) {
        view->setFocus();
        return;
    }
    QFocusEvent out(QEvent::FocusOut, Qt::OtherFocusReason);
    QCoreApplication::sendEvent(field, &out);
}

void MainWindow::leaveToRecover()
{
    finishTyping();
    m_autosave.saveNow();
}

// It stays in sight for as long as it holds.
void MainWindow::warnOfAutosave(const QString &why)
{
    m_autosaveWarning->setToolTip(Qt::convertFromPlainText(why)); // never taken for markup
    m_autosaveWarning->show();
    statusBar()->showMessage(why);
}

void MainWindow::refreshTitle()
{
    setWindowFilePath(m_document.file());
    setWindowTitle(tr("%1[*] – Rehearsal").arg(m_document.displayName()));
    setWindowModified(m_document.isModified());
}

void MainWindow::refreshHistory()
{
    m_actions.undo->setEnabled(m_document.canUndo());
    m_actions.redo->setEnabled(m_document.canRedo());
}

void MainWindow::tellUnknownTypes()
{
    constexpr qsizetype longestType = 100;
    QStringList types;
    for (const auto &[type, line] : m_document.show()->unknownTypes())
        types.append(QStringLiteral("\"%1\"").arg(type.left(longestType)));
    if (!types.isEmpty())
        statusBar()->showMessage(
            tr("Effects of types that are not known here are kept, and stay dark: %1")
                .arg(types.join(QStringLiteral(", "))));
}

// Without a question, which would stand in front of a show that is to start.
void MainWindow::tellUntitled()
{
    m_untitledNote->setVisible(!m_autosave.untitledRecoverable().isEmpty());
}

// --- Playing ---

void MainWindow::connectPlayback()
{
    connect(&m_playback, &Playback::frameShown, this, &MainWindow::showFrame);
    connect(&m_playback, &Playback::stateChanged, this,
            [this] { m_actions.showPlaying(m_playback.state() == Playback::State::Playing); });
    connect(m_timeline, &TimelineView::seekRequested, &m_playback, &Playback::seek);
    connect(m_timeline, &TimelineView::childHovered, m_hint, &QLabel::setText);
}

void MainWindow::showFrame()
{
    m_stage->showFrame();
    m_timeline->setPosition(m_playback.position());
}

void MainWindow::connectPlayActions()
{
    connect(m_actions.playPause, &QAction::triggered, this, [this] {
        if (m_playback.state() == Playback::State::Playing)
            m_playback.pause();
        else
            m_playback.play();
    });
    connect(m_actions.stop, &QAction::triggered, &m_playback, &Playback::stop);
    connect(m_actions.restart, &QAction::triggered, &m_playback, &Playback::restart);
    connect(m_actions.loop, &QAction::toggled, &m_playback, &Playback::setLooping);
    connect(m_actions.goToStart, &QAction::triggered, this, [this] { m_playback.seek(0); });
    connect(m_actions.goToEnd, &QAction::triggered, this,
            [this] { m_playback.seek(m_playback.length()); });
    connect(m_actions.back, &QAction::triggered, this, [this] { step(-1); });
    connect(m_actions.forward, &QAction::triggered, this, [this] { step(1); });
    connect(m_actions.farBack, &QAction::triggered, this, [this] { step(-10); });
    connect(m_actions.farForward, &QAction::triggered, this, [this] { step(10); });
    connect(m_actions.slower, &QAction::triggered, this, [this] { m_transport->changeSpeed(-1); });
    connect(m_actions.faster, &QAction::triggered, this, [this] { m_transport->changeSpeed(1); });
    connect(m_actions.normalSpeed, &QAction::triggered, this,
            [this] { m_transport->setSpeed(1.0); });
}

void MainWindow::step(double seconds)
{
    const double position = m_playback.position() + seconds * 1000;
    m_playback.seek(static_cast<quint32>(std::clamp<double>(position, 0, m_playback.length())));
}

// --- Files ---

void MainWindow::connectFileActions()
{
    connect(m_actions.startNew, &QAction::triggered, &m_commands, &DocumentCommands::startNew);
    connect(m_actions.open, &QAction::triggered, this, [this] { m_commands.open(); });
    connect(m_actions.import, &QAction::triggered, this, [this] { m_commands.import(); });
    connect(m_actions.save, &QAction::triggered, &m_commands, &DocumentCommands::save);
    connect(m_actions.saveAs, &QAction::triggered, &m_commands, &DocumentCommands::saveAs);
    connect(m_actions.render, &QAction::triggered, &m_commands, &DocumentCommands::render);
    connect(m_actions.quit, &QAction::triggered, this, &QWidget::close);
    connect(m_actions.undo, &QAction::triggered, this, [this] {
        finishTyping();
        FileFault fault;
        if (!m_document.undo(&fault) && !fault.what.isEmpty())
            statusBar()->showMessage(fault.message());
    });
    connect(m_actions.redo, &QAction::triggered, this, [this] {
        finishTyping();
        FileFault fault;
        if (!m_document.redo(&fault) && !fault.what.isEmpty())
            statusBar()->showMessage(fault.message());
    });
    connect(m_actions.about, &QAction::triggered, this, &MainWindow::showAbout);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (!m_commands.mayLeave()) {
        event->ignore();
        return;
    }
    writeSettings();
    m_autosave.close();
    event->accept();
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (!droppedFile(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

// The sender of the drop waits for its end; questions come later.
void MainWindow::dropEvent(QDropEvent *event)
{
    event->acceptProposedAction();
    QMetaObject::invokeMethod(
        this, [this, file = droppedFile(*event->mimeData())] { m_commands.openOrImport(file); },
        Qt::QueuedConnection);
}

// --- View ---

void MainWindow::connectViewActions()
{
    connect(m_actions.stageZoomIn, &QAction::triggered, m_stage, &StageView::zoomIn);
    connect(m_actions.stageZoomOut, &QAction::triggered, m_stage, &StageView::zoomOut);
    connect(m_actions.stageFit, &QAction::triggered, m_stage, &StageView::fit);
    connect(m_actions.fullScreen, &QAction::toggled, this, &MainWindow::showFullScreenStage);
    connect(m_actions.timelineZoomIn, &QAction::triggered, m_timeline, &TimelineView::zoomIn);
    connect(m_actions.timelineZoomOut, &QAction::triggered, m_timeline, &TimelineView::zoomOut);
    connect(m_actions.timelineFit, &QAction::triggered, m_timeline, &TimelineView::zoomToFit);
    connect(m_actions.packed, &QAction::toggled, m_timeline, &TimelineView::setPacked);
    connect(m_actions.resetLayout, &QAction::triggered, this, &MainWindow::resetLayout);
    const auto tie = [](QAction *action, QDockWidget *dock) {
        connect(action, &QAction::triggered, dock, [dock](bool on) {
            dock->setVisible(on);
            if (on)
                dock->raise();
        });
        connect(dock->toggleViewAction(), &QAction::toggled, action, &QAction::setChecked);
        action->setChecked(true);
    };
    tie(m_actions.showTimeline, m_timelineDock);
    tie(m_actions.showEditor, m_editorDock);
    connect(m_actions.appearance, &QActionGroup::triggered, this, [](const QAction *action) {
        applyAppearance(appearanceNamed(action->data().toString()));
    });
}

// Everything but the stage goes away, and comes back as it was.
void MainWindow::showFullScreenStage(bool on)
{
    if (on) {
        m_layoutBeforeFullScreen = saveState(layoutVersion);
        m_wasMaximized = isMaximized();
        m_timelineDock->hide();
        m_editorDock->hide();
        m_transport->hide();
        menuBar()->hide();
        statusBar()->hide();
        m_stage->setFocus();
        showFullScreen();
        return;
    }
    if (m_wasMaximized)
        showMaximized();
    else
        showNormal();
    menuBar()->show();
    statusBar()->show();
    restoreState(m_layoutBeforeFullScreen, layoutVersion);
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && m_actions.fullScreen->isChecked())
        m_actions.fullScreen->setChecked(false);
    else if (!m_keys->work(*event))
        QMainWindow::keyPressEvent(event);
}

QMenu *MainWindow::createPopupMenu()
{
    return nullptr; // the view menu has it all
}

void MainWindow::showAbout()
{
    QMessageBox::about(this, tr("About Rehearsal"),
                       tr("<h3>Rehearsal %1</h3><p>A small host for light shows: it plays what an "
                          "effect plug-in makes of a show, and opens the plug-in's editor.</p>")
                           .arg(QStringLiteral(REHEARSAL_VERSION)));
}

// --- Settings ---

void MainWindow::readSettings()
{
    const QSettings settings;
    restoreGeometry(settings.value(QStringLiteral("geometry")).toByteArray());
    m_hasLayout =
        restoreState(settings.value(QStringLiteral("layout")).toByteArray(), layoutVersion);
    // A dock that is hidden before the window is seen does not tell.
    m_actions.showTimeline->setChecked(!m_timelineDock->isHidden());
    m_actions.showEditor->setChecked(!m_editorDock->isHidden());
    m_actions.packed->setChecked(settings.value(QStringLiteral("packed"), false).toBool());
    m_actions.loop->setChecked(settings.value(QStringLiteral("loop"), true).toBool());
    m_playback.setLooping(m_actions.loop->isChecked());
    const Appearance appearance =
        appearanceNamed(settings.value(QStringLiteral("appearance")).toString());
    for (QAction *action : m_actions.appearance->actions()) {
        if (action->data().toString() == appearanceName(appearance))
            action->setChecked(true);
    }
    applyAppearance(appearance);
}

void MainWindow::writeSettings() const
{
    QSettings settings;
    const bool isFullScreen = m_actions.fullScreen->isChecked();
    if (!isFullScreen)
        settings.setValue(QStringLiteral("geometry"), saveGeometry());
    settings.setValue(QStringLiteral("layout"),
                      isFullScreen ? m_layoutBeforeFullScreen : saveState(layoutVersion));
    settings.setValue(QStringLiteral("packed"), m_actions.packed->isChecked());
    settings.setValue(QStringLiteral("loop"), m_actions.loop->isChecked());
    settings.setValue(QStringLiteral("appearance"), m_actions.appearance->checkedAction()->data());
}

} // namespace rehearsal
