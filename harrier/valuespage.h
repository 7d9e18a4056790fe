#pragma once

#include <Kestrel/UaVariant>

#include <QtCore/QHash>
#include <QtCore/QStringList>
#include <QtWidgets/QWidget>

#include <functional>

class Host;
class OutputField;
class QGridLayout;
class QLabel;

/// One editor as the gallery sees it, whatever its shape.
struct EditorHandle
{
    QWidget* editor = nullptr; ///< emits the signals
    QWidget* shown = nullptr;  ///< stands in the gallery: the editor, or a button that opens it
    std::function<UaVariant(bool*)> value;
    std::function<void(const UaVariant&)> setValue;
};

/// Shows an editor's value, whether it is valid, and the signals of the last change.
class EditorWatch : public QObject
{
    Q_OBJECT
public:
    EditorWatch(const EditorHandle& handle, const std::function<QString()>& name, QGridLayout* grid,
                int row, int column, QObject* parent);

    /// Reads the value afresh.
    void refresh();

Q_SIGNALS:
    void changed();

public Q_SLOTS:
    /// Notes which signal came.
    void signalled();

private:
    const EditorHandle m_handle;
    OutputField* m_value;
    QLabel* m_ok;
    OutputField* m_signals;
    QStringList m_names;
};

/// A gallery of every value editor in each of its shapes, to be tried by hand. What is typed into
/// the first of a kind is shown by its read-only and frameless siblings.
class ValuesPage : public QWidget
{
    Q_OBJECT
public:
    explicit ValuesPage(Host& host, QWidget* parent = nullptr);

private:
    void addLabel(int row, int column, const std::function<QString()>& text);
    void checkSavedFile(const QString& key, const QString& file);

    Host& m_host;
    QGridLayout* m_grid;
    QHash<QString, std::function<UaVariant(bool*)>> m_savedBy; // by class name
};
