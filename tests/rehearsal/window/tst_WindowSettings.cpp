#include "WindowEdits.h"

#include "EditorDock.h"
#include "TransportBar.h"

#include <QMenuBar>
#include <QRegularExpression>
#include <QScreen>
#include <QSettings>
#include <QStatusBar>

/// What a window remembers, and the full screen.
class tst_WindowSettings : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useOwnHome(); }
    void init();

    void usualSettings();
    void loopAndPackedAreRemembered();
    void windowIsNoLargerThanTheScreen();
    void layoutIsRemembered();
    void layoutIsReset();
    void appearanceIsAppliedAndRemembered_data();
    void appearanceIsAppliedAndRemembered();
    void brokenSettingsAreIgnored();

    void docksAreShownAndHidden_data();
    void docksAreShownAndHidden();

    void fullScreenHidesAllButTheStage();
    void fullScreenEnds_data();
    void fullScreenEnds();
    void fullScreenKeepsWhatWasHidden();
    void keysWorkInFullScreen();
    void leavingInFullScreenRemembersTheLayoutBefore();
};

void tst_WindowSettings::init()
{
    clearHome();
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin)")));
}

void tst_WindowSettings::usualSettings()
{
    WindowScene scene;
    QVERIFY(scene.action("loopAction").isChecked());
    QVERIFY(!scene.action("packedAction").isChecked());
    QVERIFY(!scene.timeline().isPacked());
    QVERIFY(scene.action("systemAppearanceAction").isChecked());
    QVERIFY(scene.action("showTimelineAction").isChecked());
    QVERIFY(scene.action("showEditorAction").isChecked());
    QVERIFY(!scene.action("fullScreenAction").isChecked());
    QVERIFY(scene.stage().width() > 300);
    QVERIFY(scene.timeline().height() > 100);
}

void tst_WindowSettings::loopAndPackedAreRemembered()
{
    {
        WindowScene scene;
        scene.trigger("loopAction");
        scene.trigger("packedAction");
        QVERIFY(scene.timeline().isPacked());
        QVERIFY(scene.window.close());
    }
    {
        WindowScene scene;
        QVERIFY(!scene.action("loopAction").isChecked());
        QVERIFY(!scene.playback().isLooping());
        QVERIFY(scene.action("packedAction").isChecked());
        QVERIFY(scene.timeline().isPacked());
        scene.trigger("loopAction");
        QVERIFY(scene.window.close());
    }
    WindowScene scene;
    QVERIFY(scene.playback().isLooping());
    QVERIFY(scene.timeline().isPacked());
}

void tst_WindowSettings::windowIsNoLargerThanTheScreen()
{
    WindowScene scene;
    const QSize room = scene.window.screen()->availableSize();
    QVERIFY(scene.window.width() > room.width());

    scene.window.fitToScreen();
    QCOMPARE(scene.window.width(), room.width());
    QVERIFY(scene.window.height() < room.height()); // with a title above it
    QVERIFY(scene.window.height() > room.height() * 9 / 10);

    scene.window.resize(700, 650);
    scene.window.fitToScreen();
    QCOMPARE(scene.window.size(), QSize(700, 650));
}

void tst_WindowSettings::layoutIsRemembered()
{
    {
        WindowScene scene;
        scene.window.resize(1111, 777);
        scene.window.removeDockWidget(&scene.part<QDockWidget>("editorDock"));
        scene.window.addDockWidget(Qt::LeftDockWidgetArea, &scene.part<QDockWidget>("editorDock"));
        scene.part<QDockWidget>("editorDock").show();
        scene.part<QDockWidget>("timelineDock").hide();
        WindowScene::pause();
        QVERIFY(scene.window.close());
    }
    WindowScene scene;
    QCOMPARE(scene.window.dockWidgetArea(&scene.part<QDockWidget>("editorDock")),
             Qt::LeftDockWidgetArea);
    QVERIFY(!scene.part<QDockWidget>("timelineDock").isVisible());
    QVERIFY(!scene.action("showTimelineAction").isChecked());
    QVERIFY(scene.part<QDockWidget>("editorDock").isVisible());
    QCOMPARE(scene.window.width(), 1111);
}

void tst_WindowSettings::layoutIsReset()
{
    WindowScene scene;
    scene.part<QDockWidget>("timelineDock").hide();
    scene.part<QDockWidget>("editorDock").setFloating(true);
    WindowScene::pause();
    QVERIFY(!scene.action("showTimelineAction").isChecked());
    scene.trigger("resetLayoutAction");
    QVERIFY(scene.part<QDockWidget>("timelineDock").isVisible());
    QVERIFY(scene.action("showTimelineAction").isChecked());
    QVERIFY(!scene.part<QDockWidget>("editorDock").isFloating());
    QCOMPARE(scene.window.dockWidgetArea(&scene.part<QDockWidget>("editorDock")),
             Qt::RightDockWidgetArea);
}

void tst_WindowSettings::appearanceIsAppliedAndRemembered_data()
{
    QTest::addColumn<QByteArray>("action");
    QTest::addColumn<bool>("isDark");
    QTest::newRow("dark") << QByteArray("darkAppearanceAction") << true;
    QTest::newRow("light") << QByteArray("lightAppearanceAction") << false;
}

void tst_WindowSettings::appearanceIsAppliedAndRemembered()
{
    QFETCH(QByteArray, action);
    QFETCH(bool, isDark);
    const auto isDarkNow = [] {
        const QPalette palette = QApplication::palette();
        return palette.color(QPalette::Window).lightness() < 100
               && palette.color(QPalette::WindowText).lightness() > 150;
    };
    const QPalette systems = QApplication::palette();
    {
        WindowScene scene;
        scene.trigger(isDark ? "lightAppearanceAction" : "darkAppearanceAction");
        QCOMPARE(isDarkNow(), !isDark);
        scene.trigger(action.constData());
        QCOMPARE(isDarkNow(), isDark);
        QVERIFY(!scene.action("systemAppearanceAction").isChecked());
        QVERIFY(scene.window.close());
    }
    QApplication::setPalette(QPalette());
    WindowScene scene;
    QVERIFY(scene.action(action.constData()).isChecked());
    QCOMPARE(isDarkNow(), isDark);
    scene.trigger("systemAppearanceAction");
    QCOMPARE(QApplication::palette().color(QPalette::Window), systems.color(QPalette::Window));
}

void tst_WindowSettings::brokenSettingsAreIgnored()
{
    for (const char *key :
         {"geometry", "layout", "packed", "loop", "appearance", "recentFiles", "autosaveSeconds"})
        QSettings().setValue(QLatin1String(key), QByteArray("nonsense"));
    WindowScene scene;
    QVERIFY(scene.stage().isVisible());
    QVERIFY(scene.part<QDockWidget>("editorDock").isVisible());
    QVERIFY(scene.action("systemAppearanceAction").isChecked());
}

void tst_WindowSettings::docksAreShownAndHidden_data()
{
    QTest::addColumn<QByteArray>("action");
    QTest::addColumn<QByteArray>("dock");
    QTest::newRow("timeline") << QByteArray("showTimelineAction") << QByteArray("timelineDock");
    QTest::newRow("editor") << QByteArray("showEditorAction") << QByteArray("editorDock");
}

void tst_WindowSettings::docksAreShownAndHidden()
{
    QFETCH(QByteArray, action);
    QFETCH(QByteArray, dock);
    WindowScene scene;
    auto &widget = scene.part<QDockWidget>(dock.constData());
    scene.trigger(action.constData());
    QVERIFY(!widget.isVisible());
    scene.trigger(action.constData());
    QVERIFY(widget.isVisible());
    widget.close();
    WindowScene::pause();
    QVERIFY(!scene.action(action.constData()).isChecked());
}

// --- Full screen ---

void tst_WindowSettings::fullScreenHidesAllButTheStage()
{
    WindowScene scene;
    scene.key(Qt::Key_F11);
    QVERIFY(scene.window.isFullScreen());
    QVERIFY(scene.stage().isVisible());
    QCOMPARE(scene.stage().size(), scene.window.size());
    for (const QWidget *part :
         {static_cast<QWidget *>(scene.window.menuBar()),
          static_cast<QWidget *>(scene.window.statusBar()), &scene.part<QWidget>("timelineDock"),
          &scene.part<QWidget>("editorDock"), &scene.part<QWidget>("transportBar")})
        QVERIFY2(!part->isVisible(), qPrintable(part->objectName()));
}

void tst_WindowSettings::fullScreenEnds_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("F11") << Qt::Key_F11;
    QTest::newRow("Escape") << Qt::Key_Escape;
}

void tst_WindowSettings::fullScreenEnds()
{
    QFETCH(Qt::Key, key);
    WindowScene scene;
    scene.window.resize(790, 780); // no larger than the screen of the tests
    WindowScene::pause();
    const QSize stage = scene.stage().size();
    const QSize window = scene.window.size();
    scene.key(Qt::Key_F11);
    QVERIFY(scene.window.isFullScreen());
    scene.key(key);
    QVERIFY(!scene.window.isFullScreen());
    QVERIFY(!scene.action("fullScreenAction").isChecked());
    for (const char *part : {"timelineDock", "editorDock", "transportBar"})
        QVERIFY2(scene.part<QWidget>(part).isVisible(), part);
    QVERIFY(scene.window.menuBar()->isVisible());
    QVERIFY(scene.window.statusBar()->isVisible());
    QVERIFY(scene.action("showTimelineAction").isChecked());
    QTRY_COMPARE(scene.window.size(), window);
    QTRY_COMPARE(scene.stage().size(), stage);
}

void tst_WindowSettings::fullScreenKeepsWhatWasHidden()
{
    WindowScene scene;
    scene.trigger("showTimelineAction");
    scene.trigger("fullScreenAction");
    scene.trigger("fullScreenAction");
    QVERIFY(!scene.part<QWidget>("timelineDock").isVisible());
    QVERIFY(scene.part<QWidget>("editorDock").isVisible());
    QVERIFY(!scene.action("showTimelineAction").isChecked());
}

void tst_WindowSettings::keysWorkInFullScreen()
{
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    scene.key(Qt::Key_F11);
    scene.key(Qt::Key_Space);
    QCOMPARE(scene.playback().state(), rehearsal::Playback::State::Playing);
    scene.key(Qt::Key_S, Qt::ControlModifier);
    QVERIFY(!scene.window.isWindowModified());
    scene.key(Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(scene.childText(1, "name"), QStringLiteral("Rise"));
    QVERIFY(!scene.part<QWidget>("editorDock").isVisible());
}

void tst_WindowSettings::leavingInFullScreenRemembersTheLayoutBefore()
{
    {
        WindowScene scene;
        scene.key(Qt::Key_F11);
        QVERIFY(scene.window.close());
    }
    WindowScene scene;
    QVERIFY(!scene.window.isFullScreen());
    QVERIFY(scene.part<QWidget>("timelineDock").isVisible());
    QVERIFY(scene.part<QWidget>("editorDock").isVisible());
    QVERIFY(scene.window.menuBar()->isVisible());
}

QTEST_MAIN(tst_WindowSettings)
#include "tst_WindowSettings.moc"
