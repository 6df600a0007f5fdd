#pragma once

#include "tests/support/GLRecorder.h"

#include <deque>
#include <optional>
#include <tuple>

namespace OV::Test
{

/// What a recorder knows of GL; shared by its queries and the functions that stand in for GL.
struct GLRecorder::State
{
    struct Shader
    {
        unsigned type = 0;
        std::string text;
        int status = 0;
        std::string log;
    };

    struct Program
    {
        std::vector<std::string> texts;
        std::map<std::string, int> boundAttributes;
        std::map<std::string, int> uniforms;  ///< by name, as looked up
        std::map<int, std::vector<float>> values;
        int nextLocation = 0;
        int nextAttribute = 0;
        int status = 0;
        std::string log;
    };

    struct Answer
    {
        int status = 1;
        std::string log;
    };

    struct Raise
    {
        unsigned error = 0;
        int countdown = 0;
    };

    /// The recorder that notes at present; null when calls go straight to the driver.
    static State* active;

    static void InstallHooks();
    static void RemoveHooks();

    Mode mode = Mode::StandIn;
    State* previous = nullptr;
    bool recording = true;
    std::vector<GLCall> calls;

    unsigned lastName = 0;
    std::map<GLObjectKind, std::set<unsigned>> live;
    std::vector<std::pair<GLObjectKind, unsigned>> strays;

    std::map<unsigned, Shader> shaders;
    std::map<unsigned, Program> programs;
    std::map<unsigned, std::vector<unsigned char>> buffers;
    std::map<std::tuple<unsigned, unsigned, int>, GLTexels> texels;  ///< texture, face, level

    std::map<unsigned, unsigned> boundBuffers;   ///< by target
    std::map<std::pair<unsigned, unsigned>, unsigned> boundTextures;  ///< by unit and target
    unsigned activeUnit = 0;
    unsigned currentProgram = 0;
    std::map<unsigned, bool> enabled;
    std::map<unsigned, std::vector<int>> integers;  ///< state as the calls left it
    std::map<unsigned, std::vector<float>> floats;

    std::map<unsigned, std::optional<std::string>> strings;
    std::map<unsigned, std::vector<int>> setIntegers;
    std::map<unsigned, std::vector<float>> setFloats;
    std::map<std::string, int> uniformLocations;
    std::map<std::string, int> attribLocations;
    std::map<unsigned, Answer> compileAnswers;  ///< by shader type
    Answer linkAnswer;
    std::set<std::string> failing;
    std::deque<unsigned> errors;
    std::multimap<std::string, Raise> raises;
    unsigned framebufferStatus = 0;

    State();

    unsigned NewName(const char* function);
    void Born(GLObjectKind kind, unsigned name);
    void Died(GLObjectKind kind, unsigned name);
    /// Lets go of the errors that were to come with this call.
    void RaiseFor(const char* function);
    int UniformLocation(unsigned program, const std::string& name);
    int AttribLocation(unsigned program, const std::string& name);
    void SetUniformValue(int location, std::vector<float> value);
    unsigned BoundTexture(unsigned target) const;
    bool IsEnabled(unsigned capability) const;
    int Integer(unsigned name, int fallback) const;
};

}  // namespace OV::Test
