#pragma once

/// \file
/// The COM of the tests, linked before the one of the library that knows of no class: computers
/// with an OPC server list each. What it is to do is set while nobody calls it.

#include "platform/com/comsurface_p.h"

#include <QtCore/QtCore>

#include <atomic>
#include <map>
#include <optional>
#include <string>

namespace comstandin {

using namespace comsurface;

inline const QUuid dataAccess1("63D5F430-CFE4-11D1-B2C8-0060083BA1FB");
inline const QUuid dataAccess2("63D5F432-CFE4-11D1-B2C8-0060083BA1FB");
inline const QUuid dataAccess3("CC603642-66D7-48F1-B69A-B625E73652D7");
inline const QUuid alarms("58E13251-AC87-11D1-84D5-00608CB8A7E9");

/// A class on a computer.
struct Server
{
    QUuid category;
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

/// The calls that can be made to fail; S_OK lets a call do its work.
struct Answers
{
    HRESULT coInitializeEx = S_OK;
    HRESULT coCreateInstanceEx = S_OK;
    HRESULT interfaceResult = S_OK; ///< MULTI_QI::hr of a CoCreateInstanceEx that succeeds
};
inline Answers answers;
inline std::map<std::u16string, Computer*> computers; ///< by name, the local one's empty

/// Forgets all that was set.
inline void clear()
{
    computers.clear();
    answers = {};
}

// What callers hold: threads initialised (each as often as it is) and blocks of task memory.
inline std::atomic<int> initialized = 0;
inline std::atomic<int> taskBlocks = 0;

} // namespace comstandin
