#pragma once

#include "../kestrelexport.h"

#include <QtWidgets/QDialog>

#include <memory>

class QvelSession;
enum class QvelCertificateAnswer;

struct QvelCertificateQuestion;

/// Asks whether a server's certificate is trusted: shows it with each finding in words, and takes
/// "Reject", "Trust Once" or "Always Trust".
///
/// It may be shown in any way; show() and open() do not block. "Reject" is the default, and what
/// closing the dialog means: nothing is trusted without an answer. A certificate that does not
/// decode can only be rejected. User-interface thread only.
class KESTREL_EXPORT QvelTrustDialog : public QDialog
{
    Q_OBJECT
public:
    explicit QvelTrustDialog(const QvelCertificateQuestion& question, QWidget* parent = nullptr);
    ~QvelTrustDialog() override;

    /// Gives the answer to the session that asks. When the session does not wait for it any more,
    /// as its time is over or it was deleted, the dialog closes, and answers nobody. The session is
    /// not owned.
    void setSession(QvelSession* session);
    QvelSession* session() const;

    /// Reject until the user has chosen something else.
    QvelCertificateAnswer answer() const;

Q_SIGNALS:
    /// The user has answered: once, before finished().
    void answered(QvelCertificateAnswer answer);

public Q_SLOTS:
    /// An end without a choice is the answer Reject.
    void done(int result) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};
