#pragma once

/// \file
/// The COM of the tests, linked before the one of the library that knows of no class: computers
/// with an OPC server list each. Any thread.

#include "platform/com/comsurface_p.h"

#include <QtCore/QList>

#include <atomic>
#include <map>
#include <optional>
#include <string>

namespace comstandin {

using namespace comsurface;

inline constexpr CATID dataAccess1 = {
    0x63D5F430, 0xCFE4, 0x11D1, {0xB2, 0xC8, 0x00, 0x60, 0x08, 0x3B, 0xA1, 0xFB}};
inline constexpr CATID dataAccess2 = {
    0x63D5F432, 0xCFE4, 0x11D1, {0xB2, 0xC8, 0x00, 0x60, 0x08, 0x3B, 0xA1, 0xFB}};
inline constexpr CATID dataAccess3 = {
    0xCC603642, 0x66D7, 0x48F1, {0xB6, 0x9A, 0xB6, 0x25, 0xE7, 0x36, 0x52, 0xD7}};
inline constexpr CATID alarms = {
    0x58E13251, 0xAC87, 0x11D1, {0x84, 0xD5, 0x00, 0x60, 0x8C, 0xB8, 0xA7, 0xE9}};

/// A class on a computer.
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
    HRESULT creation = S_OK;      ///< of CoCreateInstanceEx
    QList<DWORD> contexts = {};   ///< asked for by CoCreateInstanceEx
    std::atomic<int> objects = 0; ///< alive
};

/// The calls that can be made to fail; S_OK lets a call do its work.
struct Answers
{
    HRESULT coInitializeEx = S_OK;
    HRESULT coCreateInstanceEx = S_OK;
    HRESULT interfaceResult = S_OK; ///< MULTI_QI::hr of a CoCreateInstanceEx that succeeds
};

/// What there is. Changed only while nobody enumerates.
inline std::map<std::u16string, Computer*> computers; ///< the local one without a name
inline Answers answers;

/// What callers hold: threads initialised (each as often as it is) and blocks of task memory.
inline std::atomic<int> initialized = 0;
inline std::atomic<int> taskBlocks = 0;

/// Forgets all that was installed and set.
inline void clear()
{
    computers.clear();
    answers = {};
}

} // namespace comstandin
