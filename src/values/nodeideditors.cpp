#include "nodeideditors.h"

#include "base/editorhelpers_p.h"
#include "values/nodeidcontrols_p.h"

QvelWidgetNodeId::QvelWidgetNodeId(QvelWidgetFlags flags, QWidget* parent,
                                   Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), d(new NodeIdControls)
{
    registerValueTypes<UaVariant, UaNodeId>();
    applyFlags(d->namespaceIndex, flags);
    applyFlags(d->type, flags);
    applyFlags(d->identifier, flags);
    d->namespaceIndex->setMaximumWidth(50);
    d->type->setMinimumWidth(80);
    retranslated(this, [this] {
        d->setTypeNames({tr("Numeric"), tr("String"), tr("Guid"), tr("Opaque")});
        d->namespaceIndex->setAccessibleName(tr("Namespace index"));
        d->type->setAccessibleName(tr("Identifier type"));
        d->identifier->setAccessibleName(tr("Identifier"));
    });
    layOutInline(this, 2, d->namespaceIndex, d->type, d->identifier);
    d->connectTo(this, &QvelWidgetNodeId::sltComboIndexChanged,
                 &QvelWidgetNodeId::sltNodeIdChanged);
}

QvelWidgetNodeId::~QvelWidgetNodeId() = default;

KESTREL_SCALAR_EDITOR(QvelWidgetNodeId, NodeId, nodeId)

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

QvelDialogWidgetNodeId::QvelDialogWidgetNodeId(QvelDialogWidgetFlags flags, QWidget* parent,
                                               Qt::WindowFlags windowFlags)
    : QvelDialogWidgetBase(flags, parent, windowFlags),
      d(new NodeIdControls(NodeIdControls::Room::ForGuid))
{
    registerValueTypes<UaVariant, UaNodeId>();
    QGridLayout* grid = insertDialogGrid(mainLayout());
    addDialogRow(
        grid, [] { return tr("NsIndex:"); }, d->namespaceIndex, flags);
    addDialogRow(
        grid, [] { return tr("IdentifierType:"); }, d->type, flags);
    addDialogRow(
        grid, [] { return tr("Identifier:"); }, d->identifier, flags);
    retranslated(this, [this] {
        d->setTypeNames({tr("Numeric"), tr("String"), tr("Guid"), tr("Opaque")});
    });
    d->connectTo(this, &QvelDialogWidgetNodeId::sltComboIndexChanged,
                 &QvelDialogWidgetNodeId::sltNodeIdChanged);
}

QvelDialogWidgetNodeId::~QvelDialogWidgetNodeId() = default;

KESTREL_SCALAR_EDITOR(QvelDialogWidgetNodeId, NodeId, nodeId)

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
