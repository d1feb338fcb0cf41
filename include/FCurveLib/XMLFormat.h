#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatExceptions.h"
#include "FCurveLib/FormatType.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Reader.h"
#include "FCurveLib/Writer.h"

#include <memory>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The format "xml": curves and containers as XML 1.0, without loss. docs/formats/xml.md describes it.
namespace XMLFormat {

/// "xml", "XML", "fcrvx".
FCURVELIB_API const FormatType& GetFormatType();

/// \name What can be wrong
/// @{

/// Base of the format's exceptions.
class FCURVELIB_API XMLError : public FormatError {
public:
    explicit XMLError(const std::string& message = {}, std::uint64_t line = 0, std::uint64_t column = 0,
                      const std::string& name = {});
    const char* what() const noexcept override;

    /// The tag or attribute that is wrong or missing; empty where it is about neither. Never null.
    const char* name() const noexcept;

private:
    std::shared_ptr<const std::string> m_name;
};

/// The document is not well-formed, or ends too early.
class FCURVELIB_API ParseError : public XMLError {
public:
    ParseError(int code, const std::string& message, std::uint64_t line, std::uint64_t column);
    const char* what() const noexcept override;

    /// Expat's error code (XML_Error).
    int code() const noexcept { return m_code; }

private:
    int m_code;
};

/// The document has a DOCTYPE. None is read, so that no entity can expand to anything.
class FCURVELIB_API DoctypeRefused : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};

/// A tag where the format has none, or another one.
class FCURVELIB_API UnexpectedTag : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};

/// An element ends without one that it must hold.
class FCURVELIB_API MissingTag : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};

/// Text between tags, where the format has none.
class FCURVELIB_API UnexpectedText : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};

/// An attribute that is missing, unknown, or has a value that it cannot have.
class FCURVELIB_API BadAttribute : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};

/// The document was written for another major version of the format.
class FCURVELIB_API UnsupportedVersion : public XMLError {
public:
    UnsupportedVersion(unsigned major, unsigned supported, std::uint64_t line, std::uint64_t column);
    const char* what() const noexcept override;

    unsigned majorVersion() const noexcept { return m_major; }
    unsigned supportedVersion() const noexcept { return m_supported; }

private:
    unsigned m_major;
    unsigned m_supported;
};

/// More than FormatLimits allow.
class FCURVELIB_API LimitExceeded : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};

/// A writer was given a number that is not finite, which no curve holds.
class FCURVELIB_API NotFinite : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};
/// @}

/// Reads documents of version 1.x, in whatever encoding Expat knows. readCurve takes a document of a single curve;
/// readCurves also takes one, as a container that holds it. Recognises a document by its first tag, or the name in its
/// DOCTYPE, in ASCII-compatible encodings.
class FCURVELIB_API XMLReader : public Reader {
public:
    XMLReader();
    ~XMLReader() override;

    void readCurves(Stream& stream, FormatInterface& target) override;
    void readCurve(Stream& stream, FormatInterface& target) override;
    bool canRead(Stream& stream, Stream& header) override;
};

/// Writes documents of version 1.0, in UTF-8. The bytes depend on nothing but the calls. They reach the stream in large
/// pieces, the last ones with finishCurve or finishCurveContainer. Calls that make no document of the stated order are
/// ignored; numbers that are not finite raise NotFinite.
class FCURVELIB_API XMLWriter : public Writer {
public:
    XMLWriter();
    ~XMLWriter() override;

    void startCurveContainer() override;
    void finishCurveContainer() override;
    void containerProperty(const char* key, const char* value) override;

    bool startCurve(const char* name) override;
    bool finishCurve() override;
    void curveVisible(bool visible) override;
    void curveLocked(bool locked) override;
    void curveShowVelocity(bool show) override;
    void curveShowAcceleration(bool show) override;
    void curveShowDiscontinuities(bool show) override;
    /// Six significant digits of the grid and of the tangent scale are written, as many as curves keep. A grid without
    /// area is none.
    void curveGrid(double x, double y, double width, double height) override;
    void curveTangentScale(double scale) override;
    void curveProperty(const char* key, const char* value) override;

    void startSegmentContainer() override;
    void finishSegmentContainer() override;
    void startSegment(const char* expression) override;
    void finishSegment() override;
    void segmentProperty(const char* key, const char* value) override;

    void startInTangent() override;
    void finishInTangent() override;
    void startOutTangent() override;
    void finishOutTangent() override;
    void tangentVector(double x, double y) override;
    void tangentType(unsigned char type) override;
    void tangentWeightLocked(bool locked) override;
    void tangentWeighted(bool weighted) override;
    void tangentProperty(const char* key, const char* value) override;

    void startKeyframe() override;
    void finishKeyframe() override;
    void keyframePosition(double x, double y) override;
    void keyframeTangentsUnified(bool unified) override;
    void keyframeBreakdown(bool breakdown) override;
    void keyframeLocked(bool locked) override;
    void keyframeProperty(const char* key, const char* value) override;

private:
    struct Document;

    void newStream(Stream* stream) override;
    bool at(int part) const noexcept;
    void enterDocument();
    void leaveDocument();
    void startTangent(int part);
    void finishTangent(int part, const char* tag);

    std::unique_ptr<Document> m_document;               // null while there is no stream
    std::vector<std::unique_ptr<Document>> m_suspended; // of the streams that nested links put aside
};

} // namespace XMLFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
