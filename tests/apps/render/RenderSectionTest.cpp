#include "tests/apps/render/RenderTool.h"
#include "tests/apps/render/SolidSection.h"

#include "orvane_host/import/ModelImporter.h"
#include "orvane_host/view/ViewFit.h"
#include "orvane/math/Matrix.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/scene/CameraNode.h"

#include <glm/geometric.hpp>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <array>
#include <memory>
#include <ostream>
#include <sstream>

namespace OV::Test
{

namespace
{

constexpr int Width = 1440;
constexpr int Height = 810;
constexpr Pixel Fill{255, 0, 255, 255};
/// Pixels at the rim of a section that may be either.
constexpr int Rim = 2;

struct Cut
{
    const char* label;
    glm::dvec3 normal;
    glm::dvec3 point;
    glm::dvec3 eye; ///< on the side that is cut away
    glm::dvec3 up;
    bool orthographic;
};

std::ostream& operator<<(std::ostream& stream, const Cut& cut)
{
    return stream << cut.label;
}

std::string Text(const glm::dvec3& v)
{
    std::ostringstream text;
    text << v.x << "," << v.y << "," << v.z;
    return text.str();
}

Vector ToVector(const glm::dvec3& v)
{
    return Vector(static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z));
}

class RenderSection : public RenderTool
{
protected:
    /// How a picture of a cut agrees with the solids of the model.
    struct Agreement
    {
        int inside = 0;    ///< pixels within sections
        int open = 0;      ///< those of them that are not filled
        int overfilled = 0; ///< pixels outside all sections that are filled
        std::string firstOpen;
    };

    /// Looks at the picture of a cut; the eye looks straight at the middle of the plane's point.
    Agreement Look(const std::string& model, const Cut& cut, const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> options = {"--size", std::to_string(Width) + "x" + std::to_string(Height),
                                            "--clip", Text(cut.normal) + "," + Text(cut.point), "--poche", "FF00FF",
                                            "--outline", "0", "--eye", Text(cut.eye), "--target", Text(cut.point),
                                            "--up", Text(cut.up)};
        if (cut.orthographic)
        {
            options.push_back("--ortho");
        }
        options.insert(options.end(), more.begin(), more.end());
        return Judge(Render(model, options), MaskOf(model, cut));
    }

private:
    static SectionMask MaskOf(const std::string& model, const Cut& cut)
    {
        Host::ImportResult import = Host::ModelImporter::Import(model);
        EXPECT_TRUE(import) << import.error.Line();
        Scene& scene = *import.scene;
        CameraNode& camera = *scene.GetCameraNode();
        scene.UpdateGraph(Width, Height);
        Host::ViewFitOptions fit;
        fit.aspect = static_cast<float>(Width) / Height;
        fit.fovDegrees = 35.0f;
        fit.orthographic = cut.orthographic;
        EXPECT_TRUE(Host::ViewFit::Look(camera, ToVector(cut.eye), ToVector(cut.point), ToVector(cut.up),
                                        import.report.boxMin, import.report.boxMax, fit));
        scene.UpdateGraph(Width, Height);
        CameraNodeES20 data(&camera);
        data.UpdateMVP(Width, Height, false);
        SectionMask mask(Width, Height, glm::dmat4(glm::make_mat4(data.GetMVP().m)));
        const std::vector<Solid> solids = FindClosedSolids(scene);
        EXPECT_FALSE(solids.empty());
        for (const Solid& solid : solids)
        {
            mask.Add(solid, {glm::normalize(cut.normal), cut.point});
        }
        return mask;
    }

    static Agreement Judge(const Picture& picture, const SectionMask& mask)
    {
        Agreement agreement;
        for (int y = Rim; y < Height - Rim; ++y)
        {
            for (int x = Rim; x < Width - Rim; ++x)
            {
                if (!mask.IsClear(x, y, Rim))
                {
                    continue;
                }
                const bool filled = ChannelDifference(picture.At(x, y), Fill) <= 1;
                agreement.inside += mask.IsInside(x, y);
                agreement.overfilled += filled && !mask.IsInside(x, y);
                if (mask.IsInside(x, y) && !filled && agreement.open++ == 0)
                {
                    std::ostringstream text;
                    text << "first at " << x << ", " << y << ": " << picture.At(x, y);
                    agreement.firstOpen = text.str();
                }
            }
        }
        return agreement;
    }
};

/// Solids in OBJ, box by box.
class Boxes
{
public:
    /// @param inward whether the faces face inward, as those of a cavity.
    Boxes& Add(const char* name, const glm::dvec3& low, const glm::dvec3& high, bool inward = false, bool lid = true)
    {
        m_text << "o " << name << "\n";
        for (int corner = 0; corner < 8; ++corner)
        {
            m_text << "v " << (corner & 1 ? high.x : low.x) << " " << (corner & 2 ? high.y : low.y) << " "
                   << (corner & 4 ? high.z : low.z) << "\n";
        }
        constexpr int faces[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
        for (const auto& face : faces)
        {
            if (!lid && &face == &faces[3])
            {
                continue;
            }
            m_text << "f";
            for (int i = 0; i < 4; ++i)
            {
                m_text << " " << m_first + face[inward ? 3 - i : i];
            }
            m_text << "\n";
        }
        m_first += 8;
        return *this;
    }

    std::string Text() const { return m_text.str(); }

private:
    std::ostringstream m_text;
    int m_first = 1;
};

/// Looks down the z axis on a plane across it.
Cut AcrossZ(double z)
{
    return {"", {0, 0, 1}, {0, 0, z}, {0, 0, 12}, {0, 1, 0}, true};
}

/// Those that fill their sections.
const char* const Filling[] = {"basic", "advanced", "phong", "monotone", "vertex-color"};

struct HouseSection : RenderSection, ::testing::WithParamInterface<Cut>
{
};

} // namespace

TEST_P(HouseSection, IsClosedWhereverItsSolidsAre)
{
    const Agreement agreement = Look(TestModel("IFC/AC14-FZK-Haus.ifc"), GetParam());
    EXPECT_GT(agreement.inside, 5000);
    EXPECT_EQ(agreement.open, 0) << "of " << agreement.inside << " pixels, " << agreement.firstOpen;
}

INSTANTIATE_TEST_SUITE_P(
    Planes, HouseSection,
    ::testing::Values(
        Cut{"Floor", {0, 1, 0}, {6, 0.5, -5}, {6, 30, -5}, {0, 0, -1}, true},
        Cut{"Windows", {0, 1, 0}, {6, 1.5, -5}, {6, 30, -5}, {0, 0, -1}, true},
        Cut{"UpperFloor", {0, 1, 0}, {6, 4, -5}, {6, 30, -5}, {0, 0, -1}, true},
        Cut{"Roof", {0, 1, 0}, {6, 5.5, -5}, {6, 30, -5}, {0, 0, -1}, true},
        Cut{"AcrossLeft", {1, 0, 0}, {3, 2.5, -5}, {40, 2.5, -5}, {0, 1, 0}, true},
        Cut{"AcrossRight", {1, 0, 0}, {8, 2.5, -5}, {40, 2.5, -5}, {0, 1, 0}, true},
        Cut{"AlongFront", {0, 0, 1}, {6, 2.5, -2}, {6, 2.5, 40}, {0, 1, 0}, true},
        Cut{"AlongMiddle", {0, 0, 1}, {6, 2.5, -4.7}, {6, 2.5, 40}, {0, 1, 0}, true},
        Cut{"AlongBack", {0, 0, -1}, {6, 2.5, -8}, {6, 2.5, -50}, {0, 1, 0}, true},
        Cut{"Slanted", {1, 0, 1}, {6, 2.5, -5}, {30, 2.5, 19}, {0, 1, 0}, true},
        Cut{"FromAbove", {0, 1, 0}, {6, 1.5, -5}, {22, 18, 12}, {0, 1, 0}, false}),
    [](const auto& info) { return info.param.label; });

TEST_F(RenderSection, ASolidWithinASolidDoesNotShowThroughTheSection)
{
    // The inner box begins below the plane and turns its front to the eye.
    const std::string model = WriteObj("nested.obj", Boxes().Add("outer", {-2, -2, -2}, {2, 2, 2})
                                                         .Add("inner", {-1, -1, -1}, {1, 1, 1}).Text());
    for (const char* look : Filling)
    {
        for (const double z : {1.5, 0.0})
        {
            const Agreement agreement = Look(model, AcrossZ(z), {"--look", look});
            EXPECT_GT(agreement.inside, 100000) << look;
            EXPECT_EQ(agreement.open, 0) << look << ", z " << z << ", " << agreement.firstOpen;
            EXPECT_EQ(agreement.overfilled, 0) << look << ", z " << z;
        }
    }
}

TEST_F(RenderSection, ACavityStaysOpen)
{
    const std::string model = WriteObj("hollow.obj", Boxes().Add("shell", {-2, -2, -2}, {2, 2, 2})
                                                         .Add("shell", {-1, -1, -1}, {1, 1, 1}, true).Text());
    const Agreement agreement = Look(model, AcrossZ(0));
    EXPECT_GT(agreement.inside, 100000);
    EXPECT_EQ(agreement.open, 0) << agreement.firstOpen;
    EXPECT_EQ(agreement.overfilled, 0);
}

TEST_F(RenderSection, WhatIsNotClosedIsNoSolid)
{
    // A vessel with something in it.
    const std::string model = WriteObj("vessel.obj", Boxes().Add("vessel", {-2, -2, -2}, {2, 2, 2}, true, false)
                                                         .Add("thing", {-1, -1, -1}, {1, 1, 1}).Text());
    const Agreement agreement = Look(model, AcrossZ(0));
    EXPECT_EQ(agreement.open, 0) << agreement.firstOpen;
    EXPECT_EQ(agreement.overfilled, 0);
}

TEST_F(RenderSection, TheOtherPlanesCutTheSectionToo)
{
    const std::string model = WriteObj("box.obj", Boxes().Add("box", {-2, -2, -2}, {2, 2, 2}).Text());
    const Cut cut = AcrossZ(1);
    const auto looks = [&](const char* corner)
    {
        const Picture picture = Render(model, {"--size", "101x101", "--clip", "0,0,1,0,0,1", "--clip", corner, "--poche",
                                               "FF00FF", "--outline", "0", "--eye", Text(cut.eye), "--ortho", "--target",
                                               Text(cut.point)});
        return std::pair(picture.At(40, 50), picture.At(60, 50));
    };
    const Pixel white{255, 255, 255, 255};
    EXPECT_EQ(looks("1,0,0,0,0,0"), std::pair(Fill, white));
    EXPECT_EQ(looks("-1,0,0,0,0,0"), std::pair(white, Fill));
}

TEST_F(RenderSection, TheOutlineOfACutLiesAboutTheFill)
{
    const std::string model = WriteObj("box.obj", Boxes().Add("box", {-2, -2, -2}, {2, 2, 2}).Text());
    const Picture picture = Render(model, {"--size", "200x200", "--clip", "0,0,1,0,0,0", "--poche", "FF00FF", "--outline",
                                           "0.5", "--outline-color", "00FF00", "--eye", "0,0,12"});
    EXPECT_EQ(picture.At(100, 100), Fill);
    EXPECT_GT(picture.Count({0, 255, 0, 255}), 100) << "the inner faces between the plane and the fill";
}

TEST_F(RenderSection, WithoutFillTheInsidesShow)
{
    const std::string model = WriteObj("box.obj", Boxes().Add("box", {-2, -2, -2}, {2, 2, 2}).Text());
    const Picture picture = Render(model, {"--size", "101x101", "--clip", "0,0,1,0,0,0", "--poche", "off", "--outline",
                                           "0", "--eye", "0,0,12"});
    EXPECT_GT(picture.At(50, 50).r, picture.At(50, 50).g + 40) << "the back of the box is red";
}

TEST_F(RenderSection, WhatIsNotCutHasNoFillOnItsBacks)
{
    // One colour on a box that is cut and on a square below that turns its back to the eye.
    const std::string model = WriteObj("backs.obj", Boxes().Add("box", {-2, -2, -2}, {-1, 2, 2}).Text()
                                                        + "o back\nv 0 -1 -2\nv 0 1 -2\nv 2 1 -2\nv 2 -1 -2\n"
                                                          "f 9 10 11 12\n");
    const Picture picture = Render(model, {"--size", "101x101", "--clip", "0,0,1,0,0,0", "--poche", "FF00FF", "--outline",
                                           "0", "--eye", "0,0,12", "--target", "0,0,0", "--ortho"});
    EXPECT_EQ(picture.At(30, 50), Fill);
    EXPECT_EQ(picture.At(62, 50), (Pixel{255, 255, 255, 255}));
}

TEST_F(RenderSection, SamplesOfAPixelAreCutAlikeFarFromTheOrigin)
{
    const std::string model = WriteObj("far.obj", Boxes().Add("box", {998, -2, -2}, {1002, 2, 2}).Text());
    const Cut cut{"", {1, 0, 0}, {1001, 0, 0}, {1009, 5, 6}, {0, 1, 0}, false};
    for (const char* look : Filling)
    {
        const Agreement agreement = Look(model, cut, {"--look", look, "--samples", "4"});
        EXPECT_GT(agreement.inside, 50000) << look;
        EXPECT_EQ(agreement.open, 0) << look << ", " << agreement.firstOpen;
        EXPECT_EQ(agreement.overfilled, 0) << look;
    }
}

} // namespace OV::Test
