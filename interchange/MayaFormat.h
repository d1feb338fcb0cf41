#pragma once

// The format "maya_anim": curves as Maya's animImportExport plug-in writes them. docs/formats/maya_anim.md describes
// it.

#include "interchange/CurveReader.h"
#include "interchange/CurveWriter.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

class MayaReader final : public CurveReader {
public:
    MayaReader();

private:
    Document parse(std::string_view bytes) const override;
    bool recognises(std::string_view opening, bool isWhole) const override;
};

class MayaWriter final : public CurveWriter {
public:
    MayaWriter();

private:
    std::string compose(const FCurveContainer& curves, Notes& notes) const override;
};

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
