#include "nodeideditors.h"

#include "../base/editorhelpers_p.h"
#include "nodeidcontrols_p.h"

#include <QtWidgets/QVBoxLayout>

QvelWidgetNodeId::QvelWidgetNodeId(QvelWidgetFlags flags, QWidget* parent,
                                   Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags),
      d(new NodeIdControls({tr("Numeric"), tr("String"), tr("Guid"), tr("Opaque")}))
{
    registerValueTypes<UaVariant, UaNodeId>();
    applyFlags(d->namespaceIndex, flags);
    applyFlags(d->type, flags);
    applyFlags(d->identifier, flags);
    d->namespaceIndex->setMaximumWidth(50);
    d->type->setMinimumWidth(80);
    d->namespaceIndex->setAccessibleName(tr("Namespace index"));
    d->type->setAccessibleName(tr("Identifier type"));
    d->identifier->setAccessibleName(tr("Identifier"));
    layOutInline(this, 2, d->namespaceIndex, d->type, d->identifier);
    d->connectTo(this, &QvelWidgetNodeId::sltComboIndexChanged,
                 &QvelWidgetNodeId::sltNodeIdChanged);
}

QvelWidgetNodeId::~QvelWidgetNodeId() = default;

UaVariant QvelWidgetNodeId::value(bool* ok) const
{
    return editorValue(this, &QvelWidgetNodeId::nodeId, &UaVariant::setNodeId, ok);
}

void QvelWidgetNodeId::setValue(const UaVariant& value)
{
    if (isScalarOf(value, OpcUaType_NodeId))
        setNodeId(value.toNodeId());
}

UaNodeId QvelWidgetNodeId::nodeId(bool* ok) const
{
    return d->nodeId(ok);
}

void QvelWidgetNodeId::setNodeId(const UaNodeId& nodeId)
{
    d->setNodeId(nodeId);
}

void QvelWidgetNodeId::sltComboIndexChanged(int iIndex)
{
    d->setIdentifierType(iIndex);
}

void QvelWidgetNodeId::sltNodeIdChanged()
{
    Q_EMIT valueChanged(value(nullptr));
    Q_EMIT nodeIdChanged(nodeId(nullptr));
}

QvelDialogWidgetNodeId::QvelDialogWidgetNodeId(QvelDialogWidgetFlags flags, QWidget* parent,
                                               Qt::WindowFlags windowFlags)
    : QvelDialogWidgetBase(flags, parent, windowFlags),
      d(new NodeIdControls({tr("Numeric"), tr("String"), tr("Guid"), tr("Opaque")}))
{
    registerValueTypes<UaVariant, UaNodeId>();
    auto* grid = new QGridLayout;
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setVerticalSpacing(2);
    addDialogRow(grid, tr("NsIndex:"), d->namespaceIndex, flags);
    addDialogRow(grid, tr("IdentifierType:"), d->type, flags);
    addDialogRow(grid, tr("Identifier:"), d->identifier, flags);
    mainLayout()->insertLayout(0, grid);
    d->connectTo(this, &QvelDialogWidgetNodeId::sltComboIndexChanged,
                 &QvelDialogWidgetNodeId::sltNodeIdChanged);
}

QvelDialogWidgetNodeId::~QvelDialogWidgetNodeId() = default;

UaVariant QvelDialogWidgetNodeId::value(bool* ok) const
{
    return editorValue(this, &QvelDialogWidgetNodeId::nodeId, &UaVariant::setNodeId, ok);
}

void QvelDialogWidgetNodeId::setValue(const UaVariant& value)
{
    if (isScalarOf(value, OpcUaType_NodeId))
        setNodeId(value.toNodeId());
}

UaNodeId QvelDialogWidgetNodeId::nodeId(bool* ok) const
{
    return d->nodeId(ok);
}

void QvelDialogWidgetNodeId::setNodeId(const UaNodeId& nodeId)
{
    d->setNodeId(nodeId);
}

void QvelDialogWidgetNodeId::sltComboIndexChanged(int iIndex)
{
    d->setIdentifierType(iIndex);
}

void QvelDialogWidgetNodeId::sltNodeIdChanged()
{
    Q_EMIT valueChanged(value(nullptr));
    Q_EMIT nodeIdChanged(nodeId(nullptr));
}
