#pragma once

#include "benchmarks/figure.h"

void benchAddressSpace(Figures& figures);
void benchDataView(Figures& figures);
void benchTrend(Figures& figures);
