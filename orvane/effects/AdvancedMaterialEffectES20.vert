PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

attribute vec3 a_position; // object space
attribute vec3 a_normal;   // object space
attribute vec2 a_texture;
#ifdef VERTEX_COLORS
attribute vec4 a_vcolor;
#endif
#ifdef MATERIAL_COLORS
attribute float a_material; // a number
#endif

uniform mat4 u_worldTransform;      // object to world space
uniform mat4 u_mvpMatrix;           // object to clip space
uniform mat3 u_normalMatrix;        // normals, object to world space; not of unit length
uniform MEDIUMP mat3 u_cubeMatrix;  // its transpose carries world space to that of the cube map
uniform MEDIUMP vec3 u_lightDir;    // world space, unit, towards the light
uniform vec3 u_camera;              // world space
uniform LOWP int u_enableTexture;   // not read
uniform LOWP int u_enableLight;     // 1: lit by u_lightDir
uniform bool u_isDoubleSided;       // not read
uniform bool u_isMirrored;          // set by nobody, so false: mirrors go by the winding
uniform MEDIUMP vec2 u_scale;       // factors of the texture coordinate
uniform MEDIUMP float u_pointSize;  // pixels
#ifdef MATERIAL_COLORS
uniform vec4 u_materialColors[2 * MATERIAL_COLORS]; // of each material the diffuse and the ambient colour
#endif

varying float v_colorfactor;        // cosine between normal and light; 1 when unlit
varying MEDIUMP vec2 v_tc;
varying vec3 v_position;            // object space
varying vec3 v_world_position;      // world space
varying vec3 v_normal;              // world space
varying vec3 v_viewvector;          // world space, unit, towards the camera
#ifndef NORMALMAP
varying MEDIUMP vec3 v_cubeMapLookup;
#endif
#ifdef VERTEX_COLORS
varying vec3 v_vcolor;
#endif
#ifdef MATERIAL_COLORS
varying vec3 v_materialDiffuse;
varying vec3 v_materialAmbient;
#endif

void main()
{
    gl_Position = u_mvpMatrix * vec4(a_position, 1.0);
    gl_PointSize = u_pointSize;
    v_position = a_position;
    v_world_position = (u_worldTransform * vec4(a_position, 1.0)).xyz;
    v_tc = a_texture * u_scale;
#ifdef VERTEX_COLORS
    v_vcolor = a_vcolor.rgb;
#endif
#ifdef MATERIAL_COLORS
    int color = 2 * int(a_material);
    v_materialDiffuse = u_materialColors[color].rgb;
    v_materialAmbient = u_materialColors[color + 1].rgb;
#endif
    v_viewvector = normalize(u_camera - v_world_position);
    if (u_enableLight == 1)
    {
        vec3 N = u_normalMatrix * a_normal;
        vec3 direction = u_isMirrored ? -u_lightDir : u_lightDir;
        v_normal = N;
        v_colorfactor = dot(normalize(N), direction);
    }
    else
    {
        // There may be no normal: a surface without light faces the viewer.
        v_normal = v_viewvector;
        v_colorfactor = 1.0;
    }
#ifndef NORMALMAP
    v_cubeMapLookup = normalize(reflect(v_viewvector, v_normal) * u_cubeMatrix);
#endif
}
