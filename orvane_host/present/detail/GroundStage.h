#pragma once

#include "orvane_host/present/GroundSettings.h"
#include "orvane_host/present/PresentationStage.h"
#include "orvane_host/view/ViewFit.h"
#include "orvane/math/Vector.h"

#include <memory>
#include <optional>

namespace OV::Host::Detail
{

class ContactShadow;
class GroundEffect;

/// A ground, where it lies, and what is dark on it.
struct Ground
{
    GroundKind kind = GroundKind::Plain;
    Color color;
    UpAxis up = UpAxis::Y;
    double height = 0.0; ///< along the axis that is up
    Vector middle;       ///< of the model
    float extent = 1.0f; ///< of the model
    /// Whether anything of the model may be below; else it can't hide any.
    bool hides = false;
    /// Along the ground as ToGround gives it; null for none.
    std::shared_ptr<const ContactShadow> shadow;

    /// Along the ground from the middle of the model in x and y, above the ground in z.
    void ToGround(double x, double y, double z, double (&place)[3]) const;
};

/// A level ground, drawn before the surfaces.
///
/// It is drawn first so that what is see-through shows it, and farther by a trace than it is, so
/// that what lies on it wins.
class GroundStage final : public PresentationStage
{
public:
    GroundStage();

    /// GL if it was drawn.
    ~GroundStage() override;

    /// None for no ground.
    void SetGround(const std::optional<Ground>& ground) { m_ground = ground; }

    void Draw(PresentationFrame& frame) override;
    void ReleaseGL() override;

private:
    void UploadShadow();

    std::optional<Ground> m_ground;
    GroundEffect* m_effect = nullptr; ///< one counted reference; null until it is drawn with
    std::shared_ptr<const ContactShadow> m_uploaded;
    unsigned int m_texture = 0;
};

} // namespace OV::Host::Detail
