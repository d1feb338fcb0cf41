#include "FCurveLib/InterpolatorFactory.h"

#include "FCurveLib/NumberInterp.h"
#include "FCurveLib/UnknownExpression.h"
#include "interp/DefaultParser.h"
#include "interp/Kinds.h"

#include <atomic>
#include <charconv>
#include <mutex>
#include <optional>
#include <string_view>
#include <system_error>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace {

using Registry = std::map<std::string, std::shared_ptr<Interpolator>, std::less<>>;

const Registry& GetRegistry() {
    // Deliberate: never destroyed, so that a host's static objects may create interpolators while the process ends.
    static const Registry& registry = *[] {
        auto filled = std::make_unique<Registry>();
        for (const Private::KindRow& row : Private::AllKinds())
            if (row.create) filled->emplace(row.expression, row.create());
        return filled.release();
    }();
    return registry;
}

// --- the texts that need no parser -----------------------------------------------------------------------------------

constexpr bool IsSpace(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
constexpr bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}
constexpr bool IsNameStart(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

// Reads a text from its begin to its end, over white space.
class Scanner {
public:
    explicit Scanner(std::string_view text) noexcept : m_rest(text) { skipSpace(); }

    bool atEnd() const noexcept { return m_rest.empty(); }

    bool take(char c) noexcept {
        if (m_rest.empty() || m_rest.front() != c) return false;
        advance(1);
        return true;
    }

    std::string_view takeName() noexcept {
        std::size_t length = 0;
        while (length < m_rest.size() && (IsNameStart(m_rest[length]) || (length > 0 && IsDigit(m_rest[length]))))
            ++length;
        const std::string_view name = m_rest.substr(0, length);
        advance(length);
        return name;
    }

    // A number without sign, in the "C" locale whatever the process's. Nothing for one beyond the range of doubles.
    std::optional<double> takeNumber() noexcept {
        if (m_rest.empty() || !(IsDigit(m_rest.front()) || m_rest.front() == '.')) return std::nullopt; // "inf", "nan"
        double number = 0.0;
        const char* const begin = m_rest.data();
        const auto [end, error] = std::from_chars(begin, begin + m_rest.size(), number);
        if (error != std::errc()) return std::nullopt;
        advance(static_cast<std::size_t>(end - begin));
        return number;
    }

private:
    void skipSpace() noexcept {
        while (!m_rest.empty() && IsSpace(m_rest.front())) m_rest.remove_prefix(1);
    }
    void advance(std::size_t length) noexcept {
        m_rest.remove_prefix(length);
        skipSpace();
    }

    std::string_view m_rest;
};

std::optional<double> ReadNumber(std::string_view text) noexcept {
    Scanner scanner(text);
    const bool negative = scanner.take('-');
    if (!negative) scanner.take('+');
    const std::optional<double> number = scanner.takeNumber();
    if (!number || !scanner.atEnd()) return std::nullopt;
    return negative ? -*number : *number;
}

// The shared instance of the kind that the text names; empty if it names none.
std::shared_ptr<Interpolator> FindKind(std::string_view text) {
    Scanner scanner(text);
    const std::string_view name = scanner.takeName();
    if (name.empty() || !scanner.take('(') || !scanner.take(')') || !scanner.atEnd()) return nullptr;
    const Registry& registry = GetRegistry();
    const auto found = registry.find(std::string(name) + "()");
    return found == registry.end() ? nullptr : found->second;
}

// --- the fallback parser ---------------------------------------------------------------------------------------------

std::atomic<FallbackExpressionParser*> currentParser{nullptr}; // null: the default parser takes the place when needed
std::atomic<const FallbackExpressionParser::ErrorCallback*> currentCallback{nullptr};

FallbackExpressionParser* GetParser() {
    if (FallbackExpressionParser* parser = currentParser.load(std::memory_order_acquire)) return parser;

    static const std::unique_ptr<FallbackExpressionParser> defaultParser = Private::MakeDefaultParser();
    if (!defaultParser) return nullptr;
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    if (!currentParser.load(std::memory_order_relaxed)) {
        defaultParser->setErrorCallback(currentCallback);
        currentParser.store(defaultParser.get(), std::memory_order_release);
    }
    return currentParser;
}

// Whether the interpolator is one of the shared instances, whose expression must stay.
bool IsShared(const Interpolator& interpolator) {
    const Registry& registry = GetRegistry();
    const auto found = registry.find(std::string_view(interpolator.getExpression()));
    return found != registry.end() && found->second.get() == &interpolator;
}

} // namespace

std::shared_ptr<Interpolator> InterpolatorFactory::create(const char* expression) {
    const char* const text = expression ? expression : "";

    if (const std::optional<double> number = ReadNumber(text)) {
        std::shared_ptr<Interpolator> result = NumberInterp::create(*number);
        result->setExpression(text);
        return result;
    }
    if (std::shared_ptr<Interpolator> kind = FindKind(text)) return kind;

    FallbackExpressionParser* const parser = GetParser();
    std::shared_ptr<Interpolator> result = parser ? parser->parse(text) : nullptr;
    if (!result) return UnknownExpression::create(text);
    if (!IsShared(*result)) result->setExpression(text);
    return result;
}

void InterpolatorFactory::getExpression(const Interpolator& interpolator, std::string& text) {
    text = interpolator.getExpression();
    if (text.empty()) text = "constant()";
}

void InterpolatorFactory::setParserFallback(FallbackExpressionParser* parser) {
    if (parser) parser->setErrorCallback(currentCallback);
    currentParser.store(parser, std::memory_order_release);
}

void InterpolatorFactory::setErrorCallback(const FallbackExpressionParser::ErrorCallback* callback) {
    currentCallback = callback;
    if (FallbackExpressionParser* parser = currentParser) parser->setErrorCallback(callback);
}

InterpolatorFactory::const_iterator InterpolatorFactory::begin() {
    return GetRegistry().begin();
}

InterpolatorFactory::const_iterator InterpolatorFactory::end() {
    return GetRegistry().end();
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
