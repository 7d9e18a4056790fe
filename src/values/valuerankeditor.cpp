#include "valuerankeditor.h"

#include "base/editorhelpers_p.h"

QvelWidgetValueRank::QvelWidgetValueRank(QvelWidgetFlags flags, QWidget* parent,
                                         Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_combo(new QComboBox)
{
    registerValueTypes<UaVariant>();
    const auto add = [this](OpcUa_Int32 rank, const QString& text) {
        m_combo->addItem(text.arg(rank), rank);
    };
    add(-3, tr("ScalarOrOneDimension (%1)"));
    add(-2, tr("Any (%1)"));
    add(-1, tr("Scalar (%1)"));
    add(0, tr("OneOrMoreDimensions (%1)"));
    add(1, tr("OneDimension (%1)"));
    add(2, tr("TwoDimensions (%1)"));
    m_combo->setAccessibleName(tr("Value rank"));
    setSingleControl(this, m_combo);
    connect(m_combo, &QComboBox::currentIndexChanged, this,
            &QvelWidgetValueRank::sltValueRankChanged);
}

QvelWidgetValueRank::~QvelWidgetValueRank() = default;

KESTREL_EDITOR_VALUE(QvelWidgetValueRank, Int32, valueRank, ValueRank)

OpcUa_Int32 QvelWidgetValueRank::valueRank(bool* ok) const
{
    if (ok)
        *ok = true;
    return m_combo->currentData().toInt();
}

void QvelWidgetValueRank::setValueRank(OpcUa_Int32 valueRank)
{
    selectNumber(m_combo, valueRank);
}

void QvelWidgetValueRank::sltValueRankChanged()
{
    emitChanged(this, &QvelWidgetValueRank::valueRank, &QvelWidgetValueRank::valueRankChanged);
}
