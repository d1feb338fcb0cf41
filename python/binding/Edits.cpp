#include "Edits.h"

#include "Binding.h"

namespace FCurvePython {

namespace {

thread_local Edit* innermost = nullptr;

} // namespace

int& Evaluating::depth() noexcept {
    thread_local int depth = 0;
    return depth;
}

Edit::Edit() : m_outer(innermost) {
    if (Evaluating::depth() > 0)
        Raise("Error", py::make_tuple("Nothing can be edited while an interpolator is being called"));
    innermost = this;
}

Edit::~Edit() {
    innermost = m_outer;
}

void Edit::finish() {
    if (m_raised) throw py::error_already_set(*m_raised);
}

bool Edit::keep(const py::error_already_set& raised) {
    if (!innermost) return false;
    std::optional<py::error_already_set>& kept = innermost->m_raised;
    if (!kept || (kept->matches(PyExc_Exception) && !raised.matches(PyExc_Exception))) kept.emplace(raised);
    return true;
}

} // namespace FCurvePython
