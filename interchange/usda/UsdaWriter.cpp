#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "FCurveInterchange/Names.h"
#include "interchange/Files.h"
#include "interchange/Numbers.h"
#include "interchange/Units.h"
#include "interchange/usda/Layer.h"
#include "interchange/usda/UsdaFormat.h"
#include "interchange/usda/Widths.h"

#include <FCurveLib/ContainerInterface.h>
#include <FCurveLib/Diff.h>
#include <FCurveLib/FCurve.h>
#include <FCurveLib/FormatFactory.h>
#include <FCurveLib/FormatLimits.h>
#include <FCurveLib/Interpolator.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/MemoryStream.h>
#include <FCurveLib/Reader.h>
#include <FCurveLib/Segment.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

using namespace Usda;

namespace {

constexpr std::size_t kDeepest = 100; // prims in each other; names with more parts become one part
constexpr double kVertical = 1e-6;    // of the span: the width of a vertical handle

bool IsNameLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

// A name that USD takes: letters, digits and '_', where colons are allowed too, each part of that kind.
std::string Identifier(std::string_view text, bool allowsColons) {
    std::string result;
    for (const char c : text) {
        const bool startsPart = result.empty() || result.back() == ':';
        const bool isColon = c == ':' && allowsColons && !startsPart;
        if (startsPart && IsDigit(c)) result += '_';
        result += IsNameLetter(c) || IsDigit(c) || isColon ? c : '_';
    }
    if (result.empty() || result.back() == ':') result += '_';
    return result;
}

std::vector<std::string_view> Split(std::string_view text) {
    std::vector<std::string_view> parts;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('/', begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

// In quotes, on one line. Bytes that are no UTF-8 are escaped.
std::string QuotedText(std::string_view text) {
    constexpr char digits[] = "0123456789abcdef";
    const bool escapesAll = !IsUtf8(text);
    std::string result = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (c == '\n') {
            result += "\\n";
        } else if (byte < 0x20 || byte == 0x7F || (byte >= 0x80 && escapesAll)) {
            result += "\\x";
            result += digits[byte >> 4U];
            result += digits[byte & 15U];
        } else {
            result += c;
        }
    }
    return result + '"';
}

void AppendEntry(std::string& text, const std::string& key, const std::string& value) {
    const bool isPlain = !key.empty() && Identifier(key, false) == key;
    text += "string ";
    text += isPlain ? key : QuotedText(key);
    text += " = " + QuotedText(value);
}

// Where a curve goes.
struct Target {
    std::vector<std::string> prims;
    std::string attribute;
    std::string name; // the curve's, where the path does not say it
    std::string path() const {
        std::string path;
        for (const std::string& prim : prims) path += prim + '/';
        return path + attribute;
    }
};

// A curve's name is the path of its attribute; components of transformations belong to theirs: "ball/translation/x" is
// "translation:x" of "ball".
Target TargetOf(const std::string& name) {
    ChannelName parts = SplitName(name);
    const std::size_t slash = parts.channel.rfind('/');
    const bool isKnown = FindTransform(parts.channel) || parts.channel.compare(0, 9, "rotation/") == 0
                         || parts.channel.compare(0, 8, "weights/") == 0;
    if (slash != std::string::npos && slash > 0 && slash + 1 < parts.channel.size() && !isKnown) {
        parts.node += (parts.node.empty() ? "" : "/") + parts.channel.substr(0, slash);
        parts.channel.erase(0, slash + 1);
    }
    Target target;
    if (parts.node.empty()) {
        target.prims.emplace_back("curves");
    } else {
        for (const std::string_view part : Split(parts.node)) {
            if (target.prims.size() < kDeepest) {
                target.prims.push_back(Identifier(part, false));
            } else {
                target.prims.back() += Identifier(part, false);
            }
        }
    }
    std::string channel = parts.channel;
    std::replace(channel.begin(), channel.end(), '/', ':');
    target.attribute = Identifier(channel, true);
    return target;
}

double AsFloat(double number, const std::string& type) {
    if (type != "float" && type != "half") return number;
    return static_cast<double>(static_cast<float>(number));
}

// --- splines ---------------------------------------------------------------------------------------------------------

class SplineText {
public:
    SplineText(const Track& track, std::string type, std::string indent, const char* lineEnd)
        : m_track(track), m_type(std::move(type)), m_indent(std::move(indent)), m_lineEnd(lineEnd) {}

    // From the opening to the closing brace.
    std::string text() {
        m_text = "{";
        const auto isCurve = [](const Knot& knot) { return knot.piece == Piece::Bezier; };
        const bool hasCurves =
            m_track.knots.size() > 1 && std::any_of(m_track.knots.begin(), m_track.knots.end() - 1, isCurve);
        if (hasCurves) startLine("bezier,");
        addEnd("pre", m_track.leading, true);
        addEnd("post", m_track.trailing, false);
        for (std::size_t i = 0; i < m_track.knots.size(); ++i) addKnot(i);
        return m_text + m_lineEnd + m_indent + '}';
    }

private:
    void startLine(const char* text) {
        m_text += m_lineEnd;
        m_text += m_indent;
        m_text += "    ";
        m_text += text;
    }

    void addEnd(const char* word, const End& end, bool isPre) {
        if (end.kind == End::Hold || (end.kind != End::Line && m_track.knots.size() < 2)) return;
        startLine(word);
        if (end.kind == End::Line) {
            const Vector2D<double>& handle = isPre ? m_track.knots.front().in.handle : m_track.knots.back().out.handle;
            const double slope = handle.x == 0.0 ? 0.0 : handle.y / handle.x;
            m_text += ": sloped(" + NumberText(std::isfinite(slope) ? slope : 0.0) + "),";
        } else {
            m_text += end.kind == End::Cycle         ? ": loop reset,"
                      : end.kind == End::CycleOffset ? ": loop repeat,"
                                                     : ": loop oscillate,";
        }
    }

    void addKnot(std::size_t i) {
        const std::vector<Knot>& knots = m_track.knots;
        const Knot& knot = knots[i];
        const bool isLast = i + 1 == knots.size();
        const bool comesHeld = i == 0
                                   ? m_track.leading.kind != End::Hold
                                   : knots[i - 1].piece == Piece::Constant || knots[i - 1].piece == Piece::ConstantNext;
        startLine("");
        AppendNumber(m_text, knot.x);
        m_text += ": ";
        if (knot.piece == Piece::ConstantNext && !isLast) {
            appendValue(comesHeld ? knot.y : knot.before);
            m_text += " & ";
            appendValue(knots[i + 1].before);
        } else {
            if (!comesHeld && knot.before != knot.y) {
                appendValue(knot.before);
                m_text += " & ";
            } else if (comesHeld && knot.segment && i > 0) {
                addHiddenValue(knot);
            }
            appendValue(knot.y);
        }
        if (i > 0 && knots[i - 1].piece == Piece::Bezier)
            addTangent("; pre", -knot.in.handle.x, -knot.in.handle.y, m_nextShare, knot.x - knots[i - 1].x);
        if (!isLast && knot.piece == Piece::Linear) {
            m_text += "; post linear";
        } else if (!isLast && knot.piece == Piece::Bezier) {
            const double span = knots[i + 1].x - knot.x;
            const Widths widths = WithinTest({knot.out.handle.x / span, -knots[i + 1].in.handle.x / span});
            m_nextShare = widths.right;
            addTangent("; post curve", knot.out.handle.x, knot.out.handle.y, widths.left, span);
        } else {
            m_text += "; post held";
        }
        addCustomData(knot);
        m_text += ',';
    }

    // A key's own value where the curve does not show it: after a held segment, before a number.
    void addHiddenValue(const Knot& knot) {
        const auto key = knot.segment->getLeftKey();
        if (!key || key->getY() == knot.y) return;
        appendValue(key->getY());
        m_text += " & ";
    }

    void appendValue(double value) { AppendNumber(m_text, AsFloat(value, m_type)); }

    // Width and slope of a handle that reaches this share of the span at most.
    void addTangent(const char* word, double x, double y, double share, double span) {
        double width = share > 1.0 ? share * span : x;
        double slope = y / x;
        if (x <= 0.0 && y == 0.0) {
            width = 0.0;
            slope = 0.0;
        } else if (x <= 0.0 || !std::isfinite(slope)) {
            width = kVertical * span;
            slope = y / width;
        }
        if (!std::isfinite(slope)) slope = 0.0;
        m_text += word;
        m_text += " (";
        AppendNumber(m_text, std::max(width, 0.0));
        m_text += ", ";
        AppendNumber(m_text, slope);
        m_text += ')';
    }

    void addCustomData(const Knot& knot) {
        const auto key = knot.segment ? knot.segment->getLeftKey() : nullptr;
        if (!key) return;
        std::string entries;
        const auto add = [&](const std::string& name, const std::string& value) {
            entries += entries.empty() ? "; { " : "; ";
            AppendEntry(entries, name, value);
        };
        if (key->isBreakdown()) add(kBreakdown, "1");
        if (key->isTangentsUnified()) add(kUnified, "1");
        if (*key->getProperty("fc_lock")) add(kLocked, "1");
        for (auto property = key->beginProperties(); property != key->endProperties(); ++property)
            if (property->first.compare(0, 3, "fc_") != 0) add(property->first, property->second);
        if (!entries.empty()) m_text += entries + " }";
    }

    const Track& m_track;
    std::string m_type;
    std::string m_indent;
    const char* m_lineEnd;
    std::string m_text;
    double m_nextShare = 0.0; // of the handle at the right end of the piece, held to USD's test
};

// --- samples ---------------------------------------------------------------------------------------------------------

// Curves of the components of one vector, sampled where any of them has a key and at whole frames where one bends.
std::string SamplesText(const std::vector<const FCurve*>& curves, const std::string& indent, const char* lineEnd) {
    std::set<double> times;
    for (const FCurve* curve : curves) {
        if (!curve) continue;
        Notes notes;
        const Track track = Resolve(*curve, {}, notes);
        for (std::size_t i = 0; i < track.knots.size(); ++i) {
            const Knot& knot = track.knots[i];
            times.insert(knot.x);
            if (i + 1 == track.knots.size()) break;
            const Knot& next = track.knots[i + 1];
            const double frames = std::floor(next.x) - std::ceil(knot.x);
            if (knot.piece == Piece::Bezier && frames < 1e6)
                for (double x = std::ceil(knot.x); x < next.x; ++x) times.insert(x);
            if (knot.piece == Piece::Constant && next.y != knot.y)
                times.insert(next.x - std::min(Keyframe::getMinSeparation(), 0.5 * (next.x - knot.x)));
        }
    }
    if (times.size() > GetFormatLimits().keys) throw TooMuch("There are too many samples.");
    std::string text = "{";
    for (const double time : times) {
        text += lineEnd + indent + "    ";
        AppendNumber(text, time);
        text += ": (";
        for (std::size_t c = 0; c < curves.size(); ++c) {
            const double value = curves[c] ? curves[c]->eval(time) : 0.0;
            if (c > 0) text += ", ";
            AppendNumber(text, std::isfinite(value) ? value : 0.0);
        }
        text += "),";
    }
    return text + lineEnd + indent + '}';
}

// --- layers ----------------------------------------------------------------------------------------------------------

// What is written of one attribute.
struct Statement {
    Target target;
    std::string type;
    std::vector<std::pair<std::string, std::string>> customData;
    const FCurve* curve = nullptr;
    std::vector<const FCurve*> components; // of a vector
};

class LayerText {
public:
    LayerText(const FCurveContainer& curves, Notes& notes) : m_notes(notes) {
        for (const FCurve& curve : curves) add(curve);
    }

    std::string layer(const FCurveContainer& curves) {
        std::string text = "#usda 1.0\n(\n";
        std::string others;
        std::map<std::string, std::string> metadata; // in the order of their names
        double rate = 0.0;
        for (auto property = curves.beginProperties(); property != curves.endProperties(); ++property) {
            const auto& [key, value] = *property;
            double number = 0.0;
            const auto* const unit =
                std::find_if(std::begin(kLinearUnits), std::end(kLinearUnits), [&](const auto& one) {
                    return property->first == kLinearUnit && property->second == one.name;
                });
            const bool isNumber = ParseNumber(value, number) && NumberText(number) == value;
            if (key == kFrameRate && isNumber && number > 0.0) {
                rate = number;
            } else if (isNumber && key == kFirstFrame) {
                metadata["startTimeCode"] = value;
            } else if (isNumber && key == kLastFrame) {
                metadata["endTimeCode"] = value;
            } else if (unit != std::end(kLinearUnits)) {
                metadata["metersPerUnit"] = NumberText(unit->meters);
            } else {
                others += "        ";
                AppendEntry(others, key, value);
                others += '\n';
            }
        }
        metadata["timeCodesPerSecond"] = metadata["framesPerSecond"] = NumberText(FrameRateOr(rate));
        if (!others.empty()) text += "    customLayerData = {\n" + others + "    }\n";
        for (const auto& [key, value] : metadata)
            text.append("    ").append(key).append(" = ").append(value).append("\n");
        text += ")\n";
        return text + prims(m_statements, 0);
    }

    // Into a layer that exists: statements of attributes that are there are replaced, others join their prims.
    std::string into(const std::string& layerText);

private:
    void add(const FCurve& curve) {
        Statement statement;
        statement.target = TargetOf(curve.getName());
        statement.type = "double";
        statement.curve = &curve;
        const std::string name = curve.getName();
        const ValueType* const type = FindType(curve.getProperty(kType));
        for (auto property = curve.beginProperties(); property != curve.endProperties(); ++property) {
            const auto& [key, value] = *property;
            if (key.compare(0, 3, "fc_") != 0 && key != kType) statement.customData.emplace_back(key, value);
        }
        if (type && type->components > 1 && addComponent(statement, *type, name)) return;
        if (type && type->components == 1 && type->isContinuous) {
            statement.type = type->name;
        } else if (*curve.getProperty(kType)) {
            statement.customData.emplace_back(kType, curve.getProperty(kType));
        }
        finish(statement, name);
        m_statements.push_back(std::move(statement));
    }
    // The path is free, or a free one is found; the curve's name stays.
    void finish(Statement& statement, const std::string& name) {
        std::string path = statement.target.path();
        if (!m_paths.insert(path).second) {
            std::size_t& number = m_numbers[path];
            const std::string attribute = statement.target.attribute;
            do {
                statement.target.attribute = attribute + '_' + std::to_string(++number);
            } while (!m_paths.insert(statement.target.path()).second);
            path = statement.target.path();
        }
        if (path != name) statement.customData.emplace_back(kName, name);
    }
    // Returns whether the curve became a component of a vector.
    bool addComponent(Statement& statement, const ValueType& type, const std::string& name) {
        const std::size_t slash = name.rfind('/');
        if (slash == std::string::npos || slash + 2 != name.size()) return false;
        const char* const letter = std::strchr(type.letters, name.back());
        if (!letter) return false;
        const FCurve* const curve = statement.curve;
        const auto component = static_cast<std::size_t>(letter - type.letters);
        const std::string vector = name.substr(0, slash) + '\n' + type.name; // no name has both
        const auto [entry, isNew] = m_vectors.try_emplace(vector, m_statements.size());
        if (isNew) {
            statement.type = type.name;
            statement.target = TargetOf(name.substr(0, slash));
            statement.components.resize(type.components);
            finish(statement, name.substr(0, slash));
            m_statements.push_back(std::move(statement));
        }
        const FCurve*& place = m_statements[entry->second].components[component];
        if (place) return false;
        place = curve;
        return true;
    }

    // What stands in front of a statement's value, and the value.
    std::string body(const Statement& statement, const std::string& indent, const char* lineEnd) {
        const std::string head = statement.type + ' ' + statement.target.attribute;
        if (!statement.components.empty())
            return head + ".timeSamples = " + SamplesText(statement.components, indent, lineEnd);
        const Track track = Resolve(*statement.curve, {true, true, true}, m_notes);
        if (track.knots.empty()) return {};
        return head + ".spline = " + SplineText(track, statement.type, indent, lineEnd).text();
    }
    std::string declaration(const Statement& statement, const std::string& indent, const char* lineEnd) {
        std::vector<std::pair<std::string, std::string>> entries = statement.customData;
        if (statement.components.empty() && statement.curve->size() == 1) {
            const auto interpolator = statement.curve->begin()->getInterpolator();
            entries.emplace_back(kWithoutKeys, interpolator ? interpolator->getExpression() : "0");
        }
        if (entries.empty()) return {};
        std::string text = statement.type + ' ' + statement.target.attribute + " (" + lineEnd;
        text += indent + "    customData = {" + lineEnd;
        for (const auto& [key, value] : entries) {
            text += indent + "        ";
            AppendEntry(text, key, value);
            text += lineEnd;
        }
        return text + indent + "    }" + lineEnd + indent + ')';
    }
    std::string statementText(const Statement& statement, const std::string& indent, const char* lineEnd) {
        std::string text;
        for (const std::string& part : {declaration(statement, indent, lineEnd), body(statement, indent, lineEnd)})
            if (!part.empty()) text += indent + part + lineEnd;
        return text;
    }

    // Prims that hold these statements, whose targets share their first `depth` prims.
    std::string prims(const std::vector<Statement>& statements, std::size_t depth) {
        std::vector<const Statement*> all;
        all.reserve(statements.size());
        for (const Statement& statement : statements) all.push_back(&statement);
        std::string text;
        appendPrims(all, depth, "", "\n", text);
        return text;
    }
    void appendPrims(const std::vector<const Statement*>& statements, std::size_t depth, const std::string& indent,
                     const char* lineEnd, std::string& text) {
        std::vector<std::pair<std::string, std::vector<const Statement*>>> children; // in the order of their coming
        std::unordered_map<std::string, std::size_t> places;
        for (const Statement* statement : statements) {
            if (statement->target.prims.size() == depth) {
                text += statementText(*statement, indent, lineEnd);
                continue;
            }
            const std::string& prim = statement->target.prims[depth];
            const auto [entry, isNew] = places.try_emplace(prim, children.size());
            if (isNew) children.emplace_back(prim, std::vector<const Statement*>());
            children[entry->second].second.push_back(statement);
        }
        for (const auto& [prim, below] : children) {
            if (depth == 0 || !text.empty()) text += lineEnd;
            text.append(indent).append("def ").append(QuotedText(prim)).append(lineEnd);
            text.append(indent).append("{").append(lineEnd);
            std::string inner;
            appendPrims(below, depth + 1, indent + "    ", lineEnd, inner);
            text += inner + indent + '}' + lineEnd;
        }
    }

    Notes& m_notes;
    std::vector<Statement> m_statements;
    std::unordered_set<std::string> m_paths;
    std::unordered_map<std::string, std::size_t> m_numbers; // of the last attempt to free a path
    std::unordered_map<std::string, std::size_t> m_vectors; // statements by name and type
};

// The span and the lines' rest, where that is blank.
TextSpan WholeLines(std::string_view text, TextSpan span) {
    std::size_t begin = span.begin;
    while (begin > 0 && (text[begin - 1] == ' ' || text[begin - 1] == '\t')) --begin;
    const std::size_t end = std::min(text.find_first_not_of(" \t;", span.end), text.size());
    const bool isAlone = begin > 0 && (text[begin - 1] == '\n' || text[begin - 1] == '\r');
    if (!isAlone || end == text.size() || (text[end] != '\n' && text[end] != '\r')) return span;
    return {begin, end + (text.compare(end, 2, "\r\n") == 0 ? 2 : 1)};
}

// The curves of a layer as a reader gives them, in the layer's own frames and without a report.
std::shared_ptr<FCurveContainer> CurvesOf(const std::string& layer) {
    auto curves = FCurveContainer::create();
    ContainerInterface target(*curves);
    ConversionOptions options = Conversion::options();
    options.frameRate = 0.0;
    const Conversion reading(options);
    MemoryStream stream;
    stream.writeData(layer.data(), static_cast<int>(layer.size()));
    stream.setPosition(0);
    FormatFactory::getReader(UsdaType())->readCurves(stream, target);
    return curves;
}

using CurvesByName = std::unordered_map<std::string, const FCurve*>;

// Whether a reader gives just these curves: the text may stay as it is, whatever its digits.
bool IsUnchanged(const Statement& statement, const CurvesByName& there) {
    const auto isThere = [&](const FCurve* curve) {
        if (!curve) return false;
        const auto known = there.find(curve->getName());
        return known != there.end() && Equal(*known->second, *curve);
    };
    return statement.components.empty()
               ? isThere(statement.curve)
               : std::all_of(statement.components.begin(), statement.components.end(), isThere);
}

std::string LayerText::into(const std::string& layerText) {
    const std::string_view existing = layerText;
    const Layer layer = ParseLayer(existing);
    const auto curves = CurvesOf(layerText);
    CurvesByName byName;
    for (const FCurve& curve : *curves) byName.emplace(curve.getName(), &curve);
    const bool hasReturns = existing.find("\r\n") != std::string_view::npos;
    const char* const lineEnd = hasReturns ? "\r\n" : "\n";
    std::unordered_map<std::string, std::size_t> attributes;
    for (std::size_t i = 0; i < layer.attributes.size(); ++i) attributes.emplace(layer.pathOf(layer.attributes[i]), i);
    std::unordered_map<std::string, std::size_t> prims;
    for (std::size_t i = 0; i < layer.prims.size(); ++i)
        if (!layer.prims[i].isInVariant) prims.emplace(layer.prims[i].path, i);

    struct Edit {
        std::size_t begin;
        std::size_t end;
        std::string text;
    };
    std::vector<Edit> edits;
    std::map<std::size_t, std::vector<const Statement*>> joining; // by the prim that they join
    const auto indentAt = [&](std::size_t place) {
        const std::size_t line = existing.find_last_of("\n\r", place - 1) + 1;
        const std::size_t end = std::min(existing.find_first_not_of(" \t", line), place);
        return std::string(existing.substr(line, end - line));
    };
    for (Statement& statement : m_statements) {
        auto known = attributes.find(statement.target.path());
        if (known == attributes.end() && statement.curve) known = attributes.find(statement.curve->getName());
        if (known == attributes.end()) {
            std::string path;
            std::size_t prim = 0;
            for (const std::string& part : statement.target.prims) {
                path += (path.empty() ? "" : "/") + part;
                const auto there = prims.find(path);
                if (there == prims.end()) break;
                prim = there->second;
            }
            joining[prim].push_back(&statement);
            continue;
        }
        if (IsUnchanged(statement, byName)) continue;
        const Attribute& attribute = layer.attributes[known->second];
        if (layer.prims[attribute.prim].isInVariant)
            throw NotWritable("The attribute " + Quoted(known->first) + " belongs to a variant.");
        const ValueType* const type = FindType(attribute.type);
        const bool isScalar = statement.components.empty();
        if (!type || (type->components == 1) != isScalar || (isScalar && !type->isContinuous))
            throw NotWritable("The attribute " + Quoted(known->first) + " has the type " + Quoted(attribute.type)
                              + ", which the curve cannot have.");
        statement.type = attribute.type;
        statement.target.attribute = attribute.name;
        const TextSpan& spline = attribute.splineText;
        const TextSpan& samples = attribute.samplesText;
        // The one that stands first is replaced, the other removed.
        const TextSpan& first = spline.end > 0 && (samples.end == 0 || spline.begin < samples.begin) ? spline : samples;
        const TextSpan& second = &first == &spline ? samples : spline;
        const std::string indent = indentAt(first.end > 0 ? first.begin : attribute.end);
        std::string text = body(statement, indent, lineEnd);
        if (text.empty()) continue;
        if (first.end > 0) {
            edits.push_back({first.begin, first.end, std::move(text)});
            if (second.end > 0) {
                const TextSpan lines = WholeLines(existing, second);
                edits.push_back({lines.begin, lines.end, ""});
            }
        } else {
            // On a line of its own, after what else the attribute's last line has.
            const std::size_t end = std::min(existing.find_first_not_of(" \t;", attribute.end), existing.size());
            const bool isLast = end == existing.size() || existing[end] == '#' || existing[end] == '\n'
                                || existing[end] == '\r' || existing.compare(end, 2, "//") == 0;
            const std::size_t place = isLast ? std::min(existing.find_first_of("\n\r", end), existing.size()) : end;
            text.insert(0, lineEnd + indent).append(isLast ? "" : lineEnd);
            edits.push_back({place, place, std::move(text)});
        }
    }
    for (const auto& [index, statements] : joining) {
        const Prim& prim = layer.prims[index];
        std::size_t place = prim.body.end;
        const std::string outer = index == 0 ? "" : indentAt(place);
        const std::string indent = index == 0 ? "" : outer + "    ";
        while (place > prim.body.begin && (existing[place - 1] == ' ' || existing[place - 1] == '\t')) --place;
        const std::size_t depth = index == 0 ? 0 : Split(prim.path).size();
        std::string text;
        appendPrims(statements, depth, indent, lineEnd, text);
        const bool isOnLine = existing[place - 1] != '\n' && existing[place - 1] != '\r';
        if (isOnLine && index > 0) {
            text.insert(0, lineEnd).append(outer); // the brace gets a line of its own
            edits.push_back({place, prim.body.end, std::move(text)});
        } else {
            text.insert(0, isOnLine ? lineEnd : "");
            edits.push_back({place, place, std::move(text)});
        }
    }
    std::stable_sort(edits.begin(), edits.end(), [](const Edit& a, const Edit& b) { return a.begin < b.begin; });
    std::string result;
    std::size_t done = 0;
    for (const Edit& edit : edits) {
        result += existing.substr(done, edit.begin - done);
        result += edit.text;
        done = edit.end;
    }
    return result += existing.substr(done);
}

} // namespace

UsdaWriter::UsdaWriter() : CurveWriter(UsdaType()) {}
UsdaWriter::~UsdaWriter() = default;

std::string UsdaWriter::compose(const FCurveContainer& curves, Notes& notes) const {
    LayerText text(curves, notes);
    const std::string path = Conversion::options().setting("usda.into");
    if (path.empty()) return text.layer(curves);
    return WithDocument(path, [&] { return text.into(ReadFile(path)); });
}

double UsdaWriter::rateThere() const {
    constexpr double kUnstated = 24.0;
    const std::string path = Conversion::options().setting("usda.into");
    if (path.empty()) return 0.0;
    return WithDocument(path, [&] { return ParseLayer(ReadFile(path)).rate.value_or(kUnstated); });
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
