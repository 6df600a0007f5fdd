#pragma once

namespace OV
{

/// Linear part of a transform in the layout that GL takes without transposition.
///
/// Like Matrix, it holds nothing defined until it is written.
class Matrix3x3
{
public:
    /// Column-major: element (row r, column c) at c*3 + r.
    float m[9];
};

} // namespace OV
