#version 440

// Shows the source inside a rectangle with rounded, antialiased corners. Lengths are in pixels.

layout(location = 0) in vec2 qt_TexCoord0;
layout(location = 0) out vec4 fragColor;
layout(std140, binding = 0) uniform buf {
    mat4 qt_Matrix;
    float qt_Opacity;
    float radius;
    vec2 size;
};
layout(binding = 1) uniform sampler2D source;

void main()
{
    vec2 fromCornerCentre = max(abs(qt_TexCoord0 - 0.5) * size - size * 0.5 + radius, 0.0);
    float coverage = clamp(radius - length(fromCornerCentre) + 0.5, 0.0, 1.0);
    fragColor = texture(source, qt_TexCoord0) * coverage * qt_Opacity;
}
