#include "ProgramOnScreen.h"
#include "ProgramRun.h"
#include "ShowEditing.h"

#include <QDir>
#include <QJsonObject>
#include <QLoggingCategory>

#include <csignal>

namespace {

constexpr int autosaveSeconds = 2;
/// What a busy machine may add.
constexpr int slackMs = 8000;

} // namespace

/// Somebody whose program dies in the middle of the work.
class TestRecoveryOnScreen : public QObject, private ProgramFolder
{
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false")); }
    void init();

    void whatIsOlderThanTheIntervalIsRecovered();
    void whatIsLeftIsKeptForLaterOrDiscarded();
    void aShowWithoutAFileIsRecovered();
    void signalLosesNoEdit_data();
    void signalLosesNoEdit();

private:
    void dieEditing();
    QString clockStart(const QString &file) const;
    QStringList untitled() const;
    QByteArrayList files() const;

    QByteArray m_example = ShowEditing::exampleShow();
};

void TestRecoveryOnScreen::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(write("a.show", m_example));
    ProgramOnScreen::setAutosaveSeconds(m_folder->path(), autosaveSeconds);
}

// An edit, and when that is safe another one that is cut off.
void TestRecoveryOnScreen::dieEditing()
{
    ProgramOnScreen shown(m_folder->path(), {"a.show"});
    QVERIFY(shown.goToMain());
    const WindowTwin twin(m_example, shown.area().size());
    ShowEditing::typeClockStart(shown, twin, "8");
    ScreenUser::press({"Tab"});
    QTRY_COMPARE_WITH_TIMEOUT(clockStart("a.show.autosave"), QStringLiteral("8000"),
                              autosaveSeconds * 1000 + slackMs);
    ShowEditing::typeClockStart(shown, twin, "23");
    shown.kill();
    QCOMPARE(read("a.show"), m_example);
}

// Of the child "Clock"; empty if there is no such show.
QString TestRecoveryOnScreen::clockStart(const QString &file) const
{
    const QJsonArray children =
        inspected(file).first().toObject().value(QStringLiteral("children")).toArray();
    for (const QJsonValue &child : children) {
        if (child[QStringLiteral("name")] == QStringLiteral("Clock"))
            return child[QStringLiteral("startfixedtime")].toString();
    }
    return {};
}

QStringList TestRecoveryOnScreen::untitled() const
{
    const QDir folder(path("data/rehearsal/rehearsal"));
    QStringList files = folder.entryList({"untitled-*.autosave"}, QDir::Files);
    for (QString &file : files)
        file = folder.filePath(file);
    return files;
}

QByteArrayList TestRecoveryOnScreen::files() const
{
    QByteArrayList names;
    for (const QString &name : QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden))
        names.append(name.toUtf8());
    return names;
}

void TestRecoveryOnScreen::whatIsOlderThanTheIntervalIsRecovered()
{
    dieEditing();
    if (QTest::currentTestFailed())
        return;
    // What was half typed may be there or not.
    const QString left = clockStart("a.show.autosave");
    QVERIFY2(QStringList({"8000", "2000", "23000"}).contains(left), qPrintable(left));
    VERIFY_DONE(rehearsal({"resolve", "a.show.autosave", "-o", "expected.show"}));

    ProgramOnScreen shown(m_folder->path(), {"a.show"});
    QVERIFY(shown.goTo("Recover"));
    ScreenUser::press({"Return"});
    QVERIFY(shown.waitUntilGone("Recover"));
    QVERIFY(shown.goToMain());
    QTRY_COMPARE_WITH_TIMEOUT(shown.title(), QStringLiteral("a.show* – Rehearsal"), 30000);

    WindowTwin twin(read("expected.show"), shown.area().size());
    ShowEditing::goToSecond(shown, twin, 5);
    twin.seek(5000);
    const QRect timeline = twin.areaOf(twin.find<QWidget>("timeline"));
    QTRY_COMPARE_WITH_TIMEOUT(shown.picture().copy(timeline), twin.picture("timeline"), 30000);

    ScreenUser::press({"ctrl+s"});
    QTRY_COMPARE_WITH_TIMEOUT(shown.title(), QStringLiteral("a.show – Rehearsal"), 30000);
    QCOMPARE(clockStart("a.show"), left);
    QTRY_VERIFY(!files().contains("a.show.autosave"));
    ScreenUser::press({"ctrl+q"});
    QCOMPARE(shown.waitForEnd(), 0);
    QCOMPARE(files(), QByteArrayList({"a.show", "expected.show"}));
}

void TestRecoveryOnScreen::whatIsLeftIsKeptForLaterOrDiscarded()
{
    dieEditing();
    if (QTest::currentTestFailed())
        return;
    const QByteArray left = read("a.show.autosave");
    for (const char *answer : {"Escape", "alt+l"}) {
        ProgramOnScreen shown(m_folder->path(), {"a.show"});
        QVERIFY(shown.goTo("Recover"));
        ScreenUser::press({answer});
        QVERIFY(shown.waitUntilGone("Recover"));
        QVERIFY(shown.goToMain());
        QTRY_COMPARE_WITH_TIMEOUT(shown.title(), QStringLiteral("a.show – Rehearsal"), 30000);
        ScreenUser::press({"ctrl+q"});
        QCOMPARE(shown.waitForEnd(), 0);
        QCOMPARE(read("a.show.autosave"), left);
    }

    ProgramOnScreen shown(m_folder->path(), {"a.show"});
    QVERIFY(shown.goTo("Recover"));
    ScreenUser::press({"alt+d"});
    QVERIFY(shown.waitUntilGone("Recover"));
    QVERIFY(shown.goToMain());
    QTRY_COMPARE_WITH_TIMEOUT(shown.title(), QStringLiteral("a.show – Rehearsal"), 30000);
    QVERIFY(!files().contains("a.show.autosave"));
    ScreenUser::press({"ctrl+q"});
    QCOMPARE(shown.waitForEnd(), 0);
    QCOMPARE(read("a.show"), m_example);
    QCOMPARE(files(), QByteArrayList({"a.show"}));
}

void TestRecoveryOnScreen::aShowWithoutAFileIsRecovered()
{
    {
        ProgramOnScreen shown(m_folder->path());
        QVERIFY(shown.goToMain());
        QVERIFY(!shown.title().contains(u'*'));
        const WindowTwin twin(m_example, shown.area().size());
        shown.click(twin.middleOf("m_newEffectButton"));
        QTRY_VERIFY_WITH_TIMEOUT(shown.title().contains(u'*'), 30000);
        QTRY_COMPARE_WITH_TIMEOUT(untitled().size(), 1, autosaveSeconds * 1000 + slackMs);
        shown.kill();
    }
    QVERIFY(!inspected(untitled().first())
                 .first()
                 .toObject()
                 .value(QStringLiteral("children"))
                 .toArray()
                 .isEmpty());
    const QJsonArray left = inspected(untitled().first());

    ProgramOnScreen shown(m_folder->path());
    QVERIFY(shown.goTo("Recover"));
    ScreenUser::press({"Return"});
    QVERIFY(shown.waitUntilGone("Recover"));
    QVERIFY(shown.goToMain());
    QTRY_VERIFY_WITH_TIMEOUT(shown.title().contains(u'*'), 30000);
    ScreenUser::press({"ctrl+s"});
    QVERIFY(shown.goTo("Save the Show"));
    ScreenUser::press({"ctrl+a"});
    ScreenUser::type(path("mine.show"));
    ScreenUser::press({"Return"});
    QVERIFY(shown.waitUntilGone("Save the Show"));
    QTRY_COMPARE_WITH_TIMEOUT(shown.title(), QStringLiteral("mine.show – Rehearsal"), 30000);
    QCOMPARE(inspected("mine.show"), left);
    QCOMPARE(untitled(), QStringList());
    QVERIFY(shown.goToMain());
    ScreenUser::press({"ctrl+q"});
    QCOMPARE(shown.waitForEnd(), 0);
}

void TestRecoveryOnScreen::signalLosesNoEdit_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("hangup") << SIGHUP;
    QTest::newRow("interrupt") << SIGINT;
    QTest::newRow("termination") << SIGTERM;
}

void TestRecoveryOnScreen::signalLosesNoEdit()
{
    QFETCH(int, signal);
    ProgramOnScreen::setAutosaveSeconds(m_folder->path(), 30);
    std::signal(signal, SIG_DFL); // what this ignores, a program that it starts ignores as well
    ProgramOnScreen shown(m_folder->path(), {"a.show"});
    QVERIFY(shown.goToMain());
    const WindowTwin twin(m_example, shown.area().size());
    ShowEditing::typeClockStart(shown, twin, "8");
    ScreenUser::press({"Tab"});
    QTRY_COMPARE_WITH_TIMEOUT(shown.title(), QStringLiteral("a.show* – Rehearsal"), 30000);
    QVERIFY(!files().contains("a.show.autosave"));
    QCOMPARE(shown.endBy(signal), signal);
    QCOMPARE(clockStart("a.show.autosave"), QStringLiteral("8000"));
    QCOMPARE(read("a.show"), m_example);
}

QTEST_MAIN(TestRecoveryOnScreen)
#include "tst_RecoveryOnScreen.moc"
