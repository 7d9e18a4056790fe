#pragma once

#include "../base/editorbases.h"
#include "elementmodel.h"

class ElementDialog;
class QvelDialogWidgetArray;
template <class Dialog>
class ElementField;

/// \file
/// Editors of a one-dimensional array of any built-in type. Arrays of ExtensionObject, DataValue,
/// Variant and DiagnosticInfo are shown but not changed.

/// The elements of an array. User-interface thread only.
class KESTREL_EXPORT QvelArrayModel : public QvelElementModel
{
public:
    QvelArrayModel(UaVariant* value, bool readOnly, QObject* parent = nullptr);
    ~QvelArrayModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    /// Appends a null value. False for a type that cannot be edited, and, with nothing changed,
    /// when there is no memory.
    bool addElement();
    /// Drops the last element, if there is one. False as for addElement().
    bool removeElement();
    void refresh();

private:
    int m_pending = 0; // elements that are there but not yet announced
};

/// Dialog editor of an array. The value is always valid.
///
/// A cell that is being edited while setValue() comes stays open with what was typed where its row
/// still exists and takes the same editor; else the user is told that it was dropped.
class KESTREL_EXPORT QvelDialogWidgetArray : public QvelDialogWidgetBase
{
    Q_OBJECT
    Q_PROPERTY(
        UaVariant value READ value WRITE setValue NOTIFY valueChanged DESIGNABLE false USER true)
public:
    explicit QvelDialogWidgetArray(const UaVariant& value, QvelDialogWidgetFlags flags = {},
                                   QWidget* parent = nullptr, Qt::WindowFlags windowFlags = {});
    ~QvelDialogWidgetArray() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    /// `length` null values of a type. Nothing for type 0, or without memory.
    void setInitialValue(OpcUa_Byte builtInType, OpcUa_UInt32 length);
    /// Names for the elements, as 32-bit integers.
    void setEnumInfo(const QvelEnumInfo& info);
    /// As QvelModelDelegate::setWritesOnlyChanges(), for the cells.
    void setWritesOnlyChanges(bool onlyChanges);

    void setVisible(bool visible) override;

Q_SIGNALS:
    void valueChanged(UaVariant value);

private Q_SLOTS:
    void sltResizeView();
    void sltAddElement();
    void sltRemoveElement();
    void sltValueChanged();

private:
    void change(bool (QvelArrayModel::*change)());

    void updateControls() override;

    const std::unique_ptr<ElementDialog> d;
    QvelArrayModel* m_model;
};

/// Edit field of an array; its line is the text of the whole array, as far as it fits.
class KESTREL_EXPORT QvelEditWidgetArray : public QvelEditWidgetBase
{
    Q_OBJECT
    Q_PROPERTY(
        UaVariant value READ value WRITE setValue NOTIFY valueChanged DESIGNABLE false USER true)
public:
    explicit QvelEditWidgetArray(QvelEditWidgetFlags flags = {}, QWidget* parent = nullptr,
                                 Qt::WindowFlags windowFlags = {});
    explicit QvelEditWidgetArray(QWidget* parent)
        : QvelEditWidgetArray(QvelEditWidgetFlags(), parent)
    {
    }
    ~QvelEditWidgetArray() override;

    /// What the dialog holds, also while it is open.
    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    QString valueText() const override;
    void setValueText(const QString& text) override;
    /// As the dialog's.
    void setInitialValue(OpcUa_Byte builtInType, OpcUa_UInt32 length);
    /// Names for the elements. From then on, the line does not show the array.
    void setEnumInfo(const QvelEnumInfo& info);
    /// As QvelModelDelegate::setWritesOnlyChanges(), for the cells.
    void setWritesOnlyChanges(bool onlyChanges);

Q_SIGNALS:
    void valueChanged(UaVariant value);

private Q_SLOTS:
    void sltDialogWidgetAccepted() override;
    void sltDialogWidgetRejected() override;
    void sltShowDialogWidget() override;

private:
    void updateControls() override;

    const std::unique_ptr<ElementField<QvelDialogWidgetArray>> d;
};
