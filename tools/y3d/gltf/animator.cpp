#include "animator.h"

#include "shading.h"
#include "text.h"
#include "y3d_exception.h"

#include <algorithm>
#include <cmath>

namespace gltf
{

namespace
{

const double MAX_SAMPLES = 1e5; // nearly an hour at 30 a second

Quat eulerRotation(const std::vector<double>& angles)
{
    MathBase::Quatf rotation;
    rotation.fromBlenderEuler(
        {static_cast<float>(angles[0]), static_cast<float>(angles[1]), static_cast<float>(angles[2])});
    return normalized(toQuat(rotation));
}

// Values of a piece on the way; s from 0 to 1.
std::vector<double> within(const Pieces::Piece& piece, double s)
{
    const Sampler part{
        Sampler::CUBIC,
        {{0, piece.value, {}, piece.slope}, {piece.to - piece.from, piece.nextValue, piece.nextSlope, {}}}};
    return s < 1 ? part.getValue(s * (piece.to - piece.from)) : piece.nextValue;
}

} // namespace

Pieces Animator::cut(const std::vector<const y3d::TrackBlenderFloat*>& curves, const std::string& title,
                     const char* what)
{
    if (!(mSpan.end * mSpan.fps <= MAX_SAMPLES)) throw y3d::Exception("its animation is too long to be sampled");
    Pieces pieces;
    try
    {
        pieces = cutCurves(curves, mSpan);
    }
    catch (const y3d::Exception& exception)
    {
        throw y3d::Exception("%s: its %s %s", title.c_str(), what, exception.what());
    }
    if (pieces.isSampled)
        mLosses.tell(title + ": its " + what + " is sampled " + shown(static_cast<float>(mSpan.fps)) +
                     " times a second");
    if (pieces.isCut)
        mLosses.tell(title + ": its " + what + " goes on for ever; it ends at " + shown(static_cast<float>(mSpan.end)) +
                     " s");
    return pieces;
}

void Animator::addVector(int node, const char* path, const y3d::TrackVector3f& track, const std::string& title)
{
    const Pieces pieces = cut({&track.mX, &track.mY, &track.mZ}, title, path);
    if (!pieces.pieces.empty()) addToNode(node, path, toSampler(pieces));
}

void Animator::addRotation(int node, const y3d::TrackQuatf& track, const Quat& turned, const std::string& title)
{
    if (track.mEuler)
    {
        const Pieces pieces = cut({&track.mX, &track.mY, &track.mZ}, title, "rotation");
        if (!pieces.pieces.empty()) addToNode(node, "rotation", sampleAngles(pieces, turned));
        return;
    }
    Pieces pieces = cut({&track.mW, &track.mX, &track.mY, &track.mZ}, title, "rotation");
    if (pieces.pieces.empty()) return;
    // Straight ways through the components are no turns at a constant speed, but curves without a bend.
    pieces.isStraight = false;
    addToNode(node, "rotation", toSampler(pieces).turned(Quat(), turned));
}

// Angles have no form of their own in glTF.
Sampler Animator::sampleAngles(const Pieces& pieces, const Quat& turned) const
{
    Pieces rotations;
    rotations.isStep = pieces.isStep;
    for (const Pieces::Piece& piece : pieces.pieces)
    {
        const bool isLevel = piece.value == piece.nextValue && piece.slope == piece.nextSlope &&
                             std::all_of(piece.slope.begin(), piece.slope.end(), [](double part) { return part == 0; });
        const double count = isLevel ? 1 : std::max(std::ceil((piece.to - piece.from) * mSpan.fps), 1.0);
        for (double i = 0; i < count; ++i)
        {
            const Quat a = eulerRotation(within(piece, i / count)) * turned;
            const Quat b = eulerRotation(within(piece, (i + 1) / count)) * turned;
            const double length = (piece.to - piece.from) / count;
            rotations.pieces.push_back({piece.from + i * length,
                                        piece.from + (i + 1) * length,
                                        {a.w, a.x, a.y, a.z},
                                        {b.w, b.x, b.y, b.z},
                                        {0, 0, 0, 0},
                                        {0, 0, 0, 0}});
        }
    }
    return toSampler(rotations);
}

void Animator::addFloat(const std::string& pointer, const y3d::TrackFloat& track, const std::string& title)
{
    const Pieces pieces =
        cut({&track.mCurve}, title, pointer.find("yfov") == std::string::npos ? "distance" : "angle of view");
    if (!pieces.pieces.empty()) addToProperty(pointer, toSampler(pieces));
}

void Animator::addColor(const std::string& pointer, const y3d::TrackColor4f& track, double strength,
                        const std::string& title)
{
    Pieces pieces = cut({&track.mR, &track.mG, &track.mB}, title, "colour");
    if (pieces.pieces.empty()) return;
    Pieces fine = pieces;
    fine.pieces.clear();
    fine.isStraight = true;
    for (const Pieces::Piece& piece : pieces.pieces)
    {
        const double count = pieces.isStraight ? 1 : std::max(std::ceil((piece.to - piece.from) * mSpan.fps), 1.0);
        const double length = (piece.to - piece.from) / count;
        for (double i = 0; i < count; ++i)
        {
            Pieces::Piece part = {piece.from + i * length,
                                  piece.from + (i + 1) * length,
                                  within(piece, i / count),
                                  within(piece, (i + 1) / count),
                                  {0, 0, 0},
                                  {0, 0, 0}};
            for (double& value : part.value) value = toLight(std::max(value, 0.0)) / strength;
            for (double& value : part.nextValue) value = toLight(std::max(value, 0.0)) / strength;
            fine.pieces.push_back(part);
        }
    }
    addToProperty(pointer, toSampler(fine));
}

void Animator::addToNode(int node, const char* path, const Sampler& sampler)
{
    const int number = mGlb.addSampler(&mAnimation, sampler);
    mAnimation["channels"].push_back({{"sampler", number}, {"target", {{"node", node}, {"path", path}}}});
}

void Animator::addToProperty(const std::string& pointer, const Sampler& sampler)
{
    mGlb.use("KHR_animation_pointer");
    const int number = mGlb.addSampler(&mAnimation, sampler);
    const Glb::Json extension = {{"KHR_animation_pointer", {{"pointer", pointer}}}};
    mAnimation["channels"].push_back(
        {{"sampler", number}, {"target", {{"path", "pointer"}, {"extensions", extension}}}});
}

void Animator::finish(const std::string& name)
{
    if (mAnimation.is_null()) return;
    mAnimation["name"] = name;
    mGlb.add("animations", mAnimation);
}

} // namespace gltf
