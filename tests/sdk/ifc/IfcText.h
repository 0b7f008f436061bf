// Writes small IFC files for tests, one entity at a time.
//
//     IfcText file;
//     file.Product("IFCWALL", "wall", file.Shape({file.Box(1000, 200, 3000)}));
//     ReadBack model(file.Text());
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

namespace ifctest {

class IfcText
{
public:
    /// `lengthUnit` is the text of an IfcSIUnit or the like; millimetres by default.
    explicit IfcText(std::string schema = "IFC4",
                     const std::string& lengthUnit = "IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.)",
                     const std::string& angleUnit = "IFCSIUNIT(*,.PLANEANGLEUNIT.,$,.RADIAN.)")
        : mySchema(std::move(schema))
    {
        origin = Add("IFCCARTESIANPOINT((0.,0.,0.))");
        axes = Add("IFCAXIS2PLACEMENT3D(" + origin + ",$,$)");
        context = Add("IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-5," + axes + ",$)");
        const std::string length = Add(lengthUnit);
        const std::string angle = Add(angleUnit);
        const std::string area = Add("IFCSIUNIT(*,.AREAUNIT.,$,.SQUARE_METRE.)");
        units = Add("IFCUNITASSIGNMENT((" + length + "," + angle + "," + area + "))");
        project = Add("IFCPROJECT(" + Guid() + ",$,'project',$,$,$,$,(" + context + ")," + units + ")");
        placement = Add("IFCLOCALPLACEMENT($," + axes + ")");
        building = Add("IFCBUILDING(" + Guid() + ",$,'building',$,$," + placement + ",$,$,.ELEMENT.,$,$,$)");
        Add("IFCRELAGGREGATES(" + Guid() + ",$,$,$," + project + ",(" + building + "))");
    }

    std::string Add(const std::string& entity)
    {
        myData += "#" + std::to_string(++myCount) + "=" + entity + ";\n";
        return "#" + std::to_string(myCount);
    }
    std::string Guid()
    {
        const std::string number = std::to_string(++myGuids);
        return "'" + std::string(22 - number.size(), '0') + number + "'";
    }

    std::string Point(double x, double y, double z)
    {
        return Add("IFCCARTESIANPOINT((" + Number(x) + "," + Number(y) + "," + Number(z) + "))");
    }
    std::string Point(double x, double y)
    {
        return Add("IFCCARTESIANPOINT((" + Number(x) + "," + Number(y) + "))");
    }
    std::string Direction(double x, double y, double z)
    {
        return Add("IFCDIRECTION((" + Number(x) + "," + Number(y) + "," + Number(z) + "))");
    }
    std::string Axes(double x, double y, double z) { return Axes(Point(x, y, z), "$", "$"); }
    std::string Axes(const std::string& point, const std::string& z, const std::string& x)
    {
        return Add("IFCAXIS2PLACEMENT3D(" + point + "," + z + "," + x + ")");
    }
    std::string Polyline(const std::vector<std::vector<double>>& points)
    {
        std::vector<std::string> ids;
        ids.reserve(points.size());
        for (const std::vector<double>& p : points) {
            ids.push_back(p.size() == 2 ? Point(p[0], p[1]) : Point(p[0], p[1], p[2]));
        }
        return Add("IFCPOLYLINE(" + List(ids) + ")");
    }
    std::string Rectangle(double x, double y)
    {
        return Add("IFCRECTANGLEPROFILEDEF(.AREA.,$,$," + Number(x) + "," + Number(y) + ")");
    }
    std::string Extrude(const std::string& profile, double depth, const std::string& position = "$")
    {
        return Add("IFCEXTRUDEDAREASOLID(" + profile + "," + position + "," + Direction(0, 0, 1) + "," +
                   Number(depth) + ")");
    }
    /// A prism about the z axis, standing on z = 0.
    std::string Box(double x, double y, double z) { return Extrude(Rectangle(x, y), z); }
    std::string Shape(const std::vector<std::string>& items, const std::string& identifier = "'Body'",
                      const std::string& type = "'SweptSolid'")
    {
        return Add("IFCSHAPEREPRESENTATION(" + context + "," + identifier + "," + type + "," + List(items) +
                   ")");
    }
    std::string Definition(const std::vector<std::string>& shapes)
    {
        return Add("IFCPRODUCTDEFINITIONSHAPE($,$," + List(shapes) + ")");
    }
    /// An element of the building, at its origin unless a placement is given.
    std::string Product(const std::string& type, const std::string& name, const std::string& shape,
                        std::string at = "")
    {
        const std::string definition = shape == "$" ? shape : Definition({shape});
        at = at.empty() ? placement : at;
        std::string product =
            Add(type + "(" + Guid() + ",$,'" + name + "',$,$," + at + "," + definition + ",$,$)");
        Contain({product});
        return product;
    }
    void Contain(const std::vector<std::string>& products)
    {
        Add("IFCRELCONTAINEDINSPATIALSTRUCTURE(" + Guid() + ",$,$,$," + List(products) + "," + building +
            ")");
    }
    void Colour(const std::string& item, double red, double green, double blue, double transparency)
    {
        const std::string rgb =
            Add("IFCCOLOURRGB($," + Number(red) + "," + Number(green) + "," + Number(blue) + ")");
        const std::string rendering = Add("IFCSURFACESTYLERENDERING(" + rgb + "," + Number(transparency) +
                                          ",$,$,$,$,$,$,.NOTDEFINED.)");
        const std::string style = Add("IFCSURFACESTYLE($,.BOTH.,(" + rendering + "))");
        Add("IFCSTYLEDITEM(" + item + ",(" + style + "),$)");
    }

    /// Pieces in a row.
    static std::string Join(std::initializer_list<std::string> pieces)
    {
        std::string text;
        for (const std::string& piece : pieces) {
            text += piece;
        }
        return text;
    }
    static std::string Number(double value)
    {
        std::string text = std::to_string(value);
        return text;
    }
    static std::string List(const std::vector<std::string>& items)
    {
        std::string list = "(";
        for (const std::string& item : items) {
            list += (list.size() > 1 ? "," : "") + item;
        }
        return list + ")";
    }

    std::string Text() const
    {
        return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('t.ifc','',(''),(''),'','','"
               "');\n"
               "FILE_SCHEMA(('" +
               mySchema + "'));\nENDSEC;\nDATA;\n" + myData + "ENDSEC;\nEND-ISO-10303-21;\n";
    }

    std::string origin, axes, context, units, project, placement, building;

private:
    std::string mySchema;
    std::string myData;
    int myCount = 0;
    int myGuids = 0;
};

} // namespace ifctest
