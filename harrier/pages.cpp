#include "pages.h"

#include "certificatespage.h"
#include "connectionpage.h"
#include "endpointdetails.h"
#include "host.h"
#include "language.h"
#include "nodeidpage.h"
#include "valuespage.h"
#include "writevaluepage.h"

#include <QtCore/QCoreApplication>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QVBoxLayout>

namespace {

QWidget* createEndpointDetails(Host& host)
{
    auto* details = new EndpointDetails;
    details->setEndpoint(host.endpoint());
    QObject::connect(&host, &Host::endpointChanged, details, &EndpointDetails::setEndpoint);
    QObject::connect(details, &EndpointDetails::useRequested, &host, &Host::useEndpointRequested);
    QObject::connect(details, &EndpointDetails::connectRequested, &host, &Host::connectRequested);
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
    };
    return all;
}

const QList<Page>& galleryPages()
{
    static const QList<Page> all = {
        {"nodeid", QT_TRANSLATE_NOOP("Page", "NodeId"), createNodeIdPage},
        {"values", QT_TRANSLATE_NOOP("Page", "Values"), createValuesPage},
        {"writevalue", QT_TRANSLATE_NOOP("Page", "Write value"), createWriteValuePage},
    };
    return all;
}

QString Page::shownTitle() const
{
    return QCoreApplication::translate("Page", title);
}

void addPages(Host& host, const QList<Page>& pages, QTabWidget* tabs)
{
    QObject::connect(tabs, &QTabWidget::currentChanged, tabs, [&host, &pages, tabs](int index) {
        QWidget* const place = tabs->widget(index);
        if (!place || place->layout())
            return;
        auto* layout = new QVBoxLayout(place);
        layout->setContentsMargins({});
        layout->addWidget(pages.at(index).create(host));
    });
    for (qsizetype i = 0; i < pages.size(); ++i)
        tabs->addTab(new QWidget, QString());
    Language::follow(tabs, [tabs, pages] {
        for (int i = 0; i < pages.size(); ++i)
            tabs->setTabText(i, pages.at(i).shownTitle());
    });
}
