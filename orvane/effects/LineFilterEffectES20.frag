PRECISION_DEFAULT_HIGHP(float)

uniform HIGHP sampler2D uDepthTexture;      // not read: depth plays no part in the lines
uniform HIGHP sampler2D uRenderedTexture;   // the finished picture
uniform HIGHP sampler2D uIDTexture;         // identifiers
uniform HIGHP float uRenderedTextureWidth;  // pixels
uniform HIGHP float uRenderedTextureHeight; // pixels
uniform bool uOverlayOnly;
uniform float uEdgeWeight;
uniform bool uShowIds;
uniform bool uShowDebug;                    // not read
uniform float uZNear;                       // not read
uniform float uZFar;                        // not read
uniform HIGHP vec4 uEdgeColor;

varying HIGHP vec2 texCoord;                // 0 to 1

float unpack_id(vec4 c)
{
    return (c.b * 256.0 * 256.0 + c.g * 256.0 + c.r) * 256.0;
}

float read_id(vec2 coord)
{
    return unpack_id(texture2D(uIDTexture, coord));
}

// Colour of the line, and in alpha how much of it there is. The left neighbour is not counted:
// lines stay one-sided, and thinner for it.
vec4 read_edge(vec2 coord)
{
    float pixelWidth = 1.0 / uRenderedTextureWidth;
    float pixelHeight = 1.0 / uRenderedTextureHeight;
    float centre = read_id(coord);
    float right = read_id(coord + vec2(pixelWidth, 0.0));
    float bottom = read_id(coord + vec2(0.0, pixelHeight));
    float top = read_id(coord + vec2(0.0, -pixelHeight));
    float sum = step(1.0, abs(right - centre)) + step(1.0, abs(top - centre)) + step(1.0, abs(bottom - centre));
    return vec4(uEdgeColor.rgb, clamp(sum * 0.5, 0.0, 1.0) * uEdgeWeight);
}

void main()
{
    vec3 final = texture2D(uRenderedTexture, texCoord).rgb;
    vec3 id = texture2D(uIDTexture, texCoord).rgb;
    vec4 edge = read_edge(texCoord);
    if (uShowIds)
    {
        gl_FragColor = vec4(id, 1.0);
    }
    else if (uOverlayOnly)
    {
        gl_FragColor = edge;
    }
    else
    {
        gl_FragColor = vec4(mix(final, edge.rgb, edge.a), 1.0);
    }
}
