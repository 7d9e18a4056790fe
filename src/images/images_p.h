#pragma once

/// Makes the library's images known to Qt's resource system, which a static build does not do by
/// itself. Call it before the first use of ":/kestrel/images/"; further calls do nothing.
void initKestrelImages();
