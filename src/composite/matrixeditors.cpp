#include "matrixeditors.h"

#include "base/ownmodal_p.h"
#include "base/valueline_p.h"
#include "composite/elementdialog_p.h"
#include "composite/elementstore_p.h"
#include "platform/types/uastacktypearray.h"

#include <QtWidgets/QInputDialog>
#include <QtWidgets/QPushButton>

#include <algorithm>
#include <limits>

namespace {

// The most indices that a label tells.
constexpr std::size_t maxLabelled = 32;

std::vector<OpcUa_UInt32> toVector(const UaStackTypeArray<OpcUa_UInt32>& lengths)
{
    return std::vector<OpcUa_UInt32>(lengths.begin(), lengths.end());
}

} // namespace

QvelMatrixModel::QvelMatrixModel(UaVariant* value, bool readOnly, QObject* parent)
    : QvelElementModel(value, readOnly, parent)
{
    readDimensions();
}

QvelMatrixModel::~QvelMatrixModel() = default;

int QvelMatrixModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_count;
}

QVariant QvelMatrixModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Vertical || role != Qt::DisplayRole || section < 0 || section >= m_count)
        return QVariant();
    QString label;
    auto rest = OpcUa_UInt32(section);
    const std::size_t shown = std::min(m_dimensions.size(), maxLabelled);
    for (auto length = m_dimensions.rbegin(); length != m_dimensions.rbegin() + shown; ++length) {
        label.prepend(
            QCoreApplication::translate("QAbstractTableModel", "[%1]").arg(rest % *length));
        rest /= *length;
    }
    if (shown < m_dimensions.size())
        label.prepend(QStringLiteral("..."));
    return label;
}

// What the storage does not back is no row. Without dimensions, the count stays.
void QvelMatrixModel::readDimensions()
{
    UaStackTypeArray<OpcUa_UInt32> dimensions;
    d->value().arrayDimensions(dimensions);
    m_dimensions = toVector(dimensions);
    if (!m_dimensions.empty())
        m_count = d->value().arraySize();
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
    const int newCount = UaVariant::elementCount(lengths);
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

QvelDialogWidgetMatrix::QvelDialogWidgetMatrix(const UaVariant& value, QvelDialogWidgetFlags flags,
                                               QWidget* parent, Qt::WindowFlags windowFlags)
    : QvelDialogWidgetBase(flags, parent, windowFlags), d(new ElementDialog(this)),
      m_model(new QvelMatrixModel(&d->value, d->isReadOnly(), this))
{
    auto* dimensions = new QPushButton;
    dimensions->setAutoDefault(false);
    auto* unsupported = new QLabel;
    retranslated(this, [dimensions, unsupported] {
        dimensions->setText(tr("Set Dimensions"));
        unsupported->setText(tr("Writing values of this type\nis currently not supported."));
    });
    d->layOut(mainLayout(), buttonBox(), m_model, {dimensions}, unsupported);
    d->watch(this, &QvelDialogWidgetMatrix::sltResizeView,
             &QvelDialogWidgetMatrix::sltValueChanged);
    connect(dimensions, &QPushButton::clicked, this, &QvelDialogWidgetMatrix::sltSetDimensions);
    d->take(value);
    m_model->refresh();
}

QvelDialogWidgetMatrix::~QvelDialogWidgetMatrix() = default;

void QvelDialogWidgetMatrix::updateControls()
{
    d->updateFlags();
}

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
    d->take(value);
    m_model->refresh();
}

void QvelDialogWidgetMatrix::setInitialValue(OpcUa_Byte builtInType,
                                             const UaStackTypeArray<OpcUa_UInt32>& dimensions)
{
    UaVariant initial;
    initial.setEmptyMatrix(OpcUa_BuiltInType(builtInType));
    if (initial.setDimensions(dimensions))
        setValue(initial);
}

void QvelDialogWidgetMatrix::setEnumInfo(const QvelEnumInfo& info)
{
    d->setEnumInfo(info);
}

void QvelDialogWidgetMatrix::setWritesOnlyChanges(bool onlyChanges)
{
    d->setWritesOnlyChanges(onlyChanges);
}

// A window that gets its size only when it is shown may not stay where it was moved.
void QvelDialogWidgetMatrix::setVisible(bool visible)
{
    if (visible && !isVisible())
        d->table->makeRoom();
    QvelDialogWidgetBase::setVisible(visible);
}

void QvelDialogWidgetMatrix::sltResizeView()
{
    d->table->fitContents();
}

void QvelDialogWidgetMatrix::sltSetDimensions()
{
    d->clicked.run(qobject_cast<QAbstractButton*>(sender()), [this] { askForDimensions(); });
}

// This dialog may be deleted while it asks, and with it the dialog that asks.
void QvelDialogWidgetMatrix::askForDimensions()
{
    UaStackTypeArray<OpcUa_UInt32> dimensions;
    d->value.arrayDimensions(dimensions);
    QStringList parts;
    for (OpcUa_UInt32 length : dimensions)
        parts << QString::number(length);
    const QPointer<QInputDialog> input = new QInputDialog(this);
    retranslated(input, [dialog = input.data()] {
        dialog->setWindowTitle(tr("Set Matrix Dimensions"));
        dialog->setLabelText(tr("Enter a comma separated list of dimensions (e.g. '2,4,6'):"));
    });
    input->setInputMode(QInputDialog::TextInput);
    input->findChild<QLineEdit*>()->setMaxLength(std::numeric_limits<int>::max());
    input->setTextValue(parts.join(QLatin1Char(',')));
    const bool isAccepted = input->exec() == QDialog::Accepted;
    if (!input)
        return;
    parts = input->textValue().split(QLatin1Char(','));
    delete input;
    if (!isAccepted)
        return;
    bool ok = dimensions.resize(OpcUa_UInt32(parts.size()));
    for (int i = 0; ok && i < parts.size(); ++i)
        dimensions[OpcUa_UInt32(i)] = parts.at(i).toUInt(&ok);
    if (!ok) {
        runMessageBox(this, QMessageBox::Warning, tr("Format Error"),
                      tr("The list of dimensions entered was not valid."));
        return;
    }
    const OpcUa_Int32 count = UaVariant::elementCount(dimensions);
    const bool isSet = count >= 0 && d->table->hasRoomFor(std::size_t(count)) &&
                       m_model->setDimensions(dimensions);
    if (!isSet && isEditableType(d->value.type()))
        runMessageBox(
            this, QMessageBox::Warning, tr("Set Matrix Dimensions"),
            tr("The matrix would have too many elements, or there is not enough memory for it. "
               "It was not changed."));
}

void QvelDialogWidgetMatrix::sltValueChanged()
{
    Q_EMIT valueChanged(value());
}

QvelEditWidgetMatrix::QvelEditWidgetMatrix(QvelEditWidgetFlags flags, QWidget* parent,
                                           Qt::WindowFlags windowFlags)
    : QvelEditWidgetBase(flags, parent, windowFlags),
      d(new ElementField<QvelDialogWidgetMatrix>(this,
                                                 &QvelEditWidgetMatrix::sltDialogWidgetAccepted,
                                                 &QvelEditWidgetMatrix::sltDialogWidgetRejected,
                                                 &QvelEditWidgetMatrix::sltShowDialogWidget))
{
}

QvelEditWidgetMatrix::~QvelEditWidgetMatrix() = default;

void QvelEditWidgetMatrix::updateControls()
{
    d->updateFlags();
}

QString QvelEditWidgetMatrix::valueText() const
{
    return jsonLine(value());
}

void QvelEditWidgetMatrix::setValueText(const QString& text)
{
    if (const auto value = valueOfJsonLine(text))
        setValue(*value);
}

UaVariant QvelEditWidgetMatrix::value(bool* ok) const
{
    return d->value(ok);
}

void QvelEditWidgetMatrix::setValue(const UaVariant& value)
{
    d->setValue(value, OpcUa_VariantArrayType_Matrix);
}

void QvelEditWidgetMatrix::setInitialValue(OpcUa_Byte builtInType,
                                           const UaStackTypeArray<OpcUa_UInt32>& dimensions)
{
    d->dialog()->setInitialValue(builtInType, dimensions);
    d->take();
}

void QvelEditWidgetMatrix::setEnumInfo(const QvelEnumInfo& info)
{
    d->setEnumInfo(info, [] { return tr("This matrix type cannot be displayed"); });
}

void QvelEditWidgetMatrix::setWritesOnlyChanges(bool onlyChanges)
{
    d->dialog()->setWritesOnlyChanges(onlyChanges);
}

// Edits in the dialog are not told one by one; what was accepted is.
void QvelEditWidgetMatrix::sltDialogWidgetAccepted()
{
    d->take();
    Q_EMIT valueChanged(value());
}

void QvelEditWidgetMatrix::sltDialogWidgetRejected()
{
    d->restore();
}

void QvelEditWidgetMatrix::sltShowDialogWidget()
{
    d->run();
}
