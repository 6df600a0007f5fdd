PRECISION_DEFAULT_HIGHP(float)

attribute vec3 a_position;     // object space
attribute vec3 a_normal;       // object space
attribute vec2 a_texture;

uniform mat4 u_mvpMatrix;      // object to clip space
uniform mat3 u_normalMatrix;   // normals, object to world space; not of unit length
uniform vec3 u_lightDir;       // world space, unit, towards the light
uniform LOWP int u_enableLight;
uniform bool u_isDoubleSided;  // not read
uniform bool u_isMirrored;     // set by nobody, so false

varying vec3 v_position;       // object space: the strokes stay on the object
varying vec2 v_tc;
varying vec3 v_normal;         // world space
varying float v_colorfactor;   // cosine between normal and light, times the normal's length

void main()
{
    gl_Position = u_mvpMatrix * vec4(a_position, 1.0);
    v_position = a_position;
    v_tc = a_texture;
    vec3 N = u_normalMatrix * a_normal;
    if (u_isMirrored)
    {
        N = -N;
    }
    v_normal = N;
    v_colorfactor = u_enableLight == 1 ? dot(N, u_lightDir) : 1.0;
}
