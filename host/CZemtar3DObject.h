#pragma once

#include "host/CZemtarGeometry.h"
#include "host/CZemtarSceneNode.h"
#include "host/CZemtarTextureCoordinatesTable.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

class CZemtarMaterial;

/// A mesh node: geometry, which other nodes may share, texture coordinates and a material.
///
///     CZemtar3DObject* object = CZemtar3DObject::Create(document);
///     object->SetGeometry(geometry);
///     object->SetMaterial(material);
///     object->SetParent(part);
class ZEMTAR_CORE_EXPORT CZemtar3DObject : public CZemtarSceneNode
{
public:
    /// Makes a mesh node without geometry in `document`, which owns it; null without a document.
    static CZemtar3DObject* Create(CZemtarDocument* document);

    /// Refers to the geometry, which is not copied and may be given to several objects; null removes it.
    void SetGeometry(const CZemtarGeometry* geometry);
    /// Gives the geometry for reading; null when there is none.
    const CZemtarGeometry* Geometry() const { return m_geometry; }
    /// Gives geometry that only this object uses: when others share it, the object first gets a copy of it
    /// and of its tables, and with it a new definition id. Null when there is none.
    CZemtarGeometry* EditableGeometry();
    /// Identifies what the object shares with others: equal for two objects of one document exactly when they
    /// refer to the same geometry and the same texture coordinates table, where an empty table counts as
    /// none. Empty without geometry.
    CZemtarString GeometyDefinitionID() const;

    /// Refers to the table, whose entries belong to the geometry's vertices by index; null removes it.
    void SetTextureCoordinatesTable(CZemtarTextureCoordinatesTable* table);
    const CZemtarTextureCoordinatesTable* TextureCoordinatesTable() const { return m_textureCoordinates; }
    /// As `EditableGeometry`, for the texture coordinates.
    CZemtarTextureCoordinatesTable* EditableTextureCoordinatesTable();

    void SetMaterial(CZemtarMaterial* material) { m_material = material; }
    CZemtarMaterial* Material() const { return m_material; }

    const char* ArchiveName() const override { return "3d-object"; }

protected:
    using CZemtarSceneNode::CZemtarSceneNode;
    std::unique_ptr<CZemtarSceneNode> CloneSelf(CZemtarTreeCopy& copy) const override;

private:
    CZemtarGeometry* m_geometry = nullptr;
    CZemtarTextureCoordinatesTable* m_textureCoordinates = nullptr;
    CZemtarMaterial* m_material = nullptr;
};

} // namespace Zemtar
