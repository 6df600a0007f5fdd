#pragma once

#include <functional>
#include <string>
#include <vector>

namespace OV::Test
{

/// One piece of the state of GL that a host may have set otherwise than GL does at its start.
struct GLStateRow
{
    /// As docs/contract.md calls it.
    std::string name;

    /// Gives it another value, one that shows where it is not looked after.
    std::function<void()> change;

    /// Gives it GL's initial value; textures, buffers and programs are unbound.
    std::function<void()> reset;

    /// All of it, as numbers.
    std::function<std::vector<double>()> read;
};

/// The state of GL 2.1 and what is common of later versions, as far as the current context has
/// it. Of what comes in numbers (texture units, attributes, clip planes) those rows that the
/// engine could touch and one beyond. Not in it: the framebuffers bound, which are where a host
/// wants its frame, and what belongs to an object and not to the context.
///
/// Entry points must be loaded. Objects that the values need live until FreeGLStateObjects.
const std::vector<GLStateRow>& GLStateTable();

/// Deletes the objects that rows have made. The context must be current.
void FreeGLStateObjects();

}  // namespace OV::Test
