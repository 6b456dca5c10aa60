#pragma once

#include "greeting_names.h"

#include "fe_texture.h"
#include "tw_effect3d.h"

// One name at a time out of the picture "greets.png", which holds all of them, one under the other.
//
// Triggers: "text"                       the name to show, one of `greets`; another text changes nothing
//           "size"                       half the height of the name; it is 64 times as long as this to either side
//           "r", "g", "b"                its colour, 0 to 1 each
// Splines:  "alpha"                      opacity in tenths, 0 to 10
//           "posx", "posy"               place in tenths; posx counts half and from 0.3 right of the middle
class Greetings : public Tidewheel::Effect3D
{
public:
    static constexpr const char* const (&greets)[GREETING_ROWS] = GREETING_NAMES; // in the order of their rows

    void setup(AM::ArchiveManager& archive) override;
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    Fennel::Texture mPicture;
    float mAlpha = 1;
    float mRed = 1;
    float mGreen = 1;
    float mBlue = 1;
    float mPosX = 0;
    float mPosY = 0;
    float mSize = 0.125f;
    float mRow = 0; // upper edge of the name in t
};
