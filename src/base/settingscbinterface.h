#pragma once

#include "../kestrelexport.h"

#include <QtCore/QVariant>

class QString;

/// The host's settings store, as the file-capable edit fields use it.
///
/// Per use, openSettings() is called once, then readSetting() and writeSetting() any number of
/// times with its handle, then closeSettings(). All calls come on the user-interface thread. The
/// library never owns an implementation; it must outlive the fields that it was handed to.
class KESTREL_EXPORT QvelSettingsCBInterface
{
public:
    QvelSettingsCBInterface() {}
    QvelSettingsCBInterface(const QvelSettingsCBInterface&) {}
    QvelSettingsCBInterface& operator=(const QvelSettingsCBInterface&) { return *this; }
    virtual ~QvelSettingsCBInterface();

    /// An opaque handle to the store, valid until closeSettings().
    virtual void* openSettings() = 0;
    virtual void closeSettings(void* handle) = 0;
    /// The stored value, or an invalid QVariant if there is none.
    virtual QVariant readSetting(void* handle, const QString& key) = 0;
    virtual void writeSetting(void* handle, const QString& key, const QVariant& value) = 0;
};
