#include "RecentFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QSettings>

namespace rehearsal {

namespace {

const QString settingsKey = QStringLiteral("recentFiles");

} // namespace

RecentFiles::RecentFiles(QMenu &menu, QObject *parent) : QObject(parent), m_menu(menu)
{
    fillMenu();
}

QStringList RecentFiles::files() const
{
    return QSettings().value(settingsKey).toStringList();
}

void RecentFiles::add(const QString &file)
{
    const QString path = QFileInfo(file).absoluteFilePath();
    QStringList files = this->files();
    files.removeAll(path);
    files.prepend(path);
    store(files.mid(0, most));
}

void RecentFiles::remove(const QString &file)
{
    QStringList files = this->files();
    files.removeAll(QFileInfo(file).absoluteFilePath());
    store(files);
}

void RecentFiles::store(const QStringList &files)
{
    QSettings().setValue(settingsKey, files);
    fillMenu();
}

void RecentFiles::fillMenu()
{
    m_menu.clear();
    const QStringList files = this->files();
    for (int i = 0; i < files.size(); ++i) {
        QString name = QFileInfo(files[i]).fileName();
        name.replace(u'&', QStringLiteral("&&"));
        QAction *action = m_menu.addAction(
            i < 9 ? QStringLiteral("&%1  %2").arg(QString::number(i + 1), name) : name);
        action->setStatusTip(QDir::toNativeSeparators(files[i]));
        action->setToolTip(action->statusTip());
        connect(action, &QAction::triggered, this, [this, file = files[i]] { emit picked(file); });
    }
    m_menu.setEnabled(!files.isEmpty());
    if (files.isEmpty())
        return;
    m_menu.addSeparator();
    m_menu.addAction(tr("Clear List"), this, [this] { store({}); });
}

} // namespace rehearsal
