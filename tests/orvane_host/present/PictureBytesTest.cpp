#include "tests/orvane_host/present/PictureRows.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace OV::Test
{

namespace
{

using Host::Antialiasing;
using Host::Presentation;
using Host::PresentationSettings;

constexpr int WholeWidth = 256;
constexpr int WholeHeight = 192;
constexpr int Samples = 4;

/// The bytes of textures and renderbuffers as calls make, remake and delete them.
class Storage
{
public:
    /// The most that there were at any time, of what is as large as a picture.
    static std::int64_t PeakOf(const std::vector<GLCall>& calls)
    {
        Storage storage;
        for (const GLCall& call : calls)
        {
            storage.Take(call);
        }
        return storage.m_peak;
    }

private:
    static std::int64_t BytesOf(std::int64_t format)
    {
        switch (format)
        {
        case GL_RGBA:
        case GL_RGBA8:
        case GL_DEPTH_COMPONENT:
        case GL_DEPTH_COMPONENT24:
        case GL_DEPTH_COMPONENT32F:
        case GL_DEPTH24_STENCIL8:
            return 4;
        case GL_DEPTH_COMPONENT16:
            return 2;
        case GL_RGBA16F:
            return 8;
        default:
            ADD_FAILURE() << "format " << format << " is not in the list";
            return 0;
        }
    }

    void Take(const GLCall& call)
    {
        const std::string& name = call.name;
        if (name == "glActiveTexture")
        {
            m_unit = call.Int(0);
        }
        else if (name == "glBindTexture")
        {
            m_textures[{m_unit, call.Int(0)}] = call.Int(1);
        }
        else if (name == "glBindRenderbuffer")
        {
            m_renderbuffer = call.Int(1);
        }
        else if (name == "glTexImage2D")
        {
            const std::int64_t texture = m_textures[{m_unit, call.Int(0)}];
            Hold("texture", texture, call.Int(3), call.Int(4), 1, call.Int(2));
        }
        else if (name == "glRenderbufferStorage")
        {
            Hold("renderbuffer", m_renderbuffer, call.Int(2), call.Int(3), 1, call.Int(1));
        }
        else if (name == "glRenderbufferStorageMultisample")
        {
            Hold("renderbuffer", m_renderbuffer, call.Int(3), call.Int(4), call.Int(1), call.Int(2));
        }
        else if (name == "glDeleteTextures" || name == "glDeleteRenderbuffers")
        {
            for (const int object : call.ints)
            {
                m_held.erase({name == "glDeleteTextures" ? "texture" : "renderbuffer", object});
            }
        }
    }

    void Hold(const char* kind, std::int64_t object, std::int64_t width, std::int64_t height, std::int64_t samples,
              std::int64_t format)
    {
        const bool isPicture = width >= WholeWidth && height >= WholeHeight;
        m_held[{kind, object}] = isPicture ? width * height * std::max<std::int64_t>(samples, 1) * BytesOf(format) : 0;
        std::int64_t sum = 0;
        for (const auto& [key, bytes] : m_held)
        {
            sum += bytes;
        }
        m_peak = std::max(m_peak, sum);
    }

    std::int64_t m_unit = GL_TEXTURE0;
    std::map<std::pair<std::int64_t, std::int64_t>, std::int64_t> m_textures; ///< bound, by unit and target
    std::int64_t m_renderbuffer = 0;
    std::map<std::pair<std::string, std::int64_t>, std::int64_t> m_held;
    std::int64_t m_peak = 0;
};

class PictureBytes : public PresentationFixture
{
protected:
    static PresentationSettings With(Antialiasing way)
    {
        PresentationSettings wanted;
        wanted.antialiasing = way;
        wanted.samples = way == Antialiasing::Multisampling ? std::optional<int>(Samples) : std::nullopt;
        wanted.glass.order = Host::GlassOrder::Scene;
        return wanted;
    }

    /// Of what the stages and the filter make beside the picture's own buffers.
    static std::int64_t PeakOf(const PresentationSettings& wanted)
    {
        const auto presentation = PresentBoxes();
        Apply(*presentation, wanted);
        Host::PictureOptions options;
        options.width = WholeWidth;
        options.height = WholeHeight;
        Host::PictureFacts facts;
        const GLRecorder recorder(GLRecorder::Mode::Forward);
        WriteRows(*presentation, options, facts);
        EXPECT_EQ(facts.tiles, 1);
        return Storage::PeakOf(recorder.Calls());
    }
};

TEST_F(PictureBytes, AreAsManyAsTilesAreMeasuredBy)
{
    using Change = void (*)(PresentationSettings&);
    struct Case
    {
        const char* label;
        Change change;
    };
    const Case cases[] = {
        {"occlusion",
         [](PresentationSettings& wanted) { wanted.occlusion = true; }},
        {"occlusion of pixels",
         [](PresentationSettings& wanted) {
             wanted.occlusion = true;
             wanted.occlusionLook.kind = Host::OcclusionKind::Spiral;
         }},
        {"edges", [](PresentationSettings& wanted) { wanted.edges.emplace(); }},
        {"lines", [](PresentationSettings& wanted) { wanted.lines.emplace(); }},
        {"glass", [](PresentationSettings& wanted) { wanted.glass.order = Host::GlassOrder::Exact; }},
        {"everything",
         [](PresentationSettings& wanted) {
             wanted.occlusion = true;
             wanted.edges.emplace();
             wanted.lines.emplace();
             wanted.glass.order = Host::GlassOrder::Exact;
         }},
    };
    for (const Antialiasing way : {Antialiasing::None, Antialiasing::Multisampling, Antialiasing::Filter,
                                   Antialiasing::Supersampling})
    {
        const int samples = way == Antialiasing::Multisampling ? Samples : 0;
        // The buffers of the picture itself are made without the engine.
        PresentationSettings own = With(way);
        own.antialiasing = samples > 0 ? way : Antialiasing::None;
        const int ownBytes = Presentation::BytesPerPixel(own, samples);
        for (const Case& c : cases)
        {
            PresentationSettings wanted = With(way);
            c.change(wanted);
            const std::int64_t measured = (Presentation::BytesPerPixel(wanted, samples) - ownBytes) * WholeWidth * WholeHeight;
            const std::int64_t peak = PeakOf(wanted);
            EXPECT_LE(peak, measured) << c.label << ", way " << static_cast<int>(way);
            EXPECT_GE(2 * peak, measured) << c.label << ", way " << static_cast<int>(way);
        }
    }
}

} // namespace

} // namespace OV::Test
