#include "toolhost/snapshots.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

#include "common/background.h"
#include "common/field_files.h"
#include "common/host_files.h"
#include "common/path_forms.h"
#include "common/places.h"
#include "toolhost/words.h"

namespace toolhost {

namespace {

constexpr std::size_t longest_preamble = 256 << 10, longest_texts = 1 << 20;
const char *const title = "snapshot 2", *const texts_name = "texts";

// Options that change nothing of what a preamble does. The SyncTeX file is completed behind the run.
constexpr std::array<std::string_view, 10> harmless_options = {
    "recorder",    "file-line-error",  "no-file-line-error",  "halt-on-error",     "no-shell-escape",
    "no-mktex=pk", "parse-first-line", "no-parse-first-line", "output-format=pdf", "synctex=1"};
// The same with a value.
constexpr std::array<std::string_view, 3> harmless_values = {"interaction", "progname", "fmt"};

// Variables of a session that say nothing to an engine.
constexpr std::array<std::string_view, 24> session_variables = {"_",
                                                                "SHLVL",
                                                                "PWD",
                                                                "OLDPWD",
                                                                "TERM",
                                                                "TEXEDIT",
                                                                "MPEDIT",
                                                                "DISPLAY",
                                                                "WAYLAND_DISPLAY",
                                                                "XAUTHORITY",
                                                                "WINDOWID",
                                                                "WINDOWPATH",
                                                                "COLUMNS",
                                                                "LINES",
                                                                "COLORTERM",
                                                                "LS_COLORS",
                                                                "INVOCATION_ID",
                                                                "JOURNAL_STREAM",
                                                                "SYSTEMD_EXEC_PID",
                                                                "MANAGERPID",
                                                                "SESSION_MANAGER",
                                                                "GPG_AGENT_INFO",
                                                                "NOTIFY_SOCKET",
                                                                "VTE_VERSION"};
constexpr std::array<std::string_view, 9> session_heads = {"XDG_", "DBUS_", "SSH_", "DESKTOP_",    "GNOME_",
                                                           "GTK_", "QT_",   "KDE_", "TERM_PROGRAM"};

bool is_plain_job(const std::string &name) {
    return !name.empty() && name.front() != '-' && name.front() != '.' &&
           std::all_of(name.begin(), name.end(), [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      c == '-' || c == '_' || c == '+';
           });
}

bool is_harmless(const std::string &word) {
    const std::string_view option = std::string_view(word).substr(word.starts_with("--") ? 2 : 1);
    if (std::find(harmless_options.begin(), harmless_options.end(), option) != harmless_options.end())
        return true;
    return std::any_of(harmless_values.begin(), harmless_values.end(), [&](std::string_view name) {
        return option.size() > name.size() + 1 && option.starts_with(name) && option[name.size()] == '=';
    });
}

// True when the line at START of TEXT has \begin{document} outside a comment.
bool begins_document(std::string_view line) {
    for (std::size_t at = 0; at < line.size() && line[at] != '%'; at++) {
        if (line[at] != '\\')
            continue;
        std::string_view rest = line.substr(at + 1);
        at++;
        if (!rest.starts_with("begin"))
            continue;
        rest.remove_prefix(5);
        rest.remove_prefix(std::min(rest.find_first_not_of(" \t"), rest.size()));
        if (rest.starts_with("{document}"))
            return true;
    }
    return false;
}

std::string joined(const std::vector<std::string> &parts, char between) {
    std::string text;
    for (const std::string &part : parts) {
        text += part;
        text += between;
    }
    return text;
}

std::vector<std::string> head_of(const SnapshotCall &call, const Variables &environment) {
    return {title,       call.search.program, call.search.progname,     call.search.name,
            call.folder, call.main,           joined(call.words, '\n'), seen_environment(environment)};
}

std::vector<std::string> parts_of(const std::string &text, char between) {
    std::vector<std::string> parts;
    for (std::size_t start = 0, end; (end = text.find(between, start)) != std::string::npos; start = end + 1)
        parts.push_back(text.substr(start, end - start));
    return parts;
}

// Reads what a note rests on from the fields behind its head, of three each.
bool read_ground(const std::vector<std::string> &fields, std::size_t at, SnapshotGround *ground,
                 std::string *name, std::string *original, std::string *reason, std::string *stamp) {
    for (; at + 3 <= fields.size(); at += 3) {
        const std::string &kind = fields[at], &what = fields[at + 1], &value = fields[at + 2];
        if (kind == "preamble")
            ground->preamble = value;
        else if (kind == "place")
            ground->places.emplace_back(what, value);
        else if (kind == "names")
            ground->names.push_back({{what, parts_of(value, '/')}, ""});
        else if (kind == "found" && !ground->names.empty())
            ground->names.back().second = value;
        else if (kind == "refused")
            *reason = what;
        else if (kind == "snapshot")
            *name = what, *stamp = value;
        else if (kind == "original")
            *original = what;
        else
            return false;
    }
    return true;
}

// True when the folder and the file in it are this user's own and nobody else can write to the folder.
bool is_own(const std::string &folder, const std::string &file) {
    struct stat place, format;
    return lstat(folder.c_str(), &place) == 0 && S_ISDIR(place.st_mode) && place.st_uid == geteuid() &&
           (place.st_mode & 022) == 0 && lstat(file.c_str(), &format) == 0 && S_ISREG(format.st_mode) &&
           format.st_uid == geteuid() && access(file.c_str(), R_OK) == 0;
}

std::string file_of(const std::string &folder, const SnapshotCall &call) {
    return folder + "/" + call.search.name + ".fmt";
}

} // namespace

std::string fill_call(const std::string &program, const std::vector<std::string> &words,
                      const std::string &folder, const std::string &main, SnapshotCall *call) {
    if (words.empty() || common::leaf_of(program) != "pdftex")
        return "the engine is not pdfTeX";
    std::string file;
    for (std::size_t i = 1; i < words.size(); i++) {
        if (words[i].starts_with('-')) {
            if (!is_harmless(words[i]))
                return "the option " + words[i];
        } else if (i == 1 && words[i].starts_with('&')) {
            continue;
        } else if (i + 1 == words.size()) {
            file = words[i];
        } else {
            return "more than one file";
        }
    }
    call->job = file.ends_with(".tex") ? file.substr(0, file.size() - 4) : file;
    if (!is_plain_job(call->job) || main != folder + "/" + call->job + ".tex")
        return "the name of the document";
    const std::vector<FormatSearch> searches = format_searches(program, words, main);
    if (searches.size() != 1 || common::read_file(main, 2).starts_with("%&"))
        return "the format that it asks for";
    call->search = searches[0];
    call->words = words;
    call->folder = folder;
    call->main = main;
    return {};
}

bool read_preamble(const std::string &main, Preamble *preamble) {
    const std::string text = common::read_file(main, longest_preamble);
    *preamble = {};
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find_first_of("\r\n", start), text.size());
        if (begins_document(std::string_view(text).substr(start, end - start))) {
            preamble->text = text.substr(0, start);
            return start > 0 && start < longest_preamble && preamble->text.find('\0') == std::string::npos;
        }
        preamble->lines.push_back(start);
        start = end + (text.compare(end, 2, "\r\n") == 0 ? 2 : 1);
    }
    return false;
}

std::string seen_environment(const Variables &environment) {
    std::string text;
    for (const auto &[name, value] : environment) {
        const bool of_session =
            std::find(session_variables.begin(), session_variables.end(), name) != session_variables.end() ||
            std::any_of(session_heads.begin(), session_heads.end(),
                        [&name = name](std::string_view head) { return name.starts_with(head); });
        if (!of_session)
            text += name + "=" + value + "\n";
    }
    return text;
}

std::string folded(const std::string &name) {
    std::string result;
    for (const char c : name)
        if (static_cast<unsigned char>(c) < 0x80)
            result += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return result;
}

std::string found_names(const LookedFor &looked) {
    std::vector<std::string> found;
    DIR *const folder = opendir(looked.folder.c_str());
    while (const dirent *const entry = folder ? readdir(folder) : nullptr)
        if (std::binary_search(looked.names.begin(), looked.names.end(), folded(entry->d_name)))
            found.emplace_back(entry->d_name);
    if (folder)
        closedir(folder);
    std::sort(found.begin(), found.end());
    return joined(found, '/');
}

std::string snapshot_stamp(const std::string &path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        return "-";
    char text[64];
    std::snprintf(text, sizeof text, "/%llx.%09ld", static_cast<unsigned long long>(status.st_ctim.tv_sec),
                  status.st_ctim.tv_nsec);
    return stamp_of(path) + text;
}

bool still_holds(const SnapshotGround &ground) {
    return std::all_of(ground.places.begin(), ground.places.end(),
                       [](const auto &place) { return snapshot_stamp(place.first) == place.second; }) &&
           std::all_of(ground.names.begin(), ground.names.end(),
                       [](const auto &looked) { return found_names(looked.first) == looked.second; });
}

SnapshotState find_snapshot(const SnapshotCall &call, const Variables &environment, Snapshot *snapshot) {
    const std::vector<std::string> fields = common::read_fields(snapshot_note(call, environment)),
                                   head = head_of(call, environment);
    if (fields.size() <= head.size() || fields.back() != "end" ||
        !std::equal(head.begin(), head.end(), fields.begin()))
        return SnapshotState::unknown;
    SnapshotGround ground;
    std::string name, stamp;
    Preamble preamble;
    if (!read_ground(fields, head.size(), &ground, &name, &snapshot->original, &snapshot->reason, &stamp) ||
        !read_preamble(call.main, &preamble) || preamble.text != ground.preamble || !still_holds(ground))
        return SnapshotState::unknown;
    if (!snapshot->reason.empty())
        return SnapshotState::refused;
    snapshot->preamble = preamble.text;
    snapshot->folder = common::snapshots_folder() + "/" + name;
    const std::string file = file_of(snapshot->folder, call);
    if (name.empty() || !is_own(snapshot->folder, file) || snapshot_stamp(file) != stamp)
        return SnapshotState::unknown;
    utimensat(AT_FDCWD, snapshot->folder.c_str(), nullptr, 0);
    return SnapshotState::ready;
}

void offer_snapshot(const Snapshot &snapshot, Variables &environment) {
    std::string &path = environment["TEXFORMATS"];
    path.insert(0, snapshot.folder + ":");
}

void forget_snapshot(const Snapshot &snapshot) {
    std::error_code ignored;
    std::filesystem::remove_all(snapshot.folder, ignored);
}

void ask_for_snapshot(const std::string &bundle, const SnapshotCall &call) {
    std::vector<std::string> words = {"--snapshot", bundle, call.search.program, call.folder, call.main};
    words.insert(words.end(), call.words.begin(), call.words.end());
    common::start_in_background(common::above_own_program(1), std::move(words));
}

std::string snapshot_note(const SnapshotCall &call, const Variables &environment) {
    char name[32];
    std::snprintf(name, sizeof name, "%016zx.note",
                  std::hash<std::string>{}(common::joined_fields(head_of(call, environment))));
    return common::snapshots_folder() + "/" + name;
}

bool write_note(const SnapshotCall &call, const Variables &environment, const SnapshotGround &ground,
                const std::string &name, const std::string &original, const std::string &reason) {
    std::vector<std::string> fields = head_of(call, environment);
    fields.insert(fields.end(), {"preamble", "", ground.preamble});
    for (const auto &[path, stamp] : ground.places)
        fields.insert(fields.end(), {"place", path, stamp});
    for (const auto &[looked, found] : ground.names)
        fields.insert(fields.end(), {"names", looked.folder, joined(looked.names, '/'), "found", "", found});
    if (reason.empty())
        fields.insert(fields.end(), {"original", original, "", "snapshot", name,
                                     snapshot_stamp(file_of(common::snapshots_folder() + "/" + name, call))});
    else
        fields.insert(fields.end(), {"refused", reason, ""});
    fields.push_back("end");
    const std::string text = common::joined_fields(fields);
    return text.size() < longest_texts && common::replace_file(snapshot_note(call, environment), text);
}

bool write_texts(const std::string &folder, const SnapshotTexts &texts) {
    const std::string text = common::joined_fields(
        {title, texts.said, texts.logged, texts.banner, texts.said_joins ? "1" : "0",
         texts.logged_joins ? "1" : "0", std::to_string(texts.list_at), joined(texts.start, '\n'),
         joined(texts.list, '\n'), std::to_string(texts.passed_files), joined(texts.preamble_files, '\n'),
         "end"});
    return text.size() < longest_texts && common::replace_file(folder + "/" + texts_name, text);
}

bool read_texts(const Snapshot &snapshot, SnapshotTexts *texts) {
    const std::vector<std::string> fields = common::read_fields(snapshot.folder + "/" + texts_name);
    if (fields.size() != 12 || fields[0] != title || fields[11] != "end")
        return false;
    texts->said = fields[1];
    texts->logged = fields[2];
    texts->banner = fields[3];
    texts->said_joins = fields[4] == "1";
    texts->logged_joins = fields[5] == "1";
    texts->list_at = std::strtoul(fields[6].c_str(), nullptr, 10);
    texts->start = parts_of(fields[7], '\n');
    texts->list = parts_of(fields[8], '\n');
    texts->passed_files = std::strtoul(fields[9].c_str(), nullptr, 10);
    texts->preamble_files = parts_of(fields[10], '\n');
    return true;
}

} // namespace toolhost
