#pragma once

#include "../../kestrelexport.h"
#include "../stack/opcuatypes.h"
#include "uastring.h"

#include <QtCore/QMetaType>

/// A name within a namespace (OPC 10000-3, 8.3). Copies share their storage.
class KESTREL_EXPORT UaQualifiedName
{
public:
    UaQualifiedName() = default;
    UaQualifiedName(const UaString& name, OpcUa_UInt16 namespaceIndex);
    explicit UaQualifiedName(const OpcUa_QualifiedName& value);

    const UaString& name() const { return m_name; }
    OpcUa_UInt16 namespaceIndex() const { return m_namespaceIndex; }
    /// "2:Pump", or the bare name in namespace 0 (OPC 10000-6, 5.3.1.14).
    UaString toString() const;
    /// Replaces the initialised or filled `target` by a copy.
    [[nodiscard]] OpcUa_StatusCode copyTo(OpcUa_QualifiedName* target) const;

    friend bool operator==(const UaQualifiedName& a, const UaQualifiedName& b)
    {
        return a.m_namespaceIndex == b.m_namespaceIndex && a.m_name == b.m_name;
    }
    friend bool operator!=(const UaQualifiedName& a, const UaQualifiedName& b) { return !(a == b); }

private:
    UaString m_name;
    OpcUa_UInt16 m_namespaceIndex = 0;
};

/// A text and the locale that it is in (OPC 10000-3, 8.5). Copies share their storage.
class KESTREL_EXPORT UaLocalizedText
{
public:
    UaLocalizedText() = default;
    UaLocalizedText(const UaString& locale, const UaString& text);
    explicit UaLocalizedText(const OpcUa_LocalizedText& value);

    const UaString& locale() const { return m_locale; }
    const UaString& text() const { return m_text; }
    /// The text alone.
    UaString toString() const { return m_text; }
    /// Replaces the initialised or filled `target` by a copy.
    [[nodiscard]] OpcUa_StatusCode copyTo(OpcUa_LocalizedText* target) const;

    friend bool operator==(const UaLocalizedText& a, const UaLocalizedText& b)
    {
        return a.m_locale == b.m_locale && a.m_text == b.m_text;
    }
    friend bool operator!=(const UaLocalizedText& a, const UaLocalizedText& b) { return !(a == b); }

private:
    UaString m_locale;
    UaString m_text;
};

Q_DECLARE_METATYPE(UaQualifiedName)
Q_DECLARE_METATYPE(UaLocalizedText)
