#include "endpointsettingswidget.h"

#include "base/ownmodal_p.h"
#include "base/retranslate_p.h"
#include "platform/stack/securitypolicies_p.h"
#include "ui_endpointsettingswidget.h"

#include <QtCore/QFileInfo>
#include <QtCore/QPointer>
#include <QtCore/QSignalBlocker>
#include <QtGui/QStandardItemModel>
#include <QtGui/QTextDocumentFragment>
#include <QtWidgets/QFileDialog>

#include <vector>

namespace {

const QStringList& defaultPolicies()
{
    static const QStringList uris = {
        QString::fromLatin1(securityPolicyNone),
        QStringLiteral("http://opcfoundation.org/UA/SecurityPolicy#Basic128Rsa15"),
        QStringLiteral("http://opcfoundation.org/UA/SecurityPolicy#Basic256"),
    };
    return uris;
}

QLatin1String standardPolicies()
{
    return QLatin1String(securityPolicyNone, qstrlen(securityPolicyNone) - qstrlen("None"));
}

QString shortPolicy(const QString& uri)
{
    return uri.startsWith(standardPolicies()) ? uri.mid(standardPolicies().size()) : uri;
}

QString wholePolicy(const QString& name)
{
    return name.isEmpty() || name.contains(u':') ? name : standardPolicies() + name;
}

QString shownPolicy(const QString& uri)
{
    const QString name = uri.mid(uri.indexOf(QLatin1Char('#')) + 1);
    return QCoreApplication::translate("EndpointSettingsWidget",
                                       (name.isEmpty() ? uri : name).toUtf8().constData());
}

} // namespace

class QvelEndpointSettingsWidget::Private
{
public:
    void enableMode(int index, bool enabled)
    {
        auto* model = qobject_cast<QStandardItemModel*>(ui.comboBox_SecurityMode->model());
        model->item(index)->setEnabled(enabled);
    }

    /// Lets the user pick a file for `field` and remembers its directory.
    static void browse(QWidget* parent, QLineEdit* field, QString& directory,
                       const QString& caption, const QString& filter)
    {
        const QString start =
            field->text().isEmpty() ? directory : QFileInfo(field->text()).absolutePath();
        auto* dialog = new QFileDialog(parent, caption, start, filter);
        dialog->setFileMode(QFileDialog::ExistingFile);
        const QString file = runFileDialog(dialog); // empty, too, if all this went meanwhile
        if (file.isEmpty())
            return;
        const QPointer<QWidget> self(parent);
        field->setText(file);
        if (self)
            directory = QFileInfo(file).absolutePath();
    }

    Ui::EndpointSettingsWidget ui;
    QString certificateDirectory;
    QString privateKeyDirectory;
    std::vector<std::unique_ptr<QLayoutItem>> takenStretches; // setupUi's own among them
};

QvelEndpointSettingsWidget::QvelEndpointSettingsWidget(QWidget* parent, Qt::WindowFlags f)
    : QWidget(parent, f), d(new Private)
{
    Ui::EndpointSettingsWidget& ui = d->ui;
    ui.setupUi(this);
    for (int i = 0; i < defaultPolicies().size(); ++i)
        ui.comboBox_SecurityPolicy->setItemData(i, defaultPolicies().at(i));
    retranslatedForm(this, [this] { d->ui.retranslateUi(this); });
    retranslated(this, [this] { // the form knows the default ones only
        QComboBox* policies = d->ui.comboBox_SecurityPolicy;
        for (int i = 0; i < policies->count(); ++i)
            policies->setItemText(i, shownPolicy(policies->itemData(i).toString()));
    });

    using Self = QvelEndpointSettingsWidget;
    connect(ui.lineEdit_EndpointUrl, &QLineEdit::textChanged, this, &Self::sltEndpointUrlChanged);
    connect(ui.comboBox_SecurityPolicy, &QComboBox::currentIndexChanged, this,
            &Self::sltSecurityPolicyChanged);
    connect(ui.comboBox_SecurityMode, &QComboBox::currentIndexChanged, this,
            &Self::sltSecurityModeChanged);
    connect(ui.lineEdit_SessionName, &QLineEdit::textChanged, this, &Self::sltSessionNameChanged);
    connect(ui.radioButton_Anonymous, &QAbstractButton::toggled, this, &Self::sltAnonymousToggled);
    connect(ui.radioButton_Username, &QAbstractButton::toggled, this, &Self::sltUsernameToggled);
    connect(ui.radioButton_Certificate, &QAbstractButton::toggled, this,
            &Self::sltCertificateToggled);
    connect(ui.lineEdit_UserName, &QLineEdit::textChanged, this, &Self::sltUserNameChanged);
    connect(ui.lineEdit_Password, &QLineEdit::textChanged, this, &Self::sltPasswordChanged);
    connect(ui.checkBox_StorePassword, &QAbstractButton::toggled, this,
            &Self::sltStorePasswordToggled);
    connect(ui.lineEdit_Certificate, &QLineEdit::textChanged, this, &Self::sltCertificateChanged);
    connect(ui.lineEdit_PrivateKey, &QLineEdit::textChanged, this, &Self::sltPrivateKeyChanged);
    connect(ui.toolButton_Certificate, &QAbstractButton::clicked, this,
            &Self::sltBrowseCertificateFile);
    connect(ui.toolButton_PrivateKey, &QAbstractButton::clicked, this,
            &Self::sltBrowsePrivateKeyFile);
    sltSecurityPolicyChanged(ui.comboBox_SecurityPolicy->currentIndex());
    retranslated(this, [this] {
        const auto all = findChildren<QWidget*>();
        for (QWidget* each : all) // a screen reader would read the tags, too
            if (const QString tip = each->toolTip(); Qt::mightBeRichText(tip))
                each->setAccessibleDescription(
                    QTextDocumentFragment::fromHtml(tip).toPlainText().simplified());
    });
}

QvelEndpointSettingsWidget::~QvelEndpointSettingsWidget() = default;

QString QvelEndpointSettingsWidget::endpointUrl() const
{
    return d->ui.lineEdit_EndpointUrl->text();
}

QString QvelEndpointSettingsWidget::securityPolicy() const
{
    return d->ui.comboBox_SecurityPolicy->currentData().toString();
}

OpcUa_MessageSecurityMode QvelEndpointSettingsWidget::securityMode() const
{
    return OpcUa_MessageSecurityMode(d->ui.comboBox_SecurityMode->currentIndex() + 1);
}

QString QvelEndpointSettingsWidget::sessionName() const
{
    return d->ui.lineEdit_SessionName->text();
}

OpcUa_UserTokenType QvelEndpointSettingsWidget::userTokenType() const
{
    if (d->ui.radioButton_Username->isChecked())
        return OpcUa_UserTokenType_UserName;
    if (d->ui.radioButton_Certificate->isChecked())
        return OpcUa_UserTokenType_Certificate;
    return OpcUa_UserTokenType_Anonymous;
}

QString QvelEndpointSettingsWidget::userName() const
{
    return d->ui.lineEdit_UserName->text();
}

QString QvelEndpointSettingsWidget::password() const
{
    return d->ui.lineEdit_Password->text();
}

bool QvelEndpointSettingsWidget::isStorePassword() const
{
    return d->ui.checkBox_StorePassword->isChecked();
}

QString QvelEndpointSettingsWidget::certificateFile() const
{
    return d->ui.lineEdit_Certificate->text();
}

QString QvelEndpointSettingsWidget::privateKeyFile() const
{
    return d->ui.lineEdit_PrivateKey->text();
}

QString QvelEndpointSettingsWidget::certificateFilePath() const
{
    return d->certificateDirectory;
}

QString QvelEndpointSettingsWidget::privateKeyFilePath() const
{
    return d->privateKeyDirectory;
}

QStringList QvelEndpointSettingsWidget::securityPolicies() const
{
    const QComboBox* combo = d->ui.comboBox_SecurityPolicy;
    QStringList uris;
    for (int i = 0; i < combo->count(); ++i)
        uris.append(combo->itemData(i).toString());
    return uris;
}

void QvelEndpointSettingsWidget::setEndpointUrl(const QString& url)
{
    if (url == endpointUrl())
        return; // the cursor stays where the user types
    const QPointer<QLineEdit> field = d->ui.lineEdit_EndpointUrl;
    field->setText(url);
    if (field)
        field->setCursorPosition(0); // a URL is known by its beginning
}

void QvelEndpointSettingsWidget::setSecurityPolicy(const QString& uri)
{
    const auto index = securityPolicies().indexOf(uri);
    if (index >= 0)
        d->ui.comboBox_SecurityPolicy->setCurrentIndex(int(index));
}

void QvelEndpointSettingsWidget::setSecurityMode(OpcUa_MessageSecurityMode mode)
{
    d->ui.comboBox_SecurityMode->setCurrentIndex(
        mode == OpcUa_MessageSecurityMode_Invalid ? 0 : int(mode) - 1);
}

void QvelEndpointSettingsWidget::setSessionName(const QString& name)
{
    d->ui.lineEdit_SessionName->setText(name);
}

void QvelEndpointSettingsWidget::setUserTokenType(OpcUa_UserTokenType type)
{
    switch (type) {
    case OpcUa_UserTokenType_Anonymous:
        d->ui.radioButton_Anonymous->setChecked(true);
        break;
    case OpcUa_UserTokenType_UserName:
        d->ui.radioButton_Username->setChecked(true);
        break;
    case OpcUa_UserTokenType_Certificate:
        d->ui.radioButton_Certificate->setChecked(true);
        break;
    case OpcUa_UserTokenType_IssuedToken:
        break;
    }
}

void QvelEndpointSettingsWidget::setUserName(const QString& name)
{
    d->ui.lineEdit_UserName->setText(name);
}

void QvelEndpointSettingsWidget::setPassword(const QString& password)
{
    d->ui.lineEdit_Password->setText(password);
}

void QvelEndpointSettingsWidget::setStorePassword(bool store)
{
    d->ui.checkBox_StorePassword->setChecked(store);
}

void QvelEndpointSettingsWidget::setCertificateFile(const QString& file)
{
    d->ui.lineEdit_Certificate->setText(file);
}

void QvelEndpointSettingsWidget::setPrivateKeyFile(const QString& file)
{
    d->ui.lineEdit_PrivateKey->setText(file);
}

void QvelEndpointSettingsWidget::setCertificateFilePath(const QString& directory)
{
    d->certificateDirectory = directory;
}

void QvelEndpointSettingsWidget::setPrivateKeyFilePath(const QString& directory)
{
    d->privateKeyDirectory = directory;
}

void QvelEndpointSettingsWidget::setSupportedUserTokenTypes(const QList<OpcUa_UserTokenType>& types)
{
    // The buttons exclude each other, so the last one that is checked here wins.
    const std::pair<QRadioButton*, OpcUa_UserTokenType> buttons[] = {
        {d->ui.radioButton_Certificate, OpcUa_UserTokenType_Certificate},
        {d->ui.radioButton_Username, OpcUa_UserTokenType_UserName},
        {d->ui.radioButton_Anonymous, OpcUa_UserTokenType_Anonymous},
    };
    for (const auto& [button, type] : buttons)
        button->setEnabled(types.isEmpty() || types.contains(type));
    if (types.isEmpty()) {
        d->ui.radioButton_Anonymous->setChecked(true);
        return;
    }
    for (const auto& [button, type] : buttons)
        button->setChecked(types.contains(type));
}

void QvelEndpointSettingsWidget::setVisibleGuiElements(QFlags<GuiElement> elements)
{
    d->ui.groupBox_ServerInformation->setVisible(elements.testFlag(ServerInformation));
    d->ui.groupBox_SecuritySettings->setVisible(elements.testFlag(SecuritySettings));
    d->ui.groupBox_AuthenticationSettings->setVisible(elements.testFlag(AuthenticationSettings));
    d->ui.groupBox_SessionSettings->setVisible(elements.testFlag(SessionSettings));
    d->ui.checkBox_StorePassword->setVisible(elements.testFlag(StorePasswordOption));

    QVBoxLayout* layout = d->ui.mainLayout;
    const int last = layout->count() - 1;
    const bool stretched = layout->itemAt(last)->spacerItem();
    if (elements.testFlag(BottomStretch) && !stretched)
        layout->addStretch(0);
    else if (!elements.testFlag(BottomStretch) && stretched)
        d->takenStretches.emplace_back(layout->takeAt(last));
    Q_EMIT visibleGuiElementsChanged();
}

QvelEndpointSettingsWidget::GuiElements QvelEndpointSettingsWidget::visibleGuiElements() const
{
    const QVBoxLayout* layout = d->ui.mainLayout;
    GuiElements elements;
    elements.setFlag(ServerInformation, !d->ui.groupBox_ServerInformation->isHidden());
    elements.setFlag(SecuritySettings, !d->ui.groupBox_SecuritySettings->isHidden());
    elements.setFlag(AuthenticationSettings, !d->ui.groupBox_AuthenticationSettings->isHidden());
    elements.setFlag(SessionSettings, !d->ui.groupBox_SessionSettings->isHidden());
    elements.setFlag(BottomStretch, layout->itemAt(layout->count() - 1)->spacerItem());
    elements.setFlag(StorePasswordOption, !d->ui.checkBox_StorePassword->isHidden());
    return elements;
}

void QvelEndpointSettingsWidget::setSecurityPolicies(const QStringList& uris)
{
    QStringList offered = {defaultPolicies().first()};
    for (const QString& uri : uris.isEmpty() ? defaultPolicies() : uris) {
        if (!uri.isEmpty() && !offered.contains(uri))
            offered.append(uri);
    }
    const QString current = securityPolicy();
    QComboBox* combo = d->ui.comboBox_SecurityPolicy;
    {
        const QSignalBlocker blocker(combo);
        combo->clear();
        for (const QString& uri : std::as_const(offered))
            combo->addItem(shownPolicy(uri), uri);
        combo->setCurrentIndex(qMax(0, int(offered.indexOf(current))));
    }
    const QPointer<QvelEndpointSettingsWidget> self(this);
    Q_EMIT securityPoliciesChanged();
    if (self && securityPolicy() != current)
        sltSecurityPolicyChanged(combo->currentIndex());
}

QString QvelEndpointSettingsWidget::policyNames() const
{
    QStringList names;
    for (const QString& uri : securityPolicies())
        names.append(shortPolicy(uri));
    return names.join(u'|');
}

void QvelEndpointSettingsWidget::setPolicyNames(const QString& names)
{
    QStringList uris;
    for (const QString& name : names.split(u'|'))
        uris.append(wholePolicy(name));
    setSecurityPolicies(names.isEmpty() ? QStringList() : uris);
}

QString QvelEndpointSettingsWidget::policyName() const
{
    return shortPolicy(securityPolicy());
}

void QvelEndpointSettingsWidget::setPolicyName(const QString& name)
{
    setSecurityPolicy(wholePolicy(name));
}

void QvelEndpointSettingsWidget::sltEndpointUrlChanged(QString text)
{
    Q_EMIT endpointUrlChanged(text);
    Q_EMIT serverConfigChanged();
}

void QvelEndpointSettingsWidget::sltSecurityPolicyChanged(int index)
{
    QComboBox* mode = d->ui.comboBox_SecurityMode;
    const bool secure = index != 0;
    d->enableMode(0, !secure);
    d->enableMode(1, secure);
    d->enableMode(2, secure);
    if (!secure)
        mode->setCurrentIndex(0);
    else if (mode->currentIndex() == 0)
        mode->setCurrentIndex(2);
    if (index >= 0)
        Q_EMIT securityPolicyChanged(d->ui.comboBox_SecurityPolicy->itemData(index).toString());
    Q_EMIT serverConfigChanged();
}

void QvelEndpointSettingsWidget::sltSecurityModeChanged(int index)
{
    if (index >= 0)
        Q_EMIT securityModeChanged(OpcUa_MessageSecurityMode(index + 1));
    Q_EMIT serverConfigChanged();
}

void QvelEndpointSettingsWidget::sltSessionNameChanged(QString text)
{
    Q_EMIT sessionNameChanged(text);
    Q_EMIT serverConfigChanged();
}

void QvelEndpointSettingsWidget::sltAnonymousToggled(bool on)
{
    if (!on)
        return;
    Q_EMIT userTokenTypeChanged(OpcUa_UserTokenType_Anonymous);
    Q_EMIT serverConfigChanged();
}

void QvelEndpointSettingsWidget::sltUsernameToggled(bool on)
{
    if (!on) {
        d->ui.lineEdit_Password->setEnabled(false);
        return;
    }
    Q_EMIT userTokenTypeChanged(OpcUa_UserTokenType_UserName);
    Q_EMIT serverConfigChanged();
    if (d->ui.checkBox_StorePassword->isChecked() || d->ui.checkBox_StorePassword->isHidden())
        d->ui.lineEdit_Password->setEnabled(true);
}

void QvelEndpointSettingsWidget::sltCertificateToggled(bool on)
{
    if (!on)
        return;
    Q_EMIT userTokenTypeChanged(OpcUa_UserTokenType_Certificate);
    Q_EMIT serverConfigChanged();
}

void QvelEndpointSettingsWidget::sltUserNameChanged(QString text)
{
    Q_EMIT userNameChanged(text);
    Q_EMIT serverConfigChanged();
}

void QvelEndpointSettingsWidget::sltPasswordChanged(QString text)
{
    Q_EMIT passwordChanged(text);
    Q_EMIT serverConfigChanged();
}

void QvelEndpointSettingsWidget::sltStorePasswordToggled(bool on)
{
    Q_EMIT storePasswordToggled(on);
    Q_EMIT serverConfigChanged();
    // The form itself enables the password with the check box, whoever the user is.
    if (on && !d->ui.radioButton_Username->isChecked())
        d->ui.lineEdit_Password->setEnabled(false);
}

void QvelEndpointSettingsWidget::sltCertificateChanged(QString text)
{
    Q_EMIT certificateFileChanged(text);
    Q_EMIT serverConfigChanged();
}

void QvelEndpointSettingsWidget::sltPrivateKeyChanged(QString text)
{
    Q_EMIT privateKeyFileChanged(text);
    Q_EMIT serverConfigChanged();
}

void QvelEndpointSettingsWidget::sltBrowseCertificateFile()
{
    Private::browse(this, d->ui.lineEdit_Certificate, d->certificateDirectory,
                    tr("Open Server Certificate"), tr("Certificate (*.der *.pem)"));
}

void QvelEndpointSettingsWidget::sltBrowsePrivateKeyFile()
{
    Private::browse(this, d->ui.lineEdit_PrivateKey, d->privateKeyDirectory, tr("Open Private Key"),
                    tr("Private Key (*.pem)"));
}
