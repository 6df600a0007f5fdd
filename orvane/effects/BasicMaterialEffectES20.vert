PRECISION_DEFAULT_HIGHP(float)

@OPTION_DEFINITIONS@

attribute vec3 a_position; // object space
attribute vec3 a_normal;   // object space
#ifdef TEXTURE
attribute vec2 a_texture;
#endif
#ifdef MATERIAL_COLORS
attribute float a_material; // a number
#endif

uniform mat4 u_mvpMatrix;           // object to clip space
uniform mat3 u_normalMatrix;        // normals, object to world space; not of unit length
uniform vec3 u_lightDir;            // world space, unit, towards the light
uniform mat4 u_worldTransform;      // object to world space
uniform LOWP int u_enableLight;     // 1: lit by u_lightDir
uniform MEDIUMP float u_pointSize;  // pixels
uniform bool u_isDoubleSided;       // not read
uniform bool u_isMirrored;          // the node's transform reverses handedness
#ifdef TEXTURE
uniform HIGHP float u_hScale;       // factors of the texture coordinate
uniform HIGHP float u_vScale;
#endif
#ifdef MATERIAL_COLORS
uniform vec4 u_materialColors[2 * MATERIAL_COLORS]; // of each material the diffuse and the ambient colour
#endif

varying float v_colorfactor;        // cosine between normal and light; 1 when unlit
varying vec3 v_world_position;      // world space
#ifdef LIGHT_SHARE
// What is the same at all fragments comes from the vertices where a share of the light has much to do at
// each: the software renderer reads each number of a uniform for each of eight pixels by itself.
uniform vec4 u_ambient;
uniform vec4 u_color;
uniform bool u_isShowFaceSides;
varying vec4 v_ambient;             // u_ambient; 4 where lit, 2 more where mirrored, 1 where sides of faces are shown
varying vec4 v_color;               // u_color
#endif
#ifdef TEXTURE
varying MEDIUMP vec2 v_tc;
#endif
#ifdef MATERIAL_COLORS
varying vec3 v_materialDiffuse;
varying vec3 v_materialAmbient;
#endif

float lightOnNormal()
{
    float factor = 1.0;
    if (u_enableLight == 1)
    {
        vec3 N = u_normalMatrix * a_normal;
        vec3 direction = u_isMirrored ? -1.0 * u_lightDir : u_lightDir;
        factor = dot(normalize(N), direction);
    }
    return factor;
}

void main()
{
    vec4 pos = vec4(a_position, 1.0);
    gl_Position = u_mvpMatrix * pos;
    gl_PointSize = u_pointSize;
    v_world_position = (u_worldTransform * pos).xyz;
#ifdef TEXTURE
    v_tc = a_texture * vec2(u_hScale, u_vScale);
#endif
#ifdef MATERIAL_COLORS
    int color = 2 * int(a_material);
    v_materialDiffuse = u_materialColors[color].rgb;
    v_materialAmbient = u_materialColors[color + 1].rgb;
#endif
    v_colorfactor = lightOnNormal();
#ifdef LIGHT_SHARE
    float flags = (u_enableLight == 1 ? 4.0 : 0.0) + (u_isMirrored ? 2.0 : 0.0) + (u_isShowFaceSides ? 1.0 : 0.0);
    v_ambient = vec4(u_ambient.rgb, flags);
    v_color = u_color;
#endif
}
