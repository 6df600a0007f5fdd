PRECISION_DEFAULT_HIGHP(float)

attribute vec3 a_position; // object space
attribute vec2 a_texture;

uniform mat4 u_mvpMatrix;          // object to clip space
uniform LOWP int u_enableTexture;  // 1: there is a texture

varying vec2 v_tc;

void main()
{
    gl_Position = u_mvpMatrix * vec4(a_position, 1.0);
    if (u_enableTexture == 1)
    {
        v_tc = a_texture;
    }
}
