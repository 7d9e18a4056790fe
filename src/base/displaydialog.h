#pragma once

#include "../kestrelexport.h"

#include <QtWidgets/QDialog>

class QDialogButtonBox;
class QTextEdit;

/// A dialog around a multi-line text, to read or to edit. It opens inside the available area of its
/// screen; Tab leaves the text. User-interface thread only.
class KESTREL_EXPORT QvelDisplayDialog : public QDialog
{
    Q_OBJECT
public:
    enum QvelDisplayDialogFlag {
        NoFlags = 0,
        ReadOnly = 1,    ///< a single button "Close" instead of "Write" and Cancel
        WrapAnywhere = 2 ///< lines wrap at the edge, also inside words, instead of scrolling
    };
    Q_DECLARE_FLAGS(QvelDisplayDialogFlags, QvelDisplayDialogFlag)
    Q_FLAG(QvelDisplayDialogFlag)
    Q_FLAG(QvelDisplayDialogFlags)

    explicit QvelDisplayDialog(QvelDisplayDialogFlags flags = {}, QWidget* parent = nullptr,
                               Qt::WindowFlags windowFlags = {});
    ~QvelDisplayDialog() override;

    QvelDisplayDialogFlags flags() const { return m_flags; }
    void setFlags(QvelDisplayDialogFlags flags);

    /// Shows a text; rich text is detected as QTextEdit::setText() does.
    void setText(const QString& text);
    /// The plain text.
    QString text() const;

Q_SIGNALS:
    void textChanged();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void setTexts();

    QTextEdit* m_textEdit;
    QDialogButtonBox* m_buttons;
    QvelDisplayDialogFlags m_flags;
};
Q_DECLARE_OPERATORS_FOR_FLAGS(QvelDisplayDialog::QvelDisplayDialogFlags)
