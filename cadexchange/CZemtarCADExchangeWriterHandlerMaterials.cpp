// Host materials to SDK appearances, metadata to property tables.

#include "cadexchange/CZemtarCADExchangeWriterHandler.h"

#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarMaterial.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarSceneNode.h"

#include <cadex/ModelData_PropertyTable.hxx>

#include <map>
#include <utility>

namespace Zemtar {

namespace {

/// Alpha is passed as it is.
cadex::ModelData_Color ColorOf(const CZemtarColor& color)
{
    return {static_cast<float>(color.R()), static_cast<float>(color.G()), static_cast<float>(color.B()),
            static_cast<float>(color.A())};
}

} // namespace

cadex::ModelData_Appearance* CZemtarCADExchangeWriterHandler::CreateMaterial(CZemtarMaterial* material)
{
    if (!material) {
        return nullptr;
    }
    if (const auto known = m_appearances.find(material); known != m_appearances.end()) {
        return &known->second;
    }
    const auto* general = dynamic_cast<const CZemtarCommonBasicMaterial*>(material->BasicMaterial());
    if (!general) {
        return nullptr;
    }
    constexpr float Shininess = 0.0f;
    const cadex::ModelData_Material look(ColorOf(general->AmbientColor()), ColorOf(general->DiffuseColor()),
                                         ColorOf(general->SpecularColor()), ColorOf(general->EmissiveColor()),
                                         Shininess);
    return &m_appearances.emplace(material, cadex::ModelData_Appearance(look)).first->second;
}

void CZemtarCADExchangeWriterHandler::ProcessMetaData(CZemtarSceneNode* node,
                                                      cadex::ModelData_SceneGraphElement* element)
{
    cadex::ModelData_PropertyTable table{cadex::initialized()};
    std::map<CZemtarString, CZemtarMetaData::NamedValues> categories;
    std::as_const(*node).MetaData()->ListNamedValues(categories);
    for (const auto& [category, pairs] : categories) {
        for (const auto& [name, value] : pairs) {
            table.Add(cadex::Base_UTF16String(name.toStdWString()),
                      cadex::Base_UTF16String(value.toStdWString()));
        }
    }
    element->AddProperties(table);
}

} // namespace Zemtar
