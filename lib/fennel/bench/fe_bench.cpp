#include "fe_camera.h"
#include "fe_mesh.h"
#include "gl_recorder.h"
#include "fe_scenes.h"
#include "fe_sorrel.h"

#include "xml_parser.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

// What a frame of a large scene costs beside its drawing, and where the time of a large load goes. OpenGL is the
// stand-in of the tests, which does nothing here.

namespace
{

using Fennel::Sorrel::Engine;

const int MESH_NODES = 2000;
const int MESHES = 20;
const int MATERIALS = 10;
const int IMAGES = 5;

// A Bezier curve of eight keys over 20 seconds.
void addWave(y3d::TrackBlenderFloat& curve, float middle, float height)
{
    curve.mInterpolation = y3d::TrackBlenderFloat::INTERPOLATION_BEZIER;
    for (int i = 0; i < 8; ++i)
    {
        const float time = 20.0f * static_cast<float>(i) / 7;
        const float value = middle + (i % 2 ? height : -height);
        curve.mKeys.push_back({{time - 1, value}, {time, value}, {time + 1, value}});
    }
}

void addImage(Archives& archives, const std::string& name, int size)
{
    std::vector<unsigned char> pixels(static_cast<std::size_t>(size) * size * 4);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i / 4 ^ i >> 12);
    archives.addPicture(name, makeImage(size, size, pixels));
}

void addMaterials(SceneFile& file, Archives& archives, int imageSize)
{
    for (int i = 0; i < IMAGES; ++i) addImage(archives, std::to_string(i) + ".png", imageSize);
    for (int i = 0; i < MATERIALS; ++i)
    {
        const std::string image = std::to_string(i % IMAGES);
        y3d::Material* material = file.material("m" + std::to_string(i), 1, 1, 1, i % 2);
        file.texture(material, image, i < IMAGES ? image + ".png" : "");
    }
}

// A sheet of size * size vertices, indexed.
void addSheet(SceneFile& file, const std::string& name, const std::string& material, unsigned size)
{
    std::vector<Vector3f> positions;
    std::vector<unsigned> indices;
    for (unsigned y = 0; y < size; ++y)
        for (unsigned x = 0; x < size; ++x)
        {
            positions.push_back(Vector3f(static_cast<float>(x), static_cast<float>(y), 0));
            const unsigned corner = y * size + x;
            if (x + 1 < size && y + 1 < size)
                indices.insert(indices.end(),
                               {corner, corner + 1, corner + size, corner + size, corner + 1, corner + size + 1});
        }
    addSubmesh(file.mesh(name), positions, indices, material);
}

// 2,000 nodes on a lattice, half of them on position and rotation curves unless all stand still; 4 of 5 are in the
// picture.
class FrameScene
{
public:
    explicit FrameScene(bool moves = true)
    {
        GLRecorder::reset();
        SceneFile file;
        addMaterials(file, archives, 16);
        for (int i = 0; i < MESHES; ++i)
            addSheet(file, "mesh" + std::to_string(i), "m" + std::to_string(i % MATERIALS), 4);
        for (int i = 0; i < MESH_NODES; ++i)
        {
            const Vector3f place(static_cast<float>(i % 20 * 8 - 80), static_cast<float>(i / 20 % 10 * 8 - 40),
                                 static_cast<float>(-20 - i / 200 * 20));
            y3d::MeshInstance* node =
                file.instance(nullptr, std::to_string(i), "mesh" + std::to_string(i % MESHES), place);
            if (!moves || i % 2) continue;
            node->mRotation.mEuler = true;
            addWave(node->mPosition.mX, place.x, 1);
            addWave(node->mPosition.mY, place.y, 1);
            addWave(node->mPosition.mZ, place.z, 1);
            addWave(node->mRotation.mX, 0, 1);
            addWave(node->mRotation.mY, 0, 1);
            addWave(node->mRotation.mZ, 0, 1);
        }
        for (int i = 0; i < 8; ++i) file.light(nullptr, {0, 0, 0}, {1, 1, 1}, 10);
        file.camera(nullptr, "camera", {0, 0, 10});
        file.store(archives);
        engine.load(archives, "scene.xml");
        GLRecorder::gl.asleep = true;
        engine.updateKeyframing(0);
    }

    Archives archives;
    Engine engine;
};

// Keyframing alone: time goes on by a frame of 60 a second and starts over after 20 seconds.
void keyframing(benchmark::State& state)
{
    FrameScene scene;
    float time = 0;
    for (auto _ : state)
    {
        scene.engine.updateKeyframing(time);
        time = std::fmod(time + 1 / 60.0f, 20.0f);
    }
}
BENCHMARK(keyframing)->Unit(benchmark::kMicrosecond);

// A scene in which nothing moves costs what one without nodes costs: its camera and its lights.
void keyframingStill(benchmark::State& state)
{
    FrameScene scene(false);
    for (auto _ : state) scene.engine.updateKeyframing(1);
}
BENCHMARK(keyframingStill)->Unit(benchmark::kMicrosecond);

void keyframingStillFloor(benchmark::State& state)
{
    FrameScene scene(false);
    std::vector<Fennel::Sorrel::Node*> none;
    std::swap(scene.engine.mNodes, none);
    scene.engine.mDynamicNodes.clear();
    for (auto _ : state) scene.engine.updateKeyframing(1);
    std::swap(scene.engine.mNodes, none);
}
BENCHMARK(keyframingStillFloor)->Unit(benchmark::kMicrosecond);

// Culling, jobs, sorting and drawing.
void drawing(benchmark::State& state)
{
    FrameScene scene;
    for (auto _ : state) scene.engine.draw();
}
BENCHMARK(drawing)->Unit(benchmark::kMicrosecond);

// The nodes that a frame shows, in the order in which it draws them.
std::vector<Fennel::Sorrel::Node*> drawnNodes(Engine& engine)
{
    std::vector<Fennel::Sorrel::Node*> all, drawn;
    std::swap(all, engine.mNodes);
    for (Fennel::Sorrel::Node* node : all)
    {
        engine.mNodes.assign(1, node);
        engine.draw();
        if (!engine.mRenderManager.mJobs.empty()) drawn.push_back(node);
    }
    engine.mNodes = all;
    std::stable_sort(drawn.begin(), drawn.end(), [](const auto* one, const auto* other) {
        return one->mMesh->mSubmeshes[0].mVertexBuffer->mNumber < other->mMesh->mSubmeshes[0].mVertexBuffer->mNumber;
    });
    return drawn;
}

// The least that the same frame can cost: its matrix products and its calls, each with the question for an error that
// belongs to it. Which nodes are to be seen, and their order, is known beforehand.
void drawingFloor(benchmark::State& state)
{
    FrameScene scene;
    Engine& engine = scene.engine;
    const std::vector<Fennel::Sorrel::Node*> nodes = drawnNodes(engine);
    const MathBase::Matrix4x4Col view = engine.mActiveCamera->mMatCameraInv;
    std::vector<Fennel::Sorrel::Node*> none;
    for (auto _ : state)
    {
        // What a frame calls without any node.
        std::swap(engine.mNodes, none);
        engine.draw();
        std::swap(engine.mNodes, none);

        const Fennel::Submesh* bound = nullptr;
        for (const Fennel::Sorrel::Node* node : nodes)
        {
            const MathBase::Matrix4x4Col matrix = MathBase::Matrix4x4Col::product(view, node->mMatWorld);
            const Fennel::Submesh& submesh = node->mMesh->mSubmeshes[0];
            if (&submesh != bound) node->mMaterials[0]->activate(nullptr);
            glLoadMatrixf(matrix.m);
            benchmark::DoNotOptimize(glGetError());
            submesh.render(bound);
            bound = &submesh;
        }
    }
}
BENCHMARK(drawingFloor)->Unit(benchmark::kMicrosecond);

void cullingAndSorting(benchmark::State& state)
{
    FrameScene scene;
    for (auto _ : state)
    {
        scene.engine.mRenderManager.clear();
        scene.engine.renderVisibleNodes();
        scene.engine.mRenderManager.sort();
    }
    state.counters["jobs"] = static_cast<double>(scene.engine.mRenderManager.mJobs.size());
}
BENCHMARK(cullingAndSorting)->Unit(benchmark::kMicrosecond);

void drawCalls(benchmark::State& state)
{
    FrameScene scene;
    scene.engine.draw();
    for (auto _ : state) scene.engine.mRenderManager.render();
}
BENCHMARK(drawCalls)->Unit(benchmark::kMicrosecond);

void wholeFrame(benchmark::State& state)
{
    FrameScene scene;
    float time = 0;
    for (auto _ : state)
    {
        scene.engine.updateKeyframing(time);
        scene.engine.draw();
        time = std::fmod(time + 1 / 60.0f, 20.0f);
    }
}
BENCHMARK(wholeFrame)->Unit(benchmark::kMicrosecond);

// A scene of 50 MB with five pictures of 1024 by 1024, in steps that are timed one by one, in processor time. The
// file lies in memory; the stand-in for OpenGL copies what is uploaded, as a driver does.
void loadFiftyMegabytes(benchmark::State& state)
{
    GLRecorder::reset();
    Archives archives;
    {
        SceneFile file;
        addMaterials(file, archives, 1024);
        for (int i = 0; i < MESHES; ++i)
        {
            addSheet(file, "mesh" + std::to_string(i), "m" + std::to_string(i % MATERIALS), 204);
            file.instance(nullptr, "node", "mesh" + std::to_string(i), {});
        }
        file.camera(nullptr, "camera", {});
        file.store(archives);
    }
    const double megabytes = static_cast<double>(archives["scene.y3d"].size()) / 1e6;

    double seconds[4] = {};
    for (auto _ : state)
    {
        Engine engine;
        std::clock_t start = std::clock();
        const auto lap = [&](int phase) {
            const std::clock_t now = std::clock();
            seconds[phase] += static_cast<double>(now - start) / CLOCKS_PER_SEC;
            start = now;
        };

        const AM::File bytes = archives.readFile("scene.y3d", -1);
        lap(0);
        y3d::Manager manager;
        manager.load(bytes->data, static_cast<int>(bytes->length));
        lap(1);
        engine.mTextureManager.setArchiveManager(&archives);
        const Xml::XmlParser none;
        const Xml::IteratorConst scene = none.createIterator("");
        for (int i = 0; i < manager.getNumMaterials(); ++i)
            engine.loadMaterial(manager.getMaterialAt(i)->getName(), &manager, scene);
        lap(2);
        engine.loadNode(nullptr, manager.getSceneAt(0), &manager, scene, true);
        lap(3);
    }
    const char* const phases[4] = {"1 read", "2 parse", "3 pictures", "4 buffers"};
    for (int i = 0; i < 4; ++i)
        state.counters[std::string(phases[i]) + " ms"] = 1000 * seconds[i] / static_cast<double>(state.iterations());
    state.counters["MB"] = megabytes;
}
BENCHMARK(loadFiftyMegabytes)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

BENCHMARK_MAIN();
