#include "model/Recorder.h"

#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

Recorder::~Recorder() = default;

namespace {

template<class Call>
void ForEachBlock(const FCurve& curve, const Call& call) {
    for (Block* block = Block::of(Read::firstSegment(curve)); block; block = block->next()) call(*block);
}

} // namespace

void Recording::touchRecorded(FCurve& curve, Block& block) {
    tell(curve, [&](Recorder& recorder) { recorder.touch(block); });
}

void Recording::removeAll(FCurve& curve) {
    if (!isOn(curve)) return;
    ForEachBlock(curve, [&](Block& block) { remove(curve, block); });
}

void Recording::replace(FCurve& curve, FCurve& other) {
    if (!isOn(curve)) return;
    removeAll(curve);
    ForEachBlock(other, [&](Block& block) { add(curve, block); });
    name(curve);
    properties(curve, Read::properties(other));
}

void Recording::exchange(FCurve& a, FCurve& b) {
    // Each takes the other curve along, so that the lists grow meanwhile.
    std::vector<Recorder*> told;
    for (FCurve* curve : {&a, &b})
        for (Recorder* recorder : std::vector<Recorder*>(Read::recorders(*curve))) {
            bool isNew = true;
            for (const Recorder* other : told) isNew = isNew && other != recorder;
            if (!isNew) continue;
            told.push_back(recorder);
            recorder->exchange(a, b);
        }
}

void Recording::property(FCurveContainer& container, const char* key) {
    if (Recorder* recorder = Read::recorder(container)) recorder->property(Recorder::OfContainer, &container, key);
}

bool Recording::mutes(const FCurve& curve) noexcept {
    for (const Recorder* recorder : Read::recorders(curve))
        if (recorder->mutes()) return true;
    return false;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
