#include "valuerankeditor.h"

#include "base/editorhelpers_p.h"

#include <iterator>

namespace {

struct Rank
{
    OpcUa_Int32 value;
    const char* text;
};

constexpr Rank ranks[] = {
    {-3, QT_TRANSLATE_NOOP("QvelWidgetValueRank", "ScalarOrOneDimension (%1)")},
    {-2, QT_TRANSLATE_NOOP("QvelWidgetValueRank", "Any (%1)")},
    {-1, QT_TRANSLATE_NOOP("QvelWidgetValueRank", "Scalar (%1)")},
    {0, QT_TRANSLATE_NOOP("QvelWidgetValueRank", "OneOrMoreDimensions (%1)")},
    {1, QT_TRANSLATE_NOOP("QvelWidgetValueRank", "OneDimension (%1)")},
    {2, QT_TRANSLATE_NOOP("QvelWidgetValueRank", "TwoDimensions (%1)")},
};

constexpr bool hasNoGap()
{
    for (OpcUa_Int32 i = 0; i < OpcUa_Int32(std::size(ranks)); ++i) {
        if (ranks[i].value != i - 3)
            return false;
    }
    return true;
}
static_assert(hasNoGap() && std::size(ranks) == 6);

} // namespace

QvelWidgetValueRank::QvelWidgetValueRank(QvelWidgetFlags flags, QWidget* parent,
                                         Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_combo(new QComboBox)
{
    registerValueTypes<UaVariant>();
    for (const Rank& rank : ranks)
        m_combo->addItem(QString(), rank.value);
    retranslated(this, [this] {
        for (int i = 0; i < int(std::size(ranks)); ++i)
            m_combo->setItemText(i, tr(ranks[i].text).arg(ranks[i].value));
        m_combo->setAccessibleName(tr("Value rank"));
    });
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
