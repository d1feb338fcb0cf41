#include "FCurveInterchange/Names.h"

#include <algorithm>
#include <cstring>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

bool IsComponent(const std::string& part) {
    if (part.size() == 1 && std::strchr("xyzwrgba", part[0])) return true;
    return !part.empty() && std::all_of(part.begin(), part.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

ChannelName SplitName(const std::string& name) {
    std::size_t slash = name.rfind('/');
    if (slash == std::string::npos || slash == 0) return {"", name};
    if (IsComponent(name.substr(slash + 1))) {
        const std::size_t before = name.rfind('/', slash - 1);
        if (before == std::string::npos || before == 0) return {"", name};
        slash = before;
    }
    return {name.substr(0, slash), name.substr(slash + 1)};
}

std::string JoinName(const ChannelName& name) {
    return name.node.empty() ? name.channel : name.node + '/' + name.channel;
}

std::optional<TransformChannel> FindTransform(const std::string& channel) {
    if (channel.size() < 2) return std::nullopt;
    const char* const axes = "xyzXYZ";
    const char* const axis = std::strchr(axes, channel.back());
    if (!axis) return std::nullopt;
    std::string kind = channel.substr(0, channel.size() - 1);
    if (kind.back() == '/') kind.pop_back();
    static constexpr struct {
        const char* word;
        TransformChannel::Kind kind;
    } words[] = {{"t", TransformChannel::Translate},
                 {"translate", TransformChannel::Translate},
                 {"translation", TransformChannel::Translate},
                 {"r", TransformChannel::Rotate},
                 {"rotate", TransformChannel::Rotate},
                 {"s", TransformChannel::Scale},
                 {"scale", TransformChannel::Scale}};
    for (const auto& word : words)
        if (kind == word.word) return TransformChannel{word.kind, static_cast<int>((axis - axes) % 3)};
    return std::nullopt;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
