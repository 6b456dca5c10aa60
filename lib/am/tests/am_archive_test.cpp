#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "am_archivedirectory.h"
#include "am_archivezip.h"
#include "am_testing.h"

using AM::ArchiveManager;
using AM::File;

namespace
{
const Bytes hello = toBytes("hello");
const std::string SAMPLES = AM_FOLDER "tests/samples/";

// No file can grow longer than that while it lives, as on a disk that is full.
struct FullDisk
{
    explicit FullDisk(rlim_t length)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &old);
        const rlimit limit = {length, old.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &old); }

    rlimit old;
};

std::size_t countFiles(const std::string& folder)
{
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}
} // namespace

TEST(ArchiveManager, takesTheTypeFromTheSchemeAndThenFromTheExtension)
{
    ArchiveManager manager;
    for (const char* name : {"", "tar://x.zip", "../show.sdr", "/home/a.b"})
        EXPECT_EQ(-1, manager.addArchive(name)) << name;
    int index = 0;
    for (const char* name : {"zip://../show.sdr", "ZIP://x.tar", "show.Zip"})
    {
        EXPECT_EQ(index++, manager.addArchive(name));
        EXPECT_NE(nullptr, dynamic_cast<AM::ArchiveZIP*>(manager.mArchives.back())) << name;
    }
    for (const std::string name : {"../", "..", "a.b/data", "a.b\\", "://x", "zip://", "/zip://x"})
    {
        EXPECT_EQ(index++, manager.addArchive(name));
        const auto* directory = dynamic_cast<AM::ArchiveDirectory*>(manager.mArchives.back());
        ASSERT_NE(nullptr, directory) << name;
        EXPECT_EQ(name == "://x" ? "x" : name, directory->mPath);
    }
}

TEST(ArchiveManager, readsFromTheFirstArchiveThatHasTheFile)
{
    TemporaryFolder first, second;
    ArchiveManager manager;
    EXPECT_FALSE(manager.writeFile(toFile("x", hello), -1));
    manager.addArchive(first.path);
    manager.addArchive(second.path);
    EXPECT_TRUE(manager.writeFile(toFile("both", hello), -1));
    EXPECT_TRUE(manager.writeFile(toFile("both", Bytes()), 1));

    EXPECT_EQ(hello, toBytes(manager.readFile("both", -1)));
    EXPECT_EQ("both", manager.readFile("both", -1)->filename);
    EXPECT_EQ(Bytes(), toBytes(manager.readFile("both", 1)));
    EXPECT_TRUE(manager.readFile("neither", -1).isNull());
    EXPECT_FALSE(manager.writeFile(toFile("missing/new", hello), -1));
}

TEST(ArchiveDirectory, takesNothingButRegularFiles)
{
    TemporaryFolder folder;
    std::filesystem::create_directory(folder.path + "sub");
    mkfifo((folder.path + "pipe").c_str(), 0600);
    folder.write("sparse", hello);
    std::filesystem::resize_file(folder.path + "sparse", 0x80000000ull);
    AM::ArchiveDirectory archive(folder.path);
    for (const char* name : {"", ".", "sub", "sub/", "pipe"}) EXPECT_TRUE(archive.read(name).isNull()) << name;
    EXPECT_EQ("AM::ArchiveDirectory::read, File too long (" + folder.path + "sparse, 2147483648 bytes)",
              getError([&] { archive.read("sparse"); }));
}

TEST(ArchiveDirectory, keepsWhatStoodThereUntilTheNewFileIsWhole)
{
    TemporaryFolder folder, other;
    folder.write("file", hello);
    std::filesystem::create_symlink(other.path + "nowhere", folder.path + "dangling");
    AM::ArchiveDirectory archive(folder.path);
    {
        const FullDisk disk(4);
        EXPECT_FALSE(archive.write(toFile("file", toBytes("longer"))));
        EXPECT_FALSE(archive.write(toFile("new", hello)));
        EXPECT_FALSE(archive.write(toFile("dangling", hello))); // in place
    }
    EXPECT_EQ(hello, toBytes(archive.read("file")));
    EXPECT_EQ(2u, countFiles(folder.path));
    std::filesystem::remove(other.path + "nowhere");

    // A link stays one, as do permissions; a name too long for a second file beside it is written all the same.
    other.write("target", hello);
    std::filesystem::permissions(other.path + "target", std::filesystem::perms(0640));
    std::filesystem::create_symlink(other.path + "target", folder.path + "link");
    const std::string longName(254, 'x');
    for (const std::string& name : {std::string("link"), std::string("dangling"), longName, std::string("new")})
    {
        EXPECT_TRUE(archive.write(toFile(name, toBytes("other")))) << name;
        EXPECT_EQ(toBytes("other"), toBytes(archive.read(name))) << name;
        EXPECT_EQ(name == "link" || name == "dangling", std::filesystem::is_symlink(folder.path + name)) << name;
    }
    EXPECT_EQ(std::filesystem::perms(0640), std::filesystem::status(other.path + "target").permissions());
    EXPECT_EQ(std::filesystem::status(folder.path + "file").permissions(),
              std::filesystem::status(folder.path + "new").permissions());
    EXPECT_EQ(5u + 2u, countFiles(folder.path) + countFiles(other.path));
}

TEST(ArchiveZIP, readsEntriesUnderTheirNamesWithOrWithoutAPrefix)
{
    AM::ArchiveZIP zip(SAMPLES + "good.zip");
    for (const char* name : {"a.txt", "./a.txt", ".\\a.txt", "/a.txt", "\\a.txt", ".a.txt", "stored"})
    {
        ASSERT_FALSE(zip.read(name).isNull()) << name;
        EXPECT_EQ(hello, toBytes(zip.read(name)));
        EXPECT_EQ(name, zip.read(name)->filename);
    }
    EXPECT_EQ(Bytes(70000, 'n'), toBytes(zip.read("sub/large")));
    EXPECT_EQ(0, zip.read("sub/")->length);
    for (const char* name : {"A.txt", "//a.txt", "../a.txt", "sub\\large", "sub", "", ".", "./"})
        EXPECT_TRUE(zip.read(name).isNull()) << name;
    EXPECT_TRUE(zip.read(std::string(300, 'x')).isNull());
    EXPECT_FALSE(zip.write(toFile("a.txt", hello)));
}

// A wrong checksum, an unknown method, 4 GB in a few bytes; an entry that ends early keeps the length it claims.
TEST(ArchiveZIP, givesNoFileForAnEntryThatCannotBeTrusted)
{
    ArchiveManager manager;
    EXPECT_EQ(0, manager.addArchive("zip://no/such/file"));
    EXPECT_EQ(1, manager.addArchive(SAMPLES + "lies.zip"));
    for (const char* name : {"crc", "method", "4gb", "4gb stored"})
        EXPECT_TRUE(manager.readFile(name, -1).isNull()) << name;
    EXPECT_EQ(Bytes(2000, 'b'), toBytes(manager.readFile("good", -1)));
    Bytes padded = hello;
    padded.resize(300);
    EXPECT_EQ(padded, toBytes(manager.readFile("early", -1)));
}

TEST(ArchiveZIP, survivesEveryPrefixAndEveryDamagedByte)
{
    TemporaryFolder folder;
    const Bytes good = readFile(SAMPLES + "good.zip");
    const auto read = [&](const Bytes& zip) {
        folder.write("a.zip", zip);
        return AM::ArchiveZIP(folder.path + "a.zip").read("a.txt");
    };
    for (std::size_t i = 0; i < good.size(); ++i)
    {
        File file = read(cut(good, i));
        EXPECT_TRUE(file.isNull() || toBytes(file) == hello) << i;
        for (const unsigned char value : {0x00, 0x7f, 0xff}) read(replaceByte(good, i, value));
    }
}
