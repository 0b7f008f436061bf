// Writes a model's meshes and polylines as IGES 5.3.
#pragma once

#include <IGESData_IGESModel.hxx>

#include "sdk/model/WriterEngine.h"

namespace cadex::iges {

/// Each part as often as it is placed, with its placement in its coordinates and under the name of its
/// instance: IGES has no product structure that readers agree on. Closed meshes are solids, open ones trimmed
/// planes; triangles without area and points that are not finite are left out. Colours are kept without their
/// transparency; names are ASCII, other characters become '_'. Coordinates have 13 significant digits.
///
/// Transfer is false for a placement that is not finite, for a part with an exact shape and no mesh, and for
/// more entities than the format can number (about 700,000 triangles); WriteFile also when the disk is full.
class IgesWriterEngine final : public internal::WriterEngine
{
public:
    bool Transfer(const ModelData_Model& model, const Base_WriterParameters& parameters) override;
    bool WriteFile(const std::filesystem::path& file) override;

private:
    Handle(IGESData_IGESModel) myModel;
};

} // namespace cadex::iges
