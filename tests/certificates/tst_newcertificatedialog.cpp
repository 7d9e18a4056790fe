#include "support/warnings.h"

#include <Kestrel/QvelNewCertificateDlg>
#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>

#include <QtCore/QTimer>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>

namespace {

/// A dialog and what a user sees of it.
struct Dialog : QvelNewCertificateDlg
{
    explicit Dialog(bool mandatory = false, bool passwordOption = true)
        : QvelNewCertificateDlg("Pump %1", "plant", mandatory, passwordOption, nullptr)
    {
    }

    template <class T>
    T* child(const char* name) const
    {
        T* found = findChild<T*>(name);
        if (!found)
            qFatal("There is no %s", name);
        return found;
    }
    QLineEdit* input(const char* name) const { return child<QLineEdit>(name); }
    QComboBox* combo(const char* name) const { return child<QComboBox>(name); }
    QPushButton* button(QDialogButtonBox::StandardButton which) const
    {
        return child<QDialogButtonBox>("buttonBox")->button(which);
    }
    bool acceptable() const { return button(QDialogButtonBox::Ok)->isEnabled(); }

    /// "on" or "off" as the icon, in brackets if greyed.
    QString status(const char* name) const
    {
        const auto* label = child<QLabel>(name);
        const auto image = [](const char* file) {
            return QIcon(QString(":/kestrel/images/%1.png").arg(file)).pixmap(16, 16).toImage();
        };
        const QPixmap pixmap = label->pixmap(Qt::ReturnByValue);
        const bool on = pixmap.toImage() == image("on");
        const bool off = pixmap.toImage() == image("clearlog");
        if (on == off || pixmap.deviceIndependentSize() != QSizeF(16, 16) ||
            label->accessibleName() != (on ? "Present and valid" : "Missing or invalid"))
            return QString("not shown well");
        const QString text(on ? "on" : "off");
        return label->isEnabled() ? text : '(' + text + ')';
    }

    void type(const char* name, const QString& text)
    {
        QLineEdit* edit = input(name);
        QTest::mouseClick(edit, Qt::LeftButton);
        QTest::keySequence(edit, QKeySequence::SelectAll);
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, text);
    }
    void fill()
    {
        type("txtOrganization", "Works");
        type("txtLocality", "Graz");
        type("txtState", "Styria");
        type("txtCountry", "AT");
    }
    /// Runs the dialog as its caller does, and presses `key` or OK.
    int run(Qt::Key key)
    {
        QTimer::singleShot(0, this, [this, key] {
            if (key == Qt::Key_Return)
                QTest::mouseClick(button(QDialogButtonBox::Ok), Qt::LeftButton);
            else
                QTest::keyClick(this, key);
        });
        return exec();
    }
};

const char* const passwordWidgets[] = {
    "chkPassword",       "txtPassword",     "txtPasswordRepeat",    "lblPassword",
    "lblPasswordRepeat", "lblStatPassword", "lblStatPasswordRepeat"};

} // namespace

class tst_NewCertificateDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }
    void form();
    void tabOrder();
    void newDialog();
    void requiredFields_data();
    void requiredFields();
    void names_data();
    void names();
    void passwords_data();
    void passwords();
    void passwordOption();
    void keyStrengths_data();
    void keyStrengths();
    void mandatory();
    void cancelled();
    void accepted_data();
    void accepted();
    void refusedAddress();
};

void tst_NewCertificateDialog::form()
{
    const Dialog dialog;
    QCOMPARE(dialog.windowTitle(), QString("New Application Instance Certificate"));
    QCOMPARE(dialog.size(), QSize(450, 539));
    const std::pair<const char*, const char*> labels[] = {
        {"label_3", "Common Name:"},
        {"label_4", "Organization:"},
        {"label_5", "Organization Unit:"},
        {"label_6", "Locality:"},
        {"label_7", "State:"},
        {"label_8", "Country:"},
        {"label_12", "(Two letter code e.g. DE, US, ...)"},
        {"label_9", "Application URI:"},
        {"label_10", "Domain Name:"},
        {"label_11", "IP Address (only if no DN is available)"},
        {"label_2", "RSA Key Strength:"},
        {"label", "Certificate Validity:"},
        {"lblPassword", "Password:"},
        {"lblPasswordRepeat", "Password (repeat):"},
    };
    for (const auto& [name, text] : labels) {
        const auto* label = dialog.child<QLabel>(name);
        QCOMPARE(label->text(), QString(text));
        QCOMPARE(label->buddy() != nullptr, qstrcmp(name, "label_12") != 0);
    }
    QCOMPARE(dialog.child<QGroupBox>("groupBox_2")->title(), QString("Subject:"));
    QCOMPARE(dialog.child<QGroupBox>("groupBox_3")->title(), QString("OPC UA Information"));
    QCOMPARE(dialog.child<QGroupBox>("groupBox_CertSettings")->title(),
             QString("Certificate Settings"));
    const auto* check = dialog.child<QCheckBox>("chkPassword");
    QCOMPARE(check->text(), QString("Password protect private key"));
    QCOMPARE(check->whatsThis(),
             QString("You can protect the access to your private key with a password. Enabling "
                     "this causes the kestrel to prompt you with a password dialog at startup."));
    QCOMPARE(dialog.input("txtPassword")->echoMode(), QLineEdit::Password);
    QCOMPARE(dialog.input("txtPasswordRepeat")->echoMode(), QLineEdit::Password);
    QCOMPARE(dialog.input("txtCountry")->maxLength(), 2);
}

void tst_NewCertificateDialog::tabOrder()
{
    Dialog dialog;
    dialog.child<QCheckBox>("chkPassword")->setChecked(true);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(dialog.focusWidget()->objectName(), QString("txtOrganization"));
    for (const char* next :
         {"txtOrganizationUnit", "txtLocality", "txtState", "txtCountry", "txtDNS", "txtIP",
          "cmbRSAKeyStrength", "cmbTime", "chkPassword", "txtPassword", "txtPasswordRepeat"}) {
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
        QCOMPARE(dialog.focusWidget()->objectName(), QString(next));
    }
}

void tst_NewCertificateDialog::newDialog()
{
    const Dialog dialog;
    const QString host = QSysInfo::machineHostName();
    QCOMPARE(dialog.input("txtCommonName")->text(), QString("Pump %1"));
    QCOMPARE(dialog.input("txtURI")->text(), "urn:" + host + ":plant:Pump %1");
    QVERIFY(!dialog.input("txtURI")->isEnabled());
    QCOMPARE(dialog.input("txtDNS")->text(), host);
    for (const char* name : {"lblStatCN", "lblStatURI", "lblStatDNS"})
        QCOMPARE(dialog.status(name), QString("on"));
    for (const char* name : {"lblStatO", "lblStatL", "lblStatS", "lblStatC"})
        QCOMPARE(dialog.status(name), QString("off"));
    for (const char* name : {"lblStatOU", "lblStatIP", "lblStatPassword", "lblStatPasswordRepeat"})
        QCOMPARE(dialog.status(name), QString("(off)"));
    QVERIFY(!dialog.acceptable());
    QCOMPARE(dialog.combo("cmbTime")->currentText(), QString("1 Year"));
    QVERIFY(!dialog.certificate());
    QVERIFY(!dialog.keyPair());
}

void tst_NewCertificateDialog::requiredFields_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QByteArray>("label");
    QTest::addColumn<QString>("emptyStatus");
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"txtCommonName", "lblStatCN", "off"},
        {"txtOrganization", "lblStatO", "off"},
        {"txtOrganizationUnit", "lblStatOU", "(off)"},
        {"txtLocality", "lblStatL", "off"},
        {"txtState", "lblStatS", "off"},
        {"txtCountry", "lblStatC", "off"},
    };
    for (const auto& [input, label, emptyStatus] : rows)
        QTest::newRow(input) << QByteArray(input) << QByteArray(label) << QString(emptyStatus);
}

void tst_NewCertificateDialog::requiredFields()
{
    QFETCH(QByteArray, input);
    QFETCH(QByteArray, label);
    QFETCH(QString, emptyStatus);
    Dialog dialog;
    dialog.fill();
    QVERIFY(dialog.acceptable());
    dialog.type(input, "xyz");
    QCOMPARE(dialog.status(label), QString("on"));
    QVERIFY(dialog.acceptable());
    dialog.type(input, "");
    QCOMPARE(dialog.status(label), emptyStatus);
    QCOMPARE(dialog.acceptable(), emptyStatus == "(off)");
    QCOMPARE(dialog.input(input)->accessibleDescription(), QString("Missing or invalid"));
}

void tst_NewCertificateDialog::names_data()
{
    QTest::addColumn<QString>("dns");
    QTest::addColumn<QString>("ip");
    QTest::addColumn<QStringList>("statuses");
    QTest::newRow("none") << ""
                          << "" << QStringList{"off", "off"};
    QTest::newRow("name") << "host"
                          << "" << QStringList{"on", "(off)"};
    QTest::newRow("address") << ""
                             << "::1" << QStringList{"(off)", "on"};
    QTest::newRow("both") << "host"
                          << "::1" << QStringList{"on", "on"};
}

void tst_NewCertificateDialog::names()
{
    QFETCH(QString, dns);
    QFETCH(QString, ip);
    // The last one that is typed must not matter.
    for (const bool dnsFirst : {true, false}) {
        Dialog dialog;
        dialog.fill();
        if (dnsFirst)
            dialog.type("txtDNS", dns);
        dialog.type("txtIP", "x");
        dialog.type("txtIP", ip);
        if (!dnsFirst)
            dialog.type("txtDNS", dns);
        QTEST((QStringList{dialog.status("lblStatDNS"), dialog.status("lblStatIP")}), "statuses");
        QCOMPARE(dialog.acceptable(), !dns.isEmpty() || !ip.isEmpty());
    }
    Dialog noUri;
    noUri.fill();
    noUri.setURI(QString());
    QCOMPARE(noUri.status("lblStatURI"), QString("off"));
    QVERIFY(!noUri.acceptable());
}

void tst_NewCertificateDialog::passwords_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("repeat");
    QTest::addColumn<QStringList>("statuses");
    QTest::newRow("empty") << ""
                           << "" << QStringList{"off", "on"};
    QTest::newRow("short") << "abc"
                           << "abc" << QStringList{"off", "on"};
    QTest::newRow("good") << "abcd"
                          << "abcd" << QStringList{"on", "on"};
    QTest::newRow("another") << "abcd"
                             << "abcD" << QStringList{"on", "off"};
    QTest::newRow("not repeated") << "abcd"
                                  << "" << QStringList{"on", "off"};
}

void tst_NewCertificateDialog::passwords()
{
    QFETCH(QString, password);
    QFETCH(QString, repeat);
    QFETCH(QStringList, statuses);
    Dialog dialog;
    dialog.fill();
    auto* check = dialog.child<QCheckBox>("chkPassword");
    QVERIFY(!dialog.input("txtPassword")->isEnabled());
    QTest::mouseClick(check, Qt::LeftButton, {}, QPoint(8, check->height() / 2));
    QVERIFY(check->isChecked());
    dialog.type("txtPassword", password);
    dialog.type("txtPasswordRepeat", repeat);
    QCOMPARE(
        (QStringList{dialog.status("lblStatPassword"), dialog.status("lblStatPasswordRepeat")}),
        statuses);
    QCOMPARE(dialog.acceptable(), statuses == QStringList({"on", "on"}));
    QCOMPARE(dialog.password(), password);
    QTest::mouseClick(check, Qt::LeftButton, {}, QPoint(8, check->height() / 2));
    QVERIFY(dialog.acceptable());
    QCOMPARE(dialog.password(), QString());
    QVERIFY(!dialog.input("txtPasswordRepeat")->isEnabled());
    QVERIFY(dialog.status("lblStatPassword").startsWith('('));
}

void tst_NewCertificateDialog::passwordOption()
{
    for (const bool offered : {true, false}) {
        Dialog dialog(false, offered);
        dialog.show();
        for (const char* name : passwordWidgets)
            QCOMPARE(dialog.child<QWidget>(name)->isVisible(), offered);
    }
}

void tst_NewCertificateDialog::keyStrengths_data()
{
    QTest::addColumn<QList<int>>("offer");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<int>("choice");
    QTest::addColumn<int>("index");
    const QStringList usual = {"1024 bits", "2048 bits"};
    QTest::newRow("default") << QList<int>() << usual << 0 << 0;
    QTest::newRow("second") << QList<int>() << usual << 2048 << 1;
    QTest::newRow("not offered") << QList<int>() << usual << 4096 << 0;
    QTest::newRow("larger ones") << QList<int>{2048, 3072, 4096}
                                 << QStringList{"2048 bits", "3072 bits", "4096 bits"} << 4096 << 2;
    QTest::newRow("out of bounds, twice") << QList<int>{-1, 1023, 4097, 1024, 4096, 1024}
                                          << QStringList{"1024 bits", "4096 bits"} << 4096 << 1;
    QTest::newRow("none that will do") << QList<int>{512, 8192} << usual << 2048 << 1;
}

void tst_NewCertificateDialog::keyStrengths()
{
    QFETCH(QList<int>, offer);
    QFETCH(int, choice);
    Dialog dialog;
    const auto* combo = dialog.combo("cmbRSAKeyStrength");
    const auto texts = [combo] {
        QStringList list;
        for (int i = 0; i < combo->count(); ++i)
            list.append(combo->itemText(i));
        return list;
    };
    if (!offer.isEmpty())
        dialog.setRSAKeyStrengths(offer);
    QTEST(texts(), "texts");
    dialog.setRSAKeyStrength(choice);
    QTEST(combo->currentIndex(), "index");

    // A selection that is still offered stays; an empty list is the default again.
    const QString selected = combo->currentText();
    dialog.setRSAKeyStrengths({1024, 3072, 2048, 4096});
    QCOMPARE(combo->currentText(), selected);
    dialog.setRSAKeyStrengths({});
    QCOMPARE(texts(), QStringList({"1024 bits", "2048 bits"}));
    QCOMPARE(combo->currentIndex(), selected == "2048 bits" ? 1 : 0);
}

void tst_NewCertificateDialog::mandatory()
{
    Dialog dialog(true);
    QCOMPARE(dialog.windowFlags() & (Qt::WindowCloseButtonHint | Qt::CustomizeWindowHint),
             Qt::CustomizeWindowHint);
    dialog.show();
    QVERIFY(!dialog.button(QDialogButtonBox::Cancel)->isVisible());
    QVERIFY(!dialog.close());
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QVERIFY(dialog.isVisible());
    dialog.fill();
    QTest::mouseClick(dialog.button(QDialogButtonBox::Ok), Qt::LeftButton);
    QVERIFY(!dialog.isVisible());
    QVERIFY(dialog.certificate());
}

void tst_NewCertificateDialog::cancelled()
{
    Dialog dialog;
    dialog.fill();
    QCOMPARE(dialog.run(Qt::Key_Escape), int(QDialog::Rejected));
    QVERIFY(!dialog.certificate());
    QVERIFY(!dialog.keyPair());
    dialog.show();
    QVERIFY(dialog.close());
}

void tst_NewCertificateDialog::accepted_data()
{
    QTest::addColumn<int>("time");
    QTest::addColumn<qint64>("seconds");
    const qint64 seconds[] = {3'600,      86'400,     604'800,     2'678'400,  31'536'000,
                              63'072'000, 94'608'000, 126'144'000, 157'680'000};
    const char* const texts[] = {"1 Hour",  "1 Day",   "1 Week",  "1 Month", "1 Year",
                                 "2 Years", "3 Years", "4 Years", "5 Years"};
    for (int i = 0; i < int(std::size(seconds)); ++i)
        QTest::newRow(texts[i]) << i << seconds[i];
}

void tst_NewCertificateDialog::accepted()
{
    QFETCH(int, time);
    QFETCH(qint64, seconds);
    Dialog dialog;
    dialog.fill();
    dialog.type("txtOrganizationUnit", "Pumps");
    dialog.setCommonName(QString::fromUtf8("W\xc3\xa4rter"));
    dialog.type("txtDNS", "control-room");
    dialog.type("txtIP", "192.0.2.1");
    dialog.combo("cmbTime")->setCurrentIndex(time);
    QCOMPARE(dialog.combo("cmbTime")->currentText(), QString(QTest::currentDataTag()));
    QCOMPARE(dialog.run(Qt::Key_Return), int(QDialog::Accepted));

    const UaPkiCertificate* certificate = dialog.certificate();
    QVERIFY(certificate && !certificate->isNull());
    for (const UaPkiIdentity& who : {certificate->subject(), certificate->issuer()}) {
        QCOMPARE(who.commonName.toUtf8(), "W\xc3\xa4rter");
        QCOMPARE(who.organization.toUtf8(), "Works");
        QCOMPARE(who.organizationUnit.toUtf8(), "Pumps");
        QCOMPARE(who.locality.toUtf8(), "Graz");
        QCOMPARE(who.state.toUtf8(), "Styria");
        QCOMPARE(who.country.toUtf8(), "AT");
    }
    QCOMPARE(QString(certificate->info().applicationUri.toUtf8()), dialog.input("txtURI")->text());
    QCOMPARE(certificate->info().dnsName.toUtf8(), "control-room");
    QCOMPARE(certificate->info().ipAddress.toUtf8(), "192.0.2.1");
    QCOMPARE(certificate->info().validitySeconds, seconds);
    QCOMPARE(certificate->publicKey().keySize(), 1024);
    QCOMPARE(dialog.keyPair()->publicKey().keySize(), 1024);
}

void tst_NewCertificateDialog::refusedAddress()
{
    Dialog dialog;
    dialog.fill();
    dialog.type("txtIP", "no address");
    dialog.setRSAKeyStrengths({2048, 1500});
    dialog.setRSAKeyStrength(1500);
    QCOMPARE(dialog.run(Qt::Key_Return), int(QDialog::Accepted));
    QVERIFY(dialog.certificate() && dialog.certificate()->isNull());
    QCOMPARE(dialog.keyPair()->publicKey().keySize(), 1500);
    // The next one is a new one.
    dialog.type("txtIP", "::1");
    QCOMPARE(dialog.run(Qt::Key_Return), int(QDialog::Accepted));
    QVERIFY(!dialog.certificate()->isNull());
}

QTEST_MAIN(tst_NewCertificateDialog)
#include "tst_newcertificatedialog.moc"
