#include "WindowScene.h"

#include "EditorDock.h"
#include "EffectColumns.h"
#include "FileFault.h"
#include "TestTypes.h"

#include <QApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QSettings>
#include <QXmlStreamReader>

#include <algorithm>
#include <utility>

using rehearsal::FileFault;
using rehearsal::TimelineRow;

void useOwnHome()
{
    static const QTemporaryDir home;
    if (!home.isValid())
        qFatal("there is no place for settings");
    for (const char *variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        qputenv(variable, home.path().toLocal8Bit());
    for (const QSettings::Format format : {QSettings::NativeFormat, QSettings::IniFormat})
        QSettings::setPath(format, QSettings::UserScope, home.path());
    QCoreApplication::setOrganizationName(QStringLiteral("rehearsal"));
    QCoreApplication::setApplicationName(QStringLiteral("rehearsal"));
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
}

void clearHome()
{
    QSettings().clear();
}

// --- Shows ---

namespace {

QByteArray property(const char *key, const QByteArray &text)
{
    return QByteArray("<property key=\"") + key + "\">" + text + "</property>\n";
}

QByteArray number(int value)
{
    return QByteArray::number(value);
}

struct Child
{
    int eid;
    QByteArray type;
    QByteArray name;
    int gid;
    int begin;
    int duration;
    QByteArray more = {}; ///< properties and nested effects
};

QByteArray effectOf(const Child &child)
{
    return "<effect type=\"" + child.type + "\">\n" + property("type", child.type)
           + property("name", child.name) + property("eid", number(child.eid))
           + property("gid", number(child.gid)) + property("starttype", "0")
           + property("startfixedtime", number(child.begin)) + property("endtype", "0")
           + property("endfixedtime", number(child.duration)) + property("endcyclecount", "1")
           + property("begin", number(child.begin))
           + property("end", number(child.begin + child.duration)) + child.more + "</effect>\n";
}

QByteArray topOf(const QByteArray &name, int end, const QByteArray &children)
{
    return "<effect type=\"Meta Effect\">\n" + property("type", "Meta Effect")
           + property("loop", "1") + property("brightness", "1") + property("name", name)
           + property("end", number(end)) + children + "</effect>\n";
}

QByteArray showOf(const QByteArray &effects)
{
    return "<show version=\"1\">\n<map>\n"
           "<light uid=\"1\" name=\"Left light\" x=\"0.2\" y=\"0.5\"/>\n"
           "<light uid=\"2\" name=\"Middle light\" x=\"0.5\" y=\"0.5\"/>\n"
           "<light uid=\"3\" name=\"Right light\" x=\"0.8\" y=\"0.5\"/>\n"
           "<group uid=\"10\" name=\"Row\" type=\"chasing\" lights=\"1 2 3\"/>\n"
           "<group uid=\"11\" name=\"Left\" type=\"chasing\" lights=\"1\"/>\n"
           "<group uid=\"12\" name=\"Middle\" type=\"chasing\" lights=\"2\"/>\n"
           "<group uid=\"13\" name=\"Right\" type=\"chasing\" lights=\"3\"/>\n"
           "</map>\n"
           + effects + "</show>\n";
}

} // namespace

QByteArray minuteShow()
{
    QByteArray next = effectOf({2, "Solid", "Next", 12, 2000, 3000});
    next.replace(property("starttype", "0"), property("starttype", "1"));
    next.replace("</effect>", property("startlinkeid", "1") + "</effect>");
    return showOf(topOf("Show", 60'000,
                        effectOf({1, "Solid", "Rise", 11, 0, 2000}) + next
                            + effectOf({3, "Ramp", "Last", 13, 1000, 59'000})
                            + effectOf({4, "Meta Effect", "Inner", 0, 10'000, 4000,
                                        property("loop", "0") + property("brightness", "1")
                                            + effectOf({1, "Solid", "Deep", 10, 0, 4000})})));
}

QByteArray crowdedShow(int children)
{
    QByteArray effects;
    for (int eid = 1; eid <= children; ++eid)
        effects += effectOf({eid, "Solid", "Child " + number(eid), 10 + eid % 4, eid * 100, 500});
    return showOf(topOf("Crowd", children * 100 + 500, effects));
}

QByteArray twoEffectsShow()
{
    return showOf(topOf("First", 3000, effectOf({1, "Solid", "Left one", 11, 0, 3000}))
                  + topOf("Second", 5000, effectOf({1, "Solid", "Right one", 13, 0, 5000})));
}

QByteArray contentOf(const QByteArray &showText)
{
    QXmlStreamReader xml(showText);
    QByteArray content;
    QStringList properties;
    const auto putProperties = [&] {
        properties.sort();
        content += properties.join(u'\n').toUtf8() + '\n';
        properties.clear();
    };
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == u"property") {
            const QString key = xml.attributes().value(QStringLiteral("key")).toString();
            const QString text = xml.readElementText();
            if (text != u"0")
                properties.append(key + u'=' + text);
        } else if (xml.isStartElement() || xml.isEndElement()) {
            putProperties();
            content += (xml.isStartElement() ? '<' : '>') + xml.name().toUtf8() + '\n';
            for (const QXmlStreamAttribute &attribute : xml.attributes())
                content += attribute.name().toUtf8() + '=' + attribute.value().toUtf8() + '\n';
        }
    }
    if (xml.hasError())
        qFatal("the text is not XML: %s", qPrintable(xml.errorString()));
    return content;
}

QString difference(const QByteArray &before, const QByteArray &after)
{
    const QStringList gone = QString::fromUtf8(before).split(u'\n');
    QStringList come = QString::fromUtf8(after).split(u'\n');
    QStringList lines;
    for (const QString &line : gone) {
        if (!come.removeOne(line))
            lines.append(u'-' + line);
    }
    for (const QString &line : std::as_const(come))
        lines.append(u'+' + line);
    if (lines.isEmpty() && before != after)
        lines.append(QStringLiteral("another order"));
    return lines.join(u' ');
}

// --- The scene ---

WindowScene::WindowScene(Empty) : window(allTypes())
{
    show();
}

WindowScene::WindowScene(const QByteArray &showText)
    : file(write("a.show", showText)), window(allTypes())
{
    FileFault fault;
    if (!window.start(file, &fault))
        qFatal("the show cannot be opened: %s", qPrintable(fault.message()));
    show();
}

void WindowScene::show()
{
    window.show();
    window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window))
        qFatal("the window did not become active");
    pause();
}

QString WindowScene::write(const char *name, const QByteArray &content) const
{
    QFile output(path(name));
    if (!output.open(QIODevice::WriteOnly) || output.write(content) != content.size())
        qFatal("%s cannot be written", name);
    return output.fileName();
}

QByteArray WindowScene::read(const QString &file)
{
    QFile input(file);
    return input.open(QIODevice::ReadOnly) ? input.readAll() : QByteArray("(unreadable)");
}

MetaEffect &WindowScene::top(int index)
{
    return *qobject_cast<MetaEffect *>(document().show()->effects().at(index));
}

Effect &WindowScene::childOf(quint32 eid)
{
    Effect *child = top().getEffect(eid);
    if (!child)
        qFatal("there is no child %u", eid);
    return *child;
}

QString WindowScene::childText(quint32 eid, const char *key)
{
    return childOf(eid).getPropertyString(QString::fromLatin1(key));
}

double WindowScene::light(quint32 uid)
{
    for (const auto *light : document().show()->map().lights()) {
        if (light->uid() == uid)
            return light->shown();
    }
    qFatal("there is no light %u", uid);
    return 0;
}

void WindowScene::trigger(const char *name) const
{
    action(name).trigger();
    pause();
}

MetaWidget &WindowScene::form() const
{
    const auto &dock = part<rehearsal::EditorDock>("editorDock");
    auto *form = qobject_cast<MetaWidget *>(dock.editor());
    if (!form)
        qFatal("there is no editor");
    return *form;
}

int WindowScene::rowOf(const MetaWidget &form, quint32 eid)
{
    const meta::TableWidget &table = *form.m_effectTable;
    for (int row = 0; row < table.rowCount(); ++row) {
        if (table.text(row, meta::EidColumn).toUInt() == eid)
            return row;
    }
    return -1;
}

QStringList WindowScene::selectedEids(const MetaWidget &form)
{
    QStringList eids;
    for (const int row : form.m_effectTable->selectedRows())
        eids.append(form.m_effectTable->text(row, meta::EidColumn));
    return eids;
}

// --- What a user does ---

void WindowScene::pause()
{
    QTest::qWait(1);
    for (int turn = 0; turn < 5; ++turn)
        QCoreApplication::processEvents();
}

// The platform of the tests activates no window when a dialog closes.
QWidget &WindowScene::focus() const
{
    auto *top = const_cast<rehearsal::MainWindow *>(&window);
    if (!QApplication::activeWindow() && window.isVisible()) {
        top->activateWindow();
        if (!QTest::qWaitForWindowActive(top))
            qFatal("the window does not become active again");
    }
    QWidget *focus = QApplication::focusWidget();
    return focus ? *focus : *top;
}

int WindowScene::depthOf(const QWidget &widget)
{
    int depth = 0;
    for (const QWidget *above = &widget; above; above = above->parentWidget())
        ++depth;
    return depth;
}

void WindowScene::key(Qt::Key key, Qt::KeyboardModifiers modifiers) const
{
    QTest::keyClick(&focus(), key, modifiers);
    pause();
}

// Each letter goes to what has the focus then.
void WindowScene::type(const QString &text) const
{
    for (const QChar letter : text) {
        QTest::keyClick(&focus(), letter.toLatin1());
        QCoreApplication::processEvents();
    }
    pause();
}

void WindowScene::click(const MetaWidget &form, quint32 eid, int column)
{
    meta::TableWidget &table = *form.m_effectTable;
    const QModelIndex cell = table.model()->index(rowOf(form, eid), column);
    if (!cell.isValid())
        qFatal("there is no row of child %u", eid);
    table.scrollTo(cell);
    QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, table.visualRect(cell).center());
    pause();
}

void WindowScene::openCell(const MetaWidget &form, quint32 eid, int column)
{
    click(form, eid, column);
    meta::TableWidget &table = *form.m_effectTable;
    const QModelIndex cell = table.model()->index(rowOf(form, eid), column);
    if (!table.indexWidget(cell))
        QTest::keyClick(&table, Qt::Key_F2);
    QWidget *line = table.indexWidget(cell);
    if (!line)
        qFatal("the cell does not open");
    QTest::keyClick(line, Qt::Key_A, Qt::ControlModifier);
}

void WindowScene::typeIntoCell(quint32 eid, int column, const QString &text) const
{
    openCell(form(), eid, column);
    type(text);
    key(Qt::Key_Return);
}

void WindowScene::typeInto(const char *fieldName, const QString &text) const
{
    typeInto(field<QWidget>(fieldName), text);
}

void WindowScene::typeInto(QWidget &field, const QString &text)
{
    QTest::mouseClick(&field, Qt::LeftButton);
    QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
    for (const QChar letter : text) {
        QTest::keyClick(&field, letter.toLatin1());
        QCoreApplication::processEvents();
    }
    pause();
}

// --- Agreement ---

QString WindowScene::disagreement()
{
    const rehearsal::TimelineModel &model = timeline().model();
    const EffectList children = top().getEffects();
    const auto outer = std::count_if(model.rows().begin(), model.rows().end(),
                                     [](const TimelineRow &row) { return row.depth == 0; });
    if (outer != children.count())
        return QStringLiteral("%1 bars, %2 children").arg(outer).arg(children.count());
    if (table().rowCount() != children.count())
        return QStringLiteral("%1 rows, %2 children").arg(table().rowCount()).arg(children.count());
    for (const Effect *child : children) {
        const auto text = [child](const char *key) {
            return child->getPropertyString(QString::fromLatin1(key));
        };
        const quint32 eid = text("eid").toUInt();
        const int index = model.find({eid});
        const int tableRow = rowOf(form(), eid);
        if (index < 0 || tableRow < 0)
            return QStringLiteral("child %1 is not shown").arg(eid);
        const TimelineRow &row = model.row(index);
        if (row.name != text("name") || row.type != text("type")
            || row.begin != text("begin").toLongLong() || row.end != text("end").toLongLong()
            || row.fadeIn != text("fadein").toUInt())
            return QStringLiteral("the bar of child %1 is %2, %3 from %4 to %5")
                .arg(eid)
                .arg(row.name, row.type)
                .arg(row.begin)
                .arg(row.end);
        const QRect bar = timeline().barRect({eid});
        // A bar of no length has some width, to be seen.
        if (bar.isNull()
            || (row.duration() > 0
                && (std::abs(bar.left() - timeline().xAt(row.begin)) > 2
                    || std::abs(bar.right() - timeline().xAt(row.end)) > 8)))
            return QStringLiteral("the bar of child %1, from %2 to %3, lies elsewhere")
                .arg(eid)
                .arg(row.begin)
                .arg(row.end);
        if (table().text(tableRow, meta::NameColumn) != text("name"))
            return QStringLiteral("the row of child %1 has another name").arg(eid);
    }
    return {};
}
