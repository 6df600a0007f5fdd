#pragma once

#include <cstddef>

namespace OV::Test
{

/// Calls of the system and of the libraries that this test program stands in for: each passes
/// on to the real one unless it is told to fail.
struct FailurePoints
{
    bool readStruct = false;
    bool writeStruct = false;
    /// Number of png_create_info_struct calls to let pass before one fails; -1 for all.
    int infoStructsToPass = -1;
    bool pngMalloc = false;
    bool threads = false;
    /// Blocks of operator new from this size on fail; 0 for none.
    std::size_t failingBlock = 0;

    /// Number of threads that were asked for since the last reset.
    int threadsAsked = 0;
    /// libpng structures made and not yet destroyed.
    int livePngStructs = 0;
};

/// The points in force.
FailurePoints& Failures();

/// Puts all points back to their rest, now and at the end.
class FailureScope
{
public:
    FailureScope();
    FailureScope(const FailureScope&) = delete;
    FailureScope& operator=(const FailureScope&) = delete;
    ~FailureScope();
};

}  // namespace OV::Test
