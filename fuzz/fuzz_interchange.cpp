// Any bytes, read in the format FUZZ_FORMAT of the library FCurveInterchange: they are read or refused with an
// exception of the library's, quickly; what was read is sound, can be used, and can be written, with a report, in every
// format of that library, or is refused by it.

#include "FCurveInterchange/FCurveInterchange.h"
#include "Require.h"
#include "support/Invariants.h"

#include <cstring>

namespace Fuzz {

namespace {

constexpr const char* kFormat = FUZZ_FORMAT;

// Returns whether nothing was refused.
template<class Act>
bool goesThrough(const Act& act) {
    try {
        act();
        return true;
    } catch (const Exception& exception) {
        Require(std::strncmp(exception.what(), "VEM_FN::FCurveLib::", 19) == 0, "what() names the class",
                exception.what());
        return false;
    }
}

void write(const FCurveContainer& container) {
    for (auto type = FormatFactory::beginWriterTypes(); type != FormatFactory::endWriterTypes(); ++type) {
        const std::string format = (*type).getFormatName();
        if (format == "xml" || format == "binary") continue;
        MemoryStream stream;
        Interchange::ConversionReport report;
        const Interchange::Conversion conversion(report);
        if (!goesThrough([&] { WriteCurves(container, stream, format.c_str()); }))
            Require(stream.getSize() == 0, "what is refused is not written", format);
        Interchange::ToJson(report);
    }
}

} // namespace

} // namespace Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Fuzz;
    Interchange::RegisterFormats();
    MemoryStream stream = StreamOf({reinterpret_cast<const char*>(data), size});
    FormatFactory::getReader(stream);
    const auto container = FCurveContainer::create();
    ContainerInterface target(*container);
    Interchange::ConversionReport report;
    const Interchange::Conversion conversion(report);
    const bool isRead = goesThrough([&] { FormatFactory::getReader(kFormat)->readCurves(stream, target); });
    for (FCurve& curve : *container) RequireNone(Test::Fault(curve), "the curve is sound");
    if (isRead && OneInSixteen(data, size)) write(*container);
    return 0;
}
