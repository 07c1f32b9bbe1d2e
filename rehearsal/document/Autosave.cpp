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
#include <utility>

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

/// The lock, held. Null where a living program has it, which is told, or where nothing can be
/// written.
std::unique_ptr<QLockFile> heldLockOf(const QString &autosaveFile, bool *isTaken)
{
    std::unique_ptr<QLockFile> lock = lockOf(autosaveFile);
    const bool isHeld = lock->tryLock();
    *isTaken = !isHeld && lock->error() == QLockFile::LockFailedError;
    if (!isHeld)
        lock.reset();
    return lock;
}

bool isOfTheLiving(const QString &autosaveFile)
{
    bool isTaken = false;
    heldLockOf(autosaveFile, &isTaken);
    return isTaken;
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

bool isKeptAside(const QString &place)
{
    FileFault unasked;
    const std::optional<QByteArray> text = readWholeFile(place, &unasked);
    const QStringList aside = remainsAt(place).sliced(1);
    return text && std::any_of(aside.begin(), aside.end(), [&](const QString &file) {
               return readWholeFile(file, &unasked) == text;
           });
}

/// Keeps what is at a place under another name as well, once, so that the place may be overwritten.
/// It is there under one name or the other at any moment. For the place's owner alone.
bool keepAside(const QString &place, FileFault *fault)
{
    if (!QFileInfo(place).isFile() || isKeptAside(place))
        return true;
    const auto asideOf = [&place](int number) { return place + u'.' + QString::number(number); };
    int number = 1;
    while (QFile::exists(asideOf(number)) || isOfTheLiving(asideOf(number)))
        ++number;
    std::error_code fails; // as links do on some disks
    std::filesystem::create_hard_link(QFileInfo(place).filesystemFilePath(),
                                      QFileInfo(asideOf(number)).filesystemFilePath(), fails);
    if (!fails || QFile::copy(place, asideOf(number)))
        return true;
    *fault = {place, 0, Autosave::tr("what was left there cannot be kept under another name")};
    return false;
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
    m_places = placesOf(m_showFile);
    m_timer.start();
    // One of a show without a file has a name of its own, and needs no place before it is written.
    if (m_recovered.lock)
        takeRecovered();
    else if (!m_showFile.isEmpty())
        claim();
}

// What was put aside gets its first name again if nobody has that.
void Autosave::takeRecovered()
{
    m_autosaveFile = m_recovered.autosaveFile;
    m_lock = std::move(m_recovered.lock);
    m_writtenText = m_recovered.text;
    if (m_autosaveFile.endsWith(suffix))
        return;
    const QString place = m_autosaveFile.left(m_autosaveFile.lastIndexOf(u'.'));
    bool isTaken = false;
    std::unique_ptr<QLockFile> lock = heldLockOf(place, &isTaken);
    if (!lock || QFile::exists(place) || !QFile::rename(m_autosaveFile, place))
        return;
    m_autosaveFile = place;
    m_lock = std::move(lock);
}

void Autosave::release()
{
    removeOwn();
    tellWorking();
    m_lock.reset();
    m_autosaveFile.clear();
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
    if (!m_timer.isActive()) // closed
        return;
    m_document.flush();
    if (!m_document.isModified())
        return;
    const QByteArray text = m_document.text();
    if (text == m_writtenText && QFile::exists(m_autosaveFile))
        return;
    if (!m_lock && !claim())
        return;
    FileFault fault;
    if (write(text, &fault) || writeElsewhere(text)) {
        m_hasFailed = false;
        m_writtenText = text;
        tellWorking();
    } else if (!std::exchange(m_hasFailed, true)) {
        m_hasTold = true;
        emit failed(fault);
    }
}

// What is there before the document's own first autosave is what a dead program left.
bool Autosave::write(const QByteArray &text, FileFault *fault) const
{
    return (!m_writtenText.isNull() || keepAside(m_autosaveFile, fault))
           && saveText(text, m_autosaveFile, fault);
}

// The disk of the show may have filled up since its place was claimed.
bool Autosave::writeElsewhere(const QByteArray &text)
{
    for (const QString &place : std::as_const(m_places)) {
        bool isTaken = false;
        if (place == m_autosaveFile)
            continue;
        std::unique_ptr<QLockFile> lock = lockPlace(place, &isTaken);
        FileFault unasked;
        if (!lock || !keepAside(place, &unasked) || !saveText(text, place, &unasked))
            continue;
        removeOwn();
        m_autosaveFile = place;
        m_lock = std::move(lock);
        return true;
    }
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
    for (const QString &place : std::as_const(m_places)) {
        bool isTaken = false;
        m_lock = lockPlace(place, &isTaken);
        if (m_lock) {
            m_autosaveFile = place;
            return true;
        }
        if (isTaken) {
            tellUnavailable(tr("another program has this show open"));
            return false;
        }
    }
    tellUnavailable(tr("nothing can be written to %1").arg(QDir::toNativeSeparators(m_dataFolder)));
    return false;
}

std::unique_ptr<QLockFile> Autosave::lockPlace(const QString &place, bool *isTaken) const
{
    if (QFileInfo(place).path() == m_dataFolder)
        QDir().mkpath(m_dataFolder);
    return heldLockOf(place, isTaken);
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
    bool isTaken = false;
    std::unique_ptr<QLockFile> lock = heldLockOf(recovery.autosaveFile, &isTaken);
    if (isTaken) {
        *fault = {recovery.autosaveFile, 0, tr("another program has it now")};
        return false;
    }
    const std::optional<QByteArray> text = readWholeFile(recovery.autosaveFile, fault);
    if (!text)
        return false;
    m_recovered = {recovery.autosaveFile, *text, std::move(lock)};
    const bool isOpened =
        m_document.openText(*text, recovery.autosaveFile, recovery.showFile, fault);
    m_recovered = {};
    return isOpened;
}

void Autosave::discard(const Recovery &recovery)
{
    // The document's own place, where it has written nothing yet.
    const bool isOurs = recovery.autosaveFile == m_autosaveFile && m_writtenText.isNull();
    bool isTaken = false;
    const std::unique_ptr<QLockFile> lock = heldLockOf(recovery.autosaveFile, &isTaken);
    if (!isTaken || isOurs)
        QFile::remove(recovery.autosaveFile);
}

} // namespace rehearsal
