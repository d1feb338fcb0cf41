#include "selection/EditRecord.h"

#include "selection/EditChanges.h"
#include "selection/EditWatch.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <unordered_set>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

// What a block costs a record that alone keeps it: its memory and what the allocator adds.
constexpr std::size_t kBlockBytes = sizeof(Block) + 16;
// What a key costs a curve: its block and its place in the index.
constexpr std::size_t kKeyBytes = kBlockBytes + 24;

std::uint64_t BitsOf(double number) noexcept {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}
bool IsSameBits(const Vector2D<double>& a, const Vector2D<double>& b) noexcept {
    return BitsOf(a.x) == BitsOf(b.x) && BitsOf(a.y) == BitsOf(b.y);
}

template<class Entry>
void MakeRoom(std::vector<Entry>& entries) {
    if (entries.size() == entries.capacity()) entries.reserve(2 * entries.size() + 1);
}

// For properties: whatever else it may come to hold.
void MakeRoom(PropertyMap&) noexcept {}
template<class Box>
auto MakeRoom(Box& box) -> decltype(box.need(), void()) {
    box.need();
}

// The part of a block that carries the property, given to the call.
template<class Call>
auto WithPart(void* place, Recorder::Carrier carrier, const Call& call) {
    auto* const block = static_cast<Block*>(place);
    switch (carrier) {
    case Recorder::OfContainer:
        return call(*static_cast<FCurveContainer*>(place));
    case Recorder::OfCurve:
        return call(*static_cast<FCurve*>(place));
    case Recorder::OfSegment:
        return call(block->segment);
    case Recorder::OfKey:
        return call(block->key);
    case Recorder::OfInTangent:
        return call(block->in);
    case Recorder::OfOutTangent:
        break;
    }
    return call(block->out);
}

constexpr Recorder::Carrier kOfBlock[] = {Recorder::OfSegment, Recorder::OfKey, Recorder::OfInTangent,
                                          Recorder::OfOutTangent};

} // namespace

struct EditRecord::Index {
    struct PropertyHash {
        std::size_t operator()(const std::pair<void*, std::uint32_t>& property) const noexcept {
            return std::hash<void*>()(property.first)
                   ^ static_cast<std::size_t>(property.second * std::uint64_t{0x9e3779b97f4a7c15});
        }
    };

    std::unordered_map<const Block*, std::size_t> blocks;
    std::unordered_map<const FCurve*, std::uint32_t> curves;
    std::unordered_map<std::string, std::uint32_t> texts;
    std::unordered_set<std::pair<void*, std::uint32_t>, PropertyHash> properties;
    bool contents = false; // m_contents holds all curves
};

EditRecord::EditRecord(std::string name) : m_name(std::move(name)) {
    open(true);
}
EditRecord::~EditRecord() = default;

// For curves and texts alone, unless everything is said.
void EditRecord::open(bool everything) {
    auto index = std::make_unique<Index>();
    for (std::uint32_t i = 0; i < m_curves.size(); ++i)
        if (m_curves[i]) index->curves.emplace(m_curves[i], i);
    for (std::uint32_t i = 0; i < m_texts.size(); ++i) index->texts.emplace(m_texts[i], i);
    if (everything) {
        for (std::size_t i = 0; i < m_blocks.size(); ++i) index->blocks.emplace(m_blocks[i].block.get(), i);
        for (const PropertyRecord& record : m_properties) index->properties.insert({record.place, record.key});
    }
    m_index = std::move(index);
}

// --- recording -------------------------------------------------------------------------------------------------------

// Null for a block that has left its curve, or not yet come into one.
FCurve* EditRecord::ownerOf(const Block& block) noexcept {
    return block.isLeading() || block.previous() ? block.curve() : nullptr;
}

const PropertyMap& EditRecord::propertiesOf(void* place, Recorder::Carrier carrier) noexcept {
    return WithPart(place, carrier, [](const auto& part) -> std::reference_wrapper<const PropertyMap> {
        return Read::properties(part);
    });
}

EditRecord::BlockRecord* EditRecord::find(const Block& block) noexcept {
    const auto found = m_index->blocks.find(&block);
    return found == m_index->blocks.end() ? nullptr : &m_blocks[found->second];
}

std::uint32_t EditRecord::numberOf(FCurve& curve) {
    const auto known = m_index->curves.find(&curve);
    if (known != m_index->curves.end()) return known->second;
    MakeRoom(m_curves);
    const auto number = static_cast<std::uint32_t>(m_curves.size());
    m_index->curves.emplace(&curve, number);
    m_curves.push_back(&curve);
    return number;
}

std::uint32_t EditRecord::numberOf(const std::string& text) {
    const auto known = m_index->texts.find(text);
    if (known != m_index->texts.end()) return known->second;
    m_texts.push_back(text);
    const auto number = static_cast<std::uint32_t>(m_texts.size() - 1);
    m_index->texts.emplace(text, number);
    return number;
}

void EditRecord::record(Block& block, FCurve* was) {
    if (m_index->blocks.count(&block) > 0) return;
    BlockRecord record{BlockShape(block), was ? numberOf(*was) : none, block.self.lock()};
    MakeRoom(m_blocks);
    m_index->blocks.emplace(&block, m_blocks.size());
    m_blocks.push_back(std::move(record));
}

void EditRecord::touch(Block& block) {
    record(block, ownerOf(block));
}
void EditRecord::add(FCurve& curve, Block& block) {
    numberOf(curve);
    record(block, nullptr);
}
void EditRecord::remove(Block& block) {
    touch(block);
    allProperties(block);
    ++m_removed;
}

void EditRecord::touchAll(FCurve& curve) {
    for (Block* block = Block::of(Read::firstSegment(curve)); block; block = block->next()) touch(*block);
    nameOf(curve);
    for (const auto& entry : Read::properties(curve)) property(Recorder::OfCurve, &curve, entry.first.c_str());
}

void EditRecord::nameOf(FCurve& curve) {
    const std::uint32_t number = numberOf(curve);
    for (const auto& entry : m_names)
        if (entry.first == number) return;
    m_names.emplace_back(number, curve.getName());
}

bool EditRecord::addProperty(void* place, std::uint32_t key, std::uint32_t value) {
    MakeRoom(m_properties);
    if (!m_index->properties.insert({place, key}).second) return false;
    m_properties.push_back({place, value, key});
    return true;
}

void EditRecord::property(Recorder::Carrier carrier, void* place, const char* key) {
    if (carrier > Recorder::OfCurve) {
        const BlockRecord* block = find(*static_cast<const Block*>(place));
        if (block && block->was == none) return; // new
        if (FCurve* curve = static_cast<Block*>(place)->curve()) numberOf(*curve);
    }
    if (carrier == Recorder::OfCurve) numberOf(*static_cast<FCurve*>(place));
    const std::uint32_t number = numberOf(key) * 8 + carrier;
    if (m_index->properties.count({place, number}) > 0) return;
    addProperty(place, number, numberOf(propertiesOf(place, carrier).get(key)));
}

// Of a block that leaves its curve: while it is out of it, the record has all of its properties.
void EditRecord::allProperties(Block& block) {
    for (const Recorder::Carrier carrier : kOfBlock)
        for (const auto& entry : propertiesOf(&block, carrier)) property(carrier, &block, entry.first.c_str());
}

void EditRecord::contents(FCurveContainer& container) {
    if (m_index->contents) return;
    Contents contents;
    contents.curves = curvesOf(container);
    m_contents = std::move(contents);
    m_index->contents = true;
}

EditRecord::Curves EditRecord::curvesOf(FCurveContainer& container) {
    Curves curves;
    curves.reserve(container.size());
    for (FCurve& curve : container) curves.push_back(curve.getShared());
    return curves;
}

bool EditRecord::mentions(const FCurve& curve) const noexcept {
    const bool isNamed = m_index ? m_index->curves.count(&curve) > 0
                                 : std::find(m_curves.begin(), m_curves.end(), &curve) != m_curves.end();
    if (isNamed || !m_contents) return isNamed;
    const auto isSame = [&](const std::shared_ptr<FCurve>& held) { return held.get() == &curve; };
    return std::any_of(m_contents->curves.begin(), m_contents->curves.end(), isSame);
}

bool EditRecord::isEmpty() const noexcept {
    return m_blocks.empty() && m_properties.empty() && m_names.empty() && !m_contents;
}

bool EditRecord::changes(const FCurveContainer& container) const noexcept {
    const auto isChanged = [this](const auto& record) { return !isUnchanged(record); };
    if (std::any_of(m_blocks.begin(), m_blocks.end(), isChanged)) return true;
    // Of blocks that came and went nothing counts; others that went are changed.
    const auto isOwn = [&](const PropertyRecord& record) {
        return (record.carrier() <= Recorder::OfCurve || ownerOf(*static_cast<Block*>(record.place)))
               && isChanged(record);
    };
    if (std::any_of(m_properties.begin(), m_properties.end(), isOwn)) return true;
    for (const auto& [number, name] : m_names)
        if (m_curves[number] && name != m_curves[number]->getName()) return true;
    return m_contents
           && !std::equal(m_contents->curves.begin(), m_contents->curves.end(), container.begin(), container.end(),
                          [](const auto& before, const FCurve& now) { return before.get() == &now; });
}

// --- closing ---------------------------------------------------------------------------------------------------------

bool EditRecord::isUnchanged(const BlockRecord& record) const noexcept {
    const Block& block = *record.block;
    FCurve* const owner = ownerOf(block);
    if (owner != curveAt(record.was)) return false;
    if (!owner) return true; // came and went
    const BlockShape now(block);
    return IsSameBits(now.position, record.position) && IsSameBits(now.in, record.in) && IsSameBits(now.out, record.out)
           && now.interpolator == record.interpolator && now.inType == record.inType && now.outType == record.outType
           && now.flags == record.flags;
}

bool EditRecord::isUnchanged(const PropertyRecord& record) const noexcept {
    return propertiesOf(record.place, record.carrier()).get(m_texts[record.key / 8].c_str()) == m_texts[record.value];
}

void EditRecord::close(FCurveContainer& container) {
    // Those of blocks that are out of their curves are whole, and stay.
    const auto isOut = [&](const PropertyRecord& record) {
        return record.carrier() > Recorder::OfCurve && !ownerOf(*static_cast<Block*>(record.place));
    };
    std::unordered_set<const void*> gone; // came and went: their records are the last to hold them
    for (const BlockRecord& record : m_blocks)
        if (!curveAt(record.was) && !ownerOf(*record.block)) gone.insert(record.block.get());
    m_properties.erase(std::remove_if(m_properties.begin(), m_properties.end(),
                                      [&](const PropertyRecord& record) {
                                          return gone.count(record.place) > 0
                                                 || (!isOut(record) && isUnchanged(record));
                                      }),
                       m_properties.end());
    m_blocks.erase(std::remove_if(m_blocks.begin(), m_blocks.end(),
                                  [&](const BlockRecord& record) { return isUnchanged(record); }),
                   m_blocks.end());
    m_names.erase(std::remove_if(m_names.begin(), m_names.end(),
                                 [&](const auto& entry) {
                                     return !m_curves[entry.first] || entry.second == m_curves[entry.first]->getName();
                                 }),
                  m_names.end());
    if (m_index && m_index->contents) {
        // What stands the same at both ends is left out.
        auto& before = m_contents->curves;
        std::vector<const FCurve*> now;
        for (const FCurve& curve : container) now.push_back(&curve);
        const auto same = [](const std::shared_ptr<FCurve>& a, const FCurve* b) { return a.get() == b; };
        const auto first = std::mismatch(before.begin(), before.end(), now.begin(), now.end(), same).first;
        m_contents->first = static_cast<std::size_t>(first - before.begin());
        before.erase(before.begin(), first);
        now.erase(now.begin(), now.begin() + static_cast<std::ptrdiff_t>(m_contents->first));
        const auto rest = std::mismatch(before.rbegin(), before.rend(), now.rbegin(), now.rend(), same);
        m_contents->count = static_cast<std::size_t>(now.rend() - rest.second);
        before.erase(rest.first.base(), before.end());
        before.shrink_to_fit();
        if (before.empty() && m_contents->count == 0) m_contents.reset();
    }
    m_index.reset();
    m_blocks.shrink_to_fit();
    m_properties.shrink_to_fit();
    m_curves.shrink_to_fit();
    m_texts.shrink_to_fit();
    releaseProperties();
}

// Parts that nobody but the record holds need no copy of what it knows.
void EditRecord::releaseProperties() noexcept {
    for (const BlockRecord& record : m_blocks) {
        if (ownerOf(*record.block) || record.block.use_count() > 1) continue;
        for (const Recorder::Carrier carrier : kOfBlock)
            WithPart(record.block.get(), carrier, [](auto& part) {
                PropertyMap dropped;
                Raw::stored(part).swap(dropped);
            });
    }
}

EditRecord::Curves EditRecord::reopen(Curves after) {
    open(true);
    if (!m_contents) return after;
    const auto first = after.begin() + static_cast<std::ptrdiff_t>(m_contents->first);
    const auto rest = after.erase(first, first + static_cast<std::ptrdiff_t>(m_contents->count));
    after.insert(rest, m_contents->curves.begin(), m_contents->curves.end());
    m_contents->curves = after;
    m_index->contents = true;
    return after;
}

void EditRecord::absorb(EditRecord& later) {
    for (FCurve* curve : later.m_curves)
        if (curve) numberOf(*curve);
    for (BlockRecord& record : later.m_blocks) {
        if (find(*record.block)) continue;
        FCurve* const was = later.curveAt(record.was);
        record.was = was ? numberOf(*was) : none;
        MakeRoom(m_blocks);
        m_index->blocks.emplace(record.block.get(), m_blocks.size());
        m_blocks.push_back(std::move(record));
    }
    for (const PropertyRecord& record : later.m_properties) {
        if (record.carrier() > Recorder::OfCurve) {
            const BlockRecord* block = find(*static_cast<const Block*>(record.place));
            if (block && block->was == none && ownerOf(*block->block)) continue;
        }
        const std::uint32_t key = numberOf(later.m_texts[record.key / 8]) * 8 + record.carrier();
        addProperty(record.place, key, numberOf(later.m_texts[record.value]));
    }
    for (auto& [number, name] : later.m_names) {
        FCurve* const curve = later.m_curves[number];
        if (!curve) continue;
        const std::uint32_t own = numberOf(*curve);
        const auto isSame = [own](const auto& entry) { return entry.first == own; };
        if (std::none_of(m_names.begin(), m_names.end(), isSame)) m_names.emplace_back(own, std::move(name));
    }
    if (later.m_contents && !m_index->contents) {
        m_contents = std::move(later.m_contents);
        m_index->contents = true;
    }
}

void EditRecord::destroyed(FCurve& curve) {
    const bool wasOpen = m_index != nullptr;
    if (!wasOpen) open(true);
    for (const BlockRecord& record : m_blocks)
        if (ownerOf(*record.block) == &curve && record.was != none) allProperties(*record.block);
    const auto isOfCurve = [&](const PropertyRecord& record) {
        if (record.carrier() <= Recorder::OfCurve) return record.place == &curve;
        const Block& block = *static_cast<const Block*>(record.place);
        return ownerOf(block) == &curve && !find(block); // dies, too
    };
    m_properties.erase(std::remove_if(m_properties.begin(), m_properties.end(), isOfCurve), m_properties.end());
    for (FCurve*& mentioned : m_curves)
        if (mentioned == &curve) mentioned = nullptr;
    m_index->curves.erase(&curve);
    if (!wasOpen) m_index.reset();
}

void EditRecord::forget() noexcept {
    if (m_index) *m_index = Index();
    m_blocks.clear();
    m_properties.clear();
    m_names.clear();
    m_texts.clear();
    m_contents.reset();
    m_curves.clear();
    m_removed = 0;
}

// --- bringing back ---------------------------------------------------------------------------------------------------

// What exchange() is about to do, with all the memory that it takes.
struct EditRecord::Plan {
    struct Move { // of a block that is to stand elsewhere
        std::shared_ptr<Block> block;
        FCurve* from;
        FCurve* to;
    };
    struct Map { // all properties that a part is to have
        void* place;
        Recorder::Carrier carrier;
        PropertyMap properties;
    };
    std::vector<Move> moves;
    std::vector<std::uint32_t> owners; // the curves that the blocks are in now, by number
    std::vector<Map> maps;
    std::vector<PropertyRecord> properties;              // that are recorded afterwards
    Curves curves;                                       // that those to come replace
    std::unordered_map<FCurve*, SegmentMap::Room> rooms; // for the blocks that come into a curve
};

void EditRecord::exchange(FCurveContainer& container, EditChanges& changes) {
    const std::size_t texts = m_texts.size();
    Plan plan;
    try {
        open(false);
        planBlocks(plan, changes);
        planProperties(plan, changes);
        for (const auto& entry : m_names)
            if (FCurve* const curve = m_curves[entry.first]) {
                Recording::name(*curve);
                changes.renamed(*curve);
            }
        if (m_contents) {
            auto place = std::next(container.begin(), static_cast<std::ptrdiff_t>(m_contents->first));
            for (std::size_t i = 0; i < m_contents->count; ++i, ++place) plan.curves.push_back(place->getShared());
            changes.container();
        }
        exchangeBlocks(plan, container);
    } catch (...) {
        m_texts.erase(m_texts.begin() + static_cast<std::ptrdiff_t>(texts), m_texts.end());
        m_index.reset();
        throw;
    }

    // Nothing fails from here on.
    for (std::size_t i = 0; i < m_blocks.size(); ++i) m_blocks[i].was = plan.owners[i];
    for (Plan::Map& map : plan.maps)
        WithPart(map.place, map.carrier, [&](auto& part) { Raw::stored(part).swap(map.properties); });
    m_properties.swap(plan.properties);
    for (auto& [number, name] : m_names)
        if (FCurve* const curve = m_curves[number]) Raw::swapName(*curve, name);
    if (m_contents) {
        m_contents->count = m_contents->curves.size();
        m_contents->curves.swap(plan.curves);
    }
    m_index.reset();
    releaseProperties();
}

void EditRecord::planBlocks(Plan& plan, EditChanges& changes) {
    for (BlockRecord& record : m_blocks) {
        Block& block = *record.block;
        FCurve* const from = ownerOf(block);
        FCurve* const to = curveAt(record.was);
        plan.owners.push_back(from ? numberOf(*from) : none);
        if (from == to) {
            if (!from) continue;
            Recording::touch(&block);
            changes.changed(*to, record.block, record); // which of two states comes first makes no difference
            if (block.isLeading() || block.key.getX() == record.position.x) continue;
        } else if (block.isLeading()) {
            if (from) changes.replaced(*from);
            if (to) changes.replaced(*to);
        } else {
            if (from) changes.removed(*from, record.block);
            if (to) changes.added(*to, record.block);
        }
        if (from && !to)
            Recording::remove(*from, block);
        else if (from != to && to)
            from ? Recording::touch(&block) : Recording::add(*to, block);
        plan.moves.push_back({record.block, from, to});
    }
    std::unordered_map<FCurve*, std::size_t> coming;
    for (const Plan::Move& move : plan.moves)
        if (move.to && !move.block->isLeading()) ++coming[move.to];
    for (const auto& [curve, blocks] : coming) plan.rooms.emplace(curve, Raw::makeRoom(*curve, blocks));
    for (FCurve* const curve : reordered()) changes.replaced(*curve);
}

// The curves in which a block that stays comes to stand on another side of one that stays.
std::vector<FCurve*> EditRecord::reordered() const {
    struct Move {
        FCurve* curve;
        const BlockRecord* record;
        double from() const noexcept { return record->block->key.getX(); }
    };
    std::vector<Move> moves; // and blocks that go, which nobody passes
    for (const BlockRecord& record : m_blocks)
        if (FCurve* const owner = record.block->isLeading() ? nullptr : ownerOf(*record.block))
            moves.push_back({owner, &record});
    std::sort(moves.begin(), moves.end(), [](const Move& a, const Move& b) {
        return a.curve != b.curve ? std::less<>()(a.curve, b.curve) : a.from() < b.from();
    });
    std::vector<FCurve*> found;
    double before = 0.0; // where the last block that stays is to stand
    for (std::size_t i = 0; i < moves.size(); ++i) {
        const auto& [curve, record] = moves[i];
        const Block& block = *record->block;
        const Block* const previous = block.previous();
        if (i == 0 || moves[i - 1].record->block.get() != previous)
            before = previous->isLeading() ? -std::numeric_limits<double>::infinity() : previous->key.getX();
        bool passes = false;
        if (curveAt(record->was) == curve) {
            passes = !(record->position.x > before);
            before = record->position.x;
        }
        const Block* const next = block.next();
        const bool isNext = i + 1 < moves.size() && moves[i + 1].record->block.get() == next;
        if (next && !isNext) passes = passes || !(next->key.getX() > before);
        if (passes && (found.empty() || found.back() != curve)) found.push_back(curve);
    }
    return found;
}

// While a block is in no curve, the record has all of its properties; while it is in one, those that differ.
void EditRecord::planProperties(Plan& plan, EditChanges& changes) {
    std::unordered_map<const void*, const Plan::Move*> movesOf;
    for (const Plan::Move& move : plan.moves) movesOf.emplace(move.block.get(), &move);
    std::map<std::pair<void*, Recorder::Carrier>, std::size_t> places;
    const auto mapOf = [&](void* place, Recorder::Carrier carrier, bool empty) -> PropertyMap& {
        const auto [entry, isNew] = places.try_emplace({place, carrier}, plan.maps.size());
        if (isNew) plan.maps.push_back({place, carrier, empty ? PropertyMap() : propertiesOf(place, carrier)});
        return plan.maps[entry->second].properties;
    };
    for (const Plan::Move& move : plan.moves) {
        Block* const block = move.block.get();
        for (const Recorder::Carrier carrier : kOfBlock) {
            if (!move.from) mapOf(block, carrier, true);
            if (move.from && !move.to)
                for (const auto& [key, value] : propertiesOf(block, carrier))
                    plan.properties.push_back({block, numberOf(value), numberOf(key) * 8 + carrier});
        }
    }
    for (const PropertyRecord& record : m_properties) {
        const Recorder::Carrier carrier = record.carrier();
        auto* const block = carrier > Recorder::OfCurve ? static_cast<Block*>(record.place) : nullptr;
        const auto moved = movesOf.find(record.place);
        const Plan::Move* const move = moved == movesOf.end() ? nullptr : moved->second;
        if (move && !move->to) continue; // recorded anew above
        const std::string key = m_texts[record.key / 8], value = m_texts[record.value];
        if (move && !move->from) { // comes back with what it had
            mapOf(block, carrier, true).set(key.c_str(), value.c_str());
            continue;
        }
        if (block && !ownerOf(*block)) { // kept for its return
            plan.properties.push_back(record);
            continue;
        }
        const std::string before = propertiesOf(record.place, carrier).get(key.c_str());
        plan.properties.push_back({record.place, numberOf(before), record.key});
        if (value == before) continue;
        WithPart(record.place, carrier, [&](auto& part) { Recording::property(part, key.c_str()); });
        mapOf(record.place, carrier, false).set(key.c_str(), value.c_str());
        if (carrier == Recorder::OfContainer)
            changes.container();
        else if (carrier == Recorder::OfCurve)
            changes.property(*static_cast<FCurve*>(record.place), nullptr, carrier, key, before);
        else
            changes.property(move ? *move->to : *ownerOf(*block), block->self.lock(), carrier, key, before);
    }
    for (const Plan::Map& map : plan.maps)
        WithPart(map.place, map.carrier, [](auto& part) { MakeRoom(Raw::stored(part)); });
}

// The places and shapes of blocks, and the list of curves. What throws comes first.
void EditRecord::exchangeBlocks(Plan& plan, FCurveContainer& container) {
    if (m_contents) Raw::replaceCurves(container, m_contents->first, m_contents->count, m_contents->curves);

    // Whatever is to stand elsewhere is taken out first: then nothing can be in the way of anything.
    for (const Plan::Move& move : plan.moves)
        if (!move.block->isLeading() && ownerOf(*move.block)) Raw::unlink(*move.block);
    for (BlockRecord& record : m_blocks) {
        BlockShape before(*record.block);
        if (curveAt(record.was)) Raw::setShape(*record.block, record);
        static_cast<BlockShape&>(record) = std::move(before);
    }
    for (const Plan::Move& move : plan.moves) {
        if (!move.block->isLeading() || move.from == move.to) continue;
        if (move.to)
            Raw::setLeading(*move.to, move.block);
        else
            Raw::leave(*move.block);
    }
    for (const Plan::Move& move : plan.moves) {
        if (move.block->isLeading() || !move.to) continue;
        const SegmentMap::Place place = Raw::locate(*move.to, move.block->key.getX());
        if (!place.isAt) Raw::link(*move.to, place, move.block, &plan.rooms.find(move.to)->second);
    }
}

void EditRecord::watch(EditWatch& watch) const {
    for (const BlockRecord& record : m_blocks) {
        FCurve* const from = ownerOf(*record.block);
        FCurve* const to = curveAt(record.was);
        for (FCurve* curve : {from, to}) {
            if (!curve) continue;
            if (from != to && record.block->isLeading()) watch.whole(*curve);
            watch.touch(*record.block, *curve, from != to);
        }
    }
    for (const PropertyRecord& record : m_properties) {
        if (record.carrier() == Recorder::OfContainer)
            watch.container();
        else if (record.carrier() == Recorder::OfCurve)
            watch.intrinsic(*static_cast<FCurve*>(record.place));
        else if (FCurve* curve = ownerOf(*static_cast<Block*>(record.place)))
            watch.property(*static_cast<Block*>(record.place), *curve);
    }
    for (const auto& entry : m_names)
        if (FCurve* curve = m_curves[entry.first]) watch.intrinsic(*curve);
    if (m_contents) watch.container();
    for (FCurve* const curve : reordered()) watch.keys(*curve);
}

std::size_t EditRecord::openBytes() const noexcept {
    return m_blocks.size() * sizeof(BlockRecord) + m_removed * kBlockBytes
           + m_properties.size() * sizeof(PropertyRecord)
           + (m_contents ? m_contents->curves.size() * sizeof(std::shared_ptr<FCurve>) : 0);
}

std::size_t EditRecord::bytes(const FCurveContainer& container) const noexcept {
    std::size_t bytes = sizeof(EditRecord) + m_name.capacity() + m_curves.capacity() * sizeof(void*)
                        + m_blocks.capacity() * sizeof(BlockRecord) + m_properties.capacity() * sizeof(PropertyRecord)
                        + m_texts.capacity() * sizeof(std::string);
    for (const BlockRecord& record : m_blocks)
        if (!ownerOf(*record.block)) bytes += kBlockBytes;
    for (const std::string& text : m_texts)
        if (text.capacity() > 15) bytes += text.capacity() + 1;
    for (const auto& entry : m_names) bytes += sizeof entry + entry.second.capacity();
    if (!m_contents) return bytes;
    bytes += m_contents->curves.capacity() * sizeof(std::shared_ptr<FCurve>);
    for (const auto& curve : m_contents->curves)
        if (Read::find(const_cast<FCurveContainer&>(container), *curve)
            == const_cast<FCurveContainer&>(container).end())
            bytes += sizeof(FCurve) + curve->size() * kKeyBytes;
    return bytes;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
