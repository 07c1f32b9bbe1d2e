#include "ProgramOnScreen.h"
#include "ProgramRun.h"

#include <QLoggingCategory>

/// Somebody who starts the program from a shell, with a display and without.
class TestStartOnScreen : public QObject, private ProgramFolder
{
    Q_OBJECT

private slots:
    void init();

    void withoutAFileANewShowIsOpened();
    void aBadFileIsToldAndNoWindowStays();
    void withoutADisplayTheProgramSaysSo();
    void aDisplayThatDoesNotAnswerIsTold();
};

void TestStartOnScreen::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(write("a.show", steadyShow()));
    QVERIFY(write("bad.show", "<show version=\"1\">\n<map>"));
}

void TestStartOnScreen::withoutAFileANewShowIsOpened()
{
    ProgramOnScreen shown(m_folder->path());
    QVERIFY(shown.goToMain());
    const QString title = shown.title();
    QVERIFY2(!title.contains(u'*'), qPrintable(title));
    ScreenUser::press({"ctrl+q"});
    QCOMPARE(shown.waitForEnd(), 0);
    QCOMPARE(shown.errors(), QByteArray());
}

void TestStartOnScreen::aBadFileIsToldAndNoWindowStays()
{
    ProgramOnScreen shown(m_folder->path(), {"bad.show"});
    QCOMPARE(shown.waitForEnd(), 1);
    const QByteArray errors = shown.errors();
    QVERIFY2(errors.startsWith("bad.show:2: ") && errors.count('\n') == 1, errors.constData());
}

void TestStartOnScreen::withoutADisplayTheProgramSaysSo()
{
    VERIFY_FAILED(rehearsal({"a.show"}), 1, "there is no display");
    VERIFY_FAILED(rehearsal({"bad.show"}), 1, "bad.show:2: ");
    VERIFY_FAILED(rehearsal({}), 2, "SHOW");
}

void TestStartOnScreen::aDisplayThatDoesNotAnswerIsTold()
{
    const QByteArray own = qgetenv("DISPLAY");
    qputenv("DISPLAY", ":59999");
    ProgramOnScreen shown(m_folder->path(), {"a.show"});
    qputenv("DISPLAY", own);
    QCOMPARE(shown.waitForEnd(), 1);
    QCOMPARE(shown.errors(), QByteArray("rehearsal: the display does not answer\n"));
}

QTEST_MAIN(TestStartOnScreen)
#include "tst_StartOnScreen.moc"
