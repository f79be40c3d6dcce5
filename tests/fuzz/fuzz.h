// What the fuzzers share: a source of inputs, and the check that an input must pass.
//
//   fuzz_X [--runs N] [--seed N] [FILE...]     FILEs are taken as inputs as they are
#ifndef QUILLON_TESTS_FUZZ_FUZZ_H
#define QUILLON_TESTS_FUZZ_FUZZ_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quillon::test {

class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed * 2 + 1) {}
    std::uint32_t below(std::size_t limit);

  private:
    std::uint64_t state_;
};

// Ends the program unless GOOD, with the input that was being tried in the file "failed-input".
void require(bool good, const char *what);

// Defined by each fuzzer: what inputs are made from, how often it is run as a test, and the trial of one
// input.
extern const std::vector<std::string> fuzz_words;
extern const int fuzz_runs;
void fuzz_one(const std::string &input);

} // namespace quillon::test

#endif
