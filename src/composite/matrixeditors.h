#pragma once

#include "../base/editorbases.h"
#include "elementmodel.h"

#include <vector>

class ElementDialog;
class QvelDialogWidgetMatrix;
template <class Dialog>
class ElementField;
template <class T>
class UaStackTypeArray;

/// \file
/// Editors of a matrix of any built-in type (OPC 10000-6, 5.2.5). Matrices of ExtensionObject,
/// DataValue, Variant and DiagnosticInfo are shown but not changed.

/// The elements of a matrix in storage order, the last index varying fastest. User-interface thread
/// only.
class KESTREL_EXPORT QvelMatrixModel : public QvelElementModel
{
public:
    QvelMatrixModel(UaVariant* value, bool readOnly, QObject* parent = nullptr);
    ~QvelMatrixModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    /// The indices of an element; of very many dimensions, the last ones.
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    /// Gives the matrix new lengths; the elements keep their places in storage. False for a type
    /// that cannot be edited, and, with nothing changed, when the product of the lengths is out of
    /// bounds or there is no memory.
    bool setDimensions(const UaStackTypeArray<OpcUa_UInt32>& dims);
    /// A value without dimensions keeps the number of rows as it was.
    void refresh();

private:
    void readDimensions();

    std::vector<OpcUa_UInt32> m_dimensions;
    int m_count = -1; // none known yet
};

/// Dialog editor of a matrix. The value is always valid. setValue() does to an open cell what that
/// of QvelDialogWidgetArray does.
class KESTREL_EXPORT QvelDialogWidgetMatrix : public QvelDialogWidgetBase
{
    Q_OBJECT
    Q_PROPERTY(
        UaVariant value READ value WRITE setValue NOTIFY valueChanged DESIGNABLE false USER true)
public:
    explicit QvelDialogWidgetMatrix(const UaVariant& value, QvelDialogWidgetFlags flags = {},
                                    QWidget* parent = nullptr, Qt::WindowFlags windowFlags = {});
    ~QvelDialogWidgetMatrix() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    /// Null values of a type, in the given lengths. Nothing for type 0, or without memory.
    void setInitialValue(OpcUa_Byte builtInType, const UaStackTypeArray<OpcUa_UInt32>& dimensions);
    /// Names for the elements, as 32-bit integers.
    void setEnumInfo(const QvelEnumInfo& info);
    /// As QvelModelDelegate::setWritesOnlyChanges(), for the cells.
    void setWritesOnlyChanges(bool onlyChanges);

    void setVisible(bool visible) override;

Q_SIGNALS:
    void valueChanged(UaVariant value);

private Q_SLOTS:
    void sltResizeView();
    void sltSetDimensions();
    void sltValueChanged();

private:
    void askForDimensions();

    void updateControls() override;

    const std::unique_ptr<ElementDialog> d;
    QvelMatrixModel* m_model;
};

/// Edit field of a matrix; its line is the text of the whole matrix, as far as it fits.
class KESTREL_EXPORT QvelEditWidgetMatrix : public QvelEditWidgetBase
{
    Q_OBJECT
    Q_PROPERTY(
        UaVariant value READ value WRITE setValue NOTIFY valueChanged DESIGNABLE false USER true)
public:
    explicit QvelEditWidgetMatrix(QvelEditWidgetFlags flags = {}, QWidget* parent = nullptr,
                                  Qt::WindowFlags windowFlags = {});
    explicit QvelEditWidgetMatrix(QWidget* parent)
        : QvelEditWidgetMatrix(QvelEditWidgetFlags(), parent)
    {
    }
    ~QvelEditWidgetMatrix() override;

    /// What the dialog holds, also while it is open.
    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    QString valueText() const override;
    void setValueText(const QString& text) override;
    /// As the dialog's.
    void setInitialValue(OpcUa_Byte builtInType, const UaStackTypeArray<OpcUa_UInt32>& dimensions);
    /// Names for the elements. From then on, the line does not show the matrix.
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

    const std::unique_ptr<ElementField<QvelDialogWidgetMatrix>> d;
};
