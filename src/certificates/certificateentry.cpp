#include "certificateentry.h"

constexpr int soonDays = 14;

QvelCertificateEntry::QvelCertificateEntry() = default;
QvelCertificateEntry::QvelCertificateEntry(const QvelCertificateEntry& other) = default;
QvelCertificateEntry& QvelCertificateEntry::operator=(const QvelCertificateEntry& other) = default;

QvelCertificateEntry::~QvelCertificateEntry()
{
    qDeleteAll(m_children);
}

int QvelCertificateEntry::row() const
{
    return m_parent ? int(m_parent->m_children.indexOf(const_cast<QvelCertificateEntry*>(this)))
                    : 0;
}

void QvelCertificateEntry::add(QvelCertificateEntry* child)
{
    child->m_parent = this;
    m_children.append(child);
}

QvelCertificateEntry::ValidState QvelCertificateEntry::validState() const
{
    return validState(UaDateTime::now());
}

QvelCertificateEntry::ValidState QvelCertificateEntry::validState(const UaDateTime& time) const
{
    const UaDateTime end = certificate.validTo();
    if (!certificate.isValid(time))
        return time.ticks() > end.ticks() ? Expired : NotYetValid;
    return time.daysTo(end) <= soonDays ? ExpiresSoon : Valid;
}
