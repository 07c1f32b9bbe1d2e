#include "PluginModule.h"

#include "Effect.h"
#include "EffectFactory.h"
#include "StageMap.h"

#include <QLibrary>

#include <memory>

namespace rehearsal {

std::optional<PluginModule> PluginModule::load(const QString &file, FileFault *fault)
{
    QLibrary library(file);
    library.setLoadHints(QLibrary::PreventUnloadHint);
    if (!library.load()) {
        *fault = {file, 0, library.errorString().simplified()};
        return {};
    }
    const auto createEffect = reinterpret_cast<CreateEffect>(library.resolve("createEffect"));
    if (!createEffect) {
        *fault = {file, 0, QStringLiteral("the library does not export createEffect")};
        return {};
    }
    return PluginModule(createEffect);
}

Effect *PluginModule::create(MapModel *map) const
{
    return m_createEffect(map, 0);
}

void PluginModule::addTo(EffectFactory &factory) const
{
    const std::unique_ptr<Effect> sample(create(&factory.map()));
    if (!sample)
        return;
    factory.addType(sample->getPropertyString(QStringLiteral("type")),
                    [module = *this](MapModel *map) { return module.create(map); });
}

} // namespace rehearsal
