#include "Show.h"

#include "Effect.h"

namespace rehearsal {

Show::Show(const TypeSetup &addTypes) : m_factory(m_map)
{
    addTypes(m_factory);
}

Show::~Show()
{
    qDeleteAll(m_effects);
}

} // namespace rehearsal
