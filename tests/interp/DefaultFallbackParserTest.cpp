#include "FCurveLib/FCurveLib.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace VEM_FN::FCurveLib;

namespace {

using Parser = DefaultFallbackParser;

const double infinity = std::numeric_limits<double>::infinity();

// A segment without keys: formulas do not look at it.
const Segment nowhere;

std::shared_ptr<Interpolator> Parse(const std::string& text) {
    return Parser().parseOrThrow(text.c_str());
}

double Eval(const std::string& text, double x = 0.0) {
    return Parse(text)->eval(x, nowhere);
}

struct HeardError {
    std::string message, type, expression;
    std::size_t position;
};
struct Recorder final : FallbackExpressionParser::ErrorCallback {
    void error(const FallbackExpressionParser::Error& e) const override {
        heard.push_back({e.message, e.type, e.expression, e.position});
    }
    mutable std::vector<HeardError> heard;
};

// --- values ----------------------------------------------------------------------------------------------------------

TEST(FormulaValue, PrecedenceAssociativityAndTokens) {
    const struct {
        const char* text;
        double x, expected;
    } rows[] = {
        // precedence and associativity
        {"-2**2", 0, -4},
        {"(-2)**2", 0, 4},
        {"2**3**2", 0, 512},
        {"(2**3)**2", 0, 64},
        {"2**-1", 0, 0.5},
        {"2*-3", 0, -6},
        {"--3", 0, 3},
        {"-+-+3", 0, 3},
        {"-x**2", 3, -9},
        {"x**-2", 2, 0.25},
        {"2+3*4", 0, 14},
        {"(2+3)*4", 0, 20},
        {"10-4-3", 0, 3},
        {"100/5/2", 0, 10},
        {"100/5*2", 0, 40},
        {"17%10%4", 0, 3},
        {"2*7%4", 0, 2},
        {"1+7%4", 0, 4},
        {"-7%4", 0, -3}, // (-7) % 4
        {"2*x**2", 3, 18},
        {"-x*2", 3, -6},
        // numbers, names, white space
        {"1.5e3", 0, 1500},
        {"2.5E-1", 0, 0.25},
        {"1e+2", 0, 100},
        {".5", 0, 0.5},
        {"5.", 0, 5},
        {"4.9406564584124654e-324", 0, 4.9406564584124654e-324},
        {"x", 7, 7},
        {"pi", 0, 3.141592653589793},
        {"e", 0, 2.718281828459045},
        {" \t\r\n\v\f 1 \n + \t x ", 2, 3},
        {"sin ( 0 )", 0, 0},
        {"x*x-x/x+x%x", 5, 24},
        // remainder has the sign of the dividend
        {"7%3", 0, 1},
        {"-7%3", 0, -1},
        {"7%-3", 0, 1},
        {"7.5%2", 0, 1.5},
        {"x%3", -7, -1},
        {"3%x", 2, 1},
        {"x%(x-1)", 7, 1},
        {"(x-1)%x", 7, 6},
        {"(x+1)%3", 7, 2},
        {"20%(x+1)", 7, 4},
        // rounding: halves go away from zero
        {"round(2.5)", 0, 3},
        {"round(-2.5)", 0, -3},
        {"round(0.49999999999999994)", 0, 0},
        {"floor(-0.5)", 0, -1},
        {"ceil(-0.5)", 0, -0.0},
        {"abs(-3)", 0, 3},
        {"x**0", 0, 1},
        {"x**1", 5, 5},
        {"x**3", -2, -8},
        {"2**x", 10, 1024},
        {"x**x", 3, 27},
        {"x**(x+1)", 2, 8},
        {"(x+1)**x", 2, 9},
    };
    for (const auto& row : rows) {
        const double value = Eval(row.text, row.x);
        EXPECT_EQ(value, row.expected) << row.text;
        EXPECT_EQ(std::signbit(value), std::signbit(row.expected)) << row.text;
    }
}

TEST(FormulaValue, FunctionsAreThoseOfTheLanguageHosts) {
    const struct {
        const char* name;
        double (*function)(double);
    } rows[] = {
        {"sin", std::sin},     {"cos", std::cos},  {"tan", std::tan},   {"asin", std::asin}, {"acos", std::acos},
        {"atan", std::atan},   {"exp", std::exp},  {"log", std::log},   {"ceil", std::ceil}, {"floor", std::floor},
        {"round", std::round}, {"abs", std::fabs}, {"sqrt", std::sqrt},
    };
    for (const auto& row : rows) {
        const auto formula = Parse(std::string(row.name) + "(x)");
        for (const double x : {-3.5, -1.0, -0.7, -0.0, 0.0, 0.3, 0.5, 1.0, 2.5, 1e10, infinity}) {
            const double value = formula->eval(x, nowhere);
            const double expected = row.function(x);
            EXPECT_TRUE(value == expected || (std::isnan(value) && std::isnan(expected))) << row.name << " " << x;
        }
    }
}

TEST(FormulaValue, OutsideADomainTheArithmeticDecides) {
    EXPECT_EQ(Eval("1/x", 0.0), infinity);
    EXPECT_EQ(Eval("-1/x", 0.0), -infinity);
    EXPECT_EQ(Eval("log(x)", 0.0), -infinity);
    EXPECT_EQ(Eval("exp(x)", 1e6), infinity);
    for (const char* text : {"sqrt(x-1)", "log(x-1)", "asin(x+2)", "acos(x-2)", "0/x", "x%0", "(x-1)**0.5", "1/0*x"})
        EXPECT_TRUE(std::isnan(Eval(text, 0.0))) << text;
}

// A formula of random shape, its text, and its value and derivatives found in another way: by walking a tree of
// lambdas, and by differences of long doubles.
struct RandomFormula {
    std::string text;
    std::function<double(double)> value;
    std::function<long double(long double)> precise;
};

// The parts are shared, because copying functions that hold functions copies all of them.
template<class Op>
RandomFormula Binary(const char* op, const RandomFormula& left, const RandomFormula& right, Op f) {
    const auto a = std::make_shared<const RandomFormula>(left);
    const auto b = std::make_shared<const RandomFormula>(right);
    return {"(" + a->text + ")" + op + "(" + b->text + ")", [=](double x) { return f(a->value(x), b->value(x)); },
            [=](long double x) { return f(a->precise(x), b->precise(x)); }};
}
template<class Op>
RandomFormula Unary(const char* name, const RandomFormula& inner, Op f) {
    const auto a = std::make_shared<const RandomFormula>(inner);
    return {std::string(name) + "(" + a->text + ")", [=](double x) { return f(a->value(x)); },
            [=](long double x) { return f(a->precise(x)); }};
}

RandomFormula MakeRandom(std::mt19937& random, int depth) {
    const auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    if (depth == 0 || pick(6) == 0) {
        if (pick(2) == 0) return {"x", [](double x) { return x; }, [](long double x) { return x; }};
        const double number = (pick(9) + 1) / 4.0;
        return {std::to_string(number), [=](double) { return number; },
                [=](long double) { return static_cast<long double>(number); }};
    }
    const auto a = MakeRandom(random, depth - 1);
    switch (pick(12)) {
    case 0:
    case 1:
        return Binary("+", a, MakeRandom(random, depth - 1), [](auto u, auto v) { return u + v; });
    case 2:
        return Binary("-", a, MakeRandom(random, depth - 1), [](auto u, auto v) { return u - v; });
    case 3:
    case 4:
        return Binary("*", a, MakeRandom(random, depth - 1), [](auto u, auto v) { return u * v; });
    case 5:
        return Binary("/", a, MakeRandom(random, depth - 1), [](auto u, auto v) { return u / v; });
    case 6:
        return Binary("%", a, MakeRandom(random, depth - 1), [](auto u, auto v) { return std::fmod(u, v); });
    case 7:
        return Unary("-", a, [](auto u) { return -u; });
    case 8:
        return Unary("sin", a, [](auto u) { return std::sin(u); });
    case 9:
        return Unary("cos", a, [](auto u) { return std::cos(u); });
    case 10:
        return Unary("",
                     Binary("**", a, {"2", [](double) { return 2.0; }, [](long double) { return 2.0L; }},
                            [](auto u, auto) { return u * u; }),
                     [](auto u) { return u; });
    default:
        return Unary("",
                     Binary("**", Unary("abs", a, [](auto u) { return std::abs(u); }), MakeRandom(random, depth - 1),
                            [](auto u, auto v) { return std::pow(u, v); }),
                     [](auto u) { return u; });
    }
}

TEST(FormulaValue, RandomFormulasHaveTheBitsOfTheSameExpressionWalkedAsATree) {
    std::mt19937 random(20240229);
    for (int i = 0; i < 1000; ++i) {
        const RandomFormula formula = MakeRandom(random, 1 + i % 6);
        const auto parsed = Parse(formula.text);
        for (const double x : {-2.75, -1.0, 0.0, 0.3, 1.0, 4.5}) {
            const double expected = formula.value(x);
            const double value = parsed->eval(x, nowhere);
            // b ** 1, 2 and 3 are products; the tree calls pow for them, which may differ in the last bit
            const bool same = value == expected || (std::isnan(value) && std::isnan(expected))
                              || (formula.text.find("abs") != std::string::npos
                                  && std::abs(value - expected) <= 1e-9 * std::abs(expected));
            ASSERT_TRUE(same) << formula.text << " at " << x << ": " << value << ", expected " << expected;
        }
    }
}

// --- derivatives -----------------------------------------------------------------------------------------------------

// Central differences of the fourth order.
long double FirstDifference(const std::function<long double(long double)>& f, long double x) {
    const long double h = 1e-3L;
    return (f(x - 2 * h) - 8 * f(x - h) + 8 * f(x + h) - f(x + 2 * h)) / (12 * h);
}
long double SecondDifference(const std::function<long double(long double)>& f, long double x) {
    const long double h = 1e-3L;
    return (-f(x - 2 * h) + 16 * f(x - h) - 30 * f(x) + 16 * f(x + h) - f(x + 2 * h)) / (12 * h * h);
}

TEST(FormulaDerivative, FollowsTheRulesOfCalculus) {
    using L = long double;
    const struct {
        const char* text;
        std::function<L(L)> f;
        std::vector<double> at;
    } rows[] = {
        {"3*x**2 - x/4 + 2", [](L x) { return 3 * x * x - x / 4 + 2; }, {-7, 0, 0.5}},
        {"x**3*(1-x)", [](L x) { return x * x * x * (1 - x); }, {-1, 0, 2}},
        {"(x+1)/(x*x+1)", [](L x) { return (x + 1) / (x * x + 1); }, {-2, 0, 3}},
        {"5/x - x/(x+9)", [](L x) { return 5 / x - x / (x + 9); }, {-3, 2}},
        {"sin(x*2)*10 + cos(x/3)*4", [](L x) { return 10 * std::sin(2 * x) + 4 * std::cos(x / 3); }, {-1, 0, 8}},
        {"sin(x*x) - cos(x+1)", [](L x) { return std::sin(x * x) - std::cos(x + 1); }, {-1, 0.5}},
        {"tan(x/2)", [](L x) { return std::tan(x / 2); }, {-1, 0, 1.5}},
        {"asin(x) + acos(x/3)", [](L x) { return std::asin(x) + std::acos(x / 3); }, {-0.8, 0, 0.6}},
        {"atan(3*x)", [](L x) { return std::atan(3 * x); }, {-1, 0, 2}},
        {"exp(-x*x)", [](L x) { return std::exp(-x * x); }, {-1, 0, 1.2}},
        {"log(x+2)", [](L x) { return std::log(x + 2); }, {-1, 5}},
        {"sqrt(x*x+1)", [](L x) { return std::sqrt(x * x + 1); }, {-3, 0, 1}},
        {"abs(x-2)*x", [](L x) { return std::abs(x - 2) * x; }, {-1, 1.5, 3}},
        {"abs(x*x)", [](L x) { return x * x; }, {-1, 0}},
        {"x**2.5", [](L x) { return std::pow(x, 2.5L); }, {0.5, 4}},
        {"x**-1", [](L x) { return 1 / x; }, {-2, 3}},
        {"2**x", [](L x) { return std::pow(2.0L, x); }, {-2, 0, 3}},
        {"x**x", [](L x) { return std::pow(x, x); }, {0.5, 2}},
        {"(x+3)**sin(x)", [](L x) { return std::pow(x + 3, std::sin(x)); }, {-1, 2}},
        {"(x*x)%3", [](L x) { return std::fmod(x * x, 3.0L); }, {-1, 1.5, 2.2}},
        {"-10%x", [](L x) { return std::fmod(-10.0L, x); }, {3, 4.2}},
        {"x%3", [](L x) { return std::fmod(x, 3.0L); }, {0, 1, -7}}, // 0 is a multiple, but no jump
        {"floor(x)*x + ceil(x) - round(x)*x*x",
         [](L x) { return std::floor(x) * x + std::ceil(x) - std::round(x) * x * x; },
         {-2.3, 0.2, 1.7}},
    };
    for (const auto& row : rows) {
        const auto formula = Parse(row.text);
        for (const double x : row.at) {
            const auto d1 = static_cast<double>(FirstDifference(row.f, x));
            const auto d2 = static_cast<double>(SecondDifference(row.f, x));
            EXPECT_NEAR(formula->getFirstDerivative(x, nowhere), d1, 1e-9 * (1 + std::abs(d1))) << row.text << " " << x;
            EXPECT_NEAR(formula->getSecondDerivative(x, nowhere), d2, 1e-7 * (1 + std::abs(d2)))
                << row.text << " " << x;
        }
    }
}

TEST(FormulaDerivative, RandomFormulasAgreeWithDifferences) {
    std::mt19937 random(7);
    int compared = 0;
    for (int i = 0; i < 1000; ++i) {
        const RandomFormula formula = MakeRandom(random, 1 + i % 4);
        if (formula.text.find('%') != std::string::npos) continue; // differences across jumps say nothing
        // 0 ** something has no rule, so it is as exact as numeric derivatives are
        const long double least2 = formula.text.find("abs") == std::string::npos ? 1e-7L : 1e-4L;
        const auto parsed = Parse(formula.text);
        for (const double x : {-1.3, 0.7, 2.9}) {
            // Differences with another step tell how far they can be trusted.
            const long double d1 = FirstDifference(formula.precise, x);
            const long double d2 = SecondDifference(formula.precise, x);
            const auto wider = [&](long double u) { return formula.precise(x + 2 * (u - x)); };
            const long double trust1 = std::abs(d1 - FirstDifference(wider, x) / 2) + 1e-9L * (1 + std::abs(d1));
            const long double trust2 = std::abs(d2 - SecondDifference(wider, x) / 4) + least2 * (1 + std::abs(d2));
            if (!(trust1 < 1e-3L * (1 + std::abs(d1))) || !(trust2 < 1e-3L * (1 + std::abs(d2)))) continue;
            ++compared;
            ASSERT_NEAR(parsed->getFirstDerivative(x, nowhere), static_cast<double>(d1), static_cast<double>(trust1))
                << formula.text << " at " << x;
            ASSERT_NEAR(parsed->getSecondDerivative(x, nowhere), static_cast<double>(d2), static_cast<double>(trust2))
                << formula.text << " at " << x;
        }
    }
    EXPECT_GT(compared, 1000);
}

TEST(FormulaDerivative, IsNumericWhereThereIsNoRule) {
    struct Plain final : Interpolator { // the numeric derivatives of the base class
        explicit Plain(std::shared_ptr<Interpolator> formula) : m_formula(std::move(formula)) {}
        double eval(double x, const Segment& segment) const override { return m_formula->eval(x, segment); }
        std::shared_ptr<Interpolator> clone() override { return nullptr; }
        std::shared_ptr<Interpolator> m_formula;
    };
    const struct {
        const char* text;
        double x;
    } rows[] = {{"floor(x)", 2}, {"ceil(2*x)", 1.5}, {"round(x)+x", -0.5}, {"x%4", 8},
                {"abs(x)", 0},   {"abs(x-1)*x", 1},  {"sqrt(x*x)", 0},     {"(x*x)**0.5", 0}};
    for (const auto& row : rows) {
        const auto formula = Parse(row.text);
        const Plain plain(formula);
        EXPECT_EQ(formula->getFirstDerivative(row.x, nowhere), plain.getFirstDerivative(row.x, nowhere)) << row.text;
        EXPECT_EQ(formula->getSecondDerivative(row.x, nowhere), plain.getSecondDerivative(row.x, nowhere)) << row.text;
    }
}

TEST(FormulaDerivative, AnInfiniteSlopeIsTheVerticalSlope) {
    EXPECT_EQ(Parse("sqrt(x)")->getFirstDerivative(0.0, nowhere), 9999999.0);
    EXPECT_EQ(Parse("-sqrt(x)")->getFirstDerivative(0.0, nowhere), -9999999.0);
    EXPECT_EQ(Parse("acos(x)")->getFirstDerivative(1.0, nowhere), -9999999.0);
    // Where the numeric derivative stands in for the missing rule of sqrt(x*x) at 0, too.
    EXPECT_EQ(Parse("sqrt(x*x) + exp(x*1e12)")->getFirstDerivative(0.0, nowhere), 9999999.0);
}

// --- extents ---------------------------------------------------------------------------------------------------------

TEST(FormulaExtents, HoldEverythingThatDenseSamplingFinds) {
    const struct {
        const char* text;
        double x0, x1;
    } rows[] = {{"sin(x)", 0, 10},
                {"sin(x)", 10, 0},
                {"cos(3*x)*x", -4, 4},
                {"abs(x-1.2345)", 0, 2},
                {"x**2", -1, 3},
                {"x**3", -1, 0.01},
                {"exp(-x*x)", -50, 50},
                {"floor(x)", -2.5, 2.5},
                {"floor(x*50)*(1-x)", 0, 1},
                {"x%3", 0.25, 8},
                {"7", 0, 1},
                {"log(x)", 0.25, 1},
                {"sin(x)*1e-9+5", 0, 400},
                {"sqrt(abs(x-0.777))", 0, 1}};
    for (const auto& row : rows) {
        const auto formula = Parse(row.text);
        double low = infinity;
        double high = -infinity;
        for (int i = 0; i <= 200000; ++i) {
            const double y = formula->eval(row.x0 + (row.x1 - row.x0) * i / 200000, nowhere);
            low = std::fmin(low, y);
            high = std::fmax(high, y);
        }
        double minY = 0.0;
        double maxY = 0.0;
        formula->getRangeExtents(nowhere, row.x0, row.x1, minY, maxY);
        EXPECT_NEAR(minY, low, 1e-4 * (high - low) + 1e-12) << row.text;
        EXPECT_NEAR(maxY, high, 1e-4 * (high - low) + 1e-12) << row.text;
    }
    double minY = 0.0;
    double maxY = 0.0;
    Parse("abs(x-1.2345)")->getRangeExtents(nowhere, 0.0, 2.0, minY, maxY);
    EXPECT_NEAR(minY, 0.0, 1e-15);
    Parse("sqrt(-x)")->getRangeExtents(nowhere, 1.0, 2.0, minY, maxY);
    EXPECT_TRUE(std::isnan(minY) && std::isnan(maxY));
}

// --- errors ----------------------------------------------------------------------------------------------------------

TEST(FormulaError, EachTextSaysWhatIsWrongAndWhere) {
    const std::string ended = "The expression ended prematurely.";
    const std::string unbalanced = "There are unbalanced parentheses in the expression.";
    const std::string extra = "There are extra characters at the end of the expression.";
    const std::string unknown = "There is an unknown error in the expression.";
    const std::string primitive = "There is an error in the expression. A name or number was expected, but ";
    const std::string open = "There is an error in the expression. A \"(\" was expected, but ";
    const std::string close = "There is an error in the expression. A \")\" was expected, but ";
    const struct {
        std::string text, type, message;
        std::size_t position;
    } rows[] = {
        {"", "UnexpectedEnd", ended, 0},
        {"  ", "UnexpectedEnd", ended, 2},
        {"1 +", "UnexpectedEnd", ended, 3},
        {"(((", "UnexpectedEnd", ended, 3},
        {"sin", "UnexpectedEnd", ended, 3},
        {"1 + * 2", "PrimitiveExpected", primitive + "\"*\" was found.", 4},
        {"2 *** 3", "PrimitiveExpected", primitive + "\"*\" was found.", 4},
        {"2 ** ** 3", "PrimitiveExpected", primitive + "\"**\" was found.", 5},
        {"()", "PrimitiveExpected", primitive + "\")\" was found.", 1},
        {"sin()", "PrimitiveExpected", primitive + "\")\" was found.", 4},
        {"\"text\"", "PrimitiveExpected", primitive + "a string was found.", 0},
        {"sin 1", "UnexpectedToken", open + "a number was found.", 4},
        {"sin * 1", "UnexpectedToken", open + "\"*\" was found.", 4},
        {"(1 x)", "UnexpectedToken", close + "a name was found.", 3},
        {"(1 \"a\"", "UnexpectedToken", close + "a string was found.", 3},
        {"sin(1, 2)", "UnexpectedToken", close + "\",\" was found.", 5},
        {"1 + (2*x", "UnbalancedParens", unbalanced, 4},
        {"sin(x", "UnbalancedParens", unbalanced, 3},
        {"(1))", "UnbalancedParens", unbalanced, 3},
        {"1 2", "ExtraTokens", extra, 2},
        {"2x", "ExtraTokens", extra, 1},
        {"1e", "ExtraTokens", extra, 1},
        {"0x10", "ExtraTokens", extra, 1},
        {"1,2", "ExtraTokens", extra, 1},
        {"1 # 2", "ErrorToken", unknown, 2},
        {"x + \"abc", "ErrorToken", unknown, 4},
        {"1e999", "ErrorToken", unknown, 0},
        {"3 + 1e-999", "ErrorToken", unknown, 4},
        {".", "ErrorToken", unknown, 0},
        {"x + \xc3\xa4", "ErrorToken", unknown, 4},
        {"1 + foo", "UnrecognizedName", "There is an unknown name (\"foo\") in the expression.", 4},
        {"X", "UnrecognizedName", "There is an unknown name (\"X\") in the expression.", 0},
        {"2*wave(x, 3)", "UnrecognizedFunction", "There is an unknown function (\"wave\") in the expression.", 2},
        {"x(2)", "UnrecognizedFunction", "There is an unknown function (\"x\") in the expression.", 0},
    };
    for (const auto& row : rows) {
        const std::string type = "VEM_FN::FCurveLib::DefaultFallbackParser::" + row.type;
        Parser parser;
        const Recorder recorder;
        parser.setErrorCallback(&recorder);
        EXPECT_EQ(parser.parse(row.text.c_str()), nullptr) << row.text;
        ASSERT_EQ(recorder.heard.size(), 1U) << row.text;
        EXPECT_EQ(recorder.heard[0].message, row.message) << row.text;
        EXPECT_EQ(recorder.heard[0].type, type) << row.text;
        EXPECT_EQ(recorder.heard[0].expression, row.text);
        EXPECT_EQ(recorder.heard[0].position, row.position) << row.text;

        try {
            parser.parseOrThrow(row.text.c_str());
            ADD_FAILURE() << row.text;
        } catch (const Parser::ParseError& error) {
            EXPECT_EQ(error.what(), type);
            EXPECT_EQ(error.getMessage(), row.message);
            EXPECT_EQ(error.getPosition(), row.position);
        }
        EXPECT_EQ(recorder.heard.size(), 1U) << "parseOrThrow does not call back";
    }
    EXPECT_THROW(Parser().parseOrThrow(nullptr), Parser::UnexpectedEnd);
    EXPECT_EQ(Parser().parse("1 +"), nullptr) << "without a callback";
}

std::string Repeat(const std::string& text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

TEST(FormulaError, NestingEndsAt256) {
    const std::size_t depth = Parser::getMaxDepth();
    const auto parenthesised = [](std::size_t n) { return Repeat("(", n) + "x" + Repeat(")", n); };
    EXPECT_EQ(Eval(parenthesised(depth), 3.0), 3.0);
    EXPECT_EQ(Eval(Repeat("-", depth) + "x", 3.0), 3.0);
    EXPECT_EQ(Eval(Repeat("x**", depth) + "1", 1.0), 1.0);
    EXPECT_EQ(Eval(Repeat("cos(x)+cos(x)*(", depth) + "x" + Repeat(")", depth), 0.0), 256.0);
    for (const std::string& text : {parenthesised(depth + 1), Repeat("-", depth + 1) + "x",
                                    Repeat("x**", depth + 1) + "1", Repeat("sin(", depth + 1) + "x"}) {
        try {
            Parse(text);
            ADD_FAILURE();
        } catch (const Parser::ParseError& error) {
            EXPECT_STREQ(error.what(), "VEM_FN::FCurveLib::DefaultFallbackParser::ParseError");
            EXPECT_STREQ(error.getMessage(), "There is an unknown error in the expression.");
        }
    }
}

TEST(FormulaError, HostileTextsEndSoonAndBigOnesWork) {
    const auto begin = std::chrono::steady_clock::now();
    const std::size_t mebibyte = std::size_t{1} << 20;
    for (const char* piece : {"(", "-", "x+", "1*", "x**", "sin(", "\"", "a", "9", " ", "x,", ")"}) {
        const std::string piecewise = Repeat(piece, mebibyte / std::string(piece).size());
        EXPECT_EQ(Parser().parse(piecewise.c_str()), nullptr) << piece;
        EXPECT_EQ(Parser().parse(piecewise.substr(0, Parser::getMaxLength()).c_str()), nullptr) << piece;
    }
    const std::size_t terms = (Parser::getMaxLength() - 1) / 2;
    EXPECT_EQ(Eval(Repeat("x+", terms) + "x", 1.0), static_cast<double>(terms + 1));
    EXPECT_EQ(Eval(Repeat("1+", terms) + "1"), static_cast<double>(terms + 1));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

// --- makers ----------------------------------------------------------------------------------------------------------

// Answers "twice(f)", "level" (a number of its own) and "shared" (one instance for everybody), counts "say("text")".
struct HostMaker final : InterpMaker {
    struct Twice final : Interpolator {
        explicit Twice(std::shared_ptr<Interpolator> inner) : m_inner(std::move(inner)) {}
        double eval(double x, const Segment& segment) const override { return 2.0 * m_inner->eval(x, segment); }
        double getFirstDerivative(double x, const Segment& segment) const override {
            return 2.0 * m_inner->getFirstDerivative(x, segment);
        }
        double getSecondDerivative(double x, const Segment& segment) const override {
            return 2.0 * m_inner->getSecondDerivative(x, segment);
        }
        std::shared_ptr<Interpolator> clone() override { return std::make_shared<Twice>(m_inner->clone()); }
        bool usesTangents() const override { return true; }
        std::shared_ptr<Interpolator> m_inner;
    };

    std::shared_ptr<Interpolator> makeName(const char* name) override {
        if (std::string(name) == "level") return NumberInterp::create(level);
        if (std::string(name) == "shared") return m_shared;
        if (std::string(name) == "broken") throw std::runtime_error("broken");
        return nullptr;
    }
    std::shared_ptr<Interpolator> makeFunction(const char* name, const std::list<Argument>& args) override {
        const std::string text(name);
        if (text == "twice" && args.size() == 1 && args.front().expression)
            return std::make_shared<Twice>(args.front().expression);
        if (text == "say") {
            for (const Argument& argument : args) {
                said += argument.text + (argument.expression ? "|" : "\"|");
                if (argument.number) said += "=" + std::to_string(*argument.number) + "|";
            }
            return NumberInterp::create(0.0);
        }
        return nullptr;
    }

    double level = 24.0;
    std::string said;
    std::shared_ptr<Interpolator> m_shared = std::make_shared<Twice>(NumberInterp::create(1.5));
};

TEST(FormulaMaker, NamesAndFunctionsOfTheHost) {
    const auto maker = std::make_shared<HostMaker>();
    Parser parser;
    EXPECT_THROW(parser.parseOrThrow("level"), Parser::UnrecognizedName);
    parser.addMaker(maker);
    parser.addMaker(maker);
    parser.addMaker(nullptr);

    EXPECT_EQ(parser.parseOrThrow("level/2")->eval(0.0, nowhere), 12.0);
    EXPECT_EQ(parser.parseOrThrow("1 - twice(x*3)*2 + twice(x)")->eval(2.0, nowhere), -19.0);
    EXPECT_EQ(parser.parseOrThrow("twice(twice(x) + twice(x))")->eval(2.0, nowhere), 16.0);
    const auto product = parser.parseOrThrow("x*twice(x*x)"); // 2 x^3
    EXPECT_EQ(product->getFirstDerivative(3.0, nowhere), 54.0);
    EXPECT_EQ(product->getSecondDerivative(3.0, nowhere), 36.0);
    EXPECT_TRUE(product->usesTangents());
    EXPECT_FALSE(parser.parseOrThrow("x*x")->usesTangents());

    parser.parseOrThrow("say( x + 1 , \"a, (b\", 2 *3,x) + say()");
    EXPECT_EQ(maker->said, "x + 1|a, (b\"|2 *3|=6.000000|x|");

    EXPECT_THROW(parser.parseOrThrow("twice(x, x)"), Parser::UnrecognizedFunction);
    EXPECT_THROW(parser.parseOrThrow("twice(\"x\")"), Parser::UnrecognizedFunction);
    EXPECT_THROW(parser.parseOrThrow("twice(x,)"), Parser::PrimitiveExpected);
    EXPECT_THROW(parser.parseOrThrow("twice(x"), Parser::UnbalancedParens);
    EXPECT_THROW(parser.parseOrThrow("level()"), Parser::UnrecognizedFunction);

    parser.removeMaker(*maker);
    EXPECT_THROW(parser.parseOrThrow("level"), Parser::UnrecognizedName);
}

TEST(FormulaMaker, TheLastOneIsAskedFirst) {
    const auto first = std::make_shared<HostMaker>();
    const auto last = std::make_shared<HostMaker>();
    last->level = 30.0;
    Parser parser;
    parser.addMaker(first);
    parser.addMaker(last);
    EXPECT_EQ(parser.parseOrThrow("level")->eval(0.0, nowhere), 30.0);
}

TEST(FormulaMaker, AnInterpolatorThatTheMakerHoldsKeepsItsExpression) {
    const auto maker = std::make_shared<HostMaker>();
    maker->m_shared->setExpression("own");
    Parser parser;
    parser.addMaker(maker);
    const auto made = parser.parseOrThrow(" (shared)");
    EXPECT_STREQ(made->getExpression(), " (shared)");
    EXPECT_EQ(made->eval(0.0, nowhere), 3.0);
    EXPECT_STREQ(maker->m_shared->getExpression(), "own");
}

TEST(FormulaMaker, OneThatThrowsFailsTheText) {
    Parser parser;
    parser.addMaker(std::make_shared<HostMaker>());
    const Recorder recorder;
    parser.setErrorCallback(&recorder);
    EXPECT_EQ(parser.parse("1 + broken"), nullptr);
    ASSERT_EQ(recorder.heard.size(), 1U);
    EXPECT_EQ(recorder.heard[0].message, "An unknown error prevented the expression from being parsed.");
    EXPECT_EQ(recorder.heard[0].type, "VEM_FN::FCurveLib::DefaultFallbackParser::ParseError");
    EXPECT_EQ(recorder.heard[0].position, 4U);
}

// --- factory, copies, threads ----------------------------------------------------------------------------------------

TEST(Formula, TheFactoryMakesFormulasAndKeepsTextsThatFail) {
    const auto formula = InterpolatorFactory::create(" sin( x ) ");
    EXPECT_STREQ(formula->getExpression(), " sin( x ) ");
    EXPECT_EQ(formula->eval(1.0, nowhere), std::sin(1.0));

    const Recorder recorder;
    InterpolatorFactory::setErrorCallback(&recorder);
    const auto failed = InterpolatorFactory::create("sin( x");
    InterpolatorFactory::setErrorCallback(nullptr);
    EXPECT_STREQ(failed->getExpression(), "sin( x");
    EXPECT_EQ(failed->eval(1.0, nowhere), 0.0);
    EXPECT_NE(dynamic_cast<const UnknownExpression*>(failed.get()), nullptr);
    ASSERT_EQ(recorder.heard.size(), 1U);
    EXPECT_EQ(recorder.heard[0].position, 3U);
}

TEST(Formula, AHostsOwnDefaultParserTakesThePlace) {
    Parser parser;
    parser.addMaker(std::make_shared<HostMaker>());
    InterpolatorFactory::setParserFallback(&parser);
    const auto level = InterpolatorFactory::create("level*2");
    InterpolatorFactory::setParserFallback(nullptr);
    EXPECT_EQ(level->eval(0.0, nowhere), 48.0);
}

TEST(Formula, ACloneIsIndependent) {
    Parser parser;
    parser.addMaker(std::make_shared<HostMaker>());
    auto formula = parser.parseOrThrow("twice(x)+1");
    const auto clone = formula->clone();
    formula->setExpression("other");
    formula.reset();
    EXPECT_STREQ(clone->getExpression(), "twice(x)+1");
    EXPECT_EQ(clone->eval(3.0, nowhere), 7.0);
}

TEST(Formula, ManyThreadsEvaluateAndParse) {
    const auto formula = Parse("sin(x)*x**2 + cos(x%3)");
    const double value = formula->eval(2.0, nowhere);
    const double slope = formula->getFirstDerivative(2.0, nowhere);
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (std::size_t t = 0; t < wrong.size(); ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 200; ++i) {
                wrong[t] += formula->eval(2.0, nowhere) != value;
                wrong[t] += formula->getFirstDerivative(2.0, nowhere) != slope;
                wrong[t] += InterpolatorFactory::create("x**2")->eval(3.0, nowhere) != 9.0;
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(wrong, testing::Each(0));
}

} // namespace
