#include "FCurveInterchange/Formats.h"

#include "interchange/CoreWriters.h"
#include "interchange/CsvFormat.h"
#include "interchange/EasingFormats.h"
#include "interchange/MayaFormat.h"
#include "interchange/gltf/GltfFormat.h"
#include "interchange/usda/UsdaFormat.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

InterchangeError::InterchangeError(const std::string& message, std::uint64_t line, std::uint64_t column,
                                   const std::string& path)
    : FormatError(path.empty() ? message : path + ": " + message, line, column),
      m_path(std::make_shared<const std::string>(path)) {}
const char* InterchangeError::path() const noexcept {
    return m_path->c_str();
}
const char* InterchangeError::what() const noexcept {
    return "VEM_FN::FCurveLib::Interchange::InterchangeError";
}
const char* BadDocument::what() const noexcept {
    return "VEM_FN::FCurveLib::Interchange::BadDocument";
}
const char* TooMuch::what() const noexcept {
    return "VEM_FN::FCurveLib::Interchange::TooMuch";
}
const char* NotWritable::what() const noexcept {
    return "VEM_FN::FCurveLib::Interchange::NotWritable";
}

namespace {

// Every format of the library. The one constructed last is asked first, so what is hard to mistake goes last.
struct AllFormats {
    TextWriter textWriter;
    HoudiniChanWriter houdiniChanWriter;
    HoudiniClipWriter houdiniClipWriter;
    CsvReader csvReader;
    CsvWriter csvWriter;
    CssReader cssReader;
    CssWriter cssWriter;
    LottieReader lottieReader;
    LottieWriter lottieWriter;
    MayaReader mayaReader;
    MayaWriter mayaWriter;
    GltfReader gltfReader{Gltf::Shape::Text};
    GltfReader glbReader{Gltf::Shape::Binary};
    UsdaReader usdaReader;
    GltfWriter gltfWriter{Gltf::Shape::Text};
    GltfWriter glbWriter{Gltf::Shape::Binary};
    UsdaWriter usdaWriter;
};

} // namespace

void RegisterFormats() {
    [[maybe_unused]] static const AllFormats formats;
}

namespace {

const bool kIsRegistered = (RegisterFormats(), true);

} // namespace

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
