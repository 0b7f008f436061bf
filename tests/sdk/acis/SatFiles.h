// SAT files in memory: composed in the layout of any version, read, meshed.
#pragma once

#include <cmath>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <cadex/ACIS_Reader.hxx>
#include <cadex/ACIS_Writer.hxx>
#include <cadex/ModelAlgo_ValidationProperty.hxx>
#include <cadex/ModelAlgo_ValidationPropertyData.hxx>
#include <cadex/ModelData_Model.hxx>

#include "sdk/mesh/DistinctParts.h"
#include "sdk/model/Elements.h"
#include "sdk/occt/EngineBRep.h"
#include "sdk/occt/EngineScope.h"
#include "tests/support/DamagedFiles.h"

namespace acistest {

/// Records in the order in which they are added. References are given as "$n", n as Add returned it; records
/// that point forward are reserved first.
class SatText
{
public:
    explicit SatText(int version, double millimetres = 1) : myVersion(version), myMillimetres(millimetres) {}

    int Reserve()
    {
        myRecords.emplace_back();
        return static_cast<int>(myRecords.size()) - 1;
    }
    /// An entity with what the version puts in front of its own fields.
    void Set(int record, const std::string& type, const std::string& fields)
    {
        const char* lead = myVersion >= 2000  ? " $-1 -1 -1 $-1 "
                           : myVersion >= 700 ? " $-1 -1 $-1 "
                                              : " $-1 ";
        myRecords[static_cast<std::size_t>(record)] = type + lead + fields;
    }
    int Add(const std::string& type, const std::string& fields)
    {
        const int record = Reserve();
        Set(record, type, fields);
        return record;
    }
    void AddAttribute(const std::string& type, int owner, const std::string& fields)
    {
        const char* lead = myVersion >= 700 ? " $-1 -1 " : " $-1 ";
        myRecords[static_cast<std::size_t>(Reserve())] =
            type + lead + "$-1 $-1 $" + std::to_string(owner) + " " + fields;
    }
    void AddTransform(int record, const std::string& numbers)
    {
        const char* lead = myVersion >= 700 ? " $-1 -1 " : " $-1 ";
        myRecords[static_cast<std::size_t>(record)] =
            "transform" + std::string(lead) + numbers + " rotate no_reflect no_shear";
    }
    /// A text field as the version has it.
    std::string Text(const std::string& text) const
    {
        return (myVersion >= 700 ? "@" : "") + std::to_string(text.size()) + " " + text;
    }

    std::string Str() const
    {
        std::ostringstream out;
        out << myVersion << " 0 1 0\n"
            << Text("by hand") << " " << Text("ACIS") << " " << Text("today") << "\n";
        out << myMillimetres << " 1e-06 1e-10\n";
        for (std::size_t i = 0; i < myRecords.size(); ++i) {
            out << (myVersion >= 2000 ? "-" + std::to_string(i) + " " : "") << myRecords[i] << " #\n";
        }
        out << "End-of-ACIS-data\n";
        return out.str();
    }

private:
    int myVersion;
    double myMillimetres;
    std::vector<std::string> myRecords;
};

inline std::string Ref(int record)
{
    return "$" + std::to_string(record) + " ";
}

/// A frustum on the z axis: circles (or ellipses of that ratio) of radius `bottom` at z = 0 and `top` at
/// z = height. Parameters of edges are there from version 5 on.
struct Frustum
{
    double bottom = 3;
    double top = 2;
    double height = 5;
    double ratio = 1;

    double Volume() const { return M_PI * ratio * height / 3 * (bottom * bottom + bottom * top + top * top); }
};

/// Gives the body's record; its transform is record `transform`.
inline int AddFrustum(SatText& sat, int version, const Frustum& f, int transform = -1)
{
    const int body = sat.Reserve();
    const int lump = sat.Reserve();
    const int shell = sat.Reserve();
    const int faces[3] = {sat.Reserve(), sat.Reserve(), sat.Reserve()};
    sat.Set(body, "body", Ref(lump) + "$-1 " + Ref(transform));
    sat.Set(lump, "lump", "$-1 " + Ref(shell) + Ref(body));
    sat.Set(shell, "shell", "$-1 $-1 " + Ref(faces[0]) + "$-1 " + Ref(lump));
    int edges[2];
    for (const int end : {0, 1}) {
        const double radius = end == 0 ? f.bottom : f.top;
        std::ostringstream at;
        at.precision(17);
        at << radius << " 0 " << end * f.height;
        const int point = sat.Add("point", at.str());
        const int vertex = sat.Add("vertex", "$-1 " + Ref(point));
        std::ostringstream curve;
        curve.precision(17);
        curve << "0 0 " << end * f.height << " 0 0 1 " << radius << " 0 0 " << f.ratio << " I I";
        const int ellipse = sat.Add("ellipse-curve", curve.str());
        const bool isOld = version < 500;
        edges[end] = sat.Add("edge", Ref(vertex) + (isOld ? "" : "0 ") + Ref(vertex) +
                                         (isOld ? "" : "6.2831853071795862 ") + "$-1 " + Ref(ellipse) +
                                         "forward" + (isOld ? "" : " @7 unknown"));
    }
    const auto addLoop = [&](int next, int face, int edge, const char* sense) {
        const int coedge = sat.Reserve();
        const int loop = sat.Add("loop", Ref(next) + Ref(coedge) + Ref(face));
        sat.Set(coedge, "coedge",
                Ref(coedge) + Ref(coedge) + "$-1 " + Ref(edge) + sense + " " + Ref(loop) + "$-1");
        return loop;
    };
    std::ostringstream side;
    side.precision(17);
    const double slant = std::hypot(f.height, f.top - f.bottom);
    side << "0 0 0 0 0 1 " << f.bottom << " 0 0 " << f.ratio << " I I " << (f.top - f.bottom) / slant << " "
         << f.height / slant << " " << f.bottom << " forward I I I I";
    const int surfaces[3] = {
        sat.Add("plane-surface", "0 0 0 0 0 -1 1 0 0 forward_v I I I I"),
        sat.Add("plane-surface", "0 0 " + std::to_string(f.height) + " 0 0 -1 1 0 0 forward_v I I I I"),
        sat.Add("cone-surface", side.str())};
    const int loops[3] = {
        addLoop(-1, faces[0], edges[0], "reversed"), addLoop(-1, faces[1], edges[1], "forward"),
        addLoop(addLoop(-1, faces[2], edges[1], "reversed"), faces[2], edges[0], "forward")};
    for (int i = 0; i < 3; ++i) {
        // the top's plane looks down: its face is reversed
        sat.Set(faces[i], "face",
                Ref(i < 2 ? faces[i + 1] : -1) + Ref(loops[i]) + Ref(shell) + "$-1 " + Ref(surfaces[i]) +
                    (i == 1 ? "reversed" : "forward") + " single");
    }
    return body;
}

/// Nothing when the file is refused. Bodies are not meshed.
inline std::optional<cadex::ModelData_Model> Read(const std::string& bytes)
{
    return cadex::test::ReadBytes<cadex::ACIS_Reader>(bytes);
}

inline std::vector<cadex::ModelData_Instance> InstancesOf(const cadex::ModelData_Model& model)
{
    const auto& root = cadex::internal::RootsOf(model).front();
    return cadex::internal::ImplOf(static_cast<const cadex::ModelData_Assembly&>(root)).instances;
}

inline const cadex::ModelData_Part& PartOf(const cadex::ModelData_Instance& instance)
{
    return static_cast<const cadex::ModelData_Part&>(cadex::internal::ImplOf(instance).reference);
}

/// From the exact faces, of all parts.
inline double AreaOf(const cadex::ModelData_Model& model)
{
    double area = 0;
    cadex::occt::RunGuarded(cadex::occt::EngineUse::Geometry, [&] {
        for (const cadex::ModelData_Part& part : cadex::mesh::DistinctParts(model)) {
            area += static_cast<const cadex::occt::EngineBRep*>(part.BRepRepresentation().Impl())->Area();
        }
        return true;
    });
    return area;
}

inline cadex::ModelAlgo_ValidationPropertyData Properties(const cadex::ModelData_Part& part)
{
    cadex::ModelAlgo_ValidationPropertyData data;
    cadex::ModelAlgo_ValidationProperty::ComputeValidationProperties(part, data);
    return data;
}

} // namespace acistest
