#pragma once

#include "FCurveInterchange/Export.h"

#include <optional>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

/// \name Names of curves: "node/channel"
/// One rule for all formats. The channel is what stands after the last slash: "arm/hand/ty" is the channel ty of the
/// node arm/hand. A last part of one letter x, y, z, w, r, g, b, a, or of digits alone, is a component, and the part
/// before it belongs to the channel: "ball/translation/x", "face/weights/3". A name without slash has no node.
/// @{
struct ChannelName {
    std::string node; ///< may hold slashes; empty for none
    std::string channel;
};
FCURVEINTERCHANGE_API ChannelName SplitName(const std::string& name);
FCURVEINTERCHANGE_API std::string JoinName(const ChannelName& name);

/// What a channel is called by its meaning: "tx", "translateX", "translate/x", "translation/x" are the same.
struct TransformChannel {
    enum Kind : unsigned char { Translate, Rotate, Scale };
    Kind kind;
    int axis; ///< 0 x, 1 y, 2 z
};
/// Nothing for a channel that is none of translation, rotation (of one axis, in degrees) and scale.
FCURVEINTERCHANGE_API std::optional<TransformChannel> FindTransform(const std::string& channel);
/// @}

/// \name Properties of a container, whichever format brought them
/// Numbers as text. Formats that state none of them set none; those that count seconds set the rate by which frames
/// were made of them. Readers of the core set them, too ("hClip").
/// @{
constexpr const char* kFrameRate = "frame_rate";     ///< frames a second
constexpr const char* kFirstFrame = "first_frame";   ///< of the range that the file names
constexpr const char* kLastFrame = "last_frame";     ///< likewise
constexpr const char* kLinearUnit = "linear_unit";   ///< mm cm m km in ft yd mi
constexpr const char* kAngularUnit = "angular_unit"; ///< deg rad min sec
/// @}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
