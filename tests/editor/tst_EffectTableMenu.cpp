#include "EffectColumns.h"
#include "LogCapture.h"
#include "OpenStage.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QRegularExpression>
#include <QTimer>
#include <QWindow>

#include <functional>
#include <optional>

using enum meta::EffectColumn;

namespace {

/// The menu as it was while it was open.
struct Menu
{
    QStringList texts;
    QPoint position;
};

/// Opens the menu by the action; its entry of that number, if it has one, is clicked then.
Menu openMenu(const std::function<void()> &open, int entry = -1)
{
    Menu menu;
    QTimer timer;
    timer.setInterval(0);
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        auto *popup = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!popup)
            return;
        timer.stop();
        const QList<QAction *> actions = popup->actions();
        for (const QAction *action : actions)
            menu.texts.append(action->isSeparator() ? QStringLiteral("-") : action->text());
        menu.position = popup->pos();
        if (entry >= 0)
            QTest::mouseClick(popup, Qt::LeftButton, {},
                              popup->actionGeometry(actions.at(entry)).center());
        else
            QTest::keyClick(popup, Qt::Key_Escape);
    });
    timer.start();
    open();
    // From the event queue it opens later.
    if (!QTest::qWaitFor([&] { return !timer.isActive() && !QApplication::activePopupWidget(); }))
        return {};
    return menu;
}

const QStringList menuTexts = {"Cut Selected Effects", "Copy Selected Effects",
                               "Paste Selected Effects", "-", "Delete Selected Effects"};

} // namespace

class tst_EffectTableMenu : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    void menuHasFiveEntriesAtThePlaceOfTheClick();
    void menuOpensBesideTheRowsToo();
    void menuOpensByKeyAtTheCurrentCell();
    void menuEntryDoesItsWork_data();
    void menuEntryDoesItsWork();
    void menuOpensAtTheGivenPlaceWhateverTheCell_data();
    void menuOpensAtTheGivenPlaceWhateverTheCell();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_EffectTableMenu::init()
{
    // What the offscreen platform says of windows with a minimum size and of menus.
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    m_debugLines.emplace(QtDebugMsg);
    QGuiApplication::clipboard()->clear();
}

void tst_EffectTableMenu::menuHasFiveEntriesAtThePlaceOfTheClick()
{
    OpenStage stage;
    QWidget *viewport = stage.table().viewport();
    const QPoint place = stage.at(1, NameColumn);

    const Menu menu = openMenu([&] {
        QTest::mouseClick(stage.form().windowHandle(), Qt::RightButton, {},
                          viewport->mapTo(&stage.form(), place));
    });

    QCOMPARE(menu.texts, menuTexts);
    QCOMPARE(menu.position, viewport->mapToGlobal(place));
    QCOMPARE(stage.selected(), QStringLiteral("2"));
    const QList<QAction *> actions = stage.form().m_popupMenu.actions();
    for (const QAction *action : actions)
        QVERIFY(action->shortcut().isEmpty());
}

void tst_EffectTableMenu::menuOpensBesideTheRowsToo()
{
    OpenStage stage;
    QWidget *viewport = stage.table().viewport();

    const Menu menu = openMenu([&] {
        QTest::mouseClick(stage.form().windowHandle(), Qt::RightButton, {},
                          viewport->mapTo(&stage.form(), QPoint(50, 90)));
    });

    QCOMPARE(menu.texts, menuTexts);
    QCOMPARE(menu.position, viewport->mapToGlobal(QPoint(50, 90)));
}

void tst_EffectTableMenu::menuOpensByKeyAtTheCurrentCell()
{
    OpenStage stage;
    stage.click(1, NameColumn);
    stage.table().setFocus();
    QCOMPARE(QApplication::focusWidget(), &stage.table());

    const Menu menu = openMenu([&] {
        // What a platform makes of the menu key.
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {1, 2}, {3, 4});
        QApplication::sendEvent(QApplication::focusWidget(), &event);
    });

    QCOMPARE(menu.texts, menuTexts);
    QCOMPARE(menu.position, stage.table().viewport()->mapToGlobal(stage.at(1, NameColumn)));
}

void tst_EffectTableMenu::menuEntryDoesItsWork_data()
{
    QTest::addColumn<int>("entry");
    QTest::addColumn<QStringList>("eids");
    QTest::addColumn<QString>("clipboard");
    QTest::newRow("cut") << 0 << QStringList({"1", "3"}) << "2";
    QTest::newRow("copy") << 1 << QStringList({"1", "2", "3"}) << "2";
    QTest::newRow("paste") << 2 << QStringList({"1", "2", "3", "4"}) << "3";
    QTest::newRow("delete") << 4 << QStringList({"1", "3"}) << "3";
}

void tst_EffectTableMenu::menuEntryDoesItsWork()
{
    QFETCH(int, entry);
    OpenStage stage;
    stage.selectEid(3);
    stage.effect.handleCopyEffect();
    stage.selectEid(2);

    openMenu([&] { stage.effect.handleContextMenuRequested(1, NameColumn, {100, 100}); }, entry);

    QTEST(stage.eids(), "eids");
    static const QRegularExpression eid(QStringLiteral("<property key=\"eid\">([^<]*)<"));
    QTEST(eid.match(QGuiApplication::clipboard()->text()).captured(1), "clipboard");
    CHECK_SANITY(stage);
}

void tst_EffectTableMenu::menuOpensAtTheGivenPlaceWhateverTheCell_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");
    QTest::newRow("cell") << 1 << int(TypeColumn);
    QTest::newRow("beside the cells") << -1 << -1;
    QTest::newRow("behind the last row") << 99 << 99;
}

void tst_EffectTableMenu::menuOpensAtTheGivenPlaceWhateverTheCell()
{
    QFETCH(int, row);
    QFETCH(int, column);
    OpenStage stage;
    bool isOpenStill = false;

    const Menu menu = openMenu([&] {
        stage.effect.handleContextMenuRequested(row, column, {123, 45});
        isOpenStill = stage.form().m_popupMenu.isVisible();
    });

    QCOMPARE(menu.texts, menuTexts);
    QCOMPARE(menu.position, QPoint(123, 45));
    QVERIFY(!isOpenStill); // the call returns when the menu is closed
}

QTEST_MAIN(tst_EffectTableMenu)
#include "tst_EffectTableMenu.moc"
