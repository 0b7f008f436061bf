#pragma once

#include "host/CZemtar3DVertex.h"
#include "host/CZemtarCoordinateTable.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// The vertex positions of a geometry, local to the nodes that show it, in the document's unit.
class ZEMTAR_CORE_EXPORT CZemtarVerticiesTable : public CZemtarCoordinateTable<3>
{
public:
    /// Makes an empty table in `document`, which owns it; null without a document. Without `doublePrecision`
    /// each appended number is rounded to single precision.
    static CZemtarVerticiesTable* Create(CZemtarDocument* document, bool doublePrecision);
    /// Makes a copy of the table in `document`.
    CZemtarVerticiesTable* CreateCopy(CZemtarDocument& document) const;

    CZemtar3DVertex Item(unsigned int index) const
    {
        const double* entry = Data() + Width * index;
        return {entry[0], entry[1], entry[2]};
    }
    virtual void Append(double x, double y, double z);

    const char* ArchiveName() const override { return "vertices-table"; }

protected:
    using CZemtarCoordinateTable::CZemtarCoordinateTable;

private:
    void ScaleLengths(const CZemtarLengthRatio& ratio) override;
};

} // namespace Zemtar
