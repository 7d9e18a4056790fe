#pragma once

#include "../kestrelexport.h"
#include "../platform/types/uavariant.h"

#include <QtWidgets/QDialog>
#include <QtWidgets/QWidget>

class QAbstractButton;
class QDialogButtonBox;
class QVBoxLayout;

/// \file
/// The three shapes of a value editor. All of them live on the user-interface thread and are owned
/// by their Qt parent.
///
/// The value contract, which every concrete editor keeps:
/// - `value(ok)` gives the current input as a scalar UaVariant and says through `ok` (may be null)
///   whether it is valid. Invalid input gives an empty variant, or, when `ok` is null, the fallback
///   that the editor's typed getter names.
/// - `setValue(v)` shows a scalar of the editor's own built-in type; anything else is ignored.
/// - each editor has a typed getter and setter, and emits `valueChanged(UaVariant)` and then a
///   signal with its own type whenever one of its controls changes.
///
/// The user property `value` is the same for QDataWidgetMapper and item delegates, over a model
/// whose edit role holds a UaVariant. Read as a property, invalid input is an empty variant; a cell
/// without a value leaves the editor as it is.
///
/// Forms have properties of texts and flags instead: `valueText`, the value as one line, and
/// `flags`, which may change at any time; a cell or dialog that is open takes them the next time.

/// An inline editor: a plain widget, placed where the value is typed.
class KESTREL_EXPORT QvelWidgetBase : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(UaVariant value READ validValue WRITE setValue DESIGNABLE false USER true)
    Q_PROPERTY(QvelWidgetFlags flags READ flags WRITE setFlags NOTIFY flagsChanged)
    Q_PROPERTY(QString valueText READ valueText WRITE setValueText NOTIFY valueTextChanged)
public:
    /// The numbers differ from those of the dialogs and edit fields: translate bit by bit.
    enum QvelWidgetFlag {
        NoFlags = 0,
        HideFrame = 1, ///< alone, it hides the frames; together with ReadOnly they stay
        ReadOnly = 2
    };
    Q_DECLARE_FLAGS(QvelWidgetFlags, QvelWidgetFlag)
    Q_FLAG(QvelWidgetFlag)
    Q_FLAG(QvelWidgetFlags)

    ~QvelWidgetBase() override;

    virtual UaVariant value(bool* ok = nullptr) const = 0;
    virtual void setValue(const UaVariant& value) = 0;

    QvelWidgetFlags flags() const { return m_flags; }
    void setFlags(QvelWidgetFlags flags);

    /// The value as one line: what UaVariant::toFullString() gives, but for a StatusCode, which is
    /// hexadecimal after "0x". A LocalizedText reads "locale:text"; without a locale, its first
    /// colon comes after another one. An editor of any type has the reversible JSON encoding of its
    /// value. Empty while the input is invalid.
    virtual QString valueText() const;
    /// Shows the value that a text stands for, the type's null value for an empty one. A text that
    /// stands for none changes nothing.
    virtual void setValueText(const QString& text);

Q_SIGNALS:
    void flagsChanged();
    /// Before the signals that carry the value.
    void valueTextChanged();

protected:
    explicit QvelWidgetBase(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                            Qt::WindowFlags windowFlags = {});

    /// Passes a focus-out of the watched control on to the editor itself, so that an owner who
    /// watches the editor, such as the delegate of a view, sees the focus leave.
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// Gives the controls what the flags ask for, after these have changed. Those that
    /// are the editor's own children are known.
    virtual void updateControls();

private:
    UaVariant validValue() const;

    QvelWidgetFlags m_flags;
};
Q_DECLARE_OPERATORS_FOR_FLAGS(QvelWidgetBase::QvelWidgetFlags)

/// A dialog editor: a small window without title bar buttons, the controls above "Write" and
/// Cancel. "Write" always accepts; the owner asks value() afterwards.
class KESTREL_EXPORT QvelDialogWidgetBase : public QDialog
{
    Q_OBJECT
    Q_PROPERTY(UaVariant value READ validValue WRITE setValue DESIGNABLE false USER true)
    Q_PROPERTY(QvelDialogWidgetFlags flags READ flags WRITE setFlags NOTIFY flagsChanged)
public:
    enum QvelDialogWidgetFlag { NoFlags = 0, ReadOnly = 1, NoResize = 2 };
    Q_DECLARE_FLAGS(QvelDialogWidgetFlags, QvelDialogWidgetFlag)
    Q_FLAG(QvelDialogWidgetFlag)
    Q_FLAG(QvelDialogWidgetFlags)

    ~QvelDialogWidgetBase() override;

    virtual UaVariant value(bool* ok = nullptr) const = 0;
    virtual void setValue(const UaVariant& value) = 0;

    QvelDialogWidgetFlags flags() const { return m_flags; }
    void setFlags(QvelDialogWidgetFlags flags);

Q_SIGNALS:
    void flagsChanged();

public Q_SLOTS:
    void accept() override;

protected:
    /// The window flags are always those of a title-less window, whatever `windowFlags` says.
    explicit QvelDialogWidgetBase(QvelDialogWidgetFlags flags = {}, QWidget* parent = nullptr,
                                  Qt::WindowFlags windowFlags = {});

    /// Moves the window into the available area of the screen that holds most of it. One that is
    /// larger than the area ends at the right and bottom edges. The first control gets the focus;
    /// Tab reaches the buttons last.
    void showEvent(QShowEvent* event) override;
    /// Gives the controls what the flags ask for, after these have changed. As that of
    /// QvelWidgetBase.
    virtual void updateControls();

    QDialogButtonBox* buttonBox() const { return m_buttonBox; }
    /// Holds the button box; editors insert their controls at index 0.
    QVBoxLayout* mainLayout() const { return m_layout; }

private:
    UaVariant validValue() const;

    QDialogButtonBox* m_buttonBox;
    QVBoxLayout* m_layout;
    QvelDialogWidgetFlags m_flags;
};
Q_DECLARE_OPERATORS_FOR_FLAGS(QvelDialogWidgetBase::QvelDialogWidgetFlags)

/// An edit field: the value as one line of text beside a "..." button that opens its dialog.
class KESTREL_EXPORT QvelEditWidgetBase : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(UaVariant value READ validValue WRITE setValue DESIGNABLE false USER true)
    Q_PROPERTY(QvelEditWidgetFlags flags READ flags WRITE setFlags NOTIFY flagsChanged)
    Q_PROPERTY(QString valueText READ valueText WRITE setValueText NOTIFY valueTextChanged)
public:
    enum QvelEditWidgetFlag { NoFlags = 0, ReadOnly = 1, NoResize = 2 };
    Q_DECLARE_FLAGS(QvelEditWidgetFlags, QvelEditWidgetFlag)
    Q_FLAG(QvelEditWidgetFlag)
    Q_FLAG(QvelEditWidgetFlags)

    ~QvelEditWidgetBase() override;

    virtual UaVariant value(bool* ok = nullptr) const = 0;
    virtual void setValue(const UaVariant& value) = 0;

    QvelEditWidgetFlags flags() const { return m_flags; }
    void setFlags(QvelEditWidgetFlags flags);

Q_SIGNALS:
    void flagsChanged();
    /// Before the signals that carry the value.
    void valueTextChanged();

protected Q_SLOTS:
    /// Takes the dialog's value as the last accepted one and shows it.
    virtual void sltDialogWidgetAccepted() = 0;
    /// Gives the last accepted value back to the dialog.
    virtual void sltDialogWidgetRejected() = 0;
    virtual void sltShowDialogWidget() = 0;

public:
    /// As those of QvelWidgetBase.
    virtual QString valueText() const;
    virtual void setValueText(const QString& text);

protected:
    explicit QvelEditWidgetBase(QvelEditWidgetFlags flags = {}, QWidget* parent = nullptr,
                                Qt::WindowFlags windowFlags = {});

    /// Lets the button open the dialog, and follows what becomes of it.
    void connectDialog(const QAbstractButton* button, const QDialog* dialog);
    /// Gives the controls what the flags ask for, after these have changed.
    virtual void updateControls();

private:
    UaVariant validValue() const;

    QvelEditWidgetFlags m_flags;
};
Q_DECLARE_OPERATORS_FOR_FLAGS(QvelEditWidgetBase::QvelEditWidgetFlags)
