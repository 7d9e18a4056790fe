#include "matrixeditors.h"

#include "elementdialog_p.h"
#include "elementstore_p.h"
#include "platform/types/uastacktypearray.h"
#include "platform/types/variantelements_p.h"

#include <QtWidgets/QInputDialog>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>

#include <algorithm>

namespace {

std::vector<OpcUa_UInt32> toVector(const UaStackTypeArray<OpcUa_UInt32>& lengths)
{
    return std::vector<OpcUa_UInt32>(lengths.begin(), lengths.end());
}

} // namespace

QvelMatrixModel::QvelMatrixModel(UaVariant* value, bool readOnly, QObject* parent)
    : QAbstractTableModel(parent), d(new ElementStore(value, readOnly))
{
    readDimensions();
}

QvelMatrixModel::~QvelMatrixModel() = default;

int QvelMatrixModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_count;
}

int QvelMatrixModel::columnCount(const QModelIndex& /*parent*/) const
{
    return 1;
}

QVariant QvelMatrixModel::data(const QModelIndex& index, int role) const
{
    return d->data(index, role);
}

bool QvelMatrixModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    return d->setData(index, value, role);
}

QVariant QvelMatrixModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Vertical || role != Qt::DisplayRole || section < 0 || section >= m_count)
        return QVariant();
    QString label;
    auto rest = OpcUa_UInt32(section);
    for (auto length = m_dimensions.rbegin(); length != m_dimensions.rend(); ++length) {
        label.prepend(tr("[%1]").arg(rest % *length));
        rest /= *length;
    }
    return label;
}

Qt::ItemFlags QvelMatrixModel::flags(const QModelIndex& index) const
{
    return d->flags(index, m_count);
}

// What the storage does not back is no row. False if there are no dimensions.
bool QvelMatrixModel::readDimensions()
{
    UaStackTypeArray<OpcUa_UInt32> dimensions;
    d->value().arrayDimensions(dimensions);
    m_dimensions = toVector(dimensions);
    if (m_dimensions.empty())
        return false;
    m_count = d->value().arraySize();
    return true;
}

void QvelMatrixModel::refresh()
{
    beginResetModel();
    readDimensions();
    endResetModel();
}

bool QvelMatrixModel::setDimensions(const UaStackTypeArray<OpcUa_UInt32>& dims)
{
    if (!d->isEditable())
        return false;
    if (!d->isMatrix())
        return true;
    // All that may fail comes before anything is announced; until then, the model keeps to its own
    // count.
    const std::vector<OpcUa_UInt32> lengths = toVector(dims);
    if (!d->reshape(lengths))
        return false;
    const int oldCount = std::max(m_count, 0);
    const int newCount = elementCount(lengths);
    if (newCount < oldCount)
        beginRemoveRows(QModelIndex(), newCount, oldCount - 1);
    else if (newCount > oldCount)
        beginInsertRows(QModelIndex(), oldCount, newCount - 1);
    m_count = newCount;
    m_dimensions = lengths;
    if (newCount < oldCount)
        endRemoveRows();
    else if (newCount > oldCount)
        endInsertRows();
    Q_EMIT headerDataChanged(Qt::Vertical, 0, int(lengths.size()) - 1);
    return true;
}

void QvelMatrixModel::setEnumInfo(const QvelEnumInfo& info)
{
    d->setEnumInfo(info);
}

QvelDialogWidgetMatrix::QvelDialogWidgetMatrix(const UaVariant& value, QvelDialogWidgetFlags flags,
                                               QWidget* parent, Qt::WindowFlags windowFlags)
    : QvelDialogWidgetBase(flags, parent, windowFlags), d(new ElementDialog(this)),
      m_model(new QvelMatrixModel(&d->value, d->isReadOnly(), this))
{
    auto* dimensions = new QPushButton(tr("Set Dimensions"));
    dimensions->setAutoDefault(false);
    d->layOut(mainLayout(), buttonBox(), m_model, {dimensions},
              tr("Writing values of this type\nis currently not supported."));
    connect(dimensions, &QPushButton::clicked, this, &QvelDialogWidgetMatrix::sltSetDimensions);
    connect(m_model, &QAbstractItemModel::rowsInserted, this,
            &QvelDialogWidgetMatrix::sltResizeView);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this,
            &QvelDialogWidgetMatrix::sltResizeView);
    connect(m_model, &QAbstractItemModel::headerDataChanged, this,
            &QvelDialogWidgetMatrix::sltResizeView);
    connect(m_model, &QAbstractItemModel::modelReset, this, &QvelDialogWidgetMatrix::sltResizeView);
    connect(m_model, &QAbstractItemModel::dataChanged, this,
            &QvelDialogWidgetMatrix::sltValueChanged);
    d->value = value;
    d->applyType();
    m_model->refresh();
}

QvelDialogWidgetMatrix::~QvelDialogWidgetMatrix() = default;

UaVariant QvelDialogWidgetMatrix::value(bool* ok) const
{
    if (ok)
        *ok = true;
    return d->value;
}

void QvelDialogWidgetMatrix::setValue(const UaVariant& value)
{
    if (value.arrayType() != OpcUa_VariantArrayType_Matrix)
        return;
    d->value = value;
    d->applyType();
    m_model->refresh();
}

void QvelDialogWidgetMatrix::setInitialValue(OpcUa_Byte builtInType,
                                             const UaStackTypeArray<OpcUa_UInt32>& dimensions)
{
    UaVariant initial;
    initial.setEmptyMatrix(OpcUa_BuiltInType(builtInType));
    if (!initial.isEmpty() && reshapeElements(initial, toVector(dimensions)))
        setValue(initial);
}

void QvelDialogWidgetMatrix::setEnumInfo(const QvelEnumInfo& info)
{
    m_model->setEnumInfo(info);
    d->setNamed(info.kind != QvelEnumInfo::NoEnumeration);
}

void QvelDialogWidgetMatrix::sltResizeView()
{
    d->table->fitContents();
}

void QvelDialogWidgetMatrix::sltSetDimensions()
{
    UaStackTypeArray<OpcUa_UInt32> dimensions;
    d->value.arrayDimensions(dimensions);
    QStringList parts;
    for (OpcUa_UInt32 length : dimensions)
        parts << QString::number(length);
    bool ok = false;
    const QString text =
        QInputDialog::getText(this, tr("Set Matrix Dimensions"),
                              tr("Enter a comma separated list of dimensions (e.g. '2,4,6'):"),
                              QLineEdit::Normal, parts.join(QLatin1Char(',')), &ok);
    if (!ok)
        return;
    parts = text.split(QLatin1Char(','));
    ok = dimensions.resize(OpcUa_UInt32(parts.size()));
    for (int i = 0; ok && i < parts.size(); ++i)
        dimensions[OpcUa_UInt32(i)] = parts.at(i).toUInt(&ok);
    if (!ok)
        QMessageBox::warning(this, tr("Format Error"),
                             tr("The list of dimensions entered was not valid."));
    else if (!m_model->setDimensions(dimensions))
        QMessageBox::warning(
            this, tr("Set Matrix Dimensions"),
            tr("The matrix would have too many elements, or there is not enough memory for it. "
               "It was not changed."));
}

void QvelDialogWidgetMatrix::sltValueChanged()
{
    Q_EMIT valueChanged(value(nullptr));
}

QvelEditWidgetMatrix::QvelEditWidgetMatrix(QvelEditWidgetFlags flags, QWidget* parent,
                                           Qt::WindowFlags windowFlags)
    : QvelEditWidgetBase(flags, parent, windowFlags),
      d(new ElementField<QvelDialogWidgetMatrix>(this))
{
    connect(d->dialog(), &QDialog::accepted, this, &QvelEditWidgetMatrix::sltDialogWidgetAccepted);
    connect(d->dialog(), &QDialog::rejected, this, &QvelEditWidgetMatrix::sltDialogWidgetRejected);
    connect(d->dialog(), &QvelDialogWidgetMatrix::valueChanged, this,
            &QvelEditWidgetMatrix::valueChanged);
    connect(d->button(), &QToolButton::clicked, this, &QvelEditWidgetMatrix::sltShowDialogWidget);
}

QvelEditWidgetMatrix::~QvelEditWidgetMatrix() = default;

UaVariant QvelEditWidgetMatrix::value(bool* ok) const
{
    if (ok)
        *ok = false;
    return d->dialog()->value(ok);
}

void QvelEditWidgetMatrix::setValue(const UaVariant& value)
{
    if (value.arrayType() != OpcUa_VariantArrayType_Matrix)
        return;
    d->dialog()->setValue(value);
    d->take();
}

void QvelEditWidgetMatrix::setInitialValue(OpcUa_Byte builtInType,
                                           const UaStackTypeArray<OpcUa_UInt32>& dimensions)
{
    d->dialog()->setInitialValue(builtInType, dimensions);
    d->take();
}

void QvelEditWidgetMatrix::setEnumInfo(const QvelEnumInfo& info)
{
    d->setEnumInfo(info, tr("This matrix type cannot be displayed"));
}

// Edits in the dialog are not told one by one; what was accepted is.
void QvelEditWidgetMatrix::sltDialogWidgetAccepted()
{
    d->take();
    Q_EMIT valueChanged(value(nullptr));
}

void QvelEditWidgetMatrix::sltDialogWidgetRejected()
{
    d->restore();
}

void QvelEditWidgetMatrix::sltShowDialogWidget()
{
    d->run();
}
