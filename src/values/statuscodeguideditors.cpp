#include "statuscodeguideditors.h"

#include "base/editorhelpers_p.h"

QvelWidgetStatusCode::QvelWidgetStatusCode(QvelWidgetFlags flags, QWidget* parent,
                                           Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_edit(new QLineEdit)
{
    registerValueTypes<UaVariant, UaStatusCode>();
    m_edit->setInputMask(QStringLiteral("\\0\\xHHHHHHHH"));
    retranslated(this, [this] { m_edit->setAccessibleName(tr("Status code")); });
    setSingleControl(this, m_edit);
    connect(m_edit, &QLineEdit::textChanged, this, &QvelWidgetStatusCode::sltStatusCodeChanged);
}

QvelWidgetStatusCode::~QvelWidgetStatusCode() = default;

KESTREL_SCALAR_EDITOR(QvelWidgetStatusCode, StatusCode, statusCode)

UaStatusCode QvelWidgetStatusCode::statusCode(bool* ok) const
{
    return UaStatusCode(m_edit->text().toUInt(ok, 16));
}

void QvelWidgetStatusCode::setStatusCode(const UaStatusCode& statusCode)
{
    showWhole(m_edit, QStringLiteral("0x%1").arg(statusCode.code(), 8, 16, QLatin1Char('0')));
}

QvelWidgetGuid::QvelWidgetGuid(QvelWidgetFlags flags, QWidget* parent, Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_edit(new QLineEdit)
{
    registerValueTypes<UaVariant, UaGuid>();
    m_edit->setInputMask(QStringLiteral("\\{HHHHHHHH-HHHH-HHHH-HHHH-HHHHHHHHHHHH\\}"));
    retranslated(this, [this] { m_edit->setAccessibleName(tr("Guid")); });
    setSingleControl(this, m_edit);
    connect(m_edit, &QLineEdit::textChanged, this, &QvelWidgetGuid::sltGuidChanged);
}

QvelWidgetGuid::~QvelWidgetGuid() = default;

KESTREL_SCALAR_EDITOR(QvelWidgetGuid, Guid, guid)

UaGuid QvelWidgetGuid::guid(bool* ok) const
{
    UaGuid guid;
    const bool good = OpcUa_IsGood(guid.fromString(UaString(m_edit->text())));
    if (ok)
        *ok = good;
    return guid;
}

void QvelWidgetGuid::setGuid(const UaGuid& guid)
{
    showWhole(m_edit, guid.toString().toQString());
}
