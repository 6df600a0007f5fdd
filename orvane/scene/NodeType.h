#pragma once

namespace OV
{

/// Type tags: what `Type()` of the scene's and the overlay's classes answers and what their
/// `HasType(int)` is asked for. Four ASCII characters, the first in the highest byte.
///
/// `HasType` is no walk of the class tree: each class names the tags it says yes to.
enum NodeType : int
{
    NodeTypeNode = 0x4E6F4445,          ///< NoDE
    NodeTypeCameraNode = 0x436E6F44,    ///< CnoD, also a Node
    NodeTypeMeshNode = 0x4D6E6F44,      ///< MnoD, also a Node
    NodeTypeLightNode = 0x4C6E6F44,     ///< LnoD, also a Node
    NodeTypeShape2DNode = 0x53326E44,   ///< S2nD, also a MeshNode and a Node
    NodeTypeMesh = 0x4D657348,          ///< MesH
    NodeTypeLine = 0x4C496E65,          ///< LIne, also a Mesh
    NodeTypeShape2D = 0x53703244,       ///< Sp2D; no Mesh, though it derives from it
    NodeTypeRect = 0x52633244,          ///< Rc2D, also a Shape2D, but no Mesh
    NodeTypeMaterial = 0x4D617472,      ///< Matr
    NodeTypeNodeMaterial = 0x4E6D7472,  ///< Nmtr, also a Material
    NodeTypeMaterial2D = 0x4D615432,    ///< MaT2, also a Material
    NodeTypeSimMaterial = 0x536D4D61,   ///< SmMa, also a Material
    NodeTypeLineStyle = 0x6C6E5379,     ///< lnSy
    NodeTypeNodeLineStyle = 0x4E4C5359, ///< NLSY, also a LineStyle
};

} // namespace OV
