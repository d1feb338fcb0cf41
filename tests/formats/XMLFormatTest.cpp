#include "support/SameCurve.h"
#include "support/StreamOf.h"

#include <gtest/gtest.h>

using namespace Test;

TEST(XMLFormat, EveryByteComesBackInEveryPlaceOfAText) {
    const auto curve = FCurve::create();
    std::string all;
    for (int byte = 1; byte < 256; ++byte) {
        const std::string one(1, static_cast<char>(byte));
        curve->setProperty(("key" + one).c_str(), (one + "x" + one + one).c_str());
        all += one;
        if (byte < 0x80) continue;
        // As the first of a character: followed by what stands at the edges of what UTF-8 and XML allow, whole or cut.
        for (const std::string second : {"\x80", "\x8f", "\x90", "\x9f", "\xa0", "\xbb", "\xbf", "("}) {
            for (const std::string rest : {"", "\x80", "\xbd", "\xbe", "\xbf", "\xbf\xbf", "(", "\x80("}) {
                curve->setProperty((one + second + rest).c_str(), ("<" + one + second + rest + "\\x4").c_str());
            }
        }
    }
    curve->setName(all.c_str());
    const std::string text = WrittenAs("xml", *curve);
    EXPECT_EQ(Difference(*curve, *ReadAs("xml", text)), "");
    for (const char c : text) EXPECT_TRUE(c == '\n' || static_cast<unsigned char>(c) >= ' ');
    // A character that XML allows stays one, one that it forbids does not.
    for (const char* plain : {"\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf", "\xef\xbf\xbd",
                              "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"}) {
        curve->setName(plain);
        EXPECT_NE(WrittenAs("xml", *curve).find("name=\"" + std::string(plain) + '"'), std::string::npos);
    }
    for (const char* forbidden : {"\xc1\xbf", "\xe0\x9f\xbf", "\xed\xa0\x80", "\xef\xbf\xbe", "\xf0\x8f\xbf\xbf",
                                  "\xf4\x90\x80\x80", "\xf5\x80\x80\x80"}) {
        curve->setName(forbidden);
        EXPECT_EQ(WrittenAs("xml", *curve).find(forbidden), std::string::npos);
    }
}

TEST(XMLFormat, TextsOfTheLongestAllowedLengthComeBack) {
    const auto curve = FCurve::create();
    const std::string quotes(GetFormatLimits().text, '"'); // six bytes each in the document
    curve->setProperty(quotes.c_str(), quotes.c_str());
    EXPECT_EQ(Difference(*curve, *ReadAs("xml", WrittenAs("xml", *curve))), "");
}
