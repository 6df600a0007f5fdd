// Behind a look: where what is drawn lies as the sun sees it, and what else its fragments read.
//
// The place follows from that in the view alone. A fragment finds it for the price of three values
// between corners; working it out of its pixel takes a dozen uniforms, which cost more than the rest.
// Values that are the same everywhere come this way too, as they are: the software renderer reads each number of a
// uniform for each of eight pixels by itself, in more than thirty instructions. It knows that they are the same only
// where nothing is worked out of them here.

uniform vec4 u_sunPlace[5];    // what x, y, z and w of the view's clip space and 1 add
uniform vec2 u_sunTexel;       // of the map, its width and height counted 1
uniform vec2 u_sunStep;        // edges of a texel of the first part as lengths along the light
uniform vec3 u_sunLook;        // see v_sunLook
uniform vec2 u_sunSlices;      // see v_sunSlices; of a map with parts

// Texels across and up of the first part, length along the light; how much of that lies between the fragment and the
// farthest that may cast onto it.
varying vec4 v_sunPlace;
varying vec4 v_sunTexel;       // u_sunTexel, u_sunStep
varying vec2 v_sunSlices;      // what u_sunTable takes a distance from the eye to: times its logarithm to the base 2, and of 1
varying vec3 v_sunLook;        // texels by which rims get wider with the length to what casts them; darkness of flat tones

void main()
{
    OVSL_Main();
    v_sunPlace = u_sunPlace[0] * gl_Position.x + u_sunPlace[1] * gl_Position.y + u_sunPlace[2] * gl_Position.z
               + u_sunPlace[3] * gl_Position.w + u_sunPlace[4];
    v_sunTexel = vec4(u_sunTexel, u_sunStep);
    v_sunSlices = u_sunSlices;
    v_sunLook = u_sunLook;
}
