#pragma once

/// The profile URI of no security (OPC 10000-7, 6.6).
inline constexpr char securityPolicyNone[] = "http://opcfoundation.org/UA/SecurityPolicy#None";
