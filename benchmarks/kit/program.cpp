// A program as short as can be, with one widget.

#include <QtWidgets/QApplication>

#if defined(KIT_WINDOW)
#include <QtWidgets/QMainWindow>
using Widget = QMainWindow;
#elif defined(KIT_EDITOR)
#include <Kestrel/QvelWidgetNodeId>
using Widget = QvelWidgetNodeId;
#else
#include <QtWidgets/QLineEdit>
using Widget = QLineEdit;
#endif
#ifdef KIT_LOADED
#include <Kestrel/QvelEnumInfo>
#endif

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
#ifdef KIT_LOADED
    const QvelEnumInfo needed; // or the linker would leave the library out
    Q_UNUSED(needed)
#endif
    Widget widget;
    widget.show();
    return QApplication::exec();
}
