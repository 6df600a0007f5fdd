PRECISION_DEFAULT_HIGHP(float)

attribute vec3 a_position; // object space
attribute vec3 a_normal;   // object space
attribute vec4 a_vcolor;

uniform mat4 u_mvpMatrix;         // object to clip space
uniform mat3 u_normalMatrix;      // normals, object to view space
uniform vec4 u_lightDir;          // view space, unit, towards the light
uniform LOWP int u_enableLight;   // 1: lit by u_lightDir
uniform mat4 u_worldTransform;    // object to world space

varying vec4 v_color;
varying vec3 v_world_position;    // world space

void main()
{
    gl_Position = u_mvpMatrix * vec4(a_position, 1.0);
    v_world_position = (u_worldTransform * vec4(a_position, 1.0)).xyz;
    vec3 N = u_normalMatrix * a_normal;
    vec3 L = u_lightDir.xyz;
    float factor = u_enableLight == 1 ? max(dot(N, L), 0.0) : 1.0;
    v_color = factor * a_vcolor;
    v_color.a = a_vcolor.a;
}
