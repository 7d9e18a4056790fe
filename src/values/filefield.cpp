#include "filefield_p.h"

#include "base/editorhelpers_p.h"
#include "base/settingscbinterface.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtWidgets/QFileDialog>

namespace {

constexpr qint64 maxFileSize = qint64(512) << 20;
constexpr const char* loadKey = "LastLoadFilename";
constexpr const char* saveKey = "LastSaveFilename";

} // namespace

FileField::FileField(QvelEditWidgetBase* field, const Facts& facts)
    : m_field(field), m_facts(facts),
      m_readOnly(field->flags().testFlag(QvelEditWidgetBase::ReadOnly))
{
    const EditFieldControls controls = layOutEditField(field);
    m_edit = controls.edit;
    m_edit->setReadOnly(m_readOnly || !facts.isTextEditable);
    m_showButton = controls.button;
    m_loadSaveButton = new QToolButton;
    // These texts are the same in every language.
    m_loadSaveButton->setText(m_readOnly ? QStringLiteral("Save as...")
                                         : QStringLiteral("Load file..."));
    m_loadSaveButton->setCheckable(!m_readOnly);
    field->layout()->addWidget(m_loadSaveButton);

    auto dialogFlags = facts.dialogFlags;
    dialogFlags.setFlag(QvelDisplayDialog::ReadOnly, m_readOnly);
    m_dialog = new QvelDisplayDialog(dialogFlags, field);
}

void FileField::setText(const QString& text)
{
    showWhole(m_edit, text);
    m_edit->setCursorPosition(0);
}

void FileField::showDialog(const QString& text)
{
    m_dialog->setText(text);
    showDialogAt(m_dialog, m_edit);
}

void FileField::loadOrSave(bool checked, const QByteArray& bytes)
{
    void* handle = m_settings ? m_settings->openSettings() : nullptr;
    if (m_readOnly)
        save(handle, bytes);
    else if (checked)
        load(handle);
    else
        enterManually();
    if (m_settings)
        m_settings->closeSettings(handle);
}

void FileField::save(void* handle, const QByteArray& bytes)
{
    const QString name =
        QFileDialog::getSaveFileName(m_field, tr("Save"), lastName(handle, saveKey));
    if (name.isEmpty())
        return;
    // Opening a pipe may wait for ever.
    const QFileInfo info(name);
    QFile file(name);
    if ((!info.exists() || info.isFile()) && file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(bytes);
    file.close();
    remember(handle, saveKey, name);
}

void FileField::load(void* handle)
{
    m_fileName = QFileDialog::getOpenFileName(m_field, tr("Load"), lastName(handle, loadKey));
    if (m_fileName.isEmpty()) {
        m_loadSaveButton->setChecked(false);
        return;
    }
    m_fromFile = true;
    m_showButton->setEnabled(false);
    m_edit->setReadOnly(true);
    setText(QStringLiteral("Using file '%1'").arg(m_fileName));
    m_loadSaveButton->setToolTip(tr("Click again to enter value manually"));
    remember(handle, loadKey, m_fileName);
}

void FileField::enterManually()
{
    m_fromFile = false;
    m_showButton->setEnabled(true);
    m_edit->setReadOnly(false);
    m_edit->clear();
    m_loadSaveButton->setToolTip(QString());
}

std::optional<QByteArray> FileField::readFile() const
{
    // Opening a pipe or a device may wait for ever.
    if (!QFileInfo(m_fileName).isFile())
        return std::nullopt;
    QFile file(m_fileName);
    if (!file.open(QIODevice::ReadOnly) || file.size() > maxFileSize)
        return std::nullopt;
    QByteArray bytes = file.read(file.size());
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return bytes.isNull() ? QByteArray("") : bytes;
}

QString FileField::lastName(void* handle, const char* key) const
{
    return m_settings ? m_settings->readSetting(handle, settingsKey(key)).toString() : QString();
}

void FileField::remember(void* handle, const char* key, const QString& name) const
{
    if (m_settings)
        m_settings->writeSetting(handle, settingsKey(key), name);
}

QString FileField::settingsKey(const char* key) const
{
    return QLatin1String(m_facts.className) + QLatin1Char('.') + QLatin1String(key);
}

QString FileField::tr(const char* text) const
{
    return QCoreApplication::translate(m_facts.className, text);
}
