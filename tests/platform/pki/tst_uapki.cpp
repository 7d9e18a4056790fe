// Certificates and keys as the openssl command sees them, and what it makes as we see it.

#include "support/warnings.h"

#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

constexpr qint64 second = 10'000'000; // ticks

const UaPkiRsaKeyPair& pair()
{
    static const UaPkiRsaKeyPair key(1024); // the quickest
    return key;
}

struct Contents
{
    UaPkiCertificateInfo info = {"urn:host:plant:Pump", "192.0.2.7,2001:db8::7",
                                 "pump-1.example, p_2, k\xc3\xb6ln.example"};
    UaPkiIdentity who = {
        "Pumpenw\xc3\xa4rter", "Werke \xe6\xb0\xb4, GmbH", "Leitwarte", "Graz", "NRW", "DE"};

    UaPkiCertificate selfSigned() const
    {
        return UaPkiCertificate(info, who, pair().publicKey(), who, pair().privateKey());
    }
};

QByteArray joined(const UaPkiIdentity& who)
{
    return QByteArrayList{
        who.commonName.bytes(), who.organization.bytes(), who.organizationUnit.bytes(),
        who.locality.bytes(),   who.state.bytes(),        who.country.bytes()}
        .join('|');
}

QByteArray joined(const UaPkiCertificateInfo& info)
{
    return QByteArrayList{info.applicationUri.bytes(), info.dnsName.bytes(), info.ipAddress.bytes()}
        .join('|');
}

} // namespace

class tst_UaPki : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        failOnWarnings();
        m_directory = std::make_unique<QTemporaryDir>();
    }
    void created_data();
    void created();
    void refused();
    void uris();
    void validity();
    void keyFiles();
    void failedWrites();
    void foreignCertificates();
    void unreadable();
    void damaged();

private:
    QString path(const QString& name) const { return m_directory->filePath(name); }
    QByteArray local(const QString& name) const { return QFile::encodeName(path(name)); }
    QStringList files() const
    {
        return QDir(path("")).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    }
    void write(const QString& name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write");
    }
    QByteArray content(const QString& name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
    }
    /// What the command writes; "failed: " before it if it does not end with 0.
    QByteArray openssl(const QString& arguments) const
    {
        QProcess process;
        process.setWorkingDirectory(path(""));
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.startCommand("openssl " + arguments);
        const bool ended = process.waitForFinished() && process.exitCode() == 0;
        return (ended ? QByteArray() : QByteArray("failed: ")) + process.readAll();
    }

    std::unique_ptr<QTemporaryDir> m_directory;
};

void tst_UaPki::created_data()
{
    QTest::addColumn<bool>("selfSigned");
    QTest::newRow("self-signed") << true;
    QTest::newRow("issued") << false;
}

void tst_UaPki::created()
{
    QFETCH(bool, selfSigned);
    const Contents given;
    const UaPkiRsaKeyPair authority(1024);
    const UaPkiIdentity issuer =
        selfSigned ? given.who : UaPkiIdentity{"Authority", {}, {}, {}, {}, {}};
    const UaPkiCertificate made(given.info, given.who, pair().publicKey(), issuer,
                                (selfSigned ? pair() : authority).privateKey());
    QVERIFY(made.toDERFile(local("own.der")) && authority.toPEMFile(local("ca.key")));
    const QString text = openssl("x509 -in own.der -noout -text -nameopt multiline,utf8,-esc_msb");
    for (const QByteArray& pattern : QByteArrayList{
             "Version: 3 ", "Signature Algorithm: sha256WithRSAEncryption",
             "X509v3 Basic Constraints: critical\\s+CA:FALSE",
             "X509v3 Key Usage: critical\\s+Digital Signature, Non Repudiation, Key Encipherment, "
             "Data Encipherment" +
                 QByteArray(selfSigned ? ", Certificate Sign\\n" : "\\n"),
             "X509v3 Extended Key Usage: \\s+TLS Web Server Authentication, TLS Web Client Auth",
             "Subject Alternative Name: \\s+URI:urn:host:plant:Pump, DNS:pump-1.example, DNS:p_2, "
             "DNS:xn--kln-sna.example, IP Address:192.0.2.7, IP Address:2001:DB8:0:0:0:0:0:7\\n",
             "X509v3 Subject Key Identifier", "X509v3 Authority Key Identifier",
             "countryName\\s+= DE\n.*stateOrProvinceName\\s+= NRW\n.*commonName\\s+= Pumpenw"})
        QVERIFY2(text.contains(
                     QRegularExpression(pattern, QRegularExpression::DotMatchesEverythingOption)),
                 (pattern + " is not in\n" + text.toUtf8()).constData());
    if (selfSigned)
        openssl("x509 -in own.der -out ca.pem");
    else
        openssl("req -x509 -new -key ca.key -subj /CN=Authority -out ca.pem "
                "-addext keyUsage=critical,keyCertSign");
    const QByteArray verified = openssl("verify -CAfile ca.pem own.der");
    QVERIFY2(verified == "own.der: OK\n", verified);

    const UaPkiCertificate read = UaPkiCertificate::fromDERFile(local("own.der"));
    QCOMPARE(read.toDER(), made.toDER());
    QCOMPARE(joined(read.subject()), joined(given.who));
    QCOMPARE(joined(read.issuer()), joined(issuer));
    QCOMPARE(joined(read.info()), "urn:host:plant:Pump|pump-1.example, p_2, xn--kln-sna.example|"
                                  "192.0.2.7, 2001:db8::7");
    QCOMPARE(read.publicKey().keySize(), 1024);
    QCOMPARE(openssl("dgst -sha1 -r own.der").left(40), read.thumbprint().bytes().toHex());
    QVERIFY(read.serialNumber().length() >= 8 && !text.contains("(Negative)"));
    QVERIFY(read.serialNumber() != given.selfSigned().serialNumber());
}

void tst_UaPki::refused()
{
    const UaString zero(QByteArray("a\0b", 3));
    const UaString whos[][2] = {{"49", "x"},       {"DEU", "x"},
                                {"\xc3\x96", "x"}, {"DE", {}},
                                {"DE", zero},      {"DE", UaString(QByteArray(65, 'x'))},
                                {"DE", "K\xf6ln"}};
    for (const auto& [country, name] : whos) {
        Contents changed;
        changed.who.country = country;
        changed.who.commonName = name;
        const UaPkiCertificate none = changed.selfSigned();
        QVERIFY2(none.isNull(), country.bytes() + ' ' + name.bytes());
        QVERIFY(!none.toDERFile(local("own.der")) && files().isEmpty() && !none.isValid());
        QVERIFY(none.thumbprint().isNull() && none.publicKey().keySize() == 0);
    }
    const UaPkiCertificateInfo infos[] = {{{}, {}, "a"},
                                          {"u", "localhost", {}},
                                          {"u", "127.1", {}},
                                          {"u", "010.0.0.1", {}},
                                          {"u", "fe80::1%eth0", {}},
                                          {"u", "127.0.0.1, x", {}},
                                          {"u", " ", {}},
                                          {"u", {}, "a b"},
                                          {"u", {}, " ,"},
                                          {"u", {}, zero},
                                          {"u", {}, "a", 0},
                                          {"u", {}, "a", 8000LL * 366 * 86400},
                                          {"u", {}, "a", INT64_MAX},
                                          {"u", {}, "a", 1, -1},
                                          {"u", {}, "a", 1, INT64_MAX}};
    for (const UaPkiCertificateInfo& info : infos)
        QVERIFY2(Contents{info}.selfSigned().isNull(), joined(info));
    QVERIFY(UaPkiRsaKeyPair(1023).isNull() && UaPkiRsaKeyPair(4097).isNull());
    QVERIFY(!UaPkiRsaKeyPair().toPEMFile(local("key.pem")));
}

void tst_UaPki::uris()
{
    const UaString rows[][2] = {
        {"urn:PC-1:kestrel:My App", "urn:PC-1:kestrel:My%20App"},
        {"urn:w\xc3\xb6rt:\xf0\x9f\x9a\xb0", "urn:w%C3%B6rt:%F0%9F%9A%B0"},
        {"urn:a%20b:100%:%4", "urn:a%20b:100%25:%254"},
        {"urn:a<b>\"{}|\\^`[]\n\x7f", "urn:a%3Cb%3E%22%7B%7D%7C%5C%5E%60%5B%5D%0A%7F"},
        {"http://[2001:db8::1]:80/a[1]?b=[", "http://[2001:db8::1]:80/a%5B1%5D?b=%5B"},
        {"urn:a-._~!$&'()*+,;=:@/?#f#g", "urn:a-._~!$&'()*+,;=:@/?#f%23g"}};
    for (const auto& [text, encoded] : rows) {
        const Contents given[] = {{{text, {}, {}}}, {{encoded, {}, {}}}};
        QCOMPARE(given[0].selfSigned().info().applicationUri.bytes(), encoded.bytes());
        QCOMPARE(given[1].selfSigned().info().applicationUri.bytes(), encoded.bytes()); // stays
    }
}

void tst_UaPki::validity()
{
    Contents given;
    for (const int tolerance : {0, 100'000}) {
        given.info.clockToleranceSeconds = tolerance;
        const UaPkiCertificate made = given.selfSigned();
        const qint64 from = made.validFrom().ticks();
        const qint64 to = made.validTo().ticks();
        const qint64 now = UaDateTime::now().ticks();
        QVERIFY(qAbs(now - from - tolerance * second) < 60 * second);
        QCOMPARE(to - from, (365 * 86400LL + tolerance) * second);
        QVERIFY(made.isValid() && made.isValid(made.validFrom()) && made.isValid(made.validTo()));
        QVERIFY(!made.isValid(UaDateTime(from - 1)) && !made.isValid(UaDateTime(to + 1)));
    }
}

void tst_UaPki::keyFiles()
{
    QVERIFY(Contents().selfSigned().toDERFile(local("own.der")));
    for (const char* password : {static_cast<const char*>(nullptr), "", "geheim w\xc3\xb6rt"}) {
        write("old.pem", "readable by all");
        QFile::link("old.pem", path("k\u00f6y.pem"));
        QVERIFY(pair().toPEMFile(local("k\u00f6y.pem"), password));
        struct stat status = {};
        QCOMPARE(stat(local("old.pem"), &status), 0); // the link is still one
        QCOMPARE(status.st_mode & 0777, 0600u);
        const bool encrypted = password && *password;
        QCOMPARE(content("old.pem").startsWith("-----BEGIN ENCRYPTED PRIVATE"), encrypted);
        write("password", QByteArray(password) + '\n');
        QCOMPARE(openssl("pkey -in old.pem -passin file:password -pubout"),
                 openssl("x509 -in own.der -noout -pubkey"));
        QCOMPARE(openssl("pkey -in old.pem -passin pass:no -noout").isEmpty(), !encrypted);
        QVERIFY(QFile::remove(path("old.pem")));
    }
    QCOMPARE(files(), QStringList({"own.der", "password"}));
}

void tst_UaPki::failedWrites()
{
    QVERIFY(QDir(path("")).mkdir("directory"));
    write("file", "old");
    const QDir here(path(""));
    for (const char* target : {"missing/file", "directory", "/dev/full", "file/file", "file"}) {
        const QByteArray name = QFile::encodeName(here.absoluteFilePath(target));
        rlimit before{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
        const auto handler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit full{100, before.rlim_max}; // as a disk that gets full half-way
        setrlimit(RLIMIT_FSIZE, &full);
        const bool written = Contents().selfSigned().toDERFile(name) || pair().toPEMFile(name);
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
        QVERIFY2(!written && !QFileInfo("/dev/full").isFile(), target);
        QCOMPARE(files(), QStringList({"directory", "file"}));
        QCOMPARE(content("file"), QByteArray("old"));
    }
    QVERIFY(!pair().toPEMFile("") && !pair().toPEMFile(nullptr));
}

void tst_UaPki::foreignCertificates()
{
    const char* const rows[][3] = {
        {"ec -pkeyopt ec_paramgen_curve:prime256v1 -subj /CN=Curve", "Curve|||||", "||"},
        {"rsa:1024 -subj \"/C=AT/O=Works/OU=North/OU=Pumps, old\"", "|Works|North, Pumps, old|||AT",
         "||"},
        {"rsa:1024 -utf8 -subj /CN=\xf0\x9f\x9a\xb0 -addext subjectAltName=DNS:a,URI:urn:1,"
         "IP:10.0.0.1,URI:urn:2,DNS:b,IP:::1,email:x@y",
         "\xf0\x9f\x9a\xb0|||||", "urn:1|a, b|10.0.0.1, ::1"},
        // The addresses 10.0.0.1 and 1.2.3, the name "a", NUL, "b".
        {"rsa:1024 -subj /CN=x -addext subjectAltName=DER:301087040a00000187030102038203610062",
         "x|||||", "|a\uFFFDb|10.0.0.1"},
        {"rsa:1024 -subj /CN=x -addext subjectAltName=DER:30ff", "x|||||", "||"}};
    for (const auto& [arguments, name, addresses] : rows) {
        const QString command = "req -x509 -nodes -keyout key -out c.pem -newkey ";
        const QByteArray made = openssl(command + arguments);
        QVERIFY2(!made.startsWith("failed"), made);
        openssl("x509 -in c.pem -outform DER -out c.der");
        write("chain.pem", "comment\n" + content("key") + content("c.pem") + content("c.pem"));
        const UaPkiCertificate der = UaPkiCertificate::fromDERFile(local("c.der"));
        QCOMPARE(joined(der.subject()), name);
        QCOMPARE(joined(der.info()), addresses);
        QCOMPARE(der.publicKey().keySize(), *arguments == 'r' ? 1024 : 256);
        QCOMPARE(UaPkiCertificate::fromPEMFile(local("chain.pem")).toDER(), der.toDER());
        QVERIFY(UaPkiCertificate::fromPEMFile(local("c.der")).isNull());
    }
}

void tst_UaPki::unreadable()
{
    const QByteArray der = Contents().selfSigned().toDER().bytes();
    const QByteArray begin = "-----BEGIN CERTIFICATE-----\n";
    const QByteArray end = "\n-----END CERTIFICATE-----\n";
    const QByteArray large(UaPkiCertificate::maxFileSize, ' ');
    const QByteArray contents[] = {
        "", QByteArray::fromHex("3084ffffffff3084ffffffff"), QByteArray(100'000, '\x30'),
        begin + der.toBase64(), der + large, begin + der.toBase64() + end + large,
        // OpenSSL by itself would ask at the terminal.
        begin +
            "Proc-Type: 4,ENCRYPTED\nDEK-Info: AES-128-CBC,00112233445566778899AABBCCDDEEFF\n\n"
            "AAAAAAAAAAAAAAAAAAAAAA==" +
            end};
    QByteArrayList names = {local("pipe"), "/dev/zero", "", local("missing"), local("."), {}};
    QCOMPARE(mkfifo(local("pipe"), 0600), 0); // and no waiting for a writer
    for (const QByteArray& content : contents) {
        names.append(local(QString::number(names.size())));
        write(QString::number(names.size() - 1), content);
    }
    for (const QByteArray& name : names) {
        QVERIFY2(UaPkiCertificate::fromDERFile(name.data()).isNull(), name);
        QVERIFY2(UaPkiCertificate::fromPEMFile(name.data()).isNull(), name);
    }
}

void tst_UaPki::damaged()
{
    const QByteArray der = Contents().selfSigned().toDER().bytes();
    QCOMPARE(UaPkiCertificate::fromDER(UaByteString(der + "rest")).toDER().bytes(), der);
    for (int i = 0; i < der.size(); ++i) {
        QVERIFY(UaPkiCertificate::fromDER(UaByteString(der.left(i))).isNull());
        QByteArray other = der;
        other[i] = char(~other[i]);
        const UaPkiCertificate read = UaPkiCertificate::fromDER(UaByteString(other));
        read.publicKey().keySize(); // whatever that is, it does no harm
        QVERIFY(read.info().dnsName.size() < der.size());
    }
}

QTEST_GUILESS_MAIN(tst_UaPki)
#include "tst_uapki.moc"
