PRECISION_DEFAULT_MEDIUMP(float)

uniform sampler2D uDepthTexture;
uniform sampler2D uRenderedTexture;

// Unfinished: `final` is declared nowhere, so this does not compile, and is not meant to.
void main()
{
    gl_FragColor = vec4(final, 1.0);
}
