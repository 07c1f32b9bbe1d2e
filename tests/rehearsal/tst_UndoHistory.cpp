#include "UndoHistory.h"

#include <QRandomGenerator>
#include <QTest>

#include <vector>

using rehearsal::UndoHistory;

namespace {

/// What UndoHistory does, with whole texts and without limits.
class PlainHistory
{
public:
    explicit PlainHistory(const QByteArray &text) : m_texts{text} {}

    void push(const QByteArray &text)
    {
        if (text == current())
            return;
        m_texts.resize(m_position + 1);
        m_texts.push_back(text);
        ++m_position;
    }
    void withdraw()
    {
        if (!canUndo())
            return;
        m_texts.resize(m_position);
        --m_position;
    }
    void undo() { m_position -= canUndo() ? 1 : 0; }
    void redo() { m_position += canRedo() ? 1 : 0; }
    bool canUndo() const { return m_position > 0; }
    bool canRedo() const { return m_position + 1 < m_texts.size(); }
    const QByteArray &current() const { return m_texts[m_position]; }

private:
    std::vector<QByteArray> m_texts;
    std::size_t m_position = 0;
};

/// Text that has the same piece in many places, so that prefix and suffix may overlap.
QByteArray changed(QByteArray text, QRandomGenerator &random)
{
    const qsizetype start = random.bounded(int(text.size()) + 1);
    const qsizetype removed = random.bounded(int(text.size() - start) + 1) / 4;
    const int inserted = random.bounded(5) == 0 ? random.bounded(40000) : random.bounded(12);
    return text.replace(start, removed, QByteArray(inserted, char('a' + random.bounded(2))));
}

QByteArray longText(qsizetype size)
{
    QByteArray text;
    for (int line = 0; text.size() < size; ++line)
        text += "<property key=\"level\">" + QByteArray::number(line) + "</property>\n";
    return text;
}

} // namespace

class tst_UndoHistory : public QObject
{
    Q_OBJECT

private slots:
    void newHistoryHasNothingToUndo();
    void textsComeBackInOrder();
    void pushDropsWhatCouldBeRedone();
    void pushOfThePresentTextIsNoStep();
    void withdrawForgetsTheLastStep();
    void atEitherEndNothingHappens();
    void resetForgetsEverything();
    void behavesLikeAListOfWholeTexts_data();
    void behavesLikeAListOfWholeTexts();
    void oldestStepsGoFirst();
    void oldestStepsGoWhenMemoryIsShort();
    void newestStepStaysHoweverLarge();
    void smallEditsOfALongTextCostLittle();
    void editsAtBothEndsOfALongTextCostLittle();
};

void tst_UndoHistory::newHistoryHasNothingToUndo()
{
    const UndoHistory history;
    QVERIFY(!history.canUndo());
    QVERIFY(!history.canRedo());
    QCOMPARE(history.current(), QByteArray());
}

void tst_UndoHistory::textsComeBackInOrder()
{
    UndoHistory history;
    history.reset("one");
    QVERIFY(history.push("two"));
    QVERIFY(history.push("three"));
    QCOMPARE(history.undo(), QByteArray("two"));
    QCOMPARE(history.undo(), QByteArray("one"));
    QVERIFY(!history.canUndo());
    QCOMPARE(history.redo(), QByteArray("two"));
    QCOMPARE(history.redo(), QByteArray("three"));
    QVERIFY(!history.canRedo());
}

void tst_UndoHistory::pushDropsWhatCouldBeRedone()
{
    UndoHistory history;
    history.reset("one");
    history.push("two");
    history.undo();
    history.push("other");
    QVERIFY(!history.canRedo());
    QCOMPARE(history.undo(), QByteArray("one"));
    QCOMPARE(history.redo(), QByteArray("other"));
}

void tst_UndoHistory::pushOfThePresentTextIsNoStep()
{
    UndoHistory history;
    history.reset("one");
    history.push("two");
    history.undo();
    QVERIFY(!history.push("one"));
    QVERIFY(!history.canUndo());
    QVERIFY(history.canRedo());
}

void tst_UndoHistory::withdrawForgetsTheLastStep()
{
    UndoHistory history;
    history.reset("one");
    history.push("two");
    history.withdraw();
    QCOMPARE(history.current(), QByteArray("one"));
    QVERIFY(!history.canUndo());
    QVERIFY(!history.canRedo());
    QCOMPARE(history.bytes(), 0);
}

void tst_UndoHistory::atEitherEndNothingHappens()
{
    UndoHistory history;
    history.reset("one");
    QCOMPARE(history.undo(), QByteArray("one"));
    QCOMPARE(history.redo(), QByteArray("one"));
    history.withdraw();
    QCOMPARE(history.current(), QByteArray("one"));
    QVERIFY(!history.canUndo());
}

void tst_UndoHistory::resetForgetsEverything()
{
    UndoHistory history;
    history.reset("one");
    history.push("two");
    history.push("three");
    history.undo();
    history.reset("new");
    QVERIFY(!history.canUndo());
    QVERIFY(!history.canRedo());
    QCOMPARE(history.current(), QByteArray("new"));
    QCOMPARE(history.bytes(), 0);
}

void tst_UndoHistory::behavesLikeAListOfWholeTexts_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 20; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void tst_UndoHistory::behavesLikeAListOfWholeTexts()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    UndoHistory history;
    history.reset("aaabbbaaa");
    PlainHistory plain("aaabbbaaa");
    for (int action = 0; action < 400; ++action) {
        const QByteArray text = changed(history.current().left(100000), random);
        switch (random.bounded(6)) {
        case 0:
        case 1:
            history.push(text);
            plain.push(text);
            break;
        case 2:
            history.withdraw();
            plain.withdraw();
            break;
        case 3:
            history.redo();
            plain.redo();
            break;
        default: history.undo(); plain.undo();
        }
        QCOMPARE(history.current(), plain.current());
        QCOMPARE(history.canUndo(), plain.canUndo());
        QCOMPARE(history.canRedo(), plain.canRedo());
    }
}

void tst_UndoHistory::oldestStepsGoFirst()
{
    UndoHistory history;
    history.reset("0");
    for (int step = 1; step <= 620; ++step)
        history.push(QByteArray::number(step));
    QCOMPARE(history.undoableSteps(), 500);
    for (int step = 619; step >= 120; --step)
        QCOMPARE(history.undo(), QByteArray::number(step));
    QVERIFY(!history.canUndo());
}

void tst_UndoHistory::oldestStepsGoWhenMemoryIsShort()
{
    UndoHistory history(500, 10000);
    history.reset({});
    for (int step = 1; step <= 60; ++step) {
        history.push(QByteArray(1000, char(step)));
        QVERIFY(history.bytes() <= 10000);
    }
    const qsizetype steps = history.undoableSteps();
    QVERIFY2(steps >= 4 && steps < 10, qPrintable(QString::number(steps)));
    for (int step = 59; history.canUndo(); --step)
        QCOMPARE(history.undo(), QByteArray(1000, char(step)));
}

void tst_UndoHistory::newestStepStaysHoweverLarge()
{
    UndoHistory history(500, 100);
    history.reset("small");
    history.push("other");
    const QByteArray large(5000, 'x');
    history.push(large);
    QCOMPARE(history.undoableSteps(), 1);
    QCOMPARE(history.undo(), QByteArray("other"));
    QCOMPARE(history.redo(), large);
}

void tst_UndoHistory::smallEditsOfALongTextCostLittle()
{
    QByteArray text = longText(10'000'000);
    const QByteArray before = text;
    UndoHistory history;
    history.reset(text);
    for (int step = 1; step <= 100; ++step) {
        text.replace(step * 90000, 3, "edit");
        history.push(text);
    }
    QCOMPARE(history.undoableSteps(), 100);
    QVERIFY2(history.bytes() < 20000, qPrintable(QString::number(history.bytes())));
    while (history.canUndo())
        history.undo();
    QCOMPARE(history.current(), before);
}

void tst_UndoHistory::editsAtBothEndsOfALongTextCostLittle()
{
    QByteArray text = longText(10'000'000);
    UndoHistory history;
    history.reset(text);
    text.replace(20, 3, "edit");
    text.replace(text.size() - 20, 3, "edit");
    history.push(text);
    QVERIFY2(history.bytes() < 2'560'000, qPrintable(QString::number(history.bytes())));
    history.undo();
    QCOMPARE(history.redo(), text);
}

QTEST_GUILESS_MAIN(tst_UndoHistory)
#include "tst_UndoHistory.moc"
