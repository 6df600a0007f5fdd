PRECISION_DEFAULT_MEDIUMP(float)

void main()
{
    gl_FragColor = vec4(1.0);
}
