// A form over the rows of a model, with an editor for each type. The model's edit role holds a
// UaVariant; the editors have it as their user property, so that QDataWidgetMapper finds it.

#include <Kestrel/QvelEditWidgetString>
#include <Kestrel/QvelWidgetLocalizedText>
#include <Kestrel/QvelWidgetNodeId>
#include <Kestrel/QvelWidgetStatusCode>
#include <Kestrel/UaLocalizedText>
#include <Kestrel/UaNodeId>
#include <Kestrel/UaStatusCode>
#include <Kestrel/UaVariant>

#include <QApplication>
#include <QDataWidgetMapper>
#include <QFormLayout>
#include <QPushButton>
#include <QStandardItemModel>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QList<QList<UaVariant>> rows = {
        {UaVariant(UaString("P-101")), UaVariant(UaLocalizedText("en", "Feed pump")),
         UaVariant(UaNodeId(UaString("Pump"), 2)), UaVariant(UaStatusCode())},
        {UaVariant(UaString("V-7")), UaVariant(UaLocalizedText("en", "Drain valve")),
         UaVariant(UaNodeId(UaString("Valve"), 2)), UaVariant(UaStatusCode(0x808c0000))},
    };
    QStandardItemModel model(2, 4);
    for (int row = 0; row < 2; ++row)
        for (int column = 0; column < 4; ++column)
            model.setData(model.index(row, column), QVariant::fromValue(rows[row][column]));

    QWidget window;
    auto* form = new QFormLayout(&window);
    QDataWidgetMapper mapper;
    mapper.setModel(&model);
    const std::pair<const char*, QWidget*> editors[] = {
        {"Tag", new QvelEditWidgetString},
        {"Description", new QvelWidgetLocalizedText},
        {"Node", new QvelWidgetNodeId},
        {"Status", new QvelWidgetStatusCode},
    };
    for (int column = 0; column < 4; ++column) {
        form->addRow(editors[column].first, editors[column].second);
        mapper.addMapping(editors[column].second, column);
    }
    auto* next = new QPushButton("Next");
    form->addRow(next);
    QObject::connect(next, &QPushButton::clicked, &mapper, [&] {
        mapper.submit();
        mapper.setCurrentIndex((mapper.currentIndex() + 1) % model.rowCount());
    });
    mapper.toFirst();
    window.show();
    return QApplication::exec();
}
