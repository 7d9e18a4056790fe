#include "pages.h"

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
        {"nodeid", QT_TRANSLATE_NOOP("Page", "NodeId"), createNodeIdPage},
        {"values", QT_TRANSLATE_NOOP("Page", "Values"), createValuesPage},
        {"writevalue", QT_TRANSLATE_NOOP("Page", "Write value"), createWriteValuePage},
    };
    return all;
}
