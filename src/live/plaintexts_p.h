#pragma once

#include <QtCore/QPointF>
#include <QtGui/QFont>
#include <QtGui/QGlyphRun>

#include <array>
#include <vector>

class QPainter;
class QRect;

/// Paints numbers and times of one font and colour, which need no layout, by their glyphs, all of
/// them at once and where a style's layout has them; those that are too long end in an ellipsis.
class PlainTexts
{
public:
    void setFont(const QFont& font);
    /// False where it is no such text: then it has not been taken.
    bool add(const QString& text, const QRect& room, bool isRight);
    /// Those that were added since the last time.
    void paint(QPainter* painter);

private:
    static constexpr int first = 0x20;
    static constexpr int ellipsis = 0x3b - first; // in the tables, behind the others

    void append(size_t glyph, double x, double baseline);
    void cut(size_t size);

    bool m_isSet = false;
    bool m_isComplete = false;
    QFont m_font;
    QGlyphRun m_run;
    int m_height = 0; // of a line
    double m_ascent = 0;
    std::array<quint32, ellipsis + 1> m_glyphs = {};
    std::array<double, ellipsis + 1> m_advances = {};
    std::vector<quint32> m_indexes;
    std::vector<QPointF> m_positions;
};
