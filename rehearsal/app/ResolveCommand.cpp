#include "ResolveCommand.h"

#include "Effect.h"
#include "ShowFile.h"
#include "ShowSource.h"

#include <QMetaObject>
#include <QTextStream>

namespace rehearsal {

namespace {

bool updateTimes(Effect *effect)
{
    const QMetaObject *type = effect->metaObject();
    if (type->indexOfSlot("updateEffectTimes()") < 0 || type->indexOfSlot("updateEndTime()") < 0)
        return false;
    return QMetaObject::invokeMethod(effect, "updateEffectTimes")
           && QMetaObject::invokeMethod(effect, "updateEndTime");
}

} // namespace

ExitStatus resolve(const ResolveRequest &request, const Show::TypeSetup &types, Console &console)
{
    const std::unique_ptr<Show> show = openShow(request.showFile, types, console);
    if (!show)
        return Fault;
    int resolved = 0;
    for (Effect *effect : show->loadedEffects())
        resolved += updateTimes(effect) ? 1 : 0;
    FileFault fault;
    if (!saveShow(*show, request.outFile, &fault))
        return console.fail(fault.message());
    console.out() << request.outFile << ": " << show->loadedEffects().size() << " effects, "
                  << resolved << " of them with times to resolve\n";
    return Done;
}

} // namespace rehearsal
