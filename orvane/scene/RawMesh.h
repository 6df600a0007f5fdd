#pragma once

#include "orvane/Export.h"
#include "orvane/base/Object.h"
#include "orvane/math/Color.h"
#include "orvane/math/Sphere.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/math/Vector.h"

#include <memory>
#include <vector>

namespace OV
{

/// Geometry: parallel arrays, one element per vertex, with a box and a sphere around them.
/// Shared by the meshes that use it.
///
/// Described by StartDescription, the setters and EndDescription, and not copied on the way:
/// the setters take over what they are given. What is written into the arrays once they were drawn is
/// not seen before SetRenderData(nullptr).
class ORVANE_API RawMesh
{
public:
    RawMesh() = default;

    /// Copies the geometry; the copy has no render data.
    RawMesh(const RawMesh& other);

    /// Copies the geometry and drops the render data, which no longer show it.
    RawMesh& operator=(const RawMesh& other);

    virtual ~RawMesh();

    /// Empties the arrays, which keep their capacity, and deletes the render data.
    void StartDescription();

    /// Takes over the contents and leaves the argument empty. Drops no render data.
    /// @return false, with nothing changed, when there are positions already, of another number.
    bool SetPositionBuffer(std::vector<Vector>&& buffer);

    /// As SetPositionBuffer. Set before the positions, nothing is tested.
    bool SetNormalBuffer(std::vector<Vector>&& buffer);

    /// As SetNormalBuffer.
    bool SetTextureBuffer(std::vector<TextureCoordinate>&& buffer);

    /// As SetNormalBuffer.
    bool SetColorBuffer(std::vector<Color>&& buffer);

    /// Takes over the contents, three for each triangle, counter-clockwise from the front. No
    /// index is checked.
    /// @return false, with nothing changed, when there are indices already.
    bool SetIndices(std::vector<unsigned short>&& buffer);

    /// Completes the description: the sphere comes from the box.
    /// @param computeBox whether the box is computed from the positions or stands as set.
    /// @return false, with nothing changed, without positions.
    bool EndDescription(bool computeBox);

    /// Fits the box to the positions, without the sphere. Without positions nothing happens.
    void ComputeBBox();

    /// Sets the box, without the sphere.
    void SetBBox(const Vector& boxMin, const Vector& boxMax);

    Object* GetRenderData() const
    {
        return renderData.get();
    }

    /// Takes the object over and deletes the present one; nothing when they are the same.
    void SetRenderData(Object* data);

    // What a draw reads stands first and together, as in a mesh.
    std::vector<Vector> positions;

protected:
    std::unique_ptr<Object> renderData;

public:
    std::vector<unsigned short> indices;
    /// This and the next two are empty or hold one element per vertex.
    std::vector<Vector> normals;
    std::vector<TextureCoordinate> textureCoordinates;
    std::vector<Color> colors;
    Vector bboxMin;
    Vector bboxMax;
    /// Encloses the box, and so is not the tightest around the positions.
    Sphere sphere;

private:
    friend class Mesh;
};

} // namespace OV
