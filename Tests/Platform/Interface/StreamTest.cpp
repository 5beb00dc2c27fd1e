#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/DataReader.h"
#include "Platform/Interface/InMemoryRandomAccessStream.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

using namespace Platform;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// A stream that cannot be read.
class BrokenStream final : public IRandomAccessStream {
public:
    std::uint64_t Size() const override { return 4; }
    void Seek(std::uint64_t) override {}
    std::size_t Read(std::span<std::uint8_t>) override { throw winrt::hresult_error(winrt::result::fail, u"broken"); }
    void Write(std::span<const std::uint8_t>) override {}
};

TEST(InMemoryRandomAccessStreamTest, GrowsAsItIsWritten) {
    InMemoryRandomAccessStream stream;
    EXPECT_EQ(stream.Size(), 0U);
    stream.Write(Bytes{1, 2, 3});
    stream.Seek(1);
    stream.Write(Bytes{9});
    EXPECT_EQ(stream.Size(), 3U);
    stream.Seek(0);
    Bytes read(5);
    EXPECT_EQ(stream.Read(read), 3U);
    EXPECT_EQ(read, (Bytes{1, 9, 3, 0, 0}));
    EXPECT_EQ(stream.Read(read), 0U);
}

TEST(InMemoryRandomAccessStreamTest, FillsAGapWithZeros) {
    InMemoryRandomAccessStream stream;
    stream.Seek(2);
    stream.Write(Bytes{7});
    stream.Seek(0);
    Bytes read(3, 1);
    EXPECT_EQ(stream.Read(read), 3U);
    EXPECT_EQ(read, (Bytes{0, 0, 7}));
}

TEST(DataReaderTest, LoadsFromTheStreamsPositionAndGivesTheBytesInOrder) {
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    stream->Write(Bytes{1, 2, 3, 4});
    stream->Seek(1);
    DataReader reader(stream);
    EXPECT_EQ(blockingWait(reader.LoadAsync(2)), 2U);
    EXPECT_EQ(blockingWait(reader.LoadAsync(9)), 1U);
    Bytes bytes(3);
    reader.ReadBytes(bytes);
    EXPECT_EQ(bytes, (Bytes{2, 3, 4}));
}

TEST(DataReaderTest, RaisesWhenFewerBytesHaveBeenLoaded) {
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    stream->Write(Bytes{1, 2});
    stream->Seek(0);
    DataReader reader(stream);
    blockingWait(reader.LoadAsync(2));
    Bytes bytes(3);
    EXPECT_THROW(reader.ReadBytes(bytes), winrt::hresult_out_of_bounds);
    Bytes fewer(2);
    reader.ReadBytes(fewer);
    EXPECT_EQ(fewer, (Bytes{1, 2}));
}

TEST(DataReaderTest, LoadingEndsWithTheStreamsError) {
    DataReader reader(std::make_shared<BrokenStream>());
    EXPECT_THROW(blockingWait(reader.LoadAsync(1)), winrt::hresult_error);
}

} // namespace
