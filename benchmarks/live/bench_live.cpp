#include "areas.h"

#include <QtWidgets/QApplication>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Figures figures("live");
    benchTrend(figures);
    return figures.result();
}
