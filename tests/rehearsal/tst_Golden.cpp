#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

// Compares what the program prints and writes for the minimal example with the texts in
// tests/golden. With META_REFRESH_GOLDEN set (target refresh_golden) it writes them anew instead.
class tst_Golden : public QObject
{
    Q_OBJECT

private slots:
    void minimalShowGivesTheGoldenText_data();
    void minimalShowGivesTheGoldenText();
};

namespace {

QByteArray contents(const QString &file)
{
    QFile input(file);
    return input.open(QIODevice::ReadOnly) ? input.readAll() : QByteArray();
}

} // namespace

void tst_Golden::minimalShowGivesTheGoldenText_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("output"); // a file in the temporary folder; empty: standard output

    const QString show = QStringLiteral(META_SOURCE_DIR "/examples/minimal.show");
    QTest::newRow("minimal.inspect.txt") << QStringList{"inspect", show} << QString();
    QTest::newRow("minimal.inspect.json") << QStringList{"inspect", show, "--json"} << QString();
    QTest::newRow("minimal.csv")
        << QStringList{"render", show, "--fps", "8", "--csv", "out"} << QStringLiteral("out");
    QTest::newRow("minimal.show") << QStringList{"resolve", show, "-o", "out"}
                                  << QStringLiteral("out");
}

void tst_Golden::minimalShowGivesTheGoldenText()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, output);

    const QTemporaryDir folder;
    QProcess program;
    program.setWorkingDirectory(folder.path());
    program.start(QStringLiteral(REHEARSAL_PROGRAM), arguments);
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitCode(), 0);
    const QByteArray text = output.isEmpty() ? program.readAllStandardOutput()
                                             : contents(folder.filePath(output));
    QVERIFY(!text.isEmpty());

    const QString golden =
        QStringLiteral(META_SOURCE_DIR "/tests/golden/") + QString::fromUtf8(QTest::currentDataTag());
    if (qEnvironmentVariableIsSet("META_REFRESH_GOLDEN")) {
        QFile file(golden);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(text), text.size());
    }
    QCOMPARE(text, contents(golden));
}

QTEST_GUILESS_MAIN(tst_Golden)
#include "tst_Golden.moc"
