#include "Effect.h"
#include "SequenceImport.h"
#include "ShowFile.h"
#include "TestTypes.h"

#include <QFile>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

#include <algorithm>

using rehearsal::FileFault;
using rehearsal::ImportOptions;
using rehearsal::ImportSummary;
using rehearsal::Show;

namespace {

constexpr ImportOptions linked{true};

const QByteArray someSettings =
    "<EffectDB>\n"
    "<Effect>B_CHOICE=Default,E_TEXTCTRL_Eff_On_Start=70,E_TEXTCTRL_Eff_On_End=30</Effect>\n"
    "<Effect></Effect>\n"
    "<Effect>E_TEXTCTRL_Eff_On_End=12.5, T_TEXTCTRL_Fadein=0.25 "
    ",T_TEXTCTRL_Fadeout=1.005</Effect>\n"
    "<Effect>E_TEXTCTRL_Eff_On_Start=250,E_TEXTCTRL_Eff_On_End=-1,T_TEXTCTRL_Fadein=</Effect>\n"
    "</EffectDB>\n";

QByteArray sequenceOf(const QByteArray &elements, const QByteArray &settings = someSettings)
{
    return "<xsequence>\n" + settings + "<ElementEffects>\n" + elements +
           "</ElementEffects>\n</xsequence>\n";
}

QByteArray modelOf(const QByteArray &name, const QByteArray &effects)
{
    return "<Element type=\"model\" name=\"" + name + "\">\n<EffectLayer>\n" + effects +
           "</EffectLayer>\n</Element>\n";
}

QByteArray effectOf(const QByteArray &start, const QByteArray &end,
                    const QByteArray &more = "name=\"On\"")
{
    return "<Effect startTime=\"" + start + "\" endTime=\"" + end + "\" " + more + "/>\n";
}

std::unique_ptr<Show> import(const QByteArray &text, ImportOptions options = {},
                             ImportSummary *summary = nullptr, QString *message = nullptr)
{
    FileFault fault;
    ImportSummary ignored;
    std::unique_ptr<Show> show =
        rehearsal::parseSequence(text, QStringLiteral("some/night.v2.xsq"), allTypes(), options,
                                 summary ? summary : &ignored, &fault);
    if (message)
        *message = show ? QString() : fault.message();
    return show;
}

/// The children of the show's meta effect in document order, which precede it among the built.
std::vector<Effect *> childrenOf(const Show &show)
{
    std::vector<Effect *> effects = show.loadedEffects();
    effects.pop_back();
    return effects;
}

/// The properties of these keys, separated by blanks; "-" for one that is not there.
QString properties(const Effect *effect, const QString &keys)
{
    QStringList texts;
    for (const QString &key : keys.split(u' ')) {
        bool isThere = false;
        const QString text = effect->getPropertyString(key, &isThere);
        texts.append(isThere ? text : QStringLiteral("-"));
    }
    return texts.join(u' ');
}

struct Span
{
    quint32 begin;
    quint32 end;
    friend bool operator==(Span, Span) = default;
};

std::vector<Span> spansOf(const std::vector<Effect *> &effects)
{
    std::vector<Span> spans;
    spans.reserve(effects.size());
    for (const Effect *effect : effects)
        spans.push_back({static_cast<quint32>(effect->getPropertyULong(QStringLiteral("begin"))),
                         static_cast<quint32>(effect->getPropertyULong(QStringLiteral("end")))});
    return spans;
}

} // namespace

class tst_SequenceImport : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void everyModelWithAnEffectBecomesALightAndAChasingGroup();
    void lightsStandOnAGridWithinThePicture();
    void modelsOfOneNameAreOne();
    void childrenAreNumberedNamedAndTimedInDocumentOrder();
    void effectsOfStrandsAreChildrenToo();
    void oneMetaEffectPlaysOnceAndHoldsAll();

    void effectTypeDecidesTypeAndLevels_data();
    void effectTypeDecidesTypeAndLevels();
    void fadesAreReadInSeconds();
    void settingsMayStandBehindTheEffects();
    void replacedTypesAreCounted();

    void adjacentEffectsAreLinkedOnRequestOnly();
    void linkingKeepsEveryTime_data();
    void linkingKeepsEveryTime();

    void importedShowSurvivesSavingAndLoading();
    void faultNamesFileAndLine_data();
    void faultNamesFileAndLine();
    void missingEffectTypeIsAFault_data();
    void missingEffectTypeIsAFault();
    void deeplyNestedElementsAreWalked();
    void fileThatCannotBeReadIsAFault();

    void progressGrowsFromReadingToTheLastEffect();
    void importIsCancelledWhereverItIs_data();
    void importIsCancelledWhereverItIs();

    void realSequenceKeepsItsTimes_data();
    void realSequenceKeepsItsTimes();
};

void tst_SequenceImport::initTestCase()
{
    // The plug-in tells there, line by line, how it resolves times.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_SequenceImport::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
}

void tst_SequenceImport::everyModelWithAnEffectBecomesALightAndAChasingGroup()
{
    ImportSummary summary;
    const std::unique_ptr<Show> show = import(
        sequenceOf(modelOf("Roof", effectOf("0", "10")) + modelOf("Empty", "") +
                   "<Element type=\"timing\" name=\"Beat\"><EffectLayer>" + effectOf("0", "5") +
                   "</EffectLayer></Element>" + modelOf("Tree &amp; yard", effectOf("5", "7"))),
        {}, &summary);
    QVERIFY(show);
    QCOMPARE(summary.lights, 2);
    QCOMPARE(summary.effects, 2);
    QCOMPARE(show->map().lights().size(), std::size_t(2));
    QCOMPARE(show->map().light(1)->name(), QStringLiteral("Roof"));
    QCOMPARE(show->map().light(2)->name(), QStringLiteral("Tree & yard"));
    QCOMPARE(show->map().groups().size(), std::size_t(2));
    for (const quint32 uid : {1u, 2u}) {
        const rehearsal::StageGroup *group = show->map().group(uid);
        QCOMPARE(group->groupType(), ChasingGroup);
        QCOMPARE(group->name(), show->map().light(uid)->name());
        QCOMPARE(group->lights(), QList{show->map().light(uid)});
    }
}

void tst_SequenceImport::lightsStandOnAGridWithinThePicture()
{
    QByteArray models;
    for (int i = 0; i < 5; ++i)
        models += modelOf("M" + QByteArray::number(i), effectOf("0", "1"));
    const std::unique_ptr<Show> show = import(sequenceOf(models));
    QVERIFY(show);
    QList<QPointF> places;
    for (const rehearsal::StageLight *light : show->map().lights())
        places.append(light->place());
    QCOMPARE(places,
             (QList<QPointF>{
                 {1.0 / 6, 0.25}, {0.5, 0.25}, {5.0 / 6, 0.25}, {1.0 / 6, 0.75}, {0.5, 0.75}}));
}

void tst_SequenceImport::modelsOfOneNameAreOne()
{
    const std::unique_ptr<Show> show =
        import(sequenceOf(modelOf("A", effectOf("0", "1")) + modelOf("B", effectOf("0", "1")) +
                          modelOf("A", effectOf("4", "5"))));
    QVERIFY(show);
    QCOMPARE(show->map().lights().size(), std::size_t(2));
    QStringList names;
    for (const Effect *child : childrenOf(*show))
        names.append(properties(child, QStringLiteral("gid name")));
    QCOMPARE(names.join(u", "), QStringLiteral("1 A 1, 2 B 1, 1 A 2"));
}

void tst_SequenceImport::childrenAreNumberedNamedAndTimedInDocumentOrder()
{
    const std::unique_ptr<Show> show =
        import(sequenceOf(modelOf("A", effectOf("100", "250") + effectOf("250", "250")) +
                          modelOf("B", effectOf("0", "4294967295"))));
    QVERIFY(show);
    const QString keys = QStringLiteral("eid name gid starttype startfixedtime endtype endfixedtime"
                                        " begin end startlinkeid");
    const std::vector<Effect *> children = childrenOf(*show);
    QCOMPARE(children.size(), std::size_t(3));
    QCOMPARE(properties(children[0], keys), QStringLiteral("1 A 1 1 0 100 0 150 100 250 -"));
    QCOMPARE(properties(children[1], keys), QStringLiteral("2 A 2 1 0 250 0 0 250 250 -"));
    QCOMPARE(properties(children[2], keys),
             QStringLiteral("3 B 1 2 0 0 0 4294967295 0 4294967295 -"));
}

void tst_SequenceImport::effectsOfStrandsAreChildrenToo()
{
    const std::unique_ptr<Show> show =
        import(sequenceOf("<Element type=\"model\" name=\"A\"><EffectLayer/><Strand>" +
                          effectOf("0", "10") + "<Node>" + effectOf("10", "20") +
                          "</Node></Strand></Element>"),
               linked);
    QVERIFY(show);
    const std::vector<Effect *> children = childrenOf(*show);
    QCOMPARE(children.size(), std::size_t(2));
    QCOMPARE(properties(children[0], QStringLiteral("starttype")), QStringLiteral("0"));
    QCOMPARE(properties(children[1], QStringLiteral("starttype")), QStringLiteral("0"));
    QCOMPARE(properties(children[1], QStringLiteral("name")), QStringLiteral("A 2"));
}

void tst_SequenceImport::oneMetaEffectPlaysOnceAndHoldsAll()
{
    const std::unique_ptr<Show> show =
        import(sequenceOf(modelOf("A", effectOf("0", "700") + effectOf("100", "250"))));
    QVERIFY(show);
    QCOMPARE(show->effects().size(), 1);
    Effect *meta = show->effects()[0];
    QCOMPARE(properties(meta, QStringLiteral("type name loop begin end")),
             QStringLiteral("Meta Effect night.v2 0 0 700"));
    QCOMPARE(show->loadedEffects().back(), meta);
    QVERIFY(!meta->isDirty());
}

void tst_SequenceImport::effectTypeDecidesTypeAndLevels_data()
{
    QTest::addColumn<QByteArray>("attributes");
    QTest::addColumn<QString>("expected"); // type, then the levels
    QTest::addColumn<int>("replaced");

    QTest::newRow("On") << QByteArray("name=\"On\" ref=\"0\"") << "Ramp from 0.7 to 0.3" << 0;
    QTest::newRow("On without settings") << QByteArray("name=\"On\"") << "Ramp from 1 to 1" << 0;
    QTest::newRow("On with empty settings")
        << QByteArray("name=\"On\" ref=\"1\"") << "Ramp from 1 to 1" << 0;
    QTest::newRow("On with an end only")
        << QByteArray("name=\"On\" ref=\"2\"") << "Ramp from 1 to 0.125" << 0;
    QTest::newRow("On beyond 0 to 100")
        << QByteArray("name=\"On\" ref=\"3\"") << "Ramp from 1 to 0" << 0;
    QTest::newRow("Off") << QByteArray("name=\"Off\" ref=\"0\"") << "Solid level 0" << 0;
    QTest::newRow("Twinkle") << QByteArray("name=\"Twinkle\"") << "Twinkle" << 0;
    QTest::newRow("Strobe") << QByteArray("name=\"Strobe\"") << "Strobe" << 0;
    QTest::newRow("any other") << QByteArray("name=\"Butterfly\"") << "Solid level 1" << 1;
    QTest::newRow("a type of ours") << QByteArray("name=\"Meta Effect\"") << "Solid level 1" << 1;
    QTest::newRow("no name") << QByteArray("ref=\"0\"") << "Solid level 1" << 1;
}

void tst_SequenceImport::effectTypeDecidesTypeAndLevels()
{
    QFETCH(QByteArray, attributes);
    QFETCH(QString, expected);
    QFETCH(int, replaced);
    ImportSummary summary;
    const std::unique_ptr<Show> show =
        import(sequenceOf(modelOf("A", effectOf("0", "10", attributes))), {}, &summary);
    QVERIFY(show);
    const Effect *child = childrenOf(*show)[0];
    QString actual = properties(child, QStringLiteral("type"));
    if (actual == u"Ramp")
        actual += QStringLiteral(" from %1 to %2")
                      .arg(properties(child, QStringLiteral("from")),
                           properties(child, QStringLiteral("to")));
    else if (actual == u"Solid")
        actual += QStringLiteral(" level %1").arg(properties(child, QStringLiteral("level")));
    QCOMPARE(actual, expected);
    QCOMPARE(summary.replaced.size(), static_cast<std::size_t>(replaced));
}

void tst_SequenceImport::fadesAreReadInSeconds()
{
    const std::unique_ptr<Show> show = import(sequenceOf(
        modelOf("A", effectOf("0", "10", "name=\"Strobe\" ref=\"2\"") +
                         effectOf("0", "10", "name=\"On\" ref=\"3\"") + effectOf("0", "10"))));
    QVERIFY(show);
    const std::vector<Effect *> children = childrenOf(*show);
    QCOMPARE(properties(children[0], QStringLiteral("fadein fadeout")), QStringLiteral("250 1005"));
    QCOMPARE(properties(children[1], QStringLiteral("fadein fadeout")), QStringLiteral("0 0"));
    QCOMPARE(properties(children[2], QStringLiteral("fadein fadeout")), QStringLiteral("0 0"));
}

void tst_SequenceImport::settingsMayStandBehindTheEffects()
{
    const std::unique_ptr<Show> show = import(
        "<xsequence><ElementEffects>" + modelOf("A", effectOf("0", "10", "name=\"On\" ref=\"0\"")) +
        "</ElementEffects>" + someSettings + "</xsequence>");
    QVERIFY(show);
    QCOMPARE(properties(childrenOf(*show)[0], QStringLiteral("from")), QStringLiteral("0.7"));
}

void tst_SequenceImport::replacedTypesAreCounted()
{
    ImportSummary summary;
    QVERIFY(import(
        sequenceOf(modelOf("A", effectOf("0", "1", "name=\"Fire\"") +
                                    effectOf("1", "2", "name=\"Bars\"") + effectOf("2", "3")) +
                   modelOf("B", effectOf("0", "1", "name=\"Fire\""))),
        {}, &summary));
    const std::map<QString, int> expected{{QStringLiteral("Bars"), 1}, {QStringLiteral("Fire"), 2}};
    QCOMPARE(summary.replaced, expected);
    QCOMPARE(summary.effects, 4);
    QCOMPARE(summary.linked, 0);
}

void tst_SequenceImport::adjacentEffectsAreLinkedOnRequestOnly()
{
    // 3 follows on 1, with one between them that is not of the layer; 5 follows on 4; 6 and 7 begin
    // new layers where 5 and 6 end.
    const QByteArray text = sequenceOf(
        "<Element type=\"model\" name=\"A\"><EffectLayer>" + effectOf("0", "10") + "<note>" +
        effectOf("500", "600") + "</note>" + effectOf("10", "20") + effectOf("30", "40") +
        effectOf("40", "50") + "</EffectLayer><EffectLayer>" + effectOf("50", "60") +
        "</EffectLayer></Element>" + modelOf("B", effectOf("60", "70") + effectOf("20", "30")));
    ImportSummary summary;
    const std::unique_ptr<Show> plain = import(text, {}, &summary);
    QVERIFY(plain);
    QCOMPARE(summary.linked, 0);
    for (const Effect *child : childrenOf(*plain))
        QCOMPARE(properties(child, QStringLiteral("starttype")), QStringLiteral("0"));

    const std::unique_ptr<Show> show = import(text, linked, &summary);
    QVERIFY(show);
    QCOMPARE(summary.linked, 2);
    const std::vector<Effect *> children = childrenOf(*show);
    QStringList links;
    for (const Effect *child : children)
        links.append(properties(child, QStringLiteral("starttype startlinkeid")));
    QCOMPARE(links.join(u", "), QStringLiteral("0 -, 0 -, 1 1, 0 -, 1 4, 0 -, 0 -, 0 -"));
    QCOMPARE(properties(children[2], QStringLiteral("startlinkstart startlinkoffset endtype"
                                                    " endfixedtime begin end")),
             QStringLiteral("0 0 0 10 10 20"));
    QVERIFY(spansOf(children) == spansOf(childrenOf(*plain)));
}

void tst_SequenceImport::linkingKeepsEveryTime_data()
{
    QTest::addColumn<QList<quint32>>("borders");
    QTest::newRow("odd milliseconds") << QList<quint32>{0, 1, 3, 1000003, 1234567, 1234568};
    QTest::newRow("up to the last millisecond")
        << QList<quint32>{4294967000, 4294967293, 4294967294, 4294967295};
    QTest::newRow("no length") << QList<quint32>{25, 25, 25, 26};
}

void tst_SequenceImport::linkingKeepsEveryTime()
{
    QFETCH(QList<quint32>, borders);
    QByteArray effects;
    std::vector<Span> expected;
    for (qsizetype i = 1; i < borders.size(); ++i) {
        effects += effectOf(QByteArray::number(borders[i - 1]), QByteArray::number(borders[i]));
        expected.push_back({borders[i - 1], borders[i]});
    }
    ImportSummary summary;
    const std::unique_ptr<Show> show = import(sequenceOf(modelOf("A", effects)), linked, &summary);
    QVERIFY(show);
    QCOMPARE(summary.linked, static_cast<int>(borders.size() - 2));
    QVERIFY(spansOf(childrenOf(*show)) == expected);
}

void tst_SequenceImport::importedShowSurvivesSavingAndLoading()
{
    const std::unique_ptr<Show> show =
        import(sequenceOf(modelOf("A", effectOf("0", "10", "name=\"On\" ref=\"2\"") +
                                           effectOf("10", "20")) +
                          modelOf("&lt;B&gt;", effectOf("5", "9", "name=\"Twinkle\""))),
               linked);
    QVERIFY(show);
    const QString saved = rehearsal::showText(*show);
    FileFault fault;
    const std::unique_ptr<Show> loaded =
        rehearsal::parseShow(saved.toUtf8(), QStringLiteral("a.show"), allTypes(), &fault);
    QVERIFY2(loaded, qPrintable(fault.message()));
    QCOMPARE(rehearsal::showText(*loaded), saved);
    QVERIFY(spansOf(loaded->loadedEffects()) == spansOf(show->loadedEffects()));
}

void tst_SequenceImport::faultNamesFileAndLine_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *name, const QByteArray &text, const char *message) {
        QTest::newRow(name) << text << QStringLiteral("some/night.v2.xsq") + QLatin1String(message);
    };
    const QByteArray sound = sequenceOf(modelOf("A", effectOf("0", "10")));

    row("empty", "", ": the file is empty");
    row("not UTF-8", "<xsequence>\n\xFF</xsequence>", ":2: this is not text in UTF-8");
    row("not XML", "PK\x03\x04", ":1: this is not XML: Start tag expected.");
    row("cut short", sound.chopped(15), ":14: the file is cut short");
    row("document type", "<!DOCTYPE xsequence>\n" + sound,
        ":1: a document type is not allowed here");
    row("not a sequence", "<show version=\"1\"/>",
        ":1: this is not a sequence: its outermost element is \"show\"");
    row("no elements", "\n<xsequence></xsequence>", ":2: the sequence has no effect on a model");
    row("no effect on a model", sequenceOf(modelOf("A", "")),
        ":1: the sequence has no effect on a model");
    row("model without a name", sequenceOf(modelOf("", effectOf("0", "10"))),
        ":9: a model has no name");

    // The first effect is on line 11.
    const auto effect = [&row](const char *name, const QByteArray &text, const char *message) {
        row(name, sequenceOf(modelOf("A", effectOf("0", "10") + text)), message);
    };
    effect("no start", "<Effect name=\"On\" endTime=\"5\"/>", ":12: an effect has no startTime");
    effect("no end", "<Effect name=\"On\" startTime=\"5\"/>", ":12: an effect has no endTime");
    effect("start in words", effectOf("soon", "5"),
           ":12: an effect has the startTime \"soon\", not a number of milliseconds from 0 to"
           " 4294967295");
    effect("negative start", effectOf("-5", "5"),
           ":12: an effect has the startTime \"-5\", not a number of milliseconds from 0 to"
           " 4294967295");
    effect("fractional end", effectOf("5", "7.5"),
           ":12: an effect has the endTime \"7.5\", not a number of milliseconds from 0 to"
           " 4294967295");
    effect("end too late", effectOf("5", "4294967296"),
           ":12: an effect has the endTime \"4294967296\", not a number of milliseconds from 0 to"
           " 4294967295");
    effect("end before start", effectOf("5", "4"),
           ":12: an effect ends at 4 before it starts at 5");
    effect("ref in words", effectOf("0", "5", "name=\"On\" ref=\"x\""),
           ":12: an effect has the ref \"x\", not a whole number");
    effect("negative ref", effectOf("0", "5", "name=\"On\" ref=\"-1\""),
           ":12: an effect has the ref \"-1\", not a whole number");
    effect("ref beyond the settings", effectOf("0", "5", "name=\"On\" ref=\"4\""),
           ":12: an effect has the ref 4, but there are 4 settings");

    const auto setting = [&row](const char *name, const QByteArray &text, const char *message) {
        row(name,
            sequenceOf(modelOf("A", effectOf("0", "10", "name=\"On\" ref=\"1\"")),
                       "<EffectDB>\n<Effect/>\n<Effect>" + text + "</Effect>\n</EffectDB>\n"),
            message);
    };
    setting("level in words", "E_TEXTCTRL_Eff_On_End=full",
            ":4: the setting E_TEXTCTRL_Eff_On_End is \"full\", not a number");
    setting("level is nan", "E_TEXTCTRL_Eff_On_Start=nan",
            ":4: the setting E_TEXTCTRL_Eff_On_Start is \"nan\", not a number");
    setting("fade in words", "T_TEXTCTRL_Fadein=slow",
            ":4: the setting T_TEXTCTRL_Fadein is \"slow\", not a number");
    setting("negative fade", "T_TEXTCTRL_Fadeout=-0.5",
            ":4: the setting T_TEXTCTRL_Fadeout is \"-0.5\", not 0 to 4294967.295 seconds");
    setting("endless fade", "T_TEXTCTRL_Fadein=1e9",
            ":4: the setting T_TEXTCTRL_Fadein is \"1e9\", not 0 to 4294967.295 seconds");
}

void tst_SequenceImport::faultNamesFileAndLine()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, message);
    QString actual;
    QVERIFY(!import(text, {}, nullptr, &actual));
    QCOMPARE(actual, message);
    QVERIFY(!import(text, linked, nullptr, &actual));
    QCOMPARE(actual, message);
}

void tst_SequenceImport::missingEffectTypeIsAFault_data()
{
    QTest::addColumn<QString>("type");
    QTest::newRow("Meta Effect") << QStringLiteral("Meta Effect");
    QTest::newRow("Ramp") << QStringLiteral("Ramp");
}

void tst_SequenceImport::missingEffectTypeIsAFault()
{
    QFETCH(QString, type);
    const auto allButOne = [&type](rehearsal::EffectFactory &factory) {
        allTypes()(factory);
        factory.addType(type, [](MapModel *) -> Effect * { return nullptr; });
    };
    FileFault fault;
    ImportSummary summary;
    QVERIFY(!rehearsal::parseSequence(sequenceOf(modelOf("A", effectOf("0", "10"))),
                                      QStringLiteral("a.xsq"), allButOne, {}, &summary, &fault));
    QCOMPARE(fault.message(),
             QStringLiteral("a.xsq: there is no effect of the type \"%1\"").arg(type));
}

void tst_SequenceImport::deeplyNestedElementsAreWalked()
{
    const int depth = 200000;
    const QByteArray in = QByteArray("<a>").repeated(depth);
    const QByteArray out = QByteArray("</a>").repeated(depth);
    const std::unique_ptr<Show> show =
        import("<xsequence>" + in + out + "<ElementEffects><Element type=\"model\" name=\"A\">" +
               in + effectOf("0", "10") + out + "</Element></ElementEffects></xsequence>");
    QVERIFY(show);
    QCOMPARE(childrenOf(*show).size(), std::size_t(1));
}

void tst_SequenceImport::fileThatCannotBeReadIsAFault()
{
    const QTemporaryDir folder;
    QVERIFY(folder.isValid());
    FileFault fault;
    ImportSummary summary;
    const QString file = folder.filePath(QStringLiteral("none.xsq"));
    QVERIFY(!rehearsal::importSequence(file, allTypes(), {}, &summary, &fault));
    QCOMPARE(fault.message(),
             file + QStringLiteral(": the file cannot be read: No such file or directory"));
    QVERIFY(!rehearsal::importSequence(folder.path(), allTypes(), {}, &summary, &fault));
    QCOMPARE(fault.message(), folder.path() + QStringLiteral(": this is a directory"));
}

// --- Progress ---

void tst_SequenceImport::progressGrowsFromReadingToTheLastEffect()
{
    QByteArray effects;
    for (int i = 0; i < 200; ++i)
        effects += effectOf(QByteArray::number(i), QByteArray::number(i + 1));
    const QByteArray text = sequenceOf(modelOf("A", effects));
    std::vector<int> percents;
    ImportSummary summary;
    FileFault fault;
    QVERIFY(rehearsal::parseSequence(text, "a.xsq", allTypes(), {}, &summary, &fault,
                                     [&percents](int percent) {
                                         percents.push_back(percent);
                                         return true;
                                     }));
    QCOMPARE(percents.size(), std::size_t{4 + 200 + 200}); // settings and effects, read; built
    QVERIFY(std::is_sorted(percents.begin(), percents.end()));
    QVERIFY(percents.front() >= 0 && percents.front() < 5);
    QCOMPARE(percents.back(), 100);
}

void tst_SequenceImport::importIsCancelledWhereverItIs_data()
{
    QTest::addColumn<int>("calls"); // the last of which says no
    QTest::newRow("in the settings") << 1;
    QTest::newRow("at the first effect") << 5;
    QTest::newRow("at the last effect") << 7;
    QTest::newRow("while it builds") << 8;
    QTest::newRow("when all is built") << 10;
}

void tst_SequenceImport::importIsCancelledWhereverItIs()
{
    QFETCH(int, calls);
    const QByteArray text =
        sequenceOf(modelOf("A", effectOf("0", "1") + effectOf("1", "2") + effectOf("2", "3")));
    int made = 0;
    ImportSummary summary;
    summary.effects = -1;
    FileFault fault{"old", 1, "old"};
    QVERIFY(!rehearsal::parseSequence(text, "a.xsq", allTypes(), {}, &summary, &fault,
                                      [&](int) { return ++made < calls; }));
    QCOMPARE(made, calls);
    QCOMPARE(fault.what, QString());
    QCOMPARE(summary.effects, -1);
}

void tst_SequenceImport::realSequenceKeepsItsTimes_data()
{
    QTest::addColumn<bool>("linkAdjacent");
    QTest::addColumn<int>("linkedEffects");
    QTest::newRow("fixed") << false << 0;
    QTest::newRow("linked") << true << 598;
}

void tst_SequenceImport::realSequenceKeepsItsTimes()
{
    QFETCH(bool, linkAdjacent);
    QFETCH(int, linkedEffects);
    QFile file(QStringLiteral(META_SHARED_DATA "/arrival-car-1.xsq"));
    if (!file.open(QIODevice::ReadOnly)) {
        qInfo("There is no %s: nothing to check here", qPrintable(file.fileName()));
        return;
    }

    // The file's own times, read without the import.
    std::vector<Span> expected;
    quint32 latest = 0;
    bool isInModel = false;
    QXmlStreamReader reader(&file);
    while (!reader.atEnd()) {
        reader.readNext();
        const QXmlStreamAttributes attributes = reader.attributes();
        if (reader.isStartElement() && reader.name() == u"Element")
            isInModel = attributes.value(QLatin1String("type")) == u"model";
        if (reader.isStartElement() && reader.name() == u"Effect" && isInModel &&
            attributes.hasAttribute(QLatin1String("startTime"))) {
            expected.push_back({attributes.value(QLatin1String("startTime")).toUInt(),
                                attributes.value(QLatin1String("endTime")).toUInt()});
            latest = std::max(latest, expected.back().end);
        }
    }
    QCOMPARE(expected.size(), std::size_t(1289));

    FileFault fault;
    ImportSummary summary;
    const std::unique_ptr<Show> show =
        rehearsal::importSequence(file.fileName(), allTypes(), {linkAdjacent}, &summary, &fault);
    QVERIFY2(show, qPrintable(fault.message()));
    QCOMPARE(summary.effects, 1289);
    QCOMPARE(summary.lights, 38);
    QCOMPARE(summary.linked, linkedEffects);
    QVERIFY(spansOf(childrenOf(*show)) == expected);
    QCOMPARE(show->effects()[0]->getPropertyULong(QStringLiteral("end")), latest);

    const QByteArray saved = rehearsal::showText(*show).toUtf8();
    const std::unique_ptr<Show> loaded =
        rehearsal::parseShow(saved, QStringLiteral("a.show"), allTypes(), &fault);
    QVERIFY2(loaded, qPrintable(fault.message()));
    QVERIFY(spansOf(childrenOf(*loaded)) == expected);
    QCOMPARE(rehearsal::showText(*loaded).toUtf8(), saved);
}

QTEST_GUILESS_MAIN(tst_SequenceImport)
#include "tst_SequenceImport.moc"
