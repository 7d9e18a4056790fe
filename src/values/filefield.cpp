#include "filefield_p.h"

#include "base/editorhelpers_p.h"
#include "base/focus_p.h"
#include "base/settingscbinterface.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QLocale>
#include <QtCore/QPointer>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTextEdit>

#include <algorithm>
#include <utility>

namespace {

constexpr qint64 maxFileSize = qint64(512) << 20;
constexpr const char* loadKey = "LastLoadFilename";
constexpr const char* saveKey = "LastSaveFilename";

QString tooLongText()
{
    return QvelEditWidgetBase::tr("The value is too long to be shown here, where texts of up to %1 "
                                  "characters are. It stays as it is.")
        .arg(QLocale().toString(maxDialogCharacters));
}

} // namespace

FileField::FileField(QvelEditWidgetBase* field, const Facts& facts) : m_field(field), m_facts(facts)
{
    const EditFieldControls controls = layOutEditField(field);
    m_edit = controls.edit;
    tellWhenCut(m_edit);
    m_showButton = controls.button;
    m_loadSaveButton = new QToolButton;
    field->layout()->addWidget(m_loadSaveButton);
    m_dialog = new QvelDisplayDialog(facts.dialogFlags, field);
    updateFlags();
    retranslated(field, [this] {
        if (m_fromFile)
            m_loadSaveButton->setToolTip(tr(m_facts.manually));
        if (!m_isDialogWhole)
            m_dialog->setText(tooLongText());
    });
}

FileField::~FileField()
{
    closeSettings();
}

void FileField::updateFlags()
{
    m_readOnly = m_field->flags().testFlag(QvelEditWidgetBase::ReadOnly);
    if (m_readOnly && m_fromFile)
        enterManually();
    m_edit->setReadOnly(m_readOnly || m_fromFile || !m_facts.isTextEditable);
    // These texts are the same in every language.
    m_loadSaveButton->setText(m_readOnly ? QStringLiteral("Save as...")
                                         : QStringLiteral("Load file..."));
    m_loadSaveButton->setCheckable(!m_readOnly);
    auto dialogFlags = m_facts.dialogFlags;
    dialogFlags.setFlag(QvelDisplayDialog::ReadOnly, m_readOnly);
    m_dialog->setFlags(dialogFlags);
}

void FileField::setText(const QString& text)
{
    showWhole(m_edit, text);
    m_edit->setCursorPosition(0);
}

void FileField::showDialog(qsizetype atLeast, const std::function<QString()>& text)
{
    QString shown;
    if (atLeast <= maxDialogCharacters)
        shown = text();
    m_isDialogWhole = std::max(atLeast, shown.size()) <= maxDialogCharacters;
    if (!m_isDialogWhole)
        shown = tooLongText();
    setTextReadOnly(m_dialog->findChild<QTextEdit*>(), m_readOnly || !m_isDialogWhole);
    auto* buttons = m_dialog->findChild<QDialogButtonBox*>();
    buttons->button(QDialogButtonBox::Ok)->setEnabled(m_isDialogWhole);
    m_dialog->setText(shown);
    showDialogAt(m_dialog, m_edit);
}

std::optional<QString> FileField::dialogText() const
{
    return m_isDialogWhole ? std::optional(m_dialog->text()) : std::nullopt;
}

void FileField::warn(const QString& title, const QString& text)
{
    m_signalling.run(m_dialog, [field = m_field, &title, &text] {
        runMessageBox(field, QMessageBox::Warning, title, text);
    });
}

void FileField::loadOrSave(bool checked, QByteArray bytes)
{
    m_signalling.run(m_loadSaveButton, [this, checked, bytes = std::move(bytes)] {
        const QPointer<QWidget> field = m_field;
        openSettings();
        if (m_readOnly)
            save(bytes);
        else if (checked)
            load();
        else
            enterManually();
        if (field)
            closeSettings();
    });
}

void FileField::openSettings()
{
    closeSettings();
    m_opened = m_settings;
    m_handle = m_opened ? m_opened->openSettings() : nullptr;
}

void FileField::closeSettings()
{
    if (QvelSettingsCBInterface* opened = std::exchange(m_opened, nullptr))
        opened->closeSettings(m_handle);
}

std::optional<QString> FileField::choose(QFileDialog::AcceptMode mode, const char* title,
                                         const char* key) const
{
    const QString last =
        m_opened ? m_opened->readSetting(m_handle, settingsKey(key)).toString() : QString();
    auto* chooser = new QFileDialog(m_field, tr(title), last);
    chooser->setAcceptMode(mode);
    chooser->setFileMode(mode == QFileDialog::AcceptSave ? QFileDialog::AnyFile
                                                         : QFileDialog::ExistingFile);
    const QPointer<QWidget> field = m_field;
    const QString name = runFileDialog(chooser);
    return field ? std::optional(name) : std::nullopt;
}

void FileField::save(const QByteArray& bytes)
{
    const auto name = choose(QFileDialog::AcceptSave, m_facts.save, saveKey);
    if (!name || name->isEmpty())
        return;
    // Opening a pipe may wait for ever.
    const QFileInfo info(*name);
    QFile file(*name);
    if ((!info.exists() || info.isFile()) && file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(bytes);
    file.close();
    remember(saveKey, *name);
}

void FileField::load()
{
    const auto name = choose(QFileDialog::AcceptOpen, m_facts.load, loadKey);
    if (!name)
        return;
    m_fileName = *name;
    if (m_fileName.isEmpty()) {
        m_loadSaveButton->setChecked(false);
        return;
    }
    m_fromFile = true;
    m_showButton->setEnabled(false);
    m_edit->setReadOnly(true);
    setText(QStringLiteral("Using file '%1'").arg(m_fileName));
    m_loadSaveButton->setToolTip(tr(m_facts.manually));
    remember(loadKey, m_fileName);
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

void FileField::remember(const char* key, const QString& name) const
{
    if (m_opened)
        m_opened->writeSetting(m_handle, settingsKey(key), name);
}

QString FileField::settingsKey(const char* key) const
{
    return QLatin1String(m_facts.className) + QLatin1Char('.') + QLatin1String(key);
}

QString FileField::tr(const char* text) const
{
    return QCoreApplication::translate(m_facts.className, text);
}
