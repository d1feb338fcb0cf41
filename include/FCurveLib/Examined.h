#pragma once

#include <cstdint>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// What any number of parts say about one quantity: None where there is no part, Same where all have the same value,
/// Mixed where they differ. What a property panel shows: nothing, the value, or a dash.
template<class T>
class Examined {
public:
    enum State : std::uint8_t { None, Same, Mixed };

    Examined() = default;

    State getState() const noexcept { return m_state; }
    bool isNone() const noexcept { return m_state == None; }
    bool isEqual() const noexcept { return m_state == Same; }
    bool isMixed() const noexcept { return m_state == Mixed; }
    /// The common value; T() unless isEqual().
    const T& getValue() const noexcept { return m_value; }

    /// \name Collect
    /// @{

    /// One more part with this value; values are compared with ==.
    template<class Value>
    void include(const Value& value) {
        if (m_state == None) {
            m_value = value;
            m_state = Same;
        } else if (m_state == Same && !(m_value == value)) {
            setMixed();
        }
    }
    /// All the parts of another one.
    void merge(const Examined& other) {
        if (other.m_state == Same) {
            include(other.m_value);
        } else if (other.m_state == Mixed) {
            setMixed();
        }
    }
    void setMixed() {
        m_value = T();
        m_state = Mixed;
    }
    /// @}

    friend bool operator==(const Examined& a, const Examined& b) {
        return a.m_state == b.m_state && a.m_value == b.m_value;
    }
    friend bool operator!=(const Examined& a, const Examined& b) { return !(a == b); }

private:
    T m_value{};
    State m_state = None;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
