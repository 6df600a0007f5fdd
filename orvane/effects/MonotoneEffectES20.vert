PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

attribute vec3 a_position;      // object space

uniform mat4 u_mvpMatrix;       // object to clip space
uniform mat4 u_worldTransform;  // object to world space
uniform float u_pointSize;      // pixels

varying vec3 v_world_position;  // world space

void main()
{
    gl_Position = u_mvpMatrix * vec4(a_position, 1.0);
    gl_PointSize = u_pointSize;
    v_world_position = (u_worldTransform * vec4(a_position, 1.0)).xyz;
}
