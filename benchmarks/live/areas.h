#pragma once

#include "figure.h"

void benchTrend(Figures& figures);
