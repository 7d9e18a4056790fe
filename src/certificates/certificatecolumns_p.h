#pragma once

/// The columns of QvelCertificateModel.
namespace CertificateColumn {
enum {
    Status,
    Name,
    ValidFrom,
    ValidTo,
    Organization,
    OrganizationUnit,
    Locality,
    State,
    Country,
    ApplicationUri,
    DomainName,
    IpAddress,
    FileName,
    Count
};
}
