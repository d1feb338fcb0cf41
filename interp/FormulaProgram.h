#pragma once

#include "interp/Jet.h"

#include "FCurveLib/Interpolator.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// A formula as a flat list of operations on an accumulator and a stack: walking it is faster than walking a tree of
// objects. The accumulator holds x at first. A binary operation has a form for each place its other operand can be in:
// the stack, x itself, a constant in the operation. The waves and powers that animation is full of, 10*sin(0.1*x) and
// 3*x**2, take one operation.
class FormulaProgram {
public:
    enum class Code : std::uint8_t {
        LoadNumber, // these two overwrite the accumulator ...
        LoadLeaf,
        PushX, // ... and these save it on the stack first
        PushNumber,
        PushLeaf,

        Add, // b + a, where a is the accumulator and b comes from the stack
        AddX,
        AddNumber,
        Subtract, // b - a
        SubtractX,
        SubtractNumber,
        FromX, // x - a
        FromNumber,
        Multiply,
        MultiplyX,
        MultiplyNumber,
        Divide, // b / a
        DivideX,
        DivideNumber,
        XDivided, // x / a
        NumberDivided,
        Modulo, // b % a
        ReverseModulo,
        Power, // b ** a
        ReversePower,
        PowerNumber, // a ** number
        Square,      // a ** 2 * factor
        Cube,

        Negate,
        Sin, // sin(a * number) * factor
        Cos,
        Tan,
        Asin,
        Acos,
        Atan,
        Exp,
        Log,
        Ceil,
        Floor,
        Round,
        Abs,
        Sqrt
    };

    struct Operation {
        Code code;
        std::uint32_t leaf = 0; // index, of LoadLeaf and PushLeaf
        double number = 1.0;
        double factor = 1.0;
    };

    // The deepest stack that a program may need.
    static constexpr std::size_t maxStack = 768;

    // The accumulator after the last operation. V is double for the value, Jet for value and derivatives; readLeaf
    // gives a leaf's V at x.
    template<class V, class ReadLeaf>
    V run(double x, const ReadLeaf& readLeaf) const;

    FormulaProgram() = default;
    FormulaProgram(FormulaProgram&&) = default;
    FormulaProgram& operator=(FormulaProgram&&) = default;
    FormulaProgram(const FormulaProgram& other); // clones the leaves

    // Returns false, and adds nothing, when the stack would get too deep.
    bool append(const Operation& operation);
    // The index of a new leaf.
    std::uint32_t addLeaf(std::shared_ptr<Interpolator> leaf);

    bool empty() const noexcept { return m_operations.empty(); }
    const std::vector<std::shared_ptr<Interpolator>>& leaves() const noexcept { return m_leaves; }
    // The same operations on other leaves, one for each of these.
    FormulaProgram withLeaves(std::vector<std::shared_ptr<Interpolator>> leaves) const;
    // The leaf that is all of the program; null for any other program.
    std::shared_ptr<Interpolator> onlyLeaf() const;

private:
    // Merges an operation into the one before it, if the two have a common form with the same result to the last bit.
    bool fuse(const Operation& operation);

    std::vector<Operation> m_operations;
    std::vector<std::shared_ptr<Interpolator>> m_leaves;
    std::size_t m_stack = 0;
};

template<class V, class ReadLeaf>
V FormulaProgram::run(double x, const ReadLeaf& readLeaf) const {
    V stack[maxStack]; // deliberate: not initialised, a formula touches only what it needs
    V* top = stack;
    // The compiler, FormulaCompiler.cpp, writes a push for every pop.
    const auto pop = [&top]() -> V { return *--top; }; // NOLINT(clang-analyzer-core.uninitialized.UndefReturn)
    const V vx = Variable<V>(x);
    V a = vx;
    for (const Operation& operation : m_operations) {
        switch (operation.code) {
        case Code::LoadNumber:
            a = Number<V>(operation.number);
            break;
        case Code::LoadLeaf:
            a = readLeaf(*m_leaves[operation.leaf]);
            break;
        case Code::PushX:
            *top++ = a;
            a = vx;
            break;
        case Code::PushNumber:
            *top++ = a;
            a = Number<V>(operation.number);
            break;
        case Code::PushLeaf:
            *top++ = a;
            a = readLeaf(*m_leaves[operation.leaf]);
            break;

        case Code::Add:
            a = pop() + a;
            break;
        case Code::AddX:
            a = a + vx;
            break;
        case Code::AddNumber:
            a = a + operation.number;
            break;
        case Code::Subtract:
            a = pop() - a;
            break;
        case Code::SubtractX:
            a = a - vx;
            break;
        case Code::SubtractNumber:
            a = a - operation.number;
            break;
        case Code::FromX:
            a = vx - a;
            break;
        case Code::FromNumber:
            a = operation.number - a;
            break;
        case Code::Multiply:
            a = pop() * a;
            break;
        case Code::MultiplyX:
            a = a * vx;
            break;
        case Code::MultiplyNumber:
            a = a * operation.number;
            break;
        case Code::Divide:
            a = pop() / a;
            break;
        case Code::DivideX:
            a = a / vx;
            break;
        case Code::DivideNumber:
            a = a / operation.number;
            break;
        case Code::XDivided:
            a = vx / a;
            break;
        case Code::NumberDivided:
            a = operation.number / a;
            break;
        case Code::Modulo:
            a = Remainder(pop(), a);
            break;
        case Code::ReverseModulo:
            a = Remainder(a, pop());
            break;
        case Code::Power:
            a = Private::Power(pop(), a);
            break;
        case Code::ReversePower:
            a = Private::Power(a, pop());
            break;
        case Code::PowerNumber:
            a = Private::Power(a, operation.number);
            break;
        case Code::Square:
            a = a * a * operation.factor;
            break;
        case Code::Cube:
            a = a * a * a * operation.factor;
            break;

        case Code::Negate:
            a = -a;
            break;
        case Code::Sin:
            a = Private::Sin(a * operation.number) * operation.factor;
            break;
        case Code::Cos:
            a = Private::Cos(a * operation.number) * operation.factor;
            break;
        case Code::Tan:
            a = Private::Tan(a);
            break;
        case Code::Asin:
            a = Private::Asin(a);
            break;
        case Code::Acos:
            a = Private::Acos(a);
            break;
        case Code::Atan:
            a = Private::Atan(a);
            break;
        case Code::Exp:
            a = Private::Exp(a);
            break;
        case Code::Log:
            a = Private::Log(a);
            break;
        case Code::Ceil:
            a = Private::Ceil(a);
            break;
        case Code::Floor:
            a = Private::Floor(a);
            break;
        case Code::Round:
            a = Private::Round(a);
            break;
        case Code::Abs:
            a = Private::Abs(a);
            break;
        case Code::Sqrt:
            a = Private::Sqrt(a);
            break;
        }
    }
    return a;
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
