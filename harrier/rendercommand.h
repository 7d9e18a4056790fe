#pragma once

#include <QtCore/QString>

class MainWindow;

/// Draws each page of the window, and each discovery tree, into a PNG file of its name in `folder`.
///
/// The local servers are looked up first, and one of their endpoints is selected if any answers.
/// False, with a text in `error`, when a file cannot be written.
bool render(MainWindow& window, const QString& folder, QString* error);
