#include "support/comstandin.h"

#include <algorithm>
#include <cstring>

using namespace comstandin;

namespace {

constexpr HRESULT invalidArgument = HRESULT(0x80070057);
constexpr HRESULT notInitialized = HRESULT(0x800401F0);
constexpr HRESULT nullReference = HRESULT(0x800706F4); // what a proxy says of a null array

thread_local int initializedHere = 0;

template <class Id>
bool isSame(const Id& a, const Id& b)
{
    return std::memcmp(&a, &b, sizeof(Id)) == 0;
}

LPOLESTR taskString(const std::u16string& text)
{
    ++taskBlocks;
    const auto copy = new OLECHAR[text.size() + 1];
    std::copy_n(text.c_str(), text.size() + 1, copy);
    return copy;
}

template <class Interface>
class Object : public Interface
{
public:
    explicit Object(Computer& computer) : m_computer(computer) { ++m_computer.objects; }
    virtual ~Object() { --m_computer.objects; }
    HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return ++m_references; }
    ULONG Release() override
    {
        const ULONG left = --m_references;
        if (left == 0)
            delete this;
        return left;
    }

protected:
    Computer& m_computer;

private:
    ULONG m_references = 1;
};

/// Class identifiers are the indexes of the computer's servers.
class ClassEnumerator : public Object<IOPCEnumGUID>
{
public:
    ClassEnumerator(Computer& computer, const QList<int>& indexes)
        : Object(computer), m_indexes(indexes)
    {
    }
    HRESULT Next(ULONG count, GUID* guids, ULONG* fetched) override
    {
        if (count != 1 || !guids || !fetched)
            return invalidArgument;
        *fetched = 0;
        if (m_next == m_indexes.size() && m_computer.endless)
            m_next = 0;
        if (m_next == m_indexes.size())
            return m_computer.lastNext;
        *guids = {ULONG(m_indexes.at(m_next++)), 0, 0, {}};
        *fetched = 1;
        return S_OK;
    }
    HRESULT Skip(ULONG) override { return S_OK; }
    HRESULT Reset() override { return S_OK; }
    HRESULT Clone(IOPCEnumGUID**) override { return E_NOINTERFACE; }

private:
    const QList<int> m_indexes;
    qsizetype m_next = 0;
};

class ServerList : public Object<IOPCServerList2>
{
public:
    using Object::Object;
    HRESULT EnumClassesOfCategories(ULONG implementedCount, CATID* implemented, ULONG requiredCount,
                                    CATID* required, IOPCEnumGUID** classes) override
    {
        *classes = nullptr;
        if (requiredCount != 0 || !required)
            return nullReference;
        if (FAILED(m_computer.enumeration))
            return m_computer.enumeration;
        QList<int> indexes;
        for (int i = 0; i < m_computer.servers.size(); ++i) {
            const CATID& category = m_computer.servers.at(i).category;
            if (std::any_of(implemented, implemented + implementedCount,
                            [&](const CATID& wanted) { return isSame(wanted, category); }))
                indexes.append(i);
        }
        *classes = new ClassEnumerator(m_computer, indexes);
        return S_OK;
    }
    HRESULT GetClassDetails(REFCLSID clsid, LPOLESTR* progId, LPOLESTR* userType,
                            LPOLESTR* versionIndependentProgId) override
    {
        const Server& server = m_computer.servers.at(clsid.Data1);
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
    if (found == computers.end() || !isSame(clsid, CLSID_OpcServerList))
        return REGDB_E_CLASSNOTREG;
    Computer& computer = *found->second;
    if (FAILED(computer.creation))
        return computer.creation;
    computer.contexts.append(context);
    const bool known = isSame(*result->pIID, IID_IOPCServerList2);
    result->hr = known ? answers.interfaceResult : E_NOINTERFACE;
    if (SUCCEEDED(result->hr))
        result->pItf = new ServerList(computer);
    return S_OK;
}

void CoTaskMemFree(void* memory)
{
    if (memory)
        --taskBlocks;
    delete[] static_cast<OLECHAR*>(memory);
}

} // namespace comsurface
