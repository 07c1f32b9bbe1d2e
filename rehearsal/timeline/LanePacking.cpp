#include "LanePacking.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <queue>
#include <utility>

namespace rehearsal {

namespace {

template<typename Item>
using SmallestFirst = std::priority_queue<Item, std::vector<Item>, std::greater<>>;

} // namespace

std::vector<int> packLanes(const std::vector<LaneSpan> &spans, qint64 emptyLength)
{
    std::vector<std::size_t> order(spans.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&spans](std::size_t left, std::size_t right) {
        return spans[left].begin < spans[right].begin;
    });

    std::vector<int> lanes(spans.size());
    SmallestFirst<std::pair<qint64, int>> busy; // until when, which lane
    SmallestFirst<int> free;
    int count = 0;
    for (const std::size_t index : order) {
        const LaneSpan &span = spans[index];
        for (; !busy.empty() && busy.top().first <= span.begin; busy.pop())
            free.push(busy.top().second);
        if (free.empty())
            free.push(count++);
        lanes[index] = free.top();
        free.pop();
        const qint64 emptyEnd = span.begin + std::max(emptyLength, qint64{1});
        busy.emplace(span.end > span.begin ? span.end : emptyEnd, lanes[index]);
    }
    return lanes;
}

} // namespace rehearsal
