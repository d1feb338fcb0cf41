#include "interchange/CurveWriter.h"

#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "FCurveInterchange/Names.h"
#include "interchange/Comparison.h"
#include "interchange/CurveReader.h"
#include "interchange/Numbers.h"

#include <FCurveLib/ContainerInterface.h>
#include <FCurveLib/FormatFactory.h>
#include <FCurveLib/MemoryStream.h>
#include <FCurveLib/Stream.h>

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

// Where the common properties are missing, from those that the core's reader of "hClip" gives.
void AddCommonProperties(FCurveContainer& curves) {
    const auto add = [&](const char* common, const char* known, double offset) {
        double number = 0.0;
        if (*curves.getProperty(common) == '\0' && ParseNumber(curves.getProperty(known), number))
            curves.setProperty(common, NumberText(number + offset).c_str());
    };
    add(kFrameRate, "hclip_rate", 0.0);
    add(kFirstFrame, "hclip_start", 1.0); // samples count from 0, frames from 1
}

void Write(const std::string& bytes, Stream& stream) {
    constexpr std::size_t kPiece = 1 << 20;
    if (bytes.size() > 0x7FFFFFFFU - static_cast<unsigned>(stream.getPosition()))
        throw TooMuch("The document is longer than a stream can hold.");
    for (std::size_t at = 0; at < bytes.size(); at += kPiece)
        stream.writeData(bytes.data() + at, static_cast<int>(std::min(kPiece, bytes.size() - at)));
}

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
        AddCommonProperties(*curves);
        Notes notes;
        const std::string bytes = m_writer.compose(*curves, notes);
        if (bytes.size() > Conversion::options().longest)
            throw TooMuch("The document would have " + std::to_string(bytes.size()) + " bytes; the limit is "
                          + std::to_string(Conversion::options().longest) + '.');
        if (ConversionReport* const report = Conversion::report()) {
            MemoryStream stream;
            Write(bytes, stream);
            stream.setPosition(0);
            const auto back = FCurveContainer::create();
            ContainerInterface target(*back);
            ConversionReport nothing; // reading reports what the document has, which here is what the comparison finds
            const Conversion reading(nothing, Conversion::options());
            if (Reader* const reader = FormatFactory::getReader(m_writer.getFormatType()))
                reader->readCurves(stream, target);
            AddCommonProperties(*back);
            notes.sort();
            Compare(*curves, *back, notes, *report);
        }
        Write(bytes, m_stream);
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
