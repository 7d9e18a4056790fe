#include "viewhint_p.h"

#include <QtGui/QPainter>
#include <QtWidgets/QAbstractItemView>

void setViewHint(QAbstractItemView* view, const QString& hint)
{
    view->setAccessibleDescription(hint);
    view->viewport()->update();
}

void paintViewHint(QAbstractItemView* view)
{
    const QString hint = view->accessibleDescription();
    if (hint.isEmpty() || !view->model() || view->model()->rowCount() > 0)
        return;
    constexpr int margin = 8;
    QPainter painter(view->viewport());
    painter.setPen(view->palette().color(QPalette::PlaceholderText));
    painter.drawText(view->viewport()->rect().adjusted(margin, margin, -margin, -margin),
                     Qt::AlignCenter | Qt::TextWordWrap, hint);
}
