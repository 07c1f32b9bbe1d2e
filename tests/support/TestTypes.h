#pragma once

#include "Show.h"

/// Every effect type that the rehearsal program knows: the host's own and "Meta Effect", which is
/// linked in, not loaded.
rehearsal::Show::TypeSetup allTypes();
