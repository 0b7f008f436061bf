#include "sdk/mesh/DistinctParts.h"

#include <unordered_set>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>

namespace cadex::mesh {

namespace {

class Collector : public ModelData_Model::VoidElementVisitor
{
public:
    std::vector<ModelData_Part> parts;

    using VoidElementVisitor::VisitEnter;

    void operator()(const ModelData_Part& part) override
    {
        if (IsNew(part)) {
            parts.push_back(part);
        }
    }
    bool VisitEnter(const ModelData_Assembly& assembly) override { return IsNew(assembly); }

private:
    bool IsNew(const ModelData_BaseObject& element) { return mySeen.insert(element.Impl()).second; }

    std::unordered_set<const void*> mySeen;
};

template <typename Visited>
std::vector<ModelData_Part> Collect(const Visited& visited)
{
    Collector collector;
    visited.Accept(collector);
    return std::move(collector.parts);
}

} // namespace

std::vector<ModelData_Part> DistinctParts(const ModelData_Model& model)
{
    return Collect(model);
}

std::vector<ModelData_Part> DistinctParts(const ModelData_SceneGraphElement& element)
{
    return Collect(element);
}

} // namespace cadex::mesh
