#pragma once

#include "tests/support/GLFunctions.h"
#include "tests/support/GLRecorderState.h"

#include <GL/glew.h>

// The parts of GLHooks.cpp, for it alone: each function gets a tag; a call is noted (GLNotes.h),
// carried out by the driver or by what stands in for it (GLStandIns.h), and its effect is kept
// (GLEffects.h). The three are overloaded by tag, with a template each for every function that
// needs nothing special.

namespace OV::Test
{

namespace
{

using State = GLRecorder::State;
using Kind = GLObjectKind;

struct Nothing
{
};

#define ORVANE_DECLARE_TAG(name)                            \
    struct name##Tag                                        \
    {                                                       \
        static constexpr const char* kName = "gl" #name;    \
    };
#define ORVANE_DECLARE_TAG_11(result, name, parameters, arguments) ORVANE_DECLARE_TAG(name)
ORVANE_GL11_FUNCTIONS(ORVANE_DECLARE_TAG_11)
ORVANE_GLEW_FUNCTIONS(ORVANE_DECLARE_TAG)

}  // namespace

}  // namespace OV::Test
