#pragma once

#include "orvane_host/geometry/SunHours.h"
#include "orvane_host/present/Presentation.h"
#include "orvane_host/present/SunStudy.h"
#include "orvane/math/Transf3d.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace OV::Host
{

class ColorScale;
class PresentationStage;

/// The hours of sun on the ground under a presented model, or on a part of it, as a coloured map over
/// the picture, with its scale.
///
/// Colours go evenly from piece to piece, and change at once along the rims of shadows, about which the
/// pieces are smaller. It shows what the scene was when it was made: make it anew after a change.
class SunHoursMap
{
public:
    /// A triangle of the map: SunHours tells the hours of its middle.
    struct Piece
    {
        SunSpot middle;
        float hours = 0.0f;
    };

    /// @param presentation outlives this.
    explicit SunHoursMap(Presentation& presentation);

    /// Takes the map away. GL, if it was drawn.
    ~SunHoursMap();

    SunHoursMap(const SunHoursMap&) = delete;
    SunHoursMap& operator=(const SunHoursMap&) = delete;

    /// Works out a map, in place of an earlier one. GL, if that was drawn.
    /// @param surface "ground" for a plane at the foot of the model that reaches half its size beyond
    ///        it, or the path of a node, with all that is below it.
    /// @param error on failure one sentence. Untouched otherwise.
    /// @return false, with nothing changed, on failure.
    bool Show(const SunStudyTimes& times, const std::string& surface, std::string& error);

    /// Takes the map away. GL, if it was drawn.
    void Hide();

    /// Lays out the scale for pictures of a size in pixels. GL, if it was drawn.
    void Layout(int width, int height);

    /// Brings model and map into the view, in the direction that it has.
    /// @return false, with nothing changed, without a map.
    bool Frame(float aspect);

    const std::vector<Piece>& GetPieces() const { return m_pieces; }

    /// At the end of the scale: of the whole time.
    double GetMostHours() const { return m_most; }

private:
    struct Face;

    std::vector<Face> FacesOfGround() const;
    std::vector<Face> FacesBelow(Node& node) const;
    static void AddFaces(const Mesh& mesh, const QGM::Transf3d& global, std::vector<Face>& faces);
    static std::vector<Face> Divide(const std::vector<Face>& faces);

    Presentation& m_presentation;
    std::vector<Piece> m_pieces;
    Presentation::Box m_box; ///< of the map
    double m_most = 0.0;
    PresentationStage* m_stage = nullptr; ///< the renderer's
    std::unique_ptr<ColorScale> m_scale;
};

} // namespace OV::Host
