#pragma once

#include <string>
#include <vector>

#include <tiny_gltf.h>

namespace gltf
{

using Model = tinygltf::Model;

// Reads a glTF or GLB file with the buffers that it names. Only files in its own folder and below are touched, and no
// picture is decoded: one out of a data URI lies in the image's bytes as it came, for the others see readPicture.
// Throws y3d::Exception with the name and the trouble.
Model readModel(const std::string& filename);

// The same for a file in memory. `folder` is where its buffers lie; when it is empty, none but its own are read.
Model readModel(const std::vector<unsigned char>& bytes, const std::string& name, const std::string& folder);

// The bytes of a picture: embedded ones, or those of a file in `folder`. Throws y3d::Exception.
std::vector<unsigned char> readPicture(const Model& model, int image, const std::string& folder);

// The folder of a file, "." where it has none.
std::string folderOf(const std::string& filename);

} // namespace gltf
