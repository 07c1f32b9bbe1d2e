#pragma once

#include "TableWidget.h"

#include <optional>

namespace meta {

/// The columns of the effect table, whatever the order of the rows.
enum EffectColumn {
    NameColumn,
    TypeColumn,
    GroupColumn,
    PriorityColumn,
    StartColumn,
    EndColumn,
    FadeInColumn,
    FadeOutColumn,
    EidColumn ///< hidden; says whose row it is
};

/// Nothing for a row that names no child.
inline std::optional<quint32> eidOfRow(const TableWidget &table, int row)
{
    bool ok = false;
    const quint32 eid = table.text(row, EidColumn).toUInt(&ok);
    return ok ? std::optional(eid) : std::nullopt;
}

} // namespace meta
