#include "sdk/brep/BodyIntegrals.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "sdk/brep/FaceIntegrals.h"
#include "sdk/brep/KernelTasks.h"
#include "sdk/brep/Tolerances.h"

namespace cadex::brep {

namespace {

enum class Closure
{
    Closed,   ///< every edge is run through as often one way as the other
    Open,     ///< an edge has a face on one side alone
    Disturbed ///< faces do not agree on which side is outside
};

struct ShellSum
{
    Closure closure = Closure::Open;
    FaceIntegrals sum = {};
    double share = 0; ///< of all volumes, signs left aside
};

class BodySum
{
public:
    BodySum(const ResolvedBody& resolved, bool isParallel)
        : myDescription(resolved.Described()),
          myResolved(resolved.faces),
          myFaces(myDescription.faces.size()),
          mySides(myDescription.shells.size())
    {
        if (!resolved.body.vertices.empty()) {
            // Contributions are measured from a point of the body: one far away would cost digits.
            myOrigin = resolved.body.vertices.front().point.XYZ();
        }
        ForEach(myFaces.size(), isParallel, [&](std::size_t face) {
            Try([&] { myFaces[face] = IntegrateFace(resolved.body, resolved.faces[face], myOrigin); });
        });
    }

    std::optional<BodyIntegrals> Run()
    {
        if (!std::all_of(myFaces.begin(), myFaces.end(), [](const auto& face) { return face.has_value(); })) {
            return std::nullopt;
        }
        BodyIntegrals result;
        bool isWhole = true;
        for (const Solid& solid : myDescription.solids) {
            if (!AddSolid(solid, isWhole)) {
                return std::nullopt;
            }
        }
        for (const int shell : myDescription.sheets) {
            const ShellSum sum = SumOf(shell);
            if (sum.closure == Closure::Disturbed) {
                return std::nullopt;
            }
            if (sum.closure == Closure::Closed) {
                AddBody(std::abs(sum.sum.volume), SignedMoment(sum), sum.share, isWhole);
            }
        }
        result.area = myArea;
        result.sides = std::move(mySides);
        if (isWhole && myVolume > 0) {
            const gp_XYZ centre = myMoment / myVolume + myOrigin;
            result.mass = occt::MassProperties{myVolume, {centre.X(), centre.Y(), centre.Z()}};
        }
        return result;
    }

private:
    /// False when its shells are disturbed.
    bool AddSolid(const Solid& solid, bool& isWhole)
    {
        const ShellSum outer = SumOf(solid.outer);
        bool isClosed = outer.closure == Closure::Closed;
        bool isDisturbed = outer.closure == Closure::Disturbed;
        double volume = std::abs(outer.sum.volume);
        double share = outer.share;
        gp_XYZ moment = SignedMoment(outer);
        for (const int shell : solid.voids) {
            const ShellSum cavity = SumOf(shell);
            isClosed = isClosed && cavity.closure == Closure::Closed;
            isDisturbed = isDisturbed || cavity.closure == Closure::Disturbed;
            volume -= std::abs(cavity.sum.volume);
            share += cavity.share;
            moment -= SignedMoment(cavity);
        }
        isWhole = isWhole && isClosed;
        AddBody(volume, moment, share, isWhole);
        return !isDisturbed;
    }

    void AddBody(double volume, const gp_XYZ& moment, double share, bool& isWhole)
    {
        isWhole = isWhole && volume > tolerance::NoVolume * share;
        myVolume += volume;
        myMoment += moment;
    }

    /// As if the shell's normals pointed out of what it encloses.
    static gp_XYZ SignedMoment(const ShellSum& shell)
    {
        return shell.sum.volume < 0 ? shell.sum.moment.Reversed() : shell.sum.moment;
    }

    ShellSum SumOf(int number)
    {
        ShellSum result;
        const auto shell = static_cast<std::size_t>(number);
        if (number < 0 || shell >= myDescription.shells.size()) {
            return result;
        }
        std::vector<std::pair<int, int>> uses; // by edge: which way
        for (const FaceUse& use : myDescription.shells[shell].faces) {
            const auto face = static_cast<std::size_t>(use.face);
            if (use.face < 0 || face >= myFaces.size()) {
                continue;
            }
            FaceIntegrals integrals = *myFaces[face];
            myArea += integrals.area;
            result.share += std::abs(integrals.volume);
            integrals.area = 0;
            result.sum += integrals * (use.forward ? 1 : -1);
            const std::vector<int>& stray = myResolved[face].strayEdges;
            for (const Loop& loop : myDescription.faces[face].loops) {
                for (const EdgeUse& edge : loop.uses) {
                    const bool isStray = std::find(stray.begin(), stray.end(), edge.edge) != stray.end();
                    uses.emplace_back(edge.edge, (edge.forward != isStray) == use.forward ? 1 : -1);
                }
            }
        }
        result.closure = ClosureOf(std::move(uses));
        if (result.closure == Closure::Closed &&
            std::abs(result.sum.volume) > tolerance::NoVolume * result.share) {
            mySides[shell] = result.sum.volume > 0 ? ShellSide::Outwards : ShellSide::Inwards;
        }
        return result;
    }

    static Closure ClosureOf(std::vector<std::pair<int, int>>&& uses)
    {
        std::sort(uses.begin(), uses.end());
        Closure result = Closure::Closed;
        for (std::size_t i = 0; i < uses.size();) {
            const int edge = uses[i].first;
            int sum = 0;
            int count = 0;
            for (; i < uses.size() && uses[i].first == edge; ++i, ++count) {
                sum += uses[i].second;
            }
            if (count % 2 == 1) {
                return Closure::Open;
            }
            result = sum == 0 ? result : Closure::Disturbed;
        }
        return result;
    }

    const Description& myDescription;
    const std::vector<ResolvedFace>& myResolved;
    gp_XYZ myOrigin = {0, 0, 0};
    std::vector<std::optional<FaceIntegrals>> myFaces;
    std::vector<ShellSide> mySides;
    double myArea = 0;
    double myVolume = 0;
    gp_XYZ myMoment = {0, 0, 0};
};

} // namespace

std::optional<BodyIntegrals> IntegrateBody(const ResolvedBody& body, bool isParallel)
{
    if (!body.Described().kernelShapes.empty()) {
        return std::nullopt;
    }
    return BodySum(body, isParallel).Run();
}

} // namespace cadex::brep
