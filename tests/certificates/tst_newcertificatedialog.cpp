#include "support/warnings.h"

#include <Kestrel/QvelNewCertificateDlg>
#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>

#include <QtWidgets/QtWidgets>

namespace {

// Inputs and the pictures beside them.
const char* const inputs[] = {"txtCommonName", "txtOrganization",  "txtOrganizationUnit",
                              "txtLocality",   "txtState",         "txtCountry",
                              "txtURI",        "txtDNS",           "txtIP",
                              "txtPassword",   "txtPasswordRepeat"};
const char* const pictures[] = {"lblStatCN",
                                "lblStatO",
                                "lblStatOU",
                                "lblStatL",
                                "lblStatS",
                                "lblStatC",
                                "lblStatURI",
                                "lblStatDNS",
                                "lblStatIP",
                                "lblStatPassword",
                                "lblStatPasswordRepeat"};
enum { CN, O, OU, L, S, C, URI, DNS, IP, Password, Repeat };

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
    QPushButton* button(QDialogButtonBox::StandardButton which) const
    {
        return child<QDialogButtonBox>("buttonBox")->button(which);
    }
    QLineEdit* input(int field) const { return child<QLineEdit>(inputs[field]); }
    QString text(int field) const { return input(field)->text(); }
    /// "on" or "off" as the picture, in brackets if greyed, and what a screen reader tells.
    QString status(int field) const
    {
        const auto* label = child<QLabel>(pictures[field]);
        const QIcon on(":/kestrel/images/on.png");
        const bool good = label->pixmap(Qt::ReturnByValue).toImage() == on.pixmap(16, 16).toImage();
        if (input(field)->accessibleDescription() != label->accessibleName())
            return "different descriptions";
        return QString(label->isEnabled() ? "%1 %2" : "(%1) %2")
            .arg(good ? "on" : "off", label->accessibleName());
    }
    void type(int field, const QString& text)
    {
        QTest::keyClick(input(field), Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(input(field), Qt::Key_Delete);
        QTest::keyClicks(input(field), text);
    }
    void fill()
    {
        for (const int field : {O, L, S})
            type(field, "Works");
        type(C, "AT");
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

} // namespace

class tst_NewCertificateDialog : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }
    void start();
    void fields();
    void keyStrengths();
    void closing();
    void accepted();
    void faults_data();
    void faults();
};

void tst_NewCertificateDialog::start()
{
    const Dialog dialog;
    QStringList texts = {dialog.windowTitle()};
    const auto all = dialog.findChildren<QWidget*>();
    for (const QWidget* widget : all)
        for (const char* property : {"text", "title"})
            if (!qobject_cast<const QLineEdit*>(widget) && widget->property(property).isValid())
                texts.append(widget->property(property).toString().remove('&'));
    texts.removeAll("");
    QCOMPARE(
        texts.join('|'),
        "New Application Instance Certificate|Subject:|Common Name:|Organization:|Organization "
        "Unit:|Locality:|State:|Country:|(Two letter code e.g. DE, US, ...)|OPC UA "
        "Information|Application URI:|Domain Name:|IP Address (only if no DN is available)|"
        "Certificate Settings|RSA Key Strength:|Certificate Validity:|Password protect private "
        "key|Password:|Password (repeat):|OK|Cancel");
    const QString host = QSysInfo::machineHostName();
    QCOMPARE(dialog.text(URI), "urn:" + host + ":plant:Pump %1");
    QCOMPARE(dialog.applicationUri(), "urn:" + host + ":plant:Pump%20%251");
    QCOMPARE(dialog.input(URI)->toolTip(), dialog.applicationUri());
    QCOMPARE(dialog.text(CN) + dialog.text(DNS), "Pump %1" + host);
    QCOMPARE(dialog.child<QComboBox>("cmbTime")->currentText(), QString("1 Year"));
    QVERIFY(!dialog.certificate() && !dialog.keyPair() && !dialog.input(URI)->isEnabled());
    QCOMPARE(dialog.focusWidget(), dialog.input(O));
    Dialog without(false, false);
    without.show();
    for (const char* name : {"chkPassword", "txtPassword", "txtPasswordRepeat", "lblPassword",
                             "lblPasswordRepeat", "lblStatPassword", "lblStatPasswordRepeat"})
        QVERIFY(!without.child<QWidget>(name)->isVisible());
}

// Whatever is typed in whatever order: what the pictures tell, and whether OK is there.
void tst_NewCertificateDialog::fields()
{
    Dialog dialog;
    auto* protect = dialog.child<QCheckBox>("chkPassword");
    QRandomGenerator random(1);
    for (int step = 0; step < 400; ++step) {
        const int field = random.bounded(Repeat + 2);
        const QString text = QStringList{"", "ab", "abc", "abcd", "ab d"}.at(random.bounded(5));
        if (field > Repeat)
            QTest::mouseClick(protect, Qt::LeftButton, {}, QPoint(8, protect->height() / 2));
        else if (field == URI)
            dialog.setURI(text);
        else
            dialog.type(field, text);

        bool acceptable = !dialog.text(DNS).isEmpty() || !dialog.text(IP).isEmpty();
        for (int i = CN; i <= Repeat; ++i) {
            const bool isPassword = i >= Password;
            const bool given = i == Password ? dialog.text(i).size() > 3
                               : i == Repeat ? dialog.text(i) == dialog.text(Password)
                                             : !dialog.text(i).isEmpty();
            const bool stoodFor = (i == DNS && !dialog.text(IP).isEmpty()) ||
                                  (i == IP && !dialog.text(DNS).isEmpty());
            const bool required = isPassword ? protect->isChecked() : i != OU && !stoodFor;
            const bool greyed = isPassword ? !required : !required && !given;
            QVERIFY(!isPassword || dialog.input(i)->isEnabled() == required);
            if (greyed)
                QVERIFY(dialog.status(i).endsWith("f) Not required") ||
                        (isPassword && dialog.status(i).endsWith(") Not required")));
            else
                QCOMPARE(dialog.status(i),
                         given ? "on Present and valid" : "off Missing or invalid");
            acceptable = acceptable && (given || !required || i == DNS || i == IP);
        }
        QCOMPARE(dialog.button(QDialogButtonBox::Ok)->isEnabled(), acceptable);
        QCOMPARE(dialog.password(), protect->isChecked() ? dialog.text(Password) : QString());
        QCOMPARE(dialog.input(URI)->toolTip(),
                 dialog.text(URI).replace("%1", "%251").replace(' ', "%20"));
    }
    QCOMPARE(dialog.input(C)->maxLength(), 2);
}

void tst_NewCertificateDialog::keyStrengths()
{
    Dialog dialog;
    const auto* combo = dialog.child<QComboBox>("cmbRSAKeyStrength");
    const auto offer = [combo] {
        QString texts;
        for (int i = 0; i < combo->count(); ++i)
            texts += combo->itemText(i).remove(" bits") + (i == combo->currentIndex() ? "! " : " ");
        return texts;
    };
    dialog.setRSAKeyStrength(2048);
    QCOMPARE(offer(), "1024 2048! ");
    dialog.setRSAKeyStrengths({4097, 3072, 2048, 1023, 2048});
    QCOMPARE(offer(), "3072 2048! "); // still offered, still selected
    dialog.setRSAKeyStrength(4096);
    QCOMPARE(offer(), "3072! 2048 ");
    dialog.setRSAKeyStrengths({512, 8192});
    QCOMPARE(offer(), "1024! 2048 ");
}

void tst_NewCertificateDialog::closing()
{
    Dialog dialog;
    dialog.fill();
    QCOMPARE(dialog.run(Qt::Key_Escape), int(QDialog::Rejected));
    QVERIFY(!dialog.certificate());
    dialog.show();
    QVERIFY(dialog.close());
    Dialog mandatory(true);
    mandatory.show();
    QVERIFY(!mandatory.button(QDialogButtonBox::Cancel)->isVisible() && !mandatory.close());
    QVERIFY(!mandatory.windowFlags().testFlag(Qt::WindowCloseButtonHint));
    QTest::keyClick(&mandatory, Qt::Key_Escape);
    QVERIFY(mandatory.isVisible());
    mandatory.fill();
    QTest::mouseClick(mandatory.button(QDialogButtonBox::Ok), Qt::LeftButton);
    QVERIFY(!mandatory.isVisible() && mandatory.certificate());
}

void tst_NewCertificateDialog::accepted()
{
    const QStringList times = {"1 Hour",  "1 Day",   "1 Week",  "1 Month", "1 Year",
                               "2 Years", "3 Years", "4 Years", "5 Years"};
    const int allHours[] = {1, 24, 168, 744, 8760, 17520, 26280, 35040, 43800};
    for (int time = 0; time < times.size(); ++time) {
        const int hours = allHours[time];
        Dialog dialog;
        for (int field = CN; field <= S; ++field)
            dialog.type(field, QString("text %1").arg(field));
        dialog.type(C, "ATX");
        dialog.type(IP, "192.0.2.1");
        dialog.child<QComboBox>("cmbTime")->setCurrentText(times.at(time));
        dialog.setRSAKeyStrengths({2048, 1024});
        dialog.setRSAKeyStrength(hours % 2 ? 2048 : 1024);
        dialog.setClockTolerance(hours == 24 ? 300 : hours == 1 ? -5 : 0);
        QCOMPARE(dialog.run(Qt::Key_Return), int(QDialog::Accepted));
        const UaPkiCertificate* made = dialog.certificate();
        for (const UaPkiIdentity& who : {made->subject(), made->issuer()}) {
            QCOMPARE(QByteArrayList({who.commonName.bytes(), who.organization.bytes(),
                                     who.organizationUnit.bytes(), who.locality.bytes(),
                                     who.state.bytes(), who.country.bytes()})
                         .join('|'),
                     "text 0|text 1|text 2|text 3|text 4|AT");
        }
        QCOMPARE(QString(made->info().applicationUri.toUtf8()), dialog.applicationUri());
        QCOMPARE(QString(made->info().dnsName.toUtf8()), dialog.text(DNS));
        QCOMPARE(made->info().ipAddress.toUtf8(), "192.0.2.1");
        QCOMPARE(made->info().validitySeconds, hours * 3600LL + (hours == 24 ? 300 : 0));
        QCOMPARE(made->publicKey().keySize(), hours % 2 ? 2048 : 1024);
        QCOMPARE(dialog.keyPair()->publicKey().keySize(), made->publicKey().keySize());
    }
}

void tst_NewCertificateDialog::faults_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("bad");
    QTest::addColumn<QString>("reason");
    const QString sixtyFour = "At most 64 characters.";
    QTest::newRow("name") << int(CN) << QString(65, 'x') << "Common Name: " + sixtyFour;
    QTest::newRow("unit") << int(OU) << QString(65, 'x') << "Organization Unit: " + sixtyFour;
    QTest::newRow("state") << int(S) << QString(129, 'x') << "State: At most 128 characters.";
    QTest::newRow("country") << int(C) << "49"
                             << "Country: Two letters from A to Z.";
    QTest::newRow("domain")
        << int(DNS) << "a b"
        << "Domain Name: Letters, digits and - . _ * only, with a comma between "
           "two names.";
    QTest::newRow("address") << int(IP) << "10.0.0.300"
                             << "IP Address (only if no DN is available) IPv4 or IPv6 addresses in "
                                "full, with a comma between two of them.";
}

void tst_NewCertificateDialog::faults()
{
    QFETCH(int, field);
    QFETCH(QString, bad);
    QFETCH(QString, reason);
    Dialog dialog;
    dialog.fill();
    const auto* message = dialog.child<QLabel>("lblFault");
    const QString good = dialog.text(field);
    dialog.type(field, bad);
    QCOMPARE(dialog.run(Qt::Key_Return), int(QDialog::Accepted));
    QVERIFY(dialog.certificate() && dialog.certificate()->isNull());
    // Shown again, it tells why, and takes the correction.
    QTimer::singleShot(0, &dialog, [&] {
        const auto end = qScopeGuard([&dialog] { dialog.hide(); }); // also after a failure
        QCOMPARE(dialog.text(field), bad);
        QCOMPARE(dialog.focusWidget(), dialog.input(field));
        QCOMPARE(message->text().section('\n', 1), reason);
        QVERIFY(message->isVisible() && reason.endsWith(dialog.input(field)->toolTip()));
        QCOMPARE(dialog.status(field), "off " + dialog.input(field)->toolTip());
        dialog.type(field, field == IP ? "::1" : good);
        QVERIFY(!message->isVisible() && dialog.input(field)->toolTip().isEmpty());
        QTest::mouseClick(dialog.button(QDialogButtonBox::Ok), Qt::LeftButton);
    });
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
    QVERIFY(!dialog.certificate()->isNull());
}

QTEST_MAIN(tst_NewCertificateDialog)
#include "tst_newcertificatedialog.moc"
