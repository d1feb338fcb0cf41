#pragma once

// Files beside a document, or into which one is written.

#include "FCurveInterchange/Formats.h"

#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

// The bytes of the file; throws LoadError.
std::string ReadFile(const std::string& path);

// What act does with a document that curves go into. What is wrong with that is no fault of theirs: NotWritable, with
// path, line and column.
template<class Act>
auto WithDocument(const std::string& path, const Act& act) {
    try {
        return act();
    } catch (const BadDocument& error) {
        std::string place = path + ':';
        if (error.line() > 0) place += std::to_string(error.line()) + ':' + std::to_string(error.column()) + ':';
        throw NotWritable(place + ' ' + error.message());
    }
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
