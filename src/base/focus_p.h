#pragma once

class QTextEdit;
class QWidget;

/// Lets the focus that a widget is given go on to one of its controls. Other than with a focus
/// proxy, Tab still comes to the controls before that one.
void passFocusOn(QWidget* widget, QWidget* control);

/// Lets a text be edited or only read. What is read has a cursor, too: it shows the focus, and
/// parts can be copied by keys.
void setTextReadOnly(QTextEdit* text, bool readOnly);
