#include "orvane_host/import/detail/StepSite.h"

#include "orvane_host/import/ModelImporter.h"
#include "tests/orvane_host/import/TinyModels.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

using namespace OV::Host;
using namespace OV::Test;

namespace
{

StepSite Read(const std::string& data)
{
    std::istringstream stream("ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('IFC2X3'));\nENDSEC;\nDATA;\n" + data
                              + "ENDSEC;\nEND-ISO-10303-21;\n");
    return ReadStepSite(stream);
}

std::string Site(const std::string& latitude, const std::string& longitude)
{
    return "#7=IFCSITE('g',#1,'n',$,$,#2,#3,$,.ELEMENT.," + latitude + "," + longitude + ",0.,$,$);\n";
}

/// None tells as 999.
double NorthOf(const std::string& ratios)
{
    return Read("#3=IFCDIRECTION(" + ratios + ");\n#4=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-5,#1,#3);\n")
        .north.value_or(999.0);
}

} // namespace

TEST(StepSite, ReadsDegreesMinutesSecondsAndMillionths)
{
    const struct
    {
        const char* latitude;
        const char* longitude;
        double north;
        double east;
    } cases[] = {
        {"(52,31,0)", "(13,24,0)", 52.0 + 31.0 / 60.0, 13.4},
        {"(-33,-52,-4)", "(151,12,26)", -(33.0 + 52.0 / 60.0 + 4.0 / 3600.0), 151.0 + 12.0 / 60.0 + 26.0 / 3600.0},
        {"(0,-30,0)", "(-78,-28,-10,-500000)", -0.5, -(78.0 + 28.0 / 60.0 + 10.5 / 3600.0)},
        {"( 90 , 0 , 0 )", "(-180,0,0,0)", 90.0, -180.0},
        {"(+1,+2,+3)", "(0,0,0)", 1.0 + 2.0 / 60.0 + 3.0 / 3600.0, 0.0},
    };
    for (const auto& wanted : cases)
    {
        const StepSite site = Read(Site(wanted.latitude, wanted.longitude));
        ASSERT_TRUE(site.place) << wanted.latitude;
        EXPECT_NEAR(site.place->latitude, wanted.north, 1e-9);
        EXPECT_NEAR(site.place->longitude, wanted.east, 1e-9);
    }
}

TEST(StepSite, TakesWhatIsDamagedForNotTold)
{
    for (const char* angle :
         {"$", "*", "()", "(1)", "(1,2)", "(1,2,3,4,5)", "(1,2,x)", "(1.5,2,3)", "(1,-2,3)", "(1,60,0)", "(1,0,60)",
          "(1,0,0,1000000)", "(99999999999,0,0)", "(1,2,3", "1,2,3", "(1,,3)", "((1,2,3))", "('1',2,3)", "(361,0,0)"})
    {
        EXPECT_FALSE(Read(Site(angle, "(13,24,0)")).place) << angle;
        EXPECT_FALSE(Read(Site("(52,31,0)", angle)).place) << angle;
    }
    EXPECT_FALSE(Read(Site("(90,0,1)", "(13,24,0)")).place);
    EXPECT_TRUE(Read(Site("(52,31,0)", "(90,0,1)")).place);
    EXPECT_FALSE(Read(Site("(52,31,0)", "(-180,0,-1)")).place);
    EXPECT_FALSE(Read(Site("(0,0,0)", "(0,0,0)")).place) << "stands for unknown";
    EXPECT_FALSE(Read("#7=IFCSITE('g',#1);\n").place);
    EXPECT_FALSE(Read("#7=IFCSITE();\n#=IFCSITE(;\n7=IFCSITE;\n#x=IFCSITE(1);\n").place);
    std::string cut = Site("(52,31,0)", "(13,24,0)");
    for (std::size_t length = 0; length + 1 < cut.size() - 1; ++length)
    {
        std::istringstream stream(cut.substr(0, length));
        EXPECT_FALSE(ReadStepSite(stream).place) << length;
    }
}

TEST(StepSite, TakesTheFirstSiteThatTells)
{
    const StepSite site =
        Read(Site("$", "(1,0,0)") + Site("(0,0,0)", "(0,0,0)") + Site("(52,31,0)", "(13,24,0)") + Site("(1,0,0)", "(1,0,0)"));
    ASSERT_TRUE(site.place);
    EXPECT_NEAR(site.place->longitude, 13.4, 1e-9);
}

TEST(StepSite, MindsStringsCommentsAndWhiteSpace)
{
    const StepSite site = Read("/* #7=IFCSITE('g',#1,'n',$,$,#2,#3,$,.E.,(1,0,0),(1,0,0),0.,$,$); */\n"
                               "#1=IFCPERSON('; #7=IFCSITE(''g'',#1,$,$,$,#2,#3,$,.E.,(2,0,0),(2,0,0),0.,$,$);');\n"
                               "#2=IFCPERSON('/*');\n"
                               "#7 = \r\n IFCSITE ( 'It''s, (a) ; /* \\X\\E9',#1,'n, m',$,$,#2,#3,/**/$,.ELEMENT.,\n"
                               "\t(52, 31, 0), (13, 24, /* min */ 0), 0. , $,$ ) ;\n");
    ASSERT_TRUE(site.place);
    EXPECT_NEAR(site.place->latitude, 52.0 + 31.0 / 60.0, 1e-9);
}

TEST(StepSite, PassesOverInstancesOfAnyLength)
{
    const StepSite site = Read("#1=IFCPERSON('" + std::string(3000000, 'x') + "');\n"
                               + "#2=IFCPOLYLOOP((" + std::string(200000, '(') + "));\n" + Site("(52,31,0)", "(13,24,0)"));
    ASSERT_TRUE(site.place);
    EXPECT_FALSE(Read("#7=IFCSITE('" + std::string(3000000, 'x')
                      + "',#1,'n',$,$,#2,#3,$,.ELEMENT.,(52,31,0),(13,24,0),0.,$,$);\n")
                     .place);
    EXPECT_FALSE(Read("#1=IFCPERSON('never closed;\n" + Site("(52,31,0)", "(13,24,0)")).place);
    EXPECT_FALSE(Read("/* never closed\n" + Site("(52,31,0)", "(13,24,0)")).place);
}

TEST(StepSite, ReadsTrueNorthClockwiseFromY)
{
    EXPECT_NEAR(NorthOf("(0.,1.)"), 0.0, 1e-12);
    EXPECT_NEAR(NorthOf("(6.1232340E-17,1.)"), 0.0, 1e-12);
    EXPECT_NEAR(NorthOf("(1.,0.)"), 90.0, 1e-12);
    EXPECT_NEAR(NorthOf("(-5.E-1,.5)"), -45.0, 1e-12);
    EXPECT_NEAR(NorthOf("(0.,-2.)"), 180.0, 1e-12);
    EXPECT_NEAR(NorthOf("(-0.,-2.)"), 180.0, 1e-12);
    EXPECT_NEAR(NorthOf("(1.,1.,0.)"), 45.0, 1e-12);
    for (const char* ratios : {"(0.,0.)", "(1.)", "(1.,2.,3.,4.)", "(x,1.)", "(nan,1.)", "(1.,inf)", "(1.E400,1.)",
                               "()", "$", "", "1.,0.", "(1.E308,1.E308)"})
    {
        const double north = NorthOf(ratios);
        EXPECT_TRUE(north == 999.0 || north == 45.0) << ratios;
    }
    EXPECT_EQ(NorthOf("(0.,0.)"), 999.0);
    EXPECT_EQ(NorthOf("(nan,1.)"), 999.0);
}

TEST(StepSite, FindsTheDirectionThatAContextNames)
{
    const std::string context = "#4=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-5,#1,";
    EXPECT_FALSE(Read(context + "$);\n").north);
    EXPECT_FALSE(Read(context + "#9);\n").north) << "there is none";
    EXPECT_FALSE(Read(context + "#4);\n").north) << "it is none";
    EXPECT_FALSE(Read("#5=IFCGEOMETRICREPRESENTATIONSUBCONTEXT($,'Model',3,1.E-5,#1,#3);\n#3=IFCDIRECTION((1.,0.));\n")
                     .north);
    const StepSite site = Read(context + "$);\n" + context + "#9);\n#8=IFCDIRECTION((0.,1.));\n#9=IFCDIRECTION((1.,0.));\n"
                               + Site("(52,31,0)", "(13,24,0)"));
    ASSERT_TRUE(site.north);
    EXPECT_NEAR(*site.north, 90.0, 1e-12);
    EXPECT_TRUE(site.place);
}

TEST(StepSite, IsInTheReportOfAnImport)
{
    for (const bool isolate : {false, true})
    {
        ImportOptions options;
        options.isolate = isolate;
        const ImportResult house = ModelImporter::Import(kTestModels + "IFC/AC14-FZK-Haus.ifc", options);
        ASSERT_TRUE(house) << house.error.Line();
        ASSERT_TRUE(house.report.place);
        EXPECT_NEAR(house.report.place->latitude, 52.0 + 31.0 / 60.0, 1e-9);
        EXPECT_NEAR(house.report.place->longitude, 13.4, 1e-9);
        ASSERT_TRUE(house.report.north);
        EXPECT_NEAR(*house.report.north, 0.0, 1e-9);
    }
    const ImportResult box = ModelImporter::Import(kTestModels + "OBJ/box.obj");
    ASSERT_TRUE(box) << box.error.Line();
    EXPECT_FALSE(box.report.place);
    EXPECT_FALSE(box.report.north);
}

TEST(StepSite, IsInTheReportOfAnImportOfUtf16)
{
    std::ifstream stream(kTestModels + "IFC/AC14-FZK-Haus.ifc", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    const std::u16string wide(text.begin(), text.end());
    const TemporaryFolder folder;
    for (const bool isBigEndian : {false, true})
    {
        WriteFile(folder.Path("house.ifc"), MarkedUtf16(wide, isBigEndian));
        const ImportResult house = ModelImporter::Import(folder.Path("house.ifc"));
        ASSERT_TRUE(house) << house.error.Line();
        ASSERT_TRUE(house.report.place);
        EXPECT_NEAR(house.report.place->latitude, 52.0 + 31.0 / 60.0, 1e-9);
        EXPECT_NEAR(house.report.place->longitude, 13.4, 1e-9);
        EXPECT_TRUE(house.report.north);
    }
}
