#pragma once

#include "certificates/certificatecolumns_p.h"
#include "certificates/certificateentry.h"
#include "certificates/certificatemodel.h"

#include <QtGui/QIcon>

#include <array>
#include <vector>

class QvelCertificateModel::Private
{
public:
    static constexpr int kinds = 3;
    static constexpr int states = 4;
    /// What the columns show.
    using Texts = std::array<QVariant, CertificateColumn::Count>;

    /// The entry of an index that is valid for the present rows, else null.
    const QvelCertificateEntry* entryOf(const QModelIndex& index) const;
    const QIcon& icon(const QvelCertificateEntry& entry);

    QString trustedPath;
    QString secondPath;
    QString thirdPath;
    QString rejectedPath;
    QString ownCertificateFile;
    std::unique_ptr<QvelCertificateEntry> root = nullptr;
    std::vector<Texts> texts = {}; // of the root's children
    QIcon icons[kinds][states] = {};
    bool wasDark = false;                   // when those with an overlay were made
    UaDateTime (*now)() = &UaDateTime::now; // by which validity is judged
};
