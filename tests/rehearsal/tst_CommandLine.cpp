#include "CommandLine.h"

#include <QTemporaryDir>
#include <QTest>

using namespace rehearsal;

namespace {

std::optional<CommandLine> parse(const QStringList &arguments, QString *fault = nullptr)
{
    QString ownFault;
    return parseCommandLine(QStringList{QStringLiteral("rehearsal")} + arguments,
                            fault ? fault : &ownFault);
}

/// What was asked for, if it is of this kind.
template<typename Request>
std::optional<Request> requestOf(const QStringList &arguments)
{
    const std::optional<CommandLine> line = parse(arguments);
    if (!line || !std::holds_alternative<Request>(line->request))
        return {};
    return std::get<Request>(line->request);
}

} // namespace

class TestCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void readsARender();
    void aRenderHasDefaults();
    void secondsBecomeTheNextWholeMillisecond_data();
    void secondsBecomeTheNextWholeMillisecond();
    void readsAnInspection();
    void readsAResolution();
    void readsAnImport();
    void aShowAloneIsForTheWindow();
    void nothingAtAllOpensTheWindowOnANewShow();
    void generalOptionsStandAnywhere();
    void helpIsAskedForWithoutOperands_data();
    void helpIsAskedForWithoutOperands();
    void saysInOneLineWhatIsWrong_data();
    void saysInOneLineWhatIsWrong();

private:
    QTemporaryDir m_folder; ///< the current directory
};

void TestCommandLine::initTestCase()
{
    QVERIFY(QDir::setCurrent(m_folder.path()));
    QFile show(QStringLiteral("here.show"));
    QVERIFY(show.open(QIODevice::WriteOnly));
    QFile bare(QStringLiteral("bare"));
    QVERIFY(bare.open(QIODevice::WriteOnly));
}

void TestCommandLine::readsARender()
{
    const auto request = requestOf<RenderRequest>(
        {"render", "a.show", "--fps", "29.97", "--seconds", "2", "--csv", "t.csv", "--png=p.png"});
    QVERIFY(request);
    QCOMPARE(request->showFile, "a.show");
    QCOMPARE(request->fps, 29.97);
    QCOMPARE(request->lengthMs.value_or(0), quint32{2000});
    QCOMPARE(request->tableFile, "t.csv");
    QCOMPARE(request->pictureFile, "p.png");
}

void TestCommandLine::aRenderHasDefaults()
{
    const auto request = requestOf<RenderRequest>({"render", "a.show"});
    QVERIFY(request);
    QCOMPARE(request->fps, 40.0);
    QVERIFY(!request->lengthMs);
    QCOMPARE(request->tableFile, QString());
    QCOMPARE(request->pictureFile, QString());
}

void TestCommandLine::secondsBecomeTheNextWholeMillisecond_data()
{
    QTest::addColumn<QString>("seconds");
    QTest::addColumn<quint32>("lengthMs");

    QTest::newRow("none") << "0" << quint32{0};
    QTest::newRow("a product that is rounded up") << "1.1" << quint32{1100};
    QTest::newRow("a product that is rounded down") << "1.005" << quint32{1005};
    QTest::newRow("half a millisecond has a frame at 0") << "0.0005" << quint32{1};
    QTest::newRow("the longest") << "4294967.295" << quint32{4294967295u};
}

void TestCommandLine::secondsBecomeTheNextWholeMillisecond()
{
    QFETCH(QString, seconds);
    QFETCH(quint32, lengthMs);
    const auto request = requestOf<RenderRequest>({"render", "a.show", "--seconds", seconds});
    QVERIFY(request);
    QCOMPARE(request->lengthMs.value_or(99), lengthMs);
}

void TestCommandLine::readsAnInspection()
{
    QVERIFY(requestOf<InspectRequest>({"inspect", "a.show"}));
    QVERIFY(!requestOf<InspectRequest>({"inspect", "a.show"})->asJson);
    QVERIFY(requestOf<InspectRequest>({"inspect", "--json", "a.show"})->asJson);
}

void TestCommandLine::readsAResolution()
{
    const auto request = requestOf<ResolveRequest>({"resolve", "a.show", "-o", "b.show"});
    QVERIFY(request);
    QCOMPARE(request->showFile, "a.show");
    QCOMPARE(request->outFile, "b.show");
}

void TestCommandLine::readsAnImport()
{
    const auto plain = requestOf<ImportRequest>({"import", "a.xsq", "--output", "a.show"});
    QVERIFY(plain);
    QCOMPARE(plain->sequenceFile, "a.xsq");
    QCOMPARE(plain->outFile, "a.show");
    QVERIFY(!plain->options.linkAdjacent);
    QVERIFY(requestOf<ImportRequest>({"import", "a.xsq", "-o", "a.show", "--link-adjacent"})
                ->options.linkAdjacent);
}

void TestCommandLine::aShowAloneIsForTheWindow()
{
    const auto request = requestOf<WindowRequest>({"elsewhere/grand.finale.show"});
    QVERIFY(request);
    QCOMPARE(request->showFile, "elsewhere/grand.finale.show");
    QVERIFY2(requestOf<WindowRequest>({"bare"}), "a bare word that is a file is a show");
}

void TestCommandLine::nothingAtAllOpensTheWindowOnANewShow()
{
    const auto request = requestOf<WindowRequest>({});
    QVERIFY(request);
    QCOMPARE(request->showFile, QString());
}

void TestCommandLine::generalOptionsStandAnywhere()
{
    for (const QStringList &arguments :
         {QStringList{"--debug", "--plugin", "x.so", "inspect", "a.show"},
          QStringList{"inspect", "--debug", "a.show", "--plugin", "x.so"}}) {
        const std::optional<CommandLine> line = parse(arguments);
        QVERIFY(line);
        QVERIFY(line->showsDebugLines);
        QCOMPARE(line->pluginFile, "x.so");
        QVERIFY(std::holds_alternative<InspectRequest>(line->request));
    }
    QVERIFY(!parse({"inspect", "a.show"})->showsDebugLines);
}

void TestCommandLine::helpIsAskedForWithoutOperands_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("part");

    QTest::newRow("of the program") << QStringList{"--help"} << "\n  inspect ";
    QTest::newRow("short") << QStringList{"-h"} << "Usage: rehearsal [SHOW]";
    QTest::newRow("of render") << QStringList{"render", "--help"} << "\n  --fps N ";
    QTest::newRow("of inspect") << QStringList{"inspect", "--help"} << "\n  --json ";
    QTest::newRow("of resolve") << QStringList{"resolve", "--help"} << "resolve SHOW -o OUT";
    QTest::newRow("of import") << QStringList{"import", "--help"} << "\n  --link-adjacent ";
    QTest::newRow("before the command") << QStringList{"--help", "import"} << "--link-adjacent";
    QTest::newRow("the version") << QStringList{"--version"} << "rehearsal ";
}

void TestCommandLine::helpIsAskedForWithoutOperands()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, part);
    const auto request = requestOf<TextRequest>(arguments);
    QVERIFY(request);
    QVERIFY2(request->text.contains(part), qPrintable(request->text));
    QVERIFY(request->text.endsWith('\n'));
}

void TestCommandLine::saysInOneLineWhatIsWrong_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("fault");

    const auto render = [](const QStringList &options) {
        return QStringList{"render", "a.show"} + options;
    };
    QTest::newRow("an empty name") << QStringList{""} << "SHOW is missing";
    QTest::newRow("unknown command") << QStringList{"perform"} << "no command 'perform'";
    QTest::newRow("unknown command with a show")
        << QStringList{"perform", "a.show"} << "no command 'perform'";
    QTest::newRow("two shows") << QStringList{"a.show", "b.show"} << "'b.show' is one argument";
    QTest::newRow("unknown option") << QStringList{"--loud"} << "unknown option 'loud'";
    QTest::newRow("another command's option")
        << QStringList{"inspect", "a.show", "--fps", "40"} << "unknown option 'fps'";
    QTest::newRow("a toolkit's option") << QStringList{"-platform", "x", "a.show"} << "unknown opt";
    QTest::newRow("a value too many")
        << QStringList{"inspect", "a.show", "--json=yes"} << "unexpected value after '--json'";
    QTest::newRow("render: no show") << QStringList{"render"} << "SHOW is missing";
    QTest::newRow("render: fps 0") << render({"--fps", "0"}) << "--fps must be a number";
    QTest::newRow("render: fps negative") << render({"--fps", "-40"}) << "not '-40'";
    QTest::newRow("render: fps absurd") << render({"--fps", "1000.1"}) << "from 0.001 to 1000";
    QTest::newRow("render: fps nan") << render({"--fps", "nan"}) << "not 'nan'";
    QTest::newRow("render: fps infinite") << render({"--fps", "inf"}) << "not 'inf'";
    QTest::newRow("render: fps no number") << render({"--fps", "40x"}) << "not '40x'";
    QTest::newRow("render: fps with a comma") << render({"--fps", "29,97"}) << "not '29,97'";
    QTest::newRow("render: fps empty") << render({"--fps", ""}) << "--fps is empty";
    QTest::newRow("render: fps without value")
        << render({"--fps"}) << "missing value after '--fps'";
    QTest::newRow("render: seconds negative") << render({"--seconds", "-1"}) << "not '-1'";
    QTest::newRow("render: seconds nan") << render({"--seconds", "nan"}) << "not 'nan'";
    QTest::newRow("render: seconds too many")
        << render({"--seconds", "4294967.296"}) << "from 0 to 4294967.295";
    QTest::newRow("render: empty table") << render({"--csv", ""}) << "--csv is empty";
    QTest::newRow("render: one file for both")
        << render({"--csv", "x", "--png", "./x"}) << "name the same file";
    QTest::newRow("render: onto the show")
        << QStringList{"render", "here.show", "--csv", "./here.show"} << "would overwrite the show";
    QTest::newRow("resolve: no output") << QStringList{"resolve", "a.show"} << "-o OUT is missing";
    QTest::newRow("resolve: no value")
        << QStringList{"resolve", "a.show", "-o"} << "missing value after '-o'";
    QTest::newRow("import: no output") << QStringList{"import", "a.xsq"} << "-o OUT is missing";
    QTest::newRow("import: no sequence")
        << QStringList{"import", "-o", "a.show"} << "SEQ.xsq is missing";
    QTest::newRow("empty plug-in")
        << QStringList{"inspect", "a.show", "--plugin", ""} << "--plugin is empty";
}

void TestCommandLine::saysInOneLineWhatIsWrong()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, fault);
    QString said;
    QVERIFY(!parse(arguments, &said));
    QVERIFY2(said.startsWith("rehearsal: ") && said.contains(fault) && !said.contains('\n'),
             qPrintable(said));
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_CommandLine.moc"
