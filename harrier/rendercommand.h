#pragma once

#include <QtCore/QString>

class MainWindow;

/// Draws each page of the window and of the gallery, and each discovery tree, into a PNG file of
/// its name in `folder`; of each server that is open also its tab, as "session", and every view of
/// it.
///
/// The local servers are looked up first, and one of their endpoints is selected if any answers.
/// Servers that are open get the time to connect and to send what is shown.
/// False, with a text in `error`, when a file cannot be written.
bool render(MainWindow& window, const QString& folder, QString* error);
