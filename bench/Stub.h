#pragma once

#include "Effect.h"

#include <memory>

namespace bench {

/// Children whose drawing costs as good as nothing, of two types.
class StubA final : public Effect
{
public:
    explicit StubA(MapModel *map) : Effect(map, 0) {}
    void internalUpdateLights() override { m_drawn = m_frameArg; }

private:
    unsigned long m_drawn = 0;
};

class StubB final : public Effect
{
public:
    explicit StubB(MapModel *map) : Effect(map, 0) {}
    void internalUpdateLights() override { m_drawn = m_frameArg + 1; }

private:
    unsigned long m_drawn = 0;
};

inline std::unique_ptr<Effect> makeStub(MapModel *map, bool ofFirstType)
{
    if (ofFirstType)
        return std::make_unique<StubA>(map);
    return std::make_unique<StubB>(map);
}

} // namespace bench
