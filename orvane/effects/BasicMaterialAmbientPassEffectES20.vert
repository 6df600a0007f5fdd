PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

attribute vec3 a_position; // object space
#ifdef TEXTURE
attribute vec2 a_texture;
#endif

uniform mat4 u_mvpMatrix;           // object to clip space
uniform MEDIUMP float u_pointSize;  // pixels
#ifdef TEXTURE
uniform HIGHP float u_hScale;       // factors of the texture coordinate
uniform HIGHP float u_vScale;

varying MEDIUMP vec2 v_tc;
#endif

void main()
{
    gl_Position = u_mvpMatrix * vec4(a_position, 1.0);
    gl_PointSize = u_pointSize;
#ifdef TEXTURE
    v_tc = a_texture * vec2(u_hScale, u_vScale);
#endif
}
