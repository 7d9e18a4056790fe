#pragma once

/// \file
/// Symbol visibility of the library. A static build defines KESTREL_STATIC for itself and, through
/// its package files, for everyone who links it.

#include <QtCore/qglobal.h>

#if defined(KESTREL_STATIC)
#define KESTREL_EXPORT
#elif defined(KESTREL_BUILDING)
#define KESTREL_EXPORT Q_DECL_EXPORT
#else
#define KESTREL_EXPORT Q_DECL_IMPORT
#endif
