// The editors in a host with a stack of its own: a value comes as its binary encoding, which every
// stack has, is edited, and goes back as that.

#include <Kestrel/OpcUaStatusCodes>
#include <Kestrel/QvelTrendWidget>
#include <Kestrel/QvelWidgetVariant>
#include <Kestrel/UaStatusCode>
#include <Kestrel/UaString>
#include <Kestrel/UaVariant>

#include <QApplication>
#include <QDateTime>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

// What stands here for a stack of the host's own.
namespace stack {

static QByteArray variable = QByteArray::fromHex("0c0500000050756d7031"); // String "Pump1"

static QByteArray read()
{
    return variable;
}

static void write(const QByteArray& variant)
{
    variable = variant;
}

} // namespace stack

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* editor = new QvelWidgetVariant;
    auto* write = new QPushButton("Write");
    auto* result = new QLabel;
    auto* trend = new QvelTrendWidget;
    for (QWidget* widget : {static_cast<QWidget*>(editor), static_cast<QWidget*>(write),
                            static_cast<QWidget*>(result), static_cast<QWidget*>(trend)})
        layout->addWidget(widget);

    UaVariant value;
    const UaStatusCode status = value.fromBinary(stack::read()); // what a server sent, checked
    if (status.isBad())
        result->setText(status.toString().toQString());
    editor->setValue(value);

    QObject::connect(write, &QPushButton::clicked, editor, [=] {
        bool ok = false;
        const UaVariant edited = editor->value(&ok);
        if (ok)
            stack::write(edited.toBinary());
        result->setText(ok ? "Written" : "Not a value of this type");
    });

    const int series = trend->addSeries("Pressure", "bar");
    trend->setFollowing(60);
    trend->append(series, UaDateTime(QDateTime::currentDateTimeUtc()), 3.5);

    window.show();
    return QApplication::exec();
}
