#include "platform/com/comsurface_p.h"

// There is no COM on this system, so no class is registered on any computer.

namespace comsurface {

HRESULT CoInitializeEx(void*, DWORD)
{
    return S_OK;
}

void CoUninitialize() {}

HRESULT CoCreateInstanceEx(REFCLSID, IUnknown*, DWORD, COSERVERINFO*, DWORD count,
                           MULTI_QI* results)
{
    for (DWORD i = 0; i < count; ++i) {
        results[i].pItf = nullptr;
        results[i].hr = REGDB_E_CLASSNOTREG;
    }
    return REGDB_E_CLASSNOTREG;
}

void CoTaskMemFree(void*) {}

} // namespace comsurface
