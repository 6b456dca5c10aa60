#include "meta.h"

#include "effect_helpers.h"

#include "fe_exception.h"
#include "fe_sorrel.h"

#include <cmath>
#include <cstring>

float Meta::gridEnergy[POINTS * POINTS * POINTS];
unsigned char Meta::gridEnergyComputed[POINTS * POINTS * POINTS];
unsigned char Meta::gridVisited[CELLS * CELLS * CELLS];
Meta::FloodCell Meta::floodStack[CELLS * CELLS * CELLS];

namespace
{

const float THRESHOLD = 0.75f; // of the field, on the surface
const float BALL_STRENGTH = 0.005f;
const float BALL_SPEED = 0.5f; // field units a second
const float CELL_SIZE = 0.05f; // field units
const float CELLS_PER_UNIT = 20.0f;
const float GRID_MIDDLE = 12.0f; // the lattice point at the node's origin
const float MODEL_SCALE = 0.1f;  // scene units a cell
const unsigned char NO_VERTEX = 255;

// The neighbours of a cell in the order in which the flood goes on.
const int NEIGHBOURS[6][3] = {{-1, 0, 0}, {1, 0, 0}, {0, -1, 0}, {0, 1, 0}, {0, 0, -1}, {0, 0, 1}};

float randomCoordinate()
{
    return 0.75f * randomUnit() + 0.25f;
}

// Three coordinates in the order x, y, z, which a constructor call would leave open.
MathBase::Vector3f randomPoint()
{
    MathBase::Vector3f point;
    point.x = randomCoordinate();
    point.y = randomCoordinate();
    point.z = randomCoordinate();
    return point;
}

// Unlike the plain normalize, this one tells that there is no direction in place of stopping.
bool normalizeIfPossible(MathBase::Vector3f& vector)
{
    const float length = vector.length();
    if (!(length > 1E-10) || !std::isfinite(length)) return false;
    vector.normalize();
    return true;
}

// The cell of a coordinate in the field, -1 outside the grid.
int cellOf(float coordinate)
{
    const float cell = CELLS_PER_UNIT * coordinate;
    if (!(cell > -1 && cell < Meta::CELLS)) return -1;
    return static_cast<int>(cell);
}

bool isCell(int coordinate)
{
    return coordinate >= 0 && coordinate < Meta::CELLS;
}

// How far along a cut edge the surface lies. Beside a ball on a lattice point, where the field is infinite, it lies at
// the other end.
float cutOf(float from, float to)
{
    const float cut = (THRESHOLD - from) / (to - from);
    return std::isnan(cut) ? 1.0f : cut;
}

} // namespace

void Meta::setup(AM::ArchiveManager&)
{
    mBalls.reset(new Ball[BALLS]);
    for (int i = 0; i < BALLS; ++i)
    {
        mBalls[i].strength = BALL_STRENGTH;
        mBalls[i].position = randomPoint();
        mBalls[i].target = randomPoint();
    }
    mPicture = loadPicture(*mTextureManager, PictureFiles::ENVIRONMENT);
}

void Meta::update(float, float delta, float)
{
    std::memset(gridVisited, 0, sizeof(gridVisited));
    std::memset(gridEnergy, 0, sizeof(gridEnergy));
    std::memset(gridEnergyComputed, 0, sizeof(gridEnergyComputed));

    const Fennel::Sorrel::Node* node = findNode();
    if (!node) throw Fennel::Exception("No node 'metaball' in scene!");
    glMultMatrixf(node->mMatWorld.m);

    if (delta > 0) moveBalls(delta);
    for (int i = 0; i < BALLS; ++i) floodFrom(mBalls[i]);
}

// Null where there is no scene at all.
const Fennel::Sorrel::Node* Meta::findNode() const
{
    if (!mEngine) return nullptr;
    for (const Fennel::Sorrel::Node* node : mEngine->mNodes)
    {
        if (node->mName == "metaball") return node;
    }
    throw Fennel::Exception("Node %s was not found in scene!", "metaball");
}

// A ball that would reach its target, or is there, stays for this frame and takes a new one.
void Meta::moveBalls(float delta)
{
    for (int i = 0; i < BALLS; ++i)
    {
        Ball& ball = mBalls[i];
        const MathBase::Vector3f way = ball.target - ball.position;
        MathBase::Vector3f direction = way;
        const bool hasDirection = normalizeIfPossible(direction);
        const MathBase::Vector3f step = BALL_SPEED * delta * direction;
        if (!hasDirection || dot(step, step) > dot(way, way))
            ball.target = randomPoint();
        else
            ball.position = ball.position + step;
    }
}

void Meta::floodFrom(const Ball& ball)
{
    drawVoxel(cellOf(ball.position.x), cellOf(ball.position.y), cellOf(ball.position.z));
}

float Meta::getEnergy(int i, int j, int k)
{
    const int index = i + POINTS * j + POINTS * POINTS * k;
    if (gridEnergyComputed[index]) return gridEnergy[index];

    const MathBase::Vector3f point(CELL_SIZE * i, CELL_SIZE * j, CELL_SIZE * k);
    float sum = 0;
    for (int b = 0; b < BALLS; ++b)
    {
        const MathBase::Vector3f d = point - mBalls[b].position;
        sum += mBalls[b].strength / dot(d, d);
    }
    gridEnergy[index] = sum;
    gridEnergyComputed[index] = 1;
    return sum;
}

MathBase::Vector3f Meta::calcNormal(MathBase::Vector3f position) const
{
    const MathBase::Vector3f q = CELL_SIZE * position;
    MathBase::Vector3f sum;
    for (int b = 0; b < BALLS; ++b)
    {
        const MathBase::Vector3f d = q - mBalls[b].position;
        const float d2 = dot(d, d);
        sum = sum + (2 * mBalls[b].strength / (d2 * d2)) * d;
    }
    if (!normalizeIfPossible(sum)) return MathBase::Vector3f(0, 1, 0);
    return sum;
}

// What reads best as a recursion runs on a stack of its own, since the way through a blob may lead through all 12167
// cells. A cell is flagged when it is entered, looks at its neighbours, each of which finishes first, and is drawn.
int Meta::drawVoxel(int x, int y, int z)
{
    mFloodDepth = 0;
    if (!enterCell(x, y, z)) return 0;

    while (mFloodDepth > 0)
    {
        FloodCell& cell = floodStack[mFloodDepth - 1];
        if (cell.direction < 6)
        {
            const int* way = NEIGHBOURS[cell.direction++];
            enterCell(cell.x + way[0], cell.y + way[1], cell.z + way[2]);
        }
        else
        {
            drawCell(cell);
            --mFloodDepth;
        }
    }
    return 1;
}

// False for what is not in the grid, has been entered before, or is wholly outside: there the flood stops.
bool Meta::enterCell(int x, int y, int z)
{
    if (!isCell(x) || !isCell(y) || !isCell(z)) return false;
    unsigned char& visited = gridVisited[x + CELLS * y + CELLS * CELLS * z];
    if (visited) return false;
    visited = 1;

    int corners = 0;
    for (int n = 0; n < 8; ++n)
    {
        const float* offset = vertices[n];
        const float energy = getEnergy(x + static_cast<int>(offset[0]), y + static_cast<int>(offset[1]),
                                       z + static_cast<int>(offset[2]));
        if (energy < THRESHOLD) corners |= 1 << n;
    }
    if (corners == 255) return false;

    FloodCell& cell = floodStack[mFloodDepth++];
    cell.x = static_cast<unsigned char>(x);
    cell.y = static_cast<unsigned char>(y);
    cell.z = static_cast<unsigned char>(z);
    cell.corners = static_cast<unsigned char>(corners);
    cell.direction = 0;
    return true;
}

void Meta::drawCell(const FloodCell& cell)
{
    const MathBase::Vector3f corner(cell.x, cell.y, cell.z);
    float energy[8];
    for (int n = 0; n < 8; ++n)
        energy[n] = getEnergy(cell.x + static_cast<int>(vertices[n][0]), cell.y + static_cast<int>(vertices[n][1]),
                              cell.z + static_cast<int>(vertices[n][2]));

    MathBase::Vector3f points[12];
    MathBase::Vector3f normals[12];
    unsigned char indices[15];
    unsigned char vertexOfEdge[12];
    std::memset(vertexOfEdge, NO_VERTEX, sizeof(vertexOfEdge));
    unsigned char numVertices = 0;
    int numIndices = 0;

    for (const int* entry = gridTriangles + 16 * cell.corners; *entry != -1; ++entry)
    {
        const int edge = *entry;
        if (vertexOfEdge[edge] == NO_VERTEX)
        {
            const int a = edges[edge][0];
            const int b = edges[edge][1];
            const float t = cutOf(energy[a], energy[b]);
            const MathBase::Vector3f from(vertices[a][0], vertices[a][1], vertices[a][2]);
            const MathBase::Vector3f to(vertices[b][0], vertices[b][1], vertices[b][2]);
            const MathBase::Vector3f grid = (1 - t) * from + t * to + corner;
            normals[numVertices] = calcNormal(grid);
            points[numVertices] = MODEL_SCALE * (grid - MathBase::Vector3f(GRID_MIDDLE, GRID_MIDDLE, GRID_MIDDLE));
            vertexOfEdge[edge] = numVertices++;
        }
        indices[numIndices++] = vertexOfEdge[edge];
    }

    glTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP);
    glTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP);
    glEnable(GL_TEXTURE_GEN_S);
    glEnable(GL_TEXTURE_GEN_T);
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_CULL_FACE);
    mPicture->bind();
    glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_EDGE_FLAG_ARRAY);
    glDisableClientState(GL_INDEX_ARRAY);
    glDisableClientState(GL_COLOR_ARRAY);

    glVertexPointer(3, GL_FLOAT, 0, points);
    glNormalPointer(GL_FLOAT, 0, normals);
    glDrawElements(GL_TRIANGLES, numIndices, GL_UNSIGNED_BYTE, indices);

    glDisableClientState(GL_VERTEX_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisable(GL_TEXTURE_GEN_T);
    glDisable(GL_TEXTURE_GEN_S);
}
