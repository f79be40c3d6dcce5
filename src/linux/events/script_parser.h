// Reads the text of a script into the statements that it says; toolbox/scripts.h describes the form.
#ifndef QUILLON_LINUX_EVENTS_SCRIPT_PARSER_H
#define QUILLON_LINUX_EVENTS_SCRIPT_PARSER_H

#include <string>
#include <string_view>
#include <vector>

#include "toolbox/types.h"

namespace quillon {

struct ScriptStatement {
    enum Kind { activate, select_line } kind = activate;
    std::int32_t line = 0; // for select_line
};

// What a script says to one application, which is named by its HFS path.
struct ScriptBlock {
    std::string application;
    std::vector<ScriptStatement> statements;
};

// Why a script failed; the number is 0 when it did not. The message is a sentence for a person.
struct ScriptFault {
    OSStatus number = noErr;
    std::string message;
};

// Appends the blocks of TEXT, which may hold any bytes. Returns false, with FAULT set and BLOCKS empty, when
// TEXT is not of the form.
bool parse_script(std::string_view text, std::vector<ScriptBlock> &blocks, ScriptFault &fault);
// Returns the first LIMIT bytes of TEXT at most, followed by three dots where something was cut off. No UTF-8
// character is cut in two.
std::string shortened_text(std::string_view text, std::size_t limit);

} // namespace quillon

#endif
