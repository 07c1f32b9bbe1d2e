#include "TypeLoader.h"

#include "EffectTypes.h"
#include "PluginModule.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace rehearsal {

namespace {

QString findPlugin()
{
    const QDir folder(QCoreApplication::applicationDirPath());
    for (const auto *place : {"metaeffect.so", "../lib/metaeffect.so"}) {
        QString file = QDir::cleanPath(folder.filePath(QString::fromLatin1(place)));
        if (QFileInfo::exists(file))
            return file;
    }
    return {};
}

} // namespace

std::optional<Show::TypeSetup> loadTypes(const QString &pluginFile, FileFault *fault)
{
    const QString file = pluginFile.isEmpty() ? findPlugin() : pluginFile;
    if (file.isEmpty()) {
        *fault = {QStringLiteral("metaeffect.so"), 0,
                  QStringLiteral("the plug-in is neither beside the program nor in ../lib")};
        return {};
    }
    if (!QFileInfo(file).isFile()) {
        *fault = {file, 0, QStringLiteral("there is no such plug-in")};
        return {};
    }
    // An absolute path, so that only this very file is tried.
    const std::optional<PluginModule> module =
        PluginModule::load(QFileInfo(file).absoluteFilePath(), fault);
    if (!module)
        return {};
    StageMap map;
    EffectFactory factory(map);
    module->addTo(factory);
    if (factory.typeNames().isEmpty()) {
        *fault = {file, 0, QStringLiteral("the plug-in makes no effect")};
        return {};
    }
    return [module = *module](EffectFactory &types) {
        addHostTypes(types);
        module.addTo(types);
    };
}

} // namespace rehearsal
