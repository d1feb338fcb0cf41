#include "support/Ask.h"
#include "support/Basics.h"
#include "support/ErrorRecorder.h"
#include "support/Random.h"

#include <stdexcept>

namespace Test {
namespace {

using Parser = DefaultFallbackParser;

// A segment without keys: formulas do not look at it.
const Segment nowhere;

std::shared_ptr<Interpolator> Parse(const std::string& text) {
    return Parser().parseOrThrow(text.c_str());
}

double Eval(const std::string& text, double x = 0.0) {
    return Parse(text)->eval(x, nowhere);
}

bool Same(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

// --- values ----------------------------------------------------------------------------------------------------------

TEST(FormulaValue, PrecedenceAssociativityAndTokens) {
    struct Row {
        const char* text;
        double x, expected;
    };
    const std::vector<Row> precedence = {
        {"-2**2", 0, -4},  {"(-2)**2", 0, 4},     {"2**3**2", 0, 512}, {"(2**3)**2", 0, 64}, {"2**-1", 0, 0.5},
        {"2*-3", 0, -6},   {"--3", 0, 3},         {"-+-+3", 0, 3},     {"-x**2", 3, -9},     {"x**-2", 2, 0.25},
        {"2+3*4", 0, 14},  {"(2+3)*4", 0, 20},    {"10-4-3", 0, 3},    {"100/5/2", 0, 10},   {"100/5*2", 0, 40},
        {"17%10%4", 0, 3}, {"2*7%4", 0, 2},       {"1+7%4", 0, 4},     {"-7%4", 0, -3},      {"2*x**2", 3, 18},
        {"-x*2", 3, -6},   {"x*x-x/x+x%x", 5, 24}};
    const std::vector<Row> tokens = {{"x", 7, 7},        {".5", 0, 0.5},      {"5.", 0, 5},       {"1e+2", 0, 100},
                                     {"1.5e3", 0, 1500}, {"2.5E-1", 0, 0.25}, {"sin ( 0 )", 0, 0}};
    const std::vector<Row> longTokens = {{"e", 0, 2.718281828459045},
                                         {"pi", 0, 3.141592653589793},
                                         {" \t\r\n\v\f 1 \n + \t x ", 2, 3},
                                         {"4.9406564584124654e-324", 0, 4.9406564584124654e-324}};
    // Remainders have the sign of the dividend.
    const std::vector<Row> remainders = {{"7%3", 0, 1},     {"-7%3", 0, -1},   {"7%-3", 0, 1},    {"7.5%2", 0, 1.5},
                                         {"x%3", -7, -1},   {"3%x", 2, 1},     {"x%(x-1)", 7, 1}, {"(x-1)%x", 7, 6},
                                         {"(x+1)%3", 7, 2}, {"20%(x+1)", 7, 4}};
    // Halves are rounded away from zero.
    const std::vector<Row> rounding = {{"abs(-3)", 0, 3},       {"round(2.5)", 0, 3},
                                       {"round(-2.5)", 0, -3},  {"floor(-0.5)", 0, -1},
                                       {"ceil(-0.5)", 0, -0.0}, {"round(0.49999999999999994)", 0, 0}};
    const std::vector<Row> powers = {{"x**0", 0, 1},  {"x**1", 5, 5},     {"x**3", -2, -8},  {"2**x", 10, 1024},
                                     {"x**x", 3, 27}, {"x**(x+1)", 2, 8}, {"(x+1)**x", 2, 9}};
    for (const auto* rows : {&precedence, &tokens, &longTokens, &remainders, &rounding, &powers})
        for (const Row& row : *rows) {
            const double value = Eval(row.text, row.x);
            EXPECT_EQ(value, row.expected) << row.text;
            EXPECT_EQ(std::signbit(value), std::signbit(row.expected)) << row.text;
        }
}

// A formula of random shape: its text, and its value found in another way, by walking a tree of lambdas.
struct RandomFormula {
    std::string text;
    std::function<double(double)> value;
};

RandomFormula MakeRandom(Random& random, int depth) {
    if (depth == 0 || random.below(6) == 0) {
        if (random.coin()) return {"x", [](double x) { return x; }};
        const double number = (random.below(9) + 1) / 4.0;
        return {std::to_string(number), [=](double) { return number; }};
    }
    // The text before, between and after the operands; without a text between them, there is but one.
    static const struct {
        const char *before, *between, *after;
        double (*apply)(double, double);
    } rows[] = {
        {"(", ")+(", ")", [](double a, double b) { return a + b; }},
        {"(", ")-(", ")", [](double a, double b) { return a - b; }},
        {"(", ")*(", ")", [](double a, double b) { return a * b; }},
        {"(", ")/(", ")", [](double a, double b) { return a / b; }},
        {"(", ")%(", ")", [](double a, double b) { return std::fmod(a, b); }},
        {"abs(", ")**(", ")", [](double a, double b) { return std::pow(std::abs(a), b); }},
        {"-(", "", ")", [](double a, double) { return -a; }},
        {"sin(", "", ")", [](double a, double) { return std::sin(a); }},
        {"cos(", "", ")", [](double a, double) { return std::cos(a); }},
        {"tan(", "", ")", [](double a, double) { return std::tan(a); }},
        {"asin(sin(", "", "))", [](double a, double) { return std::asin(std::sin(a)); }},
        {"acos(cos(", "", "))", [](double a, double) { return std::acos(std::cos(a)); }},
        {"atan(", "", ")", [](double a, double) { return std::atan(a); }},
        {"exp(", "", ")", [](double a, double) { return std::exp(a); }},
        {"log(", "", ")", [](double a, double) { return std::log(a); }},
        {"sqrt(", "", ")", [](double a, double) { return std::sqrt(a); }},
        {"floor(", "", ")", [](double a, double) { return std::floor(a); }},
        {"ceil(", "", ")", [](double a, double) { return std::ceil(a); }},
        {"round(", "", ")", [](double a, double) { return std::round(a); }},
        {"(", "", ")**2", [](double a, double) { return a * a; }},
        {"(", "", ")**-3", [](double a, double) { return std::pow(a, -3.0); }},
        {"2**(", "", ")", [](double a, double) { return std::pow(2.0, a); }},
    };
    const auto& row = random.oneOf(rows);
    // Shared, because copying functions that hold functions copies all of them.
    const auto a = std::make_shared<const RandomFormula>(MakeRandom(random, depth - 1));
    const auto b = *row.between ? std::make_shared<const RandomFormula>(MakeRandom(random, depth - 1)) : nullptr;
    return {row.before + a->text + row.between + (b ? b->text : "") + row.after,
            [a, b, apply = row.apply](double x) { return apply(a->value(x), b ? b->value(x) : 0.0); }};
}

TEST(FormulaValue, RandomFormulasHaveTheBitsOfTheSameExpressionWalkedAsATree) {
    Random random(20240229);
    for (int i = 0; i < 3000; ++i) {
        const RandomFormula formula = MakeRandom(random, 1 + i % 6);
        const auto parsed = Parse(formula.text);
        // b ** 1, 2 and 3 are products; the tree calls pow for them, which may differ in the last bit
        const double relative = formula.text.find("abs") != std::string::npos ? 1e-9 : 0.0;
        for (const double x : {-2.75, -1.0, 0.0, 0.3, 1.0, 4.5}) {
            const double expected = formula.value(x);
            const double value = parsed->eval(x, nowhere);
            ASSERT_TRUE(Same(value, expected) || std::abs(value - expected) <= relative * std::abs(expected))
                << formula.text << " at " << x << ": " << value << ", expected " << expected;
        }
    }
}

// --- derivatives -----------------------------------------------------------------------------------------------------

// Central differences of the fourth order.
template<class Function>
double FirstDifference(const Function& f, double x, double h = 1e-3) {
    return (f(x - 2 * h) - 8 * f(x - h) + 8 * f(x + h) - f(x + 2 * h)) / (12 * h);
}
template<class Function>
double SecondDifference(const Function& f, double x, double h = 1e-3) {
    return (-f(x - 2 * h) + 16 * f(x - h) - 30 * f(x) + 16 * f(x + h) - f(x + 2 * h)) / (12 * h * h);
}

TEST(FormulaDerivative, RandomFormulasAgreeWithDifferences) {
    Random random(7);
    int compared = 0;
    for (int i = 0; i < 3000; ++i) {
        const RandomFormula formula = MakeRandom(random, 1 + i % 4);
        // 0 ** something, stairs of stairs, which stand on their jumps, and remainders at jumps have no rule: they are
        // as exact as numeric derivatives are
        const auto count = [&](const char* name) {
            int found = 0;
            for (auto at = formula.text.find(name); at != std::string::npos; at = formula.text.find(name, at + 1))
                ++found;
            return found;
        };
        const int stairs = count("round") + count("ceil") + count("floor") + count("trunc");
        const bool ruled = count("abs") == 0 && count("%") == 0 && stairs < 2;
        const double least2 = ruled ? 1e-7 : 1e-4;
        const auto parsed = Parse(formula.text);
        for (const double x : {-1.3, 0.7, 2.9}) {
            // Differences with another step tell how far they can be trusted; no multiple, which would agree about
            // stairs.
            const double d1 = FirstDifference(formula.value, x);
            const double d2 = SecondDifference(formula.value, x);
            const double trust1 = std::abs(d1 - FirstDifference(formula.value, x, 2.3e-3)) + 1e-9 * (1 + std::abs(d1));
            const double trust2 =
                std::abs(d2 - SecondDifference(formula.value, x, 2.3e-3)) + least2 * (1 + std::abs(d2));
            if (!(trust1 < 1e-3 * (1 + std::abs(d1))) || !(trust2 < 1e-3 * (1 + std::abs(d2)))) continue;
            ++compared;
            ASSERT_NEAR(parsed->getFirstDerivative(x, nowhere), d1, trust1) << formula.text << " at " << x;
            ASSERT_NEAR(parsed->getSecondDerivative(x, nowhere), d2, trust2) << formula.text << " at " << x;
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
    } rows[] = {{"floor(x)", 2},   {"ceil(2*x)", 1.5}, {"round(x)+x", -0.5}, {"x%4", 8},         {"abs(x)", 0},
                {"abs(x-1)*x", 1}, {"sqrt(x*x)", 0},   {"(x*x)**0.5", 0},    {"(x*x)**(x+2)", 0}};
    for (const auto& row : rows) {
        const auto formula = Parse(row.text);
        const Plain plain(formula);
        EXPECT_EQ(formula->getFirstDerivative(row.x, nowhere), plain.getFirstDerivative(row.x, nowhere)) << row.text;
        EXPECT_EQ(formula->getSecondDerivative(row.x, nowhere), plain.getSecondDerivative(row.x, nowhere)) << row.text;
    }
    EXPECT_EQ(Parse("x%3")->getFirstDerivative(0.0, nowhere), 1.0) << "0 is a multiple, but no jump";
    EXPECT_EQ(Parse("abs(x*x)")->getSecondDerivative(0.0, nowhere), 2.0);
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
    } rows[] = {{"7", 0, 1},
                {"x%3", 0.25, 8},
                {"x**2", -1, 3},
                {"x**3", -1, 0.01},
                {"sin(x)", 0, 10},
                {"sin(x)", 10, 0},
                {"log(x)", 0.25, 1},
                {"exp(-x*x)", -50, 50},
                {"floor(x)", -2.5, 2.5},
                {"cos(3*x)*x", -4, 4},
                {"abs(x-1.2345)", 0, 2},
                {"sin(x)*1e-9+5", 0, 400},
                {"floor(x*50)*(1-x)", 0, 1},
                {"sqrt(abs(x-0.777))", 0, 1}};
    for (const auto& row : rows) {
        const auto formula = Parse(row.text);
        double low = kInfinity, high = -kInfinity;
        for (int i = 0; i <= 200000; ++i) {
            const double y = formula->eval(row.x0 + (row.x1 - row.x0) * i / 200000, nowhere);
            low = std::fmin(low, y);
            high = std::fmax(high, y);
        }
        const Bounds found = BoundsOf(*formula, nowhere, row.x0, row.x1);
        EXPECT_NEAR(found.low, low, 1e-4 * (high - low) + 1e-12) << row.text;
        EXPECT_NEAR(found.high, high, 1e-4 * (high - low) + 1e-12) << row.text;
    }
    EXPECT_NEAR(BoundsOf(*Parse("abs(x-1.2345)"), nowhere, 0.0, 2.0).low, 0.0, 1e-15);
    // At the edges of the domain.
    EXPECT_EQ(BoundsOf(*Parse("sqrt(x-0.33)"), nowhere, -1, 1).low, 0.0);
    EXPECT_NEAR(BoundsOf(*Parse("sqrt(-x)"), nowhere, -1.3, 0.9).low, 0.0, 1e-100);
    const Bounds arc = BoundsOf(*Parse("asin(x)"), nowhere, -3, 3.1);
    EXPECT_TRUE(arc.low == std::asin(-1.0) && arc.high == std::asin(1.0));
    const Bounds none = BoundsOf(*Parse("sqrt(-x)"), nowhere, 1.0, 2.0);
    EXPECT_TRUE(std::isnan(none.low) && std::isnan(none.high));
}

// --- errors ----------------------------------------------------------------------------------------------------------

const std::string scope = "VEM_FN::FCurveLib::DefaultFallbackParser::";

// What parseOrThrow throws, written down as by an ErrorRecorder; empty for nothing.
std::string Thrown(Parser& parser, const std::string& text) {
    try {
        parser.parseOrThrow(text.c_str());
        return "";
    } catch (const Parser::ParseError& error) {
        return ErrorText(error.what(), error.getMessage(), error.getPosition(), text);
    }
}

// Which texts are refused, and with which messages, is in tests/refused/expression.txt.
TEST(FormulaError, IsThrownOrHeardOrNeither) {
    const std::string expected = ErrorText(scope + "UnexpectedEnd", "The expression ended prematurely.", 3, "1 +");
    Parser parser;
    EXPECT_EQ(parser.parse("1 +"), nullptr) << "without a callback";
    const ErrorRecorder recorder;
    parser.setErrorCallback(&recorder);
    EXPECT_EQ(parser.parse("1 +"), nullptr);
    EXPECT_EQ(Thrown(parser, "1 +"), expected) << "and does not call back";
    EXPECT_EQ(recorder.heard, std::vector<std::string>{expected});
    EXPECT_THROW(Parser().parseOrThrow(nullptr), Parser::UnexpectedEnd);
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
    Parser parser;
    for (const std::string& text : {parenthesised(depth + 1), Repeat("-", depth + 1) + "x",
                                    Repeat("x**", depth + 1) + "1", Repeat("sin(", depth + 1) + "x"})
        EXPECT_THAT(Thrown(parser, text),
                    testing::StartsWith(scope + "ParseError: There is an unknown error in the expression. At"));
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

struct FormulaMaker : testing::Test {
    std::shared_ptr<HostMaker> maker = std::make_shared<HostMaker>();
    Parser parser;

    FormulaMaker() { parser.addMaker(maker); }
};

TEST_F(FormulaMaker, NamesAndFunctionsOfTheHost) {
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

TEST_F(FormulaMaker, TheLastOneIsAskedFirst) {
    const auto last = std::make_shared<HostMaker>();
    last->level = 30.0;
    parser.addMaker(last);
    EXPECT_EQ(parser.parseOrThrow("level")->eval(0.0, nowhere), 30.0);
}

TEST_F(FormulaMaker, AnInterpolatorThatTheMakerHoldsKeepsItsExpression) {
    maker->m_shared->setExpression("own");
    const auto made = parser.parseOrThrow(" (shared)");
    EXPECT_STREQ(made->getExpression(), " (shared)");
    EXPECT_EQ(made->eval(0.0, nowhere), 3.0);
    EXPECT_STREQ(maker->m_shared->getExpression(), "own");
}

TEST_F(FormulaMaker, OneThatThrowsFailsTheText) {
    const ErrorRecorder recorder;
    parser.setErrorCallback(&recorder);
    EXPECT_EQ(parser.parse("1 + broken"), nullptr);
    EXPECT_EQ(recorder.heard, std::vector<std::string>{ErrorText(
                                  scope + "ParseError", "An unknown error prevented the expression from being parsed.",
                                  4, "1 + broken")});
}

} // namespace
} // namespace Test
