PRECISION_DEFAULT_HIGHP(float)

attribute vec3 a_position;     // object space
attribute vec3 a_normal;       // object space
attribute vec2 a_texture;

uniform mat4 u_mvpMatrix;      // object to clip space
uniform mat3 u_normalMatrix;   // normals, object to world space; not of unit length
uniform vec2 u_scale;          // factors of the texture coordinate

varying vec3 v_position;       // object space: the strokes stay on the object
varying vec3 v_normal;         // object space
varying vec3 v_world_normal;   // not of unit length
varying vec2 v_tc;

void main()
{
    gl_Position = u_mvpMatrix * vec4(a_position, 1.0);
    v_position = a_position;
    v_normal = a_normal;
    v_world_normal = u_normalMatrix * a_normal;
    v_tc = a_texture * u_scale;
}
