#include "newcertificatedialog.h"

#include "images/images_p.h"
#include "platform/pki/uapkicertificate.h"
#include "ui_newcertificatedialog.h"

#include <QtCore/QSysInfo>
#include <QtGui/QCloseEvent>
#include <QtGui/QIcon>
#include <QtWidgets/QPushButton>

constexpr QSize statusIconSize(16, 16);
constexpr int shortestPassword = 4;
constexpr int dayInSeconds = 86'400;
constexpr int yearInDays = 365;
constexpr int oneYear = 4; // its index

static QList<int> defaultKeyStrengths()
{
    return {1024, 2048};
}

// In the order of the combo box.
static const int validities[] = {
    3600,
    dayInSeconds,
    7 * dayInSeconds,
    31 * dayInSeconds,
    yearInDays* dayInSeconds,
    2 * yearInDays* dayInSeconds,
    3 * yearInDays* dayInSeconds,
    4 * yearInDays* dayInSeconds,
    5 * yearInDays* dayInSeconds,
};

static UaString textOf(const QLineEdit* input)
{
    return UaString(input->text().toUtf8());
}

class QvelNewCertificateDlg::Private
{
public:
    QString statusText(bool good) const
    {
        return good ? QvelNewCertificateDlg::tr("Present and valid")
                    : QvelNewCertificateDlg::tr("Missing or invalid");
    }

    /// Shows whether the content of `input` will do, to the eye and to a screen reader.
    void setStatus(QLabel* label, QLineEdit* input, bool good)
    {
        const QIcon& icon = good ? on : off;
        label->setPixmap(icon.pixmap(statusIconSize, label->devicePixelRatioF()));
        label->setAccessibleName(statusText(good));
        input->setAccessibleDescription(statusText(good));
    }

    /// One of the two that stand in for each other has changed: what is missing is greyed as long
    /// as the other one is there.
    void setAlternativeStatus(QLabel* status, QLineEdit* input, QLabel* otherStatus,
                              const QLineEdit* otherInput)
    {
        const bool given = !input->text().isEmpty();
        const bool otherGiven = !otherInput->text().isEmpty();
        setStatus(status, input, given);
        status->setEnabled(given || !otherGiven);
        otherStatus->setEnabled(!given || otherGiven);
    }

    Ui::NewCertificateDialog ui = {};
    const QIcon on = QIcon(QStringLiteral(":/kestrel/images/on.png"));
    const QIcon off = QIcon(QStringLiteral(":/kestrel/images/clearlog.png"));
    std::unique_ptr<UaPkiCertificate> certificate;
    std::unique_ptr<UaPkiRsaKeyPair> keyPair;
    QList<int> keyStrengths = defaultKeyStrengths();
    bool passwordValid = true;
    bool mandatory = false;
};

QvelNewCertificateDlg::QvelNewCertificateDlg(const QString& applicationName,
                                             const QString& applicationUriPart, bool mandatory,
                                             bool passwordOption, QWidget* parent)
    : QDialog(parent, Qt::WindowTitleHint | Qt::WindowSystemMenuHint), d(new Private)
{
    initKestrelImages();
    d->mandatory = mandatory;
    Ui::NewCertificateDialog& ui = d->ui;
    ui.setupUi(this);
    const std::pair<QLabel*, QLineEdit*> checked[] = {
        {ui.lblStatCN, ui.txtCommonName},
        {ui.lblStatO, ui.txtOrganization},
        {ui.lblStatOU, ui.txtOrganizationUnit},
        {ui.lblStatL, ui.txtLocality},
        {ui.lblStatS, ui.txtState},
        {ui.lblStatC, ui.txtCountry},
        {ui.lblStatURI, ui.txtURI},
        {ui.lblStatDNS, ui.txtDNS},
        {ui.lblStatIP, ui.txtIP},
        {ui.lblStatPassword, ui.txtPassword},
        {ui.lblStatPasswordRepeat, ui.txtPasswordRepeat},
    };
    for (const auto& [label, input] : checked)
        d->setStatus(label, input, false);
    if (!passwordOption) {
        for (QWidget* widget : std::initializer_list<QWidget*>{
                 ui.chkPassword, ui.txtPassword, ui.txtPasswordRepeat, ui.lblPassword,
                 ui.lblPasswordRepeat, ui.lblStatPassword, ui.lblStatPasswordRepeat})
            widget->hide();
    }

    using Self = QvelNewCertificateDlg;
    connect(ui.txtCommonName, &QLineEdit::textChanged, this, &Self::sltCNChanged);
    connect(ui.txtOrganization, &QLineEdit::textChanged, this, &Self::sltOChanged);
    connect(ui.txtOrganizationUnit, &QLineEdit::textChanged, this, &Self::sltOUChanged);
    connect(ui.txtLocality, &QLineEdit::textChanged, this, &Self::sltLChanged);
    connect(ui.txtState, &QLineEdit::textChanged, this, &Self::sltSChanged);
    connect(ui.txtCountry, &QLineEdit::textChanged, this, &Self::sltCChanged);
    connect(ui.txtURI, &QLineEdit::textChanged, this, &Self::sltURIChanged);
    connect(ui.txtDNS, &QLineEdit::textChanged, this, &Self::sltDNSChanged);
    connect(ui.txtIP, &QLineEdit::textChanged, this, &Self::sltIPChanged);
    connect(ui.txtPassword, &QLineEdit::textChanged, this, &Self::sltPasswordChanged);
    connect(ui.txtPasswordRepeat, &QLineEdit::textChanged, this, &Self::sltPasswordChanged);
    connect(ui.chkPassword, &QCheckBox::stateChanged, this, &Self::sltPasswordEnabled);
    connect(this, &QDialog::accepted, this, &Self::sltCreateCertificate);

    const QString host = QSysInfo::machineHostName();
    setCommonName(applicationName);
    setURI(QStringLiteral("urn:%1:%2:%3").arg(host, applicationUriPart, applicationName));
    setDNS(host);
    ui.cmbTime->setCurrentIndex(oneYear);
    ui.txtOrganization->setFocus();
    sltPasswordEnabled(Qt::Unchecked);
    ui.txtURI->setEnabled(false);
    if (mandatory) {
        setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::CustomizeWindowHint);
        ui.buttonBox->button(QDialogButtonBox::Cancel)->hide();
    }
}

QvelNewCertificateDlg::~QvelNewCertificateDlg() = default;

void QvelNewCertificateDlg::setCommonName(const QString& text)
{
    d->ui.txtCommonName->setText(text);
}

void QvelNewCertificateDlg::setOrganization(const QString& text)
{
    d->ui.txtOrganization->setText(text);
}

void QvelNewCertificateDlg::setOrganizationUnit(const QString& text)
{
    d->ui.txtOrganizationUnit->setText(text);
}

void QvelNewCertificateDlg::setLocality(const QString& text)
{
    d->ui.txtLocality->setText(text);
}

void QvelNewCertificateDlg::setState(const QString& text)
{
    d->ui.txtState->setText(text);
}

void QvelNewCertificateDlg::setCountry(const QString& text)
{
    d->ui.txtCountry->setText(text);
}

void QvelNewCertificateDlg::setURI(const QString& text)
{
    d->ui.txtURI->setText(text);
    d->ui.txtURI->setCursorPosition(0); // to show its start
}

void QvelNewCertificateDlg::setIP(const QString& text)
{
    d->ui.txtIP->setText(text);
}

void QvelNewCertificateDlg::setDNS(const QString& text)
{
    d->ui.txtDNS->setText(text);
}

void QvelNewCertificateDlg::setRSAKeyStrength(int bits)
{
    d->ui.cmbRSAKeyStrength->setCurrentIndex(qMax(0, int(d->keyStrengths.indexOf(bits))));
}

void QvelNewCertificateDlg::setRSAKeyStrengths(const QList<int>& bits)
{
    QList<int> offered;
    for (const int strength : bits)
        if (strength >= UaPkiRsaKeyPair::smallestKeySize &&
            strength <= UaPkiRsaKeyPair::largestKeySize && !offered.contains(strength))
            offered.append(strength);
    if (offered.isEmpty())
        offered = defaultKeyStrengths();

    QComboBox* combo = d->ui.cmbRSAKeyStrength;
    const int selected = d->keyStrengths.value(combo->currentIndex());
    d->keyStrengths = offered;
    combo->clear();
    for (const int strength : offered)
        combo->addItem(
            QCoreApplication::translate("NewCertificateDialog", "%1 bits").arg(strength));
    setRSAKeyStrength(selected);
}

QList<int> QvelNewCertificateDlg::rsaKeyStrengths() const
{
    return d->keyStrengths;
}

UaPkiCertificate* QvelNewCertificateDlg::certificate() const
{
    return d->certificate.get();
}

UaPkiRsaKeyPair* QvelNewCertificateDlg::keyPair() const
{
    return d->keyPair.get();
}

QString QvelNewCertificateDlg::password() const
{
    return d->ui.chkPassword->isChecked() ? d->ui.txtPassword->text() : QString();
}

// The Escape key comes here, too.
void QvelNewCertificateDlg::reject()
{
    if (!d->mandatory)
        QDialog::reject();
}

void QvelNewCertificateDlg::closeEvent(QCloseEvent* event)
{
    if (d->mandatory)
        event->ignore();
    else
        QDialog::closeEvent(event);
}

void QvelNewCertificateDlg::sltCreateCertificate()
{
    const Ui::NewCertificateDialog& ui = d->ui;
    UaPkiIdentity identity;
    identity.commonName = textOf(ui.txtCommonName);
    identity.organization = textOf(ui.txtOrganization);
    identity.organizationUnit = textOf(ui.txtOrganizationUnit);
    identity.locality = textOf(ui.txtLocality);
    identity.state = textOf(ui.txtState);
    identity.country = textOf(ui.txtCountry);
    UaPkiCertificateInfo info;
    info.applicationUri = textOf(ui.txtURI);
    info.ipAddress = textOf(ui.txtIP);
    info.dnsName = textOf(ui.txtDNS);
    const int time = ui.cmbTime->currentIndex();
    if (time >= 0 && time < int(std::size(validities)))
        info.validitySeconds = validities[time];
    const int bits = d->keyStrengths.value(ui.cmbRSAKeyStrength->currentIndex(), 2048);

    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    d->keyPair = std::make_unique<UaPkiRsaKeyPair>(bits);
    d->certificate = std::make_unique<UaPkiCertificate>(info, identity, d->keyPair->publicKey(),
                                                        identity, d->keyPair->privateKey());
    QGuiApplication::restoreOverrideCursor();
}

void QvelNewCertificateDlg::checkFilled(QLabel* status, QLineEdit* input)
{
    d->setStatus(status, input, !input->text().isEmpty());
    validateSettings();
}

void QvelNewCertificateDlg::sltCNChanged(QString)
{
    checkFilled(d->ui.lblStatCN, d->ui.txtCommonName);
}

void QvelNewCertificateDlg::sltOChanged(QString)
{
    checkFilled(d->ui.lblStatO, d->ui.txtOrganization);
}

void QvelNewCertificateDlg::sltOUChanged(QString text)
{
    d->ui.lblStatOU->setEnabled(!text.isEmpty());
    checkFilled(d->ui.lblStatOU, d->ui.txtOrganizationUnit);
}

void QvelNewCertificateDlg::sltLChanged(QString)
{
    checkFilled(d->ui.lblStatL, d->ui.txtLocality);
}

void QvelNewCertificateDlg::sltSChanged(QString)
{
    checkFilled(d->ui.lblStatS, d->ui.txtState);
}

void QvelNewCertificateDlg::sltCChanged(QString)
{
    checkFilled(d->ui.lblStatC, d->ui.txtCountry);
}

void QvelNewCertificateDlg::sltURIChanged(QString)
{
    checkFilled(d->ui.lblStatURI, d->ui.txtURI);
}

void QvelNewCertificateDlg::sltDNSChanged(QString)
{
    d->setAlternativeStatus(d->ui.lblStatDNS, d->ui.txtDNS, d->ui.lblStatIP, d->ui.txtIP);
    validateSettings();
}

void QvelNewCertificateDlg::sltIPChanged(QString)
{
    d->setAlternativeStatus(d->ui.lblStatIP, d->ui.txtIP, d->ui.lblStatDNS, d->ui.txtDNS);
    validateSettings();
}

void QvelNewCertificateDlg::validateSettings()
{
    const Ui::NewCertificateDialog& ui = d->ui;
    const auto given = [](const QLineEdit* input) { return !input->text().isEmpty(); };
    const bool acceptable = given(ui.txtCommonName) && given(ui.txtOrganization) &&
                            given(ui.txtLocality) && given(ui.txtState) && given(ui.txtCountry) &&
                            given(ui.txtURI) && (given(ui.txtDNS) || given(ui.txtIP)) &&
                            d->passwordValid;
    ui.buttonBox->button(QDialogButtonBox::Ok)->setEnabled(acceptable);
}

void QvelNewCertificateDlg::sltPasswordEnabled(int state)
{
    const Ui::NewCertificateDialog& ui = d->ui;
    const bool enabled = state == Qt::Checked;
    for (QWidget* widget : std::initializer_list<QWidget*>{
             ui.txtPassword, ui.txtPasswordRepeat, ui.lblStatPassword, ui.lblStatPasswordRepeat})
        widget->setEnabled(enabled);
    if (enabled) {
        sltPasswordChanged(ui.txtPassword->text());
    } else {
        d->passwordValid = true;
        validateSettings();
    }
}

void QvelNewCertificateDlg::sltPasswordChanged(QString)
{
    const QString password = d->ui.txtPassword->text();
    const bool longEnough = password.size() >= shortestPassword;
    const bool repeated = d->ui.txtPasswordRepeat->text() == password;
    d->setStatus(d->ui.lblStatPassword, d->ui.txtPassword, longEnough);
    d->setStatus(d->ui.lblStatPasswordRepeat, d->ui.txtPasswordRepeat, repeated);
    d->passwordValid = longEnough && repeated;
    validateSettings();
}
