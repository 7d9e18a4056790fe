#include "plaintexts_p.h"

#include <QtCore/QRect>
#include <QtGui/QPainter>
#include <QtGui/QRawFont>
#include <QtGui/QTextLayout>

#include <algorithm>

// Other pairs of characters may be kerned, or become one.
static bool isPlain(QChar character)
{
    const ushort c = character.unicode();
    return (c >= '0' && c <= ':') || c == ' ' || c == '+' || c == ',' || c == '-' || c == '.';
}

void PlainTexts::setFont(const QFont& font)
{
    if (m_isSet && m_font == font)
        return;
    m_isSet = true;
    m_font = font;
    const QRawFont raw = QRawFont::fromFont(font);
    QString characters;
    for (int c = 0; c < ellipsis; ++c)
        characters += QChar(first + c);
    characters += QChar(0x2026);
    const QList<quint32> glyphs = raw.glyphIndexesForString(characters);
    const QList<QPointF> advances = raw.advancesForGlyphIndexes(glyphs);
    m_isComplete = glyphs.size() == ellipsis + 1 && advances.size() == glyphs.size() &&
                   !glyphs.contains(0) && !font.underline() && !font.strikeOut() &&
                   !font.overline() && font.letterSpacing() == 0 && font.wordSpacing() == 0;
    for (qsizetype i = 0; m_isComplete && i < glyphs.size(); ++i) {
        m_glyphs[size_t(i)] = glyphs[i];
        m_advances[size_t(i)] = advances[i].x();
    }
    m_run.setRawFont(raw);
    QTextLayout layout(characters, font);
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    m_height = int(line.height());
    m_ascent = line.ascent();
}

void PlainTexts::append(size_t glyph, double x, double baseline)
{
    m_indexes.push_back(m_glyphs[glyph]);
    m_positions.emplace_back(x, baseline);
}

void PlainTexts::cut(size_t size)
{
    m_indexes.resize(size);
    m_positions.resize(size);
}

bool PlainTexts::add(const QString& text, const QRect& room, bool isRight)
{
    if (!m_isComplete || !std::all_of(text.begin(), text.end(), isPlain))
        return false;
    const double baseline = room.top() + room.height() / 2 - m_height / 2 + m_ascent;
    const size_t begin = m_indexes.size();
    const double left = room.left(), end = left + room.width();
    double x = left;
    size_t fitting = begin; // with an ellipsis
    double fittingEnd = left;
    for (const QChar character : text) {
        const int c = character.unicode() - first;
        if (x + m_advances[ellipsis] <= end) {
            fitting = m_indexes.size();
            fittingEnd = x;
        }
        append(size_t(c), x, baseline);
        x += m_advances[size_t(c)];
        if (x > end)
            break;
    }
    if (x > end) {
        cut(fitting);
        append(ellipsis, fittingEnd, baseline);
        x = fittingEnd + m_advances[ellipsis];
    }
    for (size_t i = begin; isRight && i < m_positions.size(); ++i)
        m_positions[i].rx() += end - x;
    return true;
}

void PlainTexts::paint(QPainter* painter)
{
    if (m_indexes.empty())
        return;
    m_run.setRawData(m_indexes.data(), m_positions.data(), int(m_indexes.size()));
    painter->drawGlyphRun({}, m_run);
    cut(0);
}
