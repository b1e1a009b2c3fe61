// The programs that stand in for the fixed-function pipeline: pre-transformed, pre-lit and
// lit vertices, one directional light, material, ambient, and texture stage 0 modulating
// the diffuse colour (its alpha selected or modulated).
#include "platform/ff_shader.h"

namespace platform::detail {

const char* kFixedFunctionVertex = R"(#version 330 core
layout(location = 0) in vec4 a_pos;
layout(location = 1) in vec3 a_normal;
layout(location = 2) in vec4 a_color;
layout(location = 4) in vec2 a_uv;

uniform int u_kind;            // 0 pre-transformed, 1 pre-lit, 2 mesh
uniform mat4 u_wvp;
uniform mat3 u_normal_matrix;
uniform vec4 u_viewport;       // x, y, width, height
uniform bool u_lighting;
uniform vec4 u_ambient;
uniform vec4 u_mat_diffuse, u_mat_ambient, u_mat_emissive;
uniform bool u_light_on;
uniform vec3 u_light_to;       // unit vector towards the light
uniform vec4 u_light_diffuse, u_light_ambient;

out vec4 v_color;
out vec2 v_uv;

void main() {
  if (u_kind == 0) {
    // Screen pixels with integer centres, as the game's 2D and 3D art expect. A pixel
    // whose centre lies on an edge belongs to the shape below or right of the edge; GL's
    // rasteriser here gives a horizontal edge's row to the shape above it, so every y is
    // lifted by one sub-pixel step (1/256) and a quad from y = 0 covers the top row.
    float w = a_pos.w > 0.0 ? 1.0 / a_pos.w : 1.0;
    vec2 ndc = vec2((a_pos.x + 0.5 - u_viewport.x) / u_viewport.z * 2.0 - 1.0,
                    1.0 - (a_pos.y + 0.5 - 1.0 / 256.0 - u_viewport.y) / u_viewport.w * 2.0);
    gl_Position = vec4(ndc * w, a_pos.z * w, w);
  } else {
    gl_Position = u_wvp * vec4(a_pos.xyz, 1.0);
  }
  vec4 diffuse_source = u_kind == 2 ? u_mat_diffuse : a_color;
  vec4 colour = u_kind == 2 ? vec4(1.0) : a_color;
  if (u_lighting && u_kind != 0) {
    vec3 n = u_normal_matrix * a_normal;
    vec3 lit = u_mat_emissive.rgb + u_ambient.rgb * u_mat_ambient.rgb;
    if (u_light_on)
      lit += u_light_ambient.rgb * u_mat_ambient.rgb + u_light_diffuse.rgb * diffuse_source.rgb * max(dot(n, u_light_to), 0.0);
    colour = vec4(clamp(lit, 0.0, 1.0), diffuse_source.a);
  }
  v_color = colour;
  v_uv = a_uv;
}
)";

// With and without a texture each get a program of their own: the variant's value comes
// first as a constant (u_textured: bool), so the rasteriser runs only the path taken and,
// with no discard, tests depth before shading.
const char* kFixedFunctionFragment = R"(
in vec4 v_color;
in vec2 v_uv;

uniform sampler2D u_texture;

out vec4 colour;

void main() {
  // A stage with no texture samples as opaque white.
  vec4 texel = u_textured ? texture(u_texture, v_uv) : vec4(1.0);
  colour = texel * v_color;
}
)";

}  // namespace platform::detail
