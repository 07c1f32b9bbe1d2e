#pragma once

#include <QPixmap>

/// The small pictures in the cells of the effect table. Made when first asked for, and shared.
namespace meta::pictures {

/// A child that is stopped.
const QPixmap &openCircle();
/// A child that is running.
const QPixmap &closedCircle();
/// A time that is linked to another child.
const QPixmap &link();
/// An end that is counted in cycles.
const QPixmap &cycle();

} // namespace meta::pictures
