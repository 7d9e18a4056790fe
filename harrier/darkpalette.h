#pragma once

#include <QtGui/QPalette>

/// The colours of --dark, for the style Fusion.
QPalette darkPalette();
