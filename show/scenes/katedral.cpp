#include "scenes.h"

#include <cmath>

namespace Scenes
{

namespace
{

// The nave runs towards negative z, from the door at z = 6. Columns stand in two rows, a bay apart; the vault spans the
// nave between them, the aisles lie outside.
const int bays = 9;
const float bay = 12.0f;
const float row = 9.0f;      // of the columns, from the middle
const float outside = 17.0f; // of the aisle walls
const float spring = 19.0f;  // where the vault begins
const float crown = 31.0f;   // where it ends
const float arcade = 11.0f;  // where the arches between the columns begin
const float podium = -78.0f;

float bayStart(int i)
{
    return 6.0f - bay * float(i);
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
    surface.revolve({{0.55f, 11.0f}, {0.55f, spring - 0.8f}, {0.95f, spring}, {0.95f, spring + 0.3f}}, 12, 1.0f, 3.0f);
    surface.smoothNormals();
    return surface;
}

// A moulded arch over one bay, along z from 0 to -bay, its lower edge from `low` up by `rise`. Its section is a
// rounded bar `thick` wide.
Surface arch(float low, float rise, float thick)
{
    Surface surface("stone");
    surface.grid(28, 8, 8.0f, 1.0f, [&](float u, float v) {
        const float along = u * 2.0f - 1.0f;
        const float angle = 2.0f * PI * v;
        const float y = low + rise * pointed(along);
        const float before = pointed(std::max(-1.0f, along - 0.02f)), after = pointed(std::min(1.0f, along + 0.02f));
        const Vector3f way = normalized(Vector3f(0.0f, (after - before) * rise, -0.04f * bay * 0.5f));
        const Vector3f outward = cross(Vector3f(1, 0, 0), way);
        const Vector3f core(0.0f, y, -bay * u);
        return core + std::cos(angle) * thick * Vector3f(1, 0, 0) + (-std::sin(angle) * thick) * outward;
    });
    surface.smoothNormals();
    return surface;
}

// What fills the wall between the arch and the string course above it.
Surface spandrel()
{
    Surface surface("wall");
    // Facing +x, towards the nave on the left side: u runs right, which is towards -z there.
    surface.grid(24, 6, 3.0f, 2.0f, [&](float u, float v) {
        const float low = arcade + 5.6f * pointed(u * 2.0f - 1.0f);
        return Vector3f(0.0f, low + (spring + 4.0f - low) * v, -bay * u);
    });
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
        return Vector3f(x * row, spring + (crown - spring) * height, -bay * 0.5f - z * bay * 0.5f);
    });
    // Seen from inside, the faces look down.
    for (std::size_t i = 0; i < surface.mIndices.size(); i += 3)
        std::swap(surface.mIndices[i + 1], surface.mIndices[i + 2]);
    surface.smoothNormals();
    return surface;
}

// A rib from (x0, z0) to (x1, z1) in one bay, along the vault: `share(t)` is the height of the vault on the way.
Surface rib(float x0, float z0, float x1, float z1, float thick)
{
    Surface surface("stone");
    surface.grid(26, 6, 10.0f, 1.0f, [&](float u, float v) {
        const float angle = 2.0f * PI * v;
        const auto core = [&](float t) {
            const float x = x0 + (x1 - x0) * t, z = z0 + (z1 - z0) * t;
            return Vector3f(x, spring + (crown - spring) * pointed(t * 2.0f - 1.0f) - 0.1f, z);
        };
        const Vector3f way = normalized(core(std::min(1.0f, u + 0.01f)) - core(std::max(0.0f, u - 0.01f)));
        const Vector3f sideways = normalized(cross(way, Vector3f(0, 1, 0)));
        const Vector3f upward = cross(sideways, way);
        return core(u) + std::cos(angle) * thick * sideways + std::sin(angle) * thick * upward;
    });
    surface.smoothNormals();
    return surface;
}

// The aisle wall of one bay, on the left, with a niche for the window; facing the nave.
Surface aisleWall()
{
    Surface surface("wall");
    surface.grid(6, 8, 2.0f, 3.0f, [&](float u, float v) { return Vector3f(0.0f, 17.0f * v, -bay * u); });
    surface.smoothNormals();
    return surface;
}

Surface aisleRoof()
{
    Surface surface("vault");
    surface.grid(10, 10, 2.0f, 2.0f, [&](float u, float v) {
        // From the wall at x = 0 to the columns; seen from below.
        const float rise = std::sin(u * PI) * 2.6f;
        return Vector3f(u * (outside - row), 12.6f + rise, -bay + bay * v - 0.0f);
    });
    for (std::size_t i = 0; i < surface.mIndices.size(); i += 3)
    {
        const Vector3f normal =
            cross(surface.mPositions[surface.mIndices[i + 1]] - surface.mPositions[surface.mIndices[i]],
                  surface.mPositions[surface.mIndices[i + 2]] - surface.mPositions[surface.mIndices[i]]);
        if (normal.y > 0.0f) std::swap(surface.mIndices[i + 1], surface.mIndices[i + 2]);
    }
    surface.smoothNormals();
    return surface;
}

Surface window(const std::string& material, float width, float height)
{
    Surface surface(material);
    surface.quad(Vector3f(0, 0, width / 2), Vector3f(0, 0, -width / 2), Vector3f(0, height, -width / 2),
                 Vector3f(0, height, width / 2));
    return surface;
}

// A frame that stands out around a window.
Surface windowFrame(float width, float height)
{
    Surface surface("stone");
    surface.grid(36, 6, 8.0f, 1.0f, [&](float u, float v) {
        // Up one side, over the point, down the other.
        const float angle = 2.0f * PI * v, thick = 0.28f;
        Vector3f core, outward;
        const float straight = height * 0.6f;
        if (u < 0.3f || u > 0.7f)
        {
            const float side = u < 0.3f ? 1.0f : -1.0f;
            const float up = u < 0.3f ? u / 0.3f : (1.0f - u) / 0.3f;
            core = Vector3f(0, straight * up, side * width * 0.47f);
            outward = Vector3f(0, 0, side);
        }
        else
        {
            const float along = 1.0f - (u - 0.3f) / 0.2f;
            core = Vector3f(0, straight + (height * 0.385f) * pointed(along), along * width * 0.47f);
            outward = normalized(Vector3f(0, 0.6f, along));
        }
        return core + std::cos(angle) * thick * Vector3f(1, 0, 0) + std::sin(angle) * thick * outward;
    });
    surface.smoothNormals();
    return surface;
}

Surface ground()
{
    Surface surface("floor");
    surface.grid(18, 64, 4.5f, 16.0f, [&](float u, float v) {
        return Vector3f((u * 2.0f - 1.0f) * outside, 0.0f, 8.0f - v * (bay * bays + 18.0f));
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
                    48, 16.0f, 6.0f);
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

Surface flame()
{
    Surface surface("flame");
    surface.revolve({{0.0f, 2.7f}, {0.38f, 2.85f}, {0.46f, 3.1f}, {0.30f, 3.6f}, {0.12f, 4.1f}, {0.0f, 4.5f}}, 10, 2.0f,
                    1.0f);
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

// The bowl of the censer and its chains, hung at the origin.
Surface censer()
{
    Surface surface("metal");
    surface.revolve({{0.0f, -12.2f},
                     {0.5f, -12.0f},
                     {0.95f, -11.5f},
                     {1.0f, -11.1f},
                     {0.8f, -10.7f},
                     {0.5f, -10.4f},
                     {0.2f, -10.0f},
                     {0.05f, -9.9f},
                     {0.05f, 0.0f}},
                    12, 2.0f, 6.0f);
    surface.smoothNormals();
    return surface;
}

Chance chance(771u);

float unit()
{
    return chance.next();
}

void makeMaterials(Builder& b)
{
    const Vector3f none, dim(0.55f, 0.75f, 1.0f), deep(0.012f, 0.020f, 0.034f);
    b.material("stone", Vector3f(0.82f, 0.88f, 0.95f), dim, Vector3f(0.2f, 0.24f, 0.3f), 40, deep, "stone.png");
    b.material("wall", Vector3f(0.66f, 0.74f, 0.84f), dim, none, 10, deep, "stone.png");
    b.material("vault", Vector3f(0.50f, 0.60f, 0.74f), dim, none, 10, Vector3f(0.012f, 0.022f, 0.04f), "stone.png");
    b.material("floor", Vector3f(0.85f, 0.92f, 1.0f), dim, Vector3f(0.8f, 0.85f, 0.9f), 90, deep, "floor.png");
    b.material("icicle", Vector3f(0.55f, 0.80f, 0.92f), Vector3f(0.2f, 0.3f, 0.4f), Vector3f(0.95f, 1.0f, 1.0f), 120,
               Vector3f(0.03f, 0.08f, 0.12f), "ice.png");
    b.material("metal", Vector3f(0.30f, 0.24f, 0.20f), dim, Vector3f(0.9f, 0.7f, 0.5f), 100, none, "");
    b.shadeless("window", Vector3f(0.95f, 1.0f, 1.0f), "window.png");
    b.shadeless("rose", Vector3f(1, 1, 1), "rose.png");
    b.shadeless("flame", Vector3f(1, 1, 1), "flame.png");
}

// The left side of the church. The right one is the same, turned by half about the middle of the nave: nothing in this
// scene is mirrored, since the metaballs take over the front face of whatever was drawn last.
void buildSide(Builder& b, y3d::Dummy* side, const std::string& suffix)
{
    for (int i = 0; i <= bays; i++)
    {
        const float z = bayStart(i);
        const std::string name = suffix + std::to_string(i);
        y3d::MeshInstance* foot = b.instance("column" + name, "column", side);
        setPosition(foot, Vector3f(-row, 0, z));
        if (i == bays) continue;
        const auto place = [&](const std::string& mesh, const Vector3f& at) {
            y3d::MeshInstance* node = b.instance(mesh + name, mesh, side);
            setPosition(node, at);
            return node;
        };
        place("arch", Vector3f(-row, 0, z));
        place("spandrel", Vector3f(-row, 0, z));
        place("aisleWall", Vector3f(-outside, 0, z));
        place("aisleRoof", Vector3f(-outside, 0, z));
        place("window", Vector3f(-outside + 0.12f, 3.2f, z - bay * 0.5f));
        place("windowFrame", Vector3f(-outside + 0.1f, 3.2f, z - bay * 0.5f));
        place("clerestory", Vector3f(-row + 0.12f, spring + 0.4f - 1.4f, z - bay * 0.5f));
    }
}

void buildChoir(Builder& b)
{
    // The end wall, behind the last bay, with the rose and three lancets.
    const float end = bayStart(bays) - 0.5f;
    Surface wall("wall");
    wall.grid(24, 20, 6.0f, 5.0f,
              [&](float u, float v) { return Vector3f((u * 2.0f - 1.0f) * outside, v * 34.0f, end); });
    wall.smoothNormals();
    Surface rose("rose");
    rose.quad(Vector3f(-5.2f, 17.0f, end + 0.15f), Vector3f(5.2f, 17.0f, end + 0.15f),
              Vector3f(5.2f, 27.4f, end + 0.15f), Vector3f(-5.2f, 27.4f, end + 0.15f));
    Surface lancets("window");
    for (int i = -1; i <= 1; i++)
    {
        const float x = 4.6f * float(i), low = 3.5f, high = i ? 13.0f : 15.2f, half = i ? 1.7f : 2.0f;
        lancets.quad(Vector3f(x - half, low, end + 0.15f), Vector3f(x + half, low, end + 0.15f),
                     Vector3f(x + half, high, end + 0.15f), Vector3f(x - half, high, end + 0.15f));
    }
    b.mesh("choir", {wall, rose, lancets});
    b.instance("choir", "choir");

    Surface front("wall");
    front.grid(12, 10, 6.0f, 5.0f,
               [&](float u, float v) { return Vector3f((1.0f - u * 2.0f) * outside, v * 34.0f, 7.0f); });
    front.smoothNormals();
    b.mesh("front", {front});
    b.instance("front", "front");
}

void buildPodium(Builder& b)
{
    b.mesh("podium", {steps()});
    setPosition(b.instance("podium", "podium"), Vector3f(0, 0, podium));

    // Where the metaballs are. One negative scale, since their triangles turn clockwise.
    y3d::Dummy* ball = b.dummy("metaball");
    setScale(ball, Vector3f(-2.6f, 2.6f, 2.6f));
    setPosition(ball, Vector3f(0, 5.4f, podium));
    setCurve(ball->mPosition.mY, {{0, 5.2f}, {2, 5.8f}, {4, 5.2f}, {6, 4.9f}, {8, 5.2f}}, true);
    ball->mRotation.mEuler = true;
    ball->mRotation.mW.mBaseValue = 0.0f;
    setCurve(ball->mRotation.mY, {{0, 0}, {16, 2.0f * PI}});
    ball->mRotation.mY.mInterpolation = y3d::TrackBlenderFloat::INTERPOLATION_LINEAR;
    ball->mRotation.mY.mExtrapolation = y3d::TrackBlenderFloat::EXTRAPOLATION_CYCLIC_OFFSET;

    b.mesh("brazier", {brazier("metal")});
    b.mesh("flame", {flame()});
    b.mesh("crystal", {crystal()});
    for (int i = 0; i < 4; i++)
    {
        const float angle = PI / 4.0f + PI / 2.0f * float(i);
        const Vector3f at(std::cos(angle) * 5.6f, 1.0f, podium + std::sin(angle) * 5.6f);
        setPosition(b.instance("brazier" + std::to_string(i), "brazier"), at);
        y3d::MeshInstance* fire = b.instance("flame" + std::to_string(i), "flame");
        setPosition(fire, at);
        setScale(fire, Vector3f(1, 1, 1));
        const float shift = 0.13f * float(i);
        setCurve(
            fire->mScale.mX,
            {{shift, 1.0f}, {shift + 0.25f, 0.85f}, {shift + 0.5f, 1.1f}, {shift + 0.8f, 0.9f}, {shift + 1.0f, 1.0f}},
            true);
        setCurve(fire->mScale.mZ, {{shift, 1.0f}, {shift + 0.3f, 1.1f}, {shift + 0.55f, 0.85f}, {shift + 1.0f, 1.0f}},
                 true);
    }
    // Ice has grown around the steps.
    for (int i = 0; i < 22; i++)
    {
        const float angle = 2.0f * PI * float(i) / 22.0f + 0.2f * unit();
        y3d::MeshInstance* node = b.instance("growth" + std::to_string(i), "crystal");
        const float out = 7.6f + 1.2f * unit();
        setPosition(node, Vector3f(std::cos(angle) * out, -0.1f, podium + std::sin(angle) * out));
        setTurn(node, Vector3f(std::sin(angle), 0, -std::cos(angle)), 25.0f + 25.0f * unit());
        const float size = 0.35f + 0.5f * unit();
        setScale(node, Vector3f(size, size * 1.2f, size));
    }
}

// A censer that swings across the nave, with its own light.
void buildCenser(Builder& b)
{
    b.mesh("censer", {censer()});
    y3d::Dummy* pivot = b.dummy("pivot");
    setPosition(pivot, Vector3f(0, crown - 1.0f, -42.0f));
    pivot->mRotation.mEuler = true;
    pivot->mRotation.mW.mBaseValue = 0.0f;
    setCurve(pivot->mRotation.mZ, {{0, 0}, {1, 0.5f}, {2, 0}, {3, -0.5f}, {4, 0}}, true);
    y3d::MeshInstance* bowl = b.instance("censer", "censer", pivot);
    setScale(bowl, Vector3f(1, 1.75f, 1));
    b.light("censerLight", Vector3f(0, -20.0f, 0), Vector3f(0.9f, 0.4f, 0.14f), 6.0f, pivot);
}

void buildLights(Builder& b)
{
    // Moonlight through the windows of the left side, and a colder one from the choir.
    b.light("moon0", Vector3f(-60, 42, -24), Vector3f(0.80f, 1.05f, 1.35f), 160.0f);
    b.light("moon1", Vector3f(20, 22, -66), Vector3f(0.30f, 0.48f, 0.75f), 40.0f);
    b.light("choirLight", Vector3f(0, 20, bayStart(bays) + 7.0f), Vector3f(0.85f, 1.0f, 1.4f), 18.0f);
    b.light("vaultLight", Vector3f(0, 22, -34), Vector3f(0.42f, 0.60f, 0.80f), 16.0f);
    for (int i = 0; i < 2; i++)
    {
        y3d::Light* fire = b.light("fire" + std::to_string(i),
                                   Vector3f(i ? 6.0f : -6.0f, 4.6f, podium + (i ? -5.0f : 5.0f)), Vector3f(), 8.0f);
        const float s = 0.21f * float(i);
        const auto flicker = [&](float full) {
            return std::vector<Stop>{{s, full},
                                     {s + 0.2f, 0.8f * full},
                                     {s + 0.45f, 1.05f * full},
                                     {s + 0.7f, 0.75f * full},
                                     {s + 1.0f, full}};
        };
        setCurve(fire->mLightColor.mR, flicker(1.9f), true);
        setCurve(fire->mLightColor.mG, flicker(0.85f), true);
        setCurve(fire->mLightColor.mB, flicker(0.30f), true);
    }
}

std::vector<View> flight()
{
    const Vector3f heart(0, 5.4f, podium);
    std::vector<View> views = {
        {0.0f, Vector3f(0, 2.6f, 3.5f), Vector3f(0, 9.0f, -40)},
        {4.0f, Vector3f(0, 3.2f, -6), Vector3f(0, 9.5f, -60)},
        {8.0f, Vector3f(1.5f, 4.5f, -19), Vector3f(-1, 9.0f, -70)},
        {12.0f, Vector3f(3.0f, 6.0f, -33), Vector3f(0, 12.0f, podium)},
        {16.0f, Vector3f(2.0f, 8.0f, -47), Vector3f(0, 14.0f, podium)},
        {20.0f, Vector3f(-1.5f, 7.0f, -59), heart},
    };
    // Around the podium, one and a half times, closer and then up.
    for (float time = 24.0f; time <= 72.5f; time += 2.0f)
    {
        const float share = (time - 24.0f) / 48.0f;
        const float angle = PI * 0.5f + 0.25f + share * 3.0f * PI;
        const float radius = 14.0f - 4.0f * std::sin(share * PI);
        const float height = 6.0f + 4.5f * std::sin(share * 2.0f * PI - 0.6f);
        views.push_back({time,
                         Vector3f(std::cos(angle) * std::min(radius, 7.6f), std::max(3.4f, height),
                                  podium + std::sin(angle) * radius),
                         heart, 3.0f * std::sin(share * 9.0f)});
    }
    return views;
}

} // namespace

void buildKatedral(Builder& b, const std::string&)
{
    makeMaterials(b);
    b.mesh("column", {column(), shaft()});
    b.mesh("arch", {arch(arcade, 5.6f, 0.75f)});
    b.mesh("spandrel", {spandrel()});
    b.mesh("aisleWall", {aisleWall()});
    b.mesh("aisleRoof", {aisleRoof()});
    b.mesh("window", {window("window", 4.6f, 9.2f)});
    b.mesh("windowFrame", {windowFrame(4.6f, 9.2f)});
    b.mesh("clerestory", {window("window", 2.4f, 4.6f)});
    b.mesh("floor", {ground()});
    b.mesh("vault",
           {vault(), rib(-row, 0, row, -bay, 0.26f), rib(row, 0, -row, -bay, 0.26f), rib(-row, 0, row, 0, 0.36f)});
    b.mesh("icicle", {icicle()});

    y3d::Dummy* left = b.dummy("left");
    buildSide(b, left, "L");
    y3d::Dummy* right = b.dummy("right");
    setTurn(right, Vector3f(0, 1, 0), 180.0f);
    setPosition(right, Vector3f(0, 0, bayStart(0) + bayStart(bays)));
    buildSide(b, right, "R");
    for (int i = 0; i < bays; i++)
        setPosition(b.instance("vault" + std::to_string(i), "vault"), Vector3f(0, 0, bayStart(i)));
    for (int i = 0; i < 70; i++)
    {
        const float x = (unit() * 2.0f - 1.0f), z = unit() * bay * bays;
        const float inBay = std::fmod(z, bay) / bay * 2.0f - 1.0f;
        const float height = spring + (crown - spring) * std::max(pointed(x), pointed(inBay));
        y3d::MeshInstance* node = b.instance("icicle" + std::to_string(i), "icicle");
        setPosition(node, Vector3f(x * row * 0.97f, height + 0.1f, 6.0f - z));
        const float size = 0.5f + unit();
        setScale(node, Vector3f(size, size * (0.7f + unit()), size));
    }
    buildChoir(b);
    buildPodium(b);
    buildCenser(b);
    buildLights(b);
    setFlight(b.camera("camera", 58.0f), flight());
    // Loaded last and so drawn last as a rule: the metaballs shine as the floor does.
    b.instance("floor", "floor");
}

} // namespace Scenes
