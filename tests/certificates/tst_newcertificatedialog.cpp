#include "support/warnings.h"

#include <Kestrel/QvelNewCertificateDlg>
#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>

#include <QtWidgets/QtWidgets>

#include <functional>

namespace {

// The fields, as inputs and as the pictures beside them are named.
enum { CN, O, OU, L, S, C, URI, DNS, IP, Password, Repeat };
const char* const inputs[] = {
    "CommonName", "Organization", "OrganizationUnit", "Locality",      "State", "Country", "URI",
    "DNS",        "IP",           "Password",         "PasswordRepeat"};
const char* const pictures[] = {
    "CN", "O", "OU", "L", "S", "C", "URI", "DNS", "IP", "Password", "PasswordRepeat"};

/// A dialog and what a user sees of it.
struct Dialog : QvelNewCertificateDlg
{
    explicit Dialog(bool mandatory = false, bool passwordOption = true)
        : QvelNewCertificateDlg("Pump %1", "plant", mandatory, passwordOption, nullptr)
    {
    }
    QPushButton* button(QDialogButtonBox::StandardButton which) const
    {
        return findChild<QDialogButtonBox*>()->button(which);
    }
    QComboBox* combo(const char* name) const { return findChild<QComboBox*>(name); }
    /// The selected text and all texts.
    QString choices(const char* name) const
    {
        QStringList texts;
        for (int i = 0; i < combo(name)->count(); ++i)
            texts.append(combo(name)->itemText(i));
        return combo(name)->currentText() + ": " + texts.join(", ");
    }
    QLineEdit* input(int field) const
    {
        return findChild<QLineEdit*>(QString("txt%1").arg(inputs[field]));
    }
    QString text(int field) const { return input(field)->text(); }
    /// "on" or "off" as the picture, in brackets if greyed, and what a screen reader tells.
    QString status(int field) const
    {
        const auto* label = findChild<QLabel*>(QString("lblStat%1").arg(pictures[field]));
        const QIcon on(":/kestrel/images/on.png");
        const bool good = label->pixmap(Qt::ReturnByValue).toImage() == on.pixmap(16, 16).toImage();
        if (input(field)->accessibleDescription() != label->accessibleName())
            return "different descriptions";
        return QString(label->isEnabled() ? "%1 %2" : "(%1) %2")
            .arg(good ? "on" : "off", label->accessibleName());
    }
    void type(int field, const QString& text) const
    {
        input(field)->selectAll();
        QTest::keyClick(input(field), Qt::Key_Delete);
        QTest::keyClicks(input(field), text);
    }
    void fill() const
    {
        for (const int field : {O, L, S, C})
            type(field, "AT");
    }
    void ok() const { QTest::mouseClick(button(QDialogButtonBox::Ok), Qt::LeftButton); }
    /// Runs the dialog as its caller does, until `act` is done.
    int run(const std::function<void()>& act)
    {
        QTimer::singleShot(0, this, [this, act] {
            act();
            hide();
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
    void closing();
    void accepted();
    void faults();
};

void tst_NewCertificateDialog::start()
{
    Dialog dialog;
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
    QCOMPARE(dialog.text(CN) + dialog.text(DNS), "Pump %1" + host);
    QCOMPARE(dialog.choices("cmbTime"),
             "1 Year: 1 Hour, 1 Day, 1 Week, 1 Month, 1 Year, 2 Years, 3 Years, 4 Years, 5 Years");
    QVERIFY(!dialog.certificate() && !dialog.keyPair() && !dialog.input(URI)->isEnabled());
    QCOMPARE(dialog.focusWidget(), dialog.input(O));
    Dialog without(false, false);
    without.show();
    for (const char* name : {"chkPassword", "txtPassword", "txtPasswordRepeat", "lblPassword",
                             "lblPasswordRepeat", "lblStatPassword", "lblStatPasswordRepeat"})
        QVERIFY(!without.findChild<QWidget*>(name)->isVisible());

    const auto offer = [&dialog] { return dialog.choices("cmbRSAKeyStrength").remove(" bits"); };
    dialog.setRSAKeyStrength(2048);
    QCOMPARE(offer(), "2048: 1024, 2048");
    dialog.setRSAKeyStrengths({4097, 3072, 2048, 1023, 2048});
    QCOMPARE(offer(), "2048: 3072, 2048"); // still offered, still selected
    dialog.setRSAKeyStrength(4096);
    QCOMPARE(offer(), "3072: 3072, 2048");
    dialog.setRSAKeyStrengths({512, 8192});
    QCOMPARE(offer(), "1024: 1024, 2048");
}

// Whatever is typed in whatever order: what the pictures tell, and whether OK is there.
void tst_NewCertificateDialog::fields()
{
    Dialog dialog;
    auto* protect = dialog.findChild<QCheckBox*>("chkPassword");
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
            QVERIFY(!isPassword || dialog.input(i)->isEnabled() == required);
            if (!required && (isPassword || !given))
                QCOMPARE(dialog.status(i).section(isPassword ? ") " : "(off) ", 1), "Not required");
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
}

void tst_NewCertificateDialog::closing()
{
    Dialog dialog;
    QCOMPARE(dialog.run([&] { QTest::keyClick(&dialog, Qt::Key_Escape); }), 0);
    dialog.show();
    QVERIFY(dialog.close() && !dialog.certificate());
    Dialog mandatory(true);
    mandatory.show();
    QVERIFY(!mandatory.button(QDialogButtonBox::Cancel)->isVisible() && !mandatory.close());
    QVERIFY(!mandatory.windowFlags().testFlag(Qt::WindowCloseButtonHint));
    QTest::keyClick(&mandatory, Qt::Key_Escape);
    QVERIFY(mandatory.isVisible());
    mandatory.fill();
    mandatory.ok();
    QVERIFY(!mandatory.isVisible() && mandatory.certificate());
}

void tst_NewCertificateDialog::accepted()
{
    const int allHours[] = {1, 24, 168, 744, 8760, 17520, 26280, 35040, 43800};
    for (int time = 0; time < int(std::size(allHours)); ++time) {
        const int hours = allHours[time];
        Dialog dialog;
        for (int field = CN; field <= S; ++field)
            dialog.type(field, QString("text %1").arg(field));
        dialog.type(C, "ATX");
        dialog.type(IP, "192.0.2.1");
        dialog.combo("cmbTime")->setCurrentIndex(time);
        const int bits = hours == 1 ? 2048 : 1024;
        dialog.setRSAKeyStrengths({2048, 1024});
        dialog.setRSAKeyStrength(bits);
        dialog.setClockTolerance(hours == 24 ? 300 : -5);
        QCOMPARE(dialog.run([&] { dialog.ok(); }), 1);
        const UaPkiCertificate* made = dialog.certificate();
        const UaPkiCertificateInfo& info = made->info();
        const UaPkiIdentity& who = made->subject();
        QByteArray texts;
        for (const UaString& text :
             {who.commonName, who.organization, who.organizationUnit, who.locality, who.state,
              who.country, info.ipAddress, info.dnsName, info.applicationUri})
            texts += text.bytes() + '|';
        QCOMPARE(texts,
                 "text 0|text 1|text 2|text 3|text 4|AT|192.0.2.1|" +
                     QString(dialog.text(DNS) + '|' + dialog.applicationUri() + '|').toUtf8());
        QVERIFY(made->issuer().commonName == who.commonName);
        QCOMPARE(info.validitySeconds, hours * 3600LL + (hours == 24 ? 300 : 0));
        QCOMPARE(made->publicKey().keySize(), bits);
        QCOMPARE(dialog.keyPair()->publicKey().keySize(), bits);
    }
}

void tst_NewCertificateDialog::faults()
{
    const std::tuple<int, QString, QString> rows[] = {
        {CN, QString(65, 'x'), "Common Name: At most 64 characters."},
        {OU, QString(65, 'x'), "Organization Unit: At most 64 characters."},
        {S, QString(129, 'x'), "State: At most 128 characters."},
        {C, "49", "Country: Two letters from A to Z."},
        {DNS, "a b",
         "Domain Name: Letters, digits and - . _ * only, with a comma between two names."},
        {IP, "10.0.0.300",
         "IP Address (only if no DN is available) IPv4 or IPv6 addresses in full, with a comma "
         "between two of them."}};
    for (const auto& [field, bad, reason] : rows) {
        Dialog dialog;
        dialog.fill();
        const auto* message = dialog.findChild<QLabel*>("lblFault");
        const QString good = field == IP ? "::1" : dialog.text(field);
        dialog.type(field, bad);
        QCOMPARE(dialog.run([&] { dialog.ok(); }), 1);
        QVERIFY(dialog.certificate() && dialog.certificate()->isNull());
        // Shown again, it tells why, and takes the correction.
        const auto correct = [&, faulty = field, text = bad, why = reason] {
            const QLineEdit* input = dialog.input(faulty);
            QCOMPARE(dialog.text(faulty), text);
            QCOMPARE(dialog.focusWidget(), input);
            QCOMPARE(message->text().section('\n', 1), why);
            QVERIFY(message->isVisible() && why.endsWith(input->toolTip()));
            QCOMPARE(dialog.status(faulty), "off " + input->toolTip());
            dialog.type(faulty, good);
            QVERIFY(!message->isVisible() && input->toolTip().isEmpty());
            dialog.ok();
        };
        QCOMPARE(dialog.run(correct), 1);
        QVERIFY(!dialog.certificate()->isNull());
    }
}

QTEST_MAIN(tst_NewCertificateDialog)
#include "tst_newcertificatedialog.moc"
