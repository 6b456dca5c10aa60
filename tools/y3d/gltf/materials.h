#pragma once

#include <map>
#include <string>

#include "losses.h"
#include "model.h"
#include "names.h"
#include "pictures.h"
#include "y3d_manager.h"

namespace gltf
{

// Where the texture coordinates of a material come from.
struct UvSource
{
    int set = 0;                             // the number behind TEXCOORD_
    double m[2][3] = {{1, 0, 0}, {0, 1, 0}}; // u and v out of (u, v, 1)
};

// Makes the materials of a scene as meshes ask for them, and the images that they use.
class Materials
{
public:
    struct Made
    {
        std::string name;
        bool isShadeless = false;
        bool isDoubleSided = false;
        bool hasTexture = false;
        UvSource uv;
    };

    // The new objects go to `manager`. All must outlive this.
    Materials(const Model& model, Pictures& pictures, y3d::Manager& manager, Losses& losses)
        : mModel(model), mPictures(pictures), mManager(manager), mLosses(losses)
    {
    }

    // By its number in the model; -1 is the material of surfaces without one.
    const Made& get(int material);

private:
    Made make(const tinygltf::Material& source, int number);
    std::string makeImage(int texture, const std::string& title);

    const Model& mModel;
    Pictures& mPictures;
    y3d::Manager& mManager;
    Losses& mLosses;
    Names mNames;
    std::map<int, Made> mMade;
    std::map<std::string, std::string> mImages; // names by file name
};

} // namespace gltf
