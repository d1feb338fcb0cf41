#include "interp/FormulaCompiler.h"

#include "FCurveLib/DefaultFallbackParser.h"
#include "FCurveLib/NumberInterp.h"
#include "interp/Formula.h"
#include "interp/FormulaTokenizer.h"
#include "interp/Kinds.h"

#include <cmath>
#include <cstddef>
#include <list>
#include <new>
#include <optional>
#include <string>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace {

using Parser = DefaultFallbackParser;
using Code = FormulaProgram::Code;

// --- vocabulary ------------------------------------------------------------------------------------------------------

constexpr double kPi = 3.14159265358979323846;
constexpr double kEuler = 2.71828182845904523536;

struct Function {
    std::string_view name;
    Code code;
};
constexpr Function kFunctions[] = {
    {"sin", Code::Sin},     {"cos", Code::Cos}, {"tan", Code::Tan},   {"asin", Code::Asin}, {"acos", Code::Acos},
    {"atan", Code::Atan},   {"exp", Code::Exp}, {"log", Code::Log},   {"ceil", Code::Ceil}, {"floor", Code::Floor},
    {"round", Code::Round}, {"abs", Code::Abs}, {"sqrt", Code::Sqrt},
};

const Function* FindFunction(std::string_view name) noexcept {
    for (const Function& function : kFunctions)
        if (function.name == name) return &function;
    return nullptr;
}

// How a binary operator is written down, by where its operands are. An absent form takes a push and the stacked or the
// reversed form.
struct Operator {
    TokenKind token;
    Code stacked;                 // stack op accumulator
    std::optional<Code> reversed; // accumulator op stack
    std::optional<Code> rightX;   // accumulator op x
    std::optional<Code> rightNumber;
    std::optional<Code> leftX; // x op accumulator
    std::optional<Code> leftNumber;
};
constexpr Operator kSumOperators[] = {
    {TokenKind::Plus, Code::Add, {}, Code::AddX, Code::AddNumber, Code::AddX, Code::AddNumber},
    {TokenKind::Minus, Code::Subtract, {}, Code::SubtractX, Code::SubtractNumber, Code::FromX, Code::FromNumber},
};
constexpr Operator kProductOperators[] = {
    {TokenKind::Times,
     Code::Multiply,
     {},
     Code::MultiplyX,
     Code::MultiplyNumber,
     Code::MultiplyX,
     Code::MultiplyNumber},
    {TokenKind::Divide, Code::Divide, {}, Code::DivideX, Code::DivideNumber, Code::XDivided, Code::NumberDivided},
    {TokenKind::Modulo, Code::Modulo, Code::ReverseModulo, {}, {}, {}, {}},
};
constexpr Operator kPowerOperators[] = {
    {TokenKind::Power, Code::Power, Code::ReversePower, {}, Code::PowerNumber, {}, {}},
};

// --- messages --------------------------------------------------------------------------------------------------------

constexpr char kUnknownError[] = "There is an unknown error in the expression.";
constexpr char kMakerFailed[] = "An unknown error prevented the expression from being parsed.";

std::string ExpectedButFound(const char* expected, TokenKind found) {
    return std::string("There is an error in the expression. A ") + expected + " was expected, but " + Describe(found)
           + " was found.";
}

std::string Unknown(const char* what, std::string_view name) {
    return std::string("There is an unknown ") + what + " (\"" + std::string(name) + "\") in the expression.";
}

// --- compiler --------------------------------------------------------------------------------------------------------

// A recursive descent that writes the program as it goes. Numbers and x are held back as operands until an operation
// needs them, which takes them in the operation itself or computes with them at once.
class Compiler {
public:
    Compiler(std::string_view text, const InterpMakers& makers) : m_text(text), m_makers(makers), m_tokenizer(text) {}

    std::shared_ptr<Interpolator> compile() {
        advance();
        std::shared_ptr<Interpolator> result = expression().first;
        if (m_token.kind == TokenKind::Close) throw Parser::UnbalancedParens(unbalanced, m_token.begin);
        if (m_token.kind != TokenKind::End)
            throw Parser::ExtraTokens("There are extra characters at the end of the expression.", m_token.begin);
        result->setExpression(std::string(m_text).c_str());
        return result;
    }

private:
    struct Operand {
        enum Kind { Number, X, Result } kind; // Result: in the accumulator
        double number = 0.0;
    };

    static constexpr char unbalanced[] = "There are unbalanced parentheses in the expression.";

    // --- tokens ---
    void advance() {
        m_end = m_token.end;
        m_token = m_tokenizer.next();
        if (m_token.kind == TokenKind::Error) throw Parser::ErrorToken(kUnknownError, m_token.begin);
    }
    bool take(TokenKind kind) {
        if (m_token.kind != kind) return false;
        advance();
        return true;
    }
    void close(std::size_t open) {
        if (m_token.kind == TokenKind::End) throw Parser::UnbalancedParens(unbalanced, open);
        if (!take(TokenKind::Close))
            throw Parser::UnexpectedToken(ExpectedButFound("\")\"", m_token.kind), m_token.begin);
    }
    [[noreturn]] static void throwUnexpectedEnd(std::size_t position) {
        throw Parser::UnexpectedEnd("The expression ended prematurely.", position);
    }

    // --- grammar ---

    // A whole sum as an interpolator of its own, with its number if it is one.
    std::pair<std::shared_ptr<Interpolator>, std::optional<double>> expression() {
        FormulaProgram outerProgram = std::exchange(m_program, FormulaProgram());
        const bool outerBusy = std::exchange(m_busy, false);
        const std::size_t begin = m_token.begin;

        Operand operand = sum();
        std::optional<double> number;
        if (operand.kind == Operand::Number) number = operand.number;
        load(operand);

        FormulaProgram program = std::exchange(m_program, std::move(outerProgram));
        m_busy = outerBusy;
        const std::string text(m_text.substr(begin, m_end - begin));
        if (std::shared_ptr<Interpolator> leaf = program.onlyLeaf()) {
            program = FormulaProgram();
            if (leaf.use_count() > 1) leaf = leaf->clone(); // the maker's own, whose expression must stay
            leaf->setExpression(text.c_str());
            return {std::move(leaf), number};
        }
        return {std::make_shared<Formula>(std::move(program), text), number};
    }

    Operand sum() { return chain(kSumOperators, &Compiler::product); }
    Operand product() { return chain(kProductOperators, &Compiler::sign); }

    // next { operator next }, from left to right
    template<std::size_t count>
    Operand chain(const Operator (&operators)[count], Operand (Compiler::*next)()) {
        Operand left = (this->*next)();
        while (const Operator* const op = takeOperator(operators)) left = combine(*op, left, right(left, next));
        return left;
    }

    Operand sign() {
        if (m_depth > Parser::getMaxDepth()) throw Parser::ParseError(kUnknownError, m_token.begin);
        ++m_depth;
        Operand operand;
        if (take(TokenKind::Plus))
            operand = sign();
        else if (take(TokenKind::Minus))
            operand = apply(Code::Negate, sign());
        else
            operand = power();
        --m_depth;
        return operand;
    }

    Operand power() {
        const Operand base = primary();
        const Operator* const op = takeOperator(kPowerOperators);
        return op ? combine(*op, base, right(base, &Compiler::sign)) : base;
    }

    Operand primary() {
        const Token token = m_token;
        switch (token.kind) {
        case TokenKind::Number:
            advance();
            return {Operand::Number, token.number};
        case TokenKind::Name:
            advance();
            return m_token.kind == TokenKind::Open ? call(token) : name(token);
        case TokenKind::Open: {
            advance();
            const Operand operand = sum();
            close(token.begin);
            return operand;
        }
        case TokenKind::End:
            throwUnexpectedEnd(token.begin);
        default:
            throw Parser::PrimitiveExpected(ExpectedButFound("name or number", token.kind), token.begin);
        }
    }

    Operand name(const Token& token) {
        if (token.text == "x") return {Operand::X};
        if (token.text == "pi") return {Operand::Number, kPi};
        if (token.text == "e") return {Operand::Number, kEuler};
        if (FindFunction(token.text)) {
            if (m_token.kind == TokenKind::End) throwUnexpectedEnd(m_token.begin);
            throw Parser::UnexpectedToken(ExpectedButFound("\"(\"", m_token.kind), m_token.begin);
        }
        const std::string text(token.text);
        const auto made = askMakers(token, [&](InterpMaker& maker) { return maker.makeName(text.c_str()); });
        if (!made) throw Parser::UnrecognizedName(Unknown("name", text), token.begin);
        return leaf(made);
    }

    Operand call(const Token& token) {
        const std::size_t open = m_token.begin;
        advance();
        if (const Function* const function = FindFunction(token.text)) {
            const Operand operand = apply(function->code, sum());
            close(open);
            return operand;
        }

        std::list<InterpMaker::Argument> arguments;
        if (m_token.kind != TokenKind::Close) {
            do arguments.push_back(argument());
            while (take(TokenKind::Comma));
        }
        close(open);
        const std::string text(token.text);
        const auto made =
            askMakers(token, [&](InterpMaker& maker) { return maker.makeFunction(text.c_str(), arguments); });
        if (!made) throw Parser::UnrecognizedFunction(Unknown("function", text), token.begin);
        return leaf(made);
    }

    InterpMaker::Argument argument() {
        if (m_token.kind == TokenKind::String) {
            InterpMaker::Argument argument{nullptr, std::string(m_token.text), std::nullopt};
            advance();
            return argument;
        }
        const std::size_t begin = m_token.begin;
        auto [interpolator, number] = expression();
        return {std::move(interpolator), std::string(m_text.substr(begin, m_end - begin)), number};
    }

    template<class Ask>
    std::shared_ptr<Interpolator> askMakers(const Token& token, const Ask& ask) const {
        try {
            for (auto maker = m_makers.rbegin(); maker != m_makers.rend(); ++maker)
                if (std::shared_ptr<Interpolator> made = ask(**maker)) return made;
        } catch (const std::bad_alloc&) {
            throw;
        } catch (...) {
            throw Parser::ParseError(kMakerFailed, token.begin);
        }
        return nullptr;
    }

    // --- operands ---

    template<std::size_t count>
    const Operator* takeOperator(const Operator (&operators)[count]) {
        for (const Operator& op : operators)
            if (take(op.token)) return &op;
        return nullptr;
    }

    // Parses the right operand of a left one, which may be in the accumulator: then the right one must push it first.
    Operand right(const Operand& left, Operand (Compiler::*next)()) {
        const bool outerBusy = m_busy;
        m_busy = m_busy || left.kind == Operand::Result;
        const Operand operand = (this->*next)();
        m_busy = outerBusy;
        return operand;
    }

    Operand leaf(const std::shared_ptr<Interpolator>& made) {
        if (KindOf(*made).kind == Kind::Number)
            return {Operand::Number, static_cast<const NumberInterp&>(*made).getNumber()};
        append(m_program, {m_busy ? Code::PushLeaf : Code::LoadLeaf, m_program.addLeaf(made)});
        return {Operand::Result};
    }

    void load(const Operand& operand) {
        if (operand.kind == Operand::Number)
            append(m_program, {m_busy ? Code::PushNumber : Code::LoadNumber, 0, operand.number});
        else if (operand.kind == Operand::X && m_busy) // otherwise this is the program's start, and x is there
            append(m_program, {Code::PushX});
    }

    Operand apply(Code code, const Operand& operand) {
        if (operand.kind == Operand::Number) {
            FormulaProgram program;
            append(program, {Code::LoadNumber, 0, operand.number});
            append(program, {code});
            return {Operand::Number, compute(program)};
        }
        load(operand);
        append(m_program, {code});
        return {Operand::Result};
    }

    Operand combine(const Operator& op, const Operand& left, const Operand& right) {
        const bool rightIsNumber = right.kind == Operand::Number;
        if (op.token == TokenKind::Power && rightIsNumber && right.number == 1.0) return left;
        if (left.kind == Operand::Number && rightIsNumber) {
            FormulaProgram program;
            append(program, {Code::LoadNumber, 0, left.number});
            appendRight(program, op, right);
            return {Operand::Number, compute(program)};
        }
        if (left.kind == Operand::Number || (left.kind == Operand::X && right.kind == Operand::Result)) {
            load(right);
            appendLeft(op, left);
        } else {
            load(left);
            appendRight(m_program, op, right);
        }
        return {Operand::Result};
    }

    // --- operations ---

    // The result of a program in which x does not occur.
    static double compute(const FormulaProgram& program) {
        return program.run<double>(0.0, [](const Interpolator&) { return 0.0; });
    }

    void append(FormulaProgram& program, const FormulaProgram::Operation& operation) const {
        if (!program.append(operation)) throw Parser::ParseError(kUnknownError, m_token.begin);
    }

    // accumulator op right
    void appendRight(FormulaProgram& program, const Operator& op, const Operand& right) const {
        switch (right.kind) {
        case Operand::Number:
            if (op.token == TokenKind::Power && right.number == 2.0)
                append(program, {Code::Square});
            else if (op.token == TokenKind::Power && right.number == 3.0)
                append(program, {Code::Cube});
            else if (op.rightNumber)
                append(program, {*op.rightNumber, 0, right.number});
            else {
                append(program, {Code::PushNumber, 0, right.number});
                append(program, {op.stacked});
            }
            break;
        case Operand::X:
            if (!op.rightX) append(program, {Code::PushX});
            append(program, {op.rightX ? *op.rightX : op.stacked});
            break;
        case Operand::Result:
            append(program, {op.stacked});
            break;
        }
    }

    // left op accumulator
    void appendLeft(const Operator& op, const Operand& left) {
        const bool isNumber = left.kind == Operand::Number;
        if (const std::optional<Code> form = isNumber ? op.leftNumber : op.leftX) {
            append(m_program, {*form, 0, left.number});
        } else {
            append(m_program, {isNumber ? Code::PushNumber : Code::PushX, 0, left.number});
            append(m_program, {*op.reversed});
        }
    }

    std::string_view m_text;
    const InterpMakers& m_makers;
    FormulaTokenizer m_tokenizer;
    Token m_token;         // the next one, not yet taken
    std::size_t m_end = 0; // of the last one taken
    std::size_t m_depth = 0;
    FormulaProgram m_program;
    bool m_busy = false; // the accumulator holds a left operand that is still needed
};

} // namespace

std::shared_ptr<Interpolator> CompileFormula(std::string_view text, const InterpMakers& makers) {
    return Compiler(text, makers).compile();
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
