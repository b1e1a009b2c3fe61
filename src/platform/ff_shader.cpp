// The programs that stand in for the fixed-function pipeline: pre-transformed, pre-lit and
// lit vertices, one directional light, material, ambient, texture stage 0 with its colour
// and alpha operations, alpha test and colour key.
#include "platform/ff_shader.h"

namespace platform::detail {

const char* kFixedFunctionVertex = R"(#version 330 core
layout(location = 0) in vec4 a_pos;
layout(location = 1) in vec3 a_normal;
layout(location = 2) in vec4 a_color;
layout(location = 3) in vec4 a_specular;
layout(location = 4) in vec2 a_uv;

uniform int u_kind;            // 0 pre-transformed, 1 pre-lit, 2 mesh
uniform mat4 u_wvp;
uniform mat3 u_normal_matrix;
uniform vec4 u_viewport;       // x, y, width, height
uniform bool u_lighting;
uniform bool u_normalize;
uniform vec4 u_ambient;
uniform vec4 u_mat_diffuse, u_mat_ambient, u_mat_emissive;
uniform bool u_light_on;
uniform vec3 u_light_to;       // unit vector towards the light
uniform vec4 u_light_diffuse, u_light_ambient;

out vec4 v_color;
flat out vec4 v_color_flat;
out vec4 v_specular;
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
    if (u_normalize && dot(n, n) > 0.0) n = normalize(n);
    vec3 lit = u_mat_emissive.rgb + u_ambient.rgb * u_mat_ambient.rgb;
    if (u_light_on)
      lit += u_light_ambient.rgb * u_mat_ambient.rgb + u_light_diffuse.rgb * diffuse_source.rgb * max(dot(n, u_light_to), 0.0);
    colour = vec4(clamp(lit, 0.0, 1.0), diffuse_source.a);
  }
  v_color = colour;
  v_color_flat = colour;
  v_specular = u_kind == 2 ? vec4(0.0) : a_specular;
  v_uv = a_uv;
}
)";

// Each combination of stage operations, shading, colour key and alpha test gets a program
// of its own: the variant's values come first as constants (u_textured, u_flat,
// u_specular_on, u_color_key: bool; u_color_stage, u_alpha_stage: ivec3 of operation,
// argument 1, argument 2; u_alpha_func: int, 0 for no alpha test), so the rasteriser runs
// only the path taken and, with no discard, tests depth before shading.
const char* kFixedFunctionFragment = R"(
in vec4 v_color;
flat in vec4 v_color_flat;
in vec4 v_specular;
in vec2 v_uv;

uniform sampler2D u_texture;
uniform float u_alpha_ref;

out vec4 colour;

vec4 Argument(int which, vec4 texel, vec4 diffuse) {
  return which == 2 ? texel : diffuse;  // diffuse and current are one at stage 0
}

vec4 Combine(ivec3 stage, vec4 texel, vec4 diffuse) {
  vec4 a = Argument(stage.y, texel, diffuse), b = Argument(stage.z, texel, diffuse);
  if (stage.x == 2) return a;
  if (stage.x == 3) return b;
  if (stage.x == 4) return a * b;
  if (stage.x == 5) return min(a * b * 2.0, 1.0);
  if (stage.x == 6) return min(a * b * 4.0, 1.0);
  if (stage.x == 7) return min(a + b, 1.0);
  return diffuse;
}

bool Passes(int func, float a, float ref) {
  if (func == 1) return false;
  if (func == 2) return a < ref;
  if (func == 3) return a == ref;
  if (func == 4) return a <= ref;
  if (func == 5) return a > ref;
  if (func == 6) return a != ref;
  if (func == 7) return a >= ref;
  return true;
}

void main() {
  vec4 diffuse = u_flat ? v_color_flat : v_color;
  // A stage with no texture samples as opaque white.
  vec4 texel = u_textured ? texture(u_texture, v_uv) : vec4(1.0);
  if (u_color_key && u_textured && texel.a == 0.0) discard;
  vec4 result;
  if (u_color_stage.x == 1) {
    result = diffuse;  // a disabled first stage switches texturing off altogether
  } else {
    result.rgb = Combine(u_color_stage, texel, diffuse).rgb;
    result.a = u_alpha_stage.x == 1 ? diffuse.a : Combine(u_alpha_stage, texel, diffuse).a;
  }
  if (u_specular_on) result.rgb = min(result.rgb + v_specular.rgb, 1.0);
  if (u_alpha_func != 0 && !Passes(u_alpha_func, result.a, u_alpha_ref)) discard;
  colour = result;
}
)";

}  // namespace platform::detail
