#include "LanePacking.h"

#include <QTest>

#include <algorithm>
#include <random>

using rehearsal::LaneSpan;
using rehearsal::packLanes;

using Lanes = std::vector<int>;
using Spans = std::vector<LaneSpan>;

namespace {

constexpr qint64 emptyLength = 5;

qint64 endOf(const LaneSpan &span)
{
    return span.end > span.begin ? span.end : span.begin + emptyLength;
}

bool overlap(const LaneSpan &left, const LaneSpan &right)
{
    return left.begin < endOf(right) && right.begin < endOf(left);
}

// Of any spans that overlap at all, most do at a begin.
int mostAtOnce(const Spans &spans)
{
    int most = 0;
    for (const LaneSpan &at : spans) {
        most = std::max(most, int(std::count_if(spans.begin(), spans.end(), [&](const LaneSpan &span) {
                            return span.begin <= at.begin && at.begin < endOf(span);
                        })));
    }
    return most;
}

} // namespace

class tst_TimelineLanes : public QObject
{
    Q_OBJECT

private slots:
    void spansGetTheFirstFreeLane_data();
    void spansGetTheFirstFreeLane();
    void spansOfALaneNeverOverlapAndLanesAreFew_data();
    void spansOfALaneNeverOverlapAndLanesAreFew();
};

void tst_TimelineLanes::spansGetTheFirstFreeLane_data()
{
    QTest::addColumn<Spans>("spans");
    QTest::addColumn<Lanes>("lanes");

    QTest::newRow("none")            << Spans{}                                  << Lanes{};
    QTest::newRow("one")             << Spans{{0, 10}}                           << Lanes{0};
    QTest::newRow("touching")        << Spans{{0, 10}, {10, 20}}                 << Lanes{0, 0};
    QTest::newRow("overlapping")     << Spans{{0, 10}, {9, 20}}                  << Lanes{0, 1};
    QTest::newRow("not by begin")    << Spans{{9, 20}, {0, 10}}                  << Lanes{1, 0};
    QTest::newRow("equal begins")    << Spans{{0, 10}, {0, 5}, {5, 9}}           << Lanes{0, 1, 1};
    QTest::newRow("lowest of two")   << Spans{{0, 8}, {0, 4}, {9, 12}}           << Lanes{0, 1, 0};
    QTest::newRow("empty is a mark") << Spans{{3, 3}, {4, 9}, {8, 9}}            << Lanes{0, 1, 0};
    QTest::newRow("two empty")       << Spans{{3, 3}, {3, 3}}                    << Lanes{0, 1};
    QTest::newRow("ends before")     << Spans{{7, 2}, {8, 9}, {12, 13}}          << Lanes{0, 1, 0};
    QTest::newRow("very long")       << Spans{{0, 1LL << 40}, {1LL << 39, 1LL << 41}} << Lanes{0, 1};
}

void tst_TimelineLanes::spansGetTheFirstFreeLane()
{
    QFETCH(Spans, spans);
    QFETCH(Lanes, lanes);
    QCOMPARE(packLanes(spans, emptyLength), lanes);
}

void tst_TimelineLanes::spansOfALaneNeverOverlapAndLanesAreFew_data()
{
    QTest::addColumn<int>("seed");
    for (int seed = 1; seed <= 60; ++seed)
        QTest::addRow("seed %d", seed) << seed;
}

void tst_TimelineLanes::spansOfALaneNeverOverlapAndLanesAreFew()
{
    QFETCH(int, seed);
    std::mt19937 random(static_cast<unsigned>(seed));
    Spans spans(random() % 120 + 1);
    for (LaneSpan &span : spans) {
        span.begin = random() % 300;
        span.end = span.begin + (random() % 4 == 0 ? 0 : random() % 60);
    }
    const Lanes lanes = packLanes(spans, emptyLength);
    QCOMPARE(lanes.size(), spans.size());
    for (std::size_t i = 0; i < spans.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j)
            QVERIFY(lanes[i] != lanes[j] || !overlap(spans[i], spans[j]));
    }
    QCOMPARE(*std::max_element(lanes.begin(), lanes.end()) + 1, mostAtOnce(spans));
}

QTEST_GUILESS_MAIN(tst_TimelineLanes)
#include "tst_TimelineLanes.moc"
