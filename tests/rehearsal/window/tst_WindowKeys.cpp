#include "WindowEdits.h"

#include "EditorDock.h"

#include <QComboBox>
#include <QLineEdit>
#include <QMenuBar>
#include <QRegularExpression>
#include <QSlider>
#include <QSpinBox>
#include <QToolButton>

using rehearsal::Playback;

namespace {

void addMenuActions(const QMenu &menu, QList<QAction *> &actions)
{
    for (QAction *action : menu.actions()) {
        if (action->menu())
            addMenuActions(*action->menu(), actions);
        else if (!action->isSeparator())
            actions.append(action);
    }
}

/// Of every menu but the files opened last.
QList<QAction *> menuActions(WindowScene &scene)
{
    QList<QAction *> actions;
    for (QAction *menu : scene.window.menuBar()->actions())
        addMenuActions(*menu->menu(), actions);
    const QList<QAction *> recent = scene.part<QMenu>("recentMenu").actions();
    actions.removeIf([&](QAction *action) { return recent.contains(action); });
    return actions;
}

} // namespace

/// The keyboard: shortcuts, who gets a single key, and ways to go without a mouse.
class tst_WindowKeys : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useOwnHome(); }
    void init();

    void everyActionIsInAMenuAndHasAShortcut();
    void noTwoActionsShareAShortcut();
    void everyMenuEntryHasAMnemonicOfItsOwn();
    void usualShortcutsAreThere_data();
    void usualShortcutsAreThere();

    void spacePlaysAndPauses_data();
    void spacePlaysAndPauses();
    void heldSpacePlaysOnce();
    void singleKeysWorkTheTransport_data();
    void singleKeysWorkTheTransport();
    void heldModifiersDoNotCount();

    void lineTakesItsKeys();
    void openCellTakesItsKeys();
    void tableTakesItsArrows();
    void comboBoxTakesItsKeys();
    void buttonTakesTheSpaceBar();
    void spinBoxTakesItsKeys();
    void shortcutsWorkInFields();
    void nothingIsPlayedByADialogsKeys();
    void singleKeysWorkInAFloatingDock();

    void everythingIsReachedByTab();
    void tabStaysInReadingOrder();
    void everyFieldHasAName();
};

void tst_WindowKeys::init()
{
    clearHome();
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin)")));
}

// --- Actions ---

void tst_WindowKeys::everyActionIsInAMenuAndHasAShortcut()
{
    WindowScene scene;
    const QList<QAction *> inMenus = menuActions(scene);
    QVERIFY(inMenus.size() > 30);
    for (const QAction *action : inMenus)
        QVERIFY2(!action->shortcut().isEmpty(), qPrintable(action->text()));
    for (QAction *action : scene.window.actions()) {
        if (!action->isSeparator())
            QVERIFY2(inMenus.contains(action), qPrintable(action->text()));
    }
    // What stands on buttons too.
    for (const QToolButton *button : scene.window.findChildren<QToolButton *>()) {
        if (button->defaultAction() && !button->defaultAction()->text().isEmpty())
            QVERIFY2(inMenus.contains(button->defaultAction()),
                     qPrintable(button->defaultAction()->text()));
    }
}

void tst_WindowKeys::noTwoActionsShareAShortcut()
{
    WindowScene scene;
    QMap<QKeySequence, QString> owners;
    for (const QAction *action : menuActions(scene)) {
        for (const QKeySequence &shortcut : action->shortcuts()) {
            QVERIFY2(!owners.contains(shortcut),
                     qPrintable(QStringLiteral("%1: %2 and %3")
                                    .arg(shortcut.toString(), owners.value(shortcut),
                                         action->objectName())));
            owners.insert(shortcut, action->objectName());
        }
    }
}

void tst_WindowKeys::everyMenuEntryHasAMnemonicOfItsOwn()
{
    WindowScene scene;
    QSet<QString> menus;
    for (const QAction *menu : scene.window.menuBar()->actions()) {
        const QString letter = menu->text().section(u'&', 1).left(1).toLower();
        QVERIFY2(!letter.isEmpty() && !menus.contains(letter), qPrintable(menu->text()));
        menus.insert(letter);
        QSet<QString> entries;
        for (const QAction *entry : menu->menu()->actions()) {
            const QString own = entry->text().section(u'&', 1).left(1).toLower();
            QVERIFY2(own.isEmpty() || !entries.contains(own), qPrintable(entry->text()));
            entries.insert(own);
        }
    }
}

void tst_WindowKeys::usualShortcutsAreThere_data()
{
    QTest::addColumn<QByteArray>("action");
    QTest::addColumn<QString>("shortcut");
    const std::pair<const char *, const char *> usual[] = {
        {"newAction", "Ctrl+N"},          {"openAction", "Ctrl+O"}, {"saveAction", "Ctrl+S"},
        {"saveAsAction", "Ctrl+Shift+S"}, {"quitAction", "Ctrl+Q"}, {"undoAction", "Ctrl+Z"},
        {"redoAction", "Ctrl+Shift+Z"},   {"playAction", "Space"},  {"goToStartAction", "Home"},
        {"goToEndAction", "End"},         {"backAction", "Left"},   {"forwardAction", "Right"},
        {"fullScreenAction", "F11"}};
    for (const auto &[action, shortcut] : usual)
        QTest::newRow(shortcut) << QByteArray(action) << QString::fromLatin1(shortcut);
}

void tst_WindowKeys::usualShortcutsAreThere()
{
    QFETCH(QByteArray, action);
    QFETCH(QString, shortcut);
    WindowScene scene;
    QVERIFY(scene.action(action.constData()).shortcuts().contains(QKeySequence(shortcut)));
}

// --- Single keys ---

void tst_WindowKeys::spacePlaysAndPauses_data()
{
    QTest::addColumn<QByteArray>("focus");
    for (const char *focus : {"stage", "timeline", "seekSlider", ""})
        QTest::newRow(*focus ? focus : "nothing") << QByteArray(focus);
}

void tst_WindowKeys::spacePlaysAndPauses()
{
    QFETCH(QByteArray, focus);
    WindowScene scene;
    if (focus.isEmpty() && QApplication::focusWidget())
        QApplication::focusWidget()->clearFocus();
    else if (!focus.isEmpty())
        scene.part<QWidget>(focus.constData()).setFocus();
    scene.key(Qt::Key_Space);
    QCOMPARE(scene.playback().state(), Playback::State::Playing);
    scene.key(Qt::Key_Space);
    QCOMPARE(scene.playback().state(), Playback::State::Paused);
    scene.key(Qt::Key_Space, Qt::ShiftModifier);
    QCOMPARE(scene.playback().state(), Playback::State::Stopped);
}

void tst_WindowKeys::heldSpacePlaysOnce()
{
    WindowScene scene;
    scene.timeline().setFocus();
    scene.key(Qt::Key_Space);
    for (int repeat = 0; repeat < 3; ++repeat) {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "), true);
        QApplication::sendEvent(&scene.timeline(), &event);
        QCOMPARE(scene.playback().state(), Playback::State::Playing);
    }
}

void tst_WindowKeys::singleKeysWorkTheTransport_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<quint32>("position");
    const Qt::KeyboardModifiers none;
    const Qt::KeyboardModifiers shift = Qt::ShiftModifier;
    QTest::newRow("Home") << Qt::Key_Home << none << 0u;
    QTest::newRow("End") << Qt::Key_End << none << 59'999u;
    QTest::newRow("Left") << Qt::Key_Left << none << 29'000u;
    QTest::newRow("Right") << Qt::Key_Right << none << 31'000u;
    QTest::newRow("Shift+Left") << Qt::Key_Left << shift << 20'000u;
    QTest::newRow("Shift+Right") << Qt::Key_Right << shift << 40'000u;
}

void tst_WindowKeys::singleKeysWorkTheTransport()
{
    QFETCH(Qt::Key, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(quint32, position);
    WindowScene scene;
    for (const char *focus : {"stage", "m_deleteEffectButton"}) {
        scene.playback().seek(30'000);
        scene.part<QWidget>(focus).setFocus();
        scene.key(key, modifiers);
        // A button hands arrows on to its neighbours, so it does not count for these.
        if (QByteArray(focus) == "stage" || key == Qt::Key_Home || key == Qt::Key_End)
            QCOMPARE(scene.playback().position(), position);
    }
}

void tst_WindowKeys::heldModifiersDoNotCount()
{
    WindowScene scene;
    scene.stage().setFocus();
    const bool wasLooping = scene.action("loopAction").isChecked();
    scene.key(Qt::Key_L, Qt::AltModifier);
    scene.key(Qt::Key_L, Qt::ControlModifier);
    QCOMPARE(scene.action("loopAction").isChecked(), wasLooping);
    scene.key(Qt::Key_L);
    QCOMPARE(scene.action("loopAction").isChecked(), !wasLooping);
}

// --- The field with the focus comes first ---

void tst_WindowKeys::lineTakesItsKeys()
{
    WindowScene scene;
    scene.playback().seek(30'000);
    scene.select(3);
    scene.typeInto("m_startFixedLineEdit", "12");
    auto &line = scene.field<QLineEdit>("m_startFixedLineEdit");
    scene.key(Qt::Key_Home);
    QCOMPARE(line.cursorPosition(), 0);
    scene.key(Qt::Key_Right);
    QCOMPARE(line.cursorPosition(), 1);
    scene.key(Qt::Key_End);
    QCOMPARE(line.cursorPosition(), 2);
    scene.key(Qt::Key_Left, Qt::ShiftModifier);
    QCOMPARE(line.selectedText(), QStringLiteral("2"));
    scene.key(Qt::Key_Space);
    scene.key(Qt::Key_L);
    scene.key(Qt::Key_BracketLeft);
    QCOMPARE(scene.playback().state(), Playback::State::Paused);
    QCOMPARE(scene.playback().position(), 30'000u);
    QCOMPARE(scene.playback().speed(), 1.0);
    QVERIFY(scene.action("loopAction").isChecked());
}

void tst_WindowKeys::openCellTakesItsKeys()
{
    WindowScene scene;
    scene.playback().seek(30'000);
    scene.typeIntoCell(1, meta::NameColumn, "Late l [2]");
    QCOMPARE(scene.childText(1, "name"), QStringLiteral("Late l [2]"));
    QCOMPARE(scene.playback().state(), Playback::State::Paused);
    QCOMPARE(scene.playback().position(), 30'000u);
    QVERIFY(scene.action("loopAction").isChecked());
}

void tst_WindowKeys::tableTakesItsArrows()
{
    WindowScene scene;
    scene.playback().seek(30'000);
    const QString first = scene.table().text(0, meta::EidColumn);
    const QString second = scene.table().text(1, meta::EidColumn);
    scene.select(first.toUInt());
    scene.key(Qt::Key_Down);
    QCOMPARE(WindowScene::selectedEids(scene.form()), QStringList(second));
    const int column = scene.table().currentColumn();
    scene.key(Qt::Key_Right);
    QCOMPARE(scene.table().currentColumn(), column + 1);
    QCOMPARE(scene.playback().position(), 30'000u);
}

void tst_WindowKeys::comboBoxTakesItsKeys()
{
    WindowScene scene;
    scene.playback().seek(30'000);
    auto &box = scene.field<QComboBox>("m_effectComboBox");
    box.setFocus();
    scene.key(Qt::Key_End);
    QCOMPARE(box.currentIndex(), box.count() - 1);
    scene.key(Qt::Key_Home);
    QCOMPARE(box.currentIndex(), 0);
    QCOMPARE(scene.playback().position(), 30'000u);
}

void tst_WindowKeys::buttonTakesTheSpaceBar()
{
    WindowScene scene;
    scene.select(1);
    scene.field<QWidget>("m_deleteEffectButton").setFocus();
    scene.key(Qt::Key_Space);
    QVERIFY(!scene.top().getEffect(1));
    QCOMPARE(scene.playback().state(), Playback::State::Stopped);
}

void tst_WindowKeys::spinBoxTakesItsKeys()
{
    WindowScene scene;
    scene.playback().seek(30'000);
    scene.select(1);
    scene.typeInto("m_levelSpinBox", "0.5");
    scene.key(Qt::Key_Home);
    scene.key(Qt::Key_Right);
    scene.key(Qt::Key_Space);
    QCOMPARE(scene.playback().position(), 30'000u);
    QCOMPARE(scene.playback().state(), Playback::State::Paused);
    QCOMPARE(scene.childText(1, "level").toDouble(), 0.5);
}

void tst_WindowKeys::shortcutsWorkInFields()
{
    WindowScene scene;
    scene.select(3);
    scene.typeInto("m_startFixedLineEdit", "12");
    scene.key(Qt::Key_S, Qt::ControlModifier);
    QVERIFY(!scene.window.isWindowModified());
    QVERIFY(WindowScene::read(scene.file).contains("<property key=\"begin\">12000</property>"));
    scene.key(Qt::Key_Space, Qt::ControlModifier);
    QCOMPARE(scene.playback().state(), Playback::State::Playing);
    QCOMPARE(QApplication::focusWidget()->objectName(), QStringLiteral("m_startFixedLineEdit"));
}

void tst_WindowKeys::nothingIsPlayedByADialogsKeys()
{
    WindowScene scene;
    QString inDialog;
    const BoxUser user({[&](QDialog &dialog) {
        QTest::keyClick(&dialog, Qt::Key_End);
        QTest::keyClick(&dialog, Qt::Key_L);
        inDialog = scene.action("loopAction").isChecked() ? "looping" : "not looping";
        QTest::keyClick(&dialog, Qt::Key_Escape);
    }});
    scene.action("importAction").trigger();
    QCOMPARE(inDialog, QStringLiteral("looping"));
    QCOMPARE(scene.playback().position(), 0u);
}

void tst_WindowKeys::singleKeysWorkInAFloatingDock()
{
    WindowScene scene;
    auto &dock = scene.part<QDockWidget>("timelineDock");
    dock.setFloating(true);
    dock.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dock));
    scene.timeline().setFocus();
    QTest::keyClick(&scene.timeline(), Qt::Key_Space);
    QCOMPARE(scene.playback().state(), Playback::State::Playing);
    QTest::keyClick(&scene.timeline(), Qt::Key_Home);
}

// --- Without a mouse ---

// The table keeps Tab for its cells, so what lies behind it is reached from the other side.
void tst_WindowKeys::everythingIsReachedByTab()
{
    WindowScene scene;
    scene.select(3);
    QSet<const QWidget *> reached;
    const auto isInTable = [&] {
        const QWidget *focus = QApplication::focusWidget();
        return focus == &scene.table() || scene.table().isAncestorOf(focus);
    };
    for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab}) {
        scene.stage().setFocus();
        for (int i = 0; i < 100 && !isInTable(); ++i) {
            reached.insert(QApplication::focusWidget());
            QTest::keyClick(QApplication::focusWidget(), key);
        }
        QVERIFY(isInTable());
    }
    QStringList missed;
    for (const QWidget *widget : scene.window.findChildren<QWidget *>()) {
        if (widget->window() != &scene.window || !widget->isVisible() || !widget->isEnabled()
            || !(widget->focusPolicy() & Qt::TabFocus) || widget->focusProxy()
            || reached.contains(widget) || widget == &scene.table()
            || scene.table().isAncestorOf(widget))
            continue;
        // Of radio buttons the checked one is reached; arrows lead to the others.
        const auto *radio = qobject_cast<const QRadioButton *>(widget);
        if (!radio || radio->isChecked())
            missed.append(QString::fromLatin1(widget->metaObject()->className()) + u' '
                          + widget->objectName());
    }
    QCOMPARE(missed.join(QStringLiteral(", ")), QString());
    for (const char *name :
         {"stage", "timeline", "m_startFixedLineEdit", "seekSlider", "m_newEffectButton"})
        QVERIFY2(reached.contains(&scene.part<QWidget>(name)), name);
}

void tst_WindowKeys::tabStaysInReadingOrder()
{
    WindowScene scene;
    scene.select(3);
    scene.field<QWidget>("m_startFixedLineEdit").setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QVERIFY(scene.form().isAncestorOf(QApplication::focusWidget()));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    QCOMPARE(QApplication::focusWidget()->objectName(), QStringLiteral("m_startFixedLineEdit"));
}

void tst_WindowKeys::everyFieldHasAName()
{
    WindowScene scene;
    for (const char *name : {"stage", "timeline", "seekSlider", "speedBox", "effectBox"})
        QVERIFY2(!scene.part<QWidget>(name).accessibleName().isEmpty(), name);
}

QTEST_MAIN(tst_WindowKeys)
#include "tst_WindowKeys.moc"
