#pragma once

#include "orvane/Export.h"

#include <glm/mat3x3.hpp>
#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace OV
{

class Color;
class Matrix;
class Matrix3x3;
class ShaderProgram;
class Vector;

namespace detail
{

class RepeatedUniform;

} // namespace detail

/// Text that goes before every vertex and fragment source.
///
/// The sources spell precision with these macros; desktop GL has no use for it.
inline constexpr char ShaderPrelude[] = "#define PRECISION_DEFAULT_HIGHP(t)\n"
                                        "#define PRECISION_DEFAULT_MEDIUMP(t)\n"
                                        "#define PRECISION_DEFAULT_LOWP(t)\n"
                                        "\n"
                                        "#define HIGHP\n"
                                        "#define LOWP\n"
                                        "#define MEDIUMP\n";

/// Compiles and links a program. GL.
///
/// The prelude goes before both sources. A compile failure is reported on the standard error
/// stream, a link failure is not reported at all.
/// @param attributes attribute index to attribute name.
/// @return the GL name, owned by the caller; 0 on any failure, or without GL.
ORVANE_API int LoadProgram(const std::string& name, const std::string& vertexSource,
                           const std::string& fragmentSource,
                           const std::map<unsigned int, std::string>& attributes);

/// Compiles one shader. GL.
/// @param logName not read: the report of a failed compile doesn't name the shader.
/// @param type the GL enumerator of the kind of shader.
/// @param source read up to its terminating zero; null fails.
/// @return the GL name, owned by the caller; 0 on any failure, or without GL.
ORVANE_API int CompileShader(const std::string& logName, unsigned int type, const char* source);

/// A uniform of a program: what indexing a ShaderProgram yields.
struct UniformVar
{
    ShaderProgram* program;
    int location;
};

/// A linked GL program with its uniforms, which are addressed by index instead of by name.
///
/// A value: it never owns the GL program, so copies are harmless and nothing is deleted. All
/// setters need GL and act on the program in use, which must be this one. A uniform that the
/// program lacks has location -1, which GL ignores; each use asks GL for it again.
class ORVANE_API ShaderProgram
{
public:
    ShaderProgram(int program = 0, const std::string& name = "");
    ShaderProgram(const ShaderProgram&) = default;

    /// Takes the uniform table and the name; the source keeps its program and its bound flag.
    ShaderProgram(ShaderProgram&& other) noexcept;
    ShaderProgram& operator=(const ShaderProgram&) = default;
    ShaderProgram& operator=(ShaderProgram&& other) noexcept;
    ~ShaderProgram() = default;

    /// The GL name, 0 meaning none.
    unsigned int get() const
    {
        return m_program;
    }

    /// Stores the GL name. Cached uniform locations stay: another program needs another object.
    void SetProgram(int program);

    /// Makes this the program in use.
    void Bind();

    /// Leaves no program in use.
    void Unbind();

    /// Whether Bind was called later than Unbind on this object. Other programs bound since
    /// don't count.
    bool IsBound() const
    {
        return m_bound;
    }

    UniformVar operator[](int index);

    /// Compiles and links with LoadProgram and keeps the result. GL. The uniform table stays as
    /// it is, cached locations too.
    /// @return the GL name, owned by the caller; 0 on failure.
    int Load(const char* vertexSource, const char* fragmentSource,
             const std::map<unsigned int, std::string>& attributes);

    /// Replaces the table of uniform names and asks for every location not yet known. GL.
    ///
    /// Each missing name is reported on the standard error stream.
    /// @return whether none is missing.
    bool DeclareUniforms(const std::vector<std::string>& names);

    void Uniform1i(int index, int x);
    void Uniform2i(int index, int x, int y);
    void Uniform3i(int index, int x, int y, int z);
    void Uniform4i(int index, int x, int y, int z, int w);
    void Uniform1f(int index, float x);
    void Uniform2f(int index, float x, float y);
    void Uniform3f(int index, float x, float y, float z);
    void Uniform4f(int index, float x, float y, float z, float w);

    /// The array forms read count elements, each of as many numbers as the name says.
    void Uniform1iv(int index, int count, const int* values);
    void Uniform2iv(int index, int count, const int* values);
    void Uniform3iv(int index, int count, const int* values);
    void Uniform4iv(int index, int count, const int* values);
    void Uniform1fv(int index, int count, const float* values);
    void Uniform2fv(int index, int count, const float* values);
    void Uniform3fv(int index, int count, const float* values);
    void Uniform4fv(int index, int count, const float* values);

    /// The matrix forms read count column-major matrices, row-major with transpose.
    void UniformMatrix2fv(int index, int count, unsigned char transpose, const float* values);
    void UniformMatrix3fv(int index, int count, unsigned char transpose, const float* values);
    void UniformMatrix4fv(int index, int count, unsigned char transpose, const float* values);

    void SetUniform(int index, int x);
    void SetUniform(int index, int x, int y);
    void SetUniform(int index, int x, int y, int z);
    void SetUniform(int index, int x, int y, int z, int w);
    void SetUniform(int index, float x);
    void SetUniform(int index, float x, float y);
    void SetUniform(int index, float x, float y, float z);
    void SetUniform(int index, float x, float y, float z, float w);
    void SetUniform(int index, const Vector& value);
    void SetUniform(int index, const Color& value);
    void SetUniform(int index, const Matrix3x3& value);
    void SetUniform(int index, const Matrix& value);
    void SetUniform(int index, const glm::vec2& value);
    void SetUniform(int index, const glm::vec3& value);
    void SetUniform(int index, const glm::vec4& value);
    void SetUniform(int index, const glm::mat3& value, bool transpose);
    void SetUniform(int index, const glm::mat4& value, bool transpose);

protected:
    /// Whether a location is cached for the index. Never asks GL, so that a uniform not yet
    /// asked for doesn't exist.
    bool Exists(int index) const
    {
        return static_cast<std::size_t>(index) < m_locations.size() &&
               m_locations[static_cast<std::size_t>(index)] != -1;
    }

    /// The location of a uniform, from the cache once GL has given one. An index without a name
    /// gives -1.
    int GetLocation(int index);

    std::vector<int> m_locations;
    std::vector<std::string> m_uniformNames;
    unsigned int m_program;
    std::string m_name;
    bool m_bound = false;

private:
    /// The values that a program is known to hold, by uniform. Once a table is copied, neither knows
    /// anything: each may write what the other doesn't see.
    class KnownValues
    {
    public:
        struct Value
        {
            std::size_t bytes = 0; ///< 0 where nothing is known
            bool isGivenAway = false;
            std::array<std::uint32_t, 18> words;

            template <std::size_t Bytes>
            bool Is(const void* value) const
            {
                return bytes == Bytes && IsSame<Bytes / sizeof(std::uint32_t)>(words.data(), value);
            }

            template <std::size_t Bytes>
            void Keep(const void* value)
            {
                std::memcpy(words.data(), value, Bytes);
                bytes = Bytes;
            }
        };

        KnownValues() = default;
        KnownValues(const KnownValues& other) : m_isCopied(true)
        {
            other.m_isCopied = true;
        }
        KnownValues& operator=(const KnownValues& other)
        {
            ForgetAll();
            m_isCopied = true;
            other.m_isCopied = true;
            return *this;
        }

        bool Holds(int index, const void* value, std::size_t bytes) const
        {
            const auto place = static_cast<std::size_t>(index);
            return place < m_values.size() && m_values[place].bytes == bytes &&
                   std::memcmp(m_values[place].words.data(), value, bytes) == 0;
        }

        /// The same for a size that is known.
        template <std::size_t Bytes>
        bool Holds(int index, const void* value) const
        {
            const auto place = static_cast<std::size_t>(index);
            return place < m_values.size() && m_values[place].template Is<Bytes>(value);
        }

        /// Whether a value of this size has to be sent. It then is kept.
        template <std::size_t Bytes>
        bool Renew(int index, const void* value)
        {
            const auto place = static_cast<std::size_t>(index);
            if (place >= m_values.size())
            {
                Keep(index, value, Bytes);
                return true;
            }
            Value& known = m_values[place];
            if (known.template Is<Bytes>(value))
            {
                return false;
            }
            if (Keeps(known))
            {
                known.template Keep<Bytes>(value);
            }
            return true;
        }

        /// The place of a value, good until room is made for more; null where there is none.
        Value* Find(int index)
        {
            const auto place = static_cast<std::size_t>(index);
            return place < m_values.size() ? &m_values[place] : nullptr;
        }

        /// Whether what is sent to a uniform is known from then on.
        bool Keeps(const Value& value) const { return !m_isCopied && !value.isGivenAway; }

        /// Makes room for the values of this many uniforms.
        void Reserve(std::size_t count);

        /// A value that is larger than six vectors is not kept.
        void Keep(int index, const void* value, std::size_t bytes);
        void Forget(int index);
        void ForgetAll();

        /// Nothing is known of the uniform from now on, since its location is in other hands.
        void GiveAway(int index);

        /// Whether the colours of materials, which are too many to be kept, are those of a revision.
        bool HoldsColors(std::uint64_t revision) const { return m_colors == revision && !m_isCopied; }
        void KeepColors(std::uint64_t revision) { m_colors = revision; }

    private:
        Value& At(int index);

        /// As memcmp, in place. The translation of a matrix comes first, by which most differ.
        template <std::size_t Words>
        static bool IsSame(const std::uint32_t* words, const void* value)
        {
            const auto* const other = static_cast<const unsigned char*>(value);
            const auto difference = [&](std::size_t pair)
            {
                std::uint64_t a;
                std::uint64_t b;
                std::memcpy(&a, words + 2 * pair, sizeof(a));
                std::memcpy(&b, other + pair * sizeof(b), sizeof(b));
                return a ^ b;
            };
            constexpr std::size_t pairs = Words / 2;
            if (Words == 16 && difference(pairs - 2) != 0)
            {
                return false;
            }
            std::uint64_t all = 0;
            for (std::size_t pair = 0; pair < pairs; ++pair)
            {
                all |= difference(pair);
            }
            std::uint32_t last = 0;
            if (Words % 2 != 0)
            {
                std::memcpy(&last, other + pairs * sizeof(std::uint64_t), sizeof(last));
                last ^= words[Words - 1];
            }
            return (all | last) == 0;
        }

        std::vector<Value> m_values;
        std::uint64_t m_colors = 0; ///< a revision; 0 for none
        mutable bool m_isCopied = false;
    };

    // The effects seed the table themselves, skip, on the draw path, what a program lacks, and leave
    // out what it holds.
    friend class EffectES20;
    friend class detail::RepeatedUniform;

    int AskLocation(int index);

    // The one in use whose values are followed: from EffectES20::UseOptions until another is bound
    // or the effect is removed.
    static ShaderProgram* s_fed;

    KnownValues m_known;
    std::uint64_t m_knownSince = 0; ///< EffectES20::ForgetUniformValues has been called so often
    std::uint64_t m_shareSince = 0; ///< EffectES20::SetLightShare has been called so often
    int m_firstShareUniform = 0;    ///< index of the first one of its light share
    int m_materialColors = -1;      ///< location of the colours of materials
};

} // namespace OV
