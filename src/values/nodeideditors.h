#pragma once

#include "../base/editorbases.h"
#include "../platform/types/uanodeid.h"

#include <memory>

class NodeIdControls;

/// \file
/// Editors of a NodeId (OPC 10000-3, 8.2): namespace index, identifier type and identifier.
///
/// A numeric identifier is typed in decimal and must fit a UInt32; the field itself lets pass what
/// fits an Int32. A string identifier may be any text. A Guid is typed in braces. An opaque
/// identifier is an even number of hexadecimal digits after "0x". Invalid input makes `ok` false;
/// with `ok` null it counts as the number 0 or as the null NodeId.

/// Inline editor of a NodeId.
class KESTREL_EXPORT QvelWidgetNodeId : public QvelWidgetBase
{
    Q_OBJECT
public:
    explicit QvelWidgetNodeId(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                              Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetNodeId(QWidget* parent) : QvelWidgetNodeId(QvelWidgetFlags(), parent) {}
    ~QvelWidgetNodeId() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaNodeId nodeId(bool* ok = nullptr) const;
    void setNodeId(const UaNodeId& nodeId);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void nodeIdChanged(UaNodeId nodeId);

private Q_SLOTS:
    void sltComboIndexChanged(int iIndex);
    void sltNodeIdChanged();

private:
    const std::unique_ptr<NodeIdControls> d;
};

/// Dialog editor of a NodeId.
class KESTREL_EXPORT QvelDialogWidgetNodeId : public QvelDialogWidgetBase
{
    Q_OBJECT
public:
    explicit QvelDialogWidgetNodeId(QvelDialogWidgetFlags flags = {}, QWidget* parent = nullptr,
                                    Qt::WindowFlags windowFlags = {});
    ~QvelDialogWidgetNodeId() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaNodeId nodeId(bool* ok = nullptr) const;
    void setNodeId(const UaNodeId& nodeId);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void nodeIdChanged(UaNodeId nodeId);

private Q_SLOTS:
    void sltComboIndexChanged(int iIndex);
    void sltNodeIdChanged();

private:
    const std::unique_ptr<NodeIdControls> d;
};
