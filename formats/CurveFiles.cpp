#include "FCurveLib/CurveFiles.h"

#include "FCurveLib/ContainerInterface.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveContainer.h"
#include "FCurveLib/FileReplacement.h"
#include "FCurveLib/FormatExceptions.h"
#include "FCurveLib/FormatFactory.h"
#include "FCurveLib/LoadFile.h"
#include "FCurveLib/MemoryStream.h"
#include "formats/EmitKeys.h"
#include "model/Raw.h"

#include <algorithm>
#include <climits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

const char* Cancelled::what() const noexcept {
    return "VEM_FN::FCurveLib::Cancelled";
}

namespace {

constexpr int kTellEvery = 1 << 20; // bytes between two calls of the callbacks
constexpr std::size_t kKeys = 1000;

// Of the work: emitting or parsing, and what comes before and after it.
constexpr double kLoaded = 0.3;
constexpr double kEmitted = 0.8;
constexpr double kParsed = 0.95;

// The callbacks of a host.
class Watch {
public:
    template<class Options>
    explicit Watch(const Options& options) : m_progress(options.progress), m_cancelled(options.cancelled) {}

    void ask() const {
        if (m_cancelled && m_cancelled()) throw Cancelled();
    }
    // Shares that do not rise are kept from the host.
    void tell(double share) {
        ask();
        if (!m_progress || share <= m_share) return;
        m_share = share;
        m_progress(share);
    }
    void afterKey() {
        if (++m_keys % kKeys == 0) ask();
    }

private:
    const std::function<void(double)>& m_progress;
    const std::function<bool()>& m_cancelled;
    double m_share = 0.0;
    std::size_t m_keys = 0;
};

// A stream that asks between the pieces of what goes through it.
class WatchedStream : public Stream {
public:
    WatchedStream(Stream& stream, Watch& watch) : m_stream(stream), m_watch(watch), m_size(stream.getSize()) {}

    void readData(void* buffer, int count) override {
        m_stream.readData(buffer, count);
        if (m_stream.getPosition() < m_next) return;
        m_next = m_stream.getPosition() > INT_MAX - kTellEvery ? INT_MAX : m_stream.getPosition() + kTellEvery;
        m_watch.tell(kLoaded + (kParsed - kLoaded) * m_stream.getPosition() / std::max(1, m_size));
    }
    void writeData(const void* buffer, int count) override {
        const char* bytes = static_cast<const char*>(buffer);
        do {
            const int piece = std::min(count, kTellEvery);
            m_stream.writeData(bytes, piece);
            m_watch.ask();
            bytes += piece;
            count -= piece;
        } while (count > 0);
    }
    int getPosition() const override { return m_stream.getPosition(); }
    void setPosition(int position) override { m_stream.setPosition(position); }
    int getSize() const override { return m_stream.getSize(); }

private:
    Stream& m_stream;
    Watch& m_watch;
    int m_size;
    int m_next = kTellEvery; // the position at which the host hears the next time
};

Writer& WriterFor(const char* path, const char* format) {
    Writer* const writer =
        format && *format ? FormatFactory::getWriter(format) : FormatFactory::getWriterByExtension(path);
    if (!writer) throw UnknownFormat();
    return *writer;
}

// emit(target, afterKey) makes the calls for that many keys.
template<class Emit>
void Save(const char* path, const char* format, const SaveOptions& options, std::size_t keys, const Emit& emit) {
    Writer& writer = WriterFor(path, format);
    Watch watch(options);
    watch.ask();
    FileReplacement file(path);
    WatchedStream stream(file.getStream(), watch);
    std::size_t emitted = 0;
    const std::function<void()> afterKey = [&] {
        if (++emitted % kKeys == 0) watch.tell(kEmitted * static_cast<double>(emitted) / static_cast<double>(keys));
    };
    if (const auto document = writer.createDocument(stream)) {
        emit(*document, afterKey);
    } else {
        const Writer::StreamLink link(writer, stream);
        emit(writer, afterKey);
    }
    file.sync();
    watch.tell(1.0);
    file.finish();
}

// Asks between the keys of what a reader tells it.
template<class Target>
class Watched : public Target {
public:
    template<class... Arguments>
    explicit Watched(Watch& watch, Arguments&... arguments) : Target(arguments...), m_watch(watch) {}

    void startKeyframe() override {
        m_watch.afterKey();
        Target::startKeyframe();
    }

private:
    Watch& m_watch;
};

Reader& ReaderFor(Stream& stream, const char* path, const std::string& format) {
    Reader* reader = format.empty() ? FormatFactory::getReader(stream) : FormatFactory::getReader(format.c_str());
    if (!reader && format.empty()) reader = FormatFactory::getReaderByExtension(path);
    if (!reader) throw UnknownFormat();
    stream.setPosition(0);
    return *reader;
}

MemoryStream LoadWatched(const char* path, Watch& watch) {
    watch.ask();
    return LoadFile(path, [&](double share) { watch.tell(kLoaded * share); });
}

// Moves all that one container has into another one, which tells its observers once; or nothing, when memory runs out.
void Adopt(FCurveContainer& container, FCurveContainer& loaded) {
    PropertyMap properties = Private::Read::properties(container);
    bool changes = !loaded.empty();
    for (auto property = loaded.beginProperties(); property != loaded.endProperties(); ++property)
        changes = properties.set(property->first.c_str(), property->second.c_str()) || changes;
    if (!changes) return;
    const std::size_t before = container.size();
    {
        const FCurveContainer::Switch silence(container);
        try {
            while (!loaded.empty()) container.moveCurve(container.end(), loaded, *loaded.begin());
            Private::Raw::swapProperties(container, properties);
        } catch (...) {
            Private::Raw::replaceCurves(container, before, container.size() - before, {});
            throw;
        }
    }
    container.notifyChanged();
}

FormatType Load(Stream& stream, const char* path, FCurveContainer& container, const LoadOptions& options,
                Watch& watch) {
    Reader& reader = ReaderFor(stream, path, options.format);
    FormatType format = reader.getFormatType();
    const auto loaded = FCurveContainer::create();
    {
        WatchedStream watched(stream, watch);
        Watched<ContainerInterface> target(watch, *loaded);
        reader.readCurves(watched, target);
    }
    watch.tell(1.0);
    Adopt(container, *loaded);
    return format;
}

} // namespace

void SaveCurves(const char* path, const FCurveContainer& container, const char* format, const SaveOptions& options) {
    std::size_t keys = 0;
    for (const FCurve& curve : container) keys += curve.size() - 1;
    Save(path, format, options, keys, [&](FormatInterface& target, const std::function<void()>& afterKey) {
        Private::EmitCurves(container, target, afterKey);
    });
}

void SaveCurve(const char* path, const FCurve& curve, const char* format, const SaveOptions& options) {
    Save(path, format, options, curve.size() - 1, [&](FormatInterface& target, const std::function<void()>& afterKey) {
        Private::EmitCurve(curve, target, afterKey);
    });
}

FormatType LoadCurves(const char* path, FCurveContainer& container, const LoadOptions& options) {
    Watch watch(options);
    MemoryStream bytes = LoadWatched(path, watch);
    return Load(bytes, path, container, options, watch);
}

FormatType LoadCurves(Stream& stream, FCurveContainer& container, const LoadOptions& options) {
    Watch watch(options);
    watch.ask();
    return Load(stream, nullptr, container, options, watch);
}

FormatType LoadCurve(const char* path, FCurve& curve, const LoadOptions& options) {
    Watch watch(options);
    MemoryStream bytes = LoadWatched(path, watch);
    Reader& reader = ReaderFor(bytes, path, options.format);
    FormatType format = reader.getFormatType();
    const std::shared_ptr<FCurve> loaded = FCurve::create();
    {
        const FCurve::Switch silence(*loaded);
        WatchedStream stream(bytes, watch);
        Watched<FCurveFormatInterface> target(watch);
        target.setCurve(loaded);
        reader.readCurve(stream, target);
        watch.tell(1.0);
        curve.swap(*loaded);
    }
    return format;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
