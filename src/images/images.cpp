#include "images_p.h"

#include <QtCore/QDir>
#include <QtCore/QEvent>
#include <QtCore/QFileInfo>
#include <QtGui/QGuiApplication>
#include <QtGui/QIconEngine>
#include <QtGui/QPainter>
#include <QtGui/QPalette>
#include <QtWidgets/QWidget>

#include <algorithm>
#include <cstdlib>

namespace {

// In the colour of a selection's text, the more, the more it stands out from the usual ground. Qt
// would tint it with the colour of the selection, in which it is lost.
QImage selected(QImage image)
{
    constexpr int strength = 3; // so that an outline has all of that colour
    const QPalette palette = QGuiApplication::palette();
    const int ground = qGray(palette.color(QPalette::Base).rgb());
    const QColor color = palette.color(QPalette::HighlightedText);
    image.convertTo(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            const int part = std::min(strength * std::abs(qGray(pixel) - ground), 255);
            image.setPixel(x, y, (color.rgb() & RGB_MASK) | QRgb(part * qAlpha(pixel) / 255) << 24);
        }
    return image;
}

QString darkImage(const QString& path)
{
    const QFileInfo light(path);
    const QString dark = light.path() + QLatin1String("/dark/") + light.fileName();
    return QFile::exists(dark) ? dark : path;
}

// Its pictures are read when they are first shown: most menus are never opened, and few people
// change the palette.
class PaletteIcon : public QIconEngine
{
public:
    PaletteIcon(const QString& path, const QString& pathOn) : m_path(path), m_pathOn(pathOn) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override
    {
        if (mode != QIcon::Selected)
            return icon().paint(painter, rect, Qt::AlignCenter, mode, state);
        const qreal scale = painter->device()->devicePixelRatioF();
        const QPixmap picture = scaledPixmap(rect.size() * scale, mode, state, scale);
        QRectF place({}, picture.deviceIndependentSize());
        place.moveCenter(QRectF(rect).center());
        painter->drawPixmap(place.topLeft(), picture);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(size, mode, state, 1);
    }
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state,
                         qreal scale) override
    {
        const QPixmap picture =
            icon().pixmap((QSizeF(size) / scale).toSize(), scale,
                          mode == QIcon::Selected ? QIcon::Normal : mode, state);
        return mode == QIcon::Selected ? QPixmap::fromImage(selected(picture.toImage())) : picture;
    }
    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return icon().actualSize(size, mode, state);
    }
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override
    {
        return icon().availableSizes(mode, state);
    }
    bool isNull() override { return icon().isNull(); }
    QString key() const override { return QStringLiteral("PaletteIcon"); }
    QIconEngine* clone() const override { return new PaletteIcon(*this); }

private:
    const QIcon& icon()
    {
        const bool isDark = isDarkPalette();
        QIcon& icon = isDark ? m_dark : m_light;
        if (icon.isNull()) {
            icon = QIcon(isDark ? darkImage(m_path) : m_path);
            if (!m_pathOn.isEmpty())
                icon.addFile(isDark ? darkImage(m_pathOn) : m_pathOn, {}, QIcon::Normal, QIcon::On);
        }
        return icon;
    }

    const QString m_path, m_pathOn;
    QIcon m_light, m_dark;
};

class PaletteFollower : public QObject
{
public:
    PaletteFollower(QWidget* widget, std::function<void()> function)
        : QObject(widget), m_function(std::move(function))
    {
        widget->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::PaletteChange)
            m_function();
        return false;
    }

private:
    const std::function<void()> m_function;
};

} // namespace

void initKestrelImages()
{
    Q_INIT_RESOURCE(kestrel);
}

bool isDarkPalette()
{
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::WindowText).lightness() >
           palette.color(QPalette::Window).lightness();
}

QIcon paletteIcon(const QString& path, const QString& pathOn)
{
    initKestrelImages();
    return QIcon(new PaletteIcon(path, pathOn));
}

void whenPaletteChanges(QWidget* widget, std::function<void()> function)
{
    new PaletteFollower(widget, std::move(function));
}
