#include "am_testing.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "am_testXXXXXX").string();
    path = mkdtemp(name.data()) + std::string("/");
}

void TemporaryFolder::write(const std::string& name, const Bytes& bytes) const
{
    std::filesystem::remove(path + name); // faster than writing over it
    std::ofstream(path + name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

Bytes readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

Bytes toBytes(const std::string& text)
{
    return Bytes(text.begin(), text.end());
}

Bytes toBytes(const AM::File& file)
{
    return Bytes(file->data, file->data + file->length);
}

Bytes cut(const Bytes& file, std::size_t length)
{
    return Bytes(file.begin(), file.begin() + static_cast<long>(length));
}

Bytes replaceByte(Bytes file, std::size_t position, unsigned char byte)
{
    file[position] = byte;
    return file;
}

AM::File toFile(const std::string& name, const Bytes& bytes)
{
    AM::File file = new AM::FileStructure;
    file->filename = name;
    file->data = new unsigned char[bytes.size()];
    file->length = static_cast<long>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), file->data);
    return file;
}
