#include "sdk/mesh/ExportPlan.h"

#include <cmath>
#include <unordered_map>
#include <unordered_set>

#include <cadex/internal/Reports.hxx>

#include "sdk/model/Elements.h"

namespace cadex::mesh {

using internal::ImplOf;

namespace {

bool Refuse(const char* reason)
{
    internal::Reports::Add(internal::Report::Kind::Refused, reason);
    return false;
}

bool IsWritable(const ModelData_SceneGraphElement& element)
{
    if (element.IsOfType<ModelData_Assembly>()) {
        return true;
    }
    if (!element.IsOfType<ModelData_Part>()) {
        return false;
    }
    const auto& part = static_cast<const ModelData_Part&>(element);
    return part.BRepRepresentation().IsNull() || !part.PolyRepresentation(ModelData_RM_Poly).IsNull();
}

/// Depth-first over the definitions, with a stack of its own.
class Builder
{
public:
    explicit Builder(ExportPlan& plan) : myPlan(plan) {}

    /// Plans an element that stands at the top.
    bool AddTop(const ModelData_SceneGraphElement& element)
    {
        std::size_t definition = 0;
        return Place(element, Identity3, definition) && Finish();
    }

    /// Plans instances that stand at the top, inside an assembly made for them.
    bool AddTopInstances(const std::vector<ModelData_Instance>& instances)
    {
        myPlan.definitions.emplace_back();
        myOpen.push_back({myPlan.definitions.size() - 1, &instances, 0});
        return Finish();
    }

private:
    struct Frame
    {
        std::size_t definition;
        const std::vector<ModelData_Instance>* instances;
        std::size_t next;
    };

    bool Finish()
    {
        while (!myOpen.empty()) {
            Frame& frame = myOpen.back();
            if (frame.next < frame.instances->size()) {
                const std::size_t index = frame.next++;
                if (!AddInstance(frame.definition, (*frame.instances)[index])) {
                    return false;
                }
                continue;
            }
            myPath.erase(myPlan.definitions[frame.definition].element.Impl());
            myPlan.order.push_back(frame.definition);
            myOpen.pop_back();
        }
        return true;
    }

    bool AddInstance(std::size_t parent, const ModelData_Instance& instance)
    {
        const ModelData_SceneGraphElement target = instance.Reference();
        if (target.IsNull()) {
            return true;
        }
        Affine affine;
        if (instance.HasTransformation()) {
            affine = AffineOf(instance.Transformation());
        }
        const Matrix3 outer = myPlan.definitions[parent].residual;
        ExportPlan::Occurrence occurrence;
        occurrence.instance = instance;
        occurrence.translation = Multiply(outer, affine.translation);
        for (const double value : occurrence.translation) {
            if (!std::isfinite(value)) {
                return Refuse("the placement of an instance is not finite");
            }
        }
        Split split;
        if (!SplitMatrix(Multiply(outer, affine.linear), split)) {
            return Refuse("the placement of an instance is not finite");
        }
        if (!Place(target, split.residual, occurrence.definition)) {
            return false;
        }
        occurrence.rotation = split.rotation;
        myPlan.definitions[parent].occurrences.push_back(std::move(occurrence));
        return true;
    }

    /// Finds or starts the definition of an element under a residual.
    bool Place(const ModelData_SceneGraphElement& element, const Matrix3& residual, std::size_t& definition)
    {
        if (!IsWritable(element)) {
            return Refuse("an element is neither an assembly nor a part with a mesh");
        }
        if (myPath.count(element.Impl()) != 0) {
            return Refuse("an assembly contains itself");
        }
        std::vector<std::size_t>& variants = myVariants[element.Impl()];
        for (const std::size_t variant : variants) {
            if (SameResidual(myPlan.definitions[variant].residual, residual)) {
                definition = variant;
                return true;
            }
        }
        definition = myPlan.definitions.size();
        variants.push_back(definition);
        myPlan.definitions.push_back({element, residual, {}});
        if (element.IsOfType<ModelData_Assembly>()) {
            myPath.insert(element.Impl());
            const auto& assembly = static_cast<const ModelData_Assembly&>(element);
            myOpen.push_back({definition, &ImplOf(assembly).instances, 0});
        } else {
            myPlan.order.push_back(definition);
        }
        return true;
    }

    ExportPlan& myPlan;
    std::vector<Frame> myOpen;
    std::unordered_set<const void*> myPath; // assemblies that are open
    std::unordered_map<const void*, std::vector<std::size_t>> myVariants;
};

} // namespace

bool ExportPlan::Build(const ModelData_Model& model)
{
    *this = ExportPlan();
    modelName = model.Name();
    Builder builder(*this);
    std::vector<ModelData_Instance> instances;
    for (const ModelData_SceneGraphElement& root : RootsOf(model)) {
        if (root.IsOfType<ModelData_Instance>()) {
            instances.push_back(static_cast<const ModelData_Instance&>(root));
        } else if (!builder.AddTop(root)) {
            return false;
        }
    }
    return instances.empty() || builder.AddTopInstances(instances);
}

} // namespace cadex::mesh
