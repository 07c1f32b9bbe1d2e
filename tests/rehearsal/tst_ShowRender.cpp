#include "Show.h"
#include "ShowFile.h"
#include "ShowRender.h"
#include "TestTypes.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTest>

using rehearsal::FileFault;
using rehearsal::RenderPlan;
using rehearsal::Show;
using rehearsal::ShowRender;

namespace {

std::unique_ptr<Show> example()
{
    FileFault fault;
    return rehearsal::readShow(QStringLiteral(META_SOURCE_DIR "/examples/minimal.show"), allTypes(),
                               &fault);
}

QByteArray contentOf(const QString &file)
{
    QFile input(file);
    return input.open(QIODevice::ReadOnly) ? input.readAll() : QByteArray("(unreadable)");
}

} // namespace

class tst_ShowRender : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false")); }
    void init();

    void framesInPiecesGiveTheSameBytesAsAllAtOnce();
    void playsAsLongAsThePlanSays();
    void playForStopsAtTheTimeOrAtTheEnd();
    void droppedBeforeTheEndLeavesTheOldFilesAndNoOthers();
    void droppedAfterTheLastFrameLeavesTheOldFilesToo();
    void fileThatCannotBeOpenedIsAFaultBeforeTheFirstFrame();
    void secondFileThatCannotBeOpenedLeavesTheFirstAsItWas();
    void fileThatTakesNothingIsAFaultAtTheEnd();

private:
    QString path(const char *file) const { return m_folder->filePath(QString::fromLatin1(file)); }
    RenderPlan plan() const
    {
        RenderPlan plan;
        plan.tableFile = path("t.csv");
        plan.pictureFile = path("p.png");
        return plan;
    }
    void writeOldFiles() const;
    void verifyOldFiles() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_ShowRender::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_ShowRender::writeOldFiles() const
{
    for (const char *name : {"t.csv", "p.png"}) {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("old");
    }
}

void tst_ShowRender::verifyOldFiles() const
{
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
             QStringList({"p.png", "t.csv"}));
    QCOMPARE(contentOf(path("t.csv")), QByteArray("old"));
    QCOMPARE(contentOf(path("p.png")), QByteArray("old"));
}

void tst_ShowRender::framesInPiecesGiveTheSameBytesAsAllAtOnce()
{
    FileFault fault;
    auto atOnce = ShowRender::begin(example(), "minimal.show", plan(), &fault);
    QVERIFY(atOnce);
    atOnce->playFor(1000000);
    QVERIFY(atOnce->isPlayed());
    QVERIFY2(atOnce->finish(&fault), qPrintable(fault.message()));
    const QByteArray table = contentOf(path("t.csv"));
    const QByteArray picture = contentOf(path("p.png"));
    QVERIFY(!QImage::fromData(picture).isNull());

    // Two renders, frame by frame in turns.
    RenderPlan other = plan();
    other.tableFile = path("t2.csv");
    other.pictureFile = path("p2.png");
    RenderPlan third = plan();
    third.tableFile = path("t3.csv");
    third.pictureFile.clear();
    auto one = ShowRender::begin(example(), "minimal.show", other, &fault);
    auto two = ShowRender::begin(example(), "minimal.show", third, &fault);
    qint64 frames = 0;
    while (!one->isPlayed()) {
        one->playFrame();
        two->playFrame();
        QCOMPARE(one->framesDone(), ++frames);
    }
    QCOMPARE(frames, one->times().count());
    QVERIFY(one->finish(&fault) && two->finish(&fault));
    QCOMPARE(contentOf(path("t2.csv")), table);
    QCOMPARE(contentOf(path("p2.png")), picture);
    QCOMPARE(contentOf(path("t3.csv")), table);
}

void tst_ShowRender::playsAsLongAsThePlanSays()
{
    FileFault fault;
    RenderPlan brief = plan();
    brief.fps = 10;
    brief.lengthMs = 250;
    auto render = ShowRender::begin(example(), "minimal.show", brief, &fault);
    QCOMPARE(render->times().count(), 3);
    render->playFor(1000000);
    QVERIFY(render->finish(&fault));
    QCOMPARE(contentOf(path("t.csv")).count('\n'), 1 + 3);

    brief.lengthMs = 0;
    render = ShowRender::begin(example(), "minimal.show", brief, &fault);
    QVERIFY(render->isPlayed());
    QVERIFY(render->finish(&fault));
    QCOMPARE(contentOf(path("t.csv")).count('\n'), 1);
}

void tst_ShowRender::playForStopsAtTheTimeOrAtTheEnd()
{
    FileFault fault;
    RenderPlan day;
    day.lengthMs = 24 * 60 * 60 * 1000;
    const auto render = ShowRender::begin(example(), "minimal.show", day, &fault);
    render->playFor(0);
    QCOMPARE(render->framesDone(), 1);
    QElapsedTimer time;
    time.start();
    render->playFor(20);
    QVERIFY(time.elapsed() >= 20);
    QVERIFY(render->framesDone() > 2 && !render->isPlayed());
}

void tst_ShowRender::droppedBeforeTheEndLeavesTheOldFilesAndNoOthers()
{
    writeOldFiles();
    FileFault fault;
    auto render = ShowRender::begin(example(), "minimal.show", plan(), &fault);
    QVERIFY(render);
    render->playFrame();
    render.reset();
    verifyOldFiles();
}

void tst_ShowRender::droppedAfterTheLastFrameLeavesTheOldFilesToo()
{
    writeOldFiles();
    FileFault fault;
    auto render = ShowRender::begin(example(), "minimal.show", plan(), &fault);
    render->playFor(1000000);
    QVERIFY(render->isPlayed());
    render.reset();
    verifyOldFiles();
}

void tst_ShowRender::fileThatCannotBeOpenedIsAFaultBeforeTheFirstFrame()
{
    FileFault fault;
    RenderPlan nowhere = plan();
    nowhere.tableFile = path("no/such/t.csv");
    QVERIFY(!ShowRender::begin(example(), "minimal.show", nowhere, &fault));
    QCOMPARE(fault.file, nowhere.tableFile);
    QVERIFY(fault.what.startsWith("cannot be written"));
}

void tst_ShowRender::secondFileThatCannotBeOpenedLeavesTheFirstAsItWas()
{
    writeOldFiles();
    FileFault fault;
    RenderPlan half = plan();
    half.pictureFile = m_folder->path();
    QVERIFY(!ShowRender::begin(example(), "minimal.show", half, &fault));
    QCOMPARE(fault.file, half.pictureFile);
    verifyOldFiles();
}

void tst_ShowRender::fileThatTakesNothingIsAFaultAtTheEnd()
{
    if (!QFile::exists("/dev/full"))
        QSKIP("there is no device that is always full");
    FileFault fault;
    RenderPlan full;
    full.tableFile = "/dev/full";
    const auto render = ShowRender::begin(example(), "minimal.show", full, &fault);
    QVERIFY(render);
    render->playFor(1000000);
    QVERIFY(!render->finish(&fault));
    QCOMPARE(fault.file, QStringLiteral("/dev/full"));
}

QTEST_MAIN(tst_ShowRender)
#include "tst_ShowRender.moc"
