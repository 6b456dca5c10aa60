#pragma once

#include <map>
#include <string>
#include <vector>

#include "losses.h"
#include "model.h"
#include "names.h"

namespace gltf
{

// The picture files that a scene needs, made of the images of a model in a form that the player reads: 8-bit PNG with
// three or four channels, or the JPEG file as it is.
class Pictures
{
public:
    struct File
    {
        std::string name;
        std::vector<unsigned char> bytes;
    };

    // `folder` is where the model's files lie, empty for none. The model must outlive this.
    Pictures(const Model& model, const std::string& folder, Losses& losses)
        : mModel(model), mFolder(folder), mLosses(losses)
    {
    }

    // The file name of an image, which is made on the first call; empty, and told, when that is not possible.
    const std::string& getFile(int image);

    const std::vector<File>& getFiles() const { return mFiles; }

private:
    std::string makeFile(int image);

    const Model& mModel;
    const std::string mFolder;
    Losses& mLosses;
    Names mNames;
    std::map<int, std::string> mFileNames;
    std::vector<File> mFiles;
    std::size_t mNumBytes = 0;
};

} // namespace gltf
