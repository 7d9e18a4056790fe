#pragma once

#include "../kestrelexport.h"

#include <QtCore/QMetaEnum>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QStyledItemDelegate>

class QAccessibleInterface;

/// Shows the entries of a drop-down list as check boxes and writes each click to the model at
/// once. An entry's Qt::CheckStateRole holds its state.
class KESTREL_EXPORT QvelFlagsDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit QvelFlagsDelegate(QObject* parent = nullptr);
    ~QvelFlagsDelegate() override;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

public Q_SLOTS:
    void sltCheckStateChanged();

protected:
    /// Hands the keys that move in the list, or close it, to the list.
    bool eventFilter(QObject* editor, QEvent* event) override;
};

/// A combo box whose drop-down list holds one check box a flag; the closed box shows, and tells
/// assistive technology, the names of the checked ones. Each entry has its name as text and its
/// bits as item data. User-interface thread only.
class KESTREL_EXPORT QvelFlagsComboBoxBase : public QComboBox
{
    Q_OBJECT
public:
    explicit QvelFlagsComboBoxBase(QWidget* parent = nullptr);
    ~QvelFlagsComboBoxBase() override;

    /// The current entry can be clicked, and toggled by Space, at once.
    void showPopup() override;

public Q_SLOTS:
    /// Shows the names of the checked entries, also as tool tip.
    void sltUpdateDisplayText();

Q_SIGNALS:
    /// An entry changed.
    void flagsChanged();

protected:
    QvelFlagsComboBoxBase(QvelFlagsDelegate* delegate, QWidget* parent);

    /// Appends an entry, unchecked. The name of no bit at all is what the box shows when nothing
    /// is checked.
    void addFlag(const QString& name, uint bits);
    uint checkedBits() const;
    /// Checks the entries that have a bit in common with `bits`, and no others.
    void checkBits(uint bits);

    /// Keeps the list open while entries are clicked, and toggles one that shows no check box yet.
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    static QAccessibleInterface* createAccessible(const QString& name, QObject* object);
    template <class Visit>
    void forEachChecked(Visit visit) const;

    QString m_displayText;
    QString m_emptyText;
    QPersistentModelIndex m_pressed;
};

/// A check-box list of the flags that the first enumeration of the meta-object of `Mask` declares.
template <class Mask, class Flags>
class QvelFlagsComboBox : public QvelFlagsComboBoxBase
{
public:
    explicit QvelFlagsComboBox(QWidget* parent = nullptr) : QvelFlagsComboBoxBase(parent)
    {
        const QMetaEnum keys = Mask::staticMetaObject.enumerator(0);
        for (int i = 0; i < keys.keyCount(); ++i)
            addFlag(QString::fromLatin1(keys.key(i)), uint(keys.value(i)));
        sltUpdateDisplayText();
    }

    /// The checked flags.
    Flags flags() const { return Flags::fromInt(int(checkedBits())); }
    /// Checks the entries that have a bit in common with `flags`, and no others.
    void setFlags(Flags flags) { checkBits(uint(flags.toInt())); }
};
