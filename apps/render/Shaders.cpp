#include "apps/render/Shaders.h"

namespace Shaders {

const char* const ModelVertex = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec4 normal;
layout(location = 2) in vec2 textureCoordinate;
layout(location = 3) in uint instance;

uniform samplerBuffer instances;
uniform mat4 view;
uniform mat4 projection;
uniform uvec2 selection;
uniform vec4 section; // a plane; what lies on its negative side is cut away

out vec3 eyePosition;
out vec3 eyeNormal;
out vec2 coordinate;
flat out vec4 color;
flat out float selected;
flat out uint number;
flat out float mirrored;

void main()
{
    int texel = 4 * int(instance);
    vec4 row0 = texelFetch(instances, texel);
    vec4 row1 = texelFetch(instances, texel + 1);
    vec4 row2 = texelFetch(instances, texel + 2);
    vec4 local = vec4(position, 1.0);
    vec4 world = vec4(dot(row0, local), dot(row1, local), dot(row2, local), 1.0);
    vec4 eye = view * world;
    gl_ClipDistance[0] = dot(section, world);
    mirrored = dot(row0.xyz, cross(row1.xyz, row2.xyz)) < 0.0 ? 1.0 : 0.0;
    // The cofactors of the matrix turn normals right under any scale and shear; a mirror image's sign is
    // left to the fragment stage.
    vec3 turned = vec3(dot(cross(row1.xyz, row2.xyz), normal.xyz), dot(cross(row2.xyz, row0.xyz), normal.xyz),
                       dot(cross(row0.xyz, row1.xyz), normal.xyz));
    float size = length(turned);
    eyeNormal = size > 0.0 ? mat3(view) * (turned / size) : vec3(0.0);
    eyePosition = eye.xyz;
    coordinate = textureCoordinate;
    color = texelFetch(instances, texel + 3);
    selected = instance >= selection.x && instance < selection.y ? 1.0 : 0.0;
    number = instance + 1u;
    gl_Position = projection * eye;
}
)";

const char* const FaceFragment = R"(#version 330 core
in vec3 eyePosition;
in vec3 eyeNormal;
in vec2 coordinate;
flat in vec4 color;
flat in float selected;
flat in float mirrored;

uniform mat4 view;
uniform mat4 projection;
uniform vec4 section;
uniform int solid; // of a section: 1 closed and wound outwards, -1 closed and inwards, 0 open
uniform sampler2D picture;
uniform bool textured;
uniform bool lit;
uniform vec3 highlight;

out vec4 result;

vec3 encoded(vec3 light)
{
    light = clamp(light, 0.0, 1.0);
    return mix(12.92 * light, 1.055 * pow(light, vec3(1.0 / 2.4)) - 0.055, step(0.0031308, light));
}

void main()
{
    // The facet's own normal, turned to the eye. It stands in where a vertex has none, and tells which side
    // of the surface is seen, however its triangles wind.
    vec3 facet = cross(dFdx(eyePosition), dFdy(eyePosition));
    float facetSize = length(facet);
    facet = facetSize > 0.0 ? facet / facetSize : vec3(0.0, 0.0, 1.0);
    vec3 toEye = projection[3][3] > 0.5 ? vec3(0.0, 0.0, 1.0) : normalize(-eyePosition);
    facet = dot(facet, toEye) < 0.0 ? -facet : facet;
    vec3 normal = facet;
    float size = dot(eyeNormal, eyeNormal);
    if (size > 0.1) {
        normal = eyeNormal * inversesqrt(size);
        normal = dot(normal, facet) < 0.0 ? -normal : normal;
    }

    vec3 base = color.rgb;
    float alpha = color.a;
    if (textured) {
        vec4 texel = texture(picture, coordinate);
        base = mix(base, texel.rgb, texel.a);
    }
    base = mix(base, highlight, 0.3 * selected);
    alpha = mix(alpha, max(alpha, 0.6), selected);
    // Through the cut of a solid its inner side is seen: it stands for the face that the cut lays open, flat
    // and hatched.
    if (solid != 0 && (gl_FrontFacing == (mirrored > 0.5)) == (solid > 0)) {
        float stripe = fract((gl_FragCoord.x + gl_FragCoord.y) / 9.0);
        float hatch = smoothstep(0.0, 0.12, stripe) * (1.0 - smoothstep(0.22, 0.34, stripe));
        result = vec4(encoded(base * mix(0.85, 0.35, hatch) + 0.02), alpha);
        return;
    }
    if (!lit) {
        result = vec4(encoded(base), alpha);
        return;
    }
    // A headlight over the left shoulder, a weak fill from the right, and light from the sky.
    vec3 key = normalize(vec3(-0.35, 0.45, 1.0));
    float sky = 0.5 + 0.5 * dot(normal, mat3(view) * vec3(0.0, 0.0, 1.0));
    float light = 0.10 + 0.20 * sky + 0.72 * max(dot(normal, key), 0.0) +
                  0.10 * max(dot(normal, normalize(vec3(0.9, -0.3, 0.35))), 0.0);
    float gloss = pow(max(dot(normal, normalize(key + toEye)), 0.0), 48.0);
    result = vec4(encoded(base * light + 0.06 * gloss), alpha);
}
)";

const char* const LineFragment = R"(#version 330 core
flat in vec4 color;
flat in float selected;
uniform vec3 highlight;
out vec4 result;
void main()
{
    vec3 light = mix(color.rgb, highlight, 0.7 * selected);
    result = vec4(pow(clamp(light, 0.0, 1.0), vec3(1.0 / 2.2)), color.a);
}
)";

const char* const EdgeFragment = R"(#version 330 core
flat in vec4 color;
flat in float selected;
uniform vec3 highlight;
uniform float strength;
out vec4 result;
void main()
{
    vec3 light = mix(color.rgb, highlight, 0.3 * selected);
    float brightness = dot(light, vec3(0.2126, 0.7152, 0.0722));
    light = brightness > 0.02 ? 0.08 * light : light + 0.12;
    result = vec4(pow(clamp(light, 0.0, 1.0), vec3(1.0 / 2.2)), strength);
}
)";

const char* const PickFragment = R"(#version 330 core
flat in uint number;
out uint result;
void main()
{
    result = number;
}
)";

const char* const MaskFragment = R"(#version 330 core
out vec4 result;
void main()
{
    result = vec4(1.0);
}
)";

const char* const OutlineFragment = R"(#version 330 core
uniform sampler2D mask;
uniform int width;
uniform vec3 color;
out vec4 result;
void main()
{
    ivec2 here = ivec2(gl_FragCoord.xy);
    ivec2 last = textureSize(mask, 0) - 1;
    if (texelFetch(mask, here, 0).r > 0.5) {
        discard;
    }
    // The nearer the mask, the more of the line: its outer rim is soft.
    float nearest = float(width + 1);
    for (int y = -width; y <= width; ++y) {
        for (int x = -width; x <= width; ++x) {
            if (texelFetch(mask, clamp(here + ivec2(x, y), ivec2(0), last), 0).r > 0.5) {
                nearest = min(nearest, length(vec2(x, y)));
            }
        }
    }
    result = vec4(color, clamp(float(width) + 0.5 - nearest, 0.0, 1.0));
}
)";

const char* const BackgroundVertex = R"(#version 330 core
out float height;
void main()
{
    vec2 corner = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0);
    height = 0.5 + 0.5 * corner.y;
    gl_Position = vec4(corner, 0.0, 1.0);
}
)";

const char* const BackgroundFragment = R"(#version 330 core
in float height;
uniform vec3 top;
uniform vec3 bottom;
out vec4 result;
void main()
{
    // A little noise, less than one step of a channel, keeps the gradient free of bands.
    float noise = fract(sin(dot(gl_FragCoord.xy, vec2(12.9898, 78.233))) * 43758.5453) - 0.5;
    result = vec4(mix(bottom, top, height) + noise / 255.0, 1.0);
}
)";

const char* const AxesVertex = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec3 tint;
uniform mat4 matrix;
out vec3 color;
void main()
{
    vec3 turned = normalize(mat3(matrix) * normal);
    color = tint * (0.55 + 0.45 * max(-turned.z, 0.0));
    gl_Position = matrix * vec4(position, 1.0);
}
)";

const char* const AxesFragment = R"(#version 330 core
in vec3 color;
out vec4 result;
void main()
{
    result = vec4(color, 1.0);
}
)";

} // namespace Shaders
