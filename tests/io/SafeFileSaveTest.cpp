#include "FCurveLib/SafeFileSave.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using namespace VEM_FN::FCurveLib;
namespace fs = std::filesystem;

namespace {

class SafeFileSaveTest : public testing::Test {
protected:
    TempFolder m_folder;
    std::string m_target = m_folder.file("a.fcrvx");

    static void write(SafeFileSave& save, const std::string& bytes) {
        save.getStream()->writeData(bytes.data(), static_cast<int>(bytes.size()));
    }
};

using Contents = std::set<std::string>;

} // namespace

TEST_F(SafeFileSaveTest, AnExistingTargetIsReplaced) {
    writeWholeFile(m_target, "old");
    writeWholeFile(m_target + ".tmp", "left by a crash");
    {
        SafeFileSave save(m_target.c_str());
        SafeFileSave other(m_target.c_str());
        EXPECT_EQ(save.getStream()->getPathname(), m_target + ".tmp2");
        EXPECT_EQ(other.getStream()->getPathname(), m_target + ".tmp3");
        write(save, "new");
        EXPECT_EQ(readWholeFile(m_target), "old");
        save.finish();
        EXPECT_EQ(readWholeFile(m_target), "new");
        EXPECT_EQ(save.getStream(), nullptr);
        EXPECT_NO_THROW(save.finish()) << "a second call does nothing";
        write(other, "newer");
        other.finish();
    }
    EXPECT_EQ(m_folder.contents(), (Contents{"a.fcrvx=newer", "a.fcrvx.tmp=left by a crash"}));
}

TEST_F(SafeFileSaveTest, ADirectoryIsNotReplaced) {
    fs::create_directory(m_target);
    SafeFileSave save(m_target.c_str());
    write(save, "new");
    EXPECT_THROW(save.finish(), SafeFileSave::CantFinish);
    EXPECT_STREQ(SafeFileSave::CantFinish().what(), "VEM_FN::FCurveLib::SafeFileSave::CantFinish");
    EXPECT_TRUE(fs::is_directory(m_target));
    EXPECT_EQ(readWholeFile(m_target + ".tmp"), "new");
    EXPECT_NO_THROW(save.finish());
}

TEST_F(SafeFileSaveTest, TheSecondOfTwoSavesOfANewTargetSurvives) {
    for (const bool finish : {true, false}) {
        fs::remove(m_target);
        {
            SafeFileSave first(m_target.c_str());
            SafeFileSave second(m_target.c_str());
            write(first, "first");
            write(second, "second");
            second.finish();
            if (finish) first.finish(); // in place already, as far as it knows
        }
        EXPECT_EQ(m_folder.contents(), (Contents{"a.fcrvx=second"}));
    }
}
