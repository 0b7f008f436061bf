#include "sdk/brep/Shells.h"

#include <algorithm>

#include <BndLib_AddSurface.hxx>
#include <Bnd_Box.hxx>
#include <GeomAdaptor_Surface.hxx>

namespace cadex::brep {

namespace {

std::size_t At(int index)
{
    return static_cast<std::size_t>(index);
}

/// Square of the diagonal of a box around the ends and middles of the edges.
double ExtentOf(const Description& description, const Shell& shell)
{
    Bnd_Box box;
    for (const FaceUse& use : shell.faces) {
        const Face& face = description.faces[At(use.face)];
        if (face.loops.empty()) {
            BndLib_AddSurface::Add(GeomAdaptor_Surface(description.surfaces[At(face.surface)]), 0, box);
        }
        for (const Loop& loop : face.loops) {
            for (const EdgeUse& edgeUse : loop.uses) {
                const Edge& edge = description.edges[At(edgeUse.edge)];
                if (edge.start != None) {
                    box.Add(description.vertices[At(edge.start)].point);
                }
                if (edge.curve.IsNull()) {
                    continue;
                }
                const bool hasRange = edge.first < edge.last;
                const bool isClosed = edge.curve->IsPeriodic();
                if (hasRange) {
                    box.Add(edge.curve->Value((edge.first + edge.last) / 2));
                } else if (isClosed && edge.start == edge.end) {
                    constexpr int Samples = 4;
                    for (int i = 0; i < Samples; ++i) {
                        box.Add(edge.curve->Value(edge.curve->FirstParameter() +
                                                  edge.curve->Period() * i / Samples));
                    }
                }
            }
        }
    }
    return box.IsVoid() ? 0 : box.SquareExtent();
}

} // namespace

bool ClosedShells::Has(int shell)
{
    const auto forEachUse = [&](const auto& visit) {
        for (const FaceUse& face : myDescription.shells[At(shell)].faces) {
            for (const Loop& loop : myDescription.faces[At(face.face)].loops) {
                for (const EdgeUse& use : loop.uses) {
                    visit(myUses[At(use.edge)]);
                }
            }
        }
    };
    bool isClosed = true;
    forEachUse([](int& count) { ++count; });
    forEachUse([&](int& count) { isClosed = isClosed && count % 2 == 0; });
    forEachUse([](int& count) { count = 0; });
    return isClosed;
}

Solid SolidOf(const Description& description, std::vector<int> shells)
{
    if (shells.size() > 1) {
        std::vector<double> extents;
        extents.reserve(shells.size());
        for (const int shell : shells) {
            extents.push_back(ExtentOf(description, description.shells[At(shell)]));
        }
        const auto largest = std::max_element(extents.begin(), extents.end()) - extents.begin();
        std::swap(shells.front(), shells[static_cast<std::size_t>(largest)]);
    }
    return {shells.front(), {shells.begin() + 1, shells.end()}};
}

} // namespace cadex::brep
