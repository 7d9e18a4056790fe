#pragma once

#include "comsurface_p.h"

#include "../../kestrelexport.h"

#include <functional>
#include <string>

/// \file
/// What stands for COM where there is none: a table of class objects, empty until someone registers
/// one, so that every class answers REGDB_E_CLASSNOTREG. Any thread.

namespace comsurface {

/// Creates an object of a class and hands out its interface `iid` with one reference, as
/// IClassFactory::CreateInstance() does. `context` is the class context that was asked for.
using ComFactory = std::function<HRESULT(DWORD context, REFIID iid, void** object)>;

/// The calls of the surface that can be made to fail; S_OK lets a call do its work.
struct ComAnswers
{
    HRESULT coInitializeEx = S_OK;
    HRESULT coCreateInstanceEx = S_OK;
    HRESULT interfaceResult = S_OK; ///< MULTI_QI::hr of a CoCreateInstanceEx that succeeds
};

/// Registers a class on a computer, the local one for an empty host.
KESTREL_EXPORT void registerComClass(const std::u16string& host, REFCLSID clsid,
                                     ComFactory factory);
/// Lets every CoCreateInstanceEx on `host` fail, as for a computer that does not answer.
KESTREL_EXPORT void setComHostAnswer(const std::u16string& host, HRESULT answer);
KESTREL_EXPORT void setComAnswers(const ComAnswers& answers);
/// Forgets all that was registered and set.
KESTREL_EXPORT void clearComTable();

/// What callers of the surface hold: threads initialised (each as often as it is) and blocks of
/// task memory.
struct ComUsage
{
    int initialized = 0;
    int taskBlocks = 0;
};
KESTREL_EXPORT ComUsage comUsage();

} // namespace comsurface
