// Scripts: each line is one step, which is taken when the shell waits for an event.
#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <string>
#include <vector>

#include "common/host_files.h"
#include "front/dialogs.h"
#include "headless/headless.h"
#include "headless/script_events.h"
#include "headless/script_lines.h"
#include "headless/script_print.h"
#include "headless/script_steps.h"
#include "headless/script_words.h"
#include "toolbox/events.h"
#include "toolbox/menus.h"

namespace quillon {

struct DialogAnswer {
    std::string name;
    std::vector<DialogStep> steps;
};

static std::deque<std::string> choices; // an empty path cancels the chooser
static std::deque<DialogAnswer> answers;

int OpenScript(const char *path) {
    if (!OpenScriptLines(path))
        return 0;
    choices.clear();
    answers.clear();
    std::string word, rest;
    while (PeekStep(&word, &rest) && word == "background") {
        DropLine();
        StartInBackground();
    }
    return 1;
}

int NextChoice(BoundedBuffer &path, int *cancelled) {
    if (choices.empty())
        return 0;
    *cancelled = choices.front().empty() || !path.copy(choices.front());
    choices.pop_front();
    return 1;
}

int NextDialogAnswer(const char *name, std::vector<DialogStep> *steps) {
    for (auto answer = answers.begin(); answer != answers.end(); ++answer)
        if (answer->name == name) {
            *steps = answer->steps;
            answers.erase(answer);
            return 1;
        }
    return 0;
}

// Takes the number at the head of TEXT off it. Returns -1 when there is none, or one that is below 0 or above
// 32767.
static int take_number(std::string *text) {
    char *end = nullptr;
    const long number = std::strtol(text->c_str(), &end, 10);
    const bool some = end != text->c_str();
    text->erase(0, static_cast<std::size_t>(end - text->c_str()));
    return some && number >= 0 && number <= 32767 ? static_cast<int>(number) : -1;
}

// Adds the step in LINE to an answer. False when it is none.
static bool add_dialog_step(DialogAnswer &answer, std::string line) {
    const std::string word = TakeWord(&line);
    const int control = take_number(&line);
    if (control < 1 || control >= first_list_row + most_list_rows)
        return false;
    const std::string rest = line;
    DialogStep step = {DialogStep::press, static_cast<std::int16_t>(control), "", 0};
    if (word == "set") {
        step.kind = DialogStep::set;
        // One blank parts the number from the text, which is the rest of the line as it stands.
        step.text = rest.empty() ? rest : rest.substr(1);
    } else if (word == "check") {
        step.kind = DialogStep::check;
        step.value = take_number(&line);
        if (step.value < 0)
            return false;
    } else if (word != "press") {
        return false;
    }
    answer.steps.push_back(step);
    return true;
}

// Queues the answer of "dialog NAME" and reads the indented lines that follow it.
static void queue_dialog(const std::string &name) {
    DialogAnswer answer;
    answer.name = name;
    std::string line;
    if (!is_dialog(name.c_str()))
        std::fprintf(stderr, "quillon: script: there is no window \"%s\"\n", name.c_str());
    while (PeekLine(&line) && !line.empty() && (line[0] == ' ' || line[0] == '\t')) {
        if (!add_dialog_step(answer, line))
            std::fprintf(stderr, "quillon: script: a window takes set, check and press:%s\n", line.c_str());
        DropLine();
    }
    answers.push_back(answer);
}

static void type_text(const std::string &text) {
    for (const char byte : text)
        PostEvent(keyDown, static_cast<unsigned char>(byte), 0, {0, 0});
    PostEvent(keyDown, 13, 0, {0, 0});
}

static void post_key(const std::string &key) {
    if (!key.empty())
        PostEvent(keyDown, static_cast<unsigned char>(key[0]), cmdKey, {0, 0});
}

static void choose_menu(const std::string &rest) {
    std::string numbers = rest;
    const int menu = take_number(&numbers), item = take_number(&numbers);
    if (menu >= 0 && item >= 0) {
        // Whoever chooses has looked into the menu.
        if (const MenuHandle handle = GetMenuHandle(static_cast<std::int16_t>(menu)))
            FillMenu(handle);
        PostEvent(mouseDown, static_cast<std::uint32_t>(menu << 16 | item), 0, {0, 0});
    } else {
        std::fprintf(stderr, "quillon: script: menu takes an id and an item: %s\n", rest.c_str());
    }
}

// True when there is a file at PATH that nobody writes and whose length is the same as it was a moment
// before. Asked again for another path it begins anew.
static bool is_settled(const std::string &path) {
    constexpr std::uint32_t moment = 12; // ticks
    static std::string asked;
    static off_t length;
    static std::uint32_t seen;
    struct stat info;
    if (stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
        asked.clear();
        return false;
    }
    if (asked != path || info.st_size != length) {
        asked = path;
        length = info.st_size;
        seen = TickCount();
        return false;
    }
    if (TickCount() - seen < moment || common::file_is_written(path))
        return false;
    asked.clear();
    return true;
}

// True for a step that is to be taken later.
static bool must_wait(const std::string &word, const std::string &rest) {
    return word == "wait" && rest.starts_with("FILE ") && !is_settled(rest.substr(5));
}

int TakeStep(const std::string &word, const std::string &rest) {
    if (word == "menu") {
        choose_menu(rest);
    } else if (word == "key") {
        post_key(rest);
    } else if (word == "type") {
        type_text(rest);
    } else if (word == "choose") {
        choices.push_back(rest);
        return 0;
    } else if (word == "dialog") {
        queue_dialog(rest);
        return 0;
    } else if (word == "event") {
        PostScriptEvent(rest);
    } else if (word == "print") {
        PrintForScript(rest);
        return 0;
    } else if (word == "background" || word == "foreground") {
        SetHeadlessFront(word == "foreground");
    } else if (word == "quit") {
        RequestLeave();
    } else if (word != "wait" || (rest != "RUN" && !rest.starts_with("FILE "))) {
        std::fprintf(stderr, "quillon: script: unknown step: %s %s\n", word.c_str(), rest.c_str());
    }
    return 1;
}

int TakeScriptStep() {
    if (!ScriptIsOpen() || LeaveRequested())
        return 0;
    std::string word, rest;
    while (PeekStep(&word, &rest)) {
        if (must_wait(word, rest))
            return 0;
        DropLine();
        std::fflush(stdout);
        if (TakeStep(word, rest))
            return 1;
    }
    if (!ScriptEnded())
        return 0;
    RequestLeave();
    return 1;
}

void TakeCancelStep() {
    std::string word, rest;
    if (!ScriptIsOpen() || !PeekStep(&word, &rest) || word != "key" || rest != ".")
        return;
    DropLine();
    post_key(rest);
}

void TakeForegroundStep() {
    std::string word, rest;
    if (!ScriptIsOpen())
        return;
    if (PeekStep(&word, &rest)) {
        if (word == "foreground") {
            DropLine();
            SetHeadlessFront(1);
        }
    } else if (ScriptEnded()) {
        RequestLeave();
    }
}

} // namespace quillon
