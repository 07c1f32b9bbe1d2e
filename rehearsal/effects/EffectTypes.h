#pragma once

namespace rehearsal {

class EffectFactory;

/// Adds the host's own effect types: "Solid", "Ramp", "Chase", "Pulse", "Strobe", "Twinkle" and
/// "White Fade".
void addHostTypes(EffectFactory &factory);

} // namespace rehearsal
