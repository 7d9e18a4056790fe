#include "logindialog.h"

#include "language.h"

#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>

LoginDialog::LoginDialog(Kind kind, const std::function<QString()>& what, QWidget* parent)
    : QDialog(parent), m_password(new QLineEdit)
{
    auto* text = new QLabel;
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    auto* form = new QFormLayout(this);
    form->addRow(text);
    const auto addRow = [form](QLineEdit* line) {
        auto* label = new QLabel;
        label->setBuddy(line);
        form->addRow(label, line);
        return label;
    };
    QLabel* nameLabel = nullptr;
    if (kind == NameAndPassword) {
        m_name = new QLineEdit;
        m_name->setObjectName(QStringLiteral("userName"));
        nameLabel = addRow(m_name);
    }
    m_password->setObjectName(QStringLiteral("password"));
    m_password->setEchoMode(QLineEdit::Password);
    m_password->setMinimumWidth(30 * fontMetrics().averageCharWidth());
    QLabel* passwordLabel = addRow(m_password);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(buttons);
    Language::follow(this, [=] {
        setWindowTitle(kind == NameAndPassword ? tr("Log In") : tr("Password"));
        text->setText(what());
        if (nameLabel)
            nameLabel->setText(tr("&User name:"));
        passwordLabel->setText(tr("&Password:"));
    });
}

LoginDialog::~LoginDialog()
{
    m_password->clear();
}

QString LoginDialog::userName() const
{
    return m_name ? m_name->text() : QString();
}

void LoginDialog::setUserName(const QString& name)
{
    if (!m_name)
        return;
    m_name->setText(name);
    (name.isEmpty() ? m_name : m_password)->setFocus();
}

QString LoginDialog::password() const
{
    return m_password->text();
}
