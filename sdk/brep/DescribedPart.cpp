#include "sdk/brep/DescribedPart.h"

#include <cadex/internal/Reports.hxx>

#include "sdk/brep/DescribedBRep.h"

namespace cadex::brep {

void AddTexts(ModelData_SceneGraphElement& element, const Texts& texts)
{
    ModelData_PropertyTable table{initialized()};
    for (const auto& [key, value] : texts) {
        table.Add(key, value);
    }
    if (!table.IsEmpty()) {
        element.AddProperties(table);
    }
}

ModelData_Part MakePart(Description&& body, const Base_UTF16String& name, const Texts& texts,
                        std::uint64_t record)
{
    if (body.IsEmpty()) {
        internal::Reports::Add(internal::Report::Kind::LeftOut, "a body without faces or curves", record);
        return {};
    }
    ModelData_Part part(name);
    part.SetAppearance(body.appearance);
    AddTexts(part, texts);
    auto* exact = new DescribedBRep(std::move(body));
    part.AddRepresentation(internal::MakeHandle<ModelData_BRepRepresentation>(exact));
    return part;
}

ModelData_Transformation TransformationOf(const std::array<double, 12>& rows)
{
    ModelData_Transformation result;
    result.SetRotationPart(rows[0], rows[1], rows[2], rows[4], rows[5], rows[6], rows[8], rows[9], rows[10]);
    result.SetTranslationPart(rows[3], rows[7], rows[11]);
    return result;
}

} // namespace cadex::brep
