#pragma once

#include "benchmarks/figure.h"

void benchDataView(Figures& figures);
void benchTrend(Figures& figures);
