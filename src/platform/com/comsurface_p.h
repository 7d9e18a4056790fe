#pragma once

/// \file
/// The part of COM that the enumeration of OPC Classic servers calls, under the names that it has
/// on Windows: the real thing there, and elsewhere our own declarations over functions that know of
/// no class. Needs the standard library alone.
///
/// The OPC interfaces are those of OPC Common 1.10.

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <comcat.h>
#include <objbase.h>

namespace comsurface {
#else

#include <cstdint>

#define STDMETHODCALLTYPE

namespace comsurface {

using HRESULT = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using OLECHAR = char16_t;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;

constexpr HRESULT S_OK = 0;
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_NOINTERFACE = HRESULT(0x80004002);
constexpr HRESULT E_POINTER = HRESULT(0x80004003);
constexpr HRESULT REGDB_E_CLASSNOTREG = HRESULT(0x80040154);

constexpr bool SUCCEEDED(HRESULT result)
{
    return result >= 0;
}
constexpr bool FAILED(HRESULT result)
{
    return result < 0;
}

struct GUID
{
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
using IID = GUID;
using CLSID = GUID;
using CATID = GUID;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

/// Counts its references; no virtual destructor, as the layout is binary.
struct IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

protected:
    ~IUnknown() = default;
};

struct COAUTHINFO;
struct COSERVERINFO
{
    DWORD dwReserved1;
    LPOLESTR pwszName;
    COAUTHINFO* pAuthInfo;
    DWORD dwReserved2;
};
struct MULTI_QI
{
    const IID* pIID;
    IUnknown* pItf;
    HRESULT hr;
};

enum COINIT : DWORD { COINIT_MULTITHREADED = 0, COINIT_APARTMENTTHREADED = 2 };
enum CLSCTX : DWORD {
    CLSCTX_INPROC_SERVER = 0x1,
    CLSCTX_INPROC_HANDLER = 0x2,
    CLSCTX_LOCAL_SERVER = 0x4,
    CLSCTX_REMOTE_SERVER = 0x10
};

HRESULT CoInitializeEx(void* reserved, DWORD flags);
void CoUninitialize();
HRESULT CoCreateInstanceEx(REFCLSID clsid, IUnknown* outer, DWORD context, COSERVERINFO* server,
                           DWORD count, MULTI_QI* results);
void CoTaskMemFree(void* memory);

#endif

/// Fetches class identifiers.
struct IOPCEnumGUID : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG count, GUID* guids, ULONG* fetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG count) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IOPCEnumGUID** copy) = 0;

protected:
    ~IOPCEnumGUID() = default;
};
constexpr IID IID_IOPCEnumGUID = {
    0x55C382C8, 0x21C7, 0x4E88, {0x96, 0xC1, 0xBE, 0xCF, 0xB1, 0xE3, 0xF4, 0x83}};

/// Lists the OPC Classic servers of its computer. Strings handed out belong to the caller, who
/// frees them by CoTaskMemFree.
struct IOPCServerList2 : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE EnumClassesOfCategories(ULONG implementedCount,
                                                              CATID* implemented,
                                                              ULONG requiredCount, CATID* required,
                                                              IOPCEnumGUID** classes) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetClassDetails(REFCLSID clsid, LPOLESTR* progId,
                                                      LPOLESTR* userType,
                                                      LPOLESTR* versionIndependentProgId) = 0;
    virtual HRESULT STDMETHODCALLTYPE CLSIDFromProgID(LPCOLESTR progId, CLSID* clsid) = 0;

protected:
    ~IOPCServerList2() = default;
};
constexpr IID IID_IOPCServerList2 = {
    0x9DD0B56C, 0xAD9E, 0x43EE, {0x83, 0x05, 0x48, 0x7F, 0x31, 0x88, 0xBF, 0x7A}};

/// The server list object that OPC Common installs on every computer with OPC Classic servers.
constexpr CLSID CLSID_OpcServerList = {
    0x13486D51, 0x4821, 0x11D2, {0xA4, 0x94, 0x3C, 0xB3, 0x06, 0xC1, 0x00, 0x00}};

} // namespace comsurface
