PRECISION_DEFAULT_MEDIUMP(float)

uniform vec4 u_color;
uniform LOWP int u_enableTexture;  // 1: there is a texture
uniform sampler2D u_texture0;

varying vec2 v_tc;

void main()
{
    if (u_enableTexture == 1)
    {
        gl_FragColor = u_color * texture2D(u_texture0, v_tc);
    }
    else
    {
        gl_FragColor = u_color;
    }
}
