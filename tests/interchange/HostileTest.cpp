// Documents of other systems that are made to cost as much as possible, and streams without end.

#include "FCurveInterchange/FCurveInterchange.h"
#include "support/HostileDocument.h"

#include <gtest/gtest.h>

#include <string>

using namespace Test;
using namespace VEM_FN::FCurveLib::Interchange;

namespace {

std::string anim(const std::string& content) {
    return "animVersion 1.1;\n" + content;
}
std::string usda(const std::string& content) {
    return "#usda 1.0\ndef \"a\" {\n" + content + "\n}\n";
}
std::string gltf(const std::string& content) {
    return R"({"asset":{"version":"2.0"},)" + content + '}';
}
// All but the last separator.
std::string listed(const std::string& list) {
    return list.substr(0, list.size() - 1);
}

const Hostile kHostile[] = {
    {"one column", "csv", "a\n" + repeated("1\n"), ""},
    {"one row", "csv", listed(repeated("1,")) + "\n" + listed(repeated("1,")) + "\n", ""},
    {"columns of one name", "csv", listed(repeated("a,")) + "\n" + listed(repeated("1,")) + "\n", ""},
    {"curves", "csv", "curve,frame,value\n" + numbered("a%,1,1\n"), ""},
    {"one key many times", "csv", "curve,frame,value\n" + repeated("a,1,1\n"), "BadDocument"},
    {"quotes", "csv", "a\n" + repeated("\""), "BadDocument"},
    {"empty lines", "csv", repeated("\n"), "BadDocument"},

    {"easings", "css_easings", repeated("ease\n"), ""},
    {"steps", "css_easings", "/*" + repeated(" ") + "*/\n" + repeated("steps(100000)\n").substr(0, 14 * 7), "TooMuch"},
    {"stops", "css_easings", "linear(" + listed(numbered("%,")) + ")\n", ""},
    {"stops at one place", "css_easings", "linear(" + listed(numbered("% 1%,")) + ")\n", ""},
    {"comments", "css_easings", repeated("/**/"), "BadDocument"},
    {"one line", "css_easings", repeated(" "), "BadDocument"},

    {"nested arrays", "lottie", "{\"layers\":" + repeated("["), "TooMuch"},
    {"numbers", "lottie", "{\"k\":[" + listed(repeated("1.5,")) + "]}", ""},
    {"keyframes", "lottie", "{\"k\":[" + listed(numbered("{\"t\":%,\"s\":1},")) + "]}", ""},
    {"layers", "lottie", "{\"layers\":[" + listed(repeated("{},")) + "]}", ""},
    {"members", "lottie", "{\"layers\":[{" + listed(numbered("\"%\":0,")) + "}]}", ""},
    {"texts", "lottie", "{\"layers\":[{\"a\":[" + listed(repeated("\"\",")) + "]}]}", ""},
    {"a text", "lottie", "{\"nm\":\"" + repeated("a") + "\",\"layers\":[]}", ""},
    {"blanks", "lottie", repeated(" "), "BadDocument"},

    {"keys", "maya_anim", anim("anim a a a 0 0 0; animData { keys {" + numbered("% 1 flat flat 0 0 0;") + "}}"), ""},
    {"curves", "maya_anim", anim(repeated("anim a a a 0 0 0; animData {}")), ""},
    {"place holders", "maya_anim", anim(repeated("anim a 0 0 0;")), ""},
    {"statements", "maya_anim", anim(numbered("a% b;")), ""},
    {"comments", "maya_anim", anim(repeated("//\n")), ""},
    {"semicolons", "maya_anim", anim(repeated(";")), ""},

    {"nested prims", "usda", usda(repeated("def \"a\" {")), "TooMuch"},
    {"nested brackets", "usda", usda("int a = " + repeated("[")), "TooMuch"},
    {"prims", "usda", usda(numbered("def \"%\" {}\n")), ""},
    {"attributes", "usda", usda(numbered("int a% = 0\n")), ""},
    {"knots", "usda", usda("double a.spline = {" + numbered("%:1,") + '}'), ""},
    {"knots at one place", "usda", usda("double a.spline = {" + repeated("1:1,") + '}'), ""},
    {"samples", "usda", usda("int a.timeSamples = {" + numbered("%:1,") + '}'), ""},
    {"samples of one attribute", "usda", usda(repeated("int a.timeSamples={1:1}\n")), ""},
    {"repetitions", "usda", usda("double a.spline = { loop: (0, 1, 1e9, 1e9, 0), 0: 1, 1: 2, }"), ""},
    {"comments", "usda", usda(repeated("/**/")), ""},
    {"custom data", "usda", usda("double a ( customData = {" + numbered("string a% = 'b'\n") + "} )"), ""},

    {"nested arrays", "gltf", gltf("\"extras\":" + repeated("[")), "TooMuch"},
    {"members", "gltf", gltf(listed(numbered("\"a%\":0,"))), ""},
    {"nodes", "gltf", gltf("\"nodes\":[" + listed(repeated("{},")) + ']'), ""},
    {"animations", "gltf", gltf("\"animations\":[" + listed(repeated("{},")) + ']'), ""},
    {"numbers", "gltf", gltf("\"extras\":[" + listed(repeated("1,")) + ']'), ""},
    {"blanks", "gltf", repeated(" "), "BadDocument"},
    {"a length without bytes", "glb", std::string("glTF\2\0\0\0\xFF\xFF\xFF\x7F", 12), "BadDocument"},
};

} // namespace

TEST(HostileInterchange, CostsLittleTimeAndMemory) {
    RegisterFormats();
    for (const Hostile& hostile : kHostile) expectLittleCost(hostile);
}

// Readers take whole documents, so a stream that says it is longer than one may be is not read at all.
TEST(HostileInterchange, WhatIsTooLongIsNeitherReadNorWritten) {
    RegisterFormats();
    for (const char* format : {"csv", "css_easings", "lottie", "maya_anim", "usda", "gltf", "glb"}) {
        EndlessStream stream("", " ");
        FormatInterface nobody;
        EXPECT_THROW(FormatFactory::getReader(format)->readCurves(stream, nobody), TooMuch);
        EXPECT_THROW(FormatFactory::getReader(format)->readCurve(stream, nobody), TooMuch);
        EXPECT_EQ(stream.bytesRead, 0);
        ConversionOptions options;
        options.longest = 9;
        const Conversion conversion(options);
        MemoryStream ten = StreamOf("0123456789");
        EXPECT_THROW(FormatFactory::getReader(format)->readCurves(ten, nobody), TooMuch);
        const auto curve = FCurve::create();
        SetKey(*curve, 0.0, 0.0);
        SetKey(*curve, 10.0, 5.0);
        MemoryStream empty;
        EXPECT_THROW(WriteCurve(*curve, empty, format), TooMuch);
        EXPECT_EQ(empty.getSize(), 0);
    }
}

// What comes after the blanks is recognised, and they are gone through once, not by every reader.
TEST(HostileInterchange, BlanksCostTheirLength) {
    RegisterFormats();
    constexpr int kBlanks = 4000000;
    for (const char* opening : {"", "animVersion 1.1;", "{\"asset\":{}}", "fcurvetext 1.0\n"}) {
        const std::string text = opening;
        EndlessStream stream(std::string(kBlanks, '\n') + text, " ", kBlanks + 1000);
        EXPECT_EQ(FormatFactory::getReader(stream) == nullptr, text.empty()) << text;
        EXPECT_LT(stream.bytesRead, kBlanks + 500000) << text;
    }
}
