#pragma once

// Numbers, places and edits, chosen at random or by the bytes of a fuzzer.

#include <functional>
#include <iterator>
#include <random>
#include <vector>

namespace Test {

/// Whether the standard library is GCC's: random numbers are others with each, and so are counts of what they lead to.
#ifdef __GLIBCXX__
constexpr bool kNumbersAreGccs = true;
#else
constexpr bool kNumbersAreGccs = false;
#endif

/// Something to do to what is tested.
struct Edit {
    const char* name;
    std::function<void()> act;
};

class Choices {
public:
    virtual ~Choices() = default;

    virtual int below(int count) = 0;
    virtual double between(double low, double high) = 0;
    /// Of a key or a handle.
    virtual double coordinate() = 0;
    /// Whether there is nothing left to choose by.
    virtual bool ended() const { return false; }

    bool coin() { return below(2) == 0; }

    /// A position in an array, a vector, a curve or a container, which are not empty.
    template<class Range>
    auto placeIn(Range& range) {
        return std::next(std::begin(range), below(static_cast<int>(std::size(range))));
    }
    template<class Range>
    auto& oneOf(Range& range) {
        return *placeIn(range);
    }

    /// Does one of the edits and tells its name. What is there twice happens twice as often.
    const char* act(const std::vector<Edit>& edits) {
        const Edit& edit = oneOf(edits);
        edit.act();
        return edit.name;
    }
};

/// The same choices for the same seed.
class Random : public Choices {
public:
    explicit Random(unsigned seed) : m_engine(seed) {}

    double between(double low, double high) override {
        return std::uniform_real_distribution<double>(low, high)(m_engine);
    }
    int below(int count) override { return std::uniform_int_distribution<int>(0, count - 1)(m_engine); }
    /// Often one of few, so that parts agree.
    double coordinate() override { return coin() ? below(3) : between(-9, 9); }

private:
    std::mt19937 m_engine;
};

} // namespace Test
