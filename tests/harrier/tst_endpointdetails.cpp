#include "endpointdetails.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoverySetting>

#include <QtTest/QtTest>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>

namespace {

// Self-signed, CN=<b>Pump</b>, O=Plant, valid during the year 2020; made with openssl ca -selfsign.
const char certificate[] =
    "MIIBMzCB2gIBATAKBggqhkjOPQQDAjAmMRQwEgYDVQQDDAs8Yj5QdW1wPC9iPjEOMAwGA1UECgwFUGxh"
    "bnQwHhcNMjAwMTAxMDAwMDAwWhcNMjEwMTAxMDAwMDAwWjAmMRQwEgYDVQQDDAs8Yj5QdW1wPC9iPjEO"
    "MAwGA1UECgwFUGxhbnQwWTATBgcqhkjOPQIBBggqhkjOPQMBBwNCAATTPr+jmM4q+2zt9L0SOR0+gzjG"
    "YJOzZFdCfbd+HqjhMV38cKnNr4E/fuwthEk2wTwAlt1gsSQ2OoaGKqJZW3KKMAoGCCqGSM49BAMCA0gA"
    "MEUCICYCJ2eGpLy9YDfBQT6r34RdsiAhSQuDTUE9ApFXns/4AiEAk4VZWX4/2EW25PCbZxuEEj/plYiI"
    "wZodvTUmQScQ7nA=";

// An endpoint description that a test fills and hands to a record.
struct Endpoint : OpcUa_EndpointDescription
{
    Endpoint() { OpcUa_EndpointDescription_Initialize(this); }
    ~Endpoint() { OpcUa_EndpointDescription_Clear(this); }
    Q_DISABLE_COPY(Endpoint)

    static void set(OpcUa_String& target, const QByteArray& utf8)
    {
        OpcUa_String_Assign(&target, utf8.constData(), OpcUa_Int32(utf8.size()));
    }
    void setCertificate(const QByteArray& der)
    {
        OpcUa_ByteString_Assign(&ServerCertificate, der.constData(), OpcUa_Int32(der.size()));
    }
    void setTokens(int count)
    {
        const std::size_t bytes = std::size_t(count) * sizeof(OpcUa_UserTokenPolicy);
        UserIdentityTokens = static_cast<OpcUa_UserTokenPolicy*>(OpcUa_Memory_Alloc(bytes));
        NoOfUserIdentityTokens = count;
        for (int i = 0; i < count; ++i)
            OpcUa_UserTokenPolicy_Initialize(&UserIdentityTokens[i]);
    }
    QvelDiscoverySetting record() const
    {
        QvelDiscoverySetting setting;
        setting.setEndpointDescription(this);
        return setting;
    }
};

} // namespace

class EndpointDetailsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        failOnWarnings();
        m_details = std::make_unique<EndpointDetails>();
        m_details->show();
    }

    void showsTheDescription()
    {
        Endpoint endpoint;
        Endpoint::set(endpoint.Server.ApplicationName.Text, "Pump");
        Endpoint::set(endpoint.Server.ApplicationUri, "urn:plant:pump");
        Endpoint::set(endpoint.EndpointUrl, "opc.tcp://plant:4840");
        Endpoint::set(endpoint.SecurityPolicyUri, "http://example.org/Policy#None");
        Endpoint::set(endpoint.TransportProfileUri, "http://example.org/uatcp");
        endpoint.SecurityMode = OpcUa_MessageSecurityMode_SignAndEncrypt;
        endpoint.SecurityLevel = 200;
        endpoint.setTokens(2);
        endpoint.UserIdentityTokens[1].TokenType = OpcUa_UserTokenType_UserName;
        Endpoint::set(endpoint.UserIdentityTokens[1].PolicyId, "login");
        m_details->setEndpoint(endpoint.record());
        QCOMPARE(field("server"), "Pump");
        QCOMPARE(field("applicationUri"), "urn:plant:pump");
        QCOMPARE(field("endpointUrl"), "opc.tcp://plant:4840");
        QCOMPARE(field("securityPolicy"), "http://example.org/Policy#None");
        QCOMPARE(field("securityMode"), "Sign and encrypt");
        QCOMPARE(field("securityLevel"), "200");
        QCOMPARE(field("transportProfile"), "http://example.org/uatcp");
        QCOMPARE(tokens(), QStringLiteral("Anonymous\nUser name and password \u2013 login"));
    }

    void showsTheCertificate()
    {
        Endpoint endpoint;
        endpoint.setCertificate(QByteArray::fromBase64(certificate));
        m_details->setEndpoint(endpoint.record());
        QCOMPARE(field("subject"), "CN=<b>Pump</b>, O=Plant");
        QCOMPARE(field("issuer"), "CN=<b>Pump</b>, O=Plant");
        QCOMPARE(field("validity"), "Expired: 2020-01-01 00:00 to 2021-01-01 00:00 UTC");
        QCOMPARE(field("thumbprint"),
                 "7B 51 E2 A1 BC 66 15 C2 75 D1 29 40 68 51 F1 AE 3A 6E F5 9A");
    }

    void badCertificates_data()
    {
        QTest::addColumn<QByteArray>("der");
        QTest::addColumn<QString>("subject");
        const QByteArray good = QByteArray::fromBase64(certificate);
        QTest::newRow("none") << QByteArray() << "";
        QTest::newRow("noise") << QByteArray("\x30\x82\xff\xff", 4)
                               << "Not a certificate (bytes: 4)";
        QTest::newRow("cut short") << good.left(200) << "Not a certificate (bytes: 200)";
        QTest::newRow("zeros") << QByteArray(100000, '\0') << "Not a certificate (bytes: 100000)";
    }
    void badCertificates()
    {
        QFETCH(QByteArray, der);
        Endpoint endpoint;
        endpoint.setCertificate(QByteArray::fromBase64(certificate));
        m_details->setEndpoint(endpoint.record()); // must not shine through
        endpoint.setCertificate(der);
        m_details->setEndpoint(endpoint.record());
        QTEST(field("subject"), "subject");
        QCOMPARE(field("issuer") + field("validity") + field("thumbprint"), "");
    }

    void chainShowsItsFirstCertificate()
    {
        Endpoint endpoint;
        const QByteArray good = QByteArray::fromBase64(certificate);
        endpoint.setCertificate(good + good);
        m_details->setEndpoint(endpoint.record());
        QCOMPARE(field("subject"), "CN=<b>Pump</b>, O=Plant");
    }

    void hostileTextsStayPlainAndBounded()
    {
        const QByteArray hostile =
            "<img src='file:///x'><h1>A</h1>\n\x1b[2J\xff\xe2\x80\xae" + QByteArray(1000000, 'x');
        Endpoint endpoint;
        for (OpcUa_String* text :
             {&endpoint.Server.ApplicationName.Text, &endpoint.Server.ApplicationUri,
              &endpoint.EndpointUrl, &endpoint.SecurityPolicyUri, &endpoint.TransportProfileUri})
            Endpoint::set(*text, hostile);
        endpoint.SecurityMode = OpcUa_MessageSecurityMode(4711);
        endpoint.setTokens(5000);
        for (int i = 0; i < 5000; ++i)
            Endpoint::set(endpoint.UserIdentityTokens[i].PolicyId, "<b>\n");
        endpoint.UserIdentityTokens[0].TokenType = OpcUa_UserTokenType(4711);
        m_details->setEndpoint(endpoint.record());

        const QString start =
            QStringLiteral("<img src='file:///x'><h1>A</h1> \ufffd[2J\ufffd\ufffdxx");
        for (const char* name :
             {"server", "applicationUri", "endpointUrl", "securityPolicy", "transportProfile"}) {
            QVERIFY2(field(name).startsWith(start), name);
            QVERIFY2(field(name).size() <= 1000, name);
        }
        QCOMPARE(field("securityMode"), "Unknown mode 4711");
        const QStringList lines = tokens().split('\n');
        QCOMPARE(lines.size(), 101);
        QCOMPARE(lines.first(), QStringLiteral("Unknown token type 4711 \u2013 <b> "));
        QCOMPARE(lines.last(), "More: 4900");
        // Labels would render markup; none may carry what the server sent.
        for (const auto* label : m_details->findChildren<QLabel*>())
            QVERIFY(!label->text().contains('<'));
    }

    void emptiesWithoutAnEndpoint()
    {
        Endpoint endpoint;
        endpoint.setCertificate(QByteArray::fromBase64(certificate));
        m_details->setEndpoint(endpoint.record());
        m_details->setEndpoint(QvelDiscoverySetting());
        for (const auto* edit : m_details->findChildren<QLineEdit*>())
            QCOMPARE(edit->text(), "");
        QCOMPARE(tokens(), "");
        QVERIFY(!use()->isEnabled());
    }

    void asksToUseTheEndpoint()
    {
        QvelDiscoverySetting record;
        record.setEndpointUrl("opc.tcp://plant");
        m_details->setEndpoint(record);
        QSignalSpy spy(m_details.get(), &EndpointDetails::useRequested);
        QTest::mouseClick(use(), Qt::LeftButton);
        QCOMPARE(spy.size(), 1);
    }

    void cannotBeEdited()
    {
        QvelDiscoverySetting record;
        record.setEndpointUrl("opc.tcp://plant");
        m_details->setEndpoint(record);
        for (auto* edit : m_details->findChildren<QLineEdit*>()) {
            const QString before = edit->text();
            QTest::keyClicks(edit, "x");
            QCOMPARE(edit->text(), before);
        }
    }

private:
    QString field(const char* name) const
    {
        return m_details->findChild<QLineEdit*>(QLatin1String(name))->text();
    }
    QString tokens() const
    {
        return m_details->findChild<QPlainTextEdit*>("tokens")->toPlainText();
    }
    QPushButton* use() const { return m_details->findChild<QPushButton*>("use"); }

    std::unique_ptr<EndpointDetails> m_details;
};

QTEST_MAIN(EndpointDetailsTest)
#include "tst_endpointdetails.moc"
