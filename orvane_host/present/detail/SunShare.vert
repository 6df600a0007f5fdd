// Behind a look: where what is drawn lies as the sun sees it.
//
// That follows from the place in the view alone. A fragment finds it for the price of three values
// between corners; working it out of its pixel takes a dozen uniforms, which cost more than the rest.

uniform vec3 u_sunPlace[5]; // what x, y, z and w of the view's clip space and 1 add

varying vec3 v_sunPlace;    // texels across and up of the first part, length along the light

void main()
{
    OVSL_Main();
    v_sunPlace = u_sunPlace[0] * gl_Position.x + u_sunPlace[1] * gl_Position.y + u_sunPlace[2] * gl_Position.z
               + u_sunPlace[3] * gl_Position.w + u_sunPlace[4];
}
