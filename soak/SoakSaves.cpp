#include "Soak.h"

#include "Autosave.h"
#include "Effect.h"
#include "ShowDocument.h"
#include "ShowFile.h"
#include "TestTypes.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <random>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

/// A show on disk is the old one or the new one, whole, whatever happens while it is saved.

using rehearsal::Autosave;
using rehearsal::FileFault;
using rehearsal::Show;
using rehearsal::ShowDocument;

namespace {

constexpr int childrenOfTheShow = 10'000;
const QString fileName = QStringLiteral("a.show");

QByteArray showOf(int children)
{
    QByteArray text = "<show version=\"1\"><map><light uid=\"1\" x=\"0\" y=\"0\"/></map>"
                      "<effect type=\"Meta Effect\"><property key=\"name\">A</property>";
    for (int eid = 1; eid <= children; ++eid)
        text += "<effect type=\"Solid\"><property key=\"eid\">" + QByteArray::number(eid)
                + "</property><property key=\"starttype\">0</property></effect>";
    return text + "</effect></show>";
}

std::unique_ptr<Show> parse(const QByteArray &text)
{
    FileFault fault;
    return rehearsal::parseShow(text, QStringLiteral("soak"), allTypes(), &fault);
}

QByteArray contentOf(const QString &file)
{
    QFile input(file);
    return input.open(QIODevice::ReadOnly) ? input.readAll() : QByteArray();
}

bool write(const QString &file, const QByteArray &text)
{
    QFile output(file);
    return output.open(QIODevice::WriteOnly) && output.write(text) == text.size();
}

QByteArray native(const QString &file)
{
    return QFile::encodeName(file);
}

void rename(const Show &show, const QByteArray &name)
{
    show.effects().front()->setProperty(QStringLiteral("name"), QString::fromUtf8(name));
}

// --- Faults ---

/// Where a save fails: the folder that it is made in, and what is done to it for that time.
struct Fault
{
    std::string name;
    QString file;
    std::function<void()> befall; ///< in a process of its own
    bool isOfAutosaves = true;    ///< which are written beside the file
};

/// The ways to save; each says whether it failed as it should: with a fault of one line.
using Save = std::function<bool(ShowDocument &, const QString &)>;

bool isTold(const FileFault &fault)
{
    return !fault.what.isEmpty() && !fault.message().contains(u'\n');
}

bool failsToSaveTheShow(ShowDocument &document, const QString &file)
{
    FileFault fault;
    return !rehearsal::saveShow(*document.show(), file, &fault) && isTold(fault);
}

bool failsToSaveTheDocument(ShowDocument &document, const QString &file)
{
    FileFault fault;
    const QString before = document.file();
    return !document.saveAs(file, &fault) && isTold(fault) && document.file() == before
           && document.isModified();
}

bool failsToAutosave(ShowDocument &document, const QString &file)
{
    FileFault fault;
    if (!document.openText(document.text(), QStringLiteral("soak"), file, &fault))
        return false;
    int told = 0;
    Autosave autosave(document, std::chrono::hours(1), QStringLiteral("/proc/none"));
    QObject::connect(&autosave, &Autosave::failed,
                     [&told](const FileFault &failure) { told += isTold(failure); });
    QObject::connect(&autosave, &Autosave::unavailable,
                     [&told](const QString &reason) { told += !reason.isEmpty(); });
    autosave.saveNow();
    QCoreApplication::sendPostedEvents();
    return told == 1;
}

const std::array<std::pair<const char *, Save>, 3> ways{{{"saveShow", failsToSaveTheShow},
                                                         {"ShowDocument", failsToSaveTheDocument},
                                                         {"Autosave", failsToAutosave}}};

// In a process of its own: 0 when the save failed as it should.
int failingSave(const Fault &fault, const Save &failsToSave)
{
    ShowDocument document(allTypes());
    FileFault unasked;
    if (!document.openText(showOf(2000), QStringLiteral("soak"), QString(), &unasked))
        return 2;
    fault.befall();
    return failsToSave(document, fault.file) ? 0 : 1;
}

template<typename Work>
int inAChild(Work work)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(work());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

QStringList namesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
}

int countFailures(const Fault &fault)
{
    const QString folder = QFileInfo(fault.file).path();
    const QByteArray before = contentOf(fault.file);
    const QStringList namesBefore = namesIn(folder);
    int failures = 0;
    for (const auto &[way, failsToSave] : ways) {
        if (std::string(way) == "Autosave" && !fault.isOfAutosaves)
            continue;
        const int outcome =
            inAChild([&fault, &save = failsToSave] { return failingSave(fault, save); });
        const bool holds =
            outcome == 0 && contentOf(fault.file) == before && namesIn(folder) == namesBefore;
        failures += !soak::report(holds, fault.name + ", " + way
                                             + ": told, the old show is whole, nothing is left");
    }
    return failures;
}

void becomeNobody()
{
    if (geteuid() != 0)
        return;
    constexpr uid_t nobody = 65534;
    if (setresgid(nobody, nobody, nobody) != 0 || setresuid(nobody, nobody, nobody) != 0)
        _exit(3);
}

void allowNoLargeFiles()
{
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{100'000, 100'000};
    setrlimit(RLIMIT_FSIZE, &limit);
}

/// A small disk, where it may be mounted.
class SmallDisk
{
public:
    explicit SmallDisk(const QString &folder) : m_folder(native(folder))
    {
        QDir().mkpath(folder);
        m_isMounted = mount("tmpfs", m_folder.constData(), "tmpfs", 0, "size=400k") == 0;
    }
    ~SmallDisk()
    {
        if (m_isMounted)
            umount2(m_folder.constData(), MNT_DETACH);
    }
    Q_DISABLE_COPY_MOVE(SmallDisk)

    bool isMounted() const { return m_isMounted; }
    bool makeReadOnly()
    {
        return mount("tmpfs", m_folder.constData(), "tmpfs", MS_REMOUNT | MS_RDONLY, "") == 0;
    }

private:
    QByteArray m_folder;
    bool m_isMounted = false;
};

int countFaultsOnADisk(const QString &folder, const QByteArray &old)
{
    SmallDisk disk(folder);
    const QString file = folder + u'/' + fileName;
    write(file, old);
    const auto nothing = [] {};
    if (!disk.isMounted()) {
        soak::report(true,
                     "no disk may be mounted here: a limit of file size stands for a full one");
        return countFailures({"no space left (file size limit)", file, allowNoLargeFiles});
    }
    int failures = countFailures({"no space left (full disk)", file, nothing});
    if (!disk.makeReadOnly())
        return failures + !soak::report(false, "the disk cannot be made read-only");
    return failures + countFailures({"read-only disk", file, nothing});
}

int countFaults()
{
    QTemporaryDir folder;
    chmod(native(folder.path()).constData(), 0755);
    const QByteArray old = rehearsal::showText(*parse(showOf(3))).toUtf8();
    const QDir dir(folder.path());
    for (const char *name : {"shut", "gone", "target/a.show"})
        dir.mkpath(QString::fromLatin1(name));
    const QString file = dir.filePath(fileName);
    const QString shut = dir.filePath(QStringLiteral("shut/") + fileName);
    const QString gone = dir.filePath(QStringLiteral("gone/") + fileName);
    write(file, old);
    write(shut, old);
    chmod(native(dir.filePath(QStringLiteral("shut"))).constData(), 0555);

    int failures = countFaultsOnADisk(dir.filePath(QStringLiteral("disk")), old);
    failures += countFailures({"file size limit", file, allowNoLargeFiles});
    failures += countFailures({"read-only folder, no privileges", shut, becomeNobody});
    dir.rmdir(QStringLiteral("gone"));
    failures += countFailures({"folder is gone", gone, [] {}});
    failures += countFailures({"the target is a folder",
                               dir.filePath(QStringLiteral("target/") + fileName), [] {}, false});
    return failures;
}

// --- Kills ---

/// What the process that saves tells the one that kills it.
struct Progress
{
    std::atomic<bool> isSaving;
    std::atomic<qint64> saves;
};

/// One way to save, over and over, and the two texts that may be on disk.
struct Writer
{
    std::string name;
    QString file;
    QByteArray first;
    QByteArray second;
    std::function<void(Progress &)> saveForever; ///< in a process of its own
};

struct Steps
{
    std::function<void(bool isFirst)> prepare;
    std::function<void(bool isFirst)> save;
};

[[noreturn]] void saveOnAndOn(Progress &progress, const Steps &steps)
{
    for (bool isFirst = false;; isFirst = !isFirst) {
        steps.prepare(isFirst);
        progress.isSaving = true;
        steps.save(isFirst);
        progress.isSaving = false;
        ++progress.saves;
    }
}

struct Tally
{
    int kills = 0;
    int duringASave = 0;
    int broken = 0;
    qint64 saves = 0;
};

using Clock = std::chrono::steady_clock;

// Lets the writer run until it is told to be enough, and kills it.
template<typename Enough>
void runUntil(const Writer &writer, Progress &progress, Enough isEnough)
{
    progress.isSaving = false;
    progress.saves = 0;
    const pid_t child = fork();
    if (child == 0) {
        writer.saveForever(progress);
        _exit(1);
    }
    while (!isEnough())
        usleep(100);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

// How long the writer is at work for two saves, and no more than a minute.
std::chrono::microseconds timeOfTwoSaves(const Writer &writer, Progress &progress)
{
    const auto started = Clock::now();
    const auto taken = [started] {
        return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - started);
    };
    runUntil(writer, progress,
             [&] { return progress.saves == 2 || taken() > std::chrono::minutes(1); });
    return taken();
}

void killOnce(const Writer &writer, std::chrono::microseconds after, Progress &progress,
              Tally &tally)
{
    const auto started = Clock::now();
    runUntil(writer, progress, [&] { return Clock::now() - started >= after; });
    const QByteArray text = contentOf(writer.file);
    ++tally.kills;
    tally.duringASave += progress.isSaving;
    tally.saves += progress.saves;
    tally.broken += text != writer.first && text != writer.second;
}

// Files beside those that are meant to be there, and whether each is named as a temporary one is.
int countLeft(const QString &folder, const QStringList &meant, qint64 *bytes, bool *isNamed)
{
    static const QRegularExpression temporary(
        QStringLiteral("^a\\.show(\\.autosave)?(\\.lock)?\\.[A-Za-z0-9]{6}$"));
    static const QRegularExpression putAside(QStringLiteral("^a\\.show\\.autosave\\.[1-9][0-9]*$"));
    int left = 0;
    for (const QString &name : namesIn(folder)) {
        if (meant.contains(name) || putAside.match(name).hasMatch())
            continue;
        ++left;
        *bytes += QFileInfo(folder + u'/' + name).size();
        *isNamed = *isNamed && temporary.match(name).hasMatch();
    }
    return left;
}

int countKillFailures(const Writer &writer, qint64 kills, quint32 seed, Progress &progress)
{
    if (!write(writer.file, writer.first))
        return !soak::report(false, writer.name + ": the show cannot be written");
    // From the start of the first save into the third one; the dice decide, not the disk.
    std::mt19937 dice(seed);
    // The shortest of a few times: the machine may be busy with something else.
    auto span = timeOfTwoSaves(writer, progress);
    for (int i = 0; i < 4; ++i)
        span = std::min(span, timeOfTwoSaves(writer, progress));
    Tally tally;
    for (qint64 i = 0; i < kills; ++i) {
        const double share = static_cast<double>(dice()) / std::mt19937::max();
        const auto after = std::chrono::microseconds(
            static_cast<qint64>(static_cast<double>(span.count()) * 1.3 * share));
        killOnce(writer, after, progress, tally);
    }
    return !soak::report(tally.broken == 0 && (kills < 10 || tally.saves > 0),
                         writer.name + ": " + std::to_string(tally.kills) + " kills, "
                             + std::to_string(tally.duringASave) + " of them during a save, "
                             + std::to_string(tally.saves) + " saves done between; "
                             + std::to_string(tally.broken) + " shows not whole");
}

std::vector<Writer> writers(Show &show, ShowDocument &document, const QString &folder)
{
    const QString file = folder + u'/' + fileName;
    const auto textOf = [&show](const char *name) {
        rename(show, name);
        return rehearsal::showText(show).toUtf8();
    };
    const QByteArray first = textOf("A");
    const QByteArray second = textOf("B");
    const auto nothing = [](bool) {};
    // Neither is what was opened: an unmodified document has no autosave.
    const auto edit = [&document](bool isFirst) { rename(*document.show(), isFirst ? "B" : "C"); };
    const auto documentText = [&](bool isFirst) {
        edit(isFirst);
        document.flush();
        return document.text();
    };
    const QByteArray firstDocument = documentText(true);
    const QByteArray secondDocument = documentText(false);
    return {
        {"saveText", file, first, second,
         [=](Progress &progress) {
             saveOnAndOn(progress, Steps{nothing, [&](bool isFirst) {
                                             FileFault fault;
                                             rehearsal::saveText(isFirst ? first : second, file,
                                                                 &fault);
                                         }});
         }},
        {"saveShow", file, first, second,
         [=, &show](Progress &progress) {
             saveOnAndOn(progress, Steps{[&](bool isFirst) { rename(show, isFirst ? "A" : "B"); },
                                         [&](bool) {
                                             FileFault fault;
                                             rehearsal::saveShow(show, file, &fault);
                                         }});
         }},
        {"ShowDocument", file, firstDocument, secondDocument,
         [=, &document](Progress &progress) {
             saveOnAndOn(progress, Steps{edit, [&](bool) {
                                             FileFault fault;
                                             document.saveAs(file, &fault);
                                         }});
         }},
        {"Autosave", file + QStringLiteral(".autosave"), firstDocument, secondDocument,
         [=, &document](Progress &progress) {
             Autosave autosave(document, std::chrono::hours(1), folder);
             saveOnAndOn(progress, Steps{edit, [&](bool) { autosave.saveNow(); }});
         }},
    };
}

int countKills(qint64 kills)
{
    const QTemporaryDir folder;
    const std::unique_ptr<Show> show = parse(showOf(childrenOfTheShow));
    ShowDocument document(allTypes());
    FileFault fault;
    const QString file = folder.filePath(fileName);
    if (!write(file, showOf(childrenOfTheShow)) || !document.open(file, &fault))
        return !soak::report(false, fault.message().toStdString());
    auto *progress = static_cast<Progress *>(
        mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    if (progress == MAP_FAILED)
        return !soak::report(false, "there is no memory to share");

    int failures = 0;
    quint32 seed = 1;
    const std::vector<Writer> all = writers(*show, document, folder.path());
    // All end in the first, which is the one that is at the disk most of the time.
    const qint64 share = std::max<qint64>(1, kills / 10);
    for (const Writer &writer : all) {
        const qint64 rest = kills - share * static_cast<qint64>(all.size() - 1);
        const qint64 own = &writer == &all.front() ? rest : share;
        failures += countKillFailures(writer, own, seed++, *progress);
    }
    munmap(progress, sizeof(Progress));

    qint64 bytes = 0;
    bool isNamed = true;
    const QString autosave = fileName + QStringLiteral(".autosave");
    const int left = countLeft(
        folder.path(), {fileName, autosave, autosave + QStringLiteral(".lock")}, &bytes, &isNamed);
    const bool isBounded = isNamed && left <= kills;
    failures += !soak::report(isBounded, std::to_string(left) + " temporary files left, "
                                             + std::to_string(bytes / 1024)
                                             + " KiB, each named after its show");
    return failures;
}

int run(const QStringList &arguments)
{
    return countFaults() + countKills(soak::numberAt(arguments, 0, 1000));
}

const soak::Command
    command("saves", "[KILLS=1000]              shows survive faults while they are saved", run);

} // namespace
