// What the views cost over the session that they show.

#include "benchmarks/live/areas.h"

#include <QtWidgets/QApplication>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Figures figures("live");
    benchAddressSpace(figures);
    benchDataView(figures);
    benchTrend(figures);
    return figures.result();
}
