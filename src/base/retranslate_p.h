#pragma once

#include <functional>

class QObject;
class QString;
class QWidget;

/// \file
/// How our widgets and models follow QEvent::LanguageChange.

/// Calls `setTexts`, which sets the texts of a widget and of what it is made of, now and whenever
/// the widget gets a new language. It may be used several times for one widget. A widget that Qt
/// gives texts, as it does a button box, has those already: texts that replace them belong to that
/// widget.
void retranslated(QWidget* widget, const std::function<void()>& setTexts);

/// Keeps a form of uic's, which is set up, in the language: calls its retranslateUi(), but leaves
/// what others have set since. Entries of lists and texts that depend on more follow by
/// retranslated(), after this.
void retranslatedForm(QWidget* widget, const std::function<void()>& retranslateUi);

/// Calls `tell` when the application has got a new language, as long as `context` lives: for models
/// and others who are not told by Qt. Once a switch, from the event loop.
void whenLanguageChanges(QObject* context, const std::function<void()>& tell);

/// For a text that a host may set as well, such as a window's title: sets the property `name` to
/// `text`, but not if someone else has set it since the last call.
void setOwnText(QObject* object, const char* name, const QString& text);
