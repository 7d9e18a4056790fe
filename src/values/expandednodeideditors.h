#pragma once

#include "../base/editorbases.h"
#include "../platform/types/uaexpandednodeid.h"

#include <memory>

class NodeIdControls;
class QLineEdit;
class QSpinBox;

/// \file
/// Editors of an ExpandedNodeId (OPC 10000-4, 7.16). The NodeId is typed as in the NodeId editors;
/// invalid input for it gives a null NodeId beside the typed URI and server index.

/// Dialog editor of an ExpandedNodeId. The server index reaches up to 2147483647; a larger one is
/// shown as 0.
class KESTREL_EXPORT QvelDialogWidgetExpandedNodeId : public QvelDialogWidgetBase
{
    Q_OBJECT
public:
    explicit QvelDialogWidgetExpandedNodeId(QvelDialogWidgetFlags flags = {},
                                            QWidget* parent = nullptr,
                                            Qt::WindowFlags windowFlags = {});
    ~QvelDialogWidgetExpandedNodeId() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaExpandedNodeId expandedNodeId(bool* ok = nullptr) const;
    void setExpandedNodeId(const UaExpandedNodeId& expandedNodeId);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void expandedNodeIdChanged(UaExpandedNodeId expandedNodeId);

private Q_SLOTS:
    void sltComboIndexChanged(int iIndex);
    void sltExpandedNodeIdChanged();

private:
    QLineEdit* m_namespaceUri;
    QSpinBox* m_serverIndex;
    const std::unique_ptr<NodeIdControls> m_nodeId;
};

/// Edit field of an ExpandedNodeId: its full text, and a button that opens the dialog. The field
/// owns its dialog; value() is what the dialog holds.
class KESTREL_EXPORT QvelEditWidgetExpandedNodeId : public QvelEditWidgetBase
{
    Q_OBJECT
public:
    explicit QvelEditWidgetExpandedNodeId(QvelEditWidgetFlags flags = {}, QWidget* parent = nullptr,
                                          Qt::WindowFlags windowFlags = {});
    explicit QvelEditWidgetExpandedNodeId(QWidget* parent)
        : QvelEditWidgetExpandedNodeId(QvelEditWidgetFlags(), parent)
    {
    }
    ~QvelEditWidgetExpandedNodeId() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaExpandedNodeId expandedNodeId(bool* ok = nullptr) const;
    void setExpandedNodeId(const UaExpandedNodeId& expandedNodeId);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void expandedNodeIdChanged(UaExpandedNodeId expandedNodeId);

private Q_SLOTS:
    void sltDialogWidgetAccepted() override;
    void sltDialogWidgetRejected() override;
    void sltShowDialogWidget() override;
    void sltExpandedNodeIdChanged();

private:
    void updateControls() override;
    void store(const UaExpandedNodeId& expandedNodeId);

    QvelDialogWidgetExpandedNodeId* m_dialog;
    QLineEdit* m_edit;
    UaExpandedNodeId m_accepted;
};
