// Loaded into a program by LD_PRELOAD: ends it when a window has been painted and the event loop
// has nothing more to do, so that a user could go on. Ends it with success only then.

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtWidgets/QWidget>

#include <unistd.h>

namespace {

class Watcher : public QObject
{
public:
    Watcher()
    {
        qApp->installEventFilter(this);
        connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
                [this] {
                    if (m_painted)
                        _exit(0);
                });
    }

protected:
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && object->isWidgetType() &&
            static_cast<QWidget*>(object)->window()->isVisible())
            m_painted = true;
        return false;
    }

private:
    bool m_painted = false;
};

void watch()
{
    new Watcher;
}
Q_COREAPP_STARTUP_FUNCTION(watch)

} // namespace
