// The problems of a run: however the output is cut into pieces the list is the same, every record can be read
// back and keeps to the limits, and a problem that is put behind any output is found.
#include "fuzz/fuzz.h"
#include "support/temporary_home.h"
#include "toolhost/companion_reader.h"
#include "toolhost/run_parser.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {
    "\n",
    "\n\n",
    "\r\n",
    "(",
    ")",
    "(./main.tex",
    "[1]",
    "\nLaTeX Warning: Reference `a' on page 1 undefined on input line 12.\n\n",
    "\nLaTeX Warning: Citation `(' undefined",
    " on input line ",
    " on input line 99999999999.\n",
    "\nPackage foo Warning: One (two\n(foo)                three\n",
    "\n(foo)                more",
    "\n               more",
    "\nClass bar Error: x",
    "\n! Package foo Error: Bad\n(foo)                thing.\n",
    "\n! Undefined control sequence.\nl.12 \\x\n   y\n",
    "\n! Emergency stop.\n<*> main.tex\n   \n",
    "\nEnter file name: \n! Emergency stop.\nl.3 \n",
    "\n./main.tex:7: LaTeX Error: Wrong.\n\nl.7 x\n    y\n",
    "\nOverfull \\hbox (3pt too wide) in paragraph at lines 3--7\ntext (\n",
    "\nUnderfull \\vbox (badness 10000) has occurred while \\output is active [2]\n",
    "\npdfTeX warning (ext4): destination\n\n<argument> x\n  y\nl.4 z\n  u\n",
    "\nwarning  (pdf backend): unreferenced destination with name 'foo'\n",
    "\nMissing character: There is no ",
    "\n(\\end occurred when \\iftrue on line 2 was incomplete)",
    "\nRunaway argument?\n{(a\n",
    "\nLaTeX Warning: There were undefined references.\n\n",
    "\nWarning--empty year in one\n",
    "\n--line 5 of file x.bib\n",
    "\nI was expecting a `,'---line 5 of file x.bib\n",
    "\nINFO - Reading 'x.bcf'\n",
    "\nINFO - Found BibTeX data source 'x.bib'\n",
    "\nWARN - BibTeX subsystem: /tmp/c.utf8, line 3, warning: junk\n",
    "\nERROR - BibTeX subsystem: /tmp/c.utf8, line 99999999999, syntax error\n",
    "\nWARN - I didn't find a database entry for 'a' (section 0)\n",
    "\nTranscript written in m.ilg.\n(1 rejected)\n",
    std::string(600, 'a'),
    std::string(1, '\0'),
    std::string("\x1b\x7f"),
    "\xc3\xa9"};
const int fuzz_runs = 2500;

namespace {

const TemporaryHome &home() {
    static const TemporaryHome made;
    static const bool filled = [] {
        made.file("work/main.tex");
        made.file("work/m.ilg");
        return true;
    }();
    static_cast<void>(filled);
    return made;
}

template <class Reader>
std::string records_of(Reader &&reader, const std::string &output, std::size_t piece) {
    for (std::size_t at = 0; at < output.size(); at += piece)
        reader.feed(std::string_view(output).substr(at, piece));
    reader.finish();
    const toolhost::ProblemList &problems = reader.problems();
    std::string text = problems.records();
    for (const auto kind : {toolhost::ProblemKind::error, toolhost::ProblemKind::warning,
                            toolhost::ProblemKind::reference, toolhost::ProblemKind::box})
        text += std::to_string(problems.count(kind)) + " ";
    return text;
}

// Reads the records back, and compares them with the counts.
void check_records(const toolhost::ProblemList &problems) {
    const std::string &records = problems.records();
    long counts[toolhost::problem_kinds] = {};
    for (std::size_t at = 0; at < records.size();) {
        const std::size_t kind = std::string("ewrb").find(records[at]);
        require(kind != std::string::npos, "a record has no kind");
        counts[kind]++;
        const std::size_t file = records.find('\0', at), text = records.find('\0', file + 1),
                          end = records.find('\0', text + 1);
        require(end != std::string::npos, "a record is cut");
        require(file > at + 1 && std::stol(records.substr(at + 1, file - at - 1)) >= 0, "a line is none");
        require(at > 0 || records[file + 1] == '/', "the first record has no file");
        require(end - text - 1 <= toolhost::ProblemList::longest_text, "a text is too long");
        for (std::size_t i = text + 1; i < end; i++)
            require(static_cast<unsigned char>(records[i]) >= ' ' && records[i] != 127,
                    "a text has a control byte");
        at = end + 1;
    }
    for (int kind = 0; kind < toolhost::problem_kinds; kind++)
        require(counts[kind] == problems.count(static_cast<toolhost::ProblemKind>(kind)),
                "the counts are not those of the records");
}

} // namespace

void fuzz_one(const std::string &input) {
    const std::string folder = home().path("work");
    const auto parser = [&] { return toolhost::RunParser(folder, folder + "/main.tex"); };
    const auto reader = [&] {
        // The program names its document first.
        toolhost::CompanionReader made(folder);
        made.feed("The top-level auxiliary file: b.aux\n");
        return made;
    };
    const std::string whole = records_of(parser(), input, input.size() + 1);
    const std::string others = records_of(reader(), input, input.size() + 1);
    for (const std::size_t piece : {std::size_t{1}, std::size_t{13}}) {
        require(records_of(parser(), input, piece) == whole, "the problems depend on how the output is cut");
        require(records_of(reader(), input, piece) == others, "messages depend on how the output is cut");
    }
    toolhost::RunParser last = parser();
    last.feed(input);
    last.feed("\n\n\n\nPackage zzz Warning: the last one on input line 77.\n\n");
    last.finish();
    check_records(last.problems());
    toolhost::CompanionReader beside = reader();
    beside.feed(input);
    beside.finish();
    toolhost::ProblemList merged = last.problems();
    merged.add_those_of(beside.problems());
    check_records(merged);
    for (const auto kind :
         {toolhost::ProblemKind::error, toolhost::ProblemKind::warning, toolhost::ProblemKind::box})
        require(merged.count(kind) == last.problems().count(kind) + beside.problems().count(kind),
                "a problem is lost between two lists");
    const std::string expected = std::string("the last one on input line 77.") + '\0';
    // Where an error waits for its line, what follows belongs to it.
    if (input.find("! ") == std::string::npos && input.find(": ") == std::string::npos)
        require(last.problems().records().ends_with(expected), "the last problem is not found");
}

} // namespace quillon::test
