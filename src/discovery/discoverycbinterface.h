#pragma once

#include "../kestrelexport.h"

#include <QtCore/QVariant>

class QString;

/// The host's side of discovery: its settings store and its log.
///
/// The settings operations come on the user-interface thread, bracketed by openSettings() and
/// closeSettings(); logMessage() comes on any thread, several at a time. The library never owns an
/// implementation; it is mandatory and must outlive the models and views that it was handed to.
class KESTREL_EXPORT QvelDiscoveryCBInterface
{
public:
    QvelDiscoveryCBInterface() {}
    QvelDiscoveryCBInterface(const QvelDiscoveryCBInterface&) {}
    QvelDiscoveryCBInterface& operator=(const QvelDiscoveryCBInterface&) { return *this; }
    virtual ~QvelDiscoveryCBInterface();

    /// An opaque handle to the store, valid until closeSettings().
    virtual void* openSettings() = 0;
    virtual void closeSettings(void* handle) = 0;
    /// The stored value, or an invalid QVariant if there is none.
    virtual QVariant readSetting(void* handle, const QString& key) = 0;
    virtual void writeSetting(void* handle, const QString& key, const QVariant& value) = 0;
    /// Takes one line of trace or error text, of bounded length and without control characters.
    /// Names and URLs in it are as servers sent them: show it as plain text.
    virtual void logMessage(const QString& text) = 0;
};
