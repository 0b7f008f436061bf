// Base of all format readers: load a file, then convert it into a model.
//
//     STEP_Reader reader;
//     ModelData_Model model;
//     bool ok = reader.ReadFile("bracket.step") && reader.Transfer(model);
#pragma once

#include <cadex/Base_Export.hxx>

#include <iosfwd>
#include <memory>

#include <cadex/Base_Allocator.hxx>
#include <cadex/Base_UTF16String.hxx>
#include <cadex/internal/Formats.hxx>

namespace cadex {

class Base_ReaderParameters;
class ModelData_Model;

namespace internal {
class ReaderEngine;
}

/// Failures are a false result; nothing is thrown. A reader may be used for several files in turn: each
/// ReadFile forgets the file before. Deleting through this base is allowed.
class CADEX_EXPORT Base_Reader : public internal::Allocated
{
public:
    virtual ~Base_Reader();
    Base_Reader(const Base_Reader&) = delete;
    Base_Reader& operator=(const Base_Reader&) = delete;

    /// Loads the file. False when it is missing, is not of this format or is damaged, or when the format has
    /// no engine.
    bool ReadFile(const Base_UTF16String& theFileName);
    /// Loads from a stream; false for formats whose engine needs a file.
    bool ReadFile(std::istream& theStream);
    /// Converts what was read and appends its roots to the model; a model without a name gets the file's base
    /// name. False, with the model as it was, without a preceding successful ReadFile, and when damage has
    /// left nothing that can be shown.
    bool Transfer(ModelData_Model& theModel);

protected:
    explicit Base_Reader(internal::Format theFormat);

private:
    virtual const Base_ReaderParameters& BaseParameters() const = 0;

    internal::Format myFormat;
    std::unique_ptr<internal::ReaderEngine> myEngine;
    Base_UTF16String myBaseName;
};

} // namespace cadex
