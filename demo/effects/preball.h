#pragma once

#include "fe_texture.h"
#include "tw_effect3d.h"

// The ball's landscape builds itself up from small tiles, in a wave from the upper left to the lower right, while two
// black bars close in above and below.
class PreBall : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager& archive) override;
    void update(float time, float delta, float position) override;

    Fennel::Texture mPicture;

private:
    static void drawTile(int row, int column, float position);
    static void drawBars(float position);
};
