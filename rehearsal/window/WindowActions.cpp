#include "WindowActions.h"

#include "Appearance.h"
#include "TransportIcon.h"

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

namespace rehearsal {

namespace {

/// Adds actions to one menu of the window.
class MenuFiller
{
public:
    MenuFiller(QMainWindow &window, QMenu &menu) : m_window(window), m_menu(menu) {}

    QAction *add(const char *name, const QString &text, const QList<QKeySequence> &shortcuts)
    {
        auto *action = new QAction(text, &m_window);
        action->setObjectName(QLatin1String(name));
        action->setShortcuts(shortcuts);
        m_menu.addAction(action);
        // Shortcuts also work where the menu bar is hidden.
        m_window.addAction(action);
        return action;
    }
    QAction *addCheckable(const char *name, const QString &text,
                          const QList<QKeySequence> &shortcuts)
    {
        QAction *action = add(name, text, shortcuts);
        action->setCheckable(true);
        return action;
    }
    void addSeparator() { m_menu.addSeparator(); }

private:
    QMainWindow &m_window;
    QMenu &m_menu;
};

QString tr(const char *text)
{
    return QCoreApplication::translate("rehearsal::WindowActions", text);
}

QMenu *addMenu(QMainWindow &window, const char *name, const QString &title)
{
    QMenu *menu = window.menuBar()->addMenu(title);
    menu->setObjectName(QLatin1String(name));
    return menu;
}

void fillFileMenu(WindowActions &actions, QMainWindow &window)
{
    QMenu *menu = addMenu(window, "fileMenu", tr("&File"));
    MenuFiller filler(window, *menu);
    actions.startNew = filler.add("newAction", tr("&New"), {QKeySequence::New});
    actions.open = filler.add("openAction", tr("&Open…"), {QKeySequence::Open});
    actions.recentMenu = menu->addMenu(tr("Open &Recent"));
    actions.recentMenu->setObjectName(QStringLiteral("recentMenu"));
    actions.recentMenu->setToolTipsVisible(true);
    actions.import =
        filler.add("importAction", tr("&Import Sequence…"), {QKeySequence(Qt::CTRL | Qt::Key_I)});
    filler.addSeparator();
    actions.save = filler.add("saveAction", tr("&Save"), {QKeySequence::Save});
    actions.saveAs = filler.add("saveAsAction", tr("Save &As…"),
                                {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S)});
    filler.addSeparator();
    actions.render =
        filler.add("renderAction", tr("R&ender…"), {QKeySequence(Qt::CTRL | Qt::Key_R)});
    filler.addSeparator();
    actions.quit = filler.add("quitAction", tr("&Quit"), {QKeySequence(Qt::CTRL | Qt::Key_Q)});
    actions.quit->setMenuRole(QAction::QuitRole);
}

void fillEditMenu(WindowActions &actions, QMainWindow &window)
{
    MenuFiller filler(window, *addMenu(window, "editMenu", tr("&Edit")));
    actions.undo = filler.add("undoAction", tr("&Undo"), {QKeySequence(Qt::CTRL | Qt::Key_Z)});
    actions.redo =
        filler.add("redoAction", tr("&Redo"), {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)});
}

void fillPlayMenu(WindowActions &actions, QMainWindow &window)
{
    MenuFiller filler(window, *addMenu(window, "playMenu", tr("&Play")));
    actions.playPause =
        filler.add("playAction", tr("&Play"),
                   {QKeySequence(Qt::Key_Space), QKeySequence(Qt::CTRL | Qt::Key_Space)});
    actions.stop = filler.add("stopAction", tr("&Stop"), {QKeySequence(Qt::SHIFT | Qt::Key_Space)});
    actions.restart =
        filler.add("restartAction", tr("&Restart"), {QKeySequence(Qt::SHIFT | Qt::Key_Home)});
    actions.loop = filler.addCheckable("loopAction", tr("&Loop"), {QKeySequence(Qt::Key_L)});
    actions.stop->setIcon(transportIcon(TransportSymbol::Stop));
    actions.restart->setIcon(transportIcon(TransportSymbol::Restart));
    actions.loop->setIcon(transportIcon(TransportSymbol::Loop));
    for (QAction *action : {actions.playPause, actions.stop, actions.restart, actions.loop})
        action->setAutoRepeat(false);
    filler.addSeparator();
    actions.goToStart =
        filler.add("goToStartAction", tr("&Go to Start"), {QKeySequence(Qt::Key_Home)});
    actions.goToEnd = filler.add("goToEndAction", tr("Go to &End"), {QKeySequence(Qt::Key_End)});
    actions.back = filler.add("backAction", tr("&Back 1 s"), {QKeySequence(Qt::Key_Left)});
    actions.forward =
        filler.add("forwardAction", tr("&Forward 1 s"), {QKeySequence(Qt::Key_Right)});
    actions.farBack =
        filler.add("farBackAction", tr("Back 10 s"), {QKeySequence(Qt::SHIFT | Qt::Key_Left)});
    actions.farForward = filler.add("farForwardAction", tr("Forward 10 s"),
                                    {QKeySequence(Qt::SHIFT | Qt::Key_Right)});
    filler.addSeparator();
    actions.slower = filler.add("slowerAction", tr("Slo&wer"), {QKeySequence(Qt::Key_BracketLeft)});
    actions.faster =
        filler.add("fasterAction", tr("F&aster"), {QKeySequence(Qt::Key_BracketRight)});
    actions.normalSpeed =
        filler.add("normalSpeedAction", tr("&Normal Speed"), {QKeySequence(Qt::Key_Backslash)});
}

void fillAppearanceMenu(WindowActions &actions, QMainWindow &window, QMenu &menu)
{
    actions.appearance = new QActionGroup(&window);
    MenuFiller filler(window, menu);
    const auto add = [&](const char *name, const QString &text, Appearance appearance,
                         Qt::Key key) {
        QAction *action = filler.addCheckable(name, text, {QKeySequence(Qt::CTRL | Qt::ALT | key)});
        action->setData(appearanceName(appearance));
        actions.appearance->addAction(action);
    };
    add("systemAppearanceAction", tr("Like the &System"), Appearance::System, Qt::Key_1);
    add("lightAppearanceAction", tr("&Light"), Appearance::Light, Qt::Key_2);
    add("darkAppearanceAction", tr("&Dark"), Appearance::Dark, Qt::Key_3);
}

void fillViewMenu(WindowActions &actions, QMainWindow &window)
{
    QMenu *menu = addMenu(window, "viewMenu", tr("&View"));
    MenuFiller filler(window, *menu);
    actions.stageZoomIn =
        filler.add("stageZoomInAction", tr("Stage: Zoom &In"),
                   {QKeySequence(Qt::CTRL | Qt::Key_Plus), QKeySequence(Qt::CTRL | Qt::Key_Equal)});
    actions.stageZoomOut = filler.add("stageZoomOutAction", tr("Stage: Zoom &Out"),
                                      {QKeySequence(Qt::CTRL | Qt::Key_Minus)});
    actions.stageFit =
        filler.add("stageFitAction", tr("Stage: &Fit"), {QKeySequence(Qt::CTRL | Qt::Key_0)});
    actions.fullScreen = filler.addCheckable("fullScreenAction", tr("Stage: F&ull Screen"),
                                             {QKeySequence(Qt::Key_F11)});
    filler.addSeparator();
    actions.timelineZoomIn =
        filler.add("timelineZoomInAction", tr("Timeline: Zoom In"),
                   {QKeySequence(Qt::ALT | Qt::Key_Plus), QKeySequence(Qt::ALT | Qt::Key_Equal)});
    actions.timelineZoomOut = filler.add("timelineZoomOutAction", tr("Timeline: Zoom Out"),
                                         {QKeySequence(Qt::ALT | Qt::Key_Minus)});
    actions.timelineFit =
        filler.add("timelineFitAction", tr("Timeline: Fit"), {QKeySequence(Qt::ALT | Qt::Key_0)});
    actions.packed = filler.addCheckable("packedAction", tr("Timeline: &Packed Lanes"),
                                         {QKeySequence(Qt::CTRL | Qt::Key_P)});
    actions.timelineZoomIn->setIconText(tr("+"));
    actions.timelineZoomOut->setIconText(tr("−"));
    actions.timelineFit->setIconText(tr("Fit"));
    actions.packed->setIconText(tr("Packed"));
    filler.addSeparator();
    actions.showTimeline = filler.addCheckable("showTimelineAction", tr("Show &Timeline"),
                                               {QKeySequence(Qt::CTRL | Qt::Key_T)});
    actions.showEditor = filler.addCheckable("showEditorAction", tr("Show &Editor"),
                                             {QKeySequence(Qt::CTRL | Qt::Key_E)});
    filler.addSeparator();
    fillAppearanceMenu(actions, window, *menu->addMenu(tr("&Appearance")));
    actions.resetLayout = filler.add("resetLayoutAction", tr("Reset &Layout"),
                                     {QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_0)});
}

} // namespace

WindowActions::WindowActions(QMainWindow &window)
{
    fillFileMenu(*this, window);
    fillEditMenu(*this, window);
    fillPlayMenu(*this, window);
    fillViewMenu(*this, window);
    MenuFiller filler(window, *addMenu(window, "helpMenu", tr("&Help")));
    about = filler.add("aboutAction", tr("&About Rehearsal"), {QKeySequence(Qt::Key_F1)});
    about->setMenuRole(QAction::AboutRole);
    showPlaying(false);
}

void WindowActions::showPlaying(bool isPlaying) const
{
    playPause->setText(isPlaying ? tr("&Pause") : tr("&Play"));
    playPause->setIcon(transportIcon(isPlaying ? TransportSymbol::Pause : TransportSymbol::Play));
}

QList<QAction *> WindowActions::transport() const
{
    return {playPause, stop, restart, loop};
}

QList<QAction *> WindowActions::singleKeyed() const
{
    return {playPause, stop,    restart,    loop,   goToStart, goToEnd,    back,
            forward,   farBack, farForward, slower, faster,    normalSpeed};
}

} // namespace rehearsal
