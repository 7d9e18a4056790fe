#pragma once

#include <QtGui/QIcon>

#include <functional>

class QWidget;

/// Makes the library's images known to Qt's resource system, which a static build does not do by
/// itself. Call it before the first use of ":/kestrel/images/"; further calls do nothing.
void initKestrelImages();

/// Whether the application's palette has light text on a dark ground.
bool isDarkPalette();

/// The image of a path, and another one for buttons that are checked, as an icon that follows the
/// application's palette: for a dark one it shows the image of the same name in the subfolder
/// "dark", if there is one.
QIcon paletteIcon(const QString& path, const QString& pathOn = QString());

/// Calls the function at each change of the widget's palette, for what is not drawn anew by then.
void whenPaletteChanges(QWidget* widget, std::function<void()> function);
