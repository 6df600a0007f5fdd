PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

attribute vec3 a_position;      // object space
#ifdef HOLES
attribute vec2 a_texture;
#endif

uniform mat4 u_objectToClip;
uniform mat4 u_objectToView;    // in units that suit the view
uniform mat4 u_worldTransform;  // object to world space
#ifdef HOLES
uniform vec2 u_scale;           // factors of the texture coordinate
#endif

varying vec3 v_world_position;  // world space
varying vec3 v_place;           // view space, in those units
#ifdef HOLES
varying vec2 v_tc;
#endif

void main()
{
    gl_Position = u_objectToClip * vec4(a_position, 1.0);
    v_world_position = (u_worldTransform * vec4(a_position, 1.0)).xyz;
    v_place = (u_objectToView * vec4(a_position, 1.0)).xyz;
#ifdef HOLES
    v_tc = a_texture * u_scale;
#endif
}
