#pragma once

class QAbstractItemView;
class QString;

/// What a view says while it has no rows: why, and what to do. To be painted over it.
void setViewHint(QAbstractItemView* view, const QString& hint);
void paintViewHint(QAbstractItemView* view);
