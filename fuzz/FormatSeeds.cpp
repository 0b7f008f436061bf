#include "fuzz/FormatSeeds.h"

#include "tests/sdk/SeedFiles.h"
#include "tests/sdk/acis/SatFiles.h"
#include "tests/sdk/parasolid/XtShapes.h"
#include "tests/sdk/solidworks/SldFiles.h"

namespace Zemtar::Fuzz {
namespace {

std::vector<std::string> BytesOfAll(const std::vector<cadex::test::Seed>& seeds)
{
    std::vector<std::string> bytes;
    bytes.reserve(seeds.size());
    for (const cadex::test::Seed& seed : seeds) {
        bytes.push_back(seed.bytes);
    }
    return bytes;
}

std::vector<std::string> ParasolidSeeds()
{
    std::vector<std::string> seeds;
    for (const bool isSpline : {false, true}) {
        xttest::XtText xt;
        xttest::AddPuck(xt, {0.01, 0.02, 0.002, isSpline, true});
        seeds.push_back(xt.Text());
        seeds.push_back(xt.Binary());
    }
    xttest::XtText cylinder;
    xttest::AddCylinderBody(cylinder, 0.001, 0.01);
    seeds.push_back(cylinder.Text());
    return seeds;
}

/// In an old document the list of what is shown stands unpacked and without a checksum.
std::vector<std::string> SolidWorksSeeds()
{
    sldtest::DisplayText list;
    list.Look(0xC0C0C0, 0, "Steel");
    list.Body(6);
    sldtest::AddBox(list, 0.01F, 0.02F, 0.03F);
    list.Look(0x336699, 0, "Steel", "Box");
    const sldtest::Streams streams = {{"docProps/core.xml", "<c><dc:title>Box</dc:title></c>"},
                                      {"Contents/DisplayLists", list.bytes}};
    return {sldtest::Compound(streams), sldtest::Archive(streams)};
}

std::vector<std::string> AcisSeeds()
{
    std::vector<std::string> seeds;
    for (const int version : {400, 700, 2400}) {
        acistest::SatText sat(version);
        const int body = acistest::AddFrustum(sat, version, {});
        sat.AddAttribute("rgb_color-st-attrib", body, "1 0 0");
        seeds.push_back(sat.Str());
    }
    return seeds;
}

} // namespace

std::vector<std::string> ComposedSeeds(std::string_view format)
{
    if (format == "step") {
        return BytesOfAll(cadex::test::StepSeeds());
    }
    if (format == "iges") {
        return BytesOfAll(cadex::test::IgesSeeds());
    }
    if (format == "parasolid") {
        return ParasolidSeeds();
    }
    if (format == "solidworks") {
        return SolidWorksSeeds();
    }
    return format == "sat" ? AcisSeeds() : std::vector<std::string>();
}

} // namespace Zemtar::Fuzz
