#include "EffectHost.h"
#include "ShowUser.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <ctime>

using rehearsal::FileFault;
using rehearsal::Show;

namespace {

const QString facade = QStringLiteral(META_SOURCE_DIR "/examples/facade.show");
const QString entry = QStringLiteral("<EFFECT-ENTRY>\n");

QString setting(const char *key, const QString &text)
{
    return QStringLiteral("<property key=\"%1\">%2</property>\n").arg(QLatin1String(key), text);
}

QString effectText(const char *type, const QString &content)
{
    return QStringLiteral("<effect type=\"%1\">\n%2</effect>\n").arg(QLatin1String(type), content);
}

/// A show of one meta effect with this content.
std::unique_ptr<Show> showOf(const QString &content)
{
    FileFault fault;
    const QString text =
        QStringLiteral("<show version=\"1\">\n<map>\n"
                       "<light uid=\"1\" name=\"Lamp\" x=\"0.5\" y=\"0.5\"/>\n"
                       "<group uid=\"10\" name=\"Roof\" type=\"chasing\" lights=\"1\"/>\n"
                       "</map>\n")
        + effectText("Meta Effect", content) + QStringLiteral("</show>\n");
    auto show = rehearsal::parseShow(text.toUtf8(), QStringLiteral("made"), allTypes(), &fault);
    if (!show)
        qFatal("%s", qPrintable(fault.message()));
    return show;
}

/// Null when the show could not be saved and read again.
std::unique_ptr<Show> savedAndRead(const Show &show)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("saved.show"));
    FileFault fault;
    return rehearsal::saveShow(show, file, &fault) ? readShow(file) : nullptr;
}

QStringList names(const MetaEffect &parent)
{
    QStringList found;
    const EffectList children = parent.getEffects();
    for (const Effect *child : children)
        found.append(textOf(*child, "name"));
    return found;
}

QString copyOf(const QString &name)
{
    return QStringLiteral("Copy of ") + name;
}

QString copied(const QString &content)
{
    return entry + content;
}

} // namespace

/// Children that go from one show to another by way of the clipboard, and to the file.
class tst_TransferBetweenShows : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void childIsTheSameInTheOtherShowAndAfterReloading_data();
    void childIsTheSameInTheOtherShowAndAfterReloading();
    void cutChildLeavesOneShowForTheOther();
    void linkedChildKeepsItsLinkWhereTheTargetIs();
    void nestedMetaEffectsKeepAllTheyHoldAtAnyDepth();
    void textGoesToAnotherDepthUnchanged();
    void unknownTypeIsRefusedAndWhatStandsAroundItPasted();
    void unknownTypeWithinAMetaEffectGoesAlongWordForWord();
    void markerInTheKeptTextOfAnUnknownTypeBreaksItsPieceAlone();
    void anyNameSurvives_data();
    void anyNameSurvives();
    void brokenPiecesBetweenGoodOnesAreSkipped_data();
    void brokenPiecesBetweenGoodOnesAreSkipped();
    void tenMegabytesOfChildrenTakeLinearTime();
    void tenMegabytesOfRubbishAreSkipped_data();
    void tenMegabytesOfRubbishAreSkipped();
};

void tst_TransferBetweenShows::initTestCase()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
}

void tst_TransferBetweenShows::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

void tst_TransferBetweenShows::childIsTheSameInTheOtherShowAndAfterReloading_data()
{
    QTest::addColumn<QString>("name");

    const auto show = readShow(facade);
    QVERIFY(show);
    const QStringList all = names(topOf(*show));
    QVERIFY(all.size() > 10);
    for (const QString &name : all)
        QTest::newRow(qPrintable(name)) << name;
}

// The other show is the same one, so that there every link finds its target, too.
void tst_TransferBetweenShows::childIsTheSameInTheOtherShowAndAfterReloading()
{
    QFETCH(QString, name);
    const auto source = readShow(facade);
    const auto target = readShow(facade);
    QVERIFY(source && target);
    ShowUser author(topOf(*source));
    author.select(name);
    author.choose(ShowUser::Copy);
    const QString expected = savedWithoutIdentity(*childNamed(topOf(*source), name));

    ShowUser(topOf(*target)).choose(ShowUser::Paste);

    Effect *pasted = childNamed(topOf(*target), copyOf(name));
    QVERIFY(pasted);
    QCOMPARE(savedWithoutIdentity(*pasted), expected);
    const auto reloaded = savedAndRead(*target);
    QVERIFY(reloaded);
    QCOMPARE(rehearsal::showText(*reloaded), rehearsal::showText(*target));
    Effect *read = childNamed(topOf(*reloaded), copyOf(name));
    QVERIFY(read);
    QCOMPARE(savedWithoutIdentity(*read), expected);
    QCOMPARE(textOf(*read, "eid"), textOf(*pasted, "eid"));
}

void tst_TransferBetweenShows::cutChildLeavesOneShowForTheOther()
{
    const auto source = showOf(effectText("Solid", setting("name", "a") + setting("eid", "1"))
                               + effectText("Ramp", setting("name", "b") + setting("eid", "2")));
    const auto target = showOf({});
    ShowUser author(topOf(*source));
    author.select(QStringLiteral("b"));

    author.choose(ShowUser::Cut);
    ShowUser(topOf(*target)).choose(ShowUser::Paste);

    const auto sourceNow = savedAndRead(*source);
    const auto targetNow = savedAndRead(*target);
    QVERIFY(sourceNow && targetNow);
    QCOMPARE(names(topOf(*sourceNow)), QStringList({"a"}));
    QCOMPARE(names(topOf(*targetNow)), QStringList({"Copy of b"}));
    QCOMPARE(textOf(*topOf(*targetNow).getEffect(0), "type"), QStringLiteral("Ramp"));
    QVERIFY(topOf(*source).isDirty());
}

void tst_TransferBetweenShows::linkedChildKeepsItsLinkWhereTheTargetIs()
{
    const auto source = showOf(
        effectText("Solid",
                   setting("name", "a") + setting("eid", "1") + setting("endfixedtime", "3000"))
        + effectText("Solid", setting("name", "b") + setting("eid", "2") + setting("starttype", "1")
                                  + setting("startlinkeid", "1") + setting("startlinkoffset", "500")
                                  + setting("endtype", "2") + setting("endcyclecount", "2")));
    const auto target =
        showOf(effectText("Solid", setting("name", "other") + setting("eid", "1")
                                       + setting("endfixedtime", "700") + setting("end", "700")));
    ShowUser author(topOf(*source));
    author.select(QStringLiteral("b"));
    author.choose(ShowUser::Copy);

    ShowUser(topOf(*target)).choose(ShowUser::Paste);

    for (const auto &show : {savedAndRead(*target), savedAndRead(*target)}) {
        QVERIFY(show);
        const Effect *pasted = topOf(*show).getEffect(2);
        QVERIFY(pasted);
        QCOMPARE(textOf(*pasted, "starttype"), QStringLiteral("1"));
        QCOMPARE(textOf(*pasted, "startlinkeid"), QStringLiteral("1"));
        QCOMPARE(textOf(*pasted, "startlinkoffset"), QStringLiteral("500"));
        QCOMPARE(textOf(*pasted, "begin"), QStringLiteral("1200"));
        QCOMPARE(textOf(*pasted, "end"), QStringLiteral("3200"));
        QCOMPARE(textOf(topOf(*show), "end"), QStringLiteral("3200"));
    }
}

namespace {

/// A meta effect in a meta effect and so on, each with a Solid of the same eids and linked to it.
QString nestedText(int depth)
{
    if (depth == 0)
        return {};
    return effectText("Solid", setting("name", QStringLiteral("leaf %1").arg(depth))
                                   + setting("eid", "4") + setting("endfixedtime", "900")
                                   + setting("end", "900"))
           + effectText("Meta Effect", setting("name", QStringLiteral("branch %1").arg(depth))
                                           + setting("eid", "5") + setting("starttype", "1")
                                           + setting("startlinkeid", "4") + nestedText(depth - 1));
}

} // namespace

void tst_TransferBetweenShows::nestedMetaEffectsKeepAllTheyHoldAtAnyDepth()
{
    constexpr int depth = 60;
    const auto source = showOf(nestedText(depth));
    const auto target = showOf(nestedText(1));
    const QString expected = savedWithoutIdentity(*topOf(*source).getEffect(5));
    QString text = entry + savedText(*topOf(*source).getEffect(5));

    topOf(*target).pasteEffect(text);

    const auto reloaded = savedAndRead(*target);
    QVERIFY(reloaded);
    Effect *pasted = topOf(*reloaded).getEffect(6);
    QVERIFY(pasted);
    QCOMPARE(savedWithoutIdentity(*pasted).count(QStringLiteral("<effect ")), 2 * depth - 1);
    QString at = savedWithoutIdentity(*pasted);
    // Its own times are those of its new place; those within are not touched.
    const qsizetype within = at.indexOf(QStringLiteral("<effect "), 1);
    QCOMPARE(at.mid(within), expected.mid(expected.indexOf(QStringLiteral("<effect "), 1)));
    int level = EffectHost::level(*pasted);
    QCOMPARE(level, 1);
    while (auto *branch = qobject_cast<MetaEffect *>(pasted)) {
        QCOMPARE(EffectHost::level(*branch), level++);
        pasted = branch->getEffect(5);
        if (!pasted)
            break;
        QCOMPARE(textOf(*pasted, "startlinkeid"), QStringLiteral("4"));
    }
    QCOMPARE(level, depth + 1);
}

void tst_TransferBetweenShows::textGoesToAnotherDepthUnchanged()
{
    const auto show = showOf(nestedText(4));
    auto *branch = qobject_cast<MetaEffect *>(topOf(*show).getEffect(5));
    QVERIFY(branch);
    auto *deeper = qobject_cast<MetaEffect *>(branch->getEffect(5));
    QVERIFY(deeper);
    QString up = entry + savedText(*deeper->getEffect(4));
    QString down = entry + savedText(*topOf(*show).getEffect(4));

    topOf(*show).pasteEffect(up);
    deeper->pasteEffect(down);

    QCOMPARE(savedWithoutIdentity(*topOf(*show).getEffect(6)),
             savedWithoutIdentity(*deeper->getEffect(4)));
    QCOMPARE(savedWithoutIdentity(*deeper->getEffect(6)),
             savedWithoutIdentity(*topOf(*show).getEffect(4)));
    const auto reloaded = savedAndRead(*show);
    QVERIFY(reloaded);
    QCOMPARE(rehearsal::showText(*reloaded), rehearsal::showText(*show));
}

void tst_TransferBetweenShows::unknownTypeIsRefusedAndWhatStandsAroundItPasted()
{
    const auto show = showOf({});
    QString text = copied(effectText("Sparkler", setting("name", "a")))
                   + copied(effectText("Solid", setting("name", "b")))
                   + copied(effectText("Sparkler", effectText("Solid", {})))
                   + copied(effectText("Ramp", setting("name", "c"))) + copied(effectText("", {}));

    topOf(*show).pasteEffect(text);

    QCOMPARE(names(topOf(*show)), QStringList({"Copy of b", "Copy of c"}));
    QCOMPARE(textOf(*topOf(*show).getEffect(1), "name"), QStringLiteral("Copy of c"));
}

void tst_TransferBetweenShows::unknownTypeWithinAMetaEffectGoesAlongWordForWord()
{
    const QString unknown = QStringLiteral("<effect  type='Sparkler' colour=\"red\"><!-- hot -->"
                                           "<property key=\"eid\">7</property><burn/></effect>");
    const auto source =
        showOf(effectText("Meta Effect", setting("name", "a") + setting("eid", "3") + unknown));
    const auto target = showOf({});
    ShowUser author(topOf(*source));
    author.select(QStringLiteral("a"));
    author.choose(ShowUser::Copy);

    ShowUser(topOf(*target)).choose(ShowUser::Paste);

    const auto reloaded = savedAndRead(*target);
    QVERIFY(reloaded);
    auto *pasted = qobject_cast<MetaEffect *>(topOf(*reloaded).getEffect(0));
    QVERIFY(pasted);
    const QString opening = unknown.left(unknown.indexOf(QStringLiteral("<burn/>")));
    QVERIFY2(savedText(*pasted).contains(opening), qPrintable(savedText(*pasted)));
    QCOMPARE(reloaded->unknownTypes().size(), std::size_t(1));
}

// Such an effect is saved as it was read, marker and all, and the marker alone divides the text.
void tst_TransferBetweenShows::markerInTheKeptTextOfAnUnknownTypeBreaksItsPieceAlone()
{
    const auto source =
        showOf(effectText("Meta Effect",
                          setting("name", "a") + setting("eid", "3")
                              + effectText("Sparkler", QStringLiteral("<!-- <EFFECT-ENTRY> -->")))
               + effectText("Solid", setting("name", "b") + setting("eid", "4")));
    const auto target = showOf({});
    QString text = entry + savedText(*topOf(*source).getEffect(3)) + entry
                   + savedText(*topOf(*source).getEffect(4));
    QCOMPARE(text.count(QStringLiteral("<EFFECT-ENTRY>")), 3);

    topOf(*target).pasteEffect(text);

    QCOMPARE(names(topOf(*target)), QStringList({"Copy of b"}));
}

void tst_TransferBetweenShows::anyNameSurvives_data()
{
    QTest::addColumn<QString>("name");
    const QString marker = QStringLiteral("<EFFECT-ENTRY>");

    QTest::newRow("the marker") << marker;
    QTest::newRow("the marker and a line end") << marker + '\n';
    QTest::newRow("the marker and an effect") << marker + "\n" + effectText("Solid", {});
    QTest::newRow("the marker in escapes") << QStringLiteral("&lt;EFFECT-ENTRY&gt;");
    QTest::newRow("the marker and a control character") << marker + QChar(u'\x1') + marker;
    QTest::newRow("the marker and a nul") << marker + QChar(u'\0');
    QTest::newRow("the marker and half a character") << QChar(0xD83C) + marker;
    QTest::newRow("the end of a property") << QStringLiteral("</property></effect>") + marker;
    QTest::newRow("the end of a quotation") << QStringLiteral("]]>--><![CDATA[") + marker;
    QTest::newRow("line ends of all kinds") << QStringLiteral("a\r\nb\rc\nd");
    QTest::newRow("blanks around") << QStringLiteral("  a  ");
    QTest::newRow("base64") << QStringLiteral("PEVGRkVDVC1FTlRSWT4=");
    QTest::newRow("letters of the world") << QStringLiteral("Ж ñ 灯 \U0001F386");
    QTest::newRow("nothing") << QString();
}

void tst_TransferBetweenShows::anyNameSurvives()
{
    QFETCH(QString, name);
    const auto source = showOf(
        effectText("Meta Effect", setting("eid", "1") + effectText("Solid", setting("eid", "2")))
        + effectText("Solid", setting("eid", "2")));
    auto *nested = qobject_cast<MetaEffect *>(topOf(*source).getEffect(1));
    QVERIFY(nested);
    nested->setProperty(QStringLiteral("name"), name);
    nested->getEffect(2)->setProperty(QStringLiteral("name"), name);
    topOf(*source).getEffect(2)->setProperty(QStringLiteral("name"), name);
    const auto target = showOf({});
    const QString text =
        entry + savedText(*nested) + entry + savedText(*topOf(*source).getEffect(2));
    QGuiApplication::clipboard()->setText(text);

    topOf(*target).handlePasteEffect();

    const auto reloaded = savedAndRead(*target);
    QVERIFY(reloaded);
    QCOMPARE(names(topOf(*reloaded)), QStringList({copyOf(name), copyOf(name)}));
    const auto *pasted = qobject_cast<MetaEffect *>(topOf(*reloaded).getEffect(0));
    QVERIFY(pasted);
    QCOMPARE(names(*pasted), QStringList({name}));
    QCOMPARE(textOf(*topOf(*reloaded).getEffect(1), "type"), QStringLiteral("Solid"));
}

void tst_TransferBetweenShows::brokenPiecesBetweenGoodOnesAreSkipped_data()
{
    QTest::addColumn<QString>("broken");

    QTest::newRow("an open tag") << QStringLiteral("<effect type=\"Solid\">");
    QTest::newRow("a closing tag") << QStringLiteral("</effect>");
    QTest::newRow("half a tag") << QStringLiteral("<effect type=\"Sol");
    QTest::newRow("a property alone") << setting("name", "a");
    QTest::newRow("bad base64") << effectText(
        "Solid", QStringLiteral("<property key=\"name\" encoding=\"base64\">?</property>"));
    QTest::newRow("an unknown entity") << effectText("Solid", setting("name", "&nobody;"));
    QTest::newRow("an entity that grows")
        << "<!DOCTYPE a [<!ENTITY b \"cccccccc\">]>" + effectText("Solid", setting("name", "&b;"));
    QTest::newRow("nested too deep")
        << QStringLiteral("<effect type=\"Meta Effect\">").repeated(100000)
               + QStringLiteral("</effect>").repeated(100000);
    QTest::newRow("nested without an end")
        << QStringLiteral("<effect type=\"Meta Effect\">").repeated(100000);
    QTest::newRow("no type") << QStringLiteral("<effect/>");
    QTest::newRow("another element") << QStringLiteral("<light uid=\"1\"/>");
}

void tst_TransferBetweenShows::brokenPiecesBetweenGoodOnesAreSkipped()
{
    QFETCH(QString, broken);
    const auto show = showOf({});
    QString text = copied(effectText("Solid", setting("name", "a"))) + copied(broken)
                   + copied(effectText("Ramp", setting("name", "b"))) + copied(broken);

    topOf(*show).pasteEffect(text);

    QCOMPARE(names(topOf(*show)), QStringList({"Copy of a", "Copy of b"}));
    QCOMPARE(topOf(*show).getEffects().at(1)->getPropertyString(QStringLiteral("eid")),
             QStringLiteral("1"));
}

namespace {

/// Seconds of the processor that pasting takes: the least of three attempts.
double pastingTime(const QString &text, int children)
{
    double least = 1e9;
    for (int attempt = 0; attempt < 3; ++attempt) {
        const auto show = showOf({});
        QString pasted = text;
        const std::clock_t start = std::clock();
        topOf(*show).pasteEffect(pasted);
        least = std::min(least, double(std::clock() - start) / CLOCKS_PER_SEC);
        if (topOf(*show).getEffects().count() != children)
            qFatal("not all children were pasted");
    }
    return least;
}

} // namespace

// Eight times the text takes eight times as long; were it quadratic, 64 times.
void tst_TransferBetweenShows::tenMegabytesOfChildrenTakeLinearTime()
{
    const QString piece =
        copied(effectText("Solid", setting("name", QString(500, u'x')) + setting("eid", "3")
                                       + setting("endfixedtime", "900")));
    const int many = static_cast<int>(10 * 1024 * 1024 / piece.size()) + 1;
    const int some = many / 8;

    const double least = pastingTime(piece.repeated(some), some);
    const double most = pastingTime(piece.repeated(many), many);

    QVERIFY2(most < 24 * least, qPrintable(QStringLiteral("%1 s, %2 s").arg(least).arg(most)));
}

void tst_TransferBetweenShows::tenMegabytesOfRubbishAreSkipped_data()
{
    QTest::addColumn<QString>("unit");

    QTest::newRow("markers") << QStringLiteral("<EFFECT-ENTRY>");
    QTest::newRow("halves of markers") << QStringLiteral("<EFFECT-");
    QTest::newRow("open effects") << copied(QStringLiteral("<effect type=\"Solid\">"));
    QTest::newRow("unknown effects") << copied(effectText("Sparkler", {}));
    QTest::newRow("blanks") << QStringLiteral(" \n");
}

void tst_TransferBetweenShows::tenMegabytesOfRubbishAreSkipped()
{
    QFETCH(QString, unit);
    const auto show = showOf({});
    QString text = unit.repeated(10 * 1024 * 1024 / unit.size()) + copied(effectText("Solid", {}));

    topOf(*show).pasteEffect(text);

    QCOMPARE(names(topOf(*show)), QStringList({"Copy of "}));
}

QTEST_MAIN(tst_TransferBetweenShows)
#include "tst_TransferBetweenShows.moc"
