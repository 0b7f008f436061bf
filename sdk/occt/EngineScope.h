// The one door into OpenCASCADE. Its readers, its settings, its message printers and its signal handlers are
// process-wide, it throws exceptions that are no std::exception, and damaged input can make it dereference
// null. Everything that the engine does with it runs inside RunGuarded:
//
//     bool ok = RunGuarded(EngineUse::Iges, [&] { return Convert(document, model); });
//
// While the work runs, this thread holds the engine's lock, the settings that reading and writing depend on
// have the engine's values, nothing is printed, and faults raised by the processor become failures.
// Afterwards the settings, printers and signal handlers that were in force before are in force again: a host
// application that uses OpenCASCADE itself notices nothing.
#pragma once

#include <functional>

namespace cadex::occt {

/// What the work needs.
enum class EngineUse
{
    Geometry, ///< shapes, meshing, properties
    Iges      ///< also IGES: its controller is initialised, the settings of reading and writing are set anew
};

/// Runs the work under the guard; calls may be nested on one thread. Returns the work's result, or false when
/// it ended in an exception of any kind or in a fault (null reference, stack overflow, division by zero, bus
/// error). After a fault the objects that the work was building are abandoned, not destroyed. Never throws.
bool RunGuarded(EngineUse use, const std::function<bool()>& work) noexcept;

/// Sets a process-wide setting of OpenCASCADE until the enclosing guard ends; use it inside RunGuarded only.
/// False when OpenCASCADE does not know the setting.
bool SetEngineSetting(const char* name, int value);
bool SetEngineSetting(const char* name, const char* value);

} // namespace cadex::occt
