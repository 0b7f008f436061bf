#pragma once

#include "host/CZemtarCoordinateTable.h"
#include "host/CZemtarTextureCoordinate.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// The texture coordinates of a mesh object, by the index of its geometry's vertices; empty when it has none.
class ZEMTAR_CORE_EXPORT CZemtarTextureCoordinatesTable : public CZemtarCoordinateTable<2>
{
public:
    /// Makes an empty table in `document`, which owns it; null without a document. Without `doublePrecision`
    /// each appended number is rounded to single precision.
    static CZemtarTextureCoordinatesTable* Create(CZemtarDocument* document, bool doublePrecision);
    /// Makes a copy of the table in `document`.
    CZemtarTextureCoordinatesTable* CreateCopy(CZemtarDocument& document) const;

    CZemtarTextureCoordinate Item(unsigned int index) const
    {
        const double* entry = Data() + Width * index;
        return {entry[0], entry[1]};
    }
    virtual void Append(double u, double v);
    /// Tells how many mesh objects refer to the table.
    unsigned UserCount() const { return m_users; }

    const char* ArchiveName() const override { return "texture-coordinates-table"; }

protected:
    using CZemtarCoordinateTable::CZemtarCoordinateTable;

private:
    friend class CZemtar3DObject;

    unsigned m_users = 0;
};

} // namespace Zemtar
