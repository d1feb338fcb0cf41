#include "interchange/CurveReader.h"

#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "FCurveInterchange/Names.h"
#include "interchange/Numbers.h"

#include <FCurveLib/Exception.h>
#include <FCurveLib/FormatInterface.h>
#include <FCurveLib/Stream.h>

#include <nlohmann/json.hpp>

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

// A host that wants another rate than the document's gets the same seconds.
void TakeWantedRate(Document& document) {
    const double wanted = Conversion::options().frameRate;
    if (!(wanted > 0.0 && std::isfinite(wanted)) || !(document.rate > 0.0) || document.rate == wanted) return;
    const double scale = wanted / document.rate;
    for (auto& [key, value] : document.properties)
        if (double frame = 0.0; (key == kFirstFrame || key == kLastFrame) && ParseNumber(value, frame))
            value = NumberText(frame * scale);
    for (Track& track : document.tracks)
        for (Knot& knot : track.knots)
            for (double* const x : {&knot.x, &knot.in.handle.x, &knot.out.handle.x}) *x *= scale;
}

// Raises TooMuch where a document has more than the limits allow.
class LimitCheck {
public:
    LimitCheck(std::string_view bytes, const Document& document) : m_bytes(bytes), m_limits(GetFormatLimits()) {
        checkProperties(document.properties);
        for (std::size_t i = 0; i < document.tracks.size(); ++i) {
            m_track = &document.tracks[i];
            require(i < m_limits.curves, "There are too many curves; the limit is ", m_limits.curves);
            checkText(m_track->name);
            checkProperties(m_track->properties);
            require(m_track->knots.size() <= m_limits.keys, "There are too many keys; the limit is ", m_limits.keys);
        }
    }

private:
    void require(bool isWithin, const std::string& message, std::size_t limit) const {
        if (isWithin) return;
        Place place{0, 0};
        if (m_track && m_track->offset != Track::kNowhere) place = PlaceOf(m_bytes, m_track->offset);
        throw TooMuch(message + std::to_string(limit) + '.', place.line, place.column,
                      m_track ? m_track->path : std::string());
    }
    void checkText(const std::string& text) const {
        require(text.size() <= m_limits.text, "A text has " + std::to_string(text.size()) + " bytes; the limit is ",
                m_limits.text);
    }
    void checkProperties(const PropertyList& properties) const {
        require(properties.size() <= m_limits.properties, "There are too many properties; the limit is ",
                m_limits.properties);
        for (const auto& [key, value] : properties) {
            checkText(key);
            checkText(value);
        }
    }

    std::string_view m_bytes;
    FormatLimits m_limits;
    const Track* m_track = nullptr;
};

} // namespace

CurveReader::~CurveReader() = default;

void CurveReader::readCurves(Stream& stream, FormatInterface& target) {
    const std::string bytes = ReadAll(stream);
    readBytes(bytes, target);
}

Document CurveReader::documentOf(std::string_view bytes) const {
    Document document;
    try {
        document = parse(bytes);
    } catch (const nlohmann::json::exception& error) { // is none of this library's
        throw BadDocument(error.what());
    }
    LimitCheck(bytes, document);
    TakeWantedRate(document);
    return document;
}

void CurveReader::readBytes(std::string_view bytes, FormatInterface& target) const {
    EmitDocument(documentOf(bytes), target);
}

void CurveReader::readCurve(Stream& stream, FormatInterface& target) {
    const std::string bytes = ReadAll(stream);
    const Document document = documentOf(bytes);
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
