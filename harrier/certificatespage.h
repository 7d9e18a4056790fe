#pragma once

#include <QtWidgets/QWidget>

class Host;
class QAbstractItemView;
class QGroupBox;
class QLabel;
class QPushButton;
class QvelCertificateManager;
class QvelCertificateView;

/// The certificates that harrier trusts and rejects, and its own one, in the host's data folder;
/// what the current one says; and what to do next so that servers and harrier trust each other.
class CertificatesPage : public QWidget
{
    Q_OBJECT
public:
    /// Creates the directories of the store if they are not there.
    explicit CertificatesPage(Host& host);
    ~CertificatesPage() override;

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void reload();
    void showNextStep();
    void showCurrent();
    void askForFiles();
    /// Files the certificates of servers among the trusted ones.
    void import(const QStringList& files);

    Host& m_host;
    QLabel* m_nextStep;
    QPushButton* m_make;
    QPushButton* m_copy;
    QvelCertificateManager* m_manager;
    QAbstractItemView* m_list;
    QvelCertificateView* m_details;
    QGroupBox* m_group; // around the details
};
