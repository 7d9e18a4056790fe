#include "support/store.h"
#include "support/warnings.h"

#include <Kestrel/UaPkiTrustStore>

// Peers of every kind, made by another program: name, issuer, days, and what differs.
static const char makePki[] = R"(set -e
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

class TrustStoreTest : public QObject
{
    Q_OBJECT

private:
    Store m_pki;

private Q_SLOTS:
    void initTestCase()
    {
        QProcess shell;
        shell.setWorkingDirectory(m_pki.dir.path());
        shell.start("sh", {"-c", makePki});
        QVERIFY(shell.waitForFinished(60'000));
        QVERIFY2(shell.exitCode() == 0, shell.readAllStandardError());
    }

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
};

QTEST_GUILESS_MAIN(TrustStoreTest)
#include "tst_uapkitruststore.moc"
