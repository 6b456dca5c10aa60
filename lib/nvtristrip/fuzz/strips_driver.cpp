#include "nvtristrip/NvTriStrip.h"

#include "plain_stripifier.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <utility>
#include <vector>

#include <unistd.h>

// Compares the stripifier with the plain one: random meshes, all settings, equal groups and equally many warnings.
//   nvtristrip_strips_driver [SEED [COUNT]]
// Stops at the first difference with what makes it again. COUNT 0 goes on for ever.

namespace
{

typedef std::vector<unsigned int> Indices;
typedef std::vector<std::pair<NVIDIA::PrimType, Indices>> Groups;
typedef PlainStripifier::Join Join;

struct Mesh
{
    Indices indices;
    unsigned int cacheSize, minSize;
    bool lists;
    Join join;
};

const unsigned int RESTART_VALUE = 1u << 20;

class Maker
{
public:
    explicit Maker(unsigned int seed) : m_random(seed) {}

    Mesh makeMesh()
    {
        Mesh mesh;
        const unsigned int size = 1 + below(14);
        switch (below(6))
        {
        case 0:
            mesh.indices = makeSoup(size * 8, 3 + below(size * 8));
            break;
        case 1:
            mesh.indices = makeSheet(size, 1 + below(14), true);
            break;
        case 2:
            mesh.indices = makeSheet(1 + below(14), size, false);
            break;
        case 3:
            mesh.indices = makeHubs(size * 10, 1 + below(3));
            break;
        case 4: // around many hubs, and each of them a sheet
            mesh.indices = makeHubs(40 * size, 1 + below(2));
            append(mesh.indices, makeSheet(3, size, true));
            break;
        default:
            mesh.indices = makeSheet(size, 5, true);
            append(mesh.indices, makeSoup(size, 4 + below(40)));
            append(mesh.indices, mesh.indices);
            break;
        }
        if (below(2) == 0) shuffle(mesh.indices);
        if (below(3) == 0) turnSome(mesh.indices);
        if (below(4) == 0) mesh.indices.resize(mesh.indices.size() - below(4)); // holes, and tails
        mesh.cacheSize = below(8) == 0 ? 4000000000u : below(30);
        mesh.minSize = below(2) * below(12);
        mesh.lists = below(2) == 0;
        mesh.join = static_cast<Join>(below(3));
        return mesh;
    }

private:
    unsigned int below(unsigned int end) { return static_cast<unsigned int>(m_random() % end); }

    static void append(Indices& indices, Indices more) { indices.insert(indices.end(), more.begin(), more.end()); }

    Indices makeSoup(unsigned int numFaces, unsigned int numVertices)
    {
        Indices indices(3 * static_cast<std::size_t>(numFaces));
        for (unsigned int& index : indices) index = below(numVertices);
        return indices;
    }

    static Indices makeSheet(unsigned int columns, unsigned int rows, bool wrap)
    {
        const unsigned int width = columns + !wrap, height = rows + !wrap;
        const auto at = [&](unsigned int x, unsigned int y) { return y % height * width + x % width; };
        Indices indices;
        for (unsigned int y = 0; y < rows; ++y)
        {
            for (unsigned int x = 0; x < columns; ++x)
                append(indices, {at(x, y), at(x + 1, y), at(x + 1, y + 1), at(x, y), at(x + 1, y + 1), at(x, y + 1)});
        }
        return indices;
    }

    // Fans around a few vertices, closed, in steps that leave gaps, or with rims that lie on each other.
    Indices makeHubs(unsigned int numFaces, unsigned int numHubs)
    {
        const unsigned int step = 1 + below(2);
        const bool sharesRim = below(2) == 0;
        Indices indices;
        for (unsigned int i = 0; i < numFaces; ++i)
        {
            const unsigned int hub = i % numHubs, place = i / numHubs * step;
            const unsigned int rim = numHubs + (sharesRim ? 0 : hub * 2 * numFaces) + place;
            append(indices, {hub, rim, below(50) == 0 ? numHubs : rim + 1});
        }
        return indices;
    }

    void shuffle(Indices& indices)
    {
        for (std::size_t i = indices.size() / 3; i > 1; --i)
        {
            const std::size_t other = below(static_cast<unsigned int>(i));
            std::swap_ranges(&indices[3 * i - 3], &indices[3 * i - 3] + 3, &indices[3 * other]);
        }
    }

    void turnSome(Indices& indices)
    {
        for (std::size_t i = 0; i < indices.size(); i += 3)
            std::rotate(&indices[i], &indices[i] + below(3), &indices[i] + 3);
    }

    std::mt19937 m_random;
};

// Runs with the standard output in a file, and counts the lines that come.
Groups generate(const Mesh& mesh, std::FILE* lines, int& numWarnings)
{
    NVIDIA::SetListsOnly(mesh.lists);
    NVIDIA::SetStitchStrips(mesh.join != PlainStripifier::SEPARATE);
    NVIDIA::SetCacheSize(mesh.cacheSize);
    NVIDIA::SetMinStripSize(mesh.minSize);
    if (mesh.join == PlainStripifier::RESTARTED)
        NVIDIA::EnableRestart(RESTART_VALUE);
    else
        NVIDIA::DisableRestart();

    std::rewind(lines);
    if (ftruncate(fileno(lines), 0) != 0) std::perror("strips_driver");
    NVIDIA::PrimitiveGroup* groups = nullptr;
    unsigned int number = 0;
    std::fflush(stdout);
    const int saved = dup(STDOUT_FILENO);
    dup2(fileno(lines), STDOUT_FILENO);
    NVIDIA::GenerateStrips(mesh.indices.data(), static_cast<unsigned int>(mesh.indices.size()), &groups, &number);
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);

    std::rewind(lines);
    numWarnings = 0;
    for (int letter = std::getc(lines); letter != EOF; letter = std::getc(lines)) numWarnings += letter == '\n';
    Groups result;
    for (unsigned int i = 0; i < number; ++i)
        result.emplace_back(groups[i].type, Indices(groups[i].indices, groups[i].indices + groups[i].numIndices));
    delete[] groups;
    return result;
}

Groups expected(const Mesh& mesh, const PlainStripifier& plain)
{
    Groups result;
    const auto add = [&result](NVIDIA::PrimType type, const std::vector<int>& list) {
        result.emplace_back(type, Indices(list.begin(), list.end()));
    };
    if (mesh.lists)
        add(NVIDIA::PT_LIST, plain.list());
    else
    {
        for (const std::vector<int>& strip : plain.written(mesh.join, RESTART_VALUE)) add(NVIDIA::PT_STRIP, strip);
        if (!plain.looseFaces.empty()) add(NVIDIA::PT_LIST, plain.looseList());
    }
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    const unsigned long first = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1;
    const unsigned long count = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1000;
    std::FILE* lines = std::tmpfile();
    if (!lines)
    {
        std::perror("strips_driver");
        return 1;
    }
    std::size_t numTriangles = 0;
    for (unsigned long round = 0; count == 0 || round < count; ++round)
    {
        const unsigned int seed = static_cast<unsigned int>(first + round);
        const Mesh mesh = Maker(seed).makeMesh();
        numTriangles += mesh.indices.size() / 3;
        int numWarnings = 0;
        const Groups groups = generate(mesh, lines, numWarnings);
        const PlainStripifier plain(mesh.indices, mesh.cacheSize, mesh.minSize);
        if (groups == expected(mesh, plain) && numWarnings == plain.numWarnings) continue;
        std::printf("Seed %u: other groups or warnings (%zu triangles, cache %u, strips of %u, %s, joined by %d)\n",
                    seed, mesh.indices.size() / 3, mesh.cacheSize, mesh.minSize, mesh.lists ? "lists" : "strips",
                    static_cast<int>(mesh.join));
        return 1;
    }
    std::printf("%lu meshes with %zu triangles, all equal\n", count, numTriangles);
    std::fclose(lines);
    return 0;
}
