#include "FadeOutline.h"

#include <QTest>

#include <random>

using rehearsal::cutOutline;
using rehearsal::fadeOutline;

using Points = std::vector<QPointF>;

namespace {

// The strength that a child is played with.
double played(double ms, double duration, double fadeIn, double fadeOut)
{
    if (duration - ms < fadeOut)
        return (duration - ms) / fadeOut;
    return ms < fadeIn ? ms / fadeIn : 1.0;
}

double drawn(const Points &points, double ms)
{
    for (std::size_t i = 1; i < points.size(); ++i) {
        const QPointF begin = points[i - 1];
        const QPointF end = points[i];
        if (begin.x() <= ms && ms < end.x())
            return begin.y() + (end.y() - begin.y()) * (ms - begin.x()) / (end.x() - begin.x());
    }
    return -1;
}

} // namespace

class tst_TimelineFades : public QObject
{
    Q_OBJECT

private slots:
    void outlineFollowsTheFades_data();
    void outlineFollowsTheFades();
    void outlineIsWhatIsPlayed();
    void partOfAnOutlineIsTheSameThere();
};

void tst_TimelineFades::outlineFollowsTheFades_data()
{
    QTest::addColumn<int>("duration");
    QTest::addColumn<int>("fadeIn");
    QTest::addColumn<int>("fadeOut");
    QTest::addColumn<Points>("points");

    QTest::newRow("no fades")       << 100 << 0   << 0   << Points{{0, 1}, {100, 1}};
    QTest::newRow("in")             << 100 << 20  << 0   << Points{{0, 0}, {20, 1}, {100, 1}};
    QTest::newRow("out")            << 100 << 0   << 25  << Points{{0, 1}, {75, 1}, {75, 1}, {100, 0}};
    QTest::newRow("both")           << 100 << 20  << 25  << Points{{0, 0}, {20, 1}, {75, 1}, {75, 1}, {100, 0}};
    QTest::newRow("in to the end")  << 100 << 100 << 0   << Points{{0, 0}, {100, 1}};
    QTest::newRow("in too long")    << 100 << 200 << 0   << Points{{0, 0}, {100, 0.5}};
    QTest::newRow("out too long")   << 100 << 0   << 200 << Points{{0, 0.5}, {100, 0}};
    QTest::newRow("out wins")       << 100 << 80  << 60  << Points{{0, 0}, {40, 0.5}, {40, 1}, {100, 0}};
    QTest::newRow("both too long")  << 100 << 200 << 400 << Points{{0, 0.25}, {100, 0}};
}

void tst_TimelineFades::outlineFollowsTheFades()
{
    QFETCH(int, duration);
    QFETCH(int, fadeIn);
    QFETCH(int, fadeOut);
    QFETCH(Points, points);
    QCOMPARE(fadeOutline(duration, quint32(fadeIn), quint32(fadeOut)), points);
}

void tst_TimelineFades::outlineIsWhatIsPlayed()
{
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        const int duration = int(random() % 200) + 1;
        const quint32 fadeIn = quint32(random() % 300);
        const quint32 fadeOut = quint32(random() % 300);
        const Points points = fadeOutline(duration, fadeIn, fadeOut);
        QCOMPARE(points.front().x(), 0.0);
        QCOMPARE(points.back().x(), double(duration));
        for (int half = 0; half < 2 * duration; ++half) {
            const double ms = 0.25 + 0.5 * half;
            QVERIFY(qAbs(drawn(points, ms) - played(ms, duration, fadeIn, fadeOut)) < 1e-9);
        }
    }
}

void tst_TimelineFades::partOfAnOutlineIsTheSameThere()
{
    const Points whole = fadeOutline(1000, 300, 400);
    const Points part = cutOutline(whole, 100, 900);
    QCOMPARE(part.front().x(), 100.0);
    QCOMPARE(part.back().x(), 900.0);
    for (int ms = 100; ms < 900; ++ms)
        QVERIFY(qAbs(drawn(part, ms + 0.5) - drawn(whole, ms + 0.5)) < 1e-9);
    QVERIFY(cutOutline(whole, 1001, 1100).empty());
}

QTEST_GUILESS_MAIN(tst_TimelineFades)
#include "tst_TimelineFades.moc"
