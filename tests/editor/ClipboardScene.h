#pragma once

#include "EditorStage.h"
#include "EffectColumns.h"
#include "PickerUser.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>

#include <functional>

inline const QString entry = QStringLiteral("<EFFECT-ENTRY>\n");

inline QString textOf(const Effect *effect, const char *key)
{
    return effect->getPropertyString(QString::fromLatin1(key));
}

inline QString entryOf(Effect &effect)
{
    return entry + savedText(effect);
}

inline QString clipboardText()
{
    return QGuiApplication::clipboard()->text();
}

inline void putOnClipboard(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

/// Child 1 lasts 4 s, child 2 follows it for one cycle of 1 s, child 3 lasts from 1 s to 2 s. They
/// stand in the rows 2, 1 and 0.
class OpenStage : public EditorStage
{
public:
    OpenStage()
    {
        add(1)->with("endfixedtime", 4000);
        add(2)->with("starttype", 1).with("startlinkeid", 1).with("endtype", 2);
        stub(2)->with("endcyclecount", 1);
        add(3)->with("startfixedtime", 1000).with("endfixedtime", 1000);
        effect.updateEffectTimes();
        effect.init();
        open();
        putOnClipboard(QStringLiteral("before"));
    }

    StubEffect *stub(quint32 eid) const { return static_cast<StubEffect *>(effect.getEffect(eid)); }
    void selectRows(int first, int second)
    {
        click(first, meta::NameColumn);
        click(second, meta::NameColumn, Qt::ControlModifier);
    }
};

// --- The menu ---

enum Entry { CutEntry = 0, CopyEntry = 1, PasteEntry = 2, DeleteEntry = 4 };

/// Lets somebody answer the menu that the opening action brings up, and waits until it is gone.
/// False when no menu came.
inline bool inMenu(const std::function<void()> &open, const std::function<void(QMenu &)> &answer)
{
    bool isAnswered = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!menu)
            return;
        timer.stop();
        answer(*menu);
        isAnswered = true;
    });
    timer.start(0);
    open();
    return QTest::qWaitFor([&] { return isAnswered && !QApplication::activePopupWidget(); });
}

/// Presses the right mouse button on a cell and clicks an entry of the menu.
inline bool chooseOnRow(EditorStage &stage, int row, Entry chosen)
{
    const QPoint place =
        stage.table().visualRect(stage.table().model()->index(row, meta::NameColumn)).center();
    return inMenu(
        [&] {
            // By way of the window, which makes a request for the menu of the press.
            QTest::mouseClick(stage.form().windowHandle(), Qt::RightButton, {},
                              stage.table().viewport()->mapTo(&stage.form(), place));
        },
        [chosen](QMenu &menu) {
            QTest::mouseClick(&menu, Qt::LeftButton, {},
                              menu.actionGeometry(menu.actions().at(chosen)).center());
        });
}

inline void pressMenuKey(const EditorStage &stage)
{
    stage.table().setFocus();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {1, 2}, {3, 4});
    QApplication::sendEvent(&stage.table(), &event);
}

/// Opens the menu with its key, walks down to an entry and presses Return.
inline bool chooseWithKeys(EditorStage &stage, Entry chosen)
{
    return inMenu([&] { pressMenuKey(stage); },
                  [chosen](QMenu &menu) {
                      for (int step = 0; step < 10; ++step) {
                          QTest::keyClick(&menu, Qt::Key_Down);
                          if (menu.activeAction() == menu.actions().at(chosen))
                              break;
                      }
                      QTest::keyClick(&menu, Qt::Key_Return);
                  });
}

// --- Ways to remove ---

enum Removal { Button, MenuDelete, MenuCut, SlotDelete, SlotDeleteSelected, SlotCut };

inline void addRemovals()
{
    QTest::addColumn<int>("removal");

    QTest::addRow("button") << int(Button);
    QTest::addRow("menu, delete") << int(MenuDelete);
    QTest::addRow("menu, cut") << int(MenuCut);
    QTest::addRow("slot, delete") << int(SlotDelete);
    QTest::addRow("slot, delete selected") << int(SlotDeleteSelected);
    QTest::addRow("slot, cut") << int(SlotCut);
}

inline bool isCut(int removal)
{
    return removal == MenuCut || removal == SlotCut;
}

/// Removes what is selected. False when the menu did not come.
inline bool remove(EditorStage &stage, int removal)
{
    switch (removal) {
    case Button: QTest::mouseClick(stage.form().m_deleteEffectButton, Qt::LeftButton); return true;
    case MenuDelete: return chooseWithKeys(stage, DeleteEntry);
    case MenuCut: return chooseWithKeys(stage, CutEntry);
    case SlotDelete: return QMetaObject::invokeMethod(&stage.effect, "handleDeleteEffect");
    case SlotDeleteSelected:
        return QMetaObject::invokeMethod(&stage.effect, "handleDeleteSelectedEffectsClicked");
    default: return QMetaObject::invokeMethod(&stage.effect, "handleCutEffect");
    }
}

/// Counts the windows, other than menus, that come up while it lives.
class WindowCounter : public QObject
{
public:
    WindowCounter() { qApp->installEventFilter(this); }

    bool eventFilter(QObject *object, QEvent *event) override
    {
        const auto *widget = qobject_cast<const QWidget *>(object);
        if (event->type() == QEvent::Show && widget && widget->isWindow()
            && !qobject_cast<const QMenu *>(widget))
            ++windows;
        return false;
    }

    int windows = 0;
};

// --- What the user is at when something happens ---

enum Situation { CellTyping, CellChooser, LinkChooser, NewChooser, CyclesTyping, MenuUp, PickerUp };

inline void addSituations()
{
    QTest::addColumn<int>("situation");

    QTest::newRow("typing in a cell") << int(CellTyping);
    QTest::newRow("choosing a type in a cell") << int(CellChooser);
    QTest::newRow("choosing a link target") << int(LinkChooser);
    QTest::newRow("choosing the type of a new effect") << int(NewChooser);
    QTest::newRow("typing a number of cycles") << int(CyclesTyping);
    QTest::newRow("the menu up") << int(MenuUp);
    QTest::newRow("the group picker up") << int(PickerUp);
}

/// Brings the user into the situation at child 2, lets something happen there, and lets the user go
/// on with what is still there. False when the situation did not come about.
inline bool happeningAt(Situation situation, OpenStage &stage, const std::function<void()> &event)
{
    const int row = stage.rowOf(2);
    meta::TableWidget &table = stage.table();
    bool isThere = true;
    switch (situation) {
    case CellTyping: {
        stage.click(row, meta::FadeInColumn);
        const QPointer<QWidget> line = table.indexWidget(table.currentIndex());
        isThere = line;
        QTest::keyClicks(line, QStringLiteral("2.5"));
        event();
        if (line)
            QTest::keyClick(line, Qt::Key_Return);
        break;
    }
    case CellChooser:
    case LinkChooser:
    case NewChooser: {
        stage.click(row, situation == CellChooser ? meta::TypeColumn : meta::NameColumn);
        QWidget *opened = situation == CellChooser   ? table.indexWidget(table.currentIndex())
                          : situation == LinkChooser ? stage.form().m_startLinkEffectComboBox
                                                     : stage.form().m_effectComboBox;
        const QPointer<QComboBox> chooser = qobject_cast<QComboBox *>(opened);
        isThere = chooser && chooser->isEnabled();
        chooser->showPopup();
        event();
        if (chooser && chooser->view()->isVisible())
            QTest::keyClick(chooser->view(), Qt::Key_Escape);
        break;
    }
    case CyclesTyping: {
        stage.click(row, meta::NameColumn);
        const QPointer<QSpinBox> box = stage.form().m_endCyclesSpinBox;
        isThere = box->isEnabled();
        box->setFocus();
        box->selectAll();
        QTest::keyClicks(box, QStringLiteral("12"));
        event();
        QTest::keyClick(box, Qt::Key_Return);
        break;
    }
    case MenuUp:
        stage.click(row, meta::NameColumn);
        isThere = inMenu([&] { pressMenuKey(stage); },
                         [&event](QMenu &menu) {
                             event();
                             QTest::keyClick(&menu, Qt::Key_Escape);
                         });
        break;
    case PickerUp: {
        const PickerUser user([&event](GroupPickerDialog &dialog) {
            PickerUser::click(dialog, QStringLiteral("Windows"));
            event();
            PickerUser::cancel(dialog);
        });
        stage.click(row, meta::GroupColumn);
        isThere = user.pickers() == 1;
        break;
    }
    }
    QCoreApplication::processEvents();
    return isThere;
}

inline QStringList savedChildren(const MetaEffect &effect)
{
    QStringList texts;
    const EffectList children = effect.getEffects();
    for (Effect *child : children)
        texts.append(savedText(*child));
    return texts;
}

inline void checkNothingIsSelected(EditorStage &stage)
{
    QCOMPARE(stage.selectedEids(), QStringList());
    QCOMPARE(stage.table().selectedRows(), QList<int>());
    CHECK_SANITY(stage);
}
