#include "EffectPhrases.h"

#include <QTest>

using rehearsal::EffectText;

using Properties = QList<std::pair<QString, QString>>;

namespace {

EffectText effectOf(const Properties &properties)
{
    EffectText effect;
    for (const auto &[key, text] : properties)
        effect.properties.push_back({key, text});
    return effect;
}

} // namespace

class TestEffectPhrases : public QObject
{
    Q_OBJECT

private slots:
    void startRules_data();
    void startRules();
    void endRules_data();
    void endRules();
    void timesAreInSeconds_data();
    void timesAreInSeconds();
    void theLastOfEqualKeysCounts();
};

void TestEffectPhrases::startRules_data()
{
    QTest::addColumn<Properties>("properties");
    QTest::addColumn<QString>("phrase");

    QTest::newRow("nothing said") << Properties{} << "starts at 0 s";
    QTest::newRow("fixed") << Properties{{"starttype", "0"}, {"startfixedtime", "1500"}}
                           << "starts at 1.5 s";
    QTest::newRow("bad numbers read as 0")
        << Properties{{"starttype", "x"}, {"startfixedtime", "-3"}} << "starts at 0 s";
    QTest::newRow("linked to an end")
        << Properties{{"starttype", "1"}, {"startlinkeid", "3"}} << "starts at the end of 3";
    QTest::newRow("linked to a start")
        << Properties{{"starttype", "1"}, {"startlinkeid", "7"}, {"startlinkstart", "1"}}
        << "starts at the start of 7";
    QTest::newRow("later") << Properties{{"starttype", "1"},
                                         {"startlinkeid", "3"},
                                         {"startlinkoffset", "500"}}
                           << "starts 0.5 s after the end of 3";
    QTest::newRow("earlier") << Properties{{"starttype", "1"},
                                           {"startlinkeid", "3"},
                                           {"startlinkstart", "true"},
                                           {"startlinkoffset", "-1000.5"}}
                             << "starts 1.0005 s before the start of 3";
    QTest::newRow("another code") << Properties{{"starttype", "2"}} << "keeps its start (rule 2)";
}

void TestEffectPhrases::startRules()
{
    QFETCH(Properties, properties);
    QTEST(rehearsal::startPhrase(effectOf(properties)), "phrase");
}

void TestEffectPhrases::endRules_data()
{
    QTest::addColumn<Properties>("properties");
    QTest::addColumn<QString>("phrase");

    QTest::newRow("nothing said") << Properties{} << "lasts 0 s";
    QTest::newRow("fixed") << Properties{{"endtype", "0"}, {"endfixedtime", "2000"}} << "lasts 2 s";
    QTest::newRow("linked") << Properties{{"endtype", "1"},
                                          {"endlinkeid", "4"},
                                          {"endlinkstart", "1"},
                                          {"endlinkoffset", "-250"}}
                            << "ends 0.25 s before the start of 4";
    QTest::newRow("a cycle") << Properties{{"endtype", "2"}, {"endcyclecount", "1"}}
                             << "lasts 1 cycle";
    QTest::newRow("cycles") << Properties{{"endtype", "2"}, {"endcyclecount", "3"}}
                            << "lasts 3 cycles";
    QTest::newRow("another code") << Properties{{"endtype", "9"}} << "keeps its end (rule 9)";
}

void TestEffectPhrases::endRules()
{
    QFETCH(Properties, properties);
    QTEST(rehearsal::endPhrase(effectOf(properties)), "phrase");
}

void TestEffectPhrases::timesAreInSeconds_data()
{
    QTest::addColumn<std::optional<QString>>("ms");
    QTest::addColumn<QString>("text");

    QTest::newRow("whole") << std::optional<QString>("2000") << "2.000 s";
    QTest::newRow("a millisecond") << std::optional<QString>("1") << "0.001 s";
    QTest::newRow("the longest") << std::optional<QString>("4294967295") << "4294967.295 s";
    QTest::newRow("no number") << std::optional<QString>("soon") << "soon";
    QTest::newRow("absent") << std::optional<QString>() << "-";
}

void TestEffectPhrases::timesAreInSeconds()
{
    QFETCH(std::optional<QString>, ms);
    QTEST(rehearsal::secondsColumn(ms), "text");
}

void TestEffectPhrases::theLastOfEqualKeysCounts()
{
    const EffectText effect = effectOf({{"name", "first"}, {"name", "last"}});
    QCOMPARE(rehearsal::propertyOf(effect, u"name"), std::optional<QString>("last"));
}

QTEST_GUILESS_MAIN(TestEffectPhrases)
#include "tst_EffectPhrases.moc"
