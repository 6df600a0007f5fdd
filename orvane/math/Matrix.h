#pragma once

#include "orvane/Export.h"

namespace OV
{

/// 4x4 matrix for column vectors, in the layout that GL takes without transposition.
///
/// Holds nothing defined until one of its operations writes it.
class ORVANE_API Matrix
{
public:
    void Identity();

    /// Becomes a x b. This must be neither a nor b.
    void Multiply(const Matrix& a, const Matrix& b);

    /// Becomes the transpose of m. This must not be m.
    void Transpose(const Matrix& m);

    /// Becomes the projection of glOrtho, clip space Z in -1..1.
    /// A width, height or depth of 1e-6 or less gives the identity.
    void CalculateOrthoMatrix(float left, float right, float bottom, float top, float nearZ,
                              float farZ);

    /// Becomes the projection of glFrustum, clip space Z in -1..1. The distances count along
    /// the negative Z of the view. A distance, width, height or depth of 1e-6 or less gives
    /// the identity.
    void CalculatePerspMatrix(float left, float right, float bottom, float top, float nearZ,
                              float farZ);

    /// Column-major: element (row r, column c) at c*4 + r, the translation at 12, 13, 14.
    float m[16];
};

} // namespace OV
