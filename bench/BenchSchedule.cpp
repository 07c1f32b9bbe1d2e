#include "Measure.h"
#include "Stub.h"

#include "ChildKeys.h"
#include "LinkLegality.h"
#include "TimeResolver.h"

#include <QLoggingCategory>

#include <cmath>
#include <unordered_map>

namespace {

namespace keys = meta::keys;

// The reference of a pass: the same chain over plain structs, the children found through a hash of
// their ids, each resolved once, a link target before what links to it.
struct PlainChild
{
    quint32 eid = 0;
    quint32 startType = 0;
    quint32 startLinkEid = 0;
    bool startLinkStart = false;
    double startLinkOffset = 0;
    quint32 endType = 0;
    quint32 endFixedTime = 0;
    quint32 begin = 0;
    quint32 end = 0;
    bool resolved = false;
};

class PlainChain
{
public:
    explicit PlainChain(int count)
    {
        for (int i = 0; i < count; ++i) {
            PlainChild child;
            child.eid = static_cast<quint32>(i);
            child.startType = i > 0 ? 1 : 0;
            child.startLinkEid = static_cast<quint32>(i - 1);
            child.startLinkOffset = i % 7;
            child.endFixedTime = 10;
            m_children.push_back(child);
        }
    }

    void resolveAll()
    {
        m_byEid.clear();
        for (PlainChild &child : m_children) {
            child.resolved = false;
            m_byEid.emplace(child.eid, &child);
        }
        for (PlainChild &child : m_children)
            resolve(child);
        benchmark::DoNotOptimize(m_children.back().end);
    }

private:
    void resolve(PlainChild &child)
    {
        if (child.resolved)
            return;
        if (child.startType == 0) {
            child.begin = 0;
        } else {
            PlainChild &target = *m_byEid.find(child.startLinkEid)->second;
            resolve(target);
            const double time =
                child.startLinkOffset + (child.startLinkStart ? target.begin : target.end);
            child.begin = time > 0 ? static_cast<quint32>(time) : 0;
        }
        child.end = child.begin + child.endFixedTime;
        child.resolved = true;
    }

    std::vector<PlainChild> m_children;
    std::unordered_map<quint32, PlainChild *> m_byEid;
};

void plainChain(benchmark::State &state)
{
    PlainChain chain(static_cast<int>(state.range(0)));
    bench::measureReference(state, "R2", [&] { chain.resolveAll(); });
}

// The same chain as children: each starts at the end of the one before it, and lasts 10 ms.
class Chain
{
public:
    explicit Chain(int count)
    {
        for (int i = 0; i < count; ++i) {
            Effect *child = bench::makeStub(nullptr, i % 2).release();
            keys::eid.write(*child, static_cast<quint32>(i));
            keys::startRule.type.write(*child, i > 0 ? meta::rule::linked : meta::rule::fixed);
            keys::startRule.linkEid.write(*child, static_cast<quint32>(i - 1));
            keys::startRule.linkOffset.writeText(*child, QString::number(i % 7));
            keys::endRule.fixedTime.write(*child, meta::Millis(quint32{10}));
            roster.insert(child);
        }
    }

    // Every time of the chain is another one in the next pass.
    void shift() { keys::startRule.fixedTime.write(*first(), meta::Millis(++m_start)); }
    Effect *first() const { return roster.children().at(0); }
    Effect *last() const { return roster.children().at(roster.children().count() - 1); }

    meta::ChildRoster roster;
    meta::ChildrenByEid byEid;

private:
    quint32 m_start = 0;
};

void pass(benchmark::State &state)
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    Chain chain(static_cast<int>(state.range(0)));
    meta::TimeResolver resolver(chain.roster, chain.byEid);
    bench::measure(state, "R2", [&] { resolver.resolveAll(); });
}

void passAllMoved(benchmark::State &state)
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    Chain chain(static_cast<int>(state.range(0)));
    meta::TimeResolver resolver(chain.roster, chain.byEid);
    bench::measure(state, "R2", [&] {
        chain.shift();
        resolver.resolveAll();
    });
}

// What filling one chooser asks. The first child of the chain: nobody may be its target.
void legalityNoneLegal(benchmark::State &state)
{
    Chain chain(static_cast<int>(state.range(0)));
    meta::LinkLegality legality(chain.roster, chain.byEid);
    bench::measure(state, "R1",
                   [&] { benchmark::DoNotOptimize(legality.legalTargets(chain.first()).count()); });
}

// The last child of the chain: everybody may.
void legalityAllLegal(benchmark::State &state)
{
    Chain chain(static_cast<int>(state.range(0)));
    meta::LinkLegality legality(chain.roster, chain.byEid);
    bench::measure(state, "R1",
                   [&] { benchmark::DoNotOptimize(legality.legalTargets(chain.last()).count()); });
}

} // namespace

BENCHMARK(plainChain)->Name("R2 plain chain")->Apply(bench::sizes);
BENCHMARK(pass)->Name("pass, nothing moved")->Apply(bench::sizes);
BENCHMARK(passAllMoved)->Name("pass, all moved")->Apply(bench::sizes);
BENCHMARK(legalityNoneLegal)->Name("legality series, none legal")->Apply(bench::sizes);
BENCHMARK(legalityAllLegal)->Name("legality series, all legal")->Apply(bench::sizes);
