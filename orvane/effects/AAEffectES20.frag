PRECISION_DEFAULT_HIGHP(float)

uniform sampler2D u_texture0;    // the captured picture

varying HIGHP vec2 v_fragCoord;  // 0 to 1

void main()
{
    gl_FragColor = vec4(texture2D(u_texture0, v_fragCoord).rgb, 1.0);
}
