#pragma once

#include <QtCore/QByteArrayView>
#include <QtCore/QString>

/// The text of a value. A U+FEFF at its beginning belongs to it, unlike in a file.
inline QString textFromUtf8(QByteArrayView utf8)
{
    QString text = QString::fromUtf8(utf8);
    if (utf8.startsWith("\xef\xbb\xbf"))
        text.prepend(QChar(QChar::ByteOrderMark));
    return text;
}
