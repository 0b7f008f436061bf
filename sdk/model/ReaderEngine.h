// The border between the public readers and the engines that parse formats. Base_Reader owns one ReaderEngine
// and forwards to it; an engine derives from this class and is registered by format in EngineRegistry.
//
//     class StepReaderEngine : public ReaderEngine { ... };
//     registry.SetReader(Format::STEP, [] { return std::make_unique<StepReaderEngine>(); });
#pragma once

#include <filesystem>
#include <istream>

#include <cadex/Base_ReaderParameters.hxx>
#include <cadex/ModelData_Model.hxx>

namespace cadex {
namespace internal {

/// One engine object reads one file: Base_Reader makes a fresh one for each ReadFile, calls ReadFile (or
/// ReadStream) once and, if that gave true, Transfer. Failure is false. An engine stops exceptions and
/// signals of its kernel itself; what still escapes, Base_Reader turns into false. An engine prints nothing.
class ReaderEngine
{
public:
    virtual ~ReaderEngine() = default;

    /// Loads the file. `parameters` is the format's own class (static_cast, for example to
    /// STEP_ReaderParameters), valid until Transfer has returned.
    virtual bool ReadFile(const std::filesystem::path& file, const Base_ReaderParameters& parameters) = 0;
    /// Loads from a stream; engines that need a file keep this.
    virtual bool ReadStream(std::istream&, const Base_ReaderParameters&) { return false; }
    /// Appends the file's roots to the model, in millimetres. The model's name is Base_Reader's business.
    virtual bool Transfer(ModelData_Model& model) = 0;
};

} // namespace internal
} // namespace cadex
