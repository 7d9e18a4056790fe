#pragma once

class QAbstractItemView;
class QPaintEvent;
class QString;

/// What a view says while it has no rows: why, and what to do.
void setViewHint(QAbstractItemView* view, const QString& hint);
/// Paints that over the view, if there is a hint, and the focus where no row shows it.
void paintViewHint(QAbstractItemView* view);

/// A view that does so.
template <class View>
class HintedView : public View
{
public:
    using View::View;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        View::paintEvent(event);
        paintViewHint(this);
    }
};
