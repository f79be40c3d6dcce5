#include "toolhost/run.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include "common/clock.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/preferences.h"
#include "toolhost/environment.h"
#include "toolhost/guard.h"
#include "toolhost/words.h"

namespace toolhost {

namespace {

constexpr std::uint64_t millisecond = 1000;
// All in milliseconds: when a prompt is looked for after output came, when the second look follows, the
// longest pause between looks, and the time between two stopping signals.
constexpr std::uint64_t first_look = 8;
constexpr std::uint64_t second_look = 4;
constexpr std::uint64_t longest_pause = 200;
constexpr std::uint64_t stage_limit = 1000;
constexpr int reads_at_once = 64;
constexpr int pipe_size = 1 << 18;
constexpr int echo_patience = 20; // milliseconds

std::string new_delimiter() {
    unsigned char bytes[12] = {};
    if (getrandom(bytes, sizeof bytes, 0) < 0)
        std::memcpy(bytes, &errno, sizeof errno);
    std::string text = "end-of-name-";
    for (const unsigned char byte : bytes) {
        text += static_cast<char>('a' + (byte >> 4));
        text += static_cast<char>('a' + (byte & 15));
    }
    return text;
}

sd_event_source *drop(sd_event_source *source) {
    return sd_event_source_disable_unref(source);
}

// True for the options that BibTeX itself knows; the others are those of bibtex8.
bool plain_bibtex_option(std::string_view word) {
    word.remove_prefix(std::min(word.find_first_not_of('-'), word.size()));
    return word.starts_with("min-crossrefs") || word == "terse" || word == "help" || word == "version";
}

} // namespace

Run::Run(sd_event *event, const common::Bundle &bundle, RunOwner &owner, Transcript &transcript)
    : event_(event), bundle_(bundle), owner_(owner), transcript_(transcript) {}

Run::~Run() {
    close_down();
    // A run that is given up leaves its note: its guard is still at work.
    if (note_.file >= 0)
        close(note_.file);
}

std::uint64_t Run::milliseconds() const {
    return (common::now_microseconds() - (counted_from_ ? counted_from_ : begun_)) / millisecond;
}

void Run::close_down() {
    terminal_source_ = drop(terminal_source_);
    output_source_ = drop(output_source_);
    channel_source_ = drop(channel_source_);
    prompt_timer_ = drop(prompt_timer_);
    cancel_timer_ = drop(cancel_timer_);
    for (int *descriptor : {&terminal_, &output_, &channel_, &record_}) {
        if (*descriptor >= 0)
            close(*descriptor);
        *descriptor = -1;
    }
}

// Chooses the program that the command's words ask for, and adds the options that it needs.
void Run::choose_program() {
    std::vector<std::string> &words = engine_.words;
    program_name_ = bundle_.info_or("program", bundle_.tool);
    if (bundle_.signature == "*Xet") {
        // LaTeX needs the e-TeX primitives, which the engine that "latex" stands for in the distribution has.
        const std::string asked = words[0] == "tex" ? option_value(words, "progname") : words[0];
        if (asked == "latex") {
            program_name_ = bundle_.info_or("latex", "pdftex");
            if (has_option(words, "ini") && !has_option(words, "etex"))
                words.insert(words.begin() + 1, "-etex");
        }
    }
    if (bundle_.signature == "BIBT") {
        const std::string sort_file =
            common::expand_setting_path(common::setting("CSFFILE"), bundle_.home, engine_.space);
        bool own_options = !sort_file.empty();
        for (std::size_t i = 1; i < words.size(); i++)
            own_options = own_options || (words[i].starts_with('-') && !plain_bibtex_option(words[i]));
        if (own_options) {
            program_name_ = bundle_.info_or("program8", "bibtex8");
            if (!sort_file.empty() && !has_option(words, "c") && option_value(words, "csfile").empty())
                words.insert(words.begin() + 1, {"-c", sort_file});
        }
    }
}

bool Run::prepare(std::vector<std::string> words, const std::string &folder) {
    begun_ = common::now_microseconds();
    clock_gettime(CLOCK_REALTIME, &engine_.started);
    is_engine_ = is_engine(bundle_.signature);
    engine_.folder = folder;
    engine_.space = common::space_byte();
    engine_.words = std::move(words);
    if (engine_.words.empty()) {
        fail("the command line is empty");
        return false;
    }
    choose_program();
    // A document's name that begins like an option is handed on so that it is none.
    if (std::string &last = engine_.words.back();
        engine_.words.size() > 1 && last.starts_with('-') &&
        common::is_regular_file(common::absolute_path(folder, last)))
        last.insert(0, "./");
    engine_.program = common::leaf_of(program_name_);
    main_ = main_file(engine_.words);
    if (!main_.empty()) {
        // TeX tries the name with its extension first.
        main_ = common::absolute_path(folder, main_);
        if (common::is_regular_file(main_ + ".tex"))
            main_ += ".tex";
    }
    if (is_engine_ || bundle_.signature == "MPST")
        parser_ = std::make_unique<RunParser>(folder, main_);
    else if (bundle_.signature == "BIBT" || bundle_.signature == "MKIX" || bundle_.signature == "BIBR")
        companion_ = std::make_unique<CompanionReader>(folder, sources_);
    if (is_engine_)
        clear_output_setting();
    return true;
}

void Run::start(std::string_view line, const std::string &folder) {
    command_ = line;
    start_words(split_words(line, common::space_byte()), folder);
}

void Run::start_document(const std::string &path) {
    std::vector<std::string> words = split_words(bundle_.info_or("documents", ""), common::space_byte());
    words.push_back(common::leaf_of(path));
    for (const std::string &word : words)
        command_ += (command_.empty() ? "" : " ") + word;
    start_words(std::move(words), common::folder_above(path));
}

void Run::start_words(std::vector<std::string> given, const std::string &folder) {
    if (!prepare(std::move(given), folder))
        return;
    delimiter_ = new_delimiter();
    const char *const search = std::getenv("PATH");
    std::string places = search ? search : "/usr/local/bin:/usr/bin:/bin";
    if (const std::string own = common::setting("TEXBIN"); !own.empty())
        places.insert(0, common::expand_setting_path(own, bundle_.home, engine_.space) + ":");
    const std::string program =
        common::find_program(program_name_, places, bundle_.path + "/Contents/Resources");
    if (program.empty()) {
        fail("there is no such program");
        return;
    }
    // An engine looks for itself under the name that it is called by, and does not start when no program has
    // it.
    std::vector<std::string> &words = engine_.words;
    if (is_engine_ && common::find_program(words[0], places, folder).empty()) {
        if (option_value(words, "progname").empty())
            words.insert(words.begin() + 1, "-progname=" + words[0]);
    }
    if (is_engine_)
        owner_.engine_begins(engine_, main_);
    int slave = -1;
    if (!open_terminal(&slave)) {
        fail(std::strerror(errno));
        return;
    }
    const bool launched = launch(program, slave);
    close(slave);
    if (!launched)
        fail(std::strerror(errno));
}

bool Run::open_terminal(int *slave) {
    terminal_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (terminal_ < 0 || grantpt(terminal_) != 0 || unlockpt(terminal_) != 0)
        return false;
    char name[128];
    if (ptsname_r(terminal_, name, sizeof name) != 0)
        return false;
    terminal_path_ = name;
    *slave = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios mode;
    if (*slave < 0 || tcgetattr(*slave, &mode) != 0)
        return false;
    // The terminal changes no output, and no byte that a person types stops or starts the output.
    mode.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    mode.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF);
    mode.c_iflag |= IUTF8;
    tcsetattr(*slave, TCSANOW, &mode);
    winsize size = {24, 80, 0, 0};
    ioctl(*slave, TIOCSWINSZ, &size);
    return true;
}

// Opens the pipe for what an engine prints and returns the program's end of it, -1 where the program prints
// on the terminal. An engine flushes what it prints itself, at each page, file and prompt. A pipe takes that
// as it comes, where a terminal would pass on every line by itself.
int Run::open_output() {
    int ends[2];
    if (!parser_ || pipe2(ends, O_CLOEXEC) != 0)
        return -1;
    output_ = ends[0];
    fcntl(output_, F_SETFL, O_NONBLOCK);
    fcntl(output_, F_SETPIPE_SZ, pipe_size);
    return ends[1];
}

// Calls HANDLER when there is something to read from DESCRIPTOR, which may be -1 for none.
void Run::watch(int descriptor, sd_event_source *&source, sd_event_io_handler_t handler) {
    if (descriptor >= 0)
        sd_event_add_io(event_, &source, descriptor, EPOLLIN, handler, this);
}

bool Run::launch(const std::string &program, int slave) {
    common::end_left_runs();
    note_ = common::leave_note();
    record_ = memfd_create(common::memory_file_name(note_.mark).c_str(), MFD_CLOEXEC);
    Launch launch;
    launch.program = program;
    launch.words = engine_.words;
    const char *const search = std::getenv("PATH");
    if (is_engine_ && common::find_program(launch.words[0], search ? search : "", engine_.folder).empty())
        launch.words[0] = program;
    Variables environment = run_environment(bundle_, engine_.words, engine_.space, delimiter_);
    search_sources(environment);
    if (is_engine_) {
        look_for_snapshot(launch, environment);
        offer_formats(program, environment);
        offer_found_snapshot(environment);
        ask_for_list(launch);
    }
    if (!note_.mark.empty())
        environment[common::run_variable] = note_.mark;
    for (const auto &[name, value] : environment)
        launch.environment.push_back(name + "=" + value);
    launch.folder = engine_.folder;
    launch.terminal = slave;
    launch.record = record_;
    if (const std::string output =
            is_engine_ ? expected_output(engine_, program_name_ == "tex") : std::string();
        !output.empty())
        kept_ = put_aside(output);
    launch.kept = kept_;
    launch.output = open_output();
    guard_ = start_guard(launch, &channel_);
    if (launch.output >= 0)
        close(launch.output);
    if (guard_ < 0) {
        give_back(kept_);
        kept_ = {};
        settle_list();
        return false;
    }
    watch(terminal_, terminal_source_, [](sd_event_source *, int, std::uint32_t, void *self) {
        static_cast<Run *>(self)->read_terminal();
        return 0;
    });
    watch(output_, output_source_, [](sd_event_source *, int, std::uint32_t, void *self) {
        static_cast<Run *>(self)->read_output();
        return 0;
    });
    watch(channel_, channel_source_, [](sd_event_source *, int, std::uint32_t, void *self) {
        static_cast<Run *>(self)->guard_news();
        return 0;
    });
    return true;
}

// Offers the engine the uncompressed copy of every format that it may look for.
void Run::offer_formats(const std::string &program, Variables &environment) {
    // The formats of the other engines are not of the kind that is unpacked.
    if (bundle_.signature == "LUAX" || bundle_.signature == "XELX")
        return;
    for (const FormatSearch &search : format_searches(program, engine_.words, main_)) {
        FormatCopy copy;
        const CopyState state = find_copy(search, environment, engine_.folder, &copy);
        if (state == CopyState::ready)
            copies_.push_back(copy);
        else if (state == CopyState::unknown)
            copies_to_ask_.push_back(search);
    }
    for (const FormatCopy &copy : copies_)
        offer_copy(copy, environment);
    engine_path_ = program;
}

void Run::fail(const std::string &reason) {
    const std::string text = "I can't start " + program_name_ + ": " + reason + "\n";
    status_ = 127 << 8;
    take_output(text);
    finish();
}

// Reads what DESCRIPTOR has. False when it has no more for now.
bool Run::read_all(int descriptor, sd_event_source *&source) {
    char block[65536];
    for (int i = 0; i < reads_at_once; i++) {
        const ssize_t count = read(descriptor, block, sizeof block);
        if (count > 0) {
            if (descriptor == terminal_)
                echo_due_ -= std::min(echo_due_, static_cast<std::size_t>(count));
            take_output({block, static_cast<std::size_t>(count)});
            continue;
        }
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
            watch_prompt(first_look);
            return errno == EINTR;
        }
        // Every process of the run has closed its end. The guard will report the end of the run.
        source = drop(source);
        return false;
    }
    return true;
}

bool Run::read_terminal() {
    return read_all(terminal_, terminal_source_);
}

bool Run::read_output() {
    await_echo();
    return read_all(output_, output_source_);
}

// The terminal repeats what is typed before the program sees it, but through a queue of its own: what the
// program prints next is taken after it.
void Run::await_echo() {
    pollfd terminal = {terminal_, POLLIN, 0};
    while (echo_due_ > 0 && terminal_source_) {
        if (poll(&terminal, 1, echo_patience) > 0)
            read_terminal();
        else
            echo_due_ = 0;
    }
}

bool Run::has_unread() const {
    pollfd sources[] = {{terminal_, POLLIN, 0}, {output_, POLLIN, 0}};
    return poll(sources, 2, 0) > 0 && ((sources[0].revents | sources[1].revents) & POLLIN);
}

void Run::take_output(std::string_view bytes) {
    if (!snapshot_output_.looks()) {
        pass_output(bytes);
        return;
    }
    may_wait_ = false;
    open_line_ = bytes.back() != '\n';
    const std::string whole = snapshot_output_.take(bytes);
    if (!snapshot_output_.looks())
        compare_preamble();
    if (!whole.empty())
        pass_output(whole);
}

void Run::pass_output(std::string_view bytes) {
    may_wait_ = false;
    open_line_ = bytes.back() != '\n';
    set_waiting(false);
    transcript_.write(bytes);
    if (parser_)
        parser_->feed(bytes);
    else if (companion_)
        companion_->feed(bytes);
    owner_.run_printed(bytes);
}

void Run::watch_prompt(std::uint64_t pause) {
    prompt_pause_ = pause;
    if (prompt_timer_) {
        sd_event_source_set_time_relative(prompt_timer_, pause * millisecond);
        sd_event_source_set_enabled(prompt_timer_, SD_EVENT_ONESHOT);
        return;
    }
    sd_event_add_time_relative(
        event_, &prompt_timer_, CLOCK_MONOTONIC, pause * millisecond, millisecond,
        [](sd_event_source *, std::uint64_t, void *self) {
            static_cast<Run *>(self)->look_for_prompt();
            return 0;
        },
        this);
}

void Run::look_for_prompt() {
    if (ended_ || terminal_ < 0)
        return;
    if (!unsent_.empty())
        answer({});
    // Output or an answer may still be on its way through the terminal, so the program counts as waiting only
    // when two looks say so.
    const bool may_wait = prompt_.waits(open_line_) && !has_unread();
    const bool waits = may_wait && may_wait_;
    may_wait_ = may_wait;
    if (may_wait && !waits) {
        watch_prompt(second_look);
        return;
    }
    if (may_wait && snapshot_output_.looks())
        if (const std::string held = snapshot_output_.finish(); !held.empty())
            pass_output(held);
    if (waits && cancelled_) {
        stop_at_prompt();
        return;
    }
    set_waiting(waits);
    if (!ended_)
        watch_prompt(std::min(prompt_pause_ * 2, longest_pause));
}

// The interrupt made the program ask what to do. An engine is told to stop, so that it closes its files and
// leaves them whole; any other program is ended.
void Run::stop_at_prompt() {
    if (parser_ && !told_to_stop_) {
        told_to_stop_ = true;
        type("x\n");
        // It has as long for that as it had to ask.
        if (cancel_timer_ && stage_ <= 2)
            sd_event_source_set_time_relative(cancel_timer_, stage_limit * millisecond);
        watch_prompt(first_look);
    } else if (stage_ == 1) {
        next_stage();
    }
}

void Run::set_waiting(bool waiting) {
    if (waiting_ == waiting)
        return;
    waiting_ = waiting;
    owner_.run_waits(waiting);
}

void Run::type(std::string_view bytes) {
    may_wait_ = false;
    // What was printed before comes first.
    if (output_source_)
        read_output();
    unsent_ += bytes;
    while (!unsent_.empty() && terminal_ >= 0) {
        const ssize_t count = write(terminal_, unsent_.data(), unsent_.size());
        if (count <= 0)
            break;
        echo_due_ += output_source_ ? static_cast<std::size_t>(count) : 0;
        unsent_.erase(0, static_cast<std::size_t>(count));
    }
}

void Run::answer(std::string_view bytes) {
    if (!bytes.empty())
        answered_ = true;
    type(bytes);
    set_waiting(false);
    watch_prompt(first_look);
}

void Run::end_input() {
    termios mode;
    const char end = tcgetattr(terminal_, &mode) == 0 ? static_cast<char>(mode.c_cc[VEOF]) : '\4';
    if (write(terminal_, &end, 1) != 1)
        cancel(false);
    set_waiting(false);
    watch_prompt(first_look);
}

void Run::cancel(bool at_once) {
    if (ended_)
        return;
    const bool first = !cancelled_;
    cancelled_ = true;
    if (at_once)
        stage_ = 2;
    if (first || at_once)
        next_stage();
}

void Run::abandon() {
    ended_ = true;
    close_down();
}

void Run::next_stage() {
    constexpr int signals[] = {SIGINT, SIGTERM, SIGKILL};
    if (stage_ > 2 || channel_ < 0)
        return;
    const int number = signals[stage_++];
    if (send(channel_, &number, sizeof number, MSG_NOSIGNAL) < 0 && errno != EAGAIN)
        guard_gone();
    if (cancel_timer_) {
        sd_event_source_set_time_relative(cancel_timer_, stage_limit * millisecond);
        sd_event_source_set_enabled(cancel_timer_, stage_ > 2 ? SD_EVENT_OFF : SD_EVENT_ONESHOT);
    } else if (stage_ <= 2) {
        sd_event_add_time_relative(
            event_, &cancel_timer_, CLOCK_MONOTONIC, stage_limit * millisecond, millisecond,
            [](sd_event_source *, std::uint64_t, void *self) {
                static_cast<Run *>(self)->next_stage();
                return 0;
            },
            this);
    }
}

void Run::guard_news() {
    GuardPacket packet{};
    const ssize_t count = recv(channel_, &packet, sizeof packet, MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (count != sizeof packet) {
        guard_gone();
        return;
    }
    switch (packet.news) {
    case GuardNews::started:
        program_ = packet.value;
        prompt_.start(program_, terminal_path_);
        watch_prompt(first_look);
        break;
    case GuardNews::not_started:
        fail(std::strerror(packet.value));
        break;
    case GuardNews::ended:
        status_ = packet.value;
        finish();
        break;
    }
}

// Ends the run after somebody killed the guard, whose children have become children of this process.
void Run::guard_gone() {
    if (ended_)
        return;
    kill_descendants(0, nullptr, nullptr);
    status_ = SIGKILL;
    finish();
}

} // namespace toolhost
