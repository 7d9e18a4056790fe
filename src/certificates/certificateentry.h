#pragma once

#include "../kestrelexport.h"
#include "../platform/pki/uapkicertificate.h"

#include <QtCore/QFileInfo>
#include <QtCore/QList>

/// A certificate of the store, or the invisible root above all of them.
///
/// An entry owns its children: it deletes them with itself. A copy holds the same children, so copy
/// only entries that have none, or let only one of the two be destroyed.
class KESTREL_EXPORT QvelCertificateEntry
{
public:
    enum CertificateKind : int { Untrusted = 0, Trusted = 1, OwnCertificate = 2 };
    /// How the present time and the validity period meet.
    enum ValidState : int {
        Valid = 0,
        NotYetValid = 1, ///< or damaged in another way than by having expired
        ExpiresSoon = 2, ///< valid for at most 14 more days
        Expired = 3
    };

    QvelCertificateEntry();
    QvelCertificateEntry(const QvelCertificateEntry& other);
    QvelCertificateEntry& operator=(const QvelCertificateEntry& other);
    ~QvelCertificateEntry();

    /// The owner; null for the root.
    QvelCertificateEntry* parent() const { return m_parent; }
    /// The child `i`, from 0 to childrenCount() - 1; not checked.
    QvelCertificateEntry* at(int i) const { return m_children.at(i); }
    int childrenCount() const { return int(m_children.size()); }
    /// The place among the parent's children: 0 without a parent, -1 if the parent does not hold
    /// this entry.
    int row() const;
    /// Appends `child` and takes its ownership.
    void add(QvelCertificateEntry* child);
    /// Judged by the present time at each call.
    ValidState validState() const;
    /// Judged by `time`.
    ValidState validState(const UaDateTime& time) const;

    int kind = Untrusted; ///< a CertificateKind
    QFileInfo fileInfo;
    UaPkiCertificate certificate;

private:
    QvelCertificateEntry* m_parent = nullptr;
    QList<QvelCertificateEntry*> m_children;
};
