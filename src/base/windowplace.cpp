#include "windowplace_p.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtWidgets/QWidget>

// Of a window that was hidden a moment ago, Qt may know a frame of one pixel.
static QRect frameOf(const QWidget* window)
{
    return window->frameGeometry().united(window->geometry());
}

// QWidget::screen() of a hidden window is the one where it was last seen.
static QRect availableArea(const QWidget* window)
{
    const QScreen* found = window->screen();
    qint64 most = 0;
    const auto screens = QGuiApplication::screens();
    for (const QScreen* screen : screens) {
        const QSize common = (screen->geometry() & frameOf(window)).size();
        const qint64 area = qint64(common.width()) * common.height();
        if (area > most) {
            most = area;
            found = screen;
        }
    }
    return found->availableGeometry();
}

void keepOnScreen(QWidget* window)
{
    const QRect available = availableArea(window);
    QRect frame = frameOf(window);
    // Right and bottom come last, and so win over left and top.
    if (frame.left() < available.left())
        frame.translate(available.left() - frame.left(), 0);
    if (frame.right() > available.right())
        frame.translate(available.right() - frame.right(), 0);
    if (frame.top() < available.top())
        frame.translate(0, available.top() - frame.top());
    if (frame.bottom() > available.bottom())
        frame.translate(0, available.bottom() - frame.bottom());
    window->move(frame.topLeft());
}
