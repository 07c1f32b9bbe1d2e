#pragma once

#include <QtGlobal>

namespace meta {

/// What playing and resolving show in the open editor. Without an editor there is no such object.
class EditorView
{
public:
    /// The child with that eid began or ceased to play.
    virtual void showPlayState(quint32 eid, bool running) = 0;

protected:
    ~EditorView() = default;
};

} // namespace meta
