#include "pages.h"

#include "certificatespage.h"
#include "connectionpage.h"
#include "endpointdetails.h"
#include "host.h"
#include "nodeidpage.h"
#include "valuespage.h"
#include "writevaluepage.h"

namespace {

QWidget* createEndpointDetails(Host& host)
{
    auto* details = new EndpointDetails;
    details->setEndpoint(host.endpoint());
    QObject::connect(&host, &Host::endpointChanged, details, &EndpointDetails::setEndpoint);
    QObject::connect(details, &EndpointDetails::useRequested, &host, &Host::useEndpointRequested);
    return details;
}

QWidget* createConnectionPage(Host& host)
{
    return new ConnectionPage(host);
}

QWidget* createCertificatesPage(Host& host)
{
    return new CertificatesPage(host);
}

QWidget* createNodeIdPage(Host&)
{
    return new NodeIdPage;
}

QWidget* createValuesPage(Host& host)
{
    return new ValuesPage(host);
}

QWidget* createWriteValuePage(Host&)
{
    return new WriteValuePage;
}

} // namespace

const QList<Page>& pages()
{
    static const QList<Page> all = {
        {"endpoint", QT_TRANSLATE_NOOP("Page", "Endpoint"), createEndpointDetails},
        {"connection", QT_TRANSLATE_NOOP("Page", "Connection"), createConnectionPage},
        {"certificates", QT_TRANSLATE_NOOP("Page", "Certificates"), createCertificatesPage},
        {"nodeid", QT_TRANSLATE_NOOP("Page", "NodeId"), createNodeIdPage},
        {"values", QT_TRANSLATE_NOOP("Page", "Values"), createValuesPage},
        {"writevalue", QT_TRANSLATE_NOOP("Page", "Write value"), createWriteValuePage},
    };
    return all;
}
