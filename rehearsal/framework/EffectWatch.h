#pragma once

class Effect;
class QString;

namespace rehearsal {

/// Told of what happens to the effects of a map, by the map (StageMap::setWatch()). A call comes
/// from within the work of an effect, which is not to be disturbed: note it, and look later.
class EffectWatch
{
public:
    virtual ~EffectWatch() = default;

    /// A property is now to be saved with another text. What playback writes in every frame is not
    /// reported.
    virtual void effectChanged(Effect &effect, const QString &key) = 0;
    /// An effect was made or deleted; the object is not whole at this moment.
    virtual void effectsCameOrWent() = 0;
};

} // namespace rehearsal
