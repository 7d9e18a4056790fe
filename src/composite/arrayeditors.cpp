#include "arrayeditors.h"

#include "base/ownmodal_p.h"
#include "base/valueline_p.h"
#include "composite/elementdialog_p.h"
#include "composite/elementstore_p.h"

QvelArrayModel::QvelArrayModel(UaVariant* value, bool readOnly, QObject* parent)
    : QvelElementModel(value, readOnly, parent)
{
}

QvelArrayModel::~QvelArrayModel() = default;

int QvelArrayModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : d->value().arraySize() - m_pending;
}

QVariant QvelArrayModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const bool isRow = orientation == Qt::Vertical && section >= 0 && section < rowCount();
    return isRow && role == Qt::DisplayRole ? QString::number(section) : QVariant();
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

QvelDialogWidgetArray::QvelDialogWidgetArray(const UaVariant& value, QvelDialogWidgetFlags flags,
                                             QWidget* parent, Qt::WindowFlags windowFlags)
    : QvelDialogWidgetBase(flags, parent, windowFlags), d(new ElementDialog(this)),
      m_model(new QvelArrayModel(&d->value, d->isReadOnly(), this))
{
    auto* add = new QToolButton;
    add->setText(QStringLiteral("+"));
    auto* remove = new QToolButton;
    remove->setText(QStringLiteral("-"));
    auto* unsupported = new QLabel;
    retranslated(this, [add, remove, unsupported] {
        add->setAccessibleName(tr("Append element"));
        remove->setAccessibleName(tr("Remove last element"));
        unsupported->setText(tr("Writing values of this type\nis currently not supported."));
    });
    d->layOut(mainLayout(), buttonBox(), m_model, {add, remove}, unsupported);
    d->watch(this, &QvelDialogWidgetArray::sltResizeView, &QvelDialogWidgetArray::sltValueChanged);
    connect(add, &QToolButton::clicked, this, &QvelDialogWidgetArray::sltAddElement);
    connect(remove, &QToolButton::clicked, this, &QvelDialogWidgetArray::sltRemoveElement);
    d->take(value);
    m_model->refresh();
}

QvelDialogWidgetArray::~QvelDialogWidgetArray() = default;

void QvelDialogWidgetArray::updateControls()
{
    d->updateFlags();
}

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
    d->take(value);
    m_model->refresh();
}

void QvelDialogWidgetArray::setInitialValue(OpcUa_Byte builtInType, OpcUa_UInt32 length)
{
    UaVariant initial;
    initial.setEmptyArray(OpcUa_BuiltInType(builtInType));
    if (initial.resize(length))
        setValue(initial);
}

void QvelDialogWidgetArray::setEnumInfo(const QvelEnumInfo& info)
{
    d->setEnumInfo(info);
}

void QvelDialogWidgetArray::setWritesOnlyChanges(bool onlyChanges)
{
    d->setWritesOnlyChanges(onlyChanges);
}

// A window that gets its size only when it is shown may not stay where it was moved.
void QvelDialogWidgetArray::setVisible(bool visible)
{
    if (visible && !isVisible())
        d->table->makeRoom();
    QvelDialogWidgetBase::setVisible(visible);
}

void QvelDialogWidgetArray::sltResizeView()
{
    d->table->fitContents();
}

void QvelDialogWidgetArray::sltAddElement()
{
    const int rows = m_model->rowCount();
    change(&QvelArrayModel::addElement);
    if (m_model->rowCount() > rows)
        d->table->showLastRow();
}

void QvelDialogWidgetArray::sltRemoveElement()
{
    change(&QvelArrayModel::removeElement);
}

// For a type that cannot be edited the buttons are hidden, and do nothing.
void QvelDialogWidgetArray::change(bool (QvelArrayModel::*change)())
{
    const bool isFull = change == &QvelArrayModel::addElement &&
                        !d->table->hasRoomFor(std::size_t(m_model->rowCount()) + 1);
    if ((!isFull && (m_model->*change)()) || !isEditableType(d->value.type()))
        return;
    d->clicked.run(qobject_cast<QAbstractButton*>(sender()), [this] {
        runMessageBox(this, QMessageBox::Warning, tr("Array"),
                      tr("There is not enough memory to change the array."));
    });
}

void QvelDialogWidgetArray::sltValueChanged()
{
    Q_EMIT valueChanged(value());
}

QvelEditWidgetArray::QvelEditWidgetArray(QvelEditWidgetFlags flags, QWidget* parent,
                                         Qt::WindowFlags windowFlags)
    : QvelEditWidgetBase(flags, parent, windowFlags),
      d(new ElementField<QvelDialogWidgetArray>(this, &QvelEditWidgetArray::sltDialogWidgetAccepted,
                                                &QvelEditWidgetArray::sltDialogWidgetRejected,
                                                &QvelEditWidgetArray::sltShowDialogWidget))
{
}

QvelEditWidgetArray::~QvelEditWidgetArray() = default;

void QvelEditWidgetArray::updateControls()
{
    d->updateFlags();
}

QString QvelEditWidgetArray::valueText() const
{
    return jsonLine(value());
}

void QvelEditWidgetArray::setValueText(const QString& text)
{
    if (const auto value = valueOfJsonLine(text))
        setValue(*value);
}

UaVariant QvelEditWidgetArray::value(bool* ok) const
{
    return d->value(ok);
}

void QvelEditWidgetArray::setValue(const UaVariant& value)
{
    d->setValue(value, OpcUa_VariantArrayType_Array);
}

void QvelEditWidgetArray::setInitialValue(OpcUa_Byte builtInType, OpcUa_UInt32 length)
{
    d->dialog()->setInitialValue(builtInType, length);
    d->take();
}

void QvelEditWidgetArray::setEnumInfo(const QvelEnumInfo& info)
{
    d->setEnumInfo(info, [] { return tr("This array type cannot be displayed"); });
}

void QvelEditWidgetArray::setWritesOnlyChanges(bool onlyChanges)
{
    d->dialog()->setWritesOnlyChanges(onlyChanges);
}

// Edits in the dialog are not told one by one; what was accepted is.
void QvelEditWidgetArray::sltDialogWidgetAccepted()
{
    d->take();
    Q_EMIT valueChanged(value());
}

void QvelEditWidgetArray::sltDialogWidgetRejected()
{
    d->restore();
}

void QvelEditWidgetArray::sltShowDialogWidget()
{
    d->run();
}
