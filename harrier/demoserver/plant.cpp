#include "plant.h"

#include "platform/types/uabytestring.h"
#include "selfsignedcertificate.h"

#include <future>
#include <new>

namespace {

enum Token : unsigned { Anonymous = 1, UserName = 2, Certificate = 4 };

struct EndpointRow
{
    const char* policy;
    OpcUa_MessageSecurityMode mode;
    unsigned tokens;
    OpcUa_Byte level;
};

struct ServerRow
{
    const char* id;
    const char* name;
    const char* product;
    OpcUa_ApplicationType type;
    std::vector<EndpointRow> endpoints;
};

constexpr char none[] = "None";
constexpr char basic256[] = "Basic256";
constexpr char basic256Sha256[] = "Basic256Sha256";
constexpr char aes128[] = "Aes128_Sha256_RsaOaep";
constexpr char aes256[] = "Aes256_Sha256_RsaPss";
constexpr auto modeNone = OpcUa_MessageSecurityMode_None;
constexpr auto sign = OpcUa_MessageSecurityMode_Sign;
constexpr auto encrypt = OpcUa_MessageSecurityMode_SignAndEncrypt;

const std::vector<ServerRow>& rows()
{
    static const std::vector<ServerRow> table = {
        {"discovery",
         "Plant discovery",
         "discovery",
         OpcUa_ApplicationType_DiscoveryServer,
         {{none, modeNone, 0, 0}}},
        {"boiler-house",
         "Boiler house",
         "controller",
         OpcUa_ApplicationType_Server,
         {{none, modeNone, Anonymous | UserName, 0},
          {basic256Sha256, sign, Anonymous | UserName | Certificate, 60},
          {basic256Sha256, encrypt, Anonymous | UserName | Certificate, 110},
          {aes256, encrypt, UserName | Certificate, 130}}},
        {"bottling-line",
         "Bottling line K\xc3\xb6ln",
         "controller",
         OpcUa_ApplicationType_Server,
         {{none, modeNone, Anonymous, 0},
          {basic256, sign, UserName, 10},
          {basic256, encrypt, UserName, 20},
          {basic256Sha256, encrypt, UserName | Certificate, 110}}},
        {"water-treatment",
         "Water treatment",
         "gateway",
         OpcUa_ApplicationType_ClientAndServer,
         {{aes128, sign, UserName, 50},
          {aes128, encrypt, UserName, 100},
          {aes256, sign, UserName | Certificate, 80},
          {aes256, encrypt, UserName | Certificate, 130}}},
        {"historian",
         "Historian",
         "historian",
         OpcUa_ApplicationType_Server,
         {{none, modeNone, Anonymous, 0},
          {basic256Sha256, sign, Certificate, 60},
          {basic256Sha256, encrypt, Certificate, 110},
          {aes128, sign, UserName, 50},
          {aes128, encrypt, UserName | Certificate, 100},
          {aes256, sign, UserName | Certificate, 80},
          {aes256, encrypt, Anonymous | Certificate, 130}}},
    };
    return table;
}

void assign(OpcUa_String& target, const QByteArray& text)
{
    if (OpcUa_IsNotGood(UaString(text).copyTo(&target)))
        throw std::bad_alloc();
}

/// Adds an empty element to an array of the stack.
template <class T>
T& append(OpcUa_Int32& count, T*& elements)
{
    elements =
        static_cast<T*>(OpcUa_Memory_ReAlloc(elements, (std::size_t(count) + 1) * sizeof(T)));
    return *new (elements + count++) T{};
}

QByteArray urlOf(quint16 port)
{
    return "opc.tcp://localhost:" + QByteArray::number(port);
}

QByteArray policyUri(const QByteArray& policy)
{
    return "http://opcfoundation.org/UA/SecurityPolicy#" + policy;
}

QByteArray applicationUri(const ServerRow& row)
{
    return QByteArray("urn:localhost:kestrel-demo:") + row.id;
}

void describeApplication(const ServerRow& row, quint16 port, OpcUa_ApplicationDescription& out)
{
    assign(out.ApplicationUri, applicationUri(row));
    assign(out.ProductUri, QByteArray("urn:kestrel-demo:") + row.product);
    assign(out.ApplicationName.Locale, "en");
    assign(out.ApplicationName.Text, row.name);
    out.ApplicationType = row.type;
    assign(append(out.NoOfDiscoveryUrls, out.DiscoveryUrls), urlOf(port));
}

void describeTokens(const EndpointRow& row, OpcUa_EndpointDescription& out)
{
    struct TokenRow
    {
        Token token;
        OpcUa_UserTokenType type;
        const char* name;
    };
    static constexpr TokenRow tokens[] = {
        {Anonymous, OpcUa_UserTokenType_Anonymous, "anonymous"},
        {UserName, OpcUa_UserTokenType_UserName, "username"},
        {Certificate, OpcUa_UserTokenType_Certificate, "certificate"},
    };
    for (const TokenRow& token : tokens) {
        if (!(row.tokens & token.token))
            continue;
        OpcUa_UserTokenPolicy& policy = append(out.NoOfUserIdentityTokens, out.UserIdentityTokens);
        // A secret is never sent in the clear: without a secure channel it has a policy of its own.
        const bool ownPolicy = row.mode == modeNone && token.token != Anonymous;
        assign(policy.PolicyId,
               ownPolicy ? QByteArray(token.name) + "-" + basic256Sha256 : QByteArray(token.name));
        policy.TokenType = token.type;
        if (ownPolicy)
            assign(policy.SecurityPolicyUri, policyUri(basic256Sha256));
    }
}

void describeEndpoints(const ServerRow& row, quint16 port, const QByteArray& certificate,
                       UaStackTypeArray<OpcUa_EndpointDescription>& out)
{
    out.resize(OpcUa_UInt32(row.endpoints.size()));
    for (OpcUa_UInt32 i = 0; i < out.length(); ++i) {
        const EndpointRow& from = row.endpoints[i];
        OpcUa_EndpointDescription& endpoint = out[i];
        assign(endpoint.EndpointUrl, urlOf(port));
        describeApplication(row, port, endpoint.Server);
        if (OpcUa_IsNotGood(UaByteString(certificate).copyTo(&endpoint.ServerCertificate)))
            throw std::bad_alloc();
        endpoint.SecurityMode = from.mode;
        assign(endpoint.SecurityPolicyUri, policyUri(from.policy));
        describeTokens(from, endpoint);
        assign(endpoint.TransportProfileUri,
               "http://opcfoundation.org/UA-Profile/Transport/uatcp-uasc-uabinary");
        endpoint.SecurityLevel = from.level;
    }
}

} // namespace

int plantSize()
{
    return int(rows().size());
}

QByteArray plantServerName(int index)
{
    return rows()[std::size_t(index)].name;
}

std::vector<ServerFacts> describePlant(const std::vector<quint16>& ports)
{
    std::vector<std::future<QByteArray>> certificates; // keys take long to make
    for (const ServerRow& row : rows())
        certificates.push_back(std::async(std::launch::async, makeSelfSignedCertificate,
                                          QByteArray(row.name), applicationUri(row)));
    std::vector<ServerFacts> plant(rows().size());
    UaStackTypeArray<OpcUa_ApplicationDescription>& all = plant.front().servers;
    all.resize(OpcUa_UInt32(plant.size()));
    for (std::size_t i = 0; i < plant.size(); ++i) {
        const ServerRow& row = rows()[i];
        describeApplication(row, ports[i], all[OpcUa_UInt32(i)]);
        if (i > 0) {
            plant[i].servers.resize(1);
            describeApplication(row, ports[i], plant[i].servers[0]);
        }
        const QByteArray certificate = certificates[i].get();
        if (certificate.isEmpty())
            return {};
        describeEndpoints(row, ports[i], certificate, plant[i].endpoints);
    }
    return plant;
}
