#pragma once

#include <QtCore/QString>

/// \file
/// Names and URLs come from the network or from a settings store and may hold anything. These give
/// what of them is shown or logged. Text without such surprises is left as it is.

/// The most characters of one text that are shown.
inline constexpr qsizetype maxShownCharacters = 1000;

/// `text` on one line and of bounded length: control characters and those that break lines or turn
/// the direction of writing are replaced by U+FFFD, and what is too long ends in an ellipsis.
QString shownText(const QString& text);

/// shownText() for a tool tip, which would take markup for rich text: there, markup is escaped.
QString shownToolTip(const QString& text);

/// The tool tip that shows all of `text`, which is not meant as markup.
QString plainToolTip(const QString& text);
