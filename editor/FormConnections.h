#pragma once

class MetaWidget;
class QObject;

namespace meta {

/// Connects every signal of the form to the slot of the meta effect that answers it.
void connectForm(const MetaWidget &form, QObject &effect);

} // namespace meta
