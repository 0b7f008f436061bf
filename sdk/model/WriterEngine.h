// The border between the public writers and the engines that write formats; the twin of ReaderEngine.
#pragma once

#include <filesystem>
#include <ostream>

#include <cadex/Base_WriterParameters.hxx>
#include <cadex/ModelData_Model.hxx>

namespace cadex {
namespace internal {

/// One engine object writes one model: Base_Writer makes a fresh one for each Transfer, and calls WriteFile
/// after a Transfer that gave true, possibly more than once. Failure is false; exceptions that escape become
/// false.
class WriterEngine
{
public:
    virtual ~WriterEngine() = default;

    /// Takes the model (a shallow copy of the handle keeps its objects). `parameters` is the format's own
    /// class (static_cast), valid during this call; its length unit is final from here on.
    virtual bool Transfer(const ModelData_Model& model, const Base_WriterParameters& parameters) = 0;
    /// Writes the file whole or not at all; AtomicFile in sdk/text helps.
    virtual bool WriteFile(const std::filesystem::path& file) = 0;
    /// Writes to a stream; engines that need a file keep this.
    virtual bool WriteStream(std::ostream&) { return false; }
};

} // namespace internal
} // namespace cadex
