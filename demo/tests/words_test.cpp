// The effects that put words and pictures of words on the screen.

#include "effect_testing.h"
#include "fontrow.h"
#include "greetings.h"
#include "loading.h"
#include "scenese.h"

#include <cmath>
#include <cstdlib>

using GLRecorder::gl;

TEST(FontRow, findsTheColumnOfACharacter)
{
    const std::pair<char, int> cases[] = {{'a', 0},   {'z', 25}, {'0', 26}, {'?', 37},  {'.', 41},
                                          {'\\', 51}, {' ', 86}, {'A', 86}, {'\0', 86}, {'\xe5', 86}};
    for (const auto& [character, column] : cases)
        EXPECT_FLOAT_EQ(glyphLeftEdge(character), column * 10 / 1024.0f) << character;
}

TEST(Greetings, showsTheRowOfTheNameAndKeepsItForAnUnknownOne)
{
    Stage stage;
    Greetings greetings;
    stage.setup(greetings);
    const std::pair<const char*, int> cases[] = {{"nobody", 0},  {"mirth", 1}, {"analogue harvest", 11},
                                                 {"Mirth", 11},  {"", 11},     {"drovers", 15},
                                                 {"lanterns", 0}};
    for (const auto& [text, row] : cases)
    {
        SCOPED_TRACE(text);
        trigger(greetings, "text", text);
        stage.draw(greetings, 0);
        const std::vector<GLRecorder::Vertex>& corners = gl.primitives.at(0).vertices;
        EXPECT_NEAR(corners[0].texture[1], row / 16.0f + 0.0017f, 1e-6f);
        EXPECT_NEAR(corners[1].texture[1], (row + 1) / 16.0f - 0.0017f, 1e-6f);
    }
}

TEST(Loading, spellsItsLineWithTheShareOfTheWork)
{
    Stage stage;
    Loading loading;
    stage.setup(loading);
    const std::pair<float, size_t> cases[] = {{0, 1},      {0.02f, 1}, {0.03f, 2}, {0.5f, 20},     {0.7f, 28},
                                              {0.75f, 29}, {1, 29},    {33, 29},   {INFINITY, 29}, {NAN, 29}};
    for (const auto& [position, characters] : cases)
    {
        stage.draw(loading, 0, position);
        EXPECT_EQ(gl.primitives.size(), characters) << position;
    }
}

TEST(Scenese, jumpsUpAndDownInTurnAndRests)
{
    Stage stage;
    Scenese scenese;
    stage.setup(scenese);
    auto height = [&](float time) {
        stage.draw(scenese, time);
        return gl.primitives.at(0).vertices[0].eye[1] - 1;
    };
    const float quarter = static_cast<float>(M_PI) / 2;
    EXPECT_NEAR(height(quarter), 2, 1e-5f); // the hop at the start of an entry
    EXPECT_NEAR(height(20), 0, 1e-5f);
    trigger(scenese, "jumpspeed", "2");
    for (float jump : {-2.0f, 2.0f})
    {
        trigger(scenese, "jump", "", 20);
        EXPECT_NEAR(height(20 + quarter / 2), jump, 1e-5f);
    }
    trigger(scenese, "jumpheight", "1");
    trigger(scenese, "jump", "", 40);
    EXPECT_NEAR(height(40 + quarter / 2), -1, 1e-5f);
}
