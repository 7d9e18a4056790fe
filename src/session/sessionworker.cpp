// The life of a session: from the look-up of the host to the activated session, and back after a
// connection was lost.

#include "session/session_p.h"
#include "sessionworker_p.h"

#include "discovery/stacktext_p.h"
#include "platform/pki/openssl_p.h"
#include "platform/pki/uapkitruststore.h"
#include "platform/wire/endpointurl_p.h"

#include <QtCore/QFile>
#include <QtCore/QRandomGenerator>

#include <algorithm>
#include <cmath>

using namespace UaWire;

namespace {

// OPC 10000-4, 5.6.2: what is sent, and the most that may come.
constexpr int nonceLength = 32;
constexpr int longestNonce = 128;
constexpr int firstPause = 500; // ms
constexpr int longestPause = 30'000;
constexpr int statisticsInterval = 1000; // ms
constexpr int closeTimeout = 1000;

struct Advice
{
    OpcUa_StatusCode status;
    const char* text;
};

// What to do about a failure, by its status.
constexpr Advice advices[] = {
    {OpcUa_BadTcpEndpointUrlInvalid,
     QT_TRANSLATE_NOOP("QvelSession", "Give a URL of the form opc.tcp://host:port.")},
    {OpcUa_BadCommunicationError,
     QT_TRANSLATE_NOOP("QvelSession", "Check the host's name and the network.")},
    {OpcUa_BadConnectionRejected,
     QT_TRANSLATE_NOOP("QvelSession", "Check that the server runs, and its port.")},
    {OpcUa_BadConnectionClosed,
     QT_TRANSLATE_NOOP("QvelSession",
                       "The server closed the connection: look into its log. It may not "
                       "trust this application's certificate.")},
    {OpcUa_BadTimeout,
     QT_TRANSLATE_NOOP("QvelSession",
                       "Check that the server can be reached and is not overloaded, or allow it "
                       "more time.")},
    {OpcUa_BadSecurityChecksFailed,
     QT_TRANSLATE_NOOP("QvelSession", "The server may not trust this application's certificate: "
                                      "trust it there, and connect again.")},
    {OpcUa_BadSecurityPolicyRejected,
     QT_TRANSLATE_NOOP("QvelSession", "Choose another security policy.")},
    {OpcUa_BadSecurityModeRejected,
     QT_TRANSLATE_NOOP("QvelSession", "Choose another message security mode.")},
    {OpcUa_BadCertificateUntrusted,
     QT_TRANSLATE_NOOP("QvelSession", "Trust the certificate, there where it was refused.")},
    {OpcUa_BadIdentityTokenRejected,
     QT_TRANSLATE_NOOP("QvelSession", "Check user name and password, or the user's certificate.")},
    {OpcUa_BadIdentityTokenInvalid,
     QT_TRANSLATE_NOOP("QvelSession", "Choose an identity that the server offers.")},
    {OpcUa_BadUserAccessDenied,
     QT_TRANSLATE_NOOP("QvelSession", "Check user name and password, and what the user may do.")},
    {OpcUa_BadTooManySessions,
     QT_TRANSLATE_NOOP("QvelSession",
                       "Close another session of the server, or wait until one ends.")},
};

const char* adviceFor(OpcUa_StatusCode status)
{
    const auto found = std::find_if(std::begin(advices), std::end(advices),
                                    [status](const Advice& a) { return a.status == status; });
    return found == std::end(advices)
               ? QT_TRANSLATE_NOOP("QvelSession", "Look into the server's log.")
               : found->text;
}

// Failures that another attempt would meet again.
bool isFinal(OpcUa_StatusCode status)
{
    constexpr OpcUa_StatusCode codes[] = {
        OpcUa_BadIdentityTokenRejected, OpcUa_BadIdentityTokenInvalid, OpcUa_BadUserAccessDenied,
        OpcUa_BadCertificateUntrusted, OpcUa_BadTcpEndpointUrlInvalid};
    return std::find(std::begin(codes), std::end(codes), status) != std::end(codes);
}

// Whatever else the server says, it is there, and it knows the session.
bool isSessionGone(OpcUa_StatusCode status)
{
    constexpr OpcUa_StatusCode codes[] = {OpcUa_BadSessionIdInvalid, OpcUa_BadSessionClosed,
                                          OpcUa_BadConnectionClosed};
    return std::find(std::begin(codes), std::end(codes), status) != std::end(codes);
}

const char* stepName(QvelSession::State state)
{
    switch (state) {
    case QvelSession::LookingUp:
        return QT_TRANSLATE_NOOP("QvelSession", "Looking up the host");
    case QvelSession::Connecting:
        return QT_TRANSLATE_NOOP("QvelSession", "Connecting");
    case QvelSession::OpeningChannel:
        return QT_TRANSLATE_NOOP("QvelSession", "Opening the secure channel");
    case QvelSession::Creating:
        return QT_TRANSLATE_NOOP("QvelSession", "Creating the session");
    case QvelSession::Activating:
        return QT_TRANSLATE_NOOP("QvelSession", "Activating the session");
    case QvelSession::Connected:
        return QT_TRANSLATE_NOOP("QvelSession", "Being connected");
    default:
        return QT_TRANSLATE_NOOP("QvelSession", "Preparing the connection");
    }
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(UaPkiCertificate::maxFileSize) : QByteArray();
}

QByteArray bytesOf(const OpcUa_String& text)
{
    return UaString(&text).bytes();
}
QByteArray bytesOf(const OpcUa_ByteString& bytes)
{
    return UaByteString(&bytes).bytes();
}

bool isNonce(const QByteArray& bytes)
{
    return bytes.size() >= nonceLength && bytes.size() <= longestNonce;
}
SessionText nonceAdvice()
{
    return {
        QT_TRANSLATE_NOOP("QvelSession", "The server's random number is too short, or too long.")};
}

QString hostOf(const QByteArray& url)
{
    const auto address = parseEndpointUrl(url);
    return address ? address->host : QString();
}

bool hasMode(const SecurityPolicy& policy, OpcUa_MessageSecurityMode mode)
{
    return policy.isSecure ? mode == OpcUa_MessageSecurityMode_Sign ||
                                 mode == OpcUa_MessageSecurityMode_SignAndEncrypt
                           : mode == OpcUa_MessageSecurityMode_None;
}

// An endpoint that CreateSession tells, which may lack its certificate, is the one that was
// announced, in what counts for security (OPC 10000-4, 5.6.2.2).
bool sameEndpoint(const OpcUa_EndpointDescription& a, const OpcUa_EndpointDescription& b)
{
    return OpcUa_String_Equal(&a.SecurityPolicyUri, &b.SecurityPolicyUri) &&
           a.SecurityMode == b.SecurityMode &&
           OpcUa_String_Equal(&a.Server.ApplicationUri, &b.Server.ApplicationUri) &&
           (!a.ServerCertificate.Data || leafCertificate(bytesOf(a.ServerCertificate)) ==
                                             leafCertificate(bytesOf(b.ServerCertificate)));
}

// The kind of security that an endpoint offers.
QByteArray securityOf(const OpcUa_EndpointDescription& endpoint)
{
    return bytesOf(endpoint.SecurityPolicyUri) + ' ' + QByteArray::number(endpoint.SecurityMode);
}

} // namespace

SessionWorker::SessionWorker(QvelSession& session, Mailbox& host)
    : m_session(session), m_host(host), m_mailbox(this), m_completions(host, this),
      m_subscriptions(std::make_unique<SessionSubscriptions>(*this)), m_reconnectTimer(this),
      m_keepAliveTimer(this), m_questionTimer(this), m_statisticsTimer(this)
{
    for (QTimer* timer : {&m_reconnectTimer, &m_keepAliveTimer, &m_questionTimer})
        timer->setSingleShot(true);
    connect(&m_reconnectTimer, &QTimer::timeout, this, &SessionWorker::begin);
    connect(&m_keepAliveTimer, &QTimer::timeout, this, &SessionWorker::keepAlive);
    connect(&m_questionTimer, &QTimer::timeout, this, [this] {
        fail(OpcUa_BadTimeout, {},
             {QT_TRANSLATE_NOOP("QvelSession", "Answer the question in time.")}, true);
    });
    connect(&m_statisticsTimer, &QTimer::timeout, this, &SessionWorker::tellStatistics);
}

SessionWorker::~SessionWorker()
{
    stop(OpcUa_BadShutdown);
}

void SessionWorker::log(const QString& text) const
{
    post([text](QvelSession& session) { Q_EMIT session.logMessage(text); });
}

void SessionWorker::setState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    SessionHost::tellState(*this, state);
}

const SecurityPolicy* SessionWorker::policy() const
{
    return securityPolicy(bytesOf(endpoint().SecurityPolicyUri));
}

int SessionWorker::timeLeft() const
{
    return std::max(1, m_options.connectTimeout - int(m_connectClock.elapsed()));
}

void SessionWorker::connectToServer(const QvelDiscoverySetting& setting, const Secret& password,
                                    const QvelSessionOptions& options)
{
    stop();
    m_closing = nullptr;
    m_options = options;
    m_wanted = setting;
    m_password = password;
    m_keyPassword.wipe();
    m_keyPasswordGiven = false;
    m_endpointKnown = false;
    m_lasted = false;
    m_attempts = 0;
    m_statistics = {};
    m_acceptedCertificate.clear();
    m_announced.clear();
    m_statisticsTimer.start(statisticsInterval);
    begin();
}

// Also once more, after a pause.
void SessionWorker::begin()
{
    dropConnection();
    m_connectClock.start();
    m_usedUrl = m_wanted.endpointUrl().trimmed().toUtf8();
    setState(State::LookingUp);
    if (m_endpointKnown) {
        if (!m_options.allowsOtherUrl)
            m_usedUrl = bytesOf(endpoint().EndpointUrl);
    } else {
        m_setting = m_wanted;
        const bool hasCertificate = endpoint().ServerCertificate.Data != nullptr;
        const bool isSecure = policy() && policy()->isSecure;
        m_endpointKnown = policy() && endpoint().NoOfUserIdentityTokens > 0 &&
                          endpoint().UserIdentityTokens && (hasCertificate || !isSecure);
    }
    m_step = QT_TRANSLATE_NOOP("QvelSession", "Preparing the identity");
    if (!loadUserIdentity() || (policy() && policy()->isSecure && !loadApplicationIdentity()))
        return;
    if (m_endpointKnown)
        checkServer();
    else
        askEndpoints();
}

void SessionWorker::useConnection(const QByteArray& url, const SecureChannel::Settings& settings)
{
    m_step = nullptr;
    setState(State::LookingUp);
    m_connection = std::make_unique<SessionConnection>();
    connect(m_connection.get(), &SessionConnection::hostFound, this,
            [this] { setState(State::Connecting); });
    connect(m_connection.get(), &SessionConnection::connected, this,
            [this] { setState(State::OpeningChannel); });
    connect(m_connection.get(), &SessionConnection::allAnswered, this, &SessionWorker::handOut);
    connect(m_connection.get(), &SessionConnection::closed, this,
            [this](OpcUa_StatusCode status, const UaString& reason) { fail(status, reason); });
    m_connection->open(url, settings, timeLeft());
}

SessionConnection* SessionWorker::dropConnection(bool isKept)
{
    m_completions.handOut();
    if (!m_connection)
        return nullptr;
    m_statistics.requests += m_connection->requests();
    m_statistics.bytesSent += m_connection->bytesSent();
    m_statistics.bytesReceived += m_connection->bytesReceived();
    m_statistics.tokenRenewals += m_connection->renewals();
    m_connection->disconnect(this);
    // It may be signalling just now; at the latest it goes with the worker, and its calls with it.
    m_connection->setParent(this);
    if (!isKept)
        m_connection->deleteLater();
    return m_connection.release();
}

void SessionWorker::askEndpoints()
{
    SecureChannel::Settings settings;
    settings.endpointUrl = m_usedUrl;
    useConnection(m_usedUrl, settings);
    connect(m_connection.get(), &SessionConnection::opened, this, [this] {
        GetEndpointsRequest request;
        request.endpointUrl = UaString(m_usedUrl);
        // Outside a session, whether there is one or not.
        const UaNodeId token = std::exchange(m_authenticationToken, UaNodeId());
        step<GetEndpointsResponse>(request, timeLeft(),
                                   [this](OpcUa_StatusCode status, GetEndpointsResponse& response) {
                                       if (OpcUa_IsBad(status))
                                           return fail(status, reasonOf(response.header));
                                       takeEndpoints(response.endpoints);
                                   });
        m_authenticationToken = token;
    });
}

// The one that was asked for, or the best one.
void SessionWorker::takeEndpoints(UaStackTypeArray<OpcUa_EndpointDescription>& endpoints)
{
    const QByteArray wantedPolicy = m_wanted.securityPolicy().toUtf8();
    const OpcUa_MessageSecurityMode mode = m_wanted.messageSecurityMode();
    const bool hasCertificate = !m_options.certificateFile.isEmpty();
    m_announced.clear();
    const OpcUa_EndpointDescription* best = nullptr;
    const auto rank = [this](const OpcUa_EndpointDescription& e) {
        const SecurityPolicy* p = securityPolicy(bytesOf(e.SecurityPolicyUri));
        const auto place = securityPolicies().size() - securityPolicies().indexOf(p);
        return std::make_tuple(!p->isOld, e.SecurityMode, e.SecurityLevel, place,
                               hostOf(bytesOf(e.EndpointUrl)) == hostOf(m_usedUrl));
    };
    for (const OpcUa_EndpointDescription& e : endpoints) {
        m_announced.insert(securityOf(e));
        const QByteArray uri = bytesOf(e.SecurityPolicyUri);
        const SecurityPolicy* p = securityPolicy(uri);
        if (!p || (!wantedPolicy.isEmpty() && uri != wantedPolicy) ||
            (mode != OpcUa_MessageSecurityMode_Invalid && e.SecurityMode != mode) ||
            !hasMode(*p, e.SecurityMode) ||
            (wantedPolicy.isEmpty() && p->isSecure && !hasCertificate) ||
            !bytesOf(e.EndpointUrl).toLower().startsWith("opc.tcp:"))
            continue;
        if (!best || rank(e) > rank(*best))
            best = &e;
    }
    if (!best)
        return fail(OpcUa_BadSecurityPolicyRejected, {},
                    {QT_TRANSLATE_NOOP("QvelSession",
                                       "The server offers no endpoint with this security: choose "
                                       "another policy or mode.")},
                    true);
    m_setting.setEndpointDescription(best);
    m_setting.setDisplayName(m_wanted.displayName());
    if (!m_options.allowsOtherUrl)
        m_usedUrl = bytesOf(best->EndpointUrl);
    m_endpointKnown = true;
    dropConnection();
    checkServer();
}

bool SessionWorker::loadApplicationIdentity()
{
    if (!m_ownCertificate.isEmpty())
        return true;
    const QByteArray der = readFile(m_options.certificateFile);
    const UaPkiCertificate certificate = UaPkiCertificate::fromDER(UaByteString(der));
    OpcUa_StatusCode status = OpcUa_Good;
    const UaPkiPrivateKey key = UaPkiPrivateKey::fromFile(m_options.privateKeyFile, {}, &status);
    SessionText advice;
    if (certificate.isNull())
        advice = {QT_TRANSLATE_NOOP("QvelSession",
                                    "Make a certificate for this application: %1 holds none."),
                  {m_options.certificateFile}};
    else if (key.isNull())
        advice = {QT_TRANSLATE_NOOP("QvelSession",
                                    "The private key of this application, %1, cannot be read."),
                  {m_options.privateKeyFile}};
    else if (!key.matches(certificate.publicKey()))
        advice = {QT_TRANSLATE_NOOP(
            "QvelSession",
            "Certificate and private key of this application do not match: make both anew.")};
    if (advice.text) {
        fail(OpcUa_BadCertificateInvalid, {}, advice, true);
        return false;
    }
    m_ownCertificate = der;
    m_ownKey = UaPkiKeyAccess::shared(key);
    if (m_options.applicationUri.isEmpty())
        m_options.applicationUri = certificate.info().applicationUri.toQString();
    return true;
}

// Everything that the user gave is looked at before anything is sent.
bool SessionWorker::loadUserIdentity()
{
    if (m_wanted.userTokenType() != OpcUa_UserTokenType_Certificate || m_userKey)
        return true;
    const QByteArray der = readFile(m_wanted.certificateFile());
    const UaPkiCertificate certificate = UaPkiCertificate::fromDER(UaByteString(der));
    if (certificate.isNull()) {
        fail(OpcUa_BadIdentityTokenInvalid, {},
             {QT_TRANSLATE_NOOP("QvelSession", "%1 holds no certificate of the user."),
              {m_wanted.certificateFile()}},
             true);
        return false;
    }
    OpcUa_StatusCode status = OpcUa_Good;
    const UaPkiPrivateKey key =
        UaPkiPrivateKey::fromFile(m_wanted.privateKeyFile(), m_keyPassword.bytes(), &status);
    if (key.isNull() && status == OpcUa_BadIdentityTokenRejected) {
        m_asksPassword = true;
        m_questionTimer.start(m_options.questionTimeout);
        const QvelPasswordQuestion question{m_wanted.privateKeyFile(), m_keyPasswordGiven};
        SessionHost::ask(*this, ++m_question, question, &QvelSession::passwordQuestion);
        return false;
    }
    if (key.isNull() || !key.matches(certificate.publicKey())) {
        fail(OpcUa_BadIdentityTokenInvalid, {},
             key.isNull()
                 ? SessionText{QT_TRANSLATE_NOOP("QvelSession",
                                                 "The user's private key, %1, cannot be read."),
                               {m_wanted.privateKeyFile()}}
                 : SessionText{QT_TRANSLATE_NOOP(
                       "QvelSession", "The user's certificate and private key do not match.")},
             true);
        return false;
    }
    m_userCertificate = certificate.toDER().bytes();
    m_userKey = UaPkiKeyAccess::shared(key);
    return true;
}

void SessionWorker::answerPassword(quint32 question, const Secret& password, bool given)
{
    if (!m_asksPassword || question != m_question)
        return;
    m_asksPassword = false;
    m_questionTimer.stop();
    if (!given)
        return fail(OpcUa_BadIdentityTokenRejected, {},
                    {QT_TRANSLATE_NOOP("QvelSession", "Give the password of the private key.")},
                    true);
    m_keyPassword = password;
    m_keyPasswordGiven = true;
    begin();
}

// No channel is opened before the application's identity is there and the server's certificate is
// accepted.
void SessionWorker::checkServer()
{
    const SecurityPolicy* p = policy();
    const QByteArray certificate = bytesOf(endpoint().ServerCertificate);
    m_step = QT_TRANSLATE_NOOP("QvelSession", "Preparing the identity");
    if (p->isSecure && !loadApplicationIdentity())
        return;
    m_step = QT_TRANSLATE_NOOP("QvelSession", "Checking the server's certificate");
    const bool encryptsPassword =
        m_wanted.userTokenType() == OpcUa_UserTokenType_UserName && !certificate.isEmpty();
    if (!p->isSecure && !encryptsPassword)
        return openChannel();

    const SharedKey key = publicKeyOf(certificate);
    if (p->isSecure && (!key || !isKeyAllowed(*p, key.get()) || !isKeyAllowed(*p, m_ownKey.get())))
        return fail(OpcUa_BadSecurityPolicyRejected, {},
                    {QT_TRANSLATE_NOOP("QvelSession",
                                       "The policy takes RSA keys of %1 to %2 bits; the server's "
                                       "has %3, this application's %4."),
                     {QString::number(p->smallestKey), QString::number(p->largestKey),
                      QString::number(key ? EVP_PKEY_get_bits(key.get()) : 0),
                      QString::number(EVP_PKEY_get_bits(m_ownKey.get()))}},
                    true);
    if (leafCertificate(certificate) == m_acceptedCertificate && !m_acceptedCertificate.isEmpty())
        return openChannel();
    UaPkiExpectation expectation;
    expectation.hostName = hostOf(m_usedUrl);
    expectation.applicationUri = toQString(endpoint().Server.ApplicationUri);
    const SecurityPolicy& keys = p->isSecure ? *p : *securityPolicies().first();
    expectation.minKeySize = keys.smallestKey;
    expectation.maxKeySize = keys.largestKey;
    expectation.isSha1Allowed = p->isOld;
    const UaPkiVerdict verdict =
        UaPkiTrustStore(m_options.trust).check(UaByteString(certificate), expectation);
    if (verdict.isTrusted())
        return openChannel();
    const QvelCertificateQuestion question{verdict.certificate, verdict.findings};
    m_asksCertificate = true;
    m_isFiledTrusted = std::none_of(verdict.findings.begin(), verdict.findings.end(),
                                    [](const UaPkiFinding& finding) {
                                        return finding.status == OpcUa_BadCertificateUntrusted;
                                    });
    m_questionTimer.start(m_options.questionTimeout);
    SessionHost::ask(*this, ++m_question, question, &QvelSession::certificateQuestion);
}

void SessionWorker::answerCertificate(quint32 question, QvelCertificateAnswer answer)
{
    if (!m_asksCertificate || question != m_question)
        return;
    m_asksCertificate = false;
    m_questionTimer.stop();
    const QByteArray leaf = leafCertificate(bytesOf(endpoint().ServerCertificate));
    const UaPkiCertificate certificate = UaPkiCertificate::fromDER(UaByteString(leaf));
    const UaPkiTrustStore store(m_options.trust);
    QString reason;
    if (answer == QvelCertificateAnswer::Reject) {
        // A connection is refused, and no trust taken back that somebody once gave.
        if (!m_isFiledTrusted && !store.reject(certificate, &reason))
            log(QvelSession::tr("The rejected certificate cannot be filed: %1").arg(reason));
        return fail(OpcUa_BadCertificateUntrusted, {},
                    {QT_TRANSLATE_NOOP("QvelSession",
                                       "Trust the server's certificate, if it is the right one.")},
                    true);
    }
    if (answer == QvelCertificateAnswer::AcceptAndTrust && !store.trust(certificate, &reason))
        log(QvelSession::tr("The trusted certificate cannot be filed: %1").arg(reason));
    m_acceptedCertificate = leaf;
    m_connectClock.start();
    openChannel();
}

void SessionWorker::openChannel()
{
    const SecurityPolicy* p = policy();
    SecureChannel::Settings settings;
    settings.endpointUrl = m_usedUrl;
    settings.policy = p;
    settings.mode = p->isSecure ? endpoint().SecurityMode : OpcUa_MessageSecurityMode_None;
    if (!hasMode(*p, settings.mode))
        return fail(OpcUa_BadSecurityModeRejected, {}, {}, true);
    if (p->isSecure) {
        settings.ownCertificate = m_ownCertificate;
        settings.ownKey = m_ownKey;
        settings.peerCertificate = bytesOf(endpoint().ServerCertificate);
    }
    settings.limits.messageSize = m_options.limits.messageSize;
    settings.limits.chunkCount = m_options.limits.messageSize / minimumBufferSize + 1;
    settings.requestedLifetime = OpcUa_UInt32(m_options.channelLifetime);
    useConnection(m_usedUrl, settings);
    connect(m_connection.get(), &SessionConnection::opened, this, [this] {
        m_isNewSession = m_authenticationToken.isNull();
        m_isNewSession ? createSession() : activate();
    });
}

void SessionWorker::createSession()
{
    setState(State::Creating);
    m_authenticationToken = UaNodeId();
    m_clientNonce = randomBytes(nonceLength);
    CreateSessionRequest request;
    OpcUa_ApplicationDescription& client = request.clientDescription.value;
    const auto set = [](OpcUa_String& field, const QString& text) {
        if (OpcUa_IsNotGood(UaString(text.toUtf8()).copyTo(&field)))
            qBadAlloc();
    };
    set(client.ApplicationUri, m_options.applicationUri);
    set(client.ProductUri, m_options.productUri);
    set(client.ApplicationName.Text, m_options.applicationName);
    client.ApplicationType = OpcUa_ApplicationType_Client;
    if (endpoint().Server.GatewayServerUri.Length > 0)
        request.serverUri = UaString(&endpoint().Server.ApplicationUri);
    request.endpointUrl = UaString(m_usedUrl);
    request.sessionName = UaString(m_wanted.sessionName().toUtf8());
    request.clientNonce = m_clientNonce;
    request.clientCertificate = policy()->isSecure ? m_ownCertificate : QByteArray();
    request.requestedSessionTimeout = m_options.sessionTimeout;
    request.maxResponseMessageSize = m_options.limits.messageSize;
    step<CreateSessionResponse>(request, timeLeft(),
                                [this](OpcUa_StatusCode status, CreateSessionResponse& response) {
                                    if (OpcUa_IsBad(status))
                                        return fail(status, reasonOf(response.header));
                                    takeSession(response);
                                });
}

// OPC 10000-4, 5.6.2: what the server says now must be what it said before.
void SessionWorker::takeSession(CreateSessionResponse& response)
{
    const SecurityPolicy* p = policy();
    const QByteArray certificate = bytesOf(endpoint().ServerCertificate);
    const auto refuse = [this](OpcUa_StatusCode status, const SessionText& advice) {
        fail(status, {}, advice, true);
    };
    if (response.authenticationToken.isNull())
        return refuse(OpcUa_BadUnknownResponse,
                      {QT_TRANSLATE_NOOP("QvelSession", "The server gave no session.")});
    if (p->isSecure) {
        if (leafCertificate(response.serverCertificate) != leafCertificate(certificate))
            return refuse(OpcUa_BadCertificateInvalid,
                          {QT_TRANSLATE_NOOP("QvelSession",
                                             "The session's certificate is not the one that the "
                                             "endpoint announced: someone may be in between.")});
        const SharedKey key = publicKeyOf(certificate);
        if (!key || response.serverSignature.algorithm != UaString(p->signatureUri) ||
            !verify(*p, key.get(), leafCertificate(m_ownCertificate) + m_clientNonce,
                    response.serverSignature.signature))
            return refuse(OpcUa_BadApplicationSignatureInvalid,
                          {QT_TRANSLATE_NOOP("QvelSession",
                                             "The server's signature is wrong: someone may be in "
                                             "between.")});
        if (!isNonce(response.serverNonce))
            return refuse(OpcUa_BadNonceInvalid, nonceAdvice());
    }
    const auto& endpoints = response.serverEndpoints;
    const auto isUsed = [this](const OpcUa_EndpointDescription& e) {
        return sameEndpoint(e, endpoint());
    };
    // A way that this client knows, and that was hidden from it when it asked.
    const auto isHidden = [this](const OpcUa_EndpointDescription& e) {
        const SecurityPolicy* p = securityPolicy(bytesOf(e.SecurityPolicyUri));
        return p && hasMode(*p, e.SecurityMode) && !m_announced.contains(securityOf(e));
    };
    if (p->isSecure && endpoints.length() > 0 &&
        (std::none_of(endpoints.begin(), endpoints.end(), isUsed) ||
         (!m_announced.isEmpty() && std::any_of(endpoints.begin(), endpoints.end(), isHidden))))
        return refuse(OpcUa_BadSecurityChecksFailed,
                      {QT_TRANSLATE_NOOP("QvelSession",
                                         "The server's endpoints are not those that it announced: "
                                         "someone may be in between. Ask for them again.")});
    m_sessionId = response.sessionId;
    m_authenticationToken = response.authenticationToken;
    m_serverNonce = response.serverNonce;
    activate();
}

bool SessionWorker::makeUserToken(ActivateSessionRequest& request)
{
    const OpcUa_UserTokenType type = m_wanted.userTokenType();
    const OpcUa_UserTokenPolicy* token = nullptr;
    const SecurityPolicy* p = nullptr;
    // The first one that encrypts and signs, else the first that is known.
    for (OpcUa_Int32 i = 0; endpoint().UserIdentityTokens && i < endpoint().NoOfUserIdentityTokens;
         ++i) {
        const OpcUa_UserTokenPolicy& offered = endpoint().UserIdentityTokens[i];
        const QByteArray uri = bytesOf(offered.SecurityPolicyUri);
        const SecurityPolicy* its = uri.isEmpty() ? policy() : securityPolicy(uri);
        if (offered.TokenType == type &&
            (!token || (its && (!p || (its->isSecure && !p->isSecure))))) {
            token = &offered;
            p = its;
        }
    }
    if (!token) {
        fail(
            OpcUa_BadIdentityTokenInvalid, {},
            {QT_TRANSLATE_NOOP("QvelSession", "The endpoint does not take this kind of identity.")},
            true);
        return false;
    }
    const UaString policyId(&token->PolicyId);
    const QByteArray certificate = leafCertificate(bytesOf(endpoint().ServerCertificate));
    if (!p) {
        fail(OpcUa_BadSecurityPolicyRejected, {},
             {QT_TRANSLATE_NOOP("QvelSession", "The identity's security policy is not supported.")},
             true);
        return false;
    }
    if (type == OpcUa_UserTokenType_Anonymous) {
        request.userIdentityToken = encodeExtension(AnonymousIdentityToken{policyId});
        return true;
    }
    if (type == OpcUa_UserTokenType_Certificate) {
        if (!p->isSecure) {
            fail(OpcUa_BadSecurityPolicyRejected, {},
                 {QT_TRANSLATE_NOOP(
                     "QvelSession",
                     "The endpoint takes a user's certificate without security, which "
                     "proves nothing: choose a secure one.")},
                 true);
            return false;
        }
        request.userIdentityToken = encodeExtension(X509IdentityToken{policyId, m_userCertificate});
        request.userTokenSignature = {UaString(p->signatureUri),
                                      sign(*p, m_userKey.get(), certificate + m_serverNonce)};
        return true;
    }
    UserNameIdentityToken identity;
    identity.policyId = policyId;
    identity.userName = UaString(m_wanted.userName().toUtf8());
    if (!p->isSecure) {
        const bool isClear = endpoint().SecurityMode != OpcUa_MessageSecurityMode_SignAndEncrypt ||
                             !policy()->isSecure;
        if (isClear && !m_options.allowsPlainPassword) {
            fail(OpcUa_BadSecurityPolicyRejected, {},
                 {QT_TRANSLATE_NOOP("QvelSession",
                                    "The password would travel in clear text: choose an endpoint "
                                    "that encrypts, or allow it explicitly.")},
                 true);
            return false;
        }
        identity.password = QByteArray(m_password.bytes().constData(), m_password.bytes().size());
    } else {
        // OPC 10000-4, 7.41.2.2: the length of both, the password, the nonce.
        const SharedKey key = publicKeyOf(certificate);
        QByteArray plain;
        plain.reserve(qsizetype(sizeof(OpcUa_UInt32)) + m_password.bytes().size() +
                      m_serverNonce.size());
        BinaryEncoder{plain}(OpcUa_UInt32(m_password.bytes().size() + m_serverNonce.size()));
        plain += m_password.bytes();
        plain += m_serverNonce;
        identity.password = key ? encrypt(*p, key.get(), plain) : QByteArray();
        identity.encryptionAlgorithm = UaString(p->encryptionUri);
        wipe(plain);
        if (identity.password.isEmpty()) {
            fail(OpcUa_BadCertificateInvalid, {},
                 {QT_TRANSLATE_NOOP(
                     "QvelSession",
                     "The server gives no certificate to encrypt the password with.")},
                 true);
            return false;
        }
    }
    QByteArray body;
    body.reserve(256 + identity.userName.size() + identity.password.size());
    BinaryEncoder{body}(identity);
    request.userIdentityToken = UaExtensionObject(
        UaExpandedNodeId(UaNodeId(UserNameIdentityToken::encodingId), UaString(), 0),
        UaByteString(body));
    wipe(identity.password);
    return true;
}

void SessionWorker::activate()
{
    setState(State::Activating);
    ActivateSessionRequest request;
    if (!makeUserToken(request))
        return;
    if (policy()->isSecure)
        request.clientSignature = {
            UaString(policy()->signatureUri),
            sign(*policy(), m_ownKey.get(),
                 leafCertificate(bytesOf(endpoint().ServerCertificate)) + m_serverNonce)};
    for (const QString& locale : std::as_const(m_options.locales))
        request.localeIds.append(UaString(locale.toUtf8()));
    step<ActivateSessionResponse>(
        request, timeLeft(), [this](OpcUa_StatusCode status, ActivateSessionResponse& response) {
            if (OpcUa_IsBad(status)) {
                // The server may have forgotten a session that a lost connection left behind.
                if (!m_isNewSession && m_connection->isOpen() && !isFinal(status)) {
                    m_isNewSession = true;
                    return createSession();
                }
                return fail(status, reasonOf(response.header));
            }
            if (policy()->isSecure && !isNonce(response.serverNonce))
                return fail(OpcUa_BadNonceInvalid, {}, nonceAdvice(), true);
            m_serverNonce = response.serverNonce;
            m_isNewSession ? readServerTables() : becomeConnected();
        });
    QByteArray body = request.userIdentityToken.body().bytes();
    wipe(body); // the token's own, too: they share it
}

void SessionWorker::readServerTables()
{
    // The tables, and the limits of the server (OPC 10000-6, A.3).
    static constexpr OpcUa_UInt32 namespaceArray = 2255;
    static constexpr OpcUa_UInt32 serverArray = 2254;
    static constexpr struct
    {
        OpcUa_UInt32 node;
        OpcUa_UInt32 OperationLimits::*limit;
    } limits[] = {
        {11705, &OperationLimits::read},        {11707, &OperationLimits::write},
        {12165, &OperationLimits::historyRead}, {11709, &OperationLimits::call},
        {11710, &OperationLimits::browse},      {11711, &OperationLimits::registerNodes},
        {11712, &OperationLimits::translate},   {11714, &OperationLimits::monitoredItems},
    };
    ReadRequest request;
    for (OpcUa_UInt32 node : {namespaceArray, serverArray})
        request.items.append({UaNodeId(node), QvelAttribute::Value, {}, {}});
    for (const auto& limit : limits)
        request.items.append({UaNodeId(limit.node), QvelAttribute::Value, {}, {}});
    step<ReadResponse>(
        request, timeLeft(), [this](OpcUa_StatusCode status, ReadResponse& response) {
            if (OpcUa_IsBad(status))
                return fail(status, reasonOf(response.header));
            if (response.results.length() != std::size(limits) + 2)
                return fail(OpcUa_BadUnknownResponse);
            const auto strings = [&response](OpcUa_UInt32 index) {
                QStringList list;
                const OpcUa_Variant& value = response.results[index].Value;
                if (value.Datatype == OpcUaType_String &&
                    value.ArrayType == OpcUa_VariantArrayType_Array) {
                    for (OpcUa_Int32 i = 0; i < value.Value.Array.Length; ++i)
                        list.append(toQString(
                            static_cast<const OpcUa_String*>(value.Value.Array.Elements)[i]));
                }
                return list;
            };
            m_namespaces = strings(0);
            m_servers = strings(1);
            m_limits = {};
            for (std::size_t i = 0; i < std::size(limits); ++i) {
                const OpcUa_Variant& value = response.results[OpcUa_UInt32(i + 2)].Value;
                if (value.ArrayType != OpcUa_VariantArrayType_Scalar)
                    continue;
                if (value.Datatype == OpcUaType_UInt32)
                    m_limits.*limits[i].limit = value.Value.UInt32;
            }
            becomeConnected();
        });
}

void SessionWorker::becomeConnected()
{
    if (m_lasted)
        ++m_statistics.reconnects;
    m_lasted = true;
    m_attempts = 0;
    SessionHost::tellConnection(
        *this, {toQString(endpoint().EndpointUrl), QString::fromUtf8(m_usedUrl),
                UaByteString(&endpoint().ServerCertificate), m_namespaces, m_servers});
    setState(State::Connected);
    m_keepAliveTimer.start(m_options.keepAliveInterval);
    m_subscriptions->connected(m_isNewSession);
}

// A look at the server's state: keeps the session, and finds a connection that is dead.
void SessionWorker::keepAlive()
{
    static constexpr OpcUa_UInt32 serverState = 2259;
    ReadRequest request;
    request.items.append({UaNodeId(serverState), QvelAttribute::Value, {}, {}});
    const int timeout = std::min(m_options.callTimeout, m_options.keepAliveInterval);
    const quint64 received = m_connection->bytesReceived();
    step<ReadResponse>(request, timeout, [this, received](OpcUa_StatusCode status, ReadResponse&) {
        if (!isConnected())
            return;
        // It may be late because much is coming before it.
        const bool isSilent =
            status == OpcUa_BadTimeout && m_connection->bytesReceived() == received;
        if (isSilent || isSessionGone(status))
            return connectionLost(status);
        m_keepAliveTimer.start(m_options.keepAliveInterval);
    });
}

void SessionWorker::connectionLost(OpcUa_StatusCode status)
{
    if (isConnected())
        fail(status);
}

void SessionWorker::fail(OpcUa_StatusCode status, const UaString& reason, const SessionText& advice,
                         bool final)
{
    SessionFailure failure;
    failure.step = {m_step ? m_step : stepName(m_state)};
    failure.status = status;
    failure.reason = reason;
    failure.advice = advice.text ? advice : SessionText{adviceFor(status)};
    m_keepAliveTimer.stop();
    m_questionTimer.stop();
    m_asksCertificate = false;
    m_asksPassword = false;
    const bool again = m_lasted && m_options.reconnects && !final && !isFinal(status);
    if (!again && hasSession()) {
        closeSession(OpcUa_BadConnectionClosed);
        m_closing = nullptr; // Disconnected at once: what went wrong is told already
    }
    abandonCalls(OpcUa_BadConnectionClosed);
    m_subscriptions->disconnected();
    SessionHost::tellError(*this, failure);
    if (again)
        return waitToReconnect();
    m_authenticationToken = UaNodeId();
    m_statisticsTimer.stop();
    m_password.wipe();
    m_keyPassword.wipe();
    setState(State::Disconnected);
}

// Doubling pauses, with some chance, so that not all clients of a server come back at once.
void SessionWorker::waitToReconnect()
{
    constexpr int doublings = 6;
    const int pause = std::min(firstPause << std::min(m_attempts, doublings), longestPause);
    // A server that came back may have another certificate, or other endpoints.
    if (m_attempts > 0)
        m_endpointKnown = false;
    ++m_attempts;
    setState(State::WaitingToReconnect);
    m_reconnectTimer.start(pause / 2 + QRandomGenerator::global()->bounded(pause));
}

void SessionWorker::reconnectNow()
{
    if (m_state == State::WaitingToReconnect)
        m_reconnectTimer.start(0);
}

void SessionWorker::stop(OpcUa_StatusCode status)
{
    for (QTimer* timer :
         {&m_reconnectTimer, &m_keepAliveTimer, &m_questionTimer, &m_statisticsTimer})
        timer->stop();
    m_asksCertificate = false;
    m_asksPassword = false;
    m_closing = nullptr;
    if (hasSession())
        closeSession(status);
    m_authenticationToken = UaNodeId();
    m_ownCertificate.clear();
    m_ownKey.reset();
    m_userCertificate.clear();
    m_userKey.reset();
    m_password.wipe();
    m_keyPassword.wipe();
    abandonCalls(status);
    m_subscriptions->disconnected();
    m_subscriptions->forget();
}

// The connection stays until the server has answered: one that ends with answers unread is reset,
// and the server may then drop what it has not read itself.
void SessionWorker::closeSession(OpcUa_StatusCode status)
{
    SessionConnection* const connection = dropConnection(true);
    connection->abandon(status);
    CloseSessionRequest request;
    send<CloseSessionResponse>(connection, request, closeTimeout,
                               [this, connection](OpcUa_StatusCode, CloseSessionResponse&) {
                                   connection->deleteLater();
                                   if (m_closing != connection)
                                       return;
                                   m_closing = nullptr;
                                   setState(State::Disconnected);
                               });
    m_closing = connection;
}

// Whether the server holds a session that it can be asked to end, activated or not.
bool SessionWorker::hasSession() const
{
    return (m_state == State::Activating || m_state == State::Connected) && m_connection &&
           m_connection->isOpen() && !m_connection->isClosed() && !m_authenticationToken.isNull();
}

// All that is under way ends: what was sent, and what waits to be.
void SessionWorker::abandonCalls(OpcUa_StatusCode status)
{
    if (SessionConnection* const connection = dropConnection())
        connection->abandon(status);
    const auto waiting = std::exchange(m_waiting, {});
    m_underWay += int(waiting.size());
    for (const auto& function : waiting)
        function(); // each finds that there is no connection, and calls release() later
}

void SessionWorker::disconnectFromServer()
{
    const bool wasConnected = m_state != State::Disconnected;
    stop();
    if (wasConnected && !m_closing)
        setState(State::Disconnected);
}

void SessionWorker::tellStatistics()
{
    QvelSessionStatistics all = m_statistics;
    if (m_connection) {
        all.requests += m_connection->requests();
        all.bytesSent += m_connection->bytesSent();
        all.bytesReceived += m_connection->bytesReceived();
        all.tokenRenewals += m_connection->renewals();
        if (m_connection->lastMessage() != 0)
            m_statistics.lastAnswer = UaDateTime(m_connection->lastMessage());
    }
    all.lastAnswer = m_statistics.lastAnswer;
    SessionHost::tellStatistics(*this, all);
}

void SessionWorker::complete(std::function<void()> function)
{
    m_completions.add(std::move(function));
    if (!m_connection || !m_connection->isAnswering())
        handOut();
}

void SessionWorker::handOut()
{
    const bool isMuch = !m_waiting.empty();
    if (isMuch)
        m_completions.handOutLater();
    else
        m_completions.handOut();
    if (m_connection)
        m_connection->setAnswersAtATime(isMuch ? m_options.maximumPendingRequests / 2 : 1);
}

void SessionWorker::whenRoom(std::function<void()> function)
{
    if (m_underWay >= m_options.maximumPendingRequests)
        return m_waiting.push_back(std::move(function));
    ++m_underWay;
    function();
}

void SessionWorker::release()
{
    --m_underWay;
    // What begins may end at once and come back here: one after the other, not one in the other.
    if (std::exchange(m_isReleasing, true))
        return;
    while (!m_waiting.empty() && m_underWay < m_options.maximumPendingRequests) {
        ++m_underWay;
        const auto next = std::move(m_waiting.front());
        m_waiting.pop_front();
        next();
    }
    m_isReleasing = false;
}
