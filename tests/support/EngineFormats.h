// The SDK's readers and writers as a table: what is done with every format is done by a loop. A new format is
// a line.
#pragma once

#include <memory>
#include <type_traits>

#include <cadex/ACIS_Reader.hxx>
#include <cadex/ACIS_Writer.hxx>
#include <cadex/IFC_Reader.hxx>
#include <cadex/IFC_Writer.hxx>
#include <cadex/IGES_Reader.hxx>
#include <cadex/IGES_Writer.hxx>
#include <cadex/JT_Reader.hxx>
#include <cadex/JT_Writer.hxx>
#include <cadex/Para_Reader.hxx>
#include <cadex/Para_Writer.hxx>
#include <cadex/Rhino_Reader.hxx>
#include <cadex/Rhino_Writer.hxx>
#include <cadex/SLD_Reader.hxx>
#include <cadex/STEP_Reader.hxx>
#include <cadex/STEP_ReaderParameters.hxx>
#include <cadex/STEP_Writer.hxx>

#include "tests/support/ModelBuilder.h"

namespace Zemtar::Test {

template <class Reader>
std::unique_ptr<cadex::Base_Reader> MakeReader()
{
    auto reader = std::make_unique<Reader>();
    if constexpr (std::is_same_v<Reader, cadex::STEP_Reader>) {
        reader->Parameters().PreferredBRepRepresentationType() = cadex::STEP_ReaderParameters::All;
    }
    return reader;
}

template <class Writer>
std::unique_ptr<cadex::Base_Writer> MakeWriter()
{
    return std::make_unique<Writer>();
}

struct EngineFormat
{
    const char* name;
    cadex::internal::Format format;
    const char* extension; ///< with its dot
    std::unique_ptr<cadex::Base_Reader> (*reader)();
    std::unique_ptr<cadex::Base_Writer> (*writer)(); ///< null when the SDK has none
    bool isReadByKernel = false; ///< by its own translator: its faults are caught, not ours

    /// Asked of the build at hand.
    bool CanRead() const { return cadex::internal::CanRead(format); }
    bool CanWrite() const { return writer != nullptr && cadex::internal::CanWrite(format); }
};

inline constexpr EngineFormat EngineFormats[] = {
    {"step", cadex::internal::Format::STEP, ".step", MakeReader<cadex::STEP_Reader>,
     MakeWriter<cadex::STEP_Writer>},
    {"iges", cadex::internal::Format::IGES, ".igs", MakeReader<cadex::IGES_Reader>,
     MakeWriter<cadex::IGES_Writer>, true},
    {"ifc", cadex::internal::Format::IFC, ".ifc", MakeReader<cadex::IFC_Reader>,
     MakeWriter<cadex::IFC_Writer>},
    {"3dm", cadex::internal::Format::Rhino, ".3dm", MakeReader<cadex::Rhino_Reader>,
     MakeWriter<cadex::Rhino_Writer>},
    {"sat", cadex::internal::Format::ACIS, ".sat", MakeReader<cadex::ACIS_Reader>,
     MakeWriter<cadex::ACIS_Writer>},
    {"parasolid", cadex::internal::Format::Parasolid, ".x_t", MakeReader<cadex::Para_Reader>,
     MakeWriter<cadex::Para_Writer>},
    {"jt", cadex::internal::Format::JT, ".jt", MakeReader<cadex::JT_Reader>, MakeWriter<cadex::JT_Writer>},
    {"solidworks", cadex::internal::Format::SolidWorks, ".sldprt", MakeReader<cadex::SLD_Reader>, nullptr},
};

/// A part of cells x cells x 2 triangles with a colour; as an assembly, placed four times: moved, mirrored
/// and scaled, in an assembly of its own; with properties.
inline cadex::ModelData_Model MakeSeedModel(bool isAssembly, int cells = 2)
{
    using namespace cadex;
    ModelData_Model model("seed");
    ModelData_Part part = MakePart("Größe", {MakeGrid(cells, Normals::Smooth, true)});
    part.SetAppearance(ModelData_Appearance(ModelData_Color{0.5F, 0.25F, 0.125F, 1.0F}));
    if (!isAssembly) {
        model.AddRoot(part);
        return model;
    }
    ModelData_PropertyTable table{initialized()};
    table.Add("Mass", 2.5);
    table.Add("Author", Base_UTF16String("\xE9\x9B\xB6"));
    part.AddProperties(table);
    ModelData_Transformation placement;
    placement.SetTranslationPart(10, 20, 30);
    ModelData_Transformation mirror;
    mirror.SetRotationPart(-1, 0, 0, 0, 1, 0, 0, 0, 2);
    const auto inner = MakeAssembly(
        "inner", {ModelData_Instance(part, placement, "a"), ModelData_Instance(part, mirror, "b")});
    model.AddRoot(
        MakeAssembly("outer", {ModelData_Instance(inner, placement, "c"), ModelData_Instance(part, "d")}));
    return model;
}

} // namespace Zemtar::Test
