#include "nvtristrip/NvTriStrip.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace NVIDIA;

namespace
{

typedef std::vector<unsigned> Indices;

struct Group
{
    PrimType type;
    Indices indices;

    bool operator==(const Group& other) const { return type == other.type && indices == other.indices; }
};

struct Settings
{
    bool lists = false;
    bool stitch = true;
    unsigned cacheSize = 16;
    unsigned minSize = 0;
};

std::ostream& operator<<(std::ostream& stream, const Group& group)
{
    stream << (group.type == PT_LIST ? "list" : "strip");
    for (const unsigned index : group.indices) stream << ' ' << index;
    return stream;
}

std::vector<Group> taken(PrimitiveGroup* groups, unsigned number)
{
    std::vector<Group> result;
    for (unsigned i = 0; i < number; ++i)
        result.push_back({groups[i].type, Indices(groups[i].indices, groups[i].indices + groups[i].numIndices)});
    delete[] groups;
    return result;
}

std::vector<Group> generate(const Indices& indices, const Settings& settings, bool* valid = nullptr)
{
    SetListsOnly(settings.lists);
    SetStitchStrips(settings.stitch);
    SetCacheSize(settings.cacheSize);
    SetMinStripSize(settings.minSize);
    PrimitiveGroup* groups = nullptr;
    unsigned number = 0;
    const bool result = GenerateStrips(indices.data(), unsigned(indices.size()), &groups, &number, valid != nullptr);
    if (valid) *valid = result;
    return taken(groups, number);
}

// A band of triangles that one strip runs along.
Indices band(unsigned numFaces)
{
    Indices indices;
    for (unsigned i = 0; i < numFaces; ++i) indices.insert(indices.end(), {i, i + 1 + i % 2, i + 2 - i % 2});
    return indices;
}

Indices grid(unsigned columns, unsigned rows, bool wrap)
{
    Indices indices;
    const unsigned width = wrap ? columns : columns + 1, height = wrap ? rows : rows + 1;
    const auto at = [&](unsigned x, unsigned y) { return y % height * width + x % width; };
    for (unsigned y = 0; y < rows; ++y)
    {
        for (unsigned x = 0; x < columns; ++x)
            indices.insert(indices.end(),
                           {at(x, y), at(x + 1, y), at(x + 1, y + 1), at(x, y), at(x + 1, y + 1), at(x, y + 1)});
    }
    return indices;
}

Indices shuffled(Indices indices, std::mt19937& random)
{
    for (std::size_t i = indices.size() / 3; i > 1; --i)
        std::swap_ranges(&indices[3 * i - 3], &indices[3 * i - 3] + 3, &indices[3 * (random() % i)]);
    return indices;
}

// The triangles of groups without those that are none, each turned so that its lowest vertex comes first, sorted.
std::vector<Indices> trianglesOf(const std::vector<Group>& groups)
{
    std::vector<Indices> triangles;
    for (const Group& group : groups)
    {
        const std::size_t step = group.type == PT_LIST ? 3 : 1;
        for (std::size_t i = 0; i + 2 < group.indices.size(); i += step)
        {
            Indices t(&group.indices[i], &group.indices[i] + 3);
            if (step == 1 && i % 2 != 0) std::swap(t[1], t[2]);
            if (t[0] == t[1] || t[1] == t[2] || t[0] == t[2]) continue;
            std::rotate(t.begin(), std::min_element(t.begin(), t.end()), t.end());
            triangles.push_back(t);
        }
    }
    std::sort(triangles.begin(), triangles.end());
    return triangles;
}

std::vector<std::size_t> stripLengths(const Indices& indices, unsigned cacheSize)
{
    std::vector<std::size_t> lengths;
    for (const Group& group : generate(indices, {false, false, cacheSize, 0}))
        lengths.push_back(trianglesOf({group}).size());
    std::sort(lengths.rbegin(), lengths.rend());
    return lengths;
}

} // namespace

// What the plain stripifier beside the fuzzers gives: sums over all indices of a few meshes, each with its place.
TEST(NvTriStrip, ordersAsEver)
{
    std::mt19937 random(38912);
    const Indices sheet = grid(11, 9, true);
    const Indices mixed = shuffled(grid(9, 8, false), random);
    Indices soup(900);
    for (unsigned& index : soup) index = random() % 90;
    const struct
    {
        const char* name;
        const Indices& indices;
        Settings settings;
        std::uint64_t sum;
    } cases[] = {
        {"torus", sheet, {true, true, 16, 0}, 0x42d9839ae7485760u},
        {"torus, loose", sheet, {true, true, 11, 6}, 0x0a1412410b157820u},
        {"shuffled", mixed, {false, false, 12, 0}, 0x9dabbcf0ac51f419u},
        {"shuffled, loose", mixed, {false, true, 9, 5}, 0xbb31c6ee0195875du},
        {"triangles", soup, {true, true, 16, 0}, 0x5fb57ca7c5d09819u},
        {"triangles, stitched", soup, {false, true, 16, 3}, 0x4e17f7d49652dddcu},
    };
    for (const auto& test : cases)
    {
        testing::internal::CaptureStdout();
        const std::vector<Group> groups = generate(test.indices, test.settings);
        testing::internal::GetCapturedStdout();
        std::uint64_t sum = 0;
        for (const Group& group : groups)
        {
            sum = 31 * sum + group.type;
            for (const unsigned index : group.indices) sum = 31 * sum + index;
        }
        EXPECT_EQ(sum, test.sum) << test.name;
    }
}

TEST(NvTriStrip, keepsTheTrianglesAndTheirWindingInEveryMode)
{
    std::mt19937 random(7);
    for (const Indices& indices : {grid(9, 8, false), grid(10, 6, true), shuffled(grid(11, 7, true), random), band(24),
                                   shuffled(grid(1, 40, false), random)})
    {
        const std::vector<Indices> expected = trianglesOf({{PT_LIST, indices}});
        for (const Settings& settings :
             {Settings{true, true, 16, 0}, Settings{false, true, 16, 0}, Settings{false, false, 16, 0},
              Settings{false, true, 9, 5}, Settings{false, false, 4, 2}, Settings{true, true, 4000000000u, 3}})
        {
            bool valid = false;
            EXPECT_EQ(trianglesOf(generate(indices, settings, &valid)), expected);
            EXPECT_TRUE(valid);
        }
    }
}

TEST(NvTriStrip, cutsStripsToTheCache)
{
    typedef std::vector<std::size_t> Lengths;
    EXPECT_EQ(stripLengths(band(10), 16), (Lengths{10}));
    EXPECT_EQ(stripLengths(band(23), 16), (Lengths{13, 10}));
    EXPECT_EQ(stripLengths(band(24), 16), (Lengths{10, 10, 4}));
    EXPECT_EQ(stripLengths(band(5), 6), (Lengths{1, 1, 1, 1, 1})); // at least one face
    EXPECT_EQ(stripLengths(band(5), 0), (Lengths{1, 1, 1, 1, 1}));
    EXPECT_EQ(stripLengths(band(5), 8), (Lengths{3, 2}));
}

TEST(NvTriStrip, writesStripsOut)
{
    const Indices twoQuads = {0, 1, 2, 0, 2, 3, 4, 5, 6, 4, 6, 7};
    // The vertex that the second face lacks comes first, twice since it turns the winding. Behind the stitches, of odd
    // number so far, the winding is right without.
    EXPECT_EQ(generate(twoQuads, {false, false, 16, 0}),
              (std::vector<Group>{{PT_STRIP, {1, 1, 0, 2, 3}}, {PT_STRIP, {5, 5, 4, 6, 7}}}));
    EXPECT_EQ(generate(twoQuads, {}), (std::vector<Group>{{PT_STRIP, {1, 1, 0, 2, 3, 3, 5, 5, 4, 6, 7}}}));

    EnableRestart(99);
    bool valid = true; // with the restart value, read as a vertex, there are triangles that the input lacks
    EXPECT_EQ(generate(twoQuads, {}, &valid), (std::vector<Group>{{PT_STRIP, {1, 1, 0, 2, 3, 99, 5, 5, 4, 6, 7, 99}}}));
    EXPECT_FALSE(valid);
    const std::vector<Group> kept = {{PT_STRIP, {0, 1, 99}}};
    PrimitiveGroup group;
    group.indices = new unsigned[group.numIndices = 3]{4, 2, 99};
    PrimitiveGroup* remapped = nullptr;
    RemapIndices(&group, 1, 5, &remapped);
    EXPECT_EQ(taken(remapped, 1), kept);
    DisableRestart();
    EXPECT_THROW(RemapIndices(&group, 1, 5, &remapped), Exception);

    EXPECT_EQ(generate(twoQuads, {false, true, 16, 3}),
              (std::vector<Group>{{PT_LIST, twoQuads}})); // every strip is too short
}

TEST(NvTriStrip, dropsWhatIsNoTriangleOrThereAlready)
{
    const Settings lists = {true, true, 16, 0};
    const std::vector<Group> triangle = {{PT_LIST, {0, 1, 2}}}, nothing = {{PT_LIST, {}}};
    EXPECT_EQ(generate({0, 1, 2}, lists), triangle);
    EXPECT_EQ(generate({0, 0, 1, 0, 1, 2, 2, 1, 2}, lists), triangle);
    EXPECT_EQ(generate({0, 1, 2, 0, 1, 2}, lists), triangle);
    EXPECT_EQ(generate({}, lists), nothing);
    EXPECT_EQ(generate({4, 4, 4}, lists), nothing);
    EXPECT_TRUE(generate({4, 4, 4}, {}).empty());

    // The edges are as they were before the repetition: the neighbour that comes later still joins.
    const std::vector<Group> joined = {{PT_STRIP, {0, 1, 2, 3}}};
    EXPECT_EQ(generate({0, 1, 2, 0, 1, 2, 2, 1, 3}, {}), joined);
}

TEST(NvTriStrip, dropsATailThatIsNoTriple)
{
    const std::vector<Group> triangle = {{PT_LIST, {0, 1, 2}}};
    bool valid = false;
    EXPECT_EQ(generate({0, 1, 2, 3}, {true, true, 16, 0}, &valid), triangle);
    EXPECT_TRUE(valid);
    EXPECT_EQ(generate({0, 1, 2, 3, 4294967295u}, {true, true, 16, 0}), triangle);
    EXPECT_TRUE(generate({0, 1}, {}).empty());
}

TEST(NvTriStrip, tellsOfEdgesWithTooManyTriangles)
{
    const std::string line = "BuildStripifyInfo: > 2 triangles on an edge... uncertain consequences\n";
    testing::internal::CaptureStdout();
    const std::vector<Group> groups = generate({0, 1, 2, 1, 0, 3, 0, 1, 4, 0, 1, 4}, {true, true, 16, 0});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), line + line);
    EXPECT_EQ(groups[0].indices.size(), 9u);
}

TEST(NvTriStrip, numbersVerticesByFirstUseAcrossGroups)
{
    PrimitiveGroup groups[2];
    groups[0].type = PT_LIST;
    groups[0].indices = new unsigned[groups[0].numIndices = 4]{5, 2, 5, 7};
    groups[1].indices = new unsigned[groups[1].numIndices = 3]{9, 2, 0};
    PrimitiveGroup* remapped = nullptr;
    RemapIndices(groups, 2, 10, &remapped);
    EXPECT_EQ(taken(remapped, 2), (std::vector<Group>{{PT_LIST, {0, 1, 0, 2}}, {PT_STRIP, {3, 1, 4}}}));
    EXPECT_THROW(RemapIndices(groups, 2, 9, &remapped), Exception);
}

TEST(NvTriStrip, refusesAbsurdInputAndTakesDistantVertices)
{
    EXPECT_THROW(generate({0, 1, 4294967295u}, {}), Exception);
    PrimitiveGroup* groups = nullptr;
    unsigned number = 0;
    EXPECT_THROW(GenerateStrips(nullptr, 4294967295u, &groups, &number), Exception);
    const unsigned far = 2147483647u;
    Indices close = grid(6, 5, false), distant = close;
    for (unsigned& index : distant) index = far - 41 * 50000000u + index * 50000000u;
    std::vector<Group> expected = generate(close, {});
    for (unsigned& index : expected[0].indices) index = far - 41 * 50000000u + index * 50000000u;
    EXPECT_EQ(generate(distant, {}), expected);
}
