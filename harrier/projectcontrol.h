#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QObject>

#include <functional>

class Host;
class QMenu;
class QWidget;

/// The project that a window has open: new, open, recent ones, save, and that nothing of it is
/// lost.
///
/// A project that was never saved is kept by itself when the window closes, as "Last Servers"; one
/// with a file is asked about. Where nobody can be asked, at the end of the desktop's session or on
/// SIGTERM, what is not saved goes to a file of its own, which the next start opens.
class ProjectControl : public QObject
{
    Q_OBJECT
public:
    struct Window
    {
        QWidget* widget = nullptr;
        std::function<QJsonObject()> content;
        std::function<void(const QJsonObject&)> open; ///< replaces all that is open
    };

    /// `host` must outlive this object.
    ProjectControl(Host& host, const Window& window);

    void fill(QMenu* menu);
    /// The file's name, or empty.
    QString title() const;
    QString file() const { return m_file; }

    /// False, after a message, where the file is no project.
    bool open(const QString& file);
    bool save();
    /// False where the user wants to stay.
    bool mayLeave();
    /// Without a question.
    void saveForRecovery();
    /// Opens what saveForRecovery() saved. False if there is none.
    bool recover();

Q_SIGNALS:
    void titleChanged();

private:
    bool isModified() const;
    void warn(const QString& text);
    bool read(const QString& file, QJsonObject* content);
    bool write(const QString& file, const QJsonObject& content);
    void show(const QString& file, const QJsonObject& content);
    void startNew();
    void askForFile();
    bool saveAs();
    void fillRecent();
    void addRecent();

    Host& m_host;
    const Window m_window;
    const QString m_lastFile;
    const QString m_recoveryFile;
    QMenu* m_recent = nullptr;
    QString m_file;
    QJsonObject m_saved;
};
