#include "interchange/CurveReader.h"

#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"

#include <FCurveLib/Exception.h>
#include <FCurveLib/FormatInterface.h>
#include <FCurveLib/Stream.h>

#include <algorithm>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

// In pieces, so that a stream that is shorter than it says costs what it has. One without end says that it is long.
std::string ReadAll(Stream& stream) {
    constexpr int kPiece = 1 << 20;
    const std::size_t most = Conversion::options().longest;
    int left = stream.getSize() - stream.getPosition();
    if (left > 0 && static_cast<std::size_t>(left) > most)
        throw TooMuch("The document has " + std::to_string(left) + " bytes; the limit is " + std::to_string(most)
                      + '.');
    std::string bytes;
    while (left > 0) {
        const int count = std::min(left, kPiece);
        const std::size_t before = bytes.size();
        bytes.resize(before + static_cast<std::size_t>(count));
        stream.readData(bytes.data() + before, count);
        left -= count;
    }
    return bytes;
}

void CheckText(const std::string& text, const FormatLimits& limits) {
    if (text.size() > limits.text)
        throw TooMuch("A text has " + std::to_string(text.size()) + " bytes; the limit is "
                      + std::to_string(limits.text) + '.');
}

void CheckProperties(const PropertyList& properties, const FormatLimits& limits) {
    if (properties.size() > limits.properties)
        throw TooMuch("There are too many properties; the limit is " + std::to_string(limits.properties) + '.');
    for (const auto& [key, value] : properties) {
        CheckText(key, limits);
        CheckText(value, limits);
    }
}

} // namespace

CurveReader::~CurveReader() = default;

void CurveReader::readCurves(Stream& stream, FormatInterface& target) {
    const std::string bytes = ReadAll(stream);
    const Document document = parse(bytes);
    CheckLimits(document, GetFormatLimits());
    EmitDocument(document, target);
}

void CurveReader::readCurve(Stream& stream, FormatInterface& target) {
    const std::string bytes = ReadAll(stream);
    const Document document = parse(bytes);
    CheckLimits(document, GetFormatLimits());
    if (document.tracks.empty()) throw BadDocument("There is no curve.");
    EmitTrack(document.tracks.front(), target);
}

bool CurveReader::canRead(Stream& stream, Stream& header) {
    try {
        constexpr int kOpening = 16384;
        // A stream may be told of by its header alone.
        Stream& source = stream.getSize() > 0 ? stream : header;
        const int size = std::min(source.getSize(), kOpening);
        std::string opening(static_cast<std::size_t>(std::max(size, 0)), '\0');
        source.setPosition(0);
        source.readData(opening.data(), static_cast<int>(opening.size()));
        return recognises(opening, size == source.getSize());
    } catch (const Exception&) {
        return false;
    }
}

void Lose(const Loss& loss) {
    if (ConversionReport* const report = Conversion::report()) report->add(loss);
}

double FrameRateOr(double stated) {
    const double wanted = Conversion::options().frameRate;
    if (wanted > 0.0 && std::isfinite(wanted)) return wanted;
    return stated > 0.0 && std::isfinite(stated) ? stated : 24.0;
}

void CheckLimits(const Document& document, const FormatLimits& limits) {
    CheckProperties(document.properties, limits);
    if (document.tracks.size() > limits.curves)
        throw TooMuch("There are too many curves; the limit is " + std::to_string(limits.curves) + '.');
    for (const Track& track : document.tracks) {
        CheckText(track.name, limits);
        CheckProperties(track.properties, limits);
        if (track.knots.size() > limits.keys)
            throw TooMuch("There are too many keys; the limit is " + std::to_string(limits.keys) + '.');
    }
}

Place PlaceOf(std::string_view text, std::size_t offset) {
    Place place;
    offset = std::min(offset, text.size());
    for (std::size_t i = 0; i < offset; ++i) {
        const bool isEnd = text[i] == '\n' || (text[i] == '\r' && text.substr(i + 1, 1) != "\n");
        place.line += isEnd;
        place.column = isEnd ? 1 : place.column + 1;
    }
    return place;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
