// Scripts: each line is one step, which is taken when the shell waits for an event.
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "common/host_files.h"
#include "front/dialogs.h"
#include "headless/headless.h"
#include "headless/script_events.h"
#include "headless/script_print.h"
#include "headless/script_words.h"
#include "toolbox/events.h"
#include "toolbox/menus.h"

namespace quillon {

struct DialogAnswer {
    std::string name;
    std::vector<DialogStep> steps;
};

static int descriptor = -1;
static bool can_wait = false; // true for a pipe or a terminal, which may hold nothing yet
static bool at_end = true;
static std::string unread;
static std::deque<std::string> choices; // an empty path cancels the chooser
static std::deque<DialogAnswer> answers;

int ScriptDescriptor() {
    return can_wait && !at_end ? descriptor : -1;
}

// Reads the next part of the script. False when nothing can be read now.
static bool read_more() {
    if (at_end)
        return false;
    pollfd source = {descriptor, POLLIN, 0};
    if (can_wait && poll(&source, 1, 0) <= 0)
        return false;
    char block[4096];
    const ssize_t size = read(descriptor, block, sizeof block);
    if (size <= 0)
        at_end = true;
    else
        unread.append(block, static_cast<std::size_t>(size));
    return true;
}

// Sets LINE to the next line, without its line end, and leaves it there. False when there is none now.
static bool peek_line(std::string *line) {
    std::size_t end = unread.find('\n');
    while (end == std::string::npos && read_more())
        end = unread.find('\n');
    if (end == std::string::npos && (!at_end || unread.empty()))
        return false;
    *line = unread.substr(0, end);
    return true;
}

static void drop_line() {
    const std::size_t end = unread.find('\n');
    unread.erase(0, end == std::string::npos ? end : end + 1);
}

// Sets WORD and REST to the next step, past blank lines and comments, and leaves it. False as peek_line.
static bool peek_step(std::string *word, std::string *rest) {
    while (peek_line(rest)) {
        *word = TakeWord(rest);
        if (!word->empty() && (*word)[0] != '#')
            return true;
        drop_line();
    }
    return false;
}

int OpenScript(const char *path) {
    descriptor = std::strcmp(path, "-") == 0 ? STDIN_FILENO : open(path, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return 0;
    can_wait = lseek(descriptor, 0, SEEK_CUR) < 0;
    at_end = false;
    std::string word, rest;
    while (peek_step(&word, &rest) && word == "background") {
        drop_line();
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

// Adds the step in LINE to an answer. False when it is none.
static bool add_dialog_step(DialogAnswer &answer, std::string line) {
    const std::string word = TakeWord(&line);
    int control = 0, length = 0, value = 0;
    if (std::sscanf(line.c_str(), "%d%n", &control, &length) != 1 || control < 1 || control > 999)
        return false;
    const std::string rest = line.substr(static_cast<std::size_t>(length));
    DialogStep step = {DialogStep::press, static_cast<std::int16_t>(control), "", 0};
    if (word == "set") {
        step.kind = DialogStep::set;
        // One blank parts the number from the text, which is the rest of the line as it stands.
        step.text = rest.empty() ? rest : rest.substr(1);
    } else if (word == "check" && std::sscanf(rest.c_str(), "%d", &value) == 1) {
        step.kind = DialogStep::check;
        step.value = value;
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
    while (peek_line(&line) && !line.empty() && (line[0] == ' ' || line[0] == '\t')) {
        if (!add_dialog_step(answer, line))
            std::fprintf(stderr, "quillon: script: a window takes set, check and press:%s\n", line.c_str());
        drop_line();
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
    unsigned menu = 0, item = 0;
    if (std::sscanf(rest.c_str(), "%u %u", &menu, &item) == 2) {
        // Whoever chooses has looked into the menu.
        if (const MenuHandle handle = GetMenuHandle(static_cast<std::int16_t>(menu)))
            FillMenu(handle);
        PostEvent(mouseDown, menu << 16 | (item & 0xFFFF), 0, {0, 0});
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

enum Taken { taken_more, taken_work };

// Does one step. After taken_more the next can be taken at once; after taken_work the shell works first.
static Taken take_step(const std::string &word, const std::string &rest) {
    if (word == "menu") {
        choose_menu(rest);
    } else if (word == "key") {
        post_key(rest);
    } else if (word == "type") {
        type_text(rest);
    } else if (word == "choose") {
        choices.push_back(rest);
        return taken_more;
    } else if (word == "dialog") {
        queue_dialog(rest);
        return taken_more;
    } else if (word == "event") {
        PostScriptEvent(rest);
    } else if (word == "print") {
        PrintForScript(rest);
        return taken_more;
    } else if (word == "background" || word == "foreground") {
        SetHeadlessFront(word == "foreground");
    } else if (word == "quit") {
        RequestLeave();
    } else if (word != "wait" || (rest != "RUN" && !rest.starts_with("FILE "))) {
        std::fprintf(stderr, "quillon: script: unknown step: %s %s\n", word.c_str(), rest.c_str());
    }
    return taken_work;
}

int TakeScriptStep() {
    if (descriptor < 0 || LeaveRequested())
        return 0;
    std::string word, rest;
    while (peek_step(&word, &rest)) {
        if (must_wait(word, rest))
            return 0;
        drop_line();
        std::fflush(stdout);
        if (take_step(word, rest) == taken_work)
            return 1;
    }
    if (!at_end)
        return 0;
    RequestLeave();
    return 1;
}

void TakeCancelStep() {
    std::string word, rest;
    if (descriptor < 0 || !peek_step(&word, &rest) || word != "key" || rest != ".")
        return;
    drop_line();
    post_key(rest);
}

void TakeForegroundStep() {
    std::string word, rest;
    if (descriptor < 0)
        return;
    if (peek_step(&word, &rest)) {
        if (word == "foreground") {
            drop_line();
            SetHeadlessFront(1);
        }
    } else if (at_end) {
        RequestLeave();
    }
}

} // namespace quillon
