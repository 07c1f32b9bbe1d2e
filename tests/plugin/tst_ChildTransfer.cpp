#include "ChildTransfer.h"
#include "EffectList.h"
#include "StageMap.h"
#include "StubEffect.h"

#include <QRegularExpression>
#include <QTest>
#include <QTextStream>

namespace transfer = meta::transfer;

namespace {

const QString entry = QStringLiteral("<EFFECT-ENTRY>");

QString saved(Effect &effect)
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    effect.save(stream);
    return text;
}

} // namespace

class tst_ChildTransfer : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void childIsAMarkerALineEndAndItsSavedText();
    void childrenFollowEachOtherInListOrder();
    void noChildrenIsNoText();
    void textThatWasWrittenSplitsIntoTheSavedTexts();
    void markerInAValueDoesNotSplitTheChild();

    void piecesAreWhatStandsBetweenMarkers_data();
    void piecesAreWhatStandsBetweenMarkers();
};

void tst_ChildTransfer::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
}

void tst_ChildTransfer::childIsAMarkerALineEndAndItsSavedText()
{
    StubEffect child(nullptr, 7);
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);

    transfer::writeChild(stream, child);

    const QString expected = saved(child);
    QVERIFY(expected.contains(QStringLiteral("<property key=\"eid\">7</property>")));
    QCOMPARE(text, QStringLiteral("<EFFECT-ENTRY>\n") + expected);
}

void tst_ChildTransfer::childrenFollowEachOtherInListOrder()
{
    StubEffect first(nullptr, 7);
    StubEffect second(nullptr, 3);
    EffectList children;
    children.append(&first);
    children.append(&second);
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);

    transfer::writeChildren(stream, children);

    QCOMPARE(text, entry + u'\n' + saved(first) + entry + u'\n' + saved(second));
}

void tst_ChildTransfer::noChildrenIsNoText()
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);

    transfer::writeChildren(stream, {});

    QCOMPARE(text, QString());
}

void tst_ChildTransfer::textThatWasWrittenSplitsIntoTheSavedTexts()
{
    StubEffect first(nullptr, 7);
    StubEffect second(nullptr, 3);
    EffectList children;
    children.append(&first);
    children.append(&second);
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    transfer::writeChildren(stream, children);

    QCOMPARE(transfer::pieces(text), QStringList({u'\n' + saved(first), u'\n' + saved(second)}));
}

void tst_ChildTransfer::markerInAValueDoesNotSplitTheChild()
{
    StubEffect child(nullptr, 7);
    child.with("name", QStringLiteral("a<EFFECT-ENTRY>\nb"));
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    transfer::writeChild(stream, child);

    QCOMPARE(transfer::pieces(text), QStringList({u'\n' + saved(child)}));
}

void tst_ChildTransfer::piecesAreWhatStandsBetweenMarkers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("pieces");

    QTest::newRow("no text") << QString() << QStringList();
    QTest::newRow("no marker") << QStringLiteral("a\nb") << QStringList{QStringLiteral("a\nb")};
    QTest::newRow("one marker") << entry + "\na" << QStringList{QStringLiteral("\na")};
    QTest::newRow("marker alone") << entry << QStringList();
    QTest::newRow("marker and line end") << entry + "\n" << QStringList{QStringLiteral("\n")};
    QTest::newRow("text before the first marker")
        << "a" + entry + "\nb" << QStringList({QStringLiteral("a"), QStringLiteral("\nb")});
    QTest::newRow("marker within a line")
        << "a" + entry + "b" + entry + "c" << QStringList({"a", "b", "c"});
    QTest::newRow("marker twice") << entry + entry + "\na" << QStringList{QStringLiteral("\na")};
    QTest::newRow("marker at the end") << "a" + entry << QStringList{QStringLiteral("a")};
    QTest::newRow("marker in small letters")
        << QStringLiteral("a<effect-entry>b") << QStringList{QStringLiteral("a<effect-entry>b")};
    QTest::newRow("marker cut short")
        << QStringLiteral("a<EFFECT-ENTRY b") << QStringList{QStringLiteral("a<EFFECT-ENTRY b")};
}

void tst_ChildTransfer::piecesAreWhatStandsBetweenMarkers()
{
    QFETCH(QString, text);
    QFETCH(QStringList, pieces);

    QCOMPARE(transfer::pieces(text), pieces);
}

QTEST_GUILESS_MAIN(tst_ChildTransfer)
#include "tst_ChildTransfer.moc"
