// How much of its surroundings each pixel sees hidden, and the colour that this leaves.
//
// In planes through the line of sight it is looked up, to either side, how high what is near rises over
// the place. Between these horizons light arrives: of each plane that share, counted as it lights the
// face, is known exactly. Two runs: the first works out the share with other planes and steps in each of
// 4 x 4 pixels, the second takes the mean of these along the face and darkens the picture by it.
//
// Where little is needed, loops end early: where conditions only mask what they skip, on the software
// renderer, it would cost as much as all of it.

PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

#define PLANES 4                   // through the line of sight at each pixel; other ones at each of a group
#define LEAST_STEPS 8.0            // to either side in a plane
#define MOST_STEPS 16.0
#define RISE 3.0                   // radii in front beyond which what is seen floats
#define LEVEL 0.003                // what rises no steeper lies in the plane of the face
#define PI 3.14159265
#define ROUNDS 64                  // of loops that end before; more than any compiler unrolls

uniform HIGHP sampler2D u_depth;   // of the surfaces
uniform sampler2D u_faces;         // which way they look, see FaceEffect
#ifdef SHADE
uniform sampler2D u_hidden;        // of the first run
#endif
// Pixels are counted in all of the picture, of which these may hold a part: what follows from the number of
// a pixel is the same in each part, to the bit.
uniform vec2 u_first;              // the lower left one of both
uniform vec2 u_size;               // of both, in pixels, which may be finer than those of the target
uniform float u_finer;             // so many for one of the target, along each edge
uniform float u_apart;             // so many for one of those that the first run draws, along each edge
#ifdef SHADE
uniform vec2 u_hiddenSize;         // of what the first run has drawn
#endif
uniform vec4 u_view;               // factors and offsets from a pixel to view space, with perspective at distance 1
uniform vec2 u_distance;           // factor and offset from a depth to the distance, with perspective to 1 over it
uniform float u_precision;         // of a distance, with perspective for its square
uniform float u_radius;            // of what hides, units of the model
uniform float u_perRadius;         // 1 over it
uniform float u_reach;             // the same in pixels at most
#ifdef FAR
uniform HIGHP sampler2D u_farDepth; // of all of the picture, in coarser pixels
uniform vec2 u_farSize;            // their number
uniform vec4 u_farView;            // as u_view
uniform vec2 u_toFar;              // factors from a pixel to those
uniform float u_nearReach;         // pixels beyond which it is looked up there
#endif
#ifdef SHADE
uniform float u_strength;
uniform vec2 u_fog;                // factor and offset from a distance to what fog leaves
#endif

// The first of the pixels that one of the first run has, which stands for it.
vec2 standingFor(vec2 drawn)
{
    return floor(drawn) * u_apart + u_first + 0.5;
}

vec2 shareOf(vec2 pixel)
{
    return (pixel - u_first) / u_size;
}

float depthAt(vec2 pixel)
{
    return texture2D(u_depth, shareOf(pixel)).r;
}

float distanceOf(float depth)
{
    float value = u_distance.x * depth + u_distance.y;
#ifdef PERSPECTIVE
    return 1.0 / value;
#else
    return value;
#endif
}

// In view space, of the middle of a pixel.
vec3 placeIn(vec4 view, vec2 pixel, float distance)
{
    vec2 place = pixel * view.xy + view.zw;
#ifdef PERSPECTIVE
    place *= distance;
#endif
    return vec3(place, -distance);
}

vec3 placeAt(vec2 pixel, float distance)
{
    return placeIn(u_view, pixel, distance);
}

float precisionAt(float distance)
{
#ifdef PERSPECTIVE
    return u_precision * distance * distance;
#else
    return u_precision;
#endif
}

vec3 faceAt(vec2 pixel)
{
    vec4 bytes = floor(texture2D(u_faces, shareOf(pixel)) * 255.0 + 0.5);
    vec2 place = (bytes.xy * 256.0 + bytes.zw) / 65535.0 * 2.0 - 1.0;
    vec3 v = vec3(place, 1.0 - abs(place.x) - abs(place.y));
    float fold = max(-v.z, 0.0);
    v.x += v.x < 0.0 ? fold : -fold;
    v.y += v.y < 0.0 ? fold : -fold;
    return normalize(v);
}

// The size of a pixel at a place.
float pixelAt(float distance)
{
#ifdef PERSPECTIVE
    return max(u_view.x, u_view.y) * distance;
#else
    return max(u_view.x, u_view.y);
#endif
}

#ifndef SHADE
// How far apart pixels of a group are in all that is looked up: 0 to 15 sixteenths.
float orderInGroup(vec2 pixel)
{
    vec2 coarse = mod(floor(pixel * 0.5), 2.0);
    vec2 fine = mod(floor(pixel), 2.0);
    float inFine = fract(fine.x * 0.5 + fine.y * 0.75);
    float inCoarse = fract(coarse.x * 0.5 + coarse.y * 0.75);
    return inFine + inCoarse * 0.25;
}

// A place and what is looked for about it.
struct Search
{
    vec2 pixel;
    vec3 place;
    vec3 normal;
    vec3 towardEye;
    vec2 way;        // unit, in pixels
    float reach;     // pixels
    float lowest;    // cosine of the angle from the eye to the plane of the face
};

// How high what is seen beside a place hides it, as the cosine of the angle to the eye. What rises out of
// the radius is taken to go down into it, as walls do that are seen from above; the less so the farther
// it is in front, where it may as well float.
// @param to from the place; precision of distances there
float heightOf(Search search, vec3 to, float precision)
{
    float square = dot(to, to);
    float front = dot(to, search.towardEye);
    // Counted in radii.
    float away = square * u_perRadius * u_perRadius;
    float ahead = front * u_perRadius;
    float beside = 1.0 - (away - ahead * ahead);
    float share = clamp((RISE - ahead) / (RISE - 1.0), 0.0, 1.0);
    float wall = beside > 0.0 && ahead > 0.0
               ? mix(search.lowest, max(sqrt(max(beside, 0.0)), search.lowest), share) : search.lowest;
    float perAway = inversesqrt(max(square, 1.0e-37));
    // What rises less than depths are exact lies in the same plane.
    float over = dot(to, search.normal) - 2.0 * precision - LEVEL * square * perAway;
    return over <= 0.0 ? search.lowest : away < 1.0 ? front * perAway : wall;
}

// Pixels to what a step looks at: the farther the longer, and each at another pixel.
float besideAt(Search search, float number, float start, float steps)
{
    float along = (number + start) / steps;
    return along < 1.0 ? max(search.reach * along * along, number + 1.0) : 1.0e9;
}

float heightAt(Search search, float beside)
{
    vec2 other = floor(search.pixel + search.way * beside) + 0.5;
    float depth = depthAt(other);
    float distance = distanceOf(depth);
    float height = heightOf(search, placeAt(other, distance) - search.place, precisionAt(distance));
    return depth < 1.0 ? height : search.lowest;
}

#ifdef FAR
float heightFar(Search search, float beside)
{
    vec2 other = floor((search.pixel + search.way * beside) * u_toFar) + 0.5;
    float depth = texture2D(u_farDepth, other / u_farSize).r;
    float distance = distanceOf(depth);
    float height = heightOf(search, placeIn(u_farView, other, distance) - search.place, precisionAt(distance));
    return depth < 1.0 ? height : search.lowest;
}
#endif

// How far a way leads until it leaves what lies between two corners.
float lengthWithin(vec2 from, vec2 way, vec2 low, vec2 high)
{
    vec2 lengths = (mix(low, high, step(0.0, way)) - from) / (way + vec2(equal(way, vec2(0.0))) * 1.0e-9);
    return min(lengths.x, lengths.y);
}

// The cosine of the angle from the eye to the horizon on one side.
// @param start of the first step, 0 to 1 of it; wanted: whether the result is of use
float horizon(Search search, float start, bool wanted)
{
    float highest = search.lowest;
    float steps = clamp(search.reach / (8.0 * u_finer), LEAST_STEPS, MOST_STEPS);
    float inside = lengthWithin(search.pixel, search.way, u_first, u_first + u_size);
#ifdef FAR
    float nearInside = min(inside, u_nearReach);
#else
    float nearInside = inside;
#endif
    float number = 0.0;
    float beside = besideAt(search, number, start, steps);
    for (int i = 0; i < ROUNDS; ++i)
    {
        highest = beside < nearInside ? max(highest, heightAt(search, beside)) : highest;
        number += beside < nearInside ? 1.0 : 0.0;
        float next = besideAt(search, number, start, steps);
        bool isDone = beside >= nearInside || next >= nearInside;
        beside = next;
        if (isDone || !wanted)
        {
            break;
        }
    }
#ifdef FAR
    inside = lengthWithin(search.pixel * u_toFar, search.way * u_toFar, vec2(0.0), u_farSize);
    for (int i = 0; i < ROUNDS; ++i)
    {
        highest = beside < inside ? max(highest, heightFar(search, beside)) : highest;
        number += 1.0;
        beside = besideAt(search, number, start, steps);
        if (beside >= inside || !wanted)
        {
            break;
        }
    }
#endif
    return highest;
}

// The light in a plane on one side of the direction to the eye, up to a horizon.
float lightTo(float cosine, float side, float tilt)
{
    float angle = side * acos(clamp(cosine, -1.0, 1.0));
    return 0.25 * (cos(tilt) + 2.0 * angle * sin(tilt) - cos(2.0 * angle - tilt));
}

// @param wanted whether the result is of use
float hiddenAt(vec2 pixel, float distance, bool wanted)
{
    vec3 place = placeAt(pixel, distance);
    vec3 normal = faceAt(pixel);
#ifdef PERSPECTIVE
    vec3 towardEye = normalize(-place);
#else
    vec3 towardEye = vec3(0.0, 0.0, 1.0);
#endif
    vec3 right = normalize(cross(vec3(0.0, 1.0, 0.0), towardEye));
    vec3 up = cross(towardEye, right);
    float order = orderInGroup(gl_FragCoord.xy);
    float start = fract(order * 16.0 * 0.618034 + 0.5);
    float hidden = 0.0;
    for (int i = 0; i < ROUNDS; ++i)
    {
        float turn = (float(i) + order) * (PI / float(PLANES));
        vec3 across = cos(turn) * right + sin(turn) * up;
#ifdef PERSPECTIVE
        vec2 way = (across.xy + place.xy / distance * across.z) / distance / u_view.xy;
#else
        vec2 way = across.xy / u_view.xy;
#endif

        vec3 axis = cross(across, towardEye);
        vec3 inPlane = normal - axis * dot(normal, axis);
        float share = max(length(inPlane), 1.0e-6);
        float tilt = acos(clamp(dot(inPlane, towardEye) / share, 0.0, 1.0));
        tilt = dot(inPlane, across) < 0.0 ? -tilt : tilt;
        vec2 lowest = vec2(cos(tilt + 0.5 * PI), cos(tilt - 0.5 * PI));
        float reach = min(length(way) * u_radius, u_reach);
        way = normalize(way);
        float ahead = horizon(Search(pixel, place, normal, towardEye, way, reach, lowest.x), start, wanted);
        float behind = horizon(Search(pixel, place, normal, towardEye, -way, reach, lowest.y), start, wanted);
        // As differences, so that nothing is lost where nothing rises.
        hidden += share * (lightTo(lowest.x, 1.0, tilt) - lightTo(ahead, 1.0, tilt)
                           + lightTo(lowest.y, -1.0, tilt) - lightTo(behind, -1.0, tilt));
        if (!wanted || i == PLANES - 1)
        {
            break;
        }
    }
    return clamp(hidden / float(PLANES), 0.0, 1.0);
}

void main()
{
    vec2 pixel = standingFor(gl_FragCoord.xy);
    float depth = depthAt(pixel);
    bool isThere = depth < 1.0;
    float hidden = hiddenAt(pixel, distanceOf(depth), isThere);
    // The coarse half of which way the face looks comes along for the second run.
    gl_FragColor = vec4(isThere ? hidden : 0.0, texture2D(u_faces, shareOf(pixel)).xy, 1.0);
}
#else
// A pixel of the surfaces as the second run compares it with those of the first.
struct Spot
{
    vec2 drawn;      // the one of the first run that it lies in
    float distance;
    vec3 place;
    vec3 normal;
    vec2 facing;     // coarse, as the first run leaves it
    float side;      // of a pixel of the first run there
    float room;      // what lies no farther from the plane of the face lies in it
};

Spot spotAt(vec2 pixel, vec2 drawn, float distance)
{
    Spot spot;
    spot.drawn = drawn;
    spot.distance = distance;
    spot.place = placeAt(pixel, distance);
    spot.normal = faceAt(pixel);
    spot.facing = texture2D(u_faces, shareOf(pixel)).xy;
    spot.side = pixelAt(distance) * u_apart;
    spot.room = spot.side + 2.0 * precisionAt(distance);
    return spot;
}

// What the first run found at a pixel of its own.
vec4 foundAt(vec2 drawn)
{
    return texture2D(u_hidden, drawn / u_hiddenSize);
}

// The mean of what is about a face of but a few pixels: where it is no wider than a pixel, most of it is
// not even seen. One that lies in the plane of others is taken for a part of these: of a sliver it is
// uncertain which way it looks. One that belongs to nothing about it is a crack.
// @param wanted whether the result is of use
float hiddenAbout(Spot spot, bool wanted)
{
    vec2 about = vec2(0.0);  // sum and count
    vec2 within = vec2(0.0);
    vec2 all = vec2(0.0);
    for (int y = -2; y < ROUNDS; ++y)
    {
        for (int x = -2; x <= 2; ++x)
        {
            vec2 drawn = spot.drawn + vec2(float(x), float(y));
            vec2 other = standingFor(drawn);
            float depth = depthAt(other);
            vec3 to = placeAt(other, distanceOf(depth)) - spot.place;
            vec3 facing = faceAt(other);
            vec2 counted = depth < 1.0 ? vec2(foundAt(drawn).r, 1.0) : vec2(0.0);
            all += counted;
            about += dot(to, to) < 64.0 * spot.side * spot.side ? counted : vec2(0.0);
            within += abs(dot(to, facing)) < spot.room && dot(facing, spot.normal) < 0.999 ? counted : vec2(0.0);
        }
        if (!wanted || y == 2)
        {
            break;
        }
    }
    vec2 taken = within.y >= 6.0 ? within : about.y >= 3.0 ? about : all;
    return taken.x / max(taken.y, 1.0);
}

// The mean over as many pixels as differ in what they looked up, each counted once, of those in the
// same face.
// @param wanted whether the result is of use
float smoothHidden(Spot spot, bool wanted)
{
    vec2 same = vec2(0.0);  // sum and count
    for (int y = -2; y < ROUNDS; ++y)
    {
        for (int x = -2; x <= 2; ++x)
        {
            vec2 drawn = spot.drawn + vec2(float(x), float(y));
            vec2 other = standingFor(drawn);
            float weight = (x == -2 || x == 2 ? 0.5 : 1.0) * (y == -2 || y == 2 ? 0.5 : 1.0);
            float depth = depthAt(other);
            vec3 to = placeAt(other, distanceOf(depth)) - spot.place;
            vec3 found = foundAt(drawn).xyz;
            vec2 turned = abs(found.yz - spot.facing);
            bool isSame = depth < 1.0 && abs(dot(to, spot.normal)) < spot.room && max(turned.x, turned.y) < 0.1;
            same += isSame ? weight * vec2(found.x, 1.0) : vec2(0.0);
        }
        if (!wanted || y == 2)
        {
            break;
        }
    }
    float share = clamp((same.y - 4.0) * 0.5, 0.0, 1.0);
    float hidden = same.x / max(same.y, 1.0);
    return mix(hiddenAbout(spot, wanted && share < 1.0), hidden, share);
}

// Of a pixel that isn't the one that the first run has looked at: the mean of those about it in the same
// face, or of all, where the face is no wider than a pixel.
// @param wanted whether the result is of use
float hiddenBeside(Spot spot, bool wanted)
{
    vec2 same = vec2(0.0);  // sum and count
    vec2 all = vec2(0.0);
    for (int y = -1; y < ROUNDS; ++y)
    {
        for (int x = -1; x <= 1; ++x)
        {
            vec2 drawn = spot.drawn + vec2(float(x), float(y));
            vec2 other = standingFor(drawn);
            float depth = depthAt(other);
            vec3 to = placeAt(other, distanceOf(depth)) - spot.place;
            vec2 counted = depth < 1.0 ? vec2(foundAt(drawn).r, 1.0) : vec2(0.0);
            bool isSame = abs(dot(to, spot.normal)) < spot.room && dot(faceAt(other), spot.normal) > 0.9;
            same += isSame ? counted : vec2(0.0);
            all += counted;
        }
        if (!wanted || y == 1)
        {
            break;
        }
    }
    vec2 taken = same.y >= 3.0 ? same : all;
    return taken.x / max(taken.y, 1.0);
}

// Of the finer pixels of a pixel of the target that have something of the scene, the mean; along rims of
// faces they differ.
// @return what is hidden and a distance
vec2 hiddenHere()
{
    vec2 drawn = floor(floor(gl_FragCoord.xy) * u_finer / u_apart) + 0.5;
    vec2 first = floor(gl_FragCoord.xy) * u_finer + u_first + 0.5;
    float depth = depthAt(first);
    bool isThere = depth < 1.0;
    Spot spot = spotAt(first, drawn, distanceOf(depth));
    float hidden = smoothHidden(spot, isThere);
    vec2 sum = isThere ? vec2(hidden, 1.0) : vec2(0.0);
    float nearest = isThere ? spot.distance : 0.0;
#ifdef FINER
    for (int i = 1; i < ROUNDS; ++i)
    {
        vec2 pixel = first + vec2(i == 2 ? 0.0 : 1.0, i == 1 ? 0.0 : 1.0);
        float otherDepth = depthAt(pixel);
        bool isOther = otherDepth < 1.0;
        Spot other = spotAt(pixel, drawn, distanceOf(otherDepth));
        bool isSame = isThere && abs(dot(other.place - spot.place, spot.normal)) < pixelAt(spot.distance)
                   && dot(other.normal, spot.normal) > 0.9;
        float beside = hiddenBeside(other, isOther && !isSame);
        sum += isOther ? vec2(isSame ? hidden : beside, 1.0) : vec2(0.0);
        nearest = isOther && nearest == 0.0 ? other.distance : nearest;
        if (i == 3)
        {
            break;
        }
    }
#endif
    // Something may cover less of it than the finest pixel.
    float about = hiddenBeside(spot, sum.y == 0.0);
    return sum.y == 0.0 ? vec2(about, spot.distance) : vec2(sum.x / sum.y, nearest);
}

void main()
{
    vec2 here = hiddenHere();
    float hidden = here.x * u_strength * clamp(u_fog.x * here.y + u_fog.y, 0.0, 1.0);
    gl_FragColor = vec4(vec3(1.0 - min(hidden, 1.0)), 1.0);
}
#endif
