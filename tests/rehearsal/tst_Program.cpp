#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString program = QStringLiteral(REHEARSAL_PROGRAM);
const QString module = QStringLiteral(METAEFFECT_MODULE);

struct Outcome
{
    int status;
    QByteArray out;
    QByteArray errors;
};

/// Runs a program in a folder, without a display and without any choice of a platform.
Outcome run(const QString &folder, const QStringList &arguments, const QString &file = program,
            const QString &outFile = {})
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_LOGGING_RULES"})
        environment.remove(QString::fromLatin1(name));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder);
    if (!outFile.isEmpty())
        process.setStandardOutputFile(outFile);
    process.start(file, arguments);
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, {}, process.errorString().toUtf8()};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

QByteArray setting(const char *key, const QByteArray &text)
{
    return QByteArray("<property key=\"") + key + "\">" + text + "</property>";
}

QByteArray effect(const char *type, const QByteArray &content)
{
    return QByteArray("<effect type=\"") + type + "\">" + content + "</effect>\n";
}

/// A child of a meta effect.
QByteArray child(const char *type, int eid, const QByteArray &properties)
{
    return effect(type, setting("name", "Child " + QByteArray::number(eid))
                            + setting("eid", QByteArray::number(eid)) + setting("gid", "10")
                            + properties);
}

QByteArray fixedStart(int ms)
{
    return setting("starttype", "0") + setting("startfixedtime", QByteArray::number(ms));
}

QByteArray fixedDuration(int ms)
{
    return setting("endtype", "0") + setting("endfixedtime", QByteArray::number(ms));
}

QByteArray times(int beginMs, int endMs)
{
    return setting("begin", QByteArray::number(beginMs))
           + setting("end", QByteArray::number(endMs));
}

/// Two lights, of which the group "Left one" (10) has the first, and these effects from line 7 on.
QByteArray show(const QByteArray &effects)
{
    return "<show version=\"1\">\n<map>\n"
           "<light uid=\"7\" name=\"Right\" x=\"1\" y=\"0.5\"/>\n"
           "<light uid=\"3\" name=\"Left\" x=\"0\" y=\"0.5\"/>\n"
           "<group uid=\"10\" name=\"Left one\" type=\"chasing\" lights=\"3\"/>\n"
           "</map>\n"
           + effects + "</show>\n";
}

/// The left light shows 0.25 from 0.5 s to 1.5 s, when the show is over.
QByteArray steadyShow()
{
    return show(effect("Meta Effect", setting("name", "Main")
                                          + child("Solid", 1,
                                                  setting("level", "0.25") + fixedStart(500)
                                                      + fixedDuration(1000) + times(500, 1500))));
}

QJsonArray childrenOf(const QJsonValue &effect)
{
    return effect[QStringLiteral("children")].toArray();
}

QString begin(const QJsonValue &effect)
{
    return effect[QStringLiteral("begin")].toString();
}

QString end(const QJsonValue &effect)
{
    return effect[QStringLiteral("end")].toString();
}

} // namespace

class TestProgram : public QObject
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

    void rendersWhatTheLightsShow();
    void rendersFramesAtTheirTimes_data();
    void rendersFramesAtTheirTimes();
    void rendersAsLongAsAskedFor();
    void timeGoesOnAfterADay();
    void rendersTheSameBytesAgain();
    void rendersAPicture();
    void aRenderWithoutOutputsSaysWhatItPlayed();
    void aShowAloneIsRenderedIntoTheCurrentDirectory();

    void inspectsAsLines();
    void inspectsAsJson();
    void unknownTypesAreKeptAndReportedOnce();
    void resolvesInnermostFirst();
    void resolvesOntoTheShowItself();
    void importsASequence();
    void linkedImportsResolveToTheFilesOwnTimes();
    void debugLinesAreShownOnDemand();

private:
    QString path(const QString &file) const { return m_folder->filePath(file); }
    bool write(const QString &file, const QByteArray &text) const
    {
        QFile output(path(file));
        return output.open(QIODevice::WriteOnly) && output.write(text) == text.size();
    }
    QByteArray read(const QString &file) const
    {
        QFile input(path(file));
        return input.open(QIODevice::ReadOnly) ? input.readAll() : QByteArray("(unreadable)");
    }
    Outcome rehearsal(const QStringList &arguments) const
    {
        return run(m_folder->path(), arguments);
    }

    /// Every property of every effect; empty if the show cannot be inspected.
    QJsonArray inspected(const QString &file) const
    {
        return QJsonDocument::fromJson(rehearsal({"inspect", file, "--json"}).out).array();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

/// The command is done, and has no fault to tell.
#define VERIFY_DONE(command)                                                                       \
    do {                                                                                           \
        const Outcome done = command;                                                              \
        QVERIFY2(done.status == 0, done.errors.constData());                                       \
        QCOMPARE(done.errors, QByteArray());                                                       \
    } while (false)

/// The command failed and said one line, which has this in it.
#define VERIFY_FAILED(command, expectedStatus, part)                                               \
    do {                                                                                           \
        const Outcome failed = command;                                                            \
        QCOMPARE(failed.status, expectedStatus);                                                   \
        QCOMPARE(failed.out, QByteArray());                                                        \
        QVERIFY2(failed.errors.count('\n') == 1 && failed.errors.endsWith('\n')                    \
                     && failed.errors.contains(part),                                              \
                 failed.errors.constData());                                                       \
    } while (false)

void TestProgram::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(write("a.show", steadyShow()));
}

// --- Exit status ---

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

// --- render ---

void TestProgram::rendersWhatTheLightsShow()
{
    const Outcome outcome = rehearsal({"render", "a.show", "--fps", "4", "--csv", "t.csv"});
    VERIFY_DONE(outcome);
    QCOMPARE(read("t.csv"), QByteArray("time_ms,3,7\n"
                                       "0,0.0000,0.0000\n"
                                       "250,0.0000,0.0000\n"
                                       "500,0.2500,0.0000\n"
                                       "750,0.2500,0.0000\n"
                                       "1000,0.2500,0.0000\n"
                                       "1250,0.2500,0.0000\n"));
    QCOMPARE(outcome.out, QByteArray("a.show: 6 frames in 1.5 s, 2 lights\nbrightness: t.csv\n"));
}

void TestProgram::rendersFramesAtTheirTimes_data()
{
    QTest::addColumn<QString>("fps");
    QTest::addColumn<double>("rate");
    QTest::addColumn<int>("frames");

    QTest::newRow("as usual") << QString() << 40.0 << 60;
    QTest::newRow("40") << "40" << 40.0 << 60;
    QTest::newRow("30") << "30" << 30.0 << 45;
    QTest::newRow("7") << "7" << 7.0 << 11;
    QTest::newRow("29.97") << "29.97" << 29.97 << 45;
    QTest::newRow("1000") << "1000" << 1000.0 << 1500;
    QTest::newRow("one in two seconds") << "0.5" << 0.5 << 1;
}

void TestProgram::rendersFramesAtTheirTimes()
{
    QFETCH(QString, fps);
    QFETCH(double, rate);
    QFETCH(int, frames);
    QStringList arguments{"render", "a.show", "--csv", "t.csv"};
    if (!fps.isEmpty())
        arguments += {"--fps", fps};
    VERIFY_DONE(rehearsal(arguments));
    QList<QByteArray> rows = read("t.csv").split('\n');
    QCOMPARE(rows.takeFirst(), QByteArray("time_ms,3,7"));
    QCOMPARE(rows.takeLast(), QByteArray());
    QCOMPARE(rows.size(), frames);
    for (qsizetype k = 0; k < rows.size(); ++k) {
        const auto timeMs = static_cast<int>(static_cast<double>(k) * 1000 / rate);
        const char *shown = timeMs < 500 ? ",0.0000,0.0000" : ",0.2500,0.0000";
        QCOMPARE(rows[k], QByteArray::number(timeMs) + shown);
    }
}

void TestProgram::rendersAsLongAsAskedFor()
{
    VERIFY_DONE(rehearsal({"render", "a.show", "--seconds", "0.1", "--csv", "short.csv"}));
    QCOMPARE(read("short.csv").count('\n'), 1 + 4);
    VERIFY_DONE(rehearsal({"render", "a.show", "--seconds", "0", "--csv", "none.csv"}));
    QCOMPARE(read("none.csv"), QByteArray("time_ms,3,7\n"));
    VERIFY_DONE(rehearsal({"render", "a.show", "--seconds", "100", "--csv", "long.csv"}));
    QCOMPARE(read("long.csv").count('\n'), 1 + 4000);
}

void TestProgram::timeGoesOnAfterADay()
{
    // The strobe is lit in the first 10 s of every minute, of the second day too.
    QVERIFY(write("days.show",
                  show(effect("Strobe", setting("gid", "10") + setting("cycletime", "60000")
                                            + setting("duty", "0.1667")))));
    VERIFY_DONE(
        rehearsal({"render", "days.show", "--fps", "0.1", "--seconds", "86520", "--csv", "t.csv"}));
    const QList<QByteArray> rows = read("t.csv").split('\n');
    QCOMPARE(rows.size(), 1 + 8652 + 1);
    for (qsizetype k = 0; k < 8652; ++k) {
        QCOMPARE(rows[k + 1],
                 QByteArray::number(k * 10000) + (k % 6 < 2 ? ",1.0000,0.0000" : ",0.0000,0.0000"));
    }
}

void TestProgram::rendersTheSameBytesAgain()
{
    QVERIFY(write("busy.show",
                  show(effect("Meta Effect",
                              child("Twinkle", 1,
                                    fixedStart(0) + fixedDuration(3000) + times(0, 3000)
                                        + setting("seed", "5"))
                                  + child("Pulse", 2,
                                          fixedStart(1000) + fixedDuration(2000) + times(1000, 3000)
                                              + setting("priority", "1"))))));
    for (const char *name : {"1", "2"}) {
        const QString file = QString::fromLatin1(name);
        VERIFY_DONE(
            rehearsal({"render", "busy.show", "--csv", file + ".csv", "--png", file + ".png"}));
    }
    QVERIFY(read("1.csv").size() > 1000);
    QCOMPARE(read("1.csv"), read("2.csv"));
    QCOMPARE(read("1.png"), read("2.png"));
}

void TestProgram::rendersAPicture()
{
    const Outcome outcome = rehearsal({"render", "a.show", "--png", "p.png"});
    VERIFY_DONE(outcome);
    QVERIFY(outcome.out.endsWith("picture: p.png\n"));
    const QImage picture(path("p.png"));
    QVERIFY(picture.width() >= 800 && picture.width() <= 2000);
    // 60 frames of 26 pixels; light 3 is the upper row and shines in the last 40 frames.
    int lit = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            lit += picture.pixel(x, y) == qRgb(64, 64, 64) ? 1 : 0;
    }
    const int row = 40 * 26 * 28;
    QVERIFY2(lit >= row && lit < row + 200, qPrintable(QString::number(lit)));
}

void TestProgram::aRenderWithoutOutputsSaysWhatItPlayed()
{
    const Outcome outcome = rehearsal({"render", "a.show"});
    VERIFY_DONE(outcome);
    QCOMPARE(outcome.out, QByteArray("a.show: 60 frames in 1.5 s, 2 lights\n"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{"a.show"});
}

void TestProgram::aShowAloneIsRenderedIntoTheCurrentDirectory()
{
    QVERIFY(QDir(m_folder->path()).mkdir("elsewhere"));
    const Outcome outcome = run(path("elsewhere"), {"../a.show"});
    VERIFY_DONE(outcome);
    VERIFY_DONE(rehearsal({"render", "a.show", "--csv", "t.csv", "--png", "p.png"}));
    QCOMPARE(read("elsewhere/a.csv"), read("t.csv"));
    QCOMPARE(read("elsewhere/a.png"), read("p.png"));
    for (const char *file : {"a.csv", "a.png"}) {
        const QString written = QFileInfo(path("elsewhere")).canonicalFilePath() + "/" + file;
        QVERIFY2(outcome.out.contains(written.toUtf8()), outcome.out.constData());
    }
}

// --- inspect, resolve, import ---

void TestProgram::inspectsAsLines()
{
    QVERIFY(write(
        "tree.show",
        show(effect(
            "Meta Effect",
            setting("name", "Main")
                + child("Solid", 1, fixedStart(500) + fixedDuration(1500) + times(500, 2000))
                + effect("Meta Effect",
                         setting("eid", "2") + setting("name", "Two\nlines") + setting("gid", "99")
                             + setting("starttype", "1") + setting("startlinkeid", "1")
                             + setting("startlinkoffset", "-250") + setting("endtype", "2")
                             + setting("endcyclecount", "3") + times(1750, 2000)
                             + child("Ramp", 1,
                                     fixedStart(0) + setting("endtype", "2")
                                         + setting("endcyclecount", "1") + times(0, 1000)))))));
    const Outcome outcome = rehearsal({"inspect", "tree.show"});
    VERIFY_DONE(outcome);
    const QList<QByteArray> lines = outcome.out.split('\n');
    QCOMPARE(lines.size(), 4 + 1);
    QList<QByteArray> fields;
    for (const QByteArray &line : lines)
        fields.append(line.simplified());
    QCOMPARE(fields[0], QByteArray("- Main Meta Effect no group - - 0.000 s to 2.000 s"));
    QCOMPARE(fields[1], QByteArray("1 Child 1 Solid Left one (10) starts at 0.5 s lasts 1.5 s "
                                   "0.500 s to 2.000 s"));
    QCOMPARE(fields[2], QByteArray("2 Two lines Meta Effect missing group (99) starts 0.25 s "
                                   "before the end of 1 lasts 3 cycles 1.750 s to 2.000 s"));
    QCOMPARE(fields[3], QByteArray("1 Child 1 Ramp Left one (10) starts at 0 s lasts 1 cycle "
                                   "0.000 s to 1.000 s"));
    QVERIFY(lines[1].startsWith("  1 ") && lines[2].startsWith("  2 ")
            && lines[3].startsWith("    1 "));
    QCOMPARE(lines[1].indexOf("starts"), lines[2].indexOf("starts"));
}

void TestProgram::inspectsAsJson()
{
    QVERIFY(write("two.show", show(effect("Solid", setting("note", "a \"quote\"\nand \xC3\xA4"))
                                   + effect("Meta Effect", child("Pulse", 4, times(10, 20))))));
    const QJsonArray effects = inspected("two.show");
    QCOMPARE(effects.size(), 2);
    QCOMPARE(effects[0]["type"].toString(), "Solid");
    QCOMPARE(effects[0]["note"].toString(), QString::fromUtf8("a \"quote\"\nand \xC3\xA4"));
    QVERIFY(effects[0]["children"].isArray() && effects[0]["children"].toArray().isEmpty());
    QCOMPARE(effects[1]["type"].toString(), "Meta Effect");
    const QJsonArray children = childrenOf(effects[1]);
    QCOMPARE(children.size(), 1);
    const QJsonObject pulse = children[0].toObject();
    QVERIFY(pulse["children"].isArray());
    QCOMPARE(pulse["type"].toString(), "Pulse");
    QCOMPARE(pulse["eid"].toString(), "4");
    QCOMPARE(begin(pulse), "10");
    QCOMPARE(end(pulse), "20");
    QCOMPARE(pulse["high"].toString(), "1"); // what a type adds of its own
    for (const auto &value : pulse)
        QVERIFY(value.isString() || value.isArray());
}

void TestProgram::unknownTypesAreKeptAndReportedOnce()
{
    QVERIFY(write("odd.show",
                  show(effect("Meta Effect", "\n" + child("Laser", 1, setting("colour", "red"))
                                                 + child("Laser", 2, {}) + child("Fog", 3, {})))));
    const QByteArray warnings =
        "odd.show:8: effects of the unknown type \"Laser\" are kept as they are\n"
        "odd.show:10: effects of the unknown type \"Fog\" are kept as they are\n";
    for (const QStringList &arguments :
         {QStringList{"inspect", "odd.show", "--json"}, QStringList{"render", "odd.show"},
          QStringList{"resolve", "odd.show", "-o", "out.show"}}) {
        const Outcome outcome = rehearsal(arguments);
        QCOMPARE(outcome.status, 0);
        QCOMPARE(outcome.errors, warnings);
    }
    const QJsonArray children = childrenOf(inspected("out.show").at(0));
    QCOMPARE(children.size(), 3);
    QCOMPARE(children[0]["type"].toString(), "Laser");
    QCOMPARE(children[0]["colour"].toString(), "red");
    QCOMPARE(children[2]["type"].toString(), "Fog");
}

void TestProgram::resolvesInnermostFirst()
{
    // The inner effect runs 3 s, which only its own resolution finds out; the outer one plays it
    // once, and a second child 0.5 s after that.
    QVERIFY(write(
        "nested.show",
        show(effect(
            "Meta Effect",
            effect("Meta Effect", setting("eid", "1") + fixedStart(0) + setting("endtype", "2")
                                      + setting("endcyclecount", "1")
                                      + child("Ramp", 1, fixedStart(0) + fixedDuration(3000)))
                + child("Solid", 2,
                        setting("starttype", "1") + setting("startlinkeid", "1")
                            + setting("startlinkoffset", "500") + fixedDuration(1000))))));
    VERIFY_DONE(rehearsal({"resolve", "nested.show", "-o", "out.show"}));
    const QJsonArray effects = inspected("out.show");
    QCOMPARE(end(effects[0]), "4500");
    const QJsonArray outer = childrenOf(effects[0]);
    QCOMPARE(begin(outer[0]), "0");
    QCOMPARE(end(outer[0]), "3000");
    QCOMPARE(begin(outer[1]), "3500");
    QCOMPARE(end(outer[1]), "4500");
    const QJsonArray inner = childrenOf(outer[0]);
    QCOMPARE(begin(inner[0]), "0");
    QCOMPARE(end(inner[0]), "3000");
    QCOMPARE(end(childrenOf(inspected("nested.show").at(0)).at(0)), "0"); // as it was
}

void TestProgram::resolvesOntoTheShowItself()
{
    VERIFY_DONE(rehearsal({"resolve", "a.show", "-o", "once.show"}));
    VERIFY_DONE(rehearsal({"resolve", "a.show", "-o", "a.show"}));
    QCOMPARE(read("a.show"), read("once.show"));
}

void TestProgram::importsASequence()
{
    QVERIFY(write("a.xsq", "<xsequence>\n<EffectDB>\n"
                           "<Effect>E_TEXTCTRL_Eff_On_Start=0,E_TEXTCTRL_Eff_On_End=50</Effect>\n"
                           "</EffectDB>\n<ElementEffects>\n<Element type=\"model\" name=\"Arch\">\n"
                           "<EffectLayer>\n"
                           "<Effect ref=\"0\" name=\"On\" startTime=\"0\" endTime=\"1000\"/>\n"
                           "<Effect ref=\"0\" name=\"On\" startTime=\"1000\" endTime=\"1500\"/>\n"
                           "<Effect name=\"Spirals\" startTime=\"2000\" endTime=\"2500\"/>\n"
                           "</EffectLayer>\n</Element>\n"
                           "<Element type=\"model\" name=\"Empty\"><EffectLayer/></Element>\n"
                           "</ElementEffects>\n</xsequence>\n"));
    const Outcome plain = rehearsal({"import", "a.xsq", "-o", "plain.show"});
    VERIFY_DONE(plain);
    QCOMPARE(plain.out, QByteArray("plain.show: 1 lights, 3 effects, 0 of them linked\n"
                                   "1 effects have no counterpart and became a Solid at full:\n"
                                   "       1  Spirals\n"));
    const Outcome linked = rehearsal({"import", "a.xsq", "-o", "linked.show", "--link-adjacent"});
    VERIFY_DONE(linked);
    QVERIFY(linked.out.startsWith("linked.show: 1 lights, 3 effects, 1 of them linked\n"));

    VERIFY_DONE(rehearsal({"render", "plain.show", "--fps", "4", "--csv", "t.csv"}));
    const QList<QByteArray> rows = read("t.csv").split('\n');
    QCOMPARE(rows.size(), 1 + 10 + 1);
    QVERIFY(rows[1].endsWith(",0.0000") && rows[3].endsWith(",0.2500"));
    QVERIFY(rows[7].endsWith(",0.0000") && rows[9].endsWith(",1.0000"));
}

void TestProgram::linkedImportsResolveToTheFilesOwnTimes()
{
    const QString sequence = QStringLiteral(META_SHARED_DATA "/arrival-car-1.xsq");
    if (!QFileInfo::exists(sequence)) {
        qInfo("the real sequence is not here: nothing to compare with");
        return;
    }
    VERIFY_DONE(rehearsal({"import", sequence, "-o", "plain.show"}));
    const Outcome linked = rehearsal({"import", sequence, "-o", "linked.show", "--link-adjacent"});
    VERIFY_DONE(linked);
    QVERIFY2(linked.out.contains("1289 effects, 598 of them linked"), linked.out.constData());
    VERIFY_DONE(rehearsal({"resolve", "linked.show", "-o", "resolved.show"}));
    const QJsonArray plain = childrenOf(inspected("plain.show").at(0));
    const QJsonArray resolved = childrenOf(inspected("resolved.show").at(0));
    QCOMPARE(plain.size(), 1289);
    QCOMPARE(resolved.size(), 1289);
    for (qsizetype i = 0; i < plain.size(); ++i) {
        QCOMPARE(begin(resolved[i]), begin(plain[i]));
        QCOMPARE(end(resolved[i]), end(plain[i]));
    }
}

void TestProgram::debugLinesAreShownOnDemand()
{
    const QStringList arguments{"resolve", "a.show", "-o", "out.show"};
    const Outcome quiet = rehearsal(arguments);
    VERIFY_DONE(quiet);
    const Outcome talking = rehearsal(arguments + QStringList{"--debug"});
    QCOMPARE(talking.status, 0);
    QVERIFY2(talking.errors.contains("updateEffectTimes"), talking.errors.constData());
    QCOMPARE(talking.out, quiet.out);
}

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_Program.moc"
