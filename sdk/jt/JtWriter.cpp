#include "sdk/jt/JtWriter.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <limits>
#include <unordered_set>

#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/jt/JtContainer.h"
#include "sdk/text/LengthUnits.h"
#include "sdk/text/Mixing.h"

namespace cadex::jt {

namespace {

using internal::Report;
using internal::Reports;
using text::Mixed;

constexpr std::size_t HeadSize = 80 + 1 + 4 + 4 + 16;
constexpr std::size_t EntrySize = 28;
constexpr std::size_t SegmentHeadSize = 24;
/// Offsets have 32 bits, which some readers take with a sign.
constexpr std::size_t LargestFile = std::numeric_limits<std::int32_t>::max();
/// Packed shapes that are kept between measuring and writing.
constexpr std::size_t MostKept = 64 << 20;
constexpr std::size_t LongestFileName = 100;

bool Refuse(const char* reason)
{
    Reports::Add(Report::Kind::Refused, reason);
    return false;
}

const ModelData_PolyShapeList& SetsOf(const ModelData_SceneGraphElement& part)
{
    return static_cast<const ModelData_Part&>(part).PolyRepresentation(ModelData_RM_Poly).Get();
}

bool IsPart(const mesh::ExportPlan::Definition& definition)
{
    return definition.element.IsOfType<ModelData_Part>();
}

/// Names that every file system takes.
std::string FileNameOf(const Base_UTF16String& name, const char* ifEmpty)
{
    std::string safe;
    for (const char c : name.ToUTF8()) {
        const bool isBad = static_cast<unsigned char>(c) < 32 || std::strchr("/\\:*?\"<>|\x7f", c) != nullptr;
        safe += isBad ? '_' : c;
    }
    if (safe.size() > LongestFileName) {
        std::size_t end = LongestFileName;
        while (end > 0 && (static_cast<unsigned char>(safe[end]) & 0xC0) == 0x80) {
            --end; // whole characters
        }
        safe.resize(end);
    }
    while (!safe.empty() && (safe.back() == '.' || safe.back() == ' ')) {
        safe.pop_back();
    }
    return safe.empty() || safe.front() == '.' ? ifEmpty + safe : safe;
}

/// Corners of a box, placed.
std::array<float, 6> Placed(const std::array<float, 6>& box, const mesh::ExportPlan::Occurrence& occurrence,
                            double unitsPerMillimetre)
{
    Extent placed;
    for (std::size_t corner = 0; corner < 8; ++corner) {
        const mesh::Vector3 at{box[(corner & 1) != 0 ? 3 : 0], box[(corner & 2) != 0 ? 4 : 1],
                               box[(corner & 4) != 0 ? 5 : 2]};
        const mesh::Vector3 turned = mesh::Multiply(occurrence.rotation, at);
        std::array<float, 6> point{};
        for (std::size_t i = 0; i < 3; ++i) {
            point[i] = point[3 + i] =
                static_cast<float>(turned[i] + occurrence.translation[i] * unitsPerMillimetre);
        }
        placed.Include(point);
    }
    return placed.box;
}

void ReportTextures(const ModelData_Appearance& look)
{
    if (!look.IsNull() && !look.TextureSet().IsNull()) {
        Reports::Add(Report::Kind::LeftOut, "a texture");
    }
}

} // namespace

JtWriter::JtWriter(const mesh::ExportPlan& plan, Base_LengthUnit unit, Split split)
    : myPlan(plan),
      myUnit(unit),
      mySplit(split),
      myUnitsPerMillimetre(1 / text::LengthUnitOf(unit).millimetres),
      mySeed(Mixed(plan.definitions.size() + 1, plan.modelName)),
      myShapes(plan.definitions.size()),
      myExtents(plan.definitions.size()),
      myFileNames(plan.definitions.size())
{
    for (const mesh::ExportPlan::Definition& definition : plan.definitions) {
        mySeed = definition.element.IsNull() ? mySeed : Mixed(mySeed, definition.element.Name());
    }
}

/// The same for the same place in the same model.
Guid JtWriter::NewGuid()
{
    mySeed = Mixed(mySeed + 0x9E3779B97F4A7C15U);
    const std::uint64_t bits[2] = {Mixed(mySeed), Mixed(~mySeed)};
    Guid id;
    std::memcpy(id.bytes.data(), bits, sizeof(bits));
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0F) | 0x40); // as if chosen at random
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
    return id;
}

mesh::Matrix3 JtWriter::LinearOf(std::size_t definition) const
{
    mesh::Matrix3 linear = myPlan.definitions[definition].residual;
    for (double& value : linear) {
        value *= myUnitsPerMillimetre;
    }
    return linear;
}

/// Makes every shape once, to know sizes and boxes before the first byte is written.
void JtWriter::Measure()
{
    if (myIsMeasured) {
        return;
    }
    myIsMeasured = true;
    std::size_t kept = 0;
    for (const std::size_t index : myPlan.order) {
        const mesh::ExportPlan::Definition& definition = myPlan.definitions[index];
        Extent& extent = myExtents[index];
        if (!IsPart(definition)) {
            for (const mesh::ExportPlan::Occurrence& occurrence : definition.occurrences) {
                const Extent& inner = myExtents[occurrence.definition];
                if (!inner.isEmpty) {
                    extent.Include(Placed(inner.box, occurrence, myUnitsPerMillimetre));
                }
                extent.area += inner.area;
                extent.vertices += inner.vertices;
                extent.primitives += inner.primitives;
            }
            continue;
        }
        ReportTextures(definition.element.Appearance());
        const ModelData_PolyShapeList& sets = SetsOf(definition.element);
        for (std::size_t i = 0; i < sets.Size(); ++i) {
            WrittenShape shape;
            shape.element = WriteShape(sets[i], LinearOf(index), shape.facts);
            if (shape.facts.IsEmpty()) {
                continue;
            }
            ReportTextures(sets[i].Appearance());
            shape.segment = NewGuid();
            shape.look = sets[i].Appearance();
            shape.set = i;
            shape.size = shape.element.size();
            kept += shape.size;
            if (kept > MostKept) {
                shape.element = std::string();
            }
            extent.Include(shape.facts.box);
            extent.area += shape.facts.area;
            extent.vertices += shape.facts.vertices;
            extent.primitives += shape.facts.primitives;
            myShapes[index].push_back(std::move(shape));
        }
    }
}

std::string JtWriter::ElementOf(std::size_t definition, const WrittenShape& shape) const
{
    if (!shape.element.empty()) {
        return shape.element;
    }
    ShapeFacts facts;
    return WriteShape(SetsOf(myPlan.definitions[definition].element)[shape.set], LinearOf(definition), facts);
}

/// Definitions that no other one places.
std::vector<std::size_t> JtWriter::Roots() const
{
    std::vector<bool> isPlaced(myPlan.definitions.size(), false);
    for (const mesh::ExportPlan::Definition& definition : myPlan.definitions) {
        for (const mesh::ExportPlan::Occurrence& occurrence : definition.occurrences) {
            isPlaced[occurrence.definition] = true;
        }
    }
    std::vector<std::size_t> roots;
    for (std::size_t i = 0; i < isPlaced.size(); ++i) {
        if (!isPlaced[i]) {
            roots.push_back(i);
        }
    }
    return roots;
}

/// Gives parts, and all but the top when it is shattered, the names of their files, no two alike in any case.
void JtWriter::NameFiles()
{
    std::unordered_set<std::string> used;
    const std::vector<std::size_t> roots = Roots();
    for (const std::size_t index : myPlan.order) {
        const mesh::ExportPlan::Definition& definition = myPlan.definitions[index];
        const bool isTop = std::find(roots.begin(), roots.end(), index) != roots.end();
        if (!IsPart(definition) && (mySplit != JT_WriterParameters::Shattered || isTop)) {
            continue;
        }
        const std::string base =
            FileNameOf(definition.element.Name(), IsPart(definition) ? "part" : "assembly");
        for (std::size_t number = 1;; ++number) {
            const std::string name = number == 1 ? base : base + " (" + std::to_string(number) + ")";
            std::string key = name;
            std::transform(key.begin(), key.end(), key.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
            if (used.insert(key).second) {
                myFileNames[index] = Base_UTF16String((name + ".jt").c_str());
                break;
            }
        }
    }
}

bool JtWriter::WriteFiles(const std::filesystem::path& file)
{
    Measure();
    const auto utf8 = [](const std::filesystem::path& path) {
        const std::u8string text = path.u8string();
        return std::string(text.begin(), text.end());
    };
    std::vector<std::filesystem::path> made;
    SceneWriter::OtherFile otherFile = [](std::size_t) { return Base_UTF16String(); };
    text::AtomicFile target(file);
    bool isWritten = target.IsOpen();
    if (isWritten && mySplit != JT_WriterParameters::Monolithic) {
        NameFiles();
        isWritten = WriteOthers(file.parent_path() / file.stem(), made);
        const Base_UTF16String folder((utf8(file.stem()) + "/").c_str());
        otherFile = [this, folder](std::size_t definition) {
            const Base_UTF16String& name = myFileNames[definition];
            return name.IsEmpty() ? name : folder + name;
        };
    }
    isWritten = isWritten &&
                WriteOne(target, Roots(), Base_UTF16String(utf8(file.filename()).c_str()), otherFile) &&
                target.Commit();
    if (!isWritten) {
        std::error_code ignored;
        std::reverse(made.begin(), made.end()); // the folder last
        for (const std::filesystem::path& path : made) {
            std::filesystem::remove(path, ignored);
        }
    }
    return isWritten;
}

/// `made` gets what was not there before.
bool JtWriter::WriteOthers(const std::filesystem::path& folder, std::vector<std::filesystem::path>& made)
{
    std::error_code error;
    if (std::filesystem::create_directory(folder, error)) {
        made.push_back(folder);
    }
    if (!std::filesystem::is_directory(folder, error)) {
        return Refuse("the folder for the parts' files cannot be made");
    }
    for (const std::size_t index : myPlan.order) {
        const Base_UTF16String& name = myFileNames[index];
        if (name.IsEmpty()) {
            continue;
        }
        const std::string utf8 = name.ToUTF8();
        const std::filesystem::path path = folder / std::u8string(utf8.begin(), utf8.end());
        const bool isNew = !std::filesystem::exists(path, error);
        const SceneWriter::OtherFile otherFile = [&](std::size_t definition) {
            return definition == index ? Base_UTF16String() : myFileNames[definition];
        };
        text::AtomicFile target(path);
        if (!target.IsOpen() || !WriteOne(target, {index}, name, otherFile) || !target.Commit()) {
            return false;
        }
        if (isNew) {
            made.push_back(path);
        }
    }
    return true;
}

bool JtWriter::Write(text::ByteSink& sink)
{
    Measure();
    return WriteOne(sink, Roots(), {}, [](std::size_t) { return Base_UTF16String(); });
}

std::vector<std::size_t> JtWriter::PartsOf(const std::vector<std::size_t>& roots,
                                           const SceneWriter::OtherFile& otherFile) const
{
    std::vector<bool> isReached(myPlan.definitions.size(), false);
    std::vector<std::size_t> open;
    const auto reach = [&](std::size_t definition) {
        if (!isReached[definition] && otherFile(definition).IsEmpty()) {
            isReached[definition] = true;
            open.push_back(definition);
        }
    };
    std::for_each(roots.begin(), roots.end(), reach);
    while (!open.empty()) {
        const std::size_t definition = open.back();
        open.pop_back();
        for (const mesh::ExportPlan::Occurrence& occurrence : myPlan.definitions[definition].occurrences) {
            reach(occurrence.definition);
        }
    }
    std::vector<std::size_t> parts;
    std::copy_if(myPlan.order.begin(), myPlan.order.end(), std::back_inserter(parts),
                 [&](std::size_t index) { return isReached[index] && IsPart(myPlan.definitions[index]); });
    return parts;
}

bool JtWriter::WriteOne(text::ByteSink& sink, const std::vector<std::size_t>& roots,
                        const Base_UTF16String& fileName, const SceneWriter::OtherFile& otherFile)
{
    const std::vector<std::size_t> parts = PartsOf(roots, otherFile);
    SceneWriter scene(myPlan, myShapes, myExtents, myUnit);
    const std::string graph = Deflated(scene.Write(roots, fileName, otherFile));
    constexpr std::size_t PackedHead = 9; // that it is packed, the size, the method
    std::vector<Piece> pieces{{NewGuid(), segment::SceneGraph, SegmentHeadSize + PackedHead + graph.size()}};
    for (const std::size_t part : parts) {
        for (const WrittenShape& shape : myShapes[part]) {
            pieces.push_back({shape.segment, segment::FirstLevel, SegmentHeadSize + shape.size});
        }
    }
    if (!WriteHead(sink, pieces)) {
        return false;
    }
    const auto begin = [](const Piece& piece) {
        Out head;
        head.Id(piece.id);
        head.I32(piece.type);
        head.Count(piece.size);
        return head;
    };
    Out first = begin(pieces.front());
    first.I32(2);
    first.Count(graph.size() + 1);
    first.U8(2);
    first.Raw(graph);
    bool isWritten = sink.Write(first.Bytes());
    std::size_t next = 1;
    for (std::size_t i = 0; i < parts.size() && isWritten; ++i) {
        if (!internal::Progress::GoesOn(i, parts.size())) {
            return false;
        }
        for (const WrittenShape& shape : myShapes[parts[i]]) {
            Out data = begin(pieces[next++]);
            data.Raw(ElementOf(parts[i], shape));
            isWritten = isWritten && sink.Write(data.Bytes());
        }
    }
    return isWritten;
}

bool JtWriter::WriteHead(text::ByteSink& sink, const std::vector<Piece>& pieces) const
{
    std::string version = "Version 8.1 JT  cadex open engine";
    version.resize(76, ' ');
    Out head;
    head.Raw(version + "\n\r\n ");
    head.U8(0); // little-endian
    head.I32(0);
    head.Count(HeadSize); // of the table, which follows
    head.Id(pieces.front().id);
    head.Count(pieces.size());
    std::size_t offset = HeadSize + 4 + EntrySize * pieces.size();
    for (const Piece& piece : pieces) {
        head.Id(piece.id);
        head.Count(offset);
        head.Count(piece.size);
        head.U32(static_cast<std::uint32_t>(piece.type) << 24);
        offset += piece.size;
    }
    if (offset > LargestFile) {
        return Refuse("the file would be larger than its format allows");
    }
    return sink.Write(head.Bytes());
}

} // namespace cadex::jt
