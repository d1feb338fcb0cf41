#include "FCurveLib/ArrayStreamAdaptor.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

using namespace VEM_FN::FCurveLib;

TEST(ArrayStreamAdaptor, AConstArrayIsReadOnlyWhateverTheCount) {
    const char array[] = "abc";
    ArrayStreamAdaptor stream(array, 3);
    for (const int count : {0, 1, 4, -1, INT_MAX}) {
        EXPECT_THROW(stream.writeData("x", count), ArrayStreamAdaptor::AccessError) << count;
    }
    char buffer[4] = {};
    stream.readData(buffer, 3);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_THROW(stream.readData(buffer, -1), ArrayStreamAdaptor::EndOfBuffer);
}

TEST(ArrayStreamAdaptor, ANegativeSizeIsNone) {
    char byte = 'a';
    ArrayStreamAdaptor stream(&byte, -5);
    EXPECT_EQ(stream.getSize(), 0);
    EXPECT_THROW(stream.readData(&byte, 1), ArrayStreamAdaptor::EndOfBuffer);
    EXPECT_THROW(stream.writeData("b", 1), ArrayStreamAdaptor::EndOfBuffer);
    EXPECT_EQ(byte, 'a');
}

TEST(ArrayStream, CarriesItsOwnZeroBytes) {
    ArrayStream<1024> stream;
    std::string bytes(1024, 'x');
    stream.readData(bytes.data(), 1024);
    EXPECT_EQ(bytes, std::string(1024, '\0'));
    stream.setPosition(1023);
    stream.writeData("y", 1);
    EXPECT_EQ(stream.getArray()[1023], 'y');

    ArrayStreamAdaptor second(stream);
    second.setPosition(0);
    second.writeData("2", 1);
    EXPECT_EQ(stream.getArray()[0], '2') << "a second position over the same bytes";
    EXPECT_EQ(stream.getPosition(), 1024);
}
