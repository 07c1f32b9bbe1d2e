#include "StageEffect.h"

#include "EffectHost.h"

#include <algorithm>

namespace rehearsal {

namespace {

constexpr quint32 defaultCycleTimeMs = 1000;

StageEffect::EditorMaker editorMaker = nullptr;

const QString &cycleTimeKey()
{
    static const QString key = QString::fromLatin1("cycletime");
    return key;
}

// A shared text that is counted is found faster than a literal.
const QString &groupKey()
{
    static const QString key = QString::fromLatin1("gid");
    return key;
}

} // namespace

StageEffect::StageEffect(MapModel *mapModel, const QString &type) : Effect(mapModel, 0)
{
    setProperty(QStringLiteral("type"), type);
    EffectHost::addPropertyULong(*this, cycleTimeKey(), defaultCycleTimeMs, &m_cycleTime);
    m_announcedCycleTime = m_cycleTime;
    m_dirty = false;
}

StageEffect::~StageEffect()
{
    delete m_editor;
}

void StageEffect::setEditorMaker(EditorMaker maker)
{
    editorMaker = maker;
}

unsigned long StageEffect::getCycleTime()
{
    return m_cycleTime;
}

QString StageEffect::getVersion()
{
    return QStringLiteral("1.0");
}

int StageEffect::getBuildNumber()
{
    return 1;
}

QWidget *StageEffect::internalGetEffectWidget()
{
    if (m_editorWidget || !editorMaker)
        return m_editorWidget;
    const Editor editor = editorMaker(*this);
    m_editorWidget = editor.widget;
    m_editor = editor.object;
    if (m_editor) {
        connect(m_editor, &QObject::destroyed, this, [this] {
            m_editorWidget = nullptr;
            m_editor = nullptr;
        });
    }
    return m_editorWidget;
}

void StageEffect::internalSetProperty(const QString &key, const QString &)
{
    if (key != cycleTimeKey() || m_cycleTime == m_announcedCycleTime)
        return;
    m_announcedCycleTime = m_cycleTime;
    emit cycleTimeChanged(getCycleTime());
}

quint32 StageEffect::cycleNumber() const
{
    return m_cycleTime == 0 ? 0 : static_cast<quint32>(getTotalElapsedTime()) / m_cycleTime;
}

quint32 StageEffect::elapsedInCycle() const
{
    return m_cycleTime == 0 ? 0 : static_cast<quint32>(getTotalElapsedTime()) % m_cycleTime;
}

double StageEffect::cyclePhase() const
{
    return m_cycleTime == 0 ? 0.0 : static_cast<double>(elapsedInCycle()) / m_cycleTime;
}

double StageEffect::spanProgress() const
{
    if (m_endTime <= m_beginTime)
        return cyclePhase();
    const auto elapsed = static_cast<double>(getTotalElapsedTime());
    return std::min(1.0, elapsed / (m_endTime - m_beginTime));
}

const StageGroup *StageEffect::group() const
{
    if (!m_mapModel)
        return nullptr;
    return static_cast<const StageGroup *>(m_mapModel->getGroup(getPropertyULong(groupKey())));
}

} // namespace rehearsal
