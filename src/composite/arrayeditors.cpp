#include "arrayeditors.h"

#include "elementdialog_p.h"
#include "elementstore_p.h"
#include "platform/types/variantelements_p.h"

#include <QtWidgets/QMessageBox>

QvelArrayModel::QvelArrayModel(UaVariant* value, bool readOnly, QObject* parent)
    : QAbstractTableModel(parent), d(new ElementStore(value, readOnly))
{
}

QvelArrayModel::~QvelArrayModel() = default;

int QvelArrayModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : d->value().arraySize() - m_pending;
}

int QvelArrayModel::columnCount(const QModelIndex& /*parent*/) const
{
    return 1;
}

QVariant QvelArrayModel::data(const QModelIndex& index, int role) const
{
    return d->data(index, role);
}

bool QvelArrayModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    return d->setData(index, value, role);
}

QVariant QvelArrayModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const bool isRow = orientation == Qt::Vertical && section >= 0 && section < rowCount();
    return isRow && role == Qt::DisplayRole ? QString::number(section) : QVariant();
}

Qt::ItemFlags QvelArrayModel::flags(const QModelIndex& index) const
{
    return d->flags(index, rowCount());
}

bool QvelArrayModel::addElement()
{
    if (!d->isEditable())
        return false;
    if (!d->isArray())
        return true;
    // Rows can only be announced once there is memory for them.
    const int rows = rowCount();
    if (!d->resize(std::size_t(rows) + 1))
        return false;
    m_pending = 1;
    beginInsertRows(QModelIndex(), rows, rows);
    m_pending = 0;
    endInsertRows();
    return true;
}

bool QvelArrayModel::removeElement()
{
    if (!d->isEditable())
        return false;
    const int rows = rowCount();
    if (!d->isArray() || rows == 0)
        return true;
    if (!d->value().detach()) // the one step that takes memory
        return false;
    beginRemoveRows(QModelIndex(), rows - 1, rows - 1);
    const bool removed = d->resize(std::size_t(rows) - 1);
    endRemoveRows();
    return removed;
}

void QvelArrayModel::refresh()
{
    beginResetModel();
    endResetModel();
}

void QvelArrayModel::setEnumInfo(const QvelEnumInfo& info)
{
    d->setEnumInfo(info);
}

QvelDialogWidgetArray::QvelDialogWidgetArray(const UaVariant& value, QvelDialogWidgetFlags flags,
                                             QWidget* parent, Qt::WindowFlags windowFlags)
    : QvelDialogWidgetBase(flags, parent, windowFlags), d(new ElementDialog(this)),
      m_model(new QvelArrayModel(&d->value, d->isReadOnly(), this))
{
    auto* add = new QToolButton;
    add->setText(QStringLiteral("+"));
    add->setAccessibleName(tr("Append element"));
    auto* remove = new QToolButton;
    remove->setText(QStringLiteral("-"));
    remove->setAccessibleName(tr("Remove last element"));
    d->layOut(mainLayout(), buttonBox(), m_model, {add, remove},
              tr("Writing values of this type\nis currently not supported."));
    connect(add, &QToolButton::clicked, this, &QvelDialogWidgetArray::sltAddElement);
    connect(remove, &QToolButton::clicked, this, &QvelDialogWidgetArray::sltRemoveElement);
    connect(m_model, &QAbstractItemModel::rowsInserted, this,
            &QvelDialogWidgetArray::sltResizeView);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &QvelDialogWidgetArray::sltResizeView);
    connect(m_model, &QAbstractItemModel::headerDataChanged, this,
            &QvelDialogWidgetArray::sltResizeView);
    connect(m_model, &QAbstractItemModel::modelReset, this, &QvelDialogWidgetArray::sltResizeView);
    connect(m_model, &QAbstractItemModel::dataChanged, this,
            &QvelDialogWidgetArray::sltValueChanged);
    d->value = value;
    d->applyType();
    m_model->refresh();
}

QvelDialogWidgetArray::~QvelDialogWidgetArray() = default;

UaVariant QvelDialogWidgetArray::value(bool* ok) const
{
    if (ok)
        *ok = true;
    return d->value;
}

void QvelDialogWidgetArray::setValue(const UaVariant& value)
{
    if (value.arrayType() != OpcUa_VariantArrayType_Array)
        return;
    d->value = value;
    d->applyType();
    m_model->refresh();
}

void QvelDialogWidgetArray::setInitialValue(OpcUa_Byte builtInType, OpcUa_UInt32 length)
{
    UaVariant initial;
    initial.setEmptyArray(OpcUa_BuiltInType(builtInType));
    if (!initial.isEmpty() && resizeElements(initial, length))
        setValue(initial);
}

void QvelDialogWidgetArray::setEnumInfo(const QvelEnumInfo& info)
{
    m_model->setEnumInfo(info);
    d->setNamed(info.kind != QvelEnumInfo::NoEnumeration);
}

void QvelDialogWidgetArray::sltResizeView()
{
    d->table->fitContents();
}

void QvelDialogWidgetArray::sltAddElement()
{
    if (m_model->addElement())
        d->table->showLastRow();
    else
        showNoMemory();
}

void QvelDialogWidgetArray::sltRemoveElement()
{
    if (!m_model->removeElement())
        showNoMemory();
}

// The buttons of a type that cannot be edited are not there to be clicked.
void QvelDialogWidgetArray::showNoMemory()
{
    QMessageBox::warning(this, tr("Array"), tr("There is not enough memory to change the array."));
}

void QvelDialogWidgetArray::sltValueChanged()
{
    Q_EMIT valueChanged(value(nullptr));
}

QvelEditWidgetArray::QvelEditWidgetArray(QvelEditWidgetFlags flags, QWidget* parent,
                                         Qt::WindowFlags windowFlags)
    : QvelEditWidgetBase(flags, parent, windowFlags),
      d(new ElementField<QvelDialogWidgetArray>(this))
{
    connect(d->dialog(), &QDialog::accepted, this, &QvelEditWidgetArray::sltDialogWidgetAccepted);
    connect(d->dialog(), &QDialog::rejected, this, &QvelEditWidgetArray::sltDialogWidgetRejected);
    connect(d->dialog(), &QvelDialogWidgetArray::valueChanged, this,
            &QvelEditWidgetArray::valueChanged);
    connect(d->button(), &QToolButton::clicked, this, &QvelEditWidgetArray::sltShowDialogWidget);
}

QvelEditWidgetArray::~QvelEditWidgetArray() = default;

UaVariant QvelEditWidgetArray::value(bool* ok) const
{
    if (ok)
        *ok = false;
    return d->dialog()->value(ok);
}

void QvelEditWidgetArray::setValue(const UaVariant& value)
{
    if (value.arrayType() != OpcUa_VariantArrayType_Array)
        return;
    d->dialog()->setValue(value);
    d->take();
}

void QvelEditWidgetArray::setInitialValue(OpcUa_Byte builtInType, OpcUa_UInt32 length)
{
    d->dialog()->setInitialValue(builtInType, length);
    d->take();
}

void QvelEditWidgetArray::setEnumInfo(const QvelEnumInfo& info)
{
    d->setEnumInfo(info, tr("This array type cannot be displayed"));
}

// Edits in the dialog are not told one by one; what was accepted is.
void QvelEditWidgetArray::sltDialogWidgetAccepted()
{
    d->take();
    Q_EMIT valueChanged(value(nullptr));
}

void QvelEditWidgetArray::sltDialogWidgetRejected()
{
    d->restore();
}

void QvelEditWidgetArray::sltShowDialogWidget()
{
    d->run();
}
