#include "nvtristrip/NvTriStrip.h"

#include "nvtristrip/NvTriStripObjects.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <memory>
#include <set>
#include <unordered_map>

namespace NVIDIA
{

namespace
{

const unsigned int MAX_TRIANGLES = 1u << 27; // places, up to nine for each, are integers

unsigned int cacheSize = 16;
unsigned int minStripSize = 0;
unsigned int restartVal = 0;
bool bStitchStrips = true;
bool bListsOnly = false;
bool bRestart = false;

// Vertex numbers that lie far apart are replaced by close ones in the same order while strips are sought: there are
// lists for all numbers up to the highest.
class Numbering
{
public:
    explicit Numbering(const WordVec& indices)
    {
        const std::size_t spread = 8;
        const unsigned int highest = indices.empty() ? 0 : *std::max_element(indices.begin(), indices.end());
        if (highest > INT_MAX) throw Exception("NVIDIA::GenerateStrips, The index %u is too high", highest);
        if (highest / spread <= indices.size()) return;
        m_names = indices;
        std::sort(m_names.begin(), m_names.end());
        m_names.erase(std::unique(m_names.begin(), m_names.end()), m_names.end());
    }

    void shorten(WordVec& indices) const
    {
        if (m_names.empty()) return;
        for (unsigned int& index : indices)
            index =
                static_cast<unsigned int>(std::lower_bound(m_names.begin(), m_names.end(), index) - m_names.begin());
    }

    void restore(NvFaceInfoVec& faces) const
    {
        if (m_names.empty()) return;
        for (NvFaceInfo& face : faces)
        {
            for (int* vertex : {&face.m_v0, &face.m_v1, &face.m_v2}) *vertex = static_cast<int>(m_names[*vertex]);
        }
    }

private:
    WordVec m_names; // by new number; empty when all stay
};

void append(WordVec& list, const NvFaceInfo& face)
{
    for (const int vertex : {face.m_v0, face.m_v1, face.m_v2}) list.push_back(static_cast<unsigned int>(vertex));
}

void fill(PrimitiveGroup& group, PrimType type, const WordVec& indices)
{
    group.type = type;
    group.indices = new unsigned int[indices.size()];
    group.numIndices = static_cast<unsigned int>(indices.size());
    std::copy(indices.begin(), indices.end(), group.indices);
}

std::vector<WordVec> makeSeparateLists(const NvStripList& strips, const NvStripifier& stripifier)
{
    std::vector<WordVec> lists;
    if (strips.m_strips.empty()) return lists;

    IntVec stripIndices;
    unsigned int numSeparateStrips = 0;
    stripifier.CreateStrips(strips, stripIndices, bStitchStrips, numSeparateStrips, bRestart, restartVal);
    assert((bStitchStrips && (numSeparateStrips == 1)) || !bStitchStrips);

    auto begin = stripIndices.cbegin();
    for (unsigned int i = 0; i < numSeparateStrips; ++i)
    {
        const auto end = bStitchStrips ? stripIndices.cend() : std::find(begin, stripIndices.cend(), -1);
        lists.emplace_back(begin, end);
        if (end != stripIndices.cend()) begin = end + 1;
    }
    return lists;
}

// The corners of a triangle, turned so that the lowest comes first.
std::vector<unsigned int> turned(unsigned int a, unsigned int b, unsigned int c)
{
    if (a <= b && a <= c) return {a, b, c};
    if (b <= a && b <= c) return {b, c, a};
    return {c, a, b};
}

// Whether every triangle of the groups is one of the input.
bool isValid(const WordVec& indices, const PrimitiveGroup* groups, unsigned int numGroups)
{
    std::set<std::vector<unsigned int>> triangles;
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
        triangles.insert(turned(indices[i], indices[i + 1], indices[i + 2]));

    for (unsigned int g = 0; g < numGroups; ++g)
    {
        const PrimitiveGroup& group = groups[g];
        const unsigned int step = group.type == PT_LIST ? 3 : 1;
        for (std::size_t i = 0; i + 2 < group.numIndices; i += step)
        {
            const bool swap = group.type == PT_STRIP && i % 2 != 0;
            const unsigned int a = group.indices[i];
            const unsigned int b = group.indices[i + (swap ? 2 : 1)];
            const unsigned int c = group.indices[i + (swap ? 1 : 2)];
            if (a != b && a != c && b != c && !triangles.count(turned(a, b, c))) return false;
        }
    }
    return true;
}

} // namespace

void SetCacheSize(unsigned int size)
{
    cacheSize = size;
}

void SetStitchStrips(bool stitch)
{
    bStitchStrips = stitch;
}

void SetMinStripSize(unsigned int size)
{
    minStripSize = size;
}

void SetListsOnly(bool listsOnly)
{
    bListsOnly = listsOnly;
}

void EnableRestart(unsigned int value)
{
    bRestart = true;
    restartVal = value;
}

void DisableRestart()
{
    bRestart = false;
}

bool GenerateStrips(const unsigned int* indices, unsigned int numIndices, PrimitiveGroup** groups,
                    unsigned int* numGroups, bool validate)
{
    if (numIndices / 3 > MAX_TRIANGLES)
        throw Exception("NVIDIA::GenerateStrips, There are too many triangles (%u of at most %u)", numIndices / 3,
                        MAX_TRIANGLES);
    const WordVec input(indices, indices + numIndices / 3 * 3); // triples are what is walked
    WordVec working = input;
    const Numbering numbering(working);
    numbering.shorten(working);
    const unsigned int maxIndex = working.empty() ? 0 : *std::max_element(working.begin(), working.end());

    NvStripifier stripifier;
    NvStripList strips;
    IntVec looseFaces;
    stripifier.Stripify(working, cacheSize, minStripSize, maxIndex, strips, looseFaces);
    NvFaceInfoVec& faces = stripifier.m_mesh.m_faces;
    numbering.restore(faces);

    std::vector<WordVec> separate;
    WordVec list;
    if (!bListsOnly)
        separate = makeSeparateLists(strips, stripifier);
    else
    {
        for (const NvStripInfo& strip : strips.m_strips)
        {
            const int* places = strips.FacesOf(strip);
            for (std::size_t i = 0; i < strip.m_numFaces; ++i)
            {
                if (!faces[places[i]].IsDegenerate()) append(list, faces[places[i]]);
            }
        }
    }
    for (const int face : looseFaces) append(list, faces[face]);

    const bool hasList = bListsOnly || !looseFaces.empty();
    const std::size_t number = separate.size() + hasList;
    std::unique_ptr<PrimitiveGroup[]> result(new PrimitiveGroup[number]);
    for (std::size_t i = 0; i < separate.size(); ++i) fill(result[i], PT_STRIP, separate[i]);
    if (hasList) fill(result[number - 1], PT_LIST, list);

    const bool valid = !validate || isValid(input, result.get(), static_cast<unsigned int>(number));
    *groups = result.release();
    *numGroups = static_cast<unsigned int>(number);
    return valid;
}

void RemapIndices(const PrimitiveGroup* groups, unsigned int numGroups, unsigned int numVertices,
                  PrimitiveGroup** remapped)
{
    std::unique_ptr<PrimitiveGroup[]> result(new PrimitiveGroup[numGroups]);
    std::unordered_map<unsigned int, unsigned int> numbers;
    WordVec list;
    for (unsigned int g = 0; g < numGroups; ++g)
    {
        list.assign(groups[g].indices, groups[g].indices + groups[g].numIndices);
        for (unsigned int& index : list)
        {
            if (index >= numVertices)
            {
                if (bRestart && index == restartVal) continue;
                throw Exception("NVIDIA::RemapIndices, There is no vertex %u (of %u)", index, numVertices);
            }
            index = numbers.emplace(index, static_cast<unsigned int>(numbers.size())).first->second;
        }
        fill(result[g], groups[g].type, list);
    }
    *remapped = result.release();
}

} // namespace NVIDIA
