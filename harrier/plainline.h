#pragma once

#include <QtCore/QString>

/// `text` as one line of at most `limit` characters, an ellipsis at the end if it was cut.
///
/// What a server sent may hold anything. Line breaks and tabs become spaces; other control
/// characters, and the format characters that reorder or hide what follows, become U+FFFD.
QString plainLine(const QString& text, int limit);
