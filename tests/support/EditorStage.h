#pragma once

#include "FormUser.h"
#include "MetaStage.h"

#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTest>

/// The descendant of that class and object name; fails the test when there is none.
template<typename Widget>
Widget *child(const QObject &root, const char *name)
{
    auto *found = root.findChild<Widget *>(QString::fromLatin1(name));
    if (!found)
        qFatal("there is no %s", name);
    return found;
}

/// A stub with a parameter widget of its own.
class WidgetStub : public StubEffect
{
    Q_OBJECT

public:
    explicit WidgetStub(MapModel *map, const QString &type = QStringLiteral("Stub"),
                        quint32 eid = 0);
    ~WidgetStub() override;

    QWidget *internalGetEffectWidget() override;
    /// Null while there is none.
    QWidget *parameterWidget() const { return m_widget; }
    void deleteParameterWidget() { delete m_widget; }

    int widgetRequests = 0;

private:
    QPointer<QWidget> m_widget;
};

/// One running meta effect on a map with a few groups, and its editor, once it is opened.
///
/// The host's types are "Chase", "Meta Effect", "Selection", "Stub", "Text" and "White Fade".
class EditorStage : public MetaStage
{
public:
    EditorStage();

    /// A child with a parameter widget, of type "Stub", named after its eid: "Child 7".
    WidgetStub *add(quint32 eid);

    /// Opens the editor and shows it.
    MetaWidget &open();
    MetaWidget &form() const;
    meta::TableWidget &table() const { return *form().m_effectTable; }

    /// The texts of a row, or of a column, as the table holds them.
    QStringList row(int row) const;
    QStringList column(int column) { return user().column(column); }
    int rowOf(quint32 eid) { return effect.getRow(eid); }
    static QStringList items(const QComboBox *chooser);

    // --- What a user does. ---

    FormUser user() { return {effect, form()}; }
    void click(int row, int column, Qt::KeyboardModifiers modifiers = {},
               Qt::MouseButton button = Qt::LeftButton)
    {
        user().click(row, column, modifiers, button);
    }
    void selectEid(quint32 eid) { click(rowOf(eid), 0); }
    void clickHeader(int column) { user().clickHeader(column); }
    void typeIntoCell(int row, int column, const QString &text)
    {
        user().typeIntoCell(row, column, text);
    }
    static void typeInto(QLineEdit &field, const QString &text) { FormUser::typeInto(field, text); }
    /// Answers the group picker that the action opens: picks the group of that name, or cancels
    /// when it is empty.
    template<typename Action>
    static void pickingGroup(const QString &name, Action action)
    {
        FormUser::answerPicker(name);
        action();
    }

    QStringList selectedEids() { return user().selectedEids(); }
    QString insanity() { return user().insanity(); }
    QString staleTimes(bool *isLoop) { return user().staleTimes(isLoop); }
};

#define CHECK_SANITY(stage)                                                                        \
    do {                                                                                           \
        const QString insanity_ = (stage).insanity();                                              \
        QVERIFY2(insanity_.isEmpty(), qPrintable(insanity_));                                      \
    } while (false)
