#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace OV::Test
{

/// One argument of a recorded call.
struct GLArgument
{
    enum class Kind
    {
        Integer,
        Real,
        Text,
        Offset,  ///< a pointer that GL takes as an offset into the bound buffer
        Data     ///< any other pointer
    };

    Kind kind = Kind::Integer;
    double number = 0.0;  ///< of an Integer, Real or Offset; for Data 0 when null, else 1
    std::string text;
};

/// One recorded call.
struct GLCall
{
    std::string name;  ///< with its prefix: "glClear"
    std::vector<GLArgument> args;
    std::vector<float> floats;       ///< what a pointer to floats led to
    std::vector<int> ints;           ///< what a pointer to integers led to, object names for instance
    std::vector<std::string> texts;  ///< the strings of glShaderSource

    /// The argument as an integer; 0 when there is none at this place.
    std::int64_t Int(std::size_t index) const;
    float Float(std::size_t index) const;
    std::string Text(std::size_t index) const;

    /// Whether the first arguments are these numbers.
    bool Begins(const std::vector<double>& numbers) const;

    /// As it would be written: "glUniform3fv(4, 1, {0.5, 0, 1})". Enumerators are decimal.
    std::string ToString() const;
};

/// A call as GLCall::ToString writes it, for comparison: its name, its numbers and, when given,
/// a last argument in words, "data" or "null" for instance.
std::string CallText(const std::string& name, const std::vector<double>& numbers, const std::string& last = "");

enum class GLObjectKind
{
    Buffer,
    Texture,
    Program,
    Shader,
    Framebuffer,
    Renderbuffer
};

/// Pixels of a texture level as they were handed to GL.
struct GLTexels
{
    int width = 0;
    int height = 0;
    unsigned format = 0;
    unsigned type = 0;
    std::vector<unsigned char> bytes;  ///< empty when no data was given
};

/// Stands between the engine and GL as long as it lives, and notes every call in order.
///
/// GL functions of version 1.1 are replaced by being defined in the test program, the others
/// by exchanging GLEW's pointers. With Forward every call goes on to the driver. With StandIn
/// none does, so that no context is needed: objects get names that count up from 1 over all
/// kinds, shaders compile, programs link, queries answer from what was set or is GL's initial
/// state. Recorders may be nested; the inner one alone notes, until it goes.
///
/// The helpers take names with their prefix, "glClear". Enumerators come as their numbers, so
/// that a test includes <GL/glew.h> for the constants.
class GLRecorder
{
public:
    enum class Mode
    {
        StandIn,
        Forward  ///< needs a current context
    };

    explicit GLRecorder(Mode mode = Mode::StandIn);
    GLRecorder(const GLRecorder&) = delete;
    GLRecorder& operator=(const GLRecorder&) = delete;
    ~GLRecorder();

    // What was called.

    const std::vector<GLCall>& Calls() const;
    std::vector<std::string> Names() const;
    /// The names of those calls alone that are in the set.
    std::vector<std::string> Names(const std::set<std::string>& of) const;
    std::vector<std::string> Strings() const;
    /// The calls in the set, each as ToString writes it.
    std::vector<std::string> Strings(const std::set<std::string>& of) const;
    /// Counts the calls whose first arguments are these numbers.
    std::size_t Count(const std::string& name, const std::vector<double>& numbers = {}) const;
    /// First call at or after the index whose first arguments are these numbers; null when
    /// there is none. Valid until the next call or Clear.
    const GLCall* Find(const std::string& name, const std::vector<double>& numbers = {}, std::size_t from = 0) const;
    const GLCall* FindLast(const std::string& name) const;
    /// Index of the call that Find finds; Calls().size() when there is none.
    std::size_t IndexOf(const std::string& name, const std::vector<double>& numbers = {}, std::size_t from = 0) const;
    std::vector<GLCall> All(const std::string& name) const;
    /// Forgets the calls; GL's state and the accounts stay.
    void Clear();
    /// While off, calls are carried out and accounted for, but not noted, and values of
    /// uniforms are not kept. A call of a kind that came before then allocates nothing here,
    /// unless it makes, deletes or fills an object.
    void SetRecording(bool on);

    // What came of it. Only what happened under this recorder is known.

    std::set<unsigned> Live(GLObjectKind kind) const;
    /// All kinds together.
    std::size_t LiveCount() const;
    /// Names other than 0 that were deleted while they were not live.
    std::vector<std::pair<GLObjectKind, unsigned>> StrayDeletes() const;
    /// Contents of a buffer by its last glBufferData and what glBufferSubData changed since.
    std::vector<unsigned char> BufferBytes(unsigned buffer) const;
    /// Picture of a level by its last glTexImage2D or glCopyTexImage2D and what glTexSubImage2D
    /// of the same format changed since.
    GLTexels TextureTexels(unsigned texture, int level = 0, unsigned face = 0) const;
    /// Last value of a uniform, component by component, integers as floats; empty when it was
    /// never set. The uniform must have been looked up under this recorder.
    std::vector<float> Uniform(unsigned program, const std::string& name) const;
    /// The same of the program that is current.
    std::vector<float> Uniform(const std::string& name) const;
    std::vector<float> UniformAt(unsigned program, int location) const;
    /// Source text as given to the live shader or, for a program, its shaders' in the order of
    /// attachment, also when they are deleted since.
    std::string ShaderText(unsigned shader) const;
    std::vector<std::string> ProgramTexts(unsigned program) const;
    unsigned CurrentProgram() const;
    bool IsEnabled(unsigned capability) const;

    // How the stand-in answers.

    /// For glGetString; null makes it answer null. GL_VERSION is "2.1 stand-in" at first, the
    /// others are empty. With Forward what is set here is the answer in place of the driver's.
    void SetString(unsigned name, const char* text);
    /// For glGetIntegerv, before what is known of the state.
    void SetIntegers(unsigned name, const std::vector<int>& values);
    void SetFloats(unsigned name, const std::vector<float>& values);
    /// -1 for a uniform that no program has. Without this a program has every uniform whose
    /// name stands in one of its sources as a word, or any at all when it has no sources, and
    /// its locations count up from 0.
    void SetUniformLocation(const std::string& name, int location);
    /// -1 for an attribute that no program has. Without this it is where it was bound, or as
    /// with uniforms.
    void SetAttribLocation(const std::string& name, int location);
    /// How all further shaders of a type compile.
    void SetCompileResult(unsigned shaderType, int status, const std::string& log = "");
    /// How all further programs link.
    void SetLinkResult(int status, const std::string& log = "");
    /// Makes all further calls of a creating function give the name 0.
    void FailCreation(const std::string& function, bool fail = true);
    /// The next answers of glGetError, before those that RaiseOn brings.
    void QueueError(unsigned error);
    /// Makes the nth next call of a function, from 1, raise an error for glGetError to report.
    void RaiseOn(const std::string& function, unsigned error, int nth = 1);
    void SetFramebufferStatus(unsigned status);

    struct State;

private:
    std::unique_ptr<State> m_state;
};

/// Whether a recorder is at work on a call of GL at this moment.
bool InsideGLCall();

}  // namespace OV::Test
