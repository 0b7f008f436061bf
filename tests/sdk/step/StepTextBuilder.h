// Clear text of one product, record by record, for tests.
//
//     StepTextBuilder step;
//     const int edge = step.Line(step.Vertex({0, 0, 0}), step.Vertex({1, 0, 0}));
//     WriteBytes(file, step.Text({step.Add("EDGE_BASED_WIREFRAME_MODEL('',(" + ... + "))")}));
#pragma once

#include <array>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <vector>

namespace cadex::test {

using Triple = std::array<double, 3>;

class StepTextBuilder
{
public:
    /// Appends "#n=record;" and gives n.
    int Add(const std::string& record)
    {
        myText += Ref(++myLast) + "=" + record + ";\n";
        return myLast;
    }
    static std::string Ref(int number) { return "#" + std::to_string(number); }
    static std::string Refs(const std::vector<int>& numbers)
    {
        std::string list = "(";
        for (const int number : numbers) {
            list += (list.size() > 1 ? "," : "") + Ref(number);
        }
        return list + ")";
    }
    static std::string Real(double value)
    {
        char text[32];
        std::snprintf(text, sizeof text, "%.15g", value);
        const std::string number = text;
        return number.find_first_of(".en") == std::string::npos ? number + "." : number;
    }

    int Point(const Triple& p) { return Add("CARTESIAN_POINT(''," + List(p) + ")"); }
    int Direction(const Triple& d) { return Add("DIRECTION(''," + List(d) + ")"); }
    int Axes(const Triple& origin, const Triple& z = {0, 0, 1}, const Triple& x = {1, 0, 0})
    {
        const int point = Point(origin);
        const int axis = Direction(z);
        return Add("AXIS2_PLACEMENT_3D(''," + Refs3(point, axis, Direction(x)) + ")");
    }
    int Axis(const Triple& origin, const Triple& z)
    {
        const int point = Point(origin);
        return Add("AXIS1_PLACEMENT(''," + Ref(point) + "," + Ref(Direction(z)) + ")");
    }
    /// TYPE('',#axes,arguments) and the like.
    int On(const std::string& type, int axes, const std::string& more = "")
    {
        return Add(type + "(''," + Ref(axes) + (more.empty() ? "" : "," + more) + ")");
    }

    int Vertex(const Triple& p) { return Add("VERTEX_POINT(''," + Ref(Point(p)) + ")"); }
    int Edge(int start, int end, int curve, bool same = true)
    {
        return Add("EDGE_CURVE(''," + Refs3(start, end, curve) + "," + Bool(same) + ")");
    }
    int LineThrough(const Triple& p, const Triple& direction)
    {
        const int point = Point(p);
        const int vector = Add("VECTOR(''," + Ref(Direction(direction)) + ",1.)");
        return Add("LINE(''," + Ref(point) + "," + Ref(vector) + ")");
    }
    int Line(int start, int end)
    {
        // The line's own place does not matter: its vertices say where the edge is.
        return Edge(start, end, LineThrough({0, 0, 0}, {1, 0, 0}));
    }
    int Circle(const Triple& centre, double radius, const Triple& axis = {0, 0, 1},
               const Triple& x = {1, 0, 0})
    {
        return On("CIRCLE", Axes(centre, axis, x), Real(radius));
    }

    /// A bound of edges; a negative number is the edge against its own direction.
    int Bound(const std::vector<int>& edges, bool forward = true)
    {
        std::vector<int> uses;
        for (const int edge : edges) {
            uses.push_back(
                Add("ORIENTED_EDGE('',*,*," + Ref(edge < 0 ? -edge : edge) + "," + Bool(edge > 0) + ")"));
        }
        const int loop = Add("EDGE_LOOP(''," + Refs(uses) + ")");
        return Add("FACE_BOUND(''," + Ref(loop) + "," + Bool(forward) + ")");
    }
    int BoundAt(int vertex)
    {
        const int loop = Add("VERTEX_LOOP(''," + Ref(vertex) + ")");
        return Add("FACE_BOUND(''," + Ref(loop) + ",.T.)");
    }
    int Face(int surface, const std::vector<int>& bounds, bool same = true)
    {
        return Add("ADVANCED_FACE(''," + Refs(bounds) + "," + Ref(surface) + "," + Bool(same) + ")");
    }
    int Solid(const std::vector<int>& faces, const std::string& name = "")
    {
        const int shell = Add("CLOSED_SHELL(''," + Refs(faces) + ")");
        return Add("MANIFOLD_SOLID_BREP('" + name + "'," + Ref(shell) + ")");
    }

    /// A cube with a corner at the point, its faces planes between lines.
    std::vector<int> CubeFaces(const Triple& corner, double size)
    {
        std::array<int, 8> v{};
        for (std::size_t i = 0; i < 8; ++i) {
            v[i] = Vertex({corner[0] + ((i & 1U) != 0 ? size : 0), corner[1] + ((i & 2U) != 0 ? size : 0),
                           corner[2] + ((i & 4U) != 0 ? size : 0)});
        }
        constexpr int Ends[12][2] = {{0, 1}, {1, 3}, {3, 2}, {2, 0}, {4, 5}, {5, 7},
                                     {7, 6}, {6, 4}, {0, 4}, {1, 5}, {3, 7}, {2, 6}};
        std::array<int, 12> e{};
        for (std::size_t i = 0; i < 12; ++i) {
            e[i] = Line(v[static_cast<std::size_t>(Ends[i][0])], v[static_cast<std::size_t>(Ends[i][1])]);
        }
        const auto face = [&](const std::vector<int>& edges, const Triple& at, const Triple& normal,
                              const Triple& x) {
            const int bound = Bound(edges);
            return Face(On("PLANE", Axes(at, normal, x)), {bound});
        };
        const Triple far = {corner[0] + size, corner[1] + size, corner[2] + size};
        return {face({-e[3], -e[2], -e[1], -e[0]}, corner, {0, 0, -1}, {1, 0, 0}),
                face({e[4], e[5], e[6], e[7]}, far, {0, 0, 1}, {1, 0, 0}),
                face({e[0], e[9], -e[4], -e[8]}, corner, {0, -1, 0}, {1, 0, 0}),
                face({e[2], e[11], -e[6], -e[10]}, far, {0, 1, 0}, {1, 0, 0}),
                face({e[3], e[8], -e[7], -e[11]}, corner, {-1, 0, 0}, {0, 1, 0}),
                face({e[1], e[10], -e[5], -e[9]}, far, {1, 0, 0}, {0, 1, 0})};
    }

    /// A can around the z axis from the point upwards.
    std::vector<int> CanFaces(const Triple& foot, double radius, double height)
    {
        const Triple top = {foot[0], foot[1], foot[2] + height};
        const int low = Vertex({foot[0] + radius, foot[1], foot[2]});
        const int high = Vertex({top[0] + radius, top[1], top[2]});
        const int bottomRing = Edge(low, low, Circle(foot, radius));
        const int topRing = Edge(high, high, Circle(top, radius));
        const int seam = Line(low, high);
        const int side = Bound({bottomRing, seam, -topRing, -seam});
        const int sideFace = Face(On("CYLINDRICAL_SURFACE", Axes(foot), Real(radius)), {side});
        const int bottom = Bound({-bottomRing});
        const int bottomFace = Face(On("PLANE", Axes(foot)), {bottom}, false);
        const int lid = Bound({topRing});
        return {sideFace, bottomFace, Face(On("PLANE", Axes(top)), {lid})};
    }

    /// The style gives the item a colour.
    int Colour(int item, double red, double green, double blue)
    {
        const int rgb = Add("COLOUR_RGB(''," + Real(red) + "," + Real(green) + "," + Real(blue) + ")");
        const int fill =
            Add("FILL_AREA_STYLE('',(" + Ref(Add("FILL_AREA_STYLE_COLOUR(''," + Ref(rgb) + ")")) + "))");
        const int side =
            Add("SURFACE_SIDE_STYLE('',(" + Ref(Add("SURFACE_STYLE_FILL_AREA(" + Ref(fill) + ")")) + "))");
        const int usage = Add("SURFACE_STYLE_USAGE(.BOTH.," + Ref(side) + ")");
        const int style = Add("PRESENTATION_STYLE_ASSIGNMENT((" + Ref(usage) + "))");
        return Add("STYLED_ITEM('',(" + Ref(style) + ")," + Ref(item) + ")");
    }

    /// Context of lengths in inches and angles in degrees, or of millimetres and radians.
    int Context(bool imperial = false)
    {
        const int metre = Add("(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.))");
        const int radian = Add("(NAMED_UNIT(*)PLANE_ANGLE_UNIT()SI_UNIT($,.RADIAN.))");
        int length = metre;
        int angle = radian;
        if (imperial) {
            const int exponents = Add("DIMENSIONAL_EXPONENTS(1.,0.,0.,0.,0.,0.,0.)");
            const int inch = Add("LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(25.4)," + Ref(metre) + ")");
            const int degree = Add("PLANE_ANGLE_MEASURE_WITH_UNIT(PLANE_ANGLE_MEASURE(0.0174532925199433)," +
                                   Ref(radian) + ")");
            length = Add("(CONVERSION_BASED_UNIT('INCH'," + Ref(inch) + ")LENGTH_UNIT()NAMED_UNIT(" +
                         Ref(exponents) + "))");
            angle = Add("(CONVERSION_BASED_UNIT('DEGREE'," + Ref(degree) + ")NAMED_UNIT(" + Ref(exponents) +
                        ")PLANE_ANGLE_UNIT())");
        }
        return Add("(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((" + Ref(length) + "," +
                   Ref(angle) + "))REPRESENTATION_CONTEXT('',''))");
    }
    int Representation(const std::vector<int>& items, int context)
    {
        return Add("SHAPE_REPRESENTATION(''," + Refs(items) + "," + Ref(context) + ")");
    }

    /// The whole file: a product called "part" that the items represent.
    std::string Text(const std::vector<int>& items, bool imperial = false)
    {
        const int application = Add("APPLICATION_CONTEXT('')");
        const int context = Add("PRODUCT_CONTEXT(''," + Ref(application) + ",'mechanical')");
        const int view =
            Add("PRODUCT_DEFINITION_CONTEXT('part definition'," + Ref(application) + ",'design')");
        const int product = Add("PRODUCT('part','part','',(" + Ref(context) + "))");
        const int version = Add("PRODUCT_DEFINITION_FORMATION('',''," + Ref(product) + ")");
        const int definition = Add("PRODUCT_DEFINITION('',''," + Ref(version) + "," + Ref(view) + ")");
        const int shape = Add("PRODUCT_DEFINITION_SHAPE('',''," + Ref(definition) + ")");
        const int units = Context(imperial);
        const int representation = Representation(items, units);
        Add("SHAPE_DEFINITION_REPRESENTATION(" + Ref(shape) + "," + Ref(representation) + ")");
        return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('part','',(''),(''),'','',''"
               ");\n"
               "FILE_SCHEMA(('AUTOMOTIVE_DESIGN { 1 0 10303 214 1 1 1 1 }'));\nENDSEC;\nDATA;\n" +
               myText + "ENDSEC;\nEND-ISO-10303-21;\n";
    }

private:
    static std::string Bool(bool value) { return value ? ".T." : ".F."; }
    static std::string List(const Triple& v)
    {
        return "(" + Real(v[0]) + "," + Real(v[1]) + "," + Real(v[2]) + ")";
    }
    static std::string Refs3(int a, int b, int c) { return Ref(a) + "," + Ref(b) + "," + Ref(c); }

    std::string myText;
    int myLast = 0;
};

} // namespace cadex::test
