#include "builder.h"

#include "../hash.h"

#include "y3d_exception.h"
#include "ytd_utils.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace Scenes
{

Vector3f cross(const Vector3f& a, const Vector3f& b)
{
    return Vector3f(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

Vector3f normalized(const Vector3f& v)
{
    const float length = v.length();
    return length > 1e-9f ? (1.0f / length) * v : Vector3f(0, 1, 0);
}

Vector3f mix(const Vector3f& a, const Vector3f& b, float share)
{
    return (1.0f - share) * a + share * b;
}

namespace
{

float lattice(int x, int y, int z)
{
    const uint32_t h = uint32_t(x) * 0x8DA6B343u ^ uint32_t(y) * 0xD8163841u ^ uint32_t(z) * 0xCB1AB31Fu;
    return 2.0f * Show::unit(Show::scramble(h)) - 1.0f;
}

float fade(float t)
{
    return t * t * (3.0f - 2.0f * t);
}

} // namespace

float noise(const Vector3f& p)
{
    const float fx = std::floor(p.x), fy = std::floor(p.y), fz = std::floor(p.z);
    const int x = int(fx), y = int(fy), z = int(fz);
    const float u = fade(p.x - fx), v = fade(p.y - fy), w = fade(p.z - fz);
    float planes[2];
    for (int k = 0; k < 2; k++)
    {
        const float low = lattice(x, y, z + k) * (1 - u) + lattice(x + 1, y, z + k) * u;
        const float high = lattice(x, y + 1, z + k) * (1 - u) + lattice(x + 1, y + 1, z + k) * u;
        planes[k] = low * (1 - v) + high * v;
    }
    return planes[0] * (1 - w) + planes[1] * w;
}

float fractal(Vector3f p, int octaves)
{
    float sum = 0.0f, strength = 0.5f;
    for (int i = 0; i < octaves; i++)
    {
        sum += strength * noise(p);
        p = 2.03f * p + Vector3f(17.3f, 5.1f, 9.7f);
        strength *= 0.5f;
    }
    return sum;
}

float smooth(float from, float to, float value)
{
    return fade(std::min(1.0f, std::max(0.0f, (value - from) / (to - from))));
}

float ridges(Vector3f p, int octaves)
{
    float sum = 0.0f, strength = 0.5f;
    for (int i = 0; i < octaves; i++)
    {
        const float ridge = 1.0f - std::fabs(noise(p));
        sum += strength * ridge * ridge;
        p = 2.03f * p + Vector3f(17.3f, 5.1f, 9.7f);
        strength *= 0.5f;
    }
    return sum;
}

float Chance::next()
{
    mState += 0x9E3779B9u;
    return Show::unit(Show::scramble(mState));
}

unsigned int Surface::vertex(const Vector3f& position, float s, float t)
{
    return vertex(position, Vector3f(), s, t);
}

unsigned int Surface::vertex(const Vector3f& position, const Vector3f& normal, float s, float t)
{
    mPositions.push_back(position);
    mNormals.push_back(normal);
    mCoordinates.push_back(Vector3f(s, t, 0));
    return unsigned(mPositions.size() - 1);
}

void Surface::triangle(unsigned int a, unsigned int b, unsigned int c)
{
    // Points of spires and poles of spheres give triangles without an area.
    const Vector3f normal = cross(mPositions[b] - mPositions[a], mPositions[c] - mPositions[a]);
    if (normal.length() < 1e-7f) return;
    mIndices.insert(mIndices.end(), {a, b, c});
}

void Surface::grid(int columns, int rows, float repeatU, float repeatV, const std::function<Vector3f(float, float)>& at)
{
    const unsigned int first = unsigned(mPositions.size());
    for (int row = 0; row <= rows; row++)
        for (int column = 0; column <= columns; column++)
        {
            const float u = float(column) / float(columns), v = float(row) / float(rows);
            vertex(at(u, v), u * repeatU, (1.0f - v) * repeatV);
        }
    const unsigned int stride = unsigned(columns) + 1;
    for (int row = 0; row < rows; row++)
        for (int column = 0; column < columns; column++)
        {
            const unsigned int a = first + unsigned(row) * stride + unsigned(column);
            triangle(a, a + 1, a + stride + 1);
            triangle(a, a + stride + 1, a + stride);
        }
}

void Surface::quad(const Vector3f& a, const Vector3f& b, const Vector3f& c, const Vector3f& d)
{
    const Vector3f normal = normalized(cross(b - a, d - a));
    const unsigned int first = vertex(a, normal, 0, 1);
    vertex(b, normal, 1, 1);
    vertex(c, normal, 1, 0);
    vertex(d, normal, 0, 0);
    triangle(first, first + 1, first + 2);
    triangle(first, first + 2, first + 3);
}

void Surface::box(const Vector3f& low, const Vector3f& high, float metres)
{
    const Vector3f size = high - low;
    const auto face = [&](const Vector3f& corner, const Vector3f& right, const Vector3f& up) {
        const Vector3f normal = normalized(cross(right, up));
        const float s = right.length() / metres, t = up.length() / metres;
        const unsigned int first = vertex(corner, normal, 0, t);
        vertex(corner + right, normal, s, t);
        vertex(corner + right + up, normal, s, 0);
        vertex(corner + up, normal, 0, 0);
        triangle(first, first + 1, first + 2);
        triangle(first, first + 2, first + 3);
    };
    const Vector3f x(size.x, 0, 0), y(0, size.y, 0), z(0, 0, size.z), none;
    face(low + z, x, y);
    face(high - y, none - z, y);
    face(low + x, none - x, y);
    face(low, z, y);
    face(low + y + z, x, none - z);
    face(low, x, z);
}

void Surface::revolve(const std::vector<std::pair<float, float>>& profile, int sides, float repeatU, float repeatV,
                      const std::function<float(float)>& radiusAt)
{
    std::vector<float> lengths = {0.0f}; // along the profile
    for (std::size_t i = 1; i < profile.size(); i++)
        lengths.push_back(lengths.back() + std::hypot(profile[i].first - profile[i - 1].first,
                                                      profile[i].second - profile[i - 1].second));
    const int rows = int(profile.size()) - 1;
    grid(sides, rows, repeatU, repeatV, [&](float u, float v) {
        const std::size_t i = std::size_t(v * float(rows) + 0.5f);
        const float angle = -2.0f * PI * u; // seen from outside, u runs right
        const float radius = profile[i].first * (radiusAt ? radiusAt(u) : 1.0f);
        return Vector3f(std::cos(angle) * radius, profile[i].second, std::sin(angle) * radius);
    });
    // The texture follows the length of the profile.
    const std::size_t first = mCoordinates.size() - std::size_t(rows + 1) * std::size_t(sides + 1);
    for (int row = 0; row <= rows; row++)
        for (int side = 0; side <= sides; side++)
            mCoordinates[first + std::size_t(row * (sides + 1) + side)].y =
                (1.0f - lengths[std::size_t(row)] / lengths.back()) * repeatV;
}

void Surface::smoothNormals()
{
    // Vertices in one place count as one, so that seams of the texture do not show in the light.
    std::vector<Vector3f> sums(mPositions.size());
    for (std::size_t i = 0; i < mIndices.size(); i += 3)
    {
        const Vector3f& a = mPositions[mIndices[i]];
        const Vector3f normal = cross(mPositions[mIndices[i + 1]] - a, mPositions[mIndices[i + 2]] - a);
        for (std::size_t k = 0; k < 3; k++) sums[mIndices[i + k]] = sums[mIndices[i + k]] + normal;
    }
    std::map<std::array<long, 3>, Vector3f> places;
    const auto place = [&](std::size_t i) {
        const Vector3f& p = mPositions[i];
        return std::array<long, 3>{std::lround(p.x * 1000.0f), std::lround(p.y * 1000.0f), std::lround(p.z * 1000.0f)};
    };
    for (std::size_t i = 0; i < sums.size(); i++)
    {
        Vector3f& sum = places[place(i)];
        sum = sum + sums[i];
    }
    for (std::size_t i = 0; i < mNormals.size(); i++)
        if (mNormals[i].length() == 0.0f) mNormals[i] = normalized(places[place(i)]);
}

void Surface::facet()
{
    std::vector<Vector3f> positions, normals, coordinates;
    for (std::size_t i = 0; i < mIndices.size(); i += 3)
    {
        const Vector3f& a = mPositions[mIndices[i]];
        const Vector3f normal = normalized(cross(mPositions[mIndices[i + 1]] - a, mPositions[mIndices[i + 2]] - a));
        for (std::size_t k = 0; k < 3; k++)
        {
            positions.push_back(mPositions[mIndices[i + k]]);
            coordinates.push_back(mCoordinates[mIndices[i + k]]);
            normals.push_back(normal);
            mIndices[i + k] = unsigned(positions.size() - 1);
        }
    }
    mPositions.swap(positions);
    mNormals.swap(normals);
    mCoordinates.swap(coordinates);
}

void Surface::flip()
{
    for (std::size_t i = 0; i < mIndices.size(); i += 3) std::swap(mIndices[i + 1], mIndices[i + 2]);
}

void Surface::mapFromAbove(float metres)
{
    for (std::size_t i = 0; i < mPositions.size(); i++)
        mCoordinates[i] = Vector3f(mPositions[i].x / metres, mPositions[i].z / metres, 0);
}

std::vector<Surface> readMesh(const std::string& filename)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(filename.c_str(), "rb"), std::fclose);
    if (!file) throw std::runtime_error(filename + ": cannot be read");
    std::vector<unsigned char> bytes;
    unsigned char block[4096];
    while (const std::size_t count = std::fread(block, 1, sizeof block, file.get()))
        bytes.insert(bytes.end(), block, block + count);
    y3d::Manager manager;
    try
    {
        manager.load(bytes.data(), int(bytes.size()));
    }
    catch (const y3d::Exception& error)
    {
        throw std::runtime_error(filename + ": " + error.what());
    }
    if (manager.mMeshes.empty()) throw std::runtime_error(filename + ": holds no mesh");

    std::vector<Surface> surfaces;
    for (const y3d::Submesh* part : manager.mMeshes.front()->mSubmeshes)
    {
        if (!part->getIndices() || !part->getPositions() || !part->getNormals())
            throw std::runtime_error(filename + ": a part without vertices, normals or triangles");
        Surface surface(part->getMaterialName());
        surface.mPositions.assign(part->getPositions()->begin(), part->getPositions()->end());
        surface.mNormals.assign(part->getNormals()->begin(), part->getNormals()->end());
        if (part->getNumUVWs())
            surface.mCoordinates.assign(part->getUVW(0)->begin(), part->getUVW(0)->end());
        else
            surface.mCoordinates.resize(surface.mPositions.size());
        surface.mIndices.assign(part->getIndices()->begin(), part->getIndices()->end());
        surfaces.push_back(surface);
    }
    return surfaces;
}

Builder::Builder() : mScene(new y3d::Scene)
{
    mScene->mName = "scene";
    mManager.mScenes.push_back(mScene);
}

namespace
{

void addAttribute(y3d::Material* material, const char* name, const Vector3f& color)
{
    auto* attribute = new y3d::Material::Attribute;
    attribute->mName = name;
    attribute->mColor = {color.x, color.y, color.z, 1.0f};
    material->mAttributes.push_back(attribute);
}

void addImage(y3d::Manager& manager, y3d::Material* material, const std::string& filename)
{
    if (filename.empty()) return;
    if (!manager.mImageIndices.count(filename))
    {
        auto* image = new y3d::Image;
        image->mName = filename;
        image->mFileName = filename;
        manager.mImageIndices[filename] = int(manager.mImages.size());
        manager.mImages.push_back(image);
    }
    auto* texture = new y3d::Texture;
    texture->mName = filename;
    texture->mImageName = filename;
    material->mAttributes.front()->mTextures.push_back(texture);
}

} // namespace

void Builder::material(const std::string& name, const Vector3f& diffuse, const Vector3f& ambient,
                       const Vector3f& specular, float hardness, const Vector3f& emissive, const std::string& image)
{
    auto* material = new y3d::Material;
    material->mName = name;
    addAttribute(material, "diffuse", diffuse);
    addAttribute(material, "ambient", ambient);
    addAttribute(material, "specular", specular);
    addAttribute(material, "emissive", emissive);
    addAttribute(material, "hardness", Vector3f(hardness, 0, 0));
    addImage(mManager, material, image);
    mManager.mMaterialIndices[name] = int(mManager.mMaterials.size());
    mManager.mMaterials.push_back(material);
}

void Builder::shadeless(const std::string& name, const Vector3f& color, const std::string& image)
{
    auto* material = new y3d::Material;
    material->mName = name;
    material->mShadeless = true;
    addAttribute(material, "diffuse", color);
    addImage(mManager, material, image);
    mManager.mMaterialIndices[name] = int(mManager.mMaterials.size());
    mManager.mMaterials.push_back(material);
}

void Builder::mesh(const std::string& name, const std::vector<Surface>& surfaces)
{
    auto* mesh = new y3d::Mesh;
    mesh->mName = name;
    for (const Surface& surface : surfaces)
    {
        auto* submesh = new y3d::Submesh;
        submesh->mMaterialName = surface.mMaterial;
        submesh->mIndices = new y3d::StructList<y3d::Index>(surface.mIndices.begin(), surface.mIndices.end());
        submesh->setPositions(new y3d::StructList<Vector3f>(surface.mPositions.begin(), surface.mPositions.end()));
        submesh->setNormals(new y3d::StructList<Vector3f>(surface.mNormals.begin(), surface.mNormals.end()));
        submesh->mUVWs.push_back(new y3d::UVWList(surface.mCoordinates.begin(), surface.mCoordinates.end()));
        mesh->mSubmeshes.push_back(submesh);
    }
    const int cacheSize = 16;
    ytd::Utils::optimizeMesh(mesh, cacheSize);
    ytd::Utils::updateBoundingBoxes(mesh, true);
    mManager.mMeshIndices[name] = int(mManager.mMeshes.size());
    mManager.mMeshes.push_back(mesh);
}

template <typename Node> Node* Builder::add(const std::string& name, y3d::SceneNode* parent)
{
    auto* node = new Node;
    node->mName = name;
    setScale(node, Vector3f(1, 1, 1));
    (parent ? parent : mScene)->addChild(node);
    return node;
}

y3d::MeshInstance* Builder::instance(const std::string& name, const std::string& mesh, y3d::SceneNode* parent)
{
    auto* node = add<y3d::MeshInstance>(name, parent);
    node->mMeshName = mesh;
    return node;
}

y3d::Dummy* Builder::dummy(const std::string& name, y3d::SceneNode* parent)
{
    return add<y3d::Dummy>(name, parent);
}

y3d::Light* Builder::light(const std::string& name, const Vector3f& position, const Vector3f& color, float distance,
                           y3d::SceneNode* parent)
{
    auto* node = add<y3d::Light>(name, parent);
    setPosition(node, position);
    node->mLightColor.mR.mBaseValue = color.x;
    node->mLightColor.mG.mBaseValue = color.y;
    node->mLightColor.mB.mBaseValue = color.z;
    node->mLightColor.mA.mBaseValue = 1.0f;
    node->mDistance.mCurve.mBaseValue = distance;
    node->mEnergy.mCurve.mBaseValue = 1.0f;
    return node;
}

y3d::Camera* Builder::camera(const std::string& name, float fovDegrees)
{
    auto* node = add<y3d::Camera>(name, nullptr);
    node->mFov.mCurve.mBaseValue = fovDegrees * PI / 180.0f;
    return node;
}

void Builder::write(const std::string& filename)
{
    unsigned char* data = nullptr;
    int size = 0;
    mManager.write(&data, &size);
    const std::unique_ptr<unsigned char[]> owner(data);
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(filename.c_str(), "wb"), std::fclose);
    if (!file || std::fwrite(data, 1, std::size_t(size), file.get()) != std::size_t(size))
        throw std::runtime_error(filename + ": cannot be written");
}

void setPosition(y3d::SceneNode* node, const Vector3f& position)
{
    node->mPosition.mX.mBaseValue = position.x;
    node->mPosition.mY.mBaseValue = position.y;
    node->mPosition.mZ.mBaseValue = position.z;
}

void setScale(y3d::SceneNode* node, const Vector3f& scale)
{
    node->mScale.mX.mBaseValue = scale.x;
    node->mScale.mY.mBaseValue = scale.y;
    node->mScale.mZ.mBaseValue = scale.z;
}

void setTurn(y3d::SceneNode* node, const Vector3f& axis, float degrees)
{
    const Vector3f a = normalized(axis);
    const float half = degrees * PI / 360.0f;
    node->mRotation.setBaseValue(
        MathBase::Quatf(std::cos(half), a.x * std::sin(half), a.y * std::sin(half), a.z * std::sin(half)));
}

void setCurve(y3d::TrackBlenderFloat& curve, const std::vector<Stop>& stops, bool cyclic)
{
    curve.mInterpolation = y3d::TrackBlenderFloat::INTERPOLATION_BEZIER;
    curve.mExtrapolation =
        cyclic ? y3d::TrackBlenderFloat::EXTRAPOLATION_CYCLIC : y3d::TrackBlenderFloat::EXTRAPOLATION_CONSTANT;
    curve.mKeys.clear();
    const std::size_t last = stops.size() - 1;
    for (std::size_t i = 0; i <= last; i++)
    {
        // At the ends of a cyclic curve the neighbour is on the other side; elsewhere the curve comes to rest there.
        float slope = 0.0f;
        if (i > 0 && i < last)
            slope = (stops[i + 1].value - stops[i - 1].value) / (stops[i + 1].time - stops[i - 1].time);
        else if (cyclic)
            slope = (stops[1].value - stops[last - 1].value) /
                    (stops[1].time - stops[0].time + stops[last].time - stops[last - 1].time);
        const float before = i > 0 ? (stops[i].time - stops[i - 1].time) / 3.0f : 0.1f;
        const float after = i < last ? (stops[i + 1].time - stops[i].time) / 3.0f : 0.1f;
        y3d::TrackBlenderFloat::Key key;
        key.mPoint = {stops[i].time, stops[i].value};
        key.mHandleIn = {stops[i].time - before, stops[i].value - slope * before};
        key.mHandleOut = {stops[i].time + after, stops[i].value + slope * after};
        curve.mKeys.push_back(key);
    }
}

namespace
{

// The rotation of a camera that looks from `eye` to `target`: the player turns a camera by a quarter about its x axis
// after its own rotation, so that one is put in front here.
MathBase::Quatf lookAt(const View& view)
{
    const Vector3f back = normalized(view.eye - view.target);
    const Vector3f flatRight = normalized(cross(Vector3f(0, 1, 0), back));
    const Vector3f flatUp = cross(back, flatRight);
    const float c = std::cos(view.roll * PI / 180.0f), s = std::sin(view.roll * PI / 180.0f);
    const Vector3f right = c * flatRight + s * flatUp;
    const Vector3f up = c * flatUp - s * flatRight;
    // Columns of the rotation times a quarter turn about x: x stays, y becomes z (back), z becomes -y.
    const Vector3f columns[3] = {right, back, Vector3f() - up};

    const auto m = [&](int row, int column) { return columns[column][row]; };
    const float trace = m(0, 0) + m(1, 1) + m(2, 2);
    float q[4];
    if (trace > 0.0f)
    {
        const float r = std::sqrt(1.0f + trace) * 2.0f;
        q[0] = r / 4.0f;
        q[1] = (m(2, 1) - m(1, 2)) / r;
        q[2] = (m(0, 2) - m(2, 0)) / r;
        q[3] = (m(1, 0) - m(0, 1)) / r;
    }
    else
    {
        int i = 0;
        if (m(1, 1) > m(0, 0)) i = 1;
        if (m(2, 2) > m(i, i)) i = 2;
        const int j = (i + 1) % 3, k = (i + 2) % 3;
        const float r = std::sqrt(1.0f + m(i, i) - m(j, j) - m(k, k)) * 2.0f;
        q[0] = (m(k, j) - m(j, k)) / r;
        q[1 + i] = r / 4.0f;
        q[1 + j] = (m(j, i) + m(i, j)) / r;
        q[1 + k] = (m(k, i) + m(i, k)) / r;
    }
    return MathBase::Quatf(q[0], q[1], q[2], q[3]);
}

} // namespace

void setFlight(y3d::Camera* camera, const std::vector<View>& views)
{
    setShots(camera, {views});
}

void setShots(y3d::Camera* camera, const std::vector<std::vector<View>>& shots)
{
    const float gap = 0.001f; // seconds between the last key of a shot and the first of the next
    y3d::TrackBlenderFloat* const curves[] = {&camera->mPosition.mX, &camera->mPosition.mY, &camera->mPosition.mZ,
                                              &camera->mRotation.mW, &camera->mRotation.mX, &camera->mRotation.mY,
                                              &camera->mRotation.mZ};
    const std::size_t count = sizeof(curves) / sizeof(curves[0]);
    std::vector<y3d::TrackBlenderFloat::Key> keys[count];
    for (std::size_t shot = 0; shot < shots.size(); shot++)
    {
        std::vector<Stop> stops[count];
        MathBase::Quatf before(1, 0, 0, 0);
        for (const View& view : shots[shot])
        {
            MathBase::Quatf q = lookAt(view);
            // A quaternion and its negative are one rotation; the nearer one keeps the curves smooth.
            if (!stops[0].empty() && q.w * before.w + q.x * before.x + q.y * before.y + q.z * before.z < 0.0f)
                q = MathBase::Quatf(-q.w, -q.x, -q.y, -q.z);
            before = q;
            const float time = view.time + (shot > 0 && stops[0].empty() ? gap : 0.0f);
            const float values[count] = {view.eye.x, view.eye.y, view.eye.z, q.w, q.x, q.y, q.z};
            for (std::size_t i = 0; i < count; i++) stops[i].push_back({time, values[i]});
        }
        for (std::size_t i = 0; i < count; i++)
        {
            setCurve(*curves[i], stops[i]);
            keys[i].insert(keys[i].end(), curves[i]->mKeys.begin(), curves[i]->mKeys.end());
        }
    }
    for (std::size_t i = 0; i < count; i++) curves[i]->mKeys.swap(keys[i]);
    for (std::size_t i = 0; i < count; i++)
        for (std::size_t k = 1; k < curves[i]->mKeys.size(); k++)
        {
            // A cut is no curve: handles that stay within it.
            y3d::TrackBlenderFloat::Key &last = curves[i]->mKeys[k - 1], &first = curves[i]->mKeys[k];
            if (first.mPoint.x - last.mPoint.x > 2.0f * gap) continue;
            last.mHandleOut = {last.mPoint.x + gap / 3.0f, last.mPoint.y};
            first.mHandleIn = {first.mPoint.x - gap / 3.0f, first.mPoint.y};
        }
}

} // namespace Scenes
