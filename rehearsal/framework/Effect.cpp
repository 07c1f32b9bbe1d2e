#include "Effect.h"

#include "EffectHost.h"
#include "EffectText.h"
#include "EffectWatch.h"
#include "HostClock.h"
#include "PropertyStore.h"
#include "StageMap.h"

#include <QScopedValueRollback>
#include <QTextStream>

#include <utility>

using rehearsal::PropertyStore;
using rehearsal::StageMap;

class Effect::HostPart
{
public:
    // What every frame asks for comes first, close to the store's own.
    const rehearsal::HostClock *clock = nullptr;
    QTime startTime{0, 0};
    bool running = false;
    bool wasPlayed = false; ///< got a property in a frame
    PropertyStore store;
    EffectHost::Observer observer;
    rehearsal::VerbatimText verbatim;
    std::vector<PropertyStore::Property> verbatimProperties; ///< as the text has them
    QString nestedText;

    // What "transparency" and "priority" were set to outside frames, once it was played.
    QString definedTransparency;
    QString definedPriority;

    /// The properties as they are to be saved.
    std::vector<PropertyStore::Property> savedProperties() const;
    /// Takes a text that was set outside frames; whether it is another one to be saved.
    bool define(const QString &key, const QString &text);
    /// Sets a property that may get another text, or that is to be defined.
    void set(Effect &effect, const QString &key, const QString &text);
};

namespace {

// How effects are being saved just now.
bool savesDefinitions = false;
std::vector<Effect *> *nestedCollector = nullptr;

// Of known length, so that most keys are told apart by that.
constexpr QStringView transparencyKey = u"transparency";
constexpr QStringView priorityKey = u"priority";
constexpr QStringView beginKey = u"begin";
constexpr QStringView endKey = u"end";

// Playback writes these anew in every frame.
bool isWrittenByFrames(const QString &key)
{
    return key == transparencyKey || key == priorityKey;
}

// These in every frame or pass; they do not make an effect unsaved.
bool isWrittenByPlayback(const QString &key)
{
    return isWrittenByFrames(key) || key == beginKey || key == endKey;
}

rehearsal::HostClock &clockOf(MapModel *mapModel)
{
    static rehearsal::HostClock wallClock;
    return mapModel ? static_cast<StageMap *>(mapModel)->clock() : wallClock;
}

rehearsal::EffectWatch *watchOf(MapModel *mapModel)
{
    return mapModel ? static_cast<StageMap *>(mapModel)->watch() : nullptr;
}

void countEffects(MapModel *mapModel, qint64 more)
{
    if (mapModel)
        static_cast<StageMap *>(mapModel)->countEffects(more);
}

void reportChange(MapModel *mapModel, Effect &effect, const QString &key)
{
    if (rehearsal::EffectWatch *watch = watchOf(mapModel))
        watch->effectChanged(effect, key);
}

} // namespace

std::vector<PropertyStore::Property> Effect::HostPart::savedProperties() const
{
    std::vector<PropertyStore::Property> properties = store.properties();
    if (!savesDefinitions || !wasPlayed)
        return properties;
    for (PropertyStore::Property &property : properties) {
        if (property.key == transparencyKey)
            property.text = definedTransparency;
        else if (property.key == priorityKey)
            property.text = definedPriority;
    }
    return properties;
}

bool Effect::HostPart::define(const QString &key, const QString &text)
{
    if (!wasPlayed || !isWrittenByFrames(key))
        return false;
    QString &defined = key == priorityKey ? definedPriority : definedTransparency;
    return std::exchange(defined, text) != text;
}

Effect::Effect(MapModel *mapModel, unsigned long arg)
    : m_frameArg(arg),
      m_mapModel(mapModel),
      m_effectLib(mapModel ? static_cast<StageMap *>(mapModel)->library() : nullptr),
      m_hostPart(std::make_unique<HostPart>())
{
    m_hostPart->clock = &clockOf(m_mapModel);
    PropertyStore &store = m_hostPart->store;
    store.bind(QStringLiteral("begin"), &m_beginTime);
    store.bind(QStringLiteral("end"), &m_endTime);
    store.bind(QStringLiteral("fadein"), &m_fadeInTime);
    store.bind(QStringLiteral("fadeout"), &m_fadeOutTime);
    store.bind(QStringLiteral("priority"), &m_priority);
    store.bind(QStringLiteral("transparency"), &m_transparency, 3);
    countEffects(m_mapModel, 1);
    if (rehearsal::EffectWatch *watch = watchOf(m_mapModel))
        watch->effectsCameOrWent();
}

Effect::~Effect()
{
    countEffects(m_mapModel, -1);
    if (rehearsal::EffectWatch *watch = watchOf(m_mapModel))
        watch->effectsCameOrWent();
}

// --- What an effect type may leave as it is ---

unsigned long Effect::getCycleTime()
{
    return getPropertyULong(QStringLiteral("cycletime"));
}

QString Effect::getVersion()
{
    return {};
}

int Effect::getBuildNumber()
{
    return 0;
}

bool Effect::isDirty()
{
    return m_dirty;
}

void Effect::resetStartTime()
{
    setStartTime();
}

void Effect::init()
{
    setStartTime();
    m_dirty = false;
}

void Effect::internalUpdateLights() {}

QWidget *Effect::internalGetEffectWidget()
{
    return nullptr;
}

void Effect::internalSave(QTextStream &) {}

void Effect::internalSetProperty(const QString &, const QString &) {}

void Effect::setLevel(int level)
{
    m_level = level;
}

void Effect::addChild(Effect *child)
{
    // An effect of a type that takes no nested effects has nowhere to keep one.
    delete child;
}

// --- Properties ---

// A frame mostly writes what stands there, and that many times: the rest is kept out of its way.
void Effect::setProperty(const QString &key, const QString &value)
{
    const bool definesNothing = m_hostPart->wasPlayed == m_hostPart->clock->isInFrame();
    if (!definesNothing || !m_hostPart->store.holds(key, value))
        m_hostPart->set(*this, key, value);
}

void Effect::HostPart::set(Effect &effect, const QString &key, const QString &text)
{
    if (!wasPlayed && clock->isInFrame()) {
        definedTransparency = effect.getPropertyString(QStringLiteral("transparency"));
        definedPriority = effect.getPropertyString(QStringLiteral("priority"));
        wasPlayed = true;
    }
    if (!store.set(key, text)) {
        // What playback happened to write may become what the effect is.
        if (wasPlayed && !clock->isInFrame() && define(key, text))
            reportChange(effect.m_mapModel, effect, key);
        return;
    }
    if (!isWrittenByPlayback(key))
        effect.m_dirty = true;
    effect.internalSetProperty(key, text);
    if (observer)
        observer(key, text);
    if (isWrittenByFrames(key) && clock->isInFrame())
        return;
    define(key, text);
    reportChange(effect.m_mapModel, effect, key);
}

unsigned long Effect::getPropertyULong(const QString &key, bool *ok) const
{
    return m_hostPart->store.number(key, ok);
}

bool Effect::getPropertyBool(const QString &key, bool *ok) const
{
    return m_hostPart->store.flag(key, ok);
}

double Effect::getPropertyDouble(const QString &key, bool *ok) const
{
    return m_hostPart->store.real(key, ok);
}

QString Effect::getPropertyString(const QString &key, bool *ok) const
{
    const QString *text = m_hostPart->store.text(key);
    if (ok)
        *ok = text != nullptr;
    return text ? *text : QString();
}

void Effect::addPropertyBool(const QString &key, bool defaultValue, bool *bound)
{
    *bound = defaultValue;
    m_hostPart->store.bind(key, bound);
    m_hostPart->store.declare(key);
}

void Effect::addPropertyDouble(const QString &key, double defaultValue, double *bound)
{
    *bound = defaultValue;
    m_hostPart->store.bind(key, bound);
    m_hostPart->store.declare(key);
}

// --- Saving and playing ---

void Effect::save(QTextStream &stream)
{
    if (nestedCollector) {
        nestedCollector->push_back(this);
        return;
    }
    if (!m_hostPart->verbatim.isEmpty()) {
        const std::vector<PropertyStore::Property> changed =
            rehearsal::changedSince(m_hostPart->verbatimProperties, m_hostPart->savedProperties());
        stream << QString(rehearsal::effectIndentation(m_level), u' ')
               << m_hostPart->verbatim.with(changed, m_level) << '\n';
        return;
    }
    rehearsal::writeEffectStart(stream, m_level,
                                {getPropertyString(QStringLiteral("type")), getVersion(),
                                 QString::number(getBuildNumber())},
                                m_hostPart->savedProperties());
    internalSave(stream);
    stream << m_hostPart->nestedText;
    rehearsal::writeEffectEnd(stream, m_level);
}

void Effect::setStartTime()
{
    const QTime now = clockOf(m_mapModel).now();
    setStartTime(now);
    // Between frames the last frame lies before the new start; nothing has elapsed since.
    m_frameTime = now;
}

void Effect::setStartTime(QTime time)
{
    m_hostPart->startTime = time;
}

unsigned long Effect::getTotalElapsedTime() const
{
    return rehearsal::elapsedBetween(m_hostPart->startTime, m_frameTime);
}

void Effect::updateLights(QTime now, unsigned long arg)
{
    m_frameTime = now;
    m_frameArg = arg;
    if (m_hostPart->running)
        internalUpdateLights();
}

bool Effect::getState() const
{
    return m_hostPart->running;
}

void Effect::setState(bool running)
{
    m_hostPart->running = running;
}

// --- The host's own access ---

std::vector<PropertyStore::Property> EffectHost::properties(const Effect &effect)
{
    return effect.m_hostPart->store.properties();
}

void EffectHost::addPropertyULong(Effect &effect, const QString &key, quint32 defaultValue,
                                  quint32 *bound)
{
    *bound = defaultValue;
    effect.m_hostPart->store.bind(key, bound);
    effect.m_hostPart->store.declare(key);
}

bool EffectHost::holdsEffects(const Effect &effect)
{
    return effect.m_holdsEffects;
}

int EffectHost::level(const Effect &effect)
{
    return effect.m_level;
}

std::vector<Effect *> EffectHost::nested(Effect &effect)
{
    std::vector<Effect *> effects;
    QString text;
    QTextStream stream(&text);
    const QScopedValueRollback collecting(nestedCollector, &effects);
    effect.internalSave(stream);
    return effects;
}

EffectHost::SavingDefinitions::SavingDefinitions() : m_outer(std::exchange(savesDefinitions, true))
{
}

EffectHost::SavingDefinitions::~SavingDefinitions()
{
    savesDefinitions = m_outer;
}

void EffectHost::setObserver(Effect &effect, Observer observer)
{
    effect.m_hostPart->observer = std::move(observer);
}

void EffectHost::setVerbatim(Effect &effect, const rehearsal::VerbatimText &text)
{
    effect.m_hostPart->verbatim = text;
    effect.m_hostPart->verbatimProperties = properties(effect);
}

void EffectHost::setNestedText(Effect &effect, const QString &text)
{
    effect.m_hostPart->nestedText = text;
}
