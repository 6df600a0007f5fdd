#include "tests/apps/render/RenderTool.h"

#include <algorithm>

using namespace OV::Test;

namespace
{

struct RenderUsage : RenderTool
{
};

/// An environment in which no GL can be had.
const std::vector<std::string> WithoutGL = {"__EGL_VENDOR_LIBRARY_FILENAMES=/nonexistent"};

struct WrongUsage
{
    const char* label;
    std::vector<std::string> arguments;
    const char* named; ///< what the line must name
};

std::ostream& operator<<(std::ostream& stream, const WrongUsage& usage)
{
    return stream << usage.label;
}

struct RenderWrongUsage : RenderTool, ::testing::WithParamInterface<WrongUsage>
{
};

} // namespace

TEST_F(RenderUsage, HelpNamesWhatThereIsAndNeedsNoGL)
{
    for (const char* flag : {"--help", "-h"})
    {
        const ProcessResult result = Run({flag}, WithoutGL);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.errors, "");
        EXPECT_NE(result.output.find("Usage: orvane-render [options] MODEL... -o OUT.png"), std::string::npos);
        // That every option has its line is looked at from inside, by the options of the parser.
        for (const char* part : {"--pick X,Y", "none, msaa", "iso, front, back, left, right, top",
                                 "0 done, 1 failed, 2 wrong usage"})
        {
            EXPECT_NE(result.output.find(part), std::string::npos) << part;
        }
    }
}

TEST_F(RenderUsage, VersionIsThatOfTheProjectAndNeedsNoGL)
{
    const ProcessResult result = Run({"--version"}, WithoutGL);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "orvane-render " ORVANE_VERSION "\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(RenderUsage, FormatsAreListedOneALineAndNeedNoGL)
{
    const ProcessResult result = Run({"--list-formats"}, WithoutGL);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    for (const char* extension : {" .ifc", " .gltf", " .glb", " .obj", " .3ds", " .dae", " .fbx"})
    {
        EXPECT_NE(result.output.find(extension), std::string::npos) << extension;
    }
    EXPECT_GT(std::count(result.output.begin(), result.output.end(), '\n'), 20);
}

TEST_P(RenderWrongUsage, EndsWithStatusTwoAndOneLineThatNamesIt)
{
    const std::string output = folder.Path("out.png");
    std::vector<std::string> arguments = GetParam().arguments;
    std::replace(arguments.begin(), arguments.end(), std::string("OUT"), output);
    std::replace(arguments.begin(), arguments.end(), std::string("MODEL"), WriteSquare());
    const std::vector<std::string> before = FilesIn(folder.Path());
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    EXPECT_EQ(result.errors.rfind("orvane-render: ", 0), 0u) << result.errors;
    EXPECT_NE(result.errors.find(GetParam().named), std::string::npos) << result.errors;
    EXPECT_NE(result.errors.find("--help"), std::string::npos) << result.errors;
    EXPECT_EQ(FilesIn(folder.Path()), before);
}

INSTANTIATE_TEST_SUITE_P(
    CommandLine, RenderWrongUsage,
    ::testing::Values(
        WrongUsage{"Nothing", {}, "MODEL is required"}, WrongUsage{"NoOutput", {"MODEL"}, "-o OUT.png is required"},
        WrongUsage{"NoModel", {"-o", "OUT"}, "MODEL is required"},
        WrongUsage{"OutputWithoutName", {"MODEL", "-o"}, "--output"},
        WrongUsage{"UpAxis", {"MODEL", "-o", "OUT", "--up-axis", "x"}, "is not y or z"},
        WrongUsage{"PixelRatioTooSmall", {"MODEL", "-o", "OUT", "--pixel-ratio", "0.4"}, "0.5 to 8"},
        WrongUsage{"PixelRatioNoNumber", {"MODEL", "-o", "OUT", "--pixel-ratio", "nan"}, "0.5 to 8"},
        WrongUsage{"DistanceOfFive", {"MODEL", "-o", "OUT", "--distance", "1,2,3,4,5"}, "is not 6 numbers"},
        WrongUsage{"DistanceNoNumber", {"MODEL", "-o", "OUT", "--distance", "1,2,3,4,5,inf"}, "is not 6 numbers"},
        WrongUsage{"AngleOfSix", {"MODEL", "-o", "OUT", "--angle", "1,2,3,4,5,6"}, "is not 9 numbers"},
        WrongUsage{"FormatOfAFile", {"MODEL", "-o", "OUT", "--format", "obj"}, "only a model from standard input has one"},
        WrongUsage{"FormatUnknown", {"-", "-o", "OUT", "--format", "house"}, "'house' is not an ending such as obj"},
        WrongUsage{"FormatEmpty", {"-", "-o", "OUT", "--format", ""}, "--format: '' is not an ending"},
        WrongUsage{"InputTwice", {"-", "-", "-o", "OUT"}, "standard input holds one model"},
        WrongUsage{"TwoOutputs", {"MODEL", "-o", "OUT", "-o", "OUT"}, "--output"},
        WrongUsage{"UnknownOption", {"MODEL", "-o", "OUT", "--bogus"}, "--bogus"},
        WrongUsage{"SizeZero", {"MODEL", "-o", "OUT", "--size", "0x0"}, "the smallest is 1x1"},
        WrongUsage{"WidthZero", {"MODEL", "-o", "OUT", "--size", "0x5"}, "the smallest is 1x1"},
        WrongUsage{"HeightZero", {"MODEL", "-o", "OUT", "--size", "5x0"}, "the smallest is 1x1"},
        WrongUsage{"SizeNegative", {"MODEL", "-o", "OUT", "--size=-5x5"}, "the smallest is 1x1"},
        WrongUsage{"SizeWithoutHeight", {"MODEL", "-o", "OUT", "--size", "5"}, "--size: '5'"},
        WrongUsage{"SizeOfThree", {"MODEL", "-o", "OUT", "--size", "5x5x5"}, "--size: '5x5x5'"},
        WrongUsage{"SizeOfWords", {"MODEL", "-o", "OUT", "--size", "axb"}, "--size: 'axb'"},
        WrongUsage{"SizeWithRest", {"MODEL", "-o", "OUT", "--size", "5x5px"}, "--size: '5x5px'"},
        WrongUsage{"SizeEmpty", {"MODEL", "-o", "OUT", "--size", ""}, "--size"},
        WrongUsage{"PickOfOne", {"MODEL", "--pick", "5"}, "--pick: '5' is not a pixel X,Y"},
        WrongUsage{"PickOfThree", {"MODEL", "--pick", "5,5,5"}, "--pick: '5,5,5' is not a pixel X,Y"},
        WrongUsage{"PickOfWords", {"MODEL", "--pick", "a,b"}, "--pick: 'a,b' is not a pixel X,Y"},
        WrongUsage{"PickOfParts", {"MODEL", "--pick", "5.5,5"}, "--pick: '5.5,5' is not a pixel X,Y"},
        WrongUsage{"PickEmpty", {"MODEL", "-o", "OUT", "--pick", ""}, "--pick"},
        WrongUsage{"PickOnTheLeft", {"MODEL", "--pick=-1,5"}, "'-1,5' is not in the picture"},
        WrongUsage{"PickAbove", {"MODEL", "--pick=5,-1"}, "'5,-1' is not in the picture"},
        WrongUsage{"PickOnTheRight", {"MODEL", "--pick", "1280,5"}, "which ends at 1279,719"},
        WrongUsage{"PickBelow", {"MODEL", "--size", "9x7", "--pick", "5,7"}, "which ends at 8,6"},
        WrongUsage{"PickTwice", {"MODEL", "--pick", "5,5", "--pick", "6,6"}, "--pick"},
        WrongUsage{"PickHuge", {"MODEL", "--pick", "99999999999,5"}, "--pick"},
        WrongUsage{"FramesWithoutOutput", {"MODEL", "--frames", "3"}, "-o OUT.png is required"},
        WrongUsage{"SamplesNegative", {"MODEL", "-o", "OUT", "--samples=-1"}, "--samples"},
        WrongUsage{"SamplesEmpty", {"MODEL", "-o", "OUT", "--samples", ""}, "--samples: '' is not a number"},
        WrongUsage{"DpiEmpty", {"MODEL", "-o", "OUT", "--dpi", ""}, "--dpi: '' is not a number"},
        WrongUsage{"NorthEmpty", {"MODEL", "-o", "OUT", "--north", ""}, "--north: '' is not a number"},
        WrongUsage{"SamplesTooMany", {"MODEL", "-o", "OUT", "--samples", "65"}, "0 to 64"},
        WrongUsage{"ViewUnknown", {"MODEL", "-o", "OUT", "--view", "up"}, "--view: 'up' is not one of iso, front"},
        WrongUsage{"ViewAndEye", {"MODEL", "-o", "OUT", "--view", "iso", "--eye", "1,2,3"}, "--eye"},
        WrongUsage{"EyeEmpty", {"MODEL", "-o", "OUT", "--eye", ""}, "--eye: '' is not three numbers"},
        WrongUsage{"TargetEmpty", {"MODEL", "-o", "OUT", "--eye", "1,2,3", "--target", ""}, "--target: ''"},
        WrongUsage{"UpEmpty", {"MODEL", "-o", "OUT", "--eye", "1,2,3", "--up", ""}, "--up: ''"},
        WrongUsage{"FogEmpty", {"MODEL", "-o", "OUT", "--fog", ""}, "--fog: ''"},
        WrongUsage{"EditEmpty", {"MODEL", "-o", "OUT", "--edit", ""}, "--edit: '' is not the name of a node"},
        WrongUsage{"PocheEmpty", {"MODEL", "-o", "OUT", "--clip", "0,0,1,0,0,0", "--poche", ""}, "--poche: ''"},
        WrongUsage{"EyeOfTwo", {"MODEL", "-o", "OUT", "--eye", "1,2"}, "--eye: '1,2' is not three numbers"},
        WrongUsage{"EyeOfFour", {"MODEL", "-o", "OUT", "--eye", "1,2,3,4"}, "--eye"},
        WrongUsage{"EyeNotFinite", {"MODEL", "-o", "OUT", "--eye", "1,nan,3"}, "--eye"},
        WrongUsage{"EyeInfinite", {"MODEL", "-o", "OUT", "--eye", "1,inf,3"}, "--eye"},
        WrongUsage{"EyeOfWords", {"MODEL", "-o", "OUT", "--eye", "a,b,c"}, "--eye"},
        WrongUsage{"EyeWithGap", {"MODEL", "-o", "OUT", "--eye", "1,,3"}, "--eye"},
        WrongUsage{"TargetAlone", {"MODEL", "-o", "OUT", "--target", "1,2,3"}, "--eye"},
        WrongUsage{"UpAlone", {"MODEL", "-o", "OUT", "--up", "1,2,3"}, "--eye"},
        WrongUsage{"AngleZero", {"MODEL", "-o", "OUT", "--fov", "0"}, "1 to 170"},
        WrongUsage{"AngleTooWide", {"MODEL", "-o", "OUT", "--fov", "171"}, "1 to 170"},
        WrongUsage{"AngleNoNumber", {"MODEL", "-o", "OUT", "--fov", "nan"}, "--fov"},
        WrongUsage{"AngleWord", {"MODEL", "-o", "OUT", "--fov", "wide"}, "--fov"},
        WrongUsage{"ColourWord", {"MODEL", "-o", "OUT", "--background", "reddish"}, "--background: 'reddish'"},
        WrongUsage{"ColourShort", {"MODEL", "-o", "OUT", "--background", "fff"}, "--background"},
        WrongUsage{"ColourLong", {"MODEL", "-o", "OUT", "--background", "ffffff0"}, "--background"},
        WrongUsage{"ColourWithSign", {"MODEL", "-o", "OUT", "--background=-fffff"}, "--background"},
        WrongUsage{"FogOfOne", {"MODEL", "-o", "OUT", "--fog", "5"}, "--fog"},
        WrongUsage{"FogWithoutDepth", {"MODEL", "-o", "OUT", "--fog", "5,5"}, "the end beyond the start"},
        WrongUsage{"FogBackwards", {"MODEL", "-o", "OUT", "--fog", "6,5"}, "the end beyond the start"},
        WrongUsage{"FogNegative", {"MODEL", "-o", "OUT", "--fog=-1,5"}, "not negative"},
        WrongUsage{"GroundWord", {"MODEL", "-o", "OUT", "--ground", "grass"}, "--ground: 'grass' is not"},
        WrongUsage{"GroundShort", {"MODEL", "-o", "OUT", "--ground", "#FFF"}, "--ground"},
        WrongUsage{"GroundTwoSigns", {"MODEL", "-o", "OUT", "--ground", "##FFFFFF"}, "--ground"},
        WrongUsage{"GroundEmpty", {"MODEL", "-o", "OUT", "--ground", ""}, "--ground: ''"},
        WrongUsage{"NorthNoNumber", {"MODEL", "-o", "OUT", "--north", "nan"}, "--north"},
        WrongUsage{"NorthWord", {"MODEL", "-o", "OUT", "--north", "up"}, "--north"},
        WrongUsage{"SunWord", {"MODEL", "-o", "OUT", "--sun", "noon"}, "--sun: 'noon' is no direction X,Y,Z and no time"},
        WrongUsage{"SunEmpty", {"MODEL", "-o", "OUT", "--sun", ""}, "--sun: '' is no direction"},
        WrongUsage{"SunWithoutOffset", {"MODEL", "-o", "OUT", "--sun", "2026-06-21T15:00"}, "lacks the offset from UTC"},
        WrongUsage{"SunOnNoDay", {"MODEL", "-o", "OUT", "--sun", "2026-02-29T15:00Z"}, "01 to 28 in that month"},
        WrongUsage{"SunWithoutLength", {"MODEL", "-o", "OUT", "--sun", "0,0,0"}, "--sun: '0,0,0' is not a direction"},
        WrongUsage{"SunOfTwo", {"MODEL", "-o", "OUT", "--sun", "1,2"}, "--sun: '1,2' is no direction"},
        WrongUsage{"SunNotFinite", {"MODEL", "-o", "OUT", "--sun", "1,nan,2"}, "--sun: '1,nan,2' is no direction"},
        WrongUsage{"PlaceAlone", {"MODEL", "-o", "OUT", "--place", "1,2"}, "--place: it is for --sun or --sun-study"},
        WrongUsage{"PlaceTooFarNorth", {"MODEL", "-o", "OUT", "--sun", "2026-06-21T15:00Z", "--place", "90.1,0"}, "--place: '90.1,0'"},
        WrongUsage{"PlaceTooFarEast", {"MODEL", "-o", "OUT", "--sun", "2026-06-21T15:00Z", "--place", "0,180.1"}, "--place"},
        WrongUsage{"PlaceOfOne", {"MODEL", "-o", "OUT", "--sun", "2026-06-21T15:00Z", "--place", "52"}, "a place LAT,LON"},
        WrongUsage{"PlaceOfWords", {"MODEL", "-o", "OUT", "--sun", "2026-06-21T15:00Z", "--place", "a,b"}, "--place: 'a,b'"},
        WrongUsage{"PlaceOfADirection", {"MODEL", "-o", "OUT", "--sun", "1,1,1", "--place", "52,13"}, "leave it out"},
        WrongUsage{"StudyWord", {"MODEL", "-o", "OUT", "--sun-study", "day"}, "--sun-study: 'day': it has to be FIRST/LAST/STEP"},
        WrongUsage{"StudyBackwards", {"MODEL", "-o", "OUT", "--sun-study", "2026-03-20T17:00/09:00/1h"}, "after the first one"},
        WrongUsage{"StudyAndSun", {"MODEL", "-o", "OUT", "--sun", "1,1,1", "--sun-study", "2026-03-20T09:00/17:00/1h"}, "--sun"},
        WrongUsage{"StudyWithStats", {"MODEL", "-o", "OUT", "--stats", "--sun-study", "2026-03-20T09:00/17:00/1h"}, "without --pick and --stats"},
        WrongUsage{"HoursAlone", {"MODEL", "-o", "OUT", "--sun-hours", "ground"}, "--sun-study"},
        WrongUsage{"HoursEmpty", {"MODEL", "-o", "OUT", "--sun-study", "2026-03-20T09:00/17:00/1h", "--sun-hours", ""}, "--sun-hours: ''"},
        WrongUsage{"EdgesAboveOne", {"MODEL", "-o", "OUT", "--edges", "1.5"}, "--edges: an opacity is 0 to 1"},
        WrongUsage{"EdgesBelowZero", {"MODEL", "-o", "OUT", "--edges", "-0.1"}, "--edges: an opacity is 0 to 1"},
        WrongUsage{"EdgesNegativeAfterSign", {"MODEL", "-o", "OUT", "--edges=-1"}, "--edges: an opacity is 0 to 1"},
        WrongUsage{"EdgesNoNumber", {"MODEL", "-o", "OUT", "--edges", "nan"}, "--edges: an opacity is 0 to 1"},
        WrongUsage{"EdgesInfinite", {"MODEL", "-o", "OUT", "--edges", "inf"}, "--edges: an opacity is 0 to 1"},
        WrongUsage{"EdgesTooLargeANumber", {"MODEL", "-o", "OUT", "--edges=1e99"}, "--edges"},
        WrongUsage{"EdgesWord", {"MODEL", "-o", "OUT", "--edges=thick"}, "--edges"},
        WrongUsage{"EdgesNothingAfterSign", {"MODEL", "-o", "OUT", "--edges="}, "--edges"},
        WrongUsage{"EdgesTwice", {"--edges", "MODEL", "-o", "OUT", "--edges", "0.5"}, "--edges"},
        WrongUsage{"EdgeColourAlone", {"MODEL", "-o", "OUT", "--edge-color", "FF0000"}, "--edges"},
        WrongUsage{"EdgeColourWord", {"MODEL", "-o", "OUT", "--edges", "--edge-color", "reddish"}, "--edge-color: 'reddish'"},
        WrongUsage{"EdgeColourWithSign", {"MODEL", "-o", "OUT", "--edges", "--edge-color=-00000"}, "--edge-color"},
        WrongUsage{"OcclusionWithValue", {"MODEL", "-o", "OUT", "--ao=strong"}, "--ao: it takes no value; leave out '=strong'"},
        WrongUsage{"SkyWithNumber", {"MODEL", "-o", "OUT", "--sky=-1"}, "--sky: it takes no value; leave out '=-1'"},
        WrongUsage{"SkyWithNothing", {"MODEL", "-o", "OUT", "--sky="}, "--sky: it takes no value; leave out '='"},
        WrongUsage{"HelpWithValue", {"--help=sky"}, "--help: it takes no value"},
        WrongUsage{"OcclusionKindAlone", {"MODEL", "-o", "OUT", "--ao-kind", "spiral"}, "--ao"},
        WrongUsage{"OcclusionKindUnknown", {"MODEL", "-o", "OUT", "--ao", "--ao-kind", "rays"}, "horizon or spiral"},
        WrongUsage{"OcclusionWithoutRadius", {"MODEL", "-o", "OUT", "--ao", "--ao-radius", "0"}, "a length is above 0"},
        WrongUsage{"OcclusionOfNoRadius", {"MODEL", "-o", "OUT", "--ao", "--ao-radius", "nan"}, "a length is above 0"},
        WrongUsage{"OcclusionTooStrong", {"MODEL", "-o", "OUT", "--ao", "--ao-strength", "2.1"}, "a factor is 0 to 2"},
        WrongUsage{"AntialiasingUnknown", {"MODEL", "-o", "OUT", "--aa", "taa"}, "--aa: 'taa' is not one of none, msaa, fxaa"},
        WrongUsage{"AntialiasingEmpty", {"MODEL", "-o", "OUT", "--aa", ""}, "--aa: '' is not one of"},
        WrongUsage{"AntialiasingTwice", {"MODEL", "-o", "OUT", "--aa", "fxaa", "--aa", "ssaa"}, "--aa"},
        WrongUsage{"SamplesWithNone", {"MODEL", "-o", "OUT", "--aa", "none", "--samples", "4"}, "only msaa has samples"},
        WrongUsage{"SamplesWithFilter", {"MODEL", "-o", "OUT", "--aa", "fxaa", "--samples", "0"}, "only msaa has samples"},
        WrongUsage{"SamplesWithSupersampling", {"MODEL", "-o", "OUT", "--aa", "ssaa", "--samples", "2"}, "only msaa"},
        WrongUsage{"TitleWithoutText", {"MODEL", "-o", "OUT", "--title"}, "--title"},
        WrongUsage{"WatermarkInTheSky", {"MODEL", "-o", "OUT", "--sky", "--watermark", "mark.png"}, "the --sky"},
        WrongUsage{"NoFrames", {"MODEL", "-o", "OUT", "--frames", "0"}, "--frames"},
        WrongUsage{"FramesNegative", {"MODEL", "-o", "OUT", "--frames=-3"}, "--frames"}),
    [](const auto& info) { return info.param.label; });
