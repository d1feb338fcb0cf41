// Any bytes, walked as chunks. The first byte chooses the byte order; the rest is compared with what plain arithmetic
// on the bytes says, and chunks that nest soundly are written again.

#include "Require.h"

#include <optional>
#include <vector>

namespace Fuzz {

namespace {

constexpr int kDepth = 12;

struct Chunk {
    IFFType type;
    std::string payload;         // of a leaf
    std::vector<Chunk> children; // of a chunk whose payload is a row of chunks
};

// The same bytes, without the library.
class Oracle {
public:
    Oracle(const std::string& bytes, bool swap) : m_bytes(bytes), m_swap(swap) {}

    std::uint64_t number(int position, int width) const {
        std::uint64_t result = 0;
        for (int i = 0; i < width; ++i) {
            const int place = m_swap ? i : width - 1 - i;
            result = result << 8 | static_cast<unsigned char>(m_bytes[static_cast<std::size_t>(position + place)]);
        }
        return result;
    }

private:
    const std::string& m_bytes;
    bool m_swap;
};

template<class Action>
bool raises(const Action& action) {
    try {
        action();
        return false;
    } catch (const Stream::StreamException&) {
        return true;
    }
}

class Walk {
public:
    using IO = BinaryIO<DynamicBinaryPolicy>;

    Walk(Stream& stream, IO& io, const Oracle& oracle) : m_stream(&stream), m_io(&io), m_oracle(&oracle) {}

    // The chunks from begin to end, or nothing if they do not end there.
    std::optional<std::vector<Chunk>> row(int begin, int end, int depth) const {
        std::vector<Chunk> chunks;
        m_stream->setPosition(begin);
        while (m_stream->getPosition() < end) {
            const int position = m_stream->getPosition();
            const bool room = m_stream->getSize() - position >= 8;
            std::optional<IFFReader<DynamicBinaryPolicy>> chunk;
            Require(raises([&] { chunk.emplace(*m_stream, *m_io); }) == !room, "a header is read if there is room");
            if (!chunk) return std::nullopt;
            requireHeader(*chunk, position);
            requireSkip(*chunk);
            if (chunk->getPayloadEnd() > end) return std::nullopt;
            chunks.push_back(content(*chunk, depth));
            chunk->skip();
        }
        return chunks;
    }

private:
    void requireHeader(const IFFReader<DynamicBinaryPolicy>& chunk, int position) const {
        const auto size = static_cast<std::int64_t>(m_oracle->number(position + 4, 4));
        Require(chunk.getPayloadBegin() == position + 8, "the payload starts after the header");
        Require(chunk.getPayloadEnd() == position + 8 + size, "the payload's end is not wrapped");
        Require(chunk.getIFFSize() == std::min<std::int64_t>(size, 0x7FFFFFFF), "the size is the header's");
        Require(chunk.validateSize() == (size == 0), "nothing of the payload was read");
    }

    void requireSkip(const IFFReader<DynamicBinaryPolicy>& chunk) const {
        const int position = m_stream->getPosition();
        const bool inside = chunk.getPayloadEnd() <= m_stream->getSize();
        Require(raises([&] { chunk.skip(); }) == !inside, "a chunk that ends in the stream can be skipped");
        Require(m_stream->getPosition() == (inside ? chunk.getPayloadEnd() : position),
                "skip goes to the end or stays");
        Require(chunk.validateSize() == (inside || chunk.getPayloadEnd() == position), "skip ends where validated");
        m_stream->setPosition(position);
    }

    Chunk content(const IFFReader<DynamicBinaryPolicy>& chunk, int depth) const {
        Chunk result{chunk.getIFFType(), "", {}};
        const int begin = chunk.getPayloadBegin();
        const int size = chunk.getIFFSize();
        if (size >= 8 && depth < kDepth) {
            if (auto children = row(begin, begin + size, depth + 1)) {
                result.children = std::move(*children);
                return result;
            }
        }
        m_stream->setPosition(begin);
        result.payload.resize(static_cast<std::size_t>(size));
        m_stream->readData(result.payload.data(), size);
        return result;
    }

    Stream* m_stream;
    IO* m_io;
    const Oracle* m_oracle;
};

void write(const std::vector<Chunk>& chunks, Stream& stream, Walk::IO& io) {
    for (const Chunk& chunk : chunks) {
        IFFWriter<DynamicBinaryPolicy> writer(stream, io, chunk.type);
        stream.writeData(chunk.payload.data(), static_cast<int>(chunk.payload.size()));
        write(chunk.children, stream, io);
        writer.patchSize();
    }
}

// One number after the other, of every width in turn.
void requireNumbers(Stream& stream, Walk::IO& io, const Oracle& oracle) {
    MemoryStream copy;
    stream.setPosition(0);
    const auto transfer = [&](auto read, auto writeBack, int width) {
        const int position = stream.getPosition();
        const bool room = stream.getSize() - position >= width;
        bool raised = false;
        try {
            const auto number = (io.*read)(stream);
            (io.*writeBack)(copy, number);
            if constexpr (std::is_unsigned_v<decltype(number)>)
                Require(number == oracle.number(position, width), "a number is what its bytes say");
        } catch (const Stream::StreamException&) {
            raised = true;
        }
        Require(raised == !room, "a number is read if there is room");
        return room;
    };
    while (transfer(&Walk::IO::readUInt8, &Walk::IO::writeUInt8, 1)
           && transfer(&Walk::IO::readUInt64, &Walk::IO::writeUInt64, 8)
           && transfer(&Walk::IO::readInt16, &Walk::IO::writeInt16, 2)
           && transfer(&Walk::IO::readDouble, &Walk::IO::writeDouble, 8)
           && transfer(&Walk::IO::readUInt32, &Walk::IO::writeUInt32, 4)
           && transfer(&Walk::IO::readFloat, &Walk::IO::writeFloat, 4)
           && transfer(&Walk::IO::readUInt16, &Walk::IO::writeUInt16, 2)
           && transfer(&Walk::IO::readInt64, &Walk::IO::writeInt64, 8)) {
    }
    std::string begin(static_cast<std::size_t>(copy.getSize()), '\0');
    stream.setPosition(0);
    stream.readData(begin.data(), copy.getSize());
    Require(BytesOf(copy) == begin, "numbers are written again bit for bit");
}

void requireWalk(Stream& stream, const std::string& bytes, bool swap) {
    Walk::IO io{DynamicBinaryPolicy(swap)};
    const Oracle oracle(bytes, swap);
    requireNumbers(stream, io, oracle);
    const auto chunks = Walk(stream, io, oracle).row(0, stream.getSize(), 0);
    if (!chunks) return;
    MemoryStream copy;
    write(*chunks, copy, io);
    Require(BytesOf(copy) == bytes, "chunks are written again byte for byte");
}

} // namespace

} // namespace Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const bool swap = (data[0] & 1) != 0;
    const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    Fuzz::MemoryStream memory = Fuzz::StreamOf(bytes);
    Fuzz::requireWalk(memory, bytes, swap);
    Fuzz::ArrayStreamAdaptor array(bytes.data(), static_cast<int>(bytes.size()));
    Fuzz::requireWalk(array, bytes, swap);
    return 0;
}
