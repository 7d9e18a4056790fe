#pragma once

#include "../../kestrelexport.h"
#include "../stack/opcuatypes.h"
#include "uastring.h"

#include <QtCore/QMetaType>

/// The result of an operation (OPC 10000-4, 7.39).
class [[nodiscard]] UaStatusCode
{
public:
    /// Good.
    UaStatusCode() = default;
    UaStatusCode(OpcUa_StatusCode code) : m_code(code) {}

    OpcUa_StatusCode code() const { return m_code; }
    OpcUa_StatusCode statusCode() const { return m_code; }
    bool isGood() const { return OpcUa_IsGood(m_code); }
    bool isBad() const { return OpcUa_IsBad(m_code); }
    bool isNotGood() const { return OpcUa_IsNotGood(m_code); }
    /// The standard's symbolic name, such as BadNodeIdUnknown; the info bits do not count. A code
    /// without a name gives eight hexadecimal digits after "0x".
    KESTREL_EXPORT UaString toString() const;

    friend bool operator==(const UaStatusCode& a, const UaStatusCode& b)
    {
        return a.m_code == b.m_code;
    }
    friend bool operator!=(const UaStatusCode& a, const UaStatusCode& b) { return !(a == b); }

private:
    OpcUa_StatusCode m_code = 0;
};

/// The status that platform operations return.
using UaStatus = UaStatusCode;

Q_DECLARE_METATYPE(UaStatusCode)
