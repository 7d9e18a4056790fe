#pragma once

#include <QtCore/QString>

#include <functional>

class QWidget;

/// The language of the window. What the command line prints is English in all of them: scripts
/// read it.
namespace Language {

/// Of the setting that remembers the choice.
inline const QString key = QStringLiteral("Window/Language");

/// Whether it is "en" or "de".
bool isKnown(const QString& name);
/// Anything that is not known else stands for the language of the desktop, or English where there
/// is no catalogue for that. Numbers and times are written as is usual in it. Everything open
/// follows.
void install(const QString& name);
/// What was installed last.
QString current();

/// Calls `setTexts`, which sets the texts of a widget and of what it is made of, now and whenever
/// the widget gets a new language.
void follow(QWidget* widget, const std::function<void()>& setTexts);

} // namespace Language
