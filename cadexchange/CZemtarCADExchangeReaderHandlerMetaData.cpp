#include "cadexchange/CZemtarCADExchangeReaderHandler.h"

#include "host/CZemtarMetaData.h"
#include "host/CZemtarSceneNode.h"

namespace Zemtar {

void CZemtarCADExchangeReaderHandler::ProcessMetaData(CZemtarSceneNode* node,
                                                      cadex::ModelData_SceneGraphElement& element)
{
    m_metaDataVisitor.Clear();
    const cadex::ModelData_PropertyTable properties = element.Properties();
    if (properties.IsNull()) {
        return;
    }
    properties.Accept(m_metaDataVisitor);
    if (m_metaDataVisitor.Values().empty()) {
        return;
    }
    const CZemtarString category = "Properties";
    const CZemtarString noUnit;
    CZemtarMetaData* metaData = node->MetaData();
    metaData->InsertCatagory(category);
    for (const auto& [key, value] : m_metaDataVisitor.Values()) {
        metaData->SetValue(value, key, category, noUnit);
    }
}

} // namespace Zemtar
