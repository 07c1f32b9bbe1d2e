#include "EffectFactory.h"

#include "Effect.h"
#include "EffectHost.h"
#include "StageMap.h"
#include "XmlBurden.h"

#include <algorithm>
#include <numeric>

using rehearsal::EffectFactory;

namespace {

qint64 effectsIn(const rehearsal::EffectText &text)
{
    return std::accumulate(
        text.nested.begin(), text.nested.end(), qint64{1},
        [](qint64 sum, const rehearsal::EffectText &nested) { return sum + effectsIn(nested); });
}

} // namespace

// --- What host/ declares ---

Effect *EffectLib::createEffect(const QString &text)
{
    auto *factory = static_cast<EffectFactory *>(this);
    const qint64 room = rehearsal::maximumEffects - factory->map().effectCount();
    if (room <= 0 || text.size() > rehearsal::maximumFileSize || rehearsal::findBurden(text))
        return nullptr;
    const std::optional<rehearsal::EffectText> effect = rehearsal::parseEffect(text);
    if (!effect || !factory->knows(effect->identity.type) || effectsIn(*effect) > room)
        return nullptr;
    return factory->build(*effect, text);
}

Effect *EffectLib::effectMaker(const QString &typeName)
{
    return static_cast<EffectFactory *>(this)->make(typeName);
}

QStringList EffectLib::getEffectNames() const
{
    return static_cast<const EffectFactory *>(this)->typeNames();
}

namespace rehearsal {

namespace {

/// An effect of a type that this host does not have. It keeps its properties, so that it can be
/// placed like any other, and is saved as the text that it was read from.
class PlaceholderEffect final : public Effect
{
public:
    PlaceholderEffect(MapModel *map, EffectIdentity identity)
        : Effect(map, 0), m_identity(std::move(identity))
    {
    }

    QString getVersion() override { return m_identity.version; }
    int getBuildNumber() override { return m_identity.build.toInt(); }

private:
    EffectIdentity m_identity;
};

void setProperties(Effect &effect, const EffectText &text)
{
    for (const EffectText::Property &property : text.properties) {
        if (property.key != u"type")
            effect.setProperty(property.key, property.text);
    }
}

} // namespace

EffectFactory::EffectFactory(StageMap &map) : m_map(map)
{
    map.setLibrary(this);
}

EffectFactory::~EffectFactory()
{
    m_map.setLibrary(nullptr);
}

void EffectFactory::addType(const QString &name, Maker maker)
{
    m_makers.insert_or_assign(name, std::move(maker));
}

bool EffectFactory::knows(const QString &typeName) const
{
    return m_makers.contains(typeName);
}

Effect *EffectFactory::make(const QString &typeName)
{
    const auto maker = m_makers.find(typeName);
    return maker == m_makers.end() ? nullptr : maker->second(&m_map);
}

QStringList EffectFactory::typeNames() const
{
    QStringList names;
    for (const auto &[name, maker] : m_makers)
        names.append(name);
    return names;
}

Effect *EffectFactory::build(const EffectText &text, QStringView source, BuildLog *log)
{
    Effect *effect = make(text.identity.type);
    if (!effect)
        return makePlaceholder(text, source, log);
    setProperties(*effect, text);
    if (EffectHost::holdsEffects(*effect)) {
        for (const EffectText &nestedText : text.nested) {
            Effect *nested = build(nestedText, source, log);
            // Its init() wrote its own length; its place is that of the saved text.
            for (const EffectText::Property &property : nestedText.properties) {
                if (property.key == u"begin" || property.key == u"end")
                    nested->setProperty(property.key, property.text);
            }
            effect->addChild(nested);
        }
    } else if (!text.nested.empty()) {
        // This effect has no use for them, but what was in the file is not thrown away.
        QString nestedText;
        for (const EffectText &nested : text.nested)
            nestedText += nested.verbatim(source).toString() + u'\n';
        EffectHost::setNestedText(*effect, nestedText);
    }
    effect->init();
    if (log)
        log->built.push_back(effect);
    return effect;
}

Effect *EffectFactory::makePlaceholder(const EffectText &text, QStringView source, BuildLog *log)
{
    auto effect = std::make_unique<PlaceholderEffect>(&m_map, text.identity);
    effect->setProperty(QStringLiteral("type"), text.identity.type);
    setProperties(*effect, text);
    effect->init();
    EffectHost::setVerbatim(*effect, VerbatimText(text, source));
    if (log) {
        noteUnknown(text, *log);
        log->built.push_back(effect.get());
    }
    return effect.release();
}

void EffectFactory::noteUnknown(const EffectText &text, BuildLog &log) const
{
    if (log.unknownTypes.size() == BuildLog::maximumUnknownTypes)
        return;
    const bool isNoted =
        std::any_of(log.unknownTypes.begin(), log.unknownTypes.end(),
                    [&text](const auto &unknown) { return unknown.first == text.identity.type; });
    if (!isNoted && !knows(text.identity.type))
        log.unknownTypes.emplace_back(text.identity.type, text.line);
    for (const EffectText &nested : text.nested)
        noteUnknown(nested, log);
}

} // namespace rehearsal
