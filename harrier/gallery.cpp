#include "gallery.h"

#include "host.h"
#include "language.h"
#include "pages.h"

#include <QtGui/QAction>
#include <QtGui/QIcon>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTabWidget>

Gallery::Gallery(Host& host, QWidget* parent) : QMainWindow(parent), m_tabs(new QTabWidget)
{
    setWindowIcon(QIcon(QStringLiteral(":/images/harrier.png")));
    setObjectName(QStringLiteral("gallery"));
    Language::follow(this, [this] { setWindowTitle(tr("Gallery - harrier")); });
    addPages(host, galleryPages(), m_tabs);
    for (int i = 0; i < m_tabs->count(); ++i) {
        auto* go = new QAction(this);
        go->setShortcut(QKeySequence(Qt::ALT | Qt::Key(Qt::Key_1 + i)));
        connect(go, &QAction::triggered, this, [this, i] { m_tabs->setCurrentIndex(i); });
        addAction(go);
    }
    setCentralWidget(m_tabs);
    connect(&host, &Host::message, statusBar(), [this](const QString& text) {
        if (isVisible())
            statusBar()->showMessage(text);
    });
    const QSize em(fontMetrics().averageCharWidth(), fontMetrics().height());
    resize(140 * em.width(), 45 * em.height());
}
