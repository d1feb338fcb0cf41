// Any bytes, read in the format FUZZ_FORMAT: they are read or refused with an exception of the library's, quickly; a
// refusal leaves what was there before; what was read is sound, can be used, and survives being written.

#include "Require.h"
#include "support/Invariants.h"
#include "support/Survival.h"

#include <cmath>
#include <cstring>
#include <sstream>

namespace Fuzz {

namespace {

constexpr const char* kFormat = FUZZ_FORMAT;

// Everything that can be raised has a fixed text and a message for people. Called while the exception is handled.
void requireMessage(const Exception& exception) {
    Require(std::strncmp(exception.what(), "VEM_FN::FCurveLib::", 19) == 0, "what() names the class", exception.what());
    ExceptionFormatter::LibraryFormatter library("input");
    ExceptionFormatter formatter;
    formatter.addFormatter(library);
    std::ostringstream message;
    formatter.formatException(message);
    const std::string text = message.str();
    Require(text.rfind("input:", 0) == 0, "the message starts with the name", text);
    for (const char c : text)
        Require(static_cast<unsigned char>(c) >= 0x20 && c != 0x7f, "the message is one harmless line", text);
}

template<class Read>
bool reads(const Read& read) {
    try {
        read();
        return true;
    } catch (const Exception& exception) {
        requireMessage(exception);
        return false;
    }
}

// What a host does first with a curve from a file.
void use(FCurve& curve) {
    RequireNone(Test::Fault(curve), "the curve is sound");
    Rectangle<double> box;
    GetInteriorExtents(curve, box);
    double lastX = 0.0;
    for (Segment& segment : curve) {
        if (const auto key = segment.getLeftKey()) {
            Require(std::isfinite(key->getX()) && std::isfinite(key->getY()), "keys are finite");
            lastX = key->getX();
        }
        for (const auto& tangent : {segment.getInTangent(), segment.getOutTangent()})
            Require(std::isfinite(tangent->getX()) && std::isfinite(tangent->getY()), "handles are finite");
        for (const double x : {lastX, lastX + 0.25, std::nextafter(lastX, -HUGE_VAL)}) {
            curve.eval(x);
            GetFirstDerivative(curve, x);
            GetSecondDerivative(curve, x);
        }
    }
    Require(lastX == lastX, "keys are ordered");
}

std::shared_ptr<FCurve> makeTarget() {
    auto curve = FCurve::create();
    curve->setName("before");
    curve->setProperty("unit", "cm");
    curve->insertSegment(*Keyframe::create(1.0, 2.0), Linear::create());
    return curve;
}

void readOneCurve(MemoryStream stream, bool thorough) {
    const auto target = makeTarget();
    const auto before = FCurve::createCopy(*target);
    const Segment* const segment = &*target->begin();
    if (reads([&] { ReadCurve(stream, kFormat, *target); })) {
        use(*target);
        if (thorough) RequireNone(LossOfWriting(*target), "what is written comes back");
    } else {
        RequireNone(Test::Difference(*before, *target), "a refusal leaves the curve");
        Require(&*target->begin() == segment, "a refusal leaves the curve's parts");
        RequireNone(Test::Fault(*target), "the curve is sound after a refusal");
    }
}

void readAllCurves(MemoryStream stream, bool thorough) {
    const auto container = FCurveContainer::create();
    const auto first = makeTarget();
    container->addCurve(first);
    ContainerInterface target(*container);
    const bool complete = reads([&] { FormatFactory::getReader(kFormat)->readCurves(stream, target); });
    Require(!container->empty() && &*container->begin() == first.get(), "what was there stays");
    container->removeCurve(container->begin());
    for (FCurve& curve : *container) use(curve);
    if (complete && thorough) RequireNone(LossOfWriting(*container), "what is written comes back");
}

// Recognition alone, and reading by it: any of the readers may be asked.
void readByContent(MemoryStream stream, bool thorough) {
    FormatFactory::getReader(stream);
    Require(stream.getPosition() == 0, "recognition leaves the stream at its beginning");
    if (!thorough) return;
    const auto container = FCurveContainer::create();
    reads([&] { ReadCurves(stream, *container); });
}

} // namespace

} // namespace Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Runs are few here, as an input is used and written several times.
    Fuzz::FormatLimits limits;
    limits.runs = 5000;
    Fuzz::SetFormatLimits(limits);
    const bool thorough = Fuzz::OneInSixteen(data, size);
    const Fuzz::MemoryStream input = Fuzz::StreamOf({reinterpret_cast<const char*>(data), size});
    Fuzz::readOneCurve(input, thorough);
    Fuzz::readAllCurves(input, thorough);
    Fuzz::readByContent(input, thorough);
    return 0;
}
