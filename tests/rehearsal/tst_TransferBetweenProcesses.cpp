#include "ShowUser.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QLibraryInfo>
#include <QLoggingCategory>
#include <QProcess>
#include <QSocketNotifier>
#include <QTemporaryDir>

#include <cstdio>

using rehearsal::FileFault;

namespace {

const QString facade = QStringLiteral(META_SOURCE_DIR "/examples/facade.show");

// --- What the other processes do ---

/// copy <show> <name>: copies that child and tells the clipboard's text. Lives on until its input
/// ends: a clipboard is served by whoever filled it.
int copyChild(const QStringList &arguments)
{
    const auto show = readShow(arguments.at(0));
    if (!show)
        return 1;
    ShowUser user(topOf(*show));
    user.select(arguments.at(1));
    user.choose(ShowUser::Copy);
    const QByteArray text = QGuiApplication::clipboard()->text().toUtf8().toBase64() + '\n';
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
    QSocketNotifier input(fileno(stdin), QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, qApp, &QCoreApplication::quit);
    return QApplication::exec();
}

/// paste <show> <saved show>: pastes what is on the clipboard, or else what is the input in base64,
/// and saves.
int pasteChild(const QStringList &arguments)
{
    const auto show = readShow(arguments.at(0));
    if (!show)
        return 1;
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return 1;
    const QByteArray text = QByteArray::fromBase64(input.readAll().trimmed());
    if (!text.isEmpty())
        QGuiApplication::clipboard()->setText(QString::fromUtf8(text));
    ShowUser(topOf(*show)).choose(ShowUser::Paste);
    FileFault fault;
    return rehearsal::saveShow(*show, arguments.at(1), &fault) ? 0 : 1;
}

// --- Starting them ---

/// This program as another process. It is killed if it is still there at the end.
class OtherProcess
{
public:
    OtherProcess(const QStringList &arguments, const QString &platform,
                 const QString &display = QString())
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), platform);
        environment.insert(QStringLiteral("DISPLAY"), display);
        // It takes no part in the user's desktop.
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("disabled:"));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationFilePath(), arguments);
    }
    ~OtherProcess()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }
    Q_DISABLE_COPY_MOVE(OtherProcess)

    /// The next line that it says; empty when there comes none.
    QByteArray line()
    {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(60000)) {}
        return m_process.readLine();
    }
    /// Ends its input; true when it is content with that.
    bool finish(const QByteArray &input = {})
    {
        m_process.write(input);
        m_process.closeWriteChannel();
        return m_process.waitForFinished(60000) && m_process.exitStatus() == QProcess::NormalExit
               && m_process.exitCode() == 0;
    }

private:
    QProcess m_process;
};

/// An X server of its own, without a screen to look at.
class DisplayServer
{
public:
    DisplayServer()
    {
        const QString plugin =
            QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms/libqxcb.so");
        if (!QFile::exists(plugin))
            return;
        m_server.start(QStringLiteral("Xvfb"),
                       {"-displayfd", "1", "-screen", "0", "1400x1000x24", "-nolisten", "tcp"});
        if (m_server.waitForStarted() && m_server.waitForReadyRead(30000))
            m_number = m_server.readLine().trimmed();
    }
    ~DisplayServer()
    {
        if (m_server.state() == QProcess::NotRunning)
            return;
        m_server.terminate();
        if (!m_server.waitForFinished(10000))
            m_server.kill();
        m_server.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(DisplayServer)

    bool isThere() const { return !m_number.isEmpty(); }
    QString display() const { return u':' + QString::fromLatin1(m_number); }

private:
    QProcess m_server;
    QByteArray m_number;
};

} // namespace

/// What one process copies another one pastes.
class tst_TransferBetweenProcesses : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void textOfOneProcessIsPastedByAnother_data();
    void textOfOneProcessIsPastedByAnother();
    void clipboardOfADisplayIsShared_data() { textOfOneProcessIsPastedByAnother_data(); }
    void clipboardOfADisplayIsShared();
    void whatWasCopiedGoesWithItsProcess();

private:
    QString saved() const { return m_folder.filePath(QStringLiteral("saved.show")); }
    void checkPasted(const QString &name) const;

    QTemporaryDir m_folder;
};

void tst_TransferBetweenProcesses::init()
{
    QVERIFY(m_folder.isValid());
    QFile::remove(saved());
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

/// The saved show is the example with one more child, which is that one again.
void tst_TransferBetweenProcesses::checkPasted(const QString &name) const
{
    const auto show = readShow(saved());
    const auto example = readShow(facade);
    QVERIFY(show && example);
    QCOMPARE(topOf(*show).getEffects().count(), topOf(*example).getEffects().count() + 1);
    Effect *child = childNamed(topOf(*show), name);
    Effect *copy = childNamed(topOf(*show), QStringLiteral("Copy of ") + name);
    QVERIFY(child && copy);
    QVERIFY(textOf(*copy, "eid") != textOf(*child, "eid"));
    QCOMPARE(textOf(*copy, "begin"), textOf(*child, "begin"));
    QCOMPARE(textOf(*copy, "startlinkeid"), textOf(*child, "startlinkeid"));
    const auto within = [](const QString &text) {
        return text.mid(text.indexOf(QStringLiteral("<effect "), 1));
    };
    if (qobject_cast<MetaEffect *>(child)) {
        QCOMPARE(within(savedWithoutIdentity(*copy)), within(savedWithoutIdentity(*child)));
    }
}

void tst_TransferBetweenProcesses::textOfOneProcessIsPastedByAnother_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("a meta effect, linked") << "Windows wake";
    QTest::newRow("a meta effect that holds meta effects") << "Marquee";
}

void tst_TransferBetweenProcesses::textOfOneProcessIsPastedByAnother()
{
    QFETCH(QString, name);
    const QString platform = QStringLiteral("offscreen");
    OtherProcess copying({"copy", facade, name}, platform);
    const QByteArray text = copying.line();
    QVERIFY(QByteArray::fromBase64(text).startsWith("<EFFECT-ENTRY>\n"));
    QVERIFY(copying.finish());

    OtherProcess pasting({"paste", facade, saved()}, platform);
    QVERIFY(pasting.finish(text));

    checkPasted(name);
}

void tst_TransferBetweenProcesses::clipboardOfADisplayIsShared()
{
    QFETCH(QString, name);
    const DisplayServer server;
    if (!server.isThere())
        QSKIP("there is no X server, or no plugin to use one");
    const QString platform = QStringLiteral("xcb");
    OtherProcess copying({"copy", facade, name}, platform, server.display());
    QVERIFY(!copying.line().isEmpty());

    OtherProcess pasting({"paste", facade, saved()}, platform, server.display());
    QVERIFY(pasting.finish());

    checkPasted(name);
    QVERIFY(copying.finish());
}

void tst_TransferBetweenProcesses::whatWasCopiedGoesWithItsProcess()
{
    const DisplayServer server;
    if (!server.isThere())
        QSKIP("there is no X server, or no plugin to use one");
    const QString platform = QStringLiteral("xcb");
    OtherProcess copying({"copy", facade, "Marquee"}, platform, server.display());
    QVERIFY(!copying.line().isEmpty());
    QVERIFY(copying.finish());

    OtherProcess pasting({"paste", facade, saved()}, platform, server.display());
    QVERIFY(pasting.finish());

    const auto show = readShow(saved());
    const auto example = readShow(facade);
    QVERIFY(show && example);
    QCOMPARE(topOf(*show).getEffects().count(), topOf(*example).getEffects().count());
}

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    const QStringList arguments = QCoreApplication::arguments();
    const QString role = arguments.value(1);
    if (role == u"copy" && arguments.size() == 4)
        return copyChild(arguments.mid(2));
    if (role == u"paste" && arguments.size() == 4)
        return pasteChild(arguments.mid(2));
    tst_TransferBetweenProcesses test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_TransferBetweenProcesses.moc"
