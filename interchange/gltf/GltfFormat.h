#pragma once

// Readers and writers of the formats "gltf" and "glb": animations of glTF 2.0. docs/formats/gltf.md describes them.

#include "interchange/CurveReader.h"
#include "interchange/CurveWriter.h"

#include <string>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

enum class Shape { Text, Binary };

// "gltf", "glTF 2.0", "gltf"; and "glb", "glTF 2.0, binary", "glb".
const FormatType& TypeOf(Shape shape);

constexpr const char* kAnimation = "gltf_animation"; // property of a curve: its animation's name
constexpr const char* kPointer = "KHR_animation_pointer";
constexpr const char* kOffset = "frame_offset"; // in an animation's extras: the frame at its start
constexpr const char* kCurves = "curves";       // in a channel's extras: names of its components, null for none

} // namespace Gltf

// Either takes documents of both shapes, once it is asked.
class GltfReader : public CurveReader {
public:
    explicit GltfReader(Gltf::Shape shape);
    ~GltfReader() override;

private:
    Document parse(std::string_view bytes) const override;
    bool recognises(std::string_view opening, bool isWhole) const override;

    Gltf::Shape m_shape;
};

class GltfWriter : public CurveWriter {
public:
    explicit GltfWriter(Gltf::Shape shape);
    ~GltfWriter() override;

private:
    std::string compose(const FCurveContainer& curves, Notes& notes) const override;

    Gltf::Shape m_shape;
};

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
