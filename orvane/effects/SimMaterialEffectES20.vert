PRECISION_DEFAULT_MEDIUMP(float)

attribute vec3 a_position;        // object space
attribute vec3 a_normal;          // object space
attribute float a_scalardata;     // the number that is shown

uniform mat4 u_mvpMatrix;         // object to clip space
uniform mat3 u_normalMatrix;      // normals, object to view space
uniform vec4 u_lightDir;          // view space, unit, towards the light
uniform LOWP int u_enableTexture; // not read
uniform LOWP int u_enableLight;   // 1: lit by u_lightDir

varying float v_colorfactor;      // cosine between normal and light; 1 when unlit
varying float v_sc;               // the number
varying vec2 v_cc;                // not written
varying vec3 s_color;             // not written

void main()
{
    gl_Position = u_mvpMatrix * vec4(a_position, 1.0);
    v_sc = a_scalardata;
    vec3 N = u_normalMatrix * a_normal;
    vec3 L = u_lightDir.xyz;
    v_colorfactor = u_enableLight == 1 ? max(dot(N, L), 0.0) : 1.0;
}
