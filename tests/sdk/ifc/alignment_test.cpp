// Places and bodies along alignments.
#include <cmath>

#include <gtest/gtest.h>

#include "tests/sdk/ifc/IfcText.h"
#include "tests/sdk/ifc/ReadBack.h"

namespace ifctest {
namespace {

using std::string;

/// Metres: 100 along x, a quarter circle of radius 100 to the left, 50 more.
class Road
{
public:
    explicit Road(IfcText& f) : myFile(f)
    {
        const double quarter = 50 * M_PI;
        const string line =
            f.Add("IFCLINE(" + f.Point(0, 0) + "," + f.Add("IFCVECTOR(" + Direction(1, 0) + ",1.)") + ")");
        const string circle = f.Add("IFCCIRCLE(" + Axes(0, 0, 1, 0) + ",100.)");
        horizontal = f.Add(
            "IFCCOMPOSITECURVE(" +
            IfcText::List({Segment(Axes(0, 0, 1, 0), 100, line), Segment(Axes(100, 0, 1, 0), quarter, circle),
                           Segment(Axes(200, 100, 0, 1), 50, line)}) +
            ",.F.)");
        // up by one in ten over the first 100, then level
        gradient = f.Add("IFCGRADIENTCURVE(" +
                         IfcText::List({Segment(Axes(0, 5, 10, 1), 100.5, line),
                                        Segment(Axes(100, 15, 1, 0), quarter + 50, line)}) +
                         ",.F.," + horizontal + ",$)");
    }

    string At(const string& curve, double distance, double left, double above)
    {
        const string point =
            myFile.Add("IFCPOINTBYDISTANCEEXPRESSION(IFCLENGTHMEASURE(" + IfcText::Number(distance) + ")," +
                       IfcText::Number(left) + "," + IfcText::Number(above) + ",$," + curve + ")");
        return myFile.Add("IFCAXIS2PLACEMENTLINEAR(" + point + ",$,$)");
    }

    string horizontal, gradient;

private:
    string Direction(double x, double y)
    {
        return myFile.Add("IFCDIRECTION((" + IfcText::Number(x) + "," + IfcText::Number(y) + "))");
    }
    string Axes(double x, double y, double dx, double dy)
    {
        return myFile.Add("IFCAXIS2PLACEMENT2D(" + myFile.Point(x, y) + "," + Direction(dx, dy) + ")");
    }
    string Segment(const string& axes, double length, const string& parent)
    {
        return myFile.Add("IFCCURVESEGMENT(.CONTINUOUS.," + axes + ",IFCLENGTHMEASURE(0.),IFCLENGTHMEASURE(" +
                          IfcText::Number(length) + ")," + parent + ")");
    }

    IfcText& myFile;
};

const string Metres = "IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.)";

TEST(IfcAlignment, ElementsStandWhereTheirDistanceTells)
{
    IfcText f("IFC4X3_ADD2", Metres);
    Road road(f);
    const auto put = [&](const char* name, const string& axes) {
        f.Product("IFCSIGNAL", name, f.Shape({f.Box(2, 4, 6)}),
                  f.Add("IFCLINEARPLACEMENT($," + axes + ",$)"));
    };
    put("on the line", road.At(road.gradient, 50, 3, 1));
    put("on the arc", road.At(road.gradient, 100 + 25 * M_PI, 0, 0));
    put("after the arc", road.At(road.gradient, 100 + 50 * M_PI + 20, 0, 0));
    const ReadBack model(f.Text());
    const auto middle = [&](const char* name, std::size_t k) {
        const Node* part = model.Named(name, 'P');
        return part == nullptr ? NAN : (part->low[k] + part->high[k]) / 2;
    };
    EXPECT_TRUE(model.reports.empty());
    EXPECT_NEAR(middle("on the line", 0), 50'000, 1e-3);
    EXPECT_NEAR(middle("on the line", 1), 3'000, 1e-3);
    EXPECT_NEAR(middle("on the line", 2), 10'000 + 1'000 + 3'000, 1);
    EXPECT_NEAR(middle("on the arc", 0), 100'000 + 100'000 * std::sqrt(0.5), 1e-3);
    EXPECT_NEAR(middle("on the arc", 1), 100'000 * (1 - std::sqrt(0.5)), 1e-3);
    EXPECT_NEAR(middle("after the arc", 0), 200'000, 1e-3);
    EXPECT_NEAR(middle("after the arc", 1), 120'000, 1e-3);
    EXPECT_NEAR(middle("after the arc", 2), 15'000 + 3'000, 1);
    // turned with the way: 4 metres across it
    const Node* turned = model.Named("after the arc", 'P');
    ASSERT_NE(turned, nullptr);
    EXPECT_NEAR(turned->high[0] - turned->low[0], 4'000, 1e-3);
}

TEST(IfcAlignment, SectionsAndSweepsFollowTheWay)
{
    IfcText f("IFC4X3_ADD2", Metres);
    Road road(f);
    const string wide = f.Rectangle(4, 1);
    const string narrow = f.Rectangle(2, 1);
    const double end = 100 + 50 * M_PI;
    f.Product("IFCROAD", "sections",
              f.Shape({f.Add("IFCSECTIONEDSOLIDHORIZONTAL(" + road.horizontal + ",(" + wide + "," + wide +
                             "," + narrow + "),(" + road.At(road.horizontal, 0, 0, 0) + "," +
                             road.At(road.horizontal, end, 0, 0) + "," +
                             road.At(road.horizontal, end + 50, 0, 0) + "))")}));
    f.Product(
        "IFCRAIL", "sweep",
        f.Shape({f.Add("IFCFIXEDREFERENCESWEPTAREASOLID(" + wide + ",$," + road.horizontal +
                       ",IFCLENGTHMEASURE(20.),IFCLENGTHMEASURE(120.)," + f.Direction(0, 0, 1) + ")")}));
    const ReadBack model(f.Text());
    const std::vector<std::pair<const char*, double>> volumes = {{"sections", 4 * end + 3 * 50},
                                                                 {"sweep", 4 * 100}};
    for (const auto& [name, volume] : volumes) {
        SCOPED_TRACE(name);
        const Node* part = model.Named(name, 'P');
        ASSERT_NE(part, nullptr);
        EXPECT_NEAR(part->enclosed / (volume * 1e9), 1, 2e-3);
        EXPECT_EQ(part->openEdges, 0);
    }
    EXPECT_NEAR(model.Named("sections", 'P')->high[0], 202'000, 10);
}

TEST(IfcAlignment, ClothoidsBendMoreAndMore)
{
    // constant 100: after 100 m the curvature is 1/100, the heading half a radian
    IfcText f("IFC4X3_ADD2", Metres);
    const string axes =
        f.Add("IFCAXIS2PLACEMENT2D(" + f.Point(0, 0) + "," + f.Add("IFCDIRECTION((1.,0.))") + ")");
    const string clothoid = f.Add("IFCCLOTHOID(" + axes + ",100.)");
    const string segment = f.Add("IFCCURVESEGMENT(.CONTINUOUS.," + axes +
                                 ",IFCLENGTHMEASURE(0.),IFCLENGTHMEASURE(100.)," + clothoid + ")");
    const string curve = f.Add("IFCCOMPOSITECURVE((" + segment + "),.F.)");
    const string point = f.Add("IFCPOINTBYDISTANCEEXPRESSION(IFCLENGTHMEASURE(100.),$,$,$," + curve + ")");
    f.Product("IFCSIGNAL", "end", f.Shape({f.Box(0.002, 0.002, 0.002)}),
              f.Add("IFCLINEARPLACEMENT($," + f.Add("IFCAXIS2PLACEMENTLINEAR(" + point + ",$,$)") + ",$)"));
    const ReadBack model(f.Text());
    const Node* part = model.Named("end", 'P');
    ASSERT_NE(part, nullptr);
    // NOTE: x = s (1 - h^2 / 10 + h^4 / 216 - ...), y = s (h / 3 - h^3 / 42 + h^5 / 1320 - ...), h = 1 / 2
    EXPECT_NEAR((part->low[0] + part->high[0]) / 2, 97'528.77, 0.5);
    EXPECT_NEAR((part->low[1] + part->high[1]) / 2, 16'371.4, 0.5);
}

TEST(IfcAlignment, SpiralsTurnAsTheirTermsSay)
{
    // Metres; headings after s of a segment of 80.
    constexpr double L = 80;
    const struct
    {
        const char* spiral;
        double (*heading)(double s);
    } cases[] = {
        {"IFCSECONDORDERPOLYNOMIALSPIRAL($,90.,-120.,200.)",
         [](double s) { return s * s * s / (3 * 90 * 90 * 90.) - s * s / (2 * 120 * 120.) + s / 200; }},
        {"IFCTHIRDORDERPOLYNOMIALSPIRAL($,-80.,$,$,150.)",
         [](double s) { return -std::pow(s / 80, 4) / 4 + s / 150; }},
        {"IFCSEVENTHORDERPOLYNOMIALSPIRAL($,70.,$,-75.,$,$,$,$,$)",
         [](double s) { return std::pow(s / 70, 8) / 8 - std::pow(s / 75, 6) / 6; }},
        {"IFCCOSINESPIRAL($,-100.,100.)",
         [](double s) { return s / 100 - L / (M_PI * 100) * std::sin(M_PI * s / L); }},
        {"IFCSINESPIRAL($,-300.,90.,$)",
         [](double s) {
             return s * s / (2 * 90 * 90) + L / (2 * M_PI * 300) * (std::cos(2 * M_PI * s / L) - 1);
         }},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.spiral);
        double x = 0;
        double y = 0;
        constexpr int Steps = 20000;
        for (int i = 0; i < Steps; ++i) {
            const double heading = test.heading(L * (i + 0.5) / Steps);
            x += std::cos(heading) * L / Steps;
            y += std::sin(heading) * L / Steps;
        }
        IfcText f("IFC4X3_ADD2", Metres);
        const string axes =
            f.Add("IFCAXIS2PLACEMENT2D(" + f.Point(0, 0) + "," + f.Add("IFCDIRECTION((1.,0.))") + ")");
        const string segment =
            f.Add("IFCCURVESEGMENT(.CONTINUOUS.," + axes + ",IFCLENGTHMEASURE(0.),IFCLENGTHMEASURE(80.)," +
                  f.Add(test.spiral) + ")");
        const string curve = f.Add("IFCCOMPOSITECURVE((" + segment + "),.F.)");
        const string point = f.Add("IFCPOINTBYDISTANCEEXPRESSION(IFCLENGTHMEASURE(80.),$,$,$," + curve + ")");
        f.Product(
            "IFCSIGNAL", "end", f.Shape({f.Box(0.002, 0.002, 0.002)}),
            f.Add("IFCLINEARPLACEMENT($," + f.Add("IFCAXIS2PLACEMENTLINEAR(" + point + ",$,$)") + ",$)"));
        const ReadBack model(f.Text());
        const Node* part = model.Named("end", 'P');
        ASSERT_NE(part, nullptr);
        EXPECT_NEAR((part->low[0] + part->high[0]) / 2, 1000 * x, 1);
        EXPECT_NEAR((part->low[1] + part->high[1]) / 2, 1000 * y, 1);
    }
}

} // namespace
} // namespace ifctest
