PRECISION_DEFAULT_HIGHP(float)

attribute vec3 a_position; // object space

uniform mat4 u_mvpMatrix;  // object to clip space

void main()
{
    gl_Position = u_mvpMatrix * vec4(a_position, 1.0);
}
