#pragma once

/// \file
/// The messages of the services that a session uses (OPC 10000-4), with their field lists. They
/// serve both ends of a connection; what the services share with the host are its own types.

#include "platform/wire/messages_p.h"
#include "session/subscription.h"

#include "platform/types/uadatavalue.h"
#include "platform/types/uanames.h"

namespace UaWire {

using Diagnostics = UaStackTypeArray<OpcUa_DiagnosticInfo>;

enum class TimestampsToReturn : OpcUa_UInt32 { Source = 0, Server = 1, Both = 2, Neither = 3 };

struct SignatureData
{
    UaString algorithm;
    QByteArray signature;
};
struct SignedSoftwareCertificate
{
    QByteArray certificateData;
    QByteArray signature;
};

/// A request that holds nothing but what each operation needs.
template <OpcUa_UInt32 id, class Item>
struct ItemsRequest
{
    static constexpr OpcUa_UInt32 encodingId = id;
    RequestHeader header;
    QList<Item> items;
};
/// An answer that holds nothing but a result for each operation.
template <OpcUa_UInt32 id, class List = QList<UaStatusCode>>
struct ResultsResponse
{
    static constexpr OpcUa_UInt32 encodingId = id;
    ResponseHeader header;
    List results;
    Diagnostics diagnosticInfos;
};
template <OpcUa_UInt32 id>
struct EmptyResponse
{
    static constexpr OpcUa_UInt32 encodingId = id;
    ResponseHeader header;
};

// 5.6, sessions

struct CreateSessionRequest
{
    static constexpr OpcUa_UInt32 encodingId = 461;
    RequestHeader header;
    Owned<OpcUa_ApplicationDescription> clientDescription;
    UaString serverUri;
    UaString endpointUrl;
    UaString sessionName;
    QByteArray clientNonce;
    QByteArray clientCertificate;
    double requestedSessionTimeout = 0;
    OpcUa_UInt32 maxResponseMessageSize = 0;
};
struct CreateSessionResponse
{
    static constexpr OpcUa_UInt32 encodingId = 464;
    ResponseHeader header;
    UaNodeId sessionId;
    UaNodeId authenticationToken;
    double revisedSessionTimeout = 0;
    QByteArray serverNonce;
    QByteArray serverCertificate;
    UaStackTypeArray<OpcUa_EndpointDescription> serverEndpoints;
    std::vector<SignedSoftwareCertificate> serverSoftwareCertificates;
    SignatureData serverSignature;
    OpcUa_UInt32 maxRequestMessageSize = 0;
};

struct AnonymousIdentityToken
{
    static constexpr OpcUa_UInt32 encodingId = 321;
    UaString policyId;
};
struct UserNameIdentityToken
{
    static constexpr OpcUa_UInt32 encodingId = 324;
    UaString policyId;
    UaString userName;
    QByteArray password;
    UaString encryptionAlgorithm;
};
struct X509IdentityToken
{
    static constexpr OpcUa_UInt32 encodingId = 327;
    UaString policyId;
    QByteArray certificateData;
};

struct ActivateSessionRequest
{
    static constexpr OpcUa_UInt32 encodingId = 467;
    RequestHeader header;
    SignatureData clientSignature;
    std::vector<SignedSoftwareCertificate> clientSoftwareCertificates;
    QList<UaString> localeIds;
    UaExtensionObject userIdentityToken;
    SignatureData userTokenSignature;
};
/// It may hold a password.
inline qsizetype secretRoom(const ActivateSessionRequest& request)
{
    constexpr qsizetype others = 8192;
    return request.userIdentityToken.body().length() + others;
}
struct ActivateSessionResponse
{
    static constexpr OpcUa_UInt32 encodingId = 470;
    ResponseHeader header;
    QByteArray serverNonce;
    QList<UaStatusCode> results;
    Diagnostics diagnosticInfos;
};

struct CloseSessionRequest
{
    static constexpr OpcUa_UInt32 encodingId = 473;
    RequestHeader header;
    bool deleteSubscriptions = true;
};
using CloseSessionResponse = EmptyResponse<476>;

// 5.8, views

struct ViewDescription
{
    UaNodeId viewId;
    OpcUa_DateTime timestamp = 0;
    OpcUa_UInt32 viewVersion = 0;
};
struct BrowseDescription : QvelBrowseItem
{
    OpcUa_UInt32 resultMask = 63; ///< everything
};
struct BrowseRequest
{
    static constexpr OpcUa_UInt32 encodingId = 527;
    RequestHeader header;
    ViewDescription view;
    OpcUa_UInt32 requestedMaxReferencesPerNode = 0;
    QList<BrowseDescription> nodesToBrowse;
};
struct BrowseResult : QvelBrowseNodeResult
{
    QByteArray continuationPoint;
};
using BrowseResponse = ResultsResponse<530, QList<BrowseResult>>;
struct BrowseNextRequest
{
    static constexpr OpcUa_UInt32 encodingId = 533;
    RequestHeader header;
    bool releaseContinuationPoints = false;
    QList<QByteArray> continuationPoints;
};
using BrowseNextResponse = ResultsResponse<536, QList<BrowseResult>>;

using TranslateBrowsePathsRequest = ItemsRequest<554, QvelBrowsePath>;
using TranslateBrowsePathsResponse = ResultsResponse<557, QList<QvelTranslatedPath>>;

using RegisterNodesRequest = ItemsRequest<560, UaNodeId>;
struct RegisterNodesResponse
{
    static constexpr OpcUa_UInt32 encodingId = 563;
    ResponseHeader header;
    QList<UaNodeId> results;
};
using UnregisterNodesRequest = ItemsRequest<566, UaNodeId>;
using UnregisterNodesResponse = EmptyResponse<569>;

// 5.10, attributes

struct ReadRequest
{
    static constexpr OpcUa_UInt32 encodingId = 631;
    RequestHeader header;
    double maxAge = 0;
    TimestampsToReturn timestampsToReturn = TimestampsToReturn::Both;
    QList<QvelReadItem> items;
};
using ReadResponse = ResultsResponse<634, UaStackTypeArray<OpcUa_DataValue>>;

using WriteRequest = ItemsRequest<673, QvelWriteItem>;
using WriteResponse = ResultsResponse<676>;

struct HistoryReadValueId : QvelHistoryItem
{
    UaQualifiedName dataEncoding;
    QByteArray continuationPoint;
};
struct ReadRawModifiedDetails
{
    static constexpr OpcUa_UInt32 encodingId = 649;
    bool isReadModified = false;
    OpcUa_DateTime startTime = 0;
    OpcUa_DateTime endTime = 0;
    OpcUa_UInt32 numValuesPerNode = 0;
    bool returnBounds = false;
};
struct AggregateConfiguration
{
    bool useServerCapabilitiesDefaults = true;
    bool treatUncertainAsBad = false;
    OpcUa_Byte percentDataBad = 0;
    OpcUa_Byte percentDataGood = 0;
    bool useSlopedExtrapolation = false;
};
struct ReadProcessedDetails
{
    static constexpr OpcUa_UInt32 encodingId = 652;
    OpcUa_DateTime startTime = 0;
    OpcUa_DateTime endTime = 0;
    double processingInterval = 0;
    QList<UaNodeId> aggregateType;
    AggregateConfiguration aggregateConfiguration;
};
struct HistoryReadRequest
{
    static constexpr OpcUa_UInt32 encodingId = 664;
    RequestHeader header;
    UaExtensionObject historyReadDetails;
    TimestampsToReturn timestampsToReturn = TimestampsToReturn::Both;
    bool releaseContinuationPoints = false;
    QList<HistoryReadValueId> nodesToRead;
};
struct HistoryData
{
    static constexpr OpcUa_UInt32 encodingId = 658;
    UaStackTypeArray<OpcUa_DataValue> dataValues;
};
struct HistoryReadResult
{
    UaStatusCode statusCode;
    QByteArray continuationPoint;
    UaExtensionObject historyData;
};
using HistoryReadResponse = ResultsResponse<667, QList<HistoryReadResult>>;

// 5.11, methods

using CallRequest = ItemsRequest<712, QvelCallItem>;
struct CallMethodResult : QvelMethodResult
{
    Diagnostics inputArgumentDiagnosticInfos;
};
using CallResponse = ResultsResponse<715, std::vector<CallMethodResult>>;

// 5.12, monitored items

struct MonitoringParameters
{
    OpcUa_UInt32 clientHandle = 0;
    double samplingInterval = 0;
    UaExtensionObject filter;
    OpcUa_UInt32 queueSize = 0;
    bool discardOldest = true;
};
struct DataChangeFilter
{
    static constexpr OpcUa_UInt32 encodingId = 724;
    QvelDataChangeTrigger trigger = QvelDataChangeTrigger::StatusValue;
    QvelDeadbandType deadbandType = QvelDeadbandType::None;
    double deadbandValue = 0;
};
struct SimpleAttributeOperand
{
    UaNodeId typeDefinitionId;
    QList<UaQualifiedName> browsePath;
    OpcUa_UInt32 attributeId = QvelAttribute::Value;
    UaString indexRange;
};
/// Followed by a ContentFilter, which the host gives as it is encoded.
struct EventFilterHead
{
    static constexpr OpcUa_UInt32 encodingId = 727;
    QList<SimpleAttributeOperand> selectClauses;
};
struct MonitoredItemCreateRequest
{
    QvelReadItem itemToMonitor;
    QvelMonitoringMode monitoringMode = QvelMonitoringMode::Reporting;
    MonitoringParameters requestedParameters;
};
struct MonitoredItemCreateResult
{
    UaStatusCode statusCode;
    OpcUa_UInt32 monitoredItemId = 0;
    double revisedSamplingInterval = 0;
    OpcUa_UInt32 revisedQueueSize = 0;
    UaExtensionObject filterResult;
};
struct CreateMonitoredItemsRequest
{
    static constexpr OpcUa_UInt32 encodingId = 751;
    RequestHeader header;
    OpcUa_UInt32 subscriptionId = 0;
    TimestampsToReturn timestampsToReturn = TimestampsToReturn::Both;
    QList<MonitoredItemCreateRequest> itemsToCreate;
};
using CreateMonitoredItemsResponse = ResultsResponse<754, QList<MonitoredItemCreateResult>>;
struct MonitoredItemModifyRequest
{
    OpcUa_UInt32 monitoredItemId = 0;
    MonitoringParameters requestedParameters;
};
struct MonitoredItemModifyResult
{
    UaStatusCode statusCode;
    double revisedSamplingInterval = 0;
    OpcUa_UInt32 revisedQueueSize = 0;
    UaExtensionObject filterResult;
};
struct ModifyMonitoredItemsRequest
{
    static constexpr OpcUa_UInt32 encodingId = 763;
    RequestHeader header;
    OpcUa_UInt32 subscriptionId = 0;
    TimestampsToReturn timestampsToReturn = TimestampsToReturn::Both;
    QList<MonitoredItemModifyRequest> itemsToModify;
};
using ModifyMonitoredItemsResponse = ResultsResponse<766, QList<MonitoredItemModifyResult>>;
struct SetMonitoringModeRequest
{
    static constexpr OpcUa_UInt32 encodingId = 769;
    RequestHeader header;
    OpcUa_UInt32 subscriptionId = 0;
    QvelMonitoringMode monitoringMode = QvelMonitoringMode::Reporting;
    QList<OpcUa_UInt32> monitoredItemIds;
};
using SetMonitoringModeResponse = ResultsResponse<772>;
struct DeleteMonitoredItemsRequest
{
    static constexpr OpcUa_UInt32 encodingId = 781;
    RequestHeader header;
    OpcUa_UInt32 subscriptionId = 0;
    QList<OpcUa_UInt32> monitoredItemIds;
};
using DeleteMonitoredItemsResponse = ResultsResponse<784>;

// 5.13, subscriptions

struct CreateSubscriptionRequest
{
    static constexpr OpcUa_UInt32 encodingId = 787;
    RequestHeader header;
    QvelSubscriptionParameters parameters;
};
struct CreateSubscriptionResponse
{
    static constexpr OpcUa_UInt32 encodingId = 790;
    ResponseHeader header;
    OpcUa_UInt32 subscriptionId = 0;
    double revisedPublishingInterval = 0;
    OpcUa_UInt32 revisedLifetimeCount = 0;
    OpcUa_UInt32 revisedMaxKeepAliveCount = 0;
};
struct ModifySubscriptionRequest
{
    static constexpr OpcUa_UInt32 encodingId = 793;
    RequestHeader header;
    OpcUa_UInt32 subscriptionId = 0;
    QvelSubscriptionParameters parameters; ///< all but publishingEnabled
};
struct ModifySubscriptionResponse
{
    static constexpr OpcUa_UInt32 encodingId = 796;
    ResponseHeader header;
    double revisedPublishingInterval = 0;
    OpcUa_UInt32 revisedLifetimeCount = 0;
    OpcUa_UInt32 revisedMaxKeepAliveCount = 0;
};
struct SetPublishingModeRequest
{
    static constexpr OpcUa_UInt32 encodingId = 799;
    RequestHeader header;
    bool publishingEnabled = true;
    QList<OpcUa_UInt32> subscriptionIds;
};
using SetPublishingModeResponse = ResultsResponse<802>;
using DeleteSubscriptionsRequest = ItemsRequest<847, OpcUa_UInt32>;
using DeleteSubscriptionsResponse = ResultsResponse<850>;
struct TransferResult
{
    UaStatusCode statusCode;
    QList<OpcUa_UInt32> availableSequenceNumbers;
};
struct TransferSubscriptionsRequest
{
    static constexpr OpcUa_UInt32 encodingId = 841;
    RequestHeader header;
    QList<OpcUa_UInt32> subscriptionIds;
    bool sendInitialValues = true;
};
using TransferSubscriptionsResponse = ResultsResponse<844, QList<TransferResult>>;

struct SubscriptionAcknowledgement
{
    OpcUa_UInt32 subscriptionId = 0;
    OpcUa_UInt32 sequenceNumber = 0;
};
struct NotificationMessage
{
    OpcUa_UInt32 sequenceNumber = 0;
    OpcUa_DateTime publishTime = 0;
    QList<UaExtensionObject> notificationData;
};
struct PublishRequest
{
    static constexpr OpcUa_UInt32 encodingId = 826;
    RequestHeader header;
    QList<SubscriptionAcknowledgement> acknowledgements;
};
struct PublishResponse
{
    static constexpr OpcUa_UInt32 encodingId = 829;
    ResponseHeader header;
    OpcUa_UInt32 subscriptionId = 0;
    QList<OpcUa_UInt32> availableSequenceNumbers;
    bool moreNotifications = false;
    NotificationMessage notificationMessage;
    QList<UaStatusCode> results;
    Diagnostics diagnosticInfos;
};
struct RepublishRequest
{
    static constexpr OpcUa_UInt32 encodingId = 832;
    RequestHeader header;
    OpcUa_UInt32 subscriptionId = 0;
    OpcUa_UInt32 retransmitSequenceNumber = 0;
};
struct RepublishResponse
{
    static constexpr OpcUa_UInt32 encodingId = 835;
    ResponseHeader header;
    NotificationMessage notificationMessage;
};
struct DataChangeNotification
{
    static constexpr OpcUa_UInt32 encodingId = 811;
    QList<QvelDataChange> monitoredItems;
    Diagnostics diagnosticInfos;
};
struct EventNotificationList
{
    static constexpr OpcUa_UInt32 encodingId = 916;
    QList<QvelEvent> events;
};
struct StatusChangeNotification
{
    static constexpr OpcUa_UInt32 encodingId = 820;
    UaStatusCode status;
    Owned<OpcUa_DiagnosticInfo> diagnosticInfo;
};

/// A structure as the body of an ExtensionObject, with what is encoded already behind it.
template <class T>
UaExtensionObject encodeExtension(const T& value, const QByteArray& rest = {})
{
    QByteArray body;
    BinaryEncoder{body}(value);
    body += rest;
    return UaExtensionObject(UaExpandedNodeId(UaNodeId(T::encodingId), UaString(), 0),
                             UaByteString(body));
}
/// Whether an ExtensionObject is of a type of namespace 0.
template <class T>
bool isExtension(const UaExtensionObject& object)
{
    return object.typeId().nodeId() == UaNodeId(T::encodingId);
}

} // namespace UaWire

template <OpcUa_UInt32 id, class Item>
struct StackFields<UaWire::ItemsRequest<id, Item>>
{
    KESTREL_STACK_VISIT(v(s.header...); v(s.items...);)
};
template <OpcUa_UInt32 id, class List>
struct StackFields<UaWire::ResultsResponse<id, List>>
{
    KESTREL_STACK_VISIT(v(s.header...); v(s.results...); v(s.diagnosticInfos...);)
};
template <OpcUa_UInt32 id>
struct StackFields<UaWire::EmptyResponse<id>>
{
    KESTREL_STACK_VISIT(v(s.header...);)
};
KESTREL_STACK_FIELDS(UaWire::SignatureData, v(s.algorithm...); v(s.signature...);)
KESTREL_STACK_FIELDS(UaWire::SignedSoftwareCertificate, v(s.certificateData...); v(s.signature...);)
KESTREL_STACK_FIELDS(UaWire::CreateSessionRequest, v(s.header...); v(s.clientDescription...);
                     v(s.serverUri...); v(s.endpointUrl...); v(s.sessionName...);
                     v(s.clientNonce...); v(s.clientCertificate...);
                     v(s.requestedSessionTimeout...); v(s.maxResponseMessageSize...);)
KESTREL_STACK_FIELDS(UaWire::CreateSessionResponse, v(s.header...); v(s.sessionId...);
                     v(s.authenticationToken...); v(s.revisedSessionTimeout...);
                     v(s.serverNonce...); v(s.serverCertificate...); v(s.serverEndpoints...);
                     v(s.serverSoftwareCertificates...); v(s.serverSignature...);
                     v(s.maxRequestMessageSize...);)
KESTREL_STACK_FIELDS(UaWire::AnonymousIdentityToken, v(s.policyId...);)
KESTREL_STACK_FIELDS(UaWire::UserNameIdentityToken, v(s.policyId...); v(s.userName...);
                     v(s.password...); v(s.encryptionAlgorithm...);)
KESTREL_STACK_FIELDS(UaWire::X509IdentityToken, v(s.policyId...); v(s.certificateData...);)
KESTREL_STACK_FIELDS(UaWire::ActivateSessionRequest, v(s.header...); v(s.clientSignature...);
                     v(s.clientSoftwareCertificates...); v(s.localeIds...);
                     v(s.userIdentityToken...); v(s.userTokenSignature...);)
KESTREL_STACK_FIELDS(UaWire::ActivateSessionResponse, v(s.header...); v(s.serverNonce...);
                     v(s.results...); v(s.diagnosticInfos...);)
KESTREL_STACK_FIELDS(UaWire::CloseSessionRequest, v(s.header...); v(s.deleteSubscriptions...);)
KESTREL_STACK_FIELDS(UaWire::ViewDescription, v(s.viewId...); v(s.timestamp...);
                     v(s.viewVersion...);)
KESTREL_STACK_FIELDS(UaWire::BrowseDescription, v(s.nodeId...); v(s.direction...);
                     v(s.referenceTypeId...); v(s.includeSubtypes...); v(s.nodeClassMask...);
                     v(s.resultMask...);)
KESTREL_STACK_FIELDS(UaWire::BrowseRequest, v(s.header...); v(s.view...);
                     v(s.requestedMaxReferencesPerNode...); v(s.nodesToBrowse...);)
KESTREL_STACK_FIELDS(QvelReference, v(s.referenceTypeId...); v(s.isForward...); v(s.nodeId...);
                     v(s.browseName...); v(s.displayName...); v(s.nodeClass...);
                     v(s.typeDefinition...);)
KESTREL_STACK_FIELDS(UaWire::BrowseResult, v(s.status...); v(s.continuationPoint...);
                     v(s.references...);)
KESTREL_STACK_FIELDS(UaWire::BrowseNextRequest, v(s.header...); v(s.releaseContinuationPoints...);
                     v(s.continuationPoints...);)
KESTREL_STACK_FIELDS(QvelPathElement, v(s.referenceTypeId...); v(s.isInverse...);
                     v(s.includeSubtypes...); v(s.targetName...);)
KESTREL_STACK_FIELDS(QvelBrowsePath, v(s.startingNode...); v(s.elements...);)
KESTREL_STACK_FIELDS(QvelPathTarget, v(s.nodeId...); v(s.remainingPathIndex...);)
KESTREL_STACK_FIELDS(QvelTranslatedPath, v(s.status...); v(s.targets...);)
KESTREL_STACK_FIELDS(UaWire::RegisterNodesResponse, v(s.header...); v(s.results...);)
KESTREL_STACK_FIELDS(QvelReadItem, v(s.nodeId...); v(s.attributeId...); v(s.indexRange...);
                     v(s.dataEncoding...);)
KESTREL_STACK_FIELDS(UaWire::ReadRequest, v(s.header...); v(s.maxAge...);
                     v(s.timestampsToReturn...); v(s.items...);)
KESTREL_STACK_FIELDS(QvelWriteItem, v(s.nodeId...); v(s.attributeId...); v(s.indexRange...);
                     v(s.value...);)
KESTREL_STACK_FIELDS(UaWire::HistoryReadValueId, v(s.nodeId...); v(s.indexRange...);
                     v(s.dataEncoding...); v(s.continuationPoint...);)
KESTREL_STACK_FIELDS(UaWire::ReadRawModifiedDetails, v(s.isReadModified...); v(s.startTime...);
                     v(s.endTime...); v(s.numValuesPerNode...); v(s.returnBounds...);)
KESTREL_STACK_FIELDS(UaWire::AggregateConfiguration, v(s.useServerCapabilitiesDefaults...);
                     v(s.treatUncertainAsBad...); v(s.percentDataBad...); v(s.percentDataGood...);
                     v(s.useSlopedExtrapolation...);)
KESTREL_STACK_FIELDS(UaWire::ReadProcessedDetails, v(s.startTime...); v(s.endTime...);
                     v(s.processingInterval...); v(s.aggregateType...);
                     v(s.aggregateConfiguration...);)
KESTREL_STACK_FIELDS(UaWire::HistoryReadRequest, v(s.header...); v(s.historyReadDetails...);
                     v(s.timestampsToReturn...); v(s.releaseContinuationPoints...);
                     v(s.nodesToRead...);)
KESTREL_STACK_FIELDS(UaWire::HistoryData, v(s.dataValues...);)
KESTREL_STACK_FIELDS(UaWire::HistoryReadResult, v(s.statusCode...); v(s.continuationPoint...);
                     v(s.historyData...);)
KESTREL_STACK_FIELDS(QvelCallItem, v(s.objectId...); v(s.methodId...); v(s.inputArguments...);)
KESTREL_STACK_FIELDS(UaWire::CallMethodResult, v(s.status...); v(s.inputArgumentResults...);
                     v(s.inputArgumentDiagnosticInfos...); v(s.outputArguments...);)
KESTREL_STACK_FIELDS(UaWire::MonitoringParameters, v(s.clientHandle...); v(s.samplingInterval...);
                     v(s.filter...); v(s.queueSize...); v(s.discardOldest...);)
KESTREL_STACK_FIELDS(UaWire::DataChangeFilter, v(s.trigger...); v(s.deadbandType...);
                     v(s.deadbandValue...);)
KESTREL_STACK_FIELDS(UaWire::SimpleAttributeOperand, v(s.typeDefinitionId...); v(s.browsePath...);
                     v(s.attributeId...); v(s.indexRange...);)
KESTREL_STACK_FIELDS(UaWire::EventFilterHead, v(s.selectClauses...);)
KESTREL_STACK_FIELDS(UaWire::MonitoredItemCreateRequest, v(s.itemToMonitor...);
                     v(s.monitoringMode...); v(s.requestedParameters...);)
KESTREL_STACK_FIELDS(UaWire::MonitoredItemCreateResult, v(s.statusCode...); v(s.monitoredItemId...);
                     v(s.revisedSamplingInterval...); v(s.revisedQueueSize...);
                     v(s.filterResult...);)
KESTREL_STACK_FIELDS(UaWire::CreateMonitoredItemsRequest, v(s.header...); v(s.subscriptionId...);
                     v(s.timestampsToReturn...); v(s.itemsToCreate...);)
KESTREL_STACK_FIELDS(UaWire::MonitoredItemModifyRequest, v(s.monitoredItemId...);
                     v(s.requestedParameters...);)
KESTREL_STACK_FIELDS(UaWire::MonitoredItemModifyResult, v(s.statusCode...);
                     v(s.revisedSamplingInterval...); v(s.revisedQueueSize...);
                     v(s.filterResult...);)
KESTREL_STACK_FIELDS(UaWire::ModifyMonitoredItemsRequest, v(s.header...); v(s.subscriptionId...);
                     v(s.timestampsToReturn...); v(s.itemsToModify...);)
KESTREL_STACK_FIELDS(UaWire::SetMonitoringModeRequest, v(s.header...); v(s.subscriptionId...);
                     v(s.monitoringMode...); v(s.monitoredItemIds...);)
KESTREL_STACK_FIELDS(UaWire::DeleteMonitoredItemsRequest, v(s.header...); v(s.subscriptionId...);
                     v(s.monitoredItemIds...);)
KESTREL_STACK_FIELDS(UaWire::CreateSubscriptionRequest, v(s.header...);
                     v(s.parameters.publishingInterval...); v(s.parameters.lifetimeCount...);
                     v(s.parameters.maxKeepAliveCount...);
                     v(s.parameters.maxNotificationsPerPublish...);
                     v(s.parameters.publishingEnabled...); v(s.parameters.priority...);)
KESTREL_STACK_FIELDS(UaWire::CreateSubscriptionResponse, v(s.header...); v(s.subscriptionId...);
                     v(s.revisedPublishingInterval...); v(s.revisedLifetimeCount...);
                     v(s.revisedMaxKeepAliveCount...);)
KESTREL_STACK_FIELDS(UaWire::ModifySubscriptionRequest, v(s.header...); v(s.subscriptionId...);
                     v(s.parameters.publishingInterval...); v(s.parameters.lifetimeCount...);
                     v(s.parameters.maxKeepAliveCount...);
                     v(s.parameters.maxNotificationsPerPublish...); v(s.parameters.priority...);)
KESTREL_STACK_FIELDS(UaWire::ModifySubscriptionResponse, v(s.header...);
                     v(s.revisedPublishingInterval...); v(s.revisedLifetimeCount...);
                     v(s.revisedMaxKeepAliveCount...);)
KESTREL_STACK_FIELDS(UaWire::SetPublishingModeRequest, v(s.header...); v(s.publishingEnabled...);
                     v(s.subscriptionIds...);)
KESTREL_STACK_FIELDS(UaWire::TransferResult, v(s.statusCode...); v(s.availableSequenceNumbers...);)
KESTREL_STACK_FIELDS(UaWire::TransferSubscriptionsRequest, v(s.header...); v(s.subscriptionIds...);
                     v(s.sendInitialValues...);)
KESTREL_STACK_FIELDS(UaWire::SubscriptionAcknowledgement, v(s.subscriptionId...);
                     v(s.sequenceNumber...);)
KESTREL_STACK_FIELDS(UaWire::NotificationMessage, v(s.sequenceNumber...); v(s.publishTime...);
                     v(s.notificationData...);)
KESTREL_STACK_FIELDS(UaWire::PublishRequest, v(s.header...); v(s.acknowledgements...);)
KESTREL_STACK_FIELDS(UaWire::PublishResponse, v(s.header...); v(s.subscriptionId...);
                     v(s.availableSequenceNumbers...); v(s.moreNotifications...);
                     v(s.notificationMessage...); v(s.results...); v(s.diagnosticInfos...);)
KESTREL_STACK_FIELDS(UaWire::RepublishRequest, v(s.header...); v(s.subscriptionId...);
                     v(s.retransmitSequenceNumber...);)
KESTREL_STACK_FIELDS(UaWire::RepublishResponse, v(s.header...); v(s.notificationMessage...);)
KESTREL_STACK_FIELDS(QvelDataChange, v(s.handle...); v(s.value...);)
KESTREL_STACK_FIELDS(QvelEvent, v(s.handle...); v(s.fields...);)
KESTREL_STACK_FIELDS(UaWire::DataChangeNotification, v(s.monitoredItems...);
                     v(s.diagnosticInfos...);)
KESTREL_STACK_FIELDS(UaWire::EventNotificationList, v(s.events...);)
KESTREL_STACK_FIELDS(UaWire::StatusChangeNotification, v(s.status...); v(s.diagnosticInfo...);)
