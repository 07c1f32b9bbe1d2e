#include "WindowTwin.h"

#include "StageView.h"
#include "TestTypes.h"
#include "TimelineView.h"

#include <QFile>
#include <QTest>

using rehearsal::StageView;
using rehearsal::TimelineView;

WindowTwin::WindowTwin(const QByteArray &show, const QSize &size) : m_window(allTypes())
{
    const QString name = m_folder.filePath(QStringLiteral("twin.show"));
    QFile file(name);
    rehearsal::FileFault fault;
    if (!file.open(QIODevice::WriteOnly) || file.write(show) != show.size() || !file.flush()
        || !m_window.start(name, &fault))
        qFatal("no show for the twin: %s", qPrintable(fault.message()));
    m_window.setAttribute(Qt::WA_DontShowOnScreen);
    m_window.resize(size);
    m_window.show();
    // The docks are given their room in the next turn, and take it in the one after that.
    for (int turn = 0; turn < 3; ++turn)
        QCoreApplication::processEvents();
}

QRect WindowTwin::areaOf(const QWidget &widget) const
{
    return {widget.mapTo(&m_window, QPoint()), widget.size()};
}

QPoint WindowTwin::middleOf(const char *name) const
{
    return areaOf(find<QWidget>(name)).center();
}

QPoint WindowTwin::lightAt(quint32 uid) const
{
    const auto &stage = find<StageView>("stage");
    return stage.mapTo(&m_window, stage.positionOf(uid).toPoint());
}

QRect WindowTwin::bar(const QList<quint32> &path) const
{
    const auto &timeline = find<TimelineView>("timeline");
    const QRect bar = timeline.barRect(path);
    return {timeline.viewport()->mapTo(&m_window, bar.topLeft()), bar.size()};
}

QModelIndex WindowTwin::rowOf(const QString &name) const
{
    const auto *model = find<QAbstractItemView>("m_effectTable").model();
    const QModelIndexList rows =
        model->match(model->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly);
    if (rows.isEmpty())
        qFatal("there is no row of %s", qPrintable(name));
    return rows.first();
}

QPoint WindowTwin::rowAt(const QString &name) const
{
    const auto &table = find<QAbstractItemView>("m_effectTable");
    return table.viewport()->mapTo(&m_window, table.visualRect(rowOf(name)).center());
}

void WindowTwin::select(const QString &name) const
{
    find<QAbstractItemView>("m_effectTable").setCurrentIndex(rowOf(name));
    QCoreApplication::processEvents();
}

void WindowTwin::seek(quint32 ms)
{
    m_window.playback().seek(ms);
    QCoreApplication::processEvents();
}

QImage WindowTwin::picture(const char *name)
{
    // Of the window: what lies behind a widget shows through.
    return m_window.grab(areaOf(find<QWidget>(name)))
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}
