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

class PaletteIcon : public QIconEngine
{
public:
    PaletteIcon(QIcon light, QIcon dark) : m_light(std::move(light)), m_dark(std::move(dark)) {}

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
    bool isNull() override { return m_light.isNull(); }
    QString key() const override { return QStringLiteral("PaletteIcon"); }
    QIconEngine* clone() const override { return new PaletteIcon(*this); }

private:
    const QIcon& icon() const { return isDarkPalette() ? m_dark : m_light; }

    const QIcon m_light, m_dark;
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

QString darkImage(const QString& path)
{
    const QFileInfo light(path);
    const QString dark = light.path() + QLatin1String("/dark/") + light.fileName();
    return QFile::exists(dark) ? dark : path;
}

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
    QIcon light(path), dark(darkImage(path));
    if (!pathOn.isEmpty()) {
        light.addFile(pathOn, {}, QIcon::Normal, QIcon::On);
        dark.addFile(darkImage(pathOn), {}, QIcon::Normal, QIcon::On);
    }
    return QIcon(new PaletteIcon(light, dark));
}

void whenPaletteChanges(QWidget* widget, std::function<void()> function)
{
    new PaletteFollower(widget, std::move(function));
}
