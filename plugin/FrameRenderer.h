#pragma once

#include "ChildRoster.h"

#include <QTime>

#include <vector>

class Light;

namespace meta {

class EditorView;

/// Plays the children of a meta effect, frame by frame.
///
/// A child plays while begin <= now < end on the parent's clock. Its transparency while it plays,
/// T being the parent's own:
///
///     1 --.                    .--        fade in:  1 - (1 - T) x (now - begin) / fadein
///          \                  /           fade out: 1 - (1 - T) x (end - now) / fadeout
///     T     `----------------'            where both apply, the fade out counts
///        begin                end
///
/// For the time of its frame a child's priority is raised by the parent's own.
class FrameRenderer
{
public:
    /// The parent in one frame.
    struct Frame
    {
        QTime time;
        unsigned long arg;
        double transparency;
        int priority;
        bool loop;
        double brightness;
    };

    explicit FrameRenderer(const ChildRoster &roster) : m_roster(roster) {}

    /// The next frame starts the parent anew.
    void requestRestart() { m_restartPending = true; }

    /// @param parent its clock and its "end" decide on restarts
    /// @param lights those that take the parent's priority and brightness; null entries are skipped
    /// @param editor null while there is none
    void render(Effect &parent, const Frame &frame, const std::vector<Light *> &lights,
                EditorView *editor);

private:
    bool takeRestart(Effect &parent, bool loop);
    void lendPriority(Effect &child, std::size_t position, const Frame &frame);

    // The texts of a child's own and raised priority, by its place in the list: they are the same
    // from frame to frame, and a shared text is quickly found equal.
    struct PriorityTexts
    {
        quint32 own = 0;
        quint32 raised = 0;
        QString ownText;
        QString raisedText;
    };

    const ChildRoster &m_roster;
    bool m_restartPending = false;
    double m_steadyTransparency = 0.0; ///< that of a child between its fades
    QString m_steadyText;
    std::vector<PriorityTexts> m_priorityTexts;
};

} // namespace meta
