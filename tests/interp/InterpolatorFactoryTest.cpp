#include "support/Basics.h"
#include "support/ErrorRecorder.h"

#include <cstdlib>

namespace Test {
namespace {

std::string TextOf(const Interpolator& interpolator) {
    std::string text = "untouched";
    InterpolatorFactory::getExpression(interpolator, text);
    return text;
}

// A host's parser: understands texts that begin with '@'.
class AtParser : public FallbackExpressionParser {
public:
    std::shared_ptr<Interpolator> parse(const char* expression) override {
        parsed.emplace_back(expression);
        if (*expression == '@') return NumberInterp::create(42);
        if (*expression == '=') return InterpolatorFactory::create(expression + 1);
        if (getErrorCallback()) getErrorCallback()->error({"no @", "AtParser::NoAt", expression, 0});
        return nullptr;
    }
    std::vector<std::string> parsed;
};

class InterpolatorFactoryTest : public testing::Test {
protected:
    ~InterpolatorFactoryTest() override {
        InterpolatorFactory::setParserFallback(nullptr);
        InterpolatorFactory::setErrorCallback(nullptr);
    }
    Segment segment;
};

TEST_F(InterpolatorFactoryTest, NumbersNeedNoParser) {
    AtParser parser;
    InterpolatorFactory::setParserFallback(&parser);
    struct Row {
        const char* text;
        double number;
    };
    const Row rows[] = {
        {"2.5", 2.5},         {"-2.5", -2.5},  {"+2.5", 2.5},  {" \t\n 2.5\r\v\f ", 2.5}, {"- 3", -3}, {".5", 0.5},
        {"5.", 5.0},          {"1e3", 1000.0}, {"1E-3", 1e-3}, {"-1.5e+2", -150.0},       {"0", 0.0},  {"007", 7.0},
        {"4.9e-324", 5e-324}, {"0.1", 0.1},
    };
    for (const Row& row : rows) {
        const auto made = InterpolatorFactory::create(row.text);
        ASSERT_TRUE(dynamic_cast<const NumberInterp*>(made.get())) << row.text;
        EXPECT_EQ(made->eval(7, segment), row.number) << row.text;
        EXPECT_STREQ(made->getExpression(), row.text);
        EXPECT_NE(made, InterpolatorFactory::create(row.text));
    }
    EXPECT_TRUE(std::signbit(InterpolatorFactory::create("-0")->eval(0, segment)));
    EXPECT_TRUE(parser.parsed.empty());

    for (const char* text : {"inf", "-inf", "nan", "infinity", "1e999", "-1e999", "1e", "1e+",  "0x10", "1 2",
                             "--2", "+-2",  "1,5", ".",        "-",     "",       " ",  "2.5x", "e5",   "1_000"})
        EXPECT_TRUE(dynamic_cast<const UnknownExpression*>(InterpolatorFactory::create(text).get())) << text;
    EXPECT_EQ(parser.parsed.size(), 20u);
}

TEST_F(InterpolatorFactoryTest, WhatNobodyUnderstandsKeepsItsText) {
    const auto unknown = InterpolatorFactory::create("(((");
    EXPECT_TRUE(dynamic_cast<const UnknownExpression*>(unknown.get()));
    EXPECT_EQ(TextOf(*unknown), "(((");
    EXPECT_EQ(unknown->eval(3, segment), 0.0);
    const auto clone = unknown->clone();
    EXPECT_NE(clone, unknown);
    EXPECT_EQ(TextOf(*clone), "(((");

    EXPECT_STREQ(InterpolatorFactory::create(nullptr)->getExpression(), "");
    EXPECT_EQ(TextOf(*InterpolatorFactory::create("")), "constant()");
    EXPECT_EQ(TextOf(*UnknownExpression::create(nullptr)), "constant()");
    EXPECT_EQ(TextOf(*Linear::create()), "linear()");
}

TEST_F(InterpolatorFactoryTest, FallbackParserAndCallback) {
    AtParser parser;
    ErrorRecorder before;
    ErrorRecorder after;
    InterpolatorFactory::setErrorCallback(&before);
    InterpolatorFactory::setParserFallback(&parser);
    EXPECT_EQ(parser.getErrorCallback(), &before);
    InterpolatorFactory::setErrorCallback(&after);
    EXPECT_EQ(parser.getErrorCallback(), &after);

    const auto made = InterpolatorFactory::create(" linear()@");
    EXPECT_TRUE(dynamic_cast<const UnknownExpression*>(made.get()));
    const auto understood = InterpolatorFactory::create("@ me");
    EXPECT_EQ(understood->eval(0, segment), 42.0);
    EXPECT_STREQ(understood->getExpression(), "@ me");
    EXPECT_EQ(parser.parsed, (std::vector<std::string>{" linear()@", "@ me"}));
    EXPECT_EQ(after.heard, std::vector<std::string>{ErrorText("AtParser::NoAt", "no @", 0, " linear()@")});
    EXPECT_TRUE(before.heard.empty());

    // A shared instance keeps its text also when a parser hands it out.
    EXPECT_EQ(InterpolatorFactory::create("=linear()"), InterpolatorFactory::create("linear()"));
    EXPECT_STREQ(InterpolatorFactory::create("linear()")->getExpression(), "linear()");

    // Back to the default parser, which takes the callback over.
    InterpolatorFactory::setParserFallback(nullptr);
    after.heard.clear();
    EXPECT_TRUE(dynamic_cast<const UnknownExpression*>(InterpolatorFactory::create("@ me").get()));
    ASSERT_EQ(after.heard.size(), 1u);
    EXPECT_EQ(after.heard[0].find("VEM_FN::FCurveLib::DefaultFallbackParser::"), 0u) << after.heard[0];
    InterpolatorFactory::setErrorCallback(nullptr);
    InterpolatorFactory::create("@ me");
    EXPECT_EQ(after.heard.size(), 1u);
}

#if GTEST_HAS_DEATH_TEST

// A host's object that outlives everything made after it.
struct AtExit {
    ~AtExit() {
        InterpolatorFactory::setErrorCallback(nullptr);
        std::_Exit(InterpolatorFactory::create("x*x")->eval(3, Segment()) == 9.0 ? 7 : 1);
    }
};

TEST(InterpolatorFactoryDeathTest, WorksInDestructorsOfStaticObjects) {
    EXPECT_EXIT(
        {
            static const AtExit object;
            InterpolatorFactory::create("x"); // the default parser is there from now on
            std::exit(0);
        },
        testing::ExitedWithCode(7), "");
}

#endif

} // namespace
} // namespace Test
