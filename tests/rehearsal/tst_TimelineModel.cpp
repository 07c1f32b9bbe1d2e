#include "TimelineStage.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>
#include <limits>
#include <random>

using rehearsal::Edge;
using rehearsal::EidPath;
using rehearsal::LinkKind;
using rehearsal::TimelineModel;
using rehearsal::TimelineRow;

namespace {

/// A link as it is written down: "3>" for the end of 3, "3<" for its begin; empty for none.
struct Rules
{
    QString start;
    QString end;
};

void link(Effect *effect, const QString &text, bool isStart)
{
    if (text.isEmpty())
        return;
    const Edge edge = text.back() == u'<' ? Edge::Begin : Edge::End;
    const quint32 eid = text.chopped(1).toUInt();
    if (isStart)
        TimelineStage::linkStart(effect, eid, edge);
    else
        TimelineStage::linkEnd(effect, eid, edge);
}

// "SB": the start link is sound, the end link broken; "-" stands for none, "L" for looping.
QString kinds(const TimelineRow &row)
{
    const auto letter = [](LinkKind kind) { return QStringLiteral("-SBL").at(int(kind)); };
    return QString(letter(row.startLink.kind)) + letter(row.endLink.kind);
}

QStringList kinds(const TimelineModel &model)
{
    QStringList all;
    for (const TimelineRow &row : model.rows())
        all.append(kinds(row));
    return all;
}

QList<int> lanes(const TimelineModel &model)
{
    QList<int> all;
    for (const TimelineRow &row : model.rows())
        all.append(row.lane);
    return all;
}

/// Plain and slow: a link is in a loop when the walk over all links from its target comes back.
class PlainLoops
{
public:
    explicit PlainLoops(const TimelineModel &model) : m_rows(model.rows()) {}

    bool isLooping(std::size_t row, Edge edge) const
    {
        std::vector<std::size_t> reached{targetOf(row, edge)};
        for (std::size_t i = 0; i < reached.size(); ++i) {
            if (reached[i] == row)
                return true;
            for (const Edge other : {Edge::Begin, Edge::End}) {
                const std::size_t target = targetOf(reached[i], other);
                if (target != none
                    && std::find(reached.begin(), reached.end(), target) == reached.end())
                    reached.push_back(target);
            }
        }
        return false;
    }

private:
    static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

    std::size_t targetOf(std::size_t row, Edge edge) const
    {
        const auto &link = m_rows[row].link(edge);
        if (link.kind == LinkKind::None)
            return none;
        const auto target =
            std::find_if(m_rows.begin(), m_rows.end(),
                         [&link](const TimelineRow &other) { return other.eid == link.targetEid; });
        return target == m_rows.end() ? none : std::size_t(target - m_rows.begin());
    }

    const std::vector<TimelineRow> &m_rows;
};

} // namespace

class tst_TimelineModel : public QObject
{
    Q_OBJECT

private slots:
    void noEffectHasNoRows();
    void rowsTellWhatTheChildrenAre();
    void nestedTimesCountFromTheTop();
    void timesNeverWrap();
    void linksAreJudged_data();
    void linksAreJudged();
    void randomLinksAreJudgedAsByWalking_data();
    void randomLinksAreJudgedAsByWalking();
    void linksNameSiblingsOnly();
    void firstOfTwoWithOneEidIsTheTarget();
    void foldedChildrenHaveNoLane();
    void unfoldedChildrenHaveLanesBelowTheirHolder_data();
    void unfoldedChildrenHaveLanesBelowTheirHolder();
    void whatIsUnfoldedStaysSoByPath();
    void onlyHoldersUnfold();
    void rowsAreFoundByPath();
    void shownRowsGoFromLaneToLaneByBegin();
    void deletedEffectsLeaveTheirRows();
    void manyChildrenAreReadQuickly_data();
    void manyChildrenAreReadQuickly();
};

void tst_TimelineModel::noEffectHasNoRows()
{
    TimelineModel model;
    model.rebuild(nullptr);
    model.layOut(false);
    QVERIFY(model.rows().empty());
    QCOMPARE(model.laneCount(), 0);
    QCOMPARE(model.length(), 0);
    QCOMPARE(model.find({}), -1);
    QCOMPARE(model.find({1}), -1);
    QVERIFY(model.path(-1).isEmpty());
}

void tst_TimelineModel::rowsTellWhatTheChildrenAre()
{
    TimelineStage stage;
    Effect *chase = stage.add({7, 100, 900}, nullptr, QStringLiteral("Chase"));
    TimelineStage::set(chase, "fadein", 30);
    TimelineStage::set(chase, "fadeout", 40);
    stage.addMeta({8, 900, 950});
    TimelineModel model;
    model.rebuild(stage.top);
    QCOMPARE(model.rows().size(), 2U);
    const TimelineRow &row = model.row(0);
    QCOMPARE(row.effect.data(), chase);
    QCOMPARE(row.eid, 7U);
    QCOMPARE(row.name, QStringLiteral("Child 7"));
    QCOMPARE(row.type, QStringLiteral("Chase"));
    QCOMPARE(row.begin, 100);
    QCOMPARE(row.end, 900);
    QCOMPARE(row.fadeIn, 30U);
    QCOMPARE(row.fadeOut, 40U);
    QVERIFY(!row.holdsEffects);
    QCOMPARE(row.depth, 0);
    QCOMPARE(row.holder, -1);
    QVERIFY(model.row(1).holdsEffects);
}

void tst_TimelineModel::nestedTimesCountFromTheTop()
{
    TimelineStage stage;
    Effect *outer = stage.addMeta({1, 1000, 5000});
    Effect *inner = stage.addMeta({2, 200, 900}, outer);
    stage.add({3, 30, 40}, inner);
    stage.add({4, 0, 10});
    TimelineModel model;
    model.rebuild(stage.top);
    QCOMPARE(model.rows().size(), 4U);
    QCOMPARE(model.row(1).begin, 1200);
    QCOMPARE(model.row(2).begin, 1230);
    QCOMPARE(model.row(2).end, 1240);
    QCOMPARE(model.row(2).depth, 2);
    QCOMPARE(model.row(2).holder, 1);
    QCOMPARE(model.row(0).next, 3);
    QCOMPARE(model.row(3).begin, 0);
}

void tst_TimelineModel::timesNeverWrap()
{
    TimelineStage stage;
    Effect *outer = stage.addMeta({1, 4294967295, 4294967295});
    stage.add({2, 4294967295, 4294967295}, outer);
    TimelineModel model;
    model.rebuild(stage.top);
    model.setUnfolded(0, true);
    model.layOut(false);
    QCOMPARE(model.row(1).begin, 2 * 4294967295LL);
    QCOMPARE(model.length(), 2 * 4294967295LL);
}

void tst_TimelineModel::linksAreJudged_data()
{
    QTest::addColumn<QList<QStringList>>("rules"); // start and end of the children 1, 2 ...
    QTest::addColumn<QStringList>("kinds");

    using Table = QList<QStringList>;
    QTest::newRow("none")             << Table{{"", ""}}                               << QStringList{"--"};
    QTest::newRow("sound")            << Table{{"", ""}, {"1>", ""}, {"1<", "2>"}}     << QStringList{"--", "S-", "SS"};
    QTest::newRow("broken")           << Table{{"9>", ""}, {"", "9<"}}                 << QStringList{"B-", "-B"};
    QTest::newRow("own begin")        << Table{{"1<", ""}}                             << QStringList{"L-"};
    QTest::newRow("own end")          << Table{{"1>", ""}}                             << QStringList{"L-"};
    QTest::newRow("end to own begin") << Table{{"", "1<"}}                             << QStringList{"-L"};
    QTest::newRow("end to itself")    << Table{{"", "1>"}}                             << QStringList{"-L"};
    QTest::newRow("both, begins")     << Table{{"2<", ""}, {"1<", ""}}                 << QStringList{"L-", "L-"};
    QTest::newRow("both, ends")       << Table{{"2>", ""}, {"1>", ""}}                 << QStringList{"L-", "L-"};
    QTest::newRow("through an end")   << Table{{"2<", "3>"}, {"1<", ""}, {"", "1>"}}   << QStringList{"LL", "L-", "-L"};
    // Times are resolved child by child, so it does not matter which ends are linked.
    QTest::newRow("crossed")          << Table{{"2<", ""}, {"", "1>"}}                 << QStringList{"L-", "-L"};
    QTest::newRow("out of a loop")    << Table{{"2<", "3>"}, {"1<", ""}, {"", ""}}     << QStringList{"LS", "L-", "--"};
    QTest::newRow("into a loop")      << Table{{"2>", ""}, {"3>", ""}, {"2>", ""}}     << QStringList{"S-", "L-", "L-"};
    QTest::newRow("three")            << Table{{"3>", ""}, {"1>", ""}, {"2>", ""}}     << QStringList{"L-", "L-", "L-"};
}

void tst_TimelineModel::linksAreJudged()
{
    QFETCH(QList<QStringList>, rules);
    TimelineStage stage;
    for (int i = 0; i < rules.size(); ++i) {
        Effect *effect = stage.add({quint32(i + 1), 0, 10});
        link(effect, rules[i][0], true);
        link(effect, rules[i][1], false);
    }
    TimelineModel model;
    model.rebuild(stage.top);
    QTEST(kinds(model), "kinds");
}

void tst_TimelineModel::randomLinksAreJudgedAsByWalking_data()
{
    QTest::addColumn<int>("seed");
    for (int seed = 1; seed <= 150; ++seed)
        QTest::addRow("seed %d", seed) << seed;
}

void tst_TimelineModel::randomLinksAreJudgedAsByWalking()
{
    QFETCH(int, seed);
    std::mt19937 random(static_cast<unsigned>(seed));
    TimelineStage stage;
    const unsigned count = unsigned(random() % 12) + 1;
    const auto edge = [&random] { return random() % 2 == 0 ? Edge::Begin : Edge::End; };
    for (unsigned i = 0; i < count; ++i) {
        // Now and then an eid that is there twice, one that is missing, and an unknown rule.
        Effect *effect = stage.add({quint32(random() % 10 == 0 ? 0 : i), 0, 10});
        if (random() % 2 == 0)
            TimelineStage::linkStart(effect, quint32(random() % (count + 1)), edge());
        if (random() % 3 == 0)
            TimelineStage::linkEnd(effect, quint32(random() % (count + 1)), edge());
        else
            TimelineStage::set(effect, "endtype", random() % 8 == 0 ? 5 : 0);
    }
    TimelineModel model;
    model.rebuild(stage.top);
    const PlainLoops reference(model);
    for (std::size_t i = 0; i < model.rows().size(); ++i) {
        for (const Edge which : {Edge::Begin, Edge::End}) {
            const auto &link = model.rows()[i].link(which);
            if (link.kind == LinkKind::None)
                continue;
            const bool isThere = std::any_of(
                model.rows().begin(), model.rows().end(),
                [&](const TimelineRow &row) { return row.eid == link.targetEid; });
            const LinkKind expected = !isThere                        ? LinkKind::Broken
                                      : reference.isLooping(i, which) ? LinkKind::Looping
                                                                      : LinkKind::Sound;
            QCOMPARE(link.kind, expected);
        }
    }
}

void tst_TimelineModel::linksNameSiblingsOnly()
{
    TimelineStage stage;
    Effect *outer = stage.addMeta({1, 0, 10});
    Effect *inner = stage.add({2, 0, 10}, outer);
    TimelineStage::linkStart(inner, 1, Edge::End);
    Effect *other = stage.add({3, 0, 10}, outer);
    TimelineStage::linkStart(other, 2, Edge::Begin);
    TimelineModel model;
    model.rebuild(stage.top);
    QCOMPARE(model.row(1).startLink.kind, LinkKind::Broken);
    QCOMPARE(model.row(1).startLink.target, -1);
    QCOMPARE(model.row(2).startLink.kind, LinkKind::Sound);
    QCOMPARE(model.row(2).startLink.target, 1);
    QCOMPARE(model.row(2).startLink.targetEdge, Edge::Begin);
}

void tst_TimelineModel::firstOfTwoWithOneEidIsTheTarget()
{
    TimelineStage stage;
    stage.add({5, 0, 10});
    stage.add({5, 20, 30});
    TimelineStage::linkStart(stage.add({6, 0, 10}), 5, Edge::End);
    TimelineModel model;
    model.rebuild(stage.top);
    QCOMPARE(model.row(2).startLink.target, 0);
    QCOMPARE(model.find({5}), 0);
}

void tst_TimelineModel::foldedChildrenHaveNoLane()
{
    TimelineStage stage;
    Effect *outer = stage.addMeta({1, 0, 100});
    stage.add({2, 0, 5000}, outer);
    stage.add({3, 0, 10});
    TimelineModel model;
    model.rebuild(stage.top);
    for (const bool packed : {false, true}) {
        model.layOut(packed);
        QCOMPARE(lanes(model), QList<int>({0, -1, 1}));
        QCOMPARE(model.laneCount(), 2);
        QCOMPARE(model.length(), 100);
    }
}

void tst_TimelineModel::unfoldedChildrenHaveLanesBelowTheirHolder_data()
{
    QTest::addColumn<bool>("packed");
    QTest::addColumn<QList<int>>("lanes");
    QTest::addColumn<QList<int>>("depths");

    QTest::newRow("one each") << false << QList<int>{0, 1, 2, 3, 4, 5, 6} << QList<int>{0, 0, 1, 1, 1, 0, 0};
    QTest::newRow("packed")   << true  << QList<int>{0, 0, 1, 2, 1, 3, 0} << QList<int>{0, 1, 1, 0};
}

void tst_TimelineModel::unfoldedChildrenHaveLanesBelowTheirHolder()
{
    QFETCH(bool, packed);
    TimelineStage stage;
    stage.add({1, 0, 1000});
    Effect *outer = stage.addMeta({2, 1000, 2000});
    stage.add({3, 0, 400}, outer);
    stage.add({4, 200, 600}, outer);
    stage.add({5, 500, 900}, outer);
    stage.add({6, 500, 1500});
    stage.add({7, 2000, 3000});
    TimelineModel model;
    model.rebuild(stage.top);
    model.setUnfolded(1, true);
    model.layOut(packed);
    QTEST(lanes(model), "lanes");
    QList<int> depths;
    for (int lane = 0; lane < model.laneCount(); ++lane)
        depths.append(model.laneDepth(lane));
    QTEST(depths, "depths");
}

void tst_TimelineModel::whatIsUnfoldedStaysSoByPath()
{
    TimelineStage stage;
    Effect *first = stage.addMeta({1, 0, 100});
    Effect *inner = stage.addMeta({9, 0, 100}, first);
    stage.add({3, 0, 10}, inner);
    Effect *second = stage.addMeta({2, 0, 100});
    stage.addMeta({9, 0, 100}, second);
    TimelineModel model;
    model.rebuild(stage.top);
    model.setUnfolded(model.find({1}), true);
    model.setUnfolded(model.find({1, 9}), true);
    model.setUnfolded(model.find({2}), true);
    model.setUnfolded(model.find({2}), false);

    stage.add({4, 0, 10});
    model.rebuild(stage.top);
    QVERIFY(model.row(model.find({1})).isUnfolded);
    QVERIFY(model.row(model.find({1, 9})).isUnfolded);
    QVERIFY(!model.row(model.find({2})).isUnfolded);
    QVERIFY(!model.row(model.find({2, 9})).isUnfolded);

    model.foldAll();
    QVERIFY(!model.row(model.find({1})).isUnfolded);
    model.rebuild(stage.top);
    QVERIFY(!model.row(model.find({1})).isUnfolded);
}

void tst_TimelineModel::onlyHoldersUnfold()
{
    TimelineStage stage;
    stage.add({1, 0, 10});
    TimelineModel model;
    model.rebuild(stage.top);
    model.setUnfolded(0, true);
    QVERIFY(!model.row(0).isUnfolded);
}

void tst_TimelineModel::rowsAreFoundByPath()
{
    TimelineStage stage;
    Effect *first = stage.addMeta({1, 0, 100});
    stage.add({2, 0, 10}, first);
    stage.add({3, 0, 10}, first);
    Effect *second = stage.addMeta({2, 0, 100});
    stage.add({3, 0, 10}, second);
    TimelineModel model;
    model.rebuild(stage.top);
    for (int row = 0; row < int(model.rows().size()); ++row)
        QCOMPARE(model.find(model.path(row)), row);
    QCOMPARE(model.path(4), EidPath({2, 3}));
    QCOMPARE(model.find({3}), -1);
    QCOMPARE(model.find({1, 4}), -1);
    QCOMPARE(model.find({1, 2, 3}), -1);
}

void tst_TimelineModel::shownRowsGoFromLaneToLaneByBegin()
{
    TimelineStage stage;
    stage.add({1, 500, 600});
    stage.add({2, 0, 100});
    stage.add({3, 50, 200});
    TimelineModel model;
    model.rebuild(stage.top);
    model.layOut(true);
    QCOMPARE(model.shown(), std::vector<int>({1, 0, 2}));
    QCOMPARE(model.firstOfLane(0), 0U);
    QCOMPARE(model.firstOfLane(1), 2U);
    QCOMPARE(model.firstOfLane(2), 3U);
    QCOMPARE(model.firstOfLane(-3), 0U);
    QCOMPARE(model.firstOfLane(99), 3U);
    model.layOut(false);
    QCOMPARE(model.shown(), std::vector<int>({0, 1, 2}));
}

void tst_TimelineModel::deletedEffectsLeaveTheirRows()
{
    auto stage = std::make_unique<TimelineStage>();
    stage->add({1, 0, 10});
    TimelineModel model;
    model.rebuild(stage->top);
    model.layOut(false);
    stage.reset();
    QVERIFY(!model.row(0).effect);
    QCOMPARE(model.row(0).name, QStringLiteral("Child 1"));
}

void tst_TimelineModel::manyChildrenAreReadQuickly_data()
{
    QTest::addColumn<bool>("ring");
    QTest::newRow("chain") << false;
    QTest::newRow("ring") << true;
}

// Generous: a walk of the whole chain from each child would take minutes.
void tst_TimelineModel::manyChildrenAreReadQuickly()
{
    QFETCH(bool, ring);
    constexpr quint32 count = 20000;
    TimelineStage stage;
    for (quint32 i = 0; i < count; ++i) {
        Effect *effect = stage.add({i, 10 * i, 10 * i + 15});
        TimelineStage::endByDuration(effect);
        if (i + 1 < count || ring)
            TimelineStage::linkStart(effect, (i + 1) % count, Edge::End);
    }
    TimelineModel model;
    QElapsedTimer timer;
    timer.start();
    model.rebuild(stage.top);
    model.layOut(true);
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(model.laneCount(), 2);
    QCOMPARE(model.row(0).startLink.kind, ring ? LinkKind::Looping : LinkKind::Sound);
    QCOMPARE(model.row(count / 2).startLink.kind, ring ? LinkKind::Looping : LinkKind::Sound);
}

QTEST_GUILESS_MAIN(tst_TimelineModel)
#include "tst_TimelineModel.moc"
