#pragma once

// The formats "css_easings" and "lottie". docs/formats/css_easings.md and lottie.md describe them.

#include "interchange/CurveReader.h"
#include "interchange/CurveWriter.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

class CssReader final : public CurveReader {
public:
    CssReader();

private:
    Document parse(std::string_view bytes) const override;
    bool recognises(std::string_view opening, bool isWhole) const override;
};

class CssWriter final : public CurveWriter {
public:
    CssWriter();

private:
    std::string compose(const FCurveContainer& curves, Notes& notes) const override;
};

class LottieReader final : public CurveReader {
public:
    LottieReader();

private:
    Document parse(std::string_view bytes) const override;
    bool recognises(std::string_view opening, bool isWhole) const override;
};

class LottieWriter final : public CurveWriter {
public:
    LottieWriter();

private:
    std::string compose(const FCurveContainer& curves, Notes& notes) const override;
};

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
