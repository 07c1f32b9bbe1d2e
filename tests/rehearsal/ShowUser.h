#pragma once

#include "MetaEffect.h"
#include "MetaWidget.h"
#include "ShowFile.h"
#include "TableWidget.h"
#include "TestTypes.h"

#include <QIODevice>
#include <QRegularExpression>
#include <QTest>
#include <QTextStream>

/// Somebody at the editor of a meta effect.
class ShowUser
{
public:
    enum Entry { Cut = 0, Copy = 1, Paste = 2, Delete = 4 };

    explicit ShowUser(MetaEffect &effect)
        : m_form(*qobject_cast<MetaWidget *>(effect.internalGetEffectWidget()))
    {
        m_form.resize(1280, 800);
        m_form.show();
        if (!QTest::qWaitForWindowExposed(&m_form))
            qFatal("the editor's window did not come up");
    }

    meta::TableWidget &table() const { return *m_form.m_effectTable; }

    /// Clicks the name of a child. Without such a row the test ends.
    void select(const QString &name)
    {
        for (int row = 0; row < table().rowCount(); ++row) {
            if (table().text(row, 0) == name) {
                const QModelIndex cell = table().model()->index(row, 0);
                table().scrollTo(cell);
                QTest::mouseClick(table().viewport(), Qt::LeftButton, {},
                                  table().visualRect(cell).center());
                return;
            }
        }
        qFatal("there is no row of %s", qPrintable(name));
    }
    void choose(Entry entry) { m_form.m_popupMenu.actions().at(entry)->trigger(); }

private:
    MetaWidget &m_form;
};

/// Null and a warning when that is not a show.
inline std::unique_ptr<rehearsal::Show> readShow(const QString &file)
{
    rehearsal::FileFault fault;
    auto show = rehearsal::readShow(file, allTypes(), &fault);
    if (!show)
        qWarning("%s", qPrintable(fault.message()));
    return show;
}

/// The first effect of a show, which is a meta effect.
inline MetaEffect &topOf(const rehearsal::Show &show)
{
    return *qobject_cast<MetaEffect *>(show.effects().first());
}

inline QString textOf(const Effect &effect, const char *key)
{
    return effect.getPropertyString(QString::fromLatin1(key));
}

/// Null if there is none of that name.
inline Effect *childNamed(const MetaEffect &parent, const QString &name)
{
    const EffectList children = parent.getEffects();
    for (Effect *child : children) {
        if (textOf(*child, "name") == name)
            return child;
    }
    return nullptr;
}

inline QString savedText(Effect &effect)
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    effect.save(stream);
    return text;
}

/// The saved text at no level, less the name and the eid of the effect itself.
inline QString savedWithoutIdentity(Effect &effect)
{
    static const QRegularExpression indentation(QStringLiteral("^ +"),
                                                QRegularExpression::MultilineOption);
    QString text = savedText(effect).remove(indentation);
    for (const char *key : {"name", "eid"}) {
        const qsizetype start = text.indexOf(QStringLiteral("<property key=\"%1\"").arg(key));
        text.remove(start, text.indexOf(u'\n', start) + 1 - start);
    }
    return text;
}
