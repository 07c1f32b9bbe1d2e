#include "ProgramRun.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[maybe_unused]] constexpr qint64 mostMemory = 1024; // MiB, not asked for with sanitizers
constexpr double mostSeconds = 20;

struct Measured
{
    int status = -1;
    QByteArray errors;
    double seconds = 0; ///< of the processor
    qint64 memory = 0;  ///< peak, MiB
};

#ifndef META_SANITIZED
void limitMemory()
{
    constexpr rlim_t bytes = 4ull * 1024 * 1024 * 1024;
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_AS, &limit);
}
#endif

[[noreturn]] void become(const QList<QByteArray> &command, const QByteArray &folder)
{
#ifndef META_SANITIZED
    limitMemory();
#endif
    std::vector<char *> arguments;
    for (const QByteArray &argument : command)
        arguments.push_back(const_cast<char *>(argument.constData()));
    arguments.push_back(nullptr);
    if (chdir(folder.constData()) != 0)
        _exit(127);
    const int errors = open("errors", O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (dup2(errors, STDERR_FILENO) >= 0)
        execv(arguments[0], arguments.data());
    _exit(127);
}

double seconds(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

QByteArray lights(int count)
{
    QByteArray text;
    for (int uid = 1; uid <= count; ++uid)
        text += "<light uid=\"" + QByteArray::number(uid) + "\" x=\"0\" y=\"0\"/>";
    return text;
}

QByteArray groups(int count)
{
    QByteArray text = lights(1);
    for (int uid = 1; uid <= count; ++uid)
        text += "<group uid=\"" + QByteArray::number(uid) + "\" type=\"leaf\" lights=\"1\"/>";
    return text;
}

QByteArray largeGroups(int count, int lightsOfEach)
{
    QByteArray text;
    for (int uid = 1; uid <= count; ++uid)
        text += "<group uid=\"" + QByteArray::number(uid) + "\" type=\"chasing\" lights=\""
                + QByteArray("1 ").repeated(lightsOfEach) + "\"/>";
    return text;
}

QByteArray nested(const char *start, const char *end, int depth)
{
    return QByteArray(start).repeated(depth) + QByteArray(end).repeated(depth);
}

QByteArray manyAttributes(int count)
{
    QByteArray text = "<effect type=\"Solid\"";
    for (int i = 0; i < count; ++i)
        text += " a" + QByteArray::number(i) + "=\"\"";
    return text + "/>";
}

QByteArray entities()
{
    QByteArray text = "<!DOCTYPE show [<!ENTITY a \"ha\">";
    for (char name = 'b'; name < 'n'; ++name) {
        const QByteArray before = '&' + QByteArray(1, static_cast<char>(name - 1)) + ';';
        text += QByteArray("<!ENTITY ") + name + " \"" + before.repeated(10) + "\">";
    }
    return text + "]>" + show(effect("Solid", setting("name", "&m;")));
}

QByteArray sequence(const QByteArray &settings, const QByteArray &elements)
{
    return "<xsequence><EffectDB>" + settings + "</EffectDB><ElementEffects>" + elements
           + "</ElementEffects></xsequence>";
}

QByteArray models(int count)
{
    QByteArray text;
    for (int i = 0; i < count; ++i)
        text += "<Element type=\"model\" name=\"" + QByteArray::number(i)
                + "\"><EffectLayer><Effect name=\"On\" startTime=\"0\" endTime=\"1\"/>"
                  "</EffectLayer></Element>";
    return text;
}

} // namespace

// Files that were made to be too much, and are refused in little time and memory.
class TestHostileFiles : public QObject, private ProgramFolder
{
    Q_OBJECT

private slots:
    void init();

    void hostileShowIsRefused_data();
    void hostileShowIsRefused();
    void hostileSequenceIsRefused_data();
    void hostileSequenceIsRefused();
    void fileThatIsTooLargeIsNotRead();
    void onlyTheFirstUnknownTypesAreTold();

private:
    Measured measure(const QStringList &arguments) const;
    void verifyRefused(const QStringList &arguments, const QByteArray &line) const;
};

void TestHostileFiles::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

Measured TestHostileFiles::measure(const QStringList &arguments) const
{
    QList<QByteArray> command{QFile::encodeName(program)};
    for (const QString &argument : arguments)
        command.append(argument.toUtf8());
    const QByteArray folder = QFile::encodeName(m_folder->path());
    const pid_t child = fork();
    if (child == 0)
        become(command, folder);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    Measured measured;
    measured.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    measured.errors = read("errors");
    measured.seconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    measured.memory = usage.ru_maxrss / 1024;
    return measured;
}

void TestHostileFiles::verifyRefused(const QStringList &arguments, const QByteArray &line) const
{
    const Measured measured = measure(arguments);
    QCOMPARE(measured.errors, line + '\n');
    QCOMPARE(measured.status, 1);
    QVERIFY2(measured.seconds < mostSeconds, qPrintable(QString::number(measured.seconds)));
#ifndef META_SANITIZED
    QVERIFY2(measured.memory < mostMemory, qPrintable(QString::number(measured.memory)));
#endif
}

void TestHostileFiles::hostileShowIsRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("fault");

    const QByteArray map = "<show version=\"1\"><map>" + lights(1) + "</map>";
    const QByteArray solid = "<effect type=\"Solid\"/>";
    const QByteArray end = "</show>";
    QTest::newRow("a million effects in one another")
        << map + nested("<effect type=\"Meta Effect\">", "</effect>", 1'000'000) + end
        << QByteArray("elements are nested deeper than 250000");
    QTest::newRow("a hundred thousand effects in one another")
        << map + nested("<effect type=\"Meta Effect\">", "</effect>", 100'000) + end
        << QByteArray("effects are nested deeper than 256");
    QTest::newRow("a million elements in one another")
        << map + nested("<x>", "</x>", 1'000'000) + solid + end
        << QByteArray("elements are nested deeper than 250000");
    QTest::newRow("attributes") << map + manyAttributes(500'000) + end
                                << QByteArray("an element has more than 1000 attributes");
    QTest::newRow("children") << map + "<effect type=\"Meta Effect\">" + solid.repeated(250'000)
                                     + "</effect>" + end
                              << QByteArray("there are more than 250000 effects");
    QTest::newRow("effects") << map + solid.repeated(250'001) + end
                             << QByteArray("there are more than 250000 effects");
    QTest::newRow("lights") << "<show version=\"1\"><map>" + lights(100'001) + "</map>" + solid
                                   + end
                            << QByteArray("there are more than 100000 lights");
    QTest::newRow("groups") << "<show version=\"1\"><map>" + groups(100'001) + "</map>" + solid
                                   + end
                            << QByteArray("there are more than 100000 groups");
    QTest::newRow("lights of groups") << "<show version=\"1\"><map>" + lights(1)
                                             + largeGroups(12, 900'000) + "</map>" + solid + end
                                      << QByteArray("the groups have more than 10000000 lights");
    QTest::newRow("an attribute") << map + "<effect type=\"" + QByteArray(50'000'000, 'a') + "\"/>"
                                         + end
                                  << QByteArray("an attribute is longer than 33554432");
    QTest::newRow("a property") << map
                                       + effect("Solid",
                                                setting("name", QByteArray(50'000'000, 'a')))
                                       + end
                                << QByteArray("the property \"name\" is longer than 33554432");
    QTest::newRow("entities in entities")
        << entities() << QByteArray("a document type is not allowed here");
}

void TestHostileFiles::hostileShowIsRefused()
{
    QFETCH(const QByteArray, text);
    QFETCH(const QByteArray, fault);
    QVERIFY(write("a.show", text));
    verifyRefused({"render", "a.show"}, "a.show:1: " + fault);
}

void TestHostileFiles::hostileSequenceIsRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("fault");

    const QByteArray effect = "<Effect name=\"On\" startTime=\"0\" endTime=\"1\"/>";
    QTest::newRow("effects") << sequence({}, "<Element type=\"model\" name=\"a\"><EffectLayer>"
                                                 + effect.repeated(250'000)
                                                 + "</EffectLayer></Element>")
                             << QByteArray("there are more than 249999 effects");
    QTest::newRow("settings") << sequence(QByteArray("<Effect/>").repeated(250'001), {})
                              << QByteArray("there are more than 250000 settings");
    QTest::newRow("models") << sequence({}, models(100'001))
                            << QByteArray("there are more than 100000 models");
    QTest::newRow("elements in one another")
        << sequence({}, nested("<Element>", "</Element>", 1'000'000))
        << QByteArray("elements are nested deeper than 250000");
}

void TestHostileFiles::hostileSequenceIsRefused()
{
    QFETCH(const QByteArray, text);
    QFETCH(const QByteArray, fault);
    QVERIFY(write("a.xsq", text));
    verifyRefused({"import", "a.xsq", "-o", "a.show"}, "a.xsq:1: " + fault);
    QVERIFY(!QFile::exists(path("a.show")));
}

void TestHostileFiles::fileThatIsTooLargeIsNotRead()
{
    QFile large(path("a.show"));
    QVERIFY(large.open(QIODevice::WriteOnly));
    QVERIFY(large.resize(qint64(500) * 1024 * 1024));
    for (const char *command : {"render", "inspect"})
        verifyRefused({QString::fromLatin1(command), "a.show"},
                      "a.show: the file is larger than 256 MiB");
    verifyRefused({"import", "a.show", "-o", "b.show"}, "a.show: the file is larger than 256 MiB");
#ifndef META_SANITIZED // whose own memory counts too
    QVERIFY(measure({"inspect", "a.show"}).memory < 300);
#endif
}

// They are kept all the same.
void TestHostileFiles::onlyTheFirstUnknownTypesAreTold()
{
    QByteArray effects;
    for (int i = 0; i < 20'000; ++i)
        effects += "<effect type=\"Unknown " + QByteArray::number(i) + "\"/>";
    QVERIFY(write("a.show", show(effects)));
    const Measured measured = measure({"resolve", "a.show", "-o", "b.show"});
    QCOMPARE(measured.status, 0);
    QCOMPARE(measured.errors.count('\n'), 100);
    QVERIFY(measured.seconds < mostSeconds);
    QCOMPARE(read("b.show").count("<effect type=\"Unknown "), 20'000);
}

QTEST_GUILESS_MAIN(TestHostileFiles)
#include "tst_HostileFiles.moc"
