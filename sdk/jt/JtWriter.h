// Writes a model as JT files of version 8.1: assemblies, instances, parts with exact shapes, materials, names
// and properties; in one file, or divided.
//
//     mesh::ExportPlan plan;
//     if (plan.Build(model)) { JtWriter(plan, options, mode).WriteFiles(path); }
#pragma once

#include <filesystem>
#include <vector>

#include <cadex/JT_WriterParameters.hxx>

#include "sdk/jt/JtSceneWriter.h"
#include "sdk/text/AtomicFile.h"

namespace cadex::jt {

/// Memory depends on the largest single mesh, the number of definitions and occurrences, and what is kept of
/// the packed shapes between measuring and writing, which has a bound.
class JtWriter
{
public:
    using Split = JT_WriterParameters::FileSplitModeType;

    JtWriter(const mesh::ExportPlan& plan, Base_LengthUnit unit, Split split);

    /// Writes the file, and the others that it is divided into: those of parts (of assemblies too, when it is
    /// shattered) lie in a folder of the file's name without its extension, which is made. Each file is put
    /// in place whole, the one that names the others last. False when any could not be written; new ones of
    /// the others are then removed.
    bool WriteFiles(const std::filesystem::path& file);

    /// A stream is one file.
    bool Write(text::ByteSink& sink);

private:
    struct Piece
    {
        Guid id;
        int type = 0;
        std::size_t size = 0; ///< with its head
    };

    void Measure();
    void NameFiles();
    bool WriteOthers(const std::filesystem::path& folder, std::vector<std::filesystem::path>& made);
    bool WriteOne(text::ByteSink& sink, const std::vector<std::size_t>& roots,
                  const Base_UTF16String& fileName, const SceneWriter::OtherFile& otherFile);
    bool WriteHead(text::ByteSink& sink, const std::vector<Piece>& pieces) const;
    /// The parts that stand in a file, in the order of the plan.
    std::vector<std::size_t> PartsOf(const std::vector<std::size_t>& roots,
                                     const SceneWriter::OtherFile& otherFile) const;
    std::string ElementOf(std::size_t definition, const WrittenShape& shape) const;
    mesh::Matrix3 LinearOf(std::size_t definition) const;
    std::vector<std::size_t> Roots() const;
    Guid NewGuid();

    const mesh::ExportPlan& myPlan;
    Base_LengthUnit myUnit;
    Split mySplit;
    double myUnitsPerMillimetre;
    std::uint64_t mySeed;
    bool myIsMeasured = false;
    std::vector<std::vector<WrittenShape>> myShapes; ///< by definition
    std::vector<Extent> myExtents;
    std::vector<Base_UTF16String> myFileNames; ///< of definitions; empty: none of its own
};

} // namespace cadex::jt
