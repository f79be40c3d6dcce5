// Scripts: a text is refused as a whole with a reason, or it is carried out; a path comes out as it was
// quoted.
#include "fuzz/fuzz.h"
#include "linux/events/script_parser.h"
#include "tools/scripts.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {"tell",
                                             " application ",
                                             "tell application \"",
                                             "\"\r",
                                             "\"",
                                             "\\",
                                             "activate\r",
                                             "select display_line 12 of text window 1\n",
                                             "SELECT\tdisplay_line ",
                                             "-2147483648",
                                             " of text window 1",
                                             "\rend tell\r",
                                             "end",
                                             "\r",
                                             " ",
                                             "\t",
                                             std::string(1, '\0'),
                                             "\xC3\xA9",
                                             "none:apps:x.app",
                                             "tell application \"none:x\"\ractivate\rend tell\r"};
const int fuzz_runs = 8000;

namespace {

std::string quoted(const std::string &path) {
    std::string result = "\"";
    for (const char c : path)
        result += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    return result + "\"";
}

// The blocks as a text in the plainest form.
std::string written(const std::vector<ScriptBlock> &blocks) {
    std::string text;
    for (const ScriptBlock &block : blocks) {
        text += "tell application " + quoted(block.application) + "\r";
        for (const ScriptStatement &statement : block.statements)
            text += statement.kind == ScriptStatement::activate
                        ? std::string("activate\r")
                        : "select display_line " + std::to_string(statement.line) + " of text window 1\r";
        text += "end tell\r";
    }
    return text;
}

void check(const std::string &text) {
    std::vector<ScriptBlock> blocks, again;
    ScriptFault fault;
    if (!parse_script(text, blocks, fault)) {
        require(blocks.empty(), "a refused script leaves statements");
        require(fault.number == OSASyntaxError || fault.number == OSASyntaxTypeError, "no reason is given");
        require(!fault.message.empty() && fault.message.size() < 256, "the message has another length");
        return;
    }
    require(!blocks.empty() && fault.number == noErr, "a script is taken that says nothing");
    const std::string plain = written(blocks);
    require(parse_script(plain, again, fault), "what was taken is refused in its plain form");
    require(written(again) == plain, "the plain form says something else");
}

} // namespace

void fuzz_one(const std::string &input) {
    check(input);
    // A path of any bytes but zero comes through its quotes.
    std::vector<ScriptBlock> blocks;
    ScriptFault fault;
    const bool taken = parse_script(written({{input, {{ScriptStatement::select_line, 7}}}}), blocks, fault);
    require(taken == (input.find('\0') == std::string::npos), "a path is taken or refused wrongly");
    require(!taken || (blocks.size() == 1 && blocks[0].application == input &&
                       blocks[0].statements.size() == 1 && blocks[0].statements[0].line == 7),
            "a path is changed");
    // No such application is there, so whatever the script says, the component refuses it.
    const OSStatus status = CScript(input.c_str());
    require(status == noErr || status == errOSAScriptError, "the component gives another error");
}

} // namespace quillon::test
