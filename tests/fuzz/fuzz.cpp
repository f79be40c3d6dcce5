#include "fuzz/fuzz.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "support/recording_front.h"

namespace quillon::test {

namespace {

std::string current_input;

// Words one after the other, with single bytes in between.
std::string generated(Random &random) {
    std::string input;
    for (std::size_t i = random.below(40); i > 0; i--) {
        if (random.below(4) == 0)
            input += static_cast<char>(random.below(256));
        else
            input += fuzz_words[random.below(fuzz_words.size())];
    }
    return input;
}

std::string mutated(Random &random, std::string input) {
    for (std::size_t i = 1 + random.below(4); i > 0; i--) {
        const std::size_t at = random.below(input.size() + 1);
        switch (random.below(5)) {
        case 0:
            input.insert(at, 1, static_cast<char>(random.below(256)));
            break;
        case 1:
            input.erase(at, 1 + random.below(4));
            break;
        case 2:
            input.insert(at, fuzz_words[random.below(fuzz_words.size())]);
            break;
        case 3:
            input.insert(at, input.substr(random.below(input.size() + 1), random.below(64)));
            break;
        default:
            input.insert(at, random.below(3000), static_cast<char>(random.below(256)));
        }
    }
    return input;
}

void attempt(const std::string &input) {
    current_input = input;
    RecordingFront::record().printed.clear();
    fuzz_one(input);
}

} // namespace

std::uint32_t Random::below(std::size_t limit) {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return static_cast<std::uint32_t>((state_ >> 33) % limit);
}

void require(bool good, const char *what) {
    if (good)
        return;
    std::ofstream("failed-input", std::ios::binary) << current_input;
    std::fprintf(stderr, "%s; the input is in \"failed-input\"\n", what);
    std::abort();
}

} // namespace quillon::test

int main(int count, char **words) {
    using namespace quillon::test;
    int runs = fuzz_runs, files = 0;
    std::uint64_t seed = 1;
    RecordingFront front;
    for (int i = 1; i < count; i++) {
        if (std::strcmp(words[i], "--runs") == 0 && i + 1 < count)
            runs = std::atoi(words[++i]);
        else if (std::strcmp(words[i], "--seed") == 0 && i + 1 < count)
            seed = std::strtoull(words[++i], nullptr, 10);
        else {
            std::ifstream in(words[i], std::ios::binary);
            attempt({std::istreambuf_iterator<char>(in), {}});
            files++;
        }
    }
    if (files > 0)
        return 0;
    Random random(seed);
    std::string input;
    for (int i = 0; i < runs; i++) {
        // Every third input is a new one, the others grow out of it.
        input = i % 3 == 0 ? generated(random) : mutated(random, input);
        attempt(input);
    }
    std::printf("%d inputs\n", runs);
    return 0;
}
