#include "sdk/brep/KernelTasks.h"

#include <OSD_Parallel.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>

namespace cadex::brep {

namespace {

// From this many faces on, threads gain more than they cost (see bench/tessellation.cpp).
constexpr std::size_t ParallelFaces = 64;

} // namespace

void ForEach(std::size_t count, bool isParallel, const std::function<void(std::size_t)>& work)
{
    OSD_Parallel::For(
        0, static_cast<int>(count), [&](int i) { work(static_cast<std::size_t>(i)); },
        !isParallel || count < ParallelFaces);
}

bool Try(const std::function<void()>& work)
{
    try {
        OCC_CATCH_SIGNALS
        work();
        return true;
    } catch (const Standard_Failure&) {
        return false;
    }
}

} // namespace cadex::brep
