#pragma once

#include "host/CZemtarEntity.h"
#include "host/CZemtarMatrix.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// A transform as an object of a document: one matrix, the identity at first.
class ZEMTAR_CORE_EXPORT CZemtarTransform : public CZemtarEntity
{
public:
    /// Makes an identity transform in `document`, which owns it; null without a document.
    static CZemtarTransform* Create(CZemtarDocument* document);

    CZemtarMatrix Matrix() const { return m_matrix; }
    void SetMatrix(const CZemtarMatrix& matrix) { m_matrix = matrix; }
    const char* ArchiveName() const override { return "transform"; }

protected:
    using CZemtarEntity::CZemtarEntity;

private:
    void ScaleLengths(const CZemtarLengthRatio& ratio) override;

    CZemtarMatrix m_matrix;
};

} // namespace Zemtar
