#pragma once

#include "../kestrelexport.h"

class QLocale;

/// Shows kestrel, and what Qt itself says in it, in the first of a locale's languages that there is
/// a catalogue for: English, which needs none, or German. It replaces the language of the call
/// before. Everything open follows at once, and what a user has typed stays; texts that others have
/// set, such as a title, stay too. Qt's own catalogue is taken from where Qt's translations are; if
/// it is not there, Qt's texts stay English.
///
/// A host with a catalogue of its own installs it by QCoreApplication::installTranslator(); its
/// widgets follow QEvent::LanguageChange. Formats of numbers and times follow QLocale() and not
/// this.
///
/// False, and no change, if there is no catalogue for any of the languages. User-interface thread,
/// while there is an application.
KESTREL_EXPORT bool qvelInstallLanguage(const QLocale& locale);
