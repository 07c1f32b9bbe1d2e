#include "EffectText.h"
#include "XmlBurden.h"

#include <QTest>
#include <QXmlStreamReader>

using rehearsal::EffectBudget;
using rehearsal::findBurden;
using rehearsal::maximumAttributes;
using rehearsal::maximumElementDepth;

namespace {

QString attributes(int count)
{
    QString text;
    for (int i = 0; i < count; ++i)
        text += QStringLiteral(" a%1=%2%2").arg(i).arg(QLatin1Char(i % 2 ? '"' : '\''));
    return text;
}

QString element(int attributeCount)
{
    return QStringLiteral("<a") + attributes(attributeCount) + QStringLiteral("/>");
}

/// The reader's complaint; empty if it has none.
QString complaintOf(const QString &text, EffectBudget budget)
{
    QXmlStreamReader reader(text);
    reader.readNextStartElement();
    rehearsal::readEffect(reader, budget);
    return reader.hasError() ? reader.errorString() : QString();
}

} // namespace

class tst_XmlBurden : public QObject
{
    Q_OBJECT

private slots:
    void textThatAReaderCanBearIsNoBurden_data();
    void textThatAReaderCanBearIsNoBurden();
    void burdenIsFoundWhereItIs_data();
    void burdenIsFoundWhereItIs();
    void budgetIsSpentByEffectsAndProperties();
    void longPropertyIsAFault();
};

void tst_XmlBurden::textThatAReaderCanBearIsNoBurden_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("empty") << "";
    QTest::newRow("no tag") << "a = \"b\"";
    QTest::newRow("most attributes") << element(maximumAttributes);
    QTest::newRow("most attributes, twice") << element(maximumAttributes).repeated(2);
    QTest::newRow("deepest") << QStringLiteral("<a>").repeated(maximumElementDepth);
    QTest::newRow("not in one another")
        << QStringLiteral("<a></a>").repeated(maximumElementDepth + 1);
    QTest::newRow("empty ones in a row")
        << QStringLiteral("<a/>").repeated(maximumElementDepth + 1);
    const QString many = attributes(maximumAttributes + 1);
    QTest::newRow("comment") << "<!-- <a" + many + "/> -->";
    QTest::newRow("character data") << "<![CDATA[<a" + many + "/>]]>";
    QTest::newRow("instruction") << "<?a" + many + "?>";
    QTest::newRow("text") << "<a>" + many + "</a>";
    QTest::newRow("one value with signs") << "<a b=\"" + QString(many).replace('"', '\'') + "\"/>";
    QTest::newRow("longest value")
        << "<a b=\"" + QString(rehearsal::maximumTextLength, u'c') + "\"/>";
    for (const char *cut :
         {"<", "</", "<!", "<!--", "<![CDATA[", "<?", "<a b=", "<a b='", "<a b='c'"})
        QTest::addRow("cut short: %s", cut) << QString::fromLatin1(cut);
    QTest::newRow("more ends than starts") << "</a></a><a/>";
}

void tst_XmlBurden::textThatAReaderCanBearIsNoBurden()
{
    QFETCH(const QString, text);
    QVERIFY(!findBurden(text));
}

void tst_XmlBurden::burdenIsFoundWhereItIs_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("line");
    QTest::addColumn<QString>("what");

    const QString many = element(maximumAttributes + 1);
    const QString manyAttributes = QStringLiteral("an element has more than 1000 attributes");
    QTest::newRow("attributes") << "<show>\n\n" + many << qint64(3) << manyAttributes;
    QTest::newRow("behind what is skipped")
        << "<?a '?><!-- ' --><![CDATA[']]>\n<b c='>'>'\n</b>" + many << qint64(3) << manyAttributes;
    QTest::newRow("no end") << many.chopped(2) << qint64(1) << manyAttributes;
    QTest::newRow("an end tag") << "</" + many.mid(1) << qint64(1) << manyAttributes;
    QTest::newRow("a long value") << "\n<a b='" + QString(rehearsal::maximumTextLength + 1, u'c')
                                         + "'/>"
                                  << qint64(2) << "an attribute is longer than 33554432";
    QTest::newRow("depth") << QStringLiteral("<a>\n").repeated(maximumElementDepth + 1)
                           << qint64(maximumElementDepth + 1)
                           << "elements are nested deeper than 250000";
}

void tst_XmlBurden::burdenIsFoundWhereItIs()
{
    QFETCH(const QString, text);
    QFETCH(const qint64, line);
    QFETCH(const QString, what);
    const auto burden = findBurden(text);
    QVERIFY(burden);
    QCOMPARE(burden->line, line);
    QCOMPARE(burden->what, what);
}

void tst_XmlBurden::budgetIsSpentByEffectsAndProperties()
{
    const QString text = QStringLiteral("<effect><property key='a'/><effect><property key='a'/>"
                                        "</effect><effect/></effect>");
    QCOMPARE(complaintOf(text, {3, 2}), QString());
    QCOMPARE(complaintOf(text, {2, 2}), QStringLiteral("there are more than 250000 effects"));
    QCOMPARE(complaintOf(text, {3, 1}),
             QStringLiteral("the effects have more than 6000000 properties"));
}

void tst_XmlBurden::longPropertyIsAFault()
{
    const auto text = [](qint64 length) {
        return QStringLiteral("<effect><property key='a'>%1</property></effect>")
            .arg(QString(length, u'b'));
    };
    QCOMPARE(complaintOf(text(rehearsal::maximumTextLength), {}), QString());
    QCOMPARE(complaintOf(text(rehearsal::maximumTextLength + 1), {}),
             QStringLiteral("the property \"a\" is longer than 33554432"));
}

QTEST_GUILESS_MAIN(tst_XmlBurden)
#include "tst_XmlBurden.moc"
