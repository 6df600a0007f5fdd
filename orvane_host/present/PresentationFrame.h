#pragma once

#include "orvane/math/Color.h"
#include "orvane/renderdata/RenderItemES20.h"

#include <array>
#include <cstddef>
#include <vector>

namespace OV
{

class CameraNode;
class CameraNodeES20;
class Scene;

} // namespace OV

namespace OV::Host
{

class StageAccess;

/// Width and height, in pixels unless told otherwise.
struct PixelSize
{
    int width = 0;
    int height = 0;

    bool operator==(const PixelSize& other) const { return width == other.width && height == other.height; }
    bool operator!=(const PixelSize& other) const { return !(*this == other); }
};

/// Pixels of a picture, from the lower left one.
struct PictureRect
{
    int x = 0;
    int y = 0;
    PixelSize size;

    bool operator==(const PictureRect& other) const { return x == other.x && y == other.y && size == other.size; }
    bool operator!=(const PictureRect& other) const { return !(*this == other); }
};

/// A rectangle of a larger picture that is drawn by itself, as a tile of a poster is.
struct PicturePart
{
    PixelSize whole; ///< of the larger picture
    PixelSize size;  ///< of the part
    int x = 0;       ///< of its lower left corner in the whole
    int y = 0;

    /// Whether the whole could not be drawn at once. What is laid out for a view, as shadows are, is then laid
    /// out for the part, finer than for all of it; else the part is as in the whole.
    bool ofPoster = false;

    /// Of the whole, what the picture has to be right in; without size all of the part. About it a stage may draw
    /// what it likes into the picture, or nothing: only where surfaces are is looked at there.
    PictureRect needed = {};

    /// Whether the frame before was of the same part, and nothing has changed since but the background. Tells
    /// nothing of where the part lies, and is not compared.
    bool isAgain = false;

    bool operator==(const PicturePart& other) const
    {
        return whole == other.whole && size == other.size && x == other.x && y == other.y
            && ofPoster == other.ofPoster && needed == other.needed;
    }
    bool operator!=(const PicturePart& other) const { return !(*this == other); }
};

/// What a stage needs of a frame besides the scene. What no stage needs is not made.
///
/// None of it can be had in a frame that is drawn over another, and none where GL can't make one
/// of the buffers: a stage is then left out unless its needs are optional.
struct FrameNeeds
{
    bool target = false; ///< what is drawn into, see PresentationFrame; the others bring it along
    bool objectIdentifiers = false;
    bool groupIdentifiers = false;
    bool fineIdentifiers = false; ///< twice as fine where the picture has samples to look them up at
    bool depth = false;
    bool picture = false;  ///< a copy of what is drawn by then
    bool optional = false; ///< the stage draws without them too

    bool Any() const { return target || objectIdentifiers || groupIdentifiers || depth || picture; }

    FrameNeeds& operator|=(const FrameNeeds& other)
    {
        target |= other.target;
        objectIdentifiers |= other.objectIdentifiers;
        groupIdentifiers |= other.groupIdentifiers;
        fineIdentifiers |= other.fineIdentifiers;
        depth |= other.depth;
        picture |= other.picture;
        optional |= other.optional;
        return *this;
    }
};

/// The meshes of a frame's scene, listed once for all stages. While a host's stage is added each is listed by itself;
/// else an item without a mesh stands for all of a material that is drawn in the simplest way.
struct FrameItems
{
    /// Opaque surfaces, lines, see-through surfaces.
    std::vector<RenderItemES20> all;
    std::size_t firstLine = 0;  ///< in all, behind the opaque surfaces
    std::size_t firstAlpha = 0; ///< in all, behind the lines

    /// Those of all that have identifiers; empty unless something is needed of the frame.
    std::vector<RenderItemES20> surfaces;

    /// The same without what the frame's camera doesn't see; null where nothing is left out. What is
    /// drawn by another camera, such as that of a light, takes all.
    const FrameItems* seen = nullptr;

    const FrameItems& Seen() const { return seen ? *seen : *this; }
};

/// What the stages of one frame share. It is handed from one to the next and ends with the frame.
///
/// Textures are GL names, 0 where nobody needs them or they can't be had. All but the picture lie
/// over the target from its lower left corner to its upper right one, whatever size they have.
struct PresentationFrame
{
    Scene& scene;
    CameraNode& camera;
    CameraNodeES20& cameraData; ///< has the matrices of the frame; who changes them puts them back
    StageAccess& renderer;      ///< what a stage may use of the renderer
    const FrameItems& items;    ///< empty while stages prepare

    PixelSize view = {};   ///< in points, which matrices count in; of the whole picture
    PixelSize screen = {}; ///< of the picture that is seen, or of its part that is drawn
    PicturePart part = {}; ///< of what the screen shows; all of the whole in ordinary frames
    PixelSize target = {}; ///< of what is drawn into: a capture may be finer than the screen
    Color background = {}; ///< that the picture was cleared in
    bool overDraw = false; ///< whether the frame is drawn over another

    FrameNeeds needs = {}; ///< of all stages together
    bool served = false;   ///< whether they can be had: false before the meshes are listed

    // What is drawn into, as it was found, where something is needed.
    unsigned int framebuffer = 0; ///< 0 is the window's
    bool multisampled = false;
    std::array<float, 2> depthRange = {0.0f, 1.0f};

    // Identifiers of the surfaces as colours, black where there is none; as many pixels as the
    // target has, or twice as many each way.
    unsigned int objectIdentifiers = 0;
    unsigned int groupIdentifiers = 0;
    bool shadeSamples = false; ///< whether they are worth a look-up at each sample

    /// That came with the identifiers of objects. It is the surfaces' own in the depth buffer
    /// unless it serves as depth too, which it does only where those of groups are not needed.
    unsigned int objectDepth = 0;

    /// Of the surfaces, between 0 at the near plane and depthShare at the far plane.
    unsigned int depth = 0;
    double depthShare = 1.0;

    /// The target's size and as it is when the stage draws, samples resolved; of a stage that
    /// needs it.
    unsigned int picture = 0;

    /// Units in which a stage leaves a 2D texture; they are freed at the end of the frame.
    std::array<bool, 9> usedUnits = {};
};

} // namespace OV::Host
