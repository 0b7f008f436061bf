#include "sdk/brep/ResolvedBody.h"

#include "sdk/brep/KernelTasks.h"

namespace cadex::brep {

ResolvedBody ResolveBody(const Description& description, bool isParallel)
{
    ResolvedBody result{MakeBody(description), std::vector<ResolvedFace>(description.faces.size())};
    ForEach(result.faces.size(), isParallel,
            [&](std::size_t face) { result.faces[face] = ResolveFace(result.body, static_cast<int>(face)); });
    return result;
}

} // namespace cadex::brep
