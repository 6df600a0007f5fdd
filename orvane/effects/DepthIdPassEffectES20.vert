PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

attribute HIGHP vec3 a_position;            // object space
attribute HIGHP vec4 a_color;               // identifier of the vertex

uniform mat4 u_mvpMatrix;                   // object to clip space
uniform mat4 u_worldTransform;              // object to world space
uniform HIGHP vec4 u_encodedGroupInstance;  // identifier of the node

varying HIGHP vec4 v_color;
varying HIGHP vec3 v_world_position;        // world space

void main()
{
    gl_Position = u_mvpMatrix * vec4(a_position, 1.0);
    v_world_position = (u_worldTransform * vec4(a_position, 1.0)).xyz;
#ifdef OBJECTID
    v_color = a_color;
#else
    v_color = u_encodedGroupInstance;
#endif
}
