// Certificates and keys as the openssl command sees them, and what it makes as we see it.

#include "support/store.h"
#include "support/warnings.h"

#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>

#include <csignal>
#include <sys/resource.h>

namespace {

const UaPkiRsaKeyPair& pair()
{
    static const UaPkiRsaKeyPair key(1024); // the quickest
    return key;
}

const UaPkiCertificateInfo fullInfo = {"urn:host:plant:Pump", "192.0.2.7,2001:db8::7",
                                       "pump-1.example, p_2, k\xc3\xb6ln.example"};
const UaPkiIdentity fullWho = {
    "Pumpenw\xc3\xa4rter", "Werke \xe6\xb0\xb4, GmbH", "Leitwarte", "Graz", "NRW", "DE"};

UaPkiCertificate selfSigned(const UaPkiCertificateInfo& info = fullInfo,
                            const UaPkiIdentity& who = fullWho)
{
    return UaPkiCertificate(info, who, pair().publicKey(), who, pair().privateKey());
}

QByteArray texts(const UaPkiCertificate& made)
{
    const UaPkiIdentity& who = made.subject();
    const UaPkiCertificateInfo& info = made.info();
    QByteArray all = QByteArray::number(made.publicKey().keySize());
    for (const UaString& text :
         {who.commonName, who.organization, who.organizationUnit, who.locality, who.state,
          who.country, info.applicationUri, info.dnsName, info.ipAddress})
        all += '|' + text.bytes();
    return all;
}

/// What the command writes; "failed: " before it if it does not end with 0.
QByteArray openssl(const QString& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.startCommand("openssl " + arguments);
    const bool ended = process.waitForFinished() && process.exitCode() == 0;
    return (ended ? "" : "failed: ") + process.readAll();
}

} // namespace

class tst_UaPki : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        failOnWarnings();
        m_store = std::make_unique<Store>();
        QDir::setCurrent(m_store->dir.path());
    }
    void cleanup() { QDir::setCurrent("/"); }
    void created();
    void refused();
    void written();
    void read();

private:
    std::unique_ptr<Store> m_store;
};

void tst_UaPki::created()
{
    constexpr qint64 second = 10'000'000; // ticks
    const UaPkiRsaKeyPair authority(1024);
    QVERIFY(authority.toPEMFile("ca.key"));
    openssl("req -x509 -new -key ca.key -subj /CN=Authority -out ca.pem "
            "-addext keyUsage=critical,keyCertSign");
    for (const int tolerance : {0, 100'000}) {
        const bool own = tolerance == 0; // self-signed
        UaPkiCertificateInfo info = fullInfo;
        info.clockToleranceSeconds = tolerance;
        const UaPkiCertificate made(info, fullWho, pair().publicKey(),
                                    own ? fullWho : UaPkiIdentity{"Authority", {}, {}, {}, {}, {}},
                                    (own ? pair() : authority).privateKey());
        QVERIFY(made.toDERFile("own.der"));
        QCOMPARE(
            openssl(own ? "verify -trusted own.der own.der" : "verify -trusted ca.pem own.der"),
            "own.der: OK\n");
        const QByteArray text = openssl("x509 -in own.der -noout -text -nameopt multiline");
        const QRegularExpression expected(
            "Version: 3 .*sha256WithRSA.*Subject:.*countryName\\s+= DE\n.*stateOrProvinceName\\s+="
            " NRW\n.*commonName\\s+= Pumpenw.*Alternative Name: \\s+URI:urn:host:plant:Pump, DNS:"
            "pump-1.example, DNS:p_2, DNS:xn--kln-sna.example, IP Address:192.0.2.7, IP Address:"
            "2001:DB8:0:0:0:0:0:7\n.*Constraints: critical\\s+CA:FALSE\n.*Key Usage: critical\\s+"
            "Digital Signature, Non Repudiation, Key Encipherment, Data Encipherment" +
                QString(own ? ", Certificate Sign" : "") +
                "\n.*Extended Key Usage: \\s+TLS Web Server Authentication, TLS Web Client Auth.*"
                "Subject Key Identifier.*Authority Key Identifier",
            QRegularExpression::DotMatchesEverythingOption);
        QVERIFY2(expected.match(text).hasMatch() && !text.contains("(Negative)"), text);

        const UaPkiCertificate read = UaPkiCertificate::fromDERFile("own.der");
        QCOMPARE(read.toDER(), made.toDER());
        QCOMPARE(texts(read), "1024|Pumpenw\xc3\xa4rter|Werke \xe6\xb0\xb4, GmbH|Leitwarte|Graz|NRW"
                              "|DE|urn:host:plant:Pump|pump-1.example, p_2, xn--kln-sna.example|"
                              "192.0.2.7, 2001:db8::7");
        QCOMPARE(read.issuer().country.bytes(), own ? "DE" : "");
        QCOMPARE(openssl("dgst -sha1 -r own.der").left(40), read.thumbprint().bytes().toHex());
        QVERIFY(read.serialNumber() != selfSigned().serialNumber());
        const qint64 from = read.validFrom().ticks(), to = read.validTo().ticks();
        QVERIFY(qAbs(UaDateTime::now().ticks() - from - tolerance * second) < 60 * second);
        QCOMPARE(to - from, (365 * 86400LL + tolerance) * second);
        QVERIFY(read.isValid() && read.isValid(read.validFrom()) && read.isValid(read.validTo()));
        QVERIFY(!read.isValid(UaDateTime(from - 1)) && !read.isValid(UaDateTime(to + 1)));
    }
}

// What cannot be in a certificate, and what becomes a URI.
void tst_UaPki::refused()
{
    const UaString zero(QByteArray("a\0b", 3));
    QList<UaPkiCertificate> all = {selfSigned({"u", {}, zero}), selfSigned({"u", {}, "a", 1, -1}),
                                   selfSigned({"u", {}, "a", 1, INT64_MAX}), selfSigned({})};
    for (const char* address :
         {"localhost", "127.1", "010.0.0.1", "fe80::1%eth0", "127.0.0.1, x", " "})
        all.append(selfSigned({"u", address, {}}));
    for (const char* domain : {"a b", " ,"})
        all.append(selfSigned({"u", {}, domain}));
    for (const OpcUa_Int64 seconds : {0LL, 8000LL * 366 * 86400, LLONG_MAX})
        all.append(selfSigned({"u", {}, "a", seconds}));
    for (const UaString& name : {UaString(), zero, UaString(QByteArray(65, 'x')), UaString("\xf6")})
        all.append(selfSigned(fullInfo, {name, {}, {}, {}, {}, "DE"}));
    for (const char* country : {"49", "DEU", "\xc3\x96"})
        all.append(selfSigned(fullInfo, {"x", {}, {}, {}, {}, country}));
    for (qsizetype i = 0; i < all.size(); ++i)
        QVERIFY2(all[i].isNull() && !all[i].isValid() && all[i].thumbprint().isNull() &&
                     all[i].publicKey().keySize() == 0 && !all[i].toDERFile("own.der"),
                 QByteArray::number(i));
    QVERIFY(UaPkiRsaKeyPair(1023).isNull() && UaPkiRsaKeyPair(4097).isNull());
    QVERIFY(!UaPkiRsaKeyPair().toPEMFile("key.pem") && m_store->files().isEmpty());

    const UaString rows[][2] = {
        {"urn:w\xc3\xb6rt My App:a%20b:100%:%4", "urn:w%C3%B6rt%20My%20App:a%20b:100%25:%254"},
        {"urn:a<b>\"{}|\\^`[]\n\x7f", "urn:a%3Cb%3E%22%7B%7D%7C%5C%5E%60%5B%5D%0A%7F"},
        {"http://[2001:db8::1]:80/a[1]?b=[", "http://[2001:db8::1]:80/a%5B1%5D?b=%5B"},
        {"urn:a-._~!$&'()*+,;=:@/?#f#g", "urn:a-._~!$&'()*+,;=:@/?#f%23g"}};
    for (const auto& [text, uri] : rows)
        for (const UaString& given : {text, uri}) // a URI stays
            QCOMPARE(selfSigned({given, {}, {}}).info().applicationUri.bytes(), uri.bytes());
}

void tst_UaPki::written()
{
    QVERIFY(QFile::link("file", "k\u00f6y.pem"));
    for (const char* password : {static_cast<const char*>(nullptr), "", "geheim w\xc3\xb6rt"}) {
        m_store->put("file", "readable by all");
        QVERIFY(pair().toPEMFile("k\u00f6y.pem", password));
        struct stat status = {};
        QCOMPARE(stat("file", &status), 0); // the link is still one
        QCOMPARE(status.st_mode & 0777, 0600u);
        const bool encrypted = password && *password;
        QCOMPARE(m_store->content("file").startsWith("-----BEGIN ENCRYPTED"), encrypted);
        m_store->put("password", QByteArray(password) + '\n');
        QVERIFY(selfSigned().toDERFile("own.der"));
        QCOMPARE(openssl("pkey -in file -passin file:password -pubout"),
                 openssl("x509 -in own.der -noout -pubkey"));
        QCOMPARE(openssl("pkey -in file -passin pass:no -noout").isEmpty(), !encrypted);
        QCOMPARE(m_store->files().size(), 4);
        for (const char* name : {"file", "own.der", "password"})
            QVERIFY(QFile::remove(name));
    }
    QVERIFY(QFile::remove("k\u00f6y.pem"));
    m_store->put("file", "old");
    rlimit before{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit full{100, before.rlim_max}; // as a disk that gets full half-way
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    for (const char* path : {"missing/file", "own", "/dev/full", "file/file", "file", ""}) {
        setrlimit(RLIMIT_FSIZE, &full);
        const bool written = selfSigned().toDERFile(path) || pair().toPEMFile(path);
        setrlimit(RLIMIT_FSIZE, &before);
        QVERIFY2(!written && !QFileInfo("/dev/full").isFile(), path);
        QCOMPARE(m_store->files().join(' ') + m_store->content("file"), "fileold");
    }
    std::signal(SIGXFSZ, handler);
}

// What others have made, and what is no certificate.
void tst_UaPki::read()
{
    const char* const rows[][2] = {
        {"ec -pkeyopt ec_paramgen_curve:prime256v1 -subj \"/C=AT/OU=North/OU=Pumps, old\"",
         "256|||North, Pumps, old|||AT|||"},
        {"rsa:1024 -utf8 -subj /CN=\xf0\x9f\x9a\xb0 -addext subjectAltName=DNS:a,URI:urn:1,"
         "IP:10.0.0.1,URI:urn:2,DNS:b,IP:::1,email:x@y",
         "1024|\xf0\x9f\x9a\xb0||||||urn:1|a, b|10.0.0.1, ::1"},
        // The addresses 10.0.0.1 and 1.2.3, the name "a", NUL, "b".
        {"rsa:1024 -subj /CN=x -addext subjectAltName=DER:301087040a00000187030102038203610062",
         "1024|x|||||||a\uFFFDb|10.0.0.1"},
        {"rsa:1024 -subj /CN=x -addext subjectAltName=DER:30ff", "1024|x||||||||"}};
    for (const auto& [arguments, expected] : rows) {
        openssl(QString("req -x509 -nodes -keyout key -out c.pem -newkey ") + arguments);
        openssl("x509 -in c.pem -outform DER -out c.der");
        m_store->put("all", "comment\n" + m_store->content("key") + m_store->content("c.pem"));
        QCOMPARE(texts(UaPkiCertificate::fromDERFile("c.der")), expected);
        QCOMPARE(texts(UaPkiCertificate::fromPEMFile("all")), expected);
    }

    const QByteArray der = selfSigned().toDER().bytes();
    const QByteArray begin = "-----BEGIN CERTIFICATE-----\n", end = "\n-----END CERTIFICATE-----\n";
    const QByteArray large(UaPkiCertificate::maxFileSize, ' ');
    QByteArrayList names = {"pipe", "/dev/zero", "", "missing", "own", {}};
    QCOMPARE(mkfifo("pipe", 0600), 0); // and no waiting for a writer
    for (const QByteArray& content :
         {QByteArray::fromHex("3084ffffffff3084ffffffff"), begin + der.toBase64(), der + large,
          begin + der.toBase64() + end + large,
          // OpenSSL by itself would ask at the terminal.
          begin +
              "Proc-Type: 4,ENCRYPTED\nDEK-Info: AES-128-CBC,00112233445566778899AABBCCDDEEFF"
              "\n\nAAAAAAAAAAAAAAAAAAAAAA==" +
              end}) {
        names.append(QByteArray::number(names.size()));
        m_store->put(names.last(), content);
    }
    for (const QByteArray& name : names)
        QVERIFY2(UaPkiCertificate::fromDERFile(name.data()).isNull() &&
                     UaPkiCertificate::fromPEMFile(name.data()).isNull(),
                 name);
    QVERIFY(UaPkiCertificate::fromPEMFile("c.der").isNull());
    QCOMPARE(UaPkiCertificate::fromDER(UaByteString(der + "rest")).toDER().bytes(), der);
    for (int i = 0; i < der.size(); ++i) {
        QVERIFY(UaPkiCertificate::fromDER(UaByteString(der.left(i))).isNull());
        QByteArray other = der;
        other[i] = char(~other[i]);
        texts(UaPkiCertificate::fromDER(UaByteString(other))); // whatever that is, it does no harm
    }
}

QTEST_GUILESS_MAIN(tst_UaPki)
#include "tst_uapki.moc"
