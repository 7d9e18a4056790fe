#include "expandednodeideditors.h"

#include "base/editorhelpers_p.h"
#include "values/nodeidcontrols_p.h"

#include <QtWidgets/QToolButton>

#include <limits>

QvelDialogWidgetExpandedNodeId::QvelDialogWidgetExpandedNodeId(QvelDialogWidgetFlags flags,
                                                               QWidget* parent,
                                                               Qt::WindowFlags windowFlags)
    : QvelDialogWidgetBase(flags, parent, windowFlags), m_namespaceUri(new QLineEdit),
      m_serverIndex(new QSpinBox), m_nodeId(new NodeIdControls(NodeIdControls::Room::ForGuid))
{
    registerValueTypes<UaVariant, UaExpandedNodeId>();
    m_serverIndex->setMaximum(std::numeric_limits<OpcUa_Int32>::max());
    QGridLayout* grid = insertDialogGrid(mainLayout());
    addDialogRow(
        grid, [] { return tr("NamespaceUri:"); }, m_namespaceUri, flags);
    addDialogRow(
        grid, [] { return tr("ServerIndex:"); }, m_serverIndex, flags);
    addDialogRow(
        grid, [] { return tr("NsIndex:"); }, m_nodeId->namespaceIndex, flags);
    addDialogRow(
        grid, [] { return tr("IdentifierType:"); }, m_nodeId->type, flags);
    addDialogRow(
        grid, [] { return tr("Identifier:"); }, m_nodeId->identifier, flags);
    retranslated(this, [this] {
        m_nodeId->setTypeNames({tr("Numeric"), tr("String"), tr("Guid"), tr("Opaque")});
    });
    connect(m_namespaceUri, &QLineEdit::textChanged, this,
            &QvelDialogWidgetExpandedNodeId::sltExpandedNodeIdChanged);
    connect(m_serverIndex, &QSpinBox::valueChanged, this,
            &QvelDialogWidgetExpandedNodeId::sltExpandedNodeIdChanged);
    m_nodeId->connectTo(this, &QvelDialogWidgetExpandedNodeId::sltComboIndexChanged,
                        &QvelDialogWidgetExpandedNodeId::sltExpandedNodeIdChanged);
}

QvelDialogWidgetExpandedNodeId::~QvelDialogWidgetExpandedNodeId() = default;

KESTREL_SCALAR_EDITOR(QvelDialogWidgetExpandedNodeId, ExpandedNodeId, expandedNodeId)

UaExpandedNodeId QvelDialogWidgetExpandedNodeId::expandedNodeId(bool* ok) const
{
    return UaExpandedNodeId(m_nodeId->nodeId(ok), UaString(m_namespaceUri->text()),
                            OpcUa_UInt32(m_serverIndex->value()));
}

void QvelDialogWidgetExpandedNodeId::setExpandedNodeId(const UaExpandedNodeId& expandedNodeId)
{
    showWhole(m_namespaceUri, expandedNodeId.namespaceUri().toQString());
    m_serverIndex->setValue(OpcUa_Int32(expandedNodeId.serverIndex()));
    m_nodeId->setNodeId(expandedNodeId.nodeId());
}

void QvelDialogWidgetExpandedNodeId::sltComboIndexChanged(int iIndex)
{
    m_nodeId->setIdentifierType(iIndex);
}

QvelEditWidgetExpandedNodeId::QvelEditWidgetExpandedNodeId(QvelEditWidgetFlags flags,
                                                           QWidget* parent,
                                                           Qt::WindowFlags windowFlags)
    : QvelEditWidgetBase(flags, parent, windowFlags)
{
    registerValueTypes<UaVariant, UaExpandedNodeId>();
    const EditFieldControls controls = layOutEditField(this);
    m_edit = controls.edit;
    showInToolTip(m_edit);
    m_dialog = new QvelDialogWidgetExpandedNodeId(dialogFlags(flags & ReadOnly), this);
    store(UaExpandedNodeId());
    connectDialog(controls.button, m_dialog);
    connect(m_edit, &QLineEdit::textChanged, this,
            &QvelEditWidgetExpandedNodeId::sltExpandedNodeIdChanged);
}

QvelEditWidgetExpandedNodeId::~QvelEditWidgetExpandedNodeId() = default;

void QvelEditWidgetExpandedNodeId::updateControls()
{
    m_dialog->setFlags(dialogFlags(flags() & ReadOnly));
}

UaVariant QvelEditWidgetExpandedNodeId::value(bool* ok) const
{
    return m_dialog->value(ok);
}

void QvelEditWidgetExpandedNodeId::setValue(const UaVariant& value)
{
    m_dialog->setValue(value);
    store(m_dialog->expandedNodeId(nullptr));
}

UaExpandedNodeId QvelEditWidgetExpandedNodeId::expandedNodeId(bool* ok) const
{
    return m_dialog->expandedNodeId(ok);
}

void QvelEditWidgetExpandedNodeId::setExpandedNodeId(const UaExpandedNodeId& expandedNodeId)
{
    m_dialog->setExpandedNodeId(expandedNodeId);
    store(expandedNodeId);
}

void QvelEditWidgetExpandedNodeId::sltDialogWidgetAccepted()
{
    store(m_dialog->expandedNodeId(nullptr));
}

void QvelEditWidgetExpandedNodeId::sltDialogWidgetRejected()
{
    m_dialog->setExpandedNodeId(m_accepted);
}

void QvelEditWidgetExpandedNodeId::sltShowDialogWidget()
{
    showDialogAt(m_dialog, m_edit);
}

void QvelEditWidgetExpandedNodeId::sltExpandedNodeIdChanged()
{
    emitChanged(this, &QvelEditWidgetExpandedNodeId::expandedNodeId,
                &QvelEditWidgetExpandedNodeId::expandedNodeIdChanged);
}

void QvelEditWidgetExpandedNodeId::store(const UaExpandedNodeId& expandedNodeId)
{
    m_accepted = expandedNodeId;
    showWhole(m_edit, expandedNodeId.toFullString().toQString());
    m_edit->setCursorPosition(0);
}
