// The stencil intersection and the dot screen that shows it.

#include "boolean.h"
#include "effect_testing.h"
#include "pixels.h"

using GLRecorder::gl;

TEST(Boolean, drawsACubeOfOutwardFaces)
{
    gl.beginFrame();
    gl.state.stacks.clear();
    Boolean().drawPoly1();
    ASSERT_EQ(gl.primitives.size(), 1u);
    const std::vector<GLRecorder::Vertex>& corners = gl.primitives[0].vertices;
    ASSERT_EQ(corners.size(), 24u);
    for (size_t face = 0; face < 6; ++face)
        EXPECT_FLOAT_EQ(outward(corners, face, {0, 0, 0}), 0.5f); // edges of 1, half a unit from the middle
}

TEST(Boolean, leavesItsSmallViewportToPixels)
{
    Stage stage;
    Boolean boolean;
    stage.draw(boolean, 1);
    EXPECT_EQ(gl.state.viewport, (std::array<int, 4>{0, 0, 72, 72}));
    EXPECT_TRUE(gl.state.colorMask);
    EXPECT_EQ(gl.state.polygonMode, GLenum(GL_FILL));
}

TEST(Pixels, givesEveryPixelItsDot)
{
    Stage stage;
    Pixels pixels;
    stage.setup(pixels);
    gl.readBack = [](int x, int y, int component) {
        return static_cast<unsigned char>(component == 0 ? x : component == 1 ? y : x * y);
    };
    stage.draw(pixels, 0);
    gl.readBack = nullptr;

    EXPECT_EQ(gl.state.viewport, (std::array<int, 4>{0, 0, 800, 600}));
    ASSERT_EQ(gl.primitives.size(), 1u + 72 * 72);
    for (int dot = 0; dot < 72 * 72; ++dot)
    {
        const int x = dot % 72, y = dot / 72;
        const GLRecorder::Primitive& drawn = gl.primitives[1 + dot];
        const GLRecorder::Vertex& upperLeft = drawn.vertices[0];
        ASSERT_NEAR(upperLeft.eye[0], (x - 36) / 9.0f - 0.1f, 1e-5f);
        ASSERT_NEAR(upperLeft.eye[1], (y - 36) / 9.0f + 0.1f, 1e-5f);
        ASSERT_NEAR(upperLeft.eye[2], -10, 1e-5f);
        const std::array<float, 4> color{x / 255.0f, y / 255.0f, (x * y % 256) / 255.0f, 1};
        ASSERT_EQ(upperLeft.color, color);
        ASSERT_EQ(drawn.blendFunction, (std::array<GLenum, 2>{GL_ONE, GL_ONE}));
        ASSERT_EQ(drawn.texture, pixels.mTexture);
    }
}
