#include "certificateentry.h"

#include "certificateclock_p.h"

constexpr int soonDays = 14;

static UaDateTime (*clockInUse)() = &UaDateTime::now;

UaDateTime certificateNow()
{
    return clockInUse();
}

void setCertificateClock(UaDateTime (*clock)())
{
    clockInUse = clock;
}

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
    const UaDateTime now = certificateNow();
    const UaDateTime end = certificate.validTo();
    if (!certificate.isValid(now))
        return now.ticks() > end.ticks() ? Expired : NotYetValid;
    return now.daysTo(end) <= soonDays ? ExpiresSoon : Valid;
}
