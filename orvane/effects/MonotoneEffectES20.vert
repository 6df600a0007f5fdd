PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

attribute vec3 a_position;      // object space

uniform mat4 u_mvpMatrix;       // object to clip space
uniform mat4 u_worldTransform;  // object to world space
uniform float u_pointSize;      // pixels

varying vec3 v_world_position;  // world space

#ifdef LIGHT_SHARE
// What is the same at all fragments comes from the vertices where a share of the light has much to do at
// each: the software renderer reads each number of a uniform for each of eight pixels by itself, and a
// frame with shadows would take a tenth more.
uniform vec3 u_color;
uniform bool u_showFaceSides;
uniform float u_shadowIntensity;
uniform bool u_isShadow;

varying vec3 v_surface;         // u_color, which is a grey; what it is darkened to; 1 where the sides of faces are shown
#endif

void main()
{
    gl_Position = u_mvpMatrix * vec4(a_position, 1.0);
    gl_PointSize = u_pointSize;
    v_world_position = (u_worldTransform * vec4(a_position, 1.0)).xyz;
#ifdef LIGHT_SHARE
    v_surface = vec3(u_color.r, u_isShadow ? 1.0 - u_shadowIntensity : 1.0, u_showFaceSides ? 1.0 : 0.0);
#endif
}
