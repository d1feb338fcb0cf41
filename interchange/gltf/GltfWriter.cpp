#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "FCurveInterchange/Names.h"
#include "interchange/CurveReader.h"
#include "interchange/Files.h"
#include "interchange/Json.h"
#include "interchange/Numbers.h"
#include "interchange/Units.h"
#include "interchange/gltf/Asset.h"
#include "interchange/gltf/Euler.h"
#include "interchange/gltf/GltfFormat.h"
#include "interchange/gltf/Matrix.h"
#include "interchange/gltf/NodeNames.h"
#include "interchange/gltf/Sampler.h"

#include <FCurveLib/FCurve.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Segment.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

using namespace Gltf;

namespace {

constexpr double kRadians = 3.14159265358979323846 / 180.0; // of a degree
constexpr double kDegrees = 1.0 / kRadians;
constexpr std::size_t kMostWeights = 4096;
constexpr const char* kNewDocument = R"({"asset":{"version":"2.0","generator":"FCurveLib"}})";
constexpr const char* kData = "data:application/octet-stream;base64,";
constexpr const char* kOwnNode = "curves"; // for curves without a node

float AsFloat(double number) {
    if (!(std::fabs(number) <= static_cast<double>(std::numeric_limits<float>::max())))
        throw NotWritable("A value is beyond the range of single precision.");
    return static_cast<float>(number);
}

std::string FloatText(float number) {
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, number).ptr};
}

void Append(std::string& bytes, float number) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    for (unsigned i = 0; i < 4; ++i) bytes += static_cast<char>(bits >> 8U * i & 0xFFU);
}

// --- changes of a JSON text ------------------------------------------------------------------------------------------

// Elements and members are added to a document, spans replaced; everything else keeps its bytes.
class Edits {
public:
    explicit Edits(std::string_view text) : m_text(text), m_root(RootOf(text)) {}

    JsonSpan root() const { return m_root; }
    JsonSpan member(JsonSpan object, const std::string& key) {
        const auto [entry, isNew] = m_members[object.begin].try_emplace(key);
        if (isNew) entry->second = MemberOf(m_text, object, key);
        return entry->second;
    }
    std::vector<JsonSpan> elements(JsonSpan array) const { return ElementsOf(m_text, array); }

    // The name goes with the value; the text has names of its own.
    void replaceMember(JsonSpan object, const std::string& key, std::string text) {
        const JsonSpan value = member(object, key);
        const std::size_t close = m_text.rfind('"', value.begin);
        replace({m_text.rfind('"', close - 1), value.end}, std::move(text));
    }
    void replace(JsonSpan span, std::string text) { m_edits.push_back({span, std::move(text)}); }
    // To an object or an array, before its closing bracket; several additions keep their order.
    void add(JsonSpan whole, const std::string& text) {
        const std::size_t close = whole.end - 1;
        const bool isEmpty = m_text.find_first_not_of(" \t\r\n", whole.begin + 1) == close;
        std::string& added = m_added[close];
        added += (isEmpty && added.empty() ? "" : ",") + text;
    }
    void addMember(JsonSpan object, const std::string& key, const std::string& value) {
        add(object, JsonText(key) + ':' + value);
    }
    // To the array which is a member of the object; there will be one.
    void addElement(JsonSpan object, const std::string& key, const std::string& value) {
        const JsonSpan array = member(object, key);
        if (!array.empty()) {
            add(array, value);
            return;
        }
        std::string& elements = m_arrays[object.begin][key];
        elements += (elements.empty() ? "" : ",") + value;
        m_owners[object.begin] = object;
    }

    std::string result() {
        for (const auto& [begin, arrays] : m_arrays)
            for (const auto& [key, elements] : arrays) addMember(m_owners[begin], key, '[' + elements + ']');
        for (const auto& [place, text] : m_added) m_edits.push_back({{place, place}, text});
        std::sort(m_edits.begin(), m_edits.end(),
                  [](const Edit& a, const Edit& b) { return a.span.begin < b.span.begin; });
        std::string result;
        std::size_t done = 0;
        for (const Edit& edit : m_edits) {
            result.append(m_text.substr(done, edit.span.begin - done)).append(edit.text);
            done = edit.span.end;
        }
        return result.append(m_text.substr(done));
    }

private:
    struct Edit {
        JsonSpan span;
        std::string text;
    };

    std::string_view m_text;
    JsonSpan m_root;
    std::vector<Edit> m_edits;
    std::map<std::size_t, std::string> m_added;                         // by the place of the closing bracket
    std::map<std::size_t, std::map<std::string, std::string>> m_arrays; // that are not there yet, by their objects
    std::map<std::size_t, JsonSpan> m_owners;
    std::unordered_map<std::size_t, std::map<std::string, JsonSpan>>
        m_members; // that were looked for, by their objects
};

// --- where curves go -------------------------------------------------------------------------------------------------

// A property that is animated, and its components' curves.
struct Property {
    std::string animation;
    std::string key; // of the property within the document
    std::optional<std::size_t> node;
    std::string path; // of a node's channel; empty for a pointer
    std::string pointer;
    std::vector<const FCurve*> curves;
    std::vector<double> values;     // of components without a curve
    std::vector<std::string> names; // that a reader would give
    bool isArray = false;
    EulerAngles angles; // of a rotation that they make; it has no other curves
};

struct NewNode {
    std::string name;
    std::vector<std::pair<std::string, double>> extras;
    std::size_t weights = 0;
};

class AnimationWriter {
public:
    AnimationWriter(const FCurveContainer& curves, Notes& notes, std::string_view existing, bool isNew)
        : m_asset(existing, nullptr), m_edits(m_asset.parts().json), m_names(m_asset.root()), m_notes(notes),
          m_isNew(isNew) {
        double stated = 0.0;
        if (!ParseNumber(curves.getProperty(kFrameRate), stated)) stated = 0.0;
        m_rate = FrameRateOr(stated);
        // Only so many frames: what repeats has no end.
        constexpr double kMostFrames = 1e6;
        if (ParseNumber(curves.getProperty(kFirstFrame), m_from) && ParseNumber(curves.getProperty(kLastFrame), m_to))
            m_hasRange = m_from < m_to && m_to - m_from <= kMostFrames;
        if (const AngularUnit* const unit = FindUnit(kAngularUnits, curves.getProperty(kAngularUnit)))
            m_radians = unit->radians;
        for (const FCurve& curve : curves) add(curve);
        addEulers();
    }

    std::string document(Shape shape) {
        const Value root = m_asset.root();
        m_firstView = root["bufferViews"].size();
        m_firstAccessor = root["accessors"].size();
        m_firstMesh = root["meshes"].size();
        m_inputs.clear();
        writeNodes();
        writeAnimations();
        if (m_hasPointers) declareExtension();
        for (const std::string& accessor : m_accessors) m_edits.addElement(m_edits.root(), "accessors", accessor);
        return withBytes(shape);
    }

private:
    // --- properties --------------------------------------------------------------------------------------------------

    void add(const FCurve& curve) {
        const std::string name = curve.getName();
        const std::string animation = curve.getProperty(kAnimation);
        const ChannelName parts = SplitName(name);
        if (!name.empty() && name.front() == '/' && addPointer(curve, animation, name)) return;
        std::size_t component = 0;
        std::string path;
        if (findPath(parts.channel, path, component) && !parts.node.empty()) {
            Property property;
            property.node = nodeOf(parts.node);
            property.path = path;
            const bool isWeights = path == "weights";
            const std::size_t most = isWeights ? weightsOf(*property.node) : path == "rotation" ? 4 : 3;
            property.isArray = isWeights;
            if (component < most || (isWeights && isNewNode(*property.node) && component < kMostWeights)) {
                property.key = "/nodes/" + std::to_string(*property.node) + '/' + path;
                if (put(property, animation, std::max(most, component + 1), component, curve)) return;
            }
        }
        addExtra(curve, animation, parts);
        if (const auto transform = FindTransform(parts.channel); // it came here: a rotation
            transform && transform->kind == TransformChannel::Rotate && !parts.node.empty()) {
            const FCurve*& place = m_eulers[{animation, parts.node}][static_cast<std::size_t>(transform->axis)];
            if (!place) place = &curve;
        }
    }

    // Angles also become rotations, which is what players take. Readers of this library pass these over: the angles
    // are there.
    void addEulers() {
        for (const auto& [owner, angles] : m_eulers) {
            Property property;
            property.animation = owner.first;
            property.node = nodeOf(owner.second);
            property.path = "rotation";
            property.key = "/nodes/" + std::to_string(*property.node) + "/rotation";
            property.curves.resize(4);
            property.values = restOf(property, 4);
            property.angles = {angles, m_radians};
            if (!m_byKey.try_emplace(owner.first + '\n' + property.key, m_properties.size()).second) {
                for (const FCurve* curve : angles) loseAngle(curve, Loss::Dropped, "an angle beside a quaternion");
                continue;
            }
            m_properties.push_back(std::move(property));
        }
    }
    static void loseAngle(const FCurve* curve, Loss::Remedy remedy, const std::string& detail) {
        if (curve) Lose({curve->getName(), Loss::Kind, remedy, detail + "; the angle stays beside it", 1, {}, 0, 0});
    }

    static bool findPath(const std::string& channel, std::string& path, std::size_t& component) {
        if (const auto transform = FindTransform(channel)) {
            path = transform->kind == TransformChannel::Translate ? "translation" : "scale";
            component = static_cast<std::size_t>(transform->axis);
            if (transform->kind != TransformChannel::Rotate) return true;
        }
        const std::size_t slash = channel.find('/');
        if (slash == std::string::npos) return false;
        path = channel.substr(0, slash);
        const std::string last = channel.substr(slash + 1);
        const std::string letters = "xyzw";
        if (path == "rotation" && last.size() == 1 && letters.find(last) != std::string::npos) {
            component = letters.find(last);
            return true;
        }
        double number = 0.0;
        if (path != "weights" || !ParseNumber(last, number) || std::to_string(static_cast<int>(number)) != last)
            return false;
        component = static_cast<std::size_t>(number);
        return true;
    }

    // A number, or an array of two to four, that is there.
    bool addPointer(const FCurve& curve, const std::string& animation, const std::string& name) {
        Property property;
        property.pointer = name;
        const Json* value = m_asset.find(name);
        std::size_t component = 0;
        if (value && value->is_number()) {
            property.values = {value->get<double>()};
            // An element of a vector is animated with the others.
            const std::size_t slash = name.rfind('/');
            const Json* const parent = m_asset.find(name.substr(0, slash));
            if (parent && parent->is_array() && slash > 0 && parent->size() <= 4) return false;
        } else {
            const std::size_t slash = name.rfind('/');
            const std::string letters = "xyzw";
            if (slash + 2 != name.size() || letters.find(name.back()) == std::string::npos) return false;
            property.pointer = name.substr(0, slash);
            value = m_asset.find(property.pointer);
            component = letters.find(name.back());
            if (!value || !value->is_array() || value->size() < 2 || value->size() > 4 || component >= value->size())
                return false;
            for (const Json& element : *value) {
                if (!element.is_number()) return false;
                property.values.push_back(element.get<double>());
            }
        }
        property.key = property.pointer;
        const std::size_t count = property.values.size();
        return put(property, animation, count, component, curve);
    }

    // A property of the node's extras: the home of what has no other.
    void addExtra(const FCurve& curve, const std::string& animation, const ChannelName& parts) {
        const std::string nodeName = parts.node.empty() ? kOwnNode : parts.node;
        const std::size_t node = nodeOf(nodeName);
        const std::string wanted = parts.channel.empty() ? "curve" : parts.channel;
        std::string extra = wanted;
        std::size_t& number = m_extraNumbers[animation + '\n' + std::to_string(node) + '/' + wanted];
        for (;; ++number) {
            if (number > 0) extra = wanted + '_' + std::to_string(number + 1);
            Property property;
            property.pointer = "/nodes/" + std::to_string(node) + "/extras/" + EscapePointer(validUtf8(extra));
            property.key = property.pointer;
            property.node = node;
            property.values = {0.0};
            if (put(property, animation, 1, 0, curve)) {
                if (m_isExtra.insert(property.key).second)
                    m_extras[node].emplace_back(validUtf8(extra), firstOf(curve));
                return;
            }
        }
    }
    static std::string validUtf8(const std::string& text) {
        return nlohmann::json::parse(JsonText(text)).get<std::string>();
    }
    static double firstOf(const FCurve& curve) {
        const double value = curve.eval(curve.size() > 1 ? curve.begin()->getRightKey()->getX() : 0.0);
        return std::isfinite(value) ? value : 0.0;
    }

    // Returns whether the component is free.
    bool put(Property& property, const std::string& animation, std::size_t count, std::size_t component,
             const FCurve& curve) {
        const auto [entry, isNew] = m_byKey.try_emplace(animation + '\n' + property.key, m_properties.size());
        if (isNew) {
            property.animation = animation;
            property.curves.resize(count);
            if (property.values.empty()) property.values = restOf(property, count);
            m_properties.push_back(property);
        }
        Property& place = m_properties[entry->second];
        if (component >= place.curves.size()) {
            place.curves.resize(component + 1); // weights of a new mesh
            place.values.resize(component + 1);
        }
        if (place.curves[component]) return false;
        place.curves[component] = &curve;
        if (place.isArray && isNewNode(*place.node)) {
            std::size_t& weights = m_newNodes[*place.node - m_names.size()].weights;
            weights = std::max(weights, place.curves.size());
        }
        return true;
    }

    // What components without a curve stay at.
    std::vector<double> restOf(const Property& property, std::size_t count) const {
        std::vector<double> values(count, property.path == "scale" ? 1.0 : 0.0);
        if (property.path == "rotation") values[3] = 1.0;
        if (!property.node || isNewNode(*property.node)) return values;
        const Value node = m_asset.root()["nodes"][*property.node];
        if (node["matrix"] && !property.isArray) {
            const Placement placement = placementOf(*property.node);
            const double* const numbers = property.path == "translation" ? placement.translation.data()
                                          : property.path == "rotation"  ? placement.rotation.data()
                                                                         : placement.scale.data();
            std::copy_n(numbers, count, values.begin());
            return values;
        }
        Value stated = node[property.path.c_str()];
        if (!stated && property.path == "weights" && node["mesh"]) {
            const Value meshes = m_asset.root()["meshes"];
            stated = meshes[node["mesh"].index(meshes.size())]["weights"];
        }
        for (std::size_t i = 0; i < std::min(count, stated.size()); ++i) values[i] = stated[i].number();
        return values;
    }

    // --- nodes -------------------------------------------------------------------------------------------------------

    bool isNewNode(std::size_t node) const { return node >= m_names.size(); }
    std::size_t nodeOf(const std::string& name) {
        if (const auto known = m_names.find(name)) return *known;
        const auto [entry, isNew] = m_newByName.try_emplace(name, m_names.size() + m_newNodes.size());
        if (isNew) m_newNodes.push_back({name, {}, 0});
        return entry->second;
    }
    std::size_t weightsOf(std::size_t node) const {
        if (isNewNode(node)) return 0;
        const Value mesh = m_asset.root()["nodes"][node]["mesh"];
        if (!mesh) return 0;
        const Value meshes = m_asset.root()["meshes"];
        const Value primitives = meshes[mesh.index(meshes.size())]["primitives"];
        return primitives.size() > 0 ? primitives[std::size_t{0}]["targets"].size() : 0;
    }

    void writeNodes() {
        std::vector<JsonSpan> spans;
        std::unordered_set<std::size_t> placed;
        for (const Property& property : m_properties) {
            if (property.path.empty() || property.isArray || isNewNode(*property.node)
                || !m_asset.root()["nodes"][*property.node]["matrix"] || !placed.insert(*property.node).second)
                continue;
            if (spans.empty()) spans = m_edits.elements(m_edits.member(m_edits.root(), "nodes"));
            replaceMatrix(*property.node, spans[*property.node]);
        }
        for (const auto& [node, extras] : m_extras) {
            if (isNewNode(node)) {
                m_newNodes[node - m_names.size()].extras = extras;
                continue;
            }
            if (spans.empty()) spans = m_edits.elements(m_edits.member(m_edits.root(), "nodes"));
            const Value there = m_asset.root()["nodes"][node]["extras"];
            if (there && !there.json().is_object())
                throw NotWritable("The extras of the node " + Interchange::Quoted(m_names.nameOf(node))
                                  + " are no object.");
            if (!there) {
                m_edits.addMember(spans[node], "extras", extrasText(extras));
                continue;
            }
            const JsonSpan object = m_edits.member(spans[node], "extras");
            for (const auto& [name, value] : extras)
                if (!there.json().contains(name)) m_edits.addMember(object, name, NumberText(value));
        }
        if (m_newNodes.empty()) return;
        std::string indices;
        for (std::size_t i = 0; i < m_newNodes.size(); ++i) {
            const NewNode& node = m_newNodes[i];
            std::string text = "{\"name\":" + JsonText(node.name);
            if (!node.extras.empty()) text += ",\"extras\":" + extrasText(node.extras);
            if (node.weights > 0) text += ",\"mesh\":" + std::to_string(addMesh(node.weights));
            m_edits.addElement(m_edits.root(), "nodes", text + '}');
            indices += (indices.empty() ? "" : ",") + std::to_string(m_names.size() + i);
        }
        const Value scenes = m_asset.root()["scenes"];
        if (scenes.size() > 0) {
            const std::size_t scene = m_asset.root()["scene"] ? m_asset.root()["scene"].index(scenes.size()) : 0;
            const JsonSpan span = m_edits.elements(m_edits.member(m_edits.root(), "scenes"))[scene];
            m_edits.addElement(span, "nodes", indices);
        } else {
            m_edits.addMember(m_edits.root(), "scene", "0");
            m_edits.addElement(m_edits.root(), "scenes", "{\"nodes\":[" + indices + "]}");
        }
    }
    // Beside a matrix nothing of a node may be animated.
    Placement placementOf(std::size_t node) const {
        const Value matrix = m_asset.root()["nodes"][node]["matrix"];
        std::array<double, 16> numbers{};
        if (matrix.size() != numbers.size()) matrix.refuse("Expected 16 numbers.");
        for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = matrix[i].number();
        const auto placement = PlacementOf(numbers);
        if (!placement)
            throw NotWritable("The matrix of the node " + Interchange::Quoted(m_names.nameOf(node))
                              + " shears or flattens: it is no translation, rotation and scale, which could be "
                                "animated.");
        return *placement;
    }
    void replaceMatrix(std::size_t node, JsonSpan object) {
        const Placement placement = placementOf(node);
        std::string text;
        const auto add = [&](const char* name, const auto& numbers) {
            text.append(text.empty() ? "\"" : ",\"").append(name).append("\":[");
            for (std::size_t i = 0; i < numbers.size(); ++i) text += (i > 0 ? "," : "") + NumberText(numbers[i]);
            text += ']';
        };
        add("translation", placement.translation);
        add("rotation", placement.rotation);
        add("scale", placement.scale);
        m_edits.replaceMember(object, "matrix", std::move(text));
        Lose({"",
              Loss::Kind,
              Loss::Replaced,
              "the matrix of the node " + Interchange::Quoted(m_names.nameOf(node))
                  + " by translation, rotation and scale",
              1,
              {},
              0.0,
              0.0});
    }
    static std::string extrasText(const std::vector<std::pair<std::string, double>>& extras) {
        std::string text;
        for (const auto& [name, value] : extras)
            text.append(text.empty() ? "{" : ",").append(JsonText(name)).append(":").append(NumberText(value));
        return text + '}';
    }
    // A point with that many shapes, all in its place: weights need something to act on.
    std::size_t addMesh(std::size_t weights) {
        const std::string zeros = std::to_string(
            addAccessor(R"({"componentType":5126,"count":1,"type":"VEC3","min":[0,0,0],"max":[0,0,0]})"));
        std::string targets;
        std::string values;
        for (std::size_t i = 0; i < weights; ++i) {
            targets.append(i > 0 ? "," : "").append("{\"POSITION\":").append(zeros).append("}");
            values += i > 0 ? ",0" : "0";
        }
        m_edits.addElement(m_edits.root(), "meshes",
                           "{\"primitives\":[{\"attributes\":{\"POSITION\":" + zeros + "},\"mode\":0,\"targets\":["
                               + targets + "]}],\"weights\":[" + values + "]}");
        return m_firstMesh + m_meshes++;
    }

    // --- animations --------------------------------------------------------------------------------------------------

    std::size_t addAccessor(std::string text) {
        m_accessors.push_back(std::move(text));
        return m_firstAccessor + m_accessors.size() - 1;
    }
    std::string accessorText(std::size_t offset, std::size_t count, const char* type, const std::string& more) {
        m_hasBytes = true;
        return "{\"bufferView\":" + std::to_string(m_firstView) + ",\"byteOffset\":" + std::to_string(offset)
               + ",\"componentType\":5126,\"count\":" + std::to_string(count) + ",\"type\":\"" + type + '"' + more
               + '}';
    }

    std::size_t inputOf(const std::vector<float>& times) {
        std::string bytes;
        for (const float time : times) Append(bytes, time);
        const auto known = m_inputs.find(bytes);
        if (known != m_inputs.end()) return known->second;
        const std::size_t index = addAccessor(
            accessorText(m_bytes.size(), times.size(), "SCALAR",
                         ",\"min\":[" + FloatText(times.front()) + "],\"max\":[" + FloatText(times.back()) + ']'));
        m_bytes += bytes;
        m_inputs.emplace(std::move(bytes), index);
        return index;
    }

    std::size_t outputOf(const Channel& channel, bool isArray) {
        const std::size_t offset = m_bytes.size();
        const bool isCubic = channel.interpolation == Interpolation::Cubic;
        const std::size_t width = channel.components;
        for (std::size_t k = 0; k < channel.keys(); ++k) {
            for (const std::vector<double>* numbers : {&channel.in, &channel.values, &channel.out}) {
                if (numbers->empty()) continue;
                for (std::size_t c = 0; c < width; ++c) Append(m_bytes, AsFloat((*numbers)[k * width + c]));
            }
        }
        const std::size_t elements = channel.keys() * (isCubic ? 3 : 1);
        return addAccessor(isArray ? accessorText(offset, elements * width, typeOf(1), "")
                                   : accessorText(offset, elements, typeOf(width), ""));
    }
    static const char* typeOf(std::size_t components) noexcept {
        return components == 1 ? "SCALAR" : components == 2 ? "VEC2" : components == 3 ? "VEC3" : "VEC4";
    }

    void writeAnimations() {
        std::vector<std::vector<const Property*>> animations; // in the order of their coming
        std::unordered_map<std::string, std::size_t> places;
        for (const Property& property : m_properties) {
            const auto [place, isNew] = places.try_emplace(property.animation, animations.size());
            if (isNew) animations.emplace_back();
            animations[place->second].push_back(&property);
        }
        const Value existing = m_asset.root()["animations"];
        std::vector<JsonSpan> spans;
        if (existing.size() > 0) spans = m_edits.elements(m_edits.member(m_edits.root(), "animations"));
        std::unordered_map<std::string, JsonSpan> byName; // the first of each name
        for (std::size_t i = 0; i < spans.size(); ++i) byName.emplace(existing[i]["name"].textOr(""), spans[i]);
        for (const auto& properties : animations) {
            const std::string& name = properties.front()->animation;
            const auto known = byName.find(name);
            std::string text = animationText(name, properties);
            if (known != byName.end())
                m_edits.replace(known->second, std::move(text));
            else
                m_edits.addElement(m_edits.root(), "animations", text);
        }
    }

    std::string animationText(const std::string& name, const std::vector<const Property*>& properties) {
        std::vector<std::vector<Track>> tracks; // of the properties
        double first = 0.0;
        for (const Property* property : properties) {
            tracks.emplace_back();
            for (const FCurve* curve : property->curves) {
                tracks.back().emplace_back();
                if (!curve) continue;
                Track& track = tracks.back().back();
                track = Resolve(*curve, {false, true}, m_notes);
                if (track.knots.empty()) {
                    track.knots.emplace_back();
                    track.knots[0].y = track.knots[0].before = firstOf(*curve);
                }
                if (m_hasRange) BakeEnds(*curve, m_from, m_to, track);
                const Knot& start = track.knots.front();
                // Room for a value before the first key.
                first = std::min(first, start.x - (start.before != start.y ? 1e-3 : 0.0));
            }
        }
        const double offset = std::floor(first);
        std::string channels;
        std::string samplers;
        for (std::size_t i = 0; i < properties.size(); ++i) {
            const Property& property = *properties[i];
            std::vector<Component> components;
            for (std::size_t c = 0; c < property.curves.size(); ++c) {
                const FCurve* const curve = property.curves[c];
                components.push_back(
                    {curve ? &tracks[i][c] : nullptr, property.values[c], curve ? ToleranceOf(*curve) : 0.0});
            }
            const Channel channel = hasAngles(property)
                                        ? rotationOf(property.angles, offset)
                                        : ChannelOf(components, m_rate, offset, property.path == "rotation");
            const std::size_t input = inputOf(channel.times);
            static constexpr const char* words[] = {"STEP", "LINEAR", "CUBICSPLINE"};
            samplers += (i > 0 ? ",{\"input\":" : "{\"input\":") + std::to_string(input)
                        + ",\"output\":" + std::to_string(outputOf(channel, property.isArray)) + ",\"interpolation\":\""
                        + words[static_cast<int>(channel.interpolation)] + "\"}";
            channels += (i > 0 ? "," : "") + channelText(property, i);
        }
        std::string text = "{";
        if (!name.empty()) text += "\"name\":" + JsonText(name) + ',';
        text += "\"channels\":[" + channels + "],\"samplers\":[" + samplers + "],\"extras\":{\""
                + std::string(kFrameRate) + "\":" + NumberText(m_rate);
        if (offset != 0.0) text += std::string(",\"") + kOffset + "\":" + NumberText(offset);
        return text += "}}";
    }

    static bool hasAngles(const Property& property) {
        return std::any_of(property.angles.curves.begin(), property.angles.curves.end(),
                           [](const FCurve* curve) { return curve != nullptr; });
    }
    Channel rotationOf(const EulerAngles& angles, double offset) const {
        const bool hasRange = m_hasRange && m_to > offset;
        const EulerChannel result =
            Gltf::ChannelOf(angles, m_rate, offset, hasRange ? std::max(m_from, offset) : 0.0, hasRange ? m_to : 0.0,
                            std::max(Conversion::options().tolerance, 1e-7));
        for (const FCurve* curve : angles.curves)
            loseAngle(curve, Loss::Sampled,
                      "a quaternion of angles about x, y and z, in this order, up to "
                          + ShortNumber(result.furthest * kDegrees) + " degrees off");
        return result.channel;
    }

    std::string channelText(const Property& property, std::size_t sampler) {
        std::string text = "{\"sampler\":" + std::to_string(sampler) + ",\"target\":";
        if (property.path.empty()) {
            m_hasPointers = true;
            text += std::string("{\"path\":\"pointer\",\"extensions\":{\"") + kPointer
                    + "\":{\"pointer\":" + JsonText(property.pointer) + "}}}";
        } else {
            text += "{\"node\":" + std::to_string(*property.node) + ",\"path\":\"" + property.path + "\"}";
        }
        // Names, where a reader would give others, or curves to components that have none.
        std::string names;
        for (const FCurve* curve : property.curves)
            names += (names.empty() ? "" : ",") + (curve ? JsonText(curve->getName()) : "null");
        if (names != namesByRule(property)) text += std::string(",\"extras\":{\"") + kCurves + "\":[" + names + "]}";
        return text + '}';
    }
    std::string namesByRule(const Property& property) const {
        std::string node;
        if (property.node)
            node = isNewNode(*property.node) ? m_newNodes[*property.node - m_names.size()].name
                                             : m_names.nameOf(*property.node);
        std::string base = property.pointer;
        if (!property.path.empty()) {
            base = node + '/' + property.path;
        } else if (property.node) {
            base = node + '/' + UnescapePointer(property.pointer.substr(property.pointer.rfind('/') + 1));
        }
        if (property.curves.size() == 1 && !property.isArray) return JsonText(base);
        std::string names;
        for (std::size_t c = 0; c < property.curves.size(); ++c)
            names += (c > 0 ? "," : "")
                     + JsonText(base + '/' + (property.isArray ? std::to_string(c) : std::string(1, "xyzw"[c])));
        return names;
    }

    void declareExtension() {
        const Value used = m_asset.root()["extensionsUsed"];
        for (std::size_t i = 0; i < used.size(); ++i)
            if (used[i].text() == kPointer) return;
        m_edits.addElement(m_edits.root(), "extensionsUsed", JsonText(kPointer));
    }

    // --- bytes -------------------------------------------------------------------------------------------------------

    std::string withBytes(Shape shape) {
        const Parts& parts = m_asset.parts();
        const Value buffers = m_asset.root()["buffers"];
        if (shape == Shape::Text) {
            if (parts.isBinary) throw NotWritable("The document to change is a binary one; \"glb\" is needed.");
            if (m_hasBytes) {
                addView(buffers.size(), 0);
                m_edits.addElement(m_edits.root(), "buffers",
                                   "{\"byteLength\":" + std::to_string(m_bytes.size()) + ",\"uri\":\"" + kData
                                       + (m_isNew ? std::string() : ToBase64(m_bytes)) + "\"}");
            }
            if (!m_isNew) return m_edits.result();
            std::string text = nlohmann::ordered_json::parse(m_edits.result()).dump(1) + '\n';
            // Last, as they are long. Nothing else in a new document is a member "uri".
            const std::string uri = std::string("\"uri\": \"") + kData;
            if (m_hasBytes) text.insert(text.find(uri) + uri.size(), ToBase64(m_bytes));
            return text;
        }
        if (!m_isNew && !parts.isBinary)
            throw NotWritable("The document to change is no binary one; \"gltf\" is needed.");
        std::string chunk(parts.chunk);
        if (m_hasBytes) {
            chunk.append((4 - chunk.size() % 4) % 4, '\0');
            if (buffers.size() > 0 && buffers[std::size_t{0}]["uri"])
                throw NotWritable("The first buffer of the document to change is another file.");
            addView(0, chunk.size());
            chunk += m_bytes;
            const std::string length = std::to_string(chunk.size());
            if (buffers.size() > 0) {
                const JsonSpan first = m_edits.elements(m_edits.member(m_edits.root(), "buffers"))[0];
                m_edits.replace(m_edits.member(first, "byteLength"), length);
            } else {
                m_edits.addElement(m_edits.root(), "buffers", "{\"byteLength\":" + length + '}');
            }
        }
        return Joined(m_edits.result(), std::move(chunk), parts.rest);
    }
    void addView(std::size_t buffer, std::size_t offset) {
        m_edits.addElement(m_edits.root(), "bufferViews",
                           "{\"buffer\":" + std::to_string(buffer) + ",\"byteOffset\":" + std::to_string(offset)
                               + ",\"byteLength\":" + std::to_string(m_bytes.size()) + '}');
    }

    Asset m_asset;
    Edits m_edits;
    NodeNames m_names;
    Notes& m_notes;
    bool m_isNew;
    double m_rate = 24.0;
    bool m_hasRange = false; // frames that the animation is asked for
    double m_from = 0.0;
    double m_to = 0.0;
    std::vector<Property> m_properties;
    std::unordered_map<std::string, std::size_t> m_byKey; // properties by animation and key
    std::map<std::pair<std::string, std::string>, std::array<const FCurve*, 3>> m_eulers; // by animation and node
    double m_radians = kRadians;                                                          // of an angle's unit
    std::vector<NewNode> m_newNodes;
    std::unordered_map<std::string, std::size_t> m_newByName;
    std::map<std::size_t, std::vector<std::pair<std::string, double>>> m_extras; // by node
    std::unordered_set<std::string> m_isExtra;
    std::unordered_map<std::string, std::size_t> m_extraNumbers; // of the last attempt to free a name
    std::size_t m_firstView = 0;
    std::size_t m_firstAccessor = 0;
    std::size_t m_firstMesh = 0;
    std::size_t m_meshes = 0;
    std::vector<std::string> m_accessors;
    std::unordered_map<std::string, std::size_t> m_inputs; // accessors by their bytes
    std::string m_bytes;
    bool m_hasBytes = false;
    bool m_hasPointers = false;
};

} // namespace

GltfWriter::GltfWriter(Shape shape) : CurveWriter(TypeOf(shape)), m_shape(shape) {}
GltfWriter::~GltfWriter() = default;

std::string GltfWriter::compose(const FCurveContainer& curves, Notes& notes) const {
    const std::string path = Conversion::options().setting("gltf.into");
    const std::string existing = path.empty() ? kNewDocument : ReadFile(path);
    return WithDocument(path, [&] { return AnimationWriter(curves, notes, existing, path.empty()).document(m_shape); });
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
