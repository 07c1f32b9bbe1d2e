#include "MetaEffect.h"

#include "ChildKeys.h"
#include "ChildTransfer.h"
#include "Editor.h"
#include "EffectLib.h"
#include "Group.h"
#include "MapModel.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QIODevice>
#include <QPointer>
#include <QScopedValueRollback>
#include <QTextStream>

#include <algorithm>
#include <utility>

using meta::Millis;
namespace keys = meta::keys;
namespace transfer = meta::transfer;

namespace {

// Null in a program without windows.
QClipboard *clipboard()
{
    return qobject_cast<QGuiApplication *>(QCoreApplication::instance())
               ? QGuiApplication::clipboard()
               : nullptr;
}

} // namespace

MetaEffect::MetaEffect(MapModel *mapModel, unsigned long arg) : Effect(mapModel, arg)
{
    m_editorWidget = nullptr;
    keys::type.writeText(*this, QStringLiteral("Meta Effect"));
    addPropertyBool(keys::loop.name(), true, &loop);
    addPropertyDouble(keys::brightness.name(), 1.0, &brightness);
    m_dirty = false;
    m_holdsEffects = true;
}

MetaEffect::~MetaEffect()
{
    // A child that is being deleted must not reach a half-destroyed parent.
    for (Effect *child : m_roster.children())
        child->disconnect(this);
    const QWidget *form = m_editorWidget;
    forgetEditor();
    delete form;
}

// --- What the host calls ---

unsigned long MetaEffect::getCycleTime()
{
    return Millis(endTime()).minusWrapping(Millis(beginTime())).value();
}

QString MetaEffect::getVersion()
{
    return QStringLiteral("1.9.1");
}

int MetaEffect::getBuildNumber()
{
    return 1;
}

bool MetaEffect::isDirty()
{
    const EffectList children = m_roster.children();
    return m_dirty || std::any_of(children.begin(), children.end(), [](Effect *child) {
               return child->isDirty();
           });
}

void MetaEffect::resetStartTime()
{
    m_renderer.requestRestart();
}

void MetaEffect::init()
{
    const Millis end = latestEnd();
    keys::begin.write(*this, Millis());
    keys::end.write(*this, end);
    m_roster.sort();
    m_roster.restartNameNumbers();
    setStartTime();
    m_dirty = false;
    m_group = m_mapModel ? m_mapModel->getGroup(keys::gid.read(*this)) : nullptr;
    m_lights.clear();
    if (m_mapModel) {
        const QMap<unsigned long, Light *> lights = m_mapModel->getLights();
        m_lights.assign(lights.begin(), lights.end());
    }
}

void MetaEffect::internalUpdateLights()
{
    m_renderer.render(*this,
                      {m_frameTime, m_frameArg, m_transparency, m_priority, loop, brightness},
                      m_lights, m_editor.get());
}

void MetaEffect::internalSave(QTextStream &stream)
{
    const EffectList children = m_roster.children();
    for (Effect *child : children)
        child->save(stream);
}

void MetaEffect::internalSetProperty(const QString &, const QString &) {}

void MetaEffect::setLevel(int level)
{
    m_level = level;
    const EffectList children = m_roster.children();
    for (Effect *child : children)
        child->setLevel(level + 1);
}

void MetaEffect::addChild(Effect *child)
{
    if (!child)
        return;
    m_roster.insert(child);
    adopt(*child);
    m_roster.raiseNextEid(*child);
    if (!m_editor)
        return;
    m_editor->append(*child);
    if (!m_isPasting) {
        m_editor->select(*child);
        updateEndTime();
    }
}

void MetaEffect::adopt(Effect &child)
{
    connect(&child, &Effect::cycleTimeChanged, this, &MetaEffect::handleCycleTimeChanged);
    child.setLevel(m_level + 1);
}

void MetaEffect::initChildren()
{
    const EffectList children = m_roster.children();
    for (Effect *child : children)
        child->init();
}

void MetaEffect::stopChildren()
{
    const EffectList children = m_roster.children();
    for (Effect *child : children)
        child->setState(false);
}

// --- Looking up ---

std::optional<quint32> MetaEffect::asEid(unsigned long number)
{
    if (!std::in_range<quint32>(number))
        return {};
    return static_cast<quint32>(number);
}

Effect *MetaEffect::getEffect(unsigned long eid) const
{
    const auto known = asEid(eid);
    return known ? m_roster.find(*known) : nullptr;
}

EffectList MetaEffect::getEffects() const
{
    return m_roster.children();
}

unsigned long MetaEffect::getGID(const QString &name) const
{
    if (name == u"None" || !m_mapModel)
        return 0;
    const QMap<unsigned long, Group *> groups = m_mapModel->getGroups();
    const auto found = std::find_if(groups.begin(), groups.end(),
                                    [&name](const Group *group) { return group->name() == name; });
    return found == groups.end() ? 0 : (*found)->uid();
}

bool MetaEffect::legalToLink(Effect *edited, Effect *candidate)
{
    return m_legality.legalToLink(edited, candidate);
}

// --- Children as text; deleting ---

void MetaEffect::copyEffect(QTextStream &stream)
{
    transfer::writeChildren(stream, m_roster.selection());
}

void MetaEffect::cutEffect(QTextStream &stream)
{
    const EffectList selection = m_roster.selection();
    for (Effect *child : selection) {
        transfer::writeChild(stream, *child);
        removeFromTable(keys::eid.read(*child));
        deleteEffect(child);
    }
    refreshWidgets();
}

// An open editor gets its rows one by one, and each child's end counts as it comes. But it shows
// only the last child, and that when all are there and their times are resolved: what it shows it
// writes back, and a link to a child that is still to come cannot be shown.
void MetaEffect::pasteEffect(QString &text)
{
    const QStringList pieces = transfer::pieces(text);
    QPointer<Effect> last;
    Millis end = latestEnd();
    for (const QString &piece : pieces) {
        Effect *child = m_effectLib ? m_effectLib->createEffect(piece) : nullptr;
        if (!child)
            continue;
        keys::eid.write(*child, m_roster.nextEid());
        keys::name.writeText(*child, QStringLiteral("Copy of ") + keys::name.readText(*child));
        {
            const QScopedValueRollback pasting(m_isPasting, true);
            addChild(child);
        }
        last = child;
        end = std::max(end, keys::end.read(*child));
        if (m_editor)
            takeEnd(end);
    }
    updateEffectTimes();
    if (m_editor && last)
        m_editor->select(*last);
}

void MetaEffect::deleteEffect(Effect *child)
{
    if (!child)
        return;
    m_roster.remove(child);
    delete child;
    refreshWidgets();
    init();
    m_dirty = true;
}

void MetaEffect::handleDeleteSelectedEffectsClicked()
{
    const EffectList selection = m_roster.selection();
    for (Effect *child : selection) {
        removeFromTable(keys::eid.read(*child));
        m_roster.remove(child);
        delete child;
    }
    m_roster.selection().clear();
    refreshWidgets();
    init();
    m_dirty = true;
}

void MetaEffect::handleDeleteEffect()
{
    handleDeleteSelectedEffectsClicked();
}

void MetaEffect::handleCutEffect()
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    cutEffect(stream);
    if (QClipboard *board = clipboard())
        board->setText(text);
}

void MetaEffect::handleCopyEffect()
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    copyEffect(stream);
    if (QClipboard *board = clipboard())
        board->setText(text);
}

void MetaEffect::handlePasteEffect()
{
    QClipboard *board = clipboard();
    QString text = board ? board->text() : QString();
    pasteEffect(text);
}

// --- Times ---

void MetaEffect::handleCycleTimeChanged(unsigned long)
{
    updateEffectTimes();
}

// Without an editor a pass leaves the own end as it was.
void MetaEffect::updateEffectTimes()
{
    m_resolver.resolveAll();
    if (m_editor)
        updateEndTime();
    if (m_editor) // whoever was told of the new end may have closed it
        m_editor->table().refreshTimes();
}

void MetaEffect::updateEffectTime(Effect *child)
{
    m_resolver.resolve(child);
}

void MetaEffect::updateEndTime()
{
    takeEnd(latestEnd());
}

void MetaEffect::takeEnd(Millis newEnd)
{
    const Millis oldEnd = keys::end.read(*this);
    keys::end.write(*this, newEnd);
    if (newEnd == oldEnd)
        return;
    emit endTimeChanged(newEnd.value());
    emit cycleTimeChanged(getCycleTime());
}

meta::Millis MetaEffect::latestEnd() const
{
    Millis latest;
    const EffectList children = m_roster.children();
    for (const Effect *child : children)
        latest = std::max(latest, keys::end.read(*child));
    return latest;
}
