// The SyncTeX text of a run with a snapshot: whatever is typeset, it becomes that of a run without one. A
// text with anything in it is refused or keeps its lines, and its counts are right.
#include <algorithm>

#include "fuzz/fuzz.h"
#include "toolhost/source_links.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {"Input:",
                                             "Input:2:/dev/null\n",
                                             "Input:3:/dev/null\n",
                                             "!",
                                             "!0\n",
                                             "\n",
                                             ",",
                                             ":",
                                             "x3,1:2,3\n",
                                             "[1,2:3",
                                             "99999999999",
                                             std::string(1, '\0'),
                                             "Postamble:\n",
                                             std::string(30, '\1'),
                                             std::string(30, '\7')};
const int fuzz_runs = 20000;

namespace {

const std::string kinds = "[(hvkgx$r";
const std::vector<std::string> other_lines = {"]", ")", "{7", "}7", "<3", ">", "f3:1,2", "c1,2", ""};

// A text with its counts of bytes.
class Text {
  public:
    void add(const std::string &line) { text_ += line + "\n"; }
    void add_input(std::size_t number, const std::string &name) {
        add("Input:" + std::to_string(number) + ":" + name);
    }
    void add_place(char kind, std::size_t number, const std::string &rest) {
        add(kind + std::to_string(number) + "," + rest);
    }
    void count() {
        const std::size_t start = text_.size();
        add("!" + std::to_string(start - counted_));
        counted_ = start;
    }
    std::string finished() {
        add("Postamble:");
        count();
        add("Post scriptum:");
        return text_;
    }

  private:
    std::string text_ = "SyncTeX Version:1\n";
    std::size_t counted_ = 0;
};

bool counts_are_right(const std::string &text) {
    std::size_t counted = 0;
    for (std::size_t start = 0, end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        if (text[start] != '!')
            continue;
        if (text.substr(start + 1, end - start - 1) != std::to_string(start - counted))
            return false;
        counted = start;
    }
    return true;
}

// The same document without a snapshot and with it.
struct Runs {
    Text without, with;
    std::size_t files_without = 1, files_with = 1; // that were opened so far

    explicit Runs(const toolhost::SnapshotTexts &texts) {
        without.add_input(1, "/w/./doc.tex");
        with.add_input(1, "/w/./doc.tex");
        for (const std::string &name : texts.preamble_files)
            without.add_input(++files_without, name);
        for (std::size_t i = 0; i < texts.passed_files; i++)
            with.add_input(++files_with, toolhost::empty_file);
    }
    void open(const std::string &name) {
        without.add_input(++files_without, name);
        with.add_input(++files_with, name);
    }
    // A place in one of the files: 0 is none, 1 the document, then come the preamble's and the body's.
    void put(char kind, std::size_t file, const std::string &rest, bool from_dump, std::size_t of_preamble) {
        without.add_place(kind, file, rest);
        const bool dumped = (file == 1 && from_dump) || (file > 1 && file <= of_preamble + 1);
        with.add_place(kind, dumped ? file + 1 : file <= 1 ? file : file + files_with - files_without, rest);
    }
};

void try_a_document(Choices &choices) {
    toolhost::SnapshotTexts texts;
    const std::size_t of_preamble = choices.below(6);
    for (std::size_t i = 0; i < of_preamble; i++)
        texts.preamble_files.push_back("/t/" + std::string(choices.below(300), 'p') + ".sty");
    texts.passed_files = of_preamble + 1 + choices.below(5);
    Runs runs(texts);
    while (!choices.ended()) {
        switch (choices.below(4)) {
        case 0:
            runs.open("/w/./part" + std::string(choices.below(9), 'b'));
            break;
        case 1:
            runs.without.count();
            runs.with.count();
            break;
        case 2: {
            const std::string &line = choices.of(other_lines);
            runs.without.add(line);
            runs.with.add(line);
            break;
        }
        default: {
            const char kind = choices.of(kinds);
            runs.put(kind, choices.below(runs.files_without + 1), std::to_string(choices.below(99)) + ":1,2",
                     choices.below(2) == 1, of_preamble);
        }
        }
    }
    std::string whole;
    require(toolhost::complete_link_text(runs.with.finished(), texts, &whole), "a text is not completed");
    require(whole == runs.without.finished(), "a text is completed otherwise");
}

} // namespace

void fuzz_one(const std::string &input) {
    Choices choices(input);
    try_a_document(choices);
    toolhost::SnapshotTexts texts;
    texts.passed_files = 2;
    texts.preamble_files = {"/t/a.cls"};
    const std::string head = "SyncTeX Version:1\nInput:1:a\nInput:2:/dev/null\nInput:3:/dev/null\n";
    for (const std::string &text : {input, head + input, head + input + "\nPost scriptum:\n"}) {
        std::string whole;
        toolhost::linked_files(text);
        if (toolhost::complete_link_text(text, texts, &whole))
            require(counts_are_right(whole) && std::count(whole.begin(), whole.end(), '\n') + 1 ==
                                                   std::count(text.begin(), text.end(), '\n'),
                    "a text is completed wrongly");
    }
}

} // namespace quillon::test
