// Certificates and keys as the openssl command sees them, what it makes as we see it, and whom we
// trust.

#include "support/store.h"
#include "support/warnings.h"

#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>
#include <Kestrel/UaPkiTrustStore>

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

// Peers of every kind, made by another program: name, issuer, days, and what differs.
const char makePki[] = R"(set -e
names="URI:urn:plant,DNS:Plant.example,IP:192.0.2.7"
usage="digitalSignature,nonRepudiation,keyEncipherment,dataEncipherment"
ca="basicConstraints=critical,CA:TRUE"
make() { # NAME ISSUER DAYS BITS EXTENSION...
    name=$1 issuer=$2 days=$3 bits=$4; shift 4
    : > $name.ext; for line; do echo "$line" >> $name.ext; done
    openssl req -new -newkey rsa:$bits -nodes -keyout $name.key -subj "/CN=$name" -out $name.csr
    if [ $name = $issuer ]; then by="-signkey $name.key"; else by="-CA $issuer.pem -CAkey $issuer.key"; fi
    openssl x509 -req -in $name.csr $by -days $days ${digest:--sha256} -set_serial $((serial += 1)) \
        -extfile $name.ext -out $name.pem
    openssl x509 -in $name.pem -outform DER -out $name.der
}
crl() { # ISSUER REVOKED DAYS
    printf '[ca]\ndefault_ca=s\n[s]\ndatabase=%s.txt\ndefault_md=sha256\n' $1 > $1.cnf
    : > $1.txt
    if [ $2 != none ]; then openssl ca -config $1.cnf -cert $1.pem -keyfile $1.key -revoke $2.pem; fi
    openssl ca -config $1.cnf -cert $1.pem -keyfile $1.key -gencrl -crlsec $3 -out $1.crl
}
serial=0
good="subjectAltName=$names"
make own own 100 2048 "$good" "keyUsage=$usage"
make small small 100 1024 "$good" "keyUsage=$usage"
digest=-sha1 make sha1 sha1 100 2048 "$good" "keyUsage=$usage"
make use use 100 2048 "$good" "keyUsage=digitalSignature" "extendedKeyUsage=clientAuth"
make root root 100 2048 "$ca"
make middle root 100 2048 "$ca"
make leaf middle 100 2048 "$good" "keyUsage=$usage"
make revoked middle 100 2048 "$good" "keyUsage=$usage"
make short short 100 2048 "$ca,pathlen:0"
make below short 100 2048 "$ca"
make deep below 100 2048 "$good"
make noca root 100 2048 "$good"
make byNoca noca 100 2048 "$good"
openssl req -x509 -newkey rsa:2048 -nodes -keyout fake.key -subj /CN=middle -days 9 -out fake.pem
openssl x509 -in fake.pem -outform DER -out fake.der
crl middle revoked 999999; crl root middle 1
cp own.pem own.crt
cat leaf.der middle.der root.der > sent.der
)";

} // namespace

class tst_UaPki : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QProcess shell;
        shell.setWorkingDirectory(m_pki.dir.path());
        shell.start("sh", {"-c", makePki});
        QVERIFY(shell.waitForFinished(60'000));
        QVERIFY2(shell.exitCode() == 0, shell.readAllStandardError());
    }
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

    void check()
    {
        // FOLDER/NAME of files
        const auto row = [this](const char* name, const QString& peer, const QStringList& files,
                                const char* findings, int days = 1,
                                const char* host = "plant.EXAMPLE.",
                                const char* uri = "urn:plant") {
            const Case here(name);
            const QTemporaryDir store;
            const QDir root(store.path());
            for (const QString& file : files) {
                QVERIFY(root.mkpath(file.section('/', 0, 0)));
                QVERIFY(QFile::copy(m_pki.path(file.section('/', 1)), root.filePath(file)));
            }
            const UaPkiTrustStore trust({root.filePath("trusted"), root.filePath("trustedCrl"),
                                         root.filePath("issuers"), root.filePath("issuersCrl"),
                                         root.filePath("rejected")});
            UaPkiExpectation expected;
            expected.hostName = host;
            expected.applicationUri = uri;
            constexpr qint64 ticksPerDay = 86'400ll * 10'000'000;
            expected.time = UaDateTime(UaDateTime::now().ticks() + days * ticksPerDay);
            const UaByteString der(m_pki.content(peer + ".der"));
            const UaPkiVerdict verdict = trust.check(der, expected);
            QStringList found;
            for (const UaPkiFinding& finding : verdict.findings) {
                found.append(QString(finding.status.toString().toUtf8()).remove("BadCertificate"));
                QVERIFY2(finding.text().endsWith('.') || finding.text().endsWith(')'),
                         qPrintable(finding.text()));
            }
            QCOMPARE(found.join(' '), findings);
            QCOMPARE(verdict.isTrusted(), found.isEmpty());
        };
        const QStringList chain{"trusted/leaf.der", "issuers/middle.der", "issuers/root.der"};
        row("trusted", "own", {"trusted/own.der"}, "");
        row("trusted as PEM", "own", {"trusted/own.crt"}, "");
        row("unknown", "own", {"trusted/leaf.der"}, "Untrusted");
        row("rejected is not trusted", "own", {"rejected/own.der"}, "Untrusted");
        row("by address", "own", {"trusted/own.der"}, "", 1, "192.0.2.7");
        row("several at once", "own", {}, "Untrusted TimeInvalid HostNameInvalid UriInvalid", 101,
            "other", "urn:other");
        row("not yet valid", "own", {"trusted/own.der"}, "TimeInvalid", -2);
        row("small key", "small", {"trusted/small.der"}, "PolicyCheckFailed");
        row("old digest", "sha1", {"trusted/sha1.der"}, "PolicyCheckFailed");
        row("other use", "use", {"trusted/use.der"}, "UseNotAllowed");
        row("trusted by an issuer", "leaf", {"issuers/middle.der", "trusted/root.der"}, "");
        row("complete, not trusted", "sent", {}, "Untrusted");
        row("chain from the peer", "sent", {"trusted/root.der"}, "");
        row("no issuer", "leaf", {"trusted/leaf.der"}, "ChainIncomplete");
        row("forged issuer", "leaf", {"trusted/fake.der"}, "Invalid Untrusted");
        row("issuer that may not", "byNoca", {"trusted/noca.der", "trusted/root.der"},
            "IssuerUseNotAllowed");
        row("path too long", "deep", {"trusted/short.der", "issuers/below.der"},
            "IssuerUseNotAllowed");
        row("issuer out of date", "leaf", chain, "TimeInvalid IssuerTimeInvalid IssuerTimeInvalid",
            101);
        row("revoked", "revoked",
            {"trusted/revoked.der", "issuers/middle.der", "issuers/root.der",
             "issuersCrl/middle.crl"},
            "Revoked");
        row("not revoked", "leaf", chain + QStringList{"trustedCrl/middle.crl"}, "");
        row("list out of date", "leaf", chain + QStringList{"trustedCrl/middle.crl"},
            "RevocationUnknown", 50);
        row("revoked issuer", "leaf", chain + QStringList{"issuersCrl/root.crl"}, "IssuerRevoked");
        row("damaged", "none", {}, "Invalid");
    }
    void filing()
    {
        const QTemporaryDir store;
        const QDir root(store.path());
        const UaPkiTrustStore trust(
            {root.filePath("trusted"), {}, {}, {}, root.filePath("rejected")});
        const UaByteString der(m_pki.content("own.der"));
        const UaPkiCertificate own = UaPkiCertificate::fromDER(der);
        const auto count = [&](const char* folder) {
            return QDir(root.filePath(folder)).entryList(QDir::Files).size();
        };
        QVERIFY(trust.reject(own));
        QVERIFY(trust.reject(own)); // twice is once
        QCOMPARE(count("rejected"), 1);
        QVERIFY(trust.trust(own));
        QCOMPARE(count("rejected"), 0);
        QVERIFY(trust.check(der, UaPkiExpectation()).isTrusted());
        QFile blocked(root.filePath("file"));
        QVERIFY(blocked.open(QIODevice::WriteOnly));
        QString reason;
        QVERIFY(!UaPkiTrustStore({{}, {}, {}, {}, blocked.fileName()}).reject(own, &reason));
        QVERIFY(reason.contains(blocked.fileName()));
        QCOMPARE(count("trusted"), 1);
    }

private:
    Store m_pki;
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
        {"rsa:1024 -subj /DC=plc17/CN=x -addext subjectAltName=DER:30ff", "1024|x||||||||"}};
    for (const auto& [arguments, expected] : rows) {
        openssl(QString("req -x509 -nodes -keyout key -out c.pem -newkey ") + arguments);
        openssl("x509 -in c.pem -outform DER -out c.der");
        m_store->put("all", "comment\n" + m_store->content("key") + m_store->content("c.pem"));
        QCOMPARE(texts(UaPkiCertificate::fromDERFile("c.der")), expected);
        QCOMPARE(texts(UaPkiCertificate::fromPEMFile("all")), expected);
    }
    QCOMPARE(UaPkiCertificate::fromDERFile("c.der").issuerText().bytes(), "CN=x, DC=plc17");

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
