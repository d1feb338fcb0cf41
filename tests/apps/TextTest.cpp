#include "Text.h"

#include "Svg.h"

#include <gtest/gtest.h>

#include <string>

using namespace fcurvetool;

TEST(Text, NumbersReadAndWrite) {
    EXPECT_EQ(toText(0.1), "0.1");
    EXPECT_EQ(toText(1e22), "1e+22");
    EXPECT_EQ(toBriefText(1.0 / 3.0), "0.3333333333");
    EXPECT_EQ(toBriefText(100000.25), "100000.25");
    EXPECT_EQ(toFixedText(-0.001, 2), "0");
    EXPECT_EQ(toFixedText(120.5, 2), "120.5");
    EXPECT_EQ(toFixedText(1e300, 2).size(), 301U);

    EXPECT_EQ(parseNumber("-1.5e3"), -1500.0);
    EXPECT_EQ(parseNumber("+2"), 2.0);
    for (const char* bad : {"", "+", "+-1", "1x", " 1", "1 ", "1,5", "nan", "inf", "1e999"})
        EXPECT_FALSE(parseNumber(bad)) << bad;
}

TEST(Text, UntrustedNamesArePrintable) {
    EXPECT_EQ(toPrintable("caf\u00E9 \u4E2D"), "caf\u00E9 \u4E2D");
    EXPECT_EQ(toPrintable(std::string("a\n\x1b[31m\x7f\0", 9)), "a\\x0a\\x1b[31m\\x7f\\x00");
    EXPECT_EQ(toPrintable("\u009B31m"), "\\x9b31m"); // the one-character form of ESC [
    EXPECT_EQ(shorten("\u4E2D\u4E2D\u4E2D\u4E2D", 3), "\u4E2D\u4E2D\u2026");
    EXPECT_EQ(shorten("abc", 3), "abc");
}

TEST(Text, GlobsMatchWholeTexts) {
    struct Row {
        const char* pattern;
        const char* text;
        bool matches;
    };
    const Row rows[] = {
        {"*", "", true},
        {"t?", "tx", true},
        {"t?", "t", false},
        {"*:rotate?", "arm:rotateX", true},
        {"a*b*c", "aXbYbZc", true},
        {"a*b*c", "aXbY", false},
        {"", "a", false},
        {"abc", "abcd", false},
        {"*a", "aaab", false},
        {"**a**", "a", true},
    };
    for (const Row& row : rows)
        EXPECT_EQ(matchesGlob(row.pattern, row.text), row.matches) << row.pattern << ' ' << row.text;
    // Takes for ever if every star tries every length.
    EXPECT_FALSE(matchesGlob("*a*a*a*a*a*a*a*a*a*a*a*a*b", std::string(2000, 'a')));
}

TEST(Text, XmlHoldsAnyBytes) {
    EXPECT_EQ(escapeXml("<a & \"b\">"), "&lt;a &amp; &quot;b&quot;&gt;");
    EXPECT_EQ(escapeXml("\u4E2D\U0001F600"), "\u4E2D\U0001F600");
    const std::string r = "\uFFFD";
    EXPECT_EQ(escapeXml(std::string("\0\x1b", 2)), r + r);
    EXPECT_EQ(escapeXml("\xC0\x80"), r + r);                 // overlong
    EXPECT_EQ(escapeXml("\xED\xA0\x80"), r + r + r);         // surrogate
    EXPECT_EQ(escapeXml("\xEF\xBF\xBF"), r + r + r);         // U+FFFF
    EXPECT_EQ(escapeXml("\xF4\x90\x80\x80"), r + r + r + r); // beyond U+10FFFF
    EXPECT_EQ(escapeXml("\xE4\xB8"), r + r);                 // cut off
}
