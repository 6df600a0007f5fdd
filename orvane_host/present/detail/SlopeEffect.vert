PRECISION_DEFAULT_HIGHP(float)

attribute vec3 a_position; // object space

uniform mat4 u_mvpMatrix;      // object to clip space
uniform mat4 u_worldTransform; // object to world space

varying vec3 v_world_position; // world space

void main()
{
    vec4 position = vec4(a_position, 1.0);
    gl_Position = u_mvpMatrix * position;
    v_world_position = (u_worldTransform * position).xyz;
}
