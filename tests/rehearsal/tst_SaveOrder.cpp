#include "FileFault.h"
#include "ShowFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

using rehearsal::FileFault;

namespace {

/// What was asked of the system, in order.
QStringList asked;
/// The folder that was synced last.
struct stat syncedFolder;

template<typename Function>
Function theSystems(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

// These stand before the system's own.
#define META_EXPORT extern "C" __attribute__((visibility("default")))

META_EXPORT int fdatasync(int file)
{
    asked.append(QStringLiteral("sync"));
    return theSystems<int (*)(int)>("fdatasync")(file);
}

META_EXPORT int fsync(int file)
{
    struct stat status
    {
    };
    fstat(file, &status);
    asked.append(S_ISDIR(status.st_mode) ? QStringLiteral("sync folder") : QStringLiteral("sync"));
    if (S_ISDIR(status.st_mode))
        syncedFolder = status;
    return theSystems<int (*)(int)>("fsync")(file);
}

META_EXPORT int rename(const char *from, const char *to) noexcept
{
    asked.append(QStringLiteral("rename"));
    return theSystems<int (*)(const char *, const char *)>("rename")(from, to);
}

class tst_SaveOrder : public QObject
{
    Q_OBJECT

private slots:
    void textIsOnTheDiskBeforeItTakesTheFilesPlace();
    void folderThatALinkLeadsToIsSynced();
};

// A power failure between any two of these leaves the old show or the new one, never an empty file.
void tst_SaveOrder::textIsOnTheDiskBeforeItTakesTheFilesPlace()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("a.show"));
    FileFault fault;
    QVERIFY(rehearsal::saveText("old", file, &fault));
    asked.clear();
    QVERIFY(rehearsal::saveText("new", file, &fault));
    QCOMPARE(asked, (QStringList{QStringLiteral("sync"), QStringLiteral("rename"),
                                 QStringLiteral("sync folder")}));
    QFile saved(file);
    QVERIFY(saved.open(QIODevice::ReadOnly));
    QCOMPARE(saved.readAll(), QByteArray("new"));
}

// There the new file took the place of the old one.
void tst_SaveOrder::folderThatALinkLeadsToIsSynced()
{
    const QTemporaryDir folder;
    const QString target = folder.filePath(QStringLiteral("elsewhere"));
    QVERIFY(QDir().mkdir(target));
    const QString link = folder.filePath(QStringLiteral("a.show"));
    QVERIFY(QFile::link(QStringLiteral("elsewhere/real.show"), link));
    struct stat wanted;
    QCOMPARE(stat(QFile::encodeName(target).constData(), &wanted), 0);

    FileFault fault;
    for (const char *text : {"new", "newer"}) { // the first makes the file
        syncedFolder = {};
        QVERIFY(rehearsal::saveText(text, link, &fault));
        QCOMPARE(syncedFolder.st_ino, wanted.st_ino);
        QCOMPARE(syncedFolder.st_dev, wanted.st_dev);
        QCOMPARE(QFileInfo(target + QStringLiteral("/real.show")).size(), qint64(qstrlen(text)));
    }
    QVERIFY(QFileInfo(link).isSymLink());
}

QTEST_GUILESS_MAIN(tst_SaveOrder)
#include "tst_SaveOrder.moc"
