#include "sdk/iges/IgesWriterEngine.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <streambuf>
#include <string>

#include <IGESBasic_Name.hxx>
#include <IGESData_GlobalSection.hxx>
#include <IGESData_IGESWriter.hxx>
#include <IGESData_Protocol.hxx>
#include <IGESSelect_WorkLibrary.hxx>
#include <Interface_FloatWriter.hxx>
#include <OSD_Process.hxx>
#include <Quantity_Date.hxx>
#include <TCollection_HAsciiString.hxx>

#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/internal/Progress.hxx>

#include "sdk/iges/IgesBodies.h"
#include "sdk/iges/IgesUnits.h"
#include "sdk/mesh/EngineTolerances.h"
#include "sdk/mesh/PlacedParts.h"
#include "sdk/model/TriangleSets.h"
#include "sdk/occt/CurvePolylines.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/text/AtomicFile.h"

namespace cadex::iges {

using mesh::Affine;
using mesh::Apply;
using mesh::Compose;
using mesh::FindBodies;
using mesh::ForEachPlacedPart;
using mesh::IsFinite;
using mesh::PlacedPart;
using occt::EngineUse;
using occt::JoinCurves;
using occt::Polyline;
using occt::RunGuarded;

namespace {

using AsciiString = Handle(TCollection_HAsciiString);

// NOTE: columns 74 to 80 hold a line's number (IGES 5.3, section 2.2.1), and an entity takes two lines of the
// directory.
constexpr int MostEntities = 9999999 / 2;
// The label field of the directory entry.
constexpr std::size_t LabelLength = 8;
constexpr int NameProperties = 1;
// In the file's unit; far below what a mesh of any use resolves.

AsciiString ToAscii(const Base_UTF16String& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.Length(); ++i) {
        const UTF16 unit = text.Data()[i];
        const bool isSecondHalf = unit >= 0xDC00 && unit < 0xE000;
        if (!isSecondHalf) {
            result += unit >= 0x20 && unit < 0x7F ? static_cast<char>(unit) : '_';
        }
    }
    return new TCollection_HAsciiString(result.c_str());
}

/// Fills an empty IGES model from placed parts.
class IgesModelBuilder
{
public:
    IgesModelBuilder(const Handle(IGESData_IGESModel) & model, double millimetres)
        : myModel(model), myBodies(model), myScale(1 / millimetres)
    {
    }

    void Add(const PlacedPart& placed)
    {
        const ModelData_PolyRepresentation shapes = placed.part.PolyRepresentation(ModelData_RM_Poly);
        if (!IsFinite(placed.placement) || (shapes.IsNull() && !placed.part.BRepRepresentation().IsNull())) {
            myIsWhole = false;
        }
        myIsWhole = myIsWhole && internal::Progress::GoesOn();
        if (!myIsWhole || shapes.IsNull()) {
            return;
        }
        const Affine placement =
            Compose({{myScale, 0, 0, 0, myScale, 0, 0, 0, myScale}, {}}, placed.placement);
        std::vector<IgesEntity> members;
        AddMeshes(shapes, placement, placed.appearance, members);
        AddPolylines(shapes, placement, placed.appearance, members);
        if (const IgesEntity root = myBodies.Group(members); !root.IsNull()) {
            SetName(root, placed.name);
        }
        myIsWhole = myModel->NbEntities() <= MostEntities;
    }

    bool IsWhole() const { return myIsWhole; }

private:
    /// All triangle sets of a part are one mesh, whatever the colours: a body of two colours is still closed.
    void AddMeshes(const ModelData_PolyRepresentation& shapes, const Affine& placement,
                   const ModelData_Appearance& inherited, std::vector<IgesEntity>& members)
    {
        internal::TriangleSetImpl joined;
        std::vector<IgesColor> colors;
        for (std::size_t i = 0; i < shapes.Get().Size(); ++i) {
            const ModelData_PolyVertexSet& shape = shapes.Get()[i];
            if (shape.TypeId() == ModelData_IndexedTriangleSet::GetTypeId()) {
                const auto& set = *static_cast<const internal::TriangleSetImpl*>(shape.Impl());
                mesh::Append(joined, set.points, set.indices);
                colors.resize(joined.indices.size() / 3, ColorOf(shape.Appearance(), inherited));
            }
        }
        const PlacedMesh mesh(joined, placement);
        for (const MeshBody& body : FindBodies(mesh)) {
            myBodies.AddBody(mesh, body, colors, members);
        }
    }

    void AddPolylines(const ModelData_PolyRepresentation& shapes, const Affine& placement,
                      const ModelData_Appearance& inherited, std::vector<IgesEntity>& members)
    {
        for (std::size_t i = 0; i < shapes.Get().Size(); ++i) {
            const ModelData_PolyVertexSet& shape = shapes.Get()[i];
            if (shape.TypeId() != ModelData_PolyLineSet::GetTypeId()) {
                continue;
            }
            const auto& set = *static_cast<const internal::PolyLineSetImpl*>(shape.Impl());
            const IgesColor color = ColorOf(shape.Appearance(), inherited);
            std::vector<Polyline> lines;
            for (std::size_t line = 0; line + 1 < set.starts.size(); ++line) {
                lines.push_back(DistinctPoints(set, set.starts[line], set.starts[line + 1], placement));
            }
            // Exporters give each segment as a polyline of its own.
            for (const Polyline& line : JoinCurves(std::move(lines), 0)) {
                members.push_back(myBodies.AddPolyline(line, color));
            }
        }
    }

    /// In the file; without those that are not finite and those that repeat the one before.
    static Polyline DistinctPoints(const internal::PolyLineSetImpl& set, std::size_t first, std::size_t last,
                                   const Affine& placement)
    {
        Polyline points;
        for (std::size_t i = first; i < last; ++i) {
            const ModelData_Point point = Apply(placement, set.points[i]);
            const bool isFinite =
                std::isfinite(point.X()) && std::isfinite(point.Y()) && std::isfinite(point.Z());
            if (isFinite && (points.empty() || !(points.back() == point))) {
                points.push_back(point);
            }
        }
        return points;
    }

    /// One colour entity for each colour; null when neither appearance has one.
    IgesColor ColorOf(const ModelData_Appearance& own, const ModelData_Appearance& inherited)
    {
        ModelData_Color color;
        if (!own.ToColor(color) && !inherited.ToColor(color)) {
            return {};
        }
        std::array<float, 3> rgb;
        for (std::size_t i = 0; i < 3; ++i) {
            rgb[i] = std::isfinite(color[i]) ? std::clamp(color[i], 0.F, 1.F) : 0.F;
        }
        IgesColor& entity = myColors[rgb];
        if (entity.IsNull()) {
            // IGES counts colours in percent.
            entity = new IGESGraph_Color;
            entity->Init(rgb[0] * 100.0, rgb[1] * 100.0, rgb[2] * 100.0, nullptr);
            myModel->AddEntity(entity);
        }
        return entity;
    }

    void SetName(const IgesEntity& entity, const Base_UTF16String& text)
    {
        const AsciiString name = ToAscii(text);
        if (name->IsEmpty()) {
            return;
        }
        entity->SetLabel(
            new TCollection_HAsciiString(std::string(name->ToCString()).substr(0, LabelLength).c_str()));
        Handle(IGESBasic_Name) property = new IGESBasic_Name;
        property->Init(NameProperties, name);
        myModel->AddEntity(property);
        entity->AddProperty(property);
    }

    Handle(IGESData_IGESModel) myModel;
    IgesBodies myBodies;
    double myScale;
    std::map<std::array<float, 3>, IgesColor> myColors;
    bool myIsWhole = true;
};

AsciiString DateNow()
{
    Quantity_Date now = OSD_Process().SystemDate();
    return IGESData_GlobalSection::NewDateString(now.Year(), now.Month(), now.Day(), now.Hour(), now.Minute(),
                                                 now.Second());
}

void FillHeader(IGESData_IGESModel& model, const ModelData_Model& source,
                const Base_WriterParameters& parameters)
{
    const IgesUnit unit = IgesUnitOf(parameters.LengthUnit());
    IGESData_GlobalSection header;
    header.SetSeparator(',');
    header.SetEndMark(';');
    header.SetSendName(ToAscii(source.Name()));
    header.SetReceiveName(ToAscii(source.Name()));
    header.SetSystemId(ToAscii(parameters.OriginatingSystem()));
    header.SetInterfaceVersion(new TCollection_HAsciiString("cadex"));
    header.SetIntegerBits(32);
    header.SetMaxPower10Single(38);
    header.SetMaxDigitsSingle(6);
    header.SetMaxPower10Double(308);
    header.SetMaxDigitsDouble(15);
    header.SetScale(1);
    header.SetUnitFlag(unit.flag);
    header.SetUnitName(new TCollection_HAsciiString(unit.name));
    header.SetLineWeightGrad(1);
    header.SetMaxLineWeight(0.01);
    header.SetResolution(tolerance::Coincident);
    header.SetMaxCoord();
    header.SetAuthorName(ToAscii(parameters.Author()));
    header.SetCompanyName(ToAscii(parameters.Organization()));
    header.SetIGESVersion(11); // 5.3
    header.SetDraftingStandard(0);
    model.SetGlobalSection(header);
}

/// Hands what a stream is given to a file, in large pieces.
class FileBuffer : public std::streambuf
{
public:
    explicit FileBuffer(text::AtomicFile& file) : myFile(file) { setp(myBytes, myBytes + sizeof(myBytes)); }

protected:
    int_type overflow(int_type c) override
    {
        if (sync() != 0) {
            return traits_type::eof();
        }
        return traits_type::eq_int_type(c, traits_type::eof()) ? 0 : sputc(traits_type::to_char_type(c));
    }
    int sync() override
    {
        const std::string_view bytes(pbase(), static_cast<std::size_t>(pptr() - pbase()));
        setp(myBytes, myBytes + sizeof(myBytes));
        return bytes.empty() || myFile.Write(bytes) ? 0 : -1;
    }

private:
    text::AtomicFile& myFile;
    char myBytes[1 << 16];
};

bool Print(const Handle(IGESData_IGESModel) & model, std::ostream& stream)
{
    IGESData_IGESWriter writer(model);
    // The kernel's ten digits would move points that lie far from the origin.
    writer.FloatWriter().SetFormat("%.12E");
    writer.FloatWriter().SetFormatForRange("%.12f", 0.1, 1000);
    writer.FloatWriter().SetZeroSuppress(true);
    writer.SendModel(IGESSelect_WorkLibrary::DefineProtocol());
    return writer.Print(stream) && stream.flush();
}

} // namespace

bool IgesWriterEngine::Transfer(const ModelData_Model& model, const Base_WriterParameters& parameters)
{
    return RunGuarded(EngineUse::Iges, [&] {
        myModel = new IGESData_IGESModel;
        FillHeader(*myModel, model, parameters);
        IgesModelBuilder builder(myModel, IgesUnitOf(parameters.LengthUnit()).millimetres);
        ForEachPlacedPart(model, [&](const PlacedPart& placed) { builder.Add(placed); });
        return builder.IsWhole();
    });
}

bool IgesWriterEngine::WriteFile(const std::filesystem::path& file)
{
    return RunGuarded(EngineUse::Iges, [&] {
        const std::u8string name = file.filename().u8string();
        IGESData_GlobalSection header = myModel->GlobalSection();
        header.SetFileName(ToAscii(reinterpret_cast<const char*>(name.c_str())));
        header.SetDate(DateNow());
        header.SetLastChangeDate(DateNow());
        myModel->SetGlobalSection(header);

        text::AtomicFile target(file);
        FileBuffer buffer(target);
        std::ostream stream(&buffer);
        return target.IsOpen() && Print(myModel, stream) && target.Commit();
    });
}

} // namespace cadex::iges
