PRECISION_DEFAULT_HIGHP(float)

attribute vec3 a_position; // object space
attribute vec2 a_texture;  // y rises from 0 at the horizon

uniform mat4 u_mvpMatrix;  // object to clip space

varying MEDIUMP vec2 v_tc;

void main()
{
    gl_Position = u_mvpMatrix * vec4(a_position, 1.0);
    v_tc = a_texture;
}
