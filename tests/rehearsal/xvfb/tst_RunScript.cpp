#include "ProgramRun.h"

#include <QDir>

/// Somebody who calls ./run in a tree where all is built. The program there only tells how it was
/// called.
class TestRunScript : public QObject, private ProgramFolder
{
    Q_OBJECT

private slots:
    void init();

    void withADisplayTheExampleIsOpened_data();
    void withADisplayTheExampleIsOpened();
    void withoutADisplayTheExampleIsRendered();
    void argumentsGoToTheProgram();
    void theExitStatusIsTheProgramsOwn();

private:
    bool writeScript(const QString &file, const QByteArray &lines) const;
    Outcome runScript(const QStringList &arguments, const char *display = nullptr) const;
};

void TestRunScript::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    const QDir tree(m_folder->path());
    QVERIFY(tree.mkpath("tools"));
    QVERIFY(tree.mkpath("build/release/bin"));
    QVERIFY(QFile::copy(QStringLiteral(META_SOURCE_DIR "/run"), path("run")));
    QVERIFY(writeScript("tools/setup", "test \"$*\" = run"));
    QVERIFY(writeScript("tools/configure", "test \"$*\" = release"));
    QVERIFY(write("build/release/build.ninja", "build bin/rehearsal lib/metaeffect.so: phony\n"));
    QVERIFY(writeScript("build/release/bin/rehearsal", "printf '%s\\n' \"$@\"\nexit $STATUS"));
}

bool TestRunScript::writeScript(const QString &file, const QByteArray &lines) const
{
    return write(file, "#!/bin/bash\n" + lines + '\n')
           && QFile::setPermissions(path(file),
                                    QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

Outcome TestRunScript::runScript(const QStringList &arguments, const char *display) const
{
    // run() takes every display away.
    QStringList call;
    if (display)
        call << QLatin1String(display);
    return run(m_folder->path(), call + QStringList{path("run")} + arguments,
               QStringLiteral("env"));
}

void TestRunScript::withADisplayTheExampleIsOpened_data()
{
    QTest::addColumn<QByteArray>("display");

    QTest::newRow("X") << QByteArray("DISPLAY=:5");
    QTest::newRow("Wayland") << QByteArray("WAYLAND_DISPLAY=wayland-0");
}

void TestRunScript::withADisplayTheExampleIsOpened()
{
    QFETCH(QByteArray, display);
    const Outcome outcome = runScript({}, display.constData());
    VERIFY_DONE(outcome);
    QCOMPARE(outcome.out, path("examples/facade.show").toUtf8() + '\n');
}

void TestRunScript::withoutADisplayTheExampleIsRendered()
{
    const Outcome outcome = runScript({});
    QCOMPARE(outcome.status, 0);
    const QByteArray root = m_folder->path().toUtf8();
    QCOMPARE(outcome.out, "render\n" + root + "/examples/facade.show\n--csv\n" + root
                              + "/build/facade.csv\n--png\n" + root + "/build/facade.png\n");
    QVERIFY(outcome.errors.contains("there is no display"));
    for (const char *file : {"/build/facade.png", "/build/facade.csv"})
        QVERIFY2(outcome.errors.contains(root + file), outcome.errors.constData());
}

void TestRunScript::argumentsGoToTheProgram()
{
    const Outcome outcome = runScript({"inspect", "a b.show", "--json"}, "DISPLAY=:5");
    VERIFY_DONE(outcome);
    QCOMPARE(outcome.out, QByteArray("inspect\na b.show\n--json\n"));
}

void TestRunScript::theExitStatusIsTheProgramsOwn()
{
    const Outcome outcome = runScript({"inspect", "a.show"}, "STATUS=1");
    QCOMPARE(outcome.status, 1);
    QCOMPARE(runScript({}, "STATUS=1").status, 1);
}

QTEST_APPLESS_MAIN(TestRunScript)
#include "tst_RunScript.moc"
