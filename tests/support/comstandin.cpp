#include "support/comstandin.h"

#include <cstring>

using namespace comstandin;

namespace {

constexpr HRESULT invalidArgument = HRESULT(0x80070057);
constexpr HRESULT notInitialized = HRESULT(0x800401F0);
constexpr HRESULT nullReference = HRESULT(0x800706F4); // what a proxy says of a null array

thread_local int initializedHere = 0;

bool isSame(const GUID& a, const void* b)
{
    return std::memcmp(&a, b, sizeof a) == 0;
}

LPOLESTR taskString(const std::u16string& text)
{
    ++taskBlocks;
    const auto copy = new OLECHAR[text.size() + 1]();
    text.copy(copy, text.size());
    return copy;
}

template <class Interface>
struct Object : Interface
{
    explicit Object(Computer& owner) : computer(owner) { ++computer.objects; }
    virtual ~Object() { --computer.objects; }
    HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override
    {
        if (--references > 0)
            return references;
        delete this;
        return 0;
    }

    Computer& computer;
    ULONG references = 1;
};

/// Class identifiers are the indexes of the computer's servers.
struct ClassEnumerator : Object<IOPCEnumGUID>
{
    using Object::Object;

    HRESULT Next(ULONG count, GUID* guids, ULONG* fetched) override
    {
        if (count != 1 || !guids || !fetched)
            return invalidArgument;
        if (next == indexes.size() && computer.endless)
            next = 0;
        *fetched = next < indexes.size();
        if (*fetched)
            guids->Data1 = ULONG(indexes.at(next++));
        return *fetched ? S_OK : computer.lastNext;
    }
    HRESULT Skip(ULONG) override { return S_OK; }
    HRESULT Reset() override { return S_OK; }
    HRESULT Clone(IOPCEnumGUID**) override { return E_NOINTERFACE; }

    QList<int> indexes;
    qsizetype next = 0;
};

struct ServerList : Object<IOPCServerList2>
{
    using Object::Object;

    HRESULT EnumClassesOfCategories(ULONG count, CATID* implemented, ULONG requiredCount,
                                    CATID* required, IOPCEnumGUID** classes) override
    {
        *classes = nullptr;
        if (requiredCount != 0 || !required)
            return nullReference;
        if (FAILED(computer.enumeration))
            return computer.enumeration;
        const auto enumerator = new ClassEnumerator(computer);
        for (int i = 0; i < computer.servers.size(); ++i)
            for (ULONG wanted = 0; wanted < count; ++wanted)
                if (isSame(implemented[wanted], &computer.servers.at(i).category))
                    enumerator->indexes.append(i);
        *classes = enumerator;
        return S_OK;
    }
    HRESULT GetClassDetails(REFCLSID clsid, LPOLESTR* progId, LPOLESTR* userType,
                            LPOLESTR* versionIndependentProgId) override
    {
        const Server& server = computer.servers.at(clsid.Data1);
        if (FAILED(server.details))
            return server.details;
        *progId = server.progId ? taskString(*server.progId) : nullptr;
        *userType = taskString(u"A server");
        *versionIndependentProgId = taskString(u"Vendor.Server");
        return S_OK;
    }
    HRESULT CLSIDFromProgID(LPCOLESTR, CLSID*) override { return E_NOINTERFACE; }
};

} // namespace

namespace comsurface {

HRESULT CoInitializeEx(void* reserved, DWORD)
{
    if (reserved || FAILED(answers.coInitializeEx))
        return reserved ? invalidArgument : answers.coInitializeEx;
    ++initialized;
    return initializedHere++ == 0 ? S_OK : S_FALSE;
}

void CoUninitialize()
{
    --initialized;
    --initializedHere;
}

HRESULT CoCreateInstanceEx(REFCLSID clsid, IUnknown*, DWORD context, COSERVERINFO* server, DWORD,
                           MULTI_QI* result)
{
    result->pItf = nullptr;
    const auto found = computers.find(server ? server->pwszName : u"");
    if (initializedHere <= 0 || FAILED(answers.coCreateInstanceEx))
        return initializedHere <= 0 ? notInitialized : answers.coCreateInstanceEx;
    if (found == computers.end() || !isSame(clsid, &CLSID_OpcServerList))
        return REGDB_E_CLASSNOTREG;
    found->second->contexts.append(context);
    result->hr =
        isSame(*result->pIID, &IID_IOPCServerList2) ? answers.interfaceResult : E_NOINTERFACE;
    if (SUCCEEDED(result->hr))
        result->pItf = new ServerList(*found->second);
    return S_OK;
}

void CoTaskMemFree(void* memory)
{
    taskBlocks -= memory ? 1 : 0;
    delete[] static_cast<OLECHAR*>(memory);
}

} // namespace comsurface
