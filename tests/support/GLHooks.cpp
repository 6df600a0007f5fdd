#include "tests/support/GLEffects.h"
#include "tests/support/GLNotes.h"
#include "tests/support/GLStandIns.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

namespace OV::Test
{

namespace
{

int g_callDepth = 0;

/// Marks what is done on the recorder's own account.
struct CallScope
{
    CallScope() { ++g_callDepth; }
    ~CallScope() { --g_callDepth; }
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;
};

/// Whether the recorder answers in place of the driver too.
template <class Tag, class... A>
bool IsAnsweredFor(const State&, Tag, const A&...)
{
    return false;
}

bool IsAnsweredFor(const State& state, GetStringTag, const GLenum& name)
{
    return state.strings.count(name) != 0;
}

template <class Tag, class Signature>
struct Hook;

template <class Tag, class R, class... A>
struct Hook<Tag, R(A...)>
{
    using Function = R(GLAPIENTRY*)(A...);
    using Result = std::conditional_t<std::is_void_v<R>, Nothing, R>;

    static inline Function driver = nullptr;

    static R GLAPIENTRY Call(A... a)
    {
        const CallScope scope;
        State* state = State::active;
        if (!state)
        {
            return driver(a...);
        }
        std::size_t index = 0;
        if (state->recording)
        {
            index = state->calls.size();
            GLCall call;
            call.name = Tag::kName;
            call.args = {ToArgument<Tag>(a)...};
            NoteValues(call, Tag(), a...);
            state->calls.push_back(std::move(call));
        }
        Result result = Result();
        if (state->mode == GLRecorder::Mode::StandIn || IsAnsweredFor(*state, Tag(), a...))
        {
            Fake(*state, Tag(), &result, a...);
        }
        else if constexpr (std::is_void_v<R>)
        {
            driver(a...);
        }
        else
        {
            result = driver(a...);
        }
        Observe(*state, Tag(), &result, a...);
        state->RaiseFor(Tag::kName);
        if (state->recording)
        {
            NoteAnswer(state->calls[index], Tag(), a...);
        }
        if constexpr (!std::is_void_v<R>)
        {
            return result;
        }
    }

    static void Install(Function& pointer)
    {
        if (pointer != &Call)
        {
            driver = pointer;
            pointer = &Call;
        }
    }

    static void Remove(Function& pointer)
    {
        if (pointer == &Call)
        {
            pointer = driver;
        }
    }
};

// The driver's function of the same name as one that this program defines.
void* DriverFunction(const char* name)
{
    void* found = dlsym(RTLD_NEXT, name);
    if (!found)
    {
        std::fprintf(stderr, "GLRecorder: no GL library has %s\n", name);
        std::abort();
    }
    return found;
}

// Whether calls end here instead of going on to the driver.
bool StandsIn()
{
    return State::active && State::active->mode == GLRecorder::Mode::StandIn;
}

template <class Pointer>
using SignatureOf = std::remove_pointer_t<std::remove_reference_t<Pointer>>;

}  // namespace

bool InsideGLCall()
{
    return g_callDepth > 0;
}

void GLRecorder::State::InstallHooks()
{
#define ORVANE_INSTALL(name) Hook<name##Tag, SignatureOf<decltype(__glew##name)>>::Install(__glew##name);
    ORVANE_GLEW_FUNCTIONS(ORVANE_INSTALL)
#undef ORVANE_INSTALL
}

void GLRecorder::State::RemoveHooks()
{
#define ORVANE_REMOVE(name) Hook<name##Tag, SignatureOf<decltype(__glew##name)>>::Remove(__glew##name);
    ORVANE_GLEW_FUNCTIONS(ORVANE_REMOVE)
#undef ORVANE_REMOVE
}

}  // namespace OV::Test

#define ORVANE_DEFINE(result, name, parameters, arguments)                                            \
    extern "C" result GLAPIENTRY gl##name parameters                                                  \
    {                                                                                                 \
        using Hook = OV::Test::Hook<OV::Test::name##Tag, result parameters>;                          \
        if (!Hook::driver && !OV::Test::StandsIn())                                                   \
        {                                                                                             \
            Hook::driver = reinterpret_cast<Hook::Function>(OV::Test::DriverFunction("gl" #name));    \
        }                                                                                             \
        return Hook::Call arguments;                                                                  \
    }
ORVANE_GL11_FUNCTIONS(ORVANE_DEFINE)
