#include "Autosave.h"
#include "Effect.h"
#include "EffectTypes.h"
#include "ShowDocument.h"
#include "ShowFile.h"

#include <sys/resource.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstdio>

using namespace std::chrono_literals;

using rehearsal::Autosave;
using rehearsal::FileFault;
using rehearsal::Recovery;
using rehearsal::ShowDocument;

namespace {

const QByteArray plainShow = "<show version=\"1\">\n<map>\n"
                             "<light uid=\"1\" name=\"Left\" x=\"0\" y=\"0\"/>\n</map>\n"
                             "<effect type=\"Solid\">\n<property key=\"name\">0</property>\n"
                             "</effect>\n</show>\n";

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

void rename(const ShowDocument &document, const QString &name)
{
    document.show()->effects().first()->setProperty(QStringLiteral("name"), name);
}

/// The number that the show's effect is named by; -1 if the text is no such show.
int numberIn(const QByteArray &show)
{
    static const QRegularExpression name(QStringLiteral("key=\"name\">(\\d+)<"));
    const QRegularExpressionMatch match = name.match(QString::fromUtf8(show));
    return match.hasMatch() ? match.captured(1).toInt() : -1;
}

// --- What the other process does ---

/// edit <show> <data folder> <interval ms>: opens the show, or a new one where that is empty, names
/// its effect by the next number over and over, and tells each number before it does so.
int editForEver(const QStringList &arguments)
{
    ShowDocument document(&rehearsal::addHostTypes);
    Autosave autosave(document, std::chrono::milliseconds(arguments.at(2).toInt()),
                      arguments.at(1));
    FileFault fault;
    const QString &file = arguments.at(0);
    if (!(file.isEmpty() ? document.openText(plainShow, QStringLiteral("new"), {}, &fault)
                         : document.open(file, &fault)))
        return 1;
    int number = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        std::printf("%d\n", ++number);
        std::fflush(stdout);
        rename(document, QString::number(number));
    });
    timer.start(5);
    return QCoreApplication::exec();
}

/// This program as another one that edits a show.
class OtherProgram
{
public:
    OtherProgram(const QString &file, const QString &dataFolder, int intervalMs)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationFilePath(),
                        {QStringLiteral("edit"), file, dataFolder, QString::number(intervalMs)});
        if (!m_process.waitForStarted())
            qFatal("the other program does not start");
    }
    ~OtherProgram() { kill(); }
    Q_DISABLE_COPY_MOVE(OtherProgram)

    /// The number that it has told last; waits for the first.
    int number()
    {
        while (m_process.canReadLine() || m_process.waitForReadyRead(m_number > 0 ? 0 : 30000))
            m_number = m_process.readLine().trimmed().toInt();
        return m_number;
    }
    /// As by "kill -9".
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
    int m_number = 0;
};

/// A folder with a show, and a folder for what programs keep.
struct Folders
{
    Folders()
    {
        if (!root.isValid() || !write(file, plainShow))
            qFatal("there is no folder to test in");
    }
    QStringList kept() const
    {
        return QDir(data).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    QStringList besideTheShow() const
    {
        return QDir(root.path()).entryList({QStringLiteral("a.show*")}, QDir::Files, QDir::Name);
    }

    QTemporaryDir root;
    QString file = root.filePath(QStringLiteral("a.show"));
    QString autosaveFile = file + QStringLiteral(".autosave");
    QString data = root.filePath(QStringLiteral("data"));
};

/// A program with a document, which writes when it is told to.
struct Program
{
    explicit Program(const Folders &folders, std::chrono::milliseconds interval = 1h)
        : autosave(document, interval, folders.data)
    {
    }
    Program(const Folders &folders, const QString &file) : Program(folders) { open(file); }

    void open(const QString &file)
    {
        if (!document.open(file, &fault))
            qFatal("the show cannot be opened: %s", qPrintable(fault.message()));
    }
    void openUntitled()
    {
        if (!document.openText(plainShow, QStringLiteral("new"), {}, &fault))
            qFatal("the text cannot be opened: %s", qPrintable(fault.message()));
    }
    void editAndSave(const QString &name)
    {
        rename(document, name);
        autosave.saveNow();
    }

    FileFault fault;
    ShowDocument document{&rehearsal::addHostTypes};
    Autosave autosave;
    QSignalSpy failed{&autosave, &Autosave::failed};
    QSignalSpy unavailable{&autosave, &Autosave::unavailable};
    QSignalSpy working{&autosave, &Autosave::working};
};

/// What a program leaves that dies with this edit.
void leaveBehind(const Folders &folders, const QString &name)
{
    Program(folders, folders.file).editAndSave(name);
}

const QStringList onlyTheShow{QStringLiteral("a.show")};

} // namespace

class tst_Autosave : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void modifiedDocumentIsWrittenEveryInterval();
    void unmodifiedDocumentIsNotWritten();
    void sameTextIsNotWrittenAgain();
    void autosaveThatIsGoneIsWrittenAgain();
    void untitledDocumentIsWrittenToTheDataFolder();

    void autosaveGoesWhenTheDocumentIsSaved();
    void autosaveGoesWhenTheDocumentIsFoundUnmodified();
    void untitledAutosaveGoesWithItsLock();
    void autosaveGoesWhenAnotherShowIsOpened();
    void autosaveGoesWhenTheDocumentIsClosed();
    void autosaveOfTheOldFileGoesWhenSavedAsAnother();
    void autosaveOfAnUntitledDocumentGoesWhenItGetsAFile();
    void closedDocumentIsNotWritten();
    void documentIsWrittenAgainAfterUndoOfTheUnmodifiedState();

    void killedProgramLosesNothingOlderThanTheInterval();
    void killedProgramWithoutAFileIsRecovered();
    void killedProgramsLockIsTakenOverAtOnce();

    void recoveredDocumentIsModifiedAndKeepsTheShowsFile();
    void autosaveStaysUntilTheRecoveredDocumentIsSaved();
    void recoveredDocumentIsWrittenToItsOldPlace();
    void unreadableRecoveryLeavesTheDocumentAlone();
    void nothingIsRecoverableWithoutAnAutosave();
    void autosaveLikeTheFileIsNotRecoverable();
    void autosaveOfAShowThatIsGoneIsRecoverable();
    void discardedRecoveryIsGone();
    void remainsOfTheOpenedShowAreDiscardedButNotItsOwn();
    void untitledRecoveriesAreListedNewestFirst();
    void foreignRemainsAreNotTouchedWithoutAnEdit();
    void remainsAreKeptUnderAnotherName();
    void remainsThatComeLaterAreKeptToo();
    void remainsAreKeptOnceHoweverOftenWritingFails();
    void remainsThatAreOlderThanTheFileAreTold();
    void remainsKeepTheirTimeUnderAnotherName();
    void remainsLeftForLaterAreOfferedAgain();
    void unreadableRemainsLeftForLaterStayTheDocumentsPlace();
    void copiesOfWhatIsDiscardedGoToo();
    void copiesOfWhatIsRecoveredGoToo();
    void nothingNewerIsDiscarded();

    void secondProgramHasNoAutosave();
    void anotherDocumentWithoutAutosaveIsToldAgain();
    void lockOfALivingProgramHoldsHoweverOld();
    void lockOfNobodyHereIsVoid_data();
    void lockOfNobodyHereIsVoid();
    void autosaveOfALivingProgramIsNotRecoverable();
    void secondProgramGetsThePlaceWhenTheFirstCloses();
    void secondProgramKeepsTheRemainsOfTheFirst();
    void secondProgramRecoversWithoutTheFirstsPlace();
    void remainsThatALivingProgramTookAreNotRecovered();

    void placeBesideTheFileThatCannotBeWrittenIsReplaced();
    void autosaveInTheDataFolderIsRecoverable();
    void placeBesideTheFileThatFailsLaterIsReplaced();
    void showStaysTakenWhereverItsAutosaveIs();
    void noPlaceAtAllIsToldOnce();
    void failureIsToldOnceUntilItWorksAgain();
};

void tst_Autosave::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
}

// --- Writing ---

void tst_Autosave::modifiedDocumentIsWrittenEveryInterval()
{
    const Folders folders;
    Program program(folders, 20ms);
    program.open(folders.file);
    for (int number = 1; number <= 3; ++number) {
        rename(program.document, QString::number(number));
        QTRY_COMPARE(numberIn(contentOf(folders.autosaveFile)), number);
        QCOMPARE(contentOf(folders.autosaveFile), program.document.text());
    }
    QCOMPARE(contentOf(folders.file), plainShow);
}

void tst_Autosave::unmodifiedDocumentIsNotWritten()
{
    const Folders folders;
    Program program(folders, folders.file);
    program.autosave.saveNow();
    QVERIFY(!QFile::exists(folders.autosaveFile));
}

void tst_Autosave::sameTextIsNotWrittenAgain()
{
    const Folders folders;
    Program program(folders, folders.file);
    program.editAndSave(QStringLiteral("1"));
    QVERIFY(write(folders.autosaveFile, "touched"));
    program.autosave.saveNow();
    QCOMPARE(contentOf(folders.autosaveFile), QByteArray("touched"));
    program.editAndSave(QStringLiteral("2"));
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 2);
}

void tst_Autosave::autosaveThatIsGoneIsWrittenAgain()
{
    const Folders folders;
    Program program(folders, folders.file);
    program.editAndSave(QStringLiteral("1"));
    QVERIFY(QFile::remove(folders.autosaveFile));
    program.autosave.saveNow();
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 1);
}

void tst_Autosave::untitledDocumentIsWrittenToTheDataFolder()
{
    const Folders folders;
    Program program(folders);
    program.openUntitled();
    QVERIFY(!QFile::exists(folders.data));
    program.editAndSave(QStringLiteral("1"));
    program.editAndSave(QStringLiteral("2"));
    const QStringList kept = folders.kept().filter(QRegularExpression(QStringLiteral("autosave$")));
    QCOMPARE(kept.size(), 1);
    QVERIFY2(kept.first().startsWith(QStringLiteral("untitled-")), qPrintable(kept.first()));
    QCOMPARE(numberIn(contentOf(folders.data + u'/' + kept.first())), 2);
}

// --- Going ---

void tst_Autosave::autosaveGoesWhenTheDocumentIsSaved()
{
    const Folders folders;
    Program program(folders, folders.file);
    program.editAndSave(QStringLiteral("1"));
    QVERIFY(QFile::exists(folders.autosaveFile));
    QVERIFY(program.document.save(&program.fault));
    QVERIFY(!QFile::exists(folders.autosaveFile));
}

void tst_Autosave::autosaveGoesWhenTheDocumentIsFoundUnmodified()
{
    const Folders folders;
    Program program(folders, folders.file);
    program.editAndSave(QStringLiteral("1"));
    QVERIFY(program.document.undo());
    QVERIFY(!QFile::exists(folders.autosaveFile));
}

void tst_Autosave::untitledAutosaveGoesWithItsLock()
{
    const Folders folders;
    FileFault fault;
    ShowDocument document([](rehearsal::EffectFactory &factory) {
        rehearsal::addHostTypes(factory);
        factory.addType(QStringLiteral("Meta Effect"),
                        [&factory](MapModel *) { return factory.make(QStringLiteral("Solid")); });
    });
    Autosave autosave(document, 1h, folders.data);
    QVERIFY2(document.startNew(&fault), qPrintable(fault.message()));
    for (int round = 0; round < 2; ++round) {
        rename(document, QStringLiteral("1"));
        autosave.saveNow();
        QCOMPARE(folders.kept().size(), 2);
        QVERIFY(document.undo());
        QCOMPARE(folders.kept(), QStringList());
    }
}

void tst_Autosave::autosaveGoesWhenAnotherShowIsOpened()
{
    const Folders folders;
    const QString other = folders.root.filePath(QStringLiteral("b.show"));
    QVERIFY(write(other, plainShow));
    Program program(folders, folders.file);
    program.editAndSave(QStringLiteral("1"));
    program.open(other);
    QCOMPARE(folders.besideTheShow(), onlyTheShow);
    program.editAndSave(QStringLiteral("2"));
    QCOMPARE(numberIn(contentOf(other + QStringLiteral(".autosave"))), 2);
}

void tst_Autosave::autosaveGoesWhenTheDocumentIsClosed()
{
    const Folders folders;
    Program program(folders, folders.file);
    program.editAndSave(QStringLiteral("1"));
    program.autosave.close();
    QCOMPARE(folders.besideTheShow(), onlyTheShow);
}

void tst_Autosave::autosaveOfTheOldFileGoesWhenSavedAsAnother()
{
    const Folders folders;
    const QString other = folders.root.filePath(QStringLiteral("b.show"));
    Program program(folders, folders.file);
    program.editAndSave(QStringLiteral("1"));
    QVERIFY(program.document.saveAs(other, &program.fault));
    QCOMPARE(folders.besideTheShow(), onlyTheShow);
    program.editAndSave(QStringLiteral("2"));
    QCOMPARE(numberIn(contentOf(other + QStringLiteral(".autosave"))), 2);
    QVERIFY(!QFile::exists(folders.autosaveFile));
}

void tst_Autosave::autosaveOfAnUntitledDocumentGoesWhenItGetsAFile()
{
    const Folders folders;
    Program program(folders);
    program.openUntitled();
    program.editAndSave(QStringLiteral("1"));
    QVERIFY(!folders.kept().isEmpty());
    QVERIFY(program.document.saveAs(folders.file, &program.fault));
    QCOMPARE(folders.kept(), QStringList());
}

void tst_Autosave::closedDocumentIsNotWritten()
{
    const Folders folders;
    Program program(folders, 10ms);
    program.open(folders.file);
    rename(program.document, QStringLiteral("1"));
    QTRY_VERIFY(QFile::exists(folders.autosaveFile));
    program.autosave.close();
    QTest::qWait(100);
    program.autosave.saveNow();
    QCOMPARE(folders.besideTheShow(), onlyTheShow);
    program.open(folders.file);
    rename(program.document, QStringLiteral("2"));
    QTRY_VERIFY(QFile::exists(folders.autosaveFile));
}

void tst_Autosave::documentIsWrittenAgainAfterUndoOfTheUnmodifiedState()
{
    const Folders folders;
    Program program(folders, folders.file);
    program.editAndSave(QStringLiteral("1"));
    QVERIFY(program.document.undo());
    QVERIFY(program.document.redo());
    program.autosave.saveNow();
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 1);
}

// --- Killed programs ---

void tst_Autosave::killedProgramLosesNothingOlderThanTheInterval()
{
    constexpr int intervalMs = 200;
    constexpr int slackMs = 800; // for a machine that is busy
    const Folders folders;
    int lastNumber = 0;
    for (int death = 1; death <= 3; ++death) {
        OtherProgram other(folders.file, folders.data, intervalMs);
        other.number();
        QTest::qSleep(500 + 130 * death);
        const int oldNumber = other.number();
        QVERIFY(oldNumber > 10);
        QTest::qSleep(intervalMs + slackMs);
        other.kill();
        lastNumber = other.number();

        Program program(folders);
        const std::optional<Recovery> recovery = program.autosave.recoverable(folders.file);
        QVERIFY(recovery);
        QCOMPARE(recovery->autosaveFile, folders.autosaveFile);
        QCOMPARE(recovery->showFile, folders.file);
        const int kept = numberIn(contentOf(recovery->autosaveFile));
        QVERIFY2(
            kept >= oldNumber && kept <= lastNumber,
            qPrintable(QStringLiteral("%1 <= %2 <= %3").arg(oldNumber).arg(kept).arg(lastNumber)));
        QVERIFY2(program.autosave.recover(*recovery, &program.fault),
                 qPrintable(program.fault.message()));
        QCOMPARE(numberIn(program.document.text()), kept);
        QCOMPARE(contentOf(folders.file), plainShow);
        program.autosave.close();
    }
}

void tst_Autosave::killedProgramWithoutAFileIsRecovered()
{
    const Folders folders;
    {
        OtherProgram other(QString(), folders.data, 50);
        other.number();
        QTRY_VERIFY(!folders.kept().filter(QRegularExpression(QStringLiteral("save$"))).isEmpty());
        QVERIFY(Program(folders).autosave.untitledRecoverable().isEmpty());
        other.kill();
    }
    Program program(folders);
    const QList<Recovery> recoveries = program.autosave.untitledRecoverable();
    QCOMPARE(recoveries.size(), 1);
    QCOMPARE(recoveries.first().showFile, QString());
    QVERIFY(program.autosave.recover(recoveries.first(), &program.fault));
    QVERIFY(numberIn(program.document.text()) > 0);
    QCOMPARE(program.document.file(), QString());
    QVERIFY(program.document.isModified());

    program.editAndSave(QStringLiteral("999999"));
    QCOMPARE(numberIn(contentOf(recoveries.first().autosaveFile)), 999999);
    QVERIFY(program.document.saveAs(folders.file, &program.fault));
    QCOMPARE(folders.kept(), QStringList());
}

void tst_Autosave::killedProgramsLockIsTakenOverAtOnce()
{
    const Folders folders;
    {
        OtherProgram other(folders.file, folders.data, 50);
        other.number();
        QTRY_VERIFY(QFile::exists(folders.autosaveFile));
    }
    QVERIFY(QFile::exists(folders.autosaveFile + QStringLiteral(".lock")));
    Program program(folders);
    QElapsedTimer timer;
    timer.start();
    program.open(folders.file);
    program.editAndSave(QStringLiteral("999999"));
    QVERIFY(timer.elapsed() < 5000);
    QCoreApplication::processEvents();
    QCOMPARE(program.unavailable.count(), 0);
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 999999);
}

// --- Recovering ---

void tst_Autosave::recoveredDocumentIsModifiedAndKeepsTheShowsFile()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    Program program(folders);
    const std::optional<Recovery> recovery = program.autosave.recoverable(folders.file);
    QVERIFY(recovery);
    QVERIFY(qAbs(recovery->written.secsTo(QDateTime::currentDateTime())) < 60);
    QVERIFY(program.autosave.recover(*recovery, &program.fault));
    QVERIFY(program.document.isModified());
    QCOMPARE(program.document.file(), folders.file);
    QVERIFY(program.document.save(&program.fault));
    QCOMPARE(numberIn(contentOf(folders.file)), 5);
}

void tst_Autosave::autosaveStaysUntilTheRecoveredDocumentIsSaved()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    for (int death = 1; death <= 2; ++death) {
        Program program(folders);
        QVERIFY(
            program.autosave.recover(*program.autosave.recoverable(folders.file), &program.fault));
        program.autosave.saveNow();
        QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 5);
    }
    Program program(folders);
    QVERIFY(program.autosave.recover(*program.autosave.recoverable(folders.file), &program.fault));
    QVERIFY(program.document.save(&program.fault));
    QVERIFY(!QFile::exists(folders.autosaveFile));
}

void tst_Autosave::recoveredDocumentIsWrittenToItsOldPlace()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    Program program(folders);
    QVERIFY(program.autosave.recover(*program.autosave.recoverable(folders.file), &program.fault));
    program.editAndSave(QStringLiteral("6"));
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 6);
    program.autosave.close();
    QCOMPARE(folders.besideTheShow(), onlyTheShow);
}

void tst_Autosave::unreadableRecoveryLeavesTheDocumentAlone()
{
    const Folders folders;
    const QString other = folders.root.filePath(QStringLiteral("b.show"));
    QVERIFY(write(other, plainShow));
    QVERIFY(write(folders.autosaveFile, plainShow.first(plainShow.size() / 2)));
    Program program(folders, other);
    program.editAndSave(QStringLiteral("1"));
    QVERIFY(!program.autosave.recover(*program.autosave.recoverable(folders.file), &program.fault));
    QCOMPARE(program.fault.file, folders.autosaveFile);
    QCOMPARE(program.document.file(), other);
    program.editAndSave(QStringLiteral("2"));
    QCOMPARE(numberIn(contentOf(other + QStringLiteral(".autosave"))), 2);
}

void tst_Autosave::nothingIsRecoverableWithoutAnAutosave()
{
    const Folders folders;
    Program program(folders);
    QVERIFY(!program.autosave.recoverable(folders.file));
    QVERIFY(program.autosave.untitledRecoverable().isEmpty());
    QCOMPARE(folders.besideTheShow(), onlyTheShow);
    QVERIFY(!QFile::exists(folders.data));
}

void tst_Autosave::autosaveLikeTheFileIsNotRecoverable()
{
    const Folders folders;
    QVERIFY(write(folders.autosaveFile, plainShow));
    Program program(folders);
    QVERIFY(!program.autosave.recoverable(folders.file));
    QVERIFY(write(folders.autosaveFile, plainShow + "\n"));
    QVERIFY(program.autosave.recoverable(folders.file));
}

void tst_Autosave::autosaveOfAShowThatIsGoneIsRecoverable()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    QVERIFY(QFile::remove(folders.file));
    Program program(folders);
    QVERIFY(program.autosave.recover(*program.autosave.recoverable(folders.file), &program.fault));
    QVERIFY(program.document.save(&program.fault));
    QCOMPARE(numberIn(contentOf(folders.file)), 5);
}

void tst_Autosave::discardedRecoveryIsGone()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    Program program(folders);
    program.autosave.discard(*program.autosave.recoverable(folders.file));
    QVERIFY(!program.autosave.recoverable(folders.file));
    QCOMPARE(folders.besideTheShow(), onlyTheShow);
}

void tst_Autosave::remainsOfTheOpenedShowAreDiscardedButNotItsOwn()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    Program program(folders);
    const Recovery recovery = *program.autosave.recoverable(folders.file);
    program.open(folders.file);
    program.autosave.discard(recovery);
    QVERIFY(!QFile::exists(folders.autosaveFile));
    program.editAndSave(QStringLiteral("6"));
    program.autosave.discard(recovery);
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 6);
}

void tst_Autosave::untitledRecoveriesAreListedNewestFirst()
{
    const Folders folders;
    for (const char *name : {"1", "2", "3"}) {
        Program program(folders);
        program.openUntitled();
        program.editAndSave(QString::fromLatin1(name));
        QTest::qSleep(20);
    }
    Program program(folders);
    const QList<Recovery> recoveries = program.autosave.untitledRecoverable();
    QList<int> numbers;
    for (const Recovery &recovery : recoveries)
        numbers.append(numberIn(contentOf(recovery.autosaveFile)));
    QCOMPARE(numbers, QList<int>({3, 2, 1}));
    program.autosave.discard(recoveries.at(1));
    QCOMPARE(program.autosave.untitledRecoverable().size(), 2);
}

void tst_Autosave::foreignRemainsAreNotTouchedWithoutAnEdit()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    {
        Program program(folders, folders.file);
        program.autosave.saveNow();
        QVERIFY(program.document.save(&program.fault));
        program.autosave.close();
    }
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 5);
}

void tst_Autosave::remainsAreKeptUnderAnotherName()
{
    const Folders folders;
    const QString aside = folders.autosaveFile + QStringLiteral(".1");
    leaveBehind(folders, QStringLiteral("5"));
    {
        Program program(folders, folders.file);
        program.editAndSave(QStringLiteral("7"));
        QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 7);
        QCOMPARE(numberIn(contentOf(aside)), 5);
        program.editAndSave(QStringLiteral("8"));
        program.autosave.close();
    }
    QCOMPARE(folders.besideTheShow(),
             QStringList({QStringLiteral("a.show"), QStringLiteral("a.show.autosave.1")}));

    Program program(folders);
    QVERIFY(program.autosave.recover(*program.autosave.recoverable(folders.file), &program.fault));
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 5);
    QVERIFY(program.document.save(&program.fault));
    program.autosave.close();
    QCOMPARE(numberIn(contentOf(folders.file)), 5);
    QCOMPARE(folders.besideTheShow(), onlyTheShow);
}

void tst_Autosave::remainsThatComeLaterAreKeptToo()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    Program program(folders, folders.file);
    program.editAndSave(QStringLiteral("6"));
    QVERIFY(program.document.save(&program.fault));
    QVERIFY(write(folders.autosaveFile, QByteArray(plainShow).replace(">0<", ">7<")));
    program.editAndSave(QStringLiteral("8"));
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 8);
    QCOMPARE(numberIn(contentOf(folders.autosaveFile + QStringLiteral(".1"))), 5);
    QCOMPARE(numberIn(contentOf(folders.autosaveFile + QStringLiteral(".2"))), 7);
}

void tst_Autosave::remainsAreKeptOnceHoweverOftenWritingFails()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    Program program(folders, folders.file);
    rlimit usual;
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &usual), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tiny{10, usual.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &tiny), 0);
    for (const char *name : {"6", "7", "8"})
        program.editAndSave(QString::fromLatin1(name));
    setrlimit(RLIMIT_FSIZE, &usual);
    std::signal(SIGXFSZ, handler);

    QCOMPARE(program.failed.count(), 1);
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 5);
    program.autosave.saveNow();
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 8);
    QCOMPARE(numberIn(contentOf(folders.autosaveFile + QStringLiteral(".1"))), 5);
    QVERIFY(!QFile::exists(folders.autosaveFile + QStringLiteral(".2")));
}

void tst_Autosave::remainsThatAreOlderThanTheFileAreTold()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    QVERIFY(!Program(folders).autosave.recoverable(folders.file)->isOlder);
    QTest::qSleep(20);
    Program program(folders, folders.file);
    rename(program.document, QStringLiteral("9"));
    QVERIFY(program.document.save(&program.fault));
    program.autosave.close();
    QVERIFY(Program(folders).autosave.recoverable(folders.file)->isOlder);
}

void tst_Autosave::remainsKeepTheirTimeUnderAnotherName()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    const QDateTime written = QFileInfo(folders.autosaveFile).lastModified();
    QTest::qSleep(20);
    leaveBehind(folders, QStringLiteral("6"));
    QCOMPARE(QFileInfo(folders.autosaveFile + QStringLiteral(".1")).lastModified(), written);
}

void tst_Autosave::remainsLeftForLaterAreOfferedAgain()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    Program program(folders, folders.file);
    const std::optional<Recovery> recovery = program.autosave.recoverable(folders.file);
    QVERIFY(recovery);
    QVERIFY(program.autosave.recover(*recovery, &program.fault));
    QCOMPARE(numberIn(program.document.text()), 5);
    QVERIFY(!Program(folders).autosave.recoverable(folders.file)); // it is this program's
    program.editAndSave(QStringLiteral("6"));
    QCOMPARE(folders.besideTheShow().size(), 3); // with the autosave and its lock
    QVERIFY(!program.autosave.recoverable(folders.file));
}

void tst_Autosave::unreadableRemainsLeftForLaterStayTheDocumentsPlace()
{
    const Folders folders;
    QVERIFY(write(folders.autosaveFile, "no show"));
    Program program(folders, folders.file);
    const std::optional<Recovery> recovery = program.autosave.recoverable(folders.file);
    QVERIFY(recovery);
    QVERIFY(!program.autosave.recover(*recovery, &program.fault));
    Program other(folders, folders.file);
    QCoreApplication::processEvents();
    QCOMPARE(other.unavailable.count(), 1);
    program.editAndSave(QStringLiteral("6"));
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 6);
}

void tst_Autosave::copiesOfWhatIsDiscardedGoToo()
{
    const Folders folders;
    QVERIFY(write(folders.autosaveFile + QStringLiteral(".4"), "something else"));
    QTest::qSleep(20);
    leaveBehind(folders, QStringLiteral("5"));
    QVERIFY(QFile::copy(folders.autosaveFile, folders.autosaveFile + QStringLiteral(".3")));
    Program program(folders);
    const Recovery recovery = *program.autosave.recoverable(folders.file);
    program.open(folders.file);
    program.autosave.discard(recovery);
    program.autosave.close();
    QCOMPARE(folders.besideTheShow(), onlyTheShow + QStringList{"a.show.autosave.4"});
}

void tst_Autosave::copiesOfWhatIsRecoveredGoToo()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    QVERIFY(QFile::copy(folders.autosaveFile, folders.autosaveFile + QStringLiteral(".3")));
    Program program(folders);
    QVERIFY(program.autosave.recover(*program.autosave.recoverable(folders.file), &program.fault));
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 5);
    program.autosave.close();
    QCOMPARE(folders.besideTheShow(), onlyTheShow);
}

// While the user was asked, another program recovered it, went on with it, and died.
void tst_Autosave::nothingNewerIsDiscarded()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    Program asking(folders);
    const Recovery recovery = *asking.autosave.recoverable(folders.file);
    QTest::qSleep(20);
    QVERIFY(QFile::remove(folders.autosaveFile));
    leaveBehind(folders, QStringLiteral("6"));
    asking.open(folders.file);
    asking.autosave.discard(recovery);
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 6);
}

// --- Two programs ---

void tst_Autosave::secondProgramHasNoAutosave()
{
    const Folders folders;
    Program first(folders, folders.file);
    first.editAndSave(QStringLiteral("1"));
    Program second(folders, folders.file);
    QTRY_COMPARE(second.unavailable.count(), 1);
    second.editAndSave(QStringLiteral("2"));
    second.editAndSave(QStringLiteral("3"));
    QCoreApplication::processEvents();
    QCOMPARE(second.unavailable.count(), 1);
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 1);
    QVERIFY(second.document.undo());
    second.autosave.close();
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 1);
    QCOMPARE(first.unavailable.count(), 0);
}

void tst_Autosave::anotherDocumentWithoutAutosaveIsToldAgain()
{
    const Folders folders;
    const Program first(folders, folders.file);
    Program second(folders, folders.file);
    QTRY_COMPARE(second.unavailable.count(), 1);
    second.open(folders.file);
    QTRY_COMPARE(second.unavailable.count(), 2);
}

void tst_Autosave::lockOfALivingProgramHoldsHoweverOld()
{
    const Folders folders;
    Program first(folders, folders.file);
    first.editAndSave(QStringLiteral("1"));
    QFile lock(folders.autosaveFile + QStringLiteral(".lock"));
    QVERIFY(lock.open(QIODevice::ReadWrite));
    QVERIFY(lock.setFileTime(QDateTime::currentDateTime().addDays(-2),
                             QFileDevice::FileModificationTime));
    lock.close();
    Program second(folders, folders.file);
    QTRY_COMPARE(second.unavailable.count(), 1);
    QVERIFY(!second.autosave.recoverable(folders.file));
}

void tst_Autosave::lockOfNobodyHereIsVoid_data()
{
    QTest::addColumn<QByteArray>("lock");
    QTest::newRow("cut off when it was written") << QByteArray("");
    QTest::newRow("of another machine") << QByteArray("1\nrehearsal\nsome other host\nid\nboot\n");
}

void tst_Autosave::lockOfNobodyHereIsVoid()
{
    QFETCH(QByteArray, lock);
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    QVERIFY(write(folders.autosaveFile + QStringLiteral(".lock"), lock));
    QVERIFY(Program(folders).autosave.recoverable(folders.file));

    QVERIFY(write(folders.autosaveFile + QStringLiteral(".lock"), lock));
    Program program(folders, folders.file);
    program.editAndSave(QStringLiteral("6"));
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 6);
}

void tst_Autosave::autosaveOfALivingProgramIsNotRecoverable()
{
    const Folders folders;
    OtherProgram other(folders.file, folders.data, 50);
    other.number();
    QTRY_VERIFY(QFile::exists(folders.autosaveFile));
    Program program(folders);
    QVERIFY(!program.autosave.recoverable(folders.file));
    program.autosave.discard({folders.autosaveFile, folders.file, {}});
    QVERIFY(QFile::exists(folders.autosaveFile));
    program.open(folders.file);
    QTRY_COMPARE(program.unavailable.count(), 1);
    other.kill();
    QVERIFY(program.autosave.recoverable(folders.file));
}

void tst_Autosave::secondProgramGetsThePlaceWhenTheFirstCloses()
{
    const Folders folders;
    Program first(folders, folders.file);
    first.editAndSave(QStringLiteral("1"));
    Program second(folders, folders.file);
    first.autosave.close();
    second.editAndSave(QStringLiteral("2"));
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 2);
    QTRY_COMPARE(second.unavailable.count(), 1);
}

void tst_Autosave::secondProgramKeepsTheRemainsOfTheFirst()
{
    const Folders folders;
    OtherProgram first(folders.file, folders.data, 50);
    first.number();
    QTRY_VERIFY(QFile::exists(folders.autosaveFile));
    Program second(folders, folders.file);
    QTRY_COMPARE(second.unavailable.count(), 1);
    first.kill();
    const QByteArray left = contentOf(folders.autosaveFile);
    second.editAndSave(QStringLiteral("999999"));
    QCOMPARE(second.working.count(), 1);
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 999999);
    const std::optional<Recovery> recovery = Program(folders).autosave.recoverable(folders.file);
    QVERIFY(recovery);
    QCOMPARE(recovery->autosaveFile, folders.autosaveFile + QStringLiteral(".1"));
    QCOMPARE(contentOf(recovery->autosaveFile), left);
}

void tst_Autosave::secondProgramRecoversWithoutTheFirstsPlace()
{
    const Folders folders;
    const QString aside = folders.autosaveFile + QStringLiteral(".1");
    leaveBehind(folders, QStringLiteral("5"));
    Program first(folders, folders.file);
    first.editAndSave(QStringLiteral("7"));
    QVERIFY(first.document.save(&first.fault));

    Program second(folders);
    QVERIFY(second.autosave.recover(*second.autosave.recoverable(folders.file), &second.fault));
    QCOMPARE(numberIn(second.document.text()), 5);
    first.editAndSave(QStringLiteral("8"));
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 8);
    QCOMPARE(numberIn(contentOf(aside)), 5);
    second.editAndSave(QStringLiteral("6"));
    QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 8);
    QCOMPARE(numberIn(contentOf(aside)), 6);
    QVERIFY(!Program(folders).autosave.recoverable(folders.file));
}

void tst_Autosave::remainsThatALivingProgramTookAreNotRecovered()
{
    const Folders folders;
    leaveBehind(folders, QStringLiteral("5"));
    Program asking(folders);
    const Recovery recovery = *asking.autosave.recoverable(folders.file);
    Program other(folders, folders.file);
    other.editAndSave(QStringLiteral("6"));
    QVERIFY(!asking.autosave.recover(recovery, &asking.fault));
    QCOMPARE(asking.fault.file, folders.autosaveFile);
    QVERIFY(!asking.document.show());
}

// --- Places that cannot be written ---

void tst_Autosave::placeBesideTheFileThatCannotBeWrittenIsReplaced()
{
    const Folders folders;
    const QString file = folders.file + QStringLiteral("/b.show"); // below a file
    Program program(folders);
    QVERIFY(program.document.openText(plainShow, file, file, &program.fault));
    program.editAndSave(QStringLiteral("1"));
    QCoreApplication::processEvents();
    QCOMPARE(program.unavailable.count(), 0);
    QCOMPARE(program.failed.count(), 0);
    QStringList kept = folders.kept().filter(QRegularExpression(QStringLiteral("autosave$")));
    QCOMPARE(kept.size(), 1);
    QCOMPARE(numberIn(contentOf(folders.data + u'/' + kept.first())), 1);
    program.autosave.close();
    QCOMPARE(folders.kept(), QStringList());
}

void tst_Autosave::autosaveInTheDataFolderIsRecoverable()
{
    const Folders folders;
    const QString file = folders.file + QStringLiteral("/b.show");
    {
        Program program(folders);
        QVERIFY(program.document.openText(plainShow, file, file, &program.fault));
        program.editAndSave(QStringLiteral("5"));
        QVERIFY(!Program(folders).autosave.recoverable(file));
    }
    Program program(folders);
    QVERIFY(program.autosave.untitledRecoverable().isEmpty());
    QVERIFY(!program.autosave.recoverable(folders.file));
    const std::optional<Recovery> recovery = program.autosave.recoverable(file);
    QVERIFY(recovery);
    QVERIFY(program.autosave.recover(*recovery, &program.fault));
    QCOMPARE(numberIn(program.document.text()), 5);
    QCOMPARE(program.document.file(), file);
    program.editAndSave(QStringLiteral("6"));
    QCOMPARE(numberIn(contentOf(recovery->autosaveFile)), 6);
}

void tst_Autosave::placeBesideTheFileThatFailsLaterIsReplaced()
{
    const Folders folders;
    {
        Program program(folders, folders.file);
        program.editAndSave(QStringLiteral("1"));
        QVERIFY(QFile::remove(folders.autosaveFile));
        QVERIFY(QFile::link(folders.root.filePath(QStringLiteral("no folder/a")),
                            folders.autosaveFile)); // through which nothing can be written
        program.editAndSave(QStringLiteral("2"));
        QVERIFY(!QFileInfo(folders.autosaveFile).isSymLink());
        program.editAndSave(QStringLiteral("3"));
        QCOMPARE(program.failed.count(), 0);
        QCOMPARE(program.unavailable.count(), 0);
        QVERIFY(!folders.besideTheShow().contains(QStringLiteral("a.show.autosave")));
    }
    QCOMPARE(folders.besideTheShow(), onlyTheShow);
    Program program(folders);
    const std::optional<Recovery> recovery = program.autosave.recoverable(folders.file);
    QVERIFY(recovery);
    QVERIFY(program.autosave.recover(*recovery, &program.fault));
    QCOMPARE(numberIn(program.document.text()), 3);
    QVERIFY(program.document.save(&program.fault));
    program.autosave.close();
    QCOMPARE(folders.kept(), QStringList());
}

void tst_Autosave::showStaysTakenWhereverItsAutosaveIs()
{
    const Folders folders;
    Program program(folders, folders.file);
    QVERIFY(QFile::link(folders.root.filePath(QStringLiteral("no folder/a")),
                        folders.autosaveFile)); // through which nothing can be written
    program.editAndSave(QStringLiteral("1"));
    QCOMPARE(program.failed.count(), 0);
    QVERIFY(QFile::remove(folders.autosaveFile));

    Program other(folders, folders.file);
    other.editAndSave(QStringLiteral("2"));
    QCoreApplication::processEvents();
    QCOMPARE(other.unavailable.count(), 1);
    QVERIFY(!QFile::exists(folders.autosaveFile));
}

void tst_Autosave::noPlaceAtAllIsToldOnce()
{
    const Folders folders;
    QVERIFY(write(folders.data, "not a folder"));
    const QString file = folders.file + QStringLiteral("/b.show");
    Program program(folders);
    QVERIFY(program.document.openText(plainShow, file, file, &program.fault));
    for (const char *name : {"1", "2"}) {
        program.editAndSave(QString::fromLatin1(name));
        QCoreApplication::processEvents();
        QCOMPARE(program.unavailable.count(), 1);
    }
    QVERIFY(program.unavailable.first().first().toString().contains(folders.data));
    QVERIFY(QFile::remove(folders.data));
    program.autosave.saveNow();
    QCOMPARE(folders.kept().size(), 2);
}

void tst_Autosave::failureIsToldOnceUntilItWorksAgain()
{
    const Folders folders;
    QVERIFY(write(folders.data, "not a folder"));
    Program program(folders, folders.file);
    for (int round = 1; round <= 2; ++round) {
        QVERIFY(QDir().mkdir(folders.autosaveFile));
        program.editAndSave(QStringLiteral("%1").arg(10 * round));
        program.editAndSave(QStringLiteral("%1").arg(10 * round + 1));
        QCOMPARE(program.failed.count(), round);
        QCOMPARE(program.failed.last().first().value<FileFault>().file, folders.autosaveFile);
        QVERIFY(QDir().rmdir(folders.autosaveFile));
        program.autosave.saveNow();
        QCOMPARE(numberIn(contentOf(folders.autosaveFile)), 10 * round + 1);
        QCOMPARE(program.working.count(), round);
        QVERIFY(QFile::remove(folders.autosaveFile));
    }
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 5 && arguments.at(1) == u"edit")
        return editForEver(arguments.sliced(2));
    tst_Autosave test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Autosave.moc"
