#pragma once

/// \file
/// An OPC server list object for the table that stands for COM (platform/com/comclasstable_p.h).

#include "platform/com/comclasstable_p.h"

#include <QtCore/QList>

#include <algorithm>
#include <atomic>
#include <optional>

namespace comstandin {

using namespace comsurface;

inline constexpr comsurface::CATID dataAccess1 = {
    0x63D5F430, 0xCFE4, 0x11D1, {0xB2, 0xC8, 0x00, 0x60, 0x08, 0x3B, 0xA1, 0xFB}};
inline constexpr comsurface::CATID dataAccess2 = {
    0x63D5F432, 0xCFE4, 0x11D1, {0xB2, 0xC8, 0x00, 0x60, 0x08, 0x3B, 0xA1, 0xFB}};
inline constexpr comsurface::CATID dataAccess3 = {
    0xCC603642, 0x66D7, 0x48F1, {0xB6, 0x9A, 0xB6, 0x25, 0xE7, 0x36, 0x52, 0xD7}};
inline constexpr comsurface::CATID alarms = {
    0x58E13251, 0xAC87, 0x11D1, {0x84, 0xD5, 0x00, 0x60, 0x8C, 0xB8, 0xA7, 0xE9}};

/// A class on the computer of the test.
struct Server
{
    CATID category;
    std::optional<std::u16string> progId; ///< none: success with a null pointer
    HRESULT details = S_OK;               ///< of GetClassDetails
};

/// The computer that a server list tells of, and what was asked of it.
struct Computer
{
    QList<Server> servers;
    HRESULT enumeration = S_OK;   ///< of EnumClassesOfCategories
    HRESULT lastNext = S_FALSE;   ///< what Next returns at the end
    bool endless = false;         ///< starts again at the end
    QList<DWORD> contexts = {};   ///< asked for by CoCreateInstanceEx
    std::atomic<int> objects = 0; ///< alive
};

inline LPOLESTR taskString(const std::u16string& text)
{
    const auto copy = static_cast<LPOLESTR>(CoTaskMemAlloc((text.size() + 1) * sizeof(OLECHAR)));
    std::copy_n(text.c_str(), text.size() + 1, copy);
    return copy;
}

template <class Interface>
class Object : public Interface
{
public:
    Object(Computer& computer, const IID& iid) : m_computer(computer), m_iid(iid)
    {
        ++m_computer.objects;
    }
    virtual ~Object() { --m_computer.objects; }

    HRESULT QueryInterface(REFIID iid, void** object) override
    {
        const bool known = iid == m_iid || iid == IID_IUnknown;
        *object = known ? static_cast<Interface*>(this) : nullptr;
        if (known)
            AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
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
    const IID m_iid;
    ULONG m_references = 1;
};

/// Class identifiers are the indexes of the computer's servers.
class ClassEnumerator : public Object<IOPCEnumGUID>
{
public:
    ClassEnumerator(Computer& computer, QList<int> indexes)
        : Object(computer, IID_IOPCEnumGUID), m_indexes(std::move(indexes))
    {
    }
    HRESULT Next(ULONG count, GUID* guids, ULONG* fetched) override
    {
        if (count != 1 || !guids || !fetched)
            return HRESULT(0x80070057);
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
    explicit ServerList(Computer& computer) : Object(computer, IID_IOPCServerList2) {}

    HRESULT EnumClassesOfCategories(ULONG implementedCount, CATID* implemented, ULONG requiredCount,
                                    CATID* required, IOPCEnumGUID** classes) override
    {
        *classes = nullptr;
        if (requiredCount != 0 || !required)
            return HRESULT(0x800706F4); // a proxy takes no null array
        if (FAILED(m_computer.enumeration))
            return m_computer.enumeration;
        QList<int> indexes;
        const QList<CATID> wanted(implemented, implemented + implementedCount);
        for (int i = 0; i < m_computer.servers.size(); ++i) {
            if (wanted.contains(m_computer.servers.at(i).category))
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

/// Registers a server list for `computer`, which must outlive its use, on `host`, the local
/// computer for an empty one.
inline void install(Computer& computer, const std::u16string& host = {})
{
    registerComClass(host, CLSID_OpcServerList, [&](DWORD context, REFIID iid, void** object) {
        computer.contexts.append(context);
        auto* list = new ServerList(computer);
        const HRESULT result = list->QueryInterface(iid, object);
        list->Release();
        return result;
    });
}

} // namespace comstandin
