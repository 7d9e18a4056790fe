#pragma once

#include <QtWidgets/QWidget>

class QLabel;
class QListWidget;
class QPlainTextEdit;
class QvelEditWidgetArray;
class QvelWidgetVariant;

/// The variant editor beside the value that it gives, with examples to start from.
class WriteValuePage : public QWidget
{
    Q_OBJECT
public:
    explicit WriteValuePage(QWidget* parent = nullptr);

private:
    void showExample(int index);
    void showValue();

    QListWidget* m_examples;
    QWidget* m_place; // holds the editor of the current example
    QvelWidgetVariant* m_variant;
    QvelEditWidgetArray* m_named = nullptr; // for an example whose numbers are named
    QLabel* m_type;
    QLabel* m_ok;
    QPlainTextEdit* m_text;
};
