#pragma once

#include <vector>

#include "sampler.h"
#include "y3d_trackblenderfloat.h"

namespace gltf
{

// From where to where the curves of a scene are written, and how densely what has no exact form there.
struct Span
{
    double end;
    double fps;
};

// What the curves of a track become in glTF, from 0 to the end of a span.
struct Pieces
{
    // A stretch of time in which each component is a cubic polynomial: values and changes a second at its ends.
    struct Piece
    {
        double from, to;
        std::vector<double> value, nextValue, slope, nextSlope;
    };

    std::vector<Piece> pieces; // without gaps; none where nothing has keys
    bool isStep = true;        // no component moves but in steps
    bool isStraight = true;    // none is curved
    bool isSampled = false;    // some component had no cubic form
    bool isCut = false;        // some component goes on behind the end
};

// Cuts the curves at the keys of them all. Cyclic ones are repeated up to the end.
Pieces cutCurves(const std::vector<const y3d::TrackBlenderFloat*>& curves, const Span& span);

// The pieces as a sampler. A jump becomes a steep way of a hundredth of a millisecond, unless all are steps.
Sampler toSampler(const Pieces& pieces);

} // namespace gltf
