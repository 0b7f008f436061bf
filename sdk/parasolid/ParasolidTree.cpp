#include "sdk/parasolid/ParasolidTree.h"

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/brep/DescribedPart.h"

namespace cadex::parasolid {

namespace {

using internal::Report;
using internal::Reports;

/// Makes each part and assembly once.
class TreeBuilder
{
public:
    TreeBuilder(XtContents& contents, const Base_UTF16String& name) : myContents(contents), myFileName(name)
    {
    }

    ModelData_Assembly Build()
    {
        for (std::size_t i = 0; i < myContents.bodies.size(); ++i) {
            XtBody& body = myContents.bodies[i];
            Base_UTF16String name = body.name;
            if (name.IsEmpty()) {
                name = Base_UTF16String(("Body " + std::to_string(i + 1)).c_str());
            }
            myParts.push_back(MakePart(std::move(body), name));
        }
        // names first: an assembly may come before those that it uses
        for (std::size_t i = 0; i < myContents.assemblies.size(); ++i) {
            myAssemblies.emplace_back(NameOf(i));
        }
        for (std::size_t i = 0; i < myContents.assemblies.size(); ++i) {
            Fill(myAssemblies[i], myContents.assemblies[i]);
        }
        const bool hasOne = myContents.roots.size() == 1 && myContents.roots.front().isAssembly;
        ModelData_Assembly root =
            hasOne ? myAssemblies[myContents.roots.front().number] : ModelData_Assembly(myFileName);
        for (std::size_t i = 0; i < myContents.roots.size() && !hasOne; ++i) {
            Place({myContents.roots[i]}, root);
        }
        return root;
    }

private:
    Base_UTF16String NameOf(std::size_t assembly) const
    {
        const Base_UTF16String& name = myContents.assemblies[assembly].name;
        const bool isOnly = myContents.assemblies.size() == 1;
        return !name.IsEmpty() ? name
               : isOnly        ? myFileName
                               : Base_UTF16String(("Assembly " + std::to_string(assembly + 1)).c_str());
    }

    void Fill(ModelData_Assembly& target, const XtAssembly& source)
    {
        target.SetAppearance(source.appearance);
        brep::AddTexts(target, source.properties);
        for (const XtInstance& instance : source.instances) {
            Place(instance, target);
        }
    }

    void Place(const XtInstance& source, ModelData_Assembly& target)
    {
        const std::size_t number = source.element.number;
        ModelData_SceneGraphElement element;
        if (source.element.isAssembly) {
            element = myAssemblies[number];
        } else {
            element = myParts[number];
        }
        if (element.IsNull()) {
            return; // an empty body: reported
        }
        const Base_UTF16String name = source.name.IsEmpty() ? element.Name() : source.name;
        ModelData_Instance instance =
            source.placement ? ModelData_Instance(element, brep::TransformationOf(*source.placement), name)
                             : ModelData_Instance(element, name);
        instance.SetAppearance(source.appearance);
        target.AddInstance(instance);
    }

    XtContents& myContents;
    const Base_UTF16String& myFileName;
    std::vector<ModelData_Part> myParts; ///< by body; null: empty
    std::vector<ModelData_Assembly> myAssemblies;
};

} // namespace

bool ParasolidFile::Load(std::string_view bytes, const Base_UTF16String& name)
{
    myContents.reset();
    myName = name;
    try {
        myContents = ReadXt(bytes);
    } catch (const Unreadable& reason) {
        Reports::Add(Report::Kind::Refused, reason.what());
        return false;
    }
    return true;
}

void ParasolidFile::Build(ModelData_Model& model)
{
    if (!myContents) {
        return;
    }
    for (std::size_t i = 0; i < myContents->lostInstances; ++i) {
        Reports::Add(Report::Kind::LeftOut,
                     "an instance without a part or a placement that makes sense, or of too many");
    }
    ModelData_Assembly root = TreeBuilder(*myContents, myName).Build();
    brep::AddTexts(root, {{"Schema", Base_UTF16String(myContents->schema.c_str())}});
    model.AddRoot(root);
    myContents.reset();
}

} // namespace cadex::parasolid
