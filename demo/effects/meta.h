#pragma once

#include "fe_texture.h"
#include "tw_effect3d.h"

#include "mb_vector3f.h"

#include <memory>

namespace Fennel
{
namespace Sorrel
{
class Engine;
class Node;
} // namespace Sorrel
} // namespace Fennel

// Ten wandering charges as one blobby, mirroring surface, at the node "metaball" of the scene that has just been drawn.
// It takes camera, lights and colour as the scene leaves them.
//
// Every ball gives off strength / distance^2; the surface runs where the sum is 0.75. It is cut out by marching cubes
// on a grid of 23 cells a side, and in place of sweeping the grid a flood goes from the cell of each ball through all
// connected cells that are not wholly outside. The field is computed only where the flood comes by, once for each
// lattice point. Lattice point (i, j, k) lies at (0.05 i, 0.05 j, 0.05 k) in the space the balls move in.
class Meta : public Tidewheel::Effect3D
{
public:
    using Effect3D::setup;

    static const int BALLS = 10;
    static const int POINTS = 24; // lattice points on an axis
    static const int CELLS = POINTS - 1;

    struct Ball
    {
        float strength;
        MathBase::Vector3f position; // 0.25 to 1 in each direction
        MathBase::Vector3f target;
    };

    void setup(AM::ArchiveManager& archive) override;

    // Throws Fennel::Exception if the scene has no node "metaball".
    void update(float time, float delta, float position) override;

    // The field at a lattice point, each coordinate 0 to 23. Infinite where a ball lies right on it.
    float getEnergy(int i, int j, int k);

    // The unit normal of the surface at a point given in cells, away from the balls. Straight up where the balls cancel
    // each other out and there is no such direction.
    MathBase::Vector3f calcNormal(MathBase::Vector3f position) const;

    // Floods from this cell and draws all that it reaches, each cell after those it was the way to. 1 when this cell
    // was among them, 0 when it is wholly outside, not in the grid or has had its turn.
    int drawVoxel(int x, int y, int z);

    std::unique_ptr<Ball[]> mBalls;
    Fennel::Texture mPicture;
    Fennel::Sorrel::Engine* mEngine = nullptr; // of the scene; not owned

    // One set for the program, cleared for each picture.
    static float gridEnergy[POINTS * POINTS * POINTS];                 // i + 24 j + 576 k
    static unsigned char gridEnergyComputed[POINTS * POINTS * POINTS]; // 1 where gridEnergy is valid
    static unsigned char gridVisited[CELLS * CELLS * CELLS];           // x + 23 y + 529 z; 1 where the flood has been

    static const float vertices[8][3];        // the corners of a cell
    static const int edges[12][2];            // the two corners of each edge
    static const int gridTriangles[256 * 16]; // edges by threes, ended by -1; 16 entries for each case

private:
    struct FloodCell
    {
        unsigned char x, y, z;
        unsigned char corners;   // the case: bit n is set where corner n is outside
        unsigned char direction; // the neighbour to look at next
    };

    const Fennel::Sorrel::Node* findNode() const;
    void moveBalls(float delta);
    void floodFrom(const Ball& ball);
    bool enterCell(int x, int y, int z);
    void drawCell(const FloodCell& cell);

    static FloodCell floodStack[CELLS * CELLS * CELLS];
    int mFloodDepth = 0;
};
