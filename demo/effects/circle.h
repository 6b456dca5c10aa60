#pragma once

#include "tw_effect3d.h"
#include "tw_glinclude.h"

// A white disc in the middle of the screen that shrinks from beyond the picture's edges to nothing over the length of
// its entry: between Stencil and StencilOp, a closing iris.
class Circle : public Tidewheel::Effect3D
{
public:
    ~Circle() override;
    void setup(AM::ArchiveManager& archive) override;
    void update(float time, float delta, float position) override;

    GLUquadric* mQuadric = nullptr; // owned
};
