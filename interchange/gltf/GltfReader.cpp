#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "FCurveInterchange/Names.h"
#include "interchange/Files.h"
#include "interchange/Numbers.h"
#include "interchange/gltf/Asset.h"
#include "interchange/gltf/Channel.h"
#include "interchange/gltf/GltfFormat.h"
#include "interchange/gltf/NodeNames.h"
#include "interchange/usda/SplineTrack.h"

#include <FCurveLib/Exception.h>
#include <FCurveLib/FormatLimits.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

using namespace Gltf;

namespace {

constexpr std::size_t kCommonPerByte = 2; // that channels with common data may have, besides FormatLimits::runs
constexpr double kArcTolerance = 1e-4;    // of a rotation's components

void LoseChannel(const std::string& where, const char* detail) {
    Loss loss;
    loss.what = Loss::Curves;
    loss.remedy = Loss::Dropped;
    loss.detail = std::string(detail) + " (" + where + ')';
    Lose(loss);
}

// The double that is written like the float, with its digits: what the author meant.
double AsMeant(double single) {
    char digits[32];
    double meant = single;
    const auto end = std::to_chars(digits, digits + sizeof digits, static_cast<float>(single)).ptr;
    std::from_chars(digits, end, meant);
    return meant;
}

// Curves are called by the last parts of their channels.
struct Target {
    std::string name;
    std::size_t components = 0; // 0: as many as the data have
    bool isArray = false;       // numbered components
    bool isRotation = false;
};

class AnimationReader {
public:
    explicit AnimationReader(std::string_view bytes, Neighbour neighbour)
        : m_asset(bytes, std::move(neighbour)), m_limits(GetFormatLimits()), m_size(bytes.size()),
          m_names(m_asset.root()) {}

    Document read() {
        const Value animations = m_asset.root()["animations"];
        for (std::size_t i = 0; i < animations.size(); ++i) {
            const Value animation = animations[i];
            m_animation = animation["name"].textOr("");
            if (m_animation.empty() && animations.size() > 1) m_animation = '#' + std::to_string(i);
            const Value extras = animation["extras"];
            const bool hasExtras = extras && extras.json().is_object();
            const double stated = hasExtras ? extras[kFrameRate].numberOr(0.0) : 0.0;
            m_rate = FrameRateOr(stated);
            m_offset = hasExtras ? extras[kOffset].numberOr(0.0) : 0.0;
            if (!std::isfinite(m_offset)) m_offset = 0.0;
            if (m_document.properties.empty()) m_document.properties.emplace_back(kFrameRate, NumberText(m_rate));
            const Value channels = animation["channels"];
            for (std::size_t c = 0; c < channels.size(); ++c) readChannel(channels[c], animation["samplers"]);
        }
        return std::move(m_document);
    }

private:
    void readChannel(const Value& value, const Value& samplers) {
        const Value sampler = samplers[value["sampler"].index(samplers.size())];
        const Value place = value["target"];
        const std::string& path = place["path"].text();
        Target target;
        if (path == "pointer") {
            const Value pointer = place["extensions"][kPointer]["pointer"];
            target = targetOf(pointer.text());
        } else if (!place["node"]) {
            LoseChannel(value.path(), "a channel without a node");
            return;
        } else {
            const std::size_t node = place["node"].index(m_names.size());
            if (!setPath(target, node, path)) {
                LoseChannel(place.path(), "a channel of an unknown path");
                return;
            }
        }
        Channel channel = dataOf(sampler, target);
        if (target.isRotation && channel.interpolation == Interpolation::Linear) {
            const Distance off = FollowArcs(channel, kArcTolerance);
            if (channel.keys() > 1) {
                Loss loss;
                loss.curve = target.name;
                loss.what = Loss::Kind;
                loss.remedy = Loss::Fitted;
                loss.detail = "turns along great circles";
                loss.difference = off.y;
                loss.at = off.at * m_rate + m_offset;
                Lose(loss);
            }
        }
        addTracks(value, target, channel);
    }

    bool setPath(Target& target, std::size_t node, const std::string& path) const {
        target.name = m_names.nameOf(node) + '/' + path;
        if (path == "translation" || path == "scale") {
            target.components = 3;
        } else if (path == "rotation") {
            target.components = 4;
            target.isRotation = true;
        } else if (path == "weights") {
            target.isArray = true;
        } else {
            return false;
        }
        return true;
    }

    // Properties of nodes are called by their nodes, others by the pointer itself.
    Target targetOf(const std::string& pointer) const {
        Target target;
        target.name = pointer;
        const std::string start = "/nodes/";
        if (pointer.compare(0, start.size(), start) != 0) return target;
        const std::size_t slash = pointer.find('/', start.size());
        double node = 0.0;
        if (slash == std::string::npos || !ParseNumber(pointer.substr(start.size(), slash - start.size()), node)
            || !(node >= 0.0 && node < static_cast<double>(m_names.size())) || node != std::floor(node))
            return target;
        const auto index = static_cast<std::size_t>(node);
        const std::string rest = pointer.substr(slash + 1);
        if (setPath(target, index, rest)) return target;
        const std::string extras = "extras/";
        if (rest.compare(0, extras.size(), extras) == 0) {
            target.name = m_names.nameOf(index) + '/' + UnescapePointer(std::string_view(rest).substr(extras.size()));
        } else if (rest.compare(0, 8, "weights/") == 0) {
            target.name = m_names.nameOf(index) + '/' + rest;
        } else {
            target.name = pointer;
        }
        return target;
    }

    Channel dataOf(const Value& sampler, const Target& target) {
        Channel channel;
        const std::string word = sampler["interpolation"].textOr("LINEAR");
        if (word == "STEP") {
            channel.interpolation = Interpolation::Step;
        } else if (word == "CUBICSPLINE") {
            channel.interpolation = Interpolation::Cubic;
        } else if (word != "LINEAR") {
            sampler["interpolation"].refuse("Expected \"LINEAR\", \"STEP\" or \"CUBICSPLINE\", found "
                                            + Interchange::Quoted(word) + '.');
        }
        const Numbers input = m_asset.read(sampler["input"]);
        if (input.components != 1) sampler["input"].refuse("Times are no vectors.");
        float last = -1.0F;
        channel.times.reserve(input.values.size());
        for (const double number : input.values) {
            const auto time = static_cast<float>(number);
            if (!std::isfinite(time) || !(time >= 0.0F)) sampler["input"].refuse("A time is negative or not finite.");
            if (!(time > last)) sampler["input"].refuse("The times do not increase.");
            last = time;
            channel.times.push_back(time);
        }

        const Numbers output = m_asset.read(sampler["output"]);
        const bool isCubic = channel.interpolation == Interpolation::Cubic;
        const std::size_t elements = channel.keys() * (isCubic ? 3 : 1);
        channel.components = output.components;
        std::size_t count = output.count();
        if (output.components == 1 && (target.isArray || target.components == 0) && count % elements == 0) {
            channel.components = count / elements;
            count = elements;
        }
        if (count != elements)
            sampler["output"].refuse("Expected " + std::to_string(elements) + " elements, found "
                                     + std::to_string(count) + '.');
        if (target.components != 0 && channel.components != target.components)
            sampler["output"].refuse("Expected vectors of " + std::to_string(target.components) + " components.");
        m_emitted += channel.keys() * channel.components;
        if (m_emitted > m_limits.runs && (m_emitted - m_limits.runs) / kCommonPerByte > m_size)
            throw TooMuch("Too many channels have the same data for a document of this length.", 0, 0, sampler.path());

        const auto part = [&](std::size_t offset) {
            std::vector<double> numbers;
            numbers.reserve(channel.keys() * channel.components);
            const std::size_t stride = isCubic ? 3 : 1;
            for (std::size_t k = 0; k < channel.keys(); ++k) {
                for (std::size_t c = 0; c < channel.components; ++c) {
                    const double number = output.values[(stride * k + offset) * channel.components + c];
                    if (!std::isfinite(number)) sampler["output"].refuse("A number is not finite.");
                    numbers.push_back(AsMeant(number));
                }
            }
            return numbers;
        };
        channel.values = part(isCubic ? 1 : 0);
        if (isCubic) {
            channel.in = part(0);
            channel.out = part(2);
        }
        return channel;
    }

    void addTracks(const Value& value, const Target& target, const Channel& channel) {
        const Value extras = value["extras"];
        const Value names = extras && extras.json().is_object() ? extras[kCurves] : Value(nullptr, "");
        const bool isNamed = names && names.json().is_array();
        const bool isSingle = channel.components == 1 && !target.isArray;
        if (channel.components > m_limits.curves || m_document.tracks.size() > m_limits.curves - channel.components)
            throw TooMuch("There are too many curves; the limit is " + std::to_string(m_limits.curves) + '.', 0, 0,
                          value.path());
        for (std::size_t c = 0; c < channel.components; ++c) {
            std::string name = target.name;
            if (!isSingle) {
                const bool isVector = channel.components <= 4 && !target.isArray;
                name += '/' + (isVector ? std::string(1, "xyzw"[c]) : std::to_string(c));
            }
            if (isNamed && c < names.size()) {
                const Json& given = names[c].json();
                if (given.is_null()) continue;
                if (given.is_string()) name = given.get<std::string>();
            }
            Track track = Usda::TrackOf(SplineOf(channel, c, m_rate, m_offset), name);
            track.path = value.path();
            if (!m_animation.empty()) track.properties.emplace_back(kAnimation, m_animation);
            m_document.tracks.push_back(std::move(track));
        }
    }

    Asset m_asset;
    FormatLimits m_limits;
    std::size_t m_size;
    NodeNames m_names;
    Document m_document;
    std::string m_animation;
    double m_rate = 24.0;
    double m_offset = 0.0;
    std::size_t m_emitted = 0; // numbers of all channels
};

} // namespace

const FormatType& Gltf::TypeOf(Shape shape) {
    static const FormatType types[] = {{"gltf", "glTF 2.0", "gltf"}, {"glb", "glTF 2.0, binary", "glb"}};
    return types[static_cast<int>(shape)];
}

GltfReader::GltfReader(Shape shape) : CurveReader(TypeOf(shape)), m_shape(shape) {}
GltfReader::~GltfReader() = default;

bool GltfReader::recognises(std::string_view opening, bool) const {
    if (m_shape == Shape::Binary) return IsBinary(opening);
    if (opening.substr(0, 3) == "\xef\xbb\xbf") opening.remove_prefix(3);
    const std::size_t first = opening.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos || opening[first] != '{') return false;
    for (const std::string_view word : {"\"asset\"", "\"accessors\"", "\"bufferViews\"", "\"extensionsUsed\"",
                                        "\"scenes\"", "\"meshes\"", "\"animations\"", "\"materials\"", "\"nodes\""})
        if (opening.find(word) != std::string_view::npos) return true;
    return false;
}

Document GltfReader::parse(std::string_view bytes) const {
    const std::string folder = Conversion::options().setting("gltf.folder");
    const Neighbour neighbour = [&](const std::string& path) -> std::optional<std::string> {
        try {
            return ReadFile(folder + '/' + path);
        } catch (const Exception&) {
            return std::nullopt;
        }
    };
    return AnimationReader(bytes, folder.empty() ? nullptr : neighbour).read();
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
