#pragma once

class QWidget;

/// Lets the focus that a widget is given go on to one of its controls. Other than with a focus
/// proxy, Tab still comes to the controls before that one.
void passFocusOn(QWidget* widget, QWidget* control);
