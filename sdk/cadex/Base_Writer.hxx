// Base of all format writers: take a model, then write it.
//
//     STEP_Writer writer;
//     writer.Parameters().LengthUnit() = Base_LU_Inches;
//     bool ok = writer.Transfer(model) && writer.WriteFile("bracket.step");
#pragma once

#include <cadex/Base_Export.hxx>

#include <iosfwd>
#include <memory>

#include <cadex/Base_Allocator.hxx>
#include <cadex/Base_UTF16String.hxx>
#include <cadex/internal/Formats.hxx>

namespace cadex {

class Base_WriterParameters;
class ModelData_Model;

namespace internal {
class WriterEngine;
}

/// Failures are a false result; nothing is thrown. Deleting through this base is allowed.
class CADEX_EXPORT Base_Writer : public internal::Allocated
{
public:
    virtual ~Base_Writer();
    Base_Writer(const Base_Writer&) = delete;
    Base_Writer& operator=(const Base_Writer&) = delete;

    /// Takes the model in the parameters' length unit. The model's objects are shared, not copied: it must
    /// stay unchanged until WriteFile has returned. False when the model cannot be written, or without an
    /// engine.
    bool Transfer(const ModelData_Model& theModel);
    /// Writes the file, whole or not at all: on false an existing file of that name is as it was.
    /// False without a preceding successful Transfer.
    bool WriteFile(const Base_UTF16String& theFileName);
    /// Writes to a stream; false for formats whose engine needs a file.
    bool WriteFile(std::ostream& theStream);

protected:
    explicit Base_Writer(internal::Format theFormat);

private:
    virtual const Base_WriterParameters& BaseParameters() const = 0;

    internal::Format myFormat;
    std::unique_ptr<internal::WriterEngine> myEngine;
};

} // namespace cadex
