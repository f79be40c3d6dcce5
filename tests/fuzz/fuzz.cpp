#include "fuzz/fuzz.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sys/wait.h>
#include <unistd.h>

#include "support/recording_front.h"

namespace quillon::test {

namespace {

std::string current_input;

// Words one after the other, with single bytes in between.
std::string generated(Random &random) {
    std::string input;
    for (std::size_t i = random.below(20); i > 0; i--) {
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
            input.insert(at, random.below(random.below(8) == 0 ? 3000 : 40),
                         static_cast<char>(random.below(256)));
        }
    }
    return input;
}

// How many inputs one process tries: what a parser keeps for the life of a process must not add up.
constexpr int inputs_of_a_process = 20000;

void attempt(const std::string &input) {
    current_input = input;
    RecordingFront::record().printed.clear();
    fuzz_one(input);
}

void try_inputs(int count, std::uint64_t seed) {
    const RecordingFront front;
    Random random(seed);
    std::string input;
    for (int i = 0; i < count; i++) {
        // Every third input is a new one, the others grow out of it.
        input = i % 3 == 0 ? generated(random) : mutated(random, input);
        attempt(input);
    }
}

// Tries COUNT inputs in a process of their own. False when it failed.
bool process_tries(int count, std::uint64_t seed) {
    int status = 0;
    const pid_t child = ::fork();
    if (child == 0) {
        try_inputs(count, seed);
        std::exit(0);
    }
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

} // namespace

std::uint32_t Random::below(std::size_t limit) {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return static_cast<std::uint32_t>((state_ >> 33) % limit);
}

std::size_t Choices::below(std::size_t limit) {
    std::size_t number = 0;
    for (std::size_t range = 1; range < limit && at_ < bytes_.size(); range *= 256)
        number = number * 256 + static_cast<unsigned char>(bytes_[at_++]);
    return number % limit;
}

std::string Choices::bytes(std::size_t limit) {
    std::size_t count = below(limit + 1);
    count = std::min(count, bytes_.size() - at_);
    at_ += count;
    return bytes_.substr(at_ - count, count);
}

void require(bool good, const char *what) {
    if (good)
        return;
    std::ofstream("failed-input", std::ios::binary) << current_input;
    // A fuzzer may have put something in the place of the stream.
    ::dprintf(STDERR_FILENO, "%s; the input is in \"failed-input\"\n", what);
    std::abort();
}

} // namespace quillon::test

int main(int count, char **words) {
    using namespace quillon::test;
    int runs = fuzz_runs, files = 0;
    std::uint64_t seed = 1;
    for (int i = 1; i < count; i++) {
        if (std::strcmp(words[i], "--runs") == 0 && i + 1 < count)
            runs = std::atoi(words[++i]);
        else if (std::strcmp(words[i], "--seed") == 0 && i + 1 < count)
            seed = std::strtoull(words[++i], nullptr, 10);
        else {
            const RecordingFront front;
            std::ifstream in(words[i], std::ios::binary);
            attempt({std::istreambuf_iterator<char>(in), {}});
            files++;
        }
    }
    if (files > 0)
        return 0;
    for (int done = 0; done < runs; done += inputs_of_a_process, seed += 0x9E3779B97F4A7C15u)
        if (!process_tries(std::min(runs - done, inputs_of_a_process), seed))
            return 1;
    std::printf("%d inputs\n", runs);
    return 0;
}
