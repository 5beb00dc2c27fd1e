#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/DataReader.h"
#include "Platform/Interface/InMemoryRandomAccessStream.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <utility>
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

TEST(InMemoryRandomAccessStreamTest, KeepsBytesThatItIsGivenWithoutACopy) {
    InMemoryRandomAccessStream stream;
    Bytes bytes{1, 2, 3};
    const std::uint8_t* const place = bytes.data();
    stream.WriteOwned(std::move(bytes));
    EXPECT_EQ(stream.Size(), 3U);
    stream.Seek(0);
    const SharedSpan read = stream.ReadShared(9);
    EXPECT_EQ(read.data.get(), place);
    EXPECT_EQ(read.size, 3U);
    EXPECT_EQ(stream.ReadShared(1).size, 0U);
}

TEST(InMemoryRandomAccessStreamTest, WritesBytesThatItIsGivenIntoWhatItHas) {
    for (const auto& [position, expected] :
         {std::pair{1, Bytes{1, 8, 9}}, std::pair{0, Bytes{8, 9, 3}}, std::pair{4, Bytes{1, 2, 3, 0, 8, 9}}}) {
        InMemoryRandomAccessStream stream;
        stream.Write(Bytes{1, 2, 3});
        stream.Seek(static_cast<std::uint64_t>(position));
        stream.WriteOwned({8, 9});
        stream.Seek(0);
        Bytes read(stream.Size());
        stream.Read(read);
        EXPECT_EQ(read, expected);
    }
}

TEST(InMemoryRandomAccessStreamTest, SharedBytesStayWhatTheyWere) {
    InMemoryRandomAccessStream stream;
    stream.Write(Bytes{1, 2, 3});
    stream.Seek(1);
    const SharedSpan shared = stream.ReadShared(2);
    stream.Seek(1);
    stream.Write(Bytes{9, 9});
    EXPECT_EQ(Bytes(shared.data.get(), shared.data.get() + shared.size), (Bytes{2, 3}));
    stream.Seek(0);
    Bytes read(3);
    stream.Read(read);
    EXPECT_EQ(read, (Bytes{1, 9, 9}));
}

TEST(InMemoryRandomAccessStreamTest, HasNothingBehindItsEnd) {
    InMemoryRandomAccessStream stream;
    stream.Write(Bytes{1});
    stream.Seek(5);
    Bytes read(1);
    EXPECT_EQ(stream.Read(read), 0U);
    EXPECT_EQ(stream.ReadShared(1).size, 0U);
}

TEST(DataReaderTest, TakesWhatWasLoadedInPiecesOfAnySize) {
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    stream->Write(Bytes{1, 2, 3, 4, 5});
    stream->Seek(0);
    DataReader reader(stream);
    for (const std::uint32_t count : {2U, 0U, 1U, 2U})
        EXPECT_EQ(blockingWait(reader.LoadAsync(count)), count);
    Bytes first(1);
    Bytes rest(4);
    reader.ReadBytes(first);
    reader.ReadBytes(rest);
    EXPECT_EQ(first, (Bytes{1}));
    EXPECT_EQ(rest, (Bytes{2, 3, 4, 5}));
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

TEST(DataReaderTest, GivesAVectorOfBytesByTheSameRules) {
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    stream->Write(Bytes{1, 2, 3, 4, 5});
    stream->Seek(0);
    DataReader reader(stream);
    blockingWait(reader.LoadAsync(2));
    blockingWait(reader.LoadAsync(3));
    EXPECT_EQ(reader.ReadBytes(0), Bytes());
    EXPECT_EQ(reader.ReadBytes(3), (Bytes{1, 2, 3}));
    EXPECT_THROW(reader.ReadBytes(3), winrt::hresult_out_of_bounds);
    EXPECT_EQ(reader.ReadBytes(2), (Bytes{4, 5}));
}

TEST(DataReaderTest, LoadingEndsWithTheStreamsError) {
    DataReader reader(std::make_shared<BrokenStream>());
    EXPECT_THROW(blockingWait(reader.LoadAsync(1)), winrt::hresult_error);
    Bytes bytes(1);
    EXPECT_THROW(reader.ReadBytes(bytes), winrt::hresult_out_of_bounds);
}

} // namespace
