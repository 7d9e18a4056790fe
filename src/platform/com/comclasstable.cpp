#include "comclasstable_p.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace comsurface {

bool operator==(const GUID& a, const GUID& b)
{
    return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}

namespace {

struct Host
{
    HRESULT answer = S_OK;
    std::vector<std::pair<CLSID, ComFactory>> classes;
};

struct Table
{
    std::mutex mutex; // guards the two below
    std::map<std::u16string, Host> hosts;
    ComAnswers answers;
    std::atomic<int> initialized = 0;
    std::atomic<int> taskBlocks = 0;
};

Table& table()
{
    static Table instance;
    return instance;
}

thread_local int initializedHere = 0;

/// What the table says of a class, before any object is created.
HRESULT findFactory(REFCLSID clsid, DWORD context, const COSERVERINFO* server, ComFactory& factory)
{
    if (server && !(context & CLSCTX_REMOTE_SERVER))
        return REGDB_E_CLASSNOTREG;
    const std::lock_guard<std::mutex> lock(table().mutex);
    if (FAILED(table().answers.coCreateInstanceEx))
        return table().answers.coCreateInstanceEx;
    const auto host = table().hosts.find(server && server->pwszName ? server->pwszName : u"");
    if (host == table().hosts.end())
        return REGDB_E_CLASSNOTREG;
    if (FAILED(host->second.answer))
        return host->second.answer;
    for (const auto& entry : host->second.classes) {
        if (entry.first == clsid) {
            factory = entry.second;
            return S_OK;
        }
    }
    return REGDB_E_CLASSNOTREG;
}

HRESULT interfaceAnswer()
{
    const std::lock_guard<std::mutex> lock(table().mutex);
    return table().answers.interfaceResult;
}

} // namespace

HRESULT CoInitializeEx(void* reserved, DWORD)
{
    if (reserved)
        return HRESULT(0x80070057); // E_INVALIDARG
    {
        const std::lock_guard<std::mutex> lock(table().mutex);
        if (FAILED(table().answers.coInitializeEx))
            return table().answers.coInitializeEx;
    }
    ++table().initialized;
    return initializedHere++ == 0 ? S_OK : S_FALSE;
}

void CoUninitialize()
{
    --table().initialized;
    --initializedHere;
}

HRESULT CoCreateInstanceEx(REFCLSID clsid, IUnknown*, DWORD context, COSERVERINFO* server,
                           DWORD count, MULTI_QI* results)
{
    for (DWORD i = 0; i < count; ++i)
        results[i].pItf = nullptr;
    if (initializedHere <= 0)
        return CO_E_NOTINITIALIZED;
    ComFactory factory;
    const HRESULT found = findFactory(clsid, context, server, factory);
    if (FAILED(found))
        return found;

    const HRESULT forced = interfaceAnswer();
    DWORD given = 0;
    for (DWORD i = 0; i < count; ++i) {
        void* object = nullptr;
        results[i].hr = FAILED(forced) ? forced : factory(context, *results[i].pIID, &object);
        results[i].pItf = static_cast<IUnknown*>(object);
        given += SUCCEEDED(results[i].hr);
    }
    if (given == count || FAILED(forced))
        return S_OK;
    return given == 0 ? E_NOINTERFACE : CO_S_NOTALLINTERFACES;
}

void* CoTaskMemAlloc(std::size_t size)
{
    void* memory = std::malloc(size);
    if (memory)
        ++table().taskBlocks;
    return memory;
}

void CoTaskMemFree(void* memory)
{
    if (memory)
        --table().taskBlocks;
    std::free(memory);
}

void registerComClass(const std::u16string& host, REFCLSID clsid, ComFactory factory)
{
    const std::lock_guard<std::mutex> lock(table().mutex);
    table().hosts[host].classes.emplace_back(clsid, std::move(factory));
}

void setComHostAnswer(const std::u16string& host, HRESULT answer)
{
    const std::lock_guard<std::mutex> lock(table().mutex);
    table().hosts[host].answer = answer;
}

void setComAnswers(const ComAnswers& answers)
{
    const std::lock_guard<std::mutex> lock(table().mutex);
    table().answers = answers;
}

void clearComTable()
{
    const std::lock_guard<std::mutex> lock(table().mutex);
    table().hosts.clear();
    table().answers = {};
}

ComUsage comUsage()
{
    return {table().initialized, table().taskBlocks};
}

} // namespace comsurface
