#pragma once

#include <QtWidgets/QMainWindow>

class Host;
class QTabWidget;

/// Every value editor of the library, to be tried by hand without a server: a window of its own.
class Gallery : public QMainWindow
{
    Q_OBJECT
public:
    /// `host` must outlive the window.
    explicit Gallery(Host& host, QWidget* parent = nullptr);

    QTabWidget* tabs() const { return m_tabs; }

private:
    QTabWidget* m_tabs;
};
