#include "interp/FormulaProgram.h"

#include <algorithm>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

FormulaProgram::FormulaProgram(const FormulaProgram& other) : m_operations(other.m_operations) {
    m_leaves.reserve(other.m_leaves.size());
    for (const auto& leaf : other.m_leaves) m_leaves.push_back(leaf->clone());
}

bool FormulaProgram::append(const Operation& operation) {
    switch (operation.code) {
    case Code::PushX:
    case Code::PushNumber:
    case Code::PushLeaf:
        if (m_stack == maxStack) return false;
        ++m_stack;
        break;
    case Code::Add:
    case Code::Subtract:
    case Code::Multiply:
    case Code::Divide:
    case Code::Modulo:
    case Code::ReverseModulo:
    case Code::Power:
    case Code::ReversePower:
        --m_stack;
        break;
    default:
        break;
    }
    if (!fuse(operation)) m_operations.push_back(operation);
    return true;
}

bool FormulaProgram::fuse(const Operation& operation) {
    if (m_operations.empty()) return false;
    Operation& last = m_operations.back();
    switch (operation.code) {
    case Code::Sin:
    case Code::Cos:
        if (last.code != Code::MultiplyNumber) return false;
        last.code = operation.code;
        return true;
    case Code::MultiplyNumber:
        switch (last.code) {
        case Code::Sin:
        case Code::Cos:
        case Code::Square:
        case Code::Cube:
            if (last.factor != 1.0) return false;
            last.factor = operation.number;
            return true;
        default:
            return false;
        }
    default:
        return false;
    }
}

std::uint32_t FormulaProgram::addLeaf(std::shared_ptr<Interpolator> leaf) {
    m_leaves.push_back(std::move(leaf));
    return static_cast<std::uint32_t>(m_leaves.size() - 1);
}

FormulaProgram FormulaProgram::withLeaves(std::vector<std::shared_ptr<Interpolator>> leaves) const {
    FormulaProgram result;
    result.m_operations = m_operations;
    result.m_leaves = std::move(leaves);
    result.m_stack = m_stack;
    return result;
}

std::shared_ptr<Interpolator> FormulaProgram::onlyLeaf() const {
    return m_operations.size() == 1 && m_operations.front().code == Code::LoadLeaf ? m_leaves.front() : nullptr;
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
