#pragma once

class QFormLayout;
class QLineEdit;
class QString;

/// Appends a row to a form: a label and a line of text, to be read and copied but not edited.
QLineEdit* addOutputRow(QFormLayout* form, const QString& label, const char* objectName);

/// Names such a row anew.
void nameOutputRow(QFormLayout* form, QLineEdit* line, const QString& label);

/// Shows the beginning of `text`, which may be anything that came from the network, as one plain
/// line.
void showOutput(QLineEdit* line, const QString& text);
