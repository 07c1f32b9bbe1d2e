#include "Effect.h"
#include "EffectHost.h"
#include "EffectWatch.h"
#include "Player.h"
#include "ShowFile.h"
#include "TestTypes.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>

using rehearsal::definitionText;
using rehearsal::FileFault;
using rehearsal::Player;
using rehearsal::Show;
using rehearsal::showText;

namespace {

QTime timeOf(int ms)
{
    return QTime::fromMSecsSinceStartOfDay(ms);
}

QByteArray showOf(const QByteArray &effects)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<show version=\"1\">\n  <map>\n"
           "    <light uid=\"1\" name=\"\" x=\"0\" y=\"0\"/>\n"
           "    <group uid=\"7\" name=\"\" type=\"leaf\" lights=\"1\"/>\n  </map>\n"
           + effects + "</show>\n";
}

/// A meta effect with its own priority and transparency around these effects.
QByteArray lender(const QByteArray &nested)
{
    return "  <effect type=\"Meta Effect\">\n<property key=\"priority\">5</property>\n"
           "<property key=\"transparency\">0.25</property>\n"
           + nested + "  </effect>\n";
}

/// An effect of a type that fades over a second each way in 3 seconds.
QByteArray fading(const QByteArray &type, const QByteArray &more = {})
{
    return "    <effect type=\"" + type
           + "\">\n<property key=\"end\">3000</property>\n<property key=\"gid\">7</property>\n"
             "<property key=\"fadein\">1000</property>\n<property key=\"fadeout\">1000</property>\n"
           + more + "    </effect>\n";
}

std::unique_ptr<Show> showFrom(const QByteArray &text)
{
    FileFault fault;
    auto show = rehearsal::parseShow(text, QStringLiteral("s"), allTypes(), &fault);
    if (!show)
        qFatal("%s", qPrintable(fault.message()));
    return show;
}

QByteArray exampleShow(const QString &name)
{
    QFile file(QStringLiteral(META_SOURCE_DIR "/examples/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Effect *firstNested(const Show &show)
{
    return EffectHost::nested(*show.effects().first()).front();
}

QString textOf(const Effect &effect, const QString &key)
{
    return effect.getPropertyString(key);
}

QStringList namesOf(const std::vector<Effect *> &effects)
{
    QStringList names;
    for (const Effect *effect : effects)
        names.append(textOf(*effect, QStringLiteral("name")));
    return names;
}

QByteArray named(const QByteArray &type, const QByteArray &name, int priority,
                 const QByteArray &nested = {})
{
    return "<effect type=\"" + type + "\"><property key=\"name\">" + name
           + "</property><property key=\"priority\">" + QByteArray::number(priority) + "</property>"
           + nested + "</effect>\n";
}

/// A show that is being played by hand.
class PlayedShow
{
public:
    explicit PlayedShow(const QByteArray &text)
        : show(showFrom(text)), player(show->map(), show->effects())
    {
        show->map().clock().step(timeOf(0));
        player.start();
    }

    void frame(int ms)
    {
        player.frame(timeOf(ms), 0);
        show->map().clock().step(timeOf(ms));
    }
    QByteArray definition() const { return definitionText(*show); }

    std::unique_ptr<Show> show;
    Player player;
};

/// Notes what it is told, and what the property was at that moment.
class NotingWatch final : public rehearsal::EffectWatch
{
public:
    explicit NotingWatch(rehearsal::StageMap &map) : m_map(map) { map.setWatch(this); }
    ~NotingWatch() { m_map.setWatch(nullptr); }
    Q_DISABLE_COPY_MOVE(NotingWatch)

    void effectChanged(Effect &effect, const QString &key) override
    {
        changes.append(key + u'=' + effect.getPropertyString(key));
        changed.append(&effect);
    }
    void effectsCameOrWent() override { ++comings; }

    QStringList changes;
    QList<const Effect *> changed;
    int comings = 0;

private:
    rehearsal::StageMap &m_map;
};

/// A line of an effect's own in a show that was saved.
QByteArray propertyLine(const QByteArray &key, const QByteArray &text)
{
    return "<property key=\"" + key + "\">" + text + "</property>";
}

} // namespace

/// What the host asks effects besides what an effect type sees, and what it is told of them.
class tst_EffectHooks : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral("."))); }

    void nestedEffectsAreListedInTheirOrderWithoutDeeperOnes();
    void effectsThatHoldNoneHaveNoneNested_data();
    void effectsThatHoldNoneHaveNoneNested();
    void listingLeavesSavingAsItWas();

    void definitionIsTheSameWhilePlaying_data();
    void definitionIsTheSameWhilePlaying();
    void definitionOfAnUnplayedShowIsItsText_data();
    void definitionOfAnUnplayedShowIsItsText();
    void plainSavingShowsWhatPlaybackWrote();
    void whatIsSetBetweenFramesIsTheDefinition_data();
    void whatIsSetBetweenFramesIsTheDefinition();
    void settingBackRestoresTheDefinition();
    void otherPropertiesAreSavedAsTheyAre();
    void childAddedWhilePlayingIsSavedAsItWasGiven();
    void definitionsAreSavedUntilTheOutermostScopeEnds();
    void unknownEffectKeepsItsBytesAlthoughItIsPlayed_data();
    void unknownEffectKeepsItsBytesAlthoughItIsPlayed();
    void unknownEffectTakesWhatIsSetBetweenFrames();

    void watchIsToldOfComingAndGoing();
    void watchIsToldOfEveryChange_data();
    void watchIsToldOfEveryChange();
    void watchIsNotToldOfTheSameText_data();
    void watchIsNotToldOfTheSameText();
    void watchHearsOfNestedEffects();
    void framesAreNotReported();
    void otherChangesInFramesAreReported_data();
    void otherChangesInFramesAreReported();
    void definitionThatBecomesWhatAFrameWroteIsReported_data();
    void definitionThatBecomesWhatAFrameWroteIsReported();
    void removedWatchHearsNothing();
    void effectWithoutAMapNeedsNoWatch();

    void savedBytesAreWrittenAsTheyAre_data();
    void savedBytesAreWrittenAsTheyAre();
    void bytesThatCannotBeWrittenAreAFault_data();
    void bytesThatCannotBeWrittenAreAFault();
};

// --- Nested effects ---

void tst_EffectHooks::nestedEffectsAreListedInTheirOrderWithoutDeeperOnes()
{
    const std::unique_ptr<Show> show = showFrom(showOf(named(
        "Meta Effect", "top", 0,
        named("Solid", "c", 2)
            + named("Meta Effect", "b", 1,
                    named("Ramp", "b1", 0) + named("Meta Effect", "b2", 0, named("Ramp", "b21", 0)))
            + named("Strange", "a", 0) + named("Solid", "d", 2))));
    Effect *top = show->effects().first();
    const std::vector<Effect *> nested = EffectHost::nested(*top);
    QCOMPARE(namesOf(nested), QStringList({"a", "b", "c", "d"}));
    for (const Effect *effect : nested)
        QCOMPARE(EffectHost::level(*effect), 1);
    const std::vector<Effect *> deeper = EffectHost::nested(*nested[1]);
    QCOMPARE(namesOf(deeper), QStringList({"b1", "b2"}));
    QCOMPARE(namesOf(EffectHost::nested(*deeper[1])), QStringList({"b21"}));
    QCOMPARE(EffectHost::level(*deeper[0]), 2);
}

void tst_EffectHooks::effectsThatHoldNoneHaveNoneNested_data()
{
    QTest::addColumn<QByteArray>("effect");
    const QByteArray inner = named("Ramp", "inner", 0);
    QTest::newRow("meta effect without children") << named("Meta Effect", "m", 0);
    QTest::newRow("one of the host's own") << named("Solid", "s", 0);
    QTest::newRow("one of the host's own around text") << named("Solid", "s", 0, inner);
    QTest::newRow("unknown") << named("Strange", "s", 0);
    QTest::newRow("unknown around text") << named("Strange", "s", 0, inner);
}

void tst_EffectHooks::effectsThatHoldNoneHaveNoneNested()
{
    QFETCH(QByteArray, effect);
    const std::unique_ptr<Show> show = showFrom(showOf(effect));
    QVERIFY(EffectHost::nested(*show->effects().first()).empty());
}

void tst_EffectHooks::listingLeavesSavingAsItWas()
{
    const std::unique_ptr<Show> show = showFrom(exampleShow(QStringLiteral("minimal.show")));
    const QString before = showText(*show);
    {
        const EffectHost::SavingDefinitions definitions;
        QCOMPARE(EffectHost::nested(*show->effects().first()).size(), std::size_t{2});
    }
    QCOMPARE(EffectHost::nested(*show->effects().first()).size(), std::size_t{2});
    QCOMPARE(showText(*show), before);
}

// --- Definitions ---

void tst_EffectHooks::definitionIsTheSameWhilePlaying_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("facade") << exampleShow(QStringLiteral("facade.show"));
    QTest::newRow("minimal") << exampleShow(QStringLiteral("minimal.show"));
    const QByteArray own = "<property key=\"transparency\">0.125</property>\n"
                           "<property key=\"priority\">3</property>\n";
    QTest::newRow("lent") << showOf(lender(fading("Solid", own)));
    QTest::newRow("nested") << showOf(lender("<effect type=\"Meta Effect\">"
                                             "<property key=\"priority\">2</property>\n"
                                             "<property key=\"end\">3000</property>\n"
                                             + fading("Solid", own) + "</effect>"));
    QTest::newRow("texts that are written otherwise")
        << showOf(lender(fading("Solid", "<property key=\"transparency\">0.5000</property>\n"
                                         "<property key=\"priority\">007</property>\n")));
    QTest::newRow("texts that are no numbers")
        << showOf(lender(fading("Solid", "<property key=\"transparency\">half</property>\n"
                                         "<property key=\"priority\"></property>\n")));
    QTest::newRow("unknown") << showOf(lender(fading("Strange", own)));
}

void tst_EffectHooks::definitionIsTheSameWhilePlaying()
{
    QFETCH(QByteArray, text);
    PlayedShow played(text);
    const QByteArray before = definitionText(*showFrom(text));
    QCOMPARE(played.definition(), before);
    bool hasPlaybackWritten = false;
    for (int ms = 0; ms < 5000; ms += 100) {
        played.frame(ms);
        QCOMPARE(played.definition(), before);
        hasPlaybackWritten = hasPlaybackWritten || showText(*played.show).toUtf8() != before;
    }
    QVERIFY(hasPlaybackWritten);
    played.player.stop();
    QCOMPARE(played.definition(), before);
}

void tst_EffectHooks::definitionOfAnUnplayedShowIsItsText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("facade") << exampleShow(QStringLiteral("facade.show"));
    QTest::newRow("minimal") << exampleShow(QStringLiteral("minimal.show"));
}

void tst_EffectHooks::definitionOfAnUnplayedShowIsItsText()
{
    QFETCH(QByteArray, text);
    const std::unique_ptr<Show> show = showFrom(text);
    QCOMPARE(definitionText(*show), text);
    QCOMPARE(showText(*show).toUtf8(), text);
}

void tst_EffectHooks::plainSavingShowsWhatPlaybackWrote()
{
    PlayedShow played(
        showOf(lender(fading("Solid", "<property key=\"transparency\">0.125</property>\n"))));
    played.frame(0);
    QString text;
    QTextStream stream(&text);
    firstNested(*played.show)->save(stream);
    stream.flush();
    QVERIFY(text.contains(QString::fromUtf8(propertyLine("transparency", "1"))));
}

void tst_EffectHooks::whatIsSetBetweenFramesIsTheDefinition_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("frameMs"); // the frame before
    const QString transparency = QStringLiteral("transparency");
    const QString priority = QStringLiteral("priority");
    QTest::newRow("transparency before the first frame") << transparency << "0.75" << -1;
    QTest::newRow("transparency while it fades in") << transparency << "0.75" << 500;
    QTest::newRow("transparency between the fades") << transparency << "0.75" << 1500;
    QTest::newRow("transparency after its end") << transparency << "0.75" << 3500;
    QTest::newRow("transparency as a frame wrote it") << transparency << "0.625" << 500;
    QTest::newRow("transparency as it is between the fades") << transparency << "0.25" << 1500;
    QTest::newRow("transparency that is no number") << transparency << "much" << 1500;
    QTest::newRow("priority before the first frame") << priority << "2" << -1;
    QTest::newRow("priority while it plays") << priority << "2" << 1500;
    QTest::newRow("priority that was lent") << priority << "8" << 1500;
    QTest::newRow("priority written otherwise") << priority << "02" << 1500;
}

void tst_EffectHooks::whatIsSetBetweenFramesIsTheDefinition()
{
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(int, frameMs);
    const auto text = [](const QByteArray &transparency, const QByteArray &priority) {
        return showOf(lender(fading("Solid", propertyLine("transparency", transparency)
                                                 + propertyLine("priority", priority))));
    };
    const bool isPriority = key == u"priority";
    PlayedShow played(text("0.125", "3"));
    const QByteArray expected = definitionText(
        *showFrom(text(isPriority ? "0.125" : value.toUtf8(), isPriority ? value.toUtf8() : "3")));
    if (frameMs >= 0) {
        played.frame(0);
        played.frame(frameMs);
    }
    firstNested(*played.show)->setProperty(key, value);
    QCOMPARE(played.definition(), expected);
    for (int ms = 600; ms < 4000; ms += 300) {
        played.frame(ms);
        QCOMPARE(played.definition(), expected);
    }
}

void tst_EffectHooks::settingBackRestoresTheDefinition()
{
    const QString transparency = QStringLiteral("transparency");
    PlayedShow played(showOf(lender(fading("Solid", propertyLine("transparency", "0.125")))));
    const QByteArray before = played.definition();
    for (const int ms : {0, 100, 1500}) {
        played.frame(ms);
        firstNested(*played.show)->setProperty(transparency, QStringLiteral("0.75"));
        QVERIFY(played.definition() != before);
        firstNested(*played.show)->setProperty(transparency, QStringLiteral("0.125"));
        QCOMPARE(played.definition(), before);
    }
}

void tst_EffectHooks::otherPropertiesAreSavedAsTheyAre()
{
    PlayedShow played(showOf(lender(fading("Solid"))));
    played.frame(500);
    Effect *solid = firstNested(*played.show);
    solid->setProperty(QStringLiteral("name"), QStringLiteral("n"));
    solid->setProperty(QStringLiteral("begin"), QStringLiteral("12"));
    solid->setProperty(QStringLiteral("level"), QStringLiteral("0.5"));
    const QByteArray definition = played.definition();
    QVERIFY(definition.contains(propertyLine("name", "n")));
    QVERIFY(definition.contains(propertyLine("begin", "12")));
    QVERIFY(definition.contains(propertyLine("level", "0.5")));
}

void tst_EffectHooks::childAddedWhilePlayingIsSavedAsItWasGiven()
{
    PlayedShow played(showOf(lender(fading("Solid"))));
    played.frame(500);
    Effect *child = played.show->factory().make(QStringLiteral("Ramp"));
    child->setProperty(QStringLiteral("transparency"), QStringLiteral("0.375"));
    child->setProperty(QStringLiteral("priority"), QStringLiteral("4"));
    child->setProperty(QStringLiteral("end"), QStringLiteral("3000"));
    played.show->effects().first()->addChild(child);
    const QByteArray before = played.definition();
    QVERIFY(before.contains(propertyLine("transparency", "0.375")));
    played.frame(600);
    QCOMPARE(textOf(*child, QStringLiteral("transparency")), QStringLiteral("0.25"));
    QCOMPARE(played.definition(), before);
}

void tst_EffectHooks::definitionsAreSavedUntilTheOutermostScopeEnds()
{
    PlayedShow played(showOf(lender(fading("Solid"))));
    played.frame(500);
    const QString asPlayed = showText(*played.show);
    const QString defined = QString::fromUtf8(played.definition());
    QVERIFY(asPlayed != defined);
    {
        const EffectHost::SavingDefinitions outer;
        QCOMPARE(showText(*played.show), defined);
        {
            const EffectHost::SavingDefinitions inner;
            QCOMPARE(showText(*played.show), defined);
        }
        QCOMPARE(showText(*played.show), defined);
    }
    QCOMPARE(showText(*played.show), asPlayed);
}

void tst_EffectHooks::unknownEffectKeepsItsBytesAlthoughItIsPlayed_data()
{
    QTest::addColumn<QByteArray>("strange");
    const QByteArray start = "<effect  extra='1' type=\"Strange\" >";
    const QByteArray span = "<property key='end' >3000</property><property key=\"fadein\">900"
                            "</property>";
    QTest::newRow("without the properties") << start + span + "<!-- c --><curve/></effect>";
    QTest::newRow("with them") << start + span
                                      + "<property  key=\"transparency\" >0.5</property>\r\n"
                                        "<property key='priority'>03</property>&amp;</effect>";
    QTest::newRow("with empty ones") << start + span
                                            + "<property key=\"transparency\"/>"
                                              "<property key=\"priority\"></property></effect>";
    QTest::newRow("with nested ones")
        << start + span
               + "<effect type=\"Other\"><property key=\"transparency\">0.5</property></effect>"
                 "<property key=\"priority\">1</property></effect>";
}

void tst_EffectHooks::unknownEffectKeepsItsBytesAlthoughItIsPlayed()
{
    QFETCH(QByteArray, strange);
    PlayedShow played(showOf(lender(strange + "\n")));
    const QByteArray asRead = strange;
    QVERIFY(played.definition().contains(asRead));
    bool hasPlaybackWritten = false;
    for (int ms = 0; ms < 4000; ms += 150) {
        played.frame(ms);
        QVERIFY2(played.definition().contains(asRead), played.definition().constData());
        hasPlaybackWritten =
            hasPlaybackWritten || !showText(*played.show).toUtf8().contains(asRead);
    }
    QVERIFY(hasPlaybackWritten);
}

void tst_EffectHooks::unknownEffectTakesWhatIsSetBetweenFrames()
{
    const QByteArray strange = "<effect type=\"Strange\"><property key='end'>3000</property>"
                               "<property key='transparency'>0.5</property><x/></effect>";
    PlayedShow played(showOf(lender(strange + "\n")));
    played.frame(100);
    firstNested(*played.show)->setProperty(QStringLiteral("transparency"), QStringLiteral("0.75"));
    played.frame(200);
    QVERIFY(played.definition().contains("<effect type=\"Strange\"><property key='end'>3000"
                                         "</property><property key=\"transparency\">0.75"
                                         "</property><x/></effect>"));
}

// --- The watch ---

void tst_EffectHooks::watchIsToldOfComingAndGoing()
{
    Show show(allTypes());
    NotingWatch watch(show.map());
    QCOMPARE(show.map().watch(), &watch);
    int expected = 0;
    for (const QString &type : show.factory().typeNames()) {
        Effect *effect = show.factory().make(type);
        QCOMPARE(watch.comings, ++expected);
        delete effect;
        QCOMPARE(watch.comings, ++expected);
    }
    QVERIFY(expected > 0);
    QVERIFY(!show.factory().make(QStringLiteral("Strange")));
    QCOMPARE(watch.comings, expected);
}

void tst_EffectHooks::watchIsToldOfEveryChange_data()
{
    QTest::addColumn<QString>("key");
    for (const char *key :
         {"type", "name", "eid", "gid", "starttype", "endlinkoffset", "begin", "end", "fadein",
          "fadeout", "priority", "transparency", "level", "anything"})
        QTest::newRow(key) << key;
}

void tst_EffectHooks::watchIsToldOfEveryChange()
{
    QFETCH(QString, key);
    PlayedShow played(showOf(lender(fading("Solid"))));
    Effect *solid = firstNested(*played.show);
    NotingWatch watch(played.show->map());
    solid->setProperty(key, QStringLiteral("11"));
    played.frame(500);
    solid->setProperty(key, QStringLiteral("12"));
    QCOMPARE(watch.changes,
             QStringList({key + QStringLiteral("=11"), key + QStringLiteral("=12")}));
    QCOMPARE(watch.changed, QList<const Effect *>({solid, solid}));
    QCOMPARE(watch.comings, 0);
}

void tst_EffectHooks::watchIsNotToldOfTheSameText_data()
{
    watchIsToldOfEveryChange_data();
}

void tst_EffectHooks::watchIsNotToldOfTheSameText()
{
    QFETCH(QString, key);
    PlayedShow played(showOf(lender(fading("Solid"))));
    Effect *solid = firstNested(*played.show);
    solid->setProperty(key, QStringLiteral("11"));
    NotingWatch watch(played.show->map());
    solid->setProperty(key, QStringLiteral("11"));
    QCOMPARE(watch.changes, QStringList());
}

void tst_EffectHooks::watchHearsOfNestedEffects()
{
    const std::unique_ptr<Show> show = showFrom(exampleShow(QStringLiteral("minimal.show")));
    NotingWatch watch(show->map());
    Effect *top = show->effects().first();
    firstNested(*show)->setProperty(QStringLiteral("name"), QStringLiteral("other"));
    QCOMPARE(watch.changes, QStringList({"name=other"}));
    auto *child = show->factory().make(QStringLiteral("Solid"));
    top->addChild(child);
    QCOMPARE(watch.comings, 1);
    watch.changes.clear();
    child->setProperty(QStringLiteral("end"), QStringLiteral("9000"));
    top->init(); // becomes as long as its longest child
    QCOMPARE(watch.changes, QStringList({"end=9000", "end=9000"}));
    QCOMPARE(watch.changed.last(), top);
}

void tst_EffectHooks::framesAreNotReported()
{
    PlayedShow played(exampleShow(QStringLiteral("facade.show")));
    NotingWatch watch(played.show->map());
    bool hasPlaybackWritten = false;
    for (int ms = 0; ms < 20'000; ms += 250) {
        played.frame(ms);
        hasPlaybackWritten =
            hasPlaybackWritten || showText(*played.show).toUtf8() != played.definition();
    }
    QVERIFY(hasPlaybackWritten);
    QCOMPARE(watch.changes, QStringList());
    QCOMPARE(watch.comings, 0);
}

void tst_EffectHooks::otherChangesInFramesAreReported_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("isReported");
    for (const char *key : {"begin", "end", "name", "level", "fadein"})
        QTest::newRow(key) << key << true;
    QTest::newRow("transparency") << "transparency" << false;
    QTest::newRow("priority") << "priority" << false;
}

void tst_EffectHooks::otherChangesInFramesAreReported()
{
    QFETCH(QString, key);
    QFETCH(bool, isReported);
    const std::unique_ptr<Show> show = showFrom(showOf(fading("Solid")));
    NotingWatch watch(show->map());
    show->map().clock().beginFrame(timeOf(100));
    show->effects().first()->setProperty(key, QStringLiteral("11"));
    show->map().clock().endFrame();
    QCOMPARE(watch.changes,
             isReported ? QStringList({key + QStringLiteral("=11")}) : QStringList());
}

void tst_EffectHooks::definitionThatBecomesWhatAFrameWroteIsReported_data()
{
    QTest::addColumn<bool>("isTheSameObject");
    QTest::newRow("another text") << false;
    QTest::newRow("the very text that the frame wrote") << true;
}

void tst_EffectHooks::definitionThatBecomesWhatAFrameWroteIsReported()
{
    QFETCH(bool, isTheSameObject);
    PlayedShow played(showOf(lender(fading("Solid"))));
    played.frame(0);
    played.frame(500);
    NotingWatch watch(played.show->map());
    Effect *solid = firstNested(*played.show);
    const QString written = textOf(*solid, QStringLiteral("transparency"));
    QCOMPARE(written, QStringLiteral("0.625"));
    for (int i = 0; i < 2; ++i)
        solid->setProperty(QStringLiteral("transparency"),
                           isTheSameObject ? written : QStringLiteral("0.625"));
    QCOMPARE(watch.changes, QStringList({"transparency=0.625"}));
}

void tst_EffectHooks::removedWatchHearsNothing()
{
    const std::unique_ptr<Show> show = showFrom(showOf(fading("Solid")));
    NotingWatch watch(show->map());
    show->map().setWatch(nullptr);
    show->effects().first()->setProperty(QStringLiteral("name"), QStringLiteral("n"));
    delete show->factory().make(QStringLiteral("Solid"));
    QCOMPARE(watch.changes, QStringList());
    QCOMPARE(watch.comings, 0);
}

void tst_EffectHooks::effectWithoutAMapNeedsNoWatch()
{
    Effect effect(nullptr, 0);
    effect.setProperty(QStringLiteral("priority"), QStringLiteral("3"));
    QString text;
    QTextStream stream(&text);
    const EffectHost::SavingDefinitions definitions;
    effect.save(stream);
    stream.flush();
    QVERIFY(text.contains(QString::fromUtf8(propertyLine("priority", "3"))));
}

// --- Saving bytes ---

void tst_EffectHooks::savedBytesAreWrittenAsTheyAre_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("none") << QByteArray("");
    QTest::newRow("a show") << exampleShow(QStringLiteral("minimal.show"));
    QTest::newRow("any bytes") << QByteArray("a\r\nb\0\xff\n", 7);
    QTest::newRow("many") << QByteArray(3'000'000, 'x');
}

void tst_EffectHooks::savedBytesAreWrittenAsTheyAre()
{
    QFETCH(QByteArray, bytes);
    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("a.show"));
    for (const QByteArray &text : {QByteArray("the one before"), bytes}) {
        FileFault fault;
        QVERIFY2(rehearsal::saveText(text, name, &fault), qPrintable(fault.message()));
        QFile file(name);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), text);
    }
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList({"a.show"}));
}

void tst_EffectHooks::bytesThatCannotBeWrittenAreAFault_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("in a folder that is missing") << "missing/a.show";
    QTest::newRow("where a folder is") << ".";
}

void tst_EffectHooks::bytesThatCannotBeWrittenAreAFault()
{
    QFETCH(QString, name);
    const QTemporaryDir folder;
    const QString file = folder.filePath(name);
    FileFault fault;
    QVERIFY(!rehearsal::saveText("text", file, &fault));
    QVERIFY2(fault.message().startsWith(file), qPrintable(fault.message()));
    QVERIFY(fault.message().contains(QStringLiteral("cannot be saved")));
    QVERIFY(QDir(folder.path()).isEmpty());
}

QTEST_GUILESS_MAIN(tst_EffectHooks)

#include "tst_EffectHooks.moc"
