PRECISION_DEFAULT_HIGHP(float)

attribute vec2 a_texture;      // of the screen's quad, 0 to 1: along the edges of the patch

uniform mat4 u_patchToClip;    // shares of the two edges of the patch to clip space
uniform vec3 u_across;         // the edges, world space
uniform vec3 u_along;

varying vec3 v_position;       // world space, from the corner of the patch: the strokes stay on it
varying vec3 v_normal;         // world space; not of unit length
varying vec3 v_world_normal;
varying vec2 v_tc;

void main()
{
    gl_Position = u_patchToClip * vec4(a_texture, 0.0, 1.0);
    v_position = a_texture.x * u_across + a_texture.y * u_along;
    v_normal = cross(u_across, u_along);
    v_world_normal = v_normal;
    v_tc = vec2(0.0);
}
