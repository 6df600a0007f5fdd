PRECISION_DEFAULT_HIGHP(float)

attribute vec3 a_position; // clip space

varying vec2 v_place;      // 0 to 1, from the lower left corner

void main()
{
    gl_Position = vec4(a_position.xy, 0.0, 1.0);
    v_place = a_position.xy * 0.5 + 0.5;
}
