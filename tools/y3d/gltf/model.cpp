#include "model.h"

#include "text.h"
#include "y3d_exception.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace gltf
{

namespace
{

// Bounds on what a file may ask for, far above what a show can use.
const std::size_t MAX_FILE = std::size_t(1) << 30;        // bytes of one file
const std::size_t MAX_BUFFERS = std::size_t(1) << 30;     // bytes of all buffers together
const std::size_t MAX_DESCRIPTION = std::size_t(1) << 26; // bytes of the JSON
const int MAX_NESTING = 100;                              // brackets in it

const std::size_t GLB_HEADER = 12, CHUNK_HEADER = 8;

std::size_t readWord(const std::vector<unsigned char>& bytes, std::size_t offset)
{
    return bytes[offset] | bytes[offset + 1] << 8 | bytes[offset + 2] << 16 | std::size_t(bytes[offset + 3]) << 24;
}

bool isBinary(const std::vector<unsigned char>& bytes)
{
    return bytes.size() >= 4 && std::memcmp(bytes.data(), "glTF", 4) == 0;
}

// A file below a folder by a relative name, as it is on the disk. Throws for what leads out of there.
std::filesystem::path resolve(const std::string& folder, const std::string& name)
{
    if (folder.empty()) throw y3d::Exception("%s lies outside the file", quoted(name).c_str());
    const std::filesystem::path root = std::filesystem::canonical(folder);
    std::error_code error;
    const std::filesystem::path path = std::filesystem::canonical(root / name, error);
    if (error) throw y3d::Exception("%s: %s", quoted(name).c_str(), error.message().c_str());
    if (std::mismatch(root.begin(), root.end(), path.begin(), path.end()).first != root.end())
        throw y3d::Exception("%s lies outside the folder of the file", quoted(name).c_str());
    if (!std::filesystem::is_regular_file(path)) throw y3d::Exception("%s is no file", quoted(name).c_str());
    if (std::filesystem::file_size(path) > MAX_FILE) throw y3d::Exception("%s is too large", quoted(name).c_str());
    return path;
}

std::vector<unsigned char> readFile(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    if (!stream && !stream.eof()) throw y3d::Exception("%s: %s", path.c_str(), std::strerror(errno));
    return bytes;
}

// How the parser comes to files. It takes false for a failure, so the reason is kept here.
struct Files
{
    std::string folder;
    std::size_t numBytes = 0; // read so far
    std::string trouble;

    static bool exists(const std::string&, void*) { return true; }

    static std::string expand(const std::string& name, void*) { return name; }

    static bool write(std::string*, const std::string&, const std::vector<unsigned char>&, void*) { return false; }

    static bool getSize(std::size_t* size, std::string*, const std::string& name, void* self)
    {
        Files& files = *static_cast<Files*>(self);
        try
        {
            *size = std::filesystem::file_size(resolve(files.folder, name));
            return true;
        }
        catch (const std::exception& exception)
        {
            files.trouble = exception.what();
            return false;
        }
    }

    static bool read(std::vector<unsigned char>* bytes, std::string*, const std::string& name, void* self)
    {
        Files& files = *static_cast<Files*>(self);
        try
        {
            *bytes = readFile(resolve(files.folder, name));
            files.numBytes += bytes->size();
            if (files.numBytes > MAX_BUFFERS) throw y3d::Exception("its files are too large together");
            return true;
        }
        catch (const std::exception& exception)
        {
            files.trouble = exception.what();
            return false;
        }
    }
};

// Later versions of the parser ask for the size of a file first, and take no callbacks without that one.
template <class Callbacks>
auto setSizeCallback(Callbacks* callbacks, int) -> decltype(callbacks->GetFileSizeInBytes, void())
{
    callbacks->GetFileSizeInBytes = Files::getSize;
}
template <class Callbacks> void setSizeCallback(Callbacks*, long) {}

// Pictures stay as they are. Those in buffers and files are not even copied: many images may name one.
bool takePicture(tinygltf::Image* image, const int, std::string*, std::string*, int, int, const unsigned char* bytes,
                 int size, void*)
{
    if (image->bufferView < 0 && image->uri.empty()) image->image.assign(bytes, bytes + size);
    return true;
}

// The parsers go down by recursion.
void checkNesting(const char* text, std::size_t size)
{
    int depth = 0;
    bool isText = false;
    for (std::size_t i = 0; i < size; ++i)
    {
        if (isText)
        {
            if (text[i] == '\\')
                ++i;
            else if (text[i] == '"')
                isText = false;
        }
        else if (text[i] == '"')
            isText = true;
        else if (text[i] == '[' || text[i] == '{')
        {
            if (++depth > MAX_NESTING) throw y3d::Exception("its description is nested too deep");
        }
        else if (text[i] == ']' || text[i] == '}')
            --depth;
    }
}

// Many small entries could each ask for a copy of one large block.
void checkBuffers(const nlohmann::json& description)
{
    if (!description.is_object()) throw y3d::Exception("its description is no JSON object");
    const auto buffers = description.find("buffers");
    if (buffers == description.end() || !buffers->is_array()) return;
    double total = 0;
    for (const auto& buffer : *buffers)
    {
        if (!buffer.is_object() || !buffer.contains("byteLength") || !buffer["byteLength"].is_number())
            throw y3d::Exception("a buffer has no length");
        const double length = buffer["byteLength"].get<double>();
        if (!(length >= 1)) throw y3d::Exception("a buffer is empty");
        total += length;
    }
    if (total > static_cast<double>(MAX_BUFFERS)) throw y3d::Exception("its buffers are too large");
}

// The parser passes over channels that move no node.
void addPropertyChannels(const nlohmann::json& description, Model* model)
{
    const auto animations = description.find("animations");
    if (animations == description.end() || !animations->is_array()) return;
    const nlohmann::json::json_pointer place("/target/extensions/KHR_animation_pointer/pointer");
    for (std::size_t i = 0; i < std::min(animations->size(), model->animations.size()); ++i)
    {
        const nlohmann::json& animation = (*animations)[i];
        if (!animation.is_object() || !animation.contains("channels")) continue;
        for (const nlohmann::json& channel : animation["channels"])
        {
            if (!channel.is_object() || !channel.contains(place) || !channel[place].is_string() ||
                !channel.contains("sampler") || !channel["sampler"].is_number_integer())
                continue;
            tinygltf::AnimationChannel added;
            added.sampler = channel["sampler"].get<int>();
            added.target_path = "pointer";
            added.target_extensions["KHR_animation_pointer"] = tinygltf::Value(
                tinygltf::Value::Object{{"pointer", tinygltf::Value(channel[place].get<std::string>())}});
            model->animations[i].channels.push_back(added);
        }
    }
}

void checkExtensions(const Model& model)
{
    const char* const known[] = {"KHR_lights_punctual",   "KHR_materials_unlit",   "KHR_materials_emissive_strength",
                                 "KHR_texture_transform", "KHR_mesh_quantization", "KHR_animation_pointer"};
    for (const std::string& name : model.extensionsRequired)
    {
        if (std::find(std::begin(known), std::end(known), name) == std::end(known))
            throw y3d::Exception("needs the extension %s, which is not known here", quoted(name).c_str());
    }
}

// The name that a URI stands for.
std::string decoded(const std::string& uri)
{
    std::string name;
    for (std::size_t i = 0; i < uri.size(); ++i)
    {
        const std::string digits = uri.substr(i + 1, 2);
        if (uri[i] == '%' && digits.size() == 2 && std::isxdigit(static_cast<unsigned char>(digits[0])) &&
            std::isxdigit(static_cast<unsigned char>(digits[1])))
        {
            name += static_cast<char>(std::stoi(digits, nullptr, 16));
            i += 2;
        }
        else
            name += uri[i];
    }
    return name;
}

std::string firstLine(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

Model parse(const std::vector<unsigned char>& bytes, const std::string& folder)
{
    if (bytes.size() > MAX_FILE) throw y3d::Exception("is too large");
    const bool binary = isBinary(bytes);
    std::size_t begin = 0, size = bytes.size();
    if (binary)
    {
        begin = GLB_HEADER + CHUNK_HEADER;
        if (bytes.size() < begin) throw y3d::Exception("ends too early");
        size = readWord(bytes, GLB_HEADER);
        if (size > bytes.size() - begin) throw y3d::Exception("ends too early");
    }
    if (size > MAX_DESCRIPTION) throw y3d::Exception("its description is too large");
    const char* text = reinterpret_cast<const char*>(bytes.data()) + begin;
    checkNesting(text, size);
    const nlohmann::json description = nlohmann::json::parse(text, text + size);
    checkBuffers(description);

    Files files;
    files.folder = folder;
    tinygltf::TinyGLTF loader;
    loader.SetImageLoader(takePicture, nullptr);
    tinygltf::FsCallbacks callbacks = {};
    callbacks.FileExists = Files::exists;
    callbacks.ExpandFilePath = Files::expand;
    callbacks.ReadWholeFile = Files::read;
    callbacks.WriteWholeFile = Files::write;
    callbacks.user_data = &files;
    setSizeCallback(&callbacks, 0);
    loader.SetFsCallbacks(callbacks);
    Model model;
    std::string error, warning;
    const unsigned int length = static_cast<unsigned int>(bytes.size());
    const bool read = binary ? loader.LoadBinaryFromMemory(&model, &error, &warning, bytes.data(), length, "")
                             : loader.LoadASCIIFromString(&model, &error, &warning, text, length, "");
    if (!read && !files.trouble.empty()) throw y3d::Exception("%s", files.trouble.c_str());
    if (!read && error.empty()) error = warning.empty() ? "is no glTF file" : warning;
    if (!read) throw y3d::Exception("%s", firstLine(error).c_str());
    checkExtensions(model);
    addPropertyChannels(description, &model);
    return model;
}

} // namespace

std::string folderOf(const std::string& filename)
{
    const std::string folder = std::filesystem::path(filename).parent_path();
    return folder.empty() ? "." : folder;
}

Model readModel(const std::vector<unsigned char>& bytes, const std::string& name, const std::string& folder)
{
    try
    {
        return parse(bytes, folder);
    }
    catch (const nlohmann::json::parse_error&)
    {
        throw y3d::Exception("%s: is no glTF file", name.c_str());
    }
    catch (const std::exception& exception)
    {
        throw y3d::Exception("%s: %s", name.c_str(), exception.what());
    }
}

Model readModel(const std::string& filename)
{
    std::error_code error;
    const auto size = std::filesystem::file_size(filename, error);
    if (error) throw y3d::Exception("%s: %s", filename.c_str(), error.message().c_str());
    if (size > MAX_FILE) throw y3d::Exception("%s: is too large", filename.c_str());
    return readModel(readFile(filename), filename, folderOf(filename));
}

std::vector<unsigned char> readPicture(const Model& model, int index, const std::string& folder)
{
    const tinygltf::Image& image = model.images.at(index);
    if (image.bufferView < 0) return image.uri.empty() ? image.image : readFile(resolve(folder, decoded(image.uri)));

    const tinygltf::BufferView& view = model.bufferViews.at(image.bufferView);
    const std::vector<unsigned char>& data = model.buffers.at(view.buffer).data;
    if (view.byteOffset > data.size() || view.byteLength > data.size() - view.byteOffset)
        throw y3d::Exception("lies outside its buffer");
    return {data.begin() + view.byteOffset, data.begin() + view.byteOffset + view.byteLength};
}

} // namespace gltf
