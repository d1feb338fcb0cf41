#pragma once

// Writers for formats that the core reads only, under the formats' own names.

#include "interchange/CurveWriter.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

class TextWriter final : public CurveWriter {
public:
    TextWriter();

private:
    std::string compose(const FCurveContainer& curves, Notes& notes) const override;
};

class HoudiniChanWriter final : public CurveWriter {
public:
    HoudiniChanWriter();

private:
    std::string compose(const FCurveContainer& curves, Notes& notes) const override;
};

class HoudiniClipWriter final : public CurveWriter {
public:
    HoudiniClipWriter();

private:
    std::string compose(const FCurveContainer& curves, Notes& notes) const override;
};

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
