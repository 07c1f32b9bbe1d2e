#include "EffectTypes.h"

#include "Chase.h"
#include "EffectFactory.h"
#include "Pulse.h"
#include "Ramp.h"
#include "Solid.h"
#include "Strobe.h"
#include "Twinkle.h"
#include "WhiteFade.h"

namespace rehearsal {

namespace {

template<typename Type>
Effect *make(MapModel *map)
{
    return new Type(map);
}

} // namespace

void addHostTypes(EffectFactory &factory)
{
    factory.addType(QStringLiteral("Solid"), make<Solid>);
    factory.addType(QStringLiteral("Ramp"), make<Ramp>);
    factory.addType(QStringLiteral("Chase"), make<Chase>);
    factory.addType(QStringLiteral("Pulse"), make<Pulse>);
    factory.addType(QStringLiteral("Strobe"), make<Strobe>);
    factory.addType(QStringLiteral("Twinkle"), make<Twinkle>);
    factory.addType(QStringLiteral("White Fade"), make<WhiteFade>);
}

} // namespace rehearsal
