#pragma once

#include "playback/PlaybackCurve.h"

#include "FCurveLib/FCurve.h"

#include <memory>
#include <new>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// Compiled curves and all that belongs to them. The numbers lie in one piece of memory: the curves, then for each its
// pieces and its buckets.
class PlaybackBlock {
public:
    // Null counts as an empty curve. Throws what a host's clone throws, and std::bad_alloc.
    explicit PlaybackBlock(const std::vector<const FCurve*>& curves);
    PlaybackBlock(const PlaybackBlock&) = delete;
    PlaybackBlock& operator=(const PlaybackBlock&) = delete;

    std::size_t size() const noexcept { return m_names.size(); }
    const PlaybackCurve* curves() const noexcept { return m_curves; }
    const char* name(std::size_t curve) const noexcept { return m_names[curve].c_str(); }

private:
    friend class Compiler;

    static constexpr std::align_val_t line{64};
    struct Free {
        void operator()(void* memory) const noexcept { ::operator delete(memory, line); }
    };

    std::unique_ptr<void, Free> m_memory;
    PlaybackCurve* m_curves = nullptr;
    std::vector<PlaybackInterpolator> m_interpolators;
    std::vector<std::string> m_names;
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
