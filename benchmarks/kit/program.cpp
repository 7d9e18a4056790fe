// A program as short as can be, with one widget in a window.

#include <QtWidgets/QApplication>

#ifdef KIT_WINDOW
#include <QtWidgets/QMainWindow>
#else
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLineEdit>
#endif
#ifdef KIT_EDITOR
#include <Kestrel/QvelWidgetByteString> // a line, too
#endif
#ifdef KIT_LOADED
#include <Kestrel/QvelEnumInfo>
#endif

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
#ifdef KIT_WINDOW
    QMainWindow window;
    window.resize(1280, 900); // as harrier's: what is painted counts, too
#else
    QWidget window;
    auto* layout = new QHBoxLayout(&window);
    layout->setContentsMargins({});
#ifdef KIT_EDITOR
    layout->addWidget(new QvelWidgetByteString);
#else
    layout->addWidget(new QLineEdit);
#endif
#ifdef KIT_LOADED
    const QvelEnumInfo needed; // or the linker would leave the library out
    Q_UNUSED(needed)
#endif
#endif
    window.show();
    return QApplication::exec();
}
