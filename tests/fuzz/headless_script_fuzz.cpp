// Scripts of the headless shell: the steps are those of a plain reading, each posts what it says or is
// refused with one message, words come out of their quotes as they were, answers wait for their window.
#include <cstdio>
#include <map>
#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/fuzz.h"
#include "headless/headless.h"
#include "headless/script_lines.h"
#include "headless/script_steps.h"
#include "headless/script_words.h"
#include "linux/events/event_sources.h"
#include "support/temporary_home.h"
#include "toolbox/codes.h"
#include "toolbox/dialogs.h"
#include "toolbox/received_events.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {"\n",
                                             "\r\n",
                                             " ",
                                             "\t",
                                             "\"",
                                             "'",
                                             "\\",
                                             "\\n",
                                             "#",
                                             "\n# note\n",
                                             "\nmenu 129 2\n",
                                             "\nmenu ",
                                             "\nkey .\n",
                                             "\ntype text",
                                             "\nchoose /tmp/a b\n",
                                             "\nchoose\n",
                                             "\ndialog dvips\n set 4 text\n check 5 1\n press 1\n",
                                             "\ndialog none\n",
                                             "\n set 123 ",
                                             "\n press 10099\n press 10100\n",
                                             "\n\tpress 2\n",
                                             "\n check 3 ",
                                             "12",
                                             "99999999999999999999",
                                             "-1",
                                             "\nevent QUIL test ---- TEXT a \"b c\"\n",
                                             "\nevent QUIL exec",
                                             " ---- TEXT ",
                                             " dest fss /usr/bin",
                                             " long long 7",
                                             " list list /usr/bin /none/x",
                                             "\nprint state curr_dir\n",
                                             "\nprint menu 129\n",
                                             "\nprint setting KEY\n",
                                             "\nprint nothing\n",
                                             "\nbackground\n",
                                             "\nforeground\n",
                                             "\nwait RUN\n",
                                             "\nwait FILE /x\n",
                                             "\nquit\n",
                                             std::string(1, '\0'),
                                             "\xC3\xA9"};
const int fuzz_runs = 2500;

namespace {

using Words = std::vector<std::string>;

// A stream that keeps what is written to it, in place of the standard output or error.
class Kept {
  public:
    explicit Kept(std::FILE *&stream)
        : stream_(stream), before_(stream), own_(::open_memstream(&bytes_, &size_)) {
        stream_ = own_;
    }
    ~Kept() {
        stream_ = before_;
        std::fclose(own_);
        std::free(bytes_);
    }
    Kept(const Kept &) = delete;
    Kept &operator=(const Kept &) = delete;
    // What was written since the last call.
    std::string take() {
        std::fflush(own_);
        const std::string text(bytes_, size_);
        std::rewind(own_);
        return text;
    }

  private:
    std::FILE *&stream_, *before_;
    char *bytes_ = nullptr;
    std::size_t size_ = 0;
    std::FILE *own_;
};

int any_event(const EventRecord &, const void *) {
    return 1;
}

using Posted = std::vector<std::pair<std::uint32_t, std::uint32_t>>; // kind and message

// Takes all events out of the queue, and handles those that have parameters.
Posted take_events() {
    Posted posted;
    for (EventRecord event; TakeFromQueue(any_event, nullptr, &event);) {
        posted.emplace_back(event.what, event.message);
        if (event.what == kHighLevelEvent)
            AEProcessAppleEvent(&event);
    }
    return posted;
}

std::string bare(const std::string &text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// Cuts a number of at most 32767 off TEXT; -1 when there is none.
int cut_number(std::string &text) {
    std::size_t at = 0, digits = 0;
    text = text.substr(0, text.find('\0'));
    while (at < text.size() && std::isspace(static_cast<unsigned char>(text[at])))
        at++;
    const bool minus = at < text.size() && text[at] == '-';
    at += at < text.size() && (text[at] == '-' || text[at] == '+') ? 1 : 0;
    double number = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; at++, digits++)
        number = number * 10 + (text[at] - '0');
    if (digits > 0)
        text.erase(0, at);
    return digits == 0 || number > 32767 || (minus && number > 0) ? -1 : static_cast<int>(number);
}

// The answer that an indented line is; the control 0 for none.
DialogStep expected_answer(const std::string &line) {
    const std::string text = bare(line);
    const std::string word = text.substr(0, text.find_first_of(" \t\r"));
    std::string rest = bare(text.substr(word.size()));
    const std::string whole = rest;
    const int control = cut_number(rest);
    DialogStep step = {DialogStep::press, static_cast<std::int16_t>(control), "", 0};
    if (control < 1 || control >= first_list_row + most_list_rows)
        step.control = 0;
    if (word == "set") {
        // The text may hold zero bytes, the number not.
        const std::size_t number = std::min(whole.find('\0'), whole.size()) - rest.size();
        step.kind = DialogStep::set;
        step.text = number < whole.size() ? whole.substr(number + 1) : "";
    } else if (word == "check") {
        step.kind = DialogStep::check;
        if ((step.value = cut_number(rest)) < 0)
            step.control = 0;
    } else if (word != "press") {
        step.control = 0;
    }
    return step;
}

struct Step {
    std::string word, rest;
    Words below; // the indented lines behind a dialog
};

std::vector<Step> expected_steps(const std::string &input) {
    Words lines;
    std::vector<Step> steps;
    for (std::size_t at = 0, end; at < input.size(); at = end + 1) {
        end = std::min(input.find('\n', at), input.size());
        lines.push_back(input.substr(at, end - at));
    }
    bool beginning = true;
    for (std::size_t i = 0; i < lines.size(); i++) {
        const std::string text = bare(lines[i]);
        Step step;
        step.word = text.substr(0, text.find_first_of(" \t\r"));
        step.rest = bare(text.substr(step.word.size()));
        if (text.empty() || text[0] == '#' || (beginning && step.word == "background"))
            continue;
        beginning = false;
        while (step.word == "dialog" && i + 1 < lines.size() && !lines[i + 1].empty() &&
               std::string(" \t").find(lines[i + 1][0]) != std::string::npos)
            step.below.push_back(lines[++i]);
        steps.push_back(step);
    }
    return steps;
}

// The events of one step.
Posted expected_events(const Step &step) {
    Posted events;
    if (step.word == "type") {
        for (const char byte : step.rest)
            events.emplace_back(keyDown, static_cast<unsigned char>(byte));
        events.emplace_back(keyDown, 13);
    } else if (step.word == "key" && !step.rest.empty()) {
        events.emplace_back(keyDown, static_cast<unsigned char>(step.rest[0]));
    } else if (step.word == "background" || step.word == "foreground") {
        events.emplace_back(osEvt, suspendResumeMessage | (step.word == "foreground" ? resumeFlag : 0u));
    } else if (step.word == "menu") {
        std::string rest = step.rest;
        const int menu = cut_number(rest), item = cut_number(rest);
        if (menu >= 0 && item >= 0)
            events.emplace_back(mouseDown, static_cast<std::uint32_t>(menu * 65536 + item));
    } else if (step.word == "event") {
        const Words words = SplitWords(step.rest);
        const auto is_code = [&](std::size_t i) {
            return i < words.size() && !words[i].empty() && words[i].size() <= 4;
        };
        OSType event_class = 0;
        if (is_code(0) && is_code(1) && parse_code((words[0] + "   ").substr(0, 4), &event_class))
            events.emplace_back(kHighLevelEvent, event_class);
    }
    events.resize(std::min(events.size(), std::size_t{512})); // what the queue holds
    return events;
}

bool is_known(const Step &step) {
    static const Words known = {"menu",  "key",   "type",       "choose",     "dialog",
                                "event", "print", "background", "foreground", "quit"};
    return std::count(known.begin(), known.end(), step.word) > 0 ||
           (step.word == "wait" && (step.rest == "RUN" || step.rest.rfind("FILE ", 0) == 0));
}

void check_answers(const Step &step) {
    std::vector<DialogStep> found;
    require(NextDialogAnswer(step.rest.c_str(), &found) == (step.rest.find('\0') == std::string::npos),
            "an answer does not wait for its window");
    std::size_t at = 0;
    for (const std::string &line : step.below) {
        const DialogStep expected = expected_answer(line);
        if (expected.control == 0 || step.rest.find('\0') != std::string::npos)
            continue;
        require(at < found.size() && found[at].kind == expected.kind &&
                    found[at].control == expected.control && found[at].text == expected.text &&
                    found[at].value == expected.value,
                "an answer is another");
        at++;
    }
    require(at == found.size(), "there is an answer that no line gives");
}

void check_choice(const Step &step) {
    BoundedString<1024> path;
    int cancelled = 0;
    require(NextChoice(path, &cancelled) == 1, "a choice is lost");
    const bool fits =
        !step.rest.empty() && step.rest.size() < 1024 && step.rest.find('\0') == std::string::npos;
    require(!fits || (!cancelled && path == step.rest), "another path is chosen");
    require(!step.rest.empty() || cancelled, "a choice without a path is not cancelled");
    require(NextChoice(path, &cancelled) == 0, "a choice is taken twice");
}

void check_script(const std::string &input) {
    static const int file = ::memfd_create("script", MFD_CLOEXEC);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    require(::ftruncate(file, 0) == 0 &&
                ::pwrite(file, input.data(), input.size(), 0) == static_cast<ssize_t>(input.size()),
            "the script cannot be written");
    Kept said(stderr), printed(stdout);
    require(OpenScript(path.c_str()) == 1 && ScriptDescriptor() == -1, "the script cannot be opened");
    std::string word, rest;
    for (const Step &step : expected_steps(input)) {
        require(PeekStep(&word, &rest), "a step is missing");
        require(word == step.word && rest == step.rest, "a step is another");
        // What a tool's run and the wait for the front take of a script, they take in its turn.
        const bool waits = (word == "key" && rest == ".") || word == "foreground";
        if (waits && word == "key")
            TakeCancelStep();
        else if (waits)
            TakeForegroundStep();
        else
            DropLine();
        const int works = waits || TakeStep(word, rest);
        require(works == (word != "choose" && word != "dialog" && word != "print"),
                "a step works or does not wrongly");
        require(take_events() == expected_events(step), "a step posts something else");
        const std::string errors = said.take();
        require((errors.find("unknown step") == std::string::npos) == is_known(step) ||
                    step.rest.find("unknown step") != std::string::npos || step.word.find("unknown") == 0,
                "a step is known or not wrongly");
        require(word != "menu" || errors.empty() == !expected_events(step).empty(),
                "a menu is not refused aloud");
        if (word == "dialog")
            check_answers(step);
        if (word == "choose")
            check_choice(step);
        const std::string out = printed.take();
        require(word == "print" || word == "event" || out.empty(), "a step prints");
        require(word != "print" || rest.rfind("setting ", 0) != 0 || !out.empty(),
                "a setting is not printed");
    }
    require(!PeekStep(&word, &rest) && ScriptEnded(), "there is a step too many");
}

// WORD in one of the forms in which a script can hold it.
std::string in_some_quotes(const std::string &word, std::size_t form) {
    if (form == 0 && !word.empty() && word.find_first_of(" \t\r\n\"'") == std::string::npos)
        return word;
    if (form == 1 && word.find_first_of("'\n") == std::string::npos)
        return "'" + word + "'";
    std::string text = "\"";
    for (const char c : word)
        text += c == '\n'               ? "\\n"
                : c == '\r'             ? "\\r"
                : c == '"' || c == '\\' ? std::string("\\") + c
                                        : std::string(1, c);
    return text + "\"";
}

std::vector<std::pair<std::string, std::string>> received; // type and value

OSErr receive(const AppleEvent *event, AppleEvent *reply, std::int32_t) {
    received.clear();
    WalkParameters(
        event,
        [](OSType keyword, OSType type, const void *data, std::size_t size, void *) {
            std::string value(static_cast<const char *>(data), size);
            if (type == typeLongInteger)
                value = std::to_string(*static_cast<const std::int32_t *>(data));
            received.emplace_back(code_text(keyword) + code_text(type), value);
        },
        nullptr);
    AEPutParamPtr(reply, four("back"), typeChar, "x y", 3);
    return noErr;
}

// An event of known parameters arrives with them.
void check_event(const std::string &input) {
    static const OSErr installed = AEInstallEventHandler(four("QUIL"), four("test"), receive, 0);
    static_cast<void>(installed);
    Choices choices(input);
    Words words;
    std::vector<std::pair<std::string, std::string>> expected;
    std::string line = "QUIL test";
    const auto add = [&](const std::string &word) {
        words.push_back(word);
        line += (choices.below(2) ? " " : " \t") + in_some_quotes(word, choices.below(3));
    };
    for (std::size_t count = choices.below(5); count > 0; count--) {
        const std::string keyword = "key" + std::to_string(count);
        const std::size_t kind = choices.below(3);
        add(keyword);
        add(kind == 0 ? "TEXT" : kind == 1 ? "long" : "fss");
        if (kind == 1) {
            const auto number = static_cast<std::int32_t>(choices.below(std::size_t{1} << 32));
            add(std::to_string(number));
            expected.emplace_back(keyword + "long", std::to_string(number));
        } else if (kind == 2) {
            add("/usr/bin");
            expected.emplace_back(keyword + "fss ", "/usr/bin");
        } else {
            std::string value = choices.bytes(9);
            add(value);
            for (std::size_t more = choices.below(3); more > 0; more--) {
                const std::string next = "v" + choices.bytes(9);
                add(next);
                // A value that begins with an empty word begins with no blank.
                value += (value.empty() ? "" : " ") + next;
            }
            expected.emplace_back(keyword + "TEXT", value);
        }
    }
    Words split = SplitWords(line);
    split.erase(split.begin(), split.begin() + 2);
    require(split == words, "words have changed in their quotes");
    Kept said(stderr), printed(stdout);
    TakeStep("event", line);
    require(take_events().size() == 1, "an event is not posted");
    require(received == expected, "an event arrives with other parameters");
    require(printed.take() == "reply 0 back TEXT x y\n" && said.take().empty(),
            "a reply is printed otherwise");
}

} // namespace

void fuzz_one(const std::string &input) {
    static const TemporaryHome home;
    check_script(input);
    check_event(input);
}

} // namespace quillon::test
