PRECISION_DEFAULT_HIGHP(float)

attribute vec3 a_position; // clip space

void main()
{
    gl_Position = vec4(a_position.xy, 0.0, 1.0);
}
