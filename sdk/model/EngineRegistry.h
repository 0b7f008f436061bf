// Which engine reads and writes which format. Filled once by RegisterEngines (sdk/Engines.cpp), which calls
// one function of each format's room:
//
//     sdk/step/StepEngines.h    void RegisterStepEngines(EngineRegistry&)
//     sdk/iges/IgesEngines.h    void RegisterIgesEngines(EngineRegistry&)
//     sdk/ifc/IfcEngines.h      void RegisterIfcEngines(EngineRegistry&)
//
// Applications ask CanRead and CanWrite of <cadex/internal/Formats.hxx> instead. A test puts its own engine
// in and puts the one before back.
#pragma once

#include <array>
#include <functional>
#include <memory>

#include <cadex/internal/Formats.hxx>

#include "sdk/model/ReaderEngine.h"
#include "sdk/model/WriterEngine.h"

namespace cadex {
namespace internal {

using ReaderFactory = std::function<std::unique_ptr<ReaderEngine>()>;
using WriterFactory = std::function<std::unique_ptr<WriterEngine>()>;

/// Not guarded: change it only while no reader or writer is at work.
class EngineRegistry
{
public:
    /// The process's registry, with all engines present in this build.
    static EngineRegistry& Instance();

    /// Installs a factory (an empty one: no engine) and returns the one before. Formats out of range are
    /// ignored.
    ReaderFactory SetReader(Format format, ReaderFactory factory);
    WriterFactory SetWriter(Format format, WriterFactory factory);

    /// Empty where there is no engine.
    const ReaderFactory& Reader(Format format) const;
    const WriterFactory& Writer(Format format) const;

private:
    std::array<ReaderFactory, FormatCount> myReaders;
    std::array<WriterFactory, FormatCount> myWriters;
};

/// Called once by Instance(); defined where the engines are put together.
void RegisterEngines(EngineRegistry& registry);

/// The path that an SDK text names, in the system's own form.
std::filesystem::path PathOf(const Base_UTF16String& text);

} // namespace internal
} // namespace cadex
