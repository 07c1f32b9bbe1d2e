#include "ProgramRun.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QJsonObject>

namespace {

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

class TestProgramCommands : public QObject, private ProgramFolder
{
    Q_OBJECT

private slots:
    void init();

    void rendersWhatTheLightsShow();
    void rendersFramesAtTheirTimes_data();
    void rendersFramesAtTheirTimes();
    void rendersAsLongAsAskedFor();
    void timeGoesOnAfterADay();
    void rendersTheSameBytesAgain();
    void rendersAPicture();
    void aRenderWithoutOutputsSaysWhatItPlayed();
    void oneFileForBothIsRefused_data();
    void oneFileForBothIsRefused();
    void pipesAreToldApart();
    void aShowAloneNeedsADisplay();

    void inspectsAsLines();
    void inspectsAsJson();
    void unknownTypesAreKeptAndReportedOnce();
    void resolvesInnermostFirst();
    void resolvesOntoTheShowItself();
    void importsASequence();
    void linkedImportsResolveToTheFilesOwnTimes();
    void debugLinesAreShownOnDemand();
};

void TestProgramCommands::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(write("a.show", steadyShow()));
}

// --- render ---

void TestProgramCommands::rendersWhatTheLightsShow()
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

void TestProgramCommands::rendersFramesAtTheirTimes_data()
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

void TestProgramCommands::rendersFramesAtTheirTimes()
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

void TestProgramCommands::rendersAsLongAsAskedFor()
{
    VERIFY_DONE(rehearsal({"render", "a.show", "--seconds", "0.1", "--csv", "short.csv"}));
    QCOMPARE(read("short.csv").count('\n'), 1 + 4);
    VERIFY_DONE(rehearsal({"render", "a.show", "--seconds", "0", "--csv", "none.csv"}));
    QCOMPARE(read("none.csv"), QByteArray("time_ms,3,7\n"));
    VERIFY_DONE(rehearsal({"render", "a.show", "--seconds", "100", "--csv", "long.csv"}));
    QCOMPARE(read("long.csv").count('\n'), 1 + 4000);
}

void TestProgramCommands::timeGoesOnAfterADay()
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

void TestProgramCommands::rendersTheSameBytesAgain()
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

void TestProgramCommands::rendersAPicture()
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

void TestProgramCommands::aRenderWithoutOutputsSaysWhatItPlayed()
{
    const Outcome outcome = rehearsal({"render", "a.show"});
    VERIFY_DONE(outcome);
    QCOMPARE(outcome.out, QByteArray("a.show: 60 frames in 1.5 s, 2 lights\n"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{"a.show"});
}

void TestProgramCommands::oneFileForBothIsRefused_data()
{
    QTest::addColumn<QString>("present");
    QTest::addColumn<QString>("said");

    QTest::newRow("there") << "a.x"
                           << "--csv and --png name the same file";
    QTest::newRow("not there yet") << "b.x"
                                   << "--csv and --png name the same file";
    QTest::newRow("the show") << "a.show"
                              << "a.x would overwrite the show";
}

// By its names they are two; of the two that were written one would be lost.
void TestProgramCommands::oneFileForBothIsRefused()
{
    QFETCH(QString, present);
    QFETCH(QString, said);
    const QDir folder(m_folder->path());
    if (present == "a.show")
        QVERIFY(QFile::link("a.show", folder.filePath("a.x")));
    else
        QVERIFY(write(qPrintable(present), "old"));
    QVERIFY(QFile::link("a.x", folder.filePath("a.y")));
    QVERIFY(QFile::link("a.y", folder.filePath("a.z")));
    const QStringList before = folder.entryList(QDir::Files | QDir::System);

    QStringList arguments{"render", "a.show", "--csv", "a.x"};
    if (present != "a.show")
        arguments += {"--png", "a.z"};
    const Outcome outcome = rehearsal(arguments);
    QCOMPARE(outcome.status, 2);
    QVERIFY2(outcome.errors.contains(said.toUtf8()), outcome.errors.constData());
    QCOMPARE(folder.entryList(QDir::Files | QDir::System), before);
    QCOMPARE(read("a.show"), steadyShow());
}

// They have no names of their own.
void TestProgramCommands::pipesAreToldApart()
{
    const Outcome outcome =
        rehearsal({"render", "a.show", "--csv", "/dev/stdout", "--png", "/dev/stderr"});
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.out.startsWith("time_ms,3,7\n0,0.0000,0.0000\n"));
    QVERIFY(!QImage::fromData(outcome.errors, "png").isNull());
}

void TestProgramCommands::aShowAloneNeedsADisplay()
{
    VERIFY_FAILED(rehearsal({"a.show"}), 1, "there is no display");
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{"a.show"});
}

// --- inspect, resolve, import ---

void TestProgramCommands::inspectsAsLines()
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

void TestProgramCommands::inspectsAsJson()
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

void TestProgramCommands::unknownTypesAreKeptAndReportedOnce()
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

void TestProgramCommands::resolvesInnermostFirst()
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

void TestProgramCommands::resolvesOntoTheShowItself()
{
    VERIFY_DONE(rehearsal({"resolve", "a.show", "-o", "once.show"}));
    VERIFY_DONE(rehearsal({"resolve", "a.show", "-o", "a.show"}));
    QCOMPARE(read("a.show"), read("once.show"));
}

void TestProgramCommands::importsASequence()
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

void TestProgramCommands::linkedImportsResolveToTheFilesOwnTimes()
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

void TestProgramCommands::debugLinesAreShownOnDemand()
{
    const QStringList arguments{"resolve", "a.show", "-o", "out.show"};
    const Outcome quiet = rehearsal(arguments);
    VERIFY_DONE(quiet);
    const Outcome talking = rehearsal(arguments + QStringList{"--debug"});
    QCOMPARE(talking.status, 0);
    QVERIFY2(talking.errors.contains("updateEffectTimes"), talking.errors.constData());
    QCOMPARE(talking.out, quiet.out);
}

QTEST_GUILESS_MAIN(TestProgramCommands)
#include "tst_ProgramCommands.moc"
