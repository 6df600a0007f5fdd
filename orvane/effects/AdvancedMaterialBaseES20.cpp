#include "orvane/effects/AdvancedMaterialBaseES20.h"

#include "orvane/effects/SkySettings.h"
#include "orvane/effects/detail/AdvancedMaterialTables.h"
#include "orvane/effects/detail/PlainLoop.h"
#include "orvane/effects/detail/RepeatedUniform.h"
#include "orvane/math/Color.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Quaternion.h"
#include "orvane/math/Vector.h"
#include "orvane/math/detail/MatrixProduct.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

namespace OV
{

using namespace Detail;

namespace
{

enum TextureUnit : int
{
    UnitColor,
    UnitNormalMap,
    UnitReflectionMap,
    UnitOpacityMap,
};

void BindCube(unsigned int texture)
{
    glActiveTexture(GL_TEXTURE0 + UnitReflectionMap);
    glBindTexture(GL_TEXTURE_CUBE_MAP, texture);
}

/// A quarter turn about X, from half its angle as it has always been written.
Matrix3x3 QuarterTurnAboutX()
{
    constexpr float halfAngle = 0.7853975f;
    Quaternion turn;
    turn.x = std::sin(halfAngle);
    turn.w = std::cos(halfAngle);
    Matrix3x3 matrix;
    turn.ExtractMatrix(matrix);
    return matrix;
}

constexpr std::uint64_t OptionIf(bool condition, AdvancedOption option)
{
    return condition ? option : std::uint64_t(0);
}

void SetWinding(MeshNode& node)
{
    glFrontFace(node.IsGlobalMirror() ? GL_CW : GL_CCW);
}

} // namespace

/// What BindMeshUniforms sends for each of many nodes.
class AdvancedMaterialBaseES20::NodeUniforms
{
public:
    explicit NodeUniforms(const AdvancedMaterialBaseES20& effect) :
        m_effect(effect), m_viewProjection(effect.m_camera->GetMVP()), m_isShaded(effect.IsShaded()),
        m_monochrome(Repeated(AdvancedUniformMonochrome)), m_world(Repeated(AdvancedUniformWorldTransform)),
        m_product(Repeated(AdvancedUniformMvpMatrix)), m_normals(Repeated(AdvancedUniformNormalMatrix))
    {
    }

    void Send(MeshNode& node)
    {
        if (m_effect.editPathActive)
        {
            m_monochrome.Send(m_effect.IsGrey(node) ? 1 : 0);
        }
        const Matrix& world = *node.GetGlobalMatrix();
        m_world.Send(world);
        Matrix product;
        detail::Multiply(product.m, m_viewProjection.m, world.m);
        m_product.Send(product);
        if (m_isShaded)
        {
            m_normals.Send(node.GetGlobalNormalMatrix());
            SetWinding(node);
        }
    }

private:
    detail::RepeatedUniform Repeated(int index) const
    {
        return detail::RepeatedUniform(m_effect.m_current, index, m_effect.Has(index));
    }

    const AdvancedMaterialBaseES20& m_effect;
    const Matrix& m_viewProjection;
    bool m_isShaded;
    detail::RepeatedUniform m_monochrome;
    detail::RepeatedUniform m_world;
    detail::RepeatedUniform m_product;
    detail::RepeatedUniform m_normals;
};

AdvancedMaterialBaseES20::AdvancedMaterialBaseES20(EffectCache* cache) :
    MaterialEffectES20(cache), cubeMatrix(QuarterTurnAboutX())
{
    m_discardsAtPlanes = true;
    m_takesLightShare = true;
    m_knowsMaterialColors = true;
}

void AdvancedMaterialBaseES20::SetEditInContextPath(const Path& path)
{
    editPath = path;
    editPathActive = true;
}

void AdvancedMaterialBaseES20::ClearEditInContextPath()
{
    editPathActive = false;
    editPath.clear();
}

std::uint64_t AdvancedMaterialBaseES20::OptionsOf(MaterialES20* data) const
{
    return OptionIf(SkySettings::inst().UseFog(), AdvancedOptionFog) |
           OptionIf(data->GetMaterial()->stippling, AdvancedOptionStippling) |
           OptionIf(passFlag, AdvancedOptionAmbient) |
           OptionIf(data->GetOpacityMapID() != 0, AdvancedOptionCutout) |
           OptionIf(ColorTexture(data) != 0, AdvancedOptionTexture) |
           OptionIf(data->GetNormalMapID() != 0, AdvancedOptionNormalMap) |
           OptionIf(m_takesVertexColors, AdvancedOptionVertexColors) |
           (m_reflectsAtPixels ? OptionReflectAtPixels : std::uint64_t(0));
}

void AdvancedMaterialBaseES20::Apply(MaterialES20* data, CameraNodeES20* camera)
{
    Material* const material = data->GetMaterial();
    m_camera = camera;
    UseOptions(OptionsOf(data));
    if (const CameraNode* const node = camera->GetCameraNode())
    {
        Set(AdvancedUniformCamera, node->GetGlobal().GetPosition());
    }
    SetFog(AdvancedUniformFogRange, AdvancedUniformFogColor);
    SetStippling(material, AdvancedUniformStippleColor, AdvancedUniformStippleOffset, AdvancedUniformStippleSize);
    // Always: left at 0 the cube sampler would share a unit with a flat one, which is an error.
    Set(AdvancedUniformReflectionMap, static_cast<int>(UnitReflectionMap));
    Set(AdvancedUniformReflectionFactors,
        Vector(material->reflectionFactors[0], material->reflectionFactors[1], material->reflectionFactors[2]));
    if (m_reflectsAtPixels)
    {
        Set(ReflectionTintUniform(), m_reflectionTint);
    }
    blendEnabled = EnableBlendingIfNeeded(data);
    SetMaps(data);
    Set(AdvancedUniformCubeMatrix, cubeMatrix);
    SetColors(material);
    Set(AdvancedUniformPointSize, material->pointSize);
    Set(AdvancedUniformAmbientColorIntensity, s_ambientColorIntensity);
    Set(AdvancedUniformAmbientTextureIntensity, s_ambientTextureIntensity);
    Set(AdvancedUniformShadowIntensity, s_shadowIntensity);
    SetModelUniforms();
}

void AdvancedMaterialBaseES20::SetMaps(MaterialES20* data)
{
    const unsigned int color = ColorTexture(data);
    const unsigned int normalMap = data->GetNormalMapID();
    const unsigned int opacityMap = data->GetOpacityMapID();
    if (color != 0 || normalMap != 0 || opacityMap != 0)
    {
        Set(AdvancedUniformScale, ShaderScale(data->GetUScale()), ShaderScale(data->GetVScale()));
    }
    Set(AdvancedUniformTexture0, static_cast<int>(UnitColor));
    Set(AdvancedUniformNormalMap, static_cast<int>(UnitNormalMap));
    Set(AdvancedUniformOpacityMap, static_cast<int>(UnitOpacityMap));
    BindTexture(UnitColor, color);
    BindTexture(UnitNormalMap, normalMap);
    BindTexture(UnitOpacityMap, opacityMap);
    m_reflectionBound = reflectionMapId != 0;
    if (m_reflectionBound)
    {
        BindCube(reflectionMapId);
    }
    else
    {
        BindTexture(UnitReflectionMap, 0);
    }
    glActiveTexture(GL_TEXTURE0);
}

void AdvancedMaterialBaseES20::SetColors(Material* material)
{
    lit = IsLit(material);
    Set(AdvancedUniformEnableLight, lit ? 1 : 0);
    Set(AdvancedUniformAmbient, SentAmbient(*material));
    if (!lit)
    {
        Set(AdvancedUniformColor, SentColor(*material, nullptr));
        Set(AdvancedUniformSpecular, Color(0.0f, 0.0f, 0.0f, 1.0f));
        // Without a direction the reflected light has none either, and the surface turns black.
        Set(AdvancedUniformLightDir, Vector(0.0f, 0.0f, 1.0f));
        return;
    }
    LightNode* const light = FirstLight(material);
    Set(AdvancedUniformColor, SentColor(*material, light));
    Set(AdvancedUniformSpecular,
        material->ignoreLightColor ? Color(1.0f, 1.0f, 1.0f, 1.0f) : light->GetColor());
    Set(AdvancedUniformLightDir, TowardsLight(light));
}

void AdvancedMaterialBaseES20::Remove()
{
    EndUse();
    if (m_currentProgram != 0 && m_current)
    {
        m_current->Unbind();
    }
    if (m_reflectionBound)
    {
        // Left there, it would be the reflection of the next material that has none.
        BindCube(0);
        glActiveTexture(GL_TEXTURE0);
        m_reflectionBound = false;
    }
    if (blendEnabled)
    {
        glDisable(GL_BLEND);
        blendEnabled = false;
    }
}

void AdvancedMaterialBaseES20::BindMeshAttributes(MeshES20* mesh)
{
    BindStreams(StreamsOf(*mesh));
    const Mesh* const sceneMesh = mesh->GetMesh();
    const bool monochrome = sceneMesh && (sceneMesh->GetFlags() & MeshFlagMonochrome) != 0;
    Set(AdvancedUniformIsShowFaceSides, ShowsFaceSides(mesh) ? 1 : 0);
    Set(MeshMonochromeUniform(), monochrome ? 1 : 0);
}

void AdvancedMaterialBaseES20::BindStreams(const Streams& streams)
{
    EnableAttribute(AdvancedAttributePosition, 3, streams.stride, streams.position);
    if (lit)
    {
        hasNormals = EnableStream(AdvancedAttributeNormal, 3, streams.stride, streams.normal);
        if (!hasNormals)
        {
            Set(AdvancedUniformEnableLight, 0);
        }
    }
    if (HasAttribute(AdvancedAttributeTexture))
    {
        EnableStream(AdvancedAttributeTexture, 2, streams.stride, streams.texture);
    }
    if (TakesColors())
    {
        EnableStream(AdvancedAttributeColor, 4, streams.stride, streams.color);
    }
}

void AdvancedMaterialBaseES20::BindNoFlags()
{
    Set(AdvancedUniformIsShowFaceSides, 0);
    Set(MeshMonochromeUniform(), 0);
}

bool AdvancedMaterialBaseES20::TakesColors() const
{
    return HasAttribute(AdvancedAttributeColor);
}

void AdvancedMaterialBaseES20::ReleaseMeshAttributes(MeshES20* mesh)
{
    ReleaseStreams(StreamsOf(*mesh));
}

void AdvancedMaterialBaseES20::ReleaseStreams(const Streams& streams)
{
    EndMesh();
    if (TakesColors())
    {
        DisableStream(AdvancedAttributeColor, streams.color);
    }
    if (HasAttribute(AdvancedAttributeTexture))
    {
        DisableStream(AdvancedAttributeTexture, streams.texture);
    }
    if (lit && !DisableStream(AdvancedAttributeNormal, streams.normal))
    {
        Set(AdvancedUniformEnableLight, 1);
    }
    DisableAttribute(AdvancedAttributePosition);
}

void AdvancedMaterialBaseES20::EndMesh()
{
    glFrontFace(GL_CCW);
}

void AdvancedMaterialBaseES20::BindMeshUniforms(MeshNode* node)
{
    Set(AdvancedUniformMonochrome, IsGrey(*node) ? 1 : 0);
    Set(AdvancedUniformWorldTransform, *node->GetGlobalMatrix());
    Set(AdvancedUniformMvpMatrix, ModelViewProjection(node));
    // The planes cut every mesh here, whatever clipPlanesActive says: that is meant.
    if (SetClipPlanes(AdvancedUniformClipPlaneNormals, AdvancedUniformClipPlanePositions, AdvancedUniformNumClipPlanes,
                      true) > 0)
    {
        Set(AdvancedUniformClipPlaneOutlineColor, s_clipPlaneOutlineColor);
        Set(AdvancedUniformClipPlaneOutlineSize, s_clipPlaneOutlineSize);
    }
    Set(AdvancedUniformPocheColor, s_pocheColor);
    Set(AdvancedUniformPocheColorEnabled, s_pocheColorEnabled ? 1 : 0);
    Set(AdvancedUniformIsBackFaces, meshNodeFlag ? 1 : 0);
    if (IsShaded())
    {
        SetNormalMatrix(AdvancedUniformNormalMatrix, node);
        SetWinding(*node);
    }
}

void AdvancedMaterialBaseES20::DrawPlain(detail::PlainDraw* draws, detail::PlainDraw* end)
{
    detail::PlainLoop<AdvancedMaterialBaseES20>(*this).Draw(draws, end);
}

bool AdvancedMaterialBaseES20::CanRepeat() const
{
    // A mesh without normals turns the light off and on again.
    return hasNormals || !lit;
}

detail::PlainPointers AdvancedMaterialBaseES20::PointersOf(const Streams& behindPosition) const
{
    detail::PlainPointers pointers;
    pointers.Add(AdvancedAttributePosition, 3, behindPosition.position);
    if (IsShaded())
    {
        pointers.Add(AdvancedAttributeNormal, 3, behindPosition.normal);
    }
    if (HasAttribute(AdvancedAttributeTexture))
    {
        pointers.Add(AdvancedAttributeTexture, 2, behindPosition.texture);
    }
    if (TakesColors())
    {
        pointers.Add(AdvancedAttributeColor, 4, behindPosition.color);
    }
    return pointers;
}

bool AdvancedMaterialBaseES20::IsOutsideEdit(const Node& node) const
{
    const Path& path = node.GetPath();
    return path.empty() || editPath.size() > path.size() ||
           !std::equal(editPath.begin(), editPath.end(), path.begin());
}

} // namespace OV
