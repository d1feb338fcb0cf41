#pragma once

// The format "csv": tables of keys. docs/formats/csv.md describes it.

#include "interchange/CurveReader.h"
#include "interchange/CurveWriter.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

class CsvReader final : public CurveReader {
public:
    CsvReader();

private:
    Document parse(std::string_view bytes) const override;
    bool recognises(std::string_view opening, bool isWhole) const override;
};

class CsvWriter final : public CurveWriter {
public:
    CsvWriter();

private:
    std::string compose(const FCurveContainer& curves, Notes& notes) const override;
};

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
