#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

class Host;
class QTabWidget;
class QWidget;

/// One page of a window.
struct Page
{
    const char* name;  ///< as in the file names of rendered pages
    const char* title; ///< English, context "Page"
    QWidget* (*create)(Host& host);
    QString shownTitle() const;
};

/// The pages of the servers' tab, and of the gallery, in their order.
const QList<Page>& pages();
const QList<Page>& galleryPages();
/// Makes each page when its tab is first the current one. `pages` is one of the above.
void addPages(Host& host, const QList<Page>& pages, QTabWidget* tabs);
