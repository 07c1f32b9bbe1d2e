#include "FrameRenderer.h"

#include "ChildKeys.h"
#include "EditorView.h"
#include "Light.h"
#include "TransparencyText.h"

namespace meta {

namespace {

// From fully transparent at the fade's outer end to the parent's transparency at its inner one.
double fadedTransparency(double transparency, quint32 elapsed, quint32 duration)
{
    return 1.0 - (1.0 - transparency) * double(elapsed) / double(duration);
}

// What "priority" reads as; where the mirror is not negative the two are the same.
quint32 unsignedPriority(const Effect &child)
{
    return child.priority() >= 0 ? static_cast<quint32>(child.priority())
                                 : keys::priority.read(child);
}

} // namespace

void FrameRenderer::render(Effect &parent, const Frame &frame, const std::vector<Light *> &lights,
                           EditorView *editor)
{
    const bool isRestart = takeRestart(parent, frame.loop);
    if (isRestart)
        parent.setStartTime();
    const auto now = static_cast<quint32>(parent.getTotalElapsedTime());
    if (m_steadyText.isNull() || m_steadyTransparency != frame.transparency) {
        m_steadyTransparency = frame.transparency;
        m_steadyText = transparencyText(frame.transparency);
    }
    const EffectList children = m_roster.children();
    m_priorityTexts.resize(static_cast<std::size_t>(children.count()));

    std::size_t position = 0;
    for (Effect *child : children) {
        if (isRestart)
            child->setStartTime(frame.time);
        const quint32 begin = child->beginTime();
        const quint32 end = child->endTime();
        if (now < begin || now >= end) {
            if (editor && child->getState())
                editor->showPlayState(keys::eid.read(*child), false);
            child->setState(false);
        } else {
            if (!child->getState()) {
                child->setStartTime(frame.time.addMSecs(static_cast<int>(begin - now)));
                child->setState(true);
                if (editor)
                    editor->showPlayState(keys::eid.read(*child), true);
            }
            const quint32 fadeIn = child->fadeInTime();
            const quint32 fadeOut = child->fadeOutTime();
            const quint32 sinceBegin = now - begin;
            const quint32 untilEnd = end - now;
            if (untilEnd < fadeOut)
                keys::transparency.writeText(*child, transparencyText(fadedTransparency(
                                                         frame.transparency, untilEnd, fadeOut)));
            else if (sinceBegin < fadeIn)
                keys::transparency.writeText(*child, transparencyText(fadedTransparency(
                                                         frame.transparency, sinceBegin, fadeIn)));
            else
                keys::transparency.writeText(*child, m_steadyText);
        }
        lendPriority(*child, position++, frame);
    }

    for (Light *light : lights) {
        if (!light)
            continue;
        if (frame.transparency > 0.0)
            light->setPriority(frame.priority);
        if (frame.brightness < 1.0)
            light->setBrightness(frame.brightness);
    }
}

bool FrameRenderer::takeRestart(Effect &parent, bool loop)
{
    if (std::exchange(m_restartPending, false))
        return true;
    return loop && parent.getTotalElapsedTime() >= keys::end.read(parent).value();
}

void FrameRenderer::lendPriority(Effect &child, std::size_t position, const Frame &frame)
{
    PriorityTexts &texts = m_priorityTexts[position];
    const quint32 own = unsignedPriority(child);
    const quint32 raised = own + static_cast<quint32>(frame.priority);
    if (texts.own != own || texts.ownText.isNull()) {
        texts.own = own;
        texts.ownText = QString::number(own);
    }
    if (texts.raised != raised || texts.raisedText.isNull()) {
        texts.raised = raised;
        texts.raisedText = raised == own ? texts.ownText : QString::number(raised);
    }
    keys::priority.writeText(child, texts.raisedText);
    child.updateLights(frame.time, frame.arg);
    keys::priority.writeText(child, texts.ownText);
}

} // namespace meta
