#include "projectcontrol.h"

#include "host.h"
#include "language.h"
#include "project.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QPointer>
#include <QtGui/QAction>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMessageBox>

#include <algorithm>

namespace {

constexpr int mostRecent = 8;

const QString recentKey = QStringLiteral("Projects/Recent");
const QString serversKey = QStringLiteral("servers");
const QString nameKey = QStringLiteral("name");
const QString fileKey = QStringLiteral("file"); // of a recovered project

// Whether nothing was changed. A name that a server has told since is no change of the user's.
bool isSame(const QJsonValue& saved, const QJsonValue& now)
{
    if (saved.isArray() && now.isArray()) {
        const QJsonArray before = saved.toArray();
        const QJsonArray after = now.toArray();
        return std::equal(before.begin(), before.end(), after.begin(), after.end(), isSame);
    }
    if (!saved.isObject() || !now.isObject())
        return saved == now;
    QJsonObject after = now.toObject();
    const QJsonObject before = saved.toObject();
    if (!before.contains(nameKey))
        after.remove(nameKey);
    bool isEqual = before.size() == after.size();
    for (auto each = before.begin(); isEqual && each != before.end(); ++each)
        isEqual = isSame(each.value(), after.value(each.key()));
    return isEqual;
}

} // namespace

ProjectControl::ProjectControl(Host& host, const Window& window)
    : QObject(window.widget), m_host(host), m_window(window),
      m_lastFile(host.dataFolder() + QStringLiteral("/last.harrier")),
      m_recoveryFile(host.dataFolder() + QStringLiteral("/recovery.harrier"))
{
    m_saved = m_window.content();
}

void ProjectControl::fill(QMenu* menu)
{
    const auto add = [this, menu](const QKeySequence& keys, auto slot) {
        QAction* action = menu->addAction(QString(), this, slot);
        action->setShortcut(keys);
        return action;
    };
    QAction* fresh = add({}, &ProjectControl::startNew);
    QAction* open = add(QKeySequence::Open, &ProjectControl::askForFile);
    m_recent = menu->addMenu(QString());
    connect(m_recent, &QMenu::aboutToShow, this, &ProjectControl::fillRecent);
    QAction* save = add(QKeySequence::Save, &ProjectControl::save);
    QAction* saveAs = add(Qt::CTRL | Qt::SHIFT | Qt::Key_S, &ProjectControl::saveAs);
    Language::follow(menu, [=] {
        fresh->setText(tr("&New Project"));
        open->setText(tr("&Open Project..."));
        m_recent->setTitle(tr("Open &Recent"));
        save->setText(tr("&Save Project"));
        saveAs->setText(tr("Save Project &As..."));
    });
}

QString ProjectControl::title() const
{
    return QFileInfo(m_file).completeBaseName();
}

bool ProjectControl::isModified() const
{
    return !isSame(m_saved, m_window.content());
}

void ProjectControl::warn(const QString& text)
{
    auto* box = new QMessageBox(QMessageBox::Warning, tr("harrier"), text, QMessageBox::Ok,
                                m_window.widget);
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

bool ProjectControl::read(const QString& file, QJsonObject* content)
{
    QString error;
    if (Project::read(file, content, &error))
        return true;
    m_host.log().appendFailure(error);
    warn(error);
    return false;
}

bool ProjectControl::write(const QString& file, const QJsonObject& content)
{
    QString error;
    QDir().mkpath(QFileInfo(file).absolutePath());
    if (Project::write(file, content, &error))
        return true;
    m_host.log().appendFailure(error);
    Q_EMIT m_host.message(error);
    return false;
}

void ProjectControl::show(const QString& file, const QJsonObject& content)
{
    m_window.open(content);
    m_file = file;
    m_saved = m_window.content();
    Q_EMIT titleChanged();
}

bool ProjectControl::open(const QString& file)
{
    QJsonObject content;
    if (!read(file, &content) || !mayLeave())
        return false;
    show(file == m_lastFile ? QString() : QFileInfo(file).absoluteFilePath(), content);
    addRecent();
    return true;
}

void ProjectControl::startNew()
{
    if (mayLeave())
        show(QString(), QJsonObject());
}

void ProjectControl::askForFile()
{
    auto* dialog =
        new QFileDialog(m_window.widget, tr("Open Project"), QFileInfo(m_file).absolutePath(),
                        tr("Projects (*.harrier);;All files (*)"));
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, this, &ProjectControl::open);
    dialog->open();
}

bool ProjectControl::save()
{
    const QJsonObject content = m_window.content();
    if (m_file.isEmpty())
        return saveAs();
    if (!write(m_file, content)) {
        warn(tr("%1 could not be written; the log says why.").arg(m_file));
        return false;
    }
    m_saved = content;
    QFile::remove(m_recoveryFile);
    addRecent();
    Q_EMIT titleChanged();
    Q_EMIT m_host.message(tr("Saved %1").arg(m_file));
    return true;
}

bool ProjectControl::saveAs()
{
    const QPointer<QFileDialog> dialog =
        new QFileDialog(m_window.widget, tr("Save Project"), QFileInfo(m_file).absolutePath(),
                        tr("Projects (*.harrier)"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(QStringLiteral("harrier"));
    dialog->selectFile(m_file.isEmpty() ? tr("plant.harrier") : QFileInfo(m_file).fileName());
    const bool isChosen = dialog->exec() == QDialog::Accepted && dialog;
    const QString file = isChosen ? dialog->selectedFiles().value(0) : QString();
    delete dialog;
    if (file.isEmpty())
        return false;
    m_file = QFileInfo(file).absoluteFilePath();
    return save();
}

bool ProjectControl::mayLeave()
{
    const QJsonObject content = m_window.content();
    if (m_file.isEmpty()) {
        if (!content[serversKey].toArray().isEmpty())
            write(m_lastFile, content);
    } else if (isModified()) {
        const QPointer<QMessageBox> box = new QMessageBox(
            QMessageBox::Question, tr("harrier"), tr("Save the changes of %1?").arg(title()),
            QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, m_window.widget);
        box->setTextFormat(Qt::PlainText);
        const int answer = box->exec();
        delete box;
        if (answer != QMessageBox::Discard && (answer != QMessageBox::Save || !save()))
            return false;
    }
    QFile::remove(m_recoveryFile);
    return true;
}

void ProjectControl::saveForRecovery()
{
    QJsonObject content = m_window.content();
    if (m_file.isEmpty() ? content[serversKey].toArray().isEmpty() : !isModified())
        return;
    content[fileKey] = m_file;
    write(m_recoveryFile, content);
}

bool ProjectControl::recover()
{
    QJsonObject content;
    if (!QFile::exists(m_recoveryFile) || !read(m_recoveryFile, &content))
        return false;
    const QString file = content[fileKey].toString();
    content.remove(fileKey);
    show(file, content);
    m_saved = QJsonObject(); // until it is saved
    const QString text = file.isEmpty()
                             ? tr("The servers of the last run are open again")
                             : tr("Changes of %1 that were not saved are back").arg(file);
    m_host.log().append(text);
    Q_EMIT m_host.message(text);
    return true;
}

void ProjectControl::fillRecent()
{
    m_recent->clear();
    const QStringList files = m_host.store().value(recentKey).toStringList();
    for (const QString& file : files)
        m_recent->addAction(
            QDir::toNativeSeparators(file).replace(QLatin1Char('&'), QLatin1String("&&")), this,
            [this, file] { open(file); });
    m_recent->addSeparator();
    m_recent->addAction(tr("&Last Servers"), this, [this] { open(m_lastFile); })
        ->setEnabled(QFile::exists(m_lastFile));
}

void ProjectControl::addRecent()
{
    if (m_file.isEmpty())
        return;
    QStringList files = m_host.store().value(recentKey).toStringList();
    files.removeAll(m_file);
    files.prepend(m_file);
    m_host.store().setValue(recentKey, QStringList(files.mid(0, mostRecent)));
}
