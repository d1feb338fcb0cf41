#include "FCurveLib/FormatFactory.h"

#include "FCurveLib/ArrayStreamAdaptor.h"
#include "FCurveLib/Exception.h"
#include "FCurveLib/Stream.h"
#include "formats/Registration.h"
#include "formats/Text.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::OrEmpty;

namespace {

constexpr int kHeaderSize = 1024;

template<class T>
typename SimpleListNode<T>::iterator BeginNodes() {
    Private::RegisterFormats();
    return SimpleListNode<T>::begin();
}

template<class T>
typename SimpleListNode<T>::iterator FindNode(const char* name) {
    return std::find_if(BeginNodes<T>(), SimpleListNode<T>::end(), [name](const T& format) {
        return std::strcmp(format.getFormatType().getFormatName(), OrEmpty(name)) == 0;
    });
}

template<class T>
T* FindNewest(const char* name) {
    const auto found = FindNode<T>(name);
    return found == SimpleListNode<T>::end() ? nullptr : &*found;
}

// After the last point of the last name, which is not its first letter; in small letters.
std::string ExtensionOf(const char* path) {
    std::string extension = std::filesystem::path(OrEmpty(path)).extension().string();
    for (char& letter : extension)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    return extension;
}

template<class T>
T* FindByExtension(const char* path) {
    const std::string extension = ExtensionOf(path);
    if (extension.size() < 2) return nullptr;
    for (auto format = BeginNodes<T>(); format != SimpleListNode<T>::end(); ++format)
        if (extension == ExtensionOf((std::string("_.") + format->getFormatType().getExtension()).c_str()))
            return &*format;
    return nullptr;
}

// A stream from one of its bytes on.
class Rest : public Stream {
public:
    Rest(Stream& stream, int start) : m_stream(stream), m_start(start) {}

    void readData(void* buffer, int count) override {
        m_stream.setPosition(m_start + m_position);
        m_stream.readData(buffer, count);
        m_position += count;
    }
    void writeData(const void*, int) override { throw StreamException(); }
    int getPosition() const override { return m_position; }
    void setPosition(int position) override { m_position = position; }
    int getSize() const override { return m_stream.getSize() - m_start; }

private:
    Stream& m_stream;
    int m_start;
    int m_position = 0;
};

// After the byte-order mark and the white space that the stream starts with.
int SkipBlanks(Stream& stream) {
    constexpr int kPiece = 65536;
    const std::string_view mark = "\xEF\xBB\xBF";
    std::string piece;
    stream.setPosition(0);
    for (int at = 0; at < stream.getSize(); at += static_cast<int>(piece.size())) {
        piece.resize(static_cast<std::size_t>(std::min(at == 0 ? kHeaderSize : kPiece, stream.getSize() - at)));
        stream.readData(piece.data(), static_cast<int>(piece.size()));
        const auto first = piece.begin() + (at == 0 && piece.compare(0, mark.size(), mark) == 0 ? 3 : 0);
        const auto found =
            std::find_if(first, piece.end(), [](char c) { return c != ' ' && c != '\n' && c != '\r' && c != '\t'; });
        if (found != piece.end()) return at + static_cast<int>(found - piece.begin());
    }
    return stream.getSize();
}

bool Recognises(Reader& reader, Stream& stream, Stream& header) {
    header.setPosition(0);
    stream.setPosition(0);
    try {
        return reader.canRead(stream, header);
    } catch (const Exception&) {
        return false;
    }
}

} // namespace

Reader* FormatFactory::getReader(const char* name) {
    return FindNewest<Reader>(name);
}
Reader* FormatFactory::getReader(const FormatType& type) {
    return FindNewest<Reader>(type.getFormatName());
}
Writer* FormatFactory::getWriter(const char* name) {
    return FindNewest<Writer>(name);
}
Writer* FormatFactory::getWriter(const FormatType& type) {
    return FindNewest<Writer>(type.getFormatName());
}

Reader* FormatFactory::getReader(Stream& stream) {
    // Where blanks fill the header they are skipped once, not by each reader.
    const int blanks = SkipBlanks(stream);
    Rest rest(stream, blanks);
    Stream& text = blanks < kHeaderSize ? stream : rest;
    text.setPosition(0);
    ArrayStream<kHeaderSize> header;
    const int size = std::min(text.getSize(), kHeaderSize);
    if (size > 0) {
        char bytes[kHeaderSize];
        text.readData(bytes, size);
        header.writeData(bytes, size);
    }

    Reader* found = nullptr;
    for (auto reader = BeginNodes<Reader>(); !found && reader != SimpleListNode<Reader>::end(); ++reader) {
        if (Recognises(*reader, text, header)) found = &*reader;
    }
    stream.setPosition(0);
    return found;
}

Reader* FormatFactory::getReaderByExtension(const char* path) {
    return FindByExtension<Reader>(path);
}
Writer* FormatFactory::getWriterByExtension(const char* path) {
    return FindByExtension<Writer>(path);
}

FormatFactory::ReaderTypeIterator FormatFactory::beginReaderTypes() {
    return ReaderTypeIterator(BeginNodes<Reader>());
}
FormatFactory::ReaderTypeIterator FormatFactory::endReaderTypes() {
    return ReaderTypeIterator(SimpleListNode<Reader>::end());
}
FormatFactory::ReaderTypeIterator FormatFactory::findReaderType(const char* name) {
    return ReaderTypeIterator(FindNode<Reader>(name));
}
FormatFactory::WriterTypeIterator FormatFactory::beginWriterTypes() {
    return WriterTypeIterator(BeginNodes<Writer>());
}
FormatFactory::WriterTypeIterator FormatFactory::endWriterTypes() {
    return WriterTypeIterator(SimpleListNode<Writer>::end());
}
FormatFactory::WriterTypeIterator FormatFactory::findWriterType(const char* name) {
    return WriterTypeIterator(FindNode<Writer>(name));
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
