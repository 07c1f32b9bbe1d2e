#include "ProgramRun.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QXmlStreamReader>

namespace {

QByteArray contentOf(const QString &file)
{
    QFile input(file);
    return input.open(QIODevice::ReadOnly) ? input.readAll() : QByteArray("(unreadable)");
}

/// What a tool says of a file; nothing when there is no such tool.
std::optional<QString> complaintsOf(const QString &tool, const QStringList &arguments)
{
    if (QStandardPaths::findExecutable(tool).isEmpty()) {
        qInfo("%s is not here: nothing checked with it", qPrintable(tool));
        return {};
    }
    const Outcome outcome = run(QDir::tempPath(), arguments, tool);
    return outcome.status == 0 ? QString::fromUtf8(outcome.errors)
                               : QString::fromUtf8(outcome.out + outcome.errors);
}

} // namespace

/// The project, installed into a folder that was renamed afterwards.
class TestInstallation : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void everyFileIsInItsPlace();
    void installedProgramRendersAsTheBuiltOne();
    void nothingPointsBackToTheBuild_data();
    void nothingPointsBackToTheBuild();
    void iconsHaveTheSizesOfTheirFolders();
    void desktopFileIsValid();
    void mimeTypeIsThatOfTheDesktopFile();
    void headersAreAllAPluginIncludes();

private:
    QString path(const QString &file) const { return m_folder.filePath("moved/" + file); }

    QTemporaryDir m_folder;
};

void TestInstallation::initTestCase()
{
    QVERIFY(m_folder.isValid());
    const Outcome outcome =
        run(m_folder.path(),
            {"--install", META_BUILD_DIR, "--prefix", m_folder.filePath("installed")}, META_CMAKE);
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    QVERIFY(QDir(m_folder.path()).rename("installed", "moved"));
}

void TestInstallation::everyFileIsInItsPlace()
{
    for (const char *file :
         {"bin/rehearsal", "lib/metaeffect.so", "include/metaeffect/Effect.h",
          "share/man/man1/rehearsal.1", "share/applications/rehearsal.desktop",
          "share/mime/packages/rehearsal-show.xml", "share/doc/rehearsal/README.md",
          "share/doc/rehearsal/LICENSE", "share/doc/rehearsal/examples/minimal.show",
          "share/doc/rehearsal/examples/facade.show",
          "share/icons/hicolor/scalable/apps/rehearsal.svg"})
        QVERIFY2(QFileInfo(path(QString::fromLatin1(file))).isFile(), file);
    QVERIFY(QFileInfo(path("bin/rehearsal")).isExecutable());
}

void TestInstallation::installedProgramRendersAsTheBuiltOne()
{
    const QString show = path("share/doc/rehearsal/examples/minimal.show");
    VERIFY_DONE(run(m_folder.path(), {"render", show, "--csv", "built.csv", "--png", "built.png"}));
    VERIFY_DONE(run(m_folder.path(),
                    {"render", show, "--csv", "installed.csv", "--png", "installed.png"},
                    path("bin/rehearsal")));
    const QByteArray table = contentOf(m_folder.filePath("built.csv"));
    QVERIFY(table.count('\n') > 100);
    QCOMPARE(contentOf(m_folder.filePath("installed.csv")), table);
    QVERIFY(!QImage(m_folder.filePath("built.png")).isNull());
    QCOMPARE(contentOf(m_folder.filePath("installed.png")),
             contentOf(m_folder.filePath("built.png")));

    // It is the installed plug-in that it plays with.
    QVERIFY(QFile::rename(path("lib/metaeffect.so"), path("lib/away.so")));
    VERIFY_FAILED(run(m_folder.path(), {"render", show}, path("bin/rehearsal")), 1,
                  "metaeffect.so");
    QVERIFY(QFile::rename(path("lib/away.so"), path("lib/metaeffect.so")));
}

void TestInstallation::nothingPointsBackToTheBuild_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("program") << "bin/rehearsal";
    QTest::newRow("plug-in") << "lib/metaeffect.so";
}

void TestInstallation::nothingPointsBackToTheBuild()
{
    QFETCH(QString, file);
    if (QStandardPaths::findExecutable("readelf").isEmpty())
        QSKIP("readelf is not here");
    const Outcome outcome = run(m_folder.path(), {"--dynamic", path(file)}, "readelf");
    QVERIFY(outcome.out.contains("NEEDED"));
    for (const char *part : {"RPATH", "RUNPATH", META_BUILD_DIR})
        QVERIFY2(!outcome.out.contains(part), outcome.out.constData());
}

void TestInstallation::iconsHaveTheSizesOfTheirFolders()
{
    const QDir icons(path("share/icons/hicolor"));
    QStringList sizes = icons.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QVERIFY(sizes.removeOne("scalable"));
    QCOMPARE(sizes.size(), 8);
    for (const QString &size : std::as_const(sizes)) {
        const QImage icon(icons.filePath(size + "/apps/rehearsal.png"));
        QCOMPARE(QStringLiteral("%1x%2").arg(icon.width()).arg(icon.height()), size);
        QVERIFY(icon.hasAlphaChannel());
    }
    QXmlStreamReader drawing(contentOf(icons.filePath("scalable/apps/rehearsal.svg")));
    QVERIFY(drawing.readNextStartElement());
    QCOMPARE(drawing.name(), QStringLiteral("svg"));
}

void TestInstallation::desktopFileIsValid()
{
    const QString file = path("share/applications/rehearsal.desktop");
    QVERIFY(contentOf(file).contains("\nExec=rehearsal %f\n"));
    if (const auto complaints = complaintsOf("desktop-file-validate", {file}))
        QCOMPARE(*complaints, QString());
}

void TestInstallation::mimeTypeIsThatOfTheDesktopFile()
{
    QXmlStreamReader reader(contentOf(path("share/mime/packages/rehearsal-show.xml")));
    QString type;
    QString pattern;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == u"mime-type")
            type = reader.attributes().value("type").toString();
        else if (reader.isStartElement() && reader.name() == u"glob")
            pattern = reader.attributes().value("pattern").toString();
    }
    QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
    QCOMPARE(pattern, QStringLiteral("*.show"));
    QVERIFY(contentOf(path("share/applications/rehearsal.desktop"))
                .contains("\nMimeType=" + type.toUtf8() + ";\n"));
}

void TestInstallation::headersAreAllAPluginIncludes()
{
    const QDir headers(path("include/metaeffect"));
    const QStringList names = headers.entryList(QDir::Files);
    QCOMPARE(names, QDir(QStringLiteral(META_SOURCE_DIR "/host")).entryList({"*.h"}));
    static const QRegularExpression include(QStringLiteral("#include \"([^\"]+)\""));
    for (const QString &name : names) {
        const QString text = QString::fromUtf8(contentOf(headers.filePath(name)));
        for (const QRegularExpressionMatch &match : include.globalMatch(text))
            QVERIFY2(names.contains(match.captured(1)), qPrintable(match.captured()));
    }
}

QTEST_GUILESS_MAIN(TestInstallation)
#include "tst_Installation.moc"
