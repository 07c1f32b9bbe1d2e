#include "Effect.h"
#include "ShowFile.h"
#include "TestTypes.h"
#include "XmlInput.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using rehearsal::FileFault;
using rehearsal::Show;

namespace {

const QByteArray soundMap = "<map>\n"
                            "<light uid=\"1\" name=\"Left\" x=\"0.05\" y=\"0.20\"/>\n"
                            "<light uid=\"2\" name=\"Right\" x=\"1\" y=\"0\"/>\n"
                            "<group uid=\"7\" name=\"Both\" type=\"chasing\" lights=\"1 2\"/>\n"
                            "</map>\n";
const QByteArray soundEffect = "<effect type=\"Solid\">\n"
                               "<property key=\"gid\">7</property>\n"
                               "</effect>\n";

QByteArray showOf(const QByteArray &content)
{
    return "<show version=\"1\">\n" + content + "</show>\n";
}

/// A show with these lines in its map; the first of them is the show's line 3.
QByteArray showWithMap(const QByteArray &lines)
{
    return showOf("<map>\n" + lines + "</map>\n" + soundEffect);
}

QByteArray nestedEffects(int depth)
{
    return QByteArray("<effect type=\"Meta Effect\">\n").repeated(depth) +
           QByteArray("</effect>\n").repeated(depth);
}

/// Null, and the fault's whole line, when the text is not a sound show.
std::unique_ptr<Show> parse(const QByteArray &text, QString *message = nullptr)
{
    FileFault fault;
    std::unique_ptr<Show> show =
        rehearsal::parseShow(text, QStringLiteral("a.show"), allTypes(), &fault);
    if (message)
        *message = show ? QString() : fault.message();
    return show;
}

QByteArray contentOf(const QString &file)
{
    QFile input(file);
    return input.open(QIODevice::ReadOnly) ? input.readAll() : QByteArray("(unreadable)");
}

bool write(const QString &file, const QByteArray &text)
{
    QFile output(file);
    return output.open(QIODevice::WriteOnly) && output.write(text) == text.size();
}

/// Files cannot grow beyond a size while this lives: writing on fails as on a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    Q_DISABLE_COPY_MOVE(FileSizeLimit)

private:
    void (*m_handler)(int);
    rlimit m_before{};
};

} // namespace

class tst_ShowFile : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void soundShowGivesMapAndEffects();
    void groupMayStandBeforeItsLights();
    void unknownElementsAndAttributesAreSkipped();
    void deeplyNestedUnknownElementsAreSkipped();
    void unknownTypesAreKeptWordForWordAndReportedOnce_data();
    void unknownTypesAreKeptWordForWordAndReportedOnce();
    void loadedEffectsListsNestedOnesFirst();
    void effectsMayNestTo256();

    void faultNamesFileAndLine_data();
    void faultNamesFileAndLine();
    void effectsNestedDeeperThan256AreRefused();
    void largestNumbersAreAccepted();

    void savingWhatWasLoadedGivesTheSameText_data();
    void savingWhatWasLoadedGivesTheSameText();
    void savedTextIsInAFixedForm();

    void savedFileIsReadBack();
    void fileThatCannotBeReadIsAFault_data();
    void fileThatCannotBeReadIsAFault();
    void fileThatIsTooLargeIsAFault();
    void failedSaveLeavesTheOldFileWhole_data();
    void failedSaveLeavesTheOldFileWhole();
    void saveWhereNothingCanBeWrittenIsAFault_data();
    void saveWhereNothingCanBeWrittenIsAFault();
    void saveToAPipeLeavesThePipe();

private:
    QTemporaryDir m_folder;
};

void tst_ShowFile::init()
{
    QVERIFY(m_folder.isValid());
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
}

void tst_ShowFile::soundShowGivesMapAndEffects()
{
    const std::unique_ptr<Show> show =
        parse(showOf("<map>\n"
                     "<light uid=\"9\" name=\"Ro&amp;of\" x=\"0.05\" y=\"1e-1\"/>\n"
                     "<light uid=\"3\" x=\" 1 \" y=\"0\"/>\n"
                     "<group uid=\"5\" name=\"All\" type=\"synchronized\" lights=\"9 3\"/>\n"
                     "<group uid=\"4\" name=\"Run\" type=\"chasing\" lights=\" 3  9 3\"/>\n"
                     "<group uid=\"6\" name=\"One\" type=\"leaf\" lights=\"9\"/>\n"
                     "</map>\n"
                     "<effect type=\"Solid\"><property key=\"name\">a</property></effect>\n"
                     "<effect type=\"Ramp\"><property key=\"name\">b</property></effect>\n"));
    QVERIFY(show);

    QCOMPARE(show->map().lights().size(), std::size_t(2));
    const rehearsal::StageLight *light = show->map().light(9);
    QVERIFY(light);
    QCOMPARE(light->name(), QStringLiteral("Ro&of"));
    QCOMPARE(light->place(), QPointF(0.05, 0.1));
    QCOMPARE(show->map().light(3)->place(), QPointF(1, 0));
    QCOMPARE(show->map().light(3)->name(), QString());

    QCOMPARE(show->map().groups().size(), std::size_t(3));
    QCOMPARE(show->map().group(5)->groupType(), SynchronizedGroup);
    QCOMPARE(show->map().group(4)->groupType(), ChasingGroup);
    QCOMPARE(show->map().group(6)->groupType(), LeafGroup);
    QCOMPARE(show->map().group(4)->name(), QStringLiteral("Run"));
    QList<quint32> order;
    for (const rehearsal::StageLight *inGroup : show->map().group(4)->lights())
        order.append(inGroup->uid());
    QCOMPARE(order, (QList<quint32>{3, 9, 3}));

    QCOMPARE(show->effects().size(), 2);
    QCOMPARE(show->effects()[0]->getPropertyString(QStringLiteral("name")), QStringLiteral("a"));
    QCOMPARE(show->effects()[1]->getPropertyString(QStringLiteral("name")), QStringLiteral("b"));
    QCOMPARE(show->effects()[1]->getPropertyString(QStringLiteral("type")), QStringLiteral("Ramp"));
}

void tst_ShowFile::groupMayStandBeforeItsLights()
{
    const std::unique_ptr<Show> show =
        parse(showWithMap("<group uid=\"1\" type=\"leaf\" lights=\"8\"/>\n"
                          "<light uid=\"8\" x=\"0\" y=\"0\"/>\n"));
    QVERIFY(show);
    QCOMPARE(show->map().group(1)->lights(), QList{show->map().light(8)});
}

void tst_ShowFile::unknownElementsAndAttributesAreSkipped()
{
    const std::unique_ptr<Show> show =
        parse("\xEF\xBB\xBF<?xml version=\"1.0\"?><!-- a comment -->\n"
              "<show version=\"1\" by=\"me\"><new><light/><map/><effect/></new>\n"
              "<map size=\"2\"><wall><light uid=\"x\"/></wall>text\n"
              "<light uid=\"1\" x=\"0\" y=\"0\" z=\"5\"><lamp/></light></map>\n"
              "<effect type=\"Solid\" since=\"9\"><hint><property key=\"gid\">8</property></hint>\n"
              "<property key=\"gid\" unit=\"none\">7<b/></property></effect><?end?></show>\n");
    QVERIFY(show);
    QCOMPARE(show->map().lights().size(), std::size_t(1));
    QCOMPARE(show->map().groups().size(), std::size_t(0));
    QCOMPARE(show->effects().size(), 1);
    QCOMPARE(show->effects()[0]->getPropertyString(QStringLiteral("gid")), QStringLiteral("7"));
}

void tst_ShowFile::deeplyNestedUnknownElementsAreSkipped()
{
    const int depth = 200000;
    const QByteArray deep = QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth);
    QVERIFY(parse(showOf(deep + soundMap + "<effect type=\"Solid\"><property key=\"a\">" + deep +
                         "</property>" + deep + "</effect>")));
}

void tst_ShowFile::unknownTypesAreKeptWordForWordAndReportedOnce_data()
{
    QTest::addColumn<QByteArray>("mark");
    QTest::newRow("plain") << QByteArray();
    QTest::newRow("behind a byte order mark") << QByteArray("\xEF\xBB\xBF");
    QTest::newRow("behind two of them") << QByteArray("\xEF\xBB\xBF\xEF\xBB\xBF");
}

void tst_ShowFile::unknownTypesAreKeptWordForWordAndReportedOnce()
{
    const QByteArray unknown = "<effect type='Fog' new='1'><a:b>&lt;</a:b>"
                               "<effect type=\"Solid\"/></effect>";
    const QByteArray text = showOf(soundMap + "<effect type=\"Meta Effect\">\n" + unknown +
                                   "\n<effect type=\"Mist\"/></effect>\n" + unknown + "\n");
    QFETCH(QByteArray, mark);
    const std::unique_ptr<Show> show = parse(mark + text);
    QVERIFY(show);
    const std::vector<std::pair<QString, qint64>> expected{{QStringLiteral("Fog"), 8},
                                                           {QStringLiteral("Mist"), 9}};
    QCOMPARE(show->unknownTypes(), expected);
    QCOMPARE(rehearsal::showText(*show).count(QString::fromUtf8(unknown)), 2);
}

void tst_ShowFile::loadedEffectsListsNestedOnesFirst()
{
    const std::unique_ptr<Show> show =
        parse(showOf(soundMap + "<effect type=\"Meta Effect\"><effect type=\"Solid\"/>"
                                "<effect type=\"Ramp\"/></effect><effect type=\"Pulse\"/>"));
    QVERIFY(show);
    QStringList types;
    for (const Effect *effect : show->loadedEffects())
        types.append(effect->getPropertyString(QStringLiteral("type")));
    QCOMPARE(types.join(u' '), QStringLiteral("Solid Ramp Meta Effect Pulse"));
    QVERIFY(show->unknownTypes().empty());
}

void tst_ShowFile::effectsMayNestTo256()
{
    const std::unique_ptr<Show> show = parse(showOf(soundMap + nestedEffects(256)));
    QVERIFY(show);
    QCOMPARE(rehearsal::showText(*show).count(QStringLiteral("<effect ")), 256);
}

void tst_ShowFile::faultNamesFileAndLine_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *name, const QByteArray &text, const QByteArray &message) {
        QTest::newRow(name) << text << QStringLiteral("a.show") + QString::fromUtf8(message);
    };

    row("empty", "", ": the file is empty");
    row("white space", " \n \n", ":3: the file is cut short");
    row("not UTF-8", showOf("<map/>\n<!-- \xE4 -->"), ":3: this is not text in UTF-8");
    row("half a character", "<show>\n\n\xC3", ":3: this is not text in UTF-8");
    row("not XML", "time_ms,1,2\n0,0,0\n", ":1: this is not XML: Start tag expected.");
    row("wrong end tag", "<show version=\"1\">\n<map>\n</show>",
        ":3: this is not XML: Opening and ending tag mismatch.");
    row("no such entity", "<show version=\"1\">\n&me;</show>",
        ":2: this is not XML: Entity 'me' not declared.");
    row("a second document", showOf(soundMap + soundEffect) + "<show/>",
        ":11: this is not XML: Extra content at end of document.");
    row("cut short in an element", "<show version=\"1\">\n<map>\n", ":3: the file is cut short");
    row("cut short in a tag", showOf(soundMap + soundEffect).chopped(3),
        ":10: the file is cut short");
    row("cut short in an effect", showOf(soundMap + soundEffect).chopped(20),
        ":8: the file is cut short");
    row("document type", "<!DOCTYPE show [\n<!ENTITY a \"b\">\n]>\n<show version=\"1\">&a;</show>",
        ":3: a document type is not allowed here");
    row("document type inside", "<show version=\"1\">\n<!DOCTYPE show []></show>",
        ":2: a document type is not allowed here");
    row("not a show", "<?xml version=\"1.0\"?>\n<xsequence/>",
        ":2: this is not a show: its outermost element is \"xsequence\"");
    row("no version", "<show>\n</show>", ":1: the show has no version");
    row("later version", "\n<show version=\"2\">\n</show>",
        ":2: the show has the version \"2\", only \"1\" is known");

    row("no map", showOf(soundEffect), ":1: the show has no map");
    row("two maps", showOf(soundMap + "<map/>" + soundEffect), ":7: the show has a second map");
    row("no effect", showOf(soundMap), ":1: the show has no effect");

    const auto light = [&row](const char *name, const QByteArray &attributes, const char *message) {
        row(name, showWithMap("<light uid=\"3\" x=\"0\" y=\"0\"/>\n<light " + attributes + "/>\n"),
            message);
    };
    light("light twice", "uid=\"3\" x=\"0\" y=\"0\"", ":4: light 3 is there twice");
    light("light without uid", "x=\"0\" y=\"0\"", ":4: a light has no uid");
    light("light with uid 0", "uid=\"0\" x=\"0\" y=\"0\"",
          ":4: a light has the uid \"0\", not a number from 1 to 4294967295");
    light("light with negative uid", "uid=\"-1\" x=\"0\" y=\"0\"",
          ":4: a light has the uid \"-1\", not a number from 1 to 4294967295");
    light("light with signed uid", "uid=\"+4\" x=\"0\" y=\"0\"",
          ":4: a light has the uid \"+4\", not a number from 1 to 4294967295");
    light("light with too big uid", "uid=\"4294967296\" x=\"0\" y=\"0\"",
          ":4: a light has the uid \"4294967296\", not a number from 1 to 4294967295");
    light("light with uid in words", "uid=\"one\" x=\"0\" y=\"0\"",
          ":4: a light has the uid \"one\", not a number from 1 to 4294967295");
    light("light with fractional uid", "uid=\"1.0\" x=\"0\" y=\"0\"",
          ":4: a light has the uid \"1.0\", not a number from 1 to 4294967295");
    light("light without x", "uid=\"4\" y=\"0\"", ":4: light 4 has no x");
    light("light without y", "uid=\"4\" x=\"0\"", ":4: light 4 has no y");
    light("x in words", "uid=\"4\" x=\"left\" y=\"0\"",
          ":4: light 4 has the x \"left\", not a number from 0 to 1");
    light("x is nan", "uid=\"4\" x=\"nan\" y=\"0\"",
          ":4: light 4 has the x \"nan\", not a number from 0 to 1");
    light("y is infinite", "uid=\"4\" x=\"0\" y=\"inf\"",
          ":4: light 4 has the y \"inf\", not a number from 0 to 1");
    light("x above 1", "uid=\"4\" x=\"1.01\" y=\"0\"",
          ":4: light 4 has the x \"1.01\", not a number from 0 to 1");
    light("y below 0", "uid=\"4\" x=\"0\" y=\"-0.01\"",
          ":4: light 4 has the y \"-0.01\", not a number from 0 to 1");

    const auto group = [&row](const char *name, const QByteArray &attributes, const char *message) {
        row(name,
            showWithMap("<light uid=\"3\" x=\"0\" y=\"0\"/>\n"
                        "<group uid=\"7\" type=\"leaf\" lights=\"3\"/>\n<group\n" +
                        attributes + "/>\n"),
            message);
    };
    group("group twice", "uid=\"7\" type=\"leaf\" lights=\"3\"", ":6: group 7 is there twice");
    group("group without uid", "type=\"leaf\" lights=\"3\"", ":6: a group has no uid");
    group("group with uid 0", "uid=\"0\" type=\"leaf\" lights=\"3\"",
          ":6: a group has the uid \"0\", not a number from 1 to 4294967295");
    group("group with too big uid", "uid=\"9999999999\" type=\"leaf\" lights=\"3\"",
          ":6: a group has the uid \"9999999999\", not a number from 1 to 4294967295");
    group("group of unknown type", "uid=\"8\" type=\"Leaf\" lights=\"3\"",
          ":6: group 8 has the type \"Leaf\", not chasing, synchronized or leaf");
    group("group without type", "uid=\"8\" lights=\"3\"",
          ":6: group 8 has the type \"\", not chasing, synchronized or leaf");
    group("group without lights", "uid=\"8\" type=\"chasing\"", ":6: group 8 has no lights");
    group("group of no lights", "uid=\"8\" type=\"chasing\" lights=\" \"",
          ":6: group 8 has no lights");
    group("group with a missing light", "uid=\"8\" type=\"chasing\" lights=\"3 4 5\"",
          ":6: group 8 names light 4, which is missing");
    group("group with a light in words", "uid=\"8\" type=\"chasing\" lights=\"3,4\"",
          ":6: group 8 names the light \"3,4\", which is not a uid");
    group("leaf of two lights", "uid=\"8\" type=\"leaf\" lights=\"3 3\"",
          ":6: leaf group 8 has 2 lights, not one");

    row("bad base64",
        showOf(soundMap + "<effect type=\"Solid\">\n<property key=\"a\" encoding=\"base64\">%%%"
                          "</property></effect>"),
        ":8: the property \"a\" is not base64");
    light("uid over two lines", "uid=\"1&#10;&#9;2\" x=\"0\" y=\"0\"",
          ":4: a light has the uid \"1 2\", not a number from 1 to 4294967295");
    row("very long version", "<show version=\"" + QByteArray(100000, '3') + "\"/>",
        ":1: the show has the version \"" + QByteArray(274, '3') + "...");
    row("only the first of two faults",
        showWithMap("<light uid=\"0\" x=\"0\" y=\"0\"/>\n<light uid=\"none\"/>\n"),
        ":3: a light has the uid \"0\", not a number from 1 to 4294967295");
}

void tst_ShowFile::faultNamesFileAndLine()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, message);
    QString actual;
    QVERIFY(!parse(text, &actual));
    QCOMPARE(actual, message);
}

void tst_ShowFile::effectsNestedDeeperThan256AreRefused()
{
    QString message;
    QVERIFY(!parse(showOf(soundMap + nestedEffects(257)), &message));
    QCOMPARE(message, QStringLiteral("a.show:263: effects are nested deeper than 256"));
    QVERIFY(!parse(showOf(soundMap + nestedEffects(100000)), &message));
    QCOMPARE(message, QStringLiteral("a.show:263: effects are nested deeper than 256"));
}

void tst_ShowFile::largestNumbersAreAccepted()
{
    const std::unique_ptr<Show> show =
        parse(showWithMap("<light uid=\"4294967295\" x=\"1\" y=\"1.0\"/>\n"
                          "<group uid=\"4294967295\" type=\"leaf\" lights=\"4294967295\"/>\n"));
    QVERIFY(show);
    QVERIFY(show->map().light(4294967295));
    QVERIFY(show->map().group(4294967295));
}

void tst_ShowFile::savingWhatWasLoadedGivesTheSameText_data()
{
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("minimal") << showOf("<map/>" + soundEffect);
    QTest::newRow("every host type") << showOf(
        soundMap + "<effect type=\"Meta Effect\"><effect type=\"Solid\"/><effect type=\"Ramp\"/>"
                   "<effect type=\"Chase\"/><effect type=\"Pulse\"/><effect type=\"Strobe\"/>"
                   "<effect type=\"Twinkle\"/><effect type=\"White Fade\"/></effect>");
    QTest::newRow("meta effects in meta effects") << showOf(
        soundMap + "<effect type=\"Meta Effect\"><effect type=\"Meta Effect\">"
                   "<property key=\"begin\">500</property><property key=\"end\">900</property>"
                   "<effect type=\"Solid\"><property key=\"end\">300</property></effect>"
                   "</effect></effect>");
    QTest::newRow("texts that need care") << showOf(
        "<map><light uid=\"1\" name=\"&lt;&quot;&amp;&#9;&#10;&#13;'\xF0\x9F\x92\xA1\""
        " x=\"0.1\" y=\"0.30000000000000004\"/></map>"
        "<effect type=\"Solid\"><property key=\"&#9;&lt;&quot;\"> &lt;]]&gt;&amp;\n&#13;\t"
        "</property><property key=\"u\" encoding=\"base64\">AAE=</property>"
        "<property>no key</property><property key=\"gid\">not a number</property></effect>");
    QTest::newRow("coordinates") << showWithMap(
        "<light uid=\"1\" x=\"0.1\" y=\"0.20000000000000001\"/>"
        "<light uid=\"2\" x=\"1e-300\" y=\"5e-324\"/>"
        "<light uid=\"3\" x=\"-0\" y=\"0.333333333333333314829616256247\"/>");
    QTest::newRow("unknown types") << showOf(
        soundMap + "<effect type=\"Fog\" build=\"old\"><property key=\"begin\">5</property>\r\n"
                   "<x:y><![CDATA[<effect>]]></x:y><effect type=\"Deep &amp; low\"/></effect>"
                   "<effect type=\"Meta Effect\"><effect type=\"Fog\"/></effect><effect/>");
    QTest::newRow("children out of order") << showOf(
        soundMap +
        "<effect type=\"Meta Effect\">"
        "<effect type=\"Solid\"><property key=\"priority\">9</property></effect>"
        "<effect type=\"Ramp\"><property key=\"priority\">3</property></effect></effect>");
}

void tst_ShowFile::savingWhatWasLoadedGivesTheSameText()
{
    QFETCH(QByteArray, text);
    QString message;
    const std::unique_ptr<Show> loaded = parse(text, &message);
    QCOMPARE(message, QString());
    const QString saved = rehearsal::showText(*loaded);
    const std::unique_ptr<Show> reloaded = parse(saved.toUtf8(), &message);
    QCOMPARE(message, QString());
    QCOMPARE(rehearsal::showText(*reloaded), saved);
}

void tst_ShowFile::savedTextIsInAFixedForm()
{
    const std::unique_ptr<Show> show =
        parse(showOf("<map><group uid=\"9\" name=\"b\" type=\"leaf\" lights=\"2\"/>"
                     "<group uid=\"7\" name=\"a\" type=\"chasing\" lights=\"2 1\"/>"
                     "<light uid=\"2\" name=\"R\" x=\"0.30000000000000004\" y=\"0.20\"/>"
                     "<light uid=\"1\" name=\"L\" x=\"0\" y=\"0.050\"/></map>"
                     "<effect type=\"Fog\"/>"));
    QVERIFY(show);
    QCOMPARE(
        rehearsal::showText(*show),
        QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<show version=\"1\">\n"
                       "  <map>\n"
                       "    <light uid=\"1\" name=\"L\" x=\"0\" y=\"0.05\"/>\n"
                       "    <light uid=\"2\" name=\"R\" x=\"0.30000000000000004\" y=\"0.2\"/>\n"
                       "    <group uid=\"7\" name=\"a\" type=\"chasing\" lights=\"2 1\"/>\n"
                       "    <group uid=\"9\" name=\"b\" type=\"leaf\" lights=\"2\"/>\n"
                       "  </map>\n"
                       "  <effect type=\"Fog\"/>\n"
                       "</show>\n"));
}

void tst_ShowFile::savedFileIsReadBack()
{
    const QString file = m_folder.filePath(QStringLiteral("saved.show"));
    const std::unique_ptr<Show> show = parse(showOf(soundMap + soundEffect));
    FileFault fault;
    QVERIFY2(rehearsal::saveShow(*show, file, &fault), qPrintable(fault.message()));
    QCOMPARE(QString::fromUtf8(contentOf(file)), rehearsal::showText(*show));

    const std::unique_ptr<Show> loaded = rehearsal::readShow(file, allTypes(), &fault);
    QVERIFY2(loaded, qPrintable(fault.message()));
    QVERIFY2(rehearsal::saveShow(*loaded, file, &fault), qPrintable(fault.message()));
    QCOMPARE(QString::fromUtf8(contentOf(file)), rehearsal::showText(*show));
    QCOMPARE(QDir(m_folder.path()).entryList({QStringLiteral("saved*")}, QDir::AllEntries),
             QStringList{QStringLiteral("saved.show")});
}

void tst_ShowFile::fileThatCannotBeReadIsAFault_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("what");

    const QString plain = m_folder.filePath(QStringLiteral("plain.txt"));
    QVERIFY(write(plain, "text"));
    QTest::newRow("missing") << m_folder.filePath(QStringLiteral("none.show"))
                             << QStringLiteral(
                                    "the file cannot be read: No such file or directory");
    QTest::newRow("below a file") << plain + QStringLiteral("/none.show")
                                  << QStringLiteral("the file cannot be read: Not a directory");
    QTest::newRow("directory") << m_folder.path() << QStringLiteral("this is a directory");
}

void tst_ShowFile::fileThatCannotBeReadIsAFault()
{
    QFETCH(QString, file);
    QFETCH(QString, what);
    FileFault fault;
    QVERIFY(!rehearsal::readShow(file, allTypes(), &fault));
    QCOMPARE(fault.message(), QStringLiteral("%1: %2").arg(file, what));
}

void tst_ShowFile::fileThatIsTooLargeIsAFault()
{
    QFile file(m_folder.filePath(QStringLiteral("large.show")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.resize(rehearsal::maximumFileSize + 1));
    FileFault fault;
    QVERIFY(!rehearsal::readShow(file.fileName(), allTypes(), &fault));
    QCOMPARE(fault.message(),
             QStringLiteral("%1: the file is larger than 256 MiB").arg(file.fileName()));
}

void tst_ShowFile::failedSaveLeavesTheOldFileWhole_data()
{
    QTest::addColumn<int>("effects");
    QTest::addColumn<int>("roomFor");
    QTest::newRow("no room at all") << 1 << 0;
    QTest::newRow("small show") << 10 << 500;
    QTest::newRow("large show") << 2000 << 100000;
}

void tst_ShowFile::failedSaveLeavesTheOldFileWhole()
{
    QFETCH(int, effects);
    QFETCH(int, roomFor);
    const QString file = m_folder.filePath(QStringLiteral("old.show"));
    QVERIFY(write(file, "what was there before"));
    const std::unique_ptr<Show> show = parse(showOf(soundMap + soundEffect.repeated(effects)));
    FileFault fault;
    bool isSaved = true;
    {
        const FileSizeLimit limit(static_cast<rlim_t>(roomFor));
        isSaved = rehearsal::saveShow(*show, file, &fault);
    }
    QVERIFY(!isSaved);
    QCOMPARE(fault.message(),
             QStringLiteral("%1: the show cannot be saved: File too large").arg(file));
    QCOMPARE(contentOf(file), QByteArray("what was there before"));
    QCOMPARE(QDir(m_folder.path()).entryList({QStringLiteral("old*")}, QDir::AllEntries),
             QStringList{QStringLiteral("old.show")});
}

void tst_ShowFile::saveWhereNothingCanBeWrittenIsAFault_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("what");

    const QString plain = m_folder.filePath(QStringLiteral("plain.txt"));
    QVERIFY(write(plain, "text"));
    QTest::newRow("directory gone") << m_folder.filePath(QStringLiteral("gone/a.show"))
                                    << QStringLiteral("No such file or directory");
    QTest::newRow("below a file") << plain + QStringLiteral("/a.show")
                                  << QStringLiteral("Not a directory");
    QTest::newRow("a directory") << m_folder.path() << QStringLiteral("this is not a regular file");
}

void tst_ShowFile::saveWhereNothingCanBeWrittenIsAFault()
{
    QFETCH(QString, file);
    QFETCH(QString, what);
    const std::unique_ptr<Show> show = parse(showOf(soundMap + soundEffect));
    FileFault fault;
    QVERIFY(!rehearsal::saveShow(*show, file, &fault));
    QCOMPARE(fault.message(), QStringLiteral("%1: the show cannot be saved: %2").arg(file, what));
    QCOMPARE(contentOf(m_folder.filePath(QStringLiteral("plain.txt"))), QByteArray("text"));
}

void tst_ShowFile::saveToAPipeLeavesThePipe()
{
    const QString file = m_folder.filePath(QStringLiteral("pipe"));
    QCOMPARE(mkfifo(QFile::encodeName(file).constData(), 0600), 0);
    const std::unique_ptr<Show> show = parse(showOf(soundMap + soundEffect));
    FileFault fault;
    QVERIFY(!rehearsal::saveShow(*show, file, &fault));
    QCOMPARE(fault.message(),
             QStringLiteral("%1: the show cannot be saved: this is not a regular file").arg(file));
    struct stat status
    {
    };
    QCOMPARE(stat(QFile::encodeName(file).constData(), &status), 0);
    QVERIFY(S_ISFIFO(status.st_mode));
}

QTEST_GUILESS_MAIN(tst_ShowFile)
#include "tst_ShowFile.moc"
