#pragma once

#include "base/displaydialog.h"
#include "base/editorbases.h"
#include "base/ownmodal_p.h"

#include <QtCore/QString>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QToolButton>

#include <functional>
#include <optional>

/// The longest text that the dialog of a field shows: what QTextEdit lays out in half a second.
inline constexpr qsizetype maxDialogCharacters = 250'000;

class QvelSettingsCBInterface;

/// What an edit field that can load and save its value is made of: a line, a button that opens the
/// dialog, and one that loads, or saves a read-only value. The field owns the widgets. It may be
/// deleted while a file is chosen.
class FileField
{
public:
    /// What tells one field from another.
    struct Facts
    {
        const char* className; ///< begins the keys of the last file names
        // In the field's own context.
        const char* save;
        const char* load;
        const char* manually;
        bool isTextEditable; ///< the line is the value itself, not a summary of it
        QvelDisplayDialog::QvelDisplayDialogFlags dialogFlags;
    };

    FileField(QvelEditWidgetBase* field, const Facts& facts);
    ~FileField();
    Q_DISABLE_COPY_MOVE(FileField)

    QToolButton* showButton() const { return m_showButton; }
    QToolButton* loadSaveButton() const { return m_loadSaveButton; }
    QLineEdit* edit() const { return m_edit; }
    QvelDisplayDialog* dialog() const { return m_dialog; }

    QString text() const { return m_edit->text(); }
    /// Shows a text from its beginning.
    void setText(const QString& text);

    /// Opens the dialog on a text, which has so many characters at least; on one longer than
    /// maxDialogCharacters with a word about it instead, which cannot be written.
    void showDialog(qsizetype atLeast, const std::function<QString()>& text);
    /// What the dialog was accepted with; nothing when the text was too long for it.
    std::optional<QString> dialogText() const;

    /// Tells, while the dialog is being accepted, what is wrong with its text. The field may be
    /// gone afterwards.
    void warn(const QString& title, const QString& text);

    /// The load or save button was clicked. `bytes` is what is saved.
    void loadOrSave(bool checked, QByteArray bytes);
    bool isFromFile() const { return m_fromFile; }
    /// The contents of the file, or nothing when it cannot be read.
    std::optional<QByteArray> readFile() const;

    /// Follows the field's flags. A file that a value is taken from is given up when the field
    /// becomes read-only.
    void updateFlags();

    void setSettings(QvelSettingsCBInterface* settings) { m_settings = settings; }

private:
    void openSettings();
    void closeSettings();
    void save(const QByteArray& bytes);
    void load();
    void enterManually();
    // The chosen file; nothing if the field is gone.
    std::optional<QString> choose(QFileDialog::AcceptMode mode, const char* title,
                                  const char* key) const;
    void remember(const char* key, const QString& name) const;
    QString settingsKey(const char* key) const;
    /// Translates in the field's own context.
    QString tr(const char* text) const;

    QvelEditWidgetBase* const m_field;
    const Facts m_facts;
    bool m_readOnly = false;
    QLineEdit* m_edit;
    QToolButton* m_showButton;
    QToolButton* m_loadSaveButton;
    QvelDisplayDialog* m_dialog;
    SignallingWidget m_signalling;
    bool m_fromFile = false;
    QString m_fileName;
    bool m_isDialogWhole = true;
    QvelSettingsCBInterface* m_settings = nullptr;
    QvelSettingsCBInterface* m_opened = nullptr; // while the button does its work
    void* m_handle = nullptr;
};
