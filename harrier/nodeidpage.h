#pragma once

#include <Kestrel/UaNodeId>

#include <QtWidgets/QWidget>

class QGridLayout;
class QPlainTextEdit;

/// The NodeId editors, each beside its value, its `ok` flag and the signals it sends.
class NodeIdPage : public QWidget
{
    Q_OBJECT
public:
    explicit NodeIdPage(QWidget* parent = nullptr);

private:
    /// A row of the grid: `shown`, and beside it what `editor` holds.
    template <class Editor>
    void addRow(QGridLayout* grid, const char* title, QWidget* shown, Editor* editor);
    void addSignal(const QString& line);

    QPlainTextEdit* m_signals;
    UaNodeId m_accepted;
};
