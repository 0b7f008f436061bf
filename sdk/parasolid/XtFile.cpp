#include "sdk/parasolid/XtFile.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/brep/Conics.h"
#include "sdk/brep/DescribedPart.h"
#include "sdk/occt/Coordinates.h"
#include "sdk/parasolid/XtAttributes.h"
#include "sdk/parasolid/XtBodies.h"

namespace cadex::parasolid {

using occt::CoordinateOf;

namespace {

using internal::Progress;
using internal::Report;
using internal::Reports;

/// x' = (R x + T) * scale.
std::optional<XtMatrix> ReadPlacement(const Node& transform)
{
    if (transform.Type() != type::Transform) {
        return std::nullopt;
    }
    const double given = transform.Number(Field::Scale);
    const double scale = std::isfinite(given) && given != 0 ? given : 1;
    const gp_XYZ translation = transform.Vector(Field::TranslationVector);
    XtMatrix matrix;
    bool isSound = true;
    for (std::size_t row = 0; row < 3; ++row) {
        const int own = static_cast<int>(row);
        for (std::size_t column = 0; column < 3; ++column) {
            const int place = 3 * own + static_cast<int>(column);
            matrix[4 * row + column] = transform.Number(Field::RotationMatrix, place) * scale;
        }
        const double shift = CoordinateOf(translation, own) * Millimetres * scale;
        matrix[4 * row + 3] = std::isnan(shift) ? 0 : shift;
    }
    for (const double value : matrix) {
        isSound = isSound && std::abs(value) < brep::FarAway;
    }
    return isSound ? std::optional(matrix) : std::nullopt;
}

class ContentsReader
{
public:
    explicit ContentsReader(const Nodes& nodes) : myNodes(nodes), myGeometry(nodes), myAttributes(nodes) {}

    XtContents Read()
    {
        std::size_t total = 0;
        for (std::size_t i = 0; i < myNodes.Size(); ++i) {
            const int type = myNodes[i].Type();
            total += type == type::Body || type == type::Assembly ? 1U : 0U;
        }
        for (std::size_t i = 0, done = 0; i < myNodes.Size(); ++i) {
            const Node node = myNodes[i];
            if (node.Type() == type::Body || node.Type() == type::Assembly) {
                if (!Progress::GoesOn(done++, total)) {
                    break;
                }
                Add(node);
            }
        }
        AddInstances();
        DropRings();
        FindRoots();
        return std::move(myContents);
    }

private:
    void Add(const Node& node)
    {
        XtElement element;
        if (node.Type() == type::Body) {
            element = {myContents.bodies.size(), false};
            myContents.bodies.push_back(DescribeBody(myNodes, node, myGeometry, myAttributes));
        } else {
            element = {myContents.assemblies.size(), true};
            XtAssembly& assembly = myContents.assemblies.emplace_back();
            assembly.node = node.Index();
            assembly.name = myAttributes.NameOf(node.Index());
            assembly.appearance = myAttributes.LookOf(node.Index());
            assembly.properties = myAttributes.PropertiesOf(node.Index());
        }
        myElements.emplace(node.Index(), element);
        myOrder.push_back(element);
    }

    void AddInstances()
    {
        for (std::size_t i = 0; i < myNodes.Size(); ++i) {
            const Node node = myNodes[i];
            if (node.Type() != type::Instance) {
                continue;
            }
            const auto assembly = myElements.find(node.Pointer(Field::Assembly));
            const auto part = myElements.find(node.Pointer(Field::Part));
            const int transform = node.Pointer(Field::Transform);
            XtInstance instance;
            instance.placement = ReadPlacement(myNodes.At(transform));
            if (assembly == myElements.end() || !assembly->second.isAssembly || part == myElements.end() ||
                (transform != 0 && !instance.placement)) {
                ++myContents.lostInstances;
                continue;
            }
            instance.element = part->second;
            instance.name = myAttributes.NameOf(node.Index());
            instance.appearance = myAttributes.LookOf(node.Index());
            myContents.assemblies[assembly->second.number].instances.push_back(std::move(instance));
        }
    }

    /// Of an assembly with all that is in it.
    struct Unfolded
    {
        std::size_t levels = 0;
        std::size_t instances = 0;
    };

    /// Leaves out what is nested too deeply, since walkers of the model recurse, and what would unfold to
    /// more instances than any model has. The assemblies below must have their sizes.
    void DropTooMany(std::size_t assembly, std::vector<Unfolded>& sizes)
    {
        constexpr std::size_t Deepest = 100;
        constexpr std::size_t Most = 2'000'000;
        Unfolded& size = sizes[assembly];
        const auto isTooMuch = [&](const XtInstance& instance) {
            const Unfolded below = instance.element.isAssembly ? sizes[instance.element.number] : Unfolded();
            if (below.levels + 1 > Deepest || size.instances + below.instances + 1 > Most) {
                return true;
            }
            size = {std::max(size.levels, below.levels + 1), size.instances + below.instances + 1};
            return false;
        };
        std::vector<XtInstance>& instances = myContents.assemblies[assembly].instances;
        const auto end = std::remove_if(instances.begin(), instances.end(), isTooMuch);
        myContents.lostInstances += static_cast<std::size_t>(instances.end() - end);
        instances.erase(end, instances.end());
    }

    /// Leaves out instances that lead back to an assembly above.
    void DropRings()
    {
        enum class State : char
        {
            New,
            Open,
            Done
        };
        struct Step
        {
            std::size_t assembly;
            std::size_t next = 0;
        };
        std::vector<State> states(myContents.assemblies.size(), State::New);
        std::vector<Unfolded> sizes(states.size());
        for (std::size_t root = 0; root < states.size(); ++root) {
            std::vector<Step> path;
            if (states[root] == State::New) {
                path.push_back({root});
                states[root] = State::Open;
            }
            while (!path.empty()) {
                Step& step = path.back();
                std::vector<XtInstance>& instances = myContents.assemblies[step.assembly].instances;
                if (step.next == instances.size()) {
                    DropTooMany(step.assembly, sizes);
                    states[step.assembly] = State::Done;
                    path.pop_back();
                    continue;
                }
                const XtElement element = instances[step.next].element;
                if (element.isAssembly && states[element.number] == State::Open) {
                    std::swap(instances[step.next], instances.back());
                    instances.pop_back();
                    ++myContents.lostInstances;
                    continue;
                }
                ++step.next;
                if (element.isAssembly && states[element.number] == State::New) {
                    states[element.number] = State::Open;
                    path.push_back({element.number});
                }
            }
        }
    }

    void FindRoots()
    {
        std::vector<bool> isUsed[2] = {std::vector<bool>(myContents.bodies.size()),
                                       std::vector<bool>(myContents.assemblies.size())};
        for (const XtAssembly& assembly : myContents.assemblies) {
            for (const XtInstance& instance : assembly.instances) {
                isUsed[instance.element.isAssembly ? 1 : 0][instance.element.number] = true;
            }
        }
        for (const XtElement& element : myOrder) {
            if (!isUsed[element.isAssembly ? 1 : 0][element.number]) {
                myContents.roots.push_back(element);
            }
        }
    }

    const Nodes& myNodes;
    GeometryReader myGeometry;
    AttributeTable myAttributes;
    XtContents myContents;
    std::unordered_map<int, XtElement> myElements; ///< by node
    std::vector<XtElement> myOrder;
};

} // namespace

bool IsXt(std::string_view bytes)
{
    return bytes.starts_with(std::string_view("PS\0\0", 4)) ||
           bytes.starts_with("**ABCDEFGHIJKLMNOPQRSTUVWXYZ") ||
           (bytes.size() > 1 && bytes[0] == 'T' && bytes[1] >= '0' && bytes[1] <= '9');
}

XtContents ReadXt(std::string_view bytes)
{
    const Nodes nodes(bytes);
    XtContents contents = ContentsReader(nodes).Read();
    contents.modeller = nodes.Modeller();
    contents.schema = nodes.Schema();
    return contents;
}

ModelData_Part MakePart(XtBody&& body, const Base_UTF16String& name)
{
    const auto record = static_cast<std::uint64_t>(body.node);
    for (std::size_t i = 0; i < body.lostFaces; ++i) {
        Reports::Add(Report::Kind::LeftOut, "a face that could not be read", record);
    }
    for (std::size_t i = 0; i < body.lostCurves; ++i) {
        Reports::Add(Report::Kind::LeftOut, "a curve that could not be read", record);
    }
    return brep::MakePart(std::move(body.description), name, body.properties, record);
}

} // namespace cadex::parasolid
