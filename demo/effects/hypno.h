#pragma once

#include "fe_texture.h"
#include "tw_effect3d.h"

#include <vector>

// A flight down a turning spiral of glowing letters, in the font "font.png".
//
// Splines: "twist"    how much the letters pulse in size, in tenths
//          "spread"   moves the spiral off the middle and dims it, in tenths
//          "alpha"    brightness in tenths; also moves the spiral towards the viewer
class Hypno : public Tidewheel::Effect3D
{
public:
    // What does not change of a character of the text.
    struct Letter
    {
        float s; // left edge of the glyph in the font
        float x; // place on the spiral's circle of radius 1
        float y;
        float rotation; // degrees, so that the letter stands radially
    };

    void setup(AM::ArchiveManager& archive) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    Fennel::Texture mFont;
    std::vector<Letter> mLetters;
    float mTwist = 0;
    float mSpread = 0;
    float mAlpha = 0;
};
