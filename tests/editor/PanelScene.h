#pragma once

#include "EditorStage.h"
#include "EffectHost.h"
#include "LogCapture.h"

#include <QApplication>
#include <QSignalBlocker>

/// An open editor on a few children, nothing selected, and a journal of what its time panel does.
///
/// The children's eids are 1, 2 and so on, in list order. The journal notes "1 starttype=0" for a
/// changed rule of child 1, "pass" for a resolution pass and "focus m_x" for a widget that gets the
/// focus.
class PanelScene : public EditorStage
{
public:
    explicit PanelScene(int count = 3)
    {
        for (int eid = 1; eid <= count; ++eid)
            addWatched(static_cast<quint32>(eid));
        open();
        QObject::connect(qApp, &QApplication::focusChanged, &m_context,
                         [](const QWidget *, const QWidget *now) {
                             if (now)
                                 qDebug("focus %s", qPrintable(now->objectName()));
                         });
    }

    WidgetStub *addWatched(quint32 eid)
    {
        WidgetStub *added = add(eid);
        EffectHost::setObserver(*added, [eid](const QString &key, const QString &text) {
            if (key.startsWith(u"start") || (key.startsWith(u"end") && key != u"end"))
                qDebug("%u %s=%s", eid, qPrintable(key), qPrintable(text));
        });
        return added;
    }

    /// The first child with that eid.
    StubEffect &at(quint32 eid) const { return *qobject_cast<StubEffect *>(effect.getEffect(eid)); }

    /// Sets properties of the child behind the editor's back, as in "starttype=1 endtype=2".
    void store(quint32 eid, const QString &properties)
    {
        for (const QString &property : properties.split(u' ', Qt::SkipEmptyParts))
            at(eid).setProperty(property.section(u'=', 0, 0), property.section(u'=', 1));
        take();
    }

    /// Selects the child; the journal starts anew behind it.
    void select(quint32 eid)
    {
        selectEid(eid);
        take();
    }

    /// The journal since the last call.
    QStringList take()
    {
        QStringList taken;
        const QStringList lines = m_log.lines();
        for (const QString &line : lines.sliced(m_taken)) {
            if (line.startsWith(u"MetaEffect::updateEffectTimes"))
                taken.append(QStringLiteral("pass"));
            else if (!line.startsWith(u' '))
                taken.append(line);
        }
        m_taken = lines.size();
        return taken;
    }

    QString startCell(quint32 eid) { return table().text(rowOf(eid), 4); }
    QString endCell(quint32 eid) { return table().text(rowOf(eid), 5); }

    /// Clicks where the button takes clicks, however wide it is.
    static void clickButton(QAbstractButton *button)
    {
        QTest::mouseClick(button, Qt::LeftButton, {}, {8, button->height() / 2});
    }

    /// Marks all and types over it without a click, which would move the focus.
    static void replaceText(QLineEdit *field, const QString &text)
    {
        field->selectAll();
        if (text.isEmpty())
            QTest::keyClick(field, Qt::Key_Delete);
        QTest::keyClicks(field, text);
    }

private:
    LogCapture m_log{QtDebugMsg};
    qsizetype m_taken = 0;
    QObject m_context;
};

/// Those notes of a journal that tell of something written.
inline QStringList writes(const QStringList &journal)
{
    return journal.filter(QStringLiteral("="));
}

inline QStringList withoutFocus(const QStringList &journal)
{
    QStringList rest;
    for (const QString &note : journal) {
        if (!note.startsWith(u"focus "))
            rest.append(note);
    }
    return rest;
}
