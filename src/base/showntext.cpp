#include "showntext_p.h"

#include <QtGui/QTextDocument>

#include <algorithm>

static bool isUnfit(QChar c)
{
    return c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
           c == QChar::ParagraphSeparator || (c >= QChar(0x202A) && c <= QChar(0x202E)) ||
           (c >= QChar(0x2066) && c <= QChar(0x2069));
}

QString shownText(const QString& text)
{
    QString shown = text;
    if (shown.size() > maxShownCharacters) {
        shown.truncate(maxShownCharacters - 1);
        if (shown.back().isHighSurrogate())
            shown.chop(1);
        shown += QChar(0x2026);
    }
    if (std::any_of(shown.cbegin(), shown.cend(), isUnfit))
        std::replace_if(shown.begin(), shown.end(), isUnfit, QChar(QChar::ReplacementCharacter));
    return shown;
}

QString shownToolTip(const QString& text)
{
    return plainToolTip(shownText(text));
}

QString plainToolTip(const QString& text)
{
    return Qt::mightBeRichText(text) ? "<span>" + text.toHtmlEscaped() + "</span>" : text;
}
