#include "FCurveLib/InterpolatorFactory.h"

#include "FCurveLib/NumberInterp.h"
#include "FCurveLib/UnknownExpression.h"
#include "interp/DefaultParser.h"
#include "interp/FormulaTokenizer.h"
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

// --- the texts that need no parser -----------------------------------------------------------------------------------

using Private::IsDigit;
using Private::IsNameStart;
using Private::IsSpace;

// Reads a text from start to end, over white space.
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

// The expression of the kind that the text names, however it is spaced; empty if it names none.
std::string_view ReadKind(std::string_view text) noexcept {
    Scanner scanner(text);
    const Private::KindRow* const kind = Private::FindKind(scanner.takeName());
    return kind && scanner.take('(') && scanner.take(')') && scanner.atEnd() ? kind->expression : "";
}

// --- the fallback parser ---------------------------------------------------------------------------------------------

std::atomic<FallbackExpressionParser*> currentParser{nullptr}; // null: the default parser takes the place when needed
std::atomic<const FallbackExpressionParser::ErrorCallback*> currentCallback{nullptr};

FallbackExpressionParser& GetParser() {
    if (FallbackExpressionParser* parser = currentParser.load(std::memory_order_acquire)) return *parser;

    // Deliberate: never destroyed, as the kinds.
    static FallbackExpressionParser& defaultParser = *Private::MakeDefaultParser().release();
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    if (!currentParser.load(std::memory_order_relaxed)) {
        defaultParser.setErrorCallback(currentCallback);
        currentParser.store(&defaultParser, std::memory_order_release);
    }
    return *currentParser;
}

} // namespace

const std::map<std::string, std::shared_ptr<Interpolator>, std::less<>>& InterpolatorFactory::getKinds() {
    // Deliberate: never destroyed, so that a host's static objects may create interpolators while the process ends.
    static const auto& kinds = *[] {
        auto filled = std::make_unique<std::map<std::string, std::shared_ptr<Interpolator>, std::less<>>>();
        for (const Private::KindRow& row : Private::AllKinds())
            if (row.create) filled->emplace(row.expression, row.create()).first->second->m_isShared = true;
        return filled.release();
    }();
    return kinds;
}

std::shared_ptr<Interpolator> InterpolatorFactory::create(const char* expression) {
    const char* const text = expression ? expression : "";

    if (const std::optional<double> number = ReadNumber(text)) {
        std::shared_ptr<Interpolator> result = NumberInterp::create(*number);
        result->setExpression(text);
        return result;
    }
    if (const std::string_view kind = ReadKind(text); !kind.empty()) return getKinds().find(kind)->second;

    std::shared_ptr<Interpolator> result = GetParser().parse(text);
    if (!result) return UnknownExpression::create(text);
    result->setExpression(text);
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
    return getKinds().begin();
}

InterpolatorFactory::const_iterator InterpolatorFactory::end() {
    return getKinds().end();
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
