// The effects that put words and pictures of words on the screen.

#include "effect_testing.h"
#include "fontrow.h"
#include "greetings.h"
#include "hypno.h"
#include "loading.h"
#include "sandrift.h"
#include "scenese.h"

#include <cmath>
#include <cstdlib>

using GLRecorder::gl;

TEST(FontRow, findsTheColumnOfACharacter)
{
    const std::pair<char, int> cases[] = {{'a', 0},  {'e', 4},  {'z', 25},  {'0', 26},   {'9', 35}, {'!', 36},
                                          {'?', 37}, {'@', 38}, {':', 39},  {';', 40},   {'.', 41}, {',', 42},
                                          {'(', 43}, {')', 44}, {'>', 45},  {'<', 46},   {'-', 47}, {'+', 48},
                                          {'*', 49}, {'/', 50}, {'\\', 51}, {' ', 86},   {'A', 86}, {'Z', 86},
                                          {'{', 86}, {'_', 86}, {'\0', 86}, {'\xe5', 86}};
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

TEST(Greetings, standsInSizeAndPlaceAsSet)
{
    Stage stage;
    Greetings greetings;
    stage.setup(greetings);
    trigger(greetings, "size", "0.01");
    greetings.updateSpline(0, "posx", -4);
    greetings.updateSpline(0, "posy", 3);
    greetings.updateSpline(0, "alpha", 5);
    stage.draw(greetings, 0);
    const GLRecorder::Vertex& upperLeft = gl.primitives.at(0).vertices[0];
    EXPECT_NEAR(upperLeft.eye[0], 0.3f - 0.2f - 0.64f, 1e-5f);
    EXPECT_NEAR(upperLeft.eye[1], 0.3f + 0.01f, 1e-5f);
    EXPECT_EQ(upperLeft.color, (std::array<float, 4>{1, 1, 1, 0.5f}));
}

TEST(Hypno, letsTheLettersFlickerOnASpiral)
{
    Stage stage;
    Hypno hypno;
    stage.setup(hypno);
    hypno.updateSpline(0, "alpha", 4);
    std::srand(3);
    stage.draw(hypno, 0);
    const int next = std::rand();

    const std::string text = "                sandrift presents at drydocks 2005 - a demo by ruvelo, maril, dawnhouse, "
                             "ulve and tessera - our glacier heart cold";
    ASSERT_EQ(gl.primitives.size(), text.size());
    std::srand(3);
    for (size_t i = 0; i < text.size(); ++i)
    {
        SCOPED_TRACE(i);
        const std::vector<GLRecorder::Vertex>& corners = gl.primitives[i].vertices;
        EXPECT_FLOAT_EQ(corners[0].texture[0], glyphLeftEdge(text[i]));
        const float x = (corners[0].eye[0] + corners[3].eye[0]) / 2, y = (corners[0].eye[1] + corners[3].eye[1]) / 2;
        EXPECT_NEAR(std::hypot(x, y), 1, 1e-4f);
        EXPECT_NEAR(std::atan2(x, y), std::remainder(0.25 * i, 2 * M_PI), 1e-3);
        EXPECT_NEAR(corners[0].eye[2], 0.6f - 10 - 0.5f * i, 1e-4f);
        const float width = std::hypot(corners[2].eye[0] - corners[0].eye[0], corners[2].eye[1] - corners[0].eye[1]);
        EXPECT_NEAR(width, 0.25f, 1e-4f); // without twist the size is the same for all
        const float flicker = static_cast<float>(std::rand()) / 2147483648.0f; // one number a letter, blanks too
        EXPECT_NEAR(corners[0].color[3], 0.2f * flicker + 0.5f + 0.2f, 1e-5f);
    }
    EXPECT_EQ(std::rand(), next);

    hypno.updateSpline(0, "twist", 10);
    stage.draw(hypno, 0);
    const std::vector<GLRecorder::Vertex>& first = gl.primitives[0].vertices; // sin 0 for the first letter
    EXPECT_NEAR(first[2].eye[0] - first[0].eye[0], 2 * (0.125f + 0.06666667f), 1e-4f);
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
        const GLRecorder::Vertex& first = gl.primitives.at(0).vertices[0];
        EXPECT_NEAR(first.eye[0], -0.275f, 1e-5f);
        EXPECT_FLOAT_EQ(first.texture[0], 40 / 1024.0f); // e
    }
}

TEST(Sandrift, beginsEveryEntryWithItsGhost)
{
    Stage stage;
    Sandrift sandrift;
    stage.setup(sandrift);
    auto shown = [&] {
        stage.draw(sandrift, 0);
        return gl.primitives.at(0).texture;
    };
    EXPECT_EQ(shown(), stage.name("sandrift_ghost.png"));
    trigger(sandrift, "change");
    EXPECT_EQ(shown(), stage.name("sandrift.png"));
    sandrift.resetTriggers();
    EXPECT_EQ(shown(), stage.name("sandrift_ghost.png"));
}

TEST(Scenese, crossesTheScreenOnceAndJumpsUpAndDown)
{
    Stage stage;
    Scenese scenese;
    stage.setup(scenese);
    scenese.updateSpline(0, "offset", 5);
    scenese.updateSpline(0, "zoom", -10);
    scenese.updateSpline(0, "alpha", 10);
    auto middle = [&](float time, float position) {
        stage.draw(scenese, time, position);
        const std::vector<GLRecorder::Vertex>& corners = gl.primitives.at(0).vertices;
        EXPECT_NEAR(corners[0].eye[2], -2.975f, 1e-5f);
        EXPECT_FLOAT_EQ(corners[0].color[3], 0.45f);
        return std::pair((corners[0].eye[0] + corners[2].eye[0]) / 2, (corners[0].eye[1] + corners[2].eye[1]) / 2);
    };
    const float quarter = static_cast<float>(M_PI) / 2;
    EXPECT_NEAR(middle(0, 0).first, 5, 1e-5f);
    EXPECT_NEAR(middle(0, 1).first, -5, 1e-5f);
    EXPECT_NEAR(middle(quarter, 0).second, 0.5f + 2, 1e-5f); // the hop at the start of an entry
    EXPECT_NEAR(middle(20, 0).second, 0.5f, 1e-5f);
    trigger(scenese, "jumpspeed", "2");
    trigger(scenese, "jump", "", 20);
    EXPECT_NEAR(middle(20 + quarter / 2, 0).second, 0.5f - 2, 1e-5f);
    trigger(scenese, "jump", "", 30);
    EXPECT_NEAR(middle(30 + quarter / 2, 0).second, 0.5f + 2, 1e-5f);
    trigger(scenese, "jumpheight", "1");
    trigger(scenese, "jump", "", 40);
    EXPECT_NEAR(middle(40 + quarter / 2, 0).second, 0.5f - 1, 1e-5f);
}
