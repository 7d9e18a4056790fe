#pragma once

/// \file
/// The fields of every stack structure, in the order of the binary encoding (OPC 10000-6, 5.2).
/// Clear, copy, comparison and the codec are visitors over these lists.
///
/// A visitor is called with one field of each structure it walks at the same time:
/// `visitor(a.X)`, or `visitor(a.X, b.X)` for a pair. An array of structures comes as a StackArray.

#include "platform/stack/opcuatypes.h"

#include <type_traits>

/// References to the count and the pointer of an array.
template <class Count, class Pointer>
struct StackArray
{
    Count& count;
    Pointer& elements;
};
template <class Count, class Pointer>
StackArray(Count&, Pointer&) -> StackArray<Count, Pointer>;

template <class T>
struct StackFields; // one specialisation a structure

#define KESTREL_STACK_VISIT(...)                                                                   \
    template <class Visitor, class... S>                                                           \
    static void visit(Visitor&& v, S&... s)                                                        \
    {                                                                                              \
        __VA_ARGS__                                                                                \
    }
#define KESTREL_STACK_FIELDS(Type, ...)                                                            \
    template <>                                                                                    \
    struct StackFields<Type>                                                                       \
    {                                                                                              \
        KESTREL_STACK_VISIT(__VA_ARGS__)                                                           \
    };

KESTREL_STACK_FIELDS(OpcUa_ExpandedNodeId, v(s.NodeId...); v(s.NamespaceUri...);
                     v(s.ServerIndex...);)
KESTREL_STACK_FIELDS(OpcUa_QualifiedName, v(s.NamespaceIndex...); v(s.Name...);)
KESTREL_STACK_FIELDS(OpcUa_LocalizedText, v(s.Locale...); v(s.Text...);)
KESTREL_STACK_FIELDS(OpcUa_ExtensionObject, v(s.TypeId...); v(s.Encoding...); v(s.Body...);)
KESTREL_STACK_FIELDS(OpcUa_DataValue, v(s.Value...); v(s.Status...); v(s.SourceTimestamp...);
                     v(s.SourcePicoseconds...); v(s.ServerTimestamp...); v(s.ServerPicoseconds...);)
KESTREL_STACK_FIELDS(OpcUa_DiagnosticInfo, v(s.SymbolicId...); v(s.NamespaceUri...); v(s.Locale...);
                     v(s.LocalizedText...); v(s.AdditionalInfo...); v(s.InnerStatusCode...);
                     v(StackArray{s.NoOfInnerDiagnosticInfos, s.InnerDiagnosticInfos}...);)
KESTREL_STACK_FIELDS(OpcUa_ApplicationDescription, v(s.ApplicationUri...); v(s.ProductUri...);
                     v(s.ApplicationName...); v(s.ApplicationType...); v(s.GatewayServerUri...);
                     v(s.DiscoveryProfileUri...);
                     v(StackArray{s.NoOfDiscoveryUrls, s.DiscoveryUrls}...);)
KESTREL_STACK_FIELDS(OpcUa_UserTokenPolicy, v(s.PolicyId...); v(s.TokenType...);
                     v(s.IssuedTokenType...); v(s.IssuerEndpointUrl...); v(s.SecurityPolicyUri...);)
KESTREL_STACK_FIELDS(OpcUa_EndpointDescription, v(s.EndpointUrl...); v(s.Server...);
                     v(s.ServerCertificate...); v(s.SecurityMode...); v(s.SecurityPolicyUri...);
                     v(StackArray{s.NoOfUserIdentityTokens, s.UserIdentityTokens}...);
                     v(s.TransportProfileUri...); v(s.SecurityLevel...);)
KESTREL_STACK_FIELDS(OpcUa_ServerOnNetwork, v(s.RecordId...); v(s.ServerName...);
                     v(s.DiscoveryUrl...);
                     v(StackArray{s.NoOfServerCapabilities, s.ServerCapabilities}...);)
