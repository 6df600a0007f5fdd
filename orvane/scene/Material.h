#pragma once

#include "orvane/Export.h"
#include "orvane/base/Lifetime.h"
#include "orvane/base/Object.h"
#include "orvane/imaging/FilePath.h"
#include "orvane/math/Color.h"
#include "orvane/scene/BitSet.h"
#include "orvane/scene/CompareMeshPointers.h"
#include "orvane/scene/NodeType.h"
#include "orvane/scene/OrderedMeshes.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <set>
#include <string>

namespace OV
{

class Mesh;
class Scene;

/// What the engine reads of a material; other bits have no effect.
enum MaterialFlags : unsigned
{
    /// Back faces are drawn too.
    MaterialFlagNoCull = 0x01,
    /// Drawn as if there were no light.
    MaterialFlagUnlit = 0x02,
    /// Drawn with polygonOffsetFactor and polygonOffsetUnits.
    MaterialFlagPolygonOffset = 0x08,
    /// Meshes are drawn as points.
    MaterialFlagPoints = 0x10,
    /// Drawn whatever the depth buffer says.
    MaterialFlagAlwaysPass = 0x20,
};
ORVANE_BIT_SET(MaterialFlags)

/// Description of a surface and the set of meshes that have it.
///
/// The fields are read by the effects as they stand; no setter marks the scene dirty. Names
/// and pixels are loaded when the material is first drawn.
class ORVANE_API Material
{
public:
    explicit Material(const std::string& materialName);

    /// Takes the four colours, shininess, texture path and name, hasAlpha, ignoreLightColor,
    /// stippling and its colour, and the name. All else starts anew: the copy has no flags,
    /// meshes, scene or render data.
    Material(const Material& other);

    Material& operator=(const Material&) = delete;

    /// Leaves its scene. The meshes stay alive, without a material.
    virtual ~Material();

    /// Which of the scene's two lists AddMaterial picks. After a change that matters,
    /// Scene::ProcessChangedMaterial moves the material.
    virtual bool IsTransparent();

    virtual int Type() const;
    virtual bool HasType(int type);

    const Color& GetDiffuse() const
    {
        return diffuse;
    }

    /// Alpha, which is the opacity, is replaced too. In the plain renderer this is the share of
    /// the scene's lights; the ambient colour, white unless it is set, is added to it, so that a
    /// material with only a diffuse colour comes out white. Set the ambient colour with it: to a
    /// part of the same colour, or to black. Not read by Material2D.
    void SetDiffuse(const Color& color)
    {
        diffuse = color;
    }

    const Color& GetAmbient() const
    {
        return ambient;
    }

    void SetAmbient(const Color& color)
    {
        ambient = color;
    }

    const Color& GetEmissive() const
    {
        return emissive;
    }

    void SetEmissive(const Color& color)
    {
        emissive = color;
    }

    const Color& GetSpecular() const
    {
        return specular;
    }

    void SetSpecular(const Color& color)
    {
        specular = color;
    }

    float GetShininess() const
    {
        return shininess;
    }

    void SetShininess(float value)
    {
        shininess = value;
    }

    /// The alpha of the diffuse colour.
    float GetOpacity() const
    {
        return diffuse.a;
    }

    /// Does not move the material between the scene's lists.
    void SetOpacity(float opacity)
    {
        diffuse.a = opacity;
    }

    const std::string& GetName() const
    {
        return name;
    }

    void SetName(const std::string& newName)
    {
        name = newName;
    }

    /// MaterialFlags.
    unsigned int GetFlags() const
    {
        return flags;
    }

    void SetFlags(MaterialFlags bits)
    {
        flags |= bits;
    }

    void ClearFlags(MaterialFlags bits)
    {
        flags &= ~bits;
    }

    /// In order of creation, as a set that the material keeps from now on: EachMesh needs none.
    const std::set<Mesh*, CompareMeshPointers>& GetMeshes() const;

    /// The same meshes in the same order, for whoever goes through them at once: a way through them
    /// ends when a mesh comes or leaves.
    const OrderedMeshes& EachMesh() const
    {
        return m_meshes;
    }

    /// Another number after every change of the set of meshes, or of flags, draw ID or nodes of one of
    /// them, for whoever keeps a list of it.
    std::uint64_t GetMeshesRevision() const
    {
        return m_meshesRevision;
    }

    /// Another number after every change, in any material of the process, of render data, draw ID or what
    /// GetMeshesRevision counts: what was listed of materials under the same number still holds.
    static std::uint64_t GetListingRevision()
    {
        return s_listingRevision.load(std::memory_order_relaxed);
    }

    /// Makes that another number: said by render data that stay and can't be drawn with any more.
    static void ListingChanged()
    {
        s_listingRevision.fetch_add(1, std::memory_order_relaxed);
    }

    Scene* GetScene() const
    {
        return scene;
    }

    /// Gives the mesh this material; it leaves its present one first. A mesh whose sort ID is
    /// there already is not taken and ends without a material. Does not mark the scene dirty.
    /// @return false for null, else true.
    bool AddMesh(Mesh* mesh);

    /// Takes the material from the mesh.
    /// @return false when no mesh of that sort ID has it.
    bool RemoveMesh(Mesh* mesh);

    /// Whether any mesh has a node that is neither hidden nor culled.
    bool HasVisibleItems() const;

    /// Asks to be drawn only in the frame of this update ID of the scene; 0 in every frame.
    void SetDrawID(unsigned int id)
    {
        if (drawID != id)
        {
            drawID = id;
            ListingChanged();
        }
    }

    bool UsingDrawID() const
    {
        return drawID != 0;
    }

    /// Keeps the material from being drawn until the next SetDrawID.
    void InvalidateDrawID()
    {
        SetDrawID(1);
    }

    /// False for a material that uses a draw ID and has no scene.
    bool ReadyToDraw() const
    {
        return drawID == 0 || MatchesUpdateID();
    }

    /// For whoever points at this material and must know when it is gone.
    Lifetime& GetLifetime()
    {
        return m_lifetime;
    }

    Object* GetRenderData() const
    {
        return renderData.get();
    }

    /// Takes the object over, then deletes the one it replaces, even where they are the same:
    /// then none is left.
    void SetRenderData(Object* data);

    /// Deletes the render data; the next frame makes them anew.
    void Suspend();

    /// Does nothing.
    void Resume();

protected:
    /// A material without a name, stippled in transparent black.
    Material();

    // What a frame reads of each material stands first and together: a scene may have thousands.
    std::unique_ptr<Object> renderData;
    Scene* scene = nullptr;
    unsigned int drawID = 0;

public:
    unsigned int flags = 0;

private:
    std::uint64_t m_meshesRevision = 0;
    OrderedMeshes m_meshes;
    mutable std::unique_ptr<std::set<Mesh*, CompareMeshPointers>> m_meshSet; ///< null until it is asked for

public:
    /// Its alpha is the opacity.
    Color diffuse = Color(1.0f, 1.0f, 1.0f, 1.0f);
    Color ambient = Color(1.0f, 1.0f, 1.0f, 1.0f);
    float pointSize = 1.0f;
    float polygonOffsetFactor = 0.0f;
    float polygonOffsetUnits = 0.0f;
    /// Whether the texture has alpha; written by the loader.
    bool hasAlpha = false;
    /// Whether a texture of raw pixels ends at its edges or repeats.
    bool clampTexture = false;
    bool ignoreLightColor = true;
    bool stippling = false;
    bool noDepthWrite = false;
    Color emissive = Color(0.0f, 0.0f, 0.0f, 1.0f);
    Color specular = Color(1.0f, 1.0f, 1.0f, 1.0f);
    float shininess = -1.0f;
    /// Texture coordinates are divided by these when geometry is uploaded and once more when it is
    /// drawn, so that 0.5 repeats a picture four times.
    float uScale = 1.0f;
    float vScale = 1.0f;
    Color stippleColor = Color(1.0f, 1.0f, 1.0f, 1.0f);
    float stippleOffset = 10.0f;
    float stippleSize = 1.0f;
    float hatchUScale = 1.0f;
    float hatchVScale = 1.0f;
    /// Reflection straight on, reflection at a grazing angle, gloss.
    float reflectionFactors[3] = {0.0f, 0.0f, 0.0f};
    /// Directory of all the texture files.
    FilePath texturePath;
    std::string textureName;
    /// Raw RGBA pixels in place of a texture file, rows tight; owned, and released with free.
    unsigned char* pixels = nullptr;
    int pixelWidth = 0;
    int pixelHeight = 0;
    std::string normalMapName;
    std::string opacityMapName;
    std::string name;

private:
    friend class Mesh;
    friend class Scene;

    bool MatchesUpdateID() const;
    void MeshesChanged();

    // Scenes of several threads count together.
    static std::atomic<std::uint64_t> s_listingRevision;

    Lifetime m_lifetime;
};

} // namespace OV
