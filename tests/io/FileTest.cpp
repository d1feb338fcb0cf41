#include "FCurveLib/File.h"

#include "FCurveLib/FileStream.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <filesystem>
#include <string>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

using namespace VEM_FN::FCurveLib;
namespace fs = std::filesystem;

namespace {

class FileTest : public testing::Test {
protected:
    TempFolder m_folder;
    std::string m_missing = m_folder.file("missing");
    std::string m_path = m_folder.file("file");

    FileTest() { writeWholeFile(m_path, "abcdefgh"); }
};

// What File and FileStream have in common.
template<class Kind>
class Opening : public FileTest {};
using Kinds = testing::Types<File, FileStream>;
TYPED_TEST_SUITE(Opening, Kinds);

template<class Kind>
std::string read(Kind& file, int count) {
    std::string bytes(static_cast<std::size_t>(count), '\0');
    file.readData(bytes.data(), count);
    return bytes;
}

} // namespace

TYPED_TEST(Opening, DependsOnAccessAndFlags) {
    using Kind = TypeParam;
    const char* const path = this->m_path.c_str();
    const char* const missing = this->m_missing.c_str();
    EXPECT_THROW(Kind(missing, Kind::Read, 0), File::FileDoesntExist);
    EXPECT_THROW(Kind(missing, Kind::Read, Kind::Exclusive), File::FileDoesntExist);
    EXPECT_THROW(Kind((this->m_missing + "/file").c_str(), Kind::Read), File::FileDoesntExist);
    EXPECT_THROW(Kind(path, Kind::Read, Kind::Create | Kind::Exclusive), File::FileExists);
    EXPECT_NO_THROW(Kind(path, Kind::Read, Kind::Exclusive)) << "nothing without Create";
    EXPECT_THROW(Kind(path, Kind::Read, Kind::Truncate), File::AccessError);
    EXPECT_THROW(Kind(nullptr), File::FileDoesntExist);
    EXPECT_THROW(Kind(this->m_folder.path().c_str(), Kind::Write), File::CantOpen) << "a directory";
    EXPECT_EQ(readWholeFile(path), "abcdefgh");

    EXPECT_THROW(Kind(missing, Kind::Read, Kind::Create | Kind::Exclusive | Kind::Truncate), File::AccessError);
    EXPECT_FALSE(fs::exists(missing)) << "what Exclusive made goes with the exception";
    Kind created(missing);
    EXPECT_EQ(created.getAccess(), Kind::ReadWrite);
    EXPECT_EQ(created.getOpenFlags(), 1u);
    EXPECT_STREQ(created.getPathname(), missing);
    struct stat status;
    ASSERT_EQ(::stat(missing, &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
    fs::remove(missing);
    Kind reader(missing, Kind::Read);
    EXPECT_TRUE(fs::exists(missing)) << "made, for reading too";

    Kind odd(path, static_cast<typename Kind::Access>(3), 0xF0);
    EXPECT_EQ(odd.getAccess(), Kind::Read);
    EXPECT_EQ(odd.getOpenFlags(), 0u);
}

TYPED_TEST(Opening, EmptiesAFileByTruncateOnly) {
    using Kind = TypeParam;
    const char* const path = this->m_path.c_str();
    { Kind file(path, Kind::Write); }
    EXPECT_EQ(readWholeFile(path), "abcdefgh");
    Kind(path, Kind::Write, Kind::Create).writeData("XY", 2);
    EXPECT_EQ(readWholeFile(path), "XYcdefgh");
    Kind(path, Kind::ReadWrite, Kind::Truncate).writeData("new", 3);
    EXPECT_EQ(readWholeFile(path), "new");
}

TYPED_TEST(Opening, WithoutANameMakesATemporaryFile) {
    const fs::path before = fs::current_path();
    fs::current_path(this->m_folder.path());
    std::string name;
    {
        TypeParam file;
        name = file.getPathname();
        EXPECT_EQ(name.size(), 9u);
        EXPECT_EQ(name.substr(0, 3), "tmp");
        EXPECT_EQ(file.getAccess(), TypeParam::ReadWrite);
        EXPECT_EQ(file.getOpenFlags(), 3u);
        file.writeData("abc", 3);
        file.setPosition(1);
        EXPECT_EQ(read(file, 2), "bc");
        EXPECT_TRUE(fs::exists(name));
    }
    EXPECT_FALSE(fs::exists(name));
    fs::current_path(before);
}

TEST_F(FileTest, TransfersAskForTheAccessFirst) {
    char byte = 0;
    File writer(m_path.c_str(), File::Write);
    File reader(m_path.c_str(), File::Read);
    for (const int count : {-1, 0, 1}) {
        EXPECT_THROW(writer.readData(&byte, count), File::AccessError) << count;
        EXPECT_THROW(reader.writeData(&byte, count), File::AccessError) << count;
    }
    EXPECT_NO_THROW(reader.readData(&byte, -1)) << "below 1 there is nothing to read";
    EXPECT_THROW(writer.writeData(&byte, -1), File::EndOfFile);
    EXPECT_EQ(writer.getPosition(), 0);
}

TEST_F(FileTest, TheSizeIsThatOfThePathAndOfWhatTheSystemHas) {
    File file(m_path.c_str());
    file.setPosition(8);
    file.writeData("ijk", 3);
    EXPECT_EQ(file.getPosition(), 11);
    EXPECT_EQ(file.getSize(), 8) << "three bytes are held back";
    EXPECT_TRUE(file.flush());
    EXPECT_EQ(file.getSize(), 11);
    file.writeData("l", 1);
    file.setPosition(12);
    EXPECT_EQ(file.getSize(), 12) << "a seek flushes before it asks";
    EXPECT_THROW(file.setPosition(13), File::EndOfFile);
    EXPECT_THROW(file.setPosition(-1), Exception);
    EXPECT_EQ(file.getPosition(), 12);

    fs::rename(m_path, m_missing);
    EXPECT_THROW(file.getSize(), Exception);
    EXPECT_THROW(file.setPosition(0), Exception);
    EXPECT_EQ(file.getPosition(), 12);
}

TEST_F(FileTest, HoldsAtMost2GiB) {
    constexpr auto kMost = static_cast<std::uintmax_t>(INT_MAX);
    std::error_code refused;
    fs::resize_file(m_path, kMost, refused);
    if (refused) GTEST_SKIP() << "no sparse files here";
    {
        File file(m_path.c_str());
        EXPECT_EQ(file.getSize(), INT_MAX);
        file.setPosition(INT_MAX - 2);
        char two[2] = {'x', 'y'};
        EXPECT_THROW(file.writeData("abc", 3), File::EndOfFile);
        volatile int tooMany = INT_MAX; // a constant would have the compiler warn of the copy that is refused
        EXPECT_THROW(file.writeData("abc", tooMany), File::EndOfFile);
        file.writeData("a", 1);
        EXPECT_TRUE(file.flush());
        EXPECT_THROW(file.writeData("bc", 2), File::EndOfFile);
        file.writeData("b", 1);
        EXPECT_EQ(file.getPosition(), INT_MAX);
        EXPECT_THROW(file.writeData("c", 1), File::EndOfFile);
        EXPECT_NO_THROW(file.writeData("c", 0));
        EXPECT_THROW(file.readData(two, 1), File::EndOfFile);
        file.setPosition(INT_MAX - 2);
        EXPECT_EQ(read(file, 2), "ab");
    }
    EXPECT_EQ(fs::file_size(m_path), kMost);

    fs::resize_file(m_path, kMost + 1000);
    File file(m_path.c_str());
    EXPECT_THROW(file.getSize(), Exception);
    EXPECT_THROW(file.setPosition(5), Exception);
    EXPECT_EQ(read(file, 3), "abc");
    EXPECT_EQ(file.getPosition(), 3);
}

TEST_F(FileTest, APipeHasNoPositionsAndIsNotReadAhead) {
    ASSERT_EQ(::mkfifo(m_missing.c_str(), 0600), 0);
    std::string got;
    std::atomic<bool> gotSome{false};
    std::thread reader([&] {
        File file(m_missing.c_str(), File::Read, 0);
        EXPECT_THROW(file.getPosition(), Exception);
        got = read(file, 3);
        gotSome = true;
        std::string rest(100000, '\0');
        EXPECT_THROW(file.readData(rest.data(), 100000), File::EndOfFile);
        got += rest.substr(0, 3);
    });
    {
        File file(m_missing.c_str(), File::Write, 0);
        file.writeData("abcdef", 6);
        EXPECT_TRUE(file.flush());
        EXPECT_THROW(file.setPosition(0), Exception);
        for (int wait = 0; wait < 60000 && !gotSome; ++wait) ::usleep(1000);
        EXPECT_TRUE(gotSome) << "it waits for bytes that nobody asked for";
    }
    reader.join();
    EXPECT_EQ(got, "abcdef");
}
