#pragma once

class QLabel;
class QLineEdit;
class QString;
class QSpinBox;

/// Tells the user, by a tool tip and to assistive technology, when a text is cut at the limit of
/// the line. An input mask sets no such limit.
void tellWhenCut(QLineEdit* edit);

/// Shows the text, and tells assistive technology of it if it is another one.
void announce(QLabel* label, const QString& text);

/// Lets the tool tip of a control that may be too narrow for its text be that text.
void showInToolTip(QLineEdit* edit);
void showInToolTip(QSpinBox* spin);
