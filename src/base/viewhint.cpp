#include "viewhint_p.h"

#include <QtGui/QPainter>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QStyleOptionFocusRect>

static constexpr const char* hintProperty = "_kestrel_hint";

static QString hintOf(const QAbstractItemView* view)
{
    const bool isEmpty = !view->model() || view->model()->rowCount() == 0;
    return isEmpty ? view->property(hintProperty).toString() : QString();
}

void setViewHint(QAbstractItemView* view, const QString& hint)
{
    const QAbstractItemModel* model = view->model();
    if (model && !view->property(hintProperty).isValid()) {
        // A screen reader hears of it only as long as it is true.
        const auto follow = [view] { view->setAccessibleDescription(hintOf(view)); };
        QObject::connect(model, &QAbstractItemModel::rowsInserted, view, follow);
        QObject::connect(model, &QAbstractItemModel::rowsRemoved, view, follow);
        QObject::connect(model, &QAbstractItemModel::modelReset, view, follow);
    }
    view->setProperty(hintProperty, hint);
    view->setAccessibleDescription(hintOf(view));
    view->viewport()->update();
}

void paintViewHint(QAbstractItemView* view)
{
    const QString hint = hintOf(view);
    const bool hasBareFocus = view->hasFocus() && !view->currentIndex().isValid();
    if (hint.isEmpty() && !hasBareFocus)
        return;
    constexpr int margin = 8;
    QPainter painter(view->viewport());
    painter.setPen(view->palette().color(QPalette::PlaceholderText));
    painter.drawText(view->viewport()->rect().adjusted(margin, margin, -margin, -margin),
                     Qt::AlignCenter | Qt::TextWordWrap, hint);
    if (hasBareFocus) {
        QStyleOptionFocusRect focus;
        focus.initFrom(view->viewport());
        view->style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, view);
    }
}
