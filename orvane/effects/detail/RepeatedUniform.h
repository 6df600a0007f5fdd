#pragma once

#include "orvane/effects/ShaderProgram.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Matrix3x3.h"

#include <GL/glew.h>

namespace OV::detail
{

/// A uniform that is sent for one draw after another, as EffectES20::Set does, with all that is the same
/// for each found once: for as long as nobody makes a uniform known to the program, or writes one by
/// other means.
class RepeatedUniform
{
public:
    /// @param program the one in use, whose values are followed; not null.
    /// @param exists whether it has the uniform.
    RepeatedUniform(ShaderProgram* program, int index, bool exists) :
        m_known(exists ? program->m_known.Find(index) : nullptr),
        m_keeps(m_known && program->m_known.Keeps(*m_known)),
        m_location(exists ? program->m_locations[static_cast<std::size_t>(index)] : -1)
    {
    }

    bool Exists() const { return m_location != -1; }

    /// Whether the values of a program are followed.
    static bool AreFollowed(const ShaderProgram* program) { return ShaderProgram::s_fed == program; }

    void Send(const Matrix& value)
    {
        if (Renew<sizeof(value.m)>(value.m))
        {
            glUniformMatrix4fv(m_location, 1, GL_FALSE, value.m);
        }
    }

    void Send(const Matrix3x3& value)
    {
        if (Renew<sizeof(value.m)>(value.m))
        {
            glUniformMatrix3fv(m_location, 1, GL_FALSE, value.m);
        }
    }

    void Send(int value)
    {
        if (Renew<sizeof(value)>(&value))
        {
            glUniform1i(m_location, value);
        }
    }

    void Send(const float (&value)[4])
    {
        if (Renew<sizeof(value)>(value))
        {
            glUniform4f(m_location, value[0], value[1], value[2], value[3]);
        }
    }

private:
    template <std::size_t Bytes>
    bool Renew(const void* value)
    {
        if (!Exists() || (m_known && m_known->template Is<Bytes>(value)))
        {
            return false;
        }
        if (m_keeps)
        {
            m_known->template Keep<Bytes>(value);
        }
        return true;
    }

    ShaderProgram::KnownValues::Value* m_known; ///< null where there is no room for it
    bool m_keeps;
    int m_location;
};

} // namespace OV::detail
