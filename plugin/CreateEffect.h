#pragma once

#include <QtGlobal>

class Effect;
class MapModel;

/// The plug-in's entry: makes a meta effect, which is the caller's.
/// @param model the light map, not owned; it outlives the effect
/// @param arg handed on to the host's base class
extern "C" Q_DECL_EXPORT Effect *createEffect(MapModel *model, unsigned long arg);
