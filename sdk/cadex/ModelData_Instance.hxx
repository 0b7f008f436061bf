// Places a part or an assembly inside an assembly.
//
//     ModelData_Transformation shift;
//     shift.SetTranslationPart(100, 0, 0);
//     ModelData_Instance instance(part, shift, "second");
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_SceneGraphElement.hxx>
#include <cadex/ModelData_Transformation.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_Instance : public ModelData_SceneGraphElement
{
public:
    ModelData_Instance() = default; ///< null handle
    explicit ModelData_Instance(initialized);
    explicit ModelData_Instance(const Base_UTF16String& theName);
    explicit ModelData_Instance(const ModelData_SceneGraphElement& theReference,
                                const Base_UTF16String& theName = Base_UTF16String());
    ModelData_Instance(const ModelData_SceneGraphElement& theReference,
                       const ModelData_Transformation& theTransformation,
                       const Base_UTF16String& theName = Base_UTF16String());

    void SetReference(const ModelData_SceneGraphElement& theObject);
    /// Null handle when none.
    ModelData_SceneGraphElement Reference() const;

    void SetTransformation(const ModelData_Transformation& theTransformation);
    /// True only after a transformation was set.
    bool HasTransformation() const;
    /// On an instance without one, installs the identity and returns it: test HasTransformation() first.
    const ModelData_Transformation& Transformation() const;

    static IdType GetTypeId() { return internal::TypeInstance; }
};

} // namespace cadex
