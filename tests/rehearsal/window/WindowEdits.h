#pragma once

#include "BoxUser.h"
#include "EffectColumns.h"
#include "PickerUser.h"
#include "WindowScene.h"

#include <QComboBox>
#include <QContextMenuEvent>
#include <QMenu>
#include <QRadioButton>

#include <functional>
#include <vector>

/// One thing that a user changes in the editor of the show of one minute, each one step to undo.
struct WindowEdit
{
    const char *name;
    std::function<void(WindowScene &)> make;
    /// What must be so before; may be steps of its own.
    std::function<void(WindowScene &)> prepare = {};
};

inline void press(QWidget &button)
{
    QTest::mouseClick(&button, Qt::LeftButton);
    WindowScene::pause();
}

inline void press(WindowScene &scene, const char *button)
{
    press(scene.field<QWidget>(button));
}

inline void pickGroup(const char *group, const std::function<void()> &open)
{
    const PickerUser user(PickerUser::picking(QString::fromLatin1(group)));
    open();
    if (user.pickers() != 1)
        qFatal("no group picker came");
}

/// Works an entry of the menu on a row.
inline void chooseInMenu(WindowScene &scene, quint32 eid, const QString &entry)
{
    scene.select(eid);
    bool isChosen = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!menu)
            return;
        timer.stop();
        for (QAction *action : menu->actions()) {
            if (!action->text().startsWith(entry))
                continue;
            QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
            isChosen = true;
            return;
        }
        qFatal("the menu has no such entry");
    });
    timer.start(1);
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {1, 2}, {3, 4});
    QApplication::sendEvent(&scene.table(), &event);
    if (!QTest::qWaitFor([&] { return isChosen && !QApplication::activePopupWidget(); }))
        qFatal("no menu came");
    WindowScene::pause();
}

/// Chooses another type in the row's cell, by its first letters, and says yes to the question.
inline void changeType(WindowScene &scene, quint32 eid, const QString &letters)
{
    const BoxUser user({BoxUser::type(Qt::Key_Return)});
    scene.click(eid, meta::TypeColumn);
    const QModelIndex cell =
        scene.table().model()->index(WindowScene::rowOf(scene.form(), eid), meta::TypeColumn);
    QWidget *chooser = scene.table().indexWidget(cell);
    if (!chooser)
        qFatal("the type is not to be chosen");
    if (QApplication::activePopupWidget())
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
    QTest::keyClicks(chooser, letters);
    QTest::keyClick(chooser, Qt::Key_Return);
    QTest::qWait(10);
    if (user.seen.size() != 1)
        qFatal("the change of the type was not asked about");
}

/// The form of the nested meta effect, which is selected for it.
inline MetaWidget &innerForm(WindowScene &scene)
{
    scene.select(4);
    auto *inner = scene.form().m_effectParameterFrame->findChild<MetaWidget *>();
    if (!inner)
        qFatal("there is no nested editor");
    return *inner;
}

inline void selectInner(WindowScene &scene)
{
    WindowScene::click(innerForm(scene), 1, meta::NameColumn);
}

inline const std::vector<WindowEdit> &windowEdits()
{
    using Scene = WindowScene;
    static const std::vector<WindowEdit> edits = {
        {"start time", [](Scene &s) { s.typeInto("m_startFixedLineEdit", "4.5"); },
         [](Scene &s) { s.select(3); }},
        {"start rule", [](Scene &s) { press(s, "m_startLinkedRadioButton"); },
         [](Scene &s) { s.select(3); }},
        {"link target",
         [](Scene &s) {
             auto &chooser = s.field<QComboBox>("m_startLinkEffectComboBox");
             chooser.setFocus();
             s.key(chooser.currentIndex() > 0 ? Qt::Key_Up : Qt::Key_Down);
         },
         [](Scene &s) { s.select(2); }},
        {"link edge", [](Scene &s) { press(s, "m_startLinkStartRadioButton"); },
         [](Scene &s) { s.select(2); }},
        {"link offset", [](Scene &s) { s.typeInto("m_startLinkOffsetLineEdit", "-0.75"); },
         [](Scene &s) { s.select(2); }},
        {"duration", [](Scene &s) { s.typeInto("m_endFixedLineEdit", "7.25"); },
         [](Scene &s) { s.select(1); }},
        {"end rule", [](Scene &s) { press(s, "m_endCyclesRadioButton"); },
         [](Scene &s) { s.select(1); }},
        {"cycles",
         [](Scene &s) {
             s.typeInto("m_endCyclesSpinBox", "12");
             s.key(Qt::Key_Return);
         },
         [](Scene &s) {
             s.select(1);
             press(s, "m_endCyclesRadioButton");
         }},
        {"name cell", [](Scene &s) { s.typeIntoCell(1, meta::NameColumn, "Dawn"); }},
        {"priority cell", [](Scene &s) { s.typeIntoCell(1, meta::PriorityColumn, "3"); }},
        {"start cell", [](Scene &s) { s.typeIntoCell(3, meta::StartColumn, "6.5"); }},
        {"end cell", [](Scene &s) { s.typeIntoCell(3, meta::EndColumn, "8"); }},
        {"fade cell", [](Scene &s) { s.typeIntoCell(2, meta::FadeInColumn, "0.5"); }},
        {"group", [](Scene &s) { pickGroup("Row", [&] { s.click(1, meta::GroupColumn); }); }},
        {"type", [](Scene &s) { changeType(s, 1, "St"); }},
        {"new effect", [](Scene &s) { pickGroup("Row", [&] { press(s, "m_newEffectButton"); }); }},
        {"deletion", [](Scene &s) { press(s, "m_deleteEffectButton"); },
         [](Scene &s) { s.select(1); }},
        {"cut", [](Scene &s) { chooseInMenu(s, 3, "Cut"); }},
        {"paste", [](Scene &s) { chooseInMenu(s, 2, "Paste"); },
         [](Scene &s) { chooseInMenu(s, 2, "Copy"); }},
        {"parameter", [](Scene &s) { s.typeInto("m_levelSpinBox", "0.25"); },
         [](Scene &s) { s.select(1); }},
        {"nested start time",
         [](Scene &s) { s.typeInto(*innerForm(s).m_startFixedLineEdit, "1.5"); }, selectInner},
        {"nested cell",
         [](Scene &s) {
             Scene::openCell(innerForm(s), 1, meta::NameColumn);
             s.type("Deeper");
             s.key(Qt::Key_Return);
         }},
        {"nested new effect",
         [](Scene &s) { pickGroup("Left", [&] { press(*innerForm(s).m_newEffectButton); }); }},
        {"nested deletion", [](Scene &s) { press(*innerForm(s).m_deleteEffectButton); },
         selectInner},
    };
    return edits;
}

/// A row for each, to be fetched as the index "edit".
inline void addWindowEdits()
{
    QTest::addColumn<int>("edit");
    for (std::size_t i = 0; i < windowEdits().size(); ++i)
        QTest::newRow(windowEdits()[i].name) << static_cast<int>(i);
}
