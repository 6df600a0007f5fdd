#pragma once

#include "orvane/scene/Scene.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace OV
{

namespace detail
{

class Walk;

}  // namespace detail

class CoreContext;
class Shape2DNode;
class Sprite;
class Text;

/// A layer of flat things in front of the 3D scene or behind it, measured in screen pixels.
///
/// What it shows stands on Shape2DNodes. Things farther up in z are drawn over those below;
/// z orders the layer alone, which is never hidden by the 3D scene.
class ORVANE_API Scene2D : public Scene
{
public:
    /// @param context the context that the layer belongs to; not owned, null is allowed.
    explicit Scene2D(CoreContext* context);
    ~Scene2D() override;

    CoreContext* GetContext() const { return m_context; }

    /// As Scene::Clear; sprites and texts of the layer are empty from then on.
    void Clear() override;

    /// As Scene::AddLineStyle; there is no fog in a layer, so the style loses its own.
    bool AddLineStyle(LineStyle* style) override;

    /// As Scene::UpdateGraph. Keeps the size; moves the nodes that follow a node of a 3D scene;
    /// when the size has changed, culling is done anew and textures of materials with a scale
    /// below 1 are made anew; when anything has, the transparent things are put in order anew.
    /// @param width, height of the layer in pixels.
    void UpdateGraph(float width, float height) override;

    /// What is in the layer, for the host; owned by it. Each change marks the layer dirty.
    void AddSprite(Sprite* sprite);
    void RemoveSprite(Sprite* sprite);
    const std::vector<Sprite*>& GetSprites() const { return sprites; }
    void AddText(Text* text);
    void RemoveText(Text* text);
    const std::vector<Text*>& GetTexts() const { return texts; }

    /// Puts the pick state of every Shape2DNode that shows a mesh with a material back to idle.
    void ResetPicking();

    float screenWidth = 0.0f;   ///< of the layer, in pixels, as of the last UpdateGraph
    float screenHeight = 0.0f;  ///< likewise
    float nearZ = 0.0f;         ///< smallest depth (-z) in the layer as of its last change
    float farZ = 1.0f;          ///< largest depth (-z) in the layer as of its last change

    std::wstring name; ///< the host's

protected:
    friend class Shape2DNode;

    /// Orders the transparent things from the lowest z to the highest, culls what is off the
    /// screen, and finds nearZ and farZ: in a layer that shows nothing they are the largest
    /// float and its negative. At equal z what was made later lies above; a shape counts as made
    /// when the sprite that shows it was.
    void ProcessZOrderedDrawItems() override;

    std::vector<Text*> texts;     ///< not owned
    std::vector<Sprite*> sprites; ///< not owned

private:
    /// What the order of one draw item goes by.
    struct DrawOrder
    {
        float z;
        /// In the shape's own space: keeps a backdrop behind its text where z is so large that
        /// both round to the same.
        float localZ;
        std::uint64_t mesh;   ///< the age, as Shape2D has it
        std::uint64_t sprite;
        std::uint64_t sortID; ///< of the mesh
        std::size_t place;    ///< in the list as it was filled
        AlphaMeshNode* item;

        bool operator<(const DrawOrder& other) const;
    };

    void SortDrawItems();
    void MoveFollowers(const detail::Walk& walk);
    void RefreshScaledMaterials(const std::vector<Material*>& materials);
    void TellContentsOfClear();

    CoreContext* m_context;
    std::vector<DrawOrder> m_drawOrder; ///< scratch, kept for its memory
    std::vector<Shape2DNode*> m_followers; ///< nodes with a parent in a 3D scene
};

}  // namespace OV
