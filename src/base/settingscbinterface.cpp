#include "settingscbinterface.h"

// The one place where the vtable of the host's interface lives.
QvelSettingsCBInterface::~QvelSettingsCBInterface() = default;
