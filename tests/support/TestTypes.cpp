#include "TestTypes.h"

#include "CreateEffect.h"
#include "EffectTypes.h"

rehearsal::Show::TypeSetup allTypes()
{
    return [](rehearsal::EffectFactory &factory) {
        rehearsal::addHostTypes(factory);
        factory.addType(QStringLiteral("Meta Effect"),
                        [](MapModel *map) { return createEffect(map, 0); });
    };
}
