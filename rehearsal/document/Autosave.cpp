#include "Autosave.h"

#include "ShowDocument.h"
#include "ShowFile.h"
#include "XmlInput.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QStandardPaths>
#include <QSysInfo>
#include <QUuid>

#include <algorithm>
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

/// Whether a lock tells of no process of this machine, as one does whose owner died while it wrote
/// it, or on another machine. It can be removed if its owner is dead.
bool isOfNobodyHere(const QLockFile &lock)
{
    qint64 process = 0;
    QString host;
    QString program;
    return !lock.getLockInfo(&process, &host, &program) || host != QSysInfo::machineHostName();
}

/// The lock, held. Null where a living program has it, which is told, or where nothing can be
/// written.
std::unique_ptr<QLockFile> heldLockOf(const QString &autosaveFile, bool *isTaken)
{
    std::unique_ptr<QLockFile> lock = lockOf(autosaveFile);
    const bool isHeld = lock->tryLock()
                        || (lock->error() == QLockFile::LockFailedError && isOfNobodyHere(*lock)
                            && lock->removeStaleLockFile() && lock->tryLock());
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

/// What is left there, by the dead if it is left at all; `text` is what it would replace.
std::optional<Recovery> leftAt(const QString &autosaveFile, const QString &showFile,
                               const std::optional<QByteArray> &text)
{
    const QFileInfo info(autosaveFile);
    if (!info.isFile())
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

bool isKeptAside(const QString &place, const QByteArray &text)
{
    FileFault unasked;
    const QStringList aside = remainsAt(place).sliced(1);
    return std::any_of(aside.begin(), aside.end(),
                       [&](const QString &file) { return readWholeFile(file, &unasked) == text; });
}

/// The name before it was put aside, if it was.
QString firstNameOf(const QString &autosaveFile)
{
    return autosaveFile.endsWith(suffix) ? autosaveFile
                                         : autosaveFile.left(autosaveFile.lastIndexOf(u'.'));
}

/// Keeps what is at a place under another name as well, once, so that the place may be overwritten.
/// It is there under one name or the other at any moment. For the place's owner alone.
bool keepAside(const QString &place, FileFault *fault)
{
    const QFileInfo left(place);
    if (!left.isFile())
        return true;
    const std::optional<QByteArray> text = readWholeFile(place, fault);
    if (!text)
        return false;
    if (isKeptAside(place, *text))
        return true;
    const auto asideOf = [&place](int number) { return place + u'.' + QString::number(number); };
    int number = 1;
    while (QFile::exists(asideOf(number)) || isOfTheLiving(asideOf(number)))
        ++number;
    if (!saveText(*text, asideOf(number), fault))
        return false;
    QFile aside(asideOf(number));
    if (aside.open(QIODevice::Append))
        aside.setFileTime(left.lastModified(), QFileDevice::FileModificationTime);
    return true;
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

// Where another program's autosave would be; so that it learns that this one has the show.
void Autosave::holdFirstPlace()
{
    if (m_showFile.isEmpty() || m_places.first() == m_autosaveFile)
        return;
    bool isTaken = false;
    if (std::unique_ptr<QLockFile> lock = lockPlace(m_places.first(), &isTaken))
        m_otherLocks[m_places.first()] = std::move(lock);
}

// What was put aside gets its first name again if nobody has that.
void Autosave::takeRecovered()
{
    m_autosaveFile = m_recovered.autosaveFile;
    m_lock = std::move(m_recovered.lock);
    m_writtenText = m_recovered.text;
    removeCopies(m_autosaveFile, m_writtenText);
    const QString place = firstNameOf(m_autosaveFile);
    bool isTaken = false;
    std::unique_ptr<QLockFile> lock;
    if (place != m_autosaveFile)
        lock = heldLockOf(place, &isTaken);
    if (lock && !QFile::exists(place) && QFile::rename(m_autosaveFile, place)) {
        m_autosaveFile = place;
        m_lock = std::move(lock);
    }
    lock.reset();
    holdFirstPlace();
}

void Autosave::release()
{
    removeOwn();
    tellWorking();
    m_lock.reset();
    m_otherLocks.clear();
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
        std::unique_ptr<QLockFile> &lock = m_otherLocks[place];
        if (!lock)
            lock = lockPlace(place, &isTaken);
        FileFault unasked;
        if (!lock || !keepAside(place, &unasked) || !saveText(text, place, &unasked))
            continue;
        removeOwn();
        std::swap(m_lock, lock);
        m_otherLocks[m_autosaveFile] = std::move(lock);
        m_autosaveFile = place;
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
            if (!isOwnRemains(left) && isOfTheLiving(left))
                continue;
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
        const QString left = m_dataFolder + u'/' + name;
        if (isOfTheLiving(left))
            continue;
        if (const auto found = leftAt(left, QString(), {}))
            recoveries.append(*found);
    }
    std::sort(recoveries.begin(), recoveries.end(), isNewer);
    return recoveries;
}

bool Autosave::recover(const Recovery &recovery, FileFault *fault)
{
    bool isTaken = false;
    const bool isOwn = isOwnRemains(recovery.autosaveFile);
    std::unique_ptr<QLockFile> lock =
        isOwn ? std::move(m_lock) : heldLockOf(recovery.autosaveFile, &isTaken);
    if (isTaken) {
        *fault = {recovery.autosaveFile, 0, tr("another program has it now")};
        return false;
    }
    const std::optional<QByteArray> text = readWholeFile(recovery.autosaveFile, fault);
    m_recovered = {recovery.autosaveFile, text.value_or(QByteArray()), std::move(lock)};
    const bool isOpened =
        text && m_document.openText(*text, recovery.autosaveFile, recovery.showFile, fault);
    if (isOwn && !isOpened)
        m_lock = std::move(m_recovered.lock);
    m_recovered = {};
    return isOpened;
}

void Autosave::discard(const Recovery &recovery)
{
    bool isTaken = false;
    const std::unique_ptr<QLockFile> lock = heldLockOf(recovery.autosaveFile, &isTaken);
    if (isTaken && !isOwnRemains(recovery.autosaveFile))
        return;
    // Meanwhile a program may have recovered it, have written something else there, and be dead.
    if (QFileInfo(recovery.autosaveFile).lastModified() != recovery.written)
        return;
    FileFault unasked;
    const std::optional<QByteArray> text = readWholeFile(recovery.autosaveFile, &unasked);
    if (QFile::remove(recovery.autosaveFile) && text)
        removeCopies(recovery.autosaveFile, *text);
}

// What is the same text as what was recovered or discarded is not to be offered again.
void Autosave::removeCopies(const QString &autosaveFile, const QByteArray &text) const
{
    const QStringList remains = remainsAt(firstNameOf(autosaveFile));
    for (const QString &file : remains) {
        bool isTaken = false;
        if (file == autosaveFile)
            continue;
        const std::unique_ptr<QLockFile> lock = heldLockOf(file, &isTaken);
        FileFault unasked;
        if ((lock || isOwnRemains(file)) && readWholeFile(file, &unasked) == text)
            QFile::remove(file);
    }
}

bool Autosave::isOwnRemains(const QString &autosaveFile) const
{
    return autosaveFile == m_autosaveFile && m_writtenText.isNull();
}

} // namespace rehearsal
