#include "ytd_utils.h"

#include <cstring>

#include <gtest/gtest.h>

#include "y3d_exception.h"
#include "y3d_submesh.h"

using MathBase::Vector3f;
using ytd::Utils;
using namespace y3d;

namespace
{

// Three vertices whose every number is another one.
void fill(Submesh* submesh, unsigned int format)
{
    if (format & 1) submesh->setPositions(new StructList<Vector3f>{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
    if (format & 2) submesh->setNormals(new StructList<Vector3f>{{11, 12, 13}, {14, 15, 16}, {17, 18, 19}});
    if (format & 4) submesh->mUVWs.push_back(new UVWList{{21, 22, 23}, {24, 25, 26}, {27, 28, 29}});
}

std::vector<float> compile(Submesh* submesh, unsigned int format, const StructList<Index>* indices)
{
    std::vector<float> block(Utils::getVertexBufferSize(submesh, format, indices) / 4);
    Utils::compileVertexBuffer(reinterpret_cast<unsigned char*>(block.data()), submesh, format, indices, 0);
    return block;
}

} // namespace

TEST(Utils, namesAFormatByTheListsThatHaveEntries)
{
    Submesh submesh;
    EXPECT_EQ(Utils::getFormat(&submesh), 0u);
    fill(&submesh, 7);
    EXPECT_EQ(Utils::getFormat(&submesh), 7u);
    submesh.mUVWs.push_back(new UVWList);
    submesh.setNormals(new StructList<Vector3f>);
    EXPECT_EQ(Utils::getFormat(&submesh), 5u);
    submesh.mUVWs[1]->resize(1);
    for (int channel = 0; channel < 2; ++channel) submesh.mColors.push_back(new StructList<Color4f>(1));
    EXPECT_EQ(Utils::getFormat(&submesh), 1u + 4 + 8 + 16 + 32);

    EXPECT_EQ(Utils::getFormatSize(7), 32u);
    EXPECT_EQ(Utils::getFormatSize(8 + 16), 24u);
    EXPECT_EQ(Utils::getFormatSize(255), 96u);
    for (unsigned int format = 0; format < 256; ++format)
        EXPECT_EQ(ytd::canBeDrawn(format), format % 2 == 1 && format < 8) << format;
}

TEST(Utils, interleavesTheFourFormats)
{
    const StructList<Index> expansion = {2, 0, 0, 1, 2, 1};
    const struct
    {
        unsigned int format;
        std::vector<float> second; // vertex 1 of the block
    } cases[] = {
        {1, {4, 5, 6}}, {3, {14, 15, 16, 4, 5, 6}}, {5, {24, 25, 4, 5, 6}}, {7, {24, 25, 14, 15, 16, 4, 5, 6}}};
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.format);
        Submesh submesh;
        fill(&submesh, test.format);
        const std::size_t stride = test.second.size();
        const std::vector<float> block = compile(&submesh, test.format, nullptr);
        ASSERT_EQ(block.size(), 3 * stride);
        EXPECT_EQ(std::vector<float>(block.begin() + stride, block.begin() + 2 * stride), test.second);

        const std::vector<float> expanded = compile(&submesh, test.format, &expansion);
        ASSERT_EQ(expanded.size(), 6 * stride);
        for (std::size_t i = 0; i < expanded.size(); ++i)
        {
            EXPECT_EQ(expanded[i], block[expansion[i / stride] * stride + i % stride]) << i;
        }
    }
}

TEST(Utils, refusesVerticesThatAreNotThere)
{
    Submesh submesh;
    fill(&submesh, 7);
    const StructList<Index> wild = {0, 1, 3};
    EXPECT_THROW(compile(&submesh, 7, &wild), Exception);
    submesh.getNormals()->pop_back();
    EXPECT_THROW(compile(&submesh, 7, nullptr), Exception);
    EXPECT_NO_THROW(compile(&submesh, 5, nullptr));
    submesh.setNormals(nullptr);
    EXPECT_THROW(compile(&submesh, 3, nullptr), Exception);
}

TEST(Utils, writesIndicesOfThreeWidths)
{
    Submesh submesh;
    submesh.mIndices = new StructList<Index>{0, 1, 300, 65538, 4, 5};
    const struct
    {
        int bits;
        std::vector<unsigned char> third; // 300 + 2, and the first byte of the next
    } cases[] = {{8, {46, 4}}, {16, {46, 1, 4}}, {32, {46, 1, 0, 0, 4}}};
    for (const auto& test : cases)
    {
        ASSERT_EQ(Utils::getIndexBufferSize(&submesh, test.bits), 6u * test.bits / 8);
        std::vector<unsigned char> block(6 * test.bits / 8 + 1, 99);
        Utils::compileIndexBuffer(block.data(), &submesh, test.bits, 2, 1);
        EXPECT_EQ(block[0], 99);
        EXPECT_EQ(block[1], 2);
        EXPECT_EQ(std::memcmp(&block[1 + 2 * test.bits / 8], test.third.data(), test.third.size()), 0) << test.bits;
    }
}
