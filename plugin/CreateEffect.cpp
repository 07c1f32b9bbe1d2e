#include "CreateEffect.h"

#include "MetaEffect.h"

Effect *createEffect(MapModel *model, unsigned long arg)
{
    return new MetaEffect(model, arg);
}
