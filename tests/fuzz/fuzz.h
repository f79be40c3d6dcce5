// What the fuzzers share: a source of inputs, and the check that an input must pass.
//
//   fuzz_X [--runs N] [--seed N] [FILE...]     FILEs are taken as inputs as they are
//
// The same seed gives the same inputs.
#ifndef QUILLON_TESTS_FUZZ_FUZZ_H
#define QUILLON_TESTS_FUZZ_FUZZ_H

#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillon::test {

class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed * 2 + 1) {}
    std::uint32_t below(std::size_t limit);

  private:
    std::uint64_t state_;
};

// Reads an input as a row of decisions, for a fuzzer that builds something out of them. Behind the end of the
// input every decision is 0.
class Choices {
  public:
    explicit Choices(std::string bytes) : bytes_(std::move(bytes)) {}
    bool ended() const { return at_ == bytes_.size(); }
    // A number less than LIMIT.
    std::size_t below(std::size_t limit);
    // At most LIMIT bytes of the input as they are.
    std::string bytes(std::size_t limit);
    // One of LIST.
    template <typename List> const auto &of(const List &list) { return list[below(std::size(list))]; }

  private:
    std::string bytes_;
    std::size_t at_ = 0;
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
