#pragma once

#include <QtGlobal>

/// One light of the map; owned by the map.
class Light
{
public:
    /// Scales what the light shows in this frame: 0.0 dark ... 1.0 unchanged. The last call counts.
    void setBrightness(double brightness);

    /// From here on in this frame only drawing of at least this priority reaches the light.
    void setPriority(int priority);

protected:
    Light() = default;
    ~Light() = default;
    Q_DISABLE_COPY_MOVE(Light)
};
