PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

attribute vec2 a_texture;    // of the screen's quad, 0 to 1: along the edges of the patch

uniform mat4 u_patchToClip;  // shares of the two edges of the patch to clip space

void main()
{
    gl_Position = u_patchToClip * vec4(a_texture, 0.0, 1.0);
}
