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
inline constexpr OpcUa_StatusCode OpcUa_BadOutOfRange = 0x803c0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadNotSupported = 0x803d0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTypeMismatch = 0x80740000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTcpMessageTypeInvalid = 0x807e0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTcpSecureChannelUnknown = 0x807f0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTcpMessageTooLarge = 0x80800000u;
inline constexpr OpcUa_StatusCode OpcUa_BadTcpEndpointUrlInvalid = 0x80830000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSecureChannelIdInvalid = 0x80220000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSecurityPolicyRejected = 0x80550000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSecureChannelTokenUnknown = 0x80870000u;
inline constexpr OpcUa_StatusCode OpcUa_BadSequenceNumberInvalid = 0x80880000u;
inline constexpr OpcUa_StatusCode OpcUa_BadConnectionRejected = 0x80ac0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadConnectionClosed = 0x80ae0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadInvalidArgument = 0x80ab0000u;
inline constexpr OpcUa_StatusCode OpcUa_BadRequestTooLarge = 0x80b80000u;
inline constexpr OpcUa_StatusCode OpcUa_BadResponseTooLarge = 0x80b90000u;
