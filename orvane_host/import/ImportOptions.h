#pragma once

#include <cstdint>
#include <functional>

namespace OV::Host
{

/// What one model file may take before its import is refused.
///
/// The counts are checked on the parsed file before anything is built from it. Memory,
/// processor time and wall time bind the separate process of an isolated import only.
struct ImportLimits
{
    /// Size of the model file itself.
    std::uint64_t fileBytes = std::uint64_t(2) << 30;
    std::uint64_t vertices = 100'000'000;
    std::uint64_t faces = 100'000'000;
    /// Nodes of the tree, and places of meshes in them.
    std::uint64_t nodes = 1'000'000;
    /// Levels of the node tree below the file's root. The scene is walked recursively.
    std::uint32_t depth = 512;
    /// Decoded pixels, and files of embedded maps, that the importer keeps in memory, all
    /// materials together.
    std::uint64_t textureBytes = std::uint64_t(1) << 30;
    /// Pixels of a single picture, whether embedded or in a file of its own.
    std::uint64_t texturePixels = std::uint64_t(1) << 27;
    /// Address space that the import may take beyond what the process already has.
    std::uint64_t memoryBytes = std::uint64_t(4) << 30;
    std::uint32_t cpuSeconds = 300;
    /// Processor time granted for each megabyte that is read, the model's further files
    /// included, on top of 20 seconds. cpuSeconds stays the most.
    std::uint32_t cpuSecondsPerMegabyte = 20;
    std::uint32_t wallSeconds = 900;
};

/// How ModelImporter::Import goes about one file.
struct ImportOptions
{
    /// Called on the importing thread with the share done, 0 to 100, never falling.
    /// Returning false ends the import with ImportStatus::Cancelled.
    std::function<bool(float percent)> progress;

    ImportLimits limits;

    /// Parses in a forked process, so that a file which crashes, hangs or exhausts the
    /// parser ends in an error. Without it such a file takes the host down; turn it off
    /// only where forking is out of the question.
    bool isolate = true;

    /// Share of a lit surface's colour that it shows without any light, 0 to 1. The
    /// light of the file brings the rest, so that a surface square to it shows the
    /// colour that the file gives.
    float ambientLevel = 0.3f;

    /// Edges sharper than this stay sharp where normals have to be made, in degrees.
    float smoothingAngle = 35.0f;

    /// Decides of surfaces with faces in one plane, which would show in turns, that the thinner one is seen, of
    /// two as thick the later one of the file. What stands back has materials with a polygon offset.
    bool orderCoplanar = true;

    /// Whether the backs of open surfaces may be drawn: those of all by PresentationSettings::cullBacks, those of
    /// what is cut open by clip planes. A host that never does either leaves faces that look opposite ways in one
    /// plane as they are, which divides fewer meshes; what has a two-sided material is put in order in any case.
    bool showBacks = true;

    /// Brings a model that is too small or too large to be drawn, or too far from the origin for its size (10,000 times,
    /// as where it counts from that of a survey), to where and as large as floats can show it, and says so in a
    /// warning. False for one of several files that have their places in common.
    bool bringsWithinReach = true;

    /// Leaves all pictures aside when false.
    bool textures = true;
};

} // namespace OV::Host
