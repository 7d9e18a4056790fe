#include "discovery/endpoints.h"
#include "endpointdetails.h"
#include "support/warnings.h"

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

void setCertificate(Endpoint& endpoint, const QByteArray& der)
{
    OpcUa_ByteString_Assign(&endpoint.value.ServerCertificate, der.constData(),
                            OpcUa_Int32(der.size()));
}

QvelDiscoverySetting recordOf(const Endpoint& endpoint)
{
    QvelDiscoverySetting setting;
    setting.setEndpointDescription(&endpoint.value);
    return setting;
}

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
        m_details->setEndpoint(
            fullSetting(0, {OpcUa_UserTokenType_Anonymous, OpcUa_UserTokenType_UserName}));
        const QList<QPair<const char*, const char*>> fields = {
            {"server", "Pumpe Süd"},
            {"applicationUri", "urn:plant7:pump"},
            {"endpointUrl", "opc.tcp://plant7:4840"},
            {"securityMode", "Sign and encrypt"},
            {"securityPolicy", "http://opcfoundation.org/UA/SecurityPolicy#Basic256"},
            {"securityLevel", "200"},
            {"transportProfile", "urn:transport"}};
        for (const auto& [name, text] : fields)
            QCOMPARE(field(name), QString(text));
        QCOMPARE(
            tokens(),
            QString(
                "Anonymous \u2013 policy0 \u2013 uri0 \u2013 issued0 \u2013 issuer0\n"
                "User name and password \u2013 policy1 \u2013 uri1 \u2013 issued1 \u2013 issuer1"));
    }

    void showsCertificates_data()
    {
        QTest::addColumn<QByteArray>("der");
        QTest::addColumn<QString>("subject");
        QTest::addColumn<QString>("rest");
        const QByteArray good = QByteArray::fromBase64(certificate);
        const QString name = "CN=<b>Pump</b>, O=Plant";
        const QString rest = name + "Expired: 2020-01-01 00:00 to 2021-01-01 00:00 UTC"
                                    "7B 51 E2 A1 BC 66 15 C2 75 D1 29 40 68 51 F1 AE 3A 6E F5 9A";
        QTest::newRow("one") << good << name << rest;
        QTest::newRow("noise") << QByteArray("\x30\x82\xff\xff", 4)
                               << "Not a certificate (bytes: 4)"
                               << "";
        QTest::newRow("cut short") << good.left(200) << "Not a certificate (bytes: 200)"
                                   << "";
        QTest::newRow("chain") << good + good << name << rest;
        QTest::newRow("none") << QByteArray() << ""
                              << "";
    }
    // One after the other, none shines through.
    void showsCertificates()
    {
        QFETCH(QByteArray, der);
        Endpoint endpoint;
        setCertificate(endpoint, QByteArray::fromBase64(certificate));
        m_details->setEndpoint(recordOf(endpoint));
        setCertificate(endpoint, der);
        m_details->setEndpoint(recordOf(endpoint));
        QTEST(field("subject"), "subject");
        QTEST(field("issuer") + field("validity") + field("thumbprint"), "rest");
    }

    void usesTheEndpointThatThereIs()
    {
        QSignalSpy spy(m_details.get(), &EndpointDetails::useRequested);
        QvelDiscoverySetting record;
        record.setEndpointUrl("opc.tcp://plant");
        m_details->setEndpoint(record);
        QTest::mouseClick(use(), Qt::LeftButton);
        QCOMPARE(spy.size(), 1);
        m_details->setEndpoint(QvelDiscoverySetting());
        QVERIFY(!use()->isEnabled());
        for (const auto* edit : m_details->findChildren<QLineEdit*>())
            QVERIFY(edit->text().isEmpty() && edit->isReadOnly());
        QCOMPARE(tokens(), "");
    }

    void hostileTextsStayPlainAndBounded()
    {
        const QByteArray hostile =
            "<img src='file:///x'><h1>A</h1>\n\x1b[2J\xff\xe2\x80\xae" + QByteArray(1000000, 'x');
        Endpoint endpoint;
        OpcUa_EndpointDescription& value = endpoint.value;
        for (OpcUa_String* text :
             {&value.Server.ApplicationName.Text, &value.Server.ApplicationUri, &value.EndpointUrl,
              &value.SecurityPolicyUri, &value.TransportProfileUri})
            assign(*text, hostile);
        value.SecurityMode = OpcUa_MessageSecurityMode(4711);
        setTokens(value, QList<OpcUa_UserTokenType>(5000));
        assign(value.UserIdentityTokens[0].PolicyId, "<b>\n");
        value.UserIdentityTokens[0].TokenType = OpcUa_UserTokenType(4711);
        m_details->setEndpoint(recordOf(endpoint));

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
        QCOMPARE(
            lines.first(),
            QString(
                "Unknown token type 4711 \u2013 <b>  \u2013 uri0 \u2013 issued0 \u2013 issuer0"));
        QCOMPARE(lines.last(), "More: 4900");
        // Labels would render markup; none may carry what the server sent.
        for (const auto* label : m_details->findChildren<QLabel*>())
            QVERIFY(!label->text().contains('<'));
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
