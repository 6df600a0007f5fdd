PRECISION_DEFAULT_MEDIUMP(float)

attribute vec3 a_position;       // clip space, -1 to 1

uniform float u_width;           // pixels
uniform float u_height;          // pixels

varying HIGHP vec2 v_fragCoord;  // pixels

void main()
{
    gl_Position = vec4(a_position, 1.0);
    v_fragCoord = vec2(u_width, u_height) * (a_position.xy + 1.0) / 2.0;
}
