#include "FCurveLib/FileReplacement.h"
#include "FCurveLib/LoadFile.h"

#include "support/StreamOf.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

using namespace VEM_FN::FCurveLib;
namespace fs = std::filesystem;

namespace {

class FileReplacementTest : public testing::Test {
protected:
    TempFolder m_folder;

    std::string at(const std::string& name) const { return m_folder.file(name); }

    static void replace(const std::string& path, const std::string& bytes) {
        FileReplacement file(path.c_str());
        file.getStream().writeData(bytes.data(), static_cast<int>(bytes.size()));
        file.finish();
    }

    // "code content path" of the error that replacing raises.
    std::string refusal(const std::string& path) const {
        try {
            replace(path, "new");
            return "none";
        } catch (const SaveError& error) {
            std::string said = error.path();
            if (const auto place = said.find(m_folder.path().string()); place != std::string::npos)
                said.erase(place, m_folder.path().string().size() + 1);
            static const char* const contents[] = {"nothing", "old", "new", "part"};
            return std::to_string(error.code()) + ' ' + contents[error.content()] + ' ' + said;
        }
    }
};

using Contents = std::set<std::string>;

} // namespace

TEST_F(FileReplacementTest, WhatIsSavedTakesTheOldFilesPlaceAtTheEndOnly) {
    for (const bool existed : {false, true}) {
        const std::string path = at("a");
        const Contents before = existed ? Contents{"a=one", "a.tmp=left"} : Contents{"a.tmp=left"};
        writeWholeFile(at("a.tmp"), "left");
        {
            FileReplacement abandoned(path.c_str());
            abandoned.getStream().writeData("half", 4);
            abandoned.sync();
        }
        EXPECT_EQ(m_folder.contents(), before);
        FileReplacement file(path.c_str());
        FileReplacement other(path.c_str());
        file.getStream().writeData("one", 3);
        other.getStream().writeData("two", 3);
        other.finish();
        EXPECT_EQ(readWholeFile(path), "two");
        file.finish();
        file.finish(); // does nothing
        EXPECT_THROW(file.getStream().writeData("x", 1), Stream::StreamException);
        EXPECT_EQ(m_folder.contents(), (Contents{"a=one", "a.tmp=left"}));
    }
}

TEST_F(FileReplacementTest, LinksLeadToWhatWasSaved) {
    fs::create_directories(at("sub/deep"));
    const struct {
        const char* link; // to
        const char* target;
        const char* file; // is this one
    } rows[] = {{"plain", "one", "one"},
                {"again", "plain", "one"},
                {"sub/up", "../two", "two"},
                {"down", "sub/up", "two"},
                {"absolute", nullptr, "sub/deep/three"},
                {"folder", "sub/deep", nullptr}};
    for (const auto& row : rows) fs::create_symlink(row.target ? row.target : at(row.file), at(row.link));
    for (const bool dangles : {true, false}) { // at first, no link leads anywhere
        for (const auto& row : rows) {
            if (!row.file) continue;
            if (dangles) fs::remove(at(row.file));
            const FileReplacement unfinished(at(row.link).c_str());
            EXPECT_TRUE(
                fs::equivalent(fs::path(unfinished.getPath()).parent_path(), fs::path(at(row.file)).parent_path()));
            replace(at(row.link), row.link);
            EXPECT_TRUE(fs::is_symlink(at(row.link)));
            EXPECT_FALSE(fs::is_symlink(at(row.file)));
            EXPECT_EQ(readWholeFile(at(row.file)), row.link);
        }
    }
    replace(at("folder/four"), "4"); // a link on the way
    EXPECT_EQ(readWholeFile(at("sub/deep/four")), "4");
}

TEST_F(FileReplacementTest, WhatCannotBeReplacedStays) {
    fs::create_directory(at("folder"));
    fs::create_symlink("loop", at("loop"));
    fs::create_symlink("folder", at("to_folder"));
    fs::create_symlink("missing/file", at("nowhere"));
    writeWholeFile(at("file"), "old");
    const Contents before = m_folder.contents();
    const auto code = [](int error) { return std::to_string(error) + " nothing "; };
    const struct {
        std::string path;
        std::string expected;
    } rows[] = {{"", code(ENOENT)},
                {at("missing/file"), code(ENOENT) + "missing/file"},
                {at("nowhere"), code(ENOENT) + "missing/file"},
                {at("folder"), std::to_string(EISDIR) + " old folder"},
                {at("to_folder"), std::to_string(EISDIR) + " old to_folder"},
                {at("folder/.."), std::to_string(EISDIR) + " old folder/.."},
                {at("new/"), code(EISDIR) + "new/"},
                {at("file/below"), code(ENOTDIR) + "file/below"},
                {at("loop"), code(ELOOP) + "loop"},
                {at(std::string(256, 'a')), code(ENAMETOOLONG) + std::string(256, 'a')},
                {"/dev/full", std::to_string(ENOSPC) + " part /dev/full"}};
    for (const auto& row : rows) EXPECT_EQ(refusal(row.path), row.expected);
    EXPECT_EQ(m_folder.contents(), before);
    EXPECT_THROW(FileReplacement(nullptr), SaveError);
}

TEST_F(FileReplacementTest, WhatMayNotBeWrittenStays) {
    constexpr uid_t kNobody = 65534;
    writeWholeFile(at("read_only"), "old");
    writeWholeFile(at("file"), "old");
    ASSERT_EQ(::chmod(at("read_only").c_str(), 0444), 0);
    const bool isAdministrator = ::geteuid() == 0; // who may write everything
    if (isAdministrator) {
        ASSERT_EQ(::chown(m_folder.path().c_str(), kNobody, kNobody), 0);
        ASSERT_EQ(::chown(at("file").c_str(), kNobody, kNobody), 0);
        if (::seteuid(kNobody) != 0) GTEST_SKIP() << "no other user";
    }
    const std::string readOnly = refusal(at("read_only"));
    ::chmod(m_folder.path().c_str(), 0555);
    const std::string inFolder = refusal(at("file"));
    const std::string newOne = refusal(at("new"));
    ::chmod(m_folder.path().c_str(), 0311); // may be searched, not listed
    const std::string hidden = refusal(at("file"));
    ::chmod(m_folder.path().c_str(), 0755);
    if (isAdministrator) {
        ASSERT_EQ(::seteuid(0), 0);
    }
    const std::string code = std::to_string(EACCES);
    EXPECT_EQ(readOnly, code + " old read_only");
    EXPECT_EQ(inFolder, code + " old file");
    EXPECT_EQ(newOne, code + " nothing new");
    EXPECT_EQ(hidden, "none");
    EXPECT_EQ(m_folder.contents(), (Contents{"read_only=old", "file=new"}));
}

TEST_F(FileReplacementTest, NamesOfAnyLengthAreSaved) {
    for (const std::string& name :
         {std::string(255, 'a'), std::string(248, 'a'), "a" + [] { // two bytes a letter, cut between them
              std::string text;
              while (text.size() < 254) text += "\xc3\xa4";
              return text;
          }()}) {
        for (const char* content : {"first", "second"}) {
            FileReplacement other(at(name).c_str()); // holds the first name
            replace(at(name), content);
            for (const auto& file : fs::directory_iterator(m_folder.path())) {
                const std::string found = file.path().filename().string();
                EXPECT_TRUE(found == name || static_cast<unsigned char>(found[found.size() - 5]) < 0x80U
                            || static_cast<unsigned char>(found[found.size() - 5]) == 0xa4U)
                    << "a letter is cut";
            }
        }
        EXPECT_EQ(m_folder.contents(), Contents{name + "=second"});
        fs::remove(at(name));
    }
}

TEST_F(FileReplacementTest, PermissionsAndOwnerStay) {
    const mode_t mask = ::umask(027);
    replace(at("new"), "");
    ::umask(mask);
    struct stat status {};
    ASSERT_EQ(::stat(at("new").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U) << "as the user's mask says";
    const bool isAdministrator = ::geteuid() == 0;
    for (const mode_t mode : {0600U, 0644U, 0664U, 04711U, 0222U}) {
        if (isAdministrator) {
            ASSERT_EQ(::chown(at("new").c_str(), 1234, 4321), 0);
        }
        ASSERT_EQ(::chmod(at("new").c_str(), mode), 0);
        replace(at("new"), "newer");
        ASSERT_EQ(::stat(at("new").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, mode);
        if (!isAdministrator) continue;
        EXPECT_EQ(status.st_uid, 1234U);
        EXPECT_EQ(status.st_gid, 4321U);
    }
}

TEST_F(FileReplacementTest, PipesAndDevicesAreWrittenStraight) {
    replace("/dev/null", "nothing");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));

    ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
    const std::string text(200000, 'x'); // more than a pipe holds
    MemoryStream received;
    std::thread reader([&] { received = LoadFile(at("pipe").c_str()); });
    replace(at("pipe"), text);
    reader.join();
    EXPECT_TRUE(::Test::BytesOf(received) == text);
    EXPECT_TRUE(fs::is_fifo(at("pipe")));
    EXPECT_EQ(m_folder.contents(), Contents{});
}

TEST_F(FileReplacementTest, TheCurrentFolderMayChange) {
    const fs::path before = fs::current_path();
    fs::current_path(m_folder.path());
    FileReplacement file("a");
    fs::current_path(before);
    file.getStream().writeData("1", 1);
    file.finish();
    EXPECT_EQ(m_folder.contents(), Contents{"a=1"});
}
