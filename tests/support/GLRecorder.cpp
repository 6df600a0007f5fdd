#include "tests/support/GLRecorder.h"

#include "tests/support/GLRecorderState.h"

#include "orvane/platform/detail/EntryPoints.h"

#include <GL/glew.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <sstream>

namespace OV::Test
{

namespace
{

std::string Write(double number)
{
    std::ostringstream out;
    if (number == std::floor(number) && std::abs(number) < 1e15)
    {
        out << static_cast<std::int64_t>(number);
    }
    else
    {
        out.precision(9);
        out << number;
    }
    return out.str();
}

template <class T>
std::string WriteList(const std::vector<T>& values)
{
    std::string out = "{";
    for (const T& value : values)
    {
        if (out.size() > 1)
        {
            out += ", ";
        }
        out += Write(static_cast<double>(value));
    }
    return out + "}";
}

bool IsWordCharacter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

bool HasWord(const std::string& text, const std::string& word)
{
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
    {
        const std::size_t end = at + word.size();
        if ((at == 0 || !IsWordCharacter(text[at - 1])) && (end == text.size() || !IsWordCharacter(text[end])))
        {
            return true;
        }
    }
    return false;
}

// An array's element or a structure's member counts by the name of the whole.
bool Declares(const std::vector<std::string>& texts, const std::string& name)
{
    const std::string word = name.substr(0, name.find_first_of(".["));
    return texts.empty() ||
           std::any_of(texts.begin(), texts.end(), [&](const std::string& text) { return HasWord(text, word); });
}

}  // namespace

std::int64_t GLCall::Int(std::size_t index) const
{
    return index < args.size() ? static_cast<std::int64_t>(args[index].number) : 0;
}

float GLCall::Float(std::size_t index) const
{
    return index < args.size() ? static_cast<float>(args[index].number) : 0.0f;
}

std::string GLCall::Text(std::size_t index) const
{
    return index < args.size() ? args[index].text : std::string();
}

bool GLCall::Begins(const std::vector<double>& numbers) const
{
    if (numbers.size() > args.size())
    {
        return false;
    }
    for (std::size_t i = 0; i < numbers.size(); ++i)
    {
        if (args[i].kind == GLArgument::Kind::Text || args[i].number != numbers[i])
        {
            return false;
        }
    }
    return true;
}

std::string GLCall::ToString() const
{
    std::string out = name + "(";
    for (const GLArgument& arg : args)
    {
        if (&arg != &args.front())
        {
            out += ", ";
        }
        switch (arg.kind)
        {
        case GLArgument::Kind::Text:
            out += '"' + arg.text + '"';
            break;
        case GLArgument::Kind::Data:
            if (arg.number == 0.0)
            {
                out += "null";
            }
            else if (!floats.empty())
            {
                out += WriteList(floats);
            }
            else
            {
                out += ints.empty() ? "data" : WriteList(ints);
            }
            break;
        default:
            out += Write(arg.number);
        }
    }
    return out + ")";
}

std::string CallText(const std::string& name, const std::vector<double>& numbers, const std::string& last)
{
    std::string out = name + "(";
    for (std::size_t i = 0; i < numbers.size(); ++i)
    {
        out += (i == 0 ? "" : ", ") + Write(numbers[i]);
    }
    if (!last.empty())
    {
        out += (numbers.empty() ? "" : ", ") + last;
    }
    return out + ")";
}

GLRecorder::State* GLRecorder::State::active = nullptr;

GLRecorder::State::State()
{
    strings[GL_VERSION] = "2.1 stand-in";
    for (unsigned name : {GL_VENDOR, GL_RENDERER, GL_EXTENSIONS, GL_SHADING_LANGUAGE_VERSION})
    {
        strings[name] = "";
    }
    integers[GL_DEPTH_FUNC] = {GL_LESS};
    integers[GL_DEPTH_WRITEMASK] = {1};
    integers[GL_COLOR_WRITEMASK] = {1, 1, 1, 1};
    integers[GL_CULL_FACE_MODE] = {GL_BACK};
    integers[GL_FRONT_FACE] = {GL_CCW};
    integers[GL_BLEND_EQUATION] = {GL_FUNC_ADD};
    integers[GL_BLEND_SRC] = {GL_ONE};
    integers[GL_BLEND_DST] = {GL_ZERO};
    integers[GL_VIEWPORT] = {0, 0, 0, 0};
    integers[GL_UNPACK_ALIGNMENT] = {4};
    integers[GL_PACK_ALIGNMENT] = {4};
    integers[GL_MAX_TEXTURE_SIZE] = {4096};
    integers[GL_MAX_VERTEX_ATTRIBS] = {16};
    floats[GL_COLOR_CLEAR_VALUE] = {0.0f, 0.0f, 0.0f, 0.0f};
    floats[GL_POLYGON_OFFSET_FACTOR] = {0.0f};
    floats[GL_POLYGON_OFFSET_UNITS] = {0.0f};
    floats[GL_LINE_WIDTH] = {1.0f};
    enabled[GL_DITHER] = true;
    enabled[GL_MULTISAMPLE] = true;
    framebufferStatus = GL_FRAMEBUFFER_COMPLETE;
}

unsigned GLRecorder::State::NewName(const char* function)
{
    return failing.count(function) ? 0 : ++lastName;
}

void GLRecorder::State::Born(GLObjectKind kind, unsigned name)
{
    if (name != 0)
    {
        live[kind].insert(name);
    }
}

void GLRecorder::State::Died(GLObjectKind kind, unsigned name)
{
    if (name != 0 && live[kind].erase(name) == 0)
    {
        strays.emplace_back(kind, name);
    }
}

void GLRecorder::State::RaiseFor(const char* function)
{
    if (raises.empty())
    {
        return;
    }
    const auto [first, last] = raises.equal_range(function);
    for (auto raise = first; raise != last;)
    {
        if (--raise->second.countdown == 0)
        {
            errors.push_back(raise->second.error);
            raise = raises.erase(raise);
        }
        else
        {
            ++raise;
        }
    }
}

int GLRecorder::State::UniformLocation(unsigned program, const std::string& name)
{
    const auto set = uniformLocations.find(name);
    if (set != uniformLocations.end())
    {
        return set->second;
    }
    const auto known = programs.find(program);
    if (known == programs.end() || !Declares(known->second.texts, name))
    {
        return -1;
    }
    const auto seen = known->second.uniforms.find(name);
    return seen != known->second.uniforms.end() ? seen->second : known->second.nextLocation++;
}

int GLRecorder::State::AttribLocation(unsigned program, const std::string& name)
{
    const auto set = attribLocations.find(name);
    if (set != attribLocations.end())
    {
        return set->second;
    }
    const auto known = programs.find(program);
    if (known == programs.end() || !Declares(known->second.texts, name))
    {
        return -1;
    }
    Program& found = known->second;
    const auto bound = found.boundAttributes.find(name);
    if (bound != found.boundAttributes.end())
    {
        return bound->second;
    }
    return found.boundAttributes[name] = found.nextAttribute++;
}

void GLRecorder::State::SetUniformValue(int location, std::vector<float> value)
{
    if (location >= 0)
    {
        programs[currentProgram].values[location] = std::move(value);
    }
}

unsigned GLRecorder::State::BoundTexture(unsigned target) const
{
    const auto bound = boundTextures.find({activeUnit, target});
    return bound == boundTextures.end() ? 0 : bound->second;
}

bool GLRecorder::State::IsEnabled(unsigned capability) const
{
    const auto known = enabled.find(capability);
    return known != enabled.end() && known->second;
}

int GLRecorder::State::Integer(unsigned name, int fallback) const
{
    const auto known = integers.find(name);
    return known == integers.end() || known->second.empty() ? fallback : known->second[0];
}

GLRecorder::GLRecorder(Mode mode)
    : m_state(std::make_unique<State>())
{
    if (mode == Mode::Forward)
    {
        Platform::LoadEntryPoints();
        m_state->strings.clear();
    }
    m_state->mode = mode;
    m_state->previous = State::active;
    State::active = m_state.get();
    State::InstallHooks();
}

GLRecorder::~GLRecorder()
{
    State::active = m_state->previous;
    if (!State::active)
    {
        State::RemoveHooks();
    }
}

const std::vector<GLCall>& GLRecorder::Calls() const
{
    return m_state->calls;
}

std::vector<std::string> GLRecorder::Names() const
{
    std::vector<std::string> names;
    for (const GLCall& call : m_state->calls)
    {
        names.push_back(call.name);
    }
    return names;
}

std::vector<std::string> GLRecorder::Names(const std::set<std::string>& of) const
{
    std::vector<std::string> names;
    for (const GLCall& call : m_state->calls)
    {
        if (of.count(call.name))
        {
            names.push_back(call.name);
        }
    }
    return names;
}

std::vector<std::string> GLRecorder::Strings() const
{
    std::vector<std::string> strings;
    for (const GLCall& call : m_state->calls)
    {
        strings.push_back(call.ToString());
    }
    return strings;
}

std::vector<std::string> GLRecorder::Strings(const std::set<std::string>& of) const
{
    std::vector<std::string> strings;
    for (const GLCall& call : m_state->calls)
    {
        if (of.count(call.name))
        {
            strings.push_back(call.ToString());
        }
    }
    return strings;
}

std::size_t GLRecorder::Count(const std::string& name, const std::vector<double>& numbers) const
{
    return static_cast<std::size_t>(
        std::count_if(m_state->calls.begin(), m_state->calls.end(),
                      [&](const GLCall& call) { return call.name == name && call.Begins(numbers); }));
}

const GLCall* GLRecorder::Find(const std::string& name, const std::vector<double>& numbers, std::size_t from) const
{
    const std::size_t index = IndexOf(name, numbers, from);
    return index < m_state->calls.size() ? &m_state->calls[index] : nullptr;
}

const GLCall* GLRecorder::FindLast(const std::string& name) const
{
    const auto found = std::find_if(m_state->calls.rbegin(), m_state->calls.rend(),
                                    [&](const GLCall& call) { return call.name == name; });
    return found == m_state->calls.rend() ? nullptr : &*found;
}

std::size_t GLRecorder::IndexOf(const std::string& name, const std::vector<double>& numbers, std::size_t from) const
{
    const std::vector<GLCall>& calls = m_state->calls;
    for (std::size_t i = from; i < calls.size(); ++i)
    {
        if (calls[i].name == name && calls[i].Begins(numbers))
        {
            return i;
        }
    }
    return calls.size();
}

std::vector<GLCall> GLRecorder::All(const std::string& name) const
{
    std::vector<GLCall> found;
    std::copy_if(m_state->calls.begin(), m_state->calls.end(), std::back_inserter(found),
                 [&](const GLCall& call) { return call.name == name; });
    return found;
}

void GLRecorder::Clear()
{
    m_state->calls.clear();
}

void GLRecorder::SetRecording(bool on)
{
    m_state->recording = on;
}

std::set<unsigned> GLRecorder::Live(GLObjectKind kind) const
{
    const auto found = m_state->live.find(kind);
    return found == m_state->live.end() ? std::set<unsigned>() : found->second;
}

std::size_t GLRecorder::LiveCount() const
{
    std::size_t count = 0;
    for (const auto& [kind, names] : m_state->live)
    {
        count += names.size();
    }
    return count;
}

std::vector<std::pair<GLObjectKind, unsigned>> GLRecorder::StrayDeletes() const
{
    return m_state->strays;
}

std::vector<unsigned char> GLRecorder::BufferBytes(unsigned buffer) const
{
    const auto found = m_state->buffers.find(buffer);
    return found == m_state->buffers.end() ? std::vector<unsigned char>() : found->second;
}

GLTexels GLRecorder::TextureTexels(unsigned texture, int level, unsigned face) const
{
    const auto found = m_state->texels.find({texture, face == 0 ? unsigned{GL_TEXTURE_2D} : face, level});
    return found == m_state->texels.end() ? GLTexels() : found->second;
}

std::vector<float> GLRecorder::Uniform(unsigned program, const std::string& name) const
{
    const auto known = m_state->programs.find(program);
    if (known == m_state->programs.end())
    {
        return {};
    }
    const auto uniform = known->second.uniforms.find(name);
    return uniform == known->second.uniforms.end() ? std::vector<float>() : UniformAt(program, uniform->second);
}

std::vector<float> GLRecorder::Uniform(const std::string& name) const
{
    return Uniform(m_state->currentProgram, name);
}

std::vector<float> GLRecorder::UniformAt(unsigned program, int location) const
{
    const auto known = m_state->programs.find(program);
    if (known == m_state->programs.end())
    {
        return {};
    }
    const auto value = known->second.values.find(location);
    return value == known->second.values.end() ? std::vector<float>() : value->second;
}

std::string GLRecorder::ShaderText(unsigned shader) const
{
    const auto found = m_state->shaders.find(shader);
    return found == m_state->shaders.end() ? std::string() : found->second.text;
}

std::vector<std::string> GLRecorder::ProgramTexts(unsigned program) const
{
    const auto found = m_state->programs.find(program);
    return found == m_state->programs.end() ? std::vector<std::string>() : found->second.texts;
}

unsigned GLRecorder::CurrentProgram() const
{
    return m_state->currentProgram;
}

bool GLRecorder::IsEnabled(unsigned capability) const
{
    return m_state->IsEnabled(capability);
}

void GLRecorder::SetString(unsigned name, const char* text)
{
    m_state->strings[name] = text ? std::optional<std::string>(text) : std::nullopt;
}

void GLRecorder::SetIntegers(unsigned name, const std::vector<int>& values)
{
    m_state->setIntegers[name] = values;
}

void GLRecorder::SetFloats(unsigned name, const std::vector<float>& values)
{
    m_state->setFloats[name] = values;
}

void GLRecorder::SetUniformLocation(const std::string& name, int location)
{
    m_state->uniformLocations[name] = location;
}

void GLRecorder::SetAttribLocation(const std::string& name, int location)
{
    m_state->attribLocations[name] = location;
}

void GLRecorder::SetCompileResult(unsigned shaderType, int status, const std::string& log)
{
    m_state->compileAnswers[shaderType] = {status, log};
}

void GLRecorder::SetLinkResult(int status, const std::string& log)
{
    m_state->linkAnswer = {status, log};
}

void GLRecorder::FailCreation(const std::string& function, bool fail)
{
    if (fail)
    {
        m_state->failing.insert(function);
    }
    else
    {
        m_state->failing.erase(function);
    }
}

void GLRecorder::QueueError(unsigned error)
{
    m_state->errors.push_back(error);
}

void GLRecorder::RaiseOn(const std::string& function, unsigned error, int nth)
{
    m_state->raises.insert({function, {error, nth}});
}

void GLRecorder::SetFramebufferStatus(unsigned status)
{
    m_state->framebufferStatus = status;
}

}  // namespace OV::Test
