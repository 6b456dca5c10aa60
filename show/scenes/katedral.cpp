#include "scenes.h"

#include "picture_files.h"

#include <cmath>

namespace Scenes
{

namespace
{

// The nave runs towards negative z, from the door at z = 6. Columns stand in two rows, a bay apart; the vault spans the
// nave between them, the aisles lie outside.
const int BAYS = 9;
const float BAY = 12.0f;
const float ROW = 9.0f;      // of the columns, from the middle
const float OUTSIDE = 17.0f; // of the aisle walls
const float SPRING = 19.0f;  // where the vault begins
const float CROWN = 31.0f;   // where it ends
const float ARCADE = 11.0f;  // where the arches between the columns begin
const float PODIUM = -78.0f;
const float AISLE_HEIGHT = 17.0f;

float bayStart(int i)
{
    return 6.0f - BAY * float(i);
}

// A pointed arch over -1 to 1: two arcs that meet in the middle at height 1.
float pointed(float x)
{
    const float reach = 1.35f; // radius of the arcs, in half spans
    const float centre = reach - 1.0f;
    const float place = std::fabs(x) + centre;
    return std::sqrt(std::max(0.0f, reach * reach - place * place)) / std::sqrt(reach * reach - centre * centre);
}

// A clustered column: eight half shafts around a core, a stepped base and a capital that opens out.
Surface column()
{
    Surface surface("stone");
    const std::vector<std::pair<float, float>> profile = {
        {1.75f, 0.0f}, {1.75f, 0.5f}, {1.45f, 0.6f}, {1.45f, 1.0f},  {1.15f, 1.25f}, {1.0f, 1.6f},   {1.0f, 5.0f},
        {1.0f, 9.6f},  {1.05f, 9.9f}, {1.2f, 10.0f}, {1.05f, 10.1f}, {1.2f, 10.5f},  {1.75f, 11.0f}, {1.75f, 11.4f}};
    surface.revolve(profile, 32, 2.0f, 3.0f, [](float u) { return 1.0f + 0.13f * std::fabs(std::sin(8.0f * PI * u)); });
    surface.smoothNormals();
    return surface;
}

// The shafts go on above the capital, up to where the vault begins.
Surface shaft()
{
    Surface surface("stone");
    surface.revolve({{0.55f, 11.0f}, {0.55f, SPRING - 0.8f}, {0.95f, SPRING}, {0.95f, SPRING + 0.3f}}, 12, 1.0f, 3.0f);
    surface.smoothNormals();
    return surface;
}

// A moulded arch over one BAY, along z from 0 to -BAY, its lower edge from `low` up by `rise`. Its section is a
// rounded bar `thick` wide.
Surface arch(float low, float rise, float thick)
{
    Surface surface("stone");
    surface.grid(28, 8, 8.0f, 1.0f, [&](float u, float v) {
        const float along = u * 2.0f - 1.0f;
        const float angle = 2.0f * PI * v;
        const float y = low + rise * pointed(along);
        const float before = pointed(std::max(-1.0f, along - 0.02f)), after = pointed(std::min(1.0f, along + 0.02f));
        const Vector3f way = normalized(Vector3f(0.0f, (after - before) * rise, -0.04f * BAY * 0.5f));
        const Vector3f outward = cross(Vector3f(1, 0, 0), way);
        const Vector3f core(0.0f, y, -BAY * u);
        return core + std::cos(angle) * thick * Vector3f(1, 0, 0) + (-std::sin(angle) * thick) * outward;
    });
    surface.smoothNormals();
    return surface;
}

// The wall of the nave over one BAY, from the arch between the columns up to the vault.
Surface spandrel()
{
    Surface surface("wall");
    // Facing +x, towards the nave on the left side: u runs right, which is towards -z there.
    surface.grid(24, 8, 2.0f, 2.0f, [&](float u, float v) {
        const float arch = pointed(u * 2.0f - 1.0f);
        const float low = ARCADE + 5.6f * arch, high = SPRING + (CROWN - SPRING) * arch + 0.3f;
        return Vector3f(0.0f, low + (high - low) * v, -BAY * u);
    });
    for (std::size_t i = 0; i < surface.mPositions.size(); i++) // stones of one size, whatever the wall's height
        surface.mCoordinates[i] = Vector3f(-surface.mPositions[i].z / 6.0f, -surface.mPositions[i].y / 6.0f, 0);
    surface.smoothNormals();
    return surface;
}

// One bay of the vault: where the barrel along the nave meets the barrels across, the higher one counts.
Surface vault()
{
    Surface surface("vault");
    surface.grid(36, 24, 3.0f, 2.0f, [&](float u, float v) {
        // Seen from below: u runs to the right when looking up with -z ahead... towards positive x, v back.
        const float x = (u * 2.0f - 1.0f), z = v * 2.0f - 1.0f;
        const float height = std::max(pointed(x), pointed(z));
        return Vector3f(x * ROW, SPRING + (CROWN - SPRING) * height, -BAY * 0.5f - z * BAY * 0.5f);
    });
    // Seen from inside, the faces look down.
    for (std::size_t i = 0; i < surface.mIndices.size(); i += 3)
        std::swap(surface.mIndices[i + 1], surface.mIndices[i + 2]);
    surface.smoothNormals();
    return surface;
}

// A rib from (x0, z0) to (x1, z1) in one BAY, along the vault: `share(t)` is the height of the vault on the way.
Surface rib(float x0, float z0, float x1, float z1, float thick)
{
    Surface surface("stone");
    surface.grid(26, 6, 10.0f, 1.0f, [&](float u, float v) {
        const float angle = 2.0f * PI * v;
        const auto core = [&](float t) {
            const float x = x0 + (x1 - x0) * t, z = z0 + (z1 - z0) * t;
            return Vector3f(x, SPRING + (CROWN - SPRING) * pointed(t * 2.0f - 1.0f) - 0.1f, z);
        };
        const Vector3f way = normalized(core(std::min(1.0f, u + 0.01f)) - core(std::max(0.0f, u - 0.01f)));
        const Vector3f sideways = normalized(cross(way, Vector3f(0, 1, 0)));
        const Vector3f upward = cross(sideways, way);
        return core(u) + std::cos(angle) * thick * sideways + std::sin(angle) * thick * upward;
    });
    surface.smoothNormals();
    return surface;
}

// The aisle wall of one BAY, on the left, facing the nave; its picture shows the light that falls on it.
Surface aisleWall()
{
    Surface surface("aisle");
    surface.grid(6, 8, 1.0f, 1.0f, [&](float u, float v) { return Vector3f(0.0f, AISLE_HEIGHT * v, -BAY * u); });
    surface.smoothNormals();
    return surface;
}

// It leans from the wall, where x is 0, against the nave, above the arches between the columns.
Surface aisleRoof()
{
    Surface surface("vault");
    surface.grid(10, 4, 1.5f, 2.0f, [&](float u, float v) {
        return Vector3f(u * (OUTSIDE - ROW), 13.2f + 4.6f * std::sin(u * PI / 2.0f), -BAY + BAY * v);
    });
    surface.smoothNormals();
    return surface;
}

// A round bar along a closed or open way; at(t) for t from 0 to 1, `segments` pieces, `sides` around.
void bar(Surface& surface, int segments, int sides, float thick, const std::function<Vector3f(float)>& at)
{
    surface.grid(segments, sides, float(segments) / 4.0f, 0.5f, [&](float u, float v) {
        const Vector3f way = normalized(at(u + 0.002f) - at(u - 0.002f));
        const Vector3f aside = normalized(cross(way, std::fabs(way.y) > 0.95f ? Vector3f(1, 0, 0) : Vector3f(0, 1, 0)));
        const Vector3f out = cross(aside, way);
        const float angle = 2.0f * PI * v;
        return at(u) + thick * (std::cos(angle) * aside + std::sin(angle) * out);
    });
}

void hoop(Surface& surface, const Vector3f& middle, const Vector3f& right, const Vector3f& up, int segments, int sides,
          float thick)
{
    bar(surface, segments, sides, thick,
        [&](float t) { return middle + std::cos(2.0f * PI * t) * right + std::sin(2.0f * PI * t) * up; });
}

// The outline of a lancet as in its picture: how far from the middle the glass reaches, -1 to 1, at a row of the
// picture, which is 2 wide and 4 high.
const float LANCET_TOP = 0.07f, LANCET_SPRING = 1.6f, LANCET_BOTTOM = 3.92f;
float lancetHalf(float row)
{
    if (row > LANCET_SPRING) return 0.90f;
    const float over = LANCET_SPRING - row;
    return std::max(0.0f, std::sqrt(std::max(0.0f, 1.75f * 1.75f - over * over)) - 0.85f);
}

// A place in a lancet that stands on the origin and faces `right` x up: x and row as in its picture.
struct Lancet
{
    float width, height;
    Vector3f right;

    Vector3f place(float x, float row) const
    {
        return (x * width * 0.5f) * right + Vector3f(0, (1.0f - row / 4.0f) * height, 0);
    }
};

Surface lancetGlass(const Lancet& lancet, const Vector3f& foot)
{
    const int rows = 14;
    Surface surface("window");
    surface.grid(2, rows, 1.0f, 1.0f, [&](float u, float v) {
        const float row = LANCET_BOTTOM + (LANCET_TOP - LANCET_BOTTOM) * (1.0f - (1.0f - v) * (1.0f - v));
        return foot + lancet.place((u * 2.0f - 1.0f) * lancetHalf(row), row);
    });
    for (std::size_t i = 0; i < surface.mPositions.size(); i++)
    {
        const Vector3f p = surface.mPositions[i] - foot;
        const float x = p.x * lancet.right.x + p.z * lancet.right.z;
        surface.mCoordinates[i] = Vector3f(0.5f + x / lancet.width, 1.0f - p.y / lancet.height, 0);
    }
    surface.smoothNormals();
    return surface;
}

// Stone around and in a lancet: the frame, a mullion, a ring for the rose in its head.
void lancetStone(Surface& surface, const Lancet& lancet, const Vector3f& foot, float thick)
{
    const auto place = [&](float x, float row) { return foot + lancet.place(x, row); };
    bar(surface, 30, 6, thick, [&](float t) {
        const float side = t < 0.5f ? 1.0f : -1.0f,
                    up = 1.0f - std::fabs(t * 2.0f - 1.0f); // 0 at the foot, 1 at the point
        const float row = LANCET_BOTTOM + (LANCET_TOP - LANCET_BOTTOM) * (1.0f - (1.0f - up) * (1.0f - up));
        return place(side * lancetHalf(row), row);
    });
    bar(surface, 1, 5, thick * 0.5f, [&](float t) { return place(0.0f, LANCET_BOTTOM + t * (1.61f - LANCET_BOTTOM)); });
    bar(surface, 18, 5, thick * 0.5f,
        [&](float t) { return place(0.46f * std::cos(2.0f * PI * t), 1.15f - 0.46f * std::sin(2.0f * PI * t)); });
}

// The rose: a disc of glass of that radius and its tracery of stone, both facing +z; what divides it is where the
// picture has it.
Surface roseGlass(const Vector3f& middle, float radius)
{
    Surface surface("rose");
    surface.grid(48, 3, 1.0f, 1.0f, [&](float u, float v) {
        return middle + (0.95f * radius * (1.0f - v)) * Vector3f(std::cos(2.0f * PI * u), std::sin(2.0f * PI * u), 0);
    });
    for (std::size_t i = 0; i < surface.mPositions.size(); i++)
    {
        const Vector3f p = (0.5f / radius) * (surface.mPositions[i] - middle);
        surface.mCoordinates[i] = Vector3f(0.5f + p.x, 0.5f - p.y, 0);
    }
    surface.smoothNormals();
    return surface;
}

Surface roseStone(const Vector3f& middle, float radius)
{
    const int petals = 12;
    const Vector3f x(radius, 0, 0), y(0, radius, 0);
    Surface surface("stone");
    hoop(surface, middle, 1.0f * x, 1.0f * y, 48, 8, 0.07f * radius);
    hoop(surface, middle, 0.62f * x, 0.62f * y, 48, 5, 0.022f * radius);
    hoop(surface, middle, 0.20f * x, 0.20f * y, 24, 5, 0.022f * radius);
    for (int i = 0; i < petals; i++)
    {
        const float edge = 2.0f * PI * float(i) / petals, within = edge + PI / petals;
        const Vector3f spoke(std::cos(edge), std::sin(edge), 0);
        bar(surface, 1, 5, 0.018f * radius, [&](float t) { return middle + (radius * (0.20f + 0.42f * t)) * spoke; });
        const Vector3f eye = middle + (0.785f * radius) * Vector3f(std::cos(within), std::sin(within), 0);
        hoop(surface, eye, 0.145f * x, 0.145f * y, 14, 5, 0.018f * radius);
    }
    surface.smoothNormals();
    return surface;
}

// Its picture covers one bay across the whole church.
Surface ground()
{
    const int pictures = BAYS + 2;
    Surface surface("floor");
    surface.grid(18, 6 * pictures, 1.0f, float(pictures), [&](float u, float v) {
        return Vector3f((u * 2.0f - 1.0f) * OUTSIDE, 0.0f, bayStart(-1) - v * BAY * float(pictures));
    });
    surface.smoothNormals();
    return surface;
}

// Three round steps and a slab with a rim.
Surface steps()
{
    Surface surface("stone");
    surface.revolve({{7.4f, 0.0f},
                     {7.4f, 0.45f},
                     {7.3f, 0.5f},
                     {6.2f, 0.5f},
                     {6.2f, 0.95f},
                     {6.1f, 1.0f},
                     {5.0f, 1.0f},
                     {5.0f, 1.45f},
                     {4.9f, 1.5f},
                     {3.4f, 1.5f},
                     {3.2f, 1.9f},
                     {3.0f, 2.0f},
                     {2.2f, 2.0f},
                     {0.0f, 1.9f}},
                    48, 8.0f, 3.0f);
    surface.smoothNormals();
    return surface;
}

Surface brazier(const std::string& stone)
{
    Surface surface(stone);
    surface.revolve({{0.9f, 0.0f},
                     {0.9f, 0.2f},
                     {0.3f, 0.4f},
                     {0.22f, 2.2f},
                     {0.35f, 2.4f},
                     {0.95f, 2.9f},
                     {1.05f, 3.1f},
                     {0.9f, 3.1f},
                     {0.0f, 2.8f}},
                    16, 3.0f, 3.0f);
    surface.smoothNormals();
    return surface;
}

// A tongue of fire one metre wide and two high that stands on the origin.
Surface flame()
{
    Surface surface("flame");
    std::vector<std::pair<float, float>> profile;
    const int rows = 14;
    for (int i = 0; i <= rows; i++)
    {
        const float t = float(i) / float(rows);
        profile.push_back({0.85f * std::sqrt(t) * std::pow(1.0f - t, 1.3f), 2.0f * t});
    }
    surface.revolve(profile, 12, 2.0f, 1.0f);
    for (Vector3f& p : surface.mPositions) p.x += 0.10f * std::sin(2.6f * p.y) * p.y; // it is never straight
    surface.smoothNormals();
    return surface;
}

Surface icicle()
{
    Surface surface("icicle");
    surface.revolve({{0.0f, -3.2f}, {0.07f, -2.4f}, {0.17f, -1.2f}, {0.32f, -0.3f}, {0.5f, 0.0f}}, 7, 1.0f, 2.0f);
    surface.smoothNormals();
    return surface;
}

Surface crystal()
{
    Surface surface("icicle");
    surface.revolve({{0.0f, -0.4f}, {0.4f, 0.0f}, {0.5f, 0.6f}, {0.44f, 2.4f}, {0.0f, 3.5f}}, 6, 1.0f, 2.0f);
    surface.facet();
    return surface;
}

// A lamp of two hoops with bars between them, on six chains; open, so that what is behind it stays in sight.
const float LAMP_DROP = 11.0f;
Surface lamp()
{
    Surface surface("metal");
    const auto ring = [](float angle, float radius, float height) {
        return Vector3f(std::cos(angle) * radius, height, std::sin(angle) * radius);
    };
    const float wide = 2.3f, narrow = 1.4f, low = -LAMP_DROP - 1.1f;
    hoop(surface, ring(0, 0, -LAMP_DROP), Vector3f(wide, 0, 0), Vector3f(0, 0, wide), 28, 5, 0.13f);
    hoop(surface, ring(0, 0, low), Vector3f(narrow, 0, 0), Vector3f(0, 0, narrow), 20, 5, 0.10f);
    const int bars = 12;
    for (int i = 0; i < bars; i++)
    {
        const float angle = 2.0f * PI * float(i) / bars;
        bar(surface, 4, 4, 0.05f,
            [&](float t) { return ring(angle, wide + (narrow - wide) * t * t, -LAMP_DROP + (low + LAMP_DROP) * t); });
        if (i % 2 == 0)
            bar(surface, 1, 3, 0.035f,
                [&](float t) { return ring(angle, wide * (1.0f - t), -LAMP_DROP * (1.0f - t)); });
    }
    surface.smoothNormals();
    return surface;
}

void makeMaterials(Builder& b)
{
    const Vector3f none, dim(0.55f, 0.75f, 1.0f), deep(0.012f, 0.020f, 0.034f);
    b.material("stone", Vector3f(0.82f, 0.88f, 0.95f), dim, Vector3f(0.2f, 0.24f, 0.3f), 40, deep, PictureFiles::STONE);
    b.material("wall", Vector3f(0.66f, 0.74f, 0.84f), dim, none, 10, deep, PictureFiles::STONE);
    b.material("vault", Vector3f(0.50f, 0.60f, 0.74f), dim, none, 10, Vector3f(0.012f, 0.022f, 0.04f),
               PictureFiles::STONE);
    b.material("floor", Vector3f(0.55f, 0.62f, 0.72f), dim, Vector3f(0.5f, 0.55f, 0.6f), 90,
               Vector3f(0.42f, 0.44f, 0.48f), PictureFiles::FLOOR);
    b.material("icicle", Vector3f(0.55f, 0.80f, 0.92f), Vector3f(0.2f, 0.3f, 0.4f), Vector3f(0.95f, 1.0f, 1.0f), 120,
               Vector3f(0.03f, 0.08f, 0.12f), PictureFiles::ICE);
    b.material("metal", Vector3f(0.34f, 0.27f, 0.22f), dim, Vector3f(0.25f, 0.2f, 0.15f), 30, none,
               PictureFiles::STONE);
    b.material("aisle", Vector3f(0.55f, 0.62f, 0.72f), dim, none, 10, Vector3f(0.34f, 0.36f, 0.40f),
               PictureFiles::AISLE);
    b.material("choir", Vector3f(0.6f, 0.66f, 0.74f), dim, none, 10, Vector3f(0.42f, 0.44f, 0.48f),
               PictureFiles::CHOIR);
    b.shadeless("window", Vector3f(0.95f, 1.0f, 1.0f), PictureFiles::WINDOW);
    b.shadeless("rose", Vector3f(1, 1, 1), PictureFiles::ROSE);
    b.shadeless("flame", Vector3f(1, 1, 1), PictureFiles::FLAME);
}

// The left side of the church. The right one is the same, turned by half about the middle of the nave: nothing in this
// scene is mirrored, since the metaballs take over the front face of whatever was drawn last.
void buildSide(Builder& b, y3d::Dummy* side, const std::string& suffix)
{
    for (int i = 0; i <= BAYS; i++)
    {
        const float z = bayStart(i);
        const std::string name = suffix + std::to_string(i);
        y3d::MeshInstance* foot = b.instance("column" + name, "column", side);
        setPosition(foot, Vector3f(-ROW, 0, z));
        if (i == BAYS) continue;
        const auto place = [&](const std::string& mesh, const Vector3f& at) {
            y3d::MeshInstance* node = b.instance(mesh + name, mesh, side);
            setPosition(node, at);
            return node;
        };
        place("arch", Vector3f(-ROW, 0, z));
        place("spandrel", Vector3f(-ROW, 0, z));
        place("aisleWall", Vector3f(-OUTSIDE, 0, z));
        place("aisleRoof", Vector3f(-OUTSIDE, 0, z));
        place("window", Vector3f(-OUTSIDE + 0.12f, 3.2f, z - BAY * 0.5f));
        place("clerestory", Vector3f(-ROW + 0.15f, 19.6f, z - BAY * 0.5f));
    }
}

void buildChoir(Builder& b)
{
    // The end wall, behind the last BAY, with the rose and three lancets.
    const float end = bayStart(BAYS);
    Surface wall("choir");
    wall.grid(24, 20, 1.0f, 1.0f,
              [&](float u, float v) { return Vector3f((u * 2.0f - 1.0f) * OUTSIDE, v * 34.0f, end); });
    wall.smoothNormals();
    const Vector3f middle(0, 22.2f, end + 0.15f);
    const float radius = 5.6f;
    std::vector<Surface> parts = {wall, roseGlass(middle, radius), roseStone(middle, radius)};
    Surface stone("stone");
    for (int i = -1; i <= 1; i++)
    {
        const Lancet lancet = {i ? 3.4f : 4.0f, i ? 9.5f : 11.7f, Vector3f(1, 0, 0)};
        const Vector3f foot(4.9f * float(i), 3.5f, end + 0.15f);
        parts.push_back(lancetGlass(lancet, foot));
        lancetStone(stone, lancet, foot, 0.26f);
    }
    stone.smoothNormals();
    parts.push_back(stone);
    b.mesh("choir", parts);
    b.instance("choir", "choir");

    Surface front("wall");
    front.grid(12, 10, 6.0f, 5.0f,
               [&](float u, float v) { return Vector3f((1.0f - u * 2.0f) * OUTSIDE, v * 34.0f, 7.0f); });
    front.smoothNormals();
    b.mesh("front", {front});
    b.instance("front", "front");
}

void buildPodium(Builder& b, const Follow& follow)
{
    Chance chance(771u);
    b.mesh("podium", {steps()});
    setPosition(b.instance("podium", "podium"), Vector3f(0, 0, PODIUM));

    // Where the metaballs are. One negative scale, since their triangles turn clockwise.
    y3d::Dummy* ball = b.dummy("metaball");
    setScale(ball, Vector3f(-2.6f, 2.6f, 2.6f));
    // The heart of the hall: it grows with each beat.
    const auto grown = [&](float size) {
        return [&follow, size](float time) { return size * (1.0f + 0.13f * follow.beat.at(time)); };
    };
    setLines(ball->mScale.mX, follow.beat.times(), grown(-2.6f));
    setLines(ball->mScale.mY, follow.beat.times(), grown(2.6f));
    setLines(ball->mScale.mZ, follow.beat.times(), grown(2.6f));
    setPosition(ball, Vector3f(0, 5.4f, PODIUM));
    setCurve(ball->mPosition.mY, {{0, 5.2f}, {2, 5.8f}, {4, 5.2f}, {6, 4.9f}, {8, 5.2f}}, true);
    ball->mRotation.mEuler = true;
    ball->mRotation.mW.mBaseValue = 0.0f;
    setCurve(ball->mRotation.mY, {{0, 0}, {16, 2.0f * PI}});
    ball->mRotation.mY.mInterpolation = y3d::TrackBlenderFloat::INTERPOLATION_LINEAR;
    ball->mRotation.mY.mExtrapolation = y3d::TrackBlenderFloat::EXTRAPOLATION_CYCLIC_OFFSET;

    b.mesh("brazier", {brazier("metal")});
    b.mesh("flame", {flame()});
    b.mesh("crystal", {crystal()});
    // At the corners, outside the way around the podium.
    for (int i = 0; i < 4; i++)
    {
        const Vector3f at((i & 1) ? 6.2f : -6.2f, 0.0f, PODIUM + ((i & 2) ? 13.4f : -13.4f));
        const float size = 1.35f;
        y3d::MeshInstance* bowl = b.instance("brazier" + std::to_string(i), "brazier");
        setPosition(bowl, at);
        setScale(bowl, Vector3f(size, size, size));
        // Two tongues that sway against each other, and leap with the beat.
        y3d::Dummy* hearth = b.dummy("hearth" + std::to_string(i));
        setPosition(hearth, at + Vector3f(0, 2.8f * size, 0));
        setScale(hearth, Vector3f(1, 1, 1));
        setLines(hearth->mScale.mY, follow.beat.times(),
                 [&](float time) { return 0.85f + 0.55f * follow.beat.at(time); });
        for (int k = 0; k < 2; k++)
        {
            y3d::MeshInstance* fire = b.instance("flame" + std::to_string(2 * i + k), "flame", hearth);
            setPosition(fire, Vector3f(k ? 0.22f : -0.18f, 0.0f, k ? -0.1f : 0.12f));
            const float shift = 0.31f * float(i) + 0.9f * float(k), high = k ? 1.0f : 1.4f;
            setScale(fire, Vector3f(1.1f, high, 1.1f));
            setCurve(fire->mScale.mY,
                     {{shift, high},
                      {shift + 0.5f, 1.18f * high},
                      {shift + 1.1f, 0.9f * high},
                      {shift + 1.6f, 1.1f * high},
                      {shift + 2.0f, high}},
                     true);
            fire->mRotation.mEuler = true;
            fire->mRotation.mW.mBaseValue = 0.0f;
            setCurve(fire->mRotation.mZ,
                     {{shift, 0.0f}, {shift + 0.6f, 0.12f}, {shift + 1.3f, -0.14f}, {shift + 2.0f, 0.0f}}, true);
            setCurve(fire->mRotation.mX, {{shift, 0.06f}, {shift + 0.8f, -0.1f}, {shift + 2.0f, 0.06f}}, true);
        }
    }
    // Ice has grown around the steps.
    for (int i = 0; i < 22; i++)
    {
        const float angle = 2.0f * PI * float(i) / 22.0f + 0.2f * chance.next();
        y3d::MeshInstance* node = b.instance("growth" + std::to_string(i), "crystal");
        const float out = 7.6f + 1.2f * chance.next();
        setPosition(node, Vector3f(std::cos(angle) * out, -0.1f, PODIUM + std::sin(angle) * out));
        setTurn(node, Vector3f(std::sin(angle), 0, -std::cos(angle)), 25.0f + 25.0f * chance.next());
        const float size = 0.35f + 0.5f * chance.next();
        setScale(node, Vector3f(size, size * 1.2f, size));
    }
}

// The lamp swings a little across the nave, high enough to leave the sight of the rose free, with its own light.
void buildLamp(Builder& b, const Follow& follow)
{
    b.mesh("lamp", {lamp()});
    y3d::Dummy* pivot = b.dummy("pivot");
    setPosition(pivot, Vector3f(0, CROWN - 0.3f, -42.0f));
    pivot->mRotation.mEuler = true;
    pivot->mRotation.mW.mBaseValue = 0.0f;
    setCurve(pivot->mRotation.mZ, {{0, 0}, {2, 0.14f}, {4, 0}, {6, -0.14f}, {8, 0}}, true);
    b.instance("lamp", "lamp", pivot);
    const int candles = 6;
    for (int i = 0; i < candles; i++)
    {
        const float angle = 2.0f * PI * (float(i) + 0.5f) / candles;
        y3d::MeshInstance* fire = b.instance("candle" + std::to_string(i), "flame", pivot);
        setPosition(fire, Vector3f(std::cos(angle) * 2.3f, -LAMP_DROP + 0.1f, std::sin(angle) * 2.3f));
        setScale(fire, Vector3f(0.32f, 0.36f, 0.32f));
        // Each flares with tones of its own.
        const Swell flare = follow.swell(i);
        setLines(fire->mScale.mY, flare.times(), [&](float time) { return 0.34f + 0.4f * flare.at(time); });
    }
    y3d::Light* light = b.light("lampLight", Vector3f(0, -LAMP_DROP + 0.5f, 0), Vector3f(), 7.0f, pivot);
    setColor(light, follow.tune.times(),
             [&](float time) { return (0.7f + 1.2f * follow.tune.at(time)) * Vector3f(0.9f, 0.22f, 0.06f); });
}

void buildLights(Builder& b, const Follow& follow)
{
    // Moonlight through the windows of the left side, in which the snare flashes, and a colder one from the choir.
    y3d::Light* moon = b.light("moon0", Vector3f(-60, 42, -24), Vector3f(), 160.0f);
    setColor(moon, follow.withChords(follow.snare), [&](float time) {
        return (1.15f + 0.6f * follow.snare.at(time)) * mix(Vector3f(0.80f, 1.05f, 1.35f), follow.color(time), 0.85f);
    });
    const auto held = [&](y3d::Light* light, float rest, float swell) {
        setColor(light, follow.withChords(follow.chord),
                 [&, rest, swell](float time) { return (rest + swell * follow.chord.at(time)) * follow.color(time); });
    };
    // The beat is seen in the whole nave.
    y3d::Light* heart = b.light("heart", Vector3f(0, 7, -44), Vector3f(), 40.0f);
    setColor(heart, follow.beat.times(),
             [&](float time) { return (0.1f + 1.7f * follow.beat.at(time)) * Vector3f(1.2f, 0.21f, 0.04f); });
    held(b.light("choirLight", Vector3f(0, 20, bayStart(BAYS) + 7.0f), Vector3f(), 18.0f), 0.95f, 0.9f);
    y3d::Light* vault = b.light("vaultLight", Vector3f(0, 22, -34), Vector3f(), 16.0f);
    setColor(vault, follow.withChords(follow.tune),
             [&](float time) { return (0.75f + 1.5f * follow.tune.at(time)) * follow.color(time); });
    for (int i = 0; i < 2; i++)
    {
        y3d::Light* fire = b.light("fire" + std::to_string(i),
                                   Vector3f(i ? 6.0f : -6.0f, 4.6f, PODIUM + (i ? -5.0f : 5.0f)), Vector3f(), 8.0f);
        setColor(fire, follow.beat.times(),
                 [&](float time) { return (1.0f + 0.9f * follow.beat.at(time)) * Vector3f(1.1f, 0.26f, 0.07f); });
    }
}

// The ways of the camera, each from a cut to the next. Up to 28 the hall is entered; from there on a higher piece of
// music has shots of its own.
std::vector<std::vector<View>> shots()
{
    const Vector3f ball(0, 5.4f, PODIUM), rose(0, 22.2f, bayStart(BAYS));
    const auto around = [&](float from, float to, float start, float turn, float low, float high) {
        std::vector<View> shot;
        const int steps = 6;
        for (int i = 0; i <= steps; i++)
        {
            const float share = float(i) / steps, angle = start + turn * share;
            const Vector3f eye(std::cos(angle) * 7.0f, low + (high - low) * share, PODIUM + std::sin(angle) * 10.5f);
            shot.push_back({from + (to - from) * share, eye, ball, 3.0f * std::sin(share * PI)});
        }
        return shot;
    };
    return {
        // Close over the floor and its pools of light.
        {{0, Vector3f(-5.5f, 0.9f, -8), Vector3f(-2.5f, 3.0f, -40)},
         {4, Vector3f(-4.0f, 1.2f, -20), Vector3f(-1.0f, 5.0f, -60)},
         {8, Vector3f(-1.5f, 2.2f, -32), Vector3f(0, 8.0f, -90)}},
        // Under the rose.
        {{8, Vector3f(2.5f, 5.0f, -72), rose, 4.0f},
         {11, Vector3f(1.0f, 8.0f, -76), rose, 0.0f},
         {14, Vector3f(-1.0f, 12.0f, -82), rose, -4.0f}},
        // To the ball, and about it.
        {{14, Vector3f(-1.2f, 6.5f, -54), Vector3f(0, 9.0f, PODIUM)},
         {18, Vector3f(0.0f, 5.5f, -61), Vector3f(0, 6.5f, PODIUM)},
         {22, Vector3f(3.0f, 4.0f, -67), ball},
         {25, Vector3f(6.0f, 4.5f, -72), ball, 2.0f},
         {28, Vector3f(7.0f, 6.0f, -78), ball, 3.0f}},
        // From the floor up into the vault.
        {{28, Vector3f(0.8f, 1.2f, -36), Vector3f(0, 12.0f, -60)},
         {32, Vector3f(0.4f, 8.0f, -43), Vector3f(0, 25.0f, -66)},
         {36, Vector3f(-0.5f, 22.0f, -56), Vector3f(0, 25.0f, -90)}},
        // Along the vault among the icicles, and down.
        {{36, Vector3f(-3.5f, 25.0f, -12), Vector3f(0, 25.0f, -60), -8.0f},
         {40, Vector3f(-3.6f, 23.5f, -38), Vector3f(1.0f, 22.0f, -80), 0.0f},
         {44, Vector3f(1.5f, 17.0f, -58), Vector3f(0, 9.0f, PODIUM), 5.0f}},
        around(44, 52, PI * 0.35f, -PI * 0.9f, 3.4f, 5.5f),
        // From above.
        {{52, Vector3f(3.0f, 21.0f, -69), ball, 0.0f},
         {56, Vector3f(-1.0f, 19.0f, -71), ball, 14.0f},
         {60, Vector3f(-4.0f, 16.0f, -74), ball, 24.0f}},
        around(60, 68, -PI * 0.4f, PI * 1.1f, 6.5f, 3.4f),
        // Back through the nave.
        {{68, Vector3f(0.0f, 4.5f, -66), ball},
         {72, Vector3f(0.5f, 5.5f, -52), Vector3f(0, 9.0f, PODIUM)},
         {76, Vector3f(0.0f, 8.0f, -30), Vector3f(0, 12.0f, PODIUM)},
         {80, Vector3f(0.0f, 10.0f, -12), Vector3f(0, 13.0f, PODIUM)}},
    };
}

} // namespace

void buildKatedral(Builder& b, const Showing& showing)
{
    const Follow follow(showing);
    makeMaterials(b);
    b.mesh("column", {column(), shaft()});
    b.mesh("arch", {arch(ARCADE, 5.6f, 0.75f)});
    b.mesh("spandrel", {spandrel()});
    b.mesh("aisleWall", {aisleWall()});
    b.mesh("aisleRoof", {aisleRoof()});
    const Lancet aisle = {4.6f, 9.2f, Vector3f(0, 0, -1)}, upper = {3.0f, 6.6f, Vector3f(0, 0, -1)};
    Surface aisleStone("stone"), upperStone("stone");
    lancetStone(aisleStone, aisle, Vector3f(), 0.28f);
    lancetStone(upperStone, upper, Vector3f(), 0.2f);
    aisleStone.smoothNormals();
    upperStone.smoothNormals();
    b.mesh("window", {lancetGlass(aisle, Vector3f()), aisleStone});
    b.mesh("clerestory", {lancetGlass(upper, Vector3f()), upperStone});
    b.mesh("floor", {ground()});
    b.mesh("vault",
           {vault(), rib(-ROW, 0, ROW, -BAY, 0.26f), rib(ROW, 0, -ROW, -BAY, 0.26f), rib(-ROW, 0, ROW, 0, 0.36f)});
    b.mesh("icicle", {icicle()});

    Chance chance(7u);
    y3d::Dummy* left = b.dummy("left");
    buildSide(b, left, "L");
    y3d::Dummy* right = b.dummy("right");
    setTurn(right, Vector3f(0, 1, 0), 180.0f);
    setPosition(right, Vector3f(0, 0, bayStart(0) + bayStart(BAYS)));
    buildSide(b, right, "R");
    for (int i = 0; i < BAYS; i++)
        setPosition(b.instance("vault" + std::to_string(i), "vault"), Vector3f(0, 0, bayStart(i)));
    for (int i = 0; i < 70; i++)
    {
        const float x = (chance.next() * 2.0f - 1.0f), z = chance.next() * BAY * BAYS;
        const float inBay = std::fmod(z, BAY) / BAY * 2.0f - 1.0f;
        const float height = SPRING + (CROWN - SPRING) * std::max(pointed(x), pointed(inBay));
        y3d::MeshInstance* node = b.instance("icicle" + std::to_string(i), "icicle");
        setPosition(node, Vector3f(x * ROW * 0.97f, height + 0.1f, 6.0f - z));
        const float size = 0.5f + chance.next();
        setScale(node, Vector3f(size, size * (0.7f + chance.next()), size));
        // Each has a few tones of the tune that set it swinging.
        node->mRotation.mEuler = true;
        node->mRotation.mW.mBaseValue = 0.0f;
        setSwings(i % 2 ? node->mRotation.mX : node->mRotation.mZ, follow.tones(i), i % 4 < 2 ? 0.16f : -0.16f, 0.55f);
    }
    buildChoir(b);
    buildPodium(b, follow);
    buildLamp(b, follow);
    buildLights(b, follow);
    setShots(b.camera("camera", 58.0f), shots());
    // Loaded last and so drawn last as a rule: the metaballs shine as the floor does.
    b.instance("floor", "floor");
}

} // namespace Scenes
