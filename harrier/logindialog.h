#pragma once

#include <QtWidgets/QDialog>

#include <functional>

class QLineEdit;

/// Asks for a user's name and password, or for a password alone. Neither is kept anywhere.
class LoginDialog : public QDialog
{
    Q_OBJECT
public:
    /// Without a name, only a password is asked for.
    enum Kind { NameAndPassword, PasswordOnly };

    /// `what` says what the password is for.
    LoginDialog(Kind kind, const std::function<QString()>& what, QWidget* parent = nullptr);
    ~LoginDialog() override;

    QString userName() const;
    void setUserName(const QString& name);
    QString password() const;

private:
    QLineEdit* m_name = nullptr;
    QLineEdit* m_password;
};
