// Small sound STEP and IGES files: made here, from the examples, and real ones where the machine has them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace cadex::test {

struct Seed
{
    std::string bytes;
    std::string extension;
};

/// A solid with a hole; an assembly with colours on part, face and instance; solids, sheets and curves in one
/// part; facets; an example.
std::vector<Seed> StepSeeds();

/// A solid; trimmed surfaces and curves in named groups; subfigures, scaled and mirrored.
std::vector<Seed> IgesSeeds();

/// A subfigure (a box from the origin to 10, 20, 30) three times: at 100, 0, 0 under the name "First"; scaled
/// by 2 at 0, 100, 0; mirrored in x at -50. `inches`: the same numbers in inches.
Seed IgesSubfigures(bool inches);

} // namespace cadex::test
