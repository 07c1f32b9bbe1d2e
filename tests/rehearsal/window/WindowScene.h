#pragma once

#include "Effect.h"
#include "MainWindow.h"
#include "MetaEffect.h"
#include "MetaWidget.h"
#include "StageView.h"
#include "TableWidget.h"
#include "TimelineView.h"

#include <QAction>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

/// Settings and data of the program in a folder that no other test knows, for as long as this
/// program runs. To be called before a window is made.
void useOwnHome();
/// Forgets what windows have stored there.
void clearHome();

/// A show of one minute on the lights 1 (left), 2 (middle) and 3 (right). Its children: 1 "Rise" on
/// the left until 2 s; 2 "Next", linked to its end, in the middle for 3 s; 3 "Last" on the right,
/// slowly from 0 to 1 from 1 s on; 4 "Inner", a meta effect from 10 s to 14 s with a child of its
/// own, 1 "Deep" on all lights.
QByteArray minuteShow();
/// One meta effect with this many short children, named "Child 1" and so on.
QByteArray crowdedShow(int children);
/// Two meta effects, "First" on the left light for 3 s and "Second" on the right one for 5 s.
QByteArray twoEffectsShow();

/// Every property that is not "0", an effect's in the order of their keys. What is not there counts
/// as "0".
QByteArray contentOf(const QByteArray &showText);
/// The lines in which contents differ, those of the first marked by "-", of the second by "+";
/// empty where they are the same.
QString difference(const QByteArray &before, const QByteArray &after);

/// The window on a show of its own, seen and active, and a user at it.
class WindowScene
{
public:
    explicit WindowScene(const QByteArray &showText = minuteShow());
    /// A window without a show yet.
    enum Empty { WithoutShow };
    explicit WindowScene(Empty);

    QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }
    QString write(const char *name, const QByteArray &content) const;
    static QByteArray read(const QString &file);

    rehearsal::ShowDocument &document() { return window.document(); }
    rehearsal::Playback &playback() { return window.playback(); }
    MetaEffect &top(int index = 0);
    Effect &childOf(quint32 eid);
    QString childText(quint32 eid, const char *key);
    double light(quint32 uid);

    template<typename Widget>
    Widget &part(const char *name) const
    {
        auto *found = window.findChild<Widget *>(QString::fromLatin1(name));
        if (!found)
            qFatal("there is no %s", name);
        return *found;
    }
    rehearsal::StageView &stage() const { return part<rehearsal::StageView>("stage"); }
    rehearsal::TimelineView &timeline() const { return part<rehearsal::TimelineView>("timeline"); }
    QAction &action(const char *name) const { return part<QAction>(name); }
    void trigger(const char *name) const;

    // --- The editor. All of it is another one after each undo. ---

    /// The outermost form.
    MetaWidget &form() const;
    meta::TableWidget &table() const { return *form().m_effectTable; }
    /// Not of a nested form, if the outermost one has a field of that name.
    template<typename Widget>
    Widget &field(const char *name) const
    {
        const QList<Widget *> found = form().findChildren<Widget *>(QString::fromLatin1(name));
        const auto outer = std::min_element(
            found.begin(), found.end(), [](auto *a, auto *b) { return depthOf(*a) < depthOf(*b); });
        if (outer == found.end())
            qFatal("there is no field %s", name);
        return **outer;
    }
    /// Of the form's own table; -1 if there is none.
    static int rowOf(const MetaWidget &form, quint32 eid);
    static QStringList selectedEids(const MetaWidget &form);

    // --- What a user does ---

    /// What has the focus of the active window. After a dialog that is the window again.
    QWidget &focus() const;
    /// To what has the focus.
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const;
    void type(const QString &text) const;
    void undo() const { key(Qt::Key_Z, Qt::ControlModifier); }
    void redo() const { key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier); }
    void click(quint32 eid, int column) const { click(form(), eid, column); }
    void select(quint32 eid) const { click(eid, 0); }
    static void click(const MetaWidget &form, quint32 eid, int column);
    /// Opens the cell's line.
    static void openCell(const MetaWidget &form, quint32 eid, int column);
    void typeIntoCell(quint32 eid, int column, const QString &text) const;
    /// Clicks the field, marks what is in it and types over it.
    void typeInto(const char *fieldName, const QString &text) const;
    static void typeInto(QWidget &field, const QString &text);
    /// Lets what is queued happen, and what that queues.
    static void pause();

    /// Empty when the timeline, the table and the effect agree on the children; else what does not.
    QString disagreement();

    QTemporaryDir folder;
    QString file; ///< of the document; empty without a show
    rehearsal::MainWindow window;

private:
    void show();
    static int depthOf(const QWidget &widget);
};
