PRECISION_DEFAULT_HIGHP(float)

attribute vec3 a_position;       // clip space, -1 to 1

varying HIGHP vec2 v_fragCoord;  // 0 to 1

void main()
{
    gl_Position = vec4(a_position, 1.0);
    v_fragCoord = a_position.xy * 0.5 + 0.5;
}
