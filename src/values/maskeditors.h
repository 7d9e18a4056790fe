#pragma once

#include "../base/editorbases.h"
#include "flagscombobox.h"

#include <QtCore/QObject>

/// \file
/// Inline editors of the bit masks of the address space and the services. Each shows one check box
/// a named bit; the names are the keys of the enumerations below. Bits without a name are dropped.
/// Every input is valid.

/// The attributes that a client may write (OPC 10000-3, 8.60).
class KESTREL_EXPORT QvelAttributeWriteMask
{
    Q_GADGET
public:
    enum AttributeWrite {
        None = 0x0,
        AccessLevel = 0x1,
        ArrayDimensions = 0x2,
        BrowseName = 0x4,
        ContainsNoLoops = 0x8,
        DataType = 0x10,
        Description = 0x20,
        DisplayName = 0x40,
        EventNotifier = 0x80,
        Executable = 0x100,
        Historizing = 0x200,
        InverseName = 0x400,
        IsAbstract = 0x800,
        MinimumSamplingInterval = 0x1000,
        NodeClass = 0x2000,
        NodeId = 0x4000,
        Symmetric = 0x8000,
        UserAccessLevel = 0x10000,
        UserExecutable = 0x20000,
        UserWriteMask = 0x40000,
        ValueRank = 0x80000,
        WriteMask = 0x100000,
        ValueForVariableType = 0x200000
    };
    Q_DECLARE_FLAGS(AttributeWriteMask, AttributeWrite)
    Q_FLAG(AttributeWrite)
    Q_FLAG(AttributeWriteMask)
};

/// What the Browse service tells of each reference (OPC 10000-4, 5.9.2).
class KESTREL_EXPORT QvelBrowseResultMask
{
    Q_GADGET
public:
    enum BrowseResult {
        None = 0x0,
        ReferenceTypeId = 0x1,
        IsForward = 0x2,
        NodeClass = 0x4,
        BrowseName = 0x8,
        DisplayName = 0x10,
        TypeDefinition = 0x20
    };
    Q_DECLARE_FLAGS(BrowseResultMask, BrowseResult)
    Q_FLAG(BrowseResult)
    Q_FLAG(BrowseResultMask)
};

/// The diagnostics that a request asks for (OPC 10000-4, 7.33).
class KESTREL_EXPORT QvelDiagnosticsMask
{
    Q_GADGET
public:
    enum Diagnostics {
        None = 0x0,
        ServiceSymbolicId = 0x1,
        ServiceLocalizedText = 0x2,
        ServiceAdditionalInfo = 0x4,
        ServiceInnerStatusCode = 0x8,
        ServiceInnerDiagnostics = 0x10,
        OperationSymbolicId = 0x20,
        OperationLocalizedText = 0x40,
        OperationAdditionalInfo = 0x80,
        OperationInnerStatusCode = 0x100,
        OperationInnerDiagnostics = 0x200
    };
    Q_DECLARE_FLAGS(DiagnosticsMask, Diagnostics)
    Q_FLAG(Diagnostics)
    Q_FLAG(DiagnosticsMask)
};

/// What a node offers of events (OPC 10000-3, 8.59); 0x2 is reserved.
class KESTREL_EXPORT QvelEventNotifierMask
{
    Q_GADGET
public:
    enum EventNotifier {
        None = 0x0,
        SubscribeToEvents = 0x1,
        HistoryRead = 0x4,
        HistoryWrite = 0x8
    };
    Q_DECLARE_FLAGS(EventNotifierMask, EventNotifier)
    Q_FLAG(EventNotifier)
    Q_FLAG(EventNotifierMask)
};

/// How a value may be accessed (OPC 10000-3, 8.57).
class KESTREL_EXPORT QvelAccessLevelMask
{
    Q_GADGET
public:
    enum AccessLevel {
        None = 0x0,
        CurrentRead = 0x1,
        CurrentWrite = 0x2,
        HistoryRead = 0x4,
        HistoryWrite = 0x8
    };
    Q_DECLARE_FLAGS(AccessLevelMask, AccessLevel)
    Q_FLAG(AccessLevel)
    Q_FLAG(AccessLevelMask)
};

/// Edits the WriteMask and UserWriteMask attributes. Its value is a UInt32.
class KESTREL_EXPORT QvelWidgetWriteMask : public QvelWidgetBase
{
    Q_OBJECT
    Q_PROPERTY(QvelAttributeWriteMask::AttributeWriteMask attributeWriteMask READ flagsOfMask WRITE
                   setAttributeWriteMask NOTIFY attributeWriteMaskChanged)
public:
    explicit QvelWidgetWriteMask(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                                 Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetWriteMask(QWidget* parent) : QvelWidgetWriteMask(QvelWidgetFlags(), parent)
    {
    }
    ~QvelWidgetWriteMask() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    OpcUa_UInt32 attributeWriteMask(bool* ok = nullptr) const;
    void setAttributeWriteMask(OpcUa_UInt32 attributeWriteMask);

Q_SIGNALS:
    void attributeWriteMaskChanged(OpcUa_UInt32 attributeWriteMask);

private Q_SLOTS:
    void sltAttributeWriteMaskChanged();

private:
    QvelAttributeWriteMask::AttributeWriteMask flagsOfMask() const
    {
        return QvelAttributeWriteMask::AttributeWriteMask::fromInt(int(attributeWriteMask()));
    }

    QvelFlagsComboBox<QvelAttributeWriteMask, QvelAttributeWriteMask::AttributeWriteMask>* m_combo;
};

/// Edits the result mask of the Browse service. Its value is a UInt32.
class KESTREL_EXPORT QvelWidgetBrowseResultMask : public QvelWidgetBase
{
    Q_OBJECT
    Q_PROPERTY(QvelBrowseResultMask::BrowseResultMask browseResultMask READ flagsOfMask WRITE
                   setBrowseResultMask NOTIFY browseResultMaskChanged)
public:
    explicit QvelWidgetBrowseResultMask(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                                        Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetBrowseResultMask(QWidget* parent)
        : QvelWidgetBrowseResultMask(QvelWidgetFlags(), parent)
    {
    }
    ~QvelWidgetBrowseResultMask() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    OpcUa_UInt32 browseResultMask(bool* ok = nullptr) const;
    void setBrowseResultMask(OpcUa_UInt32 browseResultMask);

Q_SIGNALS:
    void browseResultMaskChanged(OpcUa_UInt32 browseResultMask);

private Q_SLOTS:
    void sltBrowseResultMaskChanged();

private:
    QvelBrowseResultMask::BrowseResultMask flagsOfMask() const
    {
        return QvelBrowseResultMask::BrowseResultMask::fromInt(int(browseResultMask()));
    }

    QvelFlagsComboBox<QvelBrowseResultMask, QvelBrowseResultMask::BrowseResultMask>* m_combo;
};

/// Edits the diagnostics mask of a request. Its value is a UInt32.
class KESTREL_EXPORT QvelWidgetDiagnosticsMask : public QvelWidgetBase
{
    Q_OBJECT
    Q_PROPERTY(QvelDiagnosticsMask::DiagnosticsMask diagnosticsMask READ flagsOfMask WRITE
                   setDiagnosticsMask NOTIFY diagnosticsMaskChanged)
public:
    explicit QvelWidgetDiagnosticsMask(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                                       Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetDiagnosticsMask(QWidget* parent)
        : QvelWidgetDiagnosticsMask(QvelWidgetFlags(), parent)
    {
    }
    ~QvelWidgetDiagnosticsMask() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    OpcUa_UInt32 diagnosticsMask(bool* ok = nullptr) const;
    void setDiagnosticsMask(OpcUa_UInt32 diagnosticsMask);

Q_SIGNALS:
    void diagnosticsMaskChanged(OpcUa_UInt32 diagnosticsMask);

private Q_SLOTS:
    void sltDiagnosticsMaskChanged();

private:
    QvelDiagnosticsMask::DiagnosticsMask flagsOfMask() const
    {
        return QvelDiagnosticsMask::DiagnosticsMask::fromInt(int(diagnosticsMask()));
    }

    QvelFlagsComboBox<QvelDiagnosticsMask, QvelDiagnosticsMask::DiagnosticsMask>* m_combo;
};

/// Edits the EventNotifier attribute. Its value is a Byte.
class KESTREL_EXPORT QvelWidgetEventNotifierMask : public QvelWidgetBase
{
    Q_OBJECT
    Q_PROPERTY(QvelEventNotifierMask::EventNotifierMask eventNotifierMask READ flagsOfMask WRITE
                   setEventNotifierMask NOTIFY eventNotifierMaskChanged)
public:
    explicit QvelWidgetEventNotifierMask(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                                         Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetEventNotifierMask(QWidget* parent)
        : QvelWidgetEventNotifierMask(QvelWidgetFlags(), parent)
    {
    }
    ~QvelWidgetEventNotifierMask() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    OpcUa_Byte eventNotifierMask(bool* ok = nullptr) const;
    void setEventNotifierMask(OpcUa_Byte eventNotifierMask);

Q_SIGNALS:
    void eventNotifierMaskChanged(OpcUa_Byte eventNotifierMask);

private Q_SLOTS:
    void sltEventNotifierMaskChanged();

private:
    QvelEventNotifierMask::EventNotifierMask flagsOfMask() const
    {
        return QvelEventNotifierMask::EventNotifierMask::fromInt(int(eventNotifierMask()));
    }

    QvelFlagsComboBox<QvelEventNotifierMask, QvelEventNotifierMask::EventNotifierMask>* m_combo;
};

/// Edits the AccessLevel and UserAccessLevel attributes. Its value is a Byte.
class KESTREL_EXPORT QvelWidgetAccessLevelMask : public QvelWidgetBase
{
    Q_OBJECT
    Q_PROPERTY(QvelAccessLevelMask::AccessLevelMask accessLevelMask READ flagsOfMask WRITE
                   setAccessLevelMask NOTIFY accessLevelMaskChanged)
public:
    explicit QvelWidgetAccessLevelMask(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                                       Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetAccessLevelMask(QWidget* parent)
        : QvelWidgetAccessLevelMask(QvelWidgetFlags(), parent)
    {
    }
    ~QvelWidgetAccessLevelMask() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    OpcUa_Byte accessLevelMask(bool* ok = nullptr) const;
    void setAccessLevelMask(OpcUa_Byte accessLevelMask);

Q_SIGNALS:
    void accessLevelMaskChanged(OpcUa_Byte accessLevelMask);

private Q_SLOTS:
    void sltAccessLevelMaskChanged();

private:
    QvelAccessLevelMask::AccessLevelMask flagsOfMask() const
    {
        return QvelAccessLevelMask::AccessLevelMask::fromInt(int(accessLevelMask()));
    }

    QvelFlagsComboBox<QvelAccessLevelMask, QvelAccessLevelMask::AccessLevelMask>* m_combo;
};
