#include "Platform/Imaging/Png/RowFilters.h"

#include "Tests/Platform/Imaging/EncodedPictures.h"
#include "Tests/Platform/Imaging/Png/InstructionSets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

namespace Platform::Imaging::Png {
namespace {

/// What a filter type foretells for the sample at `i`, in the standard's own words.
int predicted(int type, const Bytes& row, const Bytes& above, std::size_t i) {
    const int left = i < 3 ? 0 : row[i - 3];
    const int up = above[i];
    const int corner = i < 3 ? 0 : above[i - 3];
    if (type == 1)
        return left;
    if (type == 2)
        return up;
    if (type == 3)
        return (left + up) / 2;
    const int estimate = left + up - corner;
    const int toLeft = std::abs(estimate - left);
    const int toUp = std::abs(estimate - up);
    const int toCorner = std::abs(estimate - corner);
    if (toLeft <= toUp && toLeft <= toCorner)
        return left;
    return toUp <= toCorner ? up : corner;
}

struct Candidate {
    Bytes bytes; // with the type
    int cost = 0;
};

Candidate candidate(int type, const Bytes& row, const Bytes& above) {
    Candidate one{{static_cast<std::uint8_t>(type)}};
    for (std::size_t i = 0; i < row.size(); ++i) {
        one.bytes.push_back(static_cast<std::uint8_t>(row[i] - predicted(type, row, above, i)));
        one.cost += std::abs(static_cast<std::int8_t>(one.bytes.back()));
    }
    return one;
}

Candidate firstOfTheCheapest(const Bytes& row, const Bytes& above) {
    Candidate best = candidate(1, row, above);
    for (const int type : {2, 3, 4})
        if (Candidate next = candidate(type, row, above); next.cost < best.cost)
            best = std::move(next);
    return best;
}

/// The last of the rows, filtered.
Bytes filtered(const std::vector<Bytes>& rows) {
    RowFilters filters(rows.front().size());
    Bytes out(rows.front().size() + 1);
    for (const Bytes& row : rows) {
        std::ranges::copy(row, filters.nextRow().begin());
        filters.filterRow(out.data());
    }
    return out;
}

class Samples {
public:
    explicit Samples(unsigned seed) : _random(seed) {}

    Bytes below(std::size_t size, unsigned limit) {
        Bytes bytes(size);
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>((_random() >> 8) % limit);
        return bytes;
    }
    /// What the arithmetic of bytes and of their signs breaks at.
    Bytes extreme(std::size_t size) {
        static constexpr std::uint8_t values[] = {0, 1, 127, 128, 129, 254, 255};
        Bytes bytes = below(size, std::size(values));
        for (std::uint8_t& byte : bytes)
            byte = values[byte];
        return bytes;
    }
    /// The row of which a filter type leaves -12 to 12: enough that no other type foretells it as well.
    Bytes foretold(int type, const Bytes& above) {
        Bytes row = below(above.size(), 25);
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] = static_cast<std::uint8_t>(row[i] - 12 + predicted(type, row, above, i));
        return row;
    }

private:
    std::minstd_rand _random;
};

TEST(RowFiltersTest, EachFilterIsTakenWhereItIsTheCheapest) {
    withEachInstructionSet([](const char* name) {
        Samples samples(1);
        for (const int type : {1, 2, 3, 4}) {
            for (const std::size_t pixels : {300, 301, 320, 1000}) {
                for (const Bytes& above : {samples.below(3 * pixels, 256), samples.below(3 * pixels, 64)}) {
                    const Bytes row = samples.foretold(type, above);
                    const Bytes out = filtered({above, row});
                    EXPECT_EQ(out[0], type) << name << ", " << pixels << " pixels";
                    EXPECT_TRUE(out == candidate(type, row, above).bytes) << name << ", " << pixels << " pixels";
                }
            }
        }
    });
}

TEST(RowFiltersTest, AnyRowBecomesTheFirstOfTheCheapestCandidates) {
    withEachInstructionSet([](const char* name) {
        Samples samples(2);
        for (std::size_t pixels = 1; pixels <= 100; ++pixels) {
            const std::size_t size = 3 * pixels;
            for (const auto& [above, row] : {std::pair{samples.below(size, 256), samples.below(size, 256)},
                                             std::pair{samples.extreme(size), samples.extreme(size)},
                                             std::pair{samples.below(size, 4), samples.below(size, 4)}})
                EXPECT_TRUE(filtered({above, row}) == firstOfTheCheapest(row, above).bytes)
                    << name << ", " << pixels << " pixels";
        }
    });
}

TEST(RowFiltersTest, EveryFilterIsRightForAllNeighbours) {
    static constexpr std::uint8_t steps[] = {0, 1, 2, 63, 64, 65, 126, 127, 128, 129, 191, 192, 253, 254, 255};
    Samples samples(3);
    for (const int type : {1, 2, 3, 4}) {
        // So long a stretch of what a filter foretells that it is taken, whatever comes behind.
        Bytes above = samples.below(300'000, 64);
        Bytes row = samples.foretold(type, above);
        for (const std::uint8_t corner : steps) {
            for (const std::uint8_t up : steps) {
                for (const std::uint8_t left : steps) {
                    above.insert(above.end(), {corner, corner, corner, up, up, up});
                    row.insert(row.end(), {left, left, left, 100, up, left});
                }
            }
        }
        const Bytes expected = candidate(type, row, above).bytes;
        withEachInstructionSet(
            [&](const char* name) { EXPECT_TRUE(filtered({above, row}) == expected) << name << ", type " << type; });
    }
}

TEST(RowFiltersTest, AboveTheFirstRowIsNothing) {
    const Bytes row{9, 8, 7, 9, 8, 7, 9, 8, 7};
    EXPECT_EQ(filtered({row}), firstOfTheCheapest(row, Bytes(9)).bytes);
}

TEST(RowFiltersTest, TiesGoToTheFirst) {
    const Bytes black(60);
    const Bytes grey(60, 10);
    EXPECT_EQ(filtered({black})[0], 1);      // none leaves anything
    EXPECT_EQ(filtered({grey, grey})[0], 2); // neither does Paeth
}

TEST(RowFiltersTest, EachRowIsComparedWithTheOneBeforeIt) {
    Samples samples(4);
    std::vector<Bytes> rows{samples.below(300, 256)};
    for (int i = 0; i < 5; ++i) {
        rows.push_back(samples.below(300, 256));
        const Bytes& above = rows[rows.size() - 2];
        EXPECT_TRUE(filtered(rows) == firstOfTheCheapest(rows.back(), above).bytes) << i;
    }
}

TEST(RowFiltersTest, ACopyGoesOnByItself) {
    Samples samples(5);
    const Bytes above = samples.below(300, 256);
    const Bytes row = samples.foretold(2, above);
    RowFilters first(300);
    Bytes out(301);
    std::ranges::copy(above, first.nextRow().begin());
    first.filterRow(out.data());
    RowFilters copy = first;
    std::ranges::copy(samples.below(300, 256), first.nextRow().begin());
    std::ranges::copy(row, copy.nextRow().begin());
    copy.filterRow(out.data());
    EXPECT_TRUE(out == candidate(2, row, above).bytes);
}

} // namespace
} // namespace Platform::Imaging::Png
