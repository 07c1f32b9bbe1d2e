#include "Autosave.h"

#include "ShowDocument.h"
#include "ShowFile.h"
#include "XmlInput.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QStandardPaths>
#include <QUuid>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace rehearsal {

namespace {

const QString suffix = QStringLiteral(".autosave");
const QString untitledPrefix = QStringLiteral("untitled-");

/// A lock that is void as soon as its owner is dead, and never by its age.
std::unique_ptr<QLockFile> lockOf(const QString &autosaveFile)
{
    auto lock = std::make_unique<QLockFile>(autosaveFile + QStringLiteral(".lock"));
    lock->setStaleLockTime(0);
    return lock;
}

bool isOfTheLiving(const QString &autosaveFile)
{
    const std::unique_ptr<QLockFile> lock = lockOf(autosaveFile);
    return !lock->tryLock() && lock->error() == QLockFile::LockFailedError;
}

/// The same for every path that leads to the file.
QString truePath(const QString &file)
{
    const QFileInfo info(file);
    const QString canonical = info.canonicalFilePath();
    return canonical.isEmpty() ? info.absoluteFilePath() : canonical;
}

/// What is left there by the dead; `text` is what it would replace.
std::optional<Recovery> leftAt(const QString &autosaveFile, const QString &showFile,
                               const std::optional<QByteArray> &text)
{
    const QFileInfo info(autosaveFile);
    if (!info.isFile() || isOfTheLiving(autosaveFile))
        return {};
    FileFault unasked;
    const std::optional<QByteArray> left = readWholeFile(autosaveFile, &unasked);
    if (!left || left == text)
        return {};
    const bool isOlder =
        !showFile.isEmpty() && QFileInfo(showFile).lastModified() > info.lastModified();
    return Recovery{autosaveFile, showFile, info.lastModified(), isOlder};
}

/// What was put aside, under its first name again if that is free.
QString backInItsPlace(const QString &autosaveFile)
{
    if (autosaveFile.endsWith(suffix))
        return autosaveFile;
    const QString place = autosaveFile.left(autosaveFile.lastIndexOf(u'.'));
    return !QFile::exists(place) && QFile::rename(autosaveFile, place) ? place : autosaveFile;
}

/// The names under which autosaves of one place were put aside; the place itself first.
QStringList remainsAt(const QString &place)
{
    QStringList files{place};
    const QFileInfo info(place);
    const QString prefix = info.fileName() + u'.';
    const QStringList names = info.dir().entryList(QDir::Files);
    for (const QString &name : names) {
        bool isNumber = false;
        if (name.startsWith(prefix) && QStringView(name).sliced(prefix.size()).toUInt(&isNumber)
            && isNumber)
            files.append(info.path() + u'/' + name);
    }
    return files;
}

bool isNewer(const Recovery &a, const Recovery &b)
{
    return a.written > b.written;
}

} // namespace

Autosave::Autosave(ShowDocument &document, std::chrono::milliseconds interval,
                   const QString &dataFolder, QObject *parent)
    : QObject(parent), m_document(document), m_dataFolder(QDir(dataFolder).absolutePath())
{
    connect(&m_document, &ShowDocument::showReplaced, this,
            [this](ShowDocument::Replacement replacement) {
                if (replacement == ShowDocument::Replacement::AnotherShow)
                    attach();
            });
    connect(&m_document, &ShowDocument::fileChanged, this, [this] {
        if (m_document.file() != m_showFile)
            attach();
    });
    connect(&m_document, &ShowDocument::modifiedChanged, this, [this](bool isModified) {
        if (!isModified)
            removeOwn();
    });
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(interval);
    connect(&m_timer, &QTimer::timeout, this, &Autosave::saveNow);
    if (m_document.show())
        attach();
}

Autosave::~Autosave() = default;

QString Autosave::standardDataFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

// --- The document's own ---

void Autosave::attach()
{
    release();
    m_showFile = m_document.file();
    m_timer.start();
    if (!m_recoveredFile.isEmpty()) {
        bool isTaken = false;
        if (claim(m_recoveredFile, &isTaken)) {
            FileFault unasked;
            m_writtenText = readWholeFile(m_autosaveFile, &unasked).value_or(QByteArray());
            return;
        }
    }
    // One of a show without a file has a name of its own, and needs no place before it is written.
    if (!m_showFile.isEmpty())
        claim();
}

void Autosave::release()
{
    removeOwn();
    tellWorking();
    m_lock.reset();
    m_autosaveFile.clear();
    m_isPutAside = false;
    m_isUnavailable = false;
    m_hasFailed = false;
}

void Autosave::removeOwn()
{
    if (m_writtenText.isNull())
        return;
    QFile::remove(m_autosaveFile);
    m_writtenText = QByteArray();
    // Nobody would ever take over a lock of this name.
    if (m_showFile.isEmpty())
        m_lock.reset();
}

void Autosave::saveNow()
{
    m_document.flush();
    if (!m_document.isModified())
        return;
    const QByteArray text = m_document.text();
    if (text == m_writtenText && QFile::exists(m_autosaveFile))
        return;
    if (!m_lock && !claim())
        return;
    FileFault fault;
    if (putAside(&fault) && saveText(text, m_autosaveFile, &fault)) {
        m_hasFailed = false;
        m_writtenText = text;
        tellWorking();
    } else if (!std::exchange(m_hasFailed, true)) {
        m_hasTold = true;
        emit failed(fault);
    }
}

// What is there before the document's own first autosave is what a dead program left. It is there under
// one name or the other at any moment.
bool Autosave::putAside(FileFault *fault)
{
    if (m_isPutAside || !m_writtenText.isNull() || !QFileInfo(m_autosaveFile).isFile())
        return true;
    int number = 1;
    while (QFile::exists(m_autosaveFile + u'.' + QString::number(number)))
        ++number;
    const QString aside = m_autosaveFile + u'.' + QString::number(number);
    std::error_code fails; // as links do on some disks
    std::filesystem::create_hard_link(QFileInfo(m_autosaveFile).filesystemFilePath(),
                                      QFileInfo(aside).filesystemFilePath(), fails);
    m_isPutAside = !fails || QFile::copy(m_autosaveFile, aside);
    if (m_isPutAside)
        return true;
    *fault = {m_autosaveFile, 0, tr("what was left there cannot be kept under another name")};
    return false;
}

void Autosave::tellWorking()
{
    if (std::exchange(m_hasTold, false))
        emit working();
}

void Autosave::close()
{
    m_timer.stop();
    release();
}

bool Autosave::claim()
{
    const QStringList places = placesOf(m_showFile);
    for (const QString &place : places) {
        bool isTaken = false;
        if (claim(place, &isTaken))
            return true;
        if (isTaken) {
            tellUnavailable(tr("another program has this show open"));
            return false;
        }
    }
    tellUnavailable(tr("nothing can be written to %1").arg(QDir::toNativeSeparators(m_dataFolder)));
    return false;
}

bool Autosave::claim(const QString &autosaveFile, bool *isTaken)
{
    if (isInDataFolder(autosaveFile))
        QDir().mkpath(m_dataFolder);
    std::unique_ptr<QLockFile> lock = lockOf(autosaveFile);
    const bool isLocked = lock->tryLock();
    // What the program that was in the way has left is not this document's to overwrite.
    const bool isLeft = isLocked && m_isUnavailable && QFile::exists(autosaveFile);
    *isTaken = isLeft || (!isLocked && lock->error() == QLockFile::LockFailedError);
    if (!isLocked || isLeft)
        return false;
    m_lock = std::move(lock);
    m_autosaveFile = autosaveFile;
    return true;
}

void Autosave::tellUnavailable(const QString &reason)
{
    if (std::exchange(m_isUnavailable, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this, reason] {
            m_hasTold = true;
            emit unavailable(reason);
        },
        Qt::QueuedConnection);
}

QStringList Autosave::placesOf(const QString &file) const
{
    if (file.isEmpty())
        return {m_dataFolder + u'/' + untitledPrefix
                + QUuid::createUuid().toString(QUuid::WithoutBraces) + suffix};
    return {truePath(file) + suffix, placeInDataFolder(file)};
}

QString Autosave::placeInDataFolder(const QString &file) const
{
    const QByteArray hash =
        QCryptographicHash::hash(truePath(file).toUtf8(), QCryptographicHash::Sha1).toHex();
    return m_dataFolder + QStringLiteral("/show-") + QString::fromLatin1(hash) + suffix;
}

bool Autosave::isInDataFolder(const QString &autosaveFile) const
{
    return QFileInfo(autosaveFile).path() == m_dataFolder;
}

// --- What programs that died have left ---

std::optional<Recovery> Autosave::recoverable(const QString &file) const
{
    FileFault unasked;
    const std::optional<QByteArray> text = readWholeFile(file, &unasked);
    const QString showFile = QFileInfo(file).absoluteFilePath();
    std::optional<Recovery> newest;
    const QStringList places = placesOf(file);
    for (const QString &place : places) {
        const QStringList remains = remainsAt(place);
        for (const QString &left : remains) {
            const std::optional<Recovery> found = leftAt(left, showFile, text);
            if (found && (!newest || isNewer(*found, *newest)))
                newest = found;
        }
    }
    return newest;
}

QList<Recovery> Autosave::untitledRecoverable() const
{
    QList<Recovery> recoveries;
    const QStringList names =
        QDir(m_dataFolder).entryList({untitledPrefix + u'*' + suffix}, QDir::Files);
    for (const QString &name : names) {
        if (const auto found = leftAt(m_dataFolder + u'/' + name, QString(), {}))
            recoveries.append(*found);
    }
    std::sort(recoveries.begin(), recoveries.end(), isNewer);
    return recoveries;
}

bool Autosave::recover(const Recovery &recovery, FileFault *fault)
{
    const std::optional<QByteArray> text = readWholeFile(recovery.autosaveFile, fault);
    if (!text)
        return false;
    m_recoveredFile = backInItsPlace(recovery.autosaveFile);
    const bool isOpened =
        m_document.openText(*text, recovery.autosaveFile, recovery.showFile, fault);
    m_recoveredFile.clear();
    return isOpened;
}

void Autosave::discard(const Recovery &recovery)
{
    const std::unique_ptr<QLockFile> lock = lockOf(recovery.autosaveFile);
    if (lock->tryLock() || lock->error() != QLockFile::LockFailedError)
        QFile::remove(recovery.autosaveFile);
}

} // namespace rehearsal
