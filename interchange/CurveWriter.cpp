#include "interchange/CurveWriter.h"

#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "FCurveInterchange/Names.h"
#include "interchange/Comparison.h"
#include "interchange/CurveReader.h"
#include "interchange/Numbers.h"

#include <FCurveLib/ContainerInterface.h>
#include <FCurveLib/FormatFactory.h>
#include <FCurveLib/Stream.h>
#include <FCurveLib/Transform.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

// What a builder of curves needs before it is built.
struct DraftCurves {
    std::shared_ptr<FCurveContainer> curves = FCurveContainer::create();
};

void RequireLimits(const FCurveContainer& curves) {
    const FormatLimits limits = GetFormatLimits();
    if (curves.size() > limits.curves)
        throw TooMuch("There are too many curves; the limit is " + std::to_string(limits.curves) + '.');
    for (const FCurve& curve : curves) {
        if (curve.size() - 1 > limits.keys)
            throw TooMuch("There are too many keys; the limit is " + std::to_string(limits.keys) + '.');
        if (std::char_traits<char>::length(curve.getName()) > limits.text)
            throw TooMuch("A name is too long; the limit is " + std::to_string(limits.text) + " bytes.");
    }
}

void Write(const std::string& bytes, Stream& stream) {
    constexpr std::size_t kPiece = 1 << 20;
    if (bytes.size() > 0x7FFFFFFFU - static_cast<unsigned>(stream.getPosition()))
        throw TooMuch("The document is longer than a stream can hold.");
    for (std::size_t at = 0; at < bytes.size(); at += kPiece)
        stream.writeData(bytes.data() + at, static_cast<int>(std::min(kPiece, bytes.size() - at)));
}

// Curves that count in one rate and are wanted in another keep their seconds.
void TakeRate(FCurveContainer& curves, double wanted) {
    double stated = 0.0;
    const bool isStated = ParseNumber(curves.getProperty(kFrameRate), stated) && stated > 0.0;
    if (!isStated || !(wanted > 0.0 && std::isfinite(wanted)) || stated == wanted) return;
    const double scale = wanted / stated;
    const std::string rates = "from " + ShortNumber(stated) + " to " + ShortNumber(wanted) + " frames a second";
    for (FCurve& curve : curves) {
        const TransformResult result = TransformCurve(curve, {scale, 1.0}, {0.0, 0.0});
        if (!result.transformed)
            throw NotWritable("The keys of " + Quoted(curve.getName()) + " cannot go " + rates + '.');
        for (const std::string& expression : result.kept)
            Lose({curve.getName(), Loss::Time, Loss::Replaced, Quoted(expression) + " stays, " + rates, 1, {}, 0, 0});
    }
    for (const char* key : {kFirstFrame, kLastFrame})
        if (double frame = 0.0; ParseNumber(curves.getProperty(key), frame))
            curves.setProperty(key, NumberText(frame * scale).c_str());
    curves.setProperty(kFrameRate, NumberText(wanted).c_str());
}

// Bytes that are read where they stand.
class View : public Stream {
public:
    explicit View(const std::string& bytes) : m_bytes(bytes) {}

    void readData(void* buffer, int count) override {
        if (count < 0 || count > getSize() - m_position) throw StreamException();
        m_bytes.copy(static_cast<char*>(buffer), static_cast<std::size_t>(count), static_cast<std::size_t>(m_position));
        m_position += count;
    }
    void writeData(const void*, int) override { throw StreamException(); }
    int getPosition() const override { return m_position; }
    void setPosition(int position) override { m_position = position; }
    int getSize() const override { return static_cast<int>(m_bytes.size()); }

private:
    const std::string& m_bytes;
    int m_position = 0;
};

// Hands curves to a comparison as soon as they are read, so that they are not in memory all at once.
class Returned : private DraftCurves, public ContainerInterface {
public:
    explicit Returned(Comparer& comparer) : ContainerInterface(*curves), m_comparer(comparer) {}

    bool finishCurve() override {
        ContainerInterface::finishCurve();
        m_comparer.take(curves->begin()->getShared());
        curves->clear();
        return true;
    }
    const FCurveContainer& container() const { return *curves; }

private:
    Comparer& m_comparer;
};

} // namespace

// Collects the curves of a document, and writes them when it ends.
class CurveWriter::Draft : private DraftCurves, public ContainerInterface {
public:
    Draft(const CurveWriter& writer, Stream& to) : ContainerInterface(*curves), m_writer(writer), m_stream(to) {}

    void startCurveContainer() override {
        require(!m_isInContainer && !m_isInCurve, "startCurveContainer comes within a document.");
        m_isInContainer = true;
    }
    void finishCurveContainer() override {
        require(m_isInContainer && !m_isInCurve, "finishCurveContainer comes without a container, or within a curve.");
        finish();
    }
    bool startCurve(const char* name) override {
        require(!m_isInCurve, "startCurve comes within a curve.");
        m_isInCurve = true;
        return ContainerInterface::startCurve(name);
    }
    bool finishCurve() override {
        require(m_isInCurve, "finishCurve comes without a curve.");
        m_isInCurve = false;
        ContainerInterface::finishCurve();
        if (!m_isInContainer) finish();
        return true;
    }
    void tangentVector(double x, double y) override {
        require(std::isfinite(x) && std::isfinite(y), "A number is not finite.");
        ContainerInterface::tangentVector(x, y);
    }
    void keyframePosition(double x, double y) override {
        require(std::isfinite(x) && std::isfinite(y), "A number is not finite.");
        ContainerInterface::keyframePosition(x, y);
    }

private:
    // A refused call drops the document.
    void require(bool isWritable, const char* problem) {
        if (isWritable) return;
        clear();
        throw NotWritable(problem);
    }
    void clear() {
        curves->clear();
        curves->clearProperties();
        m_isInContainer = false;
        m_isInCurve = false;
    }
    void finish() {
        struct Clear {
            Draft& draft;
            ~Clear() { draft.clear(); }
        } const clearing{*this};
        RequireLimits(*curves);
        ConversionOptions options = Conversion::options();
        if (const double there = m_writer.rateThere(); there > 0.0) options.frameRate = there;
        TakeRate(*curves, options.frameRate);
        Notes notes;
        const std::string bytes = compose(notes);
        const std::size_t longest = std::min<std::size_t>(Conversion::options().longest, 0x7FFFFFFF);
        if (bytes.size() > longest)
            throw TooMuch("The document would have " + std::to_string(bytes.size()) + " bytes; the limit is "
                          + std::to_string(longest) + '.');
        if (ConversionReport* const report = Conversion::report()) {
            notes.sort();
            Comparer comparer(*curves, notes);
            Returned target(comparer);
            ConversionReport nothing; // reading reports what the document has, which here is what the comparison finds
            const Conversion reading(nothing, options);
            Reader* const reader = FormatFactory::getReader(m_writer.getFormatType());
            View stream(bytes);
            if (auto* const own = dynamic_cast<CurveReader*>(reader))
                own->readBytes(bytes, target);
            else if (reader)
                reader->readCurves(stream, target);
            comparer.finish(target.container(), *report);
        }
        Write(bytes, m_stream);
    }

    std::string compose(Notes& notes) const {
        try {
            return m_writer.compose(*curves, notes);
        } catch (const nlohmann::json::exception& error) { // is none of this library's
            throw NotWritable(error.what());
        }
    }

    const CurveWriter& m_writer;
    Stream& m_stream;
    bool m_isInContainer = false;
    bool m_isInCurve = false;
};

CurveWriter::CurveWriter(const FormatType& type) : DocumentWriter(type) {}
CurveWriter::~CurveWriter() = default;

std::unique_ptr<FormatInterface> CurveWriter::createDocument(Stream& stream) const {
    return std::make_unique<Draft>(*this, stream);
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
