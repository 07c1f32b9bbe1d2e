#include "Effect.h"
#include "EffectHost.h"
#include "EffectList.h"
#include "HostClock.h"
#include "Player.h"
#include "PropertyStore.h"
#include "StageMap.h"

#include <QHash>
#include <QTest>

#include <limits>
#include <memory>

using rehearsal::HostClock;
using rehearsal::Player;
using rehearsal::PropertyStore;
using rehearsal::StageLight;
using rehearsal::StageMap;

namespace {

const QTime noon(12, 0);

/// An effect that shows its members and tells what it is asked.
class Probe final : public Effect
{
public:
    explicit Probe(MapModel *map = nullptr, const QString &name = {}, QStringList *log = nullptr)
        : Effect(map, 0), m_name(name), m_log(log)
    {
    }
    ~Probe() override { tell(QStringLiteral("deleted")); }

    void init() override
    {
        tell(QStringLiteral("init"));
        Effect::init();
    }
    void internalUpdateLights() override
    {
        tell(QStringLiteral("draw at %1 with %2").arg(getTotalElapsedTime()).arg(m_frameArg));
        if (drawOn)
            drawOn->draw(1.0, 0.0, priority());
    }
    void internalSetProperty(const QString &key, const QString &value) override
    {
        changes.append(key + u'=' + value);
    }

    Probe &with(const char *key, const QString &text)
    {
        setProperty(QString::fromLatin1(key), text);
        return *this;
    }
    QString text(const char *key) const { return getPropertyString(QString::fromLatin1(key)); }

    quint32 &begin() { return m_beginTime; }
    quint32 &end() { return m_endTime; }
    quint32 &fadeIn() { return m_fadeInTime; }
    quint32 &fadeOut() { return m_fadeOutTime; }
    int &ownPriority() { return m_priority; }
    double &transparency() { return m_transparency; }

    QStringList changes;
    StageLight *drawOn = nullptr;

private:
    void tell(const QString &what)
    {
        if (m_log)
            m_log->append(m_name + u' ' + what);
    }

    QString m_name;
    QStringList *m_log;
};

/// An effect of the given priority.
std::unique_ptr<Probe> ranked(int priority)
{
    auto effect = std::make_unique<Probe>();
    effect->with("priority", QString::number(priority));
    return effect;
}

QStringList keysOf(const std::vector<PropertyStore::Property> &properties)
{
    QStringList keys;
    for (const PropertyStore::Property &property : properties)
        keys.append(property.key);
    return keys;
}

} // namespace

class tst_Framework : public QObject
{
    Q_OBJECT

private slots:
    void numberIsUnsigned32BitDecimal_data();
    void numberIsUnsigned32BitDecimal();
    void realIsANumber_data();
    void realIsANumber();
    void flagIsOneOrZero_data();
    void flagIsOneOrZero();
    void missingPropertyReadsAsNothing();
    void onePropertyIsReadInEveryWay();
    void storeKeepsWhateverWasSetLast();
    void propertiesComeInOrderOfArrival();
    void propertyKindIsThatOfItsVariable();
    void newTextReachesTheVariable_data();
    void newTextReachesTheVariable();
    void changedVariableGivesNewText();
    void bindingTakesTheVariablesValue();

    void mirroredMembersFollowTheText_data();
    void mirroredMembersFollowTheText();
    void textFollowsTheMirroredMembers();
    void realMembersAreWrittenShortly();
    void sameTextNotifiesNobody();
    void realChangeNotifiesOnce();
    void playbackDoesNotMakeDirty_data();
    void playbackDoesNotMakeDirty();
    void initMakesClean();
    void effectWithoutNestedOnesDeletesAChild();

    void inSortInsertsBehindEquals();
    void sortIsStable();
    void removedEffectIsNotDeleted();
    void copiedListNeverOwns();
    void autoDeletingListDeletesOnce();

    void elapsedIsCountedModuloADay_data();
    void elapsedIsCountedModuloADay();
    void presentMomentIsTheFramesTime();
    void unsteppedClockFollowsWallTime();
    void restartInAFrameReadsZeroElapsed();
    void elapsedIsNeverNegative();

    void lightBlends_data();
    void lightBlends();
    void lightFactorIsTheLastWriters();
    void lightPriorityKeepsLowerDrawingOut();
    void mapRefusesTakenUids();

    void playerStartsClocksAtTheFirstFrame();
    void playerDrawsInOrderOnResetLights();
    void playerStopsDrawing();
    void playerLengthIsTheLongestEffects();
};

// --- Property store ---

void tst_Framework::numberIsUnsigned32BitDecimal_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint32>("value");
    QTest::addColumn<bool>("ok");
    QTest::newRow("zero") << "0" << 0u << true;
    QTest::newRow("some") << "1500" << 1500u << true;
    QTest::newRow("leading zeros") << "007" << 7u << true;
    QTest::newRow("largest") << "4294967295" << 4294967295u << true;
    QTest::newRow("too large") << "4294967296" << 0u << false;
    QTest::newRow("far too large") << "99999999999999999999999" << 0u << false;
    QTest::newRow("empty") << "" << 0u << false;
    QTest::newRow("negative") << "-1" << 0u << false;
    QTest::newRow("negative zero") << "-0" << 0u << false;
    QTest::newRow("fractional") << "1.5" << 0u << false;
    QTest::newRow("whole, with a point") << "1.0" << 0u << false;
    QTest::newRow("exponent") << "1e3" << 0u << false;
    QTest::newRow("hexadecimal") << "0x10" << 0u << false;
    QTest::newRow("trailing letters") << "12ms" << 0u << false;
    QTest::newRow("letters") << "abc" << 0u << false;
}

void tst_Framework::numberIsUnsigned32BitDecimal()
{
    QFETCH(QString, text);
    QFETCH(quint32, value);
    QFETCH(bool, ok);
    Probe effect;
    effect.with("gid", text).with("something", text);
    for (const char *key : {"gid", "something"}) {
        for (int time = 0; time < 2; ++time) {
            bool isOk = !ok;
            QCOMPARE(effect.getPropertyULong(QString::fromLatin1(key), &isOk),
                     static_cast<unsigned long>(value));
            QCOMPARE(isOk, ok);
        }
    }
}

void tst_Framework::realIsANumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    QTest::addColumn<bool>("ok");
    QTest::newRow("whole") << "3" << 3.0 << true;
    QTest::newRow("fractional") << "-0.125" << -0.125 << true;
    QTest::newRow("exponent") << "1.23457e+06" << 1234570.0 << true;
    QTest::newRow("empty") << "" << 0.0 << false;
    QTest::newRow("trailing letters") << "1.5s" << 0.0 << false;
    QTest::newRow("comma") << "1,5" << 0.0 << false;
}

void tst_Framework::realIsANumber()
{
    QFETCH(QString, text);
    QFETCH(double, value);
    QFETCH(bool, ok);
    Probe effect;
    effect.with("startlinkoffset", text);
    for (int time = 0; time < 2; ++time) {
        bool isOk = !ok;
        QCOMPARE(effect.getPropertyDouble(QStringLiteral("startlinkoffset"), &isOk), value);
        QCOMPARE(isOk, ok);
    }
}

void tst_Framework::flagIsOneOrZero_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("value");
    QTest::addColumn<bool>("ok");
    QTest::newRow("1") << "1" << true << true;
    QTest::newRow("0") << "0" << false << true;
    QTest::newRow("true") << "true" << true << true;
    QTest::newRow("false") << "false" << false << true;
    QTest::newRow("2") << "2" << false << false;
    QTest::newRow("yes") << "yes" << false << false;
    QTest::newRow("empty") << "" << false << false;
}

void tst_Framework::flagIsOneOrZero()
{
    QFETCH(QString, text);
    QFETCH(bool, value);
    QFETCH(bool, ok);
    Probe effect;
    effect.with("loop", text);
    for (int time = 0; time < 2; ++time) {
        bool isOk = !ok;
        QCOMPARE(effect.getPropertyBool(QStringLiteral("loop"), &isOk), value);
        QCOMPARE(isOk, ok);
    }
}

void tst_Framework::missingPropertyReadsAsNothing()
{
    const Probe effect;
    for (const char *key : {"gid", "something", ""}) {
        const QString name = QString::fromLatin1(key);
        bool ok = true;
        QCOMPARE(effect.getPropertyULong(name, &ok), 0ul);
        QVERIFY(!ok);
        ok = true;
        QVERIFY(!effect.getPropertyBool(name, &ok));
        QVERIFY(!ok);
        ok = true;
        QCOMPARE(effect.getPropertyDouble(name, &ok), 0.0);
        QVERIFY(!ok);
        ok = true;
        QVERIFY(effect.getPropertyString(name, &ok).isEmpty());
        QVERIFY(!ok);
    }
}

void tst_Framework::onePropertyIsReadInEveryWay()
{
    Probe effect;
    const auto check = [&effect](const QString &text, quint32 number, bool isNumber, double real,
                                 bool isReal, bool flag, bool isFlag) {
        effect.with("level", text);
        const QString key = QStringLiteral("level");
        for (int time = 0; time < 3; ++time) {
            bool ok = !isNumber;
            QCOMPARE(effect.getPropertyULong(key, &ok), static_cast<unsigned long>(number));
            QCOMPARE(ok, isNumber);
            QCOMPARE(effect.getPropertyDouble(key, &ok), real);
            QCOMPARE(ok, isReal);
            QCOMPARE(effect.getPropertyBool(key, &ok), flag);
            QCOMPARE(ok, isFlag);
            QCOMPARE(effect.getPropertyString(key), text);
        }
    };
    check(QStringLiteral("1"), 1, true, 1.0, true, true, true);
    check(QStringLiteral("0.5"), 0, false, 0.5, true, false, false);
    check(QStringLiteral("true"), 0, false, 0.0, false, true, true);
    check(QStringLiteral("7"), 7, true, 7.0, true, false, false);
}

void tst_Framework::storeKeepsWhateverWasSetLast()
{
    // Many keys, well known and others, each through strings at several addresses.
    const QStringList words{"eid", "gid",       "name",  "seed",  "density", "a",     "b",
                            "c",   "starttype", "begin", "end",   "loop",    "x1",    "x2",
                            "x3",  "Name",      "EID",   "level", "level2",  "name ", "ü"};
    PropertyStore store;
    QHash<QString, QString> expected;
    quint32 random = 12345;
    for (int step = 0; step < 5000; ++step) {
        random = random * 1664525u + 1013904223u;
        const QString key =
            QString::fromUtf8(words[static_cast<qsizetype>(random >> 16) % words.size()].toUtf8());
        const QString text = QString::number((random >> 8) % 5);
        const bool isChange = !expected.contains(key) || expected[key] != text;
        QCOMPARE(store.set(key, text), isChange);
        expected[key] = text;
        for (const QString &word : words) {
            const QString *found = store.text(word);
            QCOMPARE(found != nullptr, expected.contains(word));
            if (!found)
                continue;
            QCOMPARE(*found, expected[word]);
            QCOMPARE(store.number(word, nullptr), expected[word].toUInt());
        }
    }
    QCOMPARE(expected.size(), words.size());
}

void tst_Framework::propertiesComeInOrderOfArrival()
{
    Probe effect;
    effect.with("zebra", "1").with("name", "Door").with("eid", "4").with("apple", "2");
    effect.with("begin", "100").with("zebra", "3").with("name", "Roof");
    QCOMPARE(keysOf(EffectHost::properties(effect)),
             (QStringList{"zebra", "name", "eid", "apple", "begin", "end", "fadein", "fadeout",
                          "priority", "transparency"}));
}

void tst_Framework::propertyKindIsThatOfItsVariable()
{
    bool flag = false;
    double real = 0;
    quint32 number = 0;
    qint32 signedNumber = 0;
    PropertyStore store;
    store.set(QStringLiteral("text"), QStringLiteral("1"));
    store.bind(QStringLiteral("flag"), &flag);
    store.bind(QStringLiteral("real"), &real);
    store.bind(QStringLiteral("number"), &number);
    store.bind(QStringLiteral("signed"), &signedNumber);
    store.declare(QStringLiteral("real"));
    store.declare(QStringLiteral("missing"));

    const auto properties = store.properties();
    using Kind = PropertyStore::Kind;
    const std::vector<Kind> kinds{Kind::Text, Kind::Flag, Kind::Real, Kind::Unsigned, Kind::Signed};
    QCOMPARE(properties.size(), kinds.size());
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        QCOMPARE(properties[i].kind, kinds[i]);
        QCOMPARE(properties[i].declared, kinds[i] == Kind::Real);
    }
}

void tst_Framework::newTextReachesTheVariable_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("flag");
    QTest::addColumn<double>("real");
    QTest::addColumn<quint32>("number");
    QTest::addColumn<qint32>("signedNumber");
    QTest::newRow("one") << "1" << true << 1.0 << 1u << 1;
    QTest::newRow("zero") << "0" << false << 0.0 << 0u << 0;
    QTest::newRow("true") << "true" << true << 0.0 << 0u << 0;
    QTest::newRow("fractional") << "0.75" << false << 0.75 << 0u << 0;
    QTest::newRow("negative") << "-1" << false << -1.0 << 0u << -1;
    QTest::newRow("largest") << "4294967295" << false << 4294967295.0 << 4294967295u << -1;
    QTest::newRow("least signed") << "2147483648" << false << 2147483648.0 << 2147483648u
                                  << std::numeric_limits<qint32>::min();
    QTest::newRow("empty") << "" << false << 0.0 << 0u << 0;
    QTest::newRow("letters") << "abc" << false << 0.0 << 0u << 0;
}

void tst_Framework::newTextReachesTheVariable()
{
    QFETCH(QString, text);
    bool flag = true;
    double real = 9;
    quint32 number = 9;
    qint32 signedNumber = 9;
    PropertyStore store;
    store.bind(QStringLiteral("flag"), &flag);
    store.bind(QStringLiteral("real"), &real);
    store.bind(QStringLiteral("number"), &number);
    store.bind(QStringLiteral("signed"), &signedNumber);
    for (const char *key : {"flag", "real", "number", "signed"}) {
        // "1" is the flag's text already.
        QCOMPARE(store.set(QString::fromLatin1(key), text),
                 !(qstrcmp(key, "flag") == 0 && text == u"1"));
        QCOMPARE(*store.text(QString::fromLatin1(key)), text);
    }
    QTEST(flag, "flag");
    QTEST(real, "real");
    QTEST(number, "number");
    QTEST(signedNumber, "signedNumber");
}

void tst_Framework::changedVariableGivesNewText()
{
    bool flag = false;
    double real = 0.5;
    quint32 number = 3;
    qint32 signedNumber = 3;
    PropertyStore store;
    store.bind(QStringLiteral("flag"), &flag);
    store.bind(QStringLiteral("real"), &real);
    store.bind(QStringLiteral("number"), &number);
    store.bind(QStringLiteral("signed"), &signedNumber);
    flag = true;
    real = 1.0 / 3.0;
    number = 4294967295u;
    signedNumber = -7;
    QCOMPARE(*store.text(QStringLiteral("flag")), QStringLiteral("1"));
    QCOMPARE(*store.text(QStringLiteral("real")), QStringLiteral("0.333333"));
    QCOMPARE(*store.text(QStringLiteral("number")), QStringLiteral("4294967295"));
    QCOMPARE(*store.text(QStringLiteral("signed")), QStringLiteral("-7"));
    QCOMPARE(real, 1.0 / 3.0);

    number = 8;
    QCOMPARE(store.number(QStringLiteral("number"), nullptr), 8u);
    number = 9;
    QVERIFY(!store.set(QStringLiteral("number"), QStringLiteral("9")));
    QVERIFY(store.set(QStringLiteral("number"), QStringLiteral("8")));
    QCOMPARE(number, 8u);
    real = std::numeric_limits<double>::quiet_NaN();
    QCOMPARE(*store.text(QStringLiteral("real")), QStringLiteral("nan"));
}

void tst_Framework::bindingTakesTheVariablesValue()
{
    double real = 0.25;
    PropertyStore store;
    store.set(QStringLiteral("level"), QStringLiteral("0.75"));
    store.bind(QStringLiteral("level"), &real);
    QCOMPARE(*store.text(QStringLiteral("level")), QStringLiteral("0.25"));
    QCOMPARE(store.properties().size(), std::size_t{1});
}

// --- Effect ---

void tst_Framework::mirroredMembersFollowTheText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint32>("time");
    QTest::addColumn<int>("priority");
    QTest::addColumn<double>("transparency");
    QTest::newRow("zero") << "0" << 0u << 0 << 0.0;
    QTest::newRow("some") << "40" << 40u << 40 << 40.0;
    QTest::newRow("fraction") << "0.25" << 0u << 0 << 0.25;
    QTest::newRow("negative") << "-1" << 0u << -1 << -1.0;
    QTest::newRow("largest") << "4294967295" << 4294967295u << -1 << 4294967295.0;
    QTest::newRow("too large") << "4294967296" << 0u << 0 << 4294967296.0;
    QTest::newRow("trailing letters") << "5s" << 0u << 0 << 0.0;
    QTest::newRow("empty") << "" << 0u << 0 << 0.0;
}

void tst_Framework::mirroredMembersFollowTheText()
{
    QFETCH(QString, text);
    Probe effect;
    for (const char *key : {"begin", "end", "fadein", "fadeout", "priority", "transparency"})
        effect.with(key, "77").with(key, text);
    QTEST(effect.begin(), "time");
    QTEST(effect.end(), "time");
    QTEST(effect.fadeIn(), "time");
    QTEST(effect.fadeOut(), "time");
    QTEST(effect.ownPriority(), "priority");
    QTEST(effect.transparency(), "transparency");
    QCOMPARE(effect.beginTime(), effect.begin());
    QCOMPARE(effect.endTime(), effect.end());
    QCOMPARE(effect.fadeInTime(), effect.fadeIn());
    QCOMPARE(effect.fadeOutTime(), effect.fadeOut());
    QCOMPARE(effect.priority(), effect.ownPriority());
}

void tst_Framework::textFollowsTheMirroredMembers()
{
    Probe effect;
    effect.begin() = 1;
    effect.end() = 4294967295u;
    effect.fadeIn() = 3;
    effect.fadeOut() = 4;
    effect.ownPriority() = -5;
    effect.transparency() = 0.5;
    QCOMPARE(effect.text("begin"), QStringLiteral("1"));
    QCOMPARE(effect.text("end"), QStringLiteral("4294967295"));
    QCOMPARE(effect.text("fadein"), QStringLiteral("3"));
    QCOMPARE(effect.text("fadeout"), QStringLiteral("4"));
    QCOMPARE(effect.text("priority"), QStringLiteral("-5"));
    QCOMPARE(effect.text("transparency"), QStringLiteral("0.5"));
    QCOMPARE(effect.getPropertyULong(QStringLiteral("end")), 4294967295ul);

    // What was the text before is a change again.
    effect.with("begin", "2");
    effect.begin() = 3;
    effect.with("begin", "2");
    QCOMPARE(effect.begin(), 2u);
}

void tst_Framework::realMembersAreWrittenShortly()
{
    Probe effect;
    effect.transparency() = 1.0 / 3.0;
    QCOMPARE(effect.text("transparency"), QStringLiteral("0.333"));
    double brightness = 0;
    effect.addPropertyDouble(QStringLiteral("brightness"), 2.0 / 3.0, &brightness);
    QCOMPARE(effect.text("brightness"), QStringLiteral("0.666667"));
    QCOMPARE(brightness, 2.0 / 3.0);
    bool loop = false;
    effect.addPropertyBool(QStringLiteral("loop"), true, &loop);
    QVERIFY(loop);
    QCOMPARE(effect.text("loop"), QStringLiteral("1"));
    QVERIFY(effect.changes.isEmpty());
}

void tst_Framework::sameTextNotifiesNobody()
{
    Probe effect;
    effect.with("name", "Door").with("begin", "500").with("empty", QString());
    effect.init();
    effect.changes.clear();
    int observed = 0;
    EffectHost::setObserver(effect, [&](const QString &, const QString &) { ++observed; });
    effect.with("name", "Door").with("begin", "500").with("empty", QString());
    QVERIFY(effect.changes.isEmpty());
    QCOMPARE(observed, 0);
    QVERIFY(!effect.isDirty());
}

void tst_Framework::realChangeNotifiesOnce()
{
    Probe effect;
    QStringList observed;
    EffectHost::setObserver(effect, [&](const QString &key, const QString &text) {
        // The effect itself was told before.
        QCOMPARE(effect.changes.value(observed.size()), key + u'=' + text);
        QCOMPARE(effect.getPropertyString(key), text);
        observed.append(key + u'=' + text);
    });
    effect.with("name", "Door").with("begin", "500").with("begin", "0500").with("new", "");
    const QStringList expected{"name=Door", "begin=500", "begin=0500", "new="};
    QCOMPARE(observed, expected);
    QCOMPARE(effect.changes, expected);
    EffectHost::setObserver(effect, {});
    effect.with("name", "Roof");
    QCOMPARE(observed, expected);
}

void tst_Framework::playbackDoesNotMakeDirty_data()
{
    QTest::addColumn<bool>("isDirty");
    QTest::newRow("transparency") << false;
    QTest::newRow("priority") << false;
    QTest::newRow("begin") << false;
    QTest::newRow("end") << false;
    QTest::newRow("fadein") << true;
    QTest::newRow("fadeout") << true;
    QTest::newRow("name") << true;
    QTest::newRow("startfixedtime") << true;
    QTest::newRow("something") << true;
}

void tst_Framework::playbackDoesNotMakeDirty()
{
    QFETCH(bool, isDirty);
    Probe effect;
    QVERIFY(!effect.isDirty());
    effect.with(QTest::currentDataTag(), "42");
    QCOMPARE(effect.isDirty(), isDirty);
}

void tst_Framework::initMakesClean()
{
    Probe effect;
    effect.with("name", "Door");
    QVERIFY(effect.isDirty());
    effect.init();
    QVERIFY(!effect.isDirty());
}

void tst_Framework::effectWithoutNestedOnesDeletesAChild()
{
    QStringList log;
    Probe parent;
    parent.addChild(new Probe(nullptr, QStringLiteral("child"), &log));
    QCOMPARE(log, QStringList{"child deleted"});
    parent.addChild(nullptr);
    QVERIFY(!EffectHost::holdsEffects(parent));
}

// --- Effect list ---

void tst_Framework::inSortInsertsBehindEquals()
{
    const auto low = ranked(-1);
    const auto first = ranked(5);
    const auto second = ranked(5);
    const auto third = ranked(5);
    const auto high = ranked(9);
    EffectList list;
    for (Effect *effect : {first.get(), high.get(), second.get(), low.get(), third.get()})
        list.inSort(effect);
    const QList<Effect *> order(list.begin(), list.end());
    QCOMPARE(order,
             (QList<Effect *>{low.get(), first.get(), second.get(), third.get(), high.get()}));
    QCOMPARE(list.at(5), nullptr);
    QCOMPARE(list.at(-1), nullptr);
}

void tst_Framework::sortIsStable()
{
    std::vector<std::unique_ptr<Probe>> effects;
    EffectList list;
    for (int i = 0; i < 100; ++i) {
        effects.push_back(ranked(i % 3));
        list.append(effects.back().get());
    }
    list.sort();
    QCOMPARE(list.count(), 100);
    int place = 0;
    for (int priority = 0; priority < 3; ++priority) {
        for (int i = priority; i < 100; i += 3)
            QCOMPARE(list.at(place++), effects[static_cast<std::size_t>(i)].get());
    }
}

void tst_Framework::removedEffectIsNotDeleted()
{
    QStringList log;
    auto effect = std::make_unique<Probe>(nullptr, QStringLiteral("a"), &log);
    const auto other = ranked(0);
    EffectList list;
    list.setAutoDelete(true);
    list.append(effect.get());
    list.append(effect.get());
    QVERIFY(!list.remove(other.get()));
    QVERIFY(list.remove(effect.get()));
    QVERIFY(list.contains(effect.get()));
    QVERIFY(list.remove(effect.get()));
    QVERIFY(list.isEmpty());
    QVERIFY(log.isEmpty());
}

void tst_Framework::copiedListNeverOwns()
{
    QStringList log;
    EffectList list;
    list.setAutoDelete(true);
    list.append(new Probe(nullptr, QStringLiteral("a"), &log));
    {
        EffectList copy(list);
        QVERIFY(!copy.autoDelete());
        QVERIFY(list.autoDelete());
        QCOMPARE(copy.at(0), list.at(0));
        copy.append(list.at(0));
        QCOMPARE(list.count(), 1);
    }
    QVERIFY(log.isEmpty());

    EffectList assigned;
    assigned.setAutoDelete(true);
    assigned.append(new Probe(nullptr, QStringLiteral("b"), &log));
    EffectList plain;
    assigned = plain;
    QCOMPARE(log, QStringList{"b deleted"});
    QVERIFY(assigned.autoDelete());
    QVERIFY(assigned.isEmpty());
    assigned.setAutoDelete(false);
    assigned = list;
    QVERIFY(!assigned.autoDelete());
    QCOMPARE(assigned.count(), 1);

    const EffectList &itself = list;
    list = itself;
    QCOMPARE(list.count(), 1);
    QCOMPARE(log, QStringList{"b deleted"});
}

void tst_Framework::autoDeletingListDeletesOnce()
{
    QStringList log;
    {
        EffectList list;
        list.append(new Probe(nullptr, QStringLiteral("a"), &log));
        list.append(new Probe(nullptr, QStringLiteral("b"), &log));
        list.setAutoDelete(true);
        list.clear();
        QVERIFY(list.isEmpty());
        QCOMPARE(log, (QStringList{"a deleted", "b deleted"}));
        list.append(new Probe(nullptr, QStringLiteral("c"), &log));
    }
    QCOMPARE(log, (QStringList{"a deleted", "b deleted", "c deleted"}));
}

// --- Clock ---

void tst_Framework::elapsedIsCountedModuloADay_data()
{
    QTest::addColumn<QTime>("from");
    QTest::addColumn<QTime>("to");
    QTest::addColumn<quint32>("elapsed");
    QTest::newRow("none") << noon << noon << 0u;
    QTest::newRow("a moment") << noon << noon.addMSecs(1) << 1u;
    QTest::newRow("across midnight") << QTime(23, 59, 59, 500) << QTime(0, 0, 0, 250) << 750u;
    QTest::newRow("to midnight") << QTime(23, 59, 59, 999) << QTime(0, 0) << 1u;
    QTest::newRow("from midnight") << QTime(0, 0) << QTime(23, 59, 59, 999) << 86399999u;
    QTest::newRow("all but a moment of a day") << noon << noon.addMSecs(-1) << 86399999u;
}

void tst_Framework::elapsedIsCountedModuloADay()
{
    QFETCH(QTime, from);
    QFETCH(QTime, to);
    QFETCH(quint32, elapsed);
    QCOMPARE(rehearsal::elapsedBetween(from, to), elapsed);

    Probe effect;
    effect.setStartTime(from);
    effect.updateLights(to, 0);
    QCOMPARE(effect.getTotalElapsedTime(), static_cast<unsigned long>(elapsed));
}

void tst_Framework::presentMomentIsTheFramesTime()
{
    HostClock clock;
    clock.step(noon);
    QCOMPARE(clock.now(), noon);
    clock.beginFrame(noon.addSecs(5));
    QCOMPARE(clock.now(), noon.addSecs(5));
    clock.step(noon.addSecs(6));
    QCOMPARE(clock.now(), noon.addSecs(5));
    clock.endFrame();
    QCOMPARE(clock.now(), noon.addSecs(6));
}

void tst_Framework::unsteppedClockFollowsWallTime()
{
    HostClock clock;
    const QTime first = clock.now();
    QVERIFY(rehearsal::elapsedBetween(first, QTime::currentTime()) < 60000);
    QTest::qWait(20);
    const quint32 elapsed = rehearsal::elapsedBetween(first, clock.now());
    QVERIFY2(elapsed >= 19 && elapsed < 60000, qPrintable(QString::number(elapsed)));
    clock.beginFrame(noon);
    clock.endFrame();
    QVERIFY(rehearsal::elapsedBetween(first, clock.now()) < 60000);
}

void tst_Framework::restartInAFrameReadsZeroElapsed()
{
    StageMap map;
    Probe effect(&map);
    map.clock().step(noon);
    effect.setStartTime();
    map.clock().beginFrame(noon.addMSecs(1234));
    effect.updateLights(noon.addMSecs(1234), 0);
    QCOMPARE(effect.getTotalElapsedTime(), 1234ul);
    effect.setStartTime();
    QCOMPARE(effect.getTotalElapsedTime(), 0ul);
    map.clock().endFrame();
}

void tst_Framework::elapsedIsNeverNegative()
{
    Probe effect;
    effect.setStartTime(noon);
    effect.updateLights(noon.addMSecs(-250), 0);
    QCOMPARE(effect.getTotalElapsedTime(), 86399750ul);
}

// --- Lights ---

void tst_Framework::lightBlends_data()
{
    QTest::addColumn<QList<double>>("draws"); // level, transparency, priority, level, ...
    QTest::addColumn<double>("level");
    QTest::addColumn<int>("priority");
    using Draws = QList<double>;
    QTest::newRow("untouched") << Draws{} << 0.0 << 0;
    QTest::newRow("opaque") << Draws{0.7, 0, 0} << 0.7 << 0;
    QTest::newRow("over the dark") << Draws{0.8, 0.25, 1} << 0.6 << 1;
    QTest::newRow("invisible takes the priority") << Draws{0.8, 1, 3} << 0.0 << 3;
    QTest::newRow("blended") << Draws{1, 0, 0, 0.5, 0.5, 0} << 0.75 << 0;
    QTest::newRow("higher covers") << Draws{1, 0, 1, 0.25, 0, 2} << 0.25 << 2;
    QTest::newRow("equal covers") << Draws{1, 0, 2, 0.25, 0, 2} << 0.25 << 2;
    QTest::newRow("lower is ignored") << Draws{1, 0, 2, 0.25, 0, 1} << 1.0 << 2;
    QTest::newRow("negative is ignored") << Draws{1, 0, -1} << 0.0 << 0;
    QTest::newRow("blended twice") << Draws{1, 0, 0, 0, 0.5, 0, 1, 0.5, 0} << 0.75 << 0;
}

void tst_Framework::lightBlends()
{
    QFETCH(QList<double>, draws);
    StageLight light(1, QString(), {});
    for (qsizetype i = 0; i < draws.size(); i += 3)
        light.draw(draws[i], draws[i + 1], static_cast<int>(draws[i + 2]));
    QTEST(light.level(), "level");
    QTEST(light.priority(), "priority");
    QCOMPARE(light.shown(), light.level());
    light.reset();
    QCOMPARE(light.level(), 0.0);
    QCOMPARE(light.priority(), 0);
}

void tst_Framework::lightFactorIsTheLastWriters()
{
    StageLight light(1, QString(), {});
    light.draw(0.8, 0, 0);
    light.setBrightness(0.5);
    QCOMPARE(light.shown(), 0.4);
    light.setBrightness(0.25);
    QCOMPARE(light.shown(), 0.2);
    light.draw(1.0, 0, 0);
    QCOMPARE(light.shown(), 0.25);
    QCOMPARE(light.level(), 1.0);
    light.reset();
    QCOMPARE(light.factor(), 1.0);
}

void tst_Framework::lightPriorityKeepsLowerDrawingOut()
{
    StageLight light(1, QString(), {});
    light.setPriority(4);
    light.draw(1.0, 0, 3);
    QCOMPARE(light.shown(), 0.0);
    light.draw(1.0, 0, 4);
    QCOMPARE(light.shown(), 1.0);
    light.setPriority(-2);
    light.draw(0.5, 0, -1);
    QCOMPARE(light.shown(), 0.5);
    QCOMPARE(light.priority(), -1);
}

void tst_Framework::mapRefusesTakenUids()
{
    StageMap map;
    StageLight *second = map.addLight(20, QStringLiteral("Second"), {0.5, 0.25});
    StageLight *first = map.addLight(10, QStringLiteral("First"), {});
    QVERIFY(first && second);
    QVERIFY(!map.addLight(20, QStringLiteral("Again"), {}));
    QCOMPARE(map.light(20)->name(), QStringLiteral("Second"));
    QCOMPARE(map.lights(), (std::vector<StageLight *>{first, second}));

    auto *group = map.addGroup(7, QStringLiteral("Both"), SynchronizedGroup, {second, first});
    QVERIFY(group);
    QVERIFY(!map.addGroup(7, QStringLiteral("Again"), LeafGroup, {first}));
    QVERIFY(!map.addGroup(0, QStringLiteral("None"), LeafGroup, {first}));
    QCOMPARE(group->lights(), (QList<StageLight *>{second, first}));

    const MapModel &model = map;
    QCOMPARE(model.getGroup(7), group);
    QCOMPARE(model.getGroup(7)->name(), QStringLiteral("Both"));
    QCOMPARE(model.getGroup(7)->uid(), 7ul);
    QCOMPARE(model.getGroup(7)->groupType(), SynchronizedGroup);
    QVERIFY(!model.getGroup(8));
    QCOMPARE(model.getLights().keys(), (QList<unsigned long>{10, 20}));
    QCOMPARE(model.getGroups().keys(), QList<unsigned long>{7});
    map.removeGroup(7);
    QVERIFY(!model.getGroup(7));
    QVERIFY(model.getGroups().isEmpty());
}

// --- Player ---

void tst_Framework::playerStartsClocksAtTheFirstFrame()
{
    StageMap map;
    map.clock().step(noon);
    QStringList log;
    Probe effect(&map, QStringLiteral("a"), &log);
    Player player(map, {&effect});
    QVERIFY(!effect.getState());
    player.start();
    QVERIFY(effect.getState());
    QCOMPARE(log, QStringList{"a init"});
    log.clear();
    player.frame(noon.addSecs(10), 7);
    player.frame(noon.addSecs(11), 8);
    QCOMPARE(log, (QStringList{"a draw at 0 with 7", "a draw at 1000 with 8"}));
    player.start();
    log.clear();
    player.frame(noon.addSecs(30), 9);
    QCOMPARE(log, QStringList{"a draw at 0 with 9"});
    QCOMPARE(map.clock().now(), noon);
}

void tst_Framework::playerDrawsInOrderOnResetLights()
{
    StageMap map;
    StageLight *light = map.addLight(1, QString(), {});
    QStringList log;
    Probe first(&map, QStringLiteral("first"), &log);
    Probe second(&map, QStringLiteral("second"), &log);
    first.with("priority", "9");
    first.drawOn = light;
    Player player(map, {&first, &second});
    player.start();
    log.clear();
    player.frame(noon, 0);
    QCOMPARE(log, (QStringList{"first draw at 0 with 0", "second draw at 0 with 0"}));
    QCOMPARE(light->shown(), 1.0);
    QCOMPARE(light->priority(), 9);

    first.drawOn = nullptr;
    light->setBrightness(0.5);
    player.frame(noon.addMSecs(25), 0);
    QCOMPARE(light->level(), 0.0);
    QCOMPARE(light->factor(), 1.0);
    QCOMPARE(light->priority(), 0);
}

void tst_Framework::playerStopsDrawing()
{
    StageMap map;
    QStringList log;
    Probe effect(&map, QStringLiteral("a"), &log);
    Player player(map, {&effect});
    player.start();
    player.stop();
    log.clear();
    player.frame(noon, 0);
    QVERIFY(log.isEmpty());
    QVERIFY(!effect.getState());
}

void tst_Framework::playerLengthIsTheLongestEffects()
{
    StageMap map;
    Probe byEnd(&map);
    byEnd.with("end", "5000").with("cycletime", "100");
    Probe byCycle(&map);
    byCycle.with("cycletime", "7000");
    QCOMPARE(Player(map, {}).length(), 0u);
    QCOMPARE(Player(map, {&byEnd}).length(), 5000u);
    QCOMPARE(Player(map, {&byEnd, &byCycle}).length(), 7000u);
}

QTEST_GUILESS_MAIN(tst_Framework)
#include "tst_Framework.moc"
