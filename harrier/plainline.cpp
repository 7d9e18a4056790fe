#include "plainline.h"

QString plainLine(const QString& text, int limit)
{
    QString line = text.left(limit);
    if (text.size() > limit) {
        line.chop(1);
        if (!line.isEmpty() && line.back().isHighSurrogate())
            line.chop(1);
        line += QChar(0x2026);
    }
    for (QChar& c : line) {
        if (c.isSpace())
            c = QLatin1Char(' ');
        else if (c.category() == QChar::Other_Control || c.category() == QChar::Other_Format)
            c = QChar::ReplacementCharacter;
    }
    return line;
}
