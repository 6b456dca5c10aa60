#include <sys/stat.h>

#include <filesystem>
#include <memory>

#include "am_archivedirectory.h"
#include "am_archivezip.h"
#include "am_testing.h"

using AM::ArchiveManager;
using AM::File;

namespace
{
const Bytes hello = toBytes("hello");

}

TEST(ArchiveManager, takesTheTypeFromTheSchemeAndThenFromTheExtension)
{
    const char* const zip = "<zip>";
    const char* const refused = nullptr;
    struct { const char* name; const char* expected; } const cases[] = {
        {"../", "../"}, {"../data/", "../data/"}, {"data", "data"}, {"a.b/data", "a.b/data"}, {"a.b\\", "a.b\\"},
        {"..", ".."}, {"zip://../show.sdr", zip}, {"Zip://x", zip}, {"ZIP://x.tar", zip}, {"show.zip", zip},
        {"show.ZIP", zip}, {"", refused}, {"tar://x", refused}, {"tar://x.zip", refused}, {"../show.sdr", refused},
        {"/home/a.b", refused},
        {"://x", "x"},            // an empty scheme leaves the type to the extension
        {"zip://", "zip://"},     // nothing behind the scheme
        {"/zip://x", "/zip://x"}, // a separator in front of it
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.name);
        ArchiveManager manager;
        const int index = manager.addArchive(test.name);
        ASSERT_EQ(test.expected ? 0 : -1, index);
        ASSERT_EQ(test.expected ? 1u : 0u, manager.mArchives.size());
        if (!test.expected)
            continue;
        const auto* directory = dynamic_cast<AM::ArchiveDirectory*>(manager.mArchives[0]);
        EXPECT_EQ(test.expected, directory ? directory->mPath : zip);
    }
}

TEST(ArchiveManager, readsFromTheFirstArchiveThatHasTheFile)
{
    TemporaryFolder first, second;
    ArchiveManager manager;
    EXPECT_TRUE(manager.readFile("both", -1).isNull());
    EXPECT_FALSE(manager.writeFile(toFile("x", hello), -1));
    manager.addArchive(first.path());
    manager.addArchive(second.path());
    first.write("both", hello);
    second.write("both", toBytes("second"));
    second.write("other", Bytes());

    File file = manager.readFile("both", -1);
    EXPECT_EQ(hello, toBytes(file));
    EXPECT_EQ("both", file->filename);
    EXPECT_EQ(toBytes("second"), toBytes(manager.readFile("both", 1)));
    EXPECT_EQ(0, manager.readFile("other", -1)->length);
    EXPECT_TRUE(manager.readFile("neither", -1).isNull());

    EXPECT_TRUE(manager.writeFile(toFile("new", hello), -1));
    EXPECT_TRUE(manager.writeFile(toFile("both", Bytes()), 1));
    EXPECT_EQ(5u, std::filesystem::file_size(first.path() + "new"));
    EXPECT_EQ(0u, std::filesystem::file_size(second.path() + "both"));
    EXPECT_FALSE(manager.writeFile(toFile("missing/new", hello), -1));
}

TEST(ArchiveDirectory, takesNothingButRegularFilesAndTellsWhenADiskIsFull)
{
    TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() + "sub");
    mkfifo((folder.path() + "pipe").c_str(), 0600);
    folder.write("sparse", hello);
    std::filesystem::resize_file(folder.path() + "sparse", 0x80000000ull);
    AM::ArchiveDirectory archive(folder.path());
    for (const char* name : {"", ".", "sub", "sub/", "pipe", "sub/../nothing"})
        EXPECT_TRUE(archive.read(name).isNull()) << name;
    EXPECT_EQ("AM::ArchiveDirectory::read, File too long (" + folder.path() + "sparse, 2147483648 bytes)",
              getError([&] { archive.read("sparse"); }));
    EXPECT_FALSE(AM::ArchiveDirectory("/dev/").write(toFile("full", hello))); // a disk without room
}

TEST(ArchiveZIP, readsEntriesUnderTheirNamesWithOrWithoutAPrefix)
{
    const Bytes noise = toBytes(std::string(70000, 'n') + "end");
    TemporaryFolder folder;
    folder.write("data.bin", makeZip({{"a.txt", hello}, {"sub/noise", noise, 0}, {"empty", Bytes()}, {"sub/", Bytes(), 0}}));
    AM::ArchiveZIP zip(folder.path() + "data.bin");
    struct { const char* name; const Bytes* expected; } const cases[] = {
        {"a.txt", &hello}, {"./a.txt", &hello}, {".\\a.txt", &hello}, {"/a.txt", &hello}, {"\\a.txt", &hello},
        {".a.txt", &hello}, {"sub/noise", &noise}, {"A.txt", nullptr}, {"//a.txt", nullptr}, {"../a.txt", nullptr},
        {"sub\\noise", nullptr}, {"sub", nullptr}, {"sub/", nullptr}, {"", nullptr}, {".", nullptr}, {"./", nullptr},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.name);
        File file = zip.read(test.name);
        ASSERT_EQ(test.expected == nullptr, file.isNull());
        if (!test.expected)
            continue;
        EXPECT_EQ(*test.expected, toBytes(file));
        EXPECT_EQ(test.name, file->filename);
    }
    EXPECT_EQ(0, zip.read("empty")->length);
    EXPECT_TRUE(zip.read(std::string(300, 'x')).isNull());
    EXPECT_FALSE(zip.write(toFile("a.txt", hello)));
}

TEST(ArchiveZIP, givesNoFileForAnEntryThatCannotBeTrusted)
{
    const Bytes text = toBytes(std::string(2000, 'b'));
    TemporaryFolder folder;
    folder.write("data.bin", makeZip({{"crc", text, 0, -1, -1, 1}, {"method", text, 9}, {"4gb", text, 8, 0xfffffffe},
                                      {"4gb stored", text, 0, 0xfffffffe, 0xfffffffe}, {"early", hello, 8, 300},
                                      {"good", text}}));
    AM::ArchiveZIP zip(folder.path() + "data.bin");
    for (const char* name : {"crc", "method", "4gb", "4gb stored"})
        EXPECT_TRUE(zip.read(name).isNull()) << name;
    EXPECT_EQ(text, toBytes(zip.read("good")));

    // An entry that ends early keeps the length it claims.
    Bytes padded = hello;
    padded.resize(300);
    EXPECT_EQ(padded, toBytes(zip.read("early")));

    ArchiveManager missing;
    EXPECT_EQ(0, missing.addArchive("zip://no/such/file"));
    EXPECT_TRUE(missing.readFile("good", -1).isNull());
}

TEST(ArchiveZIP, survivesEveryPrefixAndEveryDamagedByte)
{
    const Bytes content = toBytes("The quick brown fox jumps over the lazy dog, the lazy dog, the lazy dog.");
    const Bytes good = makeZip({{"a", content}});
    TemporaryFolder folder;
    const auto read = [&](const Bytes& zip)
    {
        folder.write("a.zip", zip);
        return AM::ArchiveZIP(folder.path() + "a.zip").read("a");
    };
    for (std::size_t i = 0; i < good.size(); ++i)
    {
        File file = read(Bytes(good.begin(), good.begin() + static_cast<long>(i)));
        EXPECT_TRUE(file.isNull() || toBytes(file) == content) << i;
        for (const int mask : {0x01, 0xff})
        {
            Bytes damaged = good;
            damaged[i] = static_cast<unsigned char>(damaged[i] ^ mask);
            read(damaged);
        }
    }
}
