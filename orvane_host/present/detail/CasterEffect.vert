PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

attribute vec3 a_position;      // object space
#ifdef HOLES
attribute vec2 a_texture;
#endif

uniform mat4 u_objectToClip;    // as the sun sees it
uniform mat4 u_worldTransform;  // object to world space
#ifdef HOLES
uniform vec2 u_scale;           // factors of the texture coordinate
#endif

varying vec3 v_world_position;  // world space
#ifdef HOLES
varying vec2 v_tc;
#endif

void main()
{
    gl_Position = u_objectToClip * vec4(a_position, 1.0);
    v_world_position = (u_worldTransform * vec4(a_position, 1.0)).xyz;
#ifdef HOLES
    v_tc = a_texture * u_scale;
#endif
}
