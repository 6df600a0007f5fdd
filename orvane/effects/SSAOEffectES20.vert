PRECISION_DEFAULT_HIGHP(float)

attribute vec3 a_position;  // clip space
attribute vec2 a_texture;   // 0 to 1

uniform mat4 u_mvpMatrix;   // not read

varying vec2 texCoord;      // 0 to 1

void main()
{
    gl_Position = vec4(a_position, 1.0);
    texCoord = a_texture;
}
