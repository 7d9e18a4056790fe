#pragma once

#include <QtCore/QTimer>
#include <QtWidgets/QPlainTextEdit>

class LogBuffer;

/// Shows the lines of a LogBuffer, the last MaxLines of them, as plain text.
class LogView : public QPlainTextEdit
{
    Q_OBJECT
public:
    static constexpr int MaxLines = 10000; // of which a flood replaces half

    explicit LogView(LogBuffer& buffer, QWidget* parent = nullptr);

public Q_SLOTS:
    /// Puts the selected text on the clipboard, or everything when nothing is selected.
    void copyLines();

protected:
    void changeEvent(QEvent* event) override;

private:
    void showWaiting();

    LogBuffer& m_buffer;
    QTimer m_delay; // gathers lines, so that a flood is laid out in a few pieces
};
