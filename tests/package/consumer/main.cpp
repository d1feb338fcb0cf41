#include "FCurveLib/FCurveLib.h"

#include <cstdio>
#include <cstring>

using namespace VEM_FN::FCurveLib;

// What a host does across the library's border: subclass, create, observe, evaluate, catch by a base.
namespace {

class CountingObserver : public FCurveObserver {
public:
    int changes = 0;

private:
    void curveChanged(FCurve&) override { ++changes; }
};

int fail(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    return 1;
}

} // namespace

int main() {
    const auto curve = FCurve::create();
    CountingObserver observer;
    curve->subscribe(observer);
    curve->insertSegment(*Keyframe::create(0.0, 1.0), InterpolatorFactory::create("linear()"));
    curve->insertSegment(*Keyframe::create(10.0, 3.0), InterpolatorFactory::create("constant()"));
    if (curve->size() != 3) return fail("two keys do not make three segments");
    if (curve->eval(5.0) != 2.0) return fail("the middle of a line is not its middle");
    if (observer.changes == 0) return fail("the observer was told nothing");
    curve->unsubscribe(observer);

    const auto container = FCurveContainer::create();
    container->addCurve(curve);
    int keys = 0;
    for (auto part = HitRecordIterator::begin(*container); part != HitRecordIterator::end(*container); ++part) {
        HitRecord record = *part;
        if (record.getKeyframe()) ++keys;
        if (record.getCurve() != curve || record.getAddress() == nullptr) return fail("a part is not its curve's");
        record.reset();
        if (record != HitRecord()) return fail("a record was not reset");
    }
    if (keys != 2) return fail("two keys are not walked as two");

    MemoryStream stream;
    char byte = 0;
    try {
        stream.readData(&byte, 1);
        return fail("an empty stream was read");
    } catch (const v19::Exception& e) {
        if (std::strncmp(e.what(), "VEM_FN::FCurveLib::", 19) != 0) return fail(e.what());
    }
    std::puts("consumed");
    return 0;
}
