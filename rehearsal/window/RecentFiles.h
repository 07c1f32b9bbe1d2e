#pragma once

#include <QObject>

class QMenu;

namespace rehearsal {

/// The shows opened last, newest first, kept in the program's settings.
class RecentFiles final : public QObject
{
    Q_OBJECT

public:
    static constexpr int most = 10;

    /// Keeps the menu filled. The menu is not owned, and outlives this.
    explicit RecentFiles(QMenu &menu, QObject *parent = nullptr);

    /// Puts a file at the top.
    void add(const QString &file);
    void remove(const QString &file);
    QStringList files() const;

signals:
    /// The user picked one.
    void picked(const QString &file);

private:
    void store(const QStringList &files);
    void fillMenu();

    QMenu &m_menu;
};

} // namespace rehearsal
