#pragma once

#include <QtCore/QList>

class Host;
class QWidget;

/// One page of the window.
struct Page
{
    const char* name;  ///< as in the file names of rendered pages
    const char* title; ///< English, context "Page"
    QWidget* (*create)(Host& host);
};

/// The pages in their order.
const QList<Page>& pages();
