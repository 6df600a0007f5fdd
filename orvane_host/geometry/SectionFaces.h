#pragma once

#include "orvane_host/geometry/SectionFill.h"
#include "orvane/math/Color.h"

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace OV
{

class Material;
class Scene;

} // namespace OV

namespace OV::Host
{

namespace Detail
{

template <class T>
class Lent;
class SolidCutter;

} // namespace Detail

/// What SectionFill does to a scene, as something that can be moved and taken back: faces where
/// planes cut solids, and materials of their own for what is cut.
///
/// What it has found out about geometry is kept for the next cut, and so are the copies of
/// materials with the textures that they have loaded. What of all that a host deletes, or the scene
/// when it is emptied, is gone until the next cut.
class SectionFaces
{
public:
    /// How a section is filled.
    struct Fill
    {
        float inset = 0.0f; ///< as for SectionFill::AddTo
        Color color;
    };

    /// A material that has the cut meshes of another one.
    struct Copy
    {
        Material* original;
        Material* material;
    };

    /// @param scene not owned; outlives this, unless Forget comes before its end.
    explicit SectionFaces(Scene& scene);

    /// Takes everything back. GL, if it was drawn.
    ~SectionFaces();

    SectionFaces(const SectionFaces&) = delete;
    SectionFaces& operator=(const SectionFaces&) = delete;

    /// Cuts the scene in place of an earlier cut. The globals must be up to date; hidden nodes get no
    /// faces. GL, if it was drawn.
    /// @param fill none leaves cut solids open.
    void Cut(const std::vector<SectionPlane>& planes, const std::optional<Fill>& fill);

    /// Takes the cut back: no face and no copy is left in the scene, and meshes and materials are in
    /// the order that they were in. GL, if it was drawn.
    void Heal();

    /// Heals, and forgets what was found out about geometry and materials, before either changes.
    void Forget();

    /// Lets go of the render data of copies that are out of the scene. GL.
    void Suspend();

    /// Materials of the scene of which all meshes are cut, copies included: those that must show
    /// their backs.
    const std::vector<Material*>& GetOpened() const { return m_opened; }

    /// As they were cut: a host may have deleted some since.
    const std::vector<Copy>& GetCopies() const { return m_copies; }

    /// That of the faces; null where there are none.
    const Material* GetMaterial() const;

private:
    void Open(const std::vector<SectionPlane>& planes);
    void AddFaces(const std::vector<SectionPlane>& planes, const Fill& fill);
    Material* CopyFor(Material& original);
    void TakeOut(const Copy& copy);

    using OwnMaterial = std::unique_ptr<Detail::Lent<Material>>;

    Scene& m_scene;
    std::unique_ptr<Detail::SolidCutter> m_cutter;
    OwnMaterial m_material; ///< in the scene while there are faces, which are its meshes
    std::unordered_map<const Material*, OwnMaterial> m_spares; ///< copies by original
    std::vector<Copy> m_copies; ///< those in the scene
    std::vector<Material*> m_opened;
};

} // namespace OV::Host
