#pragma once

#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/Vector2D.h"

#include <cstddef>
#include <string>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// Composes a document of the format "text" from the calls of an emitter. Display settings are left out, but a key's
// lock.
class TextComposer : public FormatInterface {
public:
    TextComposer();
    ~TextComposer() override;

    std::string takeText() { return std::move(m_text); }

    void containerProperty(const char* key, const char* value) override;
    bool startCurve(const char* name) override;
    bool finishCurve() override;
    void curveProperty(const char* key, const char* value) override;
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
    void indent(std::size_t depth);
    void property(std::string& text, std::size_t depth, const char* key, const char* value);
    void finishTangent(const char* word);
    void block(std::string& lines, std::size_t depth);

    std::string m_text;
    std::string m_body;       // of the segment: its block
    std::string m_properties; // of the tangent or key
    Vector2D<double> m_position;
    unsigned char m_type = 0;
    bool m_locked = false; // the weight, or the key
    bool m_weighted = false;
    bool m_breakdown = false;
    bool m_unified = false;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
