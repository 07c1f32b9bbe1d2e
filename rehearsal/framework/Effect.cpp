#include "Effect.h"

#include "EffectHost.h"
#include "EffectText.h"
#include "HostClock.h"
#include "PropertyStore.h"
#include "StageMap.h"

#include <QTextStream>

using rehearsal::PropertyStore;
using rehearsal::StageMap;

class Effect::HostPart
{
public:
    QTime startTime{0, 0};
    bool running = false;
    PropertyStore store;
    EffectHost::Observer observer;
    rehearsal::VerbatimText verbatim;
    std::vector<PropertyStore::Property> verbatimProperties; ///< as the text has them
    QString nestedText;
};

namespace {

// Playback writes these in every frame or pass; they do not make an effect unsaved.
bool isWrittenByPlayback(const QString &key)
{
    return key == u"transparency" || key == u"priority" || key == u"begin" || key == u"end";
}

rehearsal::HostClock &clockOf(MapModel *mapModel)
{
    static rehearsal::HostClock wallClock;
    return mapModel ? static_cast<StageMap *>(mapModel)->clock() : wallClock;
}

} // namespace

Effect::Effect(MapModel *mapModel, unsigned long arg)
    : m_frameArg(arg),
      m_mapModel(mapModel),
      m_effectLib(mapModel ? static_cast<StageMap *>(mapModel)->library() : nullptr),
      m_hostPart(std::make_unique<HostPart>())
{
    PropertyStore &store = m_hostPart->store;
    store.bind(QStringLiteral("begin"), &m_beginTime);
    store.bind(QStringLiteral("end"), &m_endTime);
    store.bind(QStringLiteral("fadein"), &m_fadeInTime);
    store.bind(QStringLiteral("fadeout"), &m_fadeOutTime);
    store.bind(QStringLiteral("priority"), &m_priority);
    store.bind(QStringLiteral("transparency"), &m_transparency, 3);
}

Effect::~Effect() = default;

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

void Effect::setProperty(const QString &key, const QString &value)
{
    if (!m_hostPart->store.set(key, value))
        return;
    if (!isWrittenByPlayback(key))
        m_dirty = true;
    internalSetProperty(key, value);
    if (m_hostPart->observer)
        m_hostPart->observer(key, value);
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
    if (!m_hostPart->verbatim.isEmpty()) {
        const std::vector<PropertyStore::Property> changed =
            rehearsal::changedSince(m_hostPart->verbatimProperties, m_hostPart->store.properties());
        stream << QString(rehearsal::effectIndentation(m_level), u' ')
               << m_hostPart->verbatim.with(changed, m_level) << '\n';
        return;
    }
    rehearsal::writeEffectStart(stream, m_level,
                                {getPropertyString(QStringLiteral("type")), getVersion(),
                                 QString::number(getBuildNumber())},
                                m_hostPart->store.properties());
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
