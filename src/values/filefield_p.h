#pragma once

#include "base/displaydialog.h"
#include "base/editorbases.h"

#include <QtCore/QString>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QToolButton>

#include <optional>

class QvelSettingsCBInterface;

/// What an edit field that can load and save its value is made of: a line, a button that opens the
/// dialog, and one that loads, or saves a read-only value. The field owns the widgets.
class FileField
{
public:
    /// What tells one field from another.
    struct Facts
    {
        const char* className; ///< begins the keys of the last file names
        bool isTextEditable;   ///< the line is the value itself, not a summary of it
        QvelDisplayDialog::QvelDisplayDialogFlags dialogFlags;
    };

    FileField(QvelEditWidgetBase* field, const Facts& facts);

    /// Connects the widgets to a field's slots.
    template <class Field>
    void connectTo(Field* field, void (Field::*accepted)(), void (Field::*rejected)(),
                   void (Field::*show)(), void (Field::*loadSave)(bool), void (Field::*changed)())
    {
        QObject::connect(m_showButton, &QToolButton::clicked, field, show);
        QObject::connect(m_loadSaveButton, &QToolButton::clicked, field, loadSave);
        QObject::connect(m_dialog, &QDialog::accepted, field, accepted);
        QObject::connect(m_dialog, &QDialog::rejected, field, rejected);
        QObject::connect(m_edit, &QLineEdit::textChanged, field, changed);
    }

    QString text() const { return m_edit->text(); }
    QString dialogText() const { return m_dialog->text(); }
    /// Shows a text from its beginning.
    void setText(const QString& text);
    void showDialog(const QString& text);

    /// The load or save button was clicked. `bytes` is what is saved.
    void loadOrSave(bool checked, const QByteArray& bytes);
    bool isFromFile() const { return m_fromFile; }
    /// The contents of the file, or nothing when it cannot be read.
    std::optional<QByteArray> readFile() const;

    void setSettings(QvelSettingsCBInterface* settings) { m_settings = settings; }

private:
    void save(void* handle, const QByteArray& bytes);
    void load(void* handle);
    void enterManually();
    QString lastName(void* handle, const char* key) const;
    void remember(void* handle, const char* key, const QString& name) const;
    QString settingsKey(const char* key) const;
    /// Translates in the field's own context.
    QString tr(const char* text) const;

    QvelEditWidgetBase* const m_field;
    const Facts m_facts;
    const bool m_readOnly;
    QLineEdit* m_edit;
    QToolButton* m_showButton;
    QToolButton* m_loadSaveButton;
    QvelDisplayDialog* m_dialog;
    bool m_fromFile = false;
    QString m_fileName;
    QvelSettingsCBInterface* m_settings = nullptr;
};
