#pragma once

class QAbstractItemView;
class QString;

/// What a view says while it has no rows: why, and what to do.
void setViewHint(QAbstractItemView* view, const QString& hint);
/// Paints that over the view, if there is a hint, and the focus where no row shows it.
void paintViewHint(QAbstractItemView* view);
