#pragma once

/// \file
/// The status codes that this library itself produces or tests (OPC 10000-4, 7.39). The names of
/// all standard codes are in UaStatusCode::toString().

#include "opcuatypes.h"

inline constexpr OpcUa_StatusCode OpcUa_Good = 0x00000000u;
inline constexpr OpcUa_StatusCode OpcUa_Bad = 0x80000000u;
inline constexpr OpcUa_StatusCode OpcUa_BadUnexpectedError = 0x80010000u;
inline constexpr OpcUa_StatusCode OpcUa_BadInternalError = 0x80020000u;
inline constexpr OpcUa_StatusCode OpcUa_BadOutOfMemory = 0x80030000u;
inline constexpr OpcUa_StatusCode OpcUa_BadResourceUnavailable = 0x80040000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCommunicationError = 0x80050000u;
inline constexpr OpcUa_StatusCode OpcUa_BadEncodingError = 0x80060000u;
inline constexpr OpcUa_StatusCode OpcUa_BadDecodingError = 0x80070000u;
inline constexpr OpcUa_StatusCode OpcUa_BadEncodingLimitsExceeded = 0x80080000u;
inline constexpr OpcUa_StatusCode OpcUa_BadUnknownResponse = 0x80090000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTimeout = 0x800a0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadServiceUnsupported = 0x800b0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadShutdown = 0x800c0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTooManyOperations = 0x80100000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificateInvalid = 0x80120000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSecurityChecksFailed = 0x80130000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificateTimeInvalid = 0x80140000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificateIssuerTimeInvalid = 0x80150000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificateHostNameInvalid = 0x80160000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificateUriInvalid = 0x80170000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificateUseNotAllowed = 0x80180000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificateIssuerUseNotAllowed = 0x80190000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificateUntrusted = 0x801a0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificateRevocationUnknown = 0x801b0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificateIssuerRevocationUnknown = 0x801c0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificateRevoked = 0x801d0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificateIssuerRevoked = 0x801e0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadUserAccessDenied = 0x801f0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadIdentityTokenInvalid = 0x80200000u;
inline constexpr OpcUa_StatusCode OpcUa_BadIdentityTokenRejected = 0x80210000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSecureChannelIdInvalid = 0x80220000u;
inline constexpr OpcUa_StatusCode OpcUa_BadNonceInvalid = 0x80240000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSessionIdInvalid = 0x80250000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSessionClosed = 0x80260000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSubscriptionIdInvalid = 0x80280000u;
inline constexpr OpcUa_StatusCode OpcUa_BadNodeIdUnknown = 0x80340000u;
inline constexpr OpcUa_StatusCode OpcUa_BadOutOfRange = 0x803c0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadNotSupported = 0x803d0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadNotFound = 0x803e0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadMonitoredItemIdInvalid = 0x80420000u;
inline constexpr OpcUa_StatusCode OpcUa_BadContinuationPointInvalid = 0x804a0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadNoContinuationPoints = 0x804b0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSecurityModeRejected = 0x80540000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSecurityPolicyRejected = 0x80550000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTooManySessions = 0x80560000u;
inline constexpr OpcUa_StatusCode OpcUa_BadApplicationSignatureInvalid = 0x80580000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTypeMismatch = 0x80740000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTooManyPublishRequests = 0x80780000u;
inline constexpr OpcUa_StatusCode OpcUa_BadNoSubscription = 0x80790000u;
inline constexpr OpcUa_StatusCode OpcUa_BadMessageNotAvailable = 0x807b0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTcpMessageTypeInvalid = 0x807e0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTcpSecureChannelUnknown = 0x807f0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTcpMessageTooLarge = 0x80800000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTcpEndpointUrlInvalid = 0x80830000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSecureChannelClosed = 0x80860000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSecureChannelTokenUnknown = 0x80870000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSequenceNumberInvalid = 0x80880000u;
inline constexpr OpcUa_StatusCode OpcUa_BadInvalidArgument = 0x80ab0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadConnectionRejected = 0x80ac0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadConnectionClosed = 0x80ae0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadRequestTooLarge = 0x80b80000u;
inline constexpr OpcUa_StatusCode OpcUa_BadResponseTooLarge = 0x80b90000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificateChainIncomplete = 0x810d0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadCertificatePolicyCheckFailed = 0x81140000u;
