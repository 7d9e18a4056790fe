#include "comserverlist_p.h"

#include "platform/com/comsurface_p.h"

#include <algorithm>
#include <memory>
#include <type_traits>

namespace comsurface {

namespace {

constexpr HRESULT invalidData = HRESULT(0x8007000DL); // HRESULT_FROM_WIN32(ERROR_INVALID_DATA)

struct Releaser
{
    void operator()(IUnknown* object) const { object->Release(); }
};
template <class Interface>
using ComPointer = std::unique_ptr<Interface, Releaser>;

struct TaskMemoryDeleter
{
    void operator()(OLECHAR* text) const { CoTaskMemFree(text); }
};
using TaskString = std::unique_ptr<OLECHAR, TaskMemoryDeleter>;

/// COM initialised on this thread for as long as this lives.
class Apartment
{
public:
    Apartment() : m_result(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
    ~Apartment()
    {
        if (SUCCEEDED(m_result))
            CoUninitialize();
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    HRESULT result() const { return m_result; }

private:
    const HRESULT m_result;
};

std::vector<CATID> categories(ComServerKind kind)
{
    if (kind == ComServerKind::AlarmsAndEvents)
        return {{0x58E13251, 0xAC87, 0x11D1, {0x84, 0xD5, 0x00, 0x60, 0x8C, 0xB8, 0xA7, 0xE9}}};
    return {// Data Access 1.0, 2.0 and 3.0
            {0x63D5F430, 0xCFE4, 0x11D1, {0xB2, 0xC8, 0x00, 0x60, 0x08, 0x3B, 0xA1, 0xFB}},
            {0x63D5F432, 0xCFE4, 0x11D1, {0xB2, 0xC8, 0x00, 0x60, 0x08, 0x3B, 0xA1, 0xFB}},
            {0xCC603642, 0x66D7, 0x48F1, {0xB6, 0x9A, 0xB6, 0x25, 0xE7, 0x36, 0x52, 0xD7}}};
}

HRESULT createServerList(const std::u16string& host, ComPointer<IOPCServerList2>& list)
{
    std::basic_string<OLECHAR> name(host.begin(), host.end());
    COSERVERINFO server = {0, name.data(), nullptr, 0};
    MULTI_QI query = {&IID_IOPCServerList2, nullptr, S_OK};
    const HRESULT result =
        host.empty()
            ? CoCreateInstanceEx(CLSID_OpcServerList, nullptr,
                                 DWORD(CLSCTX_INPROC_SERVER) | DWORD(CLSCTX_INPROC_HANDLER) |
                                     DWORD(CLSCTX_LOCAL_SERVER) | DWORD(CLSCTX_REMOTE_SERVER),
                                 nullptr, 1, &query)
            : CoCreateInstanceEx(CLSID_OpcServerList, nullptr, CLSCTX_REMOTE_SERVER, &server, 1,
                                 &query);
    list.reset(static_cast<IOPCServerList2*>(query.pItf));
    if (FAILED(result))
        return result;
    if (FAILED(query.hr))
        return query.hr;
    return list ? S_OK : E_POINTER;
}

HRESULT enumerateClasses(IOPCServerList2& list, ComServerKind kind,
                         ComPointer<IOPCEnumGUID>& classes)
{
    std::vector<CATID> implemented = categories(kind);
    // An empty array, but not a null one: the proxy to a remote list takes none.
    CATID required = {};
    IOPCEnumGUID* enumerator = nullptr;
    const HRESULT result = list.EnumClassesOfCategories(
        ULONG(implemented.size()), implemented.data(), 0, &required, &enumerator);
    classes.reset(enumerator);
    if (FAILED(result))
        return result;
    return classes ? S_OK : E_POINTER;
}

HRESULT readProgId(IOPCServerList2& list, REFCLSID clsid, std::u16string& progId)
{
    LPOLESTR texts[3] = {};
    const HRESULT result = list.GetClassDetails(clsid, &texts[0], &texts[1], &texts[2]);
    const TaskString owners[3] = {TaskString(texts[0]), TaskString(texts[1]), TaskString(texts[2])};
    if (FAILED(result) || !texts[0])
        return FAILED(result) ? result : E_POINTER;
    const OLECHAR* end = texts[0];
    while (*end) {
        if (std::size_t(end - texts[0]) == maxProgIdLength)
            return invalidData;
        ++end;
    }
    progId.assign(static_cast<const OLECHAR*>(texts[0]), end);
    return S_OK;
}

} // namespace

std::vector<ComServer> enumerateComServers(const std::u16string& host, ComServerKind kind,
                                           const ComFailure& onFailure,
                                           const std::function<bool()>& stop)
{
    const auto failed = [&onFailure](ComCall call, HRESULT result) {
        if (FAILED(result))
            onFailure(call, std::uint32_t(result));
        return FAILED(result);
    };

    const Apartment apartment;
    if (failed(ComCall::CoInitializeEx, apartment.result()))
        return {};
    ComPointer<IOPCServerList2> list;
    if (failed(ComCall::CoCreateInstanceEx, createServerList(host, list)))
        return {};
    ComPointer<IOPCEnumGUID> classes;
    if (failed(ComCall::EnumClassesOfCategories, enumerateClasses(*list, kind, classes)))
        return {};

    std::vector<ComServer> servers;
    for (int i = 0; i < maxComServers && !stop(); ++i) {
        CLSID clsid = {};
        ULONG fetched = 0;
        if (classes->Next(1, &clsid, &fetched) != S_OK)
            break;
        ComServer server;
        if (!failed(ComCall::GetClassDetails, readProgId(*list, clsid, server.progId)))
            servers.push_back(std::move(server));
    }
    return servers;
}

} // namespace comsurface
