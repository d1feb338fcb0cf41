// Options, reports and names: what all formats of the library share.

#include "FCurveInterchange/FCurveInterchange.h"
#include "FCurveLib/FCurveLib.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using namespace VEM_FN::FCurveLib;
using namespace VEM_FN::FCurveLib::Interchange;

TEST(Conversion, HoldsInItsThreadWhileItLives) {
    ConversionReport outer;
    EXPECT_EQ(Conversion::report(), nullptr);
    {
        const Conversion first(outer, {25.0, 0.5, {{"a.b", "c"}}});
        {
            const Conversion second(ConversionOptions{});
            EXPECT_EQ(Conversion::report(), nullptr);
            EXPECT_EQ(Conversion::options().frameRate, 0.0);
        }
        EXPECT_EQ(Conversion::report(), &outer);
        EXPECT_EQ(Conversion::options().setting("a.b"), "c");
    }
    EXPECT_EQ(Conversion::options().tolerance, 1e-4);
}

TEST(Conversion, ManyThreadsWriteEveryFormatAtATime) {
    RegisterFormats();
    const auto container = FCurveContainer::create();
    for (const char* name : {"ball/translateX", "ball/translateY"}) {
        const auto curve = FCurve::create();
        curve->setName(name);
        for (const double x : {0.0, 12.0, 24.0})
            curve->insertSegment(*Keyframe::create(x, x * x), InterpolatorFactory::create("linear()"));
        container->addCurve(curve);
    }
    for (auto type = FormatFactory::beginWriterTypes(); type != FormatFactory::endWriterTypes(); ++type) {
        SCOPED_TRACE(type->getFormatName());
        const auto write = [&] {
            MemoryStream stream;
            try {
                WriteCurves(*container, stream, type->getFormatName());
            } catch (const FormatError& error) {
                return std::string(error.message());
            }
            return std::string(stream.getData(), static_cast<std::size_t>(stream.getSize()));
        };
        const std::string alone = write();
        std::vector<std::thread> threads;
        std::vector<std::string> results(4);
        for (std::string& result : results)
            threads.emplace_back([&] {
                for (int round = 0; round < 5; ++round) result = write();
            });
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(results, std::vector<std::string>(4, alone));
        MemoryStream stream;
        EXPECT_NE(FormatFactory::getWriter(*type)->createDocument(stream), nullptr);
    }
}

TEST(Conversion, KeepsSeconds) {
    RegisterFormats();
    for (const char* const format : {"csv", "gltf", "hClip", "lottie", "maya_anim", "text", "usda"}) {
        SCOPED_TRACE(format);
        const auto curves = FCurveContainer::create();
        const auto curve = FCurve::create();
        curve->setName("ball/tx");
        for (const double x : {0.0, 50.0})
            curve->insertSegment(*Keyframe::create(x, x / 10), InterpolatorFactory::create("linear()"));
        curves->addCurve(curve);
        curves->setProperty("frame_rate", "25");
        curves->setProperty("last_frame", "50");
        MemoryStream stream;
        {
            ConversionOptions faster;
            faster.frameRate = 50.0;
            const Conversion conversion(faster);
            WriteCurves(*curves, stream, format);
        }
        stream.setPosition(0);
        const auto back = FCurveContainer::create();
        LoadOptions options;
        options.format = format;
        LoadCurves(stream, *back, options);
        const std::string stated = back->getProperty("frame_rate");
        EXPECT_EQ(stated, std::string(format) == "csv" ? "" : "50");
        EXPECT_NEAR(back->begin()->eval(100), 5.0, 1e-6);
        EXPECT_NEAR(back->begin()->eval(50), 2.5, 1e-6);
    }
}

TEST(ConversionReport, NamesCurvesThatBecomeOne) {
    RegisterFormats();
    const auto curves = FCurveContainer::create();
    for (const char* const name : {"a/b c", "a/b_c", "a/d", "a/d"}) {
        const auto curve = FCurve::create();
        curve->setName(name);
        curve->insertSegment(*Keyframe::create(0, 1), InterpolatorFactory::create("constant()"));
        curves->addCurve(curve);
    }
    ConversionReport report;
    const Conversion conversion(report);
    MemoryStream stream;
    WriteCurves(*curves, stream, "maya_anim");
    std::string told;
    for (const Loss& loss : report.losses())
        if (loss.what == Loss::Names) told += loss.curve + ": " + loss.detail + '\n';
    EXPECT_EQ(told, "a/b_c: \"a/b_c\", which \"a/b c\" is called, too\na/b c: a/b_c\n");
}

TEST(ConversionReport, JoinsPlacesAndSpeaks) {
    ConversionReport report;
    for (int i = 0; i < 40; ++i)
        report.add({"a \"b\"", Loss::Kind, Loss::Split, "bezier()", 1, {i * 0.5}, i == 3 ? 2.5 : 1.0, i * 0.5 + 0.1});
    report.add({"", Loss::Properties, Loss::Dropped, "", 1, {}, 0.0, 0.0});
    ASSERT_EQ(report.losses().size(), 2U);
    EXPECT_EQ(report.losses()[0].places.size(), 16U);
    EXPECT_EQ(report.difference("a \"b\""), 2.5);
    EXPECT_EQ(Describe(report.losses()[0]),
              "kind split: bezier() (40 places, frames 0, 0.5, 1, 1.5, 2 ...), up to 2.5 off at frame 1.6");
    EXPECT_EQ(Describe(report.losses()[1]), "properties dropped");
    const std::string json = ToJson(report);
    EXPECT_NE(json.find("\"curve\": \"a \\\"b\\\"\",\n      \"what\": \"kind\",\n      \"remedy\": \"split\""),
              std::string::npos);
    EXPECT_NE(json.find("\"count\": 40"), std::string::npos);
}

TEST(ChannelName, SplitsAtTheLastSlashButOne) {
    const struct {
        const char* name;
        const char* node;
        const char* channel;
        const char* meaning; // kind and axis
    } rows[] = {
        {"tx", "", "tx", "00"},
        {"ball/tx", "ball", "tx", "00"},
        {"a/b/rotateZ", "a/b", "rotateZ", "12"},
        {"ball/scale/y", "ball", "scale/y", "21"},
        {"ball/rotation/w", "ball", "rotation/w", ""},
        {"face/weights/12", "face", "weights/12", ""},
        {"scale/y", "", "scale/y", "21"},
        {"/x", "", "/x", ""},
        {"visibility", "", "visibility", ""},
        {"", "", "", ""},
    };
    for (const auto& row : rows) {
        const ChannelName name = SplitName(row.name);
        EXPECT_EQ(name.node, row.node) << row.name;
        EXPECT_EQ(name.channel, row.channel) << row.name;
        EXPECT_EQ(JoinName(name), row.name);
        const auto meaning = FindTransform(name.channel);
        EXPECT_EQ(meaning ? std::to_string(meaning->kind) + std::to_string(meaning->axis) : "", row.meaning)
            << row.name;
    }
}
