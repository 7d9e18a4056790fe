#pragma once

class QWidget;

/// Moves a window, frame and all, into the available area of the screen that holds most of it. One
/// that is larger than the area ends at the right and bottom edges.
void keepOnScreen(QWidget* window);
