#pragma once

// What an edit changed: of every part that it touched the state before, once. A key's parts are recorded as a block,
// and blocks that left their curve are held, so that what comes back are the same objects.

#include "FCurveLib/FCurveContainer.h"
#include "model/Raw.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

class EditChanges;
class EditWatch;

class EditRecord {
public:
    explicit EditRecord(std::string name);
    EditRecord(const EditRecord&) = delete;
    EditRecord& operator=(const EditRecord&) = delete;
    ~EditRecord();

    const std::string& name() const noexcept { return m_name; }

    // --- while the edit goes on: before each change ------------------------------------------------------------------
    void touch(Block& block);
    void add(FCurve& curve, Block& block);
    void remove(Block& block);
    void touchAll(FCurve& curve); // its blocks, name and properties
    void nameOf(FCurve& curve);
    void property(Recorder::Carrier carrier, void* place, const char* key);
    void contents(FCurveContainer& container);

    bool mentions(const FCurve& curve) const noexcept;
    bool isEmpty() const noexcept;
    // Whether anything is other than before, while it is open. Linear in what was touched, at worst.
    bool changes(const FCurveContainer& container) const noexcept;

    // --- afterwards --------------------------------------------------------------------------------------------------
    // Adds what an edit recorded that came right after this one. Both are open.
    void absorb(EditRecord& later);
    // Forgets what is as it was, and gives room back.
    void close(FCurveContainer& container);
    // Opens it again for absorb(). The curves are those that the container had when it was closed; returns those that
    // it had before.
    using Curves = std::vector<std::shared_ptr<FCurve>>;
    Curves reopen(Curves after);
    static Curves curvesOf(FCurveContainer& container);
    // Brings the recorded state back, and takes the present one in its place; std::bad_alloc leaves both as they were.
    // Closed.
    void exchange(FCurveContainer& container, EditChanges& changes);
    // Calls with each curve that exchange() may bring into the container.
    template<class Call>
    void eachCurve(const Call& call) const {
        if (!m_contents) return;
        for (const auto& curve : m_contents->curves) call(*curve);
    }
    // Tells what exchange() is about to change.
    void watch(EditWatch& watch) const;

    // A curve is about to die, but its blocks that are recorded stay.
    void destroyed(FCurve& curve);
    // Forgets everything.
    void forget() noexcept;

    // What it keeps in memory, parts and curves that it alone keeps included.
    std::size_t bytes(const FCurveContainer& container) const noexcept;
    // Roughly so, while it is open.
    std::size_t openBytes() const noexcept;

private:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    struct BlockRecord : BlockShape {
        std::uint32_t was = none; // number of the curve that it was in
        std::shared_ptr<Block> block;
    };
    struct PropertyRecord {
        void* place;
        std::uint32_t value;
        std::uint32_t key; // of the text, times 8, and the carrier
        Recorder::Carrier carrier() const noexcept { return static_cast<Recorder::Carrier>(key % 8); }
    };
    struct Contents {
        std::size_t first = 0;
        std::size_t count = 0; // as many curves from there on stand where these stood
        Curves curves;
    };
    struct Index;

    static FCurve* ownerOf(const Block& block) noexcept;
    static const PropertyMap& propertiesOf(void* place, Recorder::Carrier carrier) noexcept;
    BlockRecord* find(const Block& block) noexcept;
    void record(Block& block, FCurve* was);
    void allProperties(Block& block);
    bool addProperty(void* place, std::uint32_t key, std::uint32_t value);
    std::uint32_t numberOf(FCurve& curve);
    std::uint32_t numberOf(const std::string& text);
    FCurve* curveAt(std::uint32_t number) const noexcept { return number == none ? nullptr : m_curves[number]; }
    bool isUnchanged(const BlockRecord& record) const noexcept;
    bool isUnchanged(const PropertyRecord& record) const noexcept;
    void open(bool everything);
    void releaseProperties() noexcept;
    struct Plan;
    void planBlocks(Plan& plan, EditChanges& changes);
    void planProperties(Plan& plan, EditChanges& changes);
    void exchangeBlocks(Plan& plan, FCurveContainer& container);
    std::vector<FCurve*> reordered() const;

    std::string m_name;
    std::vector<FCurve*> m_curves; // null once destroyed
    std::vector<BlockRecord> m_blocks;
    std::vector<PropertyRecord> m_properties;
    std::vector<std::string> m_texts;
    std::vector<std::pair<std::uint32_t, std::string>> m_names; // of curves
    std::optional<Contents> m_contents;
    std::size_t m_removed = 0;      // blocks, while open
    std::unique_ptr<Index> m_index; // while open
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
