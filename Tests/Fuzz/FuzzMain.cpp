// Runs a fuzz target without a fuzzer: on its seeds and on as many inputs made from them, the same ones each time.
// Usage: PROGRAM FILE [COUNT]    FILE holds each input while it is tried, and so at the end the one that failed
//        PROGRAM --replay FILE   tries that one
//        PROGRAM --seeds FOLDER  writes the seeds into a folder, for a fuzzer to begin with

#include "Tests/Fuzz/FuzzTarget.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <string_view>

namespace {

class InputMaker {
public:
    explicit InputMaker(std::vector<std::string> seeds) : _seeds(std::move(seeds)) {}

    /// All inputs are small, but each hundredth.
    std::string next() {
        if (++_number % 100 == 0)
            return longInput(_number / 100);
        std::string input = seed();
        for (std::size_t changes = 1 + below(6); changes > 0; --changes)
            change(input);
        return input;
    }

private:
    std::size_t below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(_random); }

    const std::string& seed() { return _seeds[below(_seeds.size())]; }

    std::string_view pieceOf(const std::string& text) {
        const std::size_t begin = below(text.size() + 1);
        return std::string_view(text).substr(begin, below(20));
    }

    /// A seed that has been blown up in one place: with a piece of any seed, or with what parsers know to be nested,
    /// skipped, decoded or continued, over and over. That is slow where a parser looks at all of it again and again.
    std::string longInput(std::size_t number) {
        static constexpr std::string_view tokens[] = {"[",  "{\"a\":", "/**/", "//\n", "\"", "\\",    "%41",
                                                      "%",  ",",       " ",    "0",    "1,", "\r\n",  "a:b\r\n",
                                                      "\n", ";\n",     "\\\n", "[]",   "-",  "?a=b&", "\xC3"};
        std::string piece(number % 4 == 0 ? pieceOf(seed()) : tokens[number % std::size(tokens)]);
        if (number % 5 == 0)
            piece += tokens[below(std::size(tokens))];
        std::string input = seed();
        const std::size_t at = below(input.size() + 1);
        std::string repeated;
        while (!piece.empty() && repeated.size() < largest)
            repeated += piece;
        return input.insert(at, repeated);
    }

    void change(std::string& input) {
        const std::size_t at = below(input.size() + 1);
        switch (below(6)) {
        case 0:
            input.insert(at, 1 + below(4), static_cast<char>(below(256)));
            break;
        case 1:
            input.erase(at, below(20));
            break;
        case 2:
            input.insert(at, std::string(pieceOf(input)));
            break;
        case 3:
            input.insert(at, std::string(pieceOf(seed())));
            break;
        case 4:
            input.resize(at);
            break;
        default:
            if (at < input.size())
                input[at] = static_cast<char>(input[at] ^ (1 << below(8)));
        }
    }

    static constexpr std::size_t largest = 256 << 10; // bytes

    const std::vector<std::string> _seeds;
    std::size_t _number = 0;
    std::mt19937 _random{20261121};
};

void tryInput(const std::string& input) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

void keep(const std::string& input, const std::string& file) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << input;
}

int replay(const char* file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        std::fprintf(stderr, "%s cannot be read\n", file);
        return 2;
    }
    tryInput({std::istreambuf_iterator<char>(stream), {}});
    return 0;
}

int writeSeeds(const std::string& folder) {
    int number = 0;
    for (const std::string& input : fuzzSeeds())
        keep(input, folder + "/seed-" + std::to_string(++number));
    return 0;
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc < 2) {
        std::fprintf(stderr, "Usage: %s FILE [COUNT] | --replay FILE | --seeds FOLDER\n", argv[0]);
        return 2;
    }
    if (argc > 2 && std::string_view(argv[1]) == "--replay")
        return replay(argv[2]);
    if (argc > 2 && std::string_view(argv[1]) == "--seeds")
        return writeSeeds(argv[2]);
    const int count = argc > 2 ? std::atoi(argv[2]) : 5000;
    std::vector<std::string> inputs = fuzzSeeds();
    InputMaker maker(inputs);
    std::generate_n(std::back_inserter(inputs), count, [&] { return maker.next(); });
    for (const std::string& input : inputs) {
        keep(input, argv[1]);
        tryInput(input);
    }
    std::printf("%zu inputs; the slowest, of %zu bytes, took %.1f %% of its time\n", inputs.size(), slowestInput().size,
                100 * slowestInput().share);
    return 0;
}
