#pragma once

#include <QString>

class QWidget;

/// A form as text: a line for each widget, layout and spacer, indented by parenthood and nesting,
/// with what the form itself decides and nothing that follows from font, style or screen. The
/// insides of compound widgets such as tables, choosers and spin boxes are left out.
QString widgetDump(const QWidget &root);
