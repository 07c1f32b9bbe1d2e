#include "Effect.h"
#include "EffectText.h"
#include "ShowFile.h"
#include "TestTypes.h"

#include <QTest>
#include <QTextStream>
#include <QXmlStreamReader>

using rehearsal::EffectText;
using rehearsal::FileFault;
using rehearsal::parseEffect;
using rehearsal::Show;

namespace {

std::unique_ptr<Show> showWith(const QString &effect)
{
    FileFault fault;
    const QString text = QStringLiteral("<show version=\"1\"><map>"
                                        "<light uid=\"1\" x=\"0\" y=\"0\"/></map>\n%1</show>");
    auto show =
        rehearsal::parseShow(text.arg(effect).toUtf8(), QStringLiteral("s"), allTypes(), &fault);
    if (!show)
        qWarning("%s", qPrintable(fault.message()));
    return show;
}

QString textOfFirst(const Show &show)
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    show.effects().first()->save(stream);
    return text.trimmed();
}

} // namespace

// What a host cannot use it keeps: effects of unknown types, effects nested where none belong, and
// values with any characters.
class tst_KeptText : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral("."))); }

    void onlyChangedPropertiesOfAnUnknownEffectAreWrittenAnew_data();
    void onlyChangedPropertiesOfAnUnknownEffectAreWrittenAnew();
    void unknownTypesInsideUnknownEffectsAreReported();
    void effectsNestedInATypeThatHoldsNoneAreSavedAgain();
    void anyTextSurvivesARoundTrip_data();
    void anyTextSurvivesARoundTrip();
    void anyKeySurvivesARoundTrip_data();
    void anyKeySurvivesARoundTrip();
    void aKeyThatIsNotBase64IsAFault();
    void aTypeThatXmlCannotCarryLeavesTheTextReadable();
    void onlyWhiteSpaceMayStandAroundAnEffect_data();
    void onlyWhiteSpaceMayStandAroundAnEffect();
    void propertyWithoutAKeyIsSkipped();
};

void tst_KeptText::onlyChangedPropertiesOfAnUnknownEffectAreWrittenAnew_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("after");

    const QString whole = QStringLiteral(
        "<effect extra=\"1\" type=\"Foo\" build=\"b12\">\r\n<curve a='1'/><property  key=\"begin\" "
        ">7</property> \U0001F600 <property key=\"eid\">3</property>\n"
        "<effect type='Bar'><property key=\"begin\">7</property></effect><!-- c --></effect>");
    QTest::newRow("nothing changed") << whole << "begin" << "7" << whole;
    QTest::newRow("another begin")
        << whole << "begin" << "12"
        << QString(whole).replace(QStringLiteral("<property  key=\"begin\" >7</property> "),
                                  QStringLiteral("<property key=\"begin\">12</property> "));
    QTest::newRow("a new property")
        << whole << "name" << "n & m"
        << QString(whole).replace(
               QStringLiteral("build=\"b12\">"),
               QStringLiteral(
                   "build=\"b12\">\n    <property key=\"name\">n &amp; m</property>"));
    QTest::newRow("an element without content")
        << "<effect type=\"Foo\"/>" << "end" << "5"
        << "<effect type=\"Foo\">\n    <property key=\"end\">5</property>\n  </effect>";
    QTest::newRow("an empty property")
        << "<effect type=\"Foo\"><property key=\"end\"/></effect>" << "end" << "5"
        << "<effect type=\"Foo\"><property key=\"end\">5</property></effect>";
}

void tst_KeptText::onlyChangedPropertiesOfAnUnknownEffectAreWrittenAnew()
{
    QFETCH(QString, before);
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(QString, after);

    const std::unique_ptr<Show> show = showWith(before);
    QVERIFY(show);
    show->effects().first()->setProperty(key, value);
    QCOMPARE(textOfFirst(*show), after);
}

void tst_KeptText::unknownTypesInsideUnknownEffectsAreReported()
{
    const std::unique_ptr<Show> show = showWith(
        QStringLiteral("<effect type=\"Foo\">\n<effect type=\"Solid\"/>\n<effect type=\"Bar\"/>"
                       "<effect type=\"Foo\"/></effect>"));
    QVERIFY(show);
    const std::vector<std::pair<QString, qint64>> expected{{QStringLiteral("Foo"), 2},
                                                           {QStringLiteral("Bar"), 4}};
    QCOMPARE(show->unknownTypes(), expected);
}

void tst_KeptText::effectsNestedInATypeThatHoldsNoneAreSavedAgain()
{
    const std::unique_ptr<Show> show = showWith(QStringLiteral(
        "<effect type=\"Solid\"><effect type=\"Ramp\"><property key=\"to\">0.5</property></effect>"
        "<effect type=\"Bar\" x=\"y\"/></effect>"));
    QVERIFY(show);
    const QString saved = textOfFirst(*show);
    QVERIFY(saved.contains(QStringLiteral(
        "<effect type=\"Ramp\"><property key=\"to\">0.5</property></effect>")));
    QVERIFY(saved.contains(QStringLiteral("<effect type=\"Bar\" x=\"y\"/>")));
    const std::unique_ptr<Show> again = showWith(saved);
    QVERIFY(again);
    QCOMPARE(textOfFirst(*again), saved);
}

void tst_KeptText::anyTextSurvivesARoundTrip_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("empty") << QString();
    QTest::newRow("white space") << QStringLiteral(" \t\n\r\r\n ");
    QTest::newRow("marker") << QStringLiteral("<EFFECT-ENTRY>\n<effect type=\"Solid\">&amp;]]>");
    QTest::newRow("quotes") << QStringLiteral("\"'<>&");
    QTest::newRow("control characters") << QStringLiteral("\u0001\u0000\u001f").first(3);
    QTest::newRow("not characters") << QString(QChar(0xFFFE)) + QChar(0xFFFF);
    QTest::newRow("byte order mark") << QString(QChar(0xFEFF)) + u'x';
    QTest::newRow("byte order mark in base64") << QString(QChar(0xFEFF)) + QChar(1);
    QTest::newRow("lone high surrogate") << QString(QChar(0xD800)) + u'x';
    QTest::newRow("lone low surrogate") << u'x' + QString(QChar(0xDFFF));
    QTest::newRow("surrogates in the wrong order") << QString(QChar(0xDC00)) + QChar(0xD800);
    QTest::newRow("byte order mark behind a lone surrogate")
        << QString(QChar(0xD800)) + QChar(0xFEFF) + u'x';
    QTest::newRow("emoji") << QStringLiteral("\U0001F386 \u00e9");
    QTest::newRow("emoji in base64") << QStringLiteral("\U0001F386\u0002");
}

void tst_KeptText::anyTextSurvivesARoundTrip()
{
    QFETCH(QString, text);

    QString element;
    rehearsal::appendProperty(element, 0, QStringLiteral("name"), text);
    const std::optional<EffectText> effect =
        parseEffect(QStringLiteral("<effect type=\"Solid\">") + element + QStringLiteral("</effect>"));
    QVERIFY(effect);
    QCOMPARE(effect->properties.size(), std::size_t(1));
    QCOMPARE(effect->properties.front().text, text);
}

void tst_KeptText::anyKeySurvivesARoundTrip_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("element");

    QTest::newRow("plain") << "a b" << "<property key=\"a b\">";
    QTest::newRow("empty") << "" << "<property key=\"\">";
    QTest::newRow("marked up") << "<&\"'>" << "<property key=\"&lt;&amp;&quot;'&gt;\">";
    QTest::newRow("a control character")
        << QStringLiteral("a\x01") << "<property key=\"YQE=\" keyencoding=\"base64\">";
    QTest::newRow("a lone surrogate")
        << QString(QChar(0xD800)) << "<property key=\"7aCA\" keyencoding=\"base64\">";
    QTest::newRow("a null") << QString(QChar(0))
                            << "<property key=\"AA==\" keyencoding=\"base64\">";
}

void tst_KeptText::anyKeySurvivesARoundTrip()
{
    QFETCH(QString, key);
    QFETCH(QString, element);

    QString text;
    rehearsal::appendProperty(text, 0, key, QStringLiteral("\x02"));
    QVERIFY2(text.contains(element.chopped(1)), qPrintable(text));
    const std::optional<EffectText> effect =
        parseEffect(QStringLiteral("<effect type=\"Solid\">") + text + QStringLiteral("</effect>"));
    QVERIFY(effect);
    QCOMPARE(effect->properties.size(), 1u);
    QCOMPARE(effect->properties[0].key, key);
    QCOMPARE(effect->properties[0].text, QStringLiteral("\x02"));
}

void tst_KeptText::aKeyThatIsNotBase64IsAFault()
{
    QVERIFY(!parseEffect(QStringLiteral(
        "<effect type=\"Solid\"><property key=\"!\" keyencoding=\"base64\"/></effect>")));
}

void tst_KeptText::aTypeThatXmlCannotCarryLeavesTheTextReadable()
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    rehearsal::writeEffectStart(stream, 0, {QStringLiteral("a\x01"), {}, {}}, {});
    rehearsal::writeEffectEnd(stream, 0);
    const std::optional<EffectText> effect = parseEffect(text);
    QVERIFY(effect);
    QCOMPARE(effect->identity.type, QStringLiteral("a\uFFFD"));
}

void tst_KeptText::onlyWhiteSpaceMayStandAroundAnEffect_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isEffect");

    QTest::newRow("alone") << "<effect type=\"Solid\"/>" << true;
    QTest::newRow("a line end before, blanks behind") << "\n <effect type=\"Solid\"/> \n\t" << true;
    QTest::newRow("two effects") << "<effect type=\"Solid\"/><effect type=\"Solid\"/>" << false;
    QTest::newRow("a comment before") << "<!-- --><effect type=\"Solid\"/>" << false;
    QTest::newRow("a comment behind") << "<effect type=\"Solid\"/><!-- -->" << false;
    QTest::newRow("an XML declaration") << "<?xml version=\"1.0\"?><effect type=\"Solid\"/>" << false;
    QTest::newRow("a document type") << "<!DOCTYPE effect><effect type=\"Solid\"/>" << false;
    QTest::newRow("text before") << "x<effect type=\"Solid\"/>" << false;
    QTest::newRow("text behind") << "<effect type=\"Solid\"/>x" << false;
    QTest::newRow("another element") << "<effects type=\"Solid\"/>" << false;
    QTest::newRow("cut short") << "<effect type=\"Solid\">" << false;
    QTest::newRow("empty") << "" << false;
}

void tst_KeptText::onlyWhiteSpaceMayStandAroundAnEffect()
{
    QFETCH(QString, text);
    QFETCH(bool, isEffect);

    QCOMPARE(parseEffect(text).has_value(), isEffect);
}

void tst_KeptText::propertyWithoutAKeyIsSkipped()
{
    const std::optional<EffectText> effect =
        parseEffect(QStringLiteral("<effect type=\"Solid\"><property>1</property></effect>"));
    QVERIFY(effect);
    QVERIFY(effect->properties.empty());
}

QTEST_GUILESS_MAIN(tst_KeptText)
#include "tst_KeptText.moc"
