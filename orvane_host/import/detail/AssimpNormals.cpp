#include "orvane_host/import/detail/AssimpNormals.h"

#include <assimp/mesh.h>
#include <assimp/scene.h>

#include <memory>

namespace OV::Host
{

namespace
{

bool AreCornersShared(const aiMesh& mesh)
{
    std::size_t corners = 0;
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face)
    {
        corners += mesh.mFaces[face].mNumIndices;
    }
    return corners > mesh.mNumVertices;
}

bool AreIndicesValid(const aiMesh& mesh)
{
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face)
    {
        for (unsigned int corner = 0; corner < mesh.mFaces[face].mNumIndices; ++corner)
        {
            if (mesh.mFaces[face].mIndices[corner] >= mesh.mNumVertices)
            {
                return false;
            }
        }
    }
    return true;
}

/// Replaces an array of one element a vertex by one of one element a corner.
template <typename T>
void Spread(T*& array, const aiMesh& mesh, unsigned int corners)
{
    if (!array)
    {
        return;
    }
    std::unique_ptr<T[]> spread(new T[corners]);
    unsigned int next = 0;
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face)
    {
        const aiFace& indices = mesh.mFaces[face];
        for (unsigned int corner = 0; corner < indices.mNumIndices; ++corner)
        {
            spread[next++] = array[indices.mIndices[corner]];
        }
    }
    delete[] array;
    array = spread.release();
}

void SeparateCorners(aiMesh& mesh)
{
    unsigned int corners = 0;
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face)
    {
        corners += mesh.mFaces[face].mNumIndices;
    }
    Spread(mesh.mVertices, mesh, corners);
    for (auto& channel : mesh.mTextureCoords)
    {
        Spread(channel, mesh, corners);
    }
    for (auto& channel : mesh.mColors)
    {
        Spread(channel, mesh, corners);
    }
    unsigned int next = 0;
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face)
    {
        aiFace& indices = mesh.mFaces[face];
        for (unsigned int corner = 0; corner < indices.mNumIndices; ++corner)
        {
            indices.mIndices[corner] = next++;
        }
    }
    mesh.mNumVertices = corners;
}

} // namespace

bool SeparateCornersWithoutNormals(aiScene& scene)
{
    bool isAnySeparated = false;
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
    {
        aiMesh& mesh = *scene.mMeshes[i];
        const bool isPlain = mesh.mNumBones == 0 && mesh.mNumAnimMeshes == 0 && !mesh.mTangents;
        if (isPlain && mesh.mPrimitiveTypes & aiPrimitiveType_TRIANGLE && !mesh.mNormals &&
            AreCornersShared(mesh) && AreIndicesValid(mesh))
        {
            SeparateCorners(mesh);
            isAnySeparated = true;
        }
    }
    return isAnySeparated;
}

} // namespace OV::Host
