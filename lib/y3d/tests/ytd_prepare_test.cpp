#include "ytd_utils.h"

#include "y3d_exception.h"
#include "y3d_mesh.h"
#include "y3d_submesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <set>

using MathBase::Vector3f;
using ytd::Utils;
using namespace y3d;

namespace
{

typedef StructList<Vector3f> Vectors;
typedef StructList<Index> Indices;

std::unique_ptr<Submesh> makeSubmesh(const Vectors& positions, const Indices& indices)
{
    std::unique_ptr<Submesh> submesh(new Submesh);
    submesh->setPositions(new Vectors(positions));
    submesh->mIndices = new Indices(indices);
    return submesh;
}

std::vector<std::vector<float>> numbersOf(const Vectors& list)
{
    std::vector<std::vector<float>> numbers;
    for (const Vector3f& v : list) numbers.push_back({v.x, v.y, v.z});
    return numbers;
}

void expectBox(const MathBase::AABBpointsf& box, const Vector3f& low, const Vector3f& high)
{
    EXPECT_EQ(numbersOf({box.mMin, box.mMax}), numbersOf({low, high}));
}

// Every corner of every triangle with all its numbers; triangles turned and sorted.
std::multiset<std::vector<float>> trianglesOf(const Submesh& submesh)
{
    std::multiset<std::vector<float>> triangles;
    for (std::size_t i = 0; i < submesh.mIndices->size(); i += 3)
    {
        std::vector<std::vector<float>> corners;
        for (std::size_t corner = i; corner < i + 3; ++corner)
        {
            const Index index = (*submesh.mIndices)[corner];
            corners.emplace_back();
            for (const Vectors* list : {submesh.mPositions, submesh.mNormals, submesh.mUVWs[0], submesh.mUVWs[1]})
            {
                const Vector3f& v = (*list)[index];
                corners.back().insert(corners.back().end(), {v.x, v.y, v.z});
            }
        }
        std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()), corners.end());
        std::vector<float> all;
        for (const auto& corner : corners) all.insert(all.end(), corner.begin(), corner.end());
        triangles.insert(all);
    }
    return triangles;
}

} // namespace

TEST(Prepare, putsBoxesAroundWhatIsIndexed)
{
    Mesh mesh;
    EXPECT_THROW(Utils::updateBoundingBoxes(&mesh, true), Exception);
    mesh.mSubmeshes.push_back(makeSubmesh({{9, 9, 9}, {1, 2, 3}, {-1, 5, 0}, {0, 0, 1}}, {1, 2, 3}).release());
    mesh.mSubmeshes.push_back(makeSubmesh({{4, 2, 2}, {3, 3, 3}, {2, -4, 4}}, {0, 1, 2}).release());
    Utils::updateBoundingBoxes(&mesh, false);
    EXPECT_TRUE(mesh.hasBoundingBox() && mesh.mSubmeshes[1]->hasBoundingBox());
    expectBox(mesh.mSubmeshes[0]->mBoundingBox, {-1, 0, 0}, {1, 5, 3});
    expectBox(mesh.mBoundingBox, {-1, -4, 0}, {4, 5, 4});

    (*mesh.mSubmeshes[0]->mPositions)[1].x = 50;
    Utils::updateBoundingBox(mesh.mSubmeshes[0], false);
    Utils::updateBoundingBoxes(&mesh, false);
    EXPECT_EQ(mesh.mSubmeshes[0]->mBoundingBox.mMax.x, 1);
    Utils::updateBoundingBoxes(&mesh, true);
    EXPECT_EQ(mesh.mBoundingBox.mMax.x, 50);

    mesh.mSubmeshes[0]->mIndices->clear();
    EXPECT_THROW(Utils::updateBoundingBox(mesh.mSubmeshes[0], false), Exception);
}

TEST(Prepare, mergesCornersAndDropsWhatIsNotUsed)
{
    const auto quad = makeSubmesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 0, 0}, {7, 7, 7}}, {3, 1, 2, 0});
    Utils::mergeVertices(quad.get());
    EXPECT_EQ(*quad->mIndices, (Indices{0, 1, 2, 0}));
    EXPECT_EQ(numbersOf(*quad->mPositions), numbersOf({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}));
}

TEST(Prepare, mergesWithinATolerance)
{
    const float e = 1e-6f, nan = std::numeric_limits<float>::quiet_NaN();
    const struct
    {
        const char* name;
        Vector3f position, normal, uvw0, uvw1; // of the second vertex; the first one has zeroes
        bool merged;
    } cases[] = {
        {"equal", {0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}, true},
        {"position by the tolerance", {0, e, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}, false},
        {"position by a little less", {std::nextafter(e, 0.0f), 0, -0.9f * e}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}, true},
        {"normal by the tolerance", {0, 0, 0}, {0, 0, e}, {0, 0, 0}, {0, 0, 0}, true},
        {"normal by more", {0, 0, 0}, {std::nextafter(e, 1.0f), 0, 0}, {0, 0, 0}, {0, 0, 0}, false},
        {"third coordinate", {0, 0, 0}, {0, 0, 0}, {0, 0, 1}, {0, 0, 0}, false},
        {"second channel", {0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {2 * e, 0, 0}, false},
        {"no number", {nan, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}, false},
    };
    for (const auto& test : cases)
    {
        const auto submesh = makeSubmesh({{0, 0, 0}, test.position}, {0, 1, 0});
        submesh->setNormals(new Vectors{{0, 0, 0}, test.normal});
        submesh->mUVWs = {new UVWList{{0, 0, 0}, test.uvw0}, new UVWList{{0, 0, 0}, test.uvw1}};
        Utils::mergeVertices(submesh.get());
        EXPECT_EQ(submesh->mIndices->at(1), test.merged ? 0u : 1u) << test.name;
        EXPECT_EQ(submesh->mUVWs[1]->size(), test.merged ? 1u : 2u) << test.name;
    }
}

// Vertices a fraction of the tolerance apart, over the borders of cells and far out: the first kept one that is near
// enough wins.
TEST(Prepare, mergesAsIfAllKeptVerticesWereCompared)
{
    std::mt19937 random(3);
    for (const float scale : {0.0f, 1e-5f, -3e-5f, 20.0f, -1e30f})
    {
        Vectors positions;
        Indices indices;
        for (Index i = 0; i < 300; ++i)
        {
            const auto wobble = [&] { return static_cast<float>(random() % 40) * 0.3e-6f + scale; };
            positions.push_back({wobble(), static_cast<float>(random() % 2), wobble()});
            indices.push_back(i);
        }
        std::vector<Index> kept;
        Indices expected;
        for (const Vector3f& p : positions)
        {
            std::size_t place = 0;
            const auto differs = [](float a, float b) { return !(std::fabs(a - b) < 1e-6f); };
            for (; place < kept.size(); ++place)
            {
                const Vector3f& q = positions[kept[place]];
                if (!differs(p.x, q.x) && !differs(p.y, q.y) && !differs(p.z, q.z)) break;
            }
            if (place == kept.size()) kept.push_back(static_cast<Index>(&p - positions.data()));
            expected.push_back(static_cast<Index>(place));
        }
        const auto submesh = makeSubmesh(positions, indices);
        Utils::mergeVertices(submesh.get());
        EXPECT_EQ(*submesh->mIndices, expected) << scale;
        EXPECT_EQ(submesh->mPositions->size(), kept.size()) << scale;
    }
}

TEST(Prepare, ordersForTheCacheAndKeepsEveryCorner)
{
    const auto submesh = makeSubmesh({}, {});
    submesh->setNormals(new Vectors);
    submesh->mUVWs = {new UVWList, new UVWList};
    for (Index i = 0; i < 21 * 21; ++i)
    {
        const float x = static_cast<float>(i % 21), y = static_cast<float>(i / 21);
        submesh->mPositions->push_back({x, y, x * y});
        submesh->mNormals->push_back({y, x, 1});
        submesh->mUVWs[0]->push_back({x, 2, y});
        submesh->mUVWs[1]->push_back({3, x, y});
        if (i % 21 == 20 || i / 21 == 20) continue;
        submesh->mIndices->insert(submesh->mIndices->end(), {i, i + 1, i + 22, i, i + 22, i + 21});
    }
    const auto before = trianglesOf(*submesh);
    const std::size_t numVertices = submesh->mPositions->size();
    Mesh mesh;
    mesh.mSubmeshes.push_back(submesh.get());
    Utils::optimizeMesh(&mesh, 16);
    mesh.mSubmeshes.clear();
    EXPECT_EQ(trianglesOf(*submesh), before);
    EXPECT_EQ(submesh->mPositions->size(), numVertices);
    Index next = 0; // numbered by first use
    for (const Index index : *submesh->mIndices)
    {
        ASSERT_LE(index, next);
        next = std::max(next, index + 1);
    }
    EXPECT_EQ(next, numVertices);

    // A vertex without a triangle is zero, and lies behind the others.
    const auto loose = makeSubmesh({{9, 9, 9}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}}, {3, 1, 2});
    Utils::cacheOptimize(loose.get(), 10);
    EXPECT_EQ(*loose->mIndices, (Indices{0, 1, 2}));
    EXPECT_EQ(numbersOf(*loose->mPositions), numbersOf({{3, 0, 0}, {1, 0, 0}, {2, 0, 0}, {0, 0, 0}}));
}

TEST(Prepare, refusesIndicesThatAreNone)
{
    const auto wild = makeSubmesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 3});
    EXPECT_THROW(Utils::mergeVertices(wild.get()), Exception);
    EXPECT_THROW(Utils::cacheOptimize(wild.get(), 16), Exception);
    *wild->mIndices = {0, 1, 2, 0}; // what is no triangle goes
    Utils::cacheOptimize(wild.get(), 16);
    EXPECT_EQ(*wild->mIndices, (Indices{0, 1, 2}));
    EXPECT_DEATH(Utils::cacheOptimize(wild.get(), 0), "cacheSize>0");
    wild->setNormals(new Vectors(2));
    EXPECT_DEATH(Utils::mergeVertices(wild.get()), "norList==0 \\|\\| norList->size\\(\\)==posList->size\\(\\)");
}
