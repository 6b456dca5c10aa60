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
    // The path of a directory, "<zip>", or "" for a name that is refused.
    const std::vector<std::pair<std::string, std::string>> cases = {{"../", "../"},
                                                                    {"../data/", "../data/"},
                                                                    {"data", "data"},
                                                                    {"a.b/data", "a.b/data"},
                                                                    {"a.b\\", "a.b\\"},
                                                                    {"..", ".."},
                                                                    {"zip://../show.sdr", "<zip>"},
                                                                    {"Zip://x", "<zip>"},
                                                                    {"ZIP://x.tar", "<zip>"},
                                                                    {"", ""},
                                                                    {"show.zip", "<zip>"},
                                                                    {"show.ZIP", "<zip>"},
                                                                    {"tar://x", ""},
                                                                    {"tar://x.zip", ""},
                                                                    {"../show.sdr", ""},
                                                                    {"/home/a.b", ""},
                                                                    {"://x", "x"},
                                                                    {"zip://", "zip://"},
                                                                    {"/zip://x", "/zip://x"}};
    for (const auto& [name, expected] : cases)
    {
        SCOPED_TRACE(name);
        ArchiveManager manager;
        ASSERT_EQ(expected.empty() ? -1 : 0, manager.addArchive(name));
        ASSERT_EQ(expected.empty() ? 0u : 1u, manager.mArchives.size());
        if (expected.empty()) continue;
        const auto* directory = dynamic_cast<AM::ArchiveDirectory*>(manager.mArchives[0]);
        EXPECT_EQ(expected, directory ? directory->mPath : "<zip>");
    }
}

TEST(ArchiveManager, readsFromTheFirstArchiveThatHasTheFile)
{
    TemporaryFolder first, second;
    ArchiveManager manager;
    EXPECT_TRUE(manager.readFile("both", -1).isNull());
    EXPECT_FALSE(manager.writeFile(toFile("x", hello), -1));
    manager.addArchive(first.path);
    manager.addArchive(second.path);
    first.write("both", hello);
    second.write("both", toBytes("second"));
    second.write("empty", Bytes());

    EXPECT_EQ(hello, toBytes(manager.readFile("both", -1)));
    EXPECT_EQ("both", manager.readFile("both", -1)->filename);
    EXPECT_EQ(toBytes("second"), toBytes(manager.readFile("both", 1)));
    EXPECT_EQ(0, manager.readFile("empty", -1)->length);
    EXPECT_TRUE(manager.readFile("neither", -1).isNull());

    EXPECT_TRUE(manager.writeFile(toFile("new", hello), -1));
    EXPECT_TRUE(manager.writeFile(toFile("both", Bytes()), 1));
    EXPECT_EQ(5u, std::filesystem::file_size(first.path + "new"));
    EXPECT_EQ(0u, std::filesystem::file_size(second.path + "both"));
    EXPECT_FALSE(manager.writeFile(toFile("missing/new", hello), -1));
}

TEST(ArchiveDirectory, takesNothingButRegularFilesAndTellsWhenADiskIsFull)
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
    EXPECT_FALSE(AM::ArchiveDirectory("/dev/").write(toFile("full", hello)));
}

TEST(ArchiveDirectory, keepsWhatStoodThereUntilTheNewFileIsWhole)
{
    TemporaryFolder folder, other;
    folder.write("file", hello);
    AM::ArchiveDirectory archive(folder.path);
    {
        const FullDisk disk(4);
        EXPECT_FALSE(archive.write(toFile("file", toBytes("longer"))));
        EXPECT_FALSE(archive.write(toFile("new", hello)));
    }
    EXPECT_EQ(hello, toBytes(archive.read("file")));
    EXPECT_EQ(1u, countFiles(folder.path));

    // A link stays one, as do permissions; a name too long for a second file beside it is written all the same.
    other.write("target", hello);
    std::filesystem::permissions(other.path + "target", std::filesystem::perms(0640));
    std::filesystem::create_symlink(other.path + "target", folder.path + "link");
    std::filesystem::create_symlink(other.path + "nowhere", folder.path + "dangling");
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
    TemporaryFolder folder;
    const Bytes noise = toBytes(std::string(70000, 'n') + "end");
    folder.write("a.bin", makeZip({{"a.txt", hello}, {"sub/noise", noise, 0}, {"empty", Bytes()}, {"sub/", Bytes()}}));
    AM::ArchiveZIP zip(folder.path + "a.bin");
    for (const char* name : {"a.txt", "./a.txt", ".\\a.txt", "/a.txt", "\\a.txt", ".a.txt"})
    {
        ASSERT_FALSE(zip.read(name).isNull()) << name;
        EXPECT_EQ(hello, toBytes(zip.read(name)));
        EXPECT_EQ(name, zip.read(name)->filename);
    }
    EXPECT_EQ(noise, toBytes(zip.read("sub/noise")));
    for (const char* name : {"empty", "sub/"}) EXPECT_EQ(0, zip.read(name)->length) << name;
    for (const char* name : {"A.txt", "//a.txt", "../a.txt", "sub\\noise", "sub", "", ".", "./"})
        EXPECT_TRUE(zip.read(name).isNull()) << name;
    EXPECT_TRUE(zip.read(std::string(300, 'x')).isNull());
    EXPECT_FALSE(zip.write(toFile("a.txt", hello)));
}

TEST(ArchiveZIP, givesNoFileForAnEntryThatCannotBeTrusted)
{
    TemporaryFolder folder;
    const Bytes text = toBytes(std::string(2000, 'b'));
    const long long most = 0xfffffffe;
    folder.write("a.zip", makeZip({{"crc", text, 0, -1, -1, 1},
                                   {"method", text, 9},
                                   {"4gb", text, 8, most},
                                   {"4gb stored", text, 0, most, most},
                                   {"early", hello, 8, 300},
                                   {"good", text}}));
    ArchiveManager manager;
    EXPECT_EQ(0, manager.addArchive("zip://no/such/file"));
    EXPECT_EQ(1, manager.addArchive(folder.path + "a.zip"));
    for (const char* name : {"crc", "method", "4gb", "4gb stored"})
        EXPECT_TRUE(manager.readFile(name, -1).isNull()) << name;
    EXPECT_EQ(text, toBytes(manager.readFile("good", -1)));
    Bytes padded = hello;
    padded.resize(300); // an entry that ends early keeps the length it claims
    EXPECT_EQ(padded, toBytes(manager.readFile("early", -1)));
}

TEST(ArchiveZIP, survivesEveryPrefixAndEveryDamagedByte)
{
    TemporaryFolder folder;
    const Bytes content = toBytes("The quick brown fox jumps over the lazy dog, the lazy dog, the lazy dog.");
    const Bytes good = makeZip({{"a", content}});
    const auto read = [&](const Bytes& zip) {
        folder.write("a.zip", zip);
        return AM::ArchiveZIP(folder.path + "a.zip").read("a");
    };
    for (std::size_t i = 0; i < good.size(); ++i)
    {
        File file = read(cut(good, i));
        EXPECT_TRUE(file.isNull() || toBytes(file) == content) << i;
        for (const unsigned char value : {0x00, 0x7f, 0xff}) read(replaceBytes(good, i, {value}));
    }
}
