#include "EffectHost.h"
#include "Probe.h"
#include "PropertyStore.h"

#include <QHash>
#include <QTest>

#include <limits>
#include <vector>

using rehearsal::PropertyStore;

namespace {

QStringList keysOf(const std::vector<PropertyStore::Property> &properties)
{
    QStringList keys;
    for (const PropertyStore::Property &property : properties)
        keys.append(property.key);
    return keys;
}

} // namespace

class tst_PropertyStore : public QObject
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
};

void tst_PropertyStore::numberIsUnsigned32BitDecimal_data()
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

void tst_PropertyStore::numberIsUnsigned32BitDecimal()
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

void tst_PropertyStore::realIsANumber_data()
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

void tst_PropertyStore::realIsANumber()
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

void tst_PropertyStore::flagIsOneOrZero_data()
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

void tst_PropertyStore::flagIsOneOrZero()
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

void tst_PropertyStore::missingPropertyReadsAsNothing()
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

void tst_PropertyStore::onePropertyIsReadInEveryWay()
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

void tst_PropertyStore::storeKeepsWhateverWasSetLast()
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

void tst_PropertyStore::propertiesComeInOrderOfArrival()
{
    Probe effect;
    effect.with("zebra", "1").with("name", "Door").with("eid", "4").with("apple", "2");
    effect.with("begin", "100").with("zebra", "3").with("name", "Roof");
    QCOMPARE(keysOf(EffectHost::properties(effect)),
             (QStringList{"zebra", "name", "eid", "apple", "begin", "end", "fadein", "fadeout",
                          "priority", "transparency"}));
}

void tst_PropertyStore::propertyKindIsThatOfItsVariable()
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

void tst_PropertyStore::newTextReachesTheVariable_data()
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

void tst_PropertyStore::newTextReachesTheVariable()
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

void tst_PropertyStore::changedVariableGivesNewText()
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

void tst_PropertyStore::bindingTakesTheVariablesValue()
{
    double real = 0.25;
    PropertyStore store;
    store.set(QStringLiteral("level"), QStringLiteral("0.75"));
    store.bind(QStringLiteral("level"), &real);
    QCOMPARE(*store.text(QStringLiteral("level")), QStringLiteral("0.25"));
    QCOMPARE(store.properties().size(), std::size_t{1});
}

QTEST_GUILESS_MAIN(tst_PropertyStore)
#include "tst_PropertyStore.moc"
