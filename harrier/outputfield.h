#pragma once

#include <QtWidgets/QLineEdit>

/// A field that shows one line of text, to be read and copied but not edited.
class OutputField : public QLineEdit
{
    Q_OBJECT
public:
    explicit OutputField(QWidget* parent = nullptr);

    /// Shows the beginning of `text`, at most `limit` characters of it, as one plain line.
    void showText(const QString& text, int limit = 1000);
};
