#pragma once

// One block of memory for a key, the segment that starts at it and that segment's tangents.
//
// Each has a shared owner of its own and lives as long as that; the block goes with the last of them. Evaluation reads
// all of them, so they should share pages and cache lines also where the heap is worn; and one allocation is cheaper
// than three.

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// The size of what every kind of part may follow.
constexpr std::size_t RoundedUp(std::size_t size) noexcept {
    constexpr std::size_t alignment = alignof(void*);
    return (size + alignment - 1) / alignment * alignment;
}

class PartBundle {
public:
    // Holds the block while parts are put into it.
    class Maker {
    public:
        explicit Maker(std::size_t capacity)
            : m_bundle(new (::operator new(headSize + capacity)) PartBundle(capacity)) {}
        Maker(const Maker&) = delete;
        Maker& operator=(const Maker&) = delete;
        ~Maker() { m_bundle->drop(); }

        template<class Part, class... Arguments>
        std::shared_ptr<Part> make(Arguments&&... arguments) {
            return std::allocate_shared<Part>(Allocator<Part>(m_bundle), std::forward<Arguments>(arguments)...);
        }

    private:
        PartBundle* m_bundle;
    };

    // Room for a part and what its shared owner counts with: a table, two counts, the allocator.
    template<class Part>
    static constexpr std::size_t roomFor() noexcept {
        return RoundedUp(sizeof(Part) + 3 * sizeof(void*));
    }

private:
    static constexpr std::size_t headSize = RoundedUp(3 * sizeof(unsigned));

    template<class Part>
    struct Allocator {
        using value_type = Part;

        explicit Allocator(PartBundle* b) noexcept : bundle(b) {}
        template<class Other>
        Allocator(const Allocator<Other>& other) noexcept : bundle(other.bundle) {}

        Part* allocate(std::size_t count) {
            static_assert(alignof(Part) <= alignof(void*));
            return static_cast<Part*>(bundle->take(count * sizeof(Part)));
        }
        void deallocate(Part* part, std::size_t) noexcept { bundle->giveBack(part); }

        template<class Other>
        friend bool operator==(const Allocator& a, const Allocator<Other>& b) noexcept {
            return a.bundle == b.bundle;
        }
        template<class Other>
        friend bool operator!=(const Allocator& a, const Allocator<Other>& b) noexcept {
            return a.bundle != b.bundle;
        }

        PartBundle* bundle;
    };

    explicit PartBundle(std::size_t capacity) noexcept : m_capacity(static_cast<unsigned>(capacity)) {
        static_assert(sizeof(PartBundle) <= headSize);
    }

    char* begin() noexcept { return reinterpret_cast<char*>(this) + headSize; }

    void* take(std::size_t size);
    void giveBack(void* place) noexcept;
    void drop() noexcept;

    std::atomic<unsigned> m_live{1}; // parts, and the maker; they may go on any thread
    unsigned m_used = 0;
    const unsigned m_capacity;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
