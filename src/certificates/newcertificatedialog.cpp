#include "newcertificatedialog.h"

#include "base/linehints_p.h"
#include "base/retranslate_p.h"
#include "base/showntext_p.h"
#include "images/images_p.h"
#include "platform/pki/certificatetexts_p.h"
#include "platform/pki/uapkicertificate.h"
#include "ui_newcertificatedialog.h"

#include <QtCore/QSysInfo>
#include <QtGui/QCloseEvent>
#include <QtGui/QIcon>
#include <QtWidgets/QPushButton>

#include <array>

constexpr QSize statusIconSize(16, 16);
constexpr int shortestPassword = 4;
constexpr int dayInSeconds = 86'400;
constexpr int yearInDays = 365;
constexpr int oneYear = 4; // its index

static QList<int> defaultKeyStrengths()
{
    return {1024, 2048};
}

static QString strengthText(int bits)
{
    return QCoreApplication::translate("NewCertificateDialog", "%1 bits").arg(bits);
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

using Text = CertificateText;

/// An input, what it is called, and the picture beside it that tells whether its content will do.
struct Field
{
    QLabel* label = nullptr;
    QLineEdit* input = nullptr;
    QLabel* status = nullptr;
    bool good = false;
};

// After the fields of the texts come those of the password.
constexpr size_t passwordField = size_t(Text::None);
constexpr size_t repeatField = passwordField + 1;
constexpr size_t fieldCount = repeatField + 1;

class QvelNewCertificateDlg::Private
{
public:
    Field& field(Text text) { return fields[size_t(text)]; }
    const Field& field(Text text) const { return fields[size_t(text)]; }
    bool given(Text text) const { return !field(text).input->text().isEmpty(); }
    UaString value(Text text) const { return UaString(field(text).input->text()); }
    void fill(Text text, const QString& content)
    {
        field(text).input->setText(content);
        field(text).input->setCursorPosition(0); // to show its start
    }

    /// Shows whether the content of a field will do.
    void setStatus(Field& changed, bool good)
    {
        const QIcon& icon = good ? on : off;
        changed.good = good;
        changed.status->setPixmap(icon.pixmap(statusIconSize, changed.status->devicePixelRatioF()));
    }
    void changed(Text text);
    void changedAlternative(Text text, Text other);
    void describe();
    QString faultReason() const;
    void showFault(Text text);

    Ui::NewCertificateDialog ui = {};
    std::array<Field, fieldCount> fields = {};
    const QIcon on = paletteIcon(QStringLiteral(":/kestrel/images/on.png"));
    const QIcon off = paletteIcon(QStringLiteral(":/kestrel/images/clearlog.png"));
    std::unique_ptr<UaPkiCertificate> certificate;
    std::unique_ptr<UaPkiRsaKeyPair> keyPair;
    QList<int> keyStrengths = defaultKeyStrengths();
    int clockTolerance = 0;
    Text fault = Text::None;
    bool passwordValid = true;
    bool mandatory = false;
};

/// What was wrong with the text before does not count any more.
void QvelNewCertificateDlg::Private::changed(Text text)
{
    setStatus(field(text), given(text));
    if (fault == text) {
        fault = Text::None;
        field(text).input->setToolTip({});
        ui.lblFault->hide();
    }
}

/// One of the two that stand in for each other has changed: what is missing is greyed as long as
/// the other one is there.
void QvelNewCertificateDlg::Private::changedAlternative(Text text, Text other)
{
    changed(text);
    field(text).status->setEnabled(given(text) || !given(other));
    field(other).status->setEnabled(!given(text) || given(other));
}

/// Tells a screen reader what the pictures show.
void QvelNewCertificateDlg::Private::describe()
{
    for (const Field& each : fields) {
        QString text;
        if (fault != Text::None && &each == &field(fault))
            text = faultReason();
        else if (!each.status->isEnabledTo(each.status->window()))
            text = QvelNewCertificateDlg::tr("Not required");
        else if (each.good)
            text = QvelNewCertificateDlg::tr("Present and valid");
        else
            text = QvelNewCertificateDlg::tr("Missing or invalid");
        each.status->setAccessibleName(text);
        each.input->setAccessibleDescription(text);
    }
}

/// What the faulty text ought to be.
QString QvelNewCertificateDlg::Private::faultReason() const
{
    switch (fault) {
    case Text::Country:
        return QvelNewCertificateDlg::tr("Two letters from A to Z.");
    case Text::DnsName:
        return QvelNewCertificateDlg::tr(
            "Letters, digits and - . _ * only, with a comma between two names.");
    case Text::IpAddress:
        return QvelNewCertificateDlg::tr(
            "IPv4 or IPv6 addresses in full, with a comma between two of them.");
    default:
        const bool isPlace = fault == Text::Locality || fault == Text::State;
        return QvelNewCertificateDlg::tr("At most %1 characters.").arg(isPlace ? 128 : 64);
    }
}

/// Shows why no certificate could be made, also when the dialog is shown again.
void QvelNewCertificateDlg::Private::showFault(Text text)
{
    fault = text;
    QString message = QvelNewCertificateDlg::tr("Could not create a certificate from these data");
    if (fault != Text::None) {
        Field& faulty = field(fault);
        setStatus(faulty, false);
        faulty.input->setToolTip(faultReason());
        message += u'\n' + faulty.label->text() + u' ' + faultReason();
    }
    ui.lblFault->show();
    announce(ui.lblFault, message);
    describe();
}

QvelNewCertificateDlg::QvelNewCertificateDlg(const QString& applicationName,
                                             const QString& applicationUriPart, bool mandatory,
                                             bool passwordOption, QWidget* parent)
    : QDialog(parent, Qt::WindowTitleHint | Qt::WindowSystemMenuHint), d(new Private)
{
    d->mandatory = mandatory;
    Ui::NewCertificateDialog& ui = d->ui;
    ui.setupUi(this);
    retranslatedForm(this, [this] { d->ui.retranslateUi(this); });
    ui.lblFault->hide();
    d->fields = {{
        {ui.label_3, ui.txtCommonName, ui.lblStatCN},
        {ui.label_4, ui.txtOrganization, ui.lblStatO},
        {ui.label_5, ui.txtOrganizationUnit, ui.lblStatOU},
        {ui.label_6, ui.txtLocality, ui.lblStatL},
        {ui.label_7, ui.txtState, ui.lblStatS},
        {ui.label_8, ui.txtCountry, ui.lblStatC},
        {ui.label_9, ui.txtURI, ui.lblStatURI},
        {ui.label_10, ui.txtDNS, ui.lblStatDNS},
        {ui.label_11, ui.txtIP, ui.lblStatIP},
        {ui.lblPassword, ui.txtPassword, ui.lblStatPassword},
        {ui.lblPasswordRepeat, ui.txtPasswordRepeat, ui.lblStatPasswordRepeat},
    }};
    for (Field& field : d->fields) {
        d->setStatus(field, false);
        whenPaletteChanges(field.status, [this, &field] { d->setStatus(field, field.good); });
    }
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
    retranslated(this, [this] {
        for (int i = 0; i < d->keyStrengths.size(); ++i)
            d->ui.cmbRSAKeyStrength->setItemText(i, strengthText(d->keyStrengths.at(i)));
        if (d->ui.lblFault->isHidden())
            d->describe();
        else
            d->showFault(d->fault);
    });
    if (mandatory) {
        setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::CustomizeWindowHint);
        ui.buttonBox->button(QDialogButtonBox::Cancel)->hide();
    }
}

QvelNewCertificateDlg::~QvelNewCertificateDlg() = default;

void QvelNewCertificateDlg::setCommonName(const QString& text)
{
    d->fill(Text::CommonName, text);
}

void QvelNewCertificateDlg::setOrganization(const QString& text)
{
    d->fill(Text::Organization, text);
}

void QvelNewCertificateDlg::setOrganizationUnit(const QString& text)
{
    d->fill(Text::OrganizationUnit, text);
}

void QvelNewCertificateDlg::setLocality(const QString& text)
{
    d->fill(Text::Locality, text);
}

void QvelNewCertificateDlg::setState(const QString& text)
{
    d->fill(Text::State, text);
}

void QvelNewCertificateDlg::setCountry(const QString& text)
{
    d->fill(Text::Country, text);
}

void QvelNewCertificateDlg::setURI(const QString& text)
{
    d->fill(Text::ApplicationUri, text);
}

void QvelNewCertificateDlg::setIP(const QString& text)
{
    d->fill(Text::IpAddress, text);
}

void QvelNewCertificateDlg::setDNS(const QString& text)
{
    d->fill(Text::DnsName, text);
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
        combo->addItem(strengthText(strength));
    setRSAKeyStrength(selected);
}

QList<int> QvelNewCertificateDlg::rsaKeyStrengths() const
{
    return d->keyStrengths;
}

void QvelNewCertificateDlg::setClockTolerance(int seconds)
{
    d->clockTolerance = qMax(0, seconds);
}

int QvelNewCertificateDlg::clockTolerance() const
{
    return d->clockTolerance;
}

QString QvelNewCertificateDlg::applicationUri() const
{
    return QString::fromLatin1(toUri(d->value(Text::ApplicationUri).bytes()));
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

void QvelNewCertificateDlg::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (d->fault != Text::None)
        d->field(d->fault).input->setFocus();
}

void QvelNewCertificateDlg::sltCreateCertificate()
{
    const Ui::NewCertificateDialog& ui = d->ui;
    UaPkiIdentity identity;
    identity.commonName = d->value(Text::CommonName);
    identity.organization = d->value(Text::Organization);
    identity.organizationUnit = d->value(Text::OrganizationUnit);
    identity.locality = d->value(Text::Locality);
    identity.state = d->value(Text::State);
    identity.country = d->value(Text::Country);
    UaPkiCertificateInfo info;
    info.applicationUri = d->value(Text::ApplicationUri);
    info.ipAddress = d->value(Text::IpAddress);
    info.dnsName = d->value(Text::DnsName);
    info.clockToleranceSeconds = d->clockTolerance;
    const int time = ui.cmbTime->currentIndex();
    if (time >= 0 && time < int(std::size(validities)))
        info.validitySeconds = validities[time];
    const int bits = d->keyStrengths.value(ui.cmbRSAKeyStrength->currentIndex(), 2048);

    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    d->keyPair = std::make_unique<UaPkiRsaKeyPair>(bits);
    d->certificate = std::make_unique<UaPkiCertificate>(info, identity, d->keyPair->publicKey(),
                                                        identity, d->keyPair->privateKey());
    QGuiApplication::restoreOverrideCursor();
    if (d->certificate->isNull())
        d->showFault(faultyText(info, identity));
    else
        ui.lblFault->hide();
}

void QvelNewCertificateDlg::sltCNChanged(QString)
{
    d->changed(Text::CommonName);
    validateSettings();
}

void QvelNewCertificateDlg::sltOChanged(QString)
{
    d->changed(Text::Organization);
    validateSettings();
}

void QvelNewCertificateDlg::sltOUChanged(QString text)
{
    d->ui.lblStatOU->setEnabled(!text.isEmpty());
    d->changed(Text::OrganizationUnit);
    validateSettings();
}

void QvelNewCertificateDlg::sltLChanged(QString)
{
    d->changed(Text::Locality);
    validateSettings();
}

void QvelNewCertificateDlg::sltSChanged(QString)
{
    d->changed(Text::State);
    validateSettings();
}

void QvelNewCertificateDlg::sltCChanged(QString)
{
    d->changed(Text::Country);
    validateSettings();
}

void QvelNewCertificateDlg::sltURIChanged(QString)
{
    d->changed(Text::ApplicationUri);
    d->ui.txtURI->setToolTip(shownToolTip(applicationUri()));
    validateSettings();
}

void QvelNewCertificateDlg::sltDNSChanged(QString)
{
    d->changedAlternative(Text::DnsName, Text::IpAddress);
    validateSettings();
}

void QvelNewCertificateDlg::sltIPChanged(QString)
{
    d->changedAlternative(Text::IpAddress, Text::DnsName);
    validateSettings();
}

void QvelNewCertificateDlg::validateSettings()
{
    bool acceptable = d->passwordValid && (d->given(Text::DnsName) || d->given(Text::IpAddress));
    for (const Text required : {Text::CommonName, Text::Organization, Text::Locality, Text::State,
                                Text::Country, Text::ApplicationUri})
        acceptable = acceptable && d->given(required);
    d->ui.buttonBox->button(QDialogButtonBox::Ok)->setEnabled(acceptable);
    d->describe();
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
    d->setStatus(d->fields[passwordField], longEnough);
    d->setStatus(d->fields[repeatField], repeated);
    d->passwordValid = longEnough && repeated;
    validateSettings();
}
