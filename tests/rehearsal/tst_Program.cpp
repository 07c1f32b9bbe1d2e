#include "ProgramRun.h"

#include <QDir>
#include <QFileInfo>

namespace {

const QString module = QStringLiteral(METAEFFECT_MODULE);

} // namespace

class TestProgram : public QObject, private ProgramFolder
{
    Q_OBJECT

private slots:
    void init();

    void helpAndVersionGoToStandardOutput();
    void wrongUsageExitsWithTwo_data();
    void wrongUsageExitsWithTwo();
    void aFaultyFileExitsWithOneAndSaysWhere_data();
    void aFaultyFileExitsWithOneAndSaysWhere();
    void anUnwritableOutputExitsWithOne_data();
    void anUnwritableOutputExitsWithOne();
    void aFailedRenderLeavesTheOldFiles();
    void aFullStandardOutputExitsWithOne();
    void aPluginThatIsNotToBeHadExitsWithOne_data();
    void aPluginThatIsNotToBeHadExitsWithOne();
    void thePluginMayLieBesideTheProgram();
};

void TestProgram::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(write("a.show", steadyShow()));
}

void TestProgram::helpAndVersionGoToStandardOutput()
{
    for (const char *command : {"", "render", "inspect", "resolve", "import"}) {
        QStringList arguments{command, "--help"};
        arguments.removeAll(QString());
        const Outcome help = rehearsal(arguments);
        VERIFY_DONE(help);
        QVERIFY(help.out.startsWith(QByteArray("Usage: rehearsal ") + command));
    }
    const Outcome version = rehearsal({"--version"});
    VERIFY_DONE(version);
    QVERIFY(version.out.startsWith("rehearsal 1."));
    QCOMPARE(version.out.count('\n'), 1);
}

void TestProgram::wrongUsageExitsWithTwo_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("part");

    QTest::newRow("no argument") << QStringList{} << QByteArray("SHOW");
    QTest::newRow("unknown command") << QStringList{"perform"} << QByteArray("perform");
    QTest::newRow("unknown option")
        << QStringList{"render", "a.show", "--loud"} << QByteArray("loud");
    QTest::newRow("missing argument") << QStringList{"inspect"} << QByteArray("SHOW");
    QTest::newRow("missing value") << QStringList{"render", "a.show", "--csv"} << QByteArray("csv");
    QTest::newRow("missing output") << QStringList{"resolve", "a.show"} << QByteArray("-o OUT");
    QTest::newRow("one argument too many")
        << QStringList{"inspect", "a.show", "b.show"} << QByteArray("b.show");
    QTest::newRow("bad number") << QStringList{"render", "a.show", "--fps", "fast"}
                                << QByteArray("fast");
    QTest::newRow("no frames a second")
        << QStringList{"render", "a.show", "--fps", "0"} << QByteArray("--fps");
    QTest::newRow("negative length")
        << QStringList{"render", "a.show", "--seconds", "-2"} << QByteArray("--seconds");
    QTest::newRow("a line break in an argument")
        << QStringList{"--two\nlines"} << QByteArray("two lines");
}

void TestProgram::wrongUsageExitsWithTwo()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, part);
    const Outcome outcome = rehearsal(arguments);
    VERIFY_FAILED(outcome, 2, part);
}

void TestProgram::aFaultyFileExitsWithOneAndSaysWhere_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("part");

    const QStringList out{"-o", "out"};
    QTest::newRow("render: no such file")
        << QStringList{"render", "none.show"} << QByteArray("none.show: ");
    QTest::newRow("plain: no such file") << QStringList{"none.show"} << QByteArray("none.show: ");
    QTest::newRow("render: cut short")
        << QStringList{"render", "cut.show"} << QByteArray("cut.show:");
    QTest::newRow("inspect: two lights with one uid")
        << QStringList{"inspect", "twins.show"} << QByteArray("twins.show:4: ");
    QTest::newRow("resolve: a directory") << QStringList{"resolve", "."} + out << QByteArray(".: ");
    QTest::newRow("import: a show")
        << QStringList{"import", "a.show"} + out << QByteArray("a.show:1: ");
    QTest::newRow("import: no such file")
        << QStringList{"import", "none.xsq"} + out << QByteArray("none.xsq: ");
}

void TestProgram::aFaultyFileExitsWithOneAndSaysWhere()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, part);
    QVERIFY(write("cut.show", steadyShow().chopped(12)));
    QVERIFY(write("twins.show", "<show version=\"1\">\n<map>\n"
                                "<light uid=\"1\" name=\"A\" x=\"0\" y=\"0\"/>\n"
                                "<light uid=\"1\" name=\"B\" x=\"0\" y=\"0\"/>\n"
                                "</map>\n<effect type=\"Solid\"/>\n</show>\n"));
    const Outcome outcome = rehearsal(arguments);
    VERIFY_FAILED(outcome, 1, part);
    QVERIFY(!QFileInfo::exists(path("out")));
}

void TestProgram::anUnwritableOutputExitsWithOne_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("part");

    QTest::newRow("table, no such folder")
        << QStringList{"render", "a.show", "--csv", "no/t.csv"} << QByteArray("no/t.csv: ");
    QTest::newRow("picture, no such folder")
        << QStringList{"render", "a.show", "--png", "no/p.png"} << QByteArray("no/p.png: ");
    QTest::newRow("table, a folder")
        << QStringList{"render", "a.show", "--csv", "."} << QByteArray(".: ");
    QTest::newRow("resolved show")
        << QStringList{"resolve", "a.show", "-o", "no/b.show"} << QByteArray("no/b.show: ");
    QTest::newRow("imported show")
        << QStringList{"import", "a.xsq", "-o", "no/b.show"} << QByteArray("no/b.show: ");
    if (QFileInfo::exists("/dev/full")) {
        QTest::newRow("table, full disk")
            << QStringList{"render", "a.show", "--csv", "/dev/full"} << QByteArray("/dev/full: ");
        QTest::newRow("picture, full disk")
            << QStringList{"render", "a.show", "--png", "/dev/full"} << QByteArray("/dev/full: ");
    }
}

void TestProgram::anUnwritableOutputExitsWithOne()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, part);
    QVERIFY(write("a.xsq", "<xsequence><ElementEffects><Element type=\"model\" name=\"M\">"
                           "<EffectLayer><Effect name=\"On\" startTime=\"0\" endTime=\"50\"/>"
                           "</EffectLayer></Element></ElementEffects></xsequence>"));
    const Outcome outcome = rehearsal(arguments);
    VERIFY_FAILED(outcome, 1, part);
}

void TestProgram::aFailedRenderLeavesTheOldFiles()
{
    QVERIFY(write("old.csv", "old"));
    const Outcome outcome =
        rehearsal({"render", "a.show", "--csv", "old.csv", "--png", "no/p.png"});
    VERIFY_FAILED(outcome, 1, "no/p.png");
    QCOMPARE(read("old.csv"), QByteArray("old"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList({"a.show", "old.csv"}));
}

void TestProgram::aFullStandardOutputExitsWithOne()
{
    if (!QFileInfo::exists("/dev/full")) {
        qInfo("there is no device that is always full: nothing to write to");
        return;
    }
    const Outcome outcome = run(m_folder->path(), {"inspect", "a.show"}, program, "/dev/full");
    VERIFY_FAILED(outcome, 1, "standard output");
}

void TestProgram::aPluginThatIsNotToBeHadExitsWithOne_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("part");

    QTest::newRow("missing") << "none.so" << QByteArray("none.so: ");
    QTest::newRow("not a library") << "a.show" << QByteArray("a.show: ");
    QTest::newRow("a folder") << "." << QByteArray(".: ");
    QTest::newRow("a folder's file without the folder")
        << "libQt6Core.so.6" << QByteArray("libQt6Core.so.6: ");
}

void TestProgram::aPluginThatIsNotToBeHadExitsWithOne()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, part);
    for (const char *command : {"render", "inspect"}) {
        const Outcome outcome = rehearsal({"--plugin", file, command, "a.show"});
        VERIFY_FAILED(outcome, 1, part);
    }
}

void TestProgram::thePluginMayLieBesideTheProgram()
{
    QVERIFY(QFile::copy(program, path("rehearsal")));
    const QStringList arguments{"inspect", "a.show"};
    const Outcome without = run(m_folder->path(), arguments, path("rehearsal"));
    VERIFY_FAILED(without, 1, "metaeffect.so: ");
    QVERIFY(QFile::copy(module, path("metaeffect.so")));
    const Outcome beside = run(m_folder->path(), arguments, path("rehearsal"));
    VERIFY_DONE(beside);
    const Outcome named = rehearsal({"inspect", "a.show", "--plugin", "metaeffect.so"});
    VERIFY_DONE(named);
    QCOMPARE(named.out, beside.out);
}

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_Program.moc"
