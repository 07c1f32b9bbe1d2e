#include "ChildKeys.h"
#include "StubEffect.h"

#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include <cmath>
#include <type_traits>

namespace keys = meta::keys;
using meta::FlagKey;
using meta::Millis;
using meta::OffsetKey;
using meta::RuleKeys;
using meta::TextKey;
using meta::TimeKey;
using meta::UnsignedKey;

namespace {

template<typename Expected, typename Actual>
constexpr bool isA = std::is_same_v<const Expected, Actual>;

static_assert(isA<UnsignedKey, decltype(keys::eid)>);
static_assert(isA<TextKey, decltype(keys::name)>);
static_assert(isA<TextKey, decltype(keys::type)>);
static_assert(isA<UnsignedKey, decltype(keys::gid)>);
static_assert(isA<UnsignedKey, decltype(keys::priority)>);
static_assert(isA<TextKey, decltype(keys::transparency)>);
static_assert(isA<TimeKey, decltype(keys::begin)>);
static_assert(isA<TimeKey, decltype(keys::end)>);
static_assert(isA<TimeKey, decltype(keys::fadeIn)>);
static_assert(isA<TimeKey, decltype(keys::fadeOut)>);
static_assert(isA<RuleKeys, decltype(keys::startRule)>);
static_assert(isA<RuleKeys, decltype(keys::endRule)>);
static_assert(isA<UnsignedKey, decltype(keys::endCycleCount)>);
static_assert(std::is_same_v<UnsignedKey, decltype(RuleKeys::type)>);
static_assert(std::is_same_v<TimeKey, decltype(RuleKeys::fixedTime)>);
static_assert(std::is_same_v<UnsignedKey, decltype(RuleKeys::linkEid)>);
static_assert(std::is_same_v<FlagKey, decltype(RuleKeys::linkStart)>);
static_assert(std::is_same_v<OffsetKey, decltype(RuleKeys::linkOffset)>);
static_assert(std::is_same_v<TimeKey, decltype(RuleKeys::resolved)>);
static_assert(meta::rule::fixed == 0 && meta::rule::linked == 1 && meta::rule::cycles == 2);

/// Every key of a child, in the order in which the settings are listed.
const QList<const TextKey *> &allKeys()
{
    static const QList<const TextKey *> all{
        &keys::eid,
        &keys::name,
        &keys::type,
        &keys::gid,
        &keys::priority,
        &keys::transparency,
        &keys::begin,
        &keys::end,
        &keys::fadeIn,
        &keys::fadeOut,
        &keys::startRule.type,
        &keys::startRule.fixedTime,
        &keys::startRule.linkEid,
        &keys::startRule.linkStart,
        &keys::startRule.linkOffset,
        &keys::endRule.type,
        &keys::endRule.fixedTime,
        &keys::endRule.linkEid,
        &keys::endRule.linkStart,
        &keys::endRule.linkOffset,
        &keys::endCycleCount,
    };
    return all;
}

QList<const UnsignedKey *> unsignedKeys()
{
    return {&keys::eid,
            &keys::gid,
            &keys::priority,
            &keys::startRule.type,
            &keys::startRule.linkEid,
            &keys::endRule.type,
            &keys::endRule.linkEid,
            &keys::endCycleCount};
}

QList<const TimeKey *> timeKeys()
{
    return {&keys::begin,
            &keys::end,
            &keys::fadeIn,
            &keys::fadeOut,
            &keys::startRule.fixedTime,
            &keys::startRule.resolved,
            &keys::endRule.fixedTime,
            &keys::endRule.resolved};
}

} // namespace

class tst_ChildKeys : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void namesAreSpelledAsInFiles();
    void noTwoKeysShareAName();
    void theRulesResolveToBeginAndEnd();
    void theMetaEffectsOwnKeysAreSpelledAsInFiles();
    void aFreshEffectReadsAsNothing();

    void numbersAreWrittenInDecimal_data();
    void numbersAreWrittenInDecimal();
    void numbersAreReadLeniently_data();
    void numbersAreReadLeniently();
    void flagsAreRead_data();
    void flagsAreRead();
    void flagsAreWritten();
    void offsetsAreRead_data();
    void offsetsAreRead();
    void offsetsAreWrittenInSixDigits();
    void textIsKeptAsItIs();
    void aWriteTouchesItsOwnKeyOnly();
};

void tst_ChildKeys::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
}

// --- Names ---

void tst_ChildKeys::namesAreSpelledAsInFiles()
{
    QStringList names;
    for (const TextKey *key : allKeys())
        names.append(key->name());
    const QStringList expected{
        "eid",          "name",           "type",           "gid",
        "priority",     "transparency",   "begin",          "end",
        "fadein",       "fadeout",        "starttype",      "startfixedtime",
        "startlinkeid", "startlinkstart", "startlinkoffset", "endtype",
        "endfixedtime", "endlinkeid",     "endlinkstart",   "endlinkoffset",
        "endcyclecount",
    };
    QCOMPARE(names, expected);
}

void tst_ChildKeys::noTwoKeysShareAName()
{
    QSet<QString> names{keys::loop.name(), keys::brightness.name()};
    for (const TextKey *key : allKeys())
        names.insert(key->name());
    QCOMPARE(names.size(), allKeys().size() + 2);
}

void tst_ChildKeys::theRulesResolveToBeginAndEnd()
{
    QCOMPARE(keys::startRule.resolved.name(), keys::begin.name());
    QCOMPARE(keys::endRule.resolved.name(), keys::end.name());
}

void tst_ChildKeys::theMetaEffectsOwnKeysAreSpelledAsInFiles()
{
    QCOMPARE(keys::loop.name(), "loop");
    QCOMPARE(keys::brightness.name(), "brightness");
}

// --- Values ---

void tst_ChildKeys::aFreshEffectReadsAsNothing()
{
    const Effect effect(nullptr, 0);
    for (const UnsignedKey *key : unsignedKeys())
        QCOMPARE(key->read(effect), 0u);
    for (const TimeKey *key : timeKeys())
        QCOMPARE(key->read(effect).value(), 0u);
    for (const RuleKeys *rule : {&keys::startRule, &keys::endRule}) {
        bool isThere = true;
        QVERIFY(!rule->linkStart.read(effect));
        QCOMPARE(rule->linkOffset.read(effect).toDouble(), 0.0);
        rule->type.read(effect, &isThere);
        QVERIFY(!isThere);
        isThere = true;
        rule->fixedTime.read(effect, &isThere);
        QVERIFY(!isThere);
        QCOMPARE(rule->linkOffset.readText(effect), QString());
    }
    QCOMPARE(keys::name.readText(effect), QString());
}

void tst_ChildKeys::numbersAreWrittenInDecimal_data()
{
    QTest::addColumn<quint32>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << 0u << "0";
    QTest::newRow("some") << 1234567u << "1234567";
    QTest::newRow("more than an int") << 2147483648u << "2147483648";
    QTest::newRow("largest") << 4294967295u << "4294967295";
}

void tst_ChildKeys::numbersAreWrittenInDecimal()
{
    QFETCH(const quint32, value);
    QFETCH(const QString, text);
    StubEffect effect;
    const auto check = [&](const TextKey *key, auto readBack) {
        QCOMPARE(effect.getPropertyString(key->name()), text);
        bool ok = false;
        QCOMPARE(readBack(&ok), value);
        QVERIFY(ok);
    };
    for (const UnsignedKey *key : unsignedKeys()) {
        key->write(effect, value);
        check(key, [&](bool *ok) { return key->read(effect, ok); });
    }
    for (const TimeKey *key : timeKeys()) {
        key->write(effect, Millis(value));
        check(key, [&](bool *ok) { return key->read(effect, ok).value(); });
    }
}

void tst_ChildKeys::numbersAreReadLeniently_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<quint32>("value");
    QTest::newRow("plain") << "1500" << true << 1500u;
    QTest::newRow("blanks around") << " 1500 " << true << 1500u;
    QTest::newRow("plus") << "+5" << true << 5u;
    QTest::newRow("zeros in front") << "007" << true << 7u;
    QTest::newRow("largest") << "4294967295" << true << 4294967295u;
    QTest::newRow("too large") << "4294967296" << false << 0u;
    QTest::newRow("far too large") << "99999999999999999999" << false << 0u;
    QTest::newRow("negative") << "-5" << false << 0u;
    QTest::newRow("fraction") << "1.0" << false << 0u;
    QTest::newRow("exponent") << "1e3" << false << 0u;
    QTest::newRow("hexadecimal") << "0x10" << false << 0u;
    QTest::newRow("words") << "soon" << false << 0u;
    QTest::newRow("empty") << "" << false << 0u;
}

void tst_ChildKeys::numbersAreReadLeniently()
{
    QFETCH(const QString, text);
    QFETCH(const bool, ok);
    QFETCH(const quint32, value);
    StubEffect effect;
    for (const UnsignedKey *key : unsignedKeys()) {
        key->writeText(effect, text);
        bool isNumber = !ok;
        QCOMPARE(key->read(effect, &isNumber), value);
        QCOMPARE(isNumber, ok);
        QCOMPARE(key->readText(effect), text);
    }
    for (const TimeKey *key : timeKeys()) {
        key->writeText(effect, text);
        bool isNumber = !ok;
        QCOMPARE(key->read(effect, &isNumber).value(), value);
        QCOMPARE(isNumber, ok);
        QCOMPARE(key->readText(effect), text);
    }
}

void tst_ChildKeys::flagsAreRead_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("flag");
    QTest::newRow("1") << "1" << true;
    QTest::newRow("0") << "0" << false;
    QTest::newRow("true") << "true" << true;
    QTest::newRow("false") << "false" << false;
    QTest::newRow("no flag") << "start" << false;
    QTest::newRow("empty") << "" << false;
}

void tst_ChildKeys::flagsAreRead()
{
    QFETCH(const QString, text);
    StubEffect effect;
    for (const FlagKey *key : {&keys::startRule.linkStart, &keys::endRule.linkStart}) {
        key->writeText(effect, text);
        QTEST(key->read(effect), "flag");
    }
}

void tst_ChildKeys::flagsAreWritten()
{
    StubEffect effect;
    keys::startRule.linkStart.write(effect, true);
    QCOMPARE(effect.text("startlinkstart"), QString("1"));
    keys::startRule.linkStart.write(effect, false);
    QCOMPARE(effect.text("startlinkstart"), QString("0"));
}

void tst_ChildKeys::offsetsAreRead_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("offset");
    QTest::newRow("whole") << "1500" << 1500.0;
    QTest::newRow("negative") << "-2000" << -2000.0;
    QTest::newRow("fraction") << "0.5" << 0.5;
    QTest::newRow("exponent") << "1.23457e+06" << 1234570.0;
    QTest::newRow("inf") << "inf" << HUGE_VAL;
    QTest::newRow("-inf") << "-inf" << -HUGE_VAL;
    QTest::newRow("comma") << "1,5" << 0.0;
    QTest::newRow("too large for a number") << "1e400" << 0.0;
    QTest::newRow("words") << "soon" << 0.0;
    QTest::newRow("empty") << "" << 0.0;
}

void tst_ChildKeys::offsetsAreRead()
{
    QFETCH(const QString, text);
    QFETCH(const double, offset);
    StubEffect effect;
    for (const OffsetKey *key : {&keys::startRule.linkOffset, &keys::endRule.linkOffset}) {
        key->writeText(effect, text);
        QVERIFY(key->read(effect).toDouble() == offset);
        key->writeText(effect, "nan");
        QVERIFY(std::isnan(key->read(effect).toDouble()));
    }
}

void tst_ChildKeys::offsetsAreWrittenInSixDigits()
{
    StubEffect effect;
    keys::endRule.linkOffset.write(effect, meta::Offset(-1234567.8));
    QCOMPARE(effect.text("endlinkoffset"), QString("-1.23457e+06"));
}

void tst_ChildKeys::textIsKeptAsItIs()
{
    StubEffect effect;
    for (const QString &text : {QString("Effect 1"), QString(" <&> \n"), QString()}) {
        for (const TextKey *key : allKeys()) {
            key->writeText(effect, text);
            QCOMPARE(key->readText(effect), text);
        }
    }
}

void tst_ChildKeys::aWriteTouchesItsOwnKeyOnly()
{
    for (const TextKey *key : allKeys()) {
        StubEffect effect;
        key->writeText(effect, "77");
        QCOMPARE(effect.changes, QStringList{key->name() + "=77"});
    }
}

QTEST_GUILESS_MAIN(tst_ChildKeys)

#include "tst_ChildKeys.moc"
