#include "sdk/solidworks/SldExactBody.h"

#include <cmath>

#include <cadex/internal/Reports.hxx>

#include "sdk/brep/DescribedBRep.h"
#include "sdk/parasolid/XtFile.h"
#include "sdk/solidworks/SldMeshes.h"

namespace cadex::solidworks {

namespace {

/// Displayed triangles have as much area as the body within this; coarse ones of small rounds come near it.
constexpr double SameArea = 0.03;

void Note(const std::string& text)
{
    internal::Reports::Add(internal::Report::Kind::Noted, text);
}

/// The display knows of transparency, the partition only of colours, which it repeats for each face.
void SetLook(brep::Description& body, const internal::Colour& colour, const ModelData_Appearance& look)
{
    constexpr float Same = 1.5F / 255;
    for (brep::Face& face : body.faces) {
        ModelData_Color own;
        if (!face.appearance.IsNull() && face.appearance.ToColor(own) &&
            std::abs(own.R() - colour.red) < Same && std::abs(own.G() - colour.green) < Same &&
            std::abs(own.B() - colour.blue) < Same) {
            face.appearance = {};
        }
    }
    body.appearance = look;
}

/// Appends a body, whose faces keep its look where they have none.
void Append(brep::Description& target, brep::Description&& body)
{
    const auto moved = [](int& number, std::size_t by) {
        if (number != brep::None) {
            number += static_cast<int>(by);
        }
    };
    const std::size_t vertices = target.vertices.size();
    const std::size_t edges = target.edges.size();
    const std::size_t surfaces = target.surfaces.size();
    const std::size_t faces = target.faces.size();
    const std::size_t shells = target.shells.size();
    for (brep::Edge& edge : body.edges) {
        moved(edge.start, vertices);
        moved(edge.end, vertices);
    }
    for (brep::Face& face : body.faces) {
        moved(face.surface, surfaces);
        for (brep::Loop& loop : face.loops) {
            moved(loop.vertex, vertices);
            for (brep::EdgeUse& use : loop.uses) {
                moved(use.edge, edges);
            }
        }
        if (face.appearance.IsNull()) {
            face.appearance = body.appearance;
        }
    }
    for (brep::Shell& shell : body.shells) {
        for (brep::FaceUse& use : shell.faces) {
            moved(use.face, faces);
        }
    }
    for (brep::Solid& solid : body.solids) {
        moved(solid.outer, shells);
        for (int& shell : solid.voids) {
            moved(shell, shells);
        }
    }
    for (int& shell : body.sheets) {
        moved(shell, shells);
    }
    for (brep::LooseCurve& curve : body.curves) {
        moved(curve.edge, edges);
    }
    const auto append = [](auto& to, auto& from) {
        to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
    };
    append(target.vertices, body.vertices);
    append(target.edges, body.edges);
    append(target.surfaces, body.surfaces);
    append(target.faces, body.faces);
    append(target.shells, body.shells);
    append(target.solids, body.solids);
    append(target.sheets, body.sheets);
    append(target.curves, body.curves);
    append(target.kernelShapes, body.kernelShapes);
}

} // namespace

std::string ReadPartition(Container& container, const std::string& configuration)
{
    const std::optional<std::string> stream =
        container.Read("Contents/Config-" + configuration + "-Partition");
    // its length, the partition; the same of the journal
    std::size_t at = 4;
    return stream && stream->size() > at && IsWrapped(std::string_view(*stream).substr(at))
               ? Unwrap(*stream, at, container.Budget())
               : std::string();
}

bool AddExactBody(std::string_view partition, const std::vector<DisplayBody>& displayed,
                  const std::optional<DisplayLook>& look, internal::AppearanceCache& looks,
                  ModelData_Part& part)
{
    if (!parasolid::IsXt(partition)) {
        return false;
    }
    parasolid::XtContents contents;
    try {
        contents = parasolid::ReadXt(partition);
    } catch (const parasolid::Unreadable& reason) {
        Note(std::string("the exact body is not readable, its display is shown: ") + reason.what());
        return false;
    }
    // bodies and what is displayed come in one order where they are as many
    const bool areEqualInNumber = contents.bodies.size() == displayed.size();
    brep::Description all;
    std::size_t lostFaces = 0;
    for (std::size_t i = 0; i < contents.bodies.size(); ++i) {
        parasolid::XtBody& body = contents.bodies[i];
        lostFaces += body.lostFaces;
        const std::optional<DisplayLook>& own =
            areEqualInNumber && displayed[i].look ? displayed[i].look : look;
        if (own) {
            SetLook(body.description, own->colour, looks.Of(own->colour));
        }
        if (all.IsEmpty()) {
            all = std::move(body.description);
        } else if (!body.description.IsEmpty()) {
            Append(all, std::move(body.description));
        }
    }
    if (all.IsEmpty()) {
        return false;
    }
    auto* exact = new brep::DescribedBRep(std::move(all));
    const auto representation = internal::MakeHandle<ModelData_BRepRepresentation>(exact);
    const double area = AreaOf(displayed);
    const double difference = std::abs(exact->Area() - area); // not a number: no area
    if (lostFaces > 0 || (area > 0 && !(difference <= SameArea * area))) {
        Note(lostFaces > 0 ? "the exact body lacks faces, its display is shown"
                           : "the exact body is not the one displayed, its display is shown");
        return false;
    }
    part.SetAppearance(exact->Data().appearance);
    part.AddRepresentation(representation);
    return true;
}

} // namespace cadex::solidworks
